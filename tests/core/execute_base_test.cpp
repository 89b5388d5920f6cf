// Unprefixed opcodes: results, flags, T-states and lengths, one table per family.
#include <gtest/gtest.h>

#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

void RunAll(const std::vector<Case>& cases, bool unofficial = true) {
    for (const Case& c : cases) RunCase(c, unofficial);
}

TEST(ExecuteBase, AccumulatorArithmetic) {
    RunAll({
        {"ADD A,B half carry", {0x80}, {.a = 0x0F, .f = 0, .b = 0x01}, {.a = 0x10, .f = FH}, 4, 1},
        {"ADD A,B overflow",
         {0x80},
         {.a = 0x7F, .f = 0, .b = 0x01},
         {.a = 0x80, .f = FS | FH | FP},
         4,
         1},
        {"ADD A,B carry to zero",
         {0x80},
         {.a = 0xFF, .f = 0, .b = 0x01},
         {.a = 0x00, .f = FZ | FH | FC},
         4,
         1},
        {"ADD A,B negative overflow",
         {0x80},
         {.a = 0x80, .f = 0, .b = 0x80},
         {.a = 0, .f = FZ | FP | FC},
         4,
         1},
        {"ADD A,n", {0xC6, 0x22}, {.a = 0x11, .f = FC}, {.a = 0x33, .f = FY}, 7, 2},
        {"ADD A,(HL)",
         {0x86},
         {.a = 0x01, .f = 0, .h = 0x80, .l = 0x00},
         {.a = 0x03, .f = 0},
         7,
         1,
         {{0x8000, 0x02}}},
        {"ADC A,B carry in", {0x88}, {.a = 0x0E, .f = FC, .b = 0x01}, {.a = 0x10, .f = FH}, 4, 1},
        {"ADC A,B overflow by carry",
         {0x88},
         {.a = 0x7F, .f = FC, .b = 0},
         {.a = 0x80, .f = FS | FH | FP},
         4,
         1},
        {"ADC A,n", {0xCE, 0xFF}, {.a = 0x00, .f = FC}, {.a = 0x00, .f = FZ | FH | FC}, 7, 2},
        {"SUB B borrow from bit 4",
         {0x90},
         {.a = 0x10, .f = 0, .b = 0x01},
         {.a = 0x0F, .f = FH | FX | FN},
         4,
         1},
        {"SUB B overflow",
         {0x90},
         {.a = 0x80, .f = 0, .b = 0x01},
         {.a = 0x7F, .f = FY | FH | FX | FP | FN},
         4,
         1},
        {"SUB A", {0x97}, {.a = 0x42, .f = FC | FH | FS | FP}, {.a = 0, .f = FZ | FN}, 4, 1},
        {"SUB B below zero",
         {0x90},
         {.a = 0x00, .f = 0, .b = 0x01},
         {.a = 0xFF, .f = FS | FY | FH | FX | FN | FC},
         4,
         1},
        {"SUB n", {0xD6, 0x03}, {.a = 0x05, .f = 0}, {.a = 0x02, .f = FN}, 7, 2},
        {"SBC A,B carry in",
         {0x98},
         {.a = 0x10, .f = FC, .b = 0x0F},
         {.a = 0, .f = FZ | FH | FN},
         4,
         1},
        {"SBC A,B wraps whole byte",
         {0x98},
         {.a = 0x00, .f = FC, .b = 0xFF},
         {.a = 0, .f = FZ | FH | FN | FC},
         4,
         1},
        {"SBC A,n", {0xDE, 0x01}, {.a = 0x03, .f = FC}, {.a = 0x01, .f = FN}, 7, 2},
        {"AND B",
         {0xA0},
         {.a = 0xF0, .f = FC | FN, .b = 0x3C},
         {.a = 0x30, .f = FY | FH | FP},
         4,
         1},
        {"AND n", {0xE6, 0x0F}, {.a = 0xF0, .f = 0}, {.a = 0, .f = FZ | FH | FP}, 7, 2},
        {"XOR A", {0xAF}, {.a = 0x5A, .f = FC | FH}, {.a = 0, .f = FZ | FP}, 4, 1},
        {"XOR n", {0xEE, 0xFF}, {.a = 0x0F, .f = 0}, {.a = 0xF0, .f = FS | FY | FP}, 7, 2},
        {"OR B even parity",
         {0xB0},
         {.a = 0x80, .f = FC, .b = 0x01},
         {.a = 0x81, .f = FS | FP},
         4,
         1},
        {"OR B odd parity", {0xB0}, {.a = 0x00, .f = 0, .b = 0x07}, {.a = 0x07, .f = 0}, 4, 1},
        {"OR n", {0xF6, 0x08}, {.a = 0x00, .f = 0}, {.a = 0x08, .f = FX}, 7, 2},
        {"CP B X and Y from operand",
         {0xB8},
         {.a = 0x00, .f = 0, .b = 0x28},
         {.a = 0x00, .f = FS | FY | FH | FX | FN | FC},
         4,
         1},
        {"CP B equal", {0xB8}, {.a = 0x40, .f = 0, .b = 0x40}, {.a = 0x40, .f = FZ | FN}, 4, 1},
        {"CP n", {0xFE, 0x01}, {.a = 0x80, .f = 0}, {.a = 0x80, .f = FH | FP | FN}, 7, 2},
        {"CP (HL)",
         {0xBE},
         {.a = 0x10, .f = 0, .h = 0x80, .l = 0x01},
         {.a = 0x10, .f = FH | FX | FN},
         7,
         1,
         {{0x8001, 0x0F}}},
        {"ADD A,A", {0x87}, {.a = 0x44, .f = 0}, {.a = 0x88, .f = FS | FP | FX}, 4, 1},
        {"SUB L", {0x95}, {.a = 0x44, .f = 0, .l = 0x44}, {.a = 0, .f = FZ | FN}, 4, 1},
    });
}

