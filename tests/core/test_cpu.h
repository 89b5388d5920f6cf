// A small harness for instruction tests: a machine with a program at a fixed
// origin, and one-instruction cases written as one row each.
#pragma once

#include <initializer_list>
#include <memory>
#include <vector>

#include "core/machine.h"

namespace mb::test {

constexpr int kOrigin = 0x4000;

struct Cpu {
    std::unique_ptr<Machine> owner = std::make_unique<Machine>();
    Machine& m = *owner;

    // Registers zero (FF power-on defaults off), rate Step By Step, HALT and
    // infinite loops do not stop.
    explicit Cpu(bool unofficial = true);
    void Load(int address, const std::vector<int>& bytes);
    void Program(const std::vector<int>& code);  // loaded at kOrigin, PC on it
    void Step(int count = 1);
};

// One instruction at kOrigin. `code` is hex bytes ("DD CB 05 C6"); `in` sets the
// machine before it runs and `out` names what must hold after it, as words of
//   A=0F  BC=1234  IX=9000   a register: A B C D E H L I R, BC DE HL IX IY SP PC
//   F=SHC                    the flags that are set, of SZYHXPNC; F=- for none
//   (9000)=34,12             memory from 9000H up
//   port(10)=5A              a port
// A field not named is left alone before and not checked after.
struct Row {
    const char* name;
    const char* code;
    const char* in;
    const char* out;
    int t;         // T-states, also the clock cycles added
    int len = -1;  // PC advance; give PC in `out` for jumps
};

void RunRows(std::initializer_list<Row> rows);

}  // namespace mb::test
