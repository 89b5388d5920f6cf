#include "memory_view.h"

#include <algorithm>
#include <cctype>

#include "core/numtext.h"
#include "settings/settings_store.h"

namespace mb {

namespace {
// Width of the address column of a dump row, "0010: ".
constexpr int kAddressWidth = 6;

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
}
}  // namespace

std::string DumpColumnHeading() {
    std::string text;
    for (int i = 0; i < kDumpColumns; ++i) {
        if (i > 0) text += ' ';
        text += HexDigits(i, 2);
    }
    return text;
}

std::string DumpCharHeading() {
    return "  0123456789ABCDEF";
}

// The cells of a row end in a blank, the heading's last column does not: the
// character heading's first blank stands over that one.
std::string DumpHeadingLine(bool ascii) {
    std::string text(kAddressWidth, ' ');
    text += DumpColumnHeading();
    if (ascii) text += DumpCharHeading();
    return text;
}

char DumpChar(int value) {
    return value >= 0x20 && value <= 0x7E ? static_cast<char>(value) : '.';
}

std::string DumpRowText(const Machine& m, int row, bool ascii) {
    row = std::clamp(row, 0, kDumpRows - 1);
    const int address = row * kDumpColumns;
    std::string text = HexDigits(address, 4) + ": ";
    for (int i = 0; i < kDumpColumns; ++i) text += HexDigits(m.MemoryImage[address + i], 2) + " ";
    if (ascii) {
        text += ' ';
        for (int i = 0; i < kDumpColumns; ++i) text += DumpChar(m.MemoryImage[address + i]);
    }
    return text;
}

std::string PortRowText(const Machine& m, int row) {
    row = std::clamp(row, 0, kPortCount / kDumpColumns - 1);
    const int port = row * kDumpColumns;
    std::string text = HexDigits(port, 2) + "h:  ";
    for (int i = 0; i < kDumpColumns; ++i) text += HexDigits(m.PortImage[port + i], 2) + " ";
    return text;
}

std::string MemoryEditorKey(int number, const char* what) {
    return "Memory Editor " + std::to_string(number) + " " + what;
}

// ---- MemoryView ----

void MemoryView::SetTopRow(int row) {
    topRow_ = std::clamp(row, 0, kLastTopRow);
}

void MemoryView::Untrack() {
    writePointer_ = readPointer_ = -1;
    seenWrite_ = seenRead_ = -2;
}

void MemoryView::LoadSettings(SettingsStore& s) {
    TrackRW = s.GetSettingInt(MemoryEditorKey(number_, kKeyTrackRW), 1) != 0;
    Optimize = s.GetSettingInt(MemoryEditorKey(number_, kKeyOptimize), 0) != 0;
    RangeStart = s.GetSettingInt(MemoryEditorKey(number_, kKeyRangeStart), 0);
    RangeEnd = s.GetSettingInt(MemoryEditorKey(number_, kKeyRangeEnd), 0xFFFF);
    if (RangeStart < 0 || RangeEnd > 0xFFFF || RangeStart > RangeEnd) {
        RangeStart = 0;
        RangeEnd = 0xFFFF;
    }
    seenWrite_ = seenRead_ = -2;
}

void MemoryView::SetTrackRW(SettingsStore& s, bool on) {
    TrackRW = on;
    s.SetSettingInt(MemoryEditorKey(number_, kKeyTrackRW), on ? 1 : 0);
    seenWrite_ = seenRead_ = -2;
}

void MemoryView::SetOptimize(SettingsStore& s, bool on) {
    Optimize = on;
    s.SetSettingInt(MemoryEditorKey(number_, kKeyOptimize), on ? 1 : 0);
}

std::string MemoryView::RangeText() const {
    return HexDigits(RangeStart, 4) + "h-" + HexDigits(RangeEnd, 4) + "h";
}

namespace {
// An address as typed: up to four hexadecimal digits, with or without "h".
int AddressEntry(std::string text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.pop_back();
    if (!text.empty() && (text.back() == 'h' || text.back() == 'H')) text.pop_back();
    return static_cast<int>(HexEntryValue(text, 4));
}
}  // namespace

std::string MemoryView::SetRange(SettingsStore& s, const std::string& start,
                                 const std::string& end) {
    const int first = AddressEntry(start);
    const int last = AddressEntry(end);
    if (first < 0 || last < 0) return kRangeRefusal;
    if (last < first) return "Allowed range " + HexDigits(first, 4) + "h-FFFFh.";
    RangeStart = first;
    RangeEnd = last;
    s.SetSettingInt(MemoryEditorKey(number_, kKeyRangeStart), first);
    s.SetSettingInt(MemoryEditorKey(number_, kKeyRangeEnd), last);
    seenWrite_ = seenRead_ = -2;
    return "";
}

// ---- CellEntry ----

void CellEntry::Open(int cell) {
    typed_.clear();
    cell_ = cell >= 0 && cell < cellCount_ ? cell : -1;
}

std::string CellEntry::Text(int cellValue) const {
    return typed_.empty() ? HexDigits(cellValue, 2) : typed_;
}

CellEntry::Outcome CellEntry::Complete() {
    Outcome out;
    out.taken = true;
    out.cell = cell_;
    out.value = static_cast<int>(HexValue(typed_.size() == 1 ? "0" + typed_ : typed_, 2));
    Open(cell_ + 1);  // past the last cell the box closes
    return out;
}

CellEntry::Outcome CellEntry::Key(char key) {
    if (!IsOpen()) return {};
    const char c = static_cast<char>(std::toupper(static_cast<unsigned char>(key)));
    if (!IsHexDigit(c)) return {};
    typed_ += c;
    if (typed_.size() < 2) return Outcome{true, -1, -1};
    return Complete();
}

CellEntry::Outcome CellEntry::Finish() {
    if (!IsOpen() || typed_.empty()) return {};
    return Complete();
}

void CellEntry::Backspace() {
    if (!typed_.empty()) typed_.pop_back();
}

}  // namespace mb
