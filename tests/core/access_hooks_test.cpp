// The data paths with test doubles on every hook: the order in which devices
// see an access, which source supplies an IN, and the idle fast path.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "core/access.h"
#include "scripted_host.h"

namespace mb {
namespace {

using testing::ScriptedHost;
using Events = std::vector<std::string>;

struct RecordingModule : ExternalModule {
    Events* events;
    std::string name;
    int supplyRead = -1;    // value to set in readmem/readio, -1: none
    int redirectRead = -1;  // address to set in readmem, -1: none
    Machine* machine = nullptr;
    RecordingModule(Events* e, std::string n) : events(e), name(std::move(n)) {}
    void objectinit() override { events->push_back(name + " init"); }
    void objectrefresh() override { events->push_back(name + " refresh"); }
    void readmem(int& address, int& value) override {
        events->push_back(name + " readmem " + std::to_string(address) + " " +
                          std::to_string(value));
        if (supplyRead >= 0) value = supplyRead;
        if (redirectRead >= 0) address = redirectRead;
    }
    void writemem(int& address, int& value) override {
        events->push_back(name + " writemem " + std::to_string(address) + " " +
                          std::to_string(value) + " cell " +
                          std::to_string(machine->MemoryImage[address]));
        value = 0;  // reaches the modules that follow, not the cell
    }
    void readio(int& address, int& value) override {
        events->push_back(name + " readio " + std::to_string(address) + " " +
                          std::to_string(value));
        if (supplyRead >= 0) value = supplyRead;
    }
    void writeio(int& address, int& value) override {
        events->push_back(name + " writeio " + std::to_string(address) + " " +
                          std::to_string(value) + " port " +
                          std::to_string(machine->PortImage[address]));
    }
};

struct RecordingTerminal : TerminalDevice {
    Events* events;
    std::string name;
    std::deque<int> input;
    explicit RecordingTerminal(Events* e, std::string n) : events(e), name(std::move(n)) {}
    bool interm_notempty() override { return !input.empty(); }
    int interm_getbyte() override {
        int v = input.front();
        input.pop_front();
        return v;
    }
    void outterm_addbyte(int value) override {
        events->push_back(name + " out " + std::to_string(value));
    }
};

struct RecordingSpectrum : SpectrumBus {
    Events* events;
    explicit RecordingSpectrum(Events* e) : events(e) {}
    int KeyboardRow(int port, int highByte) override {
        events->push_back("keyboard " + std::to_string(port) + " " + std::to_string(highByte));
        return 0xBF;
    }
    void SetBorder(int colour) override { events->push_back("border " + std::to_string(colour)); }
};

struct EventHost : ScriptedHost {
    Events* events;
    explicit EventHost(Events* e) : events(e) {}
    void RefreshViews(int bits) override {
        if (bits & kViewDevices) events->push_back("devices view");
        if (bits & kViewPortsEditor) events->push_back("ports view");
    }
};

class AccessTest : public ::testing::Test {
  public:
    Events events;
    Machine m;
    EventHost host{&events};
    AccessHooks hooks;
    RecordingModule first{&events, "m1"}, third{&events, "m3"};
    RecordingTerminal memTerm{&events, "memterm"}, portTerm{&events, "portterm"};
    RecordingSpectrum spectrum{&events};

