// The reference model of the Single format against exact arithmetic: where the
// format's rules (no sticky bit, halves away from zero, exponent 0 is zero,
// exponent 255 ordinary) decide, the expected patterns are written out.
#include "runtime/single_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

namespace mb {
namespace {

uint32_t Bits(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// The size of one unit in the last place of the Single nearest to value.
double Ulp(double value) {
    int exponent = 0;
    std::frexp(value, &exponent);
    return std::ldexp(1.0, exponent - 24);
}

TEST(RuntimeSingleModel, RulesOfTheFormatInSingleCases) {
    struct Case {
        const char* what;
        uint32_t result, expected;
    } cases[] = {
        {"1.5 + 1.5", SingleAdd(0x3FC00000, 0x3FC00000), 0x40400000},
        {"1 + 2^-24 rounds the half away from zero", SingleAdd(0x3F800000, 0x33800000), 0x3F800001},
        {"-1 - 2^-24 likewise", SingleAdd(0xBF800000, 0xB3800000), 0xBF800001},
        {"1 - 1 is +0", SingleAdd(0x3F800000, 0xBF800000), 0},
        {"-0 + -0 is +0", SingleAdd(0x80000000, 0x80000000), 0},
        {"0 + 1: the zero's hidden bit shifts away", SingleAdd(0, 0x3F800000), 0x3F800000},
        {"0 + 2^-126: only one place of shift, the hidden bit stays", SingleAdd(0, 0x00800000),
         0x00C00000},
        {"1 + 2^-40: far below, it vanishes", SingleAdd(0x3F800000, 0x2B800000), 0x3F800000},
        {"2^127 + 2^127 reaches the ordinary exponent 255", SingleAdd(0x7F000000, 0x7F000000),
         0x7F800000},
        {"2^128 + 2^128 passes it: the exponent wraps to 0, no error",
         SingleAdd(0x7F800000, 0x7F800000), 0},
        {"3 - 1", SingleSubtract(0x40400000, 0x3F800000), 0x40000000},
        {"1 - 3 takes the sign of the larger", SingleSubtract(0x3F800000, 0x40400000), 0xC0000000},
        {"X101 of 2^24 + 1 rounds the half up", LongToSingle(16777217), 0x4B800001},
        {"X101 of -2^31", LongToSingle(INT32_MIN), 0xCF000000},
        {"X111 of 2^32 - 1 rounds up to 2^32", ULongToSingle(0xFFFFFFFF), 0x4F800000},
        {"X001 of 3E9 sets the top bit", SingleToLong(Bits(3e9f)), 3000000000u},
        {"X001 of 5E9 is 0", SingleToLong(Bits(5e9f)), 0},
        {"X001 of -2.75 truncates toward zero", SingleToLong(Bits(-2.75f)),
         static_cast<uint32_t>(-2)},
        {"X001 of 0.999 is 0", SingleToLong(Bits(0.999f)), 0},
    };
    for (const Case& c : cases) EXPECT_EQ(c.result, c.expected) << c.what;
}

TEST(RuntimeSingleModel, MultiplyAndDivideRangesAndErrors) {
    struct Case {
        const char* what;
        SingleResult result;
        uint32_t bits;
        int error;
    } cases[] = {
        {"1.5 * -2", SingleMultiply(0x3FC00000, 0xC0000000), 0xC0400000, 0},
        {"2^127 * 2 is 2^128, exponent 255", SingleMultiply(0x7F000000, 0x40000000), 0x7F800000, 0},
        {"2^128 * 2 overflows", SingleMultiply(0x7F800000, 0x40000000), 0x7FFFFFFF, 2},
        {"-2^128 * 2 overflows with the sign", SingleMultiply(0xFF800000, 0x40000000), 0xFFFFFFFF,
         2},
        {"2^-126 * 2^-126 is too small: error 2, 0", SingleMultiply(0x00800000, 0x00800000), 0, 2},
        {"0 * huge is 0", SingleMultiply(0, 0x7FFFFFFF), 0, 0},
        {"1 / 4", SingleDivide(0x3F800000, 0x40800000), 0x3E800000, 0},
        {"1 / 3", SingleDivide(0x3F800000, 0x40400000), 0x3EAAAAAB, 0},
        {"1 / 0: error 1, 0", SingleDivide(0x3F800000, 0), 0, 1},
        {"1 / -0: error 1, 0", SingleDivide(0x3F800000, 0x80000000), 0, 1},
        {"0 / 0 is 0 without error", SingleDivide(0, 0), 0, 0},
        {"2^127 / 2^-126: exponent difference too large", SingleDivide(0x7F000000, 0x00800000), 0,
         2},
        {"2^-126 / 2: below the range, 0 without error", SingleDivide(0x00800000, 0x40000000), 0,
         0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.result.Bits, c.bits) << c.what;
        EXPECT_EQ(c.result.Error, c.error) << c.what;
    }
}

TEST(RuntimeSingleModel, EqualityTreatsMinusZeroAsZero) {
    EXPECT_TRUE(SingleEqual(0x80000000, 0));
    EXPECT_TRUE(SingleEqual(0x3F800000, 0x3F800000));
    EXPECT_FALSE(SingleEqual(0x3F800000, 0xBF800000));
    // Only B is looked at: a fraction under exponent 0 still counts.
    EXPECT_FALSE(SingleEqual(0x00000001, 0));
    // Ordering: the difference's sign and zero.
    EXPECT_TRUE(SingleDifferenceNegative(SingleCompareDifference(0x3F800000, 0x40000000)));
    EXPECT_TRUE(SingleDifferenceZero(SingleCompareDifference(0x80000000, 0)));
    EXPECT_FALSE(SingleDifferenceNegative(SingleCompareDifference(0x40000000, 0xC0000000)));
}

// On normal operands the model stays within the rounding that its rules allow:
// half an ulp for multiply and divide (truncated below 32 bits, then rounded),
// one ulp for add and subtract (aligned without a sticky bit).
TEST(RuntimeSingleModel, StaysWithinItsRoundingOfTheExactResult) {
    std::mt19937 rng(2024);
    auto normal = [&] {
        const uint32_t exponent = 96 + rng() % 64;  // products stay in range
        const uint32_t sign = rng() & 0x80000000u;
        return sign | exponent << 23 | (rng() & 0x7FFFFF);
    };
    for (int i = 0; i < 20000; ++i) {
        const uint32_t a = normal();
        uint32_t b = normal();
        if (i % 2) b = (b & 0x807FFFFF) | ((((a >> 23) & 0xFF) + rng() % 40 - 20) << 23);
        const double x = SingleToDouble(a), y = SingleToDouble(b);
        const double sum = SingleToDouble(SingleAdd(a, b));
        if (x + y != 0) {
            ASSERT_LE(std::fabs(sum - (x + y)), Ulp(x + y)) << std::hex << a << " + " << b;
        }
        const double product = SingleToDouble(SingleMultiply(a, b).Bits);
        ASSERT_LE(std::fabs(product - x * y), 0.5001 * Ulp(x * y)) << std::hex << a << " * " << b;
        const double quotient = SingleToDouble(SingleDivide(a, b).Bits);
        ASSERT_LE(std::fabs(quotient - x / y), 0.5001 * Ulp(x / y)) << std::hex << a << " / " << b;
    }
}

TEST(RuntimeSingleModel, ConversionFromHostNumbers) {
    EXPECT_EQ(SingleFromDouble(1000.0).Bits, 0x447A0000u);
    EXPECT_EQ(SingleFromDouble(-0.1).Bits, Bits(-0.1f));
    EXPECT_EQ(SingleFromDouble(0.0).Bits, 0u);
    // The half between two Singles goes away from zero.
    EXPECT_EQ(SingleFromDouble(1.0 + std::ldexp(1.0, -24)).Bits, 0x3F800001u);
    EXPECT_EQ(SingleFromDouble(std::ldexp(1.0, -127)).Bits, 0u);          // no denormals
    EXPECT_EQ(SingleFromDouble(std::ldexp(1.5, 128)).Bits, 0x7FC00000u);  // exponent 255
    const SingleResult huge = SingleFromDouble(-std::ldexp(1.0, 129));
    EXPECT_EQ(huge.Bits, 0xFFFFFFFFu);
    EXPECT_EQ(huge.Error, 2);
    EXPECT_EQ(SingleFromDouble(std::nan("")).Error, 1);
    for (uint32_t bits : {0x3F800000u, 0xC0490FDBu, 0x00800000u, 0x7FFFFFFFu})
        EXPECT_EQ(SingleFromDouble(SingleToDouble(bits)).Bits, bits);
}

}  // namespace
}  // namespace mb
