#include "settings/settings_store.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace mb {
namespace {

TEST(MemorySettingsStore, MissingValueWritesDefaultBack) {
    MemorySettingsStore s;
    EXPECT_FALSE(s.Contains("Simulation Rate"));
    EXPECT_EQ(s.GetSettingText("Simulation Rate", "4"), "4");
    EXPECT_TRUE(s.Contains("Simulation Rate"));
    EXPECT_EQ(s.GetSettingText("Simulation Rate", "6"), "4");
    EXPECT_EQ(s.GetSettingInt("Simulation Rate Slow Delay", 140), 140);
    s.SetSettingInt("Simulation Rate Slow Delay", 7);
    EXPECT_EQ(s.GetSettingInt("Simulation Rate Slow Delay", 140), 7);
}

TEST(MemorySettingsStore, TextReadsAtMost255Characters) {
    MemorySettingsStore s;
    s.SetSettingText("Last Path", std::string(300, 'x'));
    EXPECT_EQ(s.GetSettingText("Last Path", "").size(), 255u);
}

TEST(SettingNumber, LeadingDecimalNumberOrZero) {
    const std::pair<const char*, double> cases[] = {
        {"4", 4.0},    {"0.5", 0.5}, {" 12abc", 12.0}, {"-3.25", -3.25}, {".5", 0.5},
        {"1e3", 1000}, {"2e", 2.0},  {"abc", 0.0},     {"", 0.0},        {"nan", 0.0},
        {"-nan", 0.0}, {"inf", 0.0}, {"0x10", 0.0},    {"+7", 7.0},      {"1.5.2", 1.5},
    };
    for (const auto& [text, value] : cases) EXPECT_DOUBLE_EQ(SettingNumber(text), value) << text;
}

TEST(SettingInteger, FractionDroppedAndRangeHeld) {
    EXPECT_EQ(SettingInteger("140"), 140);
    EXPECT_EQ(SettingInteger("2.9"), 2);
    EXPECT_EQ(SettingInteger("-2.9"), -2);
    EXPECT_EQ(SettingInteger("1e300"), 2147483647);
    EXPECT_EQ(SettingInteger("-1e300"), -2147483647 - 1);
    EXPECT_EQ(SettingInteger("nan"), 0);
}

TEST(ReadDecimal, OnlyAWholeDecimalNumber) {
    const std::pair<const char*, double> good[] = {
        {"4", 4},  {" 3.5 ", 3.5}, {"0.01", 0.01}, {"-2", -2},     {"+2", 2},
        {"1.", 1}, {".25", 0.25},  {"1e2", 100},   {"1E-2", 0.01},
    };
    for (const auto& [text, value] : good) {
        ASSERT_TRUE(ReadDecimal(text).has_value()) << text;
        EXPECT_DOUBLE_EQ(*ReadDecimal(text), value) << text;
    }
    for (const char* bad : {"", " ", "nan", "-nan", "NaN", "inf", "-infinity", "0x10", "0X1p4",
                            "4x", "1.2.3", "1e", "e5", ".", "-", "3,5", "1e400"}) {
        EXPECT_FALSE(ReadDecimal(bad).has_value()) << bad;
    }
}

TEST(InRange, NaNIsNeverInRange) {
    EXPECT_TRUE(InRange(0.01, 0.01, 120));
    EXPECT_TRUE(InRange(120, 0.01, 120));
    EXPECT_FALSE(InRange(120.0001, 0.01, 120));
    EXPECT_FALSE(InRange(std::nan(""), 0.01, 120));
}

TEST(MemorySettingsStore, LayoutDeletionKeepsPlainValues) {
    MemorySettingsStore s;
    s.SetSettingInt("Window1 Left", 100);
    s.SetSettingText("Layout 17\\Width", "500");
    s.SetSettingText("Layout 17\\Height", "300");
    s.SetSettingText("Layout 20\\Width", "200");
    EXPECT_EQ(s.DeleteLayoutSettings(), 2);
    EXPECT_EQ(s.DumpSettings(), "Window1 Left\t100\r\n");
    EXPECT_EQ(s.DeleteLayoutSettings(), 0);
    EXPECT_TRUE(s.DeleteAllSettings());
    EXPECT_EQ(s.GetSettingInt("Window1 Left", 2000), 2000);
}

}  // namespace
}  // namespace mb
