// The instruction cycle and the unprefixed opcodes. The prefix groups (CB, ED,
// DD/FD, DDCB/FDCB) live in execute_groups.cpp.
//
// Address discipline. Opcode and operand bytes are read at PC+0..PC+3 with PC in
// 0..65535, which the five mirror cells above FFFFH cover. Every data address
// (HL, BC, DE, nn, SP+1, idx+d) is wrapped to 16 bits before it reaches memory and
// every port number to 8 bits, as the chip's own buses would do; PushWord and
// PopWord wrap SP the same way. A relative jump that lands below 0 adds 65536, so
// JR from 0000H backwards continues at the top of memory like the chip; a target
// above FFFFH is brought back at the end of the cycle, and a PC that reaches the
// cycle out of range (set by other code) is wrapped before the fetch. So no
// access can leave MemoryImage or PortImage, even when a register holds the 256
// that PushWord may store as a high byte.
//
// Shape of the hot path. ExecuteInstruction runs steps 1 to 4 and jumps to one
// function per opcode (per group opcode for the prefixes), which carries out
// the instruction and steps 5 to 14 itself, so its constants fold into the
// end of the cycle. An instruction that uses the data paths and finds no hook
// active takes them bare, without a test per access (RunOnPaths); the routines
// that set every flag spread a flag byte over the eight fields in one copy.
#include "execute.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "access.h"
#include "alu.h"
#include "execute_internal.h"
#include "instruction_text.h"

