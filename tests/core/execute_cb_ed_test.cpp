// The CB and ED groups: shifts, bit operations, the ED specials and the block
// instructions that repeat as separate instructions.
#include <gtest/gtest.h>

#include "core/execute.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

TEST(ExecuteCb, ShiftsAndRotates) {
    RunRows({
        {"RLC B", "CB 00", "F=HN B=81", "F=PC B=03 R=02", 8, 2},
        {"RRC C", "CB 09", "F=- C=01", "F=SC C=80", 8, 2},
        {"RL D carry out to zero", "CB 12", "F=- D=80", "F=ZPC D=00", 8, 2},
        {"RR E carry in", "CB 1B", "F=C E=01", "F=SC E=80", 8, 2},
        {"SLA H", "CB 24", "F=- H=88", "F=C H=10", 8, 2},
        {"SRA L keeps bit 7", "CB 2D", "F=- L=81", "F=SPC L=C0", 8, 2},
        {"SLL A puts 1 in bit 0", "CB 37", "A=80 F=-", "A=01 F=C", 8, 2},
        {"SRL A", "CB 3F", "A=01 F=-", "A=00 F=ZPC", 8, 2},
        {"RL A X and Y from result", "CB 17", "A=14 F=-", "A=28 F=YXP", 8, 2},
        {"RLC (HL)", "CB 06", "F=- HL=9000 (9000)=81", "F=PC (9000)=03", 15, 2},
        {"SRL (HL)", "CB 3E", "F=- HL=9000 (9000)=06", "F=P (9000)=03", 15, 2},
    });
}

TEST(ExecuteCb, BitResSet) {
    RunRows({
        {"BIT 7,A", "CB 7F", "A=80 F=NC", "A=80 F=SHC", 8, 2},
        {"BIT 0,B clear", "CB 40", "F=- B=FE", "F=ZHP", 8, 2},
        {"BIT 5,A X Y from the masked value", "CB 6F", "A=28 F=-", "F=YH", 8, 2},
        {"BIT 3,(HL)", "CB 5E", "F=- HL=9000 (9000)=FF", "F=HX (9000)=FF", 12, 2},
        {"RES 0,C no flags", "CB 81", "F=- C=FF", "F=- C=FE", 8, 2},
        {"SET 7,(HL)", "CB FE", "F=Z HL=9000 (9000)=01", "F=Z (9000)=81", 15, 2},
        {"RES 7,(HL)", "CB BE", "HL=9000 (9000)=FF", "(9000)=7F", 15, 2},
        {"SET 3,E", "CB DB", "E=00", "E=08", 8, 2},
    });
}

TEST(ExecuteEd, Specials) {
    RunRows({
        {"IN B,(C) sets PrevA from B", "ED 40", "F=HNC BC=1234 port(34)=80", "F=SC B=80 R=02", 12,
         2},
        {"IN A,(C) zero", "ED 78", "A=09 F=- C=10", "A=00 F=ZP", 12, 2},
        {"IN (C) flags only", "ED 70", "A=01 F=- C=10 port(10)=81", "A=01 F=SP", 12, 2},
        {"OUT (C),D port is C alone", "ED 51", "BC=7720 D=42", "port(20)=42", 12, 2},
        {"OUT (C),0 sends A", "ED 71", "A=05 C=21", "port(21)=05", 12, 2},
        {"NEG leaves N", "ED 44", "A=01 F=-", "A=FF F=SHC", 8, 2},
        {"NEG of 80H", "ED 44", "A=80 F=-", "A=80 F=SPC", 8, 2},
        {"NEG of 0 keeps N X Y", "ED 44", "A=00 F=YXNC", "A=00 F=ZYXN", 8, 2},
        {"NEG twin 4C", "ED 4C", "A=02 F=-", "A=FE F=SHC", 8, 2},
        {"LD I,A", "ED 47", "A=3F F=-", "F=- I=3F", 9, 2},
        {"LD A,I P from IFF2", "ED 57", "F=C I=80", "A=80 F=SC", 9, 2},
        {"LD A,R after two rises", "ED 5F", "F=- R=26", "A=28 F=YX", 9, 2},
        {"LD R,A", "ED 4F", "A=55", "R=55", 9, 2},
        {"RRD", "ED 67", "A=84 F=C HL=9000 (9000)=20", "A=80 F=SC (9000)=42", 18, 2},
        {"RLD", "ED 6F", "A=7A F=- HL=9000 (9000)=31", "A=73 F=Y (9000)=1A", 18, 2},
        {"LD (nn),BC", "ED 43 00 90", "BC=1234", "(9000)=34,12", 20, 4},
        {"LD DE,(nn)", "ED 5B 00 90", "(9000)=78,56", "DE=5678", 20, 4},
        {"LD (nn),HL ED form", "ED 63 10 90", "HL=ABCD", "(9010)=CD,AB", 20, 4},
        {"LD SP,(nn)", "ED 7B 00 90", "(9000)=34,12", "SP=1234", 20, 4},
    });
}

