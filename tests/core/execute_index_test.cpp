// The DD/FD groups with their unofficial half-register forms, the DDCB/FDCB
// groups, and the fallback of prefixes that decode nothing.
#include <gtest/gtest.h>

#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

void RunAll(const std::vector<Case>& cases, bool unofficial = true) {
    for (const Case& c : cases) RunCase(c, unofficial);
}

TEST(ExecuteIndex, OfficialDdAndFd) {
    RunAll({
        {"LD IX,nn", {0xDD, 0x21, 0x34, 0x12}, {}, {.ix = 0x1234, .r = 2}, 14, 4},
        {"LD IY,nn", {0xFD, 0x21, 0x78, 0x56}, {}, {.ix = 0, .iy = 0x5678}, 14, 4},
        {"ADD IX,BC",
         {0xDD, 0x09},
         {.f = FZ, .b = 0x00, .c = 0x01, .ix = 0x0FFF},
         {.f = FZ | FH, .ix = 0x1000},
         15,
         2},
        {"ADD IX,IX", {0xDD, 0x29}, {.f = 0, .ix = 0x8000}, {.f = FC, .ix = 0x0000}, 15, 2},
        {"ADD IY,SP",
         {0xFD, 0x39},
         {.f = 0, .iy = 0x0001, .sp = 0x0002},
         {.f = 0, .iy = 0x0003},
         15,
         2},
        {"ADD IY,DE",
         {0xFD, 0x19},
         {.f = 0, .d = 0x10, .e = 0, .iy = 0x1800},
         {.f = FY | FX, .iy = 0x2800},
         15,
         2},
        {"LD (nn),IX",
         {0xDD, 0x22, 0x00, 0x90},
         {.ix = 0xABCD},
         {},
         20,
         4,
         {},
         {{0x9000, 0xCD}, {0x9001, 0xAB}}},
        {"LD IY,(nn)",
         {0xFD, 0x2A, 0x00, 0x90},
         {},
         {.iy = 0x1234},
         20,
         4,
         {{0x9000, 0x34}, {0x9001, 0x12}}},
        {"INC IX wraps", {0xDD, 0x23}, {.f = 0, .ix = 0xFFFF}, {.f = 0, .ix = 0}, 10, 2},
        {"DEC IY wraps", {0xFD, 0x2B}, {.iy = 0}, {.iy = 0xFFFF}, 10, 2},
        {"INC (IX+5)",
         {0xDD, 0x34, 0x05},
         {.f = 0, .ix = 0x9000},
         {.f = FS | FH | FP},
         23,
         3,
         {{0x9005, 0x7F}},
         {{0x9005, 0x80}}},
        {"DEC (IY-1)",
         {0xFD, 0x35, 0xFF},
         {.f = 0, .iy = 0x9001},
         {.f = FZ | FN},
         23,
         3,
         {{0x9000, 0x01}},
         {{0x9000, 0x00}}},
        {"LD (IX+5),n", {0xDD, 0x36, 0x05, 0x99}, {.ix = 0x9000}, {}, 19, 4, {}, {{0x9005, 0x99}}},
        {"LD B,(IX+2)", {0xDD, 0x46, 0x02}, {.ix = 0x9000}, {.b = 0x42}, 19, 3, {{0x9002, 0x42}}},
        {"LD H,(IY-2) loads the real H",
         {0xFD, 0x66, 0xFE},
         {.h = 0, .iy = 0x9002},
         {.h = 0x24, .iy = 0x9002},
         19,
         3,
         {{0x9000, 0x24}}},
        {"LD (IX+1),L stores the real L",
         {0xDD, 0x75, 0x01},
         {.l = 0x3C, .ix = 0x9000},
         {},
         19,
         3,
         {},
         {{0x9001, 0x3C}}},
        {"ADD A,(IX+0)",
         {0xDD, 0x86, 0x00},
         {.a = 0x01, .f = 0, .ix = 0x9000},
         {.a = 0x03, .f = 0},
         19,
         3,
         {{0x9000, 0x02}}},
        {"CP (IY+3)",
         {0xFD, 0xBE, 0x03},
         {.a = 0x05, .f = 0, .iy = 0x9000},
         {.a = 0x05, .f = FZ | FN},
         19,
         3,
         {{0x9003, 0x05}}},
        {"XOR (IX+0)",
         {0xDD, 0xAE, 0x00},
         {.a = 0xFF, .f = 0, .ix = 0x9000},
         {.a = 0xF0, .f = FS | FY | FP},
         19,
         3,
         {{0x9000, 0x0F}}},
        {"PUSH IX",
         {0xDD, 0xE5},
         {.ix = 0x1234, .sp = 0x9002},
         {.sp = 0x9000},
         15,
         2,
         {},
         {{0x9000, 0x34}, {0x9001, 0x12}}},
        {"POP IY",
         {0xFD, 0xE1},
         {.sp = 0x9000},
         {.iy = 0x5678, .sp = 0x9002},
         14,
         2,
         {{0x9000, 0x78}, {0x9001, 0x56}}},
        {"EX (SP),IX",
         {0xDD, 0xE3},
         {.ix = 0x1234, .sp = 0x9000},
         {.ix = 0xBEEF},
         23,
         2,
         {{0x9000, 0xEF}, {0x9001, 0xBE}},
         {{0x9000, 0x34}, {0x9001, 0x12}}},
        {"JP (IY)", {0xFD, 0xE9}, {.iy = 0x8000}, {.pc = 0x8000}, 8},
        {"LD SP,IX", {0xDD, 0xF9}, {.ix = 0x4321}, {.sp = 0x4321}, 10, 2},
    });
}

