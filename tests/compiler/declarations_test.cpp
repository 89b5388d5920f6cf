// Declarations end to end: variables laid out below the IX base, written by
// inline assembler, run on the core and read back where the listing's address
// comments say they live; and the messages of bad declarations.
#include <gtest/gtest.h>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

const std::string kStoreProgram =
    Lines({"' values stored through inline assembler", "Dim small As Byte", "Dim count As Integer",
           "Dim total As Long", "Dim table(4) As Word", "Const seed = 42", "Const big = 100000",
           "ASM: LD A,seed", "ASM: LD (small),A", "ASM: LD HL,-1234", "ASM: LD (count),HL",
           "ASM: LD HL,big & 0FFFFh", "ASM: LD (total),HL", "ASM: LD HL,big >> 16",
           "ASM: LD (total+2),HL", "ASM: LD HL,0BEEFh", "ASM: LD (table+6),HL", "End"});

TEST(Declarations, ValuesLandWhereTheAddressCommentsSay) {
    for (bool optimize : {true, false}) {
        BasicRun b("decl_values");
        b.options.optimizeVariables = optimize;
        ASSERT_TRUE(b.CompileAndRun(kStoreProgram)) << b.Failure;
        const int small = b.AddressOf("small"), count = b.AddressOf("count");
        const int total = b.AddressOf("total"), table = b.AddressOf("table");
        EXPECT_EQ(b.run.Byte(small), 42) << optimize;
        EXPECT_EQ(b.run.Word(count), 65536 - 1234) << optimize;
        EXPECT_EQ(b.run.Long(total), 100000) << optimize;
        EXPECT_EQ(b.run.Word(table + 6), 0xBEEF) << optimize;
        // Nothing overlaps, and all lies below the IX base and above the stack.
        const std::vector<std::pair<int, int>> blocks = {
            {small, 1}, {count, 2}, {total, 4}, {table, 8}};
        for (const auto& [a, n] : blocks) {
            EXPECT_LT(a + n - 1, 0xFF00);
            EXPECT_GE(a, b.run.M().SP);
            for (const auto& [c, m] : blocks) {
                if (a != c) {
                    EXPECT_TRUE(a + n <= c || c + m <= a) << a << " " << c;
                }
            }
        }
    }
}

TEST(Declarations, AddressCommentsInSourceOrderWithOptimizeOffInQueueOrder) {
    BasicRun b("decl_order");
    b.options.optimizeVariables = false;
    ASSERT_EQ(b.Compile(Lines({"Dim a As Byte", "Dim b As Integer", "Dim s As String",
                               "Dim t[5] As String", "Dim f As Single", "Dim arr(3) As Long",
                               "ASM: LD A,(a)", "ASM: LD HL,(b)", "ASM: LD HL,s", "ASM: LD HL,t",
                               "ASM: LD HL,f", "ASM: LD HL,arr"})),
              0);
    const std::string text = b.Asm();
    const std::string expected =
        ";       The address of 'a' (ushort) (global) is FEFFH (IX-1)\r\n"
        ";       The address of 'b' (integer) (global) is FEFDH (IX-3)\r\n"
        ";       The address of 's' (array 17) (string) (global) is FEECH (IX-20)\r\n"
        ";       The address of 't' (array 6) (string) (global) is FEE6H (IX-26)\r\n"
        ";       The address of 'f' (single) (global) is FEE2H (IX-30)\r\n"
        ";       The address of 'arr' (array 3) (long) (global) is FED6H (IX-42)\r\n";
    EXPECT_NE(text.find(expected), std::string::npos) << text;
    // The stack starts right below the last variable and the REG_ cells.
    EXPECT_NE(text.find("\tLD SP,0FED2H\r\n"), std::string::npos) << text;
}

