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
