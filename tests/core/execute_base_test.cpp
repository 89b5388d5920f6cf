// Unprefixed opcodes: results, flags, T-states and lengths, one table per family.
#include <gtest/gtest.h>

#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

TEST(ExecuteBase, AccumulatorArithmetic) {
    RunRows({
        {"ADD A,B half carry", "80", "A=0F F=- B=01", "A=10 F=H", 4, 1},
        {"ADD A,B overflow", "80", "A=7F F=- B=01", "A=80 F=SHP", 4, 1},
        {"ADD A,B carry to zero", "80", "A=FF F=- B=01", "A=00 F=ZHC", 4, 1},
        {"ADD A,B negative overflow", "80", "A=80 F=- B=80", "A=00 F=ZPC", 4, 1},
        {"ADD A,n", "C6 22", "A=11 F=C", "A=33 F=Y", 7, 2},
        {"ADD A,(HL)", "86", "A=01 F=- HL=8000 (8000)=02", "A=03 F=-", 7, 1},
        {"ADC A,B carry in", "88", "A=0E F=C B=01", "A=10 F=H", 4, 1},
        {"ADC A,B overflow by carry", "88", "A=7F F=C B=00", "A=80 F=SHP", 4, 1},
        {"ADC A,n", "CE FF", "A=00 F=C", "A=00 F=ZHC", 7, 2},
        {"SUB B borrow from bit 4", "90", "A=10 F=- B=01", "A=0F F=HXN", 4, 1},
        {"SUB B overflow", "90", "A=80 F=- B=01", "A=7F F=YHXPN", 4, 1},
        {"SUB A", "97", "A=42 F=SHPC", "A=00 F=ZN", 4, 1},
        {"SUB B below zero", "90", "A=00 F=- B=01", "A=FF F=SYHXNC", 4, 1},
        {"SUB n", "D6 03", "A=05 F=-", "A=02 F=N", 7, 2},
        {"SBC A,B carry in", "98", "A=10 F=C B=0F", "A=00 F=ZHN", 4, 1},
        {"SBC A,B wraps whole byte", "98", "A=00 F=C B=FF", "A=00 F=ZHNC", 4, 1},
        {"SBC A,n", "DE 01", "A=03 F=C", "A=01 F=N", 7, 2},
        {"AND B", "A0", "A=F0 F=NC B=3C", "A=30 F=YHP", 4, 1},
        {"AND n", "E6 0F", "A=F0 F=-", "A=00 F=ZHP", 7, 2},
        {"XOR A", "AF", "A=5A F=HC", "A=00 F=ZP", 4, 1},
        {"XOR n", "EE FF", "A=0F F=-", "A=F0 F=SYP", 7, 2},
        {"OR B even parity", "B0", "A=80 F=C B=01", "A=81 F=SP", 4, 1},
        {"OR B odd parity", "B0", "A=00 F=- B=07", "A=07 F=-", 4, 1},
        {"OR n", "F6 08", "A=00 F=-", "A=08 F=X", 7, 2},
        {"CP B X and Y from operand", "B8", "A=00 F=- B=28", "A=00 F=SYHXNC", 4, 1},
        {"CP B equal", "B8", "A=40 F=- B=40", "A=40 F=ZN", 4, 1},
        {"CP n", "FE 01", "A=80 F=-", "A=80 F=HPN", 7, 2},
        {"CP (HL)", "BE", "A=10 F=- HL=8001 (8001)=0F", "A=10 F=HXN", 7, 1},
        {"ADD A,A", "87", "A=44 F=-", "A=88 F=SXP", 4, 1},
        {"SUB L", "95", "A=44 F=- L=44", "A=00 F=ZN", 4, 1},
    });
}

