#include "test_cpu.h"

#include <gtest/gtest.h>

#include "core/execute.h"

namespace mb::test {

std::string FlagText(int f) {
    static const char kNames[] = "SZYHXPNC";
    std::string text;
    for (int bit = 0; bit < 8; ++bit) text += (f & (0x80 >> bit)) ? kNames[bit] : '.';
    return text;
}

Cpu::Cpu(bool unofficial) {
    m.FFPowerOnDefaults = "OFF";
    m.UnofficialEnabled = unofficial ? 1 : 0;
    m.SimulationRate = kRateStepByStep;
    m.HaltStopsSimulation = 0;
    m.InfiniteLoopStopsSimulation = 0;
    clean(m);
}

void Cpu::Load(int address, std::initializer_list<int> bytes) {
    Load(address, std::vector<int>(bytes));
}

void Cpu::Load(int address, const std::vector<int>& bytes) {
    for (int b : bytes) m.MemoryImage[address++ & 0xFFFF] = b;
    RefreshMemoryMirror(m);
}

void Cpu::Apply(const Regs& r) {
    auto set = [](int& field, int v) {
        if (v >= 0) field = v;
    };
    set(m.A, r.a);
    if (r.f >= 0) SpreadFlags(m, r.f);
    set(m.B, r.b);
    set(m.C, r.c);
    set(m.D, r.d);
    set(m.E, r.e);
    set(m.H, r.h);
    set(m.L, r.l);
    set(m.IX, r.ix);
    set(m.IY, r.iy);
    set(m.SP, r.sp);
    set(m.PC, r.pc);
    set(m.I, r.i);
    set(m.R, r.r);
}

void Cpu::Step(int count) {
    for (int i = 0; i < count; ++i) ExecuteInstruction(m);
}

void ExpectRegs(const Machine& m, const Regs& r) {
    auto check = [](const char* name, int actual, int expected) {
        if (expected >= 0) {
            EXPECT_EQ(actual, expected) << name;
        }
    };
    check("A", m.A, r.a);
    if (r.f >= 0) {
        EXPECT_EQ(FlagText(ComposeFlags(m)), FlagText(r.f)) << "flags";
    }
    check("B", m.B, r.b);
    check("C", m.C, r.c);
    check("D", m.D, r.d);
    check("E", m.E, r.e);
    check("H", m.H, r.h);
    check("L", m.L, r.l);
    check("IX", m.IX, r.ix);
    check("IY", m.IY, r.iy);
    check("SP", m.SP, r.sp);
    check("PC", m.PC, r.pc);
    check("I", m.I, r.i);
    check("R", m.R, r.r);
}

void RunCase(const Case& c, bool unofficial) {
    SCOPED_TRACE(c.name);
    Cpu cpu(unofficial);
    Machine& m = cpu.m;
    cpu.Load(kOrigin, c.code);
    m.PC = kOrigin;
    cpu.Apply(c.in);
    for (const Cell& cell : c.memIn) m.MemoryImage[cell.address] = cell.value;
    for (const Cell& port : c.portIn) m.PortImage[port.address] = port.value;
    cpu.Step();
    ExpectRegs(m, c.out);
    if (c.t >= 0) {
        EXPECT_EQ(m.TStates, c.t) << "T-states";
        EXPECT_EQ(m.ClockCycles, c.t) << "clock cycles";
    }
    if (c.len >= 0) {
        EXPECT_EQ(m.PC, kOrigin + c.len) << "length";
    }
    for (const Cell& cell : c.memOut)
        EXPECT_EQ(m.MemoryImage[cell.address], cell.value) << "memory at " << cell.address;
    for (const Cell& port : c.portOut)
        EXPECT_EQ(m.PortImage[port.address], port.value) << "port " << port.address;
    EXPECT_EQ(m.InstructionCount, 1);
}

}  // namespace mb::test
