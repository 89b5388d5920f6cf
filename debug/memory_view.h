// The logic of the Memory Editors and the I/O Ports Editor: the dump texts, what
// memorijaprint decides (scrolling, the read and write pointers, the SP marker)
// and the digit rules of the entry box that edits a cell in place.
#pragma once

#include <string>

#include "core/machine.h"

namespace mb {

class SettingsStore;

// The dump: 4096 rows of 16 bytes, 16 rows on view.
constexpr int kDumpColumns = 16;
constexpr int kDumpRows = kMemorySize / kDumpColumns;
constexpr int kViewRows = 16;
constexpr int kLastTopRow = kDumpRows - kViewRows;

// Where cell `col` and its character stand in a dump row; the ports editor's
// rows ("10h:  ") put their cells at the same places.
constexpr int DumpCellPosition(int col) {
    return 6 + 3 * col;
}
constexpr int DumpCharPosition(int col) {
    return 6 + 3 * kDumpColumns + 1 + col;
}

// "00 01 02 ... 0F", the column heading of the dump and of the ports editor.
std::string DumpColumnHeading();
// The character column's heading, "  0123456789ABCDEF".
std::string DumpCharHeading();
// The heading line over DumpRowText: each column stands over its cells.
std::string DumpHeadingLine(bool ascii);
// One dump row: "0010: " (address), 16 cells "XX ", then with `ascii` the 16
// characters of the cells.
std::string DumpRowText(const Machine& m, int row, bool ascii);
// One row of the ports editor: "10h:  " and 16 cells "XX ".
std::string PortRowText(const Machine& m, int row);
// How a cell shows in the character column: itself from 20h to 7Eh, "." else.
char DumpChar(int value);

// The setting keys of Memory Editor n (1 to 3).
std::string MemoryEditorKey(int number, const char* what);
inline constexpr const char* kKeyTrackRW = "Track R/W Access";
inline constexpr const char* kKeyRangeStart = "Track R/W Range Start";
inline constexpr const char* kKeyRangeEnd = "Track R/W Range End";
inline constexpr const char* kKeyOptimize = "Track R/W Optimization";

inline constexpr const char* kOptimizeText =
    "The performance optimization option for the Ultimate simulation rate is now turned on. "
    "At the Ultimate simulation rate, the memory editor display will be refreshed "
    "only when the address of the last written memory location has been changed "
    "by the simulated instruction.";
inline constexpr const char* kRangeStartPrompt =
    "Please enter the starting address for the R/W access tracking memory range "
    "(allowed range 0000h-FFFFh):";
inline constexpr const char* kRangeEndPrompt =
    "Please enter the ending address for the R/W access tracking memory range "
    "(allowed range 0000h-FFFFh):";
inline constexpr const char* kRangeRefusal = "Allowed range 0000h-FFFFh.";

// One Memory Editor's view of memory: where it stands, what it tracks, and
// where its pointers are.
class MemoryView {
  public:
    explicit MemoryView(int number) : number_(number) {}

    int Number() const { return number_; }
    int TopRow() const { return topRow_; }
    void SetTopRow(int row);
    // Scrolls so that the address stands 8 rows below the top.
    void ScrollTo(int address) {
        if (address >= 0 && address < kMemorySize) topRow_ = TopRowFor(address);
    }
    bool OnView(int address) const {
        const int row = address / kDumpColumns;
        return address >= 0 && row >= topRow_ && row < topRow_ + kViewRows;
    }
    // The row that puts the address 8 rows below the top, kept within the dump.
    static int TopRowFor(int address) {
        const int row = address / kDumpColumns - 8;
        return row < 0 ? 0 : row > kLastTopRow ? kLastTopRow : row;
    }

    // The pointers: cells last marked, -1 when none.
    int WritePointer() const { return writePointer_; }
    int ReadPointer() const { return readPointer_; }

    // Options, read from and written to the settings.
    bool TrackRW = true;
    bool Optimize = false;
    int RangeStart = 0;
    int RangeEnd = 0xFFFF;
    void LoadSettings(SettingsStore& settings);
    void SetTrackRW(SettingsStore& settings, bool on);
    void SetOptimize(SettingsStore& settings, bool on);
    // "0000h-FFFFh".
    std::string RangeText() const;
    // Takes the two answers of the range prompts; an empty text on success,
    // else the refusal, with the range unchanged.
    std::string SetRange(SettingsStore& settings, const std::string& start, const std::string& end);

    // memorijaprint: true when the view must be redrawn. At Ultimate, with
    // tracking and Optimize on, only a new write address is worth a redraw;
    // `force` (loads, edits, the end of a run) always redraws.
    bool memorijaprint(const Machine& m, bool force = false) {
        if (!force && Optimize && TrackRW && m.SimulationRate == kRateUltimate &&
            m.LastWriteAddress == seenWrite_) {
            return false;
        }
        Follow(m);
        return true;
    }

    // "Focus SP": scrolls to the cell of SP.
    void FocusSP(const Machine& m) { ScrollTo(m.SP); }

  private:
    // Inline: the write path runs this for every write while an editor is open.
    void Follow(const Machine& m) {
        if (!TrackRW) return Untrack();
        Track(m.LastWriteAddress, seenWrite_, writePointer_);
        Track(m.LastReadAddress, seenRead_, readPointer_);
    }
    // Moves a pointer to a new tracker address inside the range, scrolling to
    // it when it is off the view.
    void Track(int address, int& seen, int& pointer) {
        if (address == seen) return;
        seen = address;
        if (address >= RangeStart && address <= RangeEnd) {
            pointer = address;
            if (!OnView(address)) ScrollTo(address);
        } else if (address < 0) {
            pointer = -1;  // clean: nothing was accessed yet
        }
    }
    void Untrack();

    int number_;
    int topRow_ = 0;
    int writePointer_ = -1, readPointer_ = -1;
    int seenWrite_ = -2, seenRead_ = -2;  // tracker values last looked at
};

// The digits typed into the entry box over a cell. Only 0-9 and A-F are taken;
// the second digit completes the value, which goes into the cell, and the box
// moves to the next cell. A lone digit is completed with a "0" in front.
class CellEntry {
  public:
    explicit CellEntry(int cellCount) : cellCount_(cellCount) {}

    // What the box asks of its owner after a key.
    struct Outcome {
        bool taken = false;  // the key was a digit
        int cell = -1;       // the cell to write, -1 when nothing is written
        int value = -1;
    };

    void Open(int cell);
    void Close() { cell_ = -1, typed_.clear(); }
    bool IsOpen() const { return cell_ >= 0; }
    int Cell() const { return cell_; }
    const std::string& Typed() const { return typed_; }
    // The box's text: what was typed, or the cell's value before a key.
    std::string Text(int cellValue) const;

    Outcome Key(char key);
    // Enter or leaving the box: a lone digit is written (and the box moves on).
    Outcome Finish();
    void Backspace();

  private:
    Outcome Complete();

    int cellCount_;
    int cell_ = -1;
    std::string typed_;
};

}  // namespace mb