TEST(ExecuteBase, IncrementAndDecrement) {
    RunRows({
        {"INC B half carry keeps C", "04", "F=C B=0F", "F=HC B=10", 4, 1},
        {"INC B overflow", "04", "F=- B=7F", "F=SHP B=80", 4, 1},
        {"INC B wraps", "04", "F=- B=FF", "F=ZH B=00", 4, 1},
        {"INC A", "3C", "A=27 F=N", "A=28 F=YX", 4, 1},
        {"DEC B to zero", "05", "F=- B=01", "F=ZN B=00", 4, 1},
        {"DEC B overflow", "05", "F=- B=80", "F=YHXPN B=7F", 4, 1},
        {"DEC B wraps keeps C", "05", "F=C B=00", "F=SYHXNC B=FF", 4, 1},
        {"DEC L", "2D", "F=- L=11", "F=N L=10", 4, 1},
        {"INC (HL)", "34", "F=- HL=9000 (9000)=FF", "F=ZH (9000)=00", 11, 1},
        {"DEC (HL)", "35", "F=- HL=9000 (9000)=02", "F=N (9000)=01", 11, 1},
        {"INC BC carries into B", "03", "F=- BC=12FF", "F=- BC=1300", 6, 1},
        {"INC DE wraps, no flags", "13", "F=- DE=FFFF", "F=- DE=0000", 6, 1},
        {"INC HL", "23", "HL=0001", "HL=0002", 6, 1},
        {"INC SP wraps", "33", "SP=FFFF", "SP=0000", 6, 1},
        {"DEC BC borrows", "0B", "F=S BC=0100", "F=S BC=00FF", 6, 1},
        {"DEC SP wraps", "3B", "SP=0000", "SP=FFFF", 6, 1},
    });
}

TEST(ExecuteBase, AccumulatorRotatesAndFlagOps) {
    RunRows({
        {"RLCA keeps S Z P", "07", "A=81 F=SZP", "A=03 F=SZPC", 4, 1},
        {"RRCA", "0F", "A=01 F=HN", "A=80 F=C", 4, 1},
        {"RLA carry out", "17", "A=80 F=-", "A=00 F=C", 4, 1},
        {"RLA carry in", "17", "A=14 F=C", "A=29 F=YX", 4, 1},
        {"RRA", "1F", "A=01 F=C", "A=80 F=C", 4, 1},
        {"CPL", "2F", "A=5A F=-", "A=A5 F=YHN", 4, 1},
        {"SCF", "37", "A=28 F=HN", "A=28 F=YXC", 4, 1},
        {"CCF from set", "3F", "A=00 F=NC", "F=H", 4, 1},
        {"CCF from clear", "3F", "A=00 F=H", "F=C", 4, 1},
    });
}

TEST(ExecuteBase, DecimalAdjust) {
    RunRows({
        {"after ADD, low digit above 9", "27", "A=3C F=-", "A=42 F=HP", 4, 1},
        {"H stays set when low digit is 9 or less", "27", "A=03 F=H", "A=09 F=HXP", 4, 1},
        {"high digit above 9 sets C", "27", "A=A0 F=-", "A=00 F=ZPC", 4, 1},
        {"valid BCD unchanged", "27", "A=99 F=-", "A=99 F=SXP", 4, 1},
        {"C in adds 60", "27", "A=12 F=C", "A=72 F=YPC", 4, 1},
        {"after SUB, H and C clear: nothing", "27", "A=47 F=N", "A=47 F=PN", 4, 1},
        {"after SUB, H", "27", "A=0F F=HN", "A=09 F=HXPN", 4, 1},
        {"after SUB, C", "27", "A=F0 F=NC", "A=90 F=SPNC", 4, 1},
        {"after SUB, H and C", "27", "A=9A F=HNC", "A=34 F=YHNC", 4, 1},
    });
}

TEST(ExecuteBase, SixteenBitArithmetic) {
    RunRows({
        {"ADD HL,BC half carry keeps S Z P", "09", "F=SZP BC=0001 HL=0FFF", "F=SZHP HL=1000", 11,
         1},
        {"ADD HL,DE carry", "19", "F=N DE=0001 HL=FFFF", "F=HC HL=0000", 11, 1},
        {"ADD HL,HL X Y from high byte", "29", "F=- HL=1400", "F=YX HL=2800", 11, 1},
        {"ADD HL,SP", "39", "F=- HL=0001 SP=0001", "F=- HL=0002", 11, 1},
        {"ADC HL,BC overflow", "ED 4A", "F=C BC=0000 HL=7FFF", "F=SHP HL=8000", 15, 2},
        {"ADC HL,DE zero of all 16 bits", "ED 5A", "F=- DE=0001 HL=FFFF", "F=ZHC HL=0000", 15, 2},
        {"SBC HL,DE equal", "ED 52", "F=- DE=1000 HL=1000", "F=ZN HL=0000", 15, 2},
        {"SBC HL,BC borrow", "ED 42", "F=C BC=0000 HL=0000", "F=SYHXNC HL=FFFF", 15, 2},
        {"SBC HL,BC overflow", "ED 42", "F=- BC=0001 HL=8000", "F=YHXPN HL=7FFF", 15, 2},
        {"SBC HL,SP", "ED 72", "F=- HL=0010 SP=0001", "F=N HL=000F", 15, 2},
        {"ADC HL,HL", "ED 6A", "F=- HL=4000", "F=SP HL=8000", 15, 2},
    });
}