TEST(Declarations, OptimizeGivesOftenUsedSmallVariablesTheNearestAddresses) {
    std::string uses;
    for (int i = 0; i < 400; ++i) uses += "ASM: LD A,(hot)\r\nASM: LD HL,(wide)\r\n";
    const std::string program =
        Lines({"Dim cold As Long", "Dim wide As Long", "Dim arr(25) As Byte", "Dim hot As Byte",
               "ASM: LD HL,(cold)", "ASM: LD HL,arr"}) +
        uses;
    BasicRun b("decl_optimize");
    ASSERT_EQ(b.Compile(program), 0);
    const int hot = b.AddressOf("hot"), wide = b.AddressOf("wide"), cold = b.AddressOf("cold");
    EXPECT_EQ(hot, 0xFEFF);  // 255 uses (capped) / 4 + 24 beats the long's 63 + 21
    EXPECT_GT(hot, wide);
    EXPECT_GT(wide, cold);
    EXPECT_GT(cold, b.AddressOf("arr"));  // a 25-byte array gets no size bonus

    BasicRun off("decl_optimize_off");
    off.options.optimizeVariables = false;
    ASSERT_EQ(off.Compile(program), 0);
    EXPECT_EQ(off.AddressOf("cold"), 0xFEFC);
    EXPECT_LT(off.AddressOf("hot"), off.AddressOf("arr"));
}

TEST(Declarations, RamFitsUpToItsLowestKeptPage) {
    // RAMSTART 8000H, RAMEND 83FFH: variables may use 8100H to 82FFH, 512 bytes,
    // less the four REG_ cells.
    for (int bytes : {508, 509}) {
        BasicRun b("decl_ram");
        const std::string program =
            Lines({"#define RAMSTART = 8000H", "#define RAMEND = 83FFH",
                   "Dim block(" + std::to_string(bytes) + ") As Byte", "ASM: LD HL,block"});
        const int error = b.Compile(program);
        if (bytes == 508) {
            EXPECT_EQ(error, 0) << b.sink.errors.back();
            EXPECT_EQ(b.AddressOf("block"), 0x8104);  // the four REG_ cells lie below it
        } else {
            EXPECT_GT(error, 0);
            ASSERT_FALSE(b.sink.errors.empty());
            EXPECT_NE(b.sink.errors.back().find("could not allocate"), std::string::npos)
                << b.sink.errors.back();
        }
    }
}

TEST(Declarations, MemoryDirectivesActOnTheSecondRun) {
    BasicRun b("decl_directives");
    ASSERT_EQ(
        b.Compile(Lines({"#define ROMEND = 7FFFH", "#define RAMSTART = 4000H",
                         "#define RAMEND = 8FFFH", "#define STRING_MAX_LENGTH = 20",
                         "Dim s As String", "Dim x As Byte", "ASM: LD HL,s", "ASM: LD (x),A"})),
        0);
    const std::string text = b.Asm();
    // RAMSTART below ROMEND + 1 is raised to 8000H; the IX base is RAMEND - 255.
    EXPECT_NE(text.find("\tLD IX,8F00H\r\n"), std::string::npos);
    EXPECT_NE(text.find(";       The value of 'RAMSTART' is 16384/4000H\r\n"), std::string::npos);
    EXPECT_NE(text.find(";       The value of 'STRING_MAX_LENGTH' is 20\r\n"), std::string::npos);
    EXPECT_NE(text.find("The address of 's' (array 21) (string) (global) is 8EEAH (IX-22)"),
              std::string::npos)
        << text;
}

