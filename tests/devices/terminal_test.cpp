// The Input/Output Terminal on both bindings, driven through the data paths as
// a firmware drives it: status bits, busy time, input and output; then its
// screen, its register entries and its keys. At the end the shipped examples,
// end to end: the echo firmware assembled from its source and run on both
// bindings with typed input, and hello.asm on the Peripheral Devices.
#include "devices/terminal.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "core/access.h"
#include "devices/peripheral_devices.h"
#include "settings/settings_store.h"
#include "support/quiet_host.h"
#include "support/z80_run.h"

namespace mb {
namespace {

// The firmware's side of a terminal: reads and writes of a register, through
// memory or ports as the binding says. The IN prompt answers 99H.
struct TerminalBus : testing::QuietHost {
    explicit TerminalBus(TerminalKind kind)
        : memory(kind == TerminalKind::MemoryMapped), terminal(kind, m, hooks, settings) {
        hooks.host = this;
        hooks.PromptBeforeIn = false;
        hooks.UpdateMask(m);
    }
    int AskInValue(const std::string&, const std::string&) override {
        ++questions;
        return 0x99;
    }
    int Read(int reg) { return memory ? MemoryRead(m, reg & 0xFFFF) : PortIn(m, reg & 0xFF); }
    void Write(int reg, int value) {
        memory ? MemoryWrite(m, reg & 0xFFFF, value) : PortOut(m, reg & 0xFF, value);
    }
    // The register as it stands between two accesses.
    int& Cell(int reg) { return memory ? m.MemoryImage[reg & 0xFFFF] : m.PortImage[reg & 0xFF]; }

