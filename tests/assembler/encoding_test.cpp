#include "test_support.h"

namespace mb::testing {
namespace {

using Encoding = AssemblerFixture;

// Each statement assembled on its own at 100h.
TEST_F(Encoding, StatementsToBytes) {
    const char* const rows[] = {
        "LD A,-128 = 3E 80 | LD A,255 = 3E FF | ld a,'A' = 3E 41 | LD HL,-1 = 21 FF FF",
        "LD A,(IX-1) = DD 7E FF | LD A,(IX+0) = DD 7E 00 | LD A,(1+2)*3 = 3E 09",
        "LD BC,(5) = ED 4B 05 00 | LD (5),SP = ED 73 05 00 | SET 2+1,B = CB D8",
        "IN E,(C) = ED 58 | DJNZ $+0 = 10 FE",
        "DB \"AB\",0 = 41 42 00 | DB 'A' = 41 | DB \"\" = | DB 1,,2 = 01 00 02 | DB 1,2, = 01 02",
        "DB \"it's\" = 69 74 27 73 | DW 1234H,-1 = 34 12 FF FF | DW $,$ = 00 01 02 01",
        "DS 3,0FFh = FF FF FF | DS 0 = | DS 2 = 00 00",
    };
    for (const auto& [statement, bytes] : Entries(rows))
        EXPECT_EQ(One(" " + statement), bytes) << statement;
}

TEST_F(Encoding, StatementsToMessages) {
    const std::string arg = "Invalid argument of the instruction. ";
    const std::pair<const char*, std::string> cases[] = {
        {" LD A,300", arg + "'12Ch (300)' (-80-FFh (-128-255) value expected)"},
        {" LD HL,-32769", arg + "'-8001h (-32769)' (-8000-FFFFh (-32768-65535) value expected)"},
        {" JP -1", arg + "'-1h (-1)' (0-FFFFh (0-65535) value expected)"},
        {" LD A,(IX+128)", arg + "'80h (128)' (-80-7Fh (-128-127) value expected)"},
        {" LD A,(IX)", "Unrecognized instruction/syntax. 'LD A,(IX)'"},
        {" RST 1", arg + "'1h (1)' (00h, 08h, 10h, 18h, 20h, 28h, 30h or 38h value expected)"},
        // Unofficial forms while the option is off
        {" OUT (C),0", "Unofficial instruction. 'OUT (C),0'"},
        {" SLL A", "Unofficial instruction. 'SLL A'"},
        {" IN (C)", "Unofficial instruction. 'IN (C)'"},
        {" LD IXh,IXl", "Unofficial instruction. 'LD IXh,IXl'"},
        {" SET 0,(IY+1),A", "Unofficial instruction. 'SET 0,(IY<arg>),A'"},
        {" OUT (C),1", "Unrecognized instruction/syntax. 'OUT (C),1'"},
        {" BIT 8,A", "Unrecognized instruction/syntax. 'BIT 8,A'"},
        {" JR $", arg + "'256' (-126-129 value expected)"},
        // An address at the bottom of the 32-bit range lies further below the
        // program counter than an int can say.
        {" JR $-2147483648-$", arg + "'-2147483904' (-126-129 value expected)"},
        {" DJNZ $+2147483646-$", arg + "'2147483390' (-126-129 value expected)"},
        {" SUB A,B", "Unrecognized instruction/syntax. 'SUB A,B'"},
        {" LD B,C,D", "Unrecognized instruction/syntax. 'LD B,C,D'"},
        {" FOO 1", "Unrecognized instruction/syntax. 'FOO <arg>'"},
        {" DB", "Unrecognized instruction/syntax. 'DB'"},
        {" DB 256",
         "Invalid argument of the DB directive. '256' (-80-FFh (-128-255) value expected)"},
        {" DW 70000",
         "Invalid argument of the DW directive. '70000' (-8000-FFFFh (-32768-65535) value "
         "expected)"},
        {" DS -1", "Invalid argument of the DS directive. '-1' (0-FFFFh value expected)"},
        {" ORG 10000H", "Invalid argument of the ORG directive. '10000H' (0-FFFFh value expected)"},
        {" LD B,XYZ", arg + "'XYZ'"},
    };
    for (const auto& [statement, want] : cases) EXPECT_EQ(One(statement), want) << statement;
}

// Every encoding form of the Z80, with the bytes of the processor's published
// opcode tables: all loads of the ED group, and one or more statements of each
// other form. Operands are chosen so that a byte in the wrong place shows.
// Each row holds entries "statement = bytes" separated by " | ".
TEST_F(Encoding, EveryFormAgainstThePublishedOpcodes) {
    const char* const rows[] = {
        // Loads of the ED group
        "LD I,A = ED 47 | LD A,I = ED 57 | LD R,A = ED 4F | LD A,R = ED 5F",
        "LD BC,(1234H) = ED 4B 34 12 | LD DE,(1234H) = ED 5B 34 12 | LD SP,(1234H) = ED 7B 34 12",
        "LD (1234H),BC = ED 43 34 12 | LD (1234H),DE = ED 53 34 12 | LD (1234H),SP = ED 73 34 12",
        "LDI = ED A0 | LDIR = ED B0 | LDD = ED A8 | LDDR = ED B8",
        // 8-bit loads
        "LD B,B = 40 | LD B,C = 41 | LD H,L = 65 | LD E,A = 5F | LD A,(HL) = 7E | LD (HL),E = 73",
        "LD D,0A5H = 16 A5 | LD (HL),0A5H = 36 A5 | LD C,(IX+5) = DD 4E 05",
        "LD L,(IY-3) = FD 6E FD | LD (IX+5),H = DD 74 05 | LD (IY+7),A = FD 77 07",
        "LD (IX+5),0A5H = DD 36 05 A5 | LD (IY-1),7 = FD 36 FF 07 | LD A,(BC) = 0A",
        "LD A,(DE) = 1A | LD (BC),A = 02 | LD (DE),A = 12 | LD A,(1234H) = 3A 34 12",
        "LD (1234H),A = 32 34 12",
        // 16-bit loads
        "LD BC,1234H = 01 34 12 | LD DE,1234H = 11 34 12 | LD HL,1234H = 21 34 12",
        "LD SP,1234H = 31 34 12 | LD IX,1234H = DD 21 34 12 | LD IY,1234H = FD 21 34 12",
        "LD HL,(1234H) = 2A 34 12 | LD IX,(1234H) = DD 2A 34 12 | LD IY,(1234H) = FD 2A 34 12",
        "LD (1234H),HL = 22 34 12 | LD (1234H),IX = DD 22 34 12 | LD (1234H),IY = FD 22 34 12",
        "LD SP,HL = F9 | LD SP,IX = DD F9 | LD SP,IY = FD F9 | PUSH BC = C5 | PUSH DE = D5",
        "PUSH HL = E5 | PUSH AF = F5 | POP BC = C1 | POP AF = F1 | PUSH IX = DD E5",
        "POP IY = FD E1",
        // Exchanges, block transfer and search
        "EX DE,HL = EB | EX AF,AF' = 08 | EXX = D9 | EX (SP),HL = E3 | EX (SP),IX = DD E3",
        "EX (SP),IY = FD E3 | CPI = ED A1 | CPIR = ED B1 | CPD = ED A9 | CPDR = ED B9",
        // 8-bit arithmetic and logic
        "ADD A,B = 80 | ADC A,(HL) = 8E | SUB E = 93 | SBC A,A = 9F | AND H = A4 | XOR L = AD",
        "OR C = B1 | CP D = BA | ADD A,(IX+5) = DD 86 05 | ADC A,(IY+1) = FD 8E 01",
        "SUB (IX+2) = DD 96 02 | SBC A,(IY-2) = FD 9E FE | AND (IX+3) = DD A6 03",
        "XOR (IY+4) = FD AE 04 | OR (IX+6) = DD B6 06 | CP (IY+7) = FD BE 07 | ADD A,0A5H = C6 A5",
        "ADC A,0A5H = CE A5 | SUB 0A5H = D6 A5 | SBC A,0A5H = DE A5 | AND 0A5H = E6 A5",
        "XOR 0A5H = EE A5 | OR 0A5H = F6 A5 | CP 0A5H = FE A5 | INC B = 04 | INC A = 3C",
        "INC (HL) = 34 | DEC C = 0D | DEC L = 2D | DEC (HL) = 35 | INC (IX+5) = DD 34 05",
        "DEC (IY-1) = FD 35 FF",
        // General purpose and CPU control
        "DAA = 27 | CPL = 2F | NEG = ED 44 | CCF = 3F | SCF = 37 | NOP = 00 | HALT = 76 | DI = F3",
        "EI = FB | IM 0 = ED 46 | IM 1 = ED 56 | IM 2 = ED 5E",
        // 16-bit arithmetic
        "ADD HL,BC = 09 | ADD HL,DE = 19 | ADD HL,HL = 29 | ADD HL,SP = 39 | ADC HL,BC = ED 4A",
        "ADC HL,SP = ED 7A | SBC HL,DE = ED 52 | SBC HL,HL = ED 62 | SBC HL,SP = ED 72",
        "ADD IX,BC = DD 09 | ADD IX,IX = DD 29 | ADD IY,DE = FD 19 | ADD IY,IY = FD 29",
        "ADD IY,SP = FD 39 | INC BC = 03 | INC SP = 33 | DEC DE = 1B | DEC HL = 2B",
        "INC IX = DD 23 | DEC IY = FD 2B",
        // Rotates and shifts
        "RLCA = 07 | RLA = 17 | RRCA = 0F | RRA = 1F | RLD = ED 6F | RRD = ED 67 | RLC B = CB 00",
        "RRC C = CB 09 | RL D = CB 12 | RR E = CB 1B | SLA H = CB 24 | SRA L = CB 2D",
        "SRL A = CB 3F | RLC (HL) = CB 06 | SRL (HL) = CB 3E | RLC (IX+5) = DD CB 05 06",
        "RR (IY-2) = FD CB FE 1E | SRA (IX+1) = DD CB 01 2E | SRL (IY+3) = FD CB 03 3E",
        // Bit set, reset and test
        "BIT 0,B = CB 40 | BIT 7,A = CB 7F | BIT 3,(HL) = CB 5E | RES 5,C = CB A9",
        "RES 0,(HL) = CB 86 | SET 4,E = CB E3 | SET 7,(HL) = CB FE | BIT 2,(IX+5) = DD CB 05 56",
        "RES 6,(IY+1) = FD CB 01 B6 | SET 1,(IX-4) = DD CB FC CE",
        // Jumps, calls and returns
        "JP 1234H = C3 34 12 | JP (HL) = E9 | JP (IX) = DD E9 | JP (IY) = FD E9",
        "JP NZ,1234H = C2 34 12 | JP Z,1234H = CA 34 12 | JP NC,1234H = D2 34 12",
        "JP C,1234H = DA 34 12 | JP PO,1234H = E2 34 12 | JP PE,1234H = EA 34 12",
        "JP P,1234H = F2 34 12 | JP M,1234H = FA 34 12 | JR $+5 = 18 03 | JR NZ,$+5 = 20 03",
        "JR Z,$+5 = 28 03 | JR NC,$+5 = 30 03 | JR C,$+5 = 38 03 | DJNZ $+5 = 10 03",
        "CALL 1234H = CD 34 12 | CALL NZ,1234H = C4 34 12 | CALL Z,1234H = CC 34 12",
        "CALL NC,1234H = D4 34 12 | CALL C,1234H = DC 34 12 | CALL PO,1234H = E4 34 12",
        "CALL PE,1234H = EC 34 12 | CALL P,1234H = F4 34 12 | CALL M,1234H = FC 34 12 | RET = C9",
        "RET NZ = C0 | RET Z = C8 | RET NC = D0 | RET C = D8 | RET PO = E0 | RET PE = E8",
        "RET P = F0 | RET M = F8 | RETI = ED 4D | RETN = ED 45 | RST 0 = C7 | RST 8 = CF",
        "RST 10H = D7 | RST 18H = DF | RST 20H = E7 | RST 28H = EF | RST 30H = F7 | RST 38H = FF",
        // Input and output
        "IN A,(0A5H) = DB A5 | OUT (0A5H),A = D3 A5 | IN B,(C) = ED 40 | IN C,(C) = ED 48",
        "IN D,(C) = ED 50 | IN H,(C) = ED 60 | IN L,(C) = ED 68 | IN A,(C) = ED 78",
        "OUT (C),B = ED 41 | OUT (C),C = ED 49 | OUT (C),H = ED 61 | OUT (C),A = ED 79",
        "INI = ED A2 | INIR = ED B2 | IND = ED AA | INDR = ED BA | OUTI = ED A3 | OTIR = ED B3",
        "OUTD = ED AB | OTDR = ED BB",
        // Unofficial forms
        "IN (C) = ED 70 | OUT (C),0 = ED 71 | SLL A = CB 37 | SLL B = CB 30 | SLL (HL) = CB 36",
        "SLL (IX+5) = DD CB 05 36 | LD B,IXh = DD 44 | LD B,IYl = FD 45 | LD A,IXl = DD 7D",
        "LD IXh,C = DD 61 | LD IXl,A = DD 6F | LD IXh,IXl = DD 65 | LD IYl,IYh = FD 6C",
        "LD IXh,0A5H = DD 26 A5 | LD IYl,0A5H = FD 2E A5 | ADD A,IXh = DD 84 | ADD A,IXl = DD 85",
        "LD A,IYl = FD 7D | SUB IYl = FD 95 | CP IXh = DD BC | CP IXl = DD BD | INC IXh = DD 24",
        "DEC IYl = FD 2D | RLC (IX+5),B = DD CB 05 00 | SRL (IY+1),A = FD CB 01 3F",
        "RL (IY+1),C = FD CB 01 11 | SET 0,(IX+5),C = DD CB 05 C1 | RES 7,(IY-1),L = FD CB FF BD",
    };
    const auto cases = Entries(rows);
    options.UnofficialInstructions = true;
    std::string source = " ORG 1000H\n";
    for (const auto& [statement, bytes] : cases) source += " " + statement + "\n";
    Write("prog.asm", source);
    EXPECT_EQ(Assemble(), 0);
    int fileLine = 2;
    for (const auto& [statement, bytes] : cases) {
        const SourceLine& line = LineAt(fileLine++);
        EXPECT_EQ(line.OpcodeText, bytes) << statement << " " << line.ErrorText;
    }
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
    const char* const bytes[] = {"18 00", "18 00", "18 00", "28 00", "10 FE", "18 FC"};
    for (int line = 2; line <= 7; ++line) EXPECT_EQ(LineAt(line).OpcodeText, bytes[line - 2]);
}

// The byte of a relative jump is the distance from the instruction's start minus 2,
// which must fit -128 to 127: distances from -126 to 129.
// A result in quotes is the value that the message of a jump out of range shows.
TEST_F(Encoding, RelativeJumpRangeAtBothEnds) {
    const char* const rows[] = {
        "JR $-126 = 18 80 | JR $-127 = '-127' | JR $+129 = 18 7F | JR $+130 = '130'",
        // A label is an address too; a plain number is the distance itself.
        "JR T\nT EQU 1000h-126 = 18 80 | JR T\nT EQU 1000h-127 = '-127'",
        "JR T\nT EQU 1000h+129 = 18 7F | JR T\nT EQU 1000h+130 = '130'",
        "JR -126 = 18 80 | JR -127 = '-127' | JR 129 = 18 7F | JR 130 = '130'",
        // Every relative form has the same range.
        "DJNZ $-126 = 10 80 | DJNZ $-127 = '-127' | JR NZ,$+129 = 20 7F | JR Z,$-126 = 28 80",
        "JR NC,$+130 = '130' | JR C,$-127 = '-127'",
    };
    for (const auto& [statement, result] : Entries(rows)) {
        const std::string want = result[0] != '\'' ? result
                                                   : "Invalid argument of the instruction. " +
                                                         result + " (-126-129 value expected)";
        EXPECT_EQ(One(" " + statement, 0x1000), want) << statement;
    }
}

TEST_F(Encoding, LabelsAndTheirErrors) {
    // Each source line with its error, "" for none
    const std::pair<const char*, const char*> lines[] = {
        {"A1: LD A,5", ""},
        {"A2 LD A,6", ""},
        {"A3:LD A,7", ""},
        {"LOOP:", ""},
        {"A1 NOP", "Duplicate label."},
        {"LD NOP", "Instruction in label column."},
        {"DEFB NOP", "Reserved keyword in label column."},
        {"  NAME EQU 5", ""},
        {"VALUE = NAME+1", ""},
        {" = 3", "Label missing. ''"},
        {"5abc NOP", "Unrecognized instruction/syntax. '5ABC <arg>'"},
        {"  INDENTED", "Unrecognized instruction/syntax. 'INDENTED'"},
        // Left-trimmed, so EQU stands in the label column
        {" EQU 3", "Reserved keyword in label column."},
    };
    std::string source;
    for (const auto& [text, error] : lines) source += std::string(text) + "\n";
    Write("prog.asm", source);
    EXPECT_EQ(Assemble(), 7);
    for (int line = 1; line <= 13; ++line)
        EXPECT_EQ(LineAt(line).ErrorText, lines[line - 1].second) << lines[line - 1].first;
    EXPECT_EQ(LineAt(3).OpcodeText, "3E 07");
    const Symbols& s = assembler->Session().symbols;
    for (const auto& [label, value] :
         {std::pair{"A1", 0}, {"a2", 2}, {"A3", 4}, {"LOOP", 6}, {"NAME", 5}, {"VALUE", 6}})
        EXPECT_EQ(s.Value(s.FindLabel(label)), value) << label;
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
          " org 40h\n"
          "START .org\n"  // an ORG without argument means 0
          " HALT\n");
    EXPECT_EQ(Assemble(), 0);
    const char* const texts[] = {
        ";Line removed by ASM preprocessor:  output \"x.bin\"",
        " .org 10h ;Line modified by ASM preprocessor (.ORG correction): .org 10h",
        " org 20h ;Line modified by ASM preprocessor (ORG correction): org 20h",
        "X = 5 ;Line modified by ASM preprocessor (:= correction): X := 5",
        " .ORG 30h ;Line modified by ASM preprocessor (*= correction):  *= 30h",
        "Y = 7",
        " org 40h",
        "START .org 0 ;Line modified by ASM preprocessor (ORG correction): START .org",
    };
    for (int line = 1; line <= 8; ++line) EXPECT_EQ(LineAt(line).Text, texts[line - 1]);
    EXPECT_EQ(LineAt(9).Address, 0);
    const Symbols& s = assembler->Session().symbols;
    EXPECT_EQ(s.Value(s.FindLabel("X")), 5);
    EXPECT_EQ(s.Value(s.FindLabel("Y")), 7);
}

}  // namespace
}  // namespace mb::testing
