// The CB and ED groups: shifts, bit operations, the ED specials and the block
// instructions that repeat as separate instructions.
#include <gtest/gtest.h>

#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

void RunAll(const std::vector<Case>& cases, bool unofficial = true) {
    for (const Case& c : cases) RunCase(c, unofficial);
}

TEST(ExecuteCb, ShiftsAndRotates) {
    RunAll({
        {"RLC B", {0xCB, 0x00}, {.f = FH | FN, .b = 0x81}, {.f = FP | FC, .b = 0x03, .r = 2}, 8, 2},
        {"RRC C", {0xCB, 0x09}, {.f = 0, .c = 0x01}, {.f = FS | FC, .c = 0x80}, 8, 2},
        {"RL D carry out to zero",
         {0xCB, 0x12},
         {.f = 0, .d = 0x80},
         {.f = FZ | FP | FC, .d = 0x00},
         8,
         2},
        {"RR E carry in", {0xCB, 0x1B}, {.f = FC, .e = 0x01}, {.f = FS | FC, .e = 0x80}, 8, 2},
        {"SLA H", {0xCB, 0x24}, {.f = 0, .h = 0x88}, {.f = FC, .h = 0x10}, 8, 2},
        {"SRA L keeps bit 7",
         {0xCB, 0x2D},
         {.f = 0, .l = 0x81},
         {.f = FS | FP | FC, .l = 0xC0},
         8,
         2},
        {"SLL A puts 1 in bit 0", {0xCB, 0x37}, {.a = 0x80, .f = 0}, {.a = 0x01, .f = FC}, 8, 2},
        {"SRL A", {0xCB, 0x3F}, {.a = 0x01, .f = 0}, {.a = 0x00, .f = FZ | FP | FC}, 8, 2},
        {"RL A X and Y from result",
         {0xCB, 0x17},
         {.a = 0x14, .f = 0},
         {.a = 0x28, .f = FY | FX | FP},
         8,
         2},
        {"RLC (HL)",
         {0xCB, 0x06},
         {.f = 0, .h = 0x90, .l = 0},
         {.f = FP | FC},
         15,
         2,
         {{0x9000, 0x81}},
         {{0x9000, 0x03}}},
        {"SRL (HL)",
         {0xCB, 0x3E},
         {.f = 0, .h = 0x90, .l = 0},
         {.f = FP},
         15,
         2,
         {{0x9000, 0x06}},
         {{0x9000, 0x03}}},
    });
}

TEST(ExecuteCb, BitResSet) {
    RunAll({
        {"BIT 7,A", {0xCB, 0x7F}, {.a = 0x80, .f = FC | FN}, {.a = 0x80, .f = FS | FH | FC}, 8, 2},
        {"BIT 0,B clear", {0xCB, 0x40}, {.f = 0, .b = 0xFE}, {.f = FZ | FH | FP}, 8, 2},
        {"BIT 5,A X Y from the masked value",
         {0xCB, 0x6F},
         {.a = 0x28, .f = 0},
         {.f = FY | FH},
         8,
         2},
        {"BIT 3,(HL)",
         {0xCB, 0x5E},
         {.f = 0, .h = 0x90, .l = 0},
         {.f = FH | FX},
         12,
         2,
         {{0x9000, 0xFF}},
         {{0x9000, 0xFF}}},
        {"RES 0,C no flags", {0xCB, 0x81}, {.f = 0, .c = 0xFF}, {.f = 0, .c = 0xFE}, 8, 2},
        {"SET 7,(HL)",
         {0xCB, 0xFE},
         {.f = FZ, .h = 0x90, .l = 0},
         {.f = FZ},
         15,
         2,
         {{0x9000, 0x01}},
         {{0x9000, 0x81}}},
        {"RES 7,(HL)",
         {0xCB, 0xBE},
         {.h = 0x90, .l = 0},
         {},
         15,
         2,
         {{0x9000, 0xFF}},
         {{0x9000, 0x7F}}},
        {"SET 3,E", {0xCB, 0xDB}, {.e = 0x00}, {.e = 0x08}, 8, 2},
    });
}

