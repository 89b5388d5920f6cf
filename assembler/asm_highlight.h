// Colour classes of the words of one source line, for the Assembler window's
// editor. It follows the assembler's own reading: a word in the first column is
// a label, then the instruction word, then the operands.
#pragma once

#include <string_view>
#include <vector>

namespace mb {

enum class AsmStyle { Default, Mnemonic, Register, Directive, Comment, String, Number };

struct AsmSpan {
    int Start = 0;
    int Length = 0;
    AsmStyle Style = AsmStyle::Default;
    bool operator==(const AsmSpan&) const = default;
};

// Spans in order, covering only the coloured parts (labels and names stay
// Default and are left out).
std::vector<AsmSpan> HighlightAsmLine(std::string_view line);

}  // namespace mb
