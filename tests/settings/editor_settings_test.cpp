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
        const EditorRows& rows = EditorSettingRows(kind);
        std::set<std::string> keys = {rows.fontNameKey, rows.fontSizeKey};
        for (const EditorColorRow& row : rows.colors) keys.insert(row.key);
        for (const EditorSwitchRow& row : rows.switches) keys.insert(row.key);
        EXPECT_EQ(keys.size(), rows.colors.size() + rows.switches.size() + 2);
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
    const std::pair<const char*, const char*> cases[] = {{"EA ColorBack", "-5"},
                                                         {"EA ColorText", "99999999"},
                                                         {"EA FontSize", "0"},
                                                         {"EA FontName", ""}};
    const EditorSettings def = DefaultEditorSettings(EditorKind::Assembler);
    for (const auto& [key, stored] : cases) {
        MemorySettingsStore store;
        store.SetSettingText(key, stored);
        EXPECT_EQ(ReadEditorSettings(store, EditorKind::Assembler), def) << key;
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
    using C = EditorColor;
    struct Rule {
        std::vector<EditorColor> fores, backs;
        double minimum;
    };
    // Plain text needs the contrast of body text; coloured words and markers at
    // least that of large text.
    const Rule rules[] = {
        {{C::Text}, {C::Back, C::CaretLine, C::Error, C::Track, C::Mark}, 4.5},
        {{C::Keyword, C::Keyword2, C::Keyword3, C::Comment, C::String, C::Asm}, {C::Back}, 3.0},
        {{C::LineNumberText}, {C::LineNumberBack}, 3.0},
        {{C::Bookmark, C::Breakpoint, C::Mark2}, {C::Margin}, 3.0},
    };
    for (const EditorTheme& theme : PredefinedEditorThemes())
        for (EditorKind kind : kKinds)
            for (const Rule& rule : rules)
                for (EditorColor fore : rule.fores)
                    for (EditorColor back : rule.backs) {
                        const auto& colors = theme.For(kind);
                        if (!colors.count(fore) || !colors.count(back)) continue;
                        EXPECT_GE(ContrastRatio(colors.at(fore), colors.at(back)), rule.minimum)
                            << theme.name << " roles " << static_cast<int>(fore) << "/"
                            << static_cast<int>(back);
                    }
}

}  // namespace
}  // namespace mb
