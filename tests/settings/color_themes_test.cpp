#include "settings/color_themes.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

namespace mb {
namespace {

TEST(ColorThemes, FiftyDistinctRowsInListOrder) {
    const std::vector<ThemeRow>& table = ColorThemeTable();
    ASSERT_EQ(table.size(), 50u);
    std::set<std::string> names;
    std::set<std::array<int, kThemeSlots>> palettes;
    for (const ThemeRow& row : table) {
        names.insert(row.name);
        palettes.insert(row.colors);
        for (int color : row.colors) EXPECT_TRUE(color >= 0 && color <= 0xFFFFFF) << row.name;
    }
    EXPECT_EQ(names.size(), 50u);
    EXPECT_EQ(palettes.size(), 50u);
    EXPECT_EQ(table.front().name, "Amethyst");
    EXPECT_EQ(table[table.size() - 3].name, "Original Dark");
    EXPECT_EQ(table[table.size() - 2].name, "Z80 Temple 2001");
    EXPECT_EQ(table.back().name, "Original Lite");
}

TEST(ColorThemes, FieldsAndButtonsAreReadableInEveryRow) {
    for (const ThemeRow& row : ColorThemeTable()) {
        EXPECT_GE(ContrastRatio(row.colors[6], row.colors[5]), 4.5) << row.name << " fields";
        EXPECT_GE(ContrastRatio(row.colors[8], row.colors[7]), 3.0) << row.name << " buttons";
    }
}

TEST(ColorThemes, FirstStartStoresTheDefaults) {
    MemorySettingsStore store;
    const ColorTheme theme = ReadTheme(store);
    EXPECT_EQ(theme.name, "Original Lite");
    EXPECT_TRUE(theme.border);
    EXPECT_EQ(theme.Slot(1), Rgb(99, 104, 140));
    EXPECT_EQ(theme.Slot(6), Rgb(255, 255, 223));
    EXPECT_EQ(theme.Slot(17), Rgb(57, 57, 58));
    EXPECT_EQ(store.GetSettingText("Color Theme", ""), "Original Lite");
    EXPECT_EQ(store.GetSettingInt("Color Theme Border", -1), 1);
}

TEST(ColorThemes, StoredNamesAndTheRowInForce) {
    const std::pair<const char*, const char*> cases[] = {
        {"Amethyst", "Amethyst"},
        {"HaXb0x", "HaXb0x"},
        {"Original Dark", "Original Dark"},  // only the dialog renames it
        {"Sea Breeze", "Original Lite"},
        {"amethyst", "Original Lite"},
        {"", "Original Lite"}};
    for (const auto& [stored, inForce] : cases) {
        MemorySettingsStore store;
        store.SetSettingText("Color Theme", stored);
        store.SetSettingInt("Color Theme Border", 0);
        const ColorTheme theme = ReadTheme(store);
        EXPECT_EQ(theme.name, inForce);
        EXPECT_EQ(theme.colors, FindColorTheme(inForce).colors);
        EXPECT_FALSE(theme.border);
        EXPECT_EQ(store.GetSettingText("Color Theme", "?"), stored);
    }
}

TEST(ColorThemes, TheDialogRenamesOriginalDark) {
    // A stored name (nullptr: none) and the name the dialog shows and stores
    const std::pair<const char*, const char*> cases[] = {{"Original Dark", "Z80 Temple 2001"},
                                                         {"Blues", "Blues"},
                                                         {"Gone Theme", "Gone Theme"},
                                                         {nullptr, "Original Lite"}};
    for (const auto& [stored, shown] : cases) {
        MemorySettingsStore store;
        if (stored) store.SetSettingText("Color Theme", stored);
        EXPECT_EQ(ThemeNameAtDialogOpen(store), shown);
        EXPECT_EQ(store.GetSettingText("Color Theme", "?"), shown);
    }
}

TEST(ColorThemes, HslPrimariesAndGrey) {
    // Hue, saturation, lightness and the colour
    const std::tuple<double, double, double, int> cases[] = {
        {0, 1, 0.5, Rgb(255, 0, 0)},      {120, 1, 0.5, Rgb(0, 255, 0)},
        {240, 1, 0.5, Rgb(0, 0, 255)},    {360, 1, 0.5, Rgb(255, 0, 0)},
        {60, 1, 0.5, Rgb(255, 255, 0)},   {300, 1, 0.25, Rgb(128, 0, 128)},
        {77, 0, 0.5, Rgb(128, 128, 128)}, {200, 0.7, 1.0, Rgb(255, 255, 255)}};
    for (const auto& [h, s, l, color] : cases) EXPECT_EQ(HslColor(h, s, l), color) << h;
    EXPECT_NEAR(ContrastRatio(Rgb(0, 0, 0), Rgb(255, 255, 255)), 21.0, 1e-9);
    EXPECT_NEAR(ContrastRatio(Rgb(10, 20, 30), Rgb(10, 20, 30)), 1.0, 1e-9);
}

}  // namespace
}  // namespace mb
