// Speed of the bare core: a CPU-bound Z80 program run through ExecuteInstruction
// at rate Ultimate (no text), with no access hook and no end-of-instruction work.
//
//   mbbench_core [instructions]     default 300,000,000
//
// The run is cut into ten slices, each timed on the process's CPU time. It
// prints the median and the best slice in M instructions per second: on a
// shared machine the CPU time still includes the cycles a busy neighbour takes
// from the core's caches and clock, and the best slice shows the core's speed
// when nothing else runs.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <vector>

#include "core/execute.h"
#include "core/machine.h"

namespace {

// Mixed ALU, loads, jumps, stack, index instructions and a block move.
constexpr int kProgram[] = {
    0x31, 0x00, 0xF0,        // 0000  LD SP,0F000H
    0xDD, 0x21, 0x00, 0x80,  // 0003  LD IX,8000H
    0xFD, 0x21, 0x00, 0x90,  // 0007  LD IY,9000H
    0x06, 0x00,              // 000B  outer: LD B,0        (256 rounds)
    0x78,                    // 000D  loop:  LD A,B
    0x87,                    // 000E  ADD A,A
    0x8E,                    // 000F  ADC A,(HL)
    0xD6, 0x03,              // 0010  SUB 3
    0xE6, 0x7F,              // 0012  AND 7FH
    0xB1,                    // 0014  OR C
    0xA8,                    // 0015  XOR B
    0xFE, 0x40,              // 0016  CP 40H
    0x38, 0x01,              // 0018  JR C,skip
    0x3C,                    // 001A  INC A
    0xDD, 0x77, 0x05,        // 001B  skip: LD (IX+5),A
    0xFD, 0x86, 0x03,        // 001E  ADD A,(IY+3)
    0xDD, 0x34, 0x02,        // 0021  INC (IX+2)
    0x4F,                    // 0024  LD C,A
    0x23,                    // 0025  INC HL
    0xC5,                    // 0026  PUSH BC
    0xC1,                    // 0027  POP BC
    0xCB, 0x11,              // 0028  RL C
    0x10, 0xE1,              // 002A  DJNZ loop
    0x21, 0x00, 0x80,        // 002C  LD HL,8000H
    0x11, 0x00, 0xA0,        // 002F  LD DE,0A000H
    0x01, 0x40, 0x00,        // 0032  LD BC,0040H
    0xED, 0xB0,              // 0035  LDIR               (64 rounds)
    0xCD, 0x3D, 0x00,        // 0037  CALL subr
    0xC3, 0x0B, 0x00,        // 003A  JP outer
    0x09,                    // 003D  subr: ADD HL,BC
    0xC9,                    // 003E  RET
};

}  // namespace

int main(int argc, char** argv) {
    long long count = 300'000'000;
    if (argc > 1) count = std::atoll(argv[1]);
    if (count <= 0 || argc > 3) {
        std::fprintf(stderr, "usage: mbbench_core [instructions [program.obj]]\n");
        return 2;
    }

    auto machine = std::make_unique<mb::Machine>();
    mb::Machine& m = *machine;
    if (argc == 3) {
        // Another program, loaded at 0000H, for comparison with mbsim --bench.
        std::ifstream in(argv[2], std::ios::binary);
        if (!in) {
            std::fprintf(stderr, "mbbench_core: cannot read %s\n", argv[2]);
            return 2;
        }
        int address = 0;
        for (char c; address < mb::kMemorySize && in.get(c); ++address)
            m.MemoryImage[address] = static_cast<unsigned char>(c);
    } else {
        for (int i = 0; i < static_cast<int>(std::size(kProgram)); ++i)
            m.MemoryImage[i] = kProgram[i];
    }
    mb::RefreshMemoryMirror(m);
    m.SimulationRate = mb::kRateUltimate;
    mb::clean(m);

    constexpr int kSlices = 10;
    const long long perSlice = std::max(1LL, count / kSlices);
    std::vector<double> rates;
    const auto wallStart = std::chrono::steady_clock::now();
    double cpuTotal = 0;
    m.HaltStopsSimulation = 0;
    for (int slice = 0; slice < kSlices; ++slice) {
        const std::clock_t cpuStart = std::clock();
        for (long long i = 0; i < perSlice; ++i) mb::ExecuteInstruction(m);
        const double seconds = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
        cpuTotal += seconds;
        rates.push_back(static_cast<double>(perSlice) / std::max(seconds, 1e-9) / 1e6);
    }
    const auto wallEnd = std::chrono::steady_clock::now();
    std::sort(rates.begin(), rates.end());

    const double wallSeconds = std::chrono::duration<double>(wallEnd - wallStart).count();
    std::printf("%.0f M instructions per second (median of %d slices; best %.0f)\n",
                (rates[kSlices / 2 - 1] + rates[kSlices / 2]) / 2, kSlices, rates.back());
    std::printf("(%lld instructions in %.3f s CPU, %.3f s wall)\n", perSlice * kSlices, cpuTotal,
                wallSeconds);
    return 0;
}
