// The shipped examples on the devices, end to end: the echo firmware assembled
// from its source, loaded and run on both terminal bindings with typed input,
// and hello.asm printing on the output terminal of the Peripheral Devices.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "devices/peripheral_devices.h"
#include "devices/terminal.h"
#include "settings/settings_store.h"
#include "support/z80_run.h"

namespace mb {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

class ExamplesTest : public ::testing::Test {
  protected:
    fs::path dir;

    void SetUp() override {
        dir = fs::temp_directory_path() /
              ("devices_" +
               std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::remove_all(dir);
        fs::create_directories(dir);
        for (const char* name : {"echo_port.asm", "echo_mm.asm", "echo.inc", "hello.asm"})
            fs::copy_file(fs::path(MB_EXAMPLES) / name, dir / name);
    }
    void TearDown() override { fs::remove_all(dir); }

    // Assembles an example in the test folder and loads it; the object file
    // must be the one shipped beside the source.
    void Build(testing::Z80Run& run, const std::string& stem) {
        ASSERT_EQ(run.Assemble(dir.string(), stem + ".asm"), 0) << run.AssemblerErrors;
        EXPECT_EQ(ReadFile(dir / (stem + ".obj")),
                  ReadFile(fs::path(MB_EXAMPLES) / (stem + ".obj")))
            << "examples/" << stem << ".obj is older than its source";
        ASSERT_TRUE(run.Load((dir / (stem + ".obj")).string())) << run.LoadMessage;
    }
};

TEST_F(ExamplesTest, EchoFirmwareOnBothBindings) {
    struct Case {
        const char* source;
        TerminalKind kind;
        int busyTime;
    };
    const Case cases[] = {
        {"echo_port", TerminalKind::Port, 0},
        {"echo_mm", TerminalKind::MemoryMapped, 0},
        {"echo_port", TerminalKind::Port, 400},
        {"echo_mm", TerminalKind::MemoryMapped, 10000},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.source) + " busy " + std::to_string(c.busyTime));
        testing::Z80Run run;
        Build(run, c.source);
        MemorySettingsStore settings;
        Terminal terminal(c.kind, run.M(), run.Hooks, settings);
        ASSERT_EQ(terminal.Change(TerminalRegister::BusyTime, std::to_string(c.busyTime)), "");
        terminal.Open();
        terminal.Send(kQueueString, "Hi!");
        terminal.Key("(back)");
        terminal.Key("(return)");
        terminal.Send(kQueueHex, "03");  // Ctrl+C: the firmware halts
        ASSERT_TRUE(run.Run(1, 2'000'000));
        EXPECT_EQ(terminal.OutputText(), "Echo ready\r\nHi\r\n");  // the echoed 8 took "!" back
        EXPECT_EQ(terminal.QueueChars, "");
        // A busy terminal makes the firmware wait: each byte costs the time.
        EXPECT_GT(run.M().ClockCycles, 17 * c.busyTime);
    }
}

TEST_F(ExamplesTest, EchoFirmwareWaitsForInput) {
    testing::Z80Run run;
    Build(run, "echo_mm");
    MemorySettingsStore settings;
    Terminal terminal(TerminalKind::MemoryMapped, run.M(), run.Hooks, settings);
    terminal.Open();
    terminal.Send(kQueueString, "ab");
    EXPECT_FALSE(run.Run(1, 200'000));  // still polling when the limit comes
    EXPECT_EQ(terminal.OutputText(), "Echo ready\r\nab");
}

TEST_F(ExamplesTest, HelloPrintsOnTheOutputTerminal) {
    testing::Z80Run run;
    Build(run, "hello");
    MemorySettingsStore settings;
    PeripheralDevices devices(run.M(), run.Hooks, settings);
    ASSERT_EQ(devices.TurnOn(kOutputTerminalDevice, "01"), "");
    ASSERT_EQ(devices.TurnOn(1, "01"), "");
    ASSERT_TRUE(run.Run(0x80));
    EXPECT_EQ(devices.OutputText(), "HELLO");
    EXPECT_EQ(devices.ValueText(1), "4FH");  // the lamps show the last letter
}

}  // namespace
}  // namespace mb
