// Expressions end to end: assignments compiled, assembled and run on the core,
// the variables read back where the listing says they live.
#include <gtest/gtest.h>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

// The value of a variable after the run, read in its width and sign from the
// tag of its address comment.
long long ValueOf(BasicRun& b, const std::string& name) {
    const std::regex re(";       The address of '" + name +
                        "' (\\(array [0-9]+\\) )?\\(([a-z]+)\\)");
    std::smatch m;
    const std::string text = b.Asm();
    if (!std::regex_search(text, m, re)) return -999999;
    const std::string tag = m[2].str();
    const int a = b.AddressOf(name);
    if (tag == "ushort" || tag == "boolean") return b.run.Byte(a);
    if (tag == "short") return static_cast<signed char>(b.run.Byte(a));
    if (tag == "uinteger") return b.run.Word(a);
    if (tag == "integer") return static_cast<short>(b.run.Word(a));
    if (tag == "ulong") return b.run.Long(a);
    if (tag == "long") return static_cast<int>(b.run.Long(a));
    return -999999;
}

struct Case {
    const char* name;
    std::vector<std::string> lines;
    std::vector<std::pair<std::string, long long>> expected;
};
void PrintTo(const Case& c, std::ostream* os) {
    *os << c.name;
}

class Expressions : public ::testing::TestWithParam<Case> {};

const std::string kDeclarations =
    Lines({"Dim a, b, c As Byte", "Dim s, t As Short", "Dim w, v As Word", "Dim i, j As Integer",
           "Dim l As Long", "Dim u As ULong", "Dim f, g As Bit", "Dim arr(5) As Word",
           "Dim bytes(8) As Byte", "Dim k As Byte"});