TEST(ExecuteEd, Specials) {
    RunAll({
        {"IN B,(C) sets PrevA from B",
         {0xED, 0x40},
         {.f = FC | FN | FH, .b = 0x12, .c = 0x34},
         {.f = FS | FC, .b = 0x80, .r = 2},
         12,
         2,
         {},
         {},
         {{0x34, 0x80}}},
        {"IN A,(C) zero", {0xED, 0x78}, {.a = 9, .f = 0, .c = 0x10}, {.a = 0, .f = FZ | FP}, 12, 2},
        {"IN (C) flags only",
         {0xED, 0x70},
         {.a = 1, .f = 0, .c = 0x10},
         {.a = 1, .f = FS | FP},
         12,
         2,
         {},
         {},
         {{0x10, 0x81}}},
        {"OUT (C),D port is C alone",
         {0xED, 0x51},
         {.b = 0x77, .c = 0x20, .d = 0x42},
         {},
         12,
         2,
         {},
         {},
         {},
         {{0x20, 0x42}}},
        {"OUT (C),0 sends A",
         {0xED, 0x71},
         {.a = 5, .c = 0x21},
         {},
         12,
         2,
         {},
         {},
         {},
         {{0x21, 5}}},
        {"NEG leaves N", {0xED, 0x44}, {.a = 0x01, .f = 0}, {.a = 0xFF, .f = FS | FH | FC}, 8, 2},
        {"NEG of 80H", {0xED, 0x44}, {.a = 0x80, .f = 0}, {.a = 0x80, .f = FS | FP | FC}, 8, 2},
        {"NEG of 0 keeps N X Y",
         {0xED, 0x44},
         {.a = 0x00, .f = FN | FX | FY | FC},
         {.a = 0, .f = FZ | FY | FX | FN},
         8,
         2},
        {"NEG twin 4C", {0xED, 0x4C}, {.a = 0x02, .f = 0}, {.a = 0xFE, .f = FS | FH | FC}, 8, 2},
        {"LD I,A", {0xED, 0x47}, {.a = 0x3F, .f = 0}, {.f = 0, .i = 0x3F}, 9, 2},
        {"LD A,I P from IFF2", {0xED, 0x57}, {.f = FC, .i = 0x80}, {.a = 0x80, .f = FS | FC}, 9, 2},
        {"LD A,R after two rises",
         {0xED, 0x5F},
         {.f = 0, .r = 0x26},
         {.a = 0x28, .f = FY | FX},
         9,
         2},
        {"LD R,A", {0xED, 0x4F}, {.a = 0x55}, {.r = 0x55}, 9, 2},
        {"RRD",
         {0xED, 0x67},
         {.a = 0x84, .f = FC, .h = 0x90, .l = 0},
         {.a = 0x80, .f = FS | FC},
         18,
         2,
         {{0x9000, 0x20}},
         {{0x9000, 0x42}}},
        {"RLD",
         {0xED, 0x6F},
         {.a = 0x7A, .f = 0, .h = 0x90, .l = 0},
         {.a = 0x73, .f = FY},
         18,
         2,
         {{0x9000, 0x31}},
         {{0x9000, 0x1A}}},
        {"LD (nn),BC",
         {0xED, 0x43, 0x00, 0x90},
         {.b = 0x12, .c = 0x34},
         {},
         20,
         4,
         {},
         {{0x9000, 0x34}, {0x9001, 0x12}}},
        {"LD DE,(nn)",
         {0xED, 0x5B, 0x00, 0x90},
         {},
         {.d = 0x56, .e = 0x78},
         20,
         4,
         {{0x9000, 0x78}, {0x9001, 0x56}}},
        {"LD (nn),HL ED form",
         {0xED, 0x63, 0x10, 0x90},
         {.h = 0xAB, .l = 0xCD},
         {},
         20,
         4,
         {},
         {{0x9010, 0xCD}, {0x9011, 0xAB}}},
        {"LD SP,(nn)",
         {0xED, 0x7B, 0x00, 0x90},
         {},
         {.sp = 0x1234},
         20,
         4,
         {{0x9000, 0x34}, {0x9001, 0x12}}},
    });
}

TEST(ExecuteEd, InterruptModes) {
    struct {
        int opcode, mode;
    } cases[] = {{0x46, 0}, {0x56, 1}, {0x5E, 2}, {0x4E, 0},
                 {0x66, 0}, {0x6E, 0}, {0x76, 1}, {0x7E, 2}};
    for (auto c : cases) {
        Cpu cpu;
        cpu.Load(0, {0xED, c.opcode});
        cpu.m.InterruptMode = c.mode == 0 ? 2 : 0;  // so that every case changes it
        cpu.Step();
        EXPECT_EQ(cpu.m.InterruptMode, c.mode) << std::hex << c.opcode;
        EXPECT_EQ(cpu.m.TStates, 8);
        EXPECT_EQ(cpu.m.PC, 2);
    }
}

