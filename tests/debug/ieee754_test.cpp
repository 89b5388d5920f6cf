#include "debug/ieee754.h"

#include <gtest/gtest.h>

#include <cmath>

namespace mb {
namespace {

TEST(Ieee754, ConversionsAsTheCompilerStoresThem) {
    struct Case {
        double x;
        const char* hex;
        const char* exact;
        const char* resolution;
    } cases[] = {
        {0, "00 00 00 00", "0", "0"},
        {1, "3F 80 00 00", "1", "0"},
        {0.1, "3D CC CC CD", "0.10000000149011612", "7.450580596923828e-09"},
        {-2.5, "C0 20 00 00", "-2.5", "0"},
        {1e-3, "3A 83 12 6F", "0.0010000000474974513", "1.1641532182693481e-10"},
        {0.75, "3F 40 00 00", "0.75", "0"},
        {65535, "47 7F FF 00", "65535", "0"},
    };
    for (const auto& c : cases) {
        const Ieee754Texts t = ToIeee754(c.x);
        EXPECT_EQ(t.hex, c.hex) << c.x;
        EXPECT_EQ(t.exactValue, c.exact) << c.x;
        EXPECT_EQ(t.resolution, c.resolution) << c.x;
    }
}

// The binary field groups the bits under a heading; zero shows its fixed texts.
TEST(Ieee754, BinaryFieldAndTheTextsOfZero) {
    const std::string heading = "SEEEEEEE  EMMMMMMM  MMMMMMMM  MMMMMMMM\n";
    EXPECT_EQ(ToIeee754(1).binary, heading + "00111111  10000000  00000000  00000000");
    EXPECT_EQ(ToIeee754(0).binary, heading + "00000000  00000000  00000000  00000000");
    EXPECT_EQ(ToIeee754(0).entered, "0");
}

TEST(Ieee754, AllOnesMantissaRoundingUpLosesTheCarry) {
    // Just below 2: 24 one bits and more below them, closer to 2 than to the
    // largest 24-bit value. The mantissa wraps to zeros and the exponent stays,
    // so the bytes read as 1.0.
    const double x = 2.0 - std::ldexp(1.0, -25);
    const Ieee754Texts t = ToIeee754(x);
    EXPECT_EQ(t.hex, "3F 80 00 00");
    EXPECT_EQ(t.exactValue, "2");
    // A tie keeps the bits: no round to even.
    const Ieee754Texts tie = ToIeee754(1.0 + std::ldexp(1.0, -24));
    EXPECT_EQ(tie.hex, "3F 80 00 00");
}

TEST(Ieee754, FourBytesBackToTheNumber) {
    EXPECT_EQ(FromIeee754Text("3F 80 00 00"), 1.0);
    EXPECT_EQ(FromIeee754Text("c0200000"), -2.5);
    EXPECT_NEAR(*FromIeee754Text("3D CC CC CD"), 0.1, 1e-8);
    EXPECT_EQ(FromIeee754Text("00 00 00 00"), 0.0);
    for (const char* bad : {"3F 80 00", "3F 80 00 00 00", "3G 80 00 00", ""})
        EXPECT_FALSE(FromIeee754Text(bad).has_value()) << bad;
}

}  // namespace
}  // namespace mb
