// Flow statements and routines end to end: each program is compiled, assembled
// and run, and what it prints on port 1 is compared; each structure error gives
// its message at its line.
#include <gtest/gtest.h>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

struct FlowCase {
    const char* name;
    std::vector<std::string> lines;
    const char* output;
};

void PrintTo(const FlowCase& c, std::ostream* os) {
    *os << c.name;
}

class Flow : public ::testing::TestWithParam<FlowCase> {};

TEST_P(Flow, PrintsWhatTheProgramSays) {
    const FlowCase& c = GetParam();
    BasicRun b(std::string("flow_") + c.name);
    std::string program;
    for (const std::string& line : c.lines) program += line + "\r\n";
    ASSERT_TRUE(b.CompileAndRun(program)) << b.Failure;
    EXPECT_EQ(b.run.Output, c.output);
}

INSTANTIATE_TEST_SUITE_P(
    Compiler, Flow,
    ::testing::Values(
        FlowCase{"prime_sieve",
                 {"Dim flags(50) As Byte",
                  "Dim i, j As Byte",
                  "For i = 2 To 49",
                  "flags(i) = 1",
                  "Next i",
                  "i = 2",
                  "While i < 8",
                  "If flags(i) = 1 Then",
                  "j = i * i",
                  "While j < 50",
                  "flags(j) = 0",
                  "j = j + i",
                  "Wend",
                  "Endif",
                  "i = i + 1",
                  "Wend",
                  "For i = 2 To 49",
                  "If flags(i) = 1 Then Print 1, i, \" \"",
                  "Next i",
                  "Print 1, CrLf"},
                 "2 3 5 7 11 13 17 19 23 29 31 37 41 43 47 \r\n"},
        FlowCase{"function_and_select",
                 {"Dim n As Integer",
                  "Dim total As Long",
                  "total = 0",
                  "For n = 1 To 10",
                  "total = total + Square(n)",
                  "Next n",
                  "Print 1, total, \" \"",
                  "n = 3",
                  "Select Case n",
                  "Case 1",
                  "Print 1, \"one\"",
                  "Case 2, 3",
                  "Print 1, \"two or three\"",
                  "Case Else",
                  "Print 1, \"other\"",
                  "EndSelect",
                  "Print 1, CrLf",
                  "End",
                  "Function Square(x As Integer) As Long",
                  "ReturnValue x * x",
                  "End Function"},
                 "385 two or three\r\n"},
        FlowCase{"if_else_block_and_one_line",
                 {"Dim a, b As Byte", "For a = 1 To 4", "If a = 2 Then", "Print 1, \"two\"", "Else",
                  "If a > 2 Then Print 1, \"big\" Else Print 1, \"small\"", "Endif", "Next a"},
                 "smalltwobigbig"},
        FlowCase{"and_or_chains",
                 {"Dim a, b, c As Byte", "a = 1", "b = 2", "c = 3",
                  "If a = 1 And b = 2 Then Print 1, \"1\"", "If a = 2 Or b = 2 Then Print 1, \"2\"",
                  "If a = 2 Or b = 3 Then Print 1, \"x\"", "If a < b && b < c Then Print 1, \"3\"",
                  "If (a = 1 Or b = 9) And c = 3 Then Print 1, \"4\"",
                  "If (a = 2 Or b = 9) And c = 3 Then Print 1, \"y\""},
                 "1234"},
        FlowCase{"nested_loops_several_levels",
                 {"Dim i, j, k As Byte", "Dim count As Word", "count = 0", "For i = 1 To 5",
                  "For j = 1 To 5", "k = 0", "While k < 4", "If i <> j Then", "count = count + 1",
                  "Endif", "k = k + 1", "Wend", "Next j", "Next i", "Print 1, count"},
                 "80"},
        FlowCase{"for_with_steps",
                 {"Dim i As Integer", "For i = 10 To 1 Step -3", "Print 1, i, \" \"", "Next i",
                  "For i = 0 To 9 Step 4", "Print 1, i, \" \"", "Next i"},
                 "10 7 4 1 0 4 8 "},
        FlowCase{"byte_loop_to_255_ends_by_carry",
                 {"Dim i As Byte", "Dim n As Word", "n = 0", "For i = 0 To 255", "n = n + 1",
                  "Next i", "Print 1, n"},
                 "256"},
        FlowCase{"short_loop_ends_on_overflow",
                 {"Dim s As Short", "Dim n As Word", "n = 0", "For s = 120 To 127", "n = n + 1",
                  "Next s", "Print 1, n"},
                 "8"},
        FlowCase{"exit_for_and_cfor",
                 {"Dim i, j As Byte", "For i = 1 To 100", "If i = 4 Then Exit For", "Next i",
                  "Print 1, i, \" \"", "CFor(j = 0; j < 10; j++)", "If j = 3 Then Exit CFor",
                  "Print 1, j", "CNext", "Print 1, \" \", j"},
                 "4 012 3"},
        FlowCase{
            "cfor_with_several_parts",
            {"Dim i, j As Byte", "CFor(i = 0, j = 10; i < j; i++, j--)", "Print 1, i", "CNext"},
            "01234"},
        FlowCase{
            "select_ranges_and_comparisons",
            {"Dim n As Byte", "For n = 0 To 12 Step 3", "Select Case n", "Case 0", "Print 1, \"z\"",
             "Case 1 To 4", "Print 1, \"s\"", "Case 10 To 7", "Print 1, \"r\"", "Case > 10",
             "Print 1, \"b\"", "Case Else", "Print 1, \"e\"", "EndSelect", "Next n"},
            "zserb"},
        FlowCase{"goto_and_gosub",
                 {"Dim n As Byte", "n = 0", "again:", "n = n + 1", "If n < 3 Then Goto again",
                  "Gosub show", "End", "show:", "Print 1, n", "Return"},
                 "3"},
        FlowCase{"sub_with_exit",
                 {"Dim n As Byte", "For n = 1 To 3", "Gosub report", "Next n", "End", "Sub report",
                  "If n = 2 Then Exit Sub", "Print 1, n", "End Sub"},
                 "13"},
        FlowCase{"procedures_by_value_and_by_reference",
                 {"Dim a, b As Integer",
                  "a = 5",
                  "b = 7",
                  "Swap a, b",
                  "Print 1, a, \" \", b",
                  "Call Twice(a)",
                  "Print 1, \" \", a",
                  "Bump b",
                  "Print 1, \" \", b",
                  "End",
                  "Proc Swap(ByRef x As Integer, ByRef y As Integer)",
                  "Dim t As Integer",
                  "t = x",
                  "x = y",
                  "y = t",
                  "End Proc",
                  "Proc Twice(v As Integer)",
                  "v = v * 2",
                  "End Proc",
                  "Proc Bump(ByRefOut r As Integer)",
                  "r = 100",
                  "Exit",
                  "r = 5",
                  "End Proc"},
                 "7 5 7 100"},
        FlowCase{
            "functions_in_expressions",
            {"Dim r As Long", "r = Cube(3) + Cube(2) * 2", "Print 1, r, \" \"",
             "Print 1, Max(4, 9), \" \", Max(9, 4)", "End", "Function Cube(x As Long) As Long",
             "ReturnValue x * x * x", "End Function", "Function Max(a As Byte, b As Byte) As Byte",
             "If a > b Then", "ReturnValue a", "Exit", "Endif", "ReturnValue b", "End Function"},
            "43 9 9"},
        FlowCase{"while_with_single_test",
                 {"Dim f As Single", "Dim n As Byte", "f = 1", "n = 0", "While f < 100",
                  "f = f * 3", "n = n + 1", "Wend", "Print 1, n, \" \", f"},
                 "5 243.000"}),
    [](const auto& info) { return std::string(info.param.name); });