TEST(ExecuteEd, ReturnsFromInterrupts) {
    struct {
        const char* name;
        int opcode, iff2;
        bool nmiEnabled, intEnabled;
    } cases[] = {
        {"RETN with IFF2 set", 0x45, 1, true, true},
        {"RETN with IFF2 clear", 0x45, 0, true, false},
        {"RETN twin 55", 0x55, 1, true, true},
        {"RETI leaves the commands", 0x4D, 1, false, false},
    };
    for (auto c : cases) {
        Cpu cpu;
        Machine& m = cpu.m;
        cpu.Load(0, {0xED, c.opcode});
        m.SP = 0x9000;
        m.MemoryImage[0x9000] = 0x34;
        m.MemoryImage[0x9001] = 0x12;
        m.IFF1 = 0;
        m.IFF2 = c.iff2;
        cpu.Step();
        EXPECT_EQ(m.PC, 0x1234) << c.name;
        EXPECT_EQ(m.SP, 0x9002) << c.name;
        EXPECT_EQ(m.IFF1, c.iff2) << c.name;
        EXPECT_EQ(m.TStates, 14) << c.name;
        EXPECT_EQ(m.NmiCommandEnabled, c.nmiEnabled) << c.name;
        EXPECT_EQ(m.IntCommandEnabled, c.intEnabled) << c.name;
    }
}

TEST(ExecuteEd, SingleBlockSteps) {
    RunAll({
        {"LDI",
         {0xED, 0xA0},
         {.f = FS | FH | FN | FC, .b = 0, .c = 2, .d = 0xA0, .e = 0x00, .h = 0x90, .l = 0x00},
         {.f = FS | FP | FC, .b = 0, .c = 1, .d = 0xA0, .e = 0x01, .h = 0x90, .l = 0x01},
         16,
         2,
         {{0x9000, 0x55}},
         {{0xA000, 0x55}}},
        {"LDD to zero count",
         {0xED, 0xA8},
         {.f = FP, .b = 0, .c = 1, .d = 0xA0, .e = 0x00, .h = 0x90, .l = 0x00},
         {.f = 0, .b = 0, .c = 0, .d = 0x9F, .e = 0xFF, .h = 0x8F, .l = 0xFF},
         16,
         2,
         {{0x9000, 0x66}},
         {{0xA000, 0x66}}},
        {"CPI match keeps C X Y",
         {0xED, 0xA1},
         {.a = 0x10, .f = FC | FX, .b = 0, .c = 5, .h = 0x90, .l = 0},
         {.f = FZ | FX | FP | FN | FC, .b = 0, .c = 4, .h = 0x90, .l = 1},
         16,
         2,
         {{0x9000, 0x10}}},
        {"CPD half borrow",
         {0xED, 0xA9},
         {.a = 0x10, .f = 0, .b = 0, .c = 1, .h = 0x90, .l = 0},
         {.f = FH | FN, .c = 0, .h = 0x8F, .l = 0xFF},
         16,
         2,
         {{0x9000, 0x01}}},
        {"INI",
         {0xED, 0xA2},
         {.f = 0, .b = 2, .c = 0x10, .h = 0x90, .l = 0},
         {.f = FN, .b = 1, .h = 0x90, .l = 1},
         16,
         2,
         {},
         {{0x9000, 0x80}},
         {{0x10, 0x80}}},
        {"IND to zero",
         {0xED, 0xAA},
         {.f = 0, .b = 1, .c = 0x10, .h = 0x90, .l = 0},
         {.f = FZ, .b = 0, .h = 0x8F, .l = 0xFF},
         16,
         2,
         {},
         {{0x9000, 0x7F}},
         {{0x10, 0x7F}}},
        {"OUTI",
         {0xED, 0xA3},
         {.f = 0, .b = 1, .c = 0x20, .h = 0x90, .l = 0},
         {.f = FZ, .b = 0, .h = 0x90, .l = 1},
         16,
         2,
         {{0x9000, 0x41}},
         {},
         {},
         {{0x20, 0x41}}},
        {"OUTD",
         {0xED, 0xAB},
         {.f = 0, .b = 3, .c = 0x20, .h = 0x90, .l = 0},
         {.f = FN, .b = 2, .h = 0x8F, .l = 0xFF},
         16,
         2,
         {{0x9000, 0xC1}},
         {},
         {},
         {{0x20, 0xC1}}},
    });
}

TEST(ExecuteEd, InSetsPrevAFromB) {
    for (int opcode : {0x40, 0x78, 0xA2}) {
        Cpu cpu;
        cpu.Load(0, {0xED, opcode});
        cpu.m.B = 0x7E;
        cpu.m.A = 0x01;
        cpu.m.H = 0x90;
        cpu.Step();
        EXPECT_EQ(cpu.m.PrevA, 0x7E) << std::hex << opcode;
    }
}