TEST(ExecuteIndex, UnofficialHalves) {
    RunAll({
        {"INC IXh", {0xDD, 0x24}, {.f = 0, .ix = 0x7F01}, {.f = FS | FH | FP, .ix = 0x8001}, 8, 2},
        {"DEC IXl",
         {0xDD, 0x2D},
         {.f = 0, .ix = 0x1200},
         {.f = FS | FY | FH | FX | FN, .ix = 0x12FF},
         8,
         2},
        {"INC IYl wraps inside the half",
         {0xFD, 0x2C},
         {.f = 0, .iy = 0x12FF},
         {.f = FZ | FH, .iy = 0x1200},
         8,
         2},
        {"LD IXh,n", {0xDD, 0x26, 0xAB}, {.ix = 0x1234}, {.ix = 0xAB34}, 11, 3},
        {"LD IYl,n", {0xFD, 0x2E, 0xCD}, {.iy = 0x1234}, {.iy = 0x12CD}, 11, 3},
        {"LD A,IXh", {0xDD, 0x7C}, {.a = 0, .ix = 0x5A00}, {.a = 0x5A}, 8, 2},
        {"LD E,IYl", {0xFD, 0x5D}, {.e = 0, .iy = 0x00A5}, {.e = 0xA5}, 8, 2},
        {"LD IXh,B", {0xDD, 0x60}, {.b = 0x77, .ix = 0x1234}, {.ix = 0x7734}, 8, 2},
        {"LD IXl,IXh", {0xDD, 0x6C}, {.ix = 0x1234}, {.ix = 0x1212}, 8, 2},
        {"LD IYh,IYl", {0xFD, 0x65}, {.iy = 0x1234}, {.iy = 0x3434}, 8, 2},
        {"LD IXl,A", {0xDD, 0x6F}, {.a = 0x99, .ix = 0x1234}, {.ix = 0x1299}, 8, 2},
        {"ADD A,IXh", {0xDD, 0x84}, {.a = 0x01, .f = 0, .ix = 0x0F00}, {.a = 0x10, .f = FH}, 8, 2},
        {"SUB IYl", {0xFD, 0x95}, {.a = 0x05, .f = 0, .iy = 0x0005}, {.a = 0, .f = FZ | FN}, 8, 2},
        {"AND IXl",
         {0xDD, 0xA5},
         {.a = 0xFF, .f = 0, .ix = 0x0081},
         {.a = 0x81, .f = FS | FH | FP},
         8,
         2},
        {"CP IYh",
         {0xFD, 0xBC},
         {.a = 0x00, .f = 0, .iy = 0x0100},
         {.a = 0, .f = FS | FH | FN | FC},
         8,
         2},
    });
}

