#include "test_support.h"

namespace mb::testing {
namespace {

using Encoding = AssemblerFixture;

TEST_F(Encoding, StatementsToBytesOrMessages) {
    struct Case {
        const char* statement;
        const char* want;
    } cases[] = {
        {" LD A,300",
         "Invalid argument of the instruction. '12Ch (300)' (-80-FFh (-128-255) value expected)"},
        {" LD A,-128", "3E 80"},
        {" LD A,255", "3E FF"},
        {" ld a,'A'", "3E 41"},
        {" LD HL,-1", "21 FF FF"},
        {" LD HL,-32769",
         "Invalid argument of the instruction. '-8001h (-32769)' (-8000-FFFFh (-32768-65535) value "
         "expected)"},
        {" JP -1",
         "Invalid argument of the instruction. '-1h (-1)' (0-FFFFh (0-65535) value expected)"},
        {" LD A,(IX-1)", "DD 7E FF"},
        {" LD A,(IX+128)",
         "Invalid argument of the instruction. '80h (128)' (-80-7Fh (-128-127) value expected)"},
        {" LD A,(IX+0)", "DD 7E 00"},
        {" LD A,(IX)", "Unrecognized instruction/syntax. 'LD A,(IX)'"},
        {" LD (IX+2),5", "DD 36 02 05"},
        {" LD (IY-2),A", "FD 77 FE"},
        {" LD A,(1234H)", "3A 34 12"},
        {" LD A,(1+2)*3", "3E 09"},
        {" LD BC,(5)", "ED 4B 05 00"},
        {" LD (5),SP", "ED 73 05 00"},
        {" RST 38H", "FF"},
        {" RST 0", "C7"},
        {" RST 1",
         "Invalid argument of the instruction. '1h (1)' (00h, 08h, 10h, 18h, 20h, 28h, 30h or 38h "
         "value expected)"},
        {" OUT (C),0", "Unofficial instruction. 'OUT (C),0'"},
        {" OUT (C),1", "Unrecognized instruction/syntax. 'OUT (C),1'"},
        {" SLL A", "Unofficial instruction. 'SLL A'"},
        {" BIT 7,(IY-1)", "FD CB FF 7E"},
        {" BIT 8,A", "Unrecognized instruction/syntax. 'BIT 8,A'"},
        {" SET 2+1,B", "CB D8"},
        {" IM 1", "ED 56"},
        {" EX AF,AF'", "08"},
        {" EX (SP),IX", "DD E3"},
        {" IN A,(0FEH)", "DB FE"},
        {" IN E,(C)", "ED 58"},
        {" JP (HL)", "E9"},
        {" DJNZ $+0", "10 FE"},
        {" JR $", "Invalid argument of the instruction. '256' (-126-129 value expected)"},
        // An address at the bottom of the 32-bit range lies further below the
        // program counter than an int can say.
        {" JR $-2147483648-$",
         "Invalid argument of the instruction. '-2147483904' (-126-129 value expected)"},
        {" DJNZ $+2147483646-$",
         "Invalid argument of the instruction. '2147483390' (-126-129 value expected)"},
        {" SUB A,B", "Unrecognized instruction/syntax. 'SUB A,B'"},
        {" LD B,C,D", "Unrecognized instruction/syntax. 'LD B,C,D'"},
        {" FOO 1", "Unrecognized instruction/syntax. 'FOO <arg>'"},
        {" DB", "Unrecognized instruction/syntax. 'DB'"},
        {" DB \"AB\",0", "41 42 00"},
        {" DB 'A'", "41"},
        {" DB \"\"", ""},
        {" DB 1,,2", "01 00 02"},
        {" DB 1,2,", "01 02"},
        {" DB \"it's\"", "69 74 27 73"},
        {" DB 256",
         "Invalid argument of the DB directive. '256' (-80-FFh (-128-255) value expected)"},
        {" DW 1234H,-1", "34 12 FF FF"},
        {" DW $,$", "00 01 02 01"},
        {" DW 70000",
         "Invalid argument of the DW directive. '70000' (-8000-FFFFh (-32768-65535) value "
         "expected)"},
        {" DS 3,0FFh", "FF FF FF"},
        {" DS 0", ""},
        {" DS 2", "00 00"},
        {" DS -1", "Invalid argument of the DS directive. '-1' (0-FFFFh value expected)"},
        {" ORG 10000H", "Invalid argument of the ORG directive. '10000H' (0-FFFFh value expected)"},
        {" LD B,XYZ", "Invalid argument of the instruction. 'XYZ'"},
    };
    for (const auto& c : cases) EXPECT_EQ(One(c.statement), c.want) << c.statement;
}

// Every encoding form of the Z80, with the bytes of the processor's published
// opcode tables: all loads of the ED group, and one or more statements of each
// other form. Operands are chosen so that a byte in the wrong place shows.
TEST_F(Encoding, EveryFormAgainstThePublishedOpcodes) {
    struct Case {
        const char* statement;
        const char* bytes;
    } cases[] = {
        // Loads of the ED group
        {"LD I,A", "ED 47"},
        {"LD A,I", "ED 57"},
        {"LD R,A", "ED 4F"},
        {"LD A,R", "ED 5F"},
        {"LD BC,(1234H)", "ED 4B 34 12"},
        {"LD DE,(1234H)", "ED 5B 34 12"},
        {"LD SP,(1234H)", "ED 7B 34 12"},
        {"LD (1234H),BC", "ED 43 34 12"},
        {"LD (1234H),DE", "ED 53 34 12"},
        {"LD (1234H),SP", "ED 73 34 12"},
        {"LDI", "ED A0"},
        {"LDIR", "ED B0"},
        {"LDD", "ED A8"},
        {"LDDR", "ED B8"},
        // 8-bit loads
        {"LD B,C", "41"},
        {"LD H,L", "65"},
        {"LD E,A", "5F"},
        {"LD A,(HL)", "7E"},
        {"LD (HL),E", "73"},
        {"LD D,0A5H", "16 A5"},
        {"LD (HL),0A5H", "36 A5"},
        {"LD C,(IX+5)", "DD 4E 05"},
        {"LD L,(IY-3)", "FD 6E FD"},
        {"LD (IX+5),H", "DD 74 05"},
        {"LD (IY+7),A", "FD 77 07"},
        {"LD (IX+5),0A5H", "DD 36 05 A5"},
        {"LD (IY-1),7", "FD 36 FF 07"},
        {"LD A,(BC)", "0A"},
        {"LD A,(DE)", "1A"},
        {"LD (BC),A", "02"},
        {"LD (DE),A", "12"},
        {"LD A,(1234H)", "3A 34 12"},
        {"LD (1234H),A", "32 34 12"},
        // 16-bit loads
        {"LD BC,1234H", "01 34 12"},
        {"LD DE,1234H", "11 34 12"},
        {"LD HL,1234H", "21 34 12"},
        {"LD SP,1234H", "31 34 12"},
        {"LD IX,1234H", "DD 21 34 12"},
        {"LD IY,1234H", "FD 21 34 12"},
        {"LD HL,(1234H)", "2A 34 12"},
        {"LD IX,(1234H)", "DD 2A 34 12"},
        {"LD IY,(1234H)", "FD 2A 34 12"},
        {"LD (1234H),HL", "22 34 12"},
        {"LD (1234H),IX", "DD 22 34 12"},
        {"LD (1234H),IY", "FD 22 34 12"},
        {"LD SP,HL", "F9"},
        {"LD SP,IX", "DD F9"},
        {"LD SP,IY", "FD F9"},
        {"PUSH BC", "C5"},
        {"PUSH DE", "D5"},
        {"PUSH HL", "E5"},
        {"PUSH AF", "F5"},
        {"POP BC", "C1"},
        {"POP AF", "F1"},
        {"PUSH IX", "DD E5"},
        {"POP IY", "FD E1"},
        // Exchanges, block transfer and search
        {"EX DE,HL", "EB"},
        {"EX AF,AF'", "08"},
        {"EXX", "D9"},
        {"EX (SP),HL", "E3"},
        {"EX (SP),IX", "DD E3"},
        {"EX (SP),IY", "FD E3"},
        {"CPI", "ED A1"},
        {"CPIR", "ED B1"},
        {"CPD", "ED A9"},
        {"CPDR", "ED B9"},
        // 8-bit arithmetic and logic
        {"ADD A,B", "80"},
        {"ADC A,(HL)", "8E"},
        {"SUB E", "93"},
        {"SBC A,A", "9F"},
        {"AND H", "A4"},
        {"XOR L", "AD"},
        {"OR C", "B1"},
        {"CP D", "BA"},
        {"ADD A,(IX+5)", "DD 86 05"},
        {"ADC A,(IY+1)", "FD 8E 01"},
        {"SUB (IX+2)", "DD 96 02"},
        {"SBC A,(IY-2)", "FD 9E FE"},
        {"AND (IX+3)", "DD A6 03"},
        {"XOR (IY+4)", "FD AE 04"},
        {"OR (IX+6)", "DD B6 06"},
        {"CP (IY+7)", "FD BE 07"},
        {"ADD A,0A5H", "C6 A5"},
        {"ADC A,0A5H", "CE A5"},
        {"SUB 0A5H", "D6 A5"},
        {"SBC A,0A5H", "DE A5"},
        {"AND 0A5H", "E6 A5"},
        {"XOR 0A5H", "EE A5"},
        {"OR 0A5H", "F6 A5"},
        {"CP 0A5H", "FE A5"},
        {"INC B", "04"},
        {"INC A", "3C"},
        {"INC (HL)", "34"},
        {"DEC C", "0D"},
        {"DEC L", "2D"},
        {"DEC (HL)", "35"},
        {"INC (IX+5)", "DD 34 05"},
        {"DEC (IY-1)", "FD 35 FF"},
        // General purpose and CPU control
        {"DAA", "27"},
        {"CPL", "2F"},
        {"NEG", "ED 44"},
        {"CCF", "3F"},
        {"SCF", "37"},
        {"NOP", "00"},
        {"HALT", "76"},
        {"DI", "F3"},
        {"EI", "FB"},
        {"IM 0", "ED 46"},
        {"IM 1", "ED 56"},
        {"IM 2", "ED 5E"},
        // 16-bit arithmetic
        {"ADD HL,BC", "09"},
        {"ADD HL,DE", "19"},
        {"ADD HL,HL", "29"},
        {"ADD HL,SP", "39"},
        {"ADC HL,BC", "ED 4A"},
        {"ADC HL,SP", "ED 7A"},
        {"SBC HL,DE", "ED 52"},
        {"SBC HL,HL", "ED 62"},
        {"ADD IX,BC", "DD 09"},
        {"ADD IX,IX", "DD 29"},
        {"ADD IY,DE", "FD 19"},
        {"ADD IY,IY", "FD 29"},
        {"ADD IY,SP", "FD 39"},
        {"INC BC", "03"},
        {"INC SP", "33"},
        {"DEC DE", "1B"},
        {"DEC HL", "2B"},
        {"INC IX", "DD 23"},
        {"DEC IY", "FD 2B"},
        // Rotates and shifts
        {"RLCA", "07"},
        {"RLA", "17"},
        {"RRCA", "0F"},
        {"RRA", "1F"},
        {"RLD", "ED 6F"},
        {"RRD", "ED 67"},
        {"RLC B", "CB 00"},
        {"RRC C", "CB 09"},
        {"RL D", "CB 12"},
        {"RR E", "CB 1B"},
        {"SLA H", "CB 24"},
        {"SRA L", "CB 2D"},
        {"SRL A", "CB 3F"},
        {"RLC (HL)", "CB 06"},
        {"SRL (HL)", "CB 3E"},
        {"RLC (IX+5)", "DD CB 05 06"},
        {"RR (IY-2)", "FD CB FE 1E"},
        {"SRA (IX+1)", "DD CB 01 2E"},
        {"SRL (IY+3)", "FD CB 03 3E"},
        // Bit set, reset and test
        {"BIT 0,B", "CB 40"},
        {"BIT 7,A", "CB 7F"},
        {"BIT 3,(HL)", "CB 5E"},
        {"RES 5,C", "CB A9"},
        {"RES 0,(HL)", "CB 86"},
        {"SET 4,E", "CB E3"},
        {"SET 7,(HL)", "CB FE"},
        {"BIT 2,(IX+5)", "DD CB 05 56"},
        {"RES 6,(IY+1)", "FD CB 01 B6"},
        {"SET 1,(IX-4)", "DD CB FC CE"},
        // Jumps, calls and returns
        {"JP 1234H", "C3 34 12"},
        {"JP NZ,1234H", "C2 34 12"},
        {"JP Z,1234H", "CA 34 12"},
        {"JP NC,1234H", "D2 34 12"},
        {"JP C,1234H", "DA 34 12"},
        {"JP PO,1234H", "E2 34 12"},
        {"JP PE,1234H", "EA 34 12"},
        {"JP P,1234H", "F2 34 12"},
        {"JP M,1234H", "FA 34 12"},
        {"JP (HL)", "E9"},
        {"JP (IX)", "DD E9"},
        {"JP (IY)", "FD E9"},
        {"JR $+5", "18 03"},
        {"JR NZ,$+5", "20 03"},
        {"JR Z,$+5", "28 03"},
        {"JR NC,$+5", "30 03"},
        {"JR C,$+5", "38 03"},
        {"DJNZ $+5", "10 03"},
        {"CALL 1234H", "CD 34 12"},
        {"CALL NZ,1234H", "C4 34 12"},
        {"CALL Z,1234H", "CC 34 12"},
        {"CALL NC,1234H", "D4 34 12"},
        {"CALL C,1234H", "DC 34 12"},
        {"CALL PO,1234H", "E4 34 12"},
        {"CALL PE,1234H", "EC 34 12"},
        {"CALL P,1234H", "F4 34 12"},
        {"CALL M,1234H", "FC 34 12"},
        {"RET", "C9"},
        {"RET NZ", "C0"},
        {"RET Z", "C8"},
        {"RET NC", "D0"},
        {"RET C", "D8"},
        {"RET PO", "E0"},
        {"RET PE", "E8"},
        {"RET P", "F0"},
        {"RET M", "F8"},
        {"RETI", "ED 4D"},
        {"RETN", "ED 45"},
        {"RST 0", "C7"},
        {"RST 8", "CF"},
        {"RST 10H", "D7"},
        {"RST 18H", "DF"},
        {"RST 20H", "E7"},
        {"RST 28H", "EF"},
        {"RST 30H", "F7"},
        {"RST 38H", "FF"},
        // Input and output
        {"IN A,(0A5H)", "DB A5"},
        {"OUT (0A5H),A", "D3 A5"},
        {"IN B,(C)", "ED 40"},
        {"IN C,(C)", "ED 48"},
        {"IN D,(C)", "ED 50"},
        {"IN H,(C)", "ED 60"},
        {"IN L,(C)", "ED 68"},
        {"IN A,(C)", "ED 78"},
        {"OUT (C),B", "ED 41"},
        {"OUT (C),C", "ED 49"},
        {"OUT (C),H", "ED 61"},
        {"OUT (C),A", "ED 79"},
        {"INI", "ED A2"},
        {"INIR", "ED B2"},
        {"IND", "ED AA"},
        {"INDR", "ED BA"},
        {"OUTI", "ED A3"},
        {"OTIR", "ED B3"},
        {"OUTD", "ED AB"},
        {"OTDR", "ED BB"},
        // Unofficial forms
        {"IN (C)", "ED 70"},
        {"OUT (C),0", "ED 71"},
        {"SLL B", "CB 30"},
        {"SLL (HL)", "CB 36"},
        {"SLL (IX+5)", "DD CB 05 36"},
        {"LD B,IXh", "DD 44"},
        {"LD A,IXl", "DD 7D"},
        {"LD IXh,C", "DD 61"},
        {"LD IXl,A", "DD 6F"},
        {"LD IXh,IXl", "DD 65"},
        {"LD IYl,IYh", "FD 6C"},
        {"LD IXh,0A5H", "DD 26 A5"},
        {"LD IYl,0A5H", "FD 2E A5"},
        {"ADD A,IXh", "DD 84"},
        {"SUB IYl", "FD 95"},
        {"CP IXl", "DD BD"},
        {"INC IXh", "DD 24"},
        {"DEC IYl", "FD 2D"},
        {"RLC (IX+5),B", "DD CB 05 00"},
        {"SRL (IY+1),A", "FD CB 01 3F"},
        {"SET 0,(IX+5),C", "DD CB 05 C1"},
        {"RES 7,(IY-1),L", "FD CB FF BD"},
    };
    options.UnofficialInstructions = true;
    std::string source = " ORG 1000H\n";
    for (const auto& c : cases) source += std::string(" ") + c.statement + "\n";
    Write("prog.asm", source);
    EXPECT_EQ(Assemble(), 0);
    int fileLine = 2;
    for (const auto& c : cases) {
        const SourceLine& line = LineAt(fileLine++);
        EXPECT_EQ(line.OpcodeText, c.bytes) << c.statement << " " << line.ErrorText;
    }
}

TEST_F(Encoding, UnofficialFormsWithTheOptionOn) {
    options.UnofficialInstructions = true;
    struct Case {
        const char* statement;
        const char* want;
    } cases[] = {
        {" OUT (C),0", "ED 71"},
        {" IN (C)", "ED 70"},
        {" SLL (IX+3)", "DD CB 03 36"},
        {" LD IXh,5", "DD 26 05"},
        {" LD B,IYl", "FD 45"},
        {" ADD A,IXl", "DD 85"},
        {" RL (IY+1),C", "FD CB 01 11"},
        {" RES 3,(IX-2),A", "DD CB FE 9F"},
        {" SLL A", "CB 37"},
    };
    for (const auto& c : cases) EXPECT_EQ(One(c.statement), c.want) << c.statement;
}

TEST_F(Encoding, RelativeJumps) {
    Write("prog.asm",
          " ORG 100h\n"
          " JR NEXT\n"  // label one byte behind the start: distance 1, byte FF
          "NEXT: JR $+2\n"
          " JR 2\n"
          " JR Z,BACK\n"
          "BACK: DJNZ BACK\n"
          " JR *-2\n");
    EXPECT_EQ(Assemble(), 0);
    EXPECT_EQ(LineAt(2).OpcodeText, "18 00");
    EXPECT_EQ(LineAt(3).OpcodeText, "18 00");
    EXPECT_EQ(LineAt(4).OpcodeText, "18 00");
    EXPECT_EQ(LineAt(5).OpcodeText, "28 00");
    EXPECT_EQ(LineAt(6).OpcodeText, "10 FE");
    EXPECT_EQ(LineAt(7).OpcodeText, "18 FC");

    Write("high.asm", " ORG 8000h\n JR $\n JR LOOP\nLOOP: JR LOOP+130\n");
    EXPECT_EQ(Assemble("high.asm"), 2);
    EXPECT_EQ(LineAt(2).ErrorText,
              "Invalid argument of the instruction. '32768' (-126-129 value expected)");
    EXPECT_EQ(LineAt(3).OpcodeText, "18 00");
    EXPECT_EQ(LineAt(4).ErrorText,
              "Invalid argument of the instruction. '130' (-126-129 value expected)");
}

// The byte of a relative jump is the distance from the instruction's start minus 2,
// which must fit -128 to 127: distances from -126 to 129.
TEST_F(Encoding, RelativeJumpRangeAtBothEnds) {
    const std::string below = " (-126-129 value expected)";
    struct Case {
        const char* statement;  // at 1000h
        int displacement;       // of the byte, distance - 2
        std::string want;
    } cases[] = {
        {" JR $-124", -126, "18 82"},
        {" JR $-125", -127, "18 81"},
        {" JR $-126", -128, "18 80"},
        {" JR $-127", -129, "Invalid argument of the instruction. '-127'" + below},
        {" JR $+128", 126, "18 7E"},
        {" JR $+129", 127, "18 7F"},
        {" JR $+130", 128, "Invalid argument of the instruction. '130'" + below},
        // A label is an address too; a plain number is the distance itself.
        {" JR T\nT EQU 1000h-126", -128, "18 80"},
        {" JR T\nT EQU 1000h-127", -129, "Invalid argument of the instruction. '-127'" + below},
        {" JR T\nT EQU 1000h+129", 127, "18 7F"},
        {" JR T\nT EQU 1000h+130", 128, "Invalid argument of the instruction. '130'" + below},
        {" JR -126", -128, "18 80"},
        {" JR -127", -129, "Invalid argument of the instruction. '-127'" + below},
        {" JR 129", 127, "18 7F"},
        {" JR 130", 128, "Invalid argument of the instruction. '130'" + below},
        // Every relative form has the same range.
        {" DJNZ $-126", -128, "10 80"},
        {" DJNZ $-127", -129, "Invalid argument of the instruction. '-127'" + below},
        {" JR NZ,$+129", 127, "20 7F"},
        {" JR Z,$-126", -128, "28 80"},
        {" JR NC,$+130", 128, "Invalid argument of the instruction. '130'" + below},
        {" JR C,$-127", -129, "Invalid argument of the instruction. '-127'" + below},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.statement);
        EXPECT_EQ(One(c.statement, 0x1000), c.want) << "displacement " << c.displacement;
    }
}

TEST_F(Encoding, LabelsAndTheirErrors) {
    Write("prog.asm",
          "A1: LD A,5\n"
          "A2 LD A,6\n"
          "A3:LD A,7\n"
          "LOOP:\n"
          "A1 NOP\n"
          "LD NOP\n"
          "DEFB NOP\n"
          "  NAME EQU 5\n"
          "VALUE = NAME+1\n"
          " = 3\n"
          "5abc NOP\n"
          "  INDENTED\n"
          " EQU 3\n");  // left-trimmed, so EQU stands in the label column
    EXPECT_EQ(Assemble(), 7);
    const Symbols& s = assembler->Session().symbols;
    EXPECT_EQ(s.Value(s.FindLabel("A1")), 0);
    EXPECT_EQ(s.Value(s.FindLabel("a2")), 2);
    EXPECT_EQ(s.Value(s.FindLabel("A3")), 4);
    EXPECT_EQ(LineAt(3).OpcodeText, "3E 07");
    EXPECT_EQ(s.Value(s.FindLabel("LOOP")), 6);
    EXPECT_EQ(LineAt(5).ErrorText, "Duplicate label.");
    EXPECT_EQ(LineAt(6).ErrorText, "Instruction in label column.");
    EXPECT_EQ(LineAt(7).ErrorText, "Reserved keyword in label column.");
    EXPECT_EQ(s.Value(s.FindLabel("NAME")), 5);
    EXPECT_EQ(s.Value(s.FindLabel("VALUE")), 6);
    EXPECT_EQ(LineAt(10).ErrorText, "Label missing. ''");
    EXPECT_EQ(LineAt(11).ErrorText, "Unrecognized instruction/syntax. '5ABC <arg>'");
    EXPECT_EQ(LineAt(12).ErrorText, "Unrecognized instruction/syntax. 'INDENTED'");
    EXPECT_EQ(LineAt(13).ErrorText, "Reserved keyword in label column.");
}

TEST_F(Encoding, ForwardEquIsKnownOnlyFromItsLineOn) {
    Write("prog.asm", " LD A,LATER\nLATER EQU LATER2\nLATER2 EQU 3\n LD A,LATER\n");
    // LATER's pass-1 value stays undefined; line 1 fails in pass 2 before line 2 sets it.
    EXPECT_EQ(Assemble(), 1);
    EXPECT_EQ(LineAt(1).ErrorText, "Invalid argument of the instruction. 'LATER'");
    EXPECT_EQ(LineAt(4).OpcodeText, "3E 03");
}

TEST_F(Encoding, DsKeepsTheCountOfPassOne) {
    // X takes its value from a later label only in pass 2, so the count of a DS on
    // X can differ between the passes; the bytes may only fill what pass 1 reserved.
    struct Case {
        const char* ds;
        const char* want;
        int next;  // address of the line behind the DS
    } cases[] = {
        {" DS N,0AAh", "AA AA AA", 3},
        {" DS X&0FFh,0AAh",
         "Invalid argument of the DS directive. 'X&0FFh' (0-FFFFh value expected)", 255},
        {" DS 0FFh-(X&0FFh)",
         "Invalid argument of the DS directive. '0FFh-(X&0FFh)' (0-FFFFh value expected)", 0},
        // Last: a count of two thousand million in pass 2 would take all memory.
        {" DS 2147483652-X",
         "Invalid argument of the DS directive. '2147483652-X' (0-FFFFh value expected)", 5},
    };
    for (const auto& c : cases) {
        Write("prog.asm",
              std::string("X EQU FWD\nN EQU 3\n") + c.ds + "\n NOP\n ORG 300h\nFWD: NOP\n");
        Assemble();
        EXPECT_EQ(LineAt(3).ErrorText.empty() ? LineAt(3).OpcodeText : LineAt(3).ErrorText, c.want)
            << c.ds;
        EXPECT_EQ(LineAt(4).Address, c.next) << c.ds;
        EXPECT_EQ(LineAt(4).OpcodeText, "00") << c.ds;
    }
}

TEST_F(Encoding, EndDoesNotStopAssembly) {
    Write("prog.asm", " NOP\n END\n HALT\n");
    EXPECT_EQ(Assemble(), 0);
    EXPECT_EQ(LineAt(3).OpcodeText, "76");
    EXPECT_EQ(Read("prog.obj"), std::string("\x00\x76", 2));
}

TEST_F(Encoding, SizeLimitAtTheTopOfMemory) {
    Write("fits.asm", " ORG 0FFFEh\n NOP\n NOP\n");
    EXPECT_EQ(Assemble("fits.asm"), 0);
    EXPECT_TRUE(Exists("fits.obj"));

    Write("over.asm", " ORG 0FFFEh\n NOP\n NOP\n NOP\n NOP\n");
    EXPECT_EQ(Assemble("over.asm"), 1);
    EXPECT_EQ(LineAt(4).ErrorText, "The size of the generated code is greater than 64K.");
    EXPECT_EQ(LineAt(4).ErrorSeverity, 2);
    EXPECT_TRUE(LineAt(5).ErrorText.empty());
    EXPECT_TRUE(Exists("over.lst"));
    EXPECT_FALSE(Exists("over.obj"));
    EXPECT_FALSE(Exists("over.hex"));
}

TEST_F(Encoding, PreprocessorRewritesForeignDialects) {
    Write("prog.asm",
          " output \"x.bin\"\n"
          ".org 10h\n"
          "org 20h\n"
          "X := 5\n"
          " *= 30h\n"
          "Y=7\n"
          " org 40h\n");
    EXPECT_EQ(Assemble(), 0);
    const auto& lines = assembler->Session().Lines;
    EXPECT_EQ(lines[1].Text, ";Line removed by ASM preprocessor:  output \"x.bin\"");
    EXPECT_EQ(lines[2].Text,
              " .org 10h ;Line modified by ASM preprocessor (.ORG correction): .org 10h");
    EXPECT_EQ(lines[3].Text,
              " org 20h ;Line modified by ASM preprocessor (ORG correction): org 20h");
    EXPECT_EQ(lines[4].Text, "X = 5 ;Line modified by ASM preprocessor (:= correction): X := 5");
    EXPECT_EQ(lines[5].Text,
              " .ORG 30h ;Line modified by ASM preprocessor (*= correction):  *= 30h");
    EXPECT_EQ(lines[6].Text, "Y = 7");
    EXPECT_EQ(lines[7].Text, " org 40h");
    const Symbols& s = assembler->Session().symbols;
    EXPECT_EQ(s.Value(s.FindLabel("X")), 5);
    EXPECT_EQ(s.Value(s.FindLabel("Y")), 7);
}

TEST_F(Encoding, OrgWithoutArgumentMeansZero) {
    Write("prog.asm", " NOP\n NOP\nSTART .org\n HALT\n");
    EXPECT_EQ(Assemble(), 0);
    EXPECT_EQ(LineAt(3).Text,
              "START .org 0 ;Line modified by ASM preprocessor (ORG correction): START .org");
    EXPECT_EQ(LineAt(4).Address, 0);
}

}  // namespace
}  // namespace mb::testing
