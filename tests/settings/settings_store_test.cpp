#include "settings/settings_store.h"

#include <gtest/gtest.h>

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

TEST(SettingNumber, UnreadableCountsAsZero) {
    EXPECT_DOUBLE_EQ(SettingNumber("4"), 4.0);
    EXPECT_DOUBLE_EQ(SettingNumber("0.5"), 0.5);
    EXPECT_DOUBLE_EQ(SettingNumber("abc"), 0.0);
    EXPECT_DOUBLE_EQ(SettingNumber(""), 0.0);
}

}  // namespace
}  // namespace mb

namespace mb {
namespace {

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