TEST(Declarations, InitialiseVariablesOnDeclaration) {
    const std::string program =
        Lines({"Dim a As Byte", "Dim w As Word", "Dim l As Long", "Dim arr(100) As Byte",
               "Dim big(200) As Word", "Dim s As String", "ASM: LD HL,a", "ASM: LD HL,w",
               "ASM: LD HL,l", "ASM: LD HL,arr", "ASM: LD HL,big", "ASM: LD HL,s", "End"});
    for (bool init : {true, false}) {
        BasicRun b("decl_init");
        b.options.initializeVariables = init;
        b.options.optimizeVariables = false;
        ASSERT_EQ(b.Compile(program), 0);
        // Dirty memory first, so that only the clearing can bring zeros back.
        for (int a = 0x8000; a < 0xFF00; ++a) b.run.M().MemoryImage[a] = 0xA5;
        ASSERT_EQ(b.run.Assemble(b.dir.string(), "prog.asm"), 0) << b.run.AssemblerErrors;
        ASSERT_TRUE(b.run.Load((b.dir / "prog.obj").string()));
        for (int a = 0x8000; a < 0xFF00; ++a) b.run.M().MemoryImage[a] = 0xA5;
        ASSERT_TRUE(b.run.Run());
        const int expect = init ? 0 : 0xA5;
        EXPECT_EQ(b.run.Byte(b.AddressOf("a")), expect);
        EXPECT_EQ(b.run.Byte(b.AddressOf("w") + 1), expect);
        EXPECT_EQ(b.run.Byte(b.AddressOf("l") + 3), expect);
        EXPECT_EQ(b.run.Byte(b.AddressOf("arr") + 99), expect);
        EXPECT_EQ(b.run.Byte(b.AddressOf("big") + 399), expect);
        EXPECT_EQ(b.run.Byte(b.AddressOf("s")), 0);  // a string always starts empty
        EXPECT_EQ(b.run.Byte(b.AddressOf("s") + 1), 0xA5);
    }
}

// --- Messages of bad declarations ---------------------------------------

struct DeclarationError {
    const char* name;
    std::string program;
    int line;
    const char* message;  // the text behind the location prefix
};
void PrintTo(const DeclarationError& c, std::ostream* os) {
    *os << c.name;
}

class DeclarationErrors : public ::testing::TestWithParam<DeclarationError> {};

TEST_P(DeclarationErrors, GiveTheirMessage) {
    const DeclarationError& c = GetParam();
    BasicRun b(std::string("decl_error_") + c.name);
    const std::string e = b.ErrorAt(c.program, c.line);
    EXPECT_EQ(e.substr(e.find("\r\n", e.find("\r\n") + 2) + 2), c.message) << e;
}

INSTANTIATE_TEST_SUITE_P(
    Declarations, DeclarationErrors,
    ::testing::Values(
        DeclarationError{"names_missing", "Dim  As Byte\r\n", 1,
                         "Variable name(s) missing in Dim statement."},
        DeclarationError{"bad_name", "Dim 1a As Byte\r\n", 1, "Incorrect variable name."},
        DeclarationError{"reserved", "Dim print As Byte\r\n", 1,
                         "Reserved system keyword 'Print' used for user element name."},
        DeclarationError{"internal", "Dim corvalent_temp_x As Byte\r\n", 1,
                         "You tried to use the reserved name... Shame on you ;-)"},
        DeclarationError{"duplicate", "Dim a As Byte\r\nDim a As Word\r\n", 2,
                         "User element name already used within the same scope."},
        DeclarationError{"label_clash", "a: Dim a As Byte\r\n", 1,
                         "User element name already used within the same scope."},
        DeclarationError{"array_zero", "Dim a(0) As Byte\r\n", 1, "Incorrect array declaration."},
        DeclarationError{"array_big", "Dim a(100000) As Byte\r\n", 1,
                         "Incorrect array declaration."},
        DeclarationError{"array_open", "Dim a(5 As Byte\r\n", 1, "Incorrect array declaration."},
        DeclarationError{"string_array", "Dim s(5) As String\r\n", 1,
                         "Arrays are not supported for String variables."},
        DeclarationError{"suffix_on_byte", "Dim b[5] As Byte\r\n", 1,
                         "'b[5]'\r\nIncorrect variable declaration.\r\n'b[5]'"},
        DeclarationError{"string_too_long", "Dim s[17] As String\r\n", 1,
                         "'s[17]'\r\n's[17]'\r\nMaximal number of characters in any string "
                         "variable is: 16.\r\nUse #define directive to change STRING_MAX_LENGTH "
                         "parameter value."},
        DeclarationError{"const_name", "Const 2x = 5\r\n", 1, "Incorrect constant name."},
        DeclarationError{"const_long", "Const x = -2147483649\r\n", 1,
                         "Argument '-2147483649' is not a valid Long type constant."},
        DeclarationError{"const_ulong", "Const x = 4294967296\r\n", 1,
                         "Argument '4294967296' is not a valid ULong type constant."},
        DeclarationError{"define_unknown", "#define STACK = 5\r\n", 1, "Unrecognized parameter."},
        DeclarationError{"define_range", "#define STRING_MAX_LENGTH = 7\r\n", 1,
                         "Invalid value of parameter [8-100 allowed range]."},
        DeclarationError{"define_romend", "#define ROMEND = 64512\r\n", 1,
                         "Invalid value of parameter [03FFh-FBFFh/1023-64511 allowed range]."},
        DeclarationError{"sim_parentheses", "#sim 1000=5\r\n", 1,
                         "Incorrect format of the directive argument (parentheses "
                         "expected):\r\n'1000=5'."},
        DeclarationError{"sim_bit", "#sim (1000.8)=1\r\n", 1, "Bit position out of range (0-7)."},
        DeclarationError{"asm_label_twice", "ASM:here: NOP\r\nASM:HERE: NOP\r\n", 2,
                         "Assembler label name in the same scope already exists:\r\nHERE"},
        DeclarationError{"proc_declaration", "Proc p(a As Byte\r\n", 1,
                         "Incorrect procedure declaration."},
        DeclarationError{"function_declaration", "Function f(a As Byte)\r\n", 1,
                         "Incorrect function declaration: 'f(a As Byte)'."},
        DeclarationError{"argument_type", "Proc p(a As Thing)\r\n", 1,
                         "Incorrect argument declaration: 'a As Thing'."}),
    CaseName);

