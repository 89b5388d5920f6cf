// Strings end to end: every string builtin on a table of inputs (empty
// strings, cuts at the declared length, characters above 127), assignments,
// concatenations and comparisons, printed on port 1.
#include <gtest/gtest.h>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

class Strings : public ::testing::TestWithParam<RunCase> {};

const std::string kStringDeclarations =
    Lines({"#define STRING_MAX_LENGTH = 20", "Dim s, t As String", "Dim short3[3] As String",
           "Dim empty As String", "Dim n, c As Byte", "Dim w As Word", "Dim p As StrPtr",
           "empty = \"\""});

TEST_P(Strings, PrintWhatTheProgramSays) {
    std::string program = kStringDeclarations + Lines(GetParam().lines);
    for (const char* v : {"s", "t", "short3", "empty", "n", "c", "w", "p"}) {
        program += std::string("ASM: LD HL,") + v + "\r\n";
    }
    BasicRun b(std::string("strings_") + GetParam().name);
    EXPECT_EQ(b.RunOutput(program), GetParam().output);
}

INSTANTIATE_TEST_SUITE_P(
    Compiler, Strings,
    ::testing::Values(
        RunCase{"hello_world_builtins_and_comparison",
                {"s = \"Hello\"", "t = s + \", \" + \"World\"", "Print 1, t, \" \", Len(t), CrLf",
                 "Print 1, UCase(s), LeftStr(t, 3), RightStr(t, 5), MidStr(t, 8, 3), CrLf",
                 "t = \"x=\" + 42", "Print 1, t, \" \", InStr(t, 61), \" \", Asc(s)",
                 "If s = \"Hello\" Then Print 1, \" eq\", CrLf"},
                "Hello, World 12\r\nHELLOHelWorldWor\r\nx=42 2 72 eq\r\n"},
        RunCase{"assignment_cuts_at_the_declared_length",
                {"short3 = \"abc\"", "s = \"abcdefgh\"", "short3 = s", "Print 1, short3, \"|\"",
                 "short3 = s + \"xyz\"", "Print 1, short3, \"|\", Len(short3)"},
                "abc|abc|3"},
        RunCase{"empty_strings",
                {"s = empty + empty", "Print 1, \"[\", s, \"]\", Len(s), Len(empty)",
                 "t = UCase(empty)", "Print 1, \"[\", t, \"]\", InStr(empty, 65)",
                 "t = LeftStr(empty, 3) + RightStr(empty, 2) + MidStr(empty, 1, 1)",
                 "Print 1, \"[\", t, \"]\"", "t = ReverseStr(empty) + LTrim(empty)",
                 "Print 1, \"[\", t, \"]\""},
                "[]00[]0[][]"},
        RunCase{"case_and_characters_above_127",
                {"s = \"aZ\xe9\xff!\"", "t = UCase(s)", "Print 1, t, \"|\"", "t = LCase(s)",
                 "Print 1, t, \"|\", Len(s), \"|\", Asc(\"\xe9\")"},
                "AZ\xe9\xff!|az\xe9\xff!|5|233"},
        RunCase{"chr_fill_and_searches",
                {"s = Chr(65) + Chr(66)", "t = FillStr(45, 5)", "Print 1, s, t, \"|\"",
                 "s = \"banana\"",
                 "Print 1, InStr(s, 97), \" \", InStrRev(s, 97), \" \", "
                 "CountChr(s, 97), \" \", InStr(s, 122)"},
                "AB-----|2 6 3 0"},
        RunCase{"left_right_mid_cuts",
                {"s = \"abcdef\"", "Print 1, LeftStr(s, 2), \"|\", LeftStr(s, 10), \"|\"",
                 "Print 1, RightStr(s, 2), \"|\", RightStr(s, 10), \"|\"",
                 "Print 1, MidStr(s, 2, 3), \"|\", MidStr(s, 5, 9), \"|\", MidStr(s, 9, 2), "
                 "\"|\""},
                "ab|abcdef|ef|abcdef|bcd|ef||"},
        RunCase{"trims",
                {"s = \"  pad  \"", "Print 1, \"[\", LTrim(s), \"][\", RTrim(s), \"]\"",
                 "s = \"xxaxx\"",
                 "Print 1, \"[\", LTrimChr(s, 120), \"][\", RTrimChr(s, 120), "
                 "\"]\""},
                "[pad  ][  pad][axx][xxa]"},
        RunCase{"reverse_shift_rotate_replace",
                {"s = \"abcd\"",
                 "Print 1, ReverseStr(s), \" \", LShiftStr(s, 95), \" \", "
                 "RShiftStr(s, 95), \" \"",
                 "Print 1, LRotateStr(s), \" \", RRotateStr(s), \" \", ReplaceChr(\"a-b-c\", 45, "
                 "43)"},
                "dcba bcd_ _abc bcda dabc a+b+c"},
        RunCase{"comparisons",
                {"s = \"abc\"", "t = \"abc\"", "If s = t Then Print 1, \"1\"",
                 "If s <> t Then Print 1, \"x\"", "t = \"abd\"", "If s = t Then Print 1, \"x\"",
                 "If s <> t Then Print 1, \"2\"", "If s = \"abc\" Then Print 1, \"3\"",
                 "If \"ab\" = s Then Print 1, \"x\"", "short3 = \"abc\"",
                 "If short3 = s Then Print 1, \"4\"", "If empty = \"\" Then Print 1, \"5\""},
                "12345"},
        RunCase{
            "numbers_in_strings",
            {"w = 65535", "s = \"w=\" + #w", "Print 1, s, \"|\"", "s = #w",
             "Print 1, s, \"|\", Len(s), \"|\"", "n = 7", "t = \"n\" + #n + \"!\"", "Print 1, t"},
            "w=65535|65535|5|n7!"},
        RunCase{"characters_of_a_string",
                {"s = \"Zebra\"", "c = s(0)", "n = s(4)", "Print 1, c, \" \", n, \" \", Asc(s)"},
                "90 97 90"},
        RunCase{"string_pointers",
                {"s = \"pointed\"", "SetStrPtr p = s", "t = p", "Print 1, t, \" \"", "p = \"new\"",
                 "Print 1, s"},
                "pointed new"}),
    CaseName);

