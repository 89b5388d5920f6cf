// Colours as the settings keep them, and the window colour themes: fifty named
// rows of seventeen colour slots, chosen under "Color Theme".
#pragma once

#include <array>
#include <string>
#include <vector>

#include "settings_store.h"

namespace mb {

// A colour as one integer: red + 256 * green + 65536 * blue.
constexpr int Rgb(int red, int green, int blue) {
    return red + 256 * green + 65536 * blue;
}
constexpr int RedOf(int color) {
    return color & 0xFF;
}
constexpr int GreenOf(int color) {
    return (color >> 8) & 0xFF;
}
constexpr int BlueOf(int color) {
    return (color >> 16) & 0xFF;
}

// hue in degrees, saturation and lightness from 0 to 1.
int HslColor(double hue, double saturation, double lightness);
// The contrast ratio of two colours, from 1 (equal) to 21 (black on white),
// on relative luminance as for readable text on screens.
double ContrastRatio(int a, int b);

constexpr int kThemeSlots = 17;

// Slot n (1..17) is colors[n - 1]. Slot 1 is a window's background, 6 and 7 the
// background and text of fields, 8 and 9 those of command buttons; the shell
// gives the other slots their roles.
struct ThemeRow {
    std::string name;
    std::array<int, kThemeSlots> colors{};
};

// All fifty rows, in the order of the list the user chooses from.
const std::vector<ThemeRow>& ColorThemeTable();
// The row of that name; a name that no row has gets "Original Lite".
const ThemeRow& FindColorTheme(const std::string& name);

struct ColorTheme {
    std::string name;  // the row in force (an unknown stored name reads as "Original Lite")
    std::array<int, kThemeSlots> colors{};
    bool border = true;  // "Color Theme Border": frames shown

    int Slot(int n) const { return colors[static_cast<size_t>(n - 1)]; }
};

// Reads "Color Theme" (default "Original Lite") and "Color Theme Border" (default 1).
ColorTheme ReadTheme(SettingsStore& settings);

// The name the "Change Color Theme" list starts from. "Original Dark" gave way to
// "Z80 Temple 2001": a stored "Original Dark" is replaced and the new name stored.
std::string ThemeNameAtDialogOpen(SettingsStore& settings);

}  // namespace mb