    const bool memory;
    int questions = 0;
    Machine m;
    AccessHooks hooks;
    MemorySettingsStore settings;
    Terminal terminal;
};

class TerminalTest : public ::testing::TestWithParam<TerminalKind> {
  protected:
    TerminalBus bus{GetParam()};
    Terminal& t = bus.terminal;
    bool Memory() const { return bus.memory; }
    int Data() const { return Memory() ? 0xA001 : 0xFF; }
    int Status() const { return Memory() ? 0xA000 : 0xFE; }
};

INSTANTIATE_TEST_SUITE_P(Bindings, TerminalTest,
                         ::testing::Values(TerminalKind::MemoryMapped, TerminalKind::Port),
                         [](const auto& info) {
                             return info.param == TerminalKind::MemoryMapped ? "MemoryMapped"
                                                                             : "Port";
                         });

TEST_P(TerminalTest, OpeningReadsTheSettingsWithTheirDefaults) {
    const std::string prefix = Memory() ? "IO Terminal " : "IO Terminal2 ";
    EXPECT_FALSE(t.Active());
    t.Open();
    EXPECT_TRUE(t.Active());
    const struct {
        const char* key;
        int value;
    } expected[] = {
        {"Out Addr", Data()}, {"Out Ctrl", Status()}, {"Out Ctrl Bit", 1},
        {"Out Busy Time", 0}, {"In Addr", Data()},    {"In Ctrl", Status()},
        {"In Ctrl Bit", 0},   {"Color Scheme", 0},    {"Keyboard Small Letters", 0},
    };
    for (const auto& e : expected) {
        SCOPED_TRACE(e.key);
        EXPECT_EQ(bus.settings.GetSettingInt(prefix + e.key, -1), e.value);  // written back
    }
    EXPECT_EQ(t.DataText(true), Memory() ? "A001" : "FF");
    EXPECT_EQ(t.StatusText(true), Memory() ? "A000,1" : "FE,1");
    EXPECT_EQ(t.StatusText(false), Memory() ? "A000,0" : "FE,0");
    EXPECT_EQ(t.DataCaption(true),
              std::string(Memory() ? "Output terminal address:" : "Output terminal I/O port:"));

    // Stored values are read at the next opening; one out of range is the default.
    t.Close();
    bus.settings.SetSettingInt(prefix + "In Addr", 0x12);
    bus.settings.SetSettingInt(prefix + "Out Busy Time", 20000);
    bus.settings.SetSettingInt(prefix + "In Ctrl Bit", 9);
    t.Open();
    EXPECT_EQ(t.Binding().InData, 0x12);
    EXPECT_EQ(t.Binding().BusyTime, 0);
    EXPECT_EQ(t.Binding().InBit, 0);
}

TEST_P(TerminalTest, StatusBitsFollowTheQueueAndTheBusyTime) {
    ASSERT_EQ(t.Change(TerminalRegister::BusyTime, "50"), "");
    t.Open();
    bus.Cell(Status()) = 0xF0;  // bits the terminal does not own stay as they are
    struct Step {
        const char* what;
        int cycles;
        std::function<void(TerminalBus&)> act;  // before the read of the status
        int status;
    };
    const int data = Data();
    const Step steps[] = {
        {"busy time after opening", 50, nullptr, 0xF0},
        {"idle, nothing queued", 60, nullptr, 0xF2},
        {"a byte sent: busy", 100, [data](TerminalBus& b) { b.Write(data, 'A'); }, 0xF0},
        {"busy time not over", 150, nullptr, 0xF0},
        {"busy time over", 151, nullptr, 0xF2},
        {"characters queued", 152, [](TerminalBus& b) { b.terminal.Send(kQueueString, "hi"); },
         0xF3},
        {"one read", 153, [data](TerminalBus& b) { EXPECT_EQ(b.Read(data), 'h'); }, 0xF3},
        {"the last read", 154, [data](TerminalBus& b) { EXPECT_EQ(b.Read(data), 'i'); }, 0xF2},
        {"RESET cleared the count: busy counted from 0", 20, nullptr, 0xF0},
        {"and over", 51, nullptr, 0xF2},
        {"busy before the count turns negative", 0x7FFFFFF0,
         [data](TerminalBus& b) { b.Write(data, 'B'); }, 0xF0},
        {"past 2^31 the bit comes back", static_cast<int>(0x80000010u), nullptr, 0xF2},
    };
    for (const Step& s : steps) {
        SCOPED_TRACE(s.what);
        bus.m.ClockCycles = s.cycles;
        if (s.act) s.act(bus);
        EXPECT_EQ(bus.Read(Status()), s.status);
        if (Memory()) {
            EXPECT_EQ(bus.m.MemoryImage[Status()], s.status);  // the cell itself changed
        }
    }
    EXPECT_EQ(t.OutputText(), "AB");
}

// With busy time 0 the bit clears for one cycle; an empty queue reads 0, in
// the cell or the port image too.
TEST_P(TerminalTest, BusyTimeZeroAndAnEmptyQueue) {
    t.Open();
    bus.m.ClockCycles = 500;
    bus.Write(Data(), 'x');
    EXPECT_EQ(bus.Read(Status()) & 2, 0);
    bus.m.ClockCycles = 501;
    EXPECT_EQ(bus.Read(Status()) & 2, 2);
    bus.Cell(Data()) = 0x55;
    EXPECT_EQ(bus.Read(Data()), 0);
    EXPECT_EQ(bus.Cell(Data()), 0);
}

TEST_P(TerminalTest, SeparateRegistersAndTheirOwnBits) {
    // Output on 10/11 bit 7, input on 20/21 bit 3.
    const std::string base = Memory() ? "80" : "";
    for (auto [reg, answer] : {std::pair{TerminalRegister::OutData, base + "10"},
                               {TerminalRegister::OutStatus, base + "11"},
                               {TerminalRegister::OutBit, std::string("7")},
                               {TerminalRegister::InData, base + "20"},
                               {TerminalRegister::InStatus, base + "21"},
                               {TerminalRegister::InBit, std::string("3")}}) {
        ASSERT_EQ(t.Change(reg, answer), "");
    }
    t.Open();
    const int off = Memory() ? 0x8000 : 0;
    bus.m.ClockCycles = 100;
    EXPECT_EQ(bus.Read(off + 0x11), 0x80);
    EXPECT_EQ(bus.Read(off + 0x21), 0x00);
    t.Send(kQueueHex, "41");
    EXPECT_EQ(bus.Read(off + 0x21), 0x08);
    EXPECT_EQ(bus.Read(off + 0x11), 0x80);  // the input bit is not the output's business
    bus.Write(off + 0x20, 'z');             // a write to the input register prints nothing
    EXPECT_EQ(t.OutputText(), "");
    EXPECT_EQ(bus.Read(off + 0x20), 0x41);
    bus.Write(off + 0x10, 'o');
    EXPECT_EQ(t.OutputText(), "o");
}

TEST_P(TerminalTest, AClosedTerminalLeavesItsRegistersAlone) {
    t.Open();
    t.Send(kQueueString, "q");
    t.Close();
    EXPECT_EQ(bus.m.AccessHookMask & (kHookMemoryTerminal | kHookPortTerminal), 0);
    bus.Cell(Status()) = 0x40;
    bus.Cell(Data()) = 0x41;
    EXPECT_EQ(bus.Read(Status()), 0x40);
    EXPECT_EQ(bus.Read(Data()), 0x41);
    bus.Write(Data(), 'x');
    EXPECT_EQ(t.OutputText(), "");
    EXPECT_EQ(t.QueueChars, "q");
}

TEST(PortTerminal, RegistersAnswerWithoutThePrompt) {
    TerminalBus bus(TerminalKind::Port);
    bus.hooks.PromptBeforeIn = true;
    bus.terminal.Open();
    bus.m.ClockCycles = 10;
    EXPECT_EQ(bus.Read(0xFE), 0x02);
    EXPECT_EQ(bus.Read(0xFF), 0x00);
    EXPECT_EQ(bus.questions, 0);
    EXPECT_EQ(bus.Read(0xFD), 0x99);  // any other port still asks
    EXPECT_EQ(bus.questions, 1);

    // Status and data on one port: the data step comes first.
    ASSERT_EQ(bus.terminal.Change(TerminalRegister::InStatus, "FF"), "");
    ASSERT_EQ(bus.terminal.Change(TerminalRegister::OutStatus, "FF"), "");
    bus.terminal.Open();
    bus.terminal.Send(kQueueString, "*");
    EXPECT_EQ(bus.Read(0xFF), '*');
}

TEST(Terminal, ScreenBytes) {
    struct Case {
        const char* name;
        std::vector<int> bytes;
        const char* screen;
        const char* lastReceived;
    };
    const Case cases[] = {
        {"text", {'H', 'i', 13, 10}, "Hi\r\n", "$0A"},
        {"backspace", {'A', 'B', 8}, "A", "$08"},
        {"backspace at an empty screen", {8, 8}, "", "$08"},
        {"form feed clears", {'A', 'B', 12}, "", "$0C"},
        {"a zero shows only in the field", {'A', 0}, "A", "$00"},
        {"high bytes stay", {0xE9}, "\xE9", "$E9"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TerminalBus bus(TerminalKind::Port);
        bus.terminal.Open();
        for (int b : c.bytes) bus.Write(0xFF, b);
        EXPECT_EQ(bus.terminal.OutputText(), c.screen);
        EXPECT_EQ(bus.terminal.LastReceivedText(), c.lastReceived);
    }
}

TEST(Terminal, ReceivedFieldAndScreenChanges) {
    TerminalBus bus(TerminalKind::MemoryMapped);
    Terminal& t = bus.terminal;
    int changes = 0;
    t.changed = [&](int bits) { changes |= bits; };
    t.Open();
    EXPECT_FALSE(t.ReceivedShown());
    const int generation = t.ScreenGeneration();
    bus.Write(0xA001, 'a');
    EXPECT_TRUE(t.ReceivedShown());
    EXPECT_EQ(changes, Terminal::kScreenChanged | Terminal::kReceivedChanged);
    EXPECT_EQ(t.ScreenGeneration(), generation);  // appending keeps the generation
    for (int i = 0; i < Terminal::kReceivedTicks - 1; ++i) t.ReceivedTick();
    EXPECT_TRUE(t.ReceivedShown());
    changes = 0;
    t.ReceivedTick();
    EXPECT_FALSE(t.ReceivedShown());
    EXPECT_EQ(changes, Terminal::kReceivedChanged);
    bus.Write(0xA001, 8);
    EXPECT_NE(t.ScreenGeneration(), generation);
    changes = 0;
    t.Send(kQueueString, "x");
    EXPECT_EQ(changes, Terminal::kQueueChanged);
    changes = 0;
    bus.Read(0xA001);
    EXPECT_EQ(changes, Terminal::kQueueChanged);
}

TEST(Terminal, ALongRunKeepsTheScreenBounded) {
    TerminalBus bus(TerminalKind::Port);
    bus.terminal.Open();
    const std::string line = "0123456789012345678901234567890123456789\r\n";
    for (size_t n = 0; n < Terminal::kScreenLimit / line.size() + 10; ++n)
        for (char c : line) bus.Write(0xFF, static_cast<unsigned char>(c));
    const std::string& screen = bus.terminal.OutputText();
    EXPECT_LE(screen.size(), Terminal::kScreenLimit);
    EXPECT_GT(screen.size(), Terminal::kScreenLimit / 2);
    EXPECT_EQ(screen.substr(0, line.size()), line);  // cut at the end of a line
}

TEST(Terminal, RegisterEntries) {
    struct Case {
        TerminalKind kind;
        TerminalRegister reg;
        const char* answer;
        const char* refusal;
        int value;  // stored when taken
    };
    using R = TerminalRegister;
    const auto M = TerminalKind::MemoryMapped;
    const auto P = TerminalKind::Port;
    const Case cases[] = {
        {M, R::OutData, "b000", "", 0xB000},
        {M, R::InStatus, "FFFFh", "", 0xFFFF},
        {M, R::OutStatus, "10000", "Allowed range 0000h-FFFFh.", -1},
        {M, R::InData, "zz", "Allowed range 0000h-FFFFh.", -1},
        {P, R::OutData, "1", "", 0x01},
        {P, R::InStatus, "FFh", "", 0xFF},
        {P, R::InData, "100", "Allowed range 00h-FFh.", -1},
        {P, R::OutStatus, "-1", "Allowed range 00h-FFh.", -1},
        {P, R::OutBit, "7", "", 7},
        {M, R::InBit, "8", "Allowed range 0-7.", -1},
        {P, R::InBit, "x", "Allowed range 0-7.", -1},
        {M, R::BusyTime, "10000", "", 10000},
        {P, R::BusyTime, "10001", "Allowed range 0-10000.", -1},
        {P, R::BusyTime, "", "Allowed range 0-10000.", -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.answer);
        TerminalBus bus(c.kind);
        EXPECT_EQ(bus.terminal.Change(c.reg, c.answer), c.refusal);
        const char* names[] = {"Out Addr", "Out Ctrl", "Out Ctrl Bit", "Out Busy Time",
                               "In Addr",  "In Ctrl",  "In Ctrl Bit"};
        const std::string key = TerminalKey(c.kind, names[static_cast<int>(c.reg)]);
        EXPECT_EQ(bus.settings.GetSettingInt(key, -1), c.value);
    }
}

TEST(Terminal, Prompts) {
    TerminalBus mm(TerminalKind::MemoryMapped), port(TerminalKind::Port);
    EXPECT_EQ(mm.terminal.Prompt(TerminalRegister::OutStatus),
              "Please enter the address for the output terminal memory mapped status register "
              "(allowed range 0000h-FFFFh):");
    EXPECT_EQ(port.terminal.Prompt(TerminalRegister::InData),
              "Please enter the I/O port for the input terminal data register (allowed range "
              "00h-FFh):");
    EXPECT_EQ(mm.terminal.Prompt(TerminalRegister::OutBit),
              "Please enter the bit number in the status register that should serve the purpose "
              "of the Transmit Data Register Empty signal (allowed range 0-7):");
    EXPECT_EQ(port.terminal.Prompt(TerminalRegister::BusyTime),
              "Please enter 'busy time' in clock cycles that will delay the Transmit Data "
              "Register Empty signal after a data byte has been received (allowed range "
              "0-10000):");
}

TEST(Terminal, KeysPasteAndSchemes) {
    TerminalBus bus(TerminalKind::Port);
    Terminal& t = bus.terminal;
    for (const char* key : {"H", "&&", "(space)", "(return)", "(back)", "(ctrl+c)", "h"})
        EXPECT_TRUE(t.Key(key)) << key;
    EXPECT_FALSE(t.Key("(none)"));
    EXPECT_EQ(t.QueueChars, std::string("H& \r\x08\x03h"));
    for (const std::string& caption : TerminalKeyCaptions())
        EXPECT_GE(TerminalKeyValue(caption), 0) << caption;
    t.ClearQueue();
    t.Paste("10 PRINT\n20 GOTO 10\n");
    EXPECT_EQ(t.QueueChars, "10 PRINT\r20 GOTO 10\r");
    EXPECT_EQ(t.QueueText(), "\"10 PRINT\r20 GOTO 10\r\"");
    EXPECT_EQ(t.Send(kQueueDecimal, "300"), kIncorrectInput);
    EXPECT_EQ(t.QueueChars.size(), 20u);  // nothing queued by the bad entry

    EXPECT_TRUE(t.ChangeColorScheme(kTerminalSchemes - 1));
    EXPECT_FALSE(t.ChangeColorScheme(kTerminalSchemes));
    EXPECT_EQ(bus.settings.GetSettingInt("IO Terminal2 Color Scheme", -1), kTerminalSchemes - 1);
    t.SetSmallLetters(true);
    EXPECT_EQ(bus.settings.GetSettingInt("IO Terminal2 Keyboard Small Letters", -1), 1);
    t.Open();
    EXPECT_EQ(t.ColorScheme(), kTerminalSchemes - 1);
    EXPECT_TRUE(t.SmallLetters());
}

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
