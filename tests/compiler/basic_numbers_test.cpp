#include "compiler/basic_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace mb {
namespace {

// The assembler's tests go through every form of the shared reader; here what
// the language adds: the answer for no number, and both widths.
TEST(BasicNumbers, LiteralForms) {
    struct Case {
        const char* text;
        double value;
    } cases[] = {
        // clang-format off
        {"#10", 10},           {"0ffh", 255},      {"&HFF", 255},     {"&FF", 255},
        {"%101", 5},           {"101B", 5},        {"D'12'", 12},     {".5", 5},
        {"\"a\"", 97},         {"65535", 65535},
        // Past 16 bits the 32-bit reader takes over with the same forms.
        {"65536", 65536},      {"0FFFFFFFFH", 4294967295.0},      {"%10000000000000000", 65536},
        {"", kBasicNotANumber},            {"1.5", kBasicNotANumber},
        {"-1", kBasicNotANumber},          {"4294967296", kBasicNotANumber},
        {"1FFFFFFFFH", kBasicNotANumber},  {"'AB'", kBasicNotANumber},
        {"1E5", kBasicNotANumber},         {"&H", kBasicNotANumber},
        // clang-format on
    };
    for (const auto& c : cases) EXPECT_EQ(parseNumber(c.text), c.value) << c.text;
}

TEST(BasicNumbers, ReadNumberTellsTheNumber100000FromNoNumber) {
    EXPECT_EQ(parseNumber("100000"), kBasicNotANumber);  // the same answer...
    EXPECT_EQ(readNumber("100000"), 100000u);            // ...told apart here
    EXPECT_EQ(readNumber("x"), std::nullopt);
    EXPECT_EQ(readNumber("0FFFFFFFFH"), 4294967295u);
    EXPECT_EQ(readNumber("\"Z\""), 90u);
}

TEST(BasicNumbers, SingleLiterals) {
    struct Case {
        const char* text;
        bool ok;
        double value;
    } cases[] = {
        {"1.5", true, 1.5},       {"-1.5", true, -1.5}, {".5", true, 0.5},   {"5.", true, 5},
        {"-.25", true, -0.25},    {"3", true, 3},       {"&H10", true, 16},  {"-&H10", true, -16},
        {"0.000001", true, 1e-6}, {"1.2.3", false, 0},  {".", false, 0},     {"-", false, 0},
        {"", false, 0},           {"1e5", false, 0},    {"1.5E3", false, 0}, {"a.b", false, 0},
        {"--1", false, 0},        {"1.-5", false, 0},
    };
    for (const auto& c : cases) {
        const std::optional<double> v = readSingle(c.text);
        EXPECT_EQ(v.has_value(), c.ok) << c.text;
        if (v && c.ok) {
            EXPECT_DOUBLE_EQ(*v, c.value) << c.text;
        }
    }
}

TEST(BasicNumbers, ConstantValidity) {
    struct Case {
        TypeCode type;
        const char* text;
        bool ok;
        long long value;
        bool warning;
    } cases[] = {
        // clang-format off
        {kTypeBit, "TRUE", true, 255, false},        {kTypeBit, "true", true, 255, false},
        {kTypeBit, "False", true, 0, false},         {kTypeBit, "0", true, 0, false},
        {kTypeBit, "1", true, 255, false},           {kTypeBit, "+1", true, 255, false},
        {kTypeBit, "2", true, 255, true},            {kTypeBit, "65535", true, 255, true},
        {kTypeBit, "65536", false, 0, false},        {kTypeBit, "-1", false, 0, false},
        {kTypeBit, "1.0", false, 0, false},          {kTypeBit, "yes", false, 0, false},
        {kTypeShort, "127", true, 127, false},       {kTypeShort, "-128", true, 128, false},
        {kTypeShort, "-1", true, 255, false},        {kTypeShort, "+5", true, 5, false},
        {kTypeShort, "&H7F", true, 127, false},      {kTypeShort, "-&H80", true, 128, false},
        {kTypeShort, "128", false, 0, false},        {kTypeShort, "-129", false, 0, false},
        {kTypeInteger, "32767", true, 32767, false}, {kTypeInteger, "-32768", true, 32768, false},
        {kTypeInteger, "-1", true, 65535, false},    {kTypeInteger, "32768", false, 0, false},
        {kTypeInteger, "1.5", false, 0, false},      {kTypeInteger, ".5", false, 0, false},
        {kTypeInteger, "True", false, 0, false},
        {kTypeLong, "2147483647", true, 2147483647, false},
        {kTypeLong, "-2147483648", true, 2147483648LL, false},
        {kTypeLong, "-1", true, 4294967295LL, false},
        {kTypeLong, "2147483648", false, 0, false},  {kTypeLong, "-2147483649", false, 0, false},
        {kTypeUShort, "255", true, 255, false},      {kTypeUShort, "0FFH", true, 255, false},
        {kTypeUShort, "\"A\"", true, 65, false},     {kTypeUShort, "256", false, 0, false},
        {kTypeUShort, "-1", false, 0, false},        {kTypeUShort, "-0", true, 0, false},
        {kTypeUInteger, "65535", true, 65535, false}, {kTypeUInteger, "65536", false, 0, false},
        {kTypeStrPtr, "4000H", true, 0x4000, false},
        {kTypeULong, "4294967295", true, 4294967295LL, false},
        {kTypeULong, "4294967296", false, 0, false}, {kTypeULong, "-1", false, 0, false},
        {kTypeSingle, "1.5", true, 0x3FC00000, false},
        {kTypeSingle, "-2.5", true, 0xC0200000LL, false},
        {kTypeSingle, "3", true, 0x40400000, false}, {kTypeSingle, "+0.1", true, 0x3DCCCCCD, false},
        {kTypeSingle, "-0.0", true, 0, false},
        {kTypeSingle, "9999999999", true, 0x501502F9, false},
        // 32 one bits round up, and the carry is lost: the bytes of 2^31.
        {kTypeSingle, "&HFFFFFFFF", true, 0x4F000000, false},
        {kTypeSingle, "1.99999999", true, 0x3F800000, false},
        {kTypeSingle, "1e5", false, 0, false},       {kTypeSingle, "abc", false, 0, false},
        {kTypeString, "1", false, 0, false},         {kTypeBit, "", false, 0, false},
        // clang-format on
    };
    for (const auto& c : cases) {
        const ConstantCheck r = checkConstant(c.type, c.text);
        EXPECT_EQ(r.ok, c.ok) << c.type << " " << c.text;
        EXPECT_EQ(r.value, c.value) << c.type << " " << c.text;
        EXPECT_EQ(r.bitRangeWarning, c.warning) << c.type << " " << c.text;
        EXPECT_EQ(r.message.empty(), c.ok) << c.type << " " << c.text;
    }
}

TEST(BasicNumbers, ConstantMessagesNameTheTypeAndTheTextAsGiven) {
    struct Case {
        TypeCode type;
        const char* text;
        const char* message;
    } cases[] = {
        {kTypeBit, "yes", "Argument 'yes' is not a valid Bit type constant."},
        {kTypeShort, "+200", "Argument '+200' is not a valid Short type constant."},
        {kTypeInteger, "x", "Argument 'x' is not a valid Integer type constant."},
        {kTypeLong, "1.5", "Argument '1.5' is not a valid Long type constant."},
        {kTypeUShort, "-1", "Argument '-1' is not a valid UShort type constant."},
        {kTypeUInteger, "70000", "Argument '70000' is not a valid UInteger type constant."},
        {kTypeStrPtr, "70000", "Argument '70000' is not a valid UInteger type constant."},
        {kTypeULong, "-5", "Argument '-5' is not a valid ULong type constant."},
        {kTypeSingle, "1.2.3", "Argument '1.2.3' is not a valid Single type constant."},
        {kTypeSingle, "12345678.25",
         "Argument '12345678.25' is not a valid Single type constant (it is longer than 10 "
         "chars)."},
        // Ten characters once the "+" is gone: only the range stops it.
        {kTypeSingle, "+1234567.25", ""},
        {kTypeString, "5", "Argument '5' is not a valid String type constant."},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(checkConstant(c.type, c.text).message, c.message) << c.text;
    }
    EXPECT_DOUBLE_EQ(checkConstant(kTypeSingle, "-2.5").number, -2.5);
    EXPECT_EQ(checkConstant(kTypeShort, "-1").number, -1);
    EXPECT_EQ(checkConstant(kTypeBit, "7").number, 1);
}

TEST(BasicNumbers, SingleBytesAreThoseOfTheConversionTool) {
    EXPECT_EQ(singleBits(0.1), 0x3DCCCCCDu);
    EXPECT_EQ(singleBits(1), 0x3F800000u);
    EXPECT_EQ(singleBits(-0.001), 0xBA83126Fu);
    // A tie stays down: no round to even.
    EXPECT_EQ(singleBits(16777219.0), 0x4B800001u);
}

TEST(BasicNumbers, CanonicalSingleText) {
    struct Case {
        double value;
        const char* text;
    } cases[] = {
        // clang-format off
        {0.1, "0.1"}, {3, "3.0"}, {-0.5, "-0.5"}, {0, "0.0"}, {-0.0, "0.0"},
        {3.14159265, "3.1415927"}, {123456.789, "123456.79"}, {2.5e-5, "0.000025"},
        // The digits are those of the number the bytes hold.
        {16777219.0, "16777218.0"},
        {1.99999999, "1.0"},          // the lost carry
        {1e-9, ".000000001"},         // 0.000000001 would be 11 characters
        {123456789.0, "123456790."},  // so would 123456790.0
        {-12345678.0, "-12345678."},
        {999999999.0, "999999999."},  // 1000000000. gives the same bytes but is longer
        {std::nan(""), ""}, {std::numeric_limits<double>::infinity(), ""},
        // clang-format on
    };
    for (const auto& c : cases) EXPECT_EQ(canonicalSingleText(c.value), c.text) << c.value;
}

// Every Single literal of up to 10 characters keeps its bytes through its
// canonical text, that text passes the Single check again, and it is its own
// canonical text.
TEST(BasicNumbers, CanonicalTextReadsBackToTheSameBytes) {
    std::mt19937 random(7);
    for (int n = 0; n < 20000; ++n) {
        const int digits = 1 + static_cast<int>(random() % 9);
        std::string text;
        for (int i = 0; i < digits; ++i) text += static_cast<char>('0' + random() % 10);
        text.insert(random() % (text.size() + 1), ".");
        if (random() % 2 && text.size() < 10) text = "-" + text;
        const ConstantCheck first = checkConstant(kTypeSingle, text);
        ASSERT_TRUE(first.ok) << text;
        const std::string canonical = canonicalSingleText(first.number);
        const ConstantCheck again = checkConstant(kTypeSingle, canonical);
        ASSERT_TRUE(again.ok) << text << " -> " << canonical;
        ASSERT_EQ(again.value, first.value) << text << " -> " << canonical;
        ASSERT_NE(canonical.find('.'), std::string::npos) << canonical;
        ASSERT_EQ(canonicalSingleText(again.number), canonical) << text;
    }
}

TEST(BasicNumbers, NameRule) {
    struct Case {
        const char* name;
        bool allowInternal;
        bool ok;
        const char* message;
    } cases[] = {
        // clang-format off
        {"abc", false, true, ""}, {"_x1", false, true, ""}, {"A_b_9", false, true, ""},
        {"s[17]", false, true, ""}, {"f[", false, true, ""}, {"1abc", false, false, ""},
        {"a-b", false, false, ""}, {"a.b", false, false, ""}, {"a b", false, false, ""},
        {"\xC3\xA9t\xC3\xA9", false, false, ""}, {"x\xFF", false, false, ""},
        {"", false, false, "Variable name missing..."},
        {"[5]", false, false, "Variable name missing..."},
        {"corvalent_temp_integer_3", false, false,
         "You tried to use the reserved name... Shame on you ;-)"},
        {"corvalent_tempo", false, false, "You tried to use the reserved name... Shame on you ;-)"},
        {"corvalent_temp_integer_3", true, true, ""}, {"Corvalent_temp", false, true, ""},
        {"corvalent_te", false, true, ""},
        // clang-format on
    };
    for (const auto& c : cases) {
        const NameCheck r = isValidName(c.name, c.allowInternal);
        EXPECT_EQ(r.ok, c.ok) << c.name;
        EXPECT_EQ(r.message, c.message) << c.name;
    }
}

}  // namespace
}  // namespace mb
