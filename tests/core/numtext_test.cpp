#include "core/numtext.h"

#include <gtest/gtest.h>

namespace mb {
namespace {

TEST(NumText, FixedWidthHex) {
    struct Case {
        std::string got, want;
    } cases[] = {
        {pb_hex2(0), "00"},
        {pb_hex2(0xAB), "AB"},
        {pb_hex2(0x1FF), "FF"},
        {pb_hex3(0xABC), "ABC"},
        {pb_hex4(0x0F0), "00F0"},
        {pb_hex4(65535), "FFFF"},
        {pb_hex8(0x12345678), "12345678"},
        {pb_hex0x2(10), "0x0A"},
        {pb_hex0x3(10), "0x00A"},
        {pb_hex0x4(0xBEEF), "0xBEEF"},
        {pb_hex2H(255), "FFH"},
        {pb_hex3H(1), "001H"},
        {pb_hex4H(0x66), "0066H"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.got, c.want);
}

TEST(NumText, HexTextToValue) {
    EXPECT_EQ(pb_dec2("0A"), 10);
    EXPECT_EQ(pb_dec2("FF"), 255);
    EXPECT_EQ(pb_dec3("100"), 256);
    EXPECT_EQ(pb_dec4("FFFF"), 65535);
    EXPECT_EQ(pb_dec6("010000"), 65536);
    EXPECT_EQ(pb_dec8("FFFFFFFF"), 4294967295LL);
    // Not valid: wrong digits, wrong length, lower case, empty.
    for (const char* bad : {"G0", "0", "000", "ff", "", " 1"}) EXPECT_LT(pb_dec2(bad), 0) << bad;
}

TEST(NumText, TypedHexEntries) {
    struct Case {
        const char* text;
        int digits;
        long long value;
    };
    const Case cases[] = {
        {"ff", 2, 255},     {" 1 ", 2, 1},    {"1ff", 4, 511}, {"0000", 4, 0},
        {"FFFF", 4, 65535}, {"10000", 4, -1}, {"", 4, -1},     {"   ", 4, -1},
        {"12G", 4, -1},     {"1 2", 4, -1},   {"-1", 4, -1},   {"100", 2, -1},
    };
    for (const Case& c : cases)
        EXPECT_EQ(HexEntryValue(c.text, c.digits), c.value) << '"' << c.text << '"';
}

TEST(NumText, Bytes) {
    EXPECT_EQ(pb_getbyte0(0x12345678), 0x78);
    EXPECT_EQ(pb_getbyte1(0x12345678), 0x56);
    EXPECT_EQ(pb_getbyte2(0x12345678), 0x34);
    EXPECT_EQ(pb_getbyte3(0x12345678), 0x12);
    EXPECT_EQ(pb_getbyte3(-1), 0xFF);
}

TEST(NumText, AssemblerOperandForms) {
    EXPECT_EQ(AsmHex2(10), "0A");
    EXPECT_EQ(AsmHex2(255), "0FF");
    EXPECT_EQ(AsmHex2(0x9F), "9F");
    EXPECT_EQ(AsmHex2(0), "00");
    EXPECT_EQ(AsmHex4(65535), "0FFFF");
    EXPECT_EQ(AsmHex4(4096), "1000");
    EXPECT_EQ(AsmHex4(0xA000), "0A000");
}

}  // namespace
}  // namespace mb