TEST(ExecuteBase, LoadsAndExchanges) {
    RunRows({
        {"LD BC,nn", "01 34 12", "F=-", "F=- BC=1234", 10, 3},
        {"LD SP,nn", "31 FE FF", "", "SP=FFFE", 10, 3},
        {"LD (BC),A", "02", "A=55 BC=9010", "(9010)=55", 7, 1},
        {"LD A,(DE)", "1A", "DE=9020 (9020)=66", "A=66", 7, 1},
        {"LD (nn),HL low first", "22 00 90", "HL=1234", "(9000)=34,12", 16, 3},
        {"LD HL,(nn)", "2A 00 90", "(9000)=EF,BE", "HL=BEEF", 16, 3},
        {"LD (nn),A", "32 05 90", "A=77", "(9005)=77", 13, 3},
        {"LD A,(nn)", "3A 05 90", "(9005)=88", "A=88", 13, 3},
        {"LD D,n", "16 AB", "", "D=AB", 7, 2},
        {"LD (HL),n", "36 CD", "HL=9000", "(9000)=CD", 10, 2},
        {"LD B,C", "41", "BC=0099", "B=99", 4, 1},
        {"LD B,B", "40", "F=- B=12", "F=- B=12", 4, 1},
        {"LD E,(HL)", "5E", "HL=9001 (9001)=42", "E=42", 7, 1},
        {"LD (HL),A", "77", "A=3C HL=9002", "(9002)=3C", 7, 1},
        {"LD SP,HL", "F9", "HL=1234", "SP=1234", 6, 1},
        {"EX DE,HL", "EB", "DE=0102 HL=0304", "DE=0304 HL=0102", 4, 1},
        {"EX (SP),HL", "E3", "HL=1234 SP=9000 (9000)=EF,BE", "HL=BEEF SP=9000 (9000)=34,12", 19, 1},
        {"PUSH BC", "C5", "BC=1234 SP=9002", "SP=9000 (9000)=34,12", 11, 1},
        {"POP DE", "D1", "SP=9000 (9000)=78,56", "DE=5678 SP=9002", 10, 1},
        {"PUSH AF composes flags", "F5", "A=12 F=SYXC SP=9002", "SP=9000 (9000)=A9,12", 11, 1},
        {"POP AF spreads flags", "F1", "SP=9000 (9000)=D7,34", "A=34 F=SZHPNC", 10, 1},
        {"OUT (n),A", "D3 10", "A=5A", "A=5A port(10)=5A", 11, 2},
        {"IN A,(n) no flags", "DB 20", "A=01 F=- port(20)=99", "A=99 F=-", 11, 2},
    });
}

TEST(ExecuteBase, ExchangeSetsAndPrevA) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Load(0, {0x08, 0xD9, 0xDB, 0x07});  // EX AF,AF'  EXX  IN A,(07H)
    m.A = 0x11;
    SpreadFlags(m, 0x81);
    m.AltA = 0x22;
    SpreadAltFlags(m, 0x42);
    m.B = 1, m.C = 2, m.D = 3, m.E = 4, m.H = 5, m.L = 6;
    m.AltB = 7, m.AltC = 8, m.AltD = 9, m.AltE = 10, m.AltH = 11, m.AltL = 12;
    m.PortImage[7] = 0x77;
    cpu.Step();
    EXPECT_EQ(m.A, 0x22);
    EXPECT_EQ(ComposeFlags(m), 0x42);
    EXPECT_EQ(m.AltA, 0x11);
    EXPECT_EQ(ComposeAltFlags(m), 0x81);
    cpu.Step();
    EXPECT_EQ(RegBC(m), 0x0708);
    EXPECT_EQ(RegDE(m), 0x090A);
    EXPECT_EQ(RegHL(m), 0x0B0C);
    EXPECT_EQ(m.AltB * 256 + m.AltC, 0x0102);
    EXPECT_EQ(m.AltH * 256 + m.AltL, 0x0506);
    cpu.Step();
    EXPECT_EQ(m.PrevA, 0x22);
    EXPECT_EQ(m.A, 0x77);
}