TEST_P(Expressions, ComputeWhatTheTextSays) {
    const Case& c = GetParam();
    BasicRun b(std::string("expr_") + c.name);
    std::string program = kDeclarations + Lines(c.lines);
    // Every variable is used, so that none is warned about or dropped.
    for (const char* v :
         {"a", "b", "c", "s", "t", "w", "v", "i", "j", "l", "u", "f", "g", "arr", "bytes", "k"}) {
        program += std::string("ASM: LD HL,") + v + "\r\n";
    }
    program += "End\r\n";
    ASSERT_TRUE(b.CompileAndRun(program)) << b.Failure;
    for (const auto& [variable, value] : c.expected) {
        EXPECT_EQ(ValueOf(b, variable), value) << variable << "\n" << b.Asm();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Compiler, Expressions,
    ::testing::Values(
        Case{"byte_wraps", {"a = 250", "a = a + 10", "b = 3", "b = b - 5"}, {{"a", 4}, {"b", 254}}},
        Case{"chain_of_operators", {"a = 7", "b = a + 5", "c = b - a - 1"}, {{"b", 12}, {"c", 4}}},
        Case{"short_signed",
             {"s = -5", "s = s - 3", "t = 127", "t = t + 1"},
             {{"s", -8}, {"t", -128}}},
        Case{"integer_wraps",
             {"i = 32767", "i = i + 1", "j = -300", "j = j - 1000"},
             {{"i", -32768}, {"j", -1300}}},
        Case{"word_wraps",
             {"w = 65535", "w = w + 1", "v = 0", "v = v - 1"},
             {{"w", 0}, {"v", 65535}}},
        Case{"byte_sum_widened_to_integer_target",
             {"a = 200", "b = 100", "i = a + b"},
             {{"i", 300}}},
        Case{"truncation_keeps_the_low_part",
             {"w = 1234H", "a = w", "l = 12345678H", "v = l"},
             {{"a", 0x34}, {"v", 0x5678}}},
        Case{"sign_extension",
             {"s = -5", "i = s", "l = s", "j = -2", "u = j", "a = 200", "l = a"},
             {{"i", -5}, {"u", 4294967294LL}, {"l", 200}}},
        Case{"negative_byte_into_long", {"s = -100", "l = s"}, {{"l", -100}}},
        Case{"mixed_byte_and_integer",
             {"a = 10", "i = -50", "i = i + a", "w = 60000", "w = w - a"},
             {{"i", -40}, {"w", 59990}}},
        Case{"logic_in_assignments",
             {"a = 0F0H", "b = a And 3CH", "c = a Or 0FH", "s = 5 Xor 3", "w = 0FF00H",
              "v = w & 0F0F0H", "l = -65536", "l = l Or 0FFH"},
             {{"b", 0x30}, {"c", 0xFF}, {"s", 6}, {"v", 0xF000}, {"l", -65281}}},
        Case{"complement",
             {"a = 0F0H", "b = Not a", "w = 00FFH", "v = ~w", "l = 0", "l = ~l"},
             {{"b", 0x0F}, {"v", 0xFF00}, {"l", -1}}},
        Case{"shifts",
             {"w = 0123H", "w = w << 4", "a = 81H", "a = a >> 1", "k = 3", "v = 1", "v = v << k",
              "l = 1", "l = l << 31", "b = 5", "b = b << 0"},
             {{"w", 0x1230}, {"a", 0x40}, {"v", 8}, {"l", -2147483648LL}, {"b", 5}}},
        Case{"unsigned_comparisons",
             {"a = 3", "b = 5", "f = a < b", "g = a >= b", "w = 1000", "v = 1000", "c = w == v",
              "k = w <> v"},
             {{"f", 255}, {"g", 0}, {"c", 1}, {"k", 0}}},
        Case{"arrays_with_constant_and_variable_index",
             {"arr(2) = 500", "k = 3", "arr(k) = arr(2) + 1", "bytes(0) = 9", "k = 7",
              "bytes(k) = bytes(0) + k", "a = bytes(7)", "k = 3", "w = arr(k) - arr(2)"},
             {{"w", 1}, {"a", 16}}},
        Case{"array_initialiser",
             {"arr = (1, 2, 300, 65535)", "w = arr(2)", "v = arr(3)"},
             {{"w", 300}, {"v", 65535}}},
        Case{"byte_and_word_parts",
             {"w = 1234H", "a = w.HB", "b = w.LB", "w.LB = 0FFH", "l = 11223344H", "v = l.HW",
              "c = l.3B"},
             {{"a", 0x12}, {"b", 0x34}, {"w", 0x12FF}, {"v", 0x1122}, {"c", 0x22}}},
        Case{"increments",
             {"a = 5", "a++", "b = a++ + 1", "c = 9", "--c", "w = 0", "w--"},
             {{"a", 7}, {"b", 7}, {"c", 8}, {"w", 65535}}},
        Case{"compound_assignments",
             {"a = 5", "a += 3", "w = 100", "w -= 10", "i = 7", "i += -9"},
             {{"a", 8}, {"w", 90}, {"i", -2}}},
        Case{"unary_minus_in_the_variable_width",
             {"b = 5", "a = -b", "i = 300", "j = -i"},
             {{"a", 251}, {"j", -300}}},
        Case{"constants_in_expressions",
             {"Const stride = 4", "Const base = 1000", "w = base + stride", "s = -stride"},
             {{"w", 1004}, {"s", -4}}},
        Case{"memory_builtins",
             {"w = 8000H", "Poke w, 42", "Poke 8001H, 43", "a = Peek(w)", "b = Peek(8001H) + 1"},
             {{"a", 42}, {"b", 44}}},
        Case{"bit_statements",
             {"c = 10", "SetBit 7, c", "ResetBit 1, c", "f = TestBit(3, c)", "g = TestBit(2, c)",
              "InvertBit 0, c", "MakeBit 2, c, True", "k = 6", "a = 0", "SetBit k, a", "b = 0FFH",
              "ResetBit k, b", "t = 1", "MakeBit k, t, f"},
             {{"c", 0x8D}, {"f", 255}, {"g", 0}, {"a", 0x40}, {"b", 0xBF}, {"t", 0x41}}},
        Case{"conversions",
             {"c = 200", "w = CInteger(c)", "s = -1", "v = CUInteger(s)", "j = 300",
              "t = CShort(j)"},
             {{"w", 200}, {"v", 65535}, {"t", 44}}},
        Case{"variable_addresses",
             {"w = VarAddr(arr)", "v = VarAddr(arr(2)) - VarAddr(arr)",
              "Poke VarAddr(bytes(3)), 77", "a = bytes(3)"},
             {{"v", 4}, {"a", 77}}},
        Case{"bit_logic_and_numbers",
             {"a = 3", "b = 0", "f = True", "g = f And a", "c = 0", "f = f And b"},
             {{"g", 255}, {"f", 0}}},
        Case{"bit_comparisons",
             {"f = True", "a = 5", "g = f == a", "b = 0", "c = f == b"},
             {{"g", 255}, {"c", 0}}},
        Case{"parentheses_and_precedence",
             {"a = 2", "b = (a + 3) - (1 + a)", "c = a + 3 & 6"},
             {{"b", 2}, {"c", 4}}}),
    CaseName);

// --- Messages ---------------------------------------------------------------

class ExpressionErrors : public ::testing::TestWithParam<LineError> {};

TEST_P(ExpressionErrors, GiveTheirMessageAtTheirLine) {
    const LineError& c = GetParam();
    BasicRun b(std::string("expr_error_") + c.name);
    EXPECT_EQ(b.ErrorAt(Lines({"Dim a, b As Byte", "Dim f As Bit", "Dim w As Word", c.line}), 4),
              "Error in line 4:\r\n" + c.line + "\r\n" + c.message);
}

INSTANTIATE_TEST_SUITE_P(
    Compiler, ExpressionErrors,
    ::testing::Values(
        LineError{"undeclared_target", "z = 1", "Variable not declared: 'z'."},
        LineError{"undeclared_operand", "a = b + zz", "Variable not declared: 'zz'."},
        LineError{"parentheses", "a = (b + 1",
                  "Bad expression: Improper use of parentheses.\r\n"
                  "Numbers of occurrences for '(' and ')' symbols "
                  "must be equal."},
        LineError{"missing_operand", "a = b +", "Bad expression: Argument(s) missing somewhere..."},
        LineError{"not_an_array", "a = b(1)",
                  "Bad expression: Improper variable use.\r\n"
                  "Variable 'b' not declared as array."},
        LineError{"bit_into_byte", "a = f", "Bit variable can not be assigned to variable 'a'."},
        LineError{"byte_into_bit", "f = a", "Variable 'a' can not be assigned to Bit variable."},
        LineError{"bit_in_arithmetic", "a = f + 1",
                  "Bit data type variable can not be used here: 'f'."},
        LineError{"byte_constant_too_big", "a = 300",
                  "Argument '300' is not a valid UShort type "
                  "constant."},
        LineError{"garbage", "a b c", "Syntax error."},
        LineError{"port_number", "Put 256, a", "Incorrect output port number."},
        LineError{"input_port", "a = Get(w)", "Incorrect input port number."},
        LineError{"bit_number", "SetBit 8, a", "Incorrect bit number."},
        LineError{"bit_target_type", "SetBit 1, w",
                  "The second argument of SetBit statement must be Short or UShort data type "
                  "variable."},
        LineError{"testbit_result", "a = TestBit(1, b)",
                  "The result of TestBit function must be Bit data type variable."},
        LineError{"conversion_constant", "w = CShort(300)",
                  "Argument '300' is not a valid Short type constant."},
        LineError{"varaddr_name", "w = VarAddr(nothing)",
                  "Error in 'VarAddr'. Incorrect variable name: 'nothing'."},
        LineError{"varaddr_parentheses", "w = VarAddr(a",
                  "Syntax error in 'VarAddr'. Improper use of parentheses."},
        LineError{"too_many_values", "a = b a", "Bad expression: Too many arguments somewhere..."},
        LineError{"comma_outside_call", "a = b, 1",
                  "Bad expression: Improper use of parentheses or commas."},
        LineError{"assignment_missing", "a++ + 1", "Syntax error."},
        LineError{"single_mod", "a = 1.5 Mod 2",
                  "Incorrect operation for the Single data type: % (Mod)."},
        LineError{"print_port", "Print 256, a", "Incorrect output port number."},
        LineError{"pointer", "w = Pointer(a)", "Pointer function not yet implemented."},
        LineError{"bit_ordering", "f = f < f",
                  "Comparison operator not allowed for Bit variables."}),
    CaseName);

TEST(ExpressionWarnings, OnlyOneAssignmentOperatorStands) {
    BasicRun b("expr_multiple_assignment");
    ASSERT_TRUE(b.CompileAndRun(Lines({"Dim a, b As Byte", "b = 2", "a = b = 2", "End"})))
        << b.Failure;
    EXPECT_NE(b.State().warningText.find("Line 3: Only one assignment operator recognized. The "
                                         "expression will be evaluated as: a = b == 2"),
              std::string::npos)
        << b.State().warningText;
    EXPECT_EQ(b.run.Byte(b.AddressOf("a")), 1);
}

TEST(ExpressionPorts, PutAndGetReachThePorts) {
    BasicRun b("expr_ports");
    EXPECT_EQ(b.RunOutput(Lines(
                  {"Dim a As Byte", "a = 40", "Put 1, a + 2", "Put 1, 10", "a = Get(1)", "End"})),
              "*\n");
}

TEST(ExpressionOptions, UseResultAsTempVarBuildsTheResultInPlace) {
    for (bool inPlace : {false, true}) {
        BasicRun b("expr_result_as_temp");
        b.settings.SetSettingInt(kKeyResultAsTemp, inPlace ? 1 : 0);
        ASSERT_TRUE(b.CompileAndRun(
            Lines({"Dim a, b, c As Byte", "a = 3", "b = 4", "c = a + b - 1 + a", "End"})))
            << b.Failure;
        EXPECT_EQ(b.run.Byte(b.AddressOf("c")), 9);
        EXPECT_EQ(b.Asm().find("corvalent_temp") == std::string::npos, inPlace);
    }
}

TEST(PrintStatement, StringConstantsGoOutCharacterByCharacter) {
    BasicRun b("print_constants");
    ASSERT_TRUE(
        b.CompileAndRun(Lines({"Const greeting = \"Hi\"", "Print 1, greeting, \" there\", CrLf",
                               "Print 2, \"not here\"", "Print 1, Qt, \"\"\"\"", "End"})))
        << b.Failure;
    EXPECT_EQ(b.run.Output, "Hi there\r\n\"\"");
    BasicRun two("print_two_out");
    ASSERT_EQ(two.Compile(Lines({"Print 0, \"AB\""})), 0);
    const std::string text = two.Asm();
    EXPECT_NE(text.find("\tLD A,41H\r\n\tOUT (00H),A\r\n\tLD A,42H\r\n\tOUT (00H),A\r\n"),
              std::string::npos);
    EXPECT_EQ(text.find("PRINT_STR"), std::string::npos);  // no library routine
}

TEST(ExpressionCode, AByteSumIsALoadPairAndAnAdd) {
    BasicRun b("expr_code_byte_sum");
    ASSERT_EQ(b.Compile(Lines({"Dim x As Byte", "x = 1 + 2", "End"})), 0);
    const std::string text = b.Asm();
    EXPECT_NE(
        text.find("; 2: x = 1 + 2\r\n\tLD A,01H\r\n\tLD L,02H\r\n\tADD A,L\r\n\tLD (0FEFFH),A"),
        std::string::npos)
        << text;
}

}  // namespace
}  // namespace mb::testing