TEST(ExecuteBase, IncrementAndDecrement) {
    RunAll({
        {"INC B half carry keeps C", {0x04}, {.f = FC, .b = 0x0F}, {.f = FH | FC, .b = 0x10}, 4, 1},
        {"INC B overflow", {0x04}, {.f = 0, .b = 0x7F}, {.f = FS | FH | FP, .b = 0x80}, 4, 1},
        {"INC B wraps", {0x04}, {.f = 0, .b = 0xFF}, {.f = FZ | FH, .b = 0x00}, 4, 1},
        {"INC A", {0x3C}, {.a = 0x27, .f = FN}, {.a = 0x28, .f = FY | FX}, 4, 1},
        {"DEC B to zero", {0x05}, {.f = 0, .b = 0x01}, {.f = FZ | FN, .b = 0}, 4, 1},
        {"DEC B overflow",
         {0x05},
         {.f = 0, .b = 0x80},
         {.f = FY | FH | FX | FP | FN, .b = 0x7F},
         4,
         1},
        {"DEC B wraps keeps C",
         {0x05},
         {.f = FC, .b = 0x00},
         {.f = FS | FY | FH | FX | FN | FC, .b = 0xFF},
         4,
         1},
        {"DEC L", {0x2D}, {.f = 0, .l = 0x11}, {.f = FN, .l = 0x10}, 4, 1},
        {"INC (HL)",
         {0x34},
         {.f = 0, .h = 0x90, .l = 0x00},
         {.f = FZ | FH},
         11,
         1,
         {{0x9000, 0xFF}},
         {{0x9000, 0x00}}},
        {"DEC (HL)",
         {0x35},
         {.f = 0, .h = 0x90, .l = 0x00},
         {.f = FN},
         11,
         1,
         {{0x9000, 0x02}},
         {{0x9000, 0x01}}},
        {"INC BC carries into B",
         {0x03},
         {.f = 0, .b = 0x12, .c = 0xFF},
         {.f = 0, .b = 0x13, .c = 0x00},
         6,
         1},
        {"INC DE wraps, no flags",
         {0x13},
         {.f = 0, .d = 0xFF, .e = 0xFF},
         {.f = 0, .d = 0, .e = 0},
         6,
         1},
        {"INC HL", {0x23}, {.h = 0x00, .l = 0x01}, {.h = 0x00, .l = 0x02}, 6, 1},
        {"INC SP wraps", {0x33}, {.sp = 0xFFFF}, {.sp = 0}, 6, 1},
        {"DEC BC borrows",
         {0x0B},
         {.f = FS, .b = 0x01, .c = 0x00},
         {.f = FS, .b = 0x00, .c = 0xFF},
         6,
         1},
        {"DEC SP wraps", {0x3B}, {.sp = 0}, {.sp = 0xFFFF}, 6, 1},
    });
}