TEST(ExecuteBase, JumpsCallsAndReturns) {
    RunRows({
        {"JP nn", "C3 00 80", "", "PC=8000", 10},
        {"JP NZ taken", "C2 00 80", "F=-", "PC=8000", 10},
        {"JP NZ not taken", "C2 00 80", "F=Z", "PC=4003", 10},
        {"JP C taken", "DA 00 80", "F=C", "PC=8000", 10},
        {"JP PO taken", "E2 00 80", "F=-", "PC=8000", 10},
        {"JP PE not taken", "EA 00 80", "F=-", "PC=4003", 10},
        {"JP M taken", "FA 00 80", "F=S", "PC=8000", 10},
        {"JP P not taken", "F2 00 80", "F=S", "PC=4003", 10},
        {"JP (HL)", "E9", "HL=1234", "PC=1234", 4},
        {"JR forward", "18 05", "", "PC=4007", 12},
        {"JR backward", "18 FC", "", "PC=3FFE", 12},
        {"JR Z taken", "28 10", "F=Z", "PC=4012", 12},
        {"JR Z not taken", "28 10", "F=-", "PC=4002", 7},
        {"JR NC taken", "30 10", "F=-", "PC=4012", 12},
        {"JR C not taken", "38 10", "F=-", "PC=4002", 7},
        {"DJNZ taken", "10 FE", "F=- B=02", "F=- B=01 PC=4000", 13},
        {"DJNZ falls through", "10 FE", "F=- B=01", "F=- B=00 PC=4002", 8},
        {"DJNZ from 0 wraps B", "10 00", "B=00", "B=FF PC=4002", 13},
        {"CALL nn pushes PC+3", "CD 00 80", "SP=9000", "SP=8FFE PC=8000 (8FFE)=03,40", 17},
        {"CALL Z taken", "CC 00 80", "F=Z SP=9000", "SP=8FFE PC=8000", 17},
        {"CALL Z not taken", "CC 00 80", "F=- SP=9000", "SP=9000 PC=4003", 10},
        {"RET", "C9", "SP=9000 (9000)=34,12", "SP=9002 PC=1234", 10},
        {"RET NC taken", "D0", "F=- SP=9000 (9000)=34,12", "SP=9002 PC=1234", 11},
        {"RET NC not taken", "D0", "F=C SP=9000", "SP=9000 PC=4001", 5},
        {"RST 38H pushes PC+1", "FF", "SP=9000", "SP=8FFE PC=0038 (8FFE)=01,40", 11},
        {"RST 08H", "CF", "SP=9000", "PC=0008", 11},
    });
}

TEST(ExecuteBase, RefreshRegisterCountsLowSevenBits) {
    struct {
        int before, after;
    } cases[] = {{0x00, 0x01}, {0x7F, 0x00}, {0x80, 0x81}, {0xFF, 0x80}};
    for (auto c : cases) {
        Cpu cpu;
        cpu.Load(0, {0x00});
        cpu.m.R = c.before;
        cpu.Step();
        EXPECT_EQ(cpu.m.R, c.after) << c.before;
    }
    Machine m;
    m.R = 0x80;
    DecrementR(m);
    EXPECT_EQ(m.R, 0xFF);
    m.R = 0x00;
    DecrementR(m);
    EXPECT_EQ(m.R, 0x7F);
}

