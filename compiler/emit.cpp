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

namespace {

int registerWidth(const std::string& reg) {
    if (reg == "BC:DE") return 4;
    return reg.size() == 2 ? 2 : 1;
}

int typeWidth(TypeCode type) {
    return type == kTypeString ? 2 : typeSize(type);
}

bool isSigned(TypeCode type) {
    return type == kTypeShort || type == kTypeInteger || type == kTypeLong;
}

std::string lowOf(const std::string& pair) {
    return pair.substr(1, 1);
}
std::string highOf(const std::string& pair) {
    return pair.substr(0, 1);
}

// "(IX-05H)" for an offset in reach of an indexed load, or "".
std::string indexed(int offset) {
    if (offset >= -126 && offset < 0) return "(IX-" + codeHex2(-offset) + ")";
    return "";
}

}  // namespace

bool Compiler::load(TypeCode type, const std::string& reg, TypeCode sourceType,
                    const std::string& text, int address) {
    (void)type;
    const int width = registerWidth(reg);
    const bool negative = !text.empty() && text[0] == '-';
    if (readNumber(negative ? text.substr(1) : text) && findVariable(text) == 0) {
        const TypeCode target = width == 1 ? kTypeUShort : width == 2 ? kTypeUInteger : kTypeULong;
        long long value = 0;
        if (!constantValue(isSigned(sourceType) ? static_cast<TypeCode>(sourceType) : target, text,
                           value)) {
            return false;
        }
        if (width == 1) {
            emitCode(value == 0 && reg == "A" ? "XOR A" : "LD " + reg + "," + codeHex2(int(value)));
        } else if (width == 2) {
            emitCode("LD " + reg + "," + codeHex4(int(value)));
        } else {
            emitCode("LD BC," + codeHex4(int((value >> 16) & 0xFFFF)));
            emitCode("LD DE," + codeHex4(int(value & 0xFFFF)));
        }
        return true;
    }
    if (address >= 100000) return fail(internalError("array element loads are not built"));
    const int absolute = absoluteAddress(address);
    const std::string a = codeHex4(absolute);
    const int source = typeWidth(sourceType);
    auto load8 = [&](const std::string& r) {
        const std::string ix = indexed(address);
        if (r == "A") {
            emitCode("LD A,(" + a + ")");
        } else if (!ix.empty()) {
            emitCode("LD " + r + "," + ix);
        } else {
            emitCode("LD HL," + a);
            emitCode("LD " + r + ",(HL)");
        }
    };
    if (width == 1) {
        load8(reg);
        return true;
    }
    if (width == 2) {
        if (source >= 2) {
            emitCode("LD " + reg + ",(" + a + ")");
        } else if (!isSigned(sourceType)) {
            load8(lowOf(reg));
            emitCode("LD " + highOf(reg) + ",00H");
        } else {
            load8("A");
            emitCode("LD " + lowOf(reg) + ",A");
            emitCode("RLCA");
            emitCode("SBC A,A");
            emitCode("LD " + highOf(reg) + ",A");
        }
        return true;
    }
    switch (sourceType) {
        case kTypeUShort:
        case kTypeBit:
            load8("E");
            emitCode("LD BC,0000H");
            emitCode("LD D,B");
            break;
        case kTypeShort:
            load8("A");
            for (const char* line : {"LD E,A", "RLCA", "SBC A,A", "LD D,A", "LD C,A", "LD B,A"}) {
                emitCode(line);
            }
            break;
        case kTypeUInteger:
        case kTypeStrPtr:
            emitCode("LD DE,(" + a + ")");
            emitCode("LD BC,0000H");
            break;
        case kTypeInteger:
            emitCode("LD DE,(" + a + ")");
            for (const char* line : {"LD A,D", "RLCA", "SBC A,A", "LD C,A", "LD B,A"})
                emitCode(line);
            break;
        default:
            emitCode("LD DE,(" + a + ")");
            emitCode("LD BC,(" + codeHex4(absolute + 2) + ")");
            break;
    }
    if (sourceType == kTypeSingle && type != kTypeSingle) {
        emitCode("CALL X001");
        st_.learned.needs.Set(kNeedSingleToLong);
    } else if (type == kTypeSingle && sourceType != kTypeSingle) {
        emitCode(sourceType == kTypeULong ? "CALL X111" : "CALL X101");
        st_.learned.needs.Set(kNeedLongToSingle);
    }
    return true;
}

bool Compiler::store(TypeCode destType, int address, TypeCode sourceType, const std::string& reg) {
    if (address >= 100000) return fail(internalError("array element stores are not built"));
    const int absolute = absoluteAddress(address);
    const std::string a = codeHex4(absolute);
    const int width = typeWidth(destType);
    std::string r = reg;
    const int have = registerWidth(r);
    if (width == 1) {
        if (have > 1) r = have == 4 ? "E" : lowOf(r);  // the low part
        const std::string ix = indexed(address);
        if (r == "A") {
            emitCode("LD (" + a + "),A");
        } else if (r == "L") {
            emitCode("LD A,L");
            emitCode("LD (" + a + "),A");
        } else if (!ix.empty()) {
            emitCode("LD " + ix + "," + r);
        } else {
            emitCode("LD HL," + a);
            emitCode("LD (HL)," + r);
        }
        return true;
    }
    // Widen an 8-bit register into a pair, or take a pair's part.
    if (have == 1) {
        const std::string pair = width == 2 ? "HL" : "DE";
        if (r != lowOf(pair)) emitCode("LD " + lowOf(pair) + "," + r);
        if (isSigned(sourceType)) {
            emitCode("LD A," + lowOf(pair));
            emitCode("RLCA");
            emitCode("SBC A,A");
            emitCode("LD " + highOf(pair) + ",A");
        } else {
            emitCode("LD " + highOf(pair) + ",00H");
        }
        r = pair;
        if (width == 4) sourceType = isSigned(sourceType) ? kTypeInteger : kTypeUInteger;
    } else if (have == 4 && width == 2) {
        r = "DE";
    }
    if (width == 2) {
        emitCode("LD (" + a + ")," + r);
        return true;
    }
    if (registerWidth(r) == 2) {
        if (r == "HL") emitCode("EX DE,HL");
        if (r == "BC") {
            emitCode("LD D,B");
            emitCode("LD E,C");
        }
        if (isSigned(sourceType)) {
            for (const char* line : {"LD A,D", "RLCA", "SBC A,A", "LD C,A", "LD B,A"})
                emitCode(line);
        } else {
            emitCode("LD BC,0000H");
        }
    }
    emitCode("LD (" + a + "),DE");
    emitCode("LD (" + codeHex4(absolute + 2) + "),BC");
    return true;
}

std::string Compiler::internalError(const std::string& specifics) const {
    return "Internal compiler error!\r\n" + specifics +
           "\r\nPlease send the basic program you tried to compile to Corvalent.\r\nPlease use "
           "Help\\Bug Report Interface menu command for that purpose... ";
}

}  // namespace mb
