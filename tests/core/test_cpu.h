// A small harness for instruction tests: a machine with a program at a fixed
// origin, register states given by designated initialisers, and one-instruction
// cases checked field by field.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "core/machine.h"

namespace mb::test {

constexpr int kOrigin = 0x4000;

// Flag byte bits.
enum : int {
    FS = 0x80,
    FZ = 0x40,
    FY = 0x20,
    FH = 0x10,
    FX = 0x08,
    FP = 0x04,
    FN = 0x02,
    FC = 0x01
};

// Register values; -1 leaves a field alone (input) or unchecked (output).
struct Regs {
    int a = -1, f = -1, b = -1, c = -1, d = -1, e = -1, h = -1, l = -1;
    int ix = -1, iy = -1, sp = -1, pc = -1, i = -1, r = -1;
};

struct Cell {
    int address;
    int value;
};

struct Case {
    std::string name;
    std::vector<int> code;
    Regs in;
    Regs out;
    int t = -1;    // T-states of the instruction
    int len = -1;  // PC advance; use out.pc for jumps
    std::vector<Cell> memIn = {}, memOut = {};
    std::vector<Cell> portIn = {}, portOut = {};
};

// "SZ-H-PNC" with '.' for a clear flag, so a failing compare shows which flag.
std::string FlagText(int f);

struct Cpu {
    std::unique_ptr<Machine> owner = std::make_unique<Machine>();
    Machine& m = *owner;

    // Registers zero (FF power-on defaults off), rate Step By Step, HALT and
    // infinite loops do not stop.
    explicit Cpu(bool unofficial = true);
    void Load(int address, std::initializer_list<int> bytes);
    void Load(int address, const std::vector<int>& bytes);
    void Apply(const Regs& r);
    void Step(int count = 1);
};

// Runs one instruction of the case at kOrigin and checks everything it names.
void RunCase(const Case& c, bool unofficial = true);
void ExpectRegs(const Machine& m, const Regs& r);

}  // namespace mb::test