TEST(ExecuteEd, InterruptModes) {
    struct {
        int opcode, mode;
    } cases[] = {{0x46, 0}, {0x56, 1}, {0x5E, 2}, {0x4E, 0},
                 {0x66, 0}, {0x6E, 0}, {0x76, 1}, {0x7E, 2}};
    for (auto c : cases) {
        Cpu cpu;
        cpu.Load(0, {0xED, c.opcode});
        cpu.m.InterruptMode = c.mode == 0 ? 2 : 0;  // so that every case changes it
        cpu.Step();
        EXPECT_EQ(cpu.m.InterruptMode, c.mode) << std::hex << c.opcode;
        EXPECT_EQ(cpu.m.TStates, 8);
        EXPECT_EQ(cpu.m.PC, 2);
    }
}

TEST(ExecuteEd, ReturnsFromInterrupts) {
    struct {
        const char* name;
        int opcode, iff2;
        bool nmiEnabled, intEnabled;
    } cases[] = {
        {"RETN with IFF2 set", 0x45, 1, true, true},
        {"RETN with IFF2 clear", 0x45, 0, true, false},
        {"RETN twin 55", 0x55, 1, true, true},
        {"RETI leaves the commands", 0x4D, 1, false, false},
    };
    for (auto c : cases) {
        Cpu cpu;
        Machine& m = cpu.m;
        cpu.Load(0, {0xED, c.opcode});
        m.SP = 0x9000;
        m.MemoryImage[0x9000] = 0x34;
        m.MemoryImage[0x9001] = 0x12;
        m.IFF1 = 0;
        m.IFF2 = c.iff2;
        cpu.Step();
        EXPECT_EQ(m.PC, 0x1234) << c.name;
        EXPECT_EQ(m.SP, 0x9002) << c.name;
        EXPECT_EQ(m.IFF1, c.iff2) << c.name;
        EXPECT_EQ(m.TStates, 14) << c.name;
        EXPECT_EQ(m.NmiCommandEnabled, c.nmiEnabled) << c.name;
        EXPECT_EQ(m.IntCommandEnabled, c.intEnabled) << c.name;
    }
}

TEST(ExecuteEd, SingleBlockSteps) {
    RunRows({
        {"LDI", "ED A0", "F=SHNC BC=0002 DE=A000 HL=9000 (9000)=55",
         "F=SPC BC=0001 DE=A001 HL=9001 (A000)=55", 16, 2},
        {"LDD to zero count", "ED A8", "F=P BC=0001 DE=A000 HL=9000 (9000)=66",
         "F=- BC=0000 DE=9FFF HL=8FFF (A000)=66", 16, 2},
        {"CPI match keeps C X Y", "ED A1", "A=10 F=XC BC=0005 HL=9000 (9000)=10",
         "F=ZXPNC BC=0004 HL=9001", 16, 2},
        {"CPD half borrow", "ED A9", "A=10 F=- BC=0001 HL=9000 (9000)=01", "F=HN C=00 HL=8FFF", 16,
         2},
        {"INI", "ED A2", "F=- BC=0210 HL=9000 port(10)=80", "F=N B=01 HL=9001 (9000)=80", 16, 2},
        {"IND to zero", "ED AA", "F=- BC=0110 HL=9000 port(10)=7F", "F=Z B=00 HL=8FFF (9000)=7F",
         16, 2},
        {"OUTI", "ED A3", "F=- BC=0120 HL=9000 (9000)=41", "F=Z B=00 HL=9001 port(20)=41", 16, 2},
        {"OUTD", "ED AB", "F=- BC=0320 HL=9000 (9000)=C1", "F=N B=02 HL=8FFF port(20)=C1", 16, 2},
    });
}

TEST(ExecuteEd, InSetsPrevAFromB) {
    for (int opcode : {0x40, 0x78, 0xA2}) {
        Cpu cpu;
        cpu.Load(0, {0xED, opcode});
        cpu.m.B = 0x7E;
        cpu.m.A = 0x01;
        cpu.m.H = 0x90;
        cpu.Step();
        EXPECT_EQ(cpu.m.PrevA, 0x7E) << std::hex << opcode;
    }
}

