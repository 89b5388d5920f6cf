// Arithmetic and flag routines shared by every instruction group. Each works on
// the machine's separate flag fields and keeps 8-bit results in 0..255 by explicit
// comparison.
//
// The routines that set every flag compose the flag byte in a register and
// spread it over the eight fields at once (SpreadFlags). They write X and Y from
// the result even with unofficial instructions off: ExecuteInstruction pins both
// (and the alternates) at the end of every instruction, before anything else can
// look at them. The routines that leave some flags alone write field by field,
// and there X and Y are written only with unofficial instructions on.
//
// Registers and cells normally hold 0..255, but a cell written by PushWord can
// hold 256 and reach a register from there; the flag tables cover values up to
// 511 so that such a value gives the same flags as the bit-by-bit rules.
#pragma once

#include <array>

#include "machine.h"

namespace mb {

constexpr int Parity(int v) {
    v &= 255;
    v ^= v >> 4;
    v ^= v >> 2;
    v ^= v >> 1;
    return (~v) & 1;
}

inline void SetXY(Machine& m, int v) {
    if (!m.UnofficialEnabled) return;  // pinned at the end of the instruction instead
    m.FlagX = (v >> 3) & 1;
    m.FlagY = (v >> 5) & 1;
}

// S, Z, X and Y from an 8-bit value.
inline void SetSZXY(Machine& m, int v) {
    m.FlagS = (v >> 7) & 1;
    m.FlagZ = v == 0;
    SetXY(m, v);
}

// S, Z, X, Y and parity from an 8-bit value: the logic and shift results.
inline void SetSZXYP(Machine& m, int v) {
    SetSZXY(m, v);
    m.FlagP = Parity(v);
}

// Bits of the flag byte.
enum FlagBits {
    kFlagBitS = 0x80,
    kFlagBitZ = 0x40,
    kFlagBitY = 0x20,
    kFlagBitH = 0x10,
    kFlagBitX = 0x08,
    kFlagBitP = 0x04,
    kFlagBitN = 0x02,
    kFlagBitC = 0x01,
};

namespace detail {

constexpr int kFlagTableSize = 512;

// S, Z, Y and X of a value (and parity with WithParity), by the same rules as
// SetSZXY and SetSZXYP.
template <bool WithParity>
constexpr std::array<unsigned char, kFlagTableSize> MakeValueFlags() {
    std::array<unsigned char, kFlagTableSize> table{};
    for (int v = 0; v < kFlagTableSize; ++v) {
        int f = (v & (kFlagBitS | kFlagBitY | kFlagBitX)) | (v == 0 ? kFlagBitZ : 0);
        if (WithParity && Parity(v)) f |= kFlagBitP;
        table[v] = static_cast<unsigned char>(f);
    }
    return table;
}

inline constexpr auto kSZXY = MakeValueFlags<false>();
inline constexpr auto kSZXYP = MakeValueFlags<true>();

}  // namespace detail

// The flag bits of a value; v is in -512..511 (a result below 0 has bits 7, 5
// and 3 set, as the bit rules give).
inline int SZXYBits(int v) {
    return detail::kSZXY[v & (detail::kFlagTableSize - 1)];
}
inline int SZXYPBits(int v) {
    return detail::kSZXYP[v & (detail::kFlagTableSize - 1)];
}

// H of a + b (+ c) or a - b (- c), from the unwrapped result: bit 4 of a ^ b ^ r.
inline int HalfCarryBit(int a, int b, int r) {
    return (a ^ b ^ r) & kFlagBitH;
}

// Sum of a and b (plus carry c) into A with every flag.
inline void AddToA(Machine& m, int b, int c) {
    const int a = m.A;
    int r = a + b + c;
    int f = HalfCarryBit(a, b, r) | (((a ^ r) & (b ^ r) & 0x80) >> 5);
    if (r > 255) {
        r -= 256;
        f |= kFlagBitC;
    }
    m.A = r;
    SpreadFlags(m, f | SZXYBits(r));
}

inline void Add8(Machine& m, int b) {
    AddToA(m, b, 0);
}

inline void Adc8(Machine& m, int b) {
    AddToA(m, b, m.FlagC);
}

// Flag byte of a - b - c without X and Y; r receives the wrapped difference.
inline int SubFlagBits(int a, int b, int c, int& r) {
    r = a - b - c;
    int f = HalfCarryBit(a, b, r) | (((a ^ b) & (a ^ r) & 0x80) >> 5) | kFlagBitN;
    if (r < 0) {
        r += 256;
        f |= kFlagBitC;
    }
    return f | (SZXYBits(r) & (kFlagBitS | kFlagBitZ));
}

// A - b - c into A with every flag.
inline void SubFromA(Machine& m, int b, int c) {
    int r;
    const int f = SubFlagBits(m.A, b, c, r);
    m.A = r;
    SpreadFlags(m, f | (SZXYBits(r) & (kFlagBitY | kFlagBitX)));
}

inline void Sub8(Machine& m, int b) {
    SubFromA(m, b, 0);
}

inline void Sbc8(Machine& m, int b) {
    SubFromA(m, b, m.FlagC);
}

// As Sub8, but A stays and X, Y come from the operand.
inline void Cp8(Machine& m, int b) {
    int r;
    const int f = SubFlagBits(m.A, b, 0, r);
    SpreadFlags(m, f | (SZXYBits(b) & (kFlagBitY | kFlagBitX)));
}

inline void LogicFlags(Machine& m, int r, int h) {
    m.A = r;
    SpreadFlags(m, SZXYPBits(r) | h);
}

inline void And8(Machine& m, int b) {
    LogicFlags(m, m.A & b, kFlagBitH);
}
inline void Or8(Machine& m, int b) {
    LogicFlags(m, m.A | b, 0);
}
inline void Xor8(Machine& m, int b) {
    LogicFlags(m, m.A ^ b, 0);
}

// The eight accumulator operations by their 3-bit code (ADD ADC SUB SBC AND XOR OR CP).
template <int Op>
inline void Alu8(Machine& m, int b) {
    if constexpr (Op == 0)
        Add8(m, b);
    else if constexpr (Op == 1)
        Adc8(m, b);
    else if constexpr (Op == 2)
        Sub8(m, b);
    else if constexpr (Op == 3)
        Sbc8(m, b);
    else if constexpr (Op == 4)
        And8(m, b);
    else if constexpr (Op == 5)
        Xor8(m, b);
    else if constexpr (Op == 6)
        Or8(m, b);
    else
        Cp8(m, b);
}

inline void Alu8(Machine& m, int op, int b) {
    switch (op) {
        case 0: Add8(m, b); break;
        case 1: Adc8(m, b); break;
        case 2: Sub8(m, b); break;
        case 3: Sbc8(m, b); break;
        case 4: And8(m, b); break;
        case 5: Xor8(m, b); break;
        case 6: Or8(m, b); break;
        default: Cp8(m, b); break;
    }
}

// INC and DEC leave C alone.
inline int Inc8(Machine& m, int v) {
    int f = ((v & 15) == 15 ? kFlagBitH : 0) | (v == 127 ? kFlagBitP : 0) | m.FlagC;
    int r = v + 1;
    if (r > 255) r -= 256;
    SpreadFlags(m, f | SZXYBits(r));
    return r;
}

inline int Dec8(Machine& m, int v) {
    int f = ((v & 15) == 0 ? kFlagBitH : 0) | (v == 128 ? kFlagBitP : 0) | kFlagBitN | m.FlagC;
    int r = v - 1;
    if (r < 0) r += 256;
    SpreadFlags(m, f | SZXYBits(r));
    return r;
}

// ADD HL/IX/IY,w: H from bit 11, C from bit 15, X and Y from the high byte.
inline int Add16(Machine& m, int a, int w) {
    int r = a + w;
    m.FlagH = (a & 4095) + (w & 4095) > 4095;
    m.FlagN = 0;
    m.FlagC = r > 65535;
    if (r > 65535) r -= 65536;
    SetXY(m, r >> 8);
    return r;
}

inline void AdcHL(Machine& m, int w) {
    const int a = RegHL(m);
    const int c = m.FlagC;
    int r = a + w + c;
    m.FlagH = (a & 4095) + (w & 4095) + c > 4095;
    m.FlagP = ((a ^ r) & (w ^ r) & 0x8000) != 0;
    m.FlagN = 0;
    m.FlagC = r > 65535;
    if (r > 65535) r -= 65536;
    m.FlagS = (r >> 15) & 1;
    m.FlagZ = r == 0;
    SetXY(m, r >> 8);
    SetHL(m, r);
}

inline void SbcHL(Machine& m, int w) {
    const int a = RegHL(m);
    const int c = m.FlagC;
    int r = a - w - c;
    m.FlagH = (a & 4095) - (w & 4095) - c < 0;
    m.FlagP = ((a ^ w) & (a ^ r) & 0x8000) != 0;
    m.FlagN = 1;
    m.FlagC = r < 0;
    if (r < 0) r += 65536;
    m.FlagS = (r >> 15) & 1;
    m.FlagZ = r == 0;
    SetXY(m, r >> 8);
    SetHL(m, r);
}

// DAA with this system's H rule: with N at 0, H is set by a low digit above 9
// and never cleared; with N at 1, H and C stay and choose the correction.
inline void Daa(Machine& m) {
    const int a = m.A;
    int hi = a / 16;
    const int lo = a % 16;
    int corr = 0;
    if (m.FlagN == 0) {
        if (lo > 9) {
            corr += 6;
            hi += 1;
            m.FlagH = 1;
        } else if (m.FlagH == 1) {
            corr += 6;
        }
        if (hi > 9) {
            corr += 96;
            m.FlagC = 1;
        } else if (m.FlagC == 1) {
            corr += 96;
        }
    } else {
        static constexpr int kSubtractCorrection[4] = {0, 160, 250, 154};  // by H*2 + C
        corr = kSubtractCorrection[m.FlagH * 2 + m.FlagC];
    }
    int r = a + corr;
    if (r > 255) r -= 256;
    m.A = r;
    SetSZXYP(m, r);
}

// Rotates and shifts of the CB family by their 3-bit code (RLC RRC RL RR SLA SRA
// SLL SRL). Sets C, S, Z, X, Y, parity; H and N become 0.
inline int Shift8(Machine& m, int op, int v) {
    int r = 0;
    int c = 0;
    switch (op) {
        case 0:
            c = (v >> 7) & 1;
            r = ((v << 1) & 255) | c;
            break;
        case 1:
            c = v & 1;
            r = (v >> 1) | (c << 7);
            break;
        case 2:
            c = (v >> 7) & 1;
            r = ((v << 1) & 255) | m.FlagC;
            break;
        case 3:
            c = v & 1;
            r = (v >> 1) | (m.FlagC << 7);
            break;
        case 4:
            c = (v >> 7) & 1;
            r = (v << 1) & 255;
            break;
        case 5:
            c = v & 1;
            r = (v >> 1) | (v & 128);
            break;
        case 6:
            c = (v >> 7) & 1;
            r = ((v << 1) & 255) | 1;
            break;
        default:
            c = v & 1;
            r = v >> 1;
            break;
    }
    SpreadFlags(m, SZXYPBits(r) | c);
    return r;
}

// BIT n: every flag but H, N and C comes from the masked value.
inline void BitTest(Machine& m, int v, int n) {
    SpreadFlags(m, SZXYPBits(v & (1 << n)) | kFlagBitH | m.FlagC);
}

}  // namespace mb
