// The DD/FD groups with their unofficial half-register forms, the DDCB/FDCB
// groups, and the fallback of prefixes that decode nothing.
#include <gtest/gtest.h>

#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

TEST(ExecuteIndex, OfficialDdAndFd) {
    RunRows({
        {"LD IX,nn", "DD 21 34 12", "", "IX=1234 R=02", 14, 4},
        {"LD IY,nn", "FD 21 78 56", "", "IX=0000 IY=5678", 14, 4},
        {"ADD IX,BC", "DD 09", "F=Z BC=0001 IX=0FFF", "F=ZH IX=1000", 15, 2},
        {"ADD IX,IX", "DD 29", "F=- IX=8000", "F=C IX=0000", 15, 2},
        {"ADD IY,SP", "FD 39", "F=- IY=0001 SP=0002", "F=- IY=0003", 15, 2},
        {"ADD IY,DE", "FD 19", "F=- DE=1000 IY=1800", "F=YX IY=2800", 15, 2},
        {"LD (nn),IX", "DD 22 00 90", "IX=ABCD", "(9000)=CD,AB", 20, 4},
        {"LD IY,(nn)", "FD 2A 00 90", "(9000)=34,12", "IY=1234", 20, 4},
        {"INC IX wraps", "DD 23", "F=- IX=FFFF", "F=- IX=0000", 10, 2},
        {"DEC IY wraps", "FD 2B", "IY=0000", "IY=FFFF", 10, 2},
        {"INC (IX+5)", "DD 34 05", "F=- IX=9000 (9005)=7F", "F=SHP (9005)=80", 23, 3},
        {"DEC (IY-1)", "FD 35 FF", "F=- IY=9001 (9000)=01", "F=ZN (9000)=00", 23, 3},
        {"LD (IX+5),n", "DD 36 05 99", "IX=9000", "(9005)=99", 19, 4},
        {"LD B,(IX+2)", "DD 46 02", "IX=9000 (9002)=42", "B=42", 19, 3},
        {"LD H,(IY-2) loads the real H", "FD 66 FE", "H=00 IY=9002 (9000)=24", "H=24 IY=9002", 19,
         3},
        {"LD (IX+1),L stores the real L", "DD 75 01", "L=3C IX=9000", "(9001)=3C", 19, 3},
        {"ADD A,(IX+0)", "DD 86 00", "A=01 F=- IX=9000 (9000)=02", "A=03 F=-", 19, 3},
        {"CP (IY+3)", "FD BE 03", "A=05 F=- IY=9000 (9003)=05", "A=05 F=ZN", 19, 3},
        {"XOR (IX+0)", "DD AE 00", "A=FF F=- IX=9000 (9000)=0F", "A=F0 F=SYP", 19, 3},
        {"PUSH IX", "DD E5", "IX=1234 SP=9002", "SP=9000 (9000)=34,12", 15, 2},
        {"POP IY", "FD E1", "SP=9000 (9000)=78,56", "IY=5678 SP=9002", 14, 2},
        {"EX (SP),IX", "DD E3", "IX=1234 SP=9000 (9000)=EF,BE", "IX=BEEF (9000)=34,12", 23, 2},
        {"JP (IY)", "FD E9", "IY=8000", "PC=8000", 8},
        {"LD SP,IX", "DD F9", "IX=4321", "SP=4321", 10, 2},
    });
}

TEST(ExecuteIndex, UnofficialHalves) {
    RunRows({
        {"INC IXh", "DD 24", "F=- IX=7F01", "F=SHP IX=8001", 8, 2},
        {"DEC IXl", "DD 2D", "F=- IX=1200", "F=SYHXN IX=12FF", 8, 2},
        {"INC IYl wraps inside the half", "FD 2C", "F=- IY=12FF", "F=ZH IY=1200", 8, 2},
        {"LD IXh,n", "DD 26 AB", "IX=1234", "IX=AB34", 11, 3},
        {"LD IYl,n", "FD 2E CD", "IY=1234", "IY=12CD", 11, 3},
        {"LD A,IXh", "DD 7C", "A=00 IX=5A00", "A=5A", 8, 2},
        {"LD E,IYl", "FD 5D", "E=00 IY=00A5", "E=A5", 8, 2},
        {"LD IXh,B", "DD 60", "B=77 IX=1234", "IX=7734", 8, 2},
        {"LD IXl,IXh", "DD 6C", "IX=1234", "IX=1212", 8, 2},
        {"LD IYh,IYl", "FD 65", "IY=1234", "IY=3434", 8, 2},
        {"LD IXl,A", "DD 6F", "A=99 IX=1234", "IX=1299", 8, 2},
        {"ADD A,IXh", "DD 84", "A=01 F=- IX=0F00", "A=10 F=H", 8, 2},
        {"SUB IYl", "FD 95", "A=05 F=- IY=0005", "A=00 F=ZN", 8, 2},
        {"AND IXl", "DD A5", "A=FF F=- IX=0081", "A=81 F=SHP", 8, 2},
        {"CP IYh", "FD BC", "A=00 F=- IY=0100", "A=00 F=SHNC", 8, 2},
    });
}

