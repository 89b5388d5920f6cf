// A test program around the runtime library: a driver that calls one routine
// for each record of a table in memory, assembled once with the runtime lines
// that a RuntimeNeeds selects. Records are written into memory and the program
// is run again from the start, so that thousands of calls cost one assembly.
// Shared by the runtime tests and the runtime benchmark.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "runtime/runtime_library.h"
#include "support/z80_run.h"

namespace mb::testing {

// Where the drivers keep things. The compiler places the system variables
// below its IX base; here they have fixed addresses of their own.
constexpr int kRegR0 = 0xFE00, kRegR1 = 0xFE01, kRegR2 = 0xFE02, kRegR3 = 0xFE03;
constexpr int kPrintInd = 0xFE10, kPrintStr = 0xFE11;  // PRINT_STR 12 bytes, guard behind
constexpr int kErrorWord = 0xFF00;
constexpr int kRecordCountCell = 0x1FFE;
constexpr int kRecordTable = 0x2000;
constexpr int kRecordSize = 32;
constexpr int kRecordsPerRun = (0xEF00 - kRecordTable) / kRecordSize;
constexpr int kStackTop = 0xF000;

// Z80 flag bits.
constexpr int kFlagS = 0x80, kFlagZ = 0x40, kFlagPV = 0x04, kFlagC = 0x01;

// How a call treats the stack operand.
enum class StackOperand {
    kNone,      // registers only
    kConsumed,  // pushed as PUSH BC, PUSH DE; the routine takes it off (A101, A201, ...)
    kArgument,  // pushed the same way; the caller drops it after (F001 to F007)
};

// The registers of one call; BCDE holds B in its top byte.
struct RoutineCall {
    uint32_t BCDE = 0;
    int HL = 0;
    int A = 0;
    bool Carry = false;
    StackOperand Push = StackOperand::kNone;
    uint32_t Stack = 0;
};

struct RoutineResult {
    uint32_t BCDE = 0;
    uint32_t AltBCDE = 0;
    int HL = 0;
    int A = 0;
    int F = 0;
    int ErrorWord = 0;
    int SP = 0;  // after the call and the caller's pops
};

// A Single from three draws taken in this order (so that a seed gives the same
// values with every compiler): the sign, the biased exponent from
// exponentFrom on (exponentCount values), the fraction.
inline uint32_t RandomSingle(std::mt19937& rng, uint32_t exponentFrom, uint32_t exponentCount) {
    const uint32_t sign = rng() & 0x80000000u;
    const uint32_t exponent = exponentFrom + rng() % exponentCount;
    const uint32_t fraction = rng() & 0x7FFFFF;
    return sign | exponent << 23 | fraction;
}

// The needs of the groups of flags.
inline RuntimeNeeds NeedsOf(std::initializer_list<int> flags) {
    RuntimeNeeds needs;
    for (int flag : flags) needs.Set(flag);
    return needs;
}

inline std::string RuntimeTestHeader() {
    return "\t.ORG 0000H\r\n"
           "REG_R0\t.EQU 0FE00H\r\nREG_R1\t.EQU 0FE01H\r\nREG_R2\t.EQU 0FE02H\r\n"
           "REG_R3\t.EQU 0FE03H\r\nPRINT_IND\t.EQU 0FE10H\r\nPRINT_STR\t.EQU 0FE11H\r\n";
}

// Record layout: in +0 A, +2 BCDE (C, B, E, D order as registers C B E D),
// +6 HL, +8 stack operand (low word first), +12 push kind, +13 carry,
// +14 routine address; out +16 A, +17 F, +18 C, +19 B, +20 E, +21 D,
// +22 L, +23 H, +24 C', +25 B', +26 E', +27 D', +28 error word, +30 SP.
inline std::string RecordDriver() {
    return "\tLD SP,0F000H\r\n"
           "\tLD IX,2000H\r\n"
           "\tLD HL,(1FFEH)\r\n"
           "ZNEXT:\tLD A,H\r\n\tOR L\r\n\tJP Z,ZDONE\r\n"
           "\tPUSH HL\r\n"
           "\tLD HL,0\r\n\tLD (0FF00H),HL\r\n"
           "\tLD L,(IX+14)\r\n\tLD H,(IX+15)\r\n\tPUSH HL\r\n\tPOP IY\r\n"
           "\tLD A,(IX+12)\r\n\tOR A\r\n\tJR Z,ZNOPUSH\r\n"
           "\tLD E,(IX+8)\r\n\tLD D,(IX+9)\r\n\tLD C,(IX+10)\r\n\tLD B,(IX+11)\r\n"
           "\tPUSH BC\r\n\tPUSH DE\r\n"
           "ZNOPUSH:\tLD C,(IX+2)\r\n\tLD B,(IX+3)\r\n\tLD E,(IX+4)\r\n\tLD D,(IX+5)\r\n"
           "\tLD L,(IX+6)\r\n\tLD H,(IX+7)\r\n"
           "\tLD A,(IX+13)\r\n\tRRA\r\n\tLD A,(IX+0)\r\n"
           "\tCALL ZCALL\r\n"
           "ZBACK:\tLD (IX+16),A\r\n"
           "\tLD (IX+18),C\r\n\tLD (IX+19),B\r\n\tLD (IX+20),E\r\n\tLD (IX+21),D\r\n"
           "\tLD (IX+22),L\r\n\tLD (IX+23),H\r\n"
           "\tPUSH AF\r\n\tPOP HL\r\n\tLD (IX+17),L\r\n"
           "\tEXX\r\n\tLD (IX+24),C\r\n\tLD (IX+25),B\r\n\tLD (IX+26),E\r\n\tLD (IX+27),D\r\n"
           "\tEXX\r\n"
           "\tLD HL,(0FF00H)\r\n\tLD (IX+28),L\r\n\tLD (IX+29),H\r\n"
           "\tLD A,(IX+12)\r\n\tCP 2\r\n\tJR NZ,ZNOPOP\r\n\tPOP HL\r\n\tPOP HL\r\n"
           "ZNOPOP:\tLD HL,0\r\n\tADD HL,SP\r\n\tLD (IX+30),L\r\n\tLD (IX+31),H\r\n"
           "\tLD DE,32\r\n\tADD IX,DE\r\n"
           "\tPOP HL\r\n\tDEC HL\r\n\tJP ZNEXT\r\n"
           "ZDONE:\tHALT\r\n"
           "ZCALL:\tJP (IY)\r\n"
           "ZRET:\tRET\r\n";
}

class RuntimeProgram {
  public:
    // Assembles the driver, extra (more lines of the test, CR LF ended) and the
    // runtime lines of needs with what they call; false with Errors set when
    // the assembly or the load fails.
    bool Build(RuntimeNeeds needs, int singleDecimals = kDefaultSingleDecimals,
               const std::string& extra = "") {
        AddRuntimeDependencies(needs);
        std::string text = RuntimeTestHeader() + RecordDriver() + extra;
        for (const std::string& line : RuntimeLines(needs, singleDecimals)) text += line + "\r\n";
        text += "\t.END\r\n";
        return BuildText(text);
    }

