#include "debug/memory_view.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/access.h"
#include "core/execute.h"
#include "core/host.h"
#include "core/numtext.h"
#include "settings/settings_store.h"
#include "tests/support/quiet_host.h"

namespace mb {
namespace {

TEST(MemoryViewTest, WritePointerScrollsToStandEightRowsBelowTheTop) {
    // A write address and the top row after it
    const std::pair<int, int> cases[] = {
        {0x0000, 0},    {0x0005, 0},     {0x0080, 0},    {0x008F, 0},  // rows 0..8: no row above
        {0x0090, 1},    {0x1234, 0x11B}, {0xFF6F, 4078}, {0xFF7F, 4079},
        {0xFF80, 4080}, {0xFFF0, 4080},  {0xFFFF, 4080},  // the view never runs past FFFFh
    };
    for (const auto& [address, topRow] : cases) {
        Machine m;
        MemoryView view(1);
        view.SetTopRow(address < 0x8000 ? 0x800 : 0);  // off the view
        m.LastWriteAddress = address;
        EXPECT_TRUE(view.memorijaprint(m));
        EXPECT_EQ(view.TopRow(), topRow) << pb_hex4(address);
        EXPECT_EQ(view.WritePointer(), address) << pb_hex4(address);
    }
}

TEST(MemoryViewTest, EveryAddressEndsOnTheViewAndAWriteOnTheViewDoesNotScroll) {
    Machine m;
    MemoryView view(1);
    for (int address = 0; address < kMemorySize; ++address) {
        view.SetTopRow(address < 0x8000 ? kLastTopRow : 0);
        m.LastWriteAddress = address;
        view.memorijaprint(m);
        ASSERT_TRUE(view.OnView(address)) << pb_hex4(address);
        ASSERT_GE(view.TopRow(), 0);
        ASSERT_LE(view.TopRow(), kLastTopRow);
    }
    view.SetTopRow(0x100);
    m.LastWriteAddress = 0x2000;  // off the view: scrolls
    view.memorijaprint(m);
    EXPECT_EQ(view.TopRow(), 0x1F8);
    m.LastWriteAddress = (0x1F8 + 15) * 16 + 3;  // on the last visible row: stays
    view.memorijaprint(m);
    EXPECT_EQ(view.TopRow(), 0x1F8);
}

TEST(MemoryViewTest, ReadPointerFollowsReadsAndCleanTakesThePointersAway) {
    Machine m;
    MemoryView view(2);
    m.LastReadAddress = 0x9000;
    view.memorijaprint(m);
    EXPECT_EQ(view.ReadPointer(), 0x9000);
    EXPECT_EQ(view.WritePointer(), -1);
    EXPECT_EQ(view.TopRow(), 0x900 - 8);
    m.LastWriteAddress = 0x9010;
    view.memorijaprint(m);
    ASSERT_EQ(view.WritePointer(), 0x9010);
    clean(m);
    view.memorijaprint(m);
    EXPECT_EQ(view.WritePointer(), -1);
    EXPECT_EQ(view.ReadPointer(), -1);
}

TEST(MemoryViewTest, AccessOutsideTheRangeMovesNoPointer) {
    MemorySettingsStore settings;
    Machine m;
    MemoryView view(1);
    ASSERT_EQ(view.SetRange(settings, "8000", "80FF"), "");
    m.LastWriteAddress = 0x8010;
    m.LastReadAddress = 0x80F0;
    view.memorijaprint(m);
    const int top = view.TopRow();
    for (int outside : {0x7FFF, 0x8100, 0x0000, 0xFFFF}) {
        m.LastWriteAddress = outside;
        m.LastReadAddress = outside;
        view.memorijaprint(m);
        EXPECT_EQ(view.WritePointer(), 0x8010) << pb_hex4(outside);
        EXPECT_EQ(view.ReadPointer(), 0x80F0) << pb_hex4(outside);
        EXPECT_EQ(view.TopRow(), top) << pb_hex4(outside);
    }
    m.LastWriteAddress = 0x80FF;  // the range's ends are inside
    view.memorijaprint(m);
    EXPECT_EQ(view.WritePointer(), 0x80FF);
}

TEST(MemoryViewTest, WithoutTrackingThereAreNoPointersAndNoScrolling) {
    MemorySettingsStore settings;
    Machine m;
    MemoryView view(3);
    view.SetTrackRW(settings, false);
    m.LastWriteAddress = 0xC000;
    m.LastReadAddress = 0xC001;
    EXPECT_TRUE(view.memorijaprint(m));
    EXPECT_EQ(view.WritePointer(), -1);
    EXPECT_EQ(view.ReadPointer(), -1);
    EXPECT_EQ(view.TopRow(), 0);
}

TEST(MemoryViewTest, OptimizeSkipsRepeatedWritesToOneAddressAtUltimateOnly) {
    struct Case {
        int rate;
        bool optimize, track;
        bool redrawsRepeat;  // a second write to the same address redraws
    };
    const Case cases[] = {
        {kRateUltimate, true, true, false},     {kRateUltimate, false, true, true},
        {kRateUltimate, true, false, true},  // Optimize works with tracking only
        {kRateExtremelyFast, true, true, true}, {kRateStepByStep, true, true, true},
    };
    for (const Case& c : cases) {
        Machine m;
        m.SimulationRate = c.rate;
        MemoryView view(1);
        view.Optimize = c.optimize;
        view.TrackRW = c.track;
        m.LastWriteAddress = 0x4000;
        EXPECT_TRUE(view.memorijaprint(m));
        EXPECT_EQ(view.memorijaprint(m), c.redrawsRepeat) << c.rate << c.optimize << c.track;
        EXPECT_TRUE(view.memorijaprint(m, true)) << "force";
        m.LastWriteAddress = 0x4001;
        EXPECT_TRUE(view.memorijaprint(m)) << "a new address";
    }
}

TEST(MemoryViewTest, FocusSpPutsTheStackInView) {
    Machine m;
    MemoryView view(1);
    m.SP = 0xFFF0;
    view.FocusSP(m);
    EXPECT_TRUE(view.OnView(0xFFF0));
    EXPECT_EQ(view.TopRow(), kLastTopRow);
    m.SP = 0x0234;
    view.FocusSP(m);
    EXPECT_EQ(view.TopRow(), 0x23 - 8);
}

TEST(MemoryViewTest, RangeEntriesAndRefusals) {
    struct Case {
        const char *start, *end;
        const char* refusal;  // "" when taken
        const char* range;    // the range afterwards
    };
    const Case cases[] = {
        {"8000", "80FF", "", "8000h-80FFh"},
        {" 12 ", "fffe", "", "0012h-FFFEh"},
        {"c000h", "C0FFH", "", "C000h-C0FFh"},
        {"10000", "FFFF", "Allowed range 0000h-FFFFh.", "0000h-FFFFh"},
        {"0000", "xyz", "Allowed range 0000h-FFFFh.", "0000h-FFFFh"},
        {"-1", "0010", "Allowed range 0000h-FFFFh.", "0000h-FFFFh"},
        {"9000", "8FFF", "Allowed range 9000h-FFFFh.", "0000h-FFFFh"},
    };
    for (const Case& c : cases) {
        MemorySettingsStore settings;
        MemoryView view(2);
        view.LoadSettings(settings);
        EXPECT_EQ(view.SetRange(settings, c.start, c.end), c.refusal) << c.start << " " << c.end;
        EXPECT_EQ(view.RangeText(), c.range);
        MemoryView again(2);
        again.LoadSettings(settings);
        EXPECT_EQ(again.RangeText(), c.range) << "kept in the settings";
    }
}

TEST(MemoryViewTest, SettingsAreKeptPerEditor) {
    MemorySettingsStore settings;
    MemoryView first(1), third(3);
    first.LoadSettings(settings);
    for (const char* key : {"Access", "Range Start", "Range End", "Optimization"})
        EXPECT_TRUE(settings.Contains(std::string("Memory Editor 1 Track R/W ") + key)) << key;
    third.SetOptimize(settings, true);
    third.SetTrackRW(settings, false);
    MemoryView reread(3), other(1);
    reread.LoadSettings(settings);
    other.LoadSettings(settings);
    EXPECT_TRUE(reread.Optimize);
    EXPECT_FALSE(reread.TrackRW);
    EXPECT_FALSE(other.Optimize);
    EXPECT_TRUE(other.TrackRW);
    settings.SetSettingInt("Memory Editor 2 Track R/W Range Start", 0x9000);
    settings.SetSettingInt("Memory Editor 2 Track R/W Range End", 0x100);  // reversed: ignored
    MemoryView second(2);
    second.LoadSettings(settings);
    EXPECT_EQ(second.RangeText(), "0000h-FFFFh");
}

TEST(MemoryViewTest, DumpAndPortRowsStandUnderTheirHeadings) {
    Machine m;
    for (int i = 0; i < 16; ++i) m.MemoryImage[0x1230 + i] = i == 1 ? 'A' : 0x7E + i;
    const std::string heading = DumpHeadingLine(true);
    const std::string row = DumpRowText(m, 0x123, true);
    EXPECT_EQ(row.substr(0, 6), "1230: ");
    EXPECT_EQ(heading.size(), row.size());
    EXPECT_NE(heading.find(DumpColumnHeading()), std::string::npos);
    EXPECT_NE(heading.find(DumpCharHeading()), std::string::npos);
    for (int col = 0; col < 16; ++col) {
        const int value = m.MemoryImage[0x1230 + col];
        EXPECT_EQ(heading.substr(DumpCellPosition(col), 2), pb_hex2(col));
        EXPECT_EQ(row.substr(DumpCellPosition(col), 2), pb_hex2(value));
        EXPECT_EQ(heading[DumpCharPosition(col)], pb_hex2(col)[1]);
        EXPECT_EQ(row[DumpCharPosition(col)], DumpChar(value));
    }
    EXPECT_EQ(row[DumpCharPosition(1)], 'A');
    EXPECT_EQ(row[DumpCharPosition(0)], '~');
    EXPECT_EQ(row[DumpCharPosition(1 + 1)], '.');  // 80h has no printable form
    std::string zeros;
    for (int i = 0; i < 16; ++i) zeros += "00 ";
    EXPECT_EQ(DumpRowText(m, 0xFFF, false), "FFF0: " + zeros);
    // Port rows share the cell columns.
    m.PortImage[0xF3] = 0x5A;
    const std::string port = PortRowText(m, 0xF);
    EXPECT_EQ(port.substr(0, 6), "F0h:  ");
    EXPECT_EQ(port.substr(DumpCellPosition(3), 2), "5A");
    EXPECT_EQ(PortRowText(m, 0).substr(0, 6), "00h:  ");
}

TEST(CellEntryTest, DigitRules) {
    struct Case {
        const char* keys;        // '\n' is Enter, '\b' is Backspace
        std::vector<int> cells;  // cells written, in order
        std::vector<int> values;
        int boxAfter;  // where the box stands, -1 closed
    };
    const Case cases[] = {
        {"3C", {10}, {0x3C}, 11},
        {"3c", {10}, {0x3C}, 11},     // lower case is taken
        {"G3xZ4", {10}, {0x34}, 11},  // only 0-9 and A-F
        {"A\n", {10}, {0x0A}, 11},    // a lone digit gets a "0"
        {"3\b4F", {10}, {0x4F}, 11},  // a digit taken back
        {"12345", {10, 11}, {0x12, 0x34}, 12},
        {"\n", {}, {}, 10},  // Enter on nothing writes nothing
        {"7", {}, {}, 10},
    };
    for (const Case& c : cases) {
        CellEntry entry(256);
        entry.Open(10);
        std::vector<int> cells, values;
        for (const char* k = c.keys; *k; ++k) {
            CellEntry::Outcome out;
            switch (*k) {
                case '\n': out = entry.Finish(); break;
                case '\b': entry.Backspace(); break;
                default: out = entry.Key(*k);
            }
            if (out.cell >= 0) {
                cells.push_back(out.cell);
                values.push_back(out.value);
            }
        }
        EXPECT_EQ(cells, c.cells) << c.keys;
        EXPECT_EQ(values, c.values) << c.keys;
        EXPECT_EQ(entry.Cell(), c.boxAfter) << c.keys;
    }
}

TEST(CellEntryTest, TheBoxShowsTheCellUntilAKeyAndClosesPastTheLastCell) {
    CellEntry entry(16);
    entry.Open(15);
    EXPECT_EQ(entry.Text(0xA7), "A7");
    EXPECT_TRUE(entry.Key('b').taken);
    EXPECT_EQ(entry.Text(0xA7), "B");
    const CellEntry::Outcome out = entry.Key('1');
    EXPECT_EQ(out.cell, 15);
    EXPECT_EQ(out.value, 0xB1);
    EXPECT_FALSE(entry.IsOpen());
    EXPECT_FALSE(entry.Key('1').taken);
    entry.Open(16);
    EXPECT_FALSE(entry.IsOpen());
}

// The write path with a Memory Editor open: every MemoryWrite asks the host for
// memorijaprint, and at Ultimate with Optimize a loop on one address redraws once.
struct WritePathRun {
    int calls, redraws, pointer;
};

WritePathRun RunOnWritePath(const std::vector<int>& program, bool editorOpen, bool optimize,
                            int instructions) {
    Machine m;
    m.SimulationRate = kRateUltimate;
    for (size_t i = 0; i < program.size(); ++i) m.MemoryImage[i] = program[i];
    MemoryView view(1);
    view.Optimize = optimize;
    int calls = 0, redraws = 0;
    testing::QuietHost host;
    host.onRefresh = [&](int bits) {
        if (!(bits & kViewMemoryEditors)) return;
        ++calls;
        if (view.memorijaprint(m)) ++redraws;
    };
    AccessHooks hooks;
    hooks.host = &host;
    hooks.PromptBeforeIn = false;
    hooks.MemoryViewsOpen = editorOpen;
    hooks.UpdateMask(m);
    for (int i = 0; i < instructions; ++i) ExecuteInstruction(m);
    return {calls, redraws, view.WritePointer()};
}

TEST(MemoryViewTest, TheWritePathCallsTheEditorsOnlyWhileOneIsOpen) {
    // LD HL,8000H; loop: LD (HL),A; JR loop
    const std::vector<int> sameAddress = {0x21, 0x00, 0x80, 0x77, 0x18, 0xFD};
    // LD HL,8000H; loop: LD (HL),A; INC HL; JR loop
    const std::vector<int> nextAddress = {0x21, 0x00, 0x80, 0x77, 0x23, 0x18, 0xFC};
    const int instructions = 1 + 2 * 100;  // 100 writes

    EXPECT_EQ(RunOnWritePath(sameAddress, false, true, instructions).calls, 0);

    const WritePathRun optimized = RunOnWritePath(sameAddress, true, true, instructions);
    EXPECT_EQ(optimized.calls, 100);
    EXPECT_EQ(optimized.redraws, 1);
    EXPECT_EQ(optimized.pointer, 0x8000);

    EXPECT_EQ(RunOnWritePath(sameAddress, true, false, instructions).redraws, 100);

    const WritePathRun moving = RunOnWritePath(nextAddress, true, true, 1 + 3 * 100);
    EXPECT_EQ(moving.redraws, 100);
    EXPECT_EQ(moving.pointer, 0x8000 + 99);
}

}  // namespace
}  // namespace mb
