#include "instruction_text.h"

#include <cstdlib>

#include "numtext.h"

namespace mb {

namespace {

constexpr const char* kReg[8] = {"B", "C", "D", "E", "H", "L", "(HL)", "A"};
constexpr const char* kPair[4] = {"BC", "DE", "HL", "SP"};
constexpr const char* kStackPair[4] = {"BC", "DE", "HL", "AF"};
constexpr const char* kCond[8] = {"NZ", "Z", "NC", "C", "PO", "PE", "P", "M"};
constexpr const char* kAlu[8] = {"ADD A,", "ADC A,", "SUB ", "SBC A,",
                                 "AND ",   "XOR ",   "OR ",  "CP "};
constexpr const char* kShift[8] = {"RLC ", "RRC ", "RL ", "RR ", "SLA ", "SRA ", "SLL ", "SRL "};
constexpr const char* kBitOp[4] = {"", "BIT ", "RES ", "SET "};

std::string Byte(int v) {
    return AsmHex2(v) + "H";
}
std::string Word(int lo, int hi) {
    return AsmHex4(lo + 256 * hi) + "H";
}

// DJNZ and JR operand: the displacement plus 2 with its sign.
std::string RelativeText(int d, bool hex) {
    const int v = (d < 128 ? d : d - 256) + 2;
    const int magnitude = std::abs(v);
    return std::string(v < 0 ? "-" : "+") + (hex ? pb_hex2H(magnitude) : std::to_string(magnitude));
}

// "(IX+05H)", "(IY-01H)".
std::string IndexOperand(const char* idx, int d) {
    const std::string sign = d < 128 ? "+" : "-";
    return std::string("(") + idx + sign + AsmHex2(d < 128 ? d : 256 - d) + "H)";
}

DecodedInstruction Undecoded(int b0, const char* text, int length) {
    return {".DB " + Byte(b0) + " ;" + text, length};
}

DecodedInstruction Unrecognized(int b0) {
    return Undecoded(b0, "UNRECOGNIZED", 1);
}

DecodedInstruction Base(int op, int b1, int b2, const DecodeOptions& opt) {
    const int x = op >> 6, y = (op >> 3) & 7, z = op & 7, p = y >> 1;
    if (x == 1) {
        if (op == 0x76) return {"HALT", 1};
        return {std::string("LD ") + kReg[y] + "," + kReg[z], 1};
    }
    if (x == 2) return {std::string(kAlu[y]) + kReg[z], 1};
    if (x == 0) {
        switch (z) {
            case 0:
                switch (y) {
                    case 0: return {"NOP", 1};
                    case 1: return {"EX AF,AF'", 1};
                    case 2: return {"DJNZ " + RelativeText(b1, opt.relativeHex), 2};
                    case 3: return {"JR " + RelativeText(b1, opt.relativeHex), 2};
                    default:
                        return {std::string("JR ") + kCond[y - 4] + "," +
                                    RelativeText(b1, opt.relativeHex),
                                2};
                }
            case 1:
                if (y & 1) return {std::string("ADD HL,") + kPair[p], 1};
                return {std::string("LD ") + kPair[p] + "," + Word(b1, b2), 3};
            case 2:
                switch (y) {
                    case 0: return {"LD (BC),A", 1};
                    case 1: return {"LD A,(BC)", 1};
                    case 2: return {"LD (DE),A", 1};
                    case 3: return {"LD A,(DE)", 1};
                    case 4: return {"LD (" + Word(b1, b2) + "),HL", 3};
                    case 5: return {"LD HL,(" + Word(b1, b2) + ")", 3};
                    case 6: return {"LD (" + Word(b1, b2) + "),A", 3};
                    default: return {"LD A,(" + Word(b1, b2) + ")", 3};
                }
            case 3: return {std::string(y & 1 ? "DEC " : "INC ") + kPair[p], 1};
            case 4: return {std::string("INC ") + kReg[y], 1};
            case 5: return {std::string("DEC ") + kReg[y], 1};
            case 6: return {std::string("LD ") + kReg[y] + "," + Byte(b1), 2};
            default: {
                static constexpr const char* kMisc[8] = {"RLCA", "RRCA", "RLA", "RRA",
                                                         "DAA",  "CPL",  "SCF", "CCF"};
                return {kMisc[y], 1};
            }
        }
    }
    switch (z) {
        case 0: return {std::string("RET ") + kCond[y], 1};
        case 1:
            if (!(y & 1)) return {std::string("POP ") + kStackPair[p], 1};
            static constexpr const char* kOdd[4] = {"RET", "EXX", "JP (HL)", "LD SP,HL"};
            return {kOdd[p], 1};
        case 2: return {std::string("JP ") + kCond[y] + "," + Word(b1, b2), 3};
        case 3:
            switch (y) {
                case 0: return {"JP " + Word(b1, b2), 3};
                case 2: return {"OUT (" + Byte(b1) + "),A", 2};
                case 3: return {"IN A,(" + Byte(b1) + ")", 2};
                case 4: return {"EX (SP),HL", 1};
                case 5: return {"EX DE,HL", 1};
                case 6: return {"DI", 1};
                default: return {"EI", 1};
            }
        case 4: return {std::string("CALL ") + kCond[y] + "," + Word(b1, b2), 3};
        case 5:
            if (!(y & 1)) return {std::string("PUSH ") + kStackPair[p], 1};
            return {"CALL " + Word(b1, b2), 3};
        case 6: return {std::string(kAlu[y]) + Byte(b1), 2};
        default: return {"RST " + pb_hex2H(8 * y), 1};
    }
}

DecodedInstruction CbGroup(int op, const DecodeOptions& opt) {
    const int x = op >> 6, y = (op >> 3) & 7, z = op & 7;
    if (x == 0) {
        if (y == 6 && !opt.unofficial) return Unrecognized(0xCB);
        return {kShift[y] + std::string(kReg[z]), 2};
    }
    return {kBitOp[x] + std::to_string(y) + "," + kReg[z], 2};
}

DecodedInstruction EdGroup(int op, int b2, int b3, const DecodeOptions& opt) {
    const auto unofficial = [&](DecodedInstruction d) {
        return opt.unofficial ? d : Undecoded(0xED, "UNRECOGNIZED", 1);
    };
    if (op >= 0x40 && op <= 0x7F) {
        const int y = (op >> 3) & 7, z = op & 7, p = y >> 1;
        switch (z) {
            case 0:
                if (y == 6) return unofficial({"IN (C)", 2});
                return {std::string("IN ") + kReg[y] + ",(C)", 2};
            case 1:
                if (y == 6) return unofficial({"OUT (C),0", 2});
                return {std::string("OUT (C),") + kReg[y], 2};
            case 2: return {std::string(y & 1 ? "ADC HL," : "SBC HL,") + kPair[p], 2};
            case 3:
                if (y & 1) return {std::string("LD ") + kPair[p] + ",(" + Word(b2, b3) + ")", 4};
                return {"LD (" + Word(b2, b3) + ")," + kPair[p], 4};
            case 4: return op == 0x44 ? DecodedInstruction{"NEG", 2} : unofficial({"NEG", 2});
            case 5:
                if (op == 0x4D) return {"RETI", 2};
                return op == 0x45 ? DecodedInstruction{"RETN", 2} : unofficial({"RETN", 2});
            case 6: {
                static constexpr int kMode[8] = {0, 0, 1, 2, 0, 0, 1, 2};
                DecodedInstruction d{"IM " + std::to_string(kMode[y]), 2};
                return (op == 0x46 || op == 0x56 || op == 0x5E) ? d : unofficial(d);
            }
            default: {
                static constexpr const char* kMisc[8] = {"LD I,A", "LD R,A", "LD A,I", "LD A,R",
                                                         "RRD",    "RLD",    nullptr,  nullptr};
                if (kMisc[y]) return {kMisc[y], 2};
                break;
            }
        }
    } else if (op >= 0xA0 && op <= 0xBB && (op & 7) <= 3) {
        static constexpr const char* kBlock[4][4] = {{"LDI", "CPI", "INI", "OUTI"},
                                                     {"LDD", "CPD", "IND", "OUTD"},
                                                     {"LDIR", "CPIR", "INIR", "OTIR"},
                                                     {"LDDR", "CPDR", "INDR", "OTDR"}};
        return {kBlock[(op >> 3) & 3][op & 3], 2};
    }
    return opt.unofficial ? Undecoded(0xED, "ED NOP NOP", 2) : Unrecognized(0xED);
}

DecodedInstruction IndexBitGroup(int prefix, const char* idx, int d, int op,
                                 const DecodeOptions& opt) {
    const int x = op >> 6, y = (op >> 3) & 7, z = op & 7;
    const std::string mem = IndexOperand(idx, d);
    const bool official = z == 6 && !(x == 0 && y == 6);
    if (!official && !opt.unofficial) return Unrecognized(prefix);
    std::string text = x == 0 ? kShift[y] + mem : kBitOp[x] + std::to_string(y) + "," + mem;
    if (z != 6 && x != 1) text += std::string(",") + kReg[z];
    return {text, 4};
}

DecodedInstruction IndexGroup(int prefix, int op, int b2, int b3, const DecodeOptions& opt) {
    const char* idx = prefix == 0xDD ? "IX" : "IY";
    const std::string hi = std::string(idx) + "h", lo = std::string(idx) + "l";
    const std::string mem = IndexOperand(idx, b2);
    const auto half = [&](int r) { return r == 4 ? hi : r == 5 ? lo : std::string(kReg[r]); };
    const auto unofficial = [&](std::string text, int length) {
        return opt.unofficial ? DecodedInstruction{std::move(text), length} : Unrecognized(prefix);
    };
    const int x = op >> 6, y = (op >> 3) & 7, z = op & 7;
    switch (op) {
        case 0x09:
        case 0x19:
        case 0x29:
        case 0x39: {
            const char* pairs[4] = {"BC", "DE", idx, "SP"};
            return {std::string("ADD ") + idx + "," + pairs[y >> 1], 2};
        }
        case 0x21: return {std::string("LD ") + idx + "," + Word(b2, b3), 4};
        case 0x22: return {"LD (" + Word(b2, b3) + ")," + idx, 4};
        case 0x2A: return {std::string("LD ") + idx + ",(" + Word(b2, b3) + ")", 4};
        case 0x23: return {std::string("INC ") + idx, 2};
        case 0x2B: return {std::string("DEC ") + idx, 2};
        case 0x34: return {"INC " + mem, 3};
        case 0x35: return {"DEC " + mem, 3};
        case 0x36: return {"LD " + mem + "," + Byte(b3), 4};
        case 0xE1: return {std::string("POP ") + idx, 2};
        case 0xE5: return {std::string("PUSH ") + idx, 2};
        case 0xE3: return {std::string("EX (SP),") + idx, 2};
        case 0xE9: return {std::string("JP (") + idx + ")", 2};
        case 0xF9: return {std::string("LD SP,") + idx, 2};
        case 0x24:
        case 0x2C: return unofficial("INC " + half(y), 2);
        case 0x25:
        case 0x2D: return unofficial("DEC " + half(y), 2);
        case 0x26:
        case 0x2E: return unofficial("LD " + half(y) + "," + Byte(b2), 3);
        default: break;
    }
    if (x == 1 && op != 0x76) {
        if (z == 6) return {std::string("LD ") + kReg[y] + "," + mem, 3};
        if (y == 6) return {"LD " + mem + "," + kReg[z], 3};
        if (z == 4 || z == 5 || y == 4 || y == 5)
            return unofficial("LD " + half(y) + "," + half(z), 2);
    }
    if (x == 2) {
        if (z == 6) return {kAlu[y] + mem, 3};
        if (z == 4 || z == 5) return unofficial(kAlu[y] + half(z), 2);
    }
    return opt.unofficial ? Undecoded(prefix, prefix == 0xDD ? "DD NOP" : "FD NOP", 1)
                          : Unrecognized(prefix);
}

}  // namespace

DecodedInstruction DecodeInstruction(int b0, int b1, int b2, int b3, const DecodeOptions& opt) {
    b0 &= 0xFF, b1 &= 0xFF, b2 &= 0xFF, b3 &= 0xFF;
    switch (b0) {
        case 0xCB: return CbGroup(b1, opt);
        case 0xED: return EdGroup(b1, b2, b3, opt);
        case 0xDD:
        case 0xFD:
            if (b1 == 0xCB) return IndexBitGroup(b0, b0 == 0xDD ? "IX" : "IY", b2, b3, opt);
            return IndexGroup(b0, b1, b2, b3, opt);
        default: return Base(b0, b1, b2, opt);
    }
}

}  // namespace mb
