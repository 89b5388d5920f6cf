// Random bytes as a program, with both settings of unofficial instructions:
// whatever runs, PC and SP stay in 0..FFFFH and nothing is written past FFFFH
// (the mirror cells keep the values Start gave them); and a module that only
// watches the data paths changes nothing an instruction does.
#include <gtest/gtest.h>

#include <random>

#include "core/access.h"
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

class WatchingModule : public ExternalModule {
  public:
    int accesses = 0;
    void objectinit() override {}
    void objectrefresh() override {}
    void readmem(int&, int&) override { ++accesses; }
    void writemem(int&, int&) override { ++accesses; }
    void readio(int&, int&) override { ++accesses; }
    void writeio(int&, int&) override { ++accesses; }
};

// Random memory without HALT, so that the run goes on.
void FillRandom(Machine& m, std::mt19937& random) {
    for (int a = 0; a < kMemorySize; ++a) {
        const int byte = static_cast<int>(random() % 256);
        m.MemoryImage[a] = byte == 0x76 ? 0 : byte;
    }
    for (int& port : m.PortImage) port = static_cast<int>(random() % 256);
    RefreshMemoryMirror(m);
    m.PC = static_cast<int>(random() % kMemorySize);
    m.SP = static_cast<int>(random() % kMemorySize);
    m.IX = static_cast<int>(random() % kMemorySize);
    m.IY = static_cast<int>(random() % kMemorySize);
    SetHL(m, static_cast<int>(random() % kMemorySize));
}

// Everything an instruction may change, but memory and ports.
std::vector<int> Fields(const Machine& m) {
    return {m.A,
            m.B,
            m.C,
            m.D,
            m.E,
            m.H,
            m.L,
            m.AltA,
            m.AltB,
            m.AltC,
            m.AltD,
            m.AltE,
            m.AltH,
            m.AltL,
            ComposeFlags(m),
            ComposeAltFlags(m),
            m.IX,
            m.IY,
            m.SP,
            m.PC,
            m.I,
            m.R,
            m.IFF1,
            m.IFF2,
            m.InterruptMode,
            m.PrevA,
            m.TStates,
            m.ClockCycles,
            m.HaltState,
            m.LastReadAddress,
            m.LastWriteAddress};
}

// Instructions reach memory straight when no hook is active and through the
// hook test otherwise; both ways must give the same machine.
TEST(ExecuteRandom, AWatchingModuleChangesNothing) {
    std::mt19937 random(7);
    int accesses = 0;
    for (int unofficial : {0, 1}) {
        for (int rate : {kRateStepByStep, kRateUltimate}) {
            Cpu bare(unofficial != 0), watched(unofficial != 0);
            std::mt19937 same = random;
            FillRandom(bare.m, random);
            FillRandom(watched.m, same);
            bare.m.SimulationRate = watched.m.SimulationRate = rate;
            WatchingModule module;
            AccessHooks hooks;
            hooks.PromptBeforeIn = false;
            hooks.Modules[0] = &module;
            hooks.UpdateMask(watched.m);
            for (int step = 0; step < 20000; ++step) {
                bare.Step();
                watched.Step();
                ASSERT_EQ(Fields(bare.m), Fields(watched.m)) << "step " << step;
            }
            accesses += module.accesses;
            EXPECT_TRUE(bare.m.MemoryImage == watched.m.MemoryImage);
            EXPECT_TRUE(bare.m.PortImage == watched.m.PortImage);
        }
    }
    EXPECT_GT(accesses, 1000);  // the module did watch
}

}  // namespace
}  // namespace mb::test
