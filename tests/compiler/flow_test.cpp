// Flow statements and routines end to end: each program is compiled, assembled
// and run, and what it prints on port 1 is compared; each structure error gives
// its message at its line.
#include <gtest/gtest.h>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

class Flow : public ::testing::TestWithParam<RunCase> {};

TEST_P(Flow, PrintsWhatTheProgramSays) {
    BasicRun b(std::string("flow_") + GetParam().name);
    EXPECT_EQ(b.RunOutput(Lines(GetParam().lines)), GetParam().output);
}

INSTANTIATE_TEST_SUITE_P(
    Compiler, Flow,
    ::testing::Values(
        RunCase{"function_in_a_loop",
                {"Dim n As Integer", "Dim total As Long", "total = 0", "For n = 1 To 10",
                 "total = total + Square(n)", "Next n", "Print 1, total", "End",
                 "Function Square(x As Integer) As Long", "ReturnValue x * x", "End Function"},
                "385"},
        RunCase{"select_with_a_list",
                {"Dim n As Integer", "n = 3", "Select Case n", "Case 1", "Print 1, \"one\"",
                 "Case 2, 3", "Print 1, \"two or three\"", "Case Else", "Print 1, \"other\"",
                 "EndSelect", "Print 1, CrLf"},
                "two or three\r\n"},
        RunCase{"if_else_block_and_one_line",
                {"Dim a, b As Byte", "For a = 1 To 4", "If a = 2 Then", "Print 1, \"two\"", "Else",
                 "If a > 2 Then Print 1, \"big\" Else Print 1, \"small\"", "Endif", "Next a"},
                "smalltwobigbig"},
        RunCase{"and_or_chains",
                {"Dim a, b, c As Byte", "a = 1", "b = 2", "c = 3",
                 "If a = 1 And b = 2 Then Print 1, \"1\"", "If a = 2 Or b = 2 Then Print 1, \"2\"",
                 "If a = 2 Or b = 3 Then Print 1, \"x\"", "If a < b && b < c Then Print 1, \"3\"",
                 "If (a = 1 Or b = 9) And c = 3 Then Print 1, \"4\"",
                 "If (a = 2 Or b = 9) And c = 3 Then Print 1, \"y\""},
                "1234"},
        RunCase{"nested_loops_several_levels",
                {"Dim i, j, k As Byte", "Dim count As Word", "count = 0", "For i = 1 To 5",
                 "For j = 1 To 5", "k = 0", "While k < 4", "If i <> j Then", "count = count + 1",
                 "Endif", "k = k + 1", "Wend", "Next j", "Next i", "Print 1, count"},
                "80"},
        RunCase{"for_with_steps",
                {"Dim i As Integer", "For i = 10 To 1 Step -3", "Print 1, i, \" \"", "Next i",
                 "For i = 0 To 9 Step 4", "Print 1, i, \" \"", "Next i"},
                "10 7 4 1 0 4 8 "},
        RunCase{"byte_loop_to_255_ends_by_carry",
                {"Dim i As Byte", "Dim n As Word", "n = 0", "For i = 0 To 255", "n = n + 1",
                 "Next i", "Print 1, n"},
                "256"},
        RunCase{"short_loop_ends_on_overflow",
                {"Dim s As Short", "Dim n As Word", "n = 0", "For s = 120 To 127", "n = n + 1",
                 "Next s", "Print 1, n"},
                "8"},
        RunCase{"exit_for_and_cfor",
                {"Dim i, j As Byte", "For i = 1 To 100", "If i = 4 Then Exit For", "Next i",
                 "Print 1, i, \" \"", "CFor(j = 0; j < 10; j++)", "If j = 3 Then Exit CFor",
                 "Print 1, j", "CNext", "Print 1, \" \", j"},
                "4 012 3"},
        RunCase{"cfor_with_several_parts",
                {"Dim i, j As Byte", "CFor(i = 0, j = 10; i < j; i++, j--)", "Print 1, i", "CNext"},
                "01234"},
        RunCase{
            "select_ranges_and_comparisons",
            {"Dim n As Byte", "For n = 0 To 12 Step 3", "Select Case n", "Case 0", "Print 1, \"z\"",
             "Case 1 To 4", "Print 1, \"s\"", "Case 10 To 7", "Print 1, \"r\"", "Case > 10",
             "Print 1, \"b\"", "Case Else", "Print 1, \"e\"", "EndSelect", "Next n"},
            "zserb"},
        RunCase{"goto_and_gosub",
                {"Dim n As Byte", "n = 0", "again:", "n = n + 1", "If n < 3 Then Goto again",
                 "Gosub show", "End", "show:", "Print 1, n", "Return"},
                "3"},
        RunCase{"sub_with_exit",
                {"Dim n As Byte", "For n = 1 To 3", "Gosub report", "Next n", "End", "Sub report",
                 "If n = 2 Then Exit Sub", "Print 1, n", "End Sub"},
                "13"},
        RunCase{"procedure_by_reference",
                {"Dim a, b As Integer", "a = 5", "b = 7", "Swap a, b", "Print 1, a, \" \", b",
                 "End", "Proc Swap(ByRef x As Integer, ByRef y As Integer)", "Dim t As Integer",
                 "t = x", "x = y", "y = t", "End Proc"},
                "7 5"},
        RunCase{"procedures_by_value_and_by_reference_out",
                {"Dim a, b As Integer", "a = 7", "b = 5", "Call Twice(a)", "Print 1, a", "Bump b",
                 "Print 1, \" \", b", "End", "Proc Twice(v As Integer)", "v = v * 2", "End Proc",
                 "Proc Bump(ByRefOut r As Integer)", "r = 100", "Exit", "r = 5", "End Proc"},
                "7 100"},
        RunCase{
            "functions_in_expressions",
            {"Dim r As Long", "r = Cube(3) + Cube(2) * 2", "Print 1, r, \" \"",
             "Print 1, Max(4, 9), \" \", Max(9, 4)", "End", "Function Cube(x As Long) As Long",
             "ReturnValue x * x * x", "End Function", "Function Max(a As Byte, b As Byte) As Byte",
             "If a > b Then", "ReturnValue a", "Exit", "Endif", "ReturnValue b", "End Function"},
            "43 9 9"},
        RunCase{"while_with_single_test",
                {"Dim f As Single", "Dim n As Byte", "f = 1", "n = 0", "While f < 100", "f = f * 3",
                 "n = n + 1", "Wend", "Print 1, n, \" \", f"},
                "5 243.000"}),
    CaseName);

