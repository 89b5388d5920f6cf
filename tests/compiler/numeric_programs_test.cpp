// Numeric programs end to end with the runtime library: every arithmetic
// operator on every numeric type, printed on port 1 and compared with the same
// arithmetic done here; and the example programs of the numeric statements.
#include <gtest/gtest.h>

#include <cstdint>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

struct NumericType {
    const char* name;
    int bits;
    bool isSigned;
};

constexpr NumericType kTypes[] = {{"Byte", 8, false},    {"Short", 8, true},   {"Word", 16, false},
                                  {"Integer", 16, true}, {"ULong", 32, false}, {"Long", 32, true}};

// v brought into the type's range as the Z80 code leaves it.
long long Wrap(long long v, const NumericType& t) {
    const long long mask = (1LL << t.bits) - 1;
    v &= mask;
    if (t.isSigned && v >> (t.bits - 1)) v -= mask + 1;
    return v;
}

// The result of the runtime's division and remainder: the quotient's sign is
// the exclusive or of the signs, the remainder is that of the magnitudes.
long long Apply(long long a, char op, long long b) {
    switch (op) {
        case '+': return a + b;
        case '-': return a - b;
        case '*': return a * b;
        case '/':
            return (a < 0) != (b < 0) ? -(std::llabs(a) / std::llabs(b))
                                      : std::llabs(a) / std::llabs(b);
        default: return std::llabs(a) % std::llabs(b);
    }
}

TEST(NumericPrograms, EveryOperatorOnEveryIntegerType) {
    const std::vector<std::pair<long long, long long>> pairs = {
        {7, 3},           {100, 7},          {-7, 2},       {-100, -9},   {120, 13},
        {250, 10},        {30000, 300},      {-30000, 7},   {60000, 255}, {2000000000, 3},
        {-2000000000, 7}, {4000000000LL, 9}, {12345, 12345}};
    for (const NumericType& t : kTypes) {
        std::string program = "Dim a, b, r As " + std::string(t.name) + "\r\n";
        std::string expected;
        int cases = 0;
        for (const auto& [x, y] : pairs) {
            const long long a = Wrap(x, t), b = Wrap(y, t);
            if (a != x || b != y || b == 0) continue;  // only operands the type holds
            program += "a = " + std::to_string(a) + "\r\nb = " + std::to_string(b) + "\r\n";
            for (char op : std::string("+-*/%")) {
                const std::string text = op == '%' ? "Mod" : std::string(1, op);
                program += "r = a " + text + " b\r\nPrint 1, r, \" \"\r\n";
                expected += std::to_string(Wrap(Apply(a, op, b), t)) + " ";
            }
            ++cases;
        }
        ASSERT_GT(cases, 2) << t.name;
        BasicRun b(std::string("numeric_ops_") + t.name);
        EXPECT_EQ(b.RunOutput(program), expected) << t.name;
    }
}

TEST(NumericPrograms, EveryComparisonOnEveryNumericType) {
    const std::vector<std::pair<long long, long long>> pairs = {
        {3, 3},           {3, 7},     {7, 3},          {-5, 4},    {4, -5},
        {-9, -2},         {200, 100}, {-30000, 30000}, {65000, 1}, {-2000000000, 2000000000},
        {4000000000LL, 5}};
    const char* ops[] = {"=", "<>", "<", "<=", ">", ">="};
    auto holds = [](long long a, const std::string& op, long long b) {
        if (op == "=") return a == b;
        if (op == "<>") return a != b;
        if (op == "<") return a < b;
        if (op == "<=") return a <= b;
        if (op == ">") return a > b;
        return a >= b;
    };
    std::vector<NumericType> types(std::begin(kTypes), std::end(kTypes));
    types.push_back({"Single", 32, true});
    for (const NumericType& t : types) {
        const bool single = std::string(t.name) == "Single";
        std::string program = "Dim a, b As " + std::string(t.name) + "\r\nDim r As Bit\r\n";
        std::string expected;
        for (const auto& [x, y] : pairs) {
            if (single ? (std::llabs(x) > 1000000 || std::llabs(y) > 1000000)
                       : Wrap(x, t) != x || Wrap(y, t) != y) {
                continue;
            }
            program += "a = " + std::to_string(x) + "\r\nb = " + std::to_string(y) + "\r\n";
            for (const char* op : ops) {
                program += std::string("r = a ") + op + " b\r\nPrint 1, r\r\n";
                expected += holds(x, op, y) ? "1" : "0";
            }
        }
        BasicRun b(std::string("numeric_compare_") + t.name);
        EXPECT_EQ(b.RunOutput(program), expected) << t.name;
    }
}

