// Fonts, colours and switches of the two source editors. The BASIC editor keeps
// them under names beginning "EC ", the assembler editor under "EA ".
//
// An editor window reads its look with
//     EditorSettings s = ReadEditorSettings(settings, EditorKind::Assembler, scale);
// and takes s.fontName, s.fontSize, s.Color(EditorColor::Keyword) (an integer
// red + 256 * green + 65536 * blue; see RedOf/GreenOf/BlueOf) and
// s.On(EditorSwitch::LineWrapping).
#pragma once

#include <map>
#include <string>
#include <vector>

#include "color_themes.h"
#include "settings_store.h"

namespace mb {

enum class EditorKind { Basic, Assembler };

// The colours of the editors. Each editor has its own share of them: Keyword3,
// Mark and Mark2 are the assembler's, Asm, Track and Annotation the BASIC editor's.
enum class EditorColor {
    Back,            // text area background
    Text,            // plain text
    LineNumberBack,  // line number margin
    LineNumberText,
    Margin,     // the marker margin (bookmarks, breakpoints)
    CaretLine,  // background of the line with the caret
    Keyword,    // BASIC keywords; assembler mnemonics
    Keyword2,   // BASIC user names; assembler registers
    Keyword3,   // assembler directives
    Comment,
    String,
    Asm,         // BASIC lines of inline assembler
    Bookmark,    // bookmark marker
    Breakpoint,  // breakpoint marker
    Error,       // background of a line with an error
    Track,       // BASIC tracking marker (line background)
    Annotation,  // BASIC separators
    Mark,        // assembler tracking marker (line background)
    Mark2,       // assembler second tracking marker
};

enum class EditorSwitch { AutoCaseControl, AutoFormatText, LineWrapping };

struct EditorColorRow {
    EditorColor role;
    const char* key;      // the setting name
    const char* caption;  // what the "Editor Setup" dialog shows
    int def;
};

struct EditorSwitchRow {
    EditorSwitch role;
    const char* key;
    const char* caption;
    bool def;
};

// The setting names and defaults of one editor, in the order the dialog shows them.
struct EditorRows {
    const char* fontNameKey;
    const char* fontSizeKey;
    const char* fontName;
    int fontSize;        // screen scale 1
    int fontSizeScaled;  // screen scale above 1
    std::vector<EditorColorRow> colors;
    std::vector<EditorSwitchRow> switches;
};

const EditorRows& EditorSettingRows(EditorKind kind);

struct EditorSettings {
    EditorKind kind = EditorKind::Basic;
    std::string fontName;
    int fontSize = 0;
    std::map<EditorColor, int> colors;  // only the editor's own colours
    std::map<EditorSwitch, bool> switches;

    // The colour of a role, -1 when this editor has no such colour.
    int Color(EditorColor role) const;
    // The switch, false when this editor has no such switch.
    bool On(EditorSwitch role) const;

    bool operator==(const EditorSettings&) const = default;
};

// screenScale: the screen's scale factor (1 for 96 dots per inch); above 1 the
// default font size grows.
EditorSettings DefaultEditorSettings(EditorKind kind, double screenScale = 1.0);
// A read writes each missing default back.
EditorSettings ReadEditorSettings(SettingsStore& settings, EditorKind kind,
                                  double screenScale = 1.0);
void WriteEditorSettings(SettingsStore& settings, const EditorSettings& editor);

// The colour sets offered by "Select Predefined Color Theme:". The first is the
// defaults of both editors.
struct EditorTheme {
    std::string name;
    std::map<EditorColor, int> basic;
    std::map<EditorColor, int> assembler;

    const std::map<EditorColor, int>& For(EditorKind kind) const {
        return kind == EditorKind::Basic ? basic : assembler;
    }
};

const std::vector<EditorTheme>& PredefinedEditorThemes();
// Sets the colours of the editor from the theme; font and switches stay.
void ApplyEditorTheme(EditorSettings& editor, const EditorTheme& theme);

}  // namespace mb