    // Assembles a complete source text.
    bool BuildText(const std::string& text) {
        static int counter = 0;
        const auto dir =
            std::filesystem::temp_directory_path() /
            ("mb_runtime_" + std::to_string(::getpid()) + "_" + std::to_string(++counter));
        std::filesystem::create_directories(dir);
        const int errors = run_.AssembleText(dir.string(), "prog.asm", text);
        bool ok = errors == 0;
        if (!ok) Errors = run_.AssemblerErrors;
        if (ok && !run_.Load((dir / "prog.obj").string())) {
            Errors = run_.LoadMessage;
            ok = false;
        }
        std::error_code ignored;
        std::filesystem::remove_all(dir, ignored);
        return ok;
    }

    int Address(const std::string& label) const { return run_.Label(label); }

    // Calls routine once per entry of calls; the port output of all of them
    // is in Output afterwards. An unknown routine or a run that does not end
    // gives no results and sets Errors.
    std::vector<RoutineResult> Call(const std::string& routine,
                                    const std::vector<RoutineCall>& calls, int outPort = 1) {
        std::vector<RoutineResult> results;
        Output.clear();
        const int address = Address(routine);
        if (address < 0) {
            Errors = "no label " + routine;
            return {};
        }
        for (std::size_t first = 0; first < calls.size(); first += kRecordsPerRun) {
            const std::size_t count = std::min<std::size_t>(kRecordsPerRun, calls.size() - first);
            for (std::size_t i = 0; i < count; ++i)
                Poke(kRecordTable + static_cast<int>(i) * kRecordSize, calls[first + i], address);
            run_.SetWord(kRecordCountCell, static_cast<int>(count));
            if (!run_.Run(outPort, 400'000'000)) {
                Errors = "the driver did not halt";
                return {};
            }
            Output += run_.Output;
            for (std::size_t i = 0; i < count; ++i)
                results.push_back(Peek(kRecordTable + static_cast<int>(i) * kRecordSize));
        }
        return results;
    }