TEST(Declarations, TheStringLimitIsCheckedInTheSecondRunOnly) {
    // The first run does not know the final limit yet: a #define later in the text
    // raises it before the second run allocates.
    BasicRun b("decl_string_limit");
    EXPECT_EQ(
        b.Compile(Lines({"Dim s[17] As String", "ASM: LD HL,s", "#define STRING_MAX_LENGTH = 17"})),
        0)
        << (b.sink.errors.empty() ? "" : b.sink.errors[0]);
}

TEST(Declarations, ConstantsAndSimDirectivesLeaveTheirComments) {
    BasicRun b("decl_comments");
    ASSERT_EQ(b.Compile(Lines({"Const answer = 42", "Const minus = -5", "Const hex = 0FFH",
                               "Const name = \"Bench\"", "Const other = answer", "Const tight=-7",
                               "#sim (4000H)=12", "#simio (10.3)=255", "ASM: LD A,hex"})),
              0);
    const std::string text = b.Asm();
    for (const char* line :
         {";       The value of 'answer' (global) is 42\r\n",
          ";       The value of 'minus' (global) is -5\r\n",
          ";       The value of 'name' (global) is \"Bench\"\r\n",
          ";       The value of 'other' (global) is 42\r\n",
          ";       The value of 'tight' (global) is -7\r\n", ";     #sim (16384)=12\r\n",
          ";     #simio (10.3)=1\r\n", "\tLD A,0FFh\r\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
    }
}

TEST(Declarations, ProceduresAndFunctionsDeclareTheirArgumentsInTheirScope) {
    BasicRun b("decl_routines");
    ASSERT_EQ(b.Compile(Lines({"Dim x As Byte", "ASM: LD (x),A", "End", "Proc show(x As Byte)",
                               "ASM: LD (x),A", "End Proc",
                               "Function twice(ByRef v As Integer, s As String) As Long",
                               "ASM: LD HL,(v)", "End Function"})),
              0);
    const std::string text = b.Asm();
    for (const char* line :
         {"The address of 'x' (ushort) (global)", "The address of 'x' (ushort) (show)",
          "The address of 'twice' (long) (twice)", "The address of 'v' (integer) (twice)",
          "The address of 's' (array 17) (string) (twice)"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
    }
    EXPECT_NE(b.State().warningText.find("Line 4: Unused procedure: Proc show(x As Byte)"),
              std::string::npos)
        << b.State().warningText;
}

}  // namespace
}  // namespace mb::testing