TEST(ExecuteIndex, IndexedBitGroup) {
    RunAll({
        {"SET 0,(IX+5)",
         {0xDD, 0xCB, 0x05, 0xC6},
         {.a = 0, .ix = 0x9000},
         {.a = 0, .r = 2},
         23,
         4,
         {{0x9005, 0x10}},
         {{0x9005, 0x11}}},
        {"SET 0,(IX+5) copied into A",
         {0xDD, 0xCB, 0x05, 0xC7},
         {.a = 0, .ix = 0x9000},
         {.a = 0x11},
         23,
         4,
         {{0x9005, 0x10}},
         {{0x9005, 0x11}}},
        {"BIT 0,(IX+0) takes 23",
         {0xDD, 0xCB, 0x00, 0x46},
         {.f = FC, .ix = 0x9000},
         {.f = FZ | FH | FP | FC},
         23,
         4,
         {{0x9000, 0xFE}}},
        {"BIT 3,(IY+1) X from the masked value",
         {0xFD, 0xCB, 0x01, 0x5E},
         {.f = 0, .iy = 0x9000},
         {.f = FH | FX},
         23,
         4,
         {{0x9001, 0x08}}},
        {"BIT form with a register writes nothing",
         {0xDD, 0xCB, 0x00, 0x40},
         {.f = 0, .b = 0x77, .ix = 0x9000},
         {.f = FH, .b = 0x77},
         23,
         4,
         {{0x9000, 0x01}}},
        {"RLC (IX+5)",
         {0xDD, 0xCB, 0x05, 0x06},
         {.f = 0, .ix = 0x9000},
         {.f = FP | FC},
         23,
         4,
         {{0x9005, 0x81}},
         {{0x9005, 0x03}}},
        {"RR (IY-1),B",
         {0xFD, 0xCB, 0xFF, 0x18},
         {.f = FC, .b = 0, .iy = 0x9001},
         {.f = FS | FP, .b = 0x81},
         23,
         4,
         {{0x9000, 0x02}},
         {{0x9000, 0x81}}},
        {"SLL (IX+2)",
         {0xDD, 0xCB, 0x02, 0x36},
         {.f = 0, .ix = 0x9000},
         {.f = 0},
         23,
         4,
         {{0x9002, 0x00}},
         {{0x9002, 0x01}}},
        {"RES 7,(IX-1)",
         {0xDD, 0xCB, 0xFF, 0xBE},
         {.ix = 0x9001},
         {},
         23,
         4,
         {{0x9000, 0xFF}},
         {{0x9000, 0x7F}}},
        {"RES 0,(IY+0),H copies into the real H",
         {0xFD, 0xCB, 0x00, 0x84},
         {.h = 0, .iy = 0x9000},
         {.h = 0xFE, .iy = 0x9000},
         23,
         4,
         {{0x9000, 0xFF}},
         {{0x9000, 0xFE}}},
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
        cpu.Load(kOrigin, c.code);
        m.PC = kOrigin;
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

    Cpu on(true);
    on.Load(0, {0xDD, 0x7C});
    on.m.H = 0x55;
    on.m.IX = 0xAA00;
    on.Step();
    EXPECT_EQ(on.m.A, 0xAA);
    EXPECT_EQ(on.m.PC, 2);

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
