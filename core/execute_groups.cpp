// The prefix groups: CB, ED, DD/FD (one routine over IX or IY) and DDCB/FDCB.
// Each is entered with PC on its prefix, decides first whether it decodes the
// opcode, and only then changes the machine. CB and DD/FD, which programs use
// most, have one function per opcode like the base table; ED decodes at run time.
#include <array>
#include <utility>

#include "access.h"
#include "alu.h"
#include "execute.h"
#include "execute_internal.h"

namespace mb::exec {

namespace {

int GetPair(const Machine& m, int p) {  // BC DE HL SP
    switch (p) {
        case 0: return RegBC(m);
        case 1: return RegDE(m);
        case 2: return RegHL(m);
        default: return m.SP;
    }
}

void SetPair(Machine& m, int p, int v) {
    switch (p) {
        case 0: SetBC(m, v); break;
        case 1: SetDE(m, v); break;
        case 2: SetHL(m, v); break;
        default: m.SP = v; break;
    }
}

int Step16(int v, int step) {
    v += step;
    if (v > 65535) v -= 65536;
    if (v < 0) v += 65536;
    return v;
}

bool Unrecognised(Machine& m) {
    m.PrefixRecognised = 0;
    return false;
}

// Bit masks of RES and SET.
int ResetBit(int v, int n) {
    return v & (255 - (1 << n));
}
int SetBit(int v, int n) {
    return (v | (1 << n)) & 255;
}

// ---- ED group ----

// IN r,(C) and the unofficial IN (C), whose byte is dropped.
void InFromC(Machine& m, int y) {
    m.PrevA = m.B;
    const int v = PortIn(m, Port(m.C));
    SetSZXYP(m, v);
    m.FlagH = 0;
    m.FlagN = 0;
    if (y != 6) Reg8(m, y) = v;
}

// NEG: N, X and Y are left as they were.
void Neg(Machine& m) {
    const int a = m.A;
    m.FlagH = (a & 15) != 0;
    m.FlagC = a != 0;
    m.FlagP = a == 128;
    const int r = a == 0 ? 0 : 256 - a;
    m.A = r;
    m.FlagS = (r >> 7) & 1;
    m.FlagZ = r == 0;
}

void LoadAFromSpecial(Machine& m, int v) {  // LD A,I and LD A,R
    m.A = v;
    SetSZXY(m, v);
    m.FlagP = m.IFF2;
    m.FlagH = 0;
    m.FlagN = 0;
}

void RotateDigit(Machine& m, bool left) {  // RLD, RRD
    const int address = Addr(RegHL(m));
    const int v = MemoryRead(m, address) & 255;
    const int a = m.A;
    int written;
    if (left) {
        m.A = (a & 0xF0) | (v >> 4);
        written = ((v & 15) << 4) | (a & 15);
    } else {
        m.A = (a & 0xF0) | (v & 15);
        written = ((a & 15) << 4) | (v >> 4);
    }
    MemoryWrite(m, address, written);
    SetSZXYP(m, m.A);
    m.FlagH = 0;
    m.FlagN = 0;
}

// ED 40-7F. Returns false when the opcode is not decoded.
bool EdMain(Machine& m, int op) {
    const int y = (op >> 3) & 7, z = op & 7, p = y >> 1, q = y & 1;
    const bool unofficial = m.UnofficialEnabled != 0;
    const int pc = m.PC;
    switch (z) {
        case 0:
            if (y == 6 && !unofficial) return Unrecognised(m);
            InFromC(m, y);
            m.TStates = 12;
            break;
        case 1:  // OUT (C),r; the unofficial OUT (C),0 sends A
            if (y == 6 && !unofficial) return Unrecognised(m);
            PortOut(m, Port(m.C), y == 6 ? m.A : Reg8(m, y));
            m.TStates = 12;
            break;
        case 2:
            if (q == 0)
                SbcHL(m, GetPair(m, p));
            else
                AdcHL(m, GetPair(m, p));
            m.TStates = 15;
            break;
        case 3: {  // LD (nn),rr and LD rr,(nn), low byte first
            const int nn = Word(m, pc + 2);
            if (q == 0) {
                const int v = GetPair(m, p);
                MemoryWrite(m, Addr(nn), LowByte(v));
                MemoryWrite(m, Addr(nn + 1), HighByte(v));
            } else {
                const int low = MemoryRead(m, Addr(nn));
                const int high = MemoryRead(m, Addr(nn + 1));
                SetPair(m, p, low + high * 256);
            }
            m.TStates = 20;
            m.PC = pc + 4;
            return true;
        }
        case 4:
            if (y != 0 && !unofficial) return Unrecognised(m);
            Neg(m);
            m.TStates = 8;
            break;
        case 5:
            if (y == 1) {  // RETI
                m.PC = PopWord(m);
                m.IFF1 = m.IFF2;
            } else {  // RETN, official at 45 only
                if (y != 0 && !unofficial) return Unrecognised(m);
                m.PC = PopWord(m);
                m.IFF1 = m.IFF2;
                m.NmiCommandEnabled = true;
                if (m.IFF1 == 1) m.IntCommandEnabled = true;
            }
            m.TStates = 14;
            return true;
        case 6: {
            static constexpr int kMode[8] = {0, 0, 1, 2, 0, 0, 1, 2};
            const bool official = y == 0 || y == 2 || y == 3;
            if (!official && !unofficial) return Unrecognised(m);
            m.InterruptMode = kMode[y];
            m.TStates = 8;
            break;
        }
        default:
            switch (y) {
                case 0:
                    m.I = m.A;
                    m.TStates = 9;
                    break;
                case 1:
                    m.R = m.A;
                    m.TStates = 9;
                    break;
                case 2:
                    LoadAFromSpecial(m, m.I);
                    m.TStates = 9;
                    break;
                case 3:
                    LoadAFromSpecial(m, m.R);
                    m.TStates = 9;
                    break;
                case 4:
                    RotateDigit(m, false);
                    m.TStates = 18;
                    break;
                case 5:
                    RotateDigit(m, true);
                    m.TStates = 18;
                    break;
                default: return Unrecognised(m);
            }
            break;
    }
    m.PC = pc + 2;
    return true;
}

// ED A0-BB: LDI CPI INI OUTI, their D forms and the repeating forms. A repeating
// round that is not the last leaves PC on the instruction, so the next
// ExecuteInstruction runs it again as an instruction of its own.
bool EdBlock(Machine& m, int op) {
    const int kind = op & 7;
    if (kind > 3) return Unrecognised(m);
    const int step = (op & 8) ? -1 : 1;
    const bool repeats = (op & 0x10) != 0;
    const int hl = RegHL(m);
    bool done;
    if (kind == 0 || kind == 1) {
        const int v = MemoryRead(m, Addr(hl));
        if (kind == 0) {  // LDI
            const int de = RegDE(m);
            MemoryWrite(m, Addr(de), v);
            SetDE(m, Step16(de, step));
            m.FlagH = 0;
            m.FlagN = 0;
        } else {  // CPI: C, X and Y stay
            int r = m.A - v;
            m.FlagH = (m.A & 15) - (v & 15) < 0;
            if (r < 0) r += 256;
            m.FlagS = (r >> 7) & 1;
            m.FlagZ = r == 0;
            m.FlagN = 1;
        }
        SetHL(m, Step16(hl, step));
        const int bc = Step16(RegBC(m), -1);
        SetBC(m, bc);
        m.FlagP = bc != 0;
        done = bc == 0 || (kind == 1 && m.FlagZ);
    } else {
        int v;
        if (kind == 2) {  // INI
            m.PrevA = m.B;
            v = PortIn(m, Port(m.C));
            MemoryWrite(m, Addr(hl), v);
        } else {  // OUTI
            v = MemoryRead(m, Addr(hl));
            PortOut(m, Port(m.C), v);
        }
        SetHL(m, Step16(hl, step));
        int b = m.B - 1;
        if (b < 0) b += 256;
        m.B = b;
        SetSZXY(m, b);
        m.FlagN = (v >> 7) & 1;
        done = b == 0;
    }
    if (repeats && !done) {
        m.TStates = 21;
    } else {
        m.TStates = 16;
        m.PC += 2;
    }
    return true;
}

// ---- DD/FD groups ----

int IndexHalf(int idx, int code) {
    return code == 4 ? HighByte(idx) : LowByte(idx);
}

void SetIndexHalf(int& idx, int code, int v) {
    idx = code == 4 ? v * 256 + LowByte(idx) : HighByte(idx) * 256 + v;
}

// An 8-bit operand of the unofficial index forms: H and L stand for the halves.
template <int Code>
MB_ALWAYS_INLINE int IndexReg8(Machine& m, int idx) {
    if constexpr (Code == 4 || Code == 5)
        return IndexHalf(idx, Code);
    else
        return Reg8<Code>(m);
}

template <int Code>
MB_ALWAYS_INLINE void SetIndexReg8(Machine& m, int& idx, int v) {
    if constexpr (Code == 4 || Code == 5)
        SetIndexHalf(idx, Code, v);
    else
        Reg8<Code>(m) = v;
}

MB_ALWAYS_INLINE int IndexedAddress(const Machine& m, int idx) {
    return Addr(idx + Signed8(Cell(m, m.PC + 2)));
}

// DDCB d op / FDCB d op. Every operation takes 23 T-states, BIT included.
void IndexCbGroup(Machine& m, int idx) {
    const int pc = m.PC;
    const int op = Cell(m, pc + 3);
    const int x = op >> 6, y = (op >> 3) & 7, z = op & 7;
    const bool official = z == 6 && !(x == 0 && y == 6);
    if (!official && !m.UnofficialEnabled) {
        Unrecognised(m);
        return;
    }
    const int address = IndexedAddress(m, idx);
    const int v = MemoryRead(m, address);
    if (x == 1) {
        BitTest(m, v, y);
    } else {
        const int r = x == 0 ? Shift8(m, y, v) : x == 2 ? ResetBit(v, y) : SetBit(v, y);
        MemoryWrite(m, address, r);
        if (z != 6) Reg8(m, z) = r;  // the unofficial copy into a register
    }
    m.TStates = 23;
    m.PC = pc + 4;
}

// One DD (UseIY false) or FD opcode. Sets PrefixRecognised to 0, changing
// nothing, for an opcode the group does not decode or an unofficial one while
// unofficial instructions are off.
template <int Op, bool UseIY, Paths P>
MB_ALWAYS_INLINE bool IndexOp(Machine& m) {
    constexpr int x = Op >> 6, y = (Op >> 3) & 7, z = Op & 7, p = y >> 1;
    constexpr bool halfLoad =
        x == 1 && Op != 0x76 && z != 6 && y != 6 && (y == 4 || y == 5 || z == 4 || z == 5);
    constexpr bool halfAlu = x == 2 && (z == 4 || z == 5);
    constexpr bool halfIncDec = Op == 0x24 || Op == 0x25 || Op == 0x2C || Op == 0x2D;
    constexpr bool halfLoadImmediate = Op == 0x26 || Op == 0x2E;
    constexpr bool unofficialOp = halfLoad || halfAlu || halfIncDec || halfLoadImmediate;
    int& idx = UseIY ? m.IY : m.IX;
    const int pc = m.PC;
    if constexpr (unofficialOp) {
        if (!m.UnofficialEnabled) return Unrecognised(m);
    }
    m.PrefixRecognised = 1;
    if constexpr ((Op & 0xCF) == 0x09) {  // ADD idx,rr; the pair 2 is idx itself
        idx = Add16(m, idx, p == 2 ? idx : GetPair(m, p));
        m.TStates = 15;
        m.PC = pc + 2;
    } else if constexpr (Op == 0x21) {
        idx = Word(m, pc + 2);
        m.TStates = 14;
        m.PC = pc + 4;
    } else if constexpr (Op == 0x22) {
        const int nn = Word(m, pc + 2);
        MemoryWrite<P>(m, Addr(nn), LowByte(idx));
        MemoryWrite<P>(m, Addr(nn + 1), HighByte(idx));
        m.TStates = 20;
        m.PC = pc + 4;
    } else if constexpr (Op == 0x2A) {
        const int nn = Word(m, pc + 2);
        const int low = MemoryRead<P>(m, Addr(nn));
        idx = low + MemoryRead<P>(m, Addr(nn + 1)) * 256;
        m.TStates = 20;
        m.PC = pc + 4;
    } else if constexpr (Op == 0x23 || Op == 0x2B) {
        idx = Step16(idx, Op == 0x23 ? 1 : -1);
        m.TStates = 10;
        m.PC = pc + 2;
    } else if constexpr (Op == 0x34 || Op == 0x35) {
        const int address = IndexedAddress(m, idx);
        const int v = MemoryRead<P>(m, address);
        MemoryWrite<P>(m, address, Op == 0x34 ? Inc8(m, v) : Dec8(m, v));
        m.TStates = 23;
        m.PC = pc + 3;
    } else if constexpr (Op == 0x36) {
        MemoryWrite<P>(m, IndexedAddress(m, idx), Cell(m, pc + 3));
        m.TStates = 19;
        m.PC = pc + 4;
    } else if constexpr (halfIncDec) {  // INC/DEC IXh, IXl
        const int v = IndexHalf(idx, y);
        SetIndexHalf(idx, y, (Op & 1) ? Dec8(m, v) : Inc8(m, v));
        m.TStates = 8;
        m.PC = pc + 2;
    } else if constexpr (halfLoadImmediate) {  // LD IXh,n  LD IXl,n
        SetIndexHalf(idx, y, Cell(m, pc + 2));
        m.TStates = 11;
        m.PC = pc + 3;
    } else if constexpr (x == 1 && Op != 0x76 && z == 6) {  // LD r,(idx+d) with the real H and L
        Reg8<y>(m) = MemoryRead<P>(m, IndexedAddress(m, idx));
        m.TStates = 19;
        m.PC = pc + 3;
    } else if constexpr (x == 1 && Op != 0x76 && y == 6) {  // LD (idx+d),r
        MemoryWrite<P>(m, IndexedAddress(m, idx), Reg8<z>(m));
        m.TStates = 19;
        m.PC = pc + 3;
    } else if constexpr (halfLoad) {
        SetIndexReg8<y>(m, idx, IndexReg8<z>(m, idx));
        m.TStates = 8;
        m.PC = pc + 2;
    } else if constexpr (x == 2 && z == 6) {
        Alu8<y>(m, MemoryRead<P>(m, IndexedAddress(m, idx)));
        m.TStates = 19;
        m.PC = pc + 3;
    } else if constexpr (halfAlu) {
        Alu8<y>(m, IndexHalf(idx, z));
        m.TStates = 8;
        m.PC = pc + 2;
    } else if constexpr (Op == 0xE1) {
        idx = PopWord(m);
        m.TStates = 14;
        m.PC = pc + 2;
    } else if constexpr (Op == 0xE5) {
        PushWord(m, idx);
        m.TStates = 15;
        m.PC = pc + 2;
    } else if constexpr (Op == 0xE3) {
        idx = ExchangeStackTop<P>(m, idx);
        m.TStates = 23;
        m.PC = pc + 2;
    } else if constexpr (Op == 0xE9) {  // JP (idx): no infinite-loop test
        m.PC = idx;
        m.TStates = 8;
    } else if constexpr (Op == 0xF9) {
        m.SP = idx;
        m.TStates = 10;
        m.PC = pc + 2;
    } else if constexpr (Op == 0xCB) {
        IndexCbGroup(m, idx);
        return m.PrefixRecognised != 0;
    } else {
        return Unrecognised(m);
    }
    return true;
}

// ---- CB group ----

template <int Op, Paths P>
MB_ALWAYS_INLINE bool CbOp(Machine& m) {
    constexpr int x = Op >> 6, y = (Op >> 3) & 7, z = Op & 7;
    if constexpr (x == 0 && y == 6) {  // SLL
        if (!m.UnofficialEnabled) return Unrecognised(m);
    }
    m.PrefixRecognised = 1;
    const int pc = m.PC;
    if constexpr (z == 6) {
        const int address = Addr(RegHL(m));
        const int v = MemoryRead<P>(m, address);
        if constexpr (x == 1) {
            BitTest(m, v, y);
            m.TStates = 12;
        } else {
            MemoryWrite<P>(m, address,
                           x == 0   ? Shift8(m, y, v)
                           : x == 2 ? ResetBit(v, y)
                                    : SetBit(v, y));
            m.TStates = 15;
        }
    } else {
        int& r = Reg8<z>(m);
        if constexpr (x == 0)
            r = Shift8(m, y, r);
        else if constexpr (x == 1)
            BitTest(m, r, y);
        else if constexpr (x == 2)
            r = ResetBit(r, y);
        else
            r = SetBit(r, y);
        m.TStates = 8;
    }
    m.PC = pc + 2;
    return true;
}

void EdGroup(Machine& m) {
    const int op = Cell(m, m.PC + 1);
    m.PrefixRecognised = 1;
    if (op >= 0x40 && op < 0x80)
        EdMain(m, op);
    else if (op >= 0xA0 && op <= 0xBB)
        EdBlock(m, op);
    else
        Unrecognised(m);
}

// The fallback of an undecoded prefix: the prefix (with its second byte for CB
// and ED when unofficial instructions are on) runs as a no-operation and
// execution goes on after it.
template <int Prefix>
MB_NOINLINE void Fallback(Machine& m) {
    constexpr bool twoBytes = Prefix == 0xCB || Prefix == 0xED;
    if (twoBytes && m.UnofficialEnabled) {
        m.TStates = 8;
        m.PC += 2;
    } else {
        m.TStates = 4;
        m.PC += 1;
        LowerR(m);
    }
    if (m.TextMode) {
        if (!m.UnofficialEnabled)
            m.CurrentInstructionText = "UNRECOGNIZED";
        else if constexpr (Prefix == 0xCB)
            m.CurrentInstructionText = "CB NOP NOP";
        else if constexpr (Prefix == 0xED)
            m.CurrentInstructionText = "ED NOP NOP";
        else if constexpr (Prefix == 0xDD)
            m.CurrentInstructionText = "DD NOP";
        else
            m.CurrentInstructionText = "FD NOP";
    }
}

// Whether a DD/FD or CB opcode reaches memory through the data paths (DDCB
// decodes at run time and always takes the checked paths).
constexpr bool IndexUsesDataPaths(int op) {
    const int x = op >> 6, y = (op >> 3) & 7, z = op & 7;
    if (op == 0x22 || op == 0x2A || op == 0x34 || op == 0x35 || op == 0x36 || op == 0xE3)
        return true;
    return (x == 1 && op != 0x76 && (z == 6 || y == 6)) || (x == 2 && z == 6);
}

constexpr bool CbUsesDataPaths(int op) {
    return (op & 7) == 6;
}

// A whole DD/FD or CB instruction: the group's opcode, the fallback when the
// group does not decode it, and the end of the cycle.
template <bool (*Decode)(Machine&), int Prefix>
MB_ALWAYS_INLINE void RunGroupOpcode(Machine& m) {
    RaiseR(m);
    if (!Decode(m)) [[unlikely]]
        Fallback<Prefix>(m);
    EndInstruction(m);
}

template <int Op, bool UseIY>
void IndexInstruction(Machine& m) {
    constexpr int prefix = UseIY ? 0xFD : 0xDD;
    RunOnPaths<IndexUsesDataPaths(Op), &RunGroupOpcode<&IndexOp<Op, UseIY, Paths::kBare>, prefix>,
               &RunGroupOpcode<&IndexOp<Op, UseIY, Paths::kChecked>, prefix>>(m);
}

template <int Op>
void CbInstruction(Machine& m) {
    RunOnPaths<CbUsesDataPaths(Op), &RunGroupOpcode<&CbOp<Op, Paths::kBare>, 0xCB>,
               &RunGroupOpcode<&CbOp<Op, Paths::kChecked>, 0xCB>>(m);
}

template <int... Ops>
constexpr GroupTable MakeCbTable(std::integer_sequence<int, Ops...>) {
    return {&CbInstruction<Ops>...};
}

template <bool UseIY, int... Ops>
constexpr GroupTable MakeIndexTable(std::integer_sequence<int, Ops...>) {
    return {&IndexInstruction<Ops, UseIY>...};
}

}  // namespace

constexpr GroupTable kCbGroup = MakeCbTable(std::make_integer_sequence<int, 256>{});
constexpr GroupTable kDdGroup = MakeIndexTable<false>(std::make_integer_sequence<int, 256>{});
constexpr GroupTable kFdGroup = MakeIndexTable<true>(std::make_integer_sequence<int, 256>{});

void PrefixED(Machine& m) {
    RaiseR(m);
    EdGroup(m);
    if (!m.PrefixRecognised) Fallback<0xED>(m);
    EndInstruction(m);
}

}  // namespace mb::exec
