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

// An address mark brings the debugging checks to the end of exactly those
// instructions that leave PC on the marked address, whatever way they get there.
TEST(ExecuteCycle, MarkedAddressRunsTheDebugChecks) {
    struct Case {
        const char* what;
        std::vector<int> program;
        int mark;
        int steps;
        int checks;  // instructions whose end ran the checks
    } cases[] = {
        {"falls through onto it", {0x00, 0x00, 0x00}, 0x0002, 3, 1},
        {"jumps onto it", {0xC3, 0x10, 0x00}, 0x0010, 1, 1},
        {"calls it", {0xCD, 0x05, 0x00}, 0x0005, 1, 1},
        {"passes by", {0x00, 0x00, 0x00}, 0x0100, 3, 0},
        {"loops on it", {0x00, 0x18, 0xFD}, 0x0000, 6, 3},  // NOP; JR -1 back to 0000H
        {"wraps onto 0000H", {}, 0x0000, 1, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Cpu cpu;
        cpu.m.SimulationRate = kRateUltimate;  // no text: only the mark opens the stage
        RecordingStage stage;
        cpu.m.EndStage = &stage;
        cpu.Load(0, c.program);
        if (c.program.empty()) {
            cpu.m.MemoryImage[0xFFFF] = 0x00;  // NOP at the top of memory
            cpu.m.PC = 0xFFFF;
        }
        MarkAddress(cpu.m, c.mark, kMarkHostChecks);
        cpu.Step(c.steps);
        EXPECT_EQ(static_cast<int>(stage.calls.size()), c.checks);
        for (const std::string& call : stage.calls) EXPECT_EQ(call, "debug");
    }
}

TEST(ExecuteCycle, AddressMarksAreBitsOfTheirOwners) {
    Machine m;
    MarkAddress(m, 0x1234, kMarkHostChecks);
    MarkAddress(m, 0x1234, 0x80);
    MarkAddress(m, 0x1234, kMarkHostChecks, false);
    EXPECT_EQ(m.AddressMarks[0x1234], 0x80);
    MarkAddress(m, 0x11234, kMarkHostChecks);  // addresses are 16 bits
    EXPECT_EQ(m.AddressMarks[0x1234], 0x80 | kMarkHostChecks);
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
