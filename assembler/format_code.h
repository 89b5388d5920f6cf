// Format Code: lays out assembler source in columns (label, instruction word,
// arguments, comment) by the user's format options.
#pragma once

#include <string>
#include <vector>

namespace mb {

class SettingsStore;

// Each option is the setting "Assembler Format Code - " + its name.
struct FormatCodeOptions {
    int LabelAddColon = 0;                // "Label Add Colon"
    int LabelTabs = 1;                    // "Label Tabs"
    int LabelMinSpace = 0;                // "Label Min Space" (at least 1 is used)
    int LabelWidth = 0;                   // "Label Width"
    int ArgumentTabs = 0;                 // "Argument Tabs"
    int ArgumentMinSpace = 1;             // "Argument Min Space"
    int ArgumentWidth = 0;                // "Argument Width"
    int ArgumentSpaceAfterComma = 0;      // "Argument Space After Comma"
    int CommentSpacesAfterSemicolon = 2;  // "Comment Spaces After Semicolon"
    int CommentTabs = 0;                  // "Comment Tabs"
    int CommentStartColumn = 30;          // "Comment Start Column"
    int CommentMinSpace = 3;              // "Comment Min Space"
};

inline constexpr const char* kFormatCodeSettingPrefix = "Assembler Format Code - ";

// The options with their names, in the order of the table above.
struct FormatCodeOptionKey {
    const char* name;
    int FormatCodeOptions::*member;
};
const std::vector<FormatCodeOptionKey>& FormatCodeOptionKeys();

// Reads every option (a missing one is written back with its default).
FormatCodeOptions ReadFormatCodeOptions(SettingsStore& settings);
void WriteFormatCodeOptions(SettingsStore& settings, const FormatCodeOptions& options);

// One source line, without its line break.
std::string FormatCodeLine(const std::string& line, const FormatCodeOptions& options);

// A whole text: every line formatted, each keeping its own line break (CR LF,
// LF or CR), a last line without one staying without.
std::string FormatCode(const std::string& text, const FormatCodeOptions& options);

}  // namespace mb