TEST(ExecuteBase, AccumulatorRotatesAndFlagOps) {
    RunAll({
        {"RLCA keeps S Z P",
         {0x07},
         {.a = 0x81, .f = FS | FZ | FP},
         {.a = 0x03, .f = FS | FZ | FP | FC},
         4,
         1},
        {"RRCA", {0x0F}, {.a = 0x01, .f = FH | FN}, {.a = 0x80, .f = FC}, 4, 1},
        {"RLA carry out", {0x17}, {.a = 0x80, .f = 0}, {.a = 0x00, .f = FC}, 4, 1},
        {"RLA carry in", {0x17}, {.a = 0x14, .f = FC}, {.a = 0x29, .f = FY | FX}, 4, 1},
        {"RRA", {0x1F}, {.a = 0x01, .f = FC}, {.a = 0x80, .f = FC}, 4, 1},
        {"CPL", {0x2F}, {.a = 0x5A, .f = 0}, {.a = 0xA5, .f = FY | FH | FN}, 4, 1},
        {"SCF", {0x37}, {.a = 0x28, .f = FH | FN}, {.a = 0x28, .f = FY | FX | FC}, 4, 1},
        {"CCF from set", {0x3F}, {.a = 0, .f = FC | FN}, {.f = FH}, 4, 1},
        {"CCF from clear", {0x3F}, {.a = 0, .f = FH}, {.f = FC}, 4, 1},
    });
}

TEST(ExecuteBase, DecimalAdjust) {
    RunAll({
        {"after ADD, low digit above 9",
         {0x27},
         {.a = 0x3C, .f = 0},
         {.a = 0x42, .f = FH | FP},
         4,
         1},
        {"H stays set when low digit is 9 or less",
         {0x27},
         {.a = 0x03, .f = FH},
         {.a = 0x09, .f = FH | FX | FP},
         4,
         1},
        {"high digit above 9 sets C",
         {0x27},
         {.a = 0xA0, .f = 0},
         {.a = 0x00, .f = FZ | FP | FC},
         4,
         1},
        {"valid BCD unchanged", {0x27}, {.a = 0x99, .f = 0}, {.a = 0x99, .f = FS | FX | FP}, 4, 1},
        {"C in adds 60", {0x27}, {.a = 0x12, .f = FC}, {.a = 0x72, .f = FY | FP | FC}, 4, 1},
        {"after SUB, H and C clear: nothing",
         {0x27},
         {.a = 0x47, .f = FN},
         {.a = 0x47, .f = FP | FN},
         4,
         1},
        {"after SUB, H",
         {0x27},
         {.a = 0x0F, .f = FH | FN},
         {.a = 0x09, .f = FH | FX | FP | FN},
         4,
         1},
        {"after SUB, C",
         {0x27},
         {.a = 0xF0, .f = FN | FC},
         {.a = 0x90, .f = FS | FP | FN | FC},
         4,
         1},
        {"after SUB, H and C",
         {0x27},
         {.a = 0x9A, .f = FH | FN | FC},
         {.a = 0x34, .f = FY | FH | FN | FC},
         4,
         1},
    });
}

