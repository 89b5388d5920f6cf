#include "editor_marks.h"

#include <algorithm>
#include <sstream>

namespace mb {

namespace {

std::string JoinNumbers(const std::vector<int>& numbers) {
    std::string out;
    for (int n : numbers) {
        if (!out.empty()) out += ',';
        out += std::to_string(n);
    }
    return out;
}

std::vector<int> ReadNumbers(const std::string& text, int maxLine) {
    std::vector<int> numbers;
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, ',')) {
        if (item.empty() || item.size() > 9 ||
            !std::all_of(item.begin(), item.end(), [](char c) { return c >= '0' && c <= '9'; }))
            continue;
        const int n = std::stoi(item);
        if (n >= 1 && n <= maxLine) numbers.push_back(n);
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

}  // namespace

std::string MarksCommentLine(const EditorMarks& marks) {
    return std::string(kBookmarksComment) + "bookmarks=" + JoinNumbers(marks.Bookmarks) +
           ";breakpoints=" + JoinNumbers(marks.Breakpoints);
}

bool TakeMarksComment(std::string& text, EditorMarks& marks, int maxLine) {
    size_t end = text.size();
    while (end > 0 && (text[end - 1] == '\n' || text[end - 1] == '\r')) --end;
    const size_t lineStart = text.find_last_of('\n', end == 0 ? 0 : end - 1);
    const size_t begin = lineStart == std::string::npos ? 0 : lineStart + 1;
    const std::string last = text.substr(begin, end - begin);
    const size_t at = last.find(kBookmarksComment);
    if (at == std::string::npos) return false;

    marks = {};
    std::stringstream in(last.substr(at + std::string(kBookmarksComment).size()));
    std::string part;
    while (std::getline(in, part, ';')) {
        const size_t eq = part.find('=');
        if (eq == std::string::npos) continue;
        const std::string key = part.substr(0, eq), value = part.substr(eq + 1);
        if (key == "bookmarks") marks.Bookmarks = ReadNumbers(value, maxLine);
        if (key == "breakpoints") marks.Breakpoints = ReadNumbers(value, maxLine);
    }
    size_t cut = begin;
    if (cut > 0 && text[cut - 1] == '\n') --cut;
    if (cut > 0 && text[cut - 1] == '\r') --cut;
    text.erase(cut);
    return true;
}

std::string AppendMarksComment(const std::string& text, const EditorMarks& marks) {
    const std::string lineBreak = text.find("\r\n") != std::string::npos ? "\r\n" : "\n";
    std::string out = text;
    if (!out.empty() && out.back() != '\n') out += lineBreak;
    return out + MarksCommentLine(marks) + lineBreak;
}

}  // namespace mb