TEST(ExecuteBase, HaltRunsAgainUntilMovedOn) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Program({0x76, 0x00});
    cpu.Step(3);
    EXPECT_EQ(m.PC, kOrigin);
    EXPECT_EQ(m.ClockCycles, 12);
    EXPECT_EQ(m.InstructionCount, 3);
    EXPECT_EQ(m.HaltState, 1);
    EXPECT_FALSE(m.StopRequest);
    m.PC = kOrigin + 1;  // as an interrupt would
    cpu.Step();
    EXPECT_EQ(m.HaltState, 0);

    Cpu stopping;
    stopping.m.HaltStopsSimulation = 1;
    stopping.Load(0, {0x76});
    stopping.Step();
    EXPECT_TRUE(stopping.m.StopRequest);
}

TEST(ExecuteBase, EiTakesEffectAfterTheNextInstruction) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Load(0, {0xFB, 0x00, 0x00, 0xF3});  // EI  NOP  NOP  DI
    cpu.Step();
    EXPECT_EQ(m.IFF1, 0);
    EXPECT_TRUE(m.EiPending);
    cpu.Step();
    EXPECT_EQ(m.IFF1, 1);
    EXPECT_EQ(m.IFF2, 1);
    EXPECT_TRUE(m.IntCommandEnabled);
    EXPECT_FALSE(m.EiPending);
    cpu.Step(2);
    EXPECT_EQ(m.IFF1, 0);
    EXPECT_EQ(m.IFF2, 0);
    EXPECT_FALSE(m.IntCommandEnabled);
}

TEST(ExecuteBase, InfiniteLoopTestOnlyOnMarkedJumps) {
    struct {
        const char* name;
        std::vector<int> code;
        bool zero;  // flag Z before the jump
        bool stops;
    } cases[] = {
        {"JP to itself", {0xC3, 0x00, 0x40}, false, true},
        {"JP Z to itself taken", {0xCA, 0x00, 0x40}, true, true},
        {"JP Z to itself not taken", {0xCA, 0x00, 0x40}, false, false},
        {"JR -2", {0x18, 0xFE}, false, true},
        {"JR NZ -2 taken", {0x20, 0xFE}, false, true},
        {"JP (HL) to itself", {0xE9}, false, true},
        {"DJNZ to itself", {0x10, 0xFE}, false, false},
        {"JP (IX) to itself", {0xDD, 0xE9}, false, false},
        {"CALL to itself", {0xCD, 0x00, 0x40}, false, false},
    };
    for (const auto& c : cases) {
        for (int option : {0, 1}) {
            Cpu cpu;
            Machine& m = cpu.m;
            m.InfiniteLoopStopsSimulation = option;
            cpu.Program(c.code);
            m.FlagZ = c.zero;
            SetHL(m, kOrigin);
            m.IX = kOrigin;
            m.B = 5;
            m.SP = 0x9000;
            cpu.Step();
            EXPECT_EQ(m.StopRequest, c.stops && option == 1) << c.name << " option " << option;
        }
    }
}

TEST(ExecuteBase, XAndYPinnedWithUnofficialOff) {
    struct {
        const char* ffDefaults;
        int pinned;
    } cases[] = {{"ON", 1}, {"OFF", 0}};
    for (auto c : cases) {
        Cpu cpu(false);
        Machine& m = cpu.m;
        m.FFPowerOnDefaults = c.ffDefaults;
        // POP AF of a byte with X and Y opposite to the pinned value, then CP 28H.
        const int popped = c.pinned ? 0x00 : 0x28;
        cpu.Load(0, {0xF1, 0xFE, 0x28, 0x08});
        m.SP = 0x9000;
        m.MemoryImage[0x9000] = popped;
        m.MemoryImage[0x9001] = 0x00;
        cpu.Step();
        EXPECT_EQ(m.FlagX, c.pinned) << c.ffDefaults;
        EXPECT_EQ(m.FlagY, c.pinned) << c.ffDefaults;
        EXPECT_EQ(m.AltFlagX, c.pinned) << c.ffDefaults;
        cpu.Step();
        EXPECT_EQ(m.FlagX, c.pinned) << c.ffDefaults;
        EXPECT_EQ(m.FlagY, c.pinned) << c.ffDefaults;
        EXPECT_EQ(m.FlagC, 1);  // the rest of the flags live
        cpu.Step();
        EXPECT_EQ(m.AltFlagY, c.pinned) << c.ffDefaults;
    }
    // With unofficial instructions on, CP takes X and Y from its operand.
    Cpu live(true);
    live.Load(0, {0xFE, 0x28});
    live.m.A = 0;
    live.Step();
    EXPECT_EQ(live.m.FlagX, 1);
    EXPECT_EQ(live.m.FlagY, 1);
}