TEST(ExecuteBase, SixteenBitArithmetic) {
    RunAll({
        {"ADD HL,BC half carry keeps S Z P",
         {0x09},
         {.f = FS | FZ | FP, .b = 0x00, .c = 0x01, .h = 0x0F, .l = 0xFF},
         {.f = FS | FZ | FP | FH, .h = 0x10, .l = 0x00},
         11,
         1},
        {"ADD HL,DE carry",
         {0x19},
         {.f = FN, .d = 0x00, .e = 0x01, .h = 0xFF, .l = 0xFF},
         {.f = FH | FC, .h = 0, .l = 0},
         11,
         1},
        {"ADD HL,HL X Y from high byte",
         {0x29},
         {.f = 0, .h = 0x14, .l = 0x00},
         {.f = FY | FX, .h = 0x28, .l = 0},
         11,
         1},
        {"ADD HL,SP",
         {0x39},
         {.f = 0, .h = 0x00, .l = 0x01, .sp = 0x0001},
         {.f = 0, .h = 0, .l = 2},
         11,
         1},
        {"ADC HL,BC overflow",
         {0xED, 0x4A},
         {.f = FC, .b = 0, .c = 0, .h = 0x7F, .l = 0xFF},
         {.f = FS | FH | FP, .h = 0x80, .l = 0x00},
         15,
         2},
        {"ADC HL,DE zero of all 16 bits",
         {0xED, 0x5A},
         {.f = 0, .d = 0x00, .e = 0x01, .h = 0xFF, .l = 0xFF},
         {.f = FZ | FH | FC, .h = 0, .l = 0},
         15,
         2},
        {"SBC HL,DE equal",
         {0xED, 0x52},
         {.f = 0, .d = 0x10, .e = 0x00, .h = 0x10, .l = 0x00},
         {.f = FZ | FN, .h = 0, .l = 0},
         15,
         2},
        {"SBC HL,BC borrow",
         {0xED, 0x42},
         {.f = FC, .b = 0, .c = 0, .h = 0, .l = 0},
         {.f = FS | FY | FH | FX | FN | FC, .h = 0xFF, .l = 0xFF},
         15,
         2},
        {"SBC HL,BC overflow",
         {0xED, 0x42},
         {.f = 0, .b = 0, .c = 1, .h = 0x80, .l = 0x00},
         {.f = FY | FH | FX | FP | FN, .h = 0x7F, .l = 0xFF},
         15,
         2},
        {"SBC HL,SP",
         {0xED, 0x72},
         {.f = 0, .h = 0x00, .l = 0x10, .sp = 0x0001},
         {.f = FN, .h = 0, .l = 0x0F},
         15,
         2},
        {"ADC HL,HL",
         {0xED, 0x6A},
         {.f = 0, .h = 0x40, .l = 0x00},
         {.f = FS | FP, .h = 0x80, .l = 0},
         15,
         2},
    });
}

TEST(ExecuteBase, LoadsAndExchanges) {
    RunAll({
        {"LD BC,nn", {0x01, 0x34, 0x12}, {.f = 0}, {.f = 0, .b = 0x12, .c = 0x34}, 10, 3},
        {"LD SP,nn", {0x31, 0xFE, 0xFF}, {}, {.sp = 0xFFFE}, 10, 3},
        {"LD (BC),A", {0x02}, {.a = 0x55, .b = 0x90, .c = 0x10}, {}, 7, 1, {}, {{0x9010, 0x55}}},
        {"LD A,(DE)", {0x1A}, {.d = 0x90, .e = 0x20}, {.a = 0x66}, 7, 1, {{0x9020, 0x66}}},
        {"LD (nn),HL low first",
         {0x22, 0x00, 0x90},
         {.h = 0x12, .l = 0x34},
         {},
         16,
         3,
         {},
         {{0x9000, 0x34}, {0x9001, 0x12}}},
        {"LD HL,(nn)",
         {0x2A, 0x00, 0x90},
         {},
         {.h = 0xBE, .l = 0xEF},
         16,
         3,
         {{0x9000, 0xEF}, {0x9001, 0xBE}}},
        {"LD (nn),A", {0x32, 0x05, 0x90}, {.a = 0x77}, {}, 13, 3, {}, {{0x9005, 0x77}}},
        {"LD A,(nn)", {0x3A, 0x05, 0x90}, {}, {.a = 0x88}, 13, 3, {{0x9005, 0x88}}},
        {"LD D,n", {0x16, 0xAB}, {}, {.d = 0xAB}, 7, 2},
        {"LD (HL),n", {0x36, 0xCD}, {.h = 0x90, .l = 0x00}, {}, 10, 2, {}, {{0x9000, 0xCD}}},
        {"LD B,C", {0x41}, {.b = 0, .c = 0x99}, {.b = 0x99}, 4, 1},
        {"LD B,B", {0x40}, {.f = 0x00, .b = 0x12}, {.f = 0x00, .b = 0x12}, 4, 1},
        {"LD E,(HL)", {0x5E}, {.h = 0x90, .l = 0x01}, {.e = 0x42}, 7, 1, {{0x9001, 0x42}}},
        {"LD (HL),A", {0x77}, {.a = 0x3C, .h = 0x90, .l = 0x02}, {}, 7, 1, {}, {{0x9002, 0x3C}}},
        {"LD SP,HL", {0xF9}, {.h = 0x12, .l = 0x34}, {.sp = 0x1234}, 6, 1},
        {"EX DE,HL",
         {0xEB},
         {.d = 1, .e = 2, .h = 3, .l = 4},
         {.d = 3, .e = 4, .h = 1, .l = 2},
         4,
         1},
        {"EX (SP),HL",
         {0xE3},
         {.h = 0x12, .l = 0x34, .sp = 0x9000},
         {.h = 0xBE, .l = 0xEF, .sp = 0x9000},
         19,
         1,
         {{0x9000, 0xEF}, {0x9001, 0xBE}},
         {{0x9000, 0x34}, {0x9001, 0x12}}},
        {"PUSH BC",
         {0xC5},
         {.b = 0x12, .c = 0x34, .sp = 0x9002},
         {.sp = 0x9000},
         11,
         1,
         {},
         {{0x9000, 0x34}, {0x9001, 0x12}}},
        {"POP DE",
         {0xD1},
         {.sp = 0x9000},
         {.d = 0x56, .e = 0x78, .sp = 0x9002},
         10,
         1,
         {{0x9000, 0x78}, {0x9001, 0x56}}},
        {"PUSH AF composes flags",
         {0xF5},
         {.a = 0x12, .f = FS | FY | FX | FC, .sp = 0x9002},
         {.sp = 0x9000},
         11,
         1,
         {},
         {{0x9000, 0xA9}, {0x9001, 0x12}}},
        {"POP AF spreads flags",
         {0xF1},
         {.sp = 0x9000},
         {.a = 0x34, .f = 0xD7},
         10,
         1,
         {{0x9000, 0xD7}, {0x9001, 0x34}}},
        {"OUT (n),A", {0xD3, 0x10}, {.a = 0x5A}, {.a = 0x5A}, 11, 2, {}, {}, {}, {{0x10, 0x5A}}},
        {"IN A,(n) no flags",
         {0xDB, 0x20},
         {.a = 0x01, .f = 0},
         {.a = 0x99, .f = 0},
         11,
         2,
         {},
         {},
         {{0x20, 0x99}}},
    });
}

