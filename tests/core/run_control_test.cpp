// Run control driven by a scripted host: Start, Step, Stop, the rates and the
// run loop, RESET and the change commands.
#include "core/run_control.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>

#include "core/access.h"
#include "scripted_host.h"
#include "settings/settings_store.h"

namespace mb {
namespace {

using testing::ScriptedHost;

class RunControlTest : public testing::RunControlFixture {
  protected:
    void SetUp() override {
        settings.SetSettingInt(kSettingSlowDelay, 3);
        settings.SetSettingInt(kSettingNormalDelay, 2);
        settings.SetSettingInt(kSettingFastDelay, 1);
        settings.SetSettingInt(kSettingPromptBeforeIn, 0);
        rc.LoadSettings();
    }

    void SetRate(int rate) {
        m.SimulationRate = rate;
        rc.UpdateEndStageMask();
    }

    // Calls `action` once, at the first yield that sees InstructionCount >= n.
    void AtCount(int n, std::function<void()> action) {
        auto done = std::make_shared<bool>(false);
        host.onYield = [this, n, action, done] {
            if (!*done && m.InstructionCount >= n) {
                *done = true;
                action();
            }
        };
    }
};

// An endless loop that counts in A: INC A; JP 0000H.
constexpr std::initializer_list<int> kCountingLoop = {0x3C, 0xC3, 0x00, 0x00};

TEST_F(RunControlTest, StartAtStepByStepRunsNothingUntilStep) {
    Load(0, {0x3E, 0x12, 0x06, 0x34});  // LD A,12H; LD B,34H
    SetRate(kRateStepByStep);
    rc.menustart();
    EXPECT_TRUE(rc.SimulationRunning);
    EXPECT_EQ(m.InstructionCount, 0);
    EXPECT_TRUE(rc.StepEnabled);
    EXPECT_TRUE(rc.Step2Enabled);
    EXPECT_FALSE(rc.StartEnabled);
    EXPECT_TRUE(rc.StopEnabled);
    EXPECT_EQ(m.NextInstructionText, "LD A,12H");

    rc.menustep();
    EXPECT_EQ(m.InstructionCount, 1);
    EXPECT_EQ(m.A, 0x12);
    EXPECT_EQ(m.PC, 2);
    EXPECT_EQ(rc.RunLoopActive, 0);
    rc.menustep2();
    EXPECT_EQ(m.B, 0x34);
    EXPECT_EQ(m.InstructionCount, 2);
}

// From a running rate to Step By Step: the loop ends, the machine stays
// running, and both instruction texts are exact even at Ultimate, where the
// instructions build no text.
TEST_F(RunControlTest, ChangeToStepByStepLeavesLoopWithDisplayExact) {
    for (int rate : {kRateFast, kRateExtremelyFast, kRateUltimate}) {
        SCOPED_TRACE(rate);
        Load(0, kCountingLoop);
        SetRate(rate);
        host.viewBits = 0;
        AtCount(7, [this] { rc.menuspeed1(); });
        rc.menustart();
        EXPECT_TRUE(rc.SimulationRunning);
        EXPECT_EQ(rc.RunLoopActive, 0);
        EXPECT_EQ(m.SimulationRate, kRateStepByStep);
        EXPECT_TRUE(rc.StepEnabled);
        EXPECT_GE(m.InstructionCount, 7);
        const bool afterInc = m.PC == 1;
        EXPECT_EQ(m.CurrentInstructionText, afterInc ? "INC A" : "JP 0000H");
        EXPECT_EQ(m.NextInstructionText, afterInc ? "JP 0000H" : "INC A");
        EXPECT_TRUE(host.viewBits & kViewRegisters);
        host.onYield = nullptr;
        rc.menustop();
        EXPECT_FALSE(rc.SimulationRunning);
    }
}

TEST_F(RunControlTest, StepByStepToNormalEntersLoop) {
    Load(0, kCountingLoop);
    SetRate(kRateStepByStep);
    rc.menustart();
    ASSERT_EQ(m.InstructionCount, 0);
    AtCount(5, [this] { rc.menuspeed1(); });
    rc.menuspeed3();
    EXPECT_EQ(m.InstructionCount, 5);
    EXPECT_EQ(rc.RunLoopActive, 0);
    EXPECT_TRUE(rc.StepEnabled);
    // Normal waits its delay of 2 sleeps after each instruction but the last,
    // whose wait is cut short by the change to Step By Step.
    EXPECT_EQ(host.sleeps5, 4 * 2);
    EXPECT_EQ(settings.GetSettingText(kSettingRate, ""), "1");
}

TEST_F(RunControlTest, StopDuringSlowWaitEndsAtNextSleep) {
    Load(0, kCountingLoop);
    settings.SetSettingInt(kSettingSlowDelay, 140);
    SetRate(kRateSlow);
    host.onSleep = [this] {
        if (host.sleeps5 == 3) rc.menustop();  // the user presses Stop
    };
    rc.menustart();
    EXPECT_FALSE(rc.SimulationRunning);
    EXPECT_EQ(host.sleeps5, 3);
    EXPECT_EQ(m.InstructionCount, 1);
    EXPECT_TRUE(rc.StartEnabled);
    EXPECT_FALSE(rc.StopEnabled);
    EXPECT_FALSE(m.NmiCommandEnabled || m.IntCommandEnabled || m.ResetCommandEnabled);
    ASSERT_EQ(host.messages.size(), 1u);
    EXPECT_EQ(host.messages[0].rfind("Total number of executed instructions is 1.\n", 0), 0u);
    EXPECT_EQ(host.timer.back(), 0);  // the ultimate timer is stopped
}

TEST_F(RunControlTest, AtMostFourStepsWait) {
    Load(0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    SetRate(kRateStepByStep);
    rc.menustart();
    bool pressed = false;
    host.onYield = [&] {
        if (pressed) return;
        pressed = true;
        for (int i = 0; i < 5; ++i) rc.menustep();  // five more while the first runs
    };
    rc.menustep();
    EXPECT_EQ(m.InstructionCount, 5);  // the one in progress and four waiting
    EXPECT_EQ(rc.PendingSteps, 0);
}

TEST_F(RunControlTest, HaltStopsTheRunWithStatistics) {
    Load(0, {0x00, 0x00, 0x76});  // NOP; NOP; HALT
    m.ClockMHz = 4.0f;
    SetRate(kRateStepByStep);
    host.secondsSinceMidnight = 100.0;
    rc.menustart();
    rc.menustep();
    rc.menustep();
    host.secondsSinceMidnight = 112.04;  // with the 0.01 taken off at Start: 12.05 s
    rc.menustep();                       // HALT ends the run
    EXPECT_FALSE(rc.SimulationRunning);
    ASSERT_EQ(host.messages.size(), 1u);
    EXPECT_EQ(
        host.messages[0],
        "Total number of executed instructions is 3.\n"
        "12.5 seconds elapsed.\n"
        "Real-time duration of the simulation is 12 clock cycles or 3.00\xC2\xB5s at 4.0MHz.");
    EXPECT_EQ(rc.LastStatistics(), host.messages[0]);
}

// A long run passes 2^31 clock cycles and, later, instructions: the 32-bit
// counts wrap as devices expect, while the statistics and the log's tail give
// the true totals. The run is placed just below the wrap as if it had got there.
TEST_F(RunControlTest, LongRunTotalsNeverShowAWrappedCount) {
    Load(0, {0x00, 0x00, 0x00, 0x00, 0x76});  // four NOPs; HALT
    m.ClockMHz = 4.0f;
    for (int rate : {kRateFast, kRateUltimate}) {
        SCOPED_TRACE(rate);
        host.messages.clear();
        SetRate(kRateStepByStep);
        rc.menustart();
        const long long nearWrap = 2147483647LL - 3;
        m.InstructionCount = m.ClockCycles = static_cast<int>(nearWrap);
        m.InstructionTotal = m.ClockCycleTotal = 4LL * 4294967296LL + nearWrap;
        m.TotalsSeenInstructions = m.TotalsSeenCycles = static_cast<unsigned>(nearWrap);
        rc.Command1();  // NMI: 11 clock cycles, past the wrap of the 32-bit count
        EXPECT_LT(m.ClockCycles, 0);
        m.PC = 0;
        rc.menuspeed(rate);  // runs to the HALT
        ASSERT_FALSE(rc.SimulationRunning);
        EXPECT_LT(m.InstructionCount, 0);
        const long long instructions = 4LL * 4294967296LL + nearWrap + 1 + 5;
        const long long cycles = 4LL * 4294967296LL + nearWrap + 11 + 5 * 4;
        ASSERT_EQ(host.messages.size(), 1u);
        EXPECT_NE(host.messages[0].find("Total number of executed instructions is " +
                                        std::to_string(instructions) + ".\n"),
                  std::string::npos)
            << host.messages[0];
        std::string time = std::to_string(cycles * 25);  // microseconds at 4 MHz, times 100
        time.insert(time.size() - 2, ".");
        EXPECT_NE(host.messages[0].find("Real-time duration of the simulation is " +
                                        std::to_string(cycles) + " clock cycles or " + time +
                                        "\xC2\xB5s at 4.0MHz."),
                  std::string::npos)
            << host.messages[0];
    }
}

// An instruction limit stops the run after exactly that many instructions at
// every rate, also where it falls inside or at the edge of a batch between two
// looks at the clock.
TEST_F(RunControlTest, InstructionLimitStopsAtExactlyItsCount) {
    Load(0, kCountingLoop);
    for (int rate : {kRateFast, kRateExtremelyFast, kRateUltimate}) {
        for (long long limit : {1LL, 100LL, 511LL, 512LL, 513LL, 1500LL}) {
            SCOPED_TRACE(std::to_string(rate) + " / " + std::to_string(limit));
            rc.InstructionLimit = limit;
            rc.InstructionLimitReached = false;
            SetRate(rate);
            rc.menustart();
            EXPECT_FALSE(rc.SimulationRunning);
            EXPECT_TRUE(rc.InstructionLimitReached);
            EXPECT_EQ(m.InstructionTotal, limit);
        }
    }
    // A HALT on the last counted instruction is the reason, not the limit.
    Load(0, {0x00, 0x76});
    rc.InstructionLimit = 2;
    rc.InstructionLimitReached = false;
    rc.menustart();
    EXPECT_FALSE(rc.InstructionLimitReached);
    EXPECT_EQ(m.InstructionTotal, 2);
}

// Start copies cells 0..4 over the five mirror cells, so an instruction at
// the top of memory reads its operands from what address 0 holds now.
TEST_F(RunControlTest, StartRefreshesTheMemoryMirror) {
    Load(0, {0x11, 0x22, 0x33, 0x44, 0x55});
    for (int i = 0; i < 5; ++i) m.MemoryImage[kMemorySize + i] = 0xEE;
    m.MemoryImage[0xFFFF] = 0x21;  // LD HL,nn with its operand in the mirror: 2211H
    m.StartingAddress = 0xFFFF;
    SetRate(kRateStepByStep);
    rc.menustart();
    for (int i = 0; i < 5; ++i) EXPECT_EQ(m.MemoryImage[kMemorySize + i], 0x11 * (i + 1)) << i;
    rc.menustep();
    EXPECT_EQ(RegHL(m), 0x2211);
    EXPECT_EQ(m.PC, 2);
    rc.menustop();
}

TEST_F(RunControlTest, UltimateSetsTheTimerAndRefreshesOnlyOnItsTick) {
    Load(0, kCountingLoop);
    SetRate(kRateUltimate);
    int ticks = 0;
    host.onYield = [&] {
        if (++ticks == 3) rc.menustop();
        rc.ultimatetimer();
    };
    rc.menustart();
    EXPECT_EQ(host.timer.front(), 500);
    EXPECT_EQ(host.timer.back(), 0);
    EXPECT_GT(m.InstructionCount, 1000);  // no yield per instruction at Ultimate
    // Start, one redraw per tick served, the final redraw.
    EXPECT_GE(host.registerRedraws, 3);
    EXPECT_LE(host.registerRedraws, ticks + 2);
    EXPECT_FALSE(rc.SimulationRunning);
}

TEST_F(RunControlTest, ResetClearsCountersAndHolds500ms) {
    Load(0, {0x3E, 0x12, 0x00, 0x00});
    m.StartingAddress = 0;
    SetRate(kRateStepByStep);
    rc.menustart();
    rc.menustep();
    rc.menustep();
    ASSERT_EQ(m.InstructionCount, 2);
    rc.Command3Press();
    EXPECT_FALSE(m.NmiCommandEnabled);
    EXPECT_FALSE(rc.Step2Enabled);
    rc.Command3Release();
    EXPECT_EQ(m.InstructionCount, 0);
    EXPECT_EQ(m.ClockCycles, 0);
    EXPECT_EQ(m.PC, 0);
    EXPECT_EQ(m.A, 0xFF);
    EXPECT_EQ(m.CurrentInstructionText, "RESET");
    EXPECT_EQ(m.NextInstructionText, "LD A,12H");
    EXPECT_EQ(host.longSleeps, std::vector<int>{500});
    EXPECT_TRUE(m.ResetCommandEnabled);
    EXPECT_TRUE(m.NmiCommandEnabled);
    EXPECT_TRUE(rc.Step2Enabled);
    EXPECT_FALSE(m.ResetHold);
}

// clickreset while running fast: the loop leaves, resets and turns again.
TEST_F(RunControlTest, AutomaticResetThroughTheRunLoop) {
    Load(0, kCountingLoop);
    SetRate(kRateFast);
    bool reset = false;
    host.onYield = [&] {
        if (!reset && m.InstructionCount >= 20) {
            reset = true;
            rc.clickreset();
        } else if (reset && !host.longSleeps.empty() && m.InstructionCount >= 3 && !m.StopRequest) {
            rc.menustop();
        }
    };
    rc.menustart();
    EXPECT_TRUE(reset);
    EXPECT_FALSE(rc.SimulationRunning);
    EXPECT_FALSE(rc.ResetRequest);
    EXPECT_FALSE(m.ResetHold);
    EXPECT_EQ(host.longSleeps, std::vector<int>{500});
    EXPECT_LT(m.InstructionCount, 20);  // counted again from the reset
    EXPECT_EQ(rc.RunLoopActive, 0);
}

TEST_F(RunControlTest, ChangeCommandsCheckTheirEntries) {
    struct Case {
        void (RunControl::*command)();
        const char* answer;
        const char* message;  // "" when accepted
    };
    const Case cases[] = {
        {&RunControl::ChangeClockFrequency, "3.5", ""},
        {&RunControl::ChangeClockFrequency, "0.005", "Allowed range 0.01-120MHz."},
        {&RunControl::ChangeClockFrequency, "121", "Allowed range 0.01-120MHz."},
        {&RunControl::ChangeClockFrequency, "4x", "Allowed range 0.01-120MHz."},
        {&RunControl::ChangeClockFrequency, "nan", "Allowed range 0.01-120MHz."},
        {&RunControl::ChangeClockFrequency, "-nan", "Allowed range 0.01-120MHz."},
        {&RunControl::ChangeClockFrequency, "inf", "Allowed range 0.01-120MHz."},
        {&RunControl::ChangeClockFrequency, "0x10", "Allowed range 0.01-120MHz."},
        {&RunControl::ChangeStartingAddress, "1a", ""},
        {&RunControl::ChangeStartingAddress, "G000", "Wrong entry!"},
        {&RunControl::ChangeStartingAddress, "12345", "Wrong entry!"},
        {&RunControl::ChangeObjOffset, "800", ""},
        {&RunControl::ChangeObjOffset, "-1", "Wrong entry!"},
        {&RunControl::ChangeUltimateInterval, "2000", ""},
        {&RunControl::ChangeUltimateInterval, "0", "Allowed range 1-2000."},
        {&RunControl::ChangeUltimateInterval, "2001", "Allowed range 1-2000."},
        {&RunControl::ChangeUltimateInterval, "abc", "Allowed range 1-2000."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.answer);
        host.messages.clear();
        host.answers = {c.answer};
        (rc.*c.command)();
        if (*c.message) {
            ASSERT_EQ(host.messages.size(), 1u);
            EXPECT_EQ(host.messages[0], c.message);
        } else {
            EXPECT_TRUE(host.messages.empty());
        }
    }
    EXPECT_FLOAT_EQ(m.ClockMHz, 3.5f);
    EXPECT_EQ(settings.GetSettingText(kSettingClock, ""), "3.5");
    EXPECT_EQ(m.StartingAddress, 0x1A);
    EXPECT_EQ(m.PC, 0x1A);  // the new start takes effect through clean
    EXPECT_EQ(settings.GetSettingText(kSettingStartingAddress, ""), "001A");
    EXPECT_EQ(m.ObjOffset, 0x800);
    EXPECT_EQ(settings.GetSettingText(kSettingUltimateTimer, ""), "2000");
    EXPECT_EQ(host.questions[0], "Enter new clock frequency [0.01-120MHz]:");
    EXPECT_EQ(host.questions[8], "Enter new starting address for the simulation [0000-FFFF]:");
    EXPECT_EQ(host.questions[11], "Enter new offset address for OBJ files loading [0000-FFFF]:");
}

// What the change commands store comes back at the next start, and a stored
// value that is no valid entry (edited by hand, or kept from an older release)
// gives the default instead of reaching the machine.
TEST(StartupSettings, StoredValuesComeBackCheckedAtTheNextStart) {
    struct Case {
        const char* clock;
        const char* start;
        float clockMHz;
        int startingAddress;
    };
    const Case cases[] = {
        {"3.5", "0100", 3.5f, 0x100}, {"120", "FFFF", 120.0f, 0xFFFF}, {"nan", "0", 4.0f, 0},
        {"-nan", "zz", 4.0f, 0},      {"inf", "10000", 4.0f, 0},       {"0x10", "1a", 4.0f, 0x1A},
        {"0.001", "", 4.0f, 0},       {"1e300", "0010", 4.0f, 0x10},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.clock) + " / " + c.start);
        MemorySettingsStore settings;
        settings.SetSettingText(kSettingClock, c.clock);
        settings.SetSettingText(kSettingStartingAddress, c.start);
        Machine m;
        ReadStartupSettings(m, settings, "/home/user");
        EXPECT_FLOAT_EQ(m.ClockMHz, c.clockMHz);
        EXPECT_EQ(m.StartingAddress, c.startingAddress);
    }
}

TEST(StartupSettings, FirstStartWritesTheDefaultsBack) {
    MemorySettingsStore settings;
    Machine m;
    ReadStartupSettings(m, settings, "/home/user");
    EXPECT_EQ(settings.GetSettingText("Last Path", ""), "/home/user");
    EXPECT_EQ(settings.GetSettingText(kSettingClock, ""), "4");
    EXPECT_EQ(settings.GetSettingText(kSettingRate, ""), "4");
    EXPECT_EQ(settings.GetSettingInt("HALT Stops Simulation New", -1), 1);
    EXPECT_EQ(m.HaltStopsSimulation, 1);
    EXPECT_EQ(m.InfiniteLoopStopsSimulation, 0);
    EXPECT_FLOAT_EQ(m.ClockMHz, 4.0f);
}

TEST_F(RunControlTest, ChangeCommandsRefusedWhileRunning) {
    SetRate(kRateStepByStep);
    rc.menustart();
    for (auto command : {&RunControl::ChangeClockFrequency, &RunControl::ChangeStartingAddress,
                         &RunControl::ChangeObjOffset, &RunControl::ChangeUltimateInterval}) {
        host.messages.clear();
        (rc.*command)();
        ASSERT_EQ(host.messages.size(), 1u);
        EXPECT_EQ(host.messages[0], "Please stop the simulation first.");
    }
    EXPECT_TRUE(host.questions.empty());
}

TEST_F(RunControlTest, RunToNextBasicShowsItsInfoOnceAndStopReturnsToStepping) {
    Load(0, kCountingLoop);
    settings.SetSettingInt(kSettingNextBasicRate, 1);  // Fast
    rc.LoadSettings();  // reads the rate too, so the rate is set after it
    SetRate(kRateStepByStep);
    rc.menustart();
    AtCount(3, [this] { rc.menustop(); });
    rc.menustep4();
    EXPECT_EQ(host.messages.size(), 2u);  // the info, then the statistics
    EXPECT_EQ(host.messages[0].rfind("Be sure to customize this command performace", 0), 0u);
    EXPECT_EQ(settings.GetSettingInt(kSettingNextBasicInfo, 0), 1);
    EXPECT_FALSE(rc.SimulationRunning);
    EXPECT_EQ(m.SimulationRate, kRateStepByStep);  // Stop during the fast phase
    EXPECT_EQ(rc.NextBasicActive, 0);

    host.messages.clear();
    host.onYield = nullptr;
    rc.menustart();
    AtCount(2, [this] { rc.menuspeed1(); });
    rc.menustep3();
    EXPECT_TRUE(host.messages.empty());  // no info the second time
}

}  // namespace
}  // namespace mb
