// Helpers shared by the base opcodes (execute.cpp) and the prefix groups
// (execute_groups.cpp). Not part of the core's interface.
#pragma once

#include <array>
#include <string>

#include "access.h"
#include "machine.h"

// Scalar stores are cheaper in the instruction functions than the vector
// packing of neighbouring fields.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC optimize("no-tree-slp-vectorize")
#endif

#define MB_ALWAYS_INLINE [[gnu::always_inline]] inline
#define MB_NOINLINE [[gnu::noinline]]

namespace mb::exec {

// An opcode or operand byte, read directly. Operands are bytes: a cell holding
// the 256 that PushWord may store reads as 0.
MB_ALWAYS_INLINE int Cell(const Machine& m, int address) {
    return m.MemoryImage[static_cast<unsigned>(address)] & 255;
}

// A little-endian operand word at address.
MB_ALWAYS_INLINE int Word(const Machine& m, int address) {
    return Cell(m, address) + Cell(m, address + 1) * 256;
}

// Data addresses wrap to 16 bits and port numbers to 8, so that no access can
// leave MemoryImage or PortImage.
MB_ALWAYS_INLINE int Addr(int address) {
    return address & 0xFFFF;
}
MB_ALWAYS_INLINE int Port(int port) {
    return port & 255;
}

// A displacement byte (0..255) as -128..127.
MB_ALWAYS_INLINE int Signed8(int v) {
    return static_cast<signed char>(v);
}

// The 8-bit registers by their 3-bit code: B C D E H L (HL) A. Code 6 is memory
// and is never passed here.
template <int Code>
MB_ALWAYS_INLINE int& Reg8(Machine& m) {
    static_assert(Code != 6);
    if constexpr (Code == 0)
        return m.B;
    else if constexpr (Code == 1)
        return m.C;
    else if constexpr (Code == 2)
        return m.D;
    else if constexpr (Code == 3)
        return m.E;
    else if constexpr (Code == 4)
        return m.H;
    else if constexpr (Code == 5)
        return m.L;
    else
        return m.A;
}

inline constexpr int Machine::*kReg8[8] = {&Machine::B, &Machine::C, &Machine::D, &Machine::E,
                                           &Machine::H, &Machine::L, nullptr,     &Machine::A};

inline int& Reg8(Machine& m, int code) {
    return m.*kReg8[code];
}

// IncrementR and DecrementR for the hot path: R counts in its low seven bits.
MB_ALWAYS_INLINE void RaiseR(Machine& m) {
    int r = m.R + 1;
    if (__builtin_expect_with_probability((r & 127) == 0, 1, 1.0 / 128)) r -= 128;
    m.R = r;
}
MB_ALWAYS_INLINE void LowerR(Machine& m) {
    m.R = (m.R & 128) | ((m.R - 1) & 127);
}

// The value X and Y are pinned to while unofficial instructions are off.
// Compared by hand, without a library call, so that the instruction functions
// need no register saves.
MB_ALWAYS_INLINE int PinnedXY(const Machine& m) {
    const std::string& ff = m.FFPowerOnDefaults;
    return (ff.size() == 3 && ff[0] == 'O' && ff[1] == 'F' && ff[2] == 'F') ? 0 : 1;
}

// EX (SP),rr: the stack bytes are read directly, then written through
// MemoryWrite, high byte at SP+1 first. Returns the old stack word.
template <Paths P>
inline int ExchangeStackTop(Machine& m, int value) {
    const int sp = Addr(m.SP);
    const int sp1 = Addr(sp + 1);
    const int old = m.MemoryImage[sp] + m.MemoryImage[sp1] * 256;
    MemoryWrite<P>(m, sp1, HighByte(value));
    MemoryWrite<P>(m, sp, LowByte(value));
    return old;
}

// Steps 8 to 14 of the cycle, behind the one test of EndInstruction.
void FinishInstruction(Machine& m);

// Steps 5 to 14, compiled into every instruction function so that the
// instruction's constants (its T-states, its PC step) fold into them. Only HALT
// sets HaltThisInstruction, so every other instruction ends with HaltState 0.
template <bool MayHalt = false>
MB_ALWAYS_INLINE void EndInstruction(Machine& m) {
    // 5. With unofficial instructions off, X and Y always show their power-on value.
    if (!m.UnofficialEnabled) [[likely]] {
        const int pinned = PinnedXY(m);
        m.FlagX = pinned;
        m.FlagY = pinned;
        m.AltFlagX = pinned;
        m.AltFlagY = pinned;
    }

    // 6, 7.
    m.InstructionCount = WrapAdd32(m.InstructionCount, 1);
    m.ClockCycles = WrapAdd32(m.ClockCycles, m.TStates);
    m.HaltState = MayHalt ? m.HaltThisInstruction : 0;
    if (m.PC > 65535) [[unlikely]]
        m.PC -= 65536;

    // 8 to 14, when the stage has work or PC has arrived on a marked address.
    if (m.EndStageMask | m.AddressMarks[static_cast<unsigned>(m.PC) & 0xFFFFu]) [[unlikely]]
        FinishInstruction(m);
}

// An instruction body Run<P> for the paths it may take. One that uses the data
// paths runs on the bare paths when it finds the hook mask clear, and otherwise
// on the checked paths in a function of its own, so that the bare form needs no
// register saves around the hook calls. One that uses none runs as it is.
template <void (*Run)(Machine&)>
MB_NOINLINE void RunOutOfLine(Machine& m) {
    Run(m);
}

template <bool UsesDataPaths, void (*Bare)(Machine&), void (*Checked)(Machine&)>
MB_ALWAYS_INLINE void RunOnPaths(Machine& m) {
    if constexpr (UsesDataPaths) {
        if (m.AccessHookMask) [[unlikely]] {
            RunOutOfLine<Checked>(m);
            return;
        }
        Bare(m);
    } else {
        Checked(m);
    }
}

// One function per opcode of a group, each running the whole instruction from
// its prefix to the end of the cycle, so that an opcode costs one indirect jump
// per table. Entered with PC on the (first) prefix and R raised once; the group
// raises R again and, when it does not decode the opcode (PrefixRecognised 0),
// applies the fallback of undecoded prefixes.
using InstructionFunction = void (*)(Machine&);
using GroupTable = std::array<InstructionFunction, 256>;

extern const GroupTable kCbGroup;  // by the byte after CB
extern const GroupTable kDdGroup;  // by the byte after DD
extern const GroupTable kFdGroup;  // by the byte after FD

// The ED group decodes at run time.
void PrefixED(Machine& m);

}  // namespace mb::exec