// Each round of a repeating block instruction is one instruction: R rises by 2,
// the count by 1, 21 T-states while it repeats and 16 for the last round.
struct Round {
    int pc, t, r;
};

void ExpectRounds(Cpu& cpu, const std::vector<Round>& rounds) {
    int n = 0;
    for (const Round& round : rounds) {
        cpu.Step();
        ++n;
        EXPECT_EQ(cpu.m.PC, round.pc) << "round " << n;
        EXPECT_EQ(cpu.m.TStates, round.t) << "round " << n;
        EXPECT_EQ(cpu.m.R, round.r) << "round " << n;
        EXPECT_EQ(cpu.m.InstructionCount, n);
    }
}

TEST(ExecuteEd, RepeatingBlockInstructions) {
    {
        SCOPED_TRACE("LDIR with BC = 1");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xB0});
        SetBC(cpu.m, 1);
        ExpectRounds(cpu, {{2, 16, 2}});
    }
    {
        SCOPED_TRACE("LDIR with BC = 2");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xB0});
        SetBC(cpu.m, 2);
        SetHL(cpu.m, 0x9000);
        SetDE(cpu.m, 0xA000);
        cpu.m.MemoryImage[0x9000] = 1;
        cpu.m.MemoryImage[0x9001] = 2;
        ExpectRounds(cpu, {{0, 21, 2}, {2, 16, 4}});
        EXPECT_EQ(cpu.m.MemoryImage[0xA001], 2);
        EXPECT_EQ(cpu.m.ClockCycles, 37);
        EXPECT_EQ(cpu.m.FlagP, 0);
    }
    {
        SCOPED_TRACE("CPIR stops on a match");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xB1});
        cpu.Load(0x9000, {1, 2, 3, 4});
        cpu.m.A = 3;
        SetBC(cpu.m, 10);
        SetHL(cpu.m, 0x9000);
        ExpectRounds(cpu, {{0, 21, 2}, {0, 21, 4}, {2, 16, 6}});
        EXPECT_EQ(cpu.m.FlagZ, 1);
        EXPECT_EQ(RegBC(cpu.m), 7);
        EXPECT_EQ(RegHL(cpu.m), 0x9003);
        EXPECT_EQ(cpu.m.FlagP, 1);
    }
    {
        SCOPED_TRACE("CPDR runs out");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xB9});
        cpu.m.A = 9;
        SetBC(cpu.m, 2);
        SetHL(cpu.m, 0x9001);
        ExpectRounds(cpu, {{0, 21, 2}, {2, 16, 4}});
        EXPECT_EQ(cpu.m.FlagZ, 0);
        EXPECT_EQ(cpu.m.FlagP, 0);
        EXPECT_EQ(RegHL(cpu.m), 0x8FFF);
    }
    {
        SCOPED_TRACE("INIR");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xB2});
        cpu.m.B = 2;
        cpu.m.C = 0x30;
        cpu.m.PortImage[0x30] = 0x44;
        SetHL(cpu.m, 0x9000);
        ExpectRounds(cpu, {{0, 21, 2}, {2, 16, 4}});
        EXPECT_EQ(cpu.m.MemoryImage[0x9001], 0x44);
        EXPECT_EQ(cpu.m.FlagZ, 1);
    }
    {
        SCOPED_TRACE("OTDR");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xBB});
        cpu.Load(0x9000, {0x11, 0x22, 0x33});
        cpu.m.B = 3;
        cpu.m.C = 0x31;
        SetHL(cpu.m, 0x9002);
        ExpectRounds(cpu, {{0, 21, 2}, {0, 21, 4}, {2, 16, 6}});
        EXPECT_EQ(cpu.m.PortImage[0x31], 0x11);
        EXPECT_EQ(RegHL(cpu.m), 0x8FFF);
    }
}

TEST(ExecuteEd, LdirWithZeroCountMovesAllMemory) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Load(kOrigin, {0xED, 0xB0});
    m.PC = kOrigin;
    SetBC(m, 0);
    SetHL(m, 0x1000);  // copies every byte onto itself, code included
    SetDE(m, 0x1000);
    int rounds = 0;
    while (m.PC == kOrigin && rounds < 70000) {
        cpu.Step();
        ++rounds;
    }
    EXPECT_EQ(rounds, 65536);
    EXPECT_EQ(RegBC(m), 0);
    EXPECT_EQ(RegHL(m), 0x1000);
    EXPECT_EQ(m.ClockCycles, 65535 * 21 + 16);
}

}  // namespace
}  // namespace mb::test