TEST(ExecuteBase, ExchangeSetsAndPrevA) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Load(0, {0x08, 0xD9, 0xDB, 0x07});  // EX AF,AF'  EXX  IN A,(07H)
    m.A = 0x11;
    SpreadFlags(m, 0x81);
    m.AltA = 0x22;
    SpreadAltFlags(m, 0x42);
    m.B = 1, m.C = 2, m.D = 3, m.E = 4, m.H = 5, m.L = 6;
    m.AltB = 7, m.AltC = 8, m.AltD = 9, m.AltE = 10, m.AltH = 11, m.AltL = 12;
    m.PortImage[7] = 0x77;
    cpu.Step();
    EXPECT_EQ(m.A, 0x22);
    EXPECT_EQ(ComposeFlags(m), 0x42);
    EXPECT_EQ(m.AltA, 0x11);
    EXPECT_EQ(ComposeAltFlags(m), 0x81);
    cpu.Step();
    EXPECT_EQ(RegBC(m), 0x0708);
    EXPECT_EQ(RegDE(m), 0x090A);
    EXPECT_EQ(RegHL(m), 0x0B0C);
    EXPECT_EQ(m.AltB * 256 + m.AltC, 0x0102);
    EXPECT_EQ(m.AltH * 256 + m.AltL, 0x0506);
    cpu.Step();
    EXPECT_EQ(m.PrevA, 0x22);
    EXPECT_EQ(m.A, 0x77);
}