    void SetUp() override {
        hooks.host = &host;
        hooks.PromptBeforeIn = false;
        first.machine = third.machine = &m;
        hooks.UpdateMask(m);
    }
    void WithModules() {
        hooks.Modules[0] = &first;
        hooks.Modules[2] = &third;
        hooks.UpdateMask(m);
    }
};

TEST_F(AccessTest, IdlePathsTouchOnlyTheArrays) {
    EXPECT_EQ(m.AccessHookMask, 0);
    m.PortImage[7] = 0x42;
    EXPECT_EQ(PortIn(m, 7), 0x42);
    PortOut(m, 9, 0x55);
    EXPECT_EQ(m.PortImage[9], 0x55);
    MemoryWrite(m, 0x1234, 0x99);
    EXPECT_EQ(m.LastWriteAddress, 0x1234);
    EXPECT_EQ(MemoryRead(m, 0x1234), 0x99);
    EXPECT_EQ(m.LastReadAddress, 0x1234);

    // The IN prompt and the I/O log concern ports only: memory stays bare.
    hooks.PromptBeforeIn = true;
    hooks.UpdateMask(m);
    EXPECT_NE(m.AccessHookMask, 0);
    EXPECT_EQ(m.AccessHookMask & (kMemoryReadHooks | kMemoryWriteHooks), 0);
}

TEST_F(AccessTest, PortOutReachesEveryHookInOrder) {
    WithModules();
    hooks.SpectrumActive = true;
    hooks.Spectrum = &spectrum;
    hooks.PortTerminal = {true, 254, 1, 0, 2, 3, 1, 0, 0, &portTerm};
    hooks.Devices[1] = {true, false, 254, 0, -1};
    hooks.OutputString = {true, 254, ""};
    hooks.PortsEditorOpen = true;
    hooks.UpdateMask(m);
    m.ClockCycles = 777;
    PortOut(m, 254, 0x45);
    const Events expected = {
        "border 5",   "portterm out 69",           "devices view",
        "ports view", "m1 writeio 254 69 port 69", "m3 writeio 254 69 port 69"};
    EXPECT_EQ(events, expected);
    EXPECT_EQ(hooks.Devices[1].Value, 0x45);
    EXPECT_EQ(hooks.OutputString.OutputText, "E");
    EXPECT_EQ(hooks.PortTerminal.LastOutCycle, 777);
    PortOut(m, 254, 0);  // a zero adds nothing to the text
    EXPECT_EQ(hooks.OutputString.OutputText, "E");
    // At Ultimate the ports editor waits for the timer tick.
    m.SimulationRate = kRateUltimate;
    events.clear();
    PortOut(m, 254, 1);
    EXPECT_EQ(std::count(events.begin(), events.end(), "ports view"), 0);
}

TEST_F(AccessTest, MemoryWriteOrder) {
    WithModules();
    hooks.SpectrumActive = true;
    hooks.Spectrum = &spectrum;
    hooks.MemoryTerminal = {true, 0x4000, 0x4001, 0, 0x4002, 0x4001, 1, 50, 0, &memTerm};
    hooks.UpdateMask(m);
    MemoryWrite(m, 0x4000, 0x41);
    // The value is passed by reference: what module 1 leaves is what module 3 sees.
    const Events expected = {"memterm out 65", "m1 writemem 16384 65 cell 65",
                             "m3 writemem 16384 0 cell 65"};
    EXPECT_EQ(events, expected);
    EXPECT_EQ(hooks.SpectrumMarks.ScreenDirty, 1);
    EXPECT_EQ(hooks.SpectrumMarks.PixelDirty[0], 1);
    MemoryWrite(m, 22528 + 5, 7);
    EXPECT_EQ(hooks.SpectrumMarks.AttrDirty[5], 1);
    EXPECT_EQ(m.LastWriteAddress, 22528 + 5);
}

TEST_F(AccessTest, ModuleReadChangesTheCellAndMayRedirect) {
    WithModules();
    first.supplyRead = 0x11;
    third.supplyRead = 0x22;  // the last one wins
    EXPECT_EQ(MemoryRead(m, 0x100), 0x22);
    EXPECT_EQ(m.MemoryImage[0x100], 0x22);  // for good, not just this read
    EXPECT_EQ(events[0], "m1 readmem 256 -1");
    EXPECT_EQ(events[1], "m3 readmem 256 17");
    first.supplyRead = third.supplyRead = -1;
    third.redirectRead = 0x200;
    m.MemoryImage[0x200] = 0x77;
    EXPECT_EQ(MemoryRead(m, 0x100), 0x77);
    EXPECT_EQ(m.LastReadAddress, 0x200);
    third.redirectRead = 70000;  // outside memory: the access stays where it was
    EXPECT_EQ(MemoryRead(m, 0x100), 0x22);
}

TEST_F(AccessTest, MemoryTerminalRegistersChangeTheCells) {
    // Output 8000H, status 8001H with ready bit 0 and busy bit 1, input 8002H.
    hooks.MemoryTerminal = {true, 0x8000, 0x8001, 1, 0x8002, 0x8001, 0, 100, 0, &memTerm};
    hooks.UpdateMask(m);
    m.MemoryImage[0x8001] = 0xF0;
    m.ClockCycles = 50;
    EXPECT_EQ(MemoryRead(m, 0x8001), 0xF0);  // nothing waiting, busy time not over
    memTerm.input = {'A'};
    m.ClockCycles = 101;
    EXPECT_EQ(MemoryRead(m, 0x8001), 0xF3);
    EXPECT_EQ(MemoryRead(m, 0x8002), 'A');
    EXPECT_EQ(MemoryRead(m, 0x8002), 0);  // an empty queue reads 0
    MemoryWrite(m, 0x8000, 'x');
    EXPECT_EQ(hooks.MemoryTerminal.LastOutCycle, 101);
    EXPECT_EQ(MemoryRead(m, 0x8001), 0xF0);  // busy again
    m.ClockCycles = 10;                      // clean restarted the count
    EXPECT_EQ(MemoryRead(m, 0x8001), 0xF0);
    EXPECT_EQ(hooks.MemoryTerminal.LastOutCycle, 0);
    m.ClockCycles = 0x7FFFFFF0;
    MemoryWrite(m, 0x8000, 'y');
    m.ClockCycles = static_cast<int>(0x80000100u);  // the count ran past 2^31
    EXPECT_EQ(MemoryRead(m, 0x8001), 0xF2);
}

TEST_F(AccessTest, PortInSources) {
    struct Case {
        const char* name;
        void (*setup)(AccessTest&);
        int expected;
        bool prompted;
        bool stored;
    };
    const Case cases[] = {
        {"last OUT value", [](AccessTest&) {}, 0x33, false, true},
        {"module supplies",
         [](AccessTest& t) {
             t.WithModules();
             t.third.supplyRead = 0;
             t.hooks.PromptBeforeIn = true;
         },
         0, false, true},
        {"one-shot of an earlier device ends the search",
         [](AccessTest& t) {
             t.hooks.Devices[0] = {true, true, 5, 1, 0x07};
             t.hooks.Devices[1] = {true, true, 5, 9, -1};
             t.hooks.PromptBeforeIn = true;
         },
         0x07, false, true},
        {"later device value wins",
         [](AccessTest& t) {
             t.hooks.Devices[0] = {true, true, 5, 1, -1};
             t.hooks.Devices[1] = {true, true, 5, 9, -1};
         },
         9, false, true},
        {"plain device value does not pass the prompt",
         [](AccessTest& t) {
             t.hooks.Devices[0] = {true, true, 5, 1, -1};
             t.hooks.PromptBeforeIn = true;
         },
         0x5A, true, true},
        {"queue delivers without a prompt",
         [](AccessTest& t) {
             t.hooks.InputQueue = {true, 5, "ab", std::string(2, '\0')};
             t.hooks.PromptBeforeIn = true;
         },
         'a', false, true},
        {"port terminal data with an empty queue",
         [](AccessTest& t) {
             t.hooks.PortTerminal = {true, 4, 6, 0, 5, 6, 1, 0, 0, &t.portTerm};
             t.hooks.PromptBeforeIn = true;
         },
         0, false, true},
        {"prompt", [](AccessTest& t) { t.hooks.PromptBeforeIn = true; }, 0x5A, true, true},
        {"spectrum keyboard",
         [](AccessTest& t) {
             t.hooks.SpectrumActive = true;
             t.hooks.Spectrum = &t.spectrum;
             t.hooks.PromptBeforeIn = true;
         },
         0xBF, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Machine fresh;
        m = fresh;
        hooks = AccessHooks{};
        hooks.host = &host;
        hooks.PromptBeforeIn = false;
        host.inCaptions.clear();
        host.inValues = {0x5A};
        c.setup(*this);
        hooks.UpdateMask(m);
        m.PortImage[5] = 0x33;
        m.InstructionPC = 0x0100;
        m.CurrentInstructionText = "IN A,(05H)";
        EXPECT_EQ(PortIn(m, 5), c.expected);
        EXPECT_EQ(!host.inCaptions.empty(), c.prompted);
        EXPECT_EQ(m.PortImage[5], c.stored ? c.expected : 0x33);
        if (c.prompted) {
            ASSERT_FALSE(host.inCaptions.empty());
            EXPECT_EQ(host.inCaptions.back(), "0100H: IN A,(05H)");
            EXPECT_EQ(host.inPrompts.back(), "Enter data received on port 05H [00-FF].");
        }
    }
}

TEST_F(AccessTest, SimulationDirectivesSetClearAndWrite) {
    m.MemoryImage[0x2000] = 0xF0;
    m.PortImage[0x10] = 0x0F;
    ApplySimulationDirective(m, {0, 1, 0x2000, 0x81, 1});  // set bits 7 and 0
    EXPECT_EQ(m.MemoryImage[0x2000], 0xF1);
    ApplySimulationDirective(m, {0, 1, 0x2000, 0x30, 0});  // clear bits 5 and 4
    EXPECT_EQ(m.MemoryImage[0x2000], 0xC1);
    ApplySimulationDirective(m, {0, 2, 0x10, 0x03, 0});
    EXPECT_EQ(m.PortImage[0x10], 0x0C);
    ApplySimulationDirective(m, {0, 2, 0x10, -1, 0xA5});
    EXPECT_EQ(m.PortImage[0x10], 0xA5);
    ApplySimulationDirective(m, {0, 1, 0x3000, -1, 0x12});
    EXPECT_EQ(m.MemoryImage[0x3000], 0x12);
    EXPECT_EQ(m.LastWriteAddress, 0x3000);
    ApplySimulationDirective(m, {0, 2, 300, -1, 1});  // no such port: ignored
    ApplySimulationDirective(m, {0, 1, 70000, -1, 1});
}

}  // namespace
}  // namespace mb