// --- Structure errors ---------------------------------------------------

struct StructureError {
    const char* name;
    std::vector<std::string> lines;
    int line;
    const char* message;  // the whole text of the error box
};

void PrintTo(const StructureError& c, std::ostream* os) {
    *os << c.name;
}

class StructureErrors : public ::testing::TestWithParam<StructureError> {};

TEST_P(StructureErrors, GiveTheirMessageAtTheirLine) {
    const StructureError& c = GetParam();
    BasicRun b(std::string("flow_error_") + c.name);
    std::string program;
    for (const std::string& line : c.lines) program += line + "\r\n";
    EXPECT_EQ(b.Compile(program), c.line);
    ASSERT_EQ(b.sink.errors.size(), 1u);
    EXPECT_EQ(b.sink.errors[0], c.message);
    EXPECT_FALSE(b.Exists("prog.asm"));
}

INSTANTIATE_TEST_SUITE_P(
    Compiler, StructureErrors,
    ::testing::Values(
        StructureError{"wend_without_while",
                       {"Dim a As Byte", "a = 1", "Wend"},
                       3,
                       "Error in line 3:\r\nWend\r\nWend without While.\r\nIncorrect program "
                       "structure."},
        StructureError{"next_without_for",
                       {"Dim i As Byte", "Next i"},
                       2,
                       "Error in line 2:\r\nNext i\r\nNext without For.\r\nIncorrect program "
                       "structure."},
        StructureError{"next_without_variable",
                       {"Dim i As Byte", "For i = 1 To 2", "Next"},
                       3,
                       "Error in line 3:\r\nNext\r\nSyntax error."},
        StructureError{"endif_inside_while",
                       {"Dim i As Byte", "While i < 2", "Endif"},
                       3,
                       "Error in line 3:\r\nEndif\r\nIf is missing.\r\nWhile structure is not "
                       "completed... (Wend is missing up to this line)\r\nIncorrect program "
                       "structure."},
        StructureError{"wrong_next_variable",
                       {"Dim i, j As Byte", "For i = 1 To 2", "Next j"},
                       3,
                       "Error in line 3:\r\nNext j\r\nIncorrect For loop variable: 'j'.\r\n'i' "
                       "expected."},
        StructureError{"open_if_at_end",
                       {"Dim i As Byte", "If i = 1 Then", "i = 2"},
                       3,
                       "Error in line 3:\r\ni = 2\r\nIf structure is not completed... "
                       "(Endif is missing)\r\nMain Routine structure is not completed... (End is "
                       "missing)\r\nIncorrect program structure."},
        StructureError{"duplicate_else",
                       {"Dim i As Byte", "If i = 1 Then", "Else", "Else", "Endif"},
                       4,
                       "Error in line 4:\r\nElse\r\nDuplicate Else."},
        StructureError{"then_missing",
                       {"Dim i As Byte", "If i = 1", "Endif"},
                       2,
                       "Error in line 2:\r\nIf i = 1\r\nThen is missing."},
        StructureError{"to_missing",
                       {"Dim i As Byte", "For i = 1", "Next i"},
                       2,
                       "Error in line 2:\r\nFor i = 1\r\nTo is missing."},
        StructureError{"step_missing",
                       {"Dim i As Byte", "For i = 1 To 5 Step", "Next i"},
                       2,
                       "Error in line 2:\r\nFor i = 1 To 5 Step\r\nStep expression is missing."},
        StructureError{"for_assignment",
                       {"Dim i As Byte", "For i To 5", "Next i"},
                       2,
                       "Error in line 2:\r\nFor i To 5\r\nBad For expression: Assignment operator "
                       "is missing.\r\ni"},
        StructureError{"exit_for_outside",
                       {"Dim i As Byte", "Exit For"},
                       2,
                       "Error in line 2:\r\nExit For\r\nFor structure is missing."},
        StructureError{"cfor_format",
                       {"Dim i As Byte", "CFor(i = 0; i < 3)", "CNext"},
                       2,
                       "Error in line 2:\r\nCFor(i = 0; i < 3)\r\nLoop expression is missing."},
        StructureError{"select_with_expression",
                       {"Dim i As Byte", "Select Case i + 1", "EndSelect"},
                       2,
                       "Error in line 2:\r\nSelect Case i + 1\r\nSyntax error."},
        StructureError{"one_line_if_with_for",
                       {"Dim i As Byte", "If i = 0 Then For i = 1 To 2"},
                       2,
                       "Error in line 2:\r\nIf i = 0 Then For i = 1 To 2\r\nInvalid statement in "
                       "If-Then line."},
        StructureError{"unknown_routine",
                       {"Dim i As Byte", "Call Nothing(1)"},
                       2,
                       "Error in line 2:\r\nCall Nothing(1)\r\nIncorrect procedure or function "
                       "name."},
        StructureError{"too_many_arguments",
                       {"Dim i As Byte", "Call P(1, 2)", "End", "Proc P(a As Byte)", "End Proc"},
                       2,
                       "Error in line 2:\r\nCall P(1, 2)\r\nToo many arguments (1 max)."},
        StructureError{"return_value_outside",
                       {"Dim i As Byte", "ReturnValue 1"},
                       2,
                       "Error in line 2:\r\nReturnValue 1\r\nReturnValue without Function "
                       "declaration."},
        StructureError{"end_proc_alone",
                       {"Dim i As Byte", "End", "End Proc"},
                       3,
                       "Error in line 3:\r\nEnd Proc\r\nProc declaration is missing.\r\n"
                       "Incorrect program structure."},
        StructureError{"return_alone",
                       {"Dim i As Byte", "Return"},
                       2,
                       "Error in line 2:\r\nReturn\r\nSubroutine declaration is missing.\r\n"
                       "Incorrect program structure."},
        StructureError{"endselect_alone",
                       {"Dim i As Byte", "EndSelect"},
                       2,
                       "Error in line 2:\r\nEndSelect\r\nSelect Case is missing.\r\n"
                       "Incorrect program structure."},
        StructureError{"cnext_alone",
                       {"Dim i As Byte", "CNext"},
                       2,
                       "Error in line 2:\r\nCNext\r\nCNext without CFor.\r\nIncorrect program "
                       "structure."},
        StructureError{"exit_sub_outside",
                       {"Dim i As Byte", "Exit Sub"},
                       2,
                       "Error in line 2:\r\nExit Sub\r\nExit Sub without subroutine declaration."},
        StructureError{"exit_outside",
                       {"Dim i As Byte", "Exit"},
                       2,
                       "Error in line 2:\r\nExit\r\nExit without Proc or Function declaration."},
        StructureError{"proc_inside_while",
                       {"Dim i As Byte", "While i < 3", "End", "Proc P(a As Byte)", "End Proc"},
                       3,
                       "Error in line 3:\r\nEnd\r\nWhile structure is not completed... (Wend is "
                       "missing up to this line)\r\nIncorrect program structure."},
        StructureError{"goto_nowhere",
                       {"Dim i As Byte", "Goto nowhere"},
                       2,
                       "Error in line 2:\r\nGoto nowhere\r\nIncorrect line label name."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(FlowWarnings, UnusedRoutinesAreReportedAndCanBeLeftOut) {
    const std::string program =
        Lines({"Dim a As Byte", "Call Used(1)", "End", "Proc Used(x As Byte)", "a = x", "End Proc",
               "Proc Idle(y As Byte)", "a = y", "End Proc"});
    BasicRun kept("flow_unused_kept");
    ASSERT_EQ(kept.Compile(program), 0);
    EXPECT_EQ(kept.State().warningText, "Line 7: Unused procedure: Proc Idle(y As Byte)\r\n");
    EXPECT_NE(kept.Asm().find("; 8: a = y\r\n\tLD"), std::string::npos);

    BasicRun dropped("flow_unused_dropped");
    dropped.options.doNotCompileUnused = true;
    ASSERT_EQ(dropped.Compile(program), 0);
    EXPECT_EQ(dropped.State().warningText,
              "Line 7: Unused procedure. Not compiled: Proc Idle(y As Byte)\r\n");
    EXPECT_NE(dropped.Asm().find("; 8: 'NOT COMPILED: a = y\r\n; 9:"), std::string::npos)
        << dropped.Asm();
}

TEST(FlowWarnings, ANumericConditionIsTrueWhenNotZero) {
    BasicRun b("flow_numeric_condition");
    ASSERT_TRUE(b.CompileAndRun(
        Lines({"Dim n As Byte", "n = 2", "While n", "Print 1, n", "n = n - 1", "Wend"})))
        << b.Failure;
    EXPECT_EQ(b.run.Output, "21");
    EXPECT_NE(b.State().warningText.find("Line 3: UShort data type variable 'n' is the result of "
                                         "condition expression evaluation: n. Any non-zero value "
                                         "will be interpreted as True..."),
              std::string::npos)
        << b.State().warningText;
}

}  // namespace
}  // namespace mb::testing