TEST(ExecuteBase, JumpsCallsAndReturns) {
    const int o = kOrigin;
    RunAll({
        {"JP nn", {0xC3, 0x00, 0x80}, {}, {.pc = 0x8000}, 10},
        {"JP NZ taken", {0xC2, 0x00, 0x80}, {.f = 0}, {.pc = 0x8000}, 10},
        {"JP NZ not taken", {0xC2, 0x00, 0x80}, {.f = FZ}, {.pc = o + 3}, 10},
        {"JP C taken", {0xDA, 0x00, 0x80}, {.f = FC}, {.pc = 0x8000}, 10},
        {"JP PO taken", {0xE2, 0x00, 0x80}, {.f = 0}, {.pc = 0x8000}, 10},
        {"JP PE not taken", {0xEA, 0x00, 0x80}, {.f = 0}, {.pc = o + 3}, 10},
        {"JP M taken", {0xFA, 0x00, 0x80}, {.f = FS}, {.pc = 0x8000}, 10},
        {"JP P not taken", {0xF2, 0x00, 0x80}, {.f = FS}, {.pc = o + 3}, 10},
        {"JP (HL)", {0xE9}, {.h = 0x12, .l = 0x34}, {.pc = 0x1234}, 4},
        {"JR forward", {0x18, 0x05}, {}, {.pc = o + 7}, 12},
        {"JR backward", {0x18, 0xFC}, {}, {.pc = o - 2}, 12},
        {"JR Z taken", {0x28, 0x10}, {.f = FZ}, {.pc = o + 0x12}, 12},
        {"JR Z not taken", {0x28, 0x10}, {.f = 0}, {.pc = o + 2}, 7},
        {"JR NC taken", {0x30, 0x10}, {.f = 0}, {.pc = o + 0x12}, 12},
        {"JR C not taken", {0x38, 0x10}, {.f = 0}, {.pc = o + 2}, 7},
        {"DJNZ taken", {0x10, 0xFE}, {.f = 0, .b = 2}, {.f = 0, .b = 1, .pc = o}, 13},
        {"DJNZ falls through", {0x10, 0xFE}, {.f = 0, .b = 1}, {.f = 0, .b = 0, .pc = o + 2}, 8},
        {"DJNZ from 0 wraps B", {0x10, 0x00}, {.b = 0}, {.b = 0xFF, .pc = o + 2}, 13},
        {"CALL nn pushes PC+3",
         {0xCD, 0x00, 0x80},
         {.sp = 0x9000},
         {.sp = 0x8FFE, .pc = 0x8000},
         17,
         -1,
         {},
         {{0x8FFE, 0x03}, {0x8FFF, 0x40}}},
        {"CALL Z taken",
         {0xCC, 0x00, 0x80},
         {.f = FZ, .sp = 0x9000},
         {.sp = 0x8FFE, .pc = 0x8000},
         17},
        {"CALL Z not taken",
         {0xCC, 0x00, 0x80},
         {.f = 0, .sp = 0x9000},
         {.sp = 0x9000, .pc = o + 3},
         10},
        {"RET",
         {0xC9},
         {.sp = 0x9000},
         {.sp = 0x9002, .pc = 0x1234},
         10,
         -1,
         {{0x9000, 0x34}, {0x9001, 0x12}}},
        {"RET NC taken",
         {0xD0},
         {.f = 0, .sp = 0x9000},
         {.sp = 0x9002, .pc = 0x1234},
         11,
         -1,
         {{0x9000, 0x34}, {0x9001, 0x12}}},
        {"RET NC not taken", {0xD0}, {.f = FC, .sp = 0x9000}, {.sp = 0x9000, .pc = o + 1}, 5},
        {"RST 38H pushes PC+1",
         {0xFF},
         {.sp = 0x9000},
         {.sp = 0x8FFE, .pc = 0x38},
         11,
         -1,
         {},
         {{0x8FFE, 0x01}, {0x8FFF, 0x40}}},
        {"RST 08H", {0xCF}, {.sp = 0x9000}, {.pc = 0x08}, 11},
    });
}

TEST(ExecuteBase, RefreshRegisterCountsLowSevenBits) {
    struct {
        int before, after;
    } cases[] = {{0x00, 0x01}, {0x7F, 0x00}, {0x80, 0x81}, {0xFF, 0x80}};
    for (auto c : cases) {
        Cpu cpu;
        cpu.Load(0, {0x00});
        cpu.m.R = c.before;
        cpu.Step();
        EXPECT_EQ(cpu.m.R, c.after) << c.before;
    }
    Machine m;
    m.R = 0x80;
    DecrementR(m);
    EXPECT_EQ(m.R, 0xFF);
    m.R = 0x00;
    DecrementR(m);
    EXPECT_EQ(m.R, 0x7F);
}