// --- Structure errors ---------------------------------------------------

class StructureErrors : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(StructureErrors, GiveTheirMessageAtTheirLine) {
    BasicRun b(std::string("flow_error_") + GetParam().name);
    EXPECT_EQ(b.ErrorAt(Lines(GetParam().lines), GetParam().line), ErrorText(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    Compiler, StructureErrors,
    ::testing::Values(
        // clang-format off
        ErrorCase{"wend_without_while", {"Dim a As Byte", "a = 1", "Wend"}, 3,
                  "Wend without While.\r\nIncorrect program structure."},
        ErrorCase{"next_without_for", {"Dim i As Byte", "Next i"}, 2,
                  "Next without For.\r\nIncorrect program structure."},
        ErrorCase{"next_without_variable", {"Dim i As Byte", "For i = 1 To 2", "Next"}, 3,
                  "Syntax error."},
        ErrorCase{"endif_inside_while", {"Dim i As Byte", "While i < 2", "Endif"}, 3,
                  "If is missing.\r\nWhile structure is not completed... (Wend is missing up to "
                  "this line)\r\nIncorrect program structure."},
        ErrorCase{"wrong_next_variable", {"Dim i, j As Byte", "For i = 1 To 2", "Next j"}, 3,
                  "Incorrect For loop variable: 'j'.\r\n'i' expected."},
        ErrorCase{"open_if_at_end", {"Dim i As Byte", "If i = 1 Then", "i = 2"}, 3,
                  "If structure is not completed... (Endif is missing)\r\nMain Routine structure "
                  "is not completed... (End is missing)\r\nIncorrect program structure."},
        ErrorCase{"duplicate_else", {"Dim i As Byte", "If i = 1 Then", "Else", "Else", "Endif"}, 4,
                  "Duplicate Else."},
        ErrorCase{"then_missing", {"Dim i As Byte", "If i = 1", "Endif"}, 2, "Then is missing."},
        ErrorCase{"to_missing", {"Dim i As Byte", "For i = 1", "Next i"}, 2, "To is missing."},
        ErrorCase{"step_missing", {"Dim i As Byte", "For i = 1 To 5 Step", "Next i"}, 2,
                  "Step expression is missing."},
        ErrorCase{"for_assignment", {"Dim i As Byte", "For i To 5", "Next i"}, 2,
                  "Bad For expression: Assignment operator is missing.\r\ni"},
        ErrorCase{"exit_for_outside", {"Dim i As Byte", "Exit For"}, 2,
                  "For structure is missing."},
        ErrorCase{"cfor_format", {"Dim i As Byte", "CFor(i = 0; i < 3)", "CNext"}, 2,
                  "Loop expression is missing."},
        ErrorCase{"select_with_expression", {"Dim i As Byte", "Select Case i + 1", "EndSelect"}, 2,
                  "Syntax error."},
        ErrorCase{"one_line_if_with_for", {"Dim i As Byte", "If i = 0 Then For i = 1 To 2"}, 2,
                  "Invalid statement in If-Then line."},
        ErrorCase{"unknown_routine", {"Dim i As Byte", "Call Nothing(1)"}, 2,
                  "Incorrect procedure or function name."},
        ErrorCase{"too_many_arguments", {"Dim i As Byte", "Call P(1, 2)", "End",
                   "Proc P(a As Byte)", "End Proc"}, 2, "Too many arguments (1 max)."},
        ErrorCase{"return_value_outside", {"Dim i As Byte", "ReturnValue 1"}, 2,
                  "ReturnValue without Function declaration."},
        ErrorCase{"end_proc_alone", {"Dim i As Byte", "End", "End Proc"}, 3,
                  "Proc declaration is missing.\r\nIncorrect program structure."},
        ErrorCase{"return_alone", {"Dim i As Byte", "Return"}, 2,
                  "Subroutine declaration is missing.\r\nIncorrect program structure."},
        ErrorCase{"endselect_alone", {"Dim i As Byte", "EndSelect"}, 2,
                  "Select Case is missing.\r\nIncorrect program structure."},
        ErrorCase{"cnext_alone", {"Dim i As Byte", "CNext"}, 2,
                  "CNext without CFor.\r\nIncorrect program structure."},
        ErrorCase{"exit_sub_outside", {"Dim i As Byte", "Exit Sub"}, 2,
                  "Exit Sub without subroutine declaration."},
        ErrorCase{"exit_outside", {"Dim i As Byte", "Exit"}, 2,
                  "Exit without Proc or Function declaration."},
        ErrorCase{"proc_inside_while", {"Dim i As Byte", "While i < 3", "End",
                   "Proc P(a As Byte)", "End Proc"}, 3,
                  "While structure is not completed... (Wend is missing up to this "
                  "line)\r\nIncorrect program structure."},
        ErrorCase{"goto_nowhere", {"Dim i As Byte", "Goto nowhere"}, 2,
                  "Incorrect line label name."}),
    // clang-format on
    CaseName);

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
    EXPECT_EQ(b.RunOutput(
                  Lines({"Dim n As Byte", "n = 2", "While n", "Print 1, n", "n = n - 1", "Wend"})),
              "21");
    EXPECT_NE(b.State().warningText.find("Line 3: UShort data type variable 'n' is the result of "
                                         "condition expression evaluation: n. Any non-zero value "
                                         "will be interpreted as True..."),
              std::string::npos)
        << b.State().warningText;
}

}  // namespace
}  // namespace mb::testing