TEST(ExecuteIndex, IndexedBitGroup) {
    RunRows({
        {"SET 0,(IX+5)", "DD CB 05 C6", "A=00 IX=9000 (9005)=10", "A=00 R=02 (9005)=11", 23, 4},
        {"SET 0,(IX+5) copied into A", "DD CB 05 C7", "A=00 IX=9000 (9005)=10", "A=11 (9005)=11",
         23, 4},
        {"BIT 0,(IX+0) takes 23", "DD CB 00 46", "F=C IX=9000 (9000)=FE", "F=ZHPC", 23, 4},
        {"BIT 3,(IY+1) X from the masked value", "FD CB 01 5E", "F=- IY=9000 (9001)=08", "F=HX", 23,
         4},
        {"BIT form with a register writes nothing", "DD CB 00 40", "F=- B=77 IX=9000 (9000)=01",
         "F=H B=77", 23, 4},
        {"RLC (IX+5)", "DD CB 05 06", "F=- IX=9000 (9005)=81", "F=PC (9005)=03", 23, 4},
        {"RR (IY-1),B", "FD CB FF 18", "F=C B=00 IY=9001 (9000)=02", "F=SP B=81 (9000)=81", 23, 4},
        {"SLL (IX+2)", "DD CB 02 36", "F=- IX=9000 (9002)=00", "F=- (9002)=01", 23, 4},
        {"RES 7,(IX-1)", "DD CB FF BE", "IX=9001 (9000)=FF", "(9000)=7F", 23, 4},
        {"RES 0,(IY+0),H copies into the real H", "FD CB 00 84", "H=00 IY=9000 (9000)=FF",
         "H=FE IY=9000 (9000)=FE", 23, 4},
    });
}

// An undecoded prefix runs as a no-operation of one byte (DD, FD, or any prefix
// with unofficial instructions off) or of two bytes (CB, ED with them on), and
// the following byte then runs by itself.
TEST(ExecuteIndex, PrefixFallbacks) {
    struct {
        const char* name;
        std::vector<int> code;
        bool unofficial;
        const char* text;
        int t, len, r;
    } cases[] = {
        {"DD 00 on", {0xDD, 0x00}, true, "DD NOP", 4, 1, 1},
        {"FD 40 on", {0xFD, 0x40}, true, "FD NOP", 4, 1, 1},
        {"DD 76 on", {0xDD, 0x76}, true, "DD NOP", 4, 1, 1},
        {"DD 7C off", {0xDD, 0x7C}, false, "UNRECOGNIZED", 4, 1, 1},
        {"FD 26 off", {0xFD, 0x26, 0x00}, false, "UNRECOGNIZED", 4, 1, 1},
        {"ED 77 on", {0xED, 0x77}, true, "ED NOP NOP", 8, 2, 2},
        {"ED 00 on", {0xED, 0x00}, true, "ED NOP NOP", 8, 2, 2},
        {"ED BC on", {0xED, 0xBC}, true, "ED NOP NOP", 8, 2, 2},
        {"ED 77 off", {0xED, 0x77}, false, "UNRECOGNIZED", 4, 1, 1},
        {"ED 4C off", {0xED, 0x4C}, false, "UNRECOGNIZED", 4, 1, 1},
        {"ED 70 off", {0xED, 0x70}, false, "UNRECOGNIZED", 4, 1, 1},
        {"ED 71 off", {0xED, 0x71}, false, "UNRECOGNIZED", 4, 1, 1},
        {"CB 30 off", {0xCB, 0x30}, false, "UNRECOGNIZED", 4, 1, 1},
        {"DD CB 05 36 off", {0xDD, 0xCB, 0x05, 0x36}, false, "UNRECOGNIZED", 4, 1, 1},
        {"DD CB 05 C7 off", {0xDD, 0xCB, 0x05, 0xC7}, false, "UNRECOGNIZED", 4, 1, 1},
        {"FD CB 05 47 off", {0xFD, 0xCB, 0x05, 0x47}, false, "UNRECOGNIZED", 4, 1, 1},
    };
    for (const auto& c : cases) {
        Cpu cpu(c.unofficial);
        Machine& m = cpu.m;
        cpu.Program(c.code);
        m.IX = m.IY = 0x9000;
        m.A = 0x12;
        m.H = 0x34;
        SpreadFlags(m, 0);
        m.R = 0x7F;
        cpu.Step();
        EXPECT_EQ(m.CurrentInstructionText, c.text) << c.name;
        EXPECT_EQ(m.TStates, c.t) << c.name;
        EXPECT_EQ(m.PC, kOrigin + c.len) << c.name;
        EXPECT_EQ(m.R, (0x7F + c.r) & 127) << c.name;
        EXPECT_EQ(m.A, 0x12) << c.name;
        EXPECT_EQ(m.IX, 0x9000) << c.name;
        EXPECT_EQ(m.MemoryImage[0x9005], 0) << c.name;
    }

    // Putting R back keeps bit 7.
    Cpu cpu(false);
    cpu.Load(0, {0xDD, 0x00});
    cpu.m.R = 0x80;
    cpu.Step();
    EXPECT_EQ(cpu.m.R, 0x81);
}

