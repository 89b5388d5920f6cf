#include "machine.h"

namespace mb {

void clean(Machine& m) {
    m.CurrentInstructionText.clear();
    m.NextInstructionText.clear();
    m.InstructionCount = 0;
    m.ClockCycles = 0;
    m.HaltState = 0;
    m.InstructionTotal = m.ClockCycleTotal = 0;
    m.TotalsSeenInstructions = m.TotalsSeenCycles = 0;

    const bool ff = m.FFPowerOnDefaults != "OFF";
    const int byte = ff ? 255 : 0;
    const int flag = ff ? 1 : 0;
    const int word = ff ? 65535 : 0;
    m.A = m.B = m.C = m.D = m.E = m.H = m.L = byte;
    m.AltA = m.AltB = m.AltC = m.AltD = m.AltE = m.AltH = m.AltL = byte;
    SpreadFlags(m, flag ? 255 : 0);
    SpreadAltFlags(m, flag ? 255 : 0);
    m.IX = m.IY = m.SP = word;

    m.PC = m.StartingAddress;
    m.I = m.R = m.IFF1 = m.IFF2 = m.InterruptMode = 0;
    m.PrevA = 0;
    m.LastReadAddress = -1;
    m.LastWriteAddress = -1;
    if ((m.EndStageMask & kEndStageViews) && m.EndStage) m.EndStage->RefreshViews(m);
}

void SyncCounterTotals(Machine& m) {
    const unsigned instructions = static_cast<unsigned>(m.InstructionCount);
    const unsigned cycles = static_cast<unsigned>(m.ClockCycles);
    m.InstructionTotal += instructions - m.TotalsSeenInstructions;
    m.ClockCycleTotal += cycles - m.TotalsSeenCycles;
    m.TotalsSeenInstructions = instructions;
    m.TotalsSeenCycles = cycles;
}

void RefreshMemoryMirror(Machine& m) {
    for (int i = 0; i < kMemoryImageSize - kMemorySize; ++i)
        m.MemoryImage[kMemorySize + i] = m.MemoryImage[i];
}

int ComposeFlags(const Machine& m) {
    return m.FlagS * 128 + m.FlagZ * 64 + m.FlagY * 32 + m.FlagH * 16 + m.FlagX * 8 + m.FlagP * 4 +
           m.FlagN * 2 + m.FlagC;
}

int ComposeAltFlags(const Machine& m) {
    return m.AltFlagS * 128 + m.AltFlagZ * 64 + m.AltFlagY * 32 + m.AltFlagH * 16 + m.AltFlagX * 8 +
           m.AltFlagP * 4 + m.AltFlagN * 2 + m.AltFlagC;
}

}  // namespace mb
