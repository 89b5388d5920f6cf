// The print routines: the text that each one builds in PRINT_STR, written to a
// port by P001, for tables of values; the Single print for each number of
// decimals; the buffer never grows past its 12 cells.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>
#include <vector>

#include "runtime/single_model.h"
#include "support/runtime_program.h"

namespace mb::testing {
namespace {

// Each wrapper prints one value and a line feed to port 1.
const char* kWrappers =
    "W101:\tCALL P101\r\n\tJP WOUT\r\n"
    "W111:\tCALL P111\r\n\tJP WOUT\r\n"
    "W201:\tCALL P201\r\n\tJP WOUT\r\n"
    "W211:\tCALL P211\r\n\tJP WOUT\r\n"
    "W301:\tCALL P301\r\n\tJP WOUT\r\n"
    "W401:\tCALL P401\r\n\tJP WOUT\r\n"
    "W411:\tCALL P411\r\n\tJP WOUT\r\n"
    "W501:\tCALL P501\r\n"
    "WOUT:\tLD C,1\r\n\tCALL P001\r\n\tLD A,0AH\r\n\tOUT (C),A\r\n\tRET\r\n";

constexpr int kGuardCell = kPrintStr + 12;  // the byte behind PRINT_STR

const RuntimeNeeds kPrintNeeds =
    NeedsOf({kNeedIntegerPrint, kNeedShortPrint, kNeedBitPrint, kNeedLongPrint, kNeedSinglePrint});

// Prints each value with the wrapper and returns the lines written.
std::vector<std::string> Print(RuntimeProgram& program, const char* wrapper,
                               const std::vector<uint32_t>& values) {
    std::vector<RoutineCall> calls;
    for (uint32_t v : values) calls.push_back({v});
    program.Runner().SetByte(kGuardCell, 0xA5);
    const auto results = program.Call(wrapper, calls);
    EXPECT_EQ(results.size(), calls.size()) << program.Errors;
    EXPECT_EQ(program.Runner().Byte(kGuardCell), 0xA5) << "PRINT_STR overflowed";
    std::vector<std::string> lines;
    std::istringstream text(program.Output);
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

uint32_t S(double value) {
    return SingleFromDouble(value).Bits;
}

TEST(RuntimePrint, IntegerShortBitAndLongTexts) {
    RuntimeProgram program;
    ASSERT_TRUE(program.Build(kPrintNeeds, kDefaultSingleDecimals, kWrappers)) << program.Errors;
    struct Table {
        const char* wrapper;
        std::vector<uint32_t> values;
        std::vector<std::string> texts;
    } tables[] = {
        {"W101",
         {0x8000, 0, 0x7FFF, 0xFFFF, 100, 10000, 0xFFF6, 7},
         {"-32768", "0", "32767", "-1", "100", "10000", "-10", "7"}},
        {"W111", {0xFFFF, 0, 0x8000, 1000, 9}, {"65535", "0", "32768", "1000", "9"}},
        {"W201", {0x80, 0x7F, 0, 0xFF, 100, 10, 5}, {"-128", "127", "0", "-1", "100", "10", "5"}},
        {"W211", {0xFF, 0, 200, 9, 0x80}, {"255", "0", "200", "9", "128"}},
        {"W301", {0, 1, 0xFF, 0x100}, {"0", "1", "1", "0"}},
        {"W401",
         {0x80000000, 0x7FFFFFFF, 0, 0xFFFFFFFF, 1000000000, 1000000, 0xFFFFFFF6},
         {"-2147483648", "2147483647", "0", "-1", "1000000000", "1000000", "-10"}},
        {"W411",
         {0xFFFFFFFF, 0, 0x80000000, 10, 4000000000u},
         {"4294967295", "0", "2147483648", "10", "4000000000"}},
    };
    for (const Table& table : tables) {
        EXPECT_EQ(Print(program, table.wrapper, table.values), table.texts) << table.wrapper;
    }
}

// The text the Single print gives, step by step as the routine takes it,
// with the model's arithmetic: "E" out of range, the integer part, and when
// it has fewer than 5 digits a point and n decimals. The buffer holds 11
// characters.
std::string SinglePrintText(uint32_t x, int decimals) {
    const int exponent = static_cast<int>((x >> 23) & 0xFF);
    if (exponent < 0x6B || exponent >= 0x96) return "E";
    std::string text;
    if (x >> 31) {
        text = "-";
        x &= 0x7FFFFFFF;
    }
    const uint32_t whole = SingleToLong(x);
    const std::string digits = std::to_string(whole);
    text += digits;
    if (digits.size() < 5) {
        const uint32_t fraction = SingleSubtract(x, LongToSingle(static_cast<int32_t>(whole)));
        uint32_t scaled = SingleToLong(SingleMultiply(fraction, S(std::pow(10.0, decimals))).Bits);
        text += ".";
        for (int place = decimals - 1; place >= 0; --place) {
            const uint32_t power = static_cast<uint32_t>(std::pow(10.0, place));
            text += static_cast<char>('0' + scaled / power);
            scaled %= power;
        }
    }
    return text.substr(0, 11);
}

TEST(RuntimePrint, SingleTextsForEachNumberOfDecimals) {
    struct Case {
        double value;
        int decimals;
        const char* text;
    } cases[] = {
        // clang-format off
        {0.0, 3, "E"}, {1e7, 3, "E"}, {-1e7, 3, "E"}, {12345.5, 3, "12345"},
        {1234.5, 3, "1234.500"}, {1234.5, 1, "1234.5"}, {1234.5, 6, "1234.500000"},
        {-1234.5, 6, "-1234.50000"},  // 12 characters do not fit: the last one is dropped
        {-1234.5, 3, "-1234.500"}, {0.5, 3, "0.500"}, {-0.25, 2, "-0.25"}, {1.0, 3, "1.000"},
        {8388607.0, 3, "8388607"}, {8388608.0, 3, "E"}, {std::ldexp(1.0, -20), 6, "0.000000"},
        {std::ldexp(1.0, -21), 6, "E"}, {0.001, 3, "0.001"}, {99999.0, 3, "99999"},
        {9999.0, 4, "9999.0000"},
        // clang-format on
    };
    for (int decimals = 1; decimals <= 6; ++decimals) {
        RuntimeProgram program;
        ASSERT_TRUE(program.Build(kPrintNeeds, decimals, kWrappers)) << program.Errors;
        std::vector<uint32_t> values;
        std::vector<std::string> texts;
        for (const Case& c : cases) {
            if (c.decimals != decimals) continue;
            values.push_back(S(c.value));
            texts.push_back(c.text);
        }
        // A sweep over the printable range, against the steps in C++.
        std::mt19937 rng(500 + decimals);
        for (int i = 0; i < 1500; ++i) {
            const uint32_t bits = RandomSingle(rng, 0x6A, 0x2E);
            values.push_back(bits);
            texts.push_back(SinglePrintText(bits, decimals));
        }
        const auto lines = Print(program, "W501", values);
        ASSERT_EQ(lines.size(), texts.size());
        for (std::size_t i = 0; i < lines.size(); ++i)
            ASSERT_EQ(lines[i], texts[i])
                << SingleToDouble(values[i]) << " with " << decimals << " decimals";
    }
}

TEST(RuntimePrint, P002WritesTheStringAtHLToPortC) {
    RuntimeProgram program;
    ASSERT_TRUE(program.Build(NeedsOf({kNeedPrint}))) << program.Errors;
    for (const std::string text : {"", "Hello", "\x80\xFF high bytes"}) {
        program.SetText(0x3000, text);
        program.CallOnce("P002", {0x00070000, 0x3000}, 7);  // C = port 7
        EXPECT_EQ(program.Output, text);
    }
}

}  // namespace
}  // namespace mb::testing
