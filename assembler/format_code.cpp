#include "format_code.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "assembler/editor_marks.h"
#include "assembler/expression.h"
#include "assembler/source_text.h"
#include "settings/settings_store.h"

namespace mb {

// How a line is laid out:
// - Tabs become blanks, trailing blanks go, runs of blanks outside quotes become
//   one. "'" directly behind AF opens no quote (EX AF,AF').
// - The first ";" outside quotes starts the comment: ";", the configured blanks,
//   the comment's text without leading blanks. The text keeps its inner spacing;
//   a comment without text is ";" alone.
// - A line that does not begin with a blank holds a label up to the first blank.
//   A label that begins like a name and holds a colon ends at the colon
//   ("LOOP:LD A,1"), as the assembler reads it; ":=" stays whole. "Label Add
//   Colon" gives a colon only to labels that the assembler reads as names, so
//   directives in the first column ("ORG 100", ".ORG 100", "X=5") stay as they are.
// - Then the instruction word and the arguments, in which the commas outside
//   quotes lose the blanks around them and get one behind when "Argument Space
//   After Comma" is 1.
// - Columns count from 0; a tab advances to the next multiple of 8. A field is
//   followed by its tabs, or by blanks up to its width (counted from the field's
//   first column; for the comment, "Comment Start Column" from column 0) but at
//   least its least space. The space behind a field is written only when a field
//   follows, so no line ends in white space; a missing field takes no space (an
//   instruction word without arguments is followed directly by the comment's
//   space). At least one blank stands behind a label and behind the instruction
//   word, so neither ever runs into the next field.
// - A comment on a line of its own stays in column 0 when it began there;
//   otherwise it goes where the comment rule puts it.
// - Protected lines and the editor's marks comment pass unchanged; an empty or
//   blank line becomes empty.

namespace {

// Settings beyond this are taken as this, so a wild value cannot blow a line up.
constexpr int kFormatLimit = 255;
constexpr int kTabWidth = 8;

int Limited(int value) {
    return std::clamp(value, 0, kFormatLimit);
}

int ColumnAfter(const std::string& text) {
    int column = 0;
    for (char c : text) column = c == '\t' ? (column / kTabWidth + 1) * kTabWidth : column + 1;
    return column;
}

// The space behind a field that began at column start.
void AppendSpace(std::string& out, int tabs, int start, int width, int minSpace) {
    if (Limited(tabs) > 0) {
        out.append(static_cast<size_t>(Limited(tabs)), '\t');
        return;
    }
    const int blanks = std::max(Limited(minSpace), start + Limited(width) - ColumnAfter(out));
    out.append(static_cast<size_t>(blanks), ' ');
}

std::string CollapseOutsideQuotes(const std::string& text) {
    const std::vector<bool> quoted = QuotedPositions(text);
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == ' ' && !quoted[i] && i > 0 && text[i - 1] == ' ') continue;
        out.push_back(text[i]);
    }
    return out;
}

size_t FirstOutsideQuotes(const std::string& text, char wanted) {
    const std::vector<bool> quoted = QuotedPositions(text);
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] == wanted && !quoted[i]) return i;
    return std::string::npos;
}

// A blank next to an unquoted comma is never quoted itself, so it can go.
std::string SetCommas(const std::string& args, bool spaceAfter) {
    const std::vector<bool> quoted = QuotedPositions(args);
    std::string out;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] != ',' || quoted[i]) {
            out.push_back(args[i]);
            continue;
        }
        while (!out.empty() && out.back() == ' ') out.pop_back();
        out += spaceAfter ? ", " : ",";
        while (i + 1 < args.size() && args[i + 1] == ' ') ++i;
    }
    return TrimRight(out);
}

bool BeginsLikeName(const std::string& word) {
    return !word.empty() && (std::isalpha(static_cast<unsigned char>(word[0])) || word[0] == '_');
}

// A label that the assembler reads as a name of its own.
bool TakesColon(const std::string& label) {
    if (!BeginsLikeName(label)) return false;
    for (char c : label)
        if (!std::isalnum(static_cast<unsigned char>(c)) &&
            std::string_view("_.$?@").find(c) == std::string_view::npos)
            return false;
    return !IsInstructionMnemonic(label, true) && !IsReservedKeyword(label);
}

bool StartsWith(const std::string& text, std::string_view prefix) {
    return std::string_view(text).substr(0, prefix.size()) == prefix;
}

}  // namespace

