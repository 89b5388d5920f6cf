// Random bytes as a program, with both settings of unofficial instructions:
// whatever runs, PC and SP stay in 0..FFFFH and nothing is written past FFFFH
// (the mirror cells keep the values Start gave them).
#include <gtest/gtest.h>

#include <random>

#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

TEST(ExecuteRandom, RandomProgramsStayInsideMemory) {
    std::mt19937 random(20261122);
    for (int unofficial : {0, 1}) {
        for (int run = 0; run < 20; ++run) {
            Cpu cpu(unofficial != 0);
            Machine& m = cpu.m;
            for (int a = 0; a < kMemorySize; ++a)
                m.MemoryImage[a] = static_cast<int>(random() % 256);
            RefreshMemoryMirror(m);
            const std::vector<int> mirror(m.MemoryImage.begin() + kMemorySize, m.MemoryImage.end());
            m.PC = static_cast<int>(random() % kMemorySize);
            m.SP = static_cast<int>(random() % kMemorySize);
            m.IX = static_cast<int>(random() % kMemorySize);
            m.IY = static_cast<int>(random() % kMemorySize);
            for (int step = 0; step < 20000; ++step) {
                cpu.Step();
                ASSERT_GE(m.PC, 0);
                ASSERT_LE(m.PC, 0xFFFF);
                ASSERT_GE(m.SP, 0);
                ASSERT_LE(m.SP, 0xFFFF);
                ASSERT_GE(m.TStates, 4);
                ASSERT_LE(m.TStates, 23);
            }
            EXPECT_EQ(std::vector<int>(m.MemoryImage.begin() + kMemorySize, m.MemoryImage.end()),
                      mirror);
        }
    }
}

}  // namespace
}  // namespace mb::test
