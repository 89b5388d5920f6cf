#include "settings/editor_settings.h"

#include <gtest/gtest.h>

#include <set>

namespace mb {
namespace {

constexpr EditorKind kKinds[] = {EditorKind::Basic, EditorKind::Assembler};

TEST(EditorSettings, FirstReadStoresTheDefaultsAndReadsThemBack) {
    struct Case {
        EditorKind kind;
        double scale;
        const char* sizeKey;
        int size;
        const char* colorKey;
        int color;
    };
    const Case cases[] = {
        {EditorKind::Basic, 1.0, "EC FontSize", 8, "EC ColorLinBack", Rgb(243, 243, 245)},
        {EditorKind::Basic, 1.5, "EC FontSize", 10, "EC ColorTrack", Rgb(255, 255, 150)},
        {EditorKind::Assembler, 1.0, "EA FontSize", 9, "EA ColorASMMark", Rgb(192, 192, 255)},
        {EditorKind::Assembler, 2.0, "EA FontSize", 10, "EA ColorASMKeyword", Rgb(0, 0, 250)},
    };
    for (const Case& c : cases) {
        MemorySettingsStore store;
        const EditorSettings read = ReadEditorSettings(store, c.kind, c.scale);
        EXPECT_EQ(read, DefaultEditorSettings(c.kind, c.scale));
        EXPECT_EQ(read.fontName, "Lucida Console");
        EXPECT_EQ(store.GetSettingInt(c.sizeKey, -1), c.size);
        EXPECT_EQ(store.GetSettingInt(c.colorKey, -1), c.color);
        const EditorRows& rows = EditorSettingRows(c.kind);
        EXPECT_TRUE(store.Contains(rows.fontNameKey));
        for (const EditorColorRow& row : rows.colors)
            EXPECT_TRUE(store.Contains(row.key)) << row.key;
        for (const EditorSwitchRow& row : rows.switches) EXPECT_TRUE(store.Contains(row.key));
        EXPECT_EQ(ReadEditorSettings(store, c.kind, c.scale), read);
    }
}

TEST(EditorSettings, TheTwoEditorsKeepTheirOwnNamesAndSwitches) {
    MemorySettingsStore store;
    const EditorSettings basic = ReadEditorSettings(store, EditorKind::Basic);
    const EditorSettings assembler = ReadEditorSettings(store, EditorKind::Assembler);
    EXPECT_TRUE(basic.On(EditorSwitch::AutoCaseControl));
    EXPECT_FALSE(basic.On(EditorSwitch::AutoFormatText));
    EXPECT_TRUE(basic.On(EditorSwitch::LineWrapping));
    EXPECT_FALSE(assembler.On(EditorSwitch::LineWrapping));
    EXPECT_EQ(basic.Color(EditorColor::Keyword3), -1);
    EXPECT_EQ(assembler.Color(EditorColor::Track), -1);
    for (EditorKind kind : kKinds) {
        const std::string prefix = kind == EditorKind::Basic ? "EC " : "EA ";
        std::set<std::string> keys;
        for (const EditorColorRow& row : EditorSettingRows(kind).colors) keys.insert(row.key);
        for (const EditorSwitchRow& row : EditorSettingRows(kind).switches) keys.insert(row.key);
        keys.insert(EditorSettingRows(kind).fontNameKey);
        keys.insert(EditorSettingRows(kind).fontSizeKey);
        EXPECT_EQ(keys.size(), EditorSettingRows(kind).colors.size() +
                                   EditorSettingRows(kind).switches.size() + 2);
        for (const std::string& key : keys) EXPECT_EQ(key.substr(0, 3), prefix) << key;
    }
}

TEST(EditorSettings, WrittenChangesComeBackAndLeaveTheOtherEditorAlone) {
    for (EditorKind kind : kKinds) {
        const EditorKind other =
            kind == EditorKind::Basic ? EditorKind::Assembler : EditorKind::Basic;
        MemorySettingsStore store;
        const EditorSettings otherBefore = ReadEditorSettings(store, other);
        EditorSettings e = ReadEditorSettings(store, kind);
        e.fontName = "DejaVu Sans Mono";
        e.fontSize = 14;
        int next = 1;
        for (auto& [role, color] : e.colors) color = Rgb(next++, 7, 200);
        for (auto& [role, on] : e.switches) on = !on;
        WriteEditorSettings(store, e);
        EXPECT_EQ(ReadEditorSettings(store, kind), e);
        EXPECT_EQ(ReadEditorSettings(store, other), otherBefore);
    }
}

TEST(EditorSettings, DamagedValuesReadAsDefaults) {
    struct Case {
        const char* key;
        const char* stored;
    };
    const Case cases[] = {{"EA ColorBack", "-5"},
                          {"EA ColorText", "99999999"},
                          {"EA FontSize", "0"},
                          {"EA FontName", ""}};
    const EditorSettings def = DefaultEditorSettings(EditorKind::Assembler);
    for (const Case& c : cases) {
        MemorySettingsStore store;
        store.SetSettingText(c.key, c.stored);
        EXPECT_EQ(ReadEditorSettings(store, EditorKind::Assembler), def) << c.key;
    }
}

TEST(EditorThemes, TheListOfferedAndTheFirstIsTheDefaults) {
    const std::vector<std::string> expected = {
        "Corvalent (Default)", "Corvalent Old", "PureBasic",  "Visual Studio",
        "PHP Extended",        "Black Style",   "Blue Style", "White Style"};
    std::vector<std::string> names;
    for (const EditorTheme& t : PredefinedEditorThemes()) names.push_back(t.name);
    EXPECT_EQ(names, expected);
    for (EditorKind kind : kKinds)
        EXPECT_EQ(PredefinedEditorThemes().front().For(kind), DefaultEditorSettings(kind).colors);
}

TEST(EditorThemes, ChoosingAThemeSetsEveryColourOfThatEditorOnly) {
    for (EditorKind kind : kKinds) {
        for (const EditorTheme& theme : PredefinedEditorThemes()) {
            EditorSettings e = DefaultEditorSettings(kind);
            e.fontName = "Mine";
            e.switches.begin()->second = !e.switches.begin()->second;
            const EditorSettings before = e;
            ApplyEditorTheme(e, theme);
            EXPECT_EQ(e.fontName, before.fontName);
            EXPECT_EQ(e.switches, before.switches);
            EXPECT_EQ(e.colors.size(), before.colors.size()) << theme.name;
            EXPECT_EQ(e.colors, theme.For(kind)) << theme.name;
        }
    }
    // The themes differ from each other, so that a choice shows.
    std::set<std::map<EditorColor, int>> distinct;
    for (const EditorTheme& theme : PredefinedEditorThemes()) distinct.insert(theme.basic);
    EXPECT_EQ(distinct.size(), PredefinedEditorThemes().size());
}

TEST(EditorThemes, TextStaysReadableOnItsBackground) {
    struct Pair {
        EditorColor fore, back;
        double minimum;
    };
    // Plain text needs the contrast of body text; coloured words and markers at
    // least that of large text.
    const Pair pairs[] = {
        {EditorColor::Text, EditorColor::Back, 4.5},
        {EditorColor::Text, EditorColor::CaretLine, 4.5},
        {EditorColor::Text, EditorColor::Error, 4.5},
        {EditorColor::Text, EditorColor::Track, 4.5},
        {EditorColor::Text, EditorColor::Mark, 4.5},
        {EditorColor::Keyword, EditorColor::Back, 3.0},
        {EditorColor::Keyword2, EditorColor::Back, 3.0},
        {EditorColor::Keyword3, EditorColor::Back, 3.0},
        {EditorColor::Comment, EditorColor::Back, 3.0},
        {EditorColor::String, EditorColor::Back, 3.0},
        {EditorColor::Asm, EditorColor::Back, 3.0},
        {EditorColor::LineNumberText, EditorColor::LineNumberBack, 3.0},
        {EditorColor::Bookmark, EditorColor::Margin, 3.0},
        {EditorColor::Breakpoint, EditorColor::Margin, 3.0},
        {EditorColor::Mark2, EditorColor::Margin, 3.0},
    };
    for (const EditorTheme& theme : PredefinedEditorThemes()) {
        for (EditorKind kind : kKinds) {
            const auto& colors = theme.For(kind);
            for (const Pair& p : pairs) {
                if (!colors.count(p.fore) || !colors.count(p.back)) continue;
                EXPECT_GE(ContrastRatio(colors.at(p.fore), colors.at(p.back)), p.minimum)
                    << theme.name << " roles " << static_cast<int>(p.fore) << "/"
                    << static_cast<int>(p.back);
            }
        }
    }
}

}  // namespace
}  // namespace mb
