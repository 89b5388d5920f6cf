#include "assembler/expression.h"

#include <gtest/gtest.h>

#include "test_support.h"

namespace mb {
namespace {

TEST(ParseNumber, LiteralForms) {
    const std::pair<const char*, double> cases[] = {
        {"0BH", 11},       {"1BH", 27},   {"0B1", 1},       {"101B", 5},   {"'A'", 65},
        {"\"a\"", 97},     {"A'z'", 122}, {"H'FF'", 255},   {"0x1F", 31},  {"$C000", 49152},
        {"0FFFFh", 65535}, {"&H10", 16},  {"&10", 16},      {"B'101'", 5}, {"%1111", 15},
        {"D'99'", 99},     {".123", 123}, {"65535", 65535}, {"#10", 10},   {"0000012", 12},
        {"65536", 65536},
    };
    for (const auto& [text, want] : cases) EXPECT_DOUBLE_EQ(ParseNumber(text), want) << text;
    // Up to the largest 32-bit number
    const std::pair<const char*, double> wide[] = {
        {"4294967295", 4294967295.0}, {"12345678H", 305419896}, {"%10000000000000000", 65536}};
    for (const auto& [text, want] : wide) EXPECT_DOUBLE_EQ(ParseNumber(text), want) << text;
}

TEST(ParseNumber, TextsThatAreNoNumber) {
    for (const char* bad :
         {"",  "'",   "''",  "\"\"", "A'",         "A''",         "H'",  "H''",  "0X", "$",
          "H", "&H",  "&",   "B'",   "B''",        "%",           "0B",  "B",    "D'", "D''",
          ".", "12D", "1.5", "'AB'", "4294967296", "123456789AH", "0XG", "%102", "+5", "1E3"})
        EXPECT_GE(ParseNumber(bad), kNotANumber) << bad;
}

TEST(WordLists, MnemonicsAndReservedWords) {
    EXPECT_TRUE(IsInstructionMnemonic("ld", false));
    EXPECT_TRUE(IsInstructionMnemonic("OTDR A", false));
    EXPECT_FALSE(IsInstructionMnemonic("sll", false));
    EXPECT_TRUE(IsInstructionMnemonic("SLL", true));
    EXPECT_FALSE(IsInstructionMnemonic("loop", false));
    EXPECT_TRUE(IsReservedKeyword("Include"));
    EXPECT_TRUE(IsReservedKeyword("locallabelchar"));
    EXPECT_FALSE(IsReservedKeyword("HL"));
}

class Evaluator : public ::testing::Test {
  protected:
    int Eval(const char* text, bool flat = false) {
        ExpressionContext ctx;
        ctx.symbols = &symbols;
        ctx.programCounter = 0x1000;
        ctx.noOperatorPrecedence = flat;
        return EvaluateExpression(text, true, ctx);
    }
    Symbols symbols;
};

TEST_F(Evaluator, ExamplesUsersWrite) {
    symbols.Add("table", 0x2000, 1);
    symbols.Add("ABH", 7, 2);
    symbols.Add("LATER", kUndefinedValue, 3);
    // Entries "text = value"
    const char* const rows[] = {
        "$+2 = 0x1002 | *+2 = 0x1002 | PC+2 = 0x1002 | pc+2 = 0x1002 | 2+$ = 0x1002",
        "3*4 = 12 | -1 = -1 | 5 - -1 = 6 | #-1 = -1 | #10 = 10",
        "<1234H = 0x34 | >1234H = 0x12 | low 1234H = 0x34 | HIGH 1234H = 0x12 | low -1 = 255",
        "highw 12345678H = 0x1234 | loww 12345678H = 0x5678",
        "7\\3 = 1 | -7\\3 = 2 | 7/2 = 3 | -7/2 = -4 | (1<<31)>>1 = 1073741824",
        "1+2*3 = 7 | [1+2]*3 = 9 | 2*(3+4) = 14 | 100-10-1 = 89",
        "10|5 = 15 | 12&10 = 8 | 12^10 = 6",
        "'A'+1 = 66 | \"A\" = 65 | ' ' = 32 | $FF = 255 | %101 = 5",
        "TABLE+1 = 0x2001 | ABH = 7 | LATER-1 = 2147483646",
    };
    for (const auto& [text, value] : testing::Entries(rows))
        EXPECT_EQ(Eval(text.c_str()), std::stoi(value, nullptr, 0)) << text;
}

TEST_F(Evaluator, Failures) {
    symbols.Add("LATER", kUndefinedValue, 1);
    for (const char* bad : {"*", "1<<31", "'AB'", "&FF", "2*-3", "(1+2", "1+2)", "5/0", "5\\0",
                            "NOWHERE", "1 2", "+", "LATER", ""})
        EXPECT_EQ(Eval(bad), kExpressionError) << bad;
}

// For each two neighbouring precedence levels (lower first in "levels"), an
// expression with the operator of the lower level first: with the two levels
// equal or swapped it would group the other way and give another value. Without
// precedence every binary operator runs left to right.
TEST_F(Evaluator, EachPrecedenceLevelBindsTighterThanTheOneBelow) {
    struct Case {
        const char* levels;
        const char* text;
        int want;
        int leftToRight;
    } cases[] = {
        {"| ^", "6|3^5", 6, 2},
        {"^ &", "6^3&5", 7, 5},
        {"& <<", "6&3<<1", 6, 4},
        {"& >>", "12&16>>2", 4, 0},
        {"<< +", "1<<2+1", 8, 5},
        {"<< -", "1<<3-1", 4, 7},
        {">> +", "32>>1+1", 8, 17},
        {">> -", "32>>3-1", 8, 3},
        {"+ *", "2+3*4", 14, 20},
        {"+ /", "2+12/4", 5, 3},
        {"+ \\", "2+7\\4", 5, 1},
        {"- *", "20-3*4", 8, 68},
        {"- /", "20-12/4", 17, 2},
        {"- \\", "20-7\\4", 17, 1},
        {"* low", "low 180H*2", 256, 256},
        {"* <", "<180H*2", 256, 256},
        {"* high", "high 1FFFFH*2", 510, 510},
        {"* >", ">1FFFFH*2", 510, 510},
        {"* loww", "loww 18000H*2", 65536, 65536},
        {"* highw", "highw 38000H*2", 6, 6},
        {"/ low", "low 181H/2", 64, 64},
        {"\\ low", "low 181H\\2", 1, 1},
        // Parentheses and a unary operator group alike with and without precedence.
        {"+ ( *", "1+(2*3)", 7, 7},
        {"+ low", "2+low 1234H", 0x36, 0x36},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.levels) + ": " + c.text);
        EXPECT_EQ(Eval(c.text), c.want);
        EXPECT_EQ(Eval(c.text, true), c.leftToRight) << "without precedence";
    }
}