namespace mb {

void PushWord(Machine& m, int value) {
    // The value is not wrapped: a return address of 65536 or more stores a high
    // byte of 256, as the rest of the system expects.
    int sp = (m.SP - 1) & 0xFFFF;
    m.MemoryImage[sp] = HighByte(value);
    sp = (sp - 1) & 0xFFFF;
    m.MemoryImage[sp] = LowByte(value);
    m.SP = sp;
}

int PopWord(Machine& m) {
    int sp = m.SP & 0xFFFF;
    const int low = m.MemoryImage[sp];
    sp = (sp + 1) & 0xFFFF;
    const int high = m.MemoryImage[sp];
    m.SP = (sp + 1) & 0xFFFF;
    return low + high * 256;
}

void IncrementR(Machine& m) {
    exec::RaiseR(m);
}

void DecrementR(Machine& m) {
    exec::LowerR(m);
}

namespace {

using exec::Addr;
using exec::Cell;
using exec::Reg8;
using exec::Signed8;
using exec::Word;

template <int P>
MB_ALWAYS_INLINE int GetRP(const Machine& m) {  // BC DE HL SP
    if constexpr (P == 0)
        return RegBC(m);
    else if constexpr (P == 1)
        return RegDE(m);
    else if constexpr (P == 2)
        return RegHL(m);
    else
        return m.SP;
}

template <int P>
MB_ALWAYS_INLINE void SetRP(Machine& m, int v) {
    if constexpr (P == 0)
        SetBC(m, v);
    else if constexpr (P == 1)
        SetDE(m, v);
    else if constexpr (P == 2)
        SetHL(m, v);
    else
        m.SP = v;
}

template <int Cc>
MB_ALWAYS_INLINE bool Condition(const Machine& m) {  // NZ Z NC C PO PE P M
    if constexpr (Cc == 0)
        return !m.FlagZ;
    else if constexpr (Cc == 1)
        return m.FlagZ;
    else if constexpr (Cc == 2)
        return !m.FlagC;
    else if constexpr (Cc == 3)
        return m.FlagC;
    else if constexpr (Cc == 4)
        return !m.FlagP;
    else if constexpr (Cc == 5)
        return m.FlagP;
    else if constexpr (Cc == 6)
        return !m.FlagS;
    else
        return m.FlagS;
}

// The marked jumps: a jump onto itself stops the run when the user asked for it.
MB_ALWAYS_INLINE void InfiniteLoopTest(Machine& m, int oldPC) {
    if (m.PC == oldPC) [[unlikely]] {
        if (m.InfiniteLoopStopsSimulation) m.StopRequest = true;
    }
}

MB_ALWAYS_INLINE int RelativeTarget(const Machine& m) {
    int target = m.PC + 2 + Signed8(Cell(m, m.PC + 1));
    if (target < 0) target += 65536;
    return target;
}

void Halt(Machine& m) {
    m.HaltThisInstruction = 1;
    m.TStates = 4;
    if (m.HaltStopsSimulation) m.StopRequest = true;
}

void ExchangeAF(Machine& m) {
    std::swap(m.A, m.AltA);
    std::swap(m.FlagS, m.AltFlagS);
    std::swap(m.FlagZ, m.AltFlagZ);
    std::swap(m.FlagY, m.AltFlagY);
    std::swap(m.FlagH, m.AltFlagH);
    std::swap(m.FlagX, m.AltFlagX);
    std::swap(m.FlagP, m.AltFlagP);
    std::swap(m.FlagN, m.AltFlagN);
    std::swap(m.FlagC, m.AltFlagC);
}

void Exx(Machine& m) {
    std::swap(m.B, m.AltB);
    std::swap(m.C, m.AltC);
    std::swap(m.D, m.AltD);
    std::swap(m.E, m.AltE);
    std::swap(m.H, m.AltH);
    std::swap(m.L, m.AltL);
}

// The accumulator rotates leave S, Z and P alone.
template <int Y>
MB_ALWAYS_INLINE void RotateA(Machine& m) {
    const int a = m.A;
    int r;
    int c;
    if constexpr (Y == 0) {  // RLCA
        c = (a >> 7) & 1;
        r = ((a << 1) & 255) | c;
    } else if constexpr (Y == 1) {  // RRCA
        c = a & 1;
        r = (a >> 1) | (c << 7);
    } else if constexpr (Y == 2) {  // RLA
        c = (a >> 7) & 1;
        r = ((a << 1) & 255) | m.FlagC;
    } else {  // RRA
        c = a & 1;
        r = (a >> 1) | (m.FlagC << 7);
    }
    m.A = r;
    m.FlagC = c;
    m.FlagH = 0;
    m.FlagN = 0;
    SetXY(m, r);
}

// Opcodes 00-3F.
template <int Op, Paths P>
MB_ALWAYS_INLINE void BaseBlock0(Machine& m) {
    constexpr int y = (Op >> 3) & 7, z = Op & 7, p = y >> 1, q = y & 1;
    const int pc = m.PC;
    if constexpr (z == 0) {
        if constexpr (y == 0) {  // NOP
            m.TStates = 4;
            m.PC = pc + 1;
        } else if constexpr (y == 1) {  // EX AF,AF'
            ExchangeAF(m);
            m.TStates = 4;
            m.PC = pc + 1;
        } else if constexpr (y == 2) {  // DJNZ: no infinite-loop test
            int b = m.B - 1;
            if (b < 0) b += 256;
            m.B = b;
            if (b != 0) {
                m.PC = RelativeTarget(m);
                m.TStates = 13;
            } else {
                m.PC = pc + 2;
                m.TStates = 8;
            }
        } else if constexpr (y == 3) {  // JR e
            m.PC = RelativeTarget(m);
            m.TStates = 12;
            InfiniteLoopTest(m, pc);
        } else {  // JR cc,e
            if (Condition<y - 4>(m)) {
                m.PC = RelativeTarget(m);
                m.TStates = 12;
                InfiniteLoopTest(m, pc);
            } else {
                m.PC = pc + 2;
                m.TStates = 7;
            }
        }
    } else if constexpr (z == 1) {
        if constexpr (q == 0) {  // LD rr,nn
            SetRP<p>(m, Word(m, pc + 1));
            m.TStates = 10;
            m.PC = pc + 3;
        } else {  // ADD HL,rr
            SetHL(m, Add16(m, RegHL(m), GetRP<p>(m)));
            m.TStates = 11;
            m.PC = pc + 1;
        }
    } else if constexpr (z == 2) {
        if constexpr (p == 0 || p == 1) {  // LD (BC),A  LD (DE),A  LD A,(BC)  LD A,(DE)
            const int address = Addr(GetRP<p>(m));
            if constexpr (q == 0)
                MemoryWrite<P>(m, address, m.A);
            else
                m.A = MemoryRead<P>(m, address);
            m.TStates = 7;
            m.PC = pc + 1;
        } else if constexpr (p == 2) {  // LD (nn),HL  LD HL,(nn): low byte first
            const int nn = Word(m, pc + 1);
            if constexpr (q == 0) {
                MemoryWrite<P>(m, Addr(nn), m.L);
                MemoryWrite<P>(m, Addr(nn + 1), m.H);
            } else {
                m.L = MemoryRead<P>(m, Addr(nn));
                m.H = MemoryRead<P>(m, Addr(nn + 1));
            }
            m.TStates = 16;
            m.PC = pc + 3;
        } else {  // LD (nn),A  LD A,(nn)
            const int address = Addr(Word(m, pc + 1));
            if constexpr (q == 0)
                MemoryWrite<P>(m, address, m.A);
            else
                m.A = MemoryRead<P>(m, address);
            m.TStates = 13;
            m.PC = pc + 3;
        }
    } else if constexpr (z == 3) {  // INC rr  DEC rr
        int v = GetRP<p>(m) + (q == 0 ? 1 : -1);
        if (v > 65535) v -= 65536;
        if constexpr (q == 1) {  // a pair is never negative, so only DEC can go below 0
            if (v < 0) v += 65536;
        }
        SetRP<p>(m, v);
        m.TStates = 6;
        m.PC = pc + 1;
    } else if constexpr (z == 4 || z == 5) {  // INC r  DEC r
        if constexpr (y == 6) {
            const int address = Addr(RegHL(m));
            const int v = MemoryRead<P>(m, address);
            MemoryWrite<P>(m, address, z == 4 ? Inc8(m, v) : Dec8(m, v));
            m.TStates = 11;
        } else {
            int& r = Reg8<y>(m);
            r = z == 4 ? Inc8(m, r) : Dec8(m, r);
            m.TStates = 4;
        }
        m.PC = pc + 1;
    } else if constexpr (z == 6) {  // LD r,n
        const int n = Cell(m, pc + 1);
        if constexpr (y == 6) {
            MemoryWrite<P>(m, Addr(RegHL(m)), n);
            m.TStates = 10;
        } else {
            Reg8<y>(m) = n;
            m.TStates = 7;
        }
        m.PC = pc + 2;
    } else {
        if constexpr (y < 4) {
            RotateA<y>(m);
        } else if constexpr (y == 4) {
            Daa(m);
        } else if constexpr (y == 5) {  // CPL
            m.A = 255 - m.A;
            m.FlagH = 1;
            m.FlagN = 1;
            SetXY(m, m.A);
        } else if constexpr (y == 6) {  // SCF
            m.FlagN = 0;
            m.FlagH = 0;
            m.FlagC = 1;
            SetXY(m, m.A);
        } else {  // CCF
            m.FlagN = 0;
            m.FlagH = m.FlagC;
            m.FlagC = 1 - m.FlagC;
            SetXY(m, m.A);
        }
        m.TStates = 4;
        m.PC = pc + 1;
    }
}

// Opcodes 40-7F: LD r,r' and HALT.
template <int Op, Paths P>
MB_ALWAYS_INLINE void BaseBlock1(Machine& m) {
    constexpr int y = (Op >> 3) & 7, z = Op & 7;
    if constexpr (Op == 0x76) {
        Halt(m);  // PC stays on the HALT
        return;
    } else if constexpr (z == 6) {
        Reg8<y>(m) = MemoryRead<P>(m, Addr(RegHL(m)));
        m.TStates = 7;
    } else if constexpr (y == 6) {
        MemoryWrite<P>(m, Addr(RegHL(m)), Reg8<z>(m));
        m.TStates = 7;
    } else {
        Reg8<y>(m) = Reg8<z>(m);
        m.TStates = 4;
    }
    m.PC += 1;
}

// Opcodes 80-BF: the accumulator operations on r or (HL).
template <int Op, Paths P>
MB_ALWAYS_INLINE void BaseBlock2(Machine& m) {
    constexpr int y = (Op >> 3) & 7, z = Op & 7;
    if constexpr (z == 6) {
        Alu8<y>(m, MemoryRead<P>(m, Addr(RegHL(m))));
        m.TStates = 7;
    } else {
        Alu8<y>(m, Reg8<z>(m));
        m.TStates = 4;
    }
    m.PC += 1;
}

// Opcodes C0-FF but the prefixes.
template <int Op, Paths P>
MB_ALWAYS_INLINE void BaseBlock3(Machine& m) {
    constexpr int y = (Op >> 3) & 7, z = Op & 7, p = y >> 1, q = y & 1;
    const int pc = m.PC;
    if constexpr (z == 0) {  // RET cc
        if (Condition<y>(m)) {
            m.PC = PopWord(m);
            m.TStates = 11;
        } else {
            m.PC = pc + 1;
            m.TStates = 5;
        }
    } else if constexpr (z == 1) {
        if constexpr (q == 0) {  // POP BC/DE/HL/AF
            const int v = PopWord(m);
            if constexpr (p == 3) {
                m.A = HighByte(v);
                SpreadFlags(m, LowByte(v));
            } else {
                SetRP<p>(m, v);
            }
            m.TStates = 10;
            m.PC = pc + 1;
        } else if constexpr (p == 0) {  // RET
            m.PC = PopWord(m);
            m.TStates = 10;
        } else if constexpr (p == 1) {  // EXX
            Exx(m);
            m.TStates = 4;
            m.PC = pc + 1;
        } else if constexpr (p == 2) {  // JP (HL)
            m.PC = RegHL(m);
            m.TStates = 4;
            InfiniteLoopTest(m, pc);
        } else {  // LD SP,HL
            m.SP = RegHL(m);
            m.TStates = 6;
            m.PC = pc + 1;
        }
    } else if constexpr (z == 2) {  // JP cc,nn: 10 either way
        m.PC = Condition<y>(m) ? Word(m, pc + 1) : pc + 3;
        m.TStates = 10;
        InfiniteLoopTest(m, pc);
    } else if constexpr (z == 3) {
        if constexpr (y == 0) {  // JP nn
            m.PC = Word(m, pc + 1);
            m.TStates = 10;
            InfiniteLoopTest(m, pc);
        } else if constexpr (y == 2) {  // OUT (n),A
            PortOut<P>(m, Cell(m, pc + 1), m.A);
            m.TStates = 11;
            m.PC = pc + 2;
        } else if constexpr (y == 3) {  // IN A,(n)
            m.PrevA = m.A;
            m.A = PortIn<P>(m, Cell(m, pc + 1));
            m.TStates = 11;
            m.PC = pc + 2;
        } else if constexpr (y == 4) {  // EX (SP),HL
            SetHL(m, exec::ExchangeStackTop<P>(m, RegHL(m)));
            m.TStates = 19;
            m.PC = pc + 1;
        } else if constexpr (y == 5) {  // EX DE,HL
            std::swap(m.D, m.H);
            std::swap(m.E, m.L);
            m.TStates = 4;
            m.PC = pc + 1;
        } else if constexpr (y == 6) {  // DI
            m.IFF1 = 0;
            m.IFF2 = 0;
            m.IntCommandEnabled = false;
            m.TStates = 4;
            m.PC = pc + 1;
        } else {  // EI: the flip-flops change at the start of the next instruction
            m.EiPending = true;
            m.TStates = 4;
            m.PC = pc + 1;
        }
    } else if constexpr (z == 4) {  // CALL cc,nn
        if (Condition<y>(m)) {
            PushWord(m, pc + 3);
            m.PC = Word(m, pc + 1);
            m.TStates = 17;
        } else {
            m.PC = pc + 3;
            m.TStates = 10;
        }
    } else if constexpr (z == 5) {
        if constexpr (q == 0) {  // PUSH BC/DE/HL/AF
            if constexpr (p == 3)
                PushWord(m, m.A * 256 + ComposeFlags(m));
            else
                PushWord(m, GetRP<p>(m));
            m.TStates = 11;
            m.PC = pc + 1;
        } else {  // CALL nn; the prefixes DD, ED and FD go to RunOpcode
            static_assert(p == 0);
            PushWord(m, pc + 3);
            m.PC = Word(m, pc + 1);
            m.TStates = 17;
        }
    } else if constexpr (z == 6) {  // ALU A,n
        Alu8<y>(m, Cell(m, pc + 1));
        m.TStates = 7;
        m.PC = pc + 2;
    } else {  // RST
        PushWord(m, pc + 1);
        m.PC = y * 8;
        m.TStates = 11;
    }
}

template <int Op, Paths P>
MB_ALWAYS_INLINE void Base(Machine& m) {
    if constexpr (Op < 0x40)
        BaseBlock0<Op, P>(m);
    else if constexpr (Op < 0x80)
        BaseBlock1<Op, P>(m);
    else if constexpr (Op < 0xC0)
        BaseBlock2<Op, P>(m);
    else
        BaseBlock3<Op, P>(m);
}

DecodedInstruction DecodeAt(const Machine& m, int address) {
    const DecodeOptions options{m.UnofficialEnabled != 0, m.RelativeBranchHex != 0};
    return DecodeInstruction(Cell(m, address), Cell(m, address + 1), Cell(m, address + 2),
                             Cell(m, address + 3), options);
}

MB_NOINLINE void SetCurrentText(Machine& m) {
    m.CurrentInstructionText = DecodeAt(m, m.PC).text;
}

MB_NOINLINE void SetNextText(Machine& m) {
    m.NextInstructionText = DecodeAt(m, m.PC).text;
}

// Steps 9 to 14: each active part of the end-of-instruction stage, in order.
MB_NOINLINE void RunEndStage(Machine& m) {
    EndStageHandler* stage = m.EndStage;
    if (!stage) return;
    if (m.EndStageMask & kEndStageViews) stage->RefreshViews(m);
    if (m.EndStageMask & kEndStageLog) stage->WriteLogLine(m);
    if (m.EndStageMask & kEndStageRequests) stage->ServeRequests(m);
    if ((m.EndStageMask & kEndStageDebug) || m.AddressMarks[static_cast<unsigned>(m.PC) & 0xFFFFu])
        stage->DebugChecks(m);
    if (m.EndStageMask & kEndStageSpectrum) stage->SpectrumWork(m);
    if (m.EndStageMask & kEndStageModules) stage->ModuleRefresh(m);
}

MB_NOINLINE void EnableInterruptsAfterEi(Machine& m) {
    m.EiPending = false;
    m.IFF1 = 1;
    m.IFF2 = 1;
    m.IntCommandEnabled = true;
}

// Whether an unprefixed opcode reaches memory or ports through the data paths.
constexpr bool UsesDataPaths(int op) {
    const int y = (op >> 3) & 7, z = op & 7;
    if (op < 0x40) return z == 2 || (y == 6 && (z == 4 || z == 5 || z == 6));
    if (op < 0x80) return op != 0x76 && (z == 6 || y == 6);
    if (op < 0xC0) return z == 6;
    return op == 0xD3 || op == 0xDB || op == 0xE3;  // OUT (n),A  IN A,(n)  EX (SP),HL
}

template <int Op, Paths P>
MB_ALWAYS_INLINE void RunBase(Machine& m) {
    Base<Op, P>(m);
    exec::EndInstruction<Op == 0x76>(m);
}

// One function per unprefixed opcode, each a small leaf that ends the
// instruction itself, so the cycle reaches it with one indirect jump; a prefix
// jumps on into its group's table.
template <int Op>
void RunOpcode(Machine& m) {
    if constexpr (Op == 0xCB) {
        exec::kCbGroup[Cell(m, m.PC + 1)](m);
    } else if constexpr (Op == 0xDD) {
        exec::kDdGroup[Cell(m, m.PC + 1)](m);
    } else if constexpr (Op == 0xFD) {
        exec::kFdGroup[Cell(m, m.PC + 1)](m);
    } else if constexpr (Op == 0xED) {
        exec::PrefixED(m);
    } else {
        exec::RunOnPaths<UsesDataPaths(Op), &RunBase<Op, Paths::kBare>,
                         &RunBase<Op, Paths::kChecked>>(m);
    }
}

template <int... Ops>
constexpr exec::GroupTable MakeOpcodeTable(std::integer_sequence<int, Ops...>) {
    return {&RunOpcode<Ops>...};
}

constexpr exec::GroupTable kOpcodeTable = MakeOpcodeTable(std::make_integer_sequence<int, 256>{});

}  // namespace

// Step 8, the next text, and steps 9 to 14. The text bit of the mask is set by
// each instruction that starts below Ultimate, and drops here at the first one
// that started at Ultimate.
MB_NOINLINE void exec::FinishInstruction(Machine& m) {
    if (m.TextMode)
        SetNextText(m);
    else
        m.EndStageMask &= ~kEndStageText;
    RunEndStage(m);
}

namespace {

// Steps 2 to 4; the opcode's function then ends the instruction. The text mode
// is a template argument so that the Ultimate path carries no text work.
template <bool WithText>
MB_ALWAYS_INLINE void StartInstruction(Machine& m) {
    // 2, 3.
    m.HaltThisInstruction = 0;
    m.TextMode = WithText;
    unsigned pc = static_cast<unsigned>(m.PC);
    if (pc > 65535u) [[unlikely]] {
        pc &= 0xFFFF;  // a PC set out of range from outside the cycle
        m.PC = static_cast<int>(pc);
    }
    m.InstructionPC = static_cast<int>(pc);
    exec::RaiseR(m);

    // 4. The text is taken from memory before the instruction can change PC or
    // overwrite its own bytes.
    if constexpr (WithText) SetCurrentText(m);
    kOpcodeTable[m.MemoryImage[pc] & 255](m);
}

// Every instruction that has a pending EI or builds texts.
MB_NOINLINE void ExecuteSlowStart(Machine& m) {
    // 1. The EI of the previous instruction takes effect now.
    if (m.EiPending) EnableInterruptsAfterEi(m);
    if (m.SimulationRate != kRateUltimate) {
        m.EndStageMask |= kEndStageText;
        StartInstruction<true>(m);
    } else
        StartInstruction<false>(m);
}

MB_ALWAYS_INLINE void ExecuteOne(Machine& m) {
    if ((m.SimulationRate != kRateUltimate) | m.EiPending) [[unlikely]]
        ExecuteSlowStart(m);
    else
        StartInstruction<false>(m);
}

}  // namespace

void ExecuteInstruction(Machine& m) {
    ExecuteOne(m);
}

namespace {

// EiPending, StopRequest and ResetHold lie side by side, so that the batch
// tests all three with one load: any of them takes the instruction off the
// fast path.
static_assert(offsetof(Machine, StopRequest) == offsetof(Machine, EiPending) + 1);
static_assert(offsetof(Machine, ResetHold) == offsetof(Machine, EiPending) + 2);

MB_ALWAYS_INLINE bool AnyPendingFlag(const Machine& m) {
    std::uint32_t bytes;
    std::memcpy(&bytes, &m.EiPending, sizeof bytes);
    constexpr std::uint32_t kFirstThree =
        std::endian::native == std::endian::little ? 0x00FFFFFFu : 0xFFFFFF00u;
    return (bytes & kFirstThree) != 0;
}

}  // namespace

int ExecuteInstructions(Machine& m, int count) {
    int done = 0;
    for (;;) {
        if ((m.SimulationRate != kRateUltimate) | AnyPendingFlag(m)) [[unlikely]] {
            if (done > 0 && (m.StopRequest | m.ResetHold | (m.SimulationRate < kRateExtremelyFast)))
                return done;
            ExecuteSlowStart(m);
        } else {
            StartInstruction<false>(m);
        }
        if (++done >= count) return done;
    }
}

}  // namespace mb