// Each round of a repeating block instruction is one instruction: R rises by 2,
// the count by 1, 21 T-states while it repeats and 16 for the last round.
struct Round {
    int pc, t, r;
};

void ExpectRounds(Cpu& cpu, const std::vector<Round>& rounds) {
    int n = 0;
    for (const Round& round : rounds) {
        cpu.Step();
        ++n;
        EXPECT_EQ(cpu.m.PC, round.pc) << "round " << n;
        EXPECT_EQ(cpu.m.TStates, round.t) << "round " << n;
        EXPECT_EQ(cpu.m.R, round.r) << "round " << n;
        EXPECT_EQ(cpu.m.InstructionCount, n);
    }
}

TEST(ExecuteEd, RepeatingBlockInstructions) {
    {
        SCOPED_TRACE("LDIR with BC = 1");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xB0});
        SetBC(cpu.m, 1);
        ExpectRounds(cpu, {{2, 16, 2}});
    }
    {
        SCOPED_TRACE("LDIR with BC = 2");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xB0});
        SetBC(cpu.m, 2);
        SetHL(cpu.m, 0x9000);
        SetDE(cpu.m, 0xA000);
        cpu.m.MemoryImage[0x9000] = 1;
        cpu.m.MemoryImage[0x9001] = 2;
        ExpectRounds(cpu, {{0, 21, 2}, {2, 16, 4}});
        EXPECT_EQ(cpu.m.MemoryImage[0xA001], 2);
        EXPECT_EQ(cpu.m.ClockCycles, 37);
        EXPECT_EQ(cpu.m.FlagP, 0);
    }
    {
        SCOPED_TRACE("CPIR stops on a match");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xB1});
        cpu.Load(0x9000, {1, 2, 3, 4});
        cpu.m.A = 3;
        SetBC(cpu.m, 10);
        SetHL(cpu.m, 0x9000);
        ExpectRounds(cpu, {{0, 21, 2}, {0, 21, 4}, {2, 16, 6}});
        EXPECT_EQ(cpu.m.FlagZ, 1);
        EXPECT_EQ(RegBC(cpu.m), 7);
        EXPECT_EQ(RegHL(cpu.m), 0x9003);
        EXPECT_EQ(cpu.m.FlagP, 1);
    }
    {
        SCOPED_TRACE("CPDR runs out");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xB9});
        cpu.m.A = 9;
        SetBC(cpu.m, 2);
        SetHL(cpu.m, 0x9001);
        ExpectRounds(cpu, {{0, 21, 2}, {2, 16, 4}});
        EXPECT_EQ(cpu.m.FlagZ, 0);
        EXPECT_EQ(cpu.m.FlagP, 0);
        EXPECT_EQ(RegHL(cpu.m), 0x8FFF);
    }
    {
        SCOPED_TRACE("INIR");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xB2});
        cpu.m.B = 2;
        cpu.m.C = 0x30;
        cpu.m.PortImage[0x30] = 0x44;
        SetHL(cpu.m, 0x9000);
        ExpectRounds(cpu, {{0, 21, 2}, {2, 16, 4}});
        EXPECT_EQ(cpu.m.MemoryImage[0x9001], 0x44);
        EXPECT_EQ(cpu.m.FlagZ, 1);
    }
    {
        SCOPED_TRACE("OTDR");
        Cpu cpu;
        cpu.Load(0, {0xED, 0xBB});
        cpu.Load(0x9000, {0x11, 0x22, 0x33});
        cpu.m.B = 3;
        cpu.m.C = 0x31;
        SetHL(cpu.m, 0x9002);
        ExpectRounds(cpu, {{0, 21, 2}, {0, 21, 4}, {2, 16, 6}});
        EXPECT_EQ(cpu.m.PortImage[0x31], 0x11);
        EXPECT_EQ(RegHL(cpu.m), 0x8FFF);
    }
}

TEST(ExecuteEd, LdirWithZeroCountMovesAllMemory) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Program({0xED, 0xB0});
    SetBC(m, 0);
    SetHL(m, 0x1000);  // copies every byte onto itself, code included
    SetDE(m, 0x1000);
    int rounds = 0;
    while (m.PC == kOrigin && rounds < 70000) {
        cpu.Step();
        ++rounds;
    }
    EXPECT_EQ(rounds, 65536);
    EXPECT_EQ(RegBC(m), 0);
    EXPECT_EQ(RegHL(m), 0x1000);
    EXPECT_EQ(m.ClockCycles, 65535 * 21 + 16);
}

}  // namespace
}  // namespace mb::test
