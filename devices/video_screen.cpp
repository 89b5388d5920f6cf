#include "video_screen.h"

#include <cctype>
#include <cstdlib>

#include "core/numtext.h"
#include "settings/settings_store.h"

namespace mb {

const std::array<const char*, kVideoSchemes> kVideoSchemeNames = {
    "white background", "light background", "dark background", "green background",
    "blue background"};

namespace {

std::string Trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// A whole decimal number of at most four digits, else -1.
int DecimalEntry(const std::string& text) {
    const std::string t = Trimmed(text);
    if (t.empty() || t.size() > 4) return -1;
    for (char c : t) {
        if (!std::isdigit(static_cast<unsigned char>(c))) return -1;
    }
    return std::atoi(t.c_str());
}

// Up to four hexadecimal digits, with or without "h", else -1.
int AddressEntry(std::string text) {
    text = Trimmed(text);
    if (!text.empty() && (text.back() == 'h' || text.back() == 'H')) text.pop_back();
    return static_cast<int>(HexEntryValue(text, 4));
}

int Within(int value, int low, int high, int def) {
    return value >= low && value <= high ? value : def;
}

}  // namespace

char VideoChar(int value) {
    if (value == 0) return ' ';
    return value >= 0x20 && value <= 0x7E ? static_cast<char>(value) : '.';
}

void VideoScreen::LoadSettings(SettingsStore& s) {
    VideoAddress = Within(s.GetSettingInt(kKeyVideoAddr, 0x4000), 0, 0xFFFF, 0x4000);
    VideoCols = Within(s.GetSettingInt(kKeyVideoCols, 32), kVideoMinCols, kVideoMaxCols, 32);
    VideoRows = Within(s.GetSettingInt(kKeyVideoRows, 24), kVideoMinRows, kVideoMaxRows, 24);
    VideoColorScheme = Within(s.GetSettingInt(kKeyVideoColorScheme, 0), 0, kVideoSchemes - 1, 0);
}

std::string VideoScreen::RowText(const Machine& m, int row) const {
    std::string text = HexDigits(RowAddress(row), 4) + ": ";
    for (int col = 0; col < VideoCols; ++col) {
        text += VideoChar(m.MemoryImage[CellAddress(row * VideoCols + col)]);
    }
    return text;
}

std::string VideoScreen::ScreenText(const Machine& m) const {
    std::string text;
    for (int row = 0; row < VideoRows; ++row) text += RowText(m, row) + "\r\n";
    return text;
}

std::string VideoScreen::ChangeAddress(SettingsStore& s, const std::string& answer) {
    const int value = AddressEntry(answer);
    if (value < 0) return "Allowed range 0000h-FFFFh.";
    VideoAddress = value;
    s.SetSettingInt(kKeyVideoAddr, value);
    return "";
}

std::string VideoScreen::ChangeCols(SettingsStore& s, const std::string& answer) {
    const int value = DecimalEntry(answer);
    if (value < kVideoMinCols || value > kVideoMaxCols) return "Allowed range 16-80.";
    VideoCols = value;
    s.SetSettingInt(kKeyVideoCols, value);
    return "";
}

std::string VideoScreen::ChangeRows(SettingsStore& s, const std::string& answer) {
    const int value = DecimalEntry(answer);
    if (value < kVideoMinRows || value > kVideoMaxRows) return "Allowed range 2-40.";
    VideoRows = value;
    s.SetSettingInt(kKeyVideoRows, value);
    return "";
}

bool VideoScreen::ChangeColorScheme(SettingsStore& s, int scheme) {
    if (scheme < 0 || scheme >= kVideoSchemes) return false;
    VideoColorScheme = scheme;
    s.SetSettingInt(kKeyVideoColorScheme, scheme);
    return true;
}

}  // namespace mb
