// Random bytes as a program, with both settings of unofficial instructions and
// at both kinds of rate, run twice: once bare and once with a module watching
// the data paths. Whatever runs, PC and SP stay in 0..FFFFH, nothing is written
// past FFFFH (the mirror cells keep the values Start gave them), and the
// watching module changes nothing an instruction does.
#include <gtest/gtest.h>

#include <random>

#include "core/access.h"
#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

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
    // clang-format off
    return {m.A, m.B, m.C, m.D, m.E, m.H, m.L, ComposeFlags(m),
            m.AltA, m.AltB, m.AltC, m.AltD, m.AltE, m.AltH, m.AltL, ComposeAltFlags(m),
            m.IX, m.IY, m.SP, m.PC, m.I, m.R, m.IFF1, m.IFF2, m.InterruptMode, m.PrevA,
            m.TStates, m.ClockCycles, m.HaltState, m.LastReadAddress, m.LastWriteAddress};
    // clang-format on
}

// Instructions reach memory straight when no hook is active and through the
// hook test otherwise; both ways must give the same machine.
TEST(ExecuteRandom, ProgramsStayInsideMemoryAndAWatchingModuleChangesNothing) {
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
            const std::vector<int> mirror(bare.m.MemoryImage.begin() + kMemorySize,
                                          bare.m.MemoryImage.end());
            for (int step = 0; step < 20000; ++step) {
                bare.Step();
                watched.Step();
                ASSERT_EQ(Fields(bare.m), Fields(watched.m)) << "step " << step;
                ASSERT_TRUE(bare.m.PC >= 0 && bare.m.PC <= 0xFFFF) << bare.m.PC;
                ASSERT_TRUE(bare.m.SP >= 0 && bare.m.SP <= 0xFFFF) << bare.m.SP;
                ASSERT_TRUE(bare.m.TStates >= 4 && bare.m.TStates <= 23) << bare.m.TStates;
            }
            EXPECT_EQ(std::vector<int>(bare.m.MemoryImage.begin() + kMemorySize,
                                       bare.m.MemoryImage.end()),
                      mirror);
            accesses += module.accesses;
            EXPECT_TRUE(bare.m.MemoryImage == watched.m.MemoryImage);
            EXPECT_TRUE(bare.m.PortImage == watched.m.PortImage);
        }
    }
    EXPECT_GT(accesses, 1000);  // the module did watch
}

}  // namespace
}  // namespace mb::test