TEST(ExecuteBase, StackWordsWrapSpButNotTheValue) {
    Cpu cpu;
    Machine& m = cpu.m;
    m.SP = 0x0001;
    PushWord(m, 0x1234);
    EXPECT_EQ(m.SP, 0xFFFF);
    EXPECT_EQ(m.MemoryImage[0x0000], 0x12);
    EXPECT_EQ(m.MemoryImage[0xFFFF], 0x34);
    EXPECT_EQ(PopWord(m), 0x1234);
    EXPECT_EQ(m.SP, 0x0001);

    m.SP = 0x9000;
    PushWord(m, 65537);  // a return address past the top of memory
    EXPECT_EQ(m.MemoryImage[0x8FFF], 256);
    EXPECT_EQ(m.MemoryImage[0x8FFE], 1);

    // CALL at FFFEH pushes 10001H; RET brings PC back into range at the end of the cycle.
    Cpu top;
    top.Load(0xFFFE, {0xCD, 0x00, 0x80});  // the high operand byte sits in cell 0 and its mirror
    top.Load(0x8000, {0xC9});
    top.m.PC = 0xFFFE;
    top.m.SP = 0x9000;
    top.Step();
    EXPECT_EQ(top.m.PC, 0x8000);
    EXPECT_EQ(top.m.MemoryImage[0x8FFF], 256);
    top.Step();
    EXPECT_EQ(top.m.PC, 0x0001);
}

TEST(ExecuteBase, AddressesWrapInsideMemory) {
    // Relative jumps continue round the ends of memory.
    struct {
        int at;
        std::vector<int> code;
        int pc;
    } jumps[] = {
        {0x0000, {0x18, 0xF0}, 0xFFF2},                       // JR back from 0000H
        {0x0001, {0x10, 0x80}, 0x10000 + 3 - 128},            // DJNZ to below zero
        {0xFFF0, {0x18, 0x7F}, 0xFFF0 + 2 + 0x7F - 0x10000},  // JR forward past FFFFH
    };
    for (const auto& j : jumps) {
        Cpu cpu;
        cpu.Load(j.at, j.code);
        cpu.m.PC = j.at;
        cpu.m.B = 2;
        cpu.Step();
        EXPECT_EQ(cpu.m.PC, j.pc) << j.at;
    }

    // EX (SP),HL with SP at FFFFH reaches cell 0, not the mirror cells.
    Cpu e;
    e.Load(0x100, {0xE3});
    e.m.PC = 0x100;
    e.m.SP = 0xFFFF;
    SetHL(e.m, 0xABCD);
    e.m.MemoryImage[0xFFFF] = 0x11;
    e.m.MemoryImage[0x0000] = 0x22;
    e.Step();
    EXPECT_EQ(RegHL(e.m), 0x2211);
    EXPECT_EQ(e.m.MemoryImage[0xFFFF], 0xCD);
    EXPECT_EQ(e.m.MemoryImage[0x0000], 0xAB);
    EXPECT_EQ(e.m.MemoryImage[0x10000], 0);

    // A PC set out of range by other code is wrapped before the fetch.
    for (int pc : {0x10000 + 0x20, 0x100FF + 0x21, -0x10000 + 0x20}) {
        Cpu w;
        w.Load(0x0020, {0x3E, 0x42});  // LD A,42H
        w.m.PC = pc;
        w.Step();
        EXPECT_EQ(w.m.A, pc == 0x100FF + 0x21 ? 0 : 0x42) << pc;
        EXPECT_GE(w.m.PC, 0);
        EXPECT_LE(w.m.PC, 0xFFFF);
    }

    // A register pair holding 256 in its high half (from a pushed return address)
    // still addresses memory inside 0..FFFFH.
    Cpu h;
    h.Load(0x100, {0x77});  // LD (HL),A
    h.m.PC = 0x100;
    h.m.H = 256;
    h.m.L = 0x10;
    h.m.A = 0x5A;
    h.Step();
    EXPECT_EQ(h.m.MemoryImage[0x0010], 0x5A);
}

}  // namespace
}  // namespace mb::test
