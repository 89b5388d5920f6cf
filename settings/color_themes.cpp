#include "color_themes.h"

#include <algorithm>
#include <cmath>

namespace mb {

int HslColor(double hue, double saturation, double lightness) {
    hue = std::fmod(std::fmod(hue, 360.0) + 360.0, 360.0);
    saturation = std::clamp(saturation, 0.0, 1.0);
    lightness = std::clamp(lightness, 0.0, 1.0);
    const double chroma = (1.0 - std::fabs(2.0 * lightness - 1.0)) * saturation;
    const double sector = hue / 60.0;
    const double x = chroma * (1.0 - std::fabs(std::fmod(sector, 2.0) - 1.0));
    double r = 0, g = 0, b = 0;
    switch (static_cast<int>(sector)) {
        case 0: r = chroma, g = x; break;
        case 1: r = x, g = chroma; break;
        case 2: g = chroma, b = x; break;
        case 3: g = x, b = chroma; break;
        case 4: r = x, b = chroma; break;
        default: r = chroma, b = x; break;
    }
    const double m = lightness - chroma / 2.0;
    auto byte = [m](double v) {
        return std::clamp(static_cast<int>(std::lround((v + m) * 255.0)), 0, 255);
    };
    return Rgb(byte(r), byte(g), byte(b));
}

namespace {

double Luminance(int color) {
    auto channel = [](int v) {
        const double c = v / 255.0;
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(RedOf(color)) + 0.7152 * channel(GreenOf(color)) +
           0.0722 * channel(BlueOf(color));
}

// Most rows are drawn from one hue and saturation: a light tone has dark text on
// light surfaces, a dark tone the reverse. Each slot has its lightness and a
// share of the row's saturation, so every row keeps the same reading contrasts.
enum class Tone { Light, Dark };

struct Seed {
    const char* name;
    double hue;         // degrees
    double saturation;  // 0..1
    Tone tone;
};

// Lightness of a slot in each tone, its share of the row's saturation, and a
// turn of the hue. The shell gives the slots their roles (see the comments).
struct SlotShade {
    double light;  // lightness in a light row
    double dark;   // lightness in a dark row
    double saturationShare;
    double hueShift;
};

constexpr SlotShade kShades[kThemeSlots] = {
    {0.84, 0.20, 1.0, 0},   // 1 window
    {0.96, 0.50, 1.0, 0},   // 2 light frame edge
    {0.30, 0.08, 1.0, 0},   // 3 dark frame edge
    {0.90, 0.32, 1.0, 0},   // 4 midlight
    {0.45, 0.42, 1.0, 0},   // 5 mid and selection
    {0.97, 0.11, 0.6, 0},   // 6 field background
    {0.08, 0.90, 0.35, 0},  // 7 field text
    {0.74, 0.28, 1.0, 0},   // 8 button
    {0.10, 0.92, 0.45, 0},  // 9 button text
    {0.10, 0.88, 0.45, 0},  // 10 window text
    {0.18, 0.04, 0.9, 0},   // 11 shadow
    {0.92, 0.15, 0.6, 0},   // 12 alternate rows
    {0.32, 0.72, 1.0, 0},   // 13 link
    {0.32, 0.72, 1.0, 40},  // 14 visited link
    {0.93, 0.14, 0.8, 0},   // 15 tool tip background
    {0.55, 0.45, 0.3, 0},   // 16 placeholder text
    {0.12, 0.92, 0.35, 0},  // 17 tool tip text
};

// Selection and links keep some colour in a pale row; grey rows stay grey.
bool KeepsColour(int slot) {
    return slot == 5 || slot == 13 || slot == 14;
}

ThemeRow Generate(const Seed& seed) {
    ThemeRow row{seed.name, {}};
    for (int i = 0; i < kThemeSlots; ++i) {
        const SlotShade& shade = kShades[i];
        double saturation = seed.saturation * shade.saturationShare;
        if (seed.saturation > 0 && KeepsColour(i + 1)) saturation = std::max(saturation, 0.5);
        const double lightness = seed.tone == Tone::Light ? shade.light : shade.dark;
        row.colors[static_cast<size_t>(i)] =
            HslColor(seed.hue + shade.hueShift, saturation, lightness);
    }
    return row;
}

ThemeRow Exact(const char* name, const int (&rgb)[kThemeSlots][3]) {
    ThemeRow row{name, {}};
    for (int i = 0; i < kThemeSlots; ++i)
        row.colors[static_cast<size_t>(i)] = Rgb(rgb[i][0], rgb[i][1], rgb[i][2]);
    return row;
}

constexpr int kAmethyst[kThemeSlots][3] = {
    {94, 39, 112},   {180, 70, 183}, {90, 32, 134},   {180, 70, 183},  {90, 32, 134},
    {255, 255, 255}, {0, 0, 0},      {78, 31, 86},    {200, 111, 255}, {200, 111, 255},
    {38, 0, 46},     {134, 46, 130}, {255, 255, 255}, {241, 241, 244}, {64, 0, 81},
    {55, 9, 55},     {242, 239, 242}};
constexpr int kOriginalLite[kThemeSlots][3] = {
    {99, 104, 140},  {176, 184, 247}, {99, 104, 140},  {176, 184, 247}, {99, 104, 140},
    {255, 255, 223}, {0, 0, 0},       {190, 193, 211}, {43, 43, 43},    {43, 43, 43},
    {150, 153, 171}, {215, 215, 231}, {107, 125, 179}, {163, 142, 119}, {252, 237, 215},
    {210, 210, 222}, {57, 57, 58}};

// The rows in list order; "Amethyst" and "Original Lite" are given colour by colour.
constexpr Seed kSeeds[] = {
    {"Amethyst", 0, 0, Tone::Dark},
    {"Arctica", 195, 0.40, Tone::Light},
    {"Baby Jeans", 210, 0.45, Tone::Light},
    {"Bitter Lemon", 62, 0.70, Tone::Light},
    {"Bloods", 0, 0.70, Tone::Dark},
    {"Blue Martini", 200, 0.60, Tone::Dark},
    {"Blueberry", 235, 0.55, Tone::Dark},
    {"Blueberry And Cream", 235, 0.45, Tone::Light},
    {"Blues", 220, 0.65, Tone::Dark},
    {"Bricks Set", 12, 0.55, Tone::Dark},
    {"Bubble Gum", 330, 0.70, Tone::Light},
    {"Bullfrog", 95, 0.45, Tone::Dark},
    {"Citrus", 40, 0.85, Tone::Light},
    {"City Night", 230, 0.25, Tone::Dark},
    {"Clover", 130, 0.50, Tone::Light},
    {"Coagulated", 350, 0.60, Tone::Dark},
    {"Copper", 25, 0.60, Tone::Dark},
    {"Donatello", 275, 0.40, Tone::Dark},
    {"Dymunds", 185, 0.30, Tone::Light},
    {"Emerald City", 150, 0.60, Tone::Dark},
    {"Fort Knox", 45, 0.65, Tone::Dark},
    {"Gold Rush", 48, 0.75, Tone::Light},
    {"Grapefruit", 8, 0.75, Tone::Light},
    {"Grapes", 290, 0.45, Tone::Dark},
    {"Halloween", 28, 0.90, Tone::Dark},
    {"HaXb0x", 120, 1.00, Tone::Dark},
    {"Jeans", 215, 0.50, Tone::Dark},
    {"Love Machine", 340, 0.75, Tone::Dark},
    {"Mono Dark", 0, 0.00, Tone::Dark},
    {"Mono Lite", 0, 0.00, Tone::Light},
    {"Night Vision", 105, 0.70, Tone::Dark},
    {"Peachy", 25, 0.80, Tone::Light},
    {"Popcorn", 50, 0.60, Tone::Light},
    {"Powerpuff!", 320, 0.80, Tone::Light},
    {"Owayke", 30, 0.35, Tone::Light},
    {"Rain Forest", 140, 0.45, Tone::Dark},
    {"Raspberry Club", 335, 0.60, Tone::Dark},
    {"Rosemary", 100, 0.20, Tone::Light},
    {"Sunflower", 52, 0.90, Tone::Light},
    {"Toxic", 80, 0.90, Tone::Dark},
    {"Uranium", 70, 0.70, Tone::Dark},
    {"Varsity", 355, 0.60, Tone::Light},
    {"Winamp New", 210, 0.15, Tone::Dark},
    {"Winamp Old", 120, 0.10, Tone::Dark},
    {"New Windows 1", 210, 0.60, Tone::Light},
    {"New Windows 2", 200, 0.20, Tone::Light},
    {"New Windows 3", 215, 0.35, Tone::Light},
    {"Original Dark", 233, 0.20, Tone::Dark},
    {"Z80 Temple 2001", 38, 0.30, Tone::Dark},
    {"Original Lite", 0, 0, Tone::Light},
};

std::vector<ThemeRow> BuildTable() {
    std::vector<ThemeRow> table;
    for (const Seed& seed : kSeeds) {
        const std::string name = seed.name;
        if (name == "Amethyst")
            table.push_back(Exact(seed.name, kAmethyst));
        else if (name == "Original Lite")
            table.push_back(Exact(seed.name, kOriginalLite));
        else
            table.push_back(Generate(seed));
    }
    return table;
}

}  // namespace

double ContrastRatio(int a, int b) {
    const double la = Luminance(a);
    const double lb = Luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

const std::vector<ThemeRow>& ColorThemeTable() {
    static const std::vector<ThemeRow> table = BuildTable();
    return table;
}

const ThemeRow& FindColorTheme(const std::string& name) {
    const std::vector<ThemeRow>& table = ColorThemeTable();
    for (const ThemeRow& row : table)
        if (row.name == name) return row;
    return table.back();  // "Original Lite"
}

ColorTheme ReadTheme(SettingsStore& settings) {
    const ThemeRow& row = FindColorTheme(settings.GetSettingText("Color Theme", "Original Lite"));
    ColorTheme theme;
    theme.name = row.name;
    theme.colors = row.colors;
    theme.border = settings.GetSettingInt("Color Theme Border", 1) != 0;
    return theme;
}

std::string ThemeNameAtDialogOpen(SettingsStore& settings) {
    std::string name = settings.GetSettingText("Color Theme", "Original Lite");
    if (name == "Original Dark") {
        name = "Z80 Temple 2001";
        settings.SetSettingText("Color Theme", name);
    }
    return name;
}

}  // namespace mb
