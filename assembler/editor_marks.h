// Bookmarks and breakpoints of a source editor, kept across sessions in a
// comment on the source file's last line. Readers of the source for assembly or
// compilation drop that line before they count lines.
#pragma once

#include <string>
#include <vector>

namespace mb {

inline constexpr const char* kBookmarksComment = "'corvalent_bookmarks_and_breakpoints_info:";

// Line numbers from 1, ascending.
struct EditorMarks {
    std::vector<int> Bookmarks;
    std::vector<int> Breakpoints;
    bool operator==(const EditorMarks&) const = default;
};

// The comment line, without a line break: the prefix, then
// "bookmarks=3,10;breakpoints=7".
std::string MarksCommentLine(const EditorMarks& marks);

// True when the text's last line holds the comment: the line (and the line
// break before it) is cut from the text and its marks are read. Parts that
// cannot be read and lines beyond maxLine are skipped.
bool TakeMarksComment(std::string& text, EditorMarks& marks, int maxLine);

// The text with the marks comment appended on a line of its own, using the
// text's own line break.
std::string AppendMarksComment(const std::string& text, const EditorMarks& marks);

}  // namespace mb
