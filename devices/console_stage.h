// The end-of-instruction checks of a program run from a command line or a
// benchmark: a stop address, and a CP/M console (page zero with the warm boot
// at 0000H and the BDOS entry at 0005H, BDOS functions 0, 2 and 9). The checks
// run only when PC arrives on an address they mark, so every other instruction
// pays one table test for them.
#pragma once

#include <functional>
#include <string>

#include "core/machine.h"
#include "core/run_control.h"

namespace mb {

class ConsoleStage : public DebugStage {
  public:
    static constexpr int kWarmBoot = 0x0000;
    static constexpr int kBdosEntry = 0x0005;
    static constexpr int kProgramStart = 0x0100;  // where CP/M loads and starts a program
    static constexpr int kBdosTop = 0xFE00;       // top of the program area, read at 0006H

    struct Options {
        bool cpm = false;
        int stopAt = -1;  // -1: none
    };
    using Output = std::function<void(int character)>;
    using Warning = std::function<void(const std::string& text)>;

    // Marks the addresses of the checks; with CP/M also writes page zero.
    ConsoleStage(Machine& m, Options options, Output output, Warning warning);

    bool EveryInstruction() const override { return false; }
    void Checks(Machine& m) override;
    // Start has just run clean: a CP/M program finds a stack below the BDOS
    // whose top returns to the warm boot.
    void PrepareStart() override;
    void RunEnded() override {}
    bool NextBasicAvailable() override { return false; }

  private:
    void ServeBdos(Machine& m);

    Machine& m_;
    Options options_;
    Output output_;
    Warning warning_;
    bool warned_[256] = {};
};

}  // namespace mb