// A log line padded so that "stack:" begins at column 81.
std::string StackLine(const std::string& line, const std::string& stack) {
    return line + std::string(80 - line.size(), ' ') + "stack: " + stack + "\n";
}

TEST_F(Evaluator, LogLayoutAndTheErrorBox) {
    struct Case {
        const char* text;
        int value;
        std::string log;
    } cases[] = {
        {"$+2*3", 11,
         "Original: $+2*3\n"
         "Infix: 5 + 2 * 3\n"
         "Postfix: 5 2 3 * +\n"
         "Execution:\n" +
             StackLine("6 = 2 * 3", "5 6") + StackLine("11 = 5 + 6", "11") + "Output: 11 11\n"},
        {"(2+3)*low 260/0", kExpressionError,
         "Original: (2+3)*low 260/0\n"
         "Infix: ( 2 + 3 ) * low 260 / 0\n"
         "Postfix: 2 3 + 260 low * 0 /\n"
         "Execution:\n" +
             StackLine("5 = 2 + 3", "5") + StackLine("4 = low (260)", "5 4") +
             StackLine("20 = 5 * 4", "20")},
        {"1+(2", kExpressionError, "Original: 1+(2\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        testing::RecordingReporter reporter;
        bool latch = false;
        ExpressionContext ctx{&symbols, 5, false, &latch, &reporter};
        const Evaluation ev = EvaluateWithLog(c.text, ctx);
        EXPECT_EQ(ev.value, c.value);
        EXPECT_EQ(ev.log, c.log);
        // The box of a failure shows the same log.
        EXPECT_EQ(EvaluateExpression(c.text, false, ctx), c.value);
        if (c.value == kExpressionError) {
            ASSERT_EQ(reporter.shown.size(), 1u);
            EXPECT_EQ(reporter.shown[0], "Error evaluating expression: " + std::string(c.text) +
                                             "\nExpression evaluation log:\n" + c.log);
        } else {
            EXPECT_TRUE(reporter.shown.empty());
        }
    }
}

TEST_F(Evaluator, OneErrorBoxPerRun) {
    testing::RecordingReporter reporter;
    bool latch = false;
    ExpressionContext ctx{&symbols, 0, false, &latch, &reporter};
    EXPECT_EQ(EvaluateExpression("XYZ", true, ctx), kExpressionError);
    EXPECT_TRUE(reporter.shown.empty());
    EvaluateExpression("XYZ", false, ctx);
    EvaluateExpression("ABC", false, ctx);
    ASSERT_EQ(reporter.shown.size(), 1u);
    EXPECT_EQ(reporter.shown[0].rfind(
                  "Error evaluating expression: XYZ\nExpression evaluation log:\n", 0),
              0u);
}

TEST(Symbols, FirstEqualEntryWinsAndCaseIsIgnored) {
    Symbols s;
    s.Add("Loop", 1, 1);
    s.Add("LOOP", 2, 2);
    EXPECT_EQ(s.FindLabel("loop"), 1);
    EXPECT_EQ(s.Value(s.FindLabel("LoOp")), 1);
    EXPECT_EQ(s.FindLabel("other"), 0);
}

}  // namespace
}  // namespace mb
