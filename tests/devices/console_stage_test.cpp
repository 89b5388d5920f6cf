// The console stage of the command-line tools: CP/M programs at 0100H with
// their BDOS calls, and the stop address, run through run control at the
// rates with and without texts.
#include "devices/console_stage.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/access.h"
#include "core/run_control.h"
#include "core/simlog.h"
#include "settings/settings_store.h"
#include "tests/support/quiet_host.h"

namespace mb {
namespace {

struct RunResult {
    std::string output;
    std::vector<std::string> warnings;
    long long instructions = 0;
    int pc = -1;
};

// Loads `program` at its origin and runs it to its end at `rate`.
RunResult RunProgram(const std::vector<int>& program, ConsoleStage::Options options, int rate) {
    auto m = std::make_unique<Machine>();
    const int origin = options.cpm ? ConsoleStage::kProgramStart : 0;
    m->StartingAddress = origin;
    for (size_t i = 0; i < program.size(); ++i) m->MemoryImage[origin + i] = program[i];
    testing::QuietHost host;
    MemorySettingsStore settings;
    settings.SetSettingText(kSettingRate, std::to_string(rate));
    settings.SetSettingInt(kSettingFastDelay, 0);
    AccessHooks hooks;
    SimLog log;
    RunControl rc(*m, host, settings, hooks, log);
    RunResult run;
    ConsoleStage stage(
        *m, options, [&](int c) { run.output += static_cast<char>(c); },
        [&](const std::string& text) { run.warnings.push_back(text); });
    rc.Debug = &stage;
    rc.InstructionLimit = 100000;  // a faulty stage must not hang the test
    rc.LoadSettings();
    rc.menustart();
    run.instructions = m->InstructionTotal;
    run.pc = m->PC;
    return run;
}

TEST(ConsoleStage, CpmProgramsAndTheirBdosCalls) {
    auto check = [](const char* what, const std::vector<int>& program, const std::string& output,
                    int endPc) {
        for (int rate : {kRateFast, kRateUltimate}) {
            SCOPED_TRACE(std::string(what) + " at rate " + std::to_string(rate));
            const RunResult run = RunProgram(program, {true, -1}, rate);
            EXPECT_EQ(run.output, output);
            EXPECT_TRUE(run.warnings.empty());
            EXPECT_EQ(run.pc, endPc);
        }
    };
    check("string up to '$', then a character, then RET to the warm boot",
          {0x0E, 0x09, 0x11, 0x10, 0x01, 0xCD, 0x05, 0x00,  // LD C,9; LD DE,0110H; CALL 5
           0x0E, 0x02, 0x1E, 0x21, 0xCD, 0x05, 0x00,        // LD C,2; LD E,'!'; CALL 5
           0xC9,                                            // RET
           'H',  'i',  '$',  'x'},
          "Hi!", 0x0000);
    // LD C,0; CALL 5; HALT (not reached)
    check("BDOS 0 ends the program where it is", {0x0E, 0x00, 0xCD, 0x05, 0x00, 0x76}, "", 0x0105);
    check("JP 0000H is a warm boot", {0x1E, 'A', 0x0E, 0x02, 0xCD, 0x05, 0x00, 0xC3, 0x00, 0x00},
          "A", 0x0000);
    check("an empty string prints nothing",
          {0x0E, 0x09, 0x11, 0x09, 0x01, 0xCD, 0x05, 0x00, 0xC9, '$'}, "", 0x0000);
}

TEST(ConsoleStage, UnservedFunctionWarnsOnceAndReturns) {
    // Twice LD C,20; CALL 5, then JP 0000H.
    const RunResult run =
        RunProgram({0x0E, 20, 0xCD, 0x05, 0x00, 0x0E, 20, 0xCD, 0x05, 0x00, 0xC3, 0x00, 0x00},
                   {true, -1}, kRateUltimate);
    EXPECT_EQ(run.warnings, std::vector<std::string>{"BDOS function 20 is not served"});
    EXPECT_EQ(run.pc, 0);
    EXPECT_EQ(run.instructions, 5);  // the BDOS entry itself runs no instruction
}

TEST(ConsoleStage, StopAddressEndsTheRunOnArrival) {
    // NOP x4 then an endless JR: the stop at 0003H comes after three instructions.
    for (int rate : {kRateFast, kRateUltimate}) {
        const RunResult run =
            RunProgram({0x00, 0x00, 0x00, 0x00, 0x18, 0xFE}, {false, 0x0003}, rate);
        EXPECT_EQ(run.pc, 3) << rate;
        EXPECT_EQ(run.instructions, 3) << rate;
    }
}

TEST(ConsoleStage, MarksOnlyItsOwnAddresses) {
    auto m = std::make_unique<Machine>();
    ConsoleStage stage(
        *m, {true, 0x1234}, [](int) {}, [](const std::string&) {});
    int marked = 0;
    for (int a = 0; a < kMemorySize; ++a) marked += m->AddressMarks[a] != 0;
    EXPECT_EQ(marked, 3);
    EXPECT_TRUE(m->AddressMarks[0x0000] & kMarkHostChecks);
    EXPECT_TRUE(m->AddressMarks[0x0005] & kMarkHostChecks);
    EXPECT_TRUE(m->AddressMarks[0x1234] & kMarkHostChecks);
    EXPECT_EQ(m->MemoryImage[6] + m->MemoryImage[7] * 256, ConsoleStage::kBdosTop);
}

}  // namespace
}  // namespace mb