TEST(StringRoutines, StringProceduresAndFunctions) {
    BasicRun b("strings_routines");
    EXPECT_EQ(b.RunOutput(Lines({"Dim s As String", "Dim r As String", "s = \"abc\"", "Shout s",
                                 "Print 1, s, \" \"", "r = Twice(s)", "Print 1, r", "End",
                                 "Proc Shout(ByRef text As String)", "text = UCase(text) + \"!\"",
                                 "End Proc", "Function Twice[10](x As String) As String",
                                 "ReturnValue x + x", "End Function"})),
              "ABC! ABC!ABC!");
}

TEST(StringRoutines, OnlyTheCalledEntriesAreEmitted) {
    BasicRun b("strings_entries");
    ASSERT_EQ(b.Compile(Lines({"Dim s As String", "s = UCase(\"ab\")", "Print 1, s"})), 0);
    const std::string text = b.Asm();
    EXPECT_NE(text.find("SG81:"), std::string::npos);
    EXPECT_EQ(text.find("SG79:"), std::string::npos);
    EXPECT_EQ(text.find("SG65:"), std::string::npos);
}

class StringErrors : public ::testing::TestWithParam<LineError> {};

TEST_P(StringErrors, GiveTheirMessage) {
    const LineError& c = GetParam();
    BasicRun b(std::string("strings_error_") + c.name);
    EXPECT_EQ(b.ErrorAt(Lines({"Dim s[4] As String", "Dim n As Byte", "Dim p As Word", c.line}), 4),
              "Error in line 4:\r\n" + c.line + "\r\n" + c.message);
}

INSTANTIATE_TEST_SUITE_P(
    Compiler, StringErrors,
    ::testing::Values(
        LineError{"constant_too_long", "s = \"abcde\"",
                  "String constant can not fit in the string variable.\r\nMaximal number of "
                  "characters in this string variable is: 4.\r\nUse #define directive to change "
                  "STRING_MAX_LENGTH parameter value. \r\nOr, use the correct [] suffix on string "
                  "variable declaration."},
        LineError{"illegal_operation", "s = s - \"a\"",
                  "Bad expression: Illegal string operation.\r\nOperator: -"},
        LineError{"numeric_variable", "s = s + n",
                  "Bad expression: Incorrect argument types in the expression."},
        LineError{"ordering", "If s < \"b\" Then n = 1",
                  "Comparison operator not allowed for String variables."},
        LineError{"character_argument", "n = InStr(s, 300)",
                  "Any integer data type variable or UShort constant expected here: '300'."},
        LineError{"pointer_target", "SetStrPtr p = s",
                  "String pointer variable (StrPtr type) expected here: 'p'."}),
    CaseName);

TEST(StringTemporaries, OptimizedOnesServeEveryStatement) {
    // The first statement needs temporaries of 1 and 3 characters, the second one
    // of 16: made in advance they are 1 and 16 characters long and serve both;
    // made on demand, the one of 3 can not serve the second statement.
    const std::string program = Lines({"Dim s, t As String", "Dim n As Byte", "n = 5",
                                       "s = \"a\" + #n", "t = UCase(s) + s", "Print 1, s, t"});
    for (bool optimize : {true, false}) {
        BasicRun b("string_temps");
        b.settings.SetSettingInt(kKeyOptimizeStringTemps, optimize ? 1 : 0);
        EXPECT_EQ(b.RunOutput(program), "a5A5a5");
        const std::string text = b.Asm();
        EXPECT_EQ(countOccurrences(text, "]\t.EQU"), optimize ? 2 : 3) << text;
    }
}

}  // namespace
}  // namespace mb::testing
