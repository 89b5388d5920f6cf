// The append routines on good and bad input, and the two reports of a compile
// to the character.
#include <gtest/gtest.h>

#include "compiler/reports.h"
#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

struct AppendCase {
    const char* call;
    const char* output;
};

TEST(AppendRoutines, ConvertGoodAndBadInput) {
    const AppendCase cases[] = {
        // clang-format off
        {"HexStr(48879)", "BEEF"}, {"HexStr(0)", "0000"}, {"HexStr(10)", "000A"},
        {"DecFromHex(\"ff\")", "255"}, {"DecFromHex(\"1A2b\")", "6699"}, {"DecFromHex(\"\")", "0"},
        {"StrValW(\"12\")", "12"}, {"StrValW(\"65535\")", "65535"}, {"StrValB(\"200\")", "200"},
        {"StrValL(\"4000000000\")", "4000000000"}, {"StrValL(\"7\")", "7"},
        {"StrValS(\"-12.5\")", "-12.500"}, {"StrValS(\"3\")", "3.000"},
        {"StrValS(\"0.25\")", "0.250"},
        // Not digits: each character counts by its code less 48 after UCase, as the
        // routine reads it: "X" is 40.
        {"StrValW(\"1x\")", "50"},
        // clang-format on
    };
    for (const AppendCase& c : cases) {
        BasicRun b("append_case");
        EXPECT_EQ(b.RunOutput(Lines({"Print 1, " + std::string(c.call)})), c.output) << c.call;
    }
}

TEST(AppendRoutines, TheArgumentStaysAsItWasAndTwoCallsCompileTheRoutineOnce) {
    BasicRun b("append_once");
    b.options.disableLineCrypting = true;
    EXPECT_EQ(b.RunOutput(Lines({"#define STRING_MAX_LENGTH = 12", "Dim s As String",
                                 "Dim w As Word", "s = \"12\"", "w = StrValW(s)",
                                 "Print 1, s, \" \", w, \" \", HexStr(w), \" \", HexStr(255)"})),
              "12 12 000C 00FF");
    const std::string text = b.Asm();
    EXPECT_EQ(countOccurrences(text, "; APPEND CODE BEGIN: _routine_str_hexstr_"), 1);
    EXPECT_EQ(countOccurrences(text, "; APPEND CODE BEGIN: _routine_str_valw_"), 1);
    EXPECT_EQ(countOccurrences(text, "_routine_str_vall_"), 0);
    EXPECT_NE(text.find("_append_lab_0001:"), std::string::npos);
    EXPECT_EQ(text.find(";protected:"), std::string::npos);
    // Without the developer switch the routines' lines are protected, and still run.
    BasicRun hidden("append_protected");
    EXPECT_EQ(hidden.RunOutput(Lines({"Print 1, HexStr(4660)"})), "1234");
    EXPECT_NE(hidden.Asm().find(";protected:"), std::string::npos);
    EXPECT_EQ(hidden.Asm().find("APPEND CODE BEGIN"), std::string::npos);
}

TEST(AppendRoutines, StrValNeedsTenCharacters) {
    BasicRun b("append_short_strings");
    EXPECT_EQ(
        b.Compile(Lines({"#define STRING_MAX_LENGTH = 8", "Dim w As Word", "w = StrValW(\"1\")"})),
        3);
    ASSERT_EQ(b.sink.errors.size(), 1u);
    EXPECT_NE(b.sink.errors[0].find("STRING_MAX_LENGTH parameter should be at least 10 to use "
                                    "StrValW function."),
              std::string::npos);
}

TEST(Reports, UserVariablesToTheCharacter) {
    BasicRun b("report_variables");
    b.options.optimizeVariables = false;
    ASSERT_EQ(
        b.Compile(Lines({"Dim flag As Bit", "Dim s8 As Short", "Dim i16 As Integer",
                         "Dim i32 As Long", "Dim real As Single", "Dim text[5] As String",
                         "Dim p As StrPtr", "Dim b8 As Byte", "Dim w16 As Word", "Dim u32 As ULong",
                         "Dim a_rather_long_name As Byte", "Dim n, m As Integer",
                         "ASM: LD HL,flag+s8+i16+i32+real+text+p+b8+w16+u32",
                         "ASM: LD HL,a_rather_long_name+n+m", "End",
                         "Proc Work(ByRef count As Integer, name As String)", "Dim tmp As Long",
                         "ASM: LD HL,tmp", "End Proc"})),
        0);
    EXPECT_EQ(userVariablesReport(b.State()),
              "Name      Type      Address   Scope     \r\n"
              "---------------------------------------------\r\n"
              "flag      Boolean   FEFFH     global    \r\n"
              "s8        Short     FEFEH     global    \r\n"
              "i16       Integer   FEFCH     global    \r\n"
              "i32       Long      FEF8H     global    \r\n"
              "real      Single    FEF4H     global    \r\n"
              "text      String    FEEEH     global    \r\n"
              "p         StrPtr    FEECH     global    \r\n"
              "b8        UShort    FEEBH     global    \r\n"
              "w16       UInteger  FEE9H     global    \r\n"
              "u32       ULong     FEE5H     global    \r\n"
              "a_rather_long_name UShort    FEE4H     global    \r\n"
              "n         Integer   FEE2H     global    \r\n"
              "m         Integer   FEE0H     global    \r\n"
              "count     Integer   FEDEH     Work      \r\n"
              "name      String    FECDH     Work      \r\n"
              "tmp       Long      FEC9H     Work      \r\n");
}

TEST(Reports, InstructionUsageToTheCharacter) {
    const std::string output =
        "\tLD A,05H\r\n\tLD (8000H),A\r\nL0001:\tINC A\r\n\tRET\r\n\tRETI\r\n\tCALL X\r\n"
        "\tCPIR\r\n\tCP 5\r\n\tHALT\r\n";
    const std::string report = instructionUsageReport(output);
    const std::string head =
        "Total: 9 instructions used.\r\n"
        "---------------------------------------------\r\n"
        "Instruction    Number    \r\n"
        "------------------------------\r\n"
        "CALL           1         \r\n"
        "CP             1         \r\n"
        "CPIR           1         \r\n"
        "HALT           1         \r\n"
        "INC            1         \r\n"
        "LD             2         \r\n"
        "RET            1         \r\n"
        "RETI           1         \r\n"
        "ADC            0         \r\n"
        "ADD            0         \r\n";
    EXPECT_EQ(report.substr(0, head.size()), head);
    EXPECT_EQ(countOccurrences(report, "\r\n"), 4 + 67);
    EXPECT_NE(report.find("XOR            0         \r\n"), std::string::npos);
}

}  // namespace
}  // namespace mb::testing
