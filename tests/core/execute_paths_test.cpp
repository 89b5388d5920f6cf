// Which accesses of an instruction go through the data paths (and so reach the
// devices and modules): the data accesses do, in their order; opcode and operand
// fetches and the stack words of PUSH, POP, CALL and RET do not.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "core/access.h"
#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

class RecordingModule : public ExternalModule {
  public:
    std::vector<std::string> events;
    void objectinit() override {}
    void objectrefresh() override {}
    void readmem(int& address, int&) override { Record("R%X", address); }
    void writemem(int& address, int& value) override { Record("W%X=%X", address, value); }
    void readio(int& port, int&) override { Record("I%X", port); }
    void writeio(int& port, int& value) override { Record("O%X=%X", port, value); }

  private:
    void Record(const char* format, int a, int b = 0) {
        char text[24];
        std::snprintf(text, sizeof text, format, a, b);
        events.emplace_back(text);
    }
};

TEST(ExecutePaths, DataAccessesGoThroughTheHooks) {
    struct {
        const char* name;
        std::vector<int> code;
        std::vector<std::string> events;
    } cases[] = {
        {"LD A,n: operand fetch is direct", {0x3E, 0x12}, {}},
        {"LD A,(nn)", {0x3A, 0x00, 0x90}, {"R9000"}},
        {"LD (HL),A", {0x77}, {"W9000=5A"}},
        {"INC (HL) reads then writes", {0x34}, {"R9000", "W9000=1"}},
        {"LD (nn),HL low byte first", {0x22, 0x10, 0x90}, {"W9010=0", "W9011=90"}},
        {"PUSH BC is direct", {0xC5}, {}},
        {"POP BC is direct", {0xC1}, {}},
        {"CALL is direct", {0xCD, 0x00, 0x50}, {}},
        {"RET is direct", {0xC9}, {}},
        {"EX (SP),HL writes high byte first, reads directly", {0xE3}, {"W8001=90", "W8000=0"}},
        {"EX (SP),IX", {0xDD, 0xE3}, {"W8001=12", "W8000=34"}},
        {"OUT (n),A", {0xD3, 0x10}, {"O10=5A"}},
        {"IN A,(n)", {0xDB, 0x20}, {"I20"}},
        {"OUT (C),0 sends A", {0xED, 0x71}, {"O7=5A"}},
        {"LDI", {0xED, 0xA0}, {"R9000", "WA000=0"}},
        {"RLD", {0xED, 0x6F}, {"R9000", "W9000=A"}},
        {"BIT 0,(HL) only reads", {0xCB, 0x46}, {"R9000"}},
        {"SET 0,(IX+5)", {0xDD, 0xCB, 0x05, 0xC6}, {"R1239", "W1239=1"}},
        {"LD (IY-1),n", {0xFD, 0x36, 0xFF, 0x77}, {"W5677=77"}},
        {"OUTI", {0xED, 0xA3}, {"R9000", "O7=0"}},
        {"INI", {0xED, 0xA2}, {"I7", "W9000=0"}},
    };
    for (const auto& c : cases) {
        Cpu cpu;
        Machine& m = cpu.m;
        cpu.Program(c.code);
        m.A = 0x5A;
        SetBC(m, 0x0107);
        SetDE(m, 0xA000);
        SetHL(m, 0x9000);
        m.IX = 0x1234;
        m.IY = 0x5678;
        m.SP = 0x8000;
        m.MemoryImage[0x8000] = 0x34;
        m.MemoryImage[0x8001] = 0x12;
        RecordingModule module;
        AccessHooks hooks;
        hooks.PromptBeforeIn = false;
        hooks.Modules[0] = &module;
        hooks.UpdateMask(m);
        cpu.Step();
        EXPECT_EQ(module.events, c.events) << c.name;
    }
}

TEST(ExecutePaths, TrackersSeeOnlyDataAccesses) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Load(0, {0x3E, 0x01, 0xC5, 0xC1, 0x3A, 0x00, 0x90, 0x32, 0x01, 0x90});
    m.SP = 0x8000;
    cpu.Step(3);  // LD A,1  PUSH BC  POP BC
    EXPECT_EQ(m.LastReadAddress, -1);
    EXPECT_EQ(m.LastWriteAddress, -1);
    cpu.Step(2);  // LD A,(9000H)  LD (9001H),A
    EXPECT_EQ(m.LastReadAddress, 0x9000);
    EXPECT_EQ(m.LastWriteAddress, 0x9001);
}

}  // namespace
}  // namespace mb::test
