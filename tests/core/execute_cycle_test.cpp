// The end of the cycle: counters, and the end-of-instruction stage dispatched by
// the bits of EndStageMask in the fixed order of its steps.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

class RecordingStage : public EndStageHandler {
  public:
    std::vector<std::string> calls;
    int seenCount = -1;
    void RefreshViews(Machine& m) override { Record("views", m); }
    void WriteLogLine(Machine& m) override { Record("log", m); }
    void ServeRequests(Machine& m) override { Record("requests", m); }
    void DebugChecks(Machine& m) override { Record("debug", m); }
    void SpectrumWork(Machine& m) override { Record("spectrum", m); }
    void ModuleRefresh(Machine& m) override { Record("modules", m); }

  private:
    void Record(const char* name, const Machine& m) {
        calls.push_back(name);
        seenCount = m.InstructionCount;
    }
};

TEST(ExecuteCycle, EndStageRunsActiveStepsInOrder) {
    struct {
        int mask;
        std::vector<std::string> calls;
    } cases[] = {
        {0, {}},
        {kEndStageModules, {"modules"}},
        {kEndStageLog | kEndStageDebug, {"log", "debug"}},
        {kEndStageViews | kEndStageLog | kEndStageRequests | kEndStageDebug | kEndStageSpectrum |
             kEndStageModules,
         {"views", "log", "requests", "debug", "spectrum", "modules"}},
    };
    for (const auto& c : cases) {
        Cpu cpu;
        RecordingStage stage;
        cpu.m.EndStage = &stage;
        cpu.m.EndStageMask = c.mask;
        cpu.Load(0, {0x00});
        cpu.Step();
        EXPECT_EQ(stage.calls, c.calls) << c.mask;
        if (!c.calls.empty()) {
            EXPECT_EQ(stage.seenCount, 1);  // the stage sees the finished instruction
        }
    }
}

TEST(ExecuteCycle, EndStageWithoutHandlerIsSkipped) {
    Cpu cpu;
    cpu.m.EndStageMask = kEndStageLog;
    cpu.m.EndStage = nullptr;
    cpu.Load(0, {0x00});
    cpu.Step();
    EXPECT_EQ(cpu.m.PC, 1);
}

TEST(ExecuteCycle, CountersAddUpAndWrap) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Load(0, {0x00, 0xC3, 0x00, 0x00});  // NOP  JP 0000H
    cpu.Step(4);
    EXPECT_EQ(m.InstructionCount, 4);
    EXPECT_EQ(m.ClockCycles, 2 * 4 + 2 * 10);
    m.ClockCycles = 0x7FFFFFFE;
    m.InstructionCount = 0x7FFFFFFF;
    cpu.Step();
    EXPECT_EQ(m.ClockCycles, static_cast<int>(0x80000002u));
    EXPECT_EQ(m.InstructionCount, static_cast<int>(0x80000000u));
    EXPECT_EQ(m.InstructionPC, 0);
}

}  // namespace
}  // namespace mb::test
