#include "editor_settings.h"

#include <array>

namespace mb {

namespace {

using C = EditorColor;
using S = EditorSwitch;

const EditorRows kBasicRows = {
    "EC FontName",
    "EC FontSize",
    "Lucida Console",
    8,
    10,
    {
        {C::Back, "EC ColorBack", "Background", Rgb(255, 255, 255)},
        {C::Text, "EC ColorText", "Text", Rgb(0, 0, 0)},
        {C::LineNumberBack, "EC ColorLinBack", "Line numbers background", Rgb(243, 243, 245)},
        {C::LineNumberText, "EC ColorLinText", "Line numbers", Rgb(112, 20, 76)},
        {C::Margin, "EC ColorMargin", "Marker margin", Rgb(249, 249, 251)},
        {C::CaretLine, "EC ColorCaretLine", "Current line", Rgb(249, 249, 251)},
        {C::Keyword, "EC ColorKeyword", "Keywords", Rgb(0, 0, 150)},
        {C::Keyword2, "EC ColorKeyword2", "User names", Rgb(0, 64, 64)},
        {C::Comment, "EC ColorComment", "Comments", Rgb(0, 150, 0)},
        {C::String, "EC ColorString", "Strings", Rgb(150, 0, 0)},
        {C::Asm, "EC ColorAsm", "Inline assembler", Rgb(0, 150, 150)},
        {C::Bookmark, "EC ColorBookmark", "Bookmarks", Rgb(0, 160, 0)},
        {C::Breakpoint, "EC ColorBreakpoint", "Breakpoints", Rgb(160, 0, 0)},
        {C::Error, "EC ColorError", "Line with an error", Rgb(255, 150, 150)},
        {C::Track, "EC ColorTrack", "Tracked line", Rgb(255, 255, 150)},
        {C::Annotation, "EC ColorAnnotation", "Separators", Rgb(176, 176, 176)},
    },
    {
        {S::AutoCaseControl, "EC AutoCaseControl", "Automatic case of keywords", true},
        {S::AutoFormatText, "EC AutoFormatText", "Automatic formatting", false},
        {S::LineWrapping, "EC LineWrapping", "Line wrapping", true},
    },
};

const EditorRows kAssemblerRows = {
    "EA FontName",
    "EA FontSize",
    "Lucida Console",
    9,
    10,
    {
        {C::Back, "EA ColorBack", "Background", Rgb(255, 255, 255)},
        {C::Text, "EA ColorText", "Text", Rgb(0, 0, 0)},
        {C::LineNumberBack, "EA ColorASMLinBack", "Line numbers background", Rgb(240, 240, 240)},
        {C::LineNumberText, "EA ColorASMLinText", "Line numbers", Rgb(128, 128, 128)},
        {C::Margin, "EA ColorMargin", "Marker margin", Rgb(249, 249, 251)},
        {C::CaretLine, "EA ColorCaretLine", "Current line", Rgb(249, 249, 251)},
        {C::Keyword, "EA ColorASMKeyword", "Mnemonics", Rgb(0, 0, 250)},
        {C::Keyword2, "EA ColorASMKeyword2", "Registers", Rgb(0, 64, 64)},
        {C::Keyword3, "EA ColorASMKeyword3", "Directives", Rgb(0, 0, 150)},
        {C::Comment, "EA ColorASMComment", "Comments", Rgb(0, 120, 0)},
        {C::String, "EA ColorASMString", "Strings", Rgb(150, 0, 0)},
        {C::Bookmark, "EA ColorBookmark", "Bookmarks", Rgb(0, 160, 0)},
        {C::Breakpoint, "EA ColorBreakpoint", "Breakpoints", Rgb(160, 0, 0)},
        {C::Error, "EA ColorError", "Line with an error", Rgb(255, 150, 150)},
        {C::Mark, "EA ColorASMMark", "Tracked line", Rgb(192, 192, 255)},
        {C::Mark2, "EA ColorASMMark2", "Second tracking marker", Rgb(112, 20, 76)},
    },
    {
        {S::LineWrapping, "EA LineWrapping", "Line wrapping", false},
    },
};

// A colour set for both editors, one colour per role in the order of EditorColor.
constexpr int kRoles = static_cast<int>(EditorColor::Mark2) + 1;
using RolePalette = std::array<int, kRoles>;

struct PaletteTheme {
    const char* name;
    RolePalette colors;
};

// Back, Text, LineNumberBack, LineNumberText, Margin, CaretLine, Keyword,
// Keyword2, Keyword3, Comment, String, Asm, Bookmark, Breakpoint, Error, Track,
// Annotation, Mark, Mark2.
const PaletteTheme kPaletteThemes[] = {
    {"Corvalent Old",
     {Rgb(255, 255, 255), Rgb(0, 0, 0), Rgb(228, 228, 228), Rgb(64, 64, 64), Rgb(240, 240, 240),
      Rgb(245, 245, 255), Rgb(0, 0, 255), Rgb(128, 0, 128), Rgb(0, 0, 128), Rgb(0, 128, 0),
      Rgb(128, 0, 0), Rgb(0, 128, 128), Rgb(0, 128, 0), Rgb(192, 0, 0), Rgb(255, 170, 170),
      Rgb(255, 255, 128), Rgb(160, 160, 160), Rgb(200, 200, 255), Rgb(128, 0, 64)}},
    {"PureBasic",
     {Rgb(255, 255, 223), Rgb(0, 0, 0), Rgb(230, 230, 200), Rgb(90, 90, 60), Rgb(245, 245, 215),
      Rgb(240, 240, 200), Rgb(0, 102, 102), Rgb(0, 0, 128), Rgb(102, 51, 0), Rgb(0, 128, 0),
      Rgb(128, 0, 128), Rgb(0, 90, 160), Rgb(0, 140, 0), Rgb(190, 0, 0), Rgb(255, 170, 170),
      Rgb(255, 230, 120), Rgb(150, 150, 120), Rgb(190, 210, 255), Rgb(120, 40, 0)}},
    {"Visual Studio",
     {Rgb(255, 255, 255), Rgb(0, 0, 0), Rgb(255, 255, 255), Rgb(43, 145, 175), Rgb(240, 240, 240),
      Rgb(232, 242, 254), Rgb(0, 0, 255), Rgb(43, 145, 175), Rgb(111, 0, 138), Rgb(0, 128, 0),
      Rgb(163, 21, 21), Rgb(0, 100, 100), Rgb(0, 120, 215), Rgb(228, 20, 0), Rgb(255, 200, 200),
      Rgb(255, 238, 98), Rgb(160, 160, 160), Rgb(173, 214, 255), Rgb(128, 0, 128)}},
    {"PHP Extended",
     {Rgb(248, 248, 248), Rgb(0, 0, 0), Rgb(234, 234, 234), Rgb(100, 100, 100), Rgb(242, 242, 242),
      Rgb(255, 255, 215), Rgb(0, 119, 0), Rgb(0, 0, 187), Rgb(153, 0, 153), Rgb(200, 100, 0),
      Rgb(221, 0, 0), Rgb(0, 128, 128), Rgb(0, 140, 0), Rgb(200, 0, 0), Rgb(255, 180, 180),
      Rgb(255, 255, 140), Rgb(170, 170, 170), Rgb(200, 200, 255), Rgb(153, 0, 153)}},
    {"Black Style",
     {Rgb(30, 30, 30), Rgb(220, 220, 220), Rgb(45, 45, 45), Rgb(140, 140, 140), Rgb(38, 38, 38),
      Rgb(50, 50, 50), Rgb(86, 156, 214), Rgb(156, 220, 254), Rgb(197, 134, 192), Rgb(106, 153, 85),
      Rgb(206, 145, 120), Rgb(78, 201, 176), Rgb(80, 200, 80), Rgb(240, 80, 80), Rgb(110, 30, 30),
      Rgb(90, 90, 20), Rgb(100, 100, 100), Rgb(40, 60, 120), Rgb(220, 160, 220)}},
    {"Blue Style",
     {Rgb(0, 0, 128), Rgb(255, 255, 255), Rgb(0, 0, 96), Rgb(170, 170, 220), Rgb(0, 0, 110),
      Rgb(0, 0, 160), Rgb(255, 255, 0), Rgb(0, 255, 255), Rgb(255, 200, 100), Rgb(180, 180, 180),
      Rgb(255, 160, 160), Rgb(128, 255, 128), Rgb(0, 220, 0), Rgb(255, 80, 80), Rgb(128, 0, 0),
      Rgb(96, 96, 0), Rgb(120, 120, 200), Rgb(64, 64, 200), Rgb(255, 170, 255)}},
    {"White Style",
     {Rgb(255, 255, 255), Rgb(0, 0, 0), Rgb(255, 255, 255), Rgb(130, 130, 130), Rgb(255, 255, 255),
      Rgb(245, 245, 245), Rgb(40, 40, 40), Rgb(70, 70, 70), Rgb(40, 40, 40), Rgb(120, 120, 120),
      Rgb(90, 90, 90), Rgb(60, 60, 60), Rgb(100, 100, 100), Rgb(0, 0, 0), Rgb(225, 225, 225),
      Rgb(235, 235, 235), Rgb(200, 200, 200), Rgb(215, 215, 215), Rgb(60, 60, 60)}},
};

// The colours of the palette that the editor has.
std::map<EditorColor, int> ForEditor(const RolePalette& palette, EditorKind kind) {
    std::map<EditorColor, int> out;
    for (const EditorColorRow& row : EditorSettingRows(kind).colors)
        out[row.role] = palette[static_cast<size_t>(row.role)];
    return out;
}

std::vector<EditorTheme> BuildThemes() {
    std::vector<EditorTheme> themes;
    themes.push_back({"Corvalent (Default)", DefaultEditorSettings(EditorKind::Basic).colors,
                      DefaultEditorSettings(EditorKind::Assembler).colors});
    for (const PaletteTheme& t : kPaletteThemes)
        themes.push_back({t.name, ForEditor(t.colors, EditorKind::Basic),
                          ForEditor(t.colors, EditorKind::Assembler)});
    return themes;
}

}  // namespace

const EditorRows& EditorSettingRows(EditorKind kind) {
    return kind == EditorKind::Basic ? kBasicRows : kAssemblerRows;
}

int EditorSettings::Color(EditorColor role) const {
    auto it = colors.find(role);
    return it == colors.end() ? -1 : it->second;
}

bool EditorSettings::On(EditorSwitch role) const {
    auto it = switches.find(role);
    return it != switches.end() && it->second;
}

EditorSettings DefaultEditorSettings(EditorKind kind, double screenScale) {
    const EditorRows& rows = EditorSettingRows(kind);
    EditorSettings e;
    e.kind = kind;
    e.fontName = rows.fontName;
    e.fontSize = screenScale > 1.0 ? rows.fontSizeScaled : rows.fontSize;
    for (const EditorColorRow& row : rows.colors) e.colors[row.role] = row.def;
    for (const EditorSwitchRow& row : rows.switches) e.switches[row.role] = row.def;
    return e;
}

EditorSettings ReadEditorSettings(SettingsStore& settings, EditorKind kind, double screenScale) {
    const EditorRows& rows = EditorSettingRows(kind);
    const EditorSettings def = DefaultEditorSettings(kind, screenScale);
    EditorSettings e;
    e.kind = kind;
    e.fontName = settings.GetSettingText(rows.fontNameKey, def.fontName);
    if (e.fontName.empty()) e.fontName = def.fontName;
    e.fontSize = settings.GetSettingInt(rows.fontSizeKey, def.fontSize);
    if (e.fontSize < 1 || e.fontSize > 200) e.fontSize = def.fontSize;
    // A colour outside 24 bits (a damaged value) reads as its default.
    for (const EditorColorRow& row : rows.colors) {
        const int value = settings.GetSettingInt(row.key, row.def);
        e.colors[row.role] = value >= 0 && value <= 0xFFFFFF ? value : row.def;
    }
    for (const EditorSwitchRow& row : rows.switches)
        e.switches[row.role] = settings.GetSettingInt(row.key, row.def ? 1 : 0) != 0;
    return e;
}

void WriteEditorSettings(SettingsStore& settings, const EditorSettings& editor) {
    const EditorRows& rows = EditorSettingRows(editor.kind);
    settings.SetSettingText(rows.fontNameKey, editor.fontName);
    settings.SetSettingInt(rows.fontSizeKey, editor.fontSize);
    for (const EditorColorRow& row : rows.colors) {
        const int value = editor.Color(row.role);
        settings.SetSettingInt(row.key, value >= 0 ? value : row.def);
    }
    for (const EditorSwitchRow& row : rows.switches)
        settings.SetSettingInt(row.key, editor.On(row.role) ? 1 : 0);
}

const std::vector<EditorTheme>& PredefinedEditorThemes() {
    static const std::vector<EditorTheme> themes = BuildThemes();
    return themes;
}

void ApplyEditorTheme(EditorSettings& editor, const EditorTheme& theme) {
    for (const auto& [role, color] : theme.For(editor.kind)) editor.colors[role] = color;
}

}  // namespace mb