TEST(NumericPrograms, MixedTypesWidenAndComparisonsOrder) {
    BasicRun b("numeric_mixed");
    const std::string declarations =
        Lines({"Dim x As Byte", "Dim s As Short", "Dim i As Integer", "Dim w As Word",
               "Dim l As Long", "Dim f As Single", "Dim t As Bit"});
    // Integer 100, Long 130000 and -100000, Single 25.000 and -1234.000.
    const std::string widen =
        Lines({"x = 200", "s = -100", "i = x + s", "Print 1, i, \" \"", "w = 65000", "l = w * 2",
               "Print 1, l, \" \"", "l = s * 1000", "Print 1, l, \" \"", "f = x", "f = f / 8",
               "Print 1, f, \" \"", "i = -1234", "f = i", "Print 1, f, \" \""});
    const std::string compare =
        Lines({"t = s < x", "Print 1, t, \" \"", "t = l > -99999", "Print 1, t, \" \"",
               "t = f <= -1234", "Print 1, t, \" \"", "t = w == 65000", "Print 1, t, \" \"",
               "t = s >= -100", "Print 1, t, \" \"", "t = i <> -1234", "Print 1, t, CrLf", "End"});
    EXPECT_EQ(b.RunOutput(declarations + widen + compare),
              "100 130000 -100000 25.000 -1234.000 1 0 1 1 1 0\r\n");
    EXPECT_NE(b.State().warningText.find("Comparison is performed between different numeric data "
                                         "types: s < x."),
              std::string::npos)
        << b.State().warningText;
}

TEST(NumericPrograms, SinglesAndTheirFunctions) {
    BasicRun b("numeric_single");
    EXPECT_EQ(
        b.RunOutput(Lines({"Dim f, g, r As Single", "Dim k As Long", "f = 1.5", "g = 2.25",
                           "r = f + g", "Print 1, r, \" \"", "r = f - g", "Print 1, r, \" \"",
                           "r = f * g", "Print 1, r, \" \"", "r = 4.5 / g", "Print 1, r, \" \"",
                           "r = Sqr(2.25)", "Print 1, r, \" \"", "r = Exp(0)", "Print 1, r, \" \"",
                           // Ln(1) is 0, which prints as E, as every value below 2^-20 does.
                           "r = Ln(1)", "Print 1, r, \" \"", "k = 12345.9", "Print 1, k, \" \"",
                           "k = -2.5", "Print 1, k, CrLf", "End"})),
        "3.750 -0.750 3.375 2.000 1.500 1.000 E 12345 -2\r\n");
}

// The example programs of the numeric statements, with their expected output.
TEST(NumericPrograms, ExamplesPrintWhatTheyShould) {
    struct Example {
        const char* name;
        std::vector<std::string> lines;
        const char* output;
    };
    const Example examples[] = {
        {"integers",
         {"Dim a, b, c As Integer", "Dim y As Long", "Dim u As ULong", "a = 7", "b = -3",
          "c = a * b + 100 / 7", "y = 100000", "y = y * 300 / -7", "u = 4000000000",
          "u = u + 294967295",
          "Print 1, c, \" \", a Mod 4, \" \", -a / 2, \" \", y, \" \", u, CrLf"},
         "-7 3 -3 -4285714 4294967295\r\n"},
        {"singles",
         {"Dim f, g As Single", "Dim k As Integer", "f = 1.5", "g = f * 2.25", "k = g",
          "Print 1, g, \" \", g - 10, \" \", 1234.5, \" \", 12345.5, \" \", 0.7, \" \", 2.3, \" "
          "\", "
          "k, \" \"",
          "f = 0", "Print 1, f, \" \", Sqr(16), CrLf"},
         "3.375 -6.625 1234.500 12345 0.700 2.299 3 E 4.000\r\n"},
        {"bits_and_memory",
         {"Dim x As Byte", "Dim y As Word", "x = 0", "SetBit 3, x", "SetBit 0, x", "InvertBit 0, x",
          "y = 1", "y = y << 10", "y = y | 255",
          "Print 1, x, \" \", TestBit(3, x), \" \", y, \" \"", "y = y And 3855", "Print 1, y, CrLf",
          "Poke 36864, 77", "x = Peek(36864) + 1", "Put 2, x"},
         "8 1 1279 1039\r\n"},
    };
    for (const Example& e : examples) {
        BasicRun b(std::string("numeric_example_") + e.name);
        EXPECT_EQ(b.RunOutput(Lines(e.lines)), e.output) << e.name;
        if (std::string(e.name) == "bits_and_memory") {
            EXPECT_EQ(b.run.Byte(0x9000), 0x4D);
            EXPECT_EQ(b.run.M().PortImage[2] & 0xFF, 0x4E);
        }
    }
}

}  // namespace
}  // namespace mb::testing
