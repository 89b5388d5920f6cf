// The Video Memory Screen: a stretch of memory shown as a character screen. It
// has no ports; the memory write path tells it that memory changed, and the
// range test keeps writes elsewhere down to two comparisons.
#pragma once

#include <array>
#include <string>

#include "core/machine.h"

namespace mb {

class SettingsStore;

inline constexpr const char* kKeyVideoAddr = "Video Addr";
inline constexpr const char* kKeyVideoCols = "Video Cols";
inline constexpr const char* kKeyVideoRows = "Video Rows";
inline constexpr const char* kKeyVideoColorScheme = "Video Color Scheme";

constexpr int kVideoMinCols = 16, kVideoMaxCols = 80;
constexpr int kVideoMinRows = 2, kVideoMaxRows = 40;
constexpr int kVideoSchemes = 5;

inline constexpr const char* kVideoAddressPrompt =
    "Please enter the new starting memory address for the Video Character Screen "
    "(allowed range 0000h-FFFFh):";
inline constexpr const char* kVideoColsPrompt =
    "Please enter the new columns setting for the Video Character Screen "
    "(allowed range 16-80):";
inline constexpr const char* kVideoRowsPrompt =
    "Please enter the new rows setting for the Video Character Screen "
    "(allowed range 2-40):";
inline constexpr const char* kVideoSchemeTitle = "Please select";
inline constexpr const char* kVideoSchemePrompt = "Video Screen color scheme:";
extern const std::array<const char*, kVideoSchemes> kVideoSchemeNames;

// How a cell shows on the screen: itself from 20h to 7Eh, a blank for 0 (so
// cleared memory is an empty screen), and "." for every other value.
char VideoChar(int value);

class VideoScreen {
  public:
    int VideoAddress = 0x4000;
    int VideoCols = 32;
    int VideoRows = 24;
    int VideoColorScheme = 0;

    // Reads the four settings; a stored value out of its range gives the default.
    void LoadSettings(SettingsStore& settings);

    int CellCount() const { return VideoCols * VideoRows; }
    // The screen runs on past FFFFh at 0000h.
    int CellAddress(int cell) const { return (VideoAddress + cell) & 0xFFFF; }
    int RowAddress(int row) const { return CellAddress(row * VideoCols); }
    bool InRange(int address) const {
        return address >= 0 && ((address - VideoAddress) & 0xFFFF) < CellCount();
    }

    // memorijaprint: true when the screen must be redrawn, that is when `force`
    // is set or the last write fell on the screen.
    bool memorijaprint(const Machine& m, bool force = false) const {
        return force || InRange(m.LastWriteAddress);
    }

    // One row: "4000: " and VideoCols characters.
    std::string RowText(const Machine& m, int row) const;
    // The whole screen, each row followed by a line break.
    std::string ScreenText(const Machine& m) const;

    // The change commands take the typed answer. An empty text on success (the
    // value is stored), else the refusal with nothing changed.
    std::string ChangeAddress(SettingsStore& settings, const std::string& answer);
    std::string ChangeCols(SettingsStore& settings, const std::string& answer);
    std::string ChangeRows(SettingsStore& settings, const std::string& answer);
    // Scheme by its index in kVideoSchemeNames; false for another index.
    bool ChangeColorScheme(SettingsStore& settings, int scheme);
};

}  // namespace mb
