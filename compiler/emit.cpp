// The text of the output: lines, labels, and the loads and stores by which
// generated code reaches plain variables and constants.
#include <cstdlib>

#include "compiler/basic_numbers.h"
#include "compiler/compiler.h"
#include "compiler/output_text.h"
#include "core/numtext.h"

namespace mb {

void Compiler::emitComment(const std::string& text) {
    st_.outputLines.push_back(text);
}

void Compiler::emitLabel(const std::string& label, const std::string& text) {
    if (text.compare(0, 4, ".EQU") == 0) {
        st_.outputLines.push_back(label + "\t" + text);
    } else {
        st_.outputLines.push_back(label + ":\t" + text);
    }
}

void Compiler::emitCode(const std::string& text) {
    st_.outputLines.push_back("\t" + (options_.tasmListing ? tasmRewrite(text) : text));
}

std::string Compiler::newLabel() {
    ++st_.labelCounter;
    const std::string digits = "000" + std::to_string(st_.labelCounter);
    return "L" + digits.substr(digits.size() - 4);
}

void Compiler::debugComment(const std::string& text) {
    if (run_.debugComments) emitComment(";     " + text);
}

// ,low and ,high operands as the outside assembler TASM writes them: a number
// is worked out here, a name becomes a mask or a shift.
std::string tasmRewrite(const std::string& line) {
    std::size_t at = line.find(",low");
    if (at == std::string::npos) at = line.find(",high");
    if (at == std::string::npos) return line;
    const std::string head = line.substr(0, at + 1);
    Tokens t;
    if (!statementTokens(TrimText(line.substr(at + 1)), t)) return line;
    int last = 1;
    while (last < kMaxTokens && !t[last + 1].empty()) ++last;
    if (const std::optional<uint32_t> number = readNumber(t[last])) {
        long long value = *number;
        for (int i = last - 1; i >= 1; --i) {
            const std::string& op = t[i];
            if (op == "low") {
                value %= 256;
            } else if (op == "high") {
                value = value / 256 % 256;
            } else if (op == "loww") {
                value %= 65536;
            } else if (op == "highw") {
                value /= 65536;
            } else {
                return line;
            }
        }
        return head + AsmHex4(static_cast<int>(value & 0xFFFF)) + "H";
    }
    if (last == 2 && t[1] == "low") return head + t[2] + " & 0FFH";
    if (last == 2 && t[1] == "high") return head + "(" + t[2] + " >> 8) & 0FFH";
    return line;
}

std::string Compiler::internalError(const std::string& specifics) const {
    return "Internal compiler error!\r\n" + specifics +
           "\r\nPlease send the basic program you tried to compile to Corvalent.\r\nPlease use "
           "Help\\Bug Report Interface menu command for that purpose... ";
}

}  // namespace mb
