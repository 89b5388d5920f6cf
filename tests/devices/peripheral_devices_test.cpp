// The Peripheral Devices through the port paths: what OUT shows on the lamps
// and the output terminal, which device answers IN, the one-shot values, the
// input queue's entries, and the settings that bring the devices back.
#include "devices/peripheral_devices.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/access.h"
#include "settings/settings_store.h"
#include "support/quiet_host.h"

namespace mb {
namespace {

// A host whose IN prompt answers 5AH and counts the questions.
struct PromptHost : testing::QuietHost {
    int questions = 0;
    int AskInValue(const std::string&, const std::string&) override {
        ++questions;
        return 0x5A;
    }
};

class DevicesTest : public ::testing::Test {
  public:
    Machine m;
    PromptHost host;
    AccessHooks hooks;
    MemorySettingsStore settings;
    PeripheralDevices devices{m, hooks, settings};

    void SetUp() override {
        hooks.host = &host;
        hooks.PromptBeforeIn = false;
        hooks.UpdateMask(m);
    }
    void On(int k, const char* port) { ASSERT_EQ(devices.TurnOn(k, port), ""); }
    void Input(int k, const char* port, int value, int oneShot = -1) {
        On(k, port);
        devices.SetInputMode(k, true);
        devices.SetValue(k, value);
        devices.SetOneShot(k, oneShot);
    }
    void Prompt(bool on) {
        hooks.PromptBeforeIn = on;
        hooks.UpdateMask(m);
    }
};

TEST_F(DevicesTest, OutShowsOnTheLampsOfOutputDevices) {
    On(1, "10");
    On(2, "10");
    On(3, "11");
    Input(4, "10", 0x33);
    PortOut(m, 0x10, 0xA5);
    PortOut(m, 0x11, 0x01);
    PortOut(m, 0x12, 0xFF);  // no device there
    EXPECT_EQ(devices.ValueText(1), "A5H");
    EXPECT_EQ(devices.ValueText(2), "A5H");  // both devices on the port see it
    EXPECT_EQ(devices.ValueText(3), "01H");
    EXPECT_EQ(devices.ValueText(4), "33H");  // input mode ignores OUT
    std::string lamps;
    for (int bit = 7; bit >= 0; --bit)
        lamps += PeripheralDevices::LampLit(devices.Device(1).Value, bit) ? '1' : '0';
    EXPECT_EQ(lamps, "10100101");
    devices.FlipLamp(1, 7);  // the leftmost lamp
    devices.FlipLamp(1, 1);
    EXPECT_EQ(devices.ValueText(1), "27H");
    devices.TurnOff(2);
    PortOut(m, 0x10, 0x00);
    EXPECT_EQ(devices.ValueText(2), "00H");
    EXPECT_EQ(devices.Caption(2), "I/O port");
    EXPECT_EQ(devices.Caption(1), "I/O port 10H");
}

TEST_F(DevicesTest, WhichSourceAnswersIn) {
    struct Dev {
        int k;
        int value;  // -1: an output device (the input queue: on)
        int oneShot = -1;
        const char* port = "05";
    };
    struct Case {
        const char* name;
        std::vector<Dev> devices;
        const char* queued;      // hexadecimal bytes for the input queue
        bool prompt;             // on: asked once, after the sources that pass it
        std::vector<int> reads;  // successive INs on port 5
    };
    const int Q = kInputQueueDevice;
    const Case cases[] = {
        {"no device: the last OUT", {}, "", false, {0x33, 0x33}},
        {"a later device overrides an earlier one", {{1, 1}, {2, 9}}, "", false, {9, 9}},
        {"an earlier one-shot ends the search, once", {{1, 1, 7}, {2, 9}}, "", false, {7, 9}},
        {"output device: IN reads what OUT left", {{1, -1}}, "", false, {0x33}},
        {"a plain value does not pass the prompt", {{1, 1}}, "", true, {0x5A}},
        {"a one-shot value passes the prompt", {{1, 1, 0x44}}, "", true, {0x44, 0x5A}},
        {"queued bytes pass the prompt, then it asks", {{Q, -1}}, "61,62", true, {'a', 'b', 0x5A}},
        {"a queue on another port is not asked", {{Q, -1, -1, "06"}}, "61,62", false, {0x33}},
        {"a one-shot before the queue", {{Q, -1}, {3, 1, 0x22}}, "11", false, {0x22, 0x11, 1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        m = Machine{};
        hooks = AccessHooks{};
        hooks.host = &host;
        hooks.PromptBeforeIn = false;
        host.questions = 0;
        PortOut(m, 5, 0x33);
        for (const Dev& d : c.devices) {
            if (d.value < 0) On(d.k, d.port);
            if (d.value >= 0) Input(d.k, d.port, d.value, d.oneShot);
        }
        devices.Send(kQueueHex, c.queued);
        Prompt(c.prompt);
        std::vector<int> reads;
        for (size_t i = 0; i < c.reads.size(); ++i) reads.push_back(PortIn(m, 5));
        EXPECT_EQ(reads, c.reads);
        EXPECT_EQ(host.questions, c.prompt ? 1 : 0);
        EXPECT_EQ(m.PortImage[5], c.reads.back());  // IN keeps what it read
    }
}

TEST_F(DevicesTest, TurningOnReadsTheHexadecimalPort) {
    struct Case {
        const char* answer;
        const char* message;
        const char* caption;
    };
    const Case cases[] = {
        {"3c", "", "I/O port 3CH"},
        {"5", "", "I/O port 05H"},
        {" a ", "", "I/O port 0AH"},
        {"FF", "", "I/O port FFH"},
        {"", "", "I/O port"},  // empty: no message, still off
        {"xyz", kWrongEntry, "I/O port"},
        {"123", kWrongEntry, "I/O port"},
        {"g", kWrongEntry, "I/O port"},
    };
    for (int k : {1, kOutputTerminalDevice, kInputQueueDevice}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(std::to_string(k) + " '" + c.answer + "'");
            devices.TurnOff(k);
            EXPECT_EQ(devices.TurnOn(k, c.answer), c.message);
            EXPECT_EQ(devices.Caption(k), c.caption);
            EXPECT_EQ(devices.Enabled(k), std::string(c.caption) != "I/O port");
        }
    }
}

TEST_F(DevicesTest, ModesAndOneShotFields) {
    m.PortImage[0x20] = 0x5C;
    EXPECT_EQ(devices.SetInputMode(1, true), "");  // off: stays in output mode
    EXPECT_FALSE(devices.Device(1).InputMode);
    On(1, "20");
    Prompt(true);
    EXPECT_EQ(devices.SetInputMode(1, true), kInputModeWarning);
    EXPECT_TRUE(devices.Device(1).InputMode);  // chosen all the same
    EXPECT_EQ(devices.ValueText(1), "5CH");    // from PortImage
    Prompt(false);

    EXPECT_EQ(devices.OneShotText(1), "Set\none-shot\nIN value");
    EXPECT_TRUE(devices.ClickOneShot(1));  // asks for a value
    devices.SetOneShot(1, -1);             // Cancel
    EXPECT_EQ(devices.Device(1).OneShot, -1);
    devices.SetOneShot(1, 0x0B);
    EXPECT_EQ(devices.OneShotText(1), "One-shot\nIN value:\n0BH");
    EXPECT_FALSE(devices.ClickOneShot(1));  // a second click clears it
    EXPECT_EQ(devices.Device(1).OneShot, -1);
    devices.SetOneShot(1, 0x0B);
    devices.SetValue(1, -1);  // Cancel of the value dialog keeps the value
    EXPECT_EQ(devices.ValueText(1), "5CH");
    devices.SetInputMode(1, false);  // output mode drops the one-shot
    EXPECT_EQ(devices.Device(1).OneShot, -1);
    EXPECT_FALSE(devices.ClickOneShot(1));
    devices.TurnOff(1);
    EXPECT_FALSE(devices.Device(1).InputMode);
    EXPECT_EQ(devices.Device(1).Port, 0);
    EXPECT_EQ(devices.Device(1).Value, 0);
}

TEST_F(DevicesTest, OutputTerminalKeepsWhatThePortReceives) {
    On(kOutputTerminalDevice, "01");
    for (int c : {int{'H'}, 0, int{'i'}, int{'\r'}, int{'\n'}}) PortOut(m, 1, c);
    PortOut(m, 2, 'x');
    EXPECT_EQ(devices.OutputText(), "Hi\r\n");  // the 0 is dropped
    devices.ClearOutput();
    EXPECT_EQ(devices.OutputText(), "");
    PortOut(m, 1, 'A');
    devices.TurnOff(kOutputTerminalDevice);  // turning off forgets the text
    EXPECT_EQ(devices.OutputText(), "");
    PortOut(m, 1, 'B');
    EXPECT_EQ(devices.OutputText(), "");

    // A long run keeps the newer half of the text.
    On(kOutputTerminalDevice, "01");
    const int cuts = devices.OutputCuts();
    for (size_t i = 0; i <= StringOutPort::kTextLimit; ++i) PortOut(m, 1, 'a' + i % 26);
    EXPECT_EQ(devices.OutputCuts(), cuts + 1);
    EXPECT_LE(devices.OutputText().size(), StringOutPort::kTextLimit);
    EXPECT_EQ(devices.OutputText().back(), 'a' + StringOutPort::kTextLimit % 26);

    On(kInputQueueDevice, "01");
    devices.Send(kQueueString, "kept");
    devices.TurnOff(kInputQueueDevice);  // the queue keeps its bytes until Clear
    EXPECT_EQ(devices.QueueText(), "\"kept\"");
    devices.ClearQueue();
    EXPECT_EQ(devices.QueueText(), "");
}

TEST_F(DevicesTest, QueueEntries) {
    struct Case {
        QueueKind kind;
        const char* entry;
        const char* message;
        const char* display;  // of the queue after the entry
        std::string bytes;
    };
    const Case cases[] = {
        {kQueueString, "a,b", "", "\"a,b\"", "a,b"},
        {kQueueString, "say \"hi\"", "", "\"say \"hi\"\"", "say \"hi\""},
        {kQueueHex, "ff, 0a ,7", "", "FFH,0AH,07H", "\xFF\x0A\x07"},
        {kQueueHex, ",1,2,", "", "01H,02H", "\x01\x02"},
        {kQueueHex, "1,,2", kIncorrectInput, "", ""},
        {kQueueHex, "1,2,zz", kIncorrectInput, "", ""},
        {kQueueHex, "100", kIncorrectInput, "", ""},
        {kQueueHex, "0x10", kIncorrectInput, "", ""},
        {kQueueHex, ",", kIncorrectInput, "", ""},
        {kQueueHex, "  ", "", "", ""},  // nothing typed: no message
        {kQueueDecimal, "0, 13,255", "", "0,13,255", std::string("\0\x0D\xFF", 3)},
        {kQueueDecimal, "256", kIncorrectInput, "", ""},
        {kQueueDecimal, "-1", kIncorrectInput, "", ""},
        {kQueueDecimal, "1a", kIncorrectInput, "", ""},
        {kQueueDecimal, "99999999999", kIncorrectInput, "", ""},
    };
    On(kInputQueueDevice, "07");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.entry);
        devices.ClearQueue();
        EXPECT_EQ(devices.Send(c.kind, c.entry), c.message);
        EXPECT_EQ(devices.QueueText(), c.display);
        EXPECT_EQ(hooks.InputQueue.QueueChars, c.bytes);
        EXPECT_EQ(hooks.InputQueue.QueueKinds.size(), c.bytes.size());
    }
    EXPECT_EQ(devices.LastEntry(kQueueString), "say \"hi\"");  // proposed again

