#include "asm_highlight.h"

#include <cctype>
#include <string>

#include "assembler/expression.h"
#include "assembler/source_text.h"
#include "assembler/vocabulary.h"

namespace mb {

namespace {

bool IsWordChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '#' ||
           c == '$' || c == '%' || c == '@' || c == '?';
}

bool IsDirectiveWord(std::string_view upper) {
    static constexpr std::string_view kWords[] = {"ORG", "EQU", "DB", "DW", "DS", "END", "INCLUDE"};
    const std::string_view canonical = CanonicalDirective(upper);
    for (std::string_view w : kWords)
        if (canonical == w) return true;
    return false;
}

bool IsRegisterWord(std::string_view upper) {
    static constexpr std::string_view kRegisters[] = {
        "A",   "B",   "C",  "D",  "E",  "H",  "L",  "I",  "R",   "F",
        "AF",  "AF'", "BC", "DE", "HL", "SP", "IX", "IY", "IXH", "IXL",
        "IYH", "IYL", "NZ", "Z",  "NC", "PO", "PE", "P",  "M"};
    for (std::string_view r : kRegisters)
        if (upper == r) return true;
    return false;
}

bool IsNumberWord(std::string_view word) {
    if (word.empty()) return false;
    const char c = word[0];
    if (std::isdigit(static_cast<unsigned char>(c))) return true;
    return word.size() > 1 && (c == '$' || c == '%') &&
           std::isxdigit(static_cast<unsigned char>(word[1]));
}

}  // namespace

std::vector<AsmSpan> HighlightAsmLine(std::string_view line) {
    std::vector<AsmSpan> spans;
    const int n = static_cast<int>(line.size());
    int wordIndex = 0;  // instruction word is the first word after the label
    // As in the assembler, only a letter or "_" in the first column starts a label.
    bool hasLabel = n > 0 && (std::isalpha(static_cast<unsigned char>(line[0])) || line[0] == '_');
    int i = 0;
    while (i < n) {
        const char c = line[i];
        if (c == ';') {
            spans.push_back({i, n - i, AsmStyle::Comment});
            break;
        }
        if (c == '"' || c == '\'') {
            const size_t close = line.find(c, static_cast<size_t>(i) + 1);
            const int end = close == std::string_view::npos ? n : static_cast<int>(close) + 1;
            spans.push_back({i, end - i, AsmStyle::String});
            i = end;
            continue;
        }
        if (!IsWordChar(c)) {
            ++i;
            continue;
        }
        int end = i;
        while (end < n && IsWordChar(line[end])) ++end;
        // AF' is one register, not the start of a quoted text.
        if (end < n && line[end] == '\'' && UpperText(line.substr(i, end - i)) == "AF") ++end;
        const std::string_view word = line.substr(i, end - i);
        const std::string upper = UpperText(word);
        if (hasLabel) {
            hasLabel = false;  // the label itself stays in the default colour
        } else if (wordIndex++ == 0) {
            if (IsInstructionMnemonic(word, true))
                spans.push_back({i, end - i, AsmStyle::Mnemonic});
            else if (IsDirectiveWord(upper))
                spans.push_back({i, end - i, AsmStyle::Directive});
        } else if (IsRegisterWord(upper)) {
            spans.push_back({i, end - i, AsmStyle::Register});
        } else if (IsNumberWord(word)) {
            spans.push_back({i, end - i, AsmStyle::Number});
        }
        i = end;
    }
    return spans;
}

}  // namespace mb
