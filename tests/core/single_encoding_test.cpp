#include "core/single_encoding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace mb {
namespace {

TEST(SingleEncoding, BytesOfRealNumbers) {
    struct Case {
        double x;
        uint32_t bits;
        bool exact;
    } cases[] = {
        {1, 0x3F800000u, true},
        {0.1, 0x3DCCCCCDu, false},  // rounded up: closer
        {-2.5, 0xC0200000u, true},
        {65535, 0x477FFF00u, true},
        {3.14159265, 0x40490FDBu, false},
        {1e-8, 0x322BCC77u, false},
        {123456.789, 0x47F12065u, false},
        {-0.001, 0xBA83126Fu, false},
        {1e10, 0x501502F9u, true},  // 2^10 * 9765625
        // Powers of two whose binary logarithm a floating division would miss.
        {std::ldexp(1.0, -31), 0x30000000u, true},
        {std::ldexp(1.0, -29), 0x31000000u, true},
        // A tie stays down: 16777219 lies halfway between 16777218 and 16777220.
        {16777219.0, 0x4B800001u, false},
        // A carry out of 24 one bits is lost and the exponent stays: 1.0.
        {2.0 - std::ldexp(1.0, -25), 0x3F800000u, false},
        {0.0, 0u, true},
        {-0.0, 0u, true},
    };
    for (const Case& c : cases) {
        const SingleEncoding s = EncodeSingle(c.x);
        EXPECT_EQ(s.bits, c.bits) << c.x;
        EXPECT_EQ(s.exact, c.exact) << c.x;
        // The bytes read back to the number where it needed no rounding.
        if (c.exact) {
            EXPECT_EQ(DecodeSingle(c.bits), c.x) << c.x;
        }
    }
    EXPECT_FLOAT_EQ(static_cast<float>(DecodeSingle(0x3DCCCCCDu)), 0.1f);
    EXPECT_EQ(DecodeSingle(0x80000000u), 0.0);
    EXPECT_EQ(DecodeSingle(0x7F800000u), std::ldexp(1.0, 128));  // no infinities
}

TEST(SingleEncoding, KeptValueAndStep) {
    const SingleEncoding s = EncodeSingle(0.1);
    EXPECT_DOUBLE_EQ(s.kept, 0.100000001490116119384765625);
    EXPECT_DOUBLE_EQ(s.step, std::ldexp(1.0, -27));
    // The kept value is the rounded one even where the carry is lost.
    EXPECT_EQ(EncodeSingle(-(2.0 - std::ldexp(1.0, -25))).kept, -2.0);
}

TEST(SingleEncoding, NumbersWithoutAFormHaveFixedBytes) {
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(EncodeSingle(inf).bits, 0x7F800000u);
    EXPECT_EQ(EncodeSingle(-inf).bits, 0xFF800000u);
    EXPECT_EQ(EncodeSingle(std::nan("")).bits, 0x7FC00000u);
    // Far outside the exponent range only the low eight exponent bits remain;
    // what matters is a defined answer.
    EXPECT_EQ(EncodeSingle(std::ldexp(1.0, 129)).bits, 0x00000000u);
    EXPECT_EQ(EncodeSingle(std::ldexp(1.0, -1074)).bits >> 31, 0u);
}

}  // namespace
}  // namespace mb