const std::vector<FormatCodeOptionKey>& FormatCodeOptionKeys() {
    static const std::vector<FormatCodeOptionKey> kKeys = {
        {"Label Add Colon", &FormatCodeOptions::LabelAddColon},
        {"Label Tabs", &FormatCodeOptions::LabelTabs},
        {"Label Min Space", &FormatCodeOptions::LabelMinSpace},
        {"Label Width", &FormatCodeOptions::LabelWidth},
        {"Argument Tabs", &FormatCodeOptions::ArgumentTabs},
        {"Argument Min Space", &FormatCodeOptions::ArgumentMinSpace},
        {"Argument Width", &FormatCodeOptions::ArgumentWidth},
        {"Argument Space After Comma", &FormatCodeOptions::ArgumentSpaceAfterComma},
        {"Comment Spaces After Semicolon", &FormatCodeOptions::CommentSpacesAfterSemicolon},
        {"Comment Tabs", &FormatCodeOptions::CommentTabs},
        {"Comment Start Column", &FormatCodeOptions::CommentStartColumn},
        {"Comment Min Space", &FormatCodeOptions::CommentMinSpace},
    };
    return kKeys;
}

FormatCodeOptions ReadFormatCodeOptions(SettingsStore& settings) {
    FormatCodeOptions options;
    for (const FormatCodeOptionKey& key : FormatCodeOptionKeys())
        options.*key.member = settings.GetSettingInt(
            std::string(kFormatCodeSettingPrefix) + key.name, options.*key.member);
    return options;
}

void WriteFormatCodeOptions(SettingsStore& settings, const FormatCodeOptions& options) {
    for (const FormatCodeOptionKey& key : FormatCodeOptionKeys())
        settings.SetSettingInt(std::string(kFormatCodeSettingPrefix) + key.name,
                               options.*key.member);
}

std::string FormatCodeLine(const std::string& line, const FormatCodeOptions& o) {
    if (StartsWith(line, kProtectedPrefix) || StartsWith(line, kBookmarksComment)) return line;

    std::string t = line;
    std::replace(t.begin(), t.end(), '\t', ' ');
    t = TrimRight(t);

    const size_t semicolon = FirstOutsideQuotes(t, ';');
    std::string comment;
    if (semicolon != std::string::npos) {
        const std::string text = TrimLeft(t.substr(semicolon + 1));
        comment = ";";
        if (!text.empty())
            comment +=
                std::string(static_cast<size_t>(Limited(o.CommentSpacesAfterSemicolon)), ' ') +
                text;
    }
    const std::string code = TrimRight(CollapseOutsideQuotes(t.substr(0, semicolon)));

    std::string out;
    if (code.empty()) {
        if (comment.empty() || t[0] == ';') return comment;
        AppendSpace(out, o.CommentTabs, 0, o.CommentStartColumn, o.CommentMinSpace);
        return out + comment;
    }

    std::string label, rest = code;
    if (code[0] != ' ') {
        const size_t blank = FirstOutsideQuotes(code, ' ');
        label = code.substr(0, blank);
        rest = blank == std::string::npos ? "" : code.substr(blank);
        const size_t colon = FirstOutsideQuotes(label, ':');
        if (BeginsLikeName(label) && colon != std::string::npos && colon + 1 < label.size() &&
            label[colon + 1] != '=') {
            rest = label.substr(colon + 1) + rest;
            label.resize(colon + 1);
        }
        if (o.LabelAddColon == 1 && TakesColon(label)) label += ':';
    }
    rest = TrimLeft(rest);
    const size_t blank = FirstOutsideQuotes(rest, ' ');
    const std::string word = rest.substr(0, blank);
    const std::string args = blank == std::string::npos ? ""
                                                        : SetCommas(TrimLeft(rest.substr(blank)),
                                                                    o.ArgumentSpaceAfterComma == 1);

    out = label;
    if (!word.empty()) {
        AppendSpace(out, o.LabelTabs, 0, o.LabelWidth, std::max(1, o.LabelMinSpace));
        const int wordStart = ColumnAfter(out);
        out += word;
        if (!args.empty()) {
            AppendSpace(out, o.ArgumentTabs, wordStart, o.ArgumentWidth,
                        std::max(1, o.ArgumentMinSpace));
            out += args;
        }
    }
    if (!comment.empty()) {
        AppendSpace(out, o.CommentTabs, 0, o.CommentStartColumn, o.CommentMinSpace);
        out += comment;
    }
    return out;
}

std::string FormatCode(const std::string& text, const FormatCodeOptions& options) {
    std::string out;
    out.reserve(text.size() + text.size() / 4);
    size_t start = 0;
    while (true) {
        const size_t end = text.find_first_of("\r\n", start);
        if (end == std::string::npos) {
            out += FormatCodeLine(text.substr(start), options);
            return out;
        }
        out += FormatCodeLine(text.substr(start, end - start), options);
        const size_t breakSize = text.compare(end, 2, "\r\n") == 0 ? 2 : 1;
        out += text.substr(end, breakSize);
        start = end + breakSize;
    }
}

}  // namespace mb
