// One Z80 instruction on the machine, and the stack and R helpers it shares with
// the interrupt commands.
#pragma once

#include "machine.h"

namespace mb {

// Executes exactly one instruction at PC, then the end-of-instruction stage.
void ExecuteInstruction(Machine& m);

// The fast rates' batch: ExecuteInstruction up to `count` times (at least
// once), ending early after an instruction that leaves StopRequest or
// ResetHold set or the rate below Extremely Fast. Returns how many ran.
int ExecuteInstructions(Machine& m, int count);

// Stack access without hooks.
void PushWord(Machine& m, int value);
int PopWord(Machine& m);

// R counts in its low seven bits; bit 7 stays.
void IncrementR(Machine& m);
void DecrementR(Machine& m);

}  // namespace mb