TEST(ExecuteBase, HaltRunsAgainUntilMovedOn) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Load(kOrigin, {0x76, 0x00});
    m.PC = kOrigin;
    cpu.Step(3);
    EXPECT_EQ(m.PC, kOrigin);
    EXPECT_EQ(m.ClockCycles, 12);
    EXPECT_EQ(m.InstructionCount, 3);
    EXPECT_EQ(m.HaltState, 1);
    EXPECT_FALSE(m.StopRequest);
    m.PC = kOrigin + 1;  // as an interrupt would
    cpu.Step();
    EXPECT_EQ(m.HaltState, 0);

    Cpu stopping;
    stopping.m.HaltStopsSimulation = 1;
    stopping.Load(0, {0x76});
    stopping.Step();
    EXPECT_TRUE(stopping.m.StopRequest);
}

TEST(ExecuteBase, EiTakesEffectAfterTheNextInstruction) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Load(0, {0xFB, 0x00, 0x00, 0xF3});  // EI  NOP  NOP  DI
    cpu.Step();
    EXPECT_EQ(m.IFF1, 0);
    EXPECT_TRUE(m.EiPending);
    cpu.Step();
    EXPECT_EQ(m.IFF1, 1);
    EXPECT_EQ(m.IFF2, 1);
    EXPECT_TRUE(m.IntCommandEnabled);
    EXPECT_FALSE(m.EiPending);
    cpu.Step(2);
    EXPECT_EQ(m.IFF1, 0);
    EXPECT_EQ(m.IFF2, 0);
    EXPECT_FALSE(m.IntCommandEnabled);
}

TEST(ExecuteBase, InfiniteLoopTestOnlyOnMarkedJumps) {
    struct {
        const char* name;
        std::vector<int> code;
        int f;
        bool stops;
    } cases[] = {
        {"JP to itself", {0xC3, 0x00, 0x40}, 0, true},
        {"JP Z to itself taken", {0xCA, 0x00, 0x40}, FZ, true},
        {"JP Z to itself not taken", {0xCA, 0x00, 0x40}, 0, false},
        {"JR -2", {0x18, 0xFE}, 0, true},
        {"JR NZ -2 taken", {0x20, 0xFE}, 0, true},
        {"JP (HL) to itself", {0xE9}, 0, true},
        {"DJNZ to itself", {0x10, 0xFE}, 0, false},
        {"JP (IX) to itself", {0xDD, 0xE9}, 0, false},
        {"CALL to itself", {0xCD, 0x00, 0x40}, 0, false},
    };
    for (const auto& c : cases) {
        for (int option : {0, 1}) {
            Cpu cpu;
            Machine& m = cpu.m;
            m.InfiniteLoopStopsSimulation = option;
            cpu.Load(kOrigin, c.code);
            m.PC = kOrigin;
            SpreadFlags(m, c.f);
            SetHL(m, kOrigin);
            m.IX = kOrigin;
            m.B = 5;
            m.SP = 0x9000;
            cpu.Step();
            EXPECT_EQ(m.StopRequest, c.stops && option == 1) << c.name << " option " << option;
        }
    }
}

TEST(ExecuteBase, XAndYPinnedWithUnofficialOff) {
    struct {
        const char* ffDefaults;
        int pinned;
    } cases[] = {{"ON", 1}, {"OFF", 0}};
    for (auto c : cases) {
        Cpu cpu(false);
        Machine& m = cpu.m;
        m.FFPowerOnDefaults = c.ffDefaults;
        // POP AF of a byte with X and Y opposite to the pinned value, then CP 28H.
        const int popped = c.pinned ? 0x00 : 0x28;
        cpu.Load(0, {0xF1, 0xFE, 0x28, 0x08});
        m.SP = 0x9000;
        m.MemoryImage[0x9000] = popped;
        m.MemoryImage[0x9001] = 0x00;
        cpu.Step();
        EXPECT_EQ(m.FlagX, c.pinned) << c.ffDefaults;
        EXPECT_EQ(m.FlagY, c.pinned) << c.ffDefaults;
        EXPECT_EQ(m.AltFlagX, c.pinned) << c.ffDefaults;
        cpu.Step();
        EXPECT_EQ(m.FlagX, c.pinned) << c.ffDefaults;
        EXPECT_EQ(m.FlagY, c.pinned) << c.ffDefaults;
        EXPECT_EQ(m.FlagC, 1);  // the rest of the flags live
        cpu.Step();
        EXPECT_EQ(m.AltFlagY, c.pinned) << c.ffDefaults;
    }
    // With unofficial instructions on, CP takes X and Y from its operand.
    Cpu live(true);
    live.Load(0, {0xFE, 0x28});
    live.m.A = 0;
    live.Step();
    EXPECT_EQ(live.m.FlagX, 1);
    EXPECT_EQ(live.m.FlagY, 1);
}

