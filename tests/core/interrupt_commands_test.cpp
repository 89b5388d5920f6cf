// NMI and INT through the run control: when they are accepted, where they go,
// and the questions of modes 0 and 2.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "core/access.h"
#include "core/execute.h"
#include "core/run_control.h"
#include "scripted_host.h"
#include "settings/settings_store.h"

namespace mb {
namespace {

using testing::ScriptedHost;

class InterruptTest : public testing::RunControlFixture {
  protected:
    void SetUp() override {
        settings.SetSettingInt(kSettingSlowDelay, 2);
        settings.SetSettingInt(kSettingPromptBeforeIn, 0);
        rc.LoadSettings();
    }
    void StartStepping() {
        m.SimulationRate = kRateStepByStep;
        rc.UpdateEndStageMask();
        rc.menustart();
    }
    int StackTop() const { return m.MemoryImage[m.SP] + m.MemoryImage[(m.SP + 1) & 0xFFFF] * 256; }
};

// INT pressed during the wait after an instruction at Slow is carried out at
// the end of the next instruction, not at once.
TEST_F(InterruptTest, IntAtSlowIsServedAfterTheNextInstruction) {
    Load(0, {0xED, 0x56, 0x00, 0x00, 0x00, 0x00});  // IM 1; NOP; NOP; NOP ...
    Load(0x38, {0x76});                             // HALT ends the run
    m.SimulationRate = kRateSlow;
    rc.UpdateEndStageMask();
    bool pressed = false;
    host.onSleep = [&] {
        if (!pressed && m.InstructionCount == 2) {  // waiting after the NOP at 0002H
            pressed = true;
            rc.Command2();
            EXPECT_TRUE(m.IntRequest);
            EXPECT_EQ(m.PC, 3);  // nothing happened yet
        }
    };
    rc.menustart();
    EXPECT_TRUE(pressed);
    EXPECT_FALSE(rc.SimulationRunning);
    EXPECT_EQ(StackTop(), 4);  // pushed after the NOP at 0003H ran
    EXPECT_EQ(m.PC, 0x38);
    EXPECT_EQ(m.InstructionCount, 5);  // IM 1, NOP, NOP, INT, HALT
    EXPECT_FALSE(m.IntRequest);
}

TEST_F(InterruptTest, InterruptModeQuestionsAskUntilValid) {
    struct Case {
        int mode;
        std::vector<std::string> answers;
        int pc;
        int cycles;
    };
    const Case cases[] = {
        {2, {"10"}, 0x1234, 19},                  // I=80H: address from 8010H/8011H
        {2, {"11", "", "zz", "10"}, 0x1234, 19},  // odd, empty, not hex: asked again
        {2, {"8"}, 0xBEEF, 19},                   // one digit gets a "0" in front
        {2, {"0a"}, 0xCAFE, 19},                  // lower case is read
        {0, {"9", "x", "3"}, 0x10, 13},           // RST 10H
        {0, {"8"}, 0x38, 13},
        {1, {}, 0x38, 13},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.answers.empty() ? std::string("mode 1") : c.answers.back());
        Load(0x8010, {0x34, 0x12});
        Load(0x8008, {0xEF, 0xBE});
        Load(0x800A, {0xFE, 0xCA});
        StartStepping();
        m.I = 0x80;
        m.InterruptMode = c.mode;
        host.questions.clear();
        host.answers.assign(c.answers.begin(), c.answers.end());
        rc.Command2();
        EXPECT_EQ(m.PC, c.pc);
        EXPECT_EQ(m.ClockCycles, c.cycles);
        EXPECT_EQ(m.InstructionCount, 1);
        EXPECT_EQ(m.CurrentInstructionText, "INT");
        EXPECT_EQ(StackTop(), 0);
        ASSERT_EQ(host.questions.size(), c.answers.size());
        for (size_t i = 0; i < host.questions.size(); ++i) {
            const bool wrong = host.questions[i].find("Wrong entry.") != std::string::npos;
            EXPECT_EQ(wrong, i > 0) << host.questions[i];
        }
        if (c.mode == 2) {
            EXPECT_EQ(host.questions[0],
                      "Enter the 8-bit vector supplied by the peripheral device:\n"
                      "(it must be an even value in the range [00-FF])");
        } else if (c.mode == 0) {
            EXPECT_EQ(host.questions[0].substr(0, 80),
                      "Enter the choice of instruction supplied by the peripheral device:\n1 - RST "
                      "00H\n2");
        }
        rc.menustop();
    }
}

TEST_F(InterruptTest, SpectrumModeTwoAsksNothing) {
    Load(0x3F00, {0x00, 0x40});
    StartStepping();
    hooks.SpectrumActive = true;
    m.I = 0x3F;
    m.InterruptMode = 2;
    rc.Command2();
    EXPECT_TRUE(host.questions.empty());
    EXPECT_EQ(m.PC, 0x4000);
}

TEST_F(InterruptTest, IntDuringHaltReturnsPastTheHalt) {
    Load(0, {0xED, 0x56, 0x76, 0x00});  // IM 1; HALT; NOP
    m.HaltStopsSimulation = 0;
    StartStepping();
    for (int i = 0; i < 4; ++i) rc.menustep();
    ASSERT_EQ(m.PC, 2);  // halted
    ASSERT_EQ(m.HaltState, 1);
    rc.Command2();
    EXPECT_EQ(m.PC, 0x38);
    EXPECT_EQ(StackTop(), 3);
    EXPECT_EQ(m.IFF1, 0);
    EXPECT_FALSE(m.IntCommandEnabled);
}

TEST_F(InterruptTest, NmiThenRetnRestoresIff1) {
    Load(0, {0xFB, 0x00, 0x76, 0x00});  // EI; NOP; HALT
    Load(0x66, {0xED, 0x45});           // RETN
    m.HaltStopsSimulation = 0;
    StartStepping();
    EXPECT_TRUE(m.NmiCommandEnabled);
    EXPECT_FALSE(m.IntCommandEnabled);
    rc.menustep();  // EI
    rc.menustep();  // NOP: the flip-flops are set as it starts
    ASSERT_EQ(m.IFF1, 1);
    EXPECT_TRUE(m.IntCommandEnabled);
    rc.menustep();  // HALT
    rc.Command1();
    EXPECT_EQ(m.PC, 0x66);
    EXPECT_EQ(m.IFF1, 0);
    EXPECT_EQ(m.IFF2, 1);
    EXPECT_EQ(m.CurrentInstructionText, "NMI");
    EXPECT_FALSE(m.NmiCommandEnabled);
    EXPECT_FALSE(m.IntCommandEnabled);
    rc.menustep();       // RETN
    EXPECT_EQ(m.PC, 3);  // past the HALT
    EXPECT_EQ(m.IFF1, 1);
    EXPECT_TRUE(m.NmiCommandEnabled);
}

// Both requests after one instruction: NMI first, then INT from inside it.
TEST_F(InterruptTest, NmiThenIntAfterTheSameInstruction) {
    Load(0, {0xED, 0x56, 0x00, 0x00, 0x00, 0x00});
    m.SimulationRate = kRateFast;
    rc.UpdateEndStageMask();
    bool pressed = false;
    host.onYield = [&] {
        if (!pressed && m.InstructionCount == 2) {
            pressed = true;
            rc.Command1();
            rc.Command2();
        } else if (pressed && m.InstructionCount >= 5 && !m.StopRequest) {
            rc.menustop();
        }
    };
    rc.menustart();
    EXPECT_EQ(m.InstructionCount, 5);  // IM 1, NOP, NOP, NMI, INT
    EXPECT_EQ(m.PC, 0x38);
    EXPECT_EQ(m.ClockCycles, 8 + 4 + 4 + 11 + 13);
    EXPECT_EQ(StackTop(), 0x66);  // INT pushed the NMI routine's address
    EXPECT_EQ(m.MemoryImage[m.SP + 2] + m.MemoryImage[m.SP + 3] * 256, 4);
}

}  // namespace
}  // namespace mb