TEST(ExecuteIndex, FallbackThenSecondByteRunsAlone) {
    // DD 7C with unofficial instructions off: a DD NOP, then LD A,H.
    Cpu off(false);
    off.Load(0, {0xDD, 0x7C});
    off.m.H = 0x55;
    off.m.IX = 0xAA00;
    off.Step(2);
    EXPECT_EQ(off.m.A, 0x55);
    EXPECT_EQ(off.m.ClockCycles, 8);
    EXPECT_EQ(off.m.InstructionCount, 2);
    EXPECT_EQ(off.m.R, 2);  // +2 -1 for the DD NOP, +1 for LD A,H

    // DD CB d op with unofficial off and an unofficial op resumes at the CB byte.
    Cpu ddcb(false);
    ddcb.Load(0, {0xDD, 0xCB, 0x00, 0x07});  // then CB 00 = RLC B, then 07 = RLCA
    ddcb.m.B = 0x80;
    ddcb.Step();
    EXPECT_EQ(ddcb.m.PC, 1);
    ddcb.Step();
    EXPECT_EQ(ddcb.m.PC, 3);
    EXPECT_EQ(ddcb.m.B, 0x01);
}

TEST(ExecuteIndex, IndexedAddressesWrapInsideMemory) {
    struct {
        const char* name;
        int ix;
        int d;
        int address;
    } cases[] = {
        {"FFFFH + 1", 0xFFFF, 0x01, 0x0000},
        {"FFF0H + 7FH", 0xFFF0, 0x7F, 0x006F},
        {"0000H - 1", 0x0000, 0xFF, 0xFFFF},
        {"0010H - 80H", 0x0010, 0x80, 0xFF90},
    };
    for (auto c : cases) {
        for (int prefix : {0xDD, 0xFD}) {
            Cpu cpu;
            Machine& m = cpu.m;
            cpu.Load(0x4000, {prefix, 0x36, c.d, 0x5A, prefix, 0xCB, c.d, 0xC6, prefix, 0x7E, c.d});
            m.PC = 0x4000;
            (prefix == 0xDD ? m.IX : m.IY) = c.ix;
            cpu.Step(3);
            EXPECT_EQ(m.MemoryImage[c.address], 0x5B) << c.name;
            EXPECT_EQ(m.A, 0x5B) << c.name;
            for (int mirror = kMemorySize; mirror < kMemoryImageSize; ++mirror)
                EXPECT_EQ(m.MemoryImage[mirror], 0) << c.name;  // never written past FFFFH
        }
    }
}

}  // namespace
}  // namespace mb::test