    RoutineResult CallOnce(const std::string& routine, const RoutineCall& call, int outPort = 1) {
        const std::vector<RoutineResult> results = Call(routine, {call}, outPort);
        return results.empty() ? RoutineResult{} : results.front();
    }

    Z80Run& Runner() { return run_; }

    // The 0-terminated text at address (at most limit bytes).
    std::string Text(int address, int limit = 256) const {
        std::string text;
        for (int i = 0; i < limit && run_.Byte(address + i) != 0; ++i)
            text.push_back(static_cast<char>(run_.Byte(address + i)));
        return text;
    }
    void SetText(int address, const std::string& text) {
        for (std::size_t i = 0; i < text.size(); ++i)
            run_.SetByte(address + static_cast<int>(i), static_cast<unsigned char>(text[i]));
        run_.SetByte(address + static_cast<int>(text.size()), 0);
    }

    std::string Errors, Output;

  private:
    void Poke(int at, const RoutineCall& call, int routine) {
        run_.SetByte(at + 0, call.A);
        run_.SetByte(at + 2, static_cast<int>(call.BCDE >> 16));  // C
        run_.SetByte(at + 3, static_cast<int>(call.BCDE >> 24));  // B
        run_.SetWord(at + 4, static_cast<int>(call.BCDE & 0xFFFF));
        run_.SetWord(at + 6, call.HL);
        run_.SetLong(at + 8, call.Stack);
        run_.SetByte(at + 12, static_cast<int>(call.Push));
        run_.SetByte(at + 13, call.Carry ? 1 : 0);
        run_.SetWord(at + 14, routine);
    }
    RoutineResult Peek(int at) const {
        RoutineResult r;
        r.A = run_.Byte(at + 16);
        r.F = run_.Byte(at + 17);
        r.BCDE = static_cast<uint32_t>(run_.Byte(at + 19)) << 24 |
                 static_cast<uint32_t>(run_.Byte(at + 18)) << 16 |
                 static_cast<uint32_t>(run_.Word(at + 20));
        r.HL = run_.Word(at + 22);
        r.AltBCDE = static_cast<uint32_t>(run_.Byte(at + 25)) << 24 |
                    static_cast<uint32_t>(run_.Byte(at + 24)) << 16 |
                    static_cast<uint32_t>(run_.Word(at + 26));
        r.ErrorWord = run_.Word(at + 28);
        r.SP = run_.Word(at + 30);
        return r;
    }

    Z80Run run_;
};

}  // namespace mb::testing