TEST(ExecuteBase, StackWordsWrapSpButNotTheValue) {
    Cpu cpu;
    Machine& m = cpu.m;
    m.SP = 0x0001;
    PushWord(m, 0x1234);
    EXPECT_EQ(m.SP, 0xFFFF);
    EXPECT_EQ(m.MemoryImage[0x0000], 0x12);
    EXPECT_EQ(m.MemoryImage[0xFFFF], 0x34);
    EXPECT_EQ(PopWord(m), 0x1234);
    EXPECT_EQ(m.SP, 0x0001);

    m.SP = 0x9000;
    PushWord(m, 65537);  // a return address past the top of memory
    EXPECT_EQ(m.MemoryImage[0x8FFF], 256);
    EXPECT_EQ(m.MemoryImage[0x8FFE], 1);

    // CALL at FFFEH pushes 10001H; RET brings PC back into range at the end of the cycle.
    Cpu top;
    top.Load(0xFFFE, {0xCD, 0x00, 0x80});  // the high operand byte sits in cell 0 and its mirror
    top.Load(0x8000, {0xC9});
    top.m.PC = 0xFFFE;
    top.m.SP = 0x9000;
    top.Step();
    EXPECT_EQ(top.m.PC, 0x8000);
    EXPECT_EQ(top.m.MemoryImage[0x8FFF], 256);
    top.Step();
    EXPECT_EQ(top.m.PC, 0x0001);
}

TEST(ExecuteBase, AddressesWrapInsideMemory) {
    // JR backwards from 0000H continues at the top of memory.
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Load(0, {0x18, 0xF0});
    cpu.Step();
    EXPECT_EQ(m.PC, 0xFFF2);

    // DJNZ from 0001H to below zero.
    Cpu d;
    d.Load(1, {0x10, 0x80});
    d.m.PC = 1;
    d.m.B = 2;
    d.Step();
    EXPECT_EQ(d.m.PC, 0x10000 + 3 - 128);

    // JR forward past FFFFH lands at the bottom.
    Cpu f;
    f.Load(0xFFF0, {0x18, 0x7F});
    f.m.PC = 0xFFF0;
    f.Step();
    EXPECT_EQ(f.m.PC, 0xFFF0 + 2 + 0x7F - 0x10000);

    // EX (SP),HL with SP at FFFFH reaches cell 0, not the mirror cells.
    Cpu e;
    e.Load(0x100, {0xE3});
    e.m.PC = 0x100;
    e.m.SP = 0xFFFF;
    SetHL(e.m, 0xABCD);
    e.m.MemoryImage[0xFFFF] = 0x11;
    e.m.MemoryImage[0x0000] = 0x22;
    e.Step();
    EXPECT_EQ(RegHL(e.m), 0x2211);
    EXPECT_EQ(e.m.MemoryImage[0xFFFF], 0xCD);
    EXPECT_EQ(e.m.MemoryImage[0x0000], 0xAB);
    EXPECT_EQ(e.m.MemoryImage[0x10000], 0);

    // A PC set out of range by other code is wrapped before the fetch.
    for (int pc : {0x10000 + 0x20, 0x100FF + 0x21, -0x10000 + 0x20}) {
        Cpu w;
        w.Load(0x0020, {0x3E, 0x42});  // LD A,42H
        w.m.PC = pc;
        w.Step();
        EXPECT_EQ(w.m.A, pc == 0x100FF + 0x21 ? 0 : 0x42) << pc;
        EXPECT_GE(w.m.PC, 0);
        EXPECT_LE(w.m.PC, 0xFFFF);
    }

    // A register pair holding 256 in its high half (from a pushed return address)
    // still addresses memory inside 0..FFFFH.
    Cpu h;
    h.Load(0x100, {0x77});  // LD (HL),A
    h.m.PC = 0x100;
    h.m.H = 256;
    h.m.L = 0x10;
    h.m.A = 0x5A;
    h.Step();
    EXPECT_EQ(h.m.MemoryImage[0x0010], 0x5A);
}

}  // namespace
}  // namespace mb::test
