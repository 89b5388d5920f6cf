// Small programs run to their HALT, checked by their end state.
#include <gtest/gtest.h>

#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

// Runs until the first HALT has executed; returns the instructions run.
int RunToHalt(Cpu& cpu, int limit = 1000000) {
    int count = 0;
    while (count < limit) {
        cpu.Step();
        ++count;
        if (cpu.m.HaltState) break;
    }
    return count;
}

// HL := BC * DE (low 16 bits), shift and add.
const std::vector<int> kMultiply = {
    0x21, 0x00, 0x00,  // LD HL,0
    0x3E, 0x10,        // LD A,16
    0x29,              // mloop: ADD HL,HL
    0xCB, 0x23,        // SLA E
    0xCB, 0x12,        // RL D
    0x30, 0x01,        // JR NC,mskip
    0x09,              // ADD HL,BC
    0x3D,              // mskip: DEC A
    0x20, 0xF5,        // JR NZ,mloop
    0x76,              // HALT
};

TEST(ExecutePrograms, SixteenBitMultiply) {
    struct {
        int bc, de, product;
    } cases[] = {{300, 200, 60000},
                 {0x1234, 3, 0x369C},
                 {0, 0xFFFF, 0},
                 {0xFFFF, 0xFFFF, 1},
                 {255, 257, 65535}};
    for (auto c : cases) {
        Cpu cpu;
        cpu.Program(kMultiply);
        SetBC(cpu.m, c.bc);
        SetDE(cpu.m, c.de);
        RunToHalt(cpu);
        EXPECT_EQ(RegHL(cpu.m), c.product) << c.bc << " * " << c.de;
        EXPECT_EQ(cpu.m.PC, kOrigin + 0x10);
    }
}

TEST(ExecutePrograms, BlockCopyWithLdir) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Program({
        0x21, 0x00, 0x80,  // LD HL,8000H
        0x11, 0x00, 0x90,  // LD DE,9000H
        0x01, 0x00, 0x01,  // LD BC,0100H
        0xED, 0xB0,        // LDIR
        0x76,              // HALT
    });
    for (int i = 0; i < 256; ++i) m.MemoryImage[0x8000 + i] = (i * 7 + 3) & 255;
    const int count = RunToHalt(cpu);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(m.MemoryImage[0x9000 + i], (i * 7 + 3) & 255) << i;
    EXPECT_EQ(m.MemoryImage[0x9100], 0);
    EXPECT_EQ(count, 3 + 256 + 1);
    EXPECT_EQ(m.InstructionCount, count);
    EXPECT_EQ(m.ClockCycles, 3 * 10 + 255 * 21 + 16 + 4);
    EXPECT_EQ(RegHL(m), 0x8100);
    EXPECT_EQ(RegDE(m), 0x9100);
    EXPECT_EQ(RegBC(m), 0);
    EXPECT_EQ(m.R, (count + 256) & 127);  // each LDIR round raises R twice
}

// Two-byte BCD numbers at 8000H and 8002H (low byte first); the sum replaces the first.
const std::vector<int> kBcdAdd = {
    0x21, 0x00, 0x80,  // LD HL,8000H
    0x11, 0x02, 0x80,  // LD DE,8002H
    0x1A,              // LD A,(DE)
    0x86,              // ADD A,(HL)
    0x27,              // DAA
    0x77,              // LD (HL),A
    0x23,              // INC HL
    0x13,              // INC DE
    0x1A,              // LD A,(DE)
    0x8E,              // ADC A,(HL)
    0x27,              // DAA
    0x77,              // LD (HL),A
    0x76,              // HALT
};

TEST(ExecutePrograms, BcdAdditionWithDaa) {
    struct {
        int x, y, sum, carry;
    } cases[] = {{0x1234, 0x5678, 0x6912, 0},
                 {0x0999, 0x0001, 0x1000, 0},
                 {0x9999, 0x0001, 0x0000, 1},
                 {0x4550, 0x4550, 0x9100, 0},
                 {0x0058, 0x0047, 0x0105, 0}};
    for (auto c : cases) {
        Cpu cpu;
        Machine& m = cpu.m;
        cpu.Program(kBcdAdd);
        cpu.Load(0x8000, {c.x & 255, c.x >> 8, c.y & 255, c.y >> 8});
        RunToHalt(cpu);
        EXPECT_EQ(m.MemoryImage[0x8000] + m.MemoryImage[0x8001] * 256, c.sum)
            << std::hex << c.x << "+" << c.y;
        EXPECT_EQ(m.FlagC, c.carry) << std::hex << c.x << "+" << c.y;
    }
}

// HL := address of the first byte equal to A among 10 at 8000H, or FFFFH.
const std::vector<int> kSearch = {
    0x21, 0x00, 0x80,  // LD HL,8000H
    0x01, 0x0A, 0x00,  // LD BC,10
    0xED, 0xB1,        // CPIR
    0x20, 0x02,        // JR NZ,none
    0x2B,              // DEC HL
    0x76,              // HALT
    0x21, 0xFF, 0xFF,  // none: LD HL,0FFFFH
    0x76,              // HALT
};

TEST(ExecutePrograms, CpirSearch) {
    struct {
        int key, found, rounds;
    } cases[] = {{0x30, 0x8000, 1}, {0x35, 0x8005, 6}, {0x39, 0x8009, 10}, {0x99, 0xFFFF, 10}};
    for (auto c : cases) {
        Cpu cpu;
        Machine& m = cpu.m;
        cpu.Program(kSearch);
        cpu.Load(0x8000, {0x30, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x35});
        m.A = c.key;
        const int count = RunToHalt(cpu);
        EXPECT_EQ(RegHL(m), c.found) << std::hex << c.key;
        EXPECT_EQ(count, 2 + c.rounds + 3) << std::hex << c.key;
    }
}

}  // namespace
}  // namespace mb::test