    // Kinds in one queue, and the display as bytes leave it.
    devices.ClearQueue();
    devices.Send(kQueueString, "hi");
    devices.Send(kQueueHex, "0d");
    devices.Send(kQueueDecimal, "10");
    devices.Send(kQueueString, ",");
    EXPECT_EQ(devices.QueueText(), "\"hi\",0DH,10,\",\"");
    EXPECT_EQ(PortIn(m, 7), 'h');
    EXPECT_EQ(devices.QueueText(), "\"i\",0DH,10,\",\"");
    PortIn(m, 7);
    EXPECT_EQ(PortIn(m, 7), 0x0D);
    EXPECT_EQ(devices.QueueText(), "10,\",\"");
}

TEST_F(DevicesTest, SettingsBringTheDevicesBack) {
    On(1, "3C");
    devices.SetInputMode(1, true);
    devices.SetOneShot(1, 0x12);
    On(2, "40");
    On(kOutputTerminalDevice, "01");
    On(kInputQueueDevice, "FF");
    devices.Send(kQueueString, "gone");
    for (auto [key, value] : {std::pair{"Device 1", "ON"},
                              {"Device 1 Input", "ON"},
                              {"Device 1 Port Number", "60"},
                              {"Device 2 Input", "OFF"},
                              {"Device 6 Port Number", "255"}})
        EXPECT_EQ(settings.GetSettingText(key, ""), value) << key;
    EXPECT_FALSE(settings.Contains("Device 3"));

    Machine fresh;
    fresh.PortImage[0x3C] = 0x77;
    AccessHooks hooks2;
    PeripheralDevices again(fresh, hooks2, settings);
    again.LoadSettings();
    EXPECT_EQ(again.Caption(1), "I/O port 3CH");
    EXPECT_TRUE(again.Device(1).InputMode);
    EXPECT_EQ(again.ValueText(1), "77H");  // input mode starts from PortImage
    EXPECT_EQ(again.Device(1).OneShot, -1);
    EXPECT_EQ(again.Caption(2), "I/O port 40H");
    EXPECT_FALSE(again.Device(2).InputMode);
    EXPECT_FALSE(again.Enabled(3));
    EXPECT_EQ(settings.GetSettingText("Device 3", ""), "OFF");  // the default written back
    EXPECT_EQ(again.Caption(kInputQueueDevice), "I/O port FFH");
    EXPECT_EQ(again.QueueText(), "");
    EXPECT_NE(fresh.AccessHookMask & kHookPortDevices, 0);  // on the port paths at once

    // A stored port out of range counts as 0.
    settings.SetSettingText("Device 4", "ON");
    settings.SetSettingText("Device 4 Port Number", "300");
    again.LoadSettings();
    EXPECT_EQ(again.Port(4), 0);
}

TEST(InputQueueText, PastedLinesEndIn13) {
    EXPECT_EQ(PastedBytes("one\r\ntwo\nthree\rfour"), "one\rtwo\rthree\rfour");
    EXPECT_EQ(PastedBytes("\n\n"), "\r\r");
    EXPECT_EQ(PastedBytes("\nx", '\r'), "x");  // the LF of a CR LF cut in two
}

TEST(InputQueueText, ScreenLines) {
    struct Case {
        const char* raw;
        char previous;
        const char* shown;
    };
    const Case cases[] = {
        {"a\r\nb", 0, "a\nb"}, {"a\rb\nc", 0, "a\nb\nc"},   {"\nb", '\r', "b"},
        {"\nb", 'x', "\nb"},   {"a\x07\tb\x7F", 0, "a\tb"}, {"\r\n\r\n", 0, "\n\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.raw);
        EXPECT_EQ(ScreenLines(c.raw, c.previous), c.shown);
    }
}

}  // namespace
}  // namespace mb
