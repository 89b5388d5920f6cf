#include "devices/video_screen.h"

#include <gtest/gtest.h>

#include "core/access.h"
#include "core/host.h"
#include "core/numtext.h"
#include "settings/settings_store.h"
#include "tests/support/quiet_host.h"

namespace mb {
namespace {

TEST(VideoScreenTest, OnlyWritesOnTheScreenRedraw) {
    struct Case {
        int address, cols, rows;
        int write;
        bool redraw;
    };
    const Case cases[] = {
        {0x4000, 32, 24, 0x4000, true},  {0x4000, 32, 24, 0x42FF, true},  // the last cell
        {0x4000, 32, 24, 0x4300, false},                                  // one byte past it
        {0x4000, 32, 24, 0x3FFF, false},  // one byte before the first
        {0x4000, 32, 24, -1, false},      // nothing written since clean
        {0xFFF0, 16, 2, 0xFFFF, true},    // a screen that runs past FFFFh
        {0xFFF0, 16, 2, 0x0000, true},    // goes on at 0000h
        {0xFFF0, 16, 2, 0x000F, true},   {0xFFF0, 16, 2, 0x0010, false},
        {0xFFF0, 16, 2, 0xFFEF, false},
    };
    for (const Case& c : cases) {
        VideoScreen screen;
        screen.VideoAddress = c.address;
        screen.VideoCols = c.cols;
        screen.VideoRows = c.rows;
        Machine m;
        m.LastWriteAddress = c.write;
        EXPECT_EQ(screen.memorijaprint(m), c.redraw) << pb_hex4(c.address) << " " << c.write;
        EXPECT_TRUE(screen.memorijaprint(m, true)) << "force";
    }
}

TEST(VideoScreenTest, ColumnsAndRowsWithinTheirRanges) {
    struct Case {
        bool cols;  // else rows
        const char* answer;
        const char* refusal;  // "" when taken
        int value;            // the setting afterwards
    };
    const Case cases[] = {
        {true, "16", "", 16},
        {true, "80", "", 80},
        {true, " 40 ", "", 40},
        {true, "15", "Allowed range 16-80.", 32},
        {true, "81", "Allowed range 16-80.", 32},
        {true, "2x", "Allowed range 16-80.", 32},
        {true, "-20", "Allowed range 16-80.", 32},
        {false, "2", "", 2},
        {false, "40", "", 40},
        {false, "1", "Allowed range 2-40.", 24},
        {false, "41", "Allowed range 2-40.", 24},
        {false, "99999", "Allowed range 2-40.", 24},
    };
    for (const Case& c : cases) {
        MemorySettingsStore settings;
        VideoScreen screen;
        screen.LoadSettings(settings);
        const std::string refusal =
            c.cols ? screen.ChangeCols(settings, c.answer) : screen.ChangeRows(settings, c.answer);
        EXPECT_EQ(refusal, c.refusal) << c.answer;
        EXPECT_EQ(c.cols ? screen.VideoCols : screen.VideoRows, c.value) << c.answer;
        EXPECT_EQ(settings.GetSettingInt(c.cols ? "Video Cols" : "Video Rows", -1), c.value);
    }
}

TEST(VideoScreenTest, AddressEntries) {
    struct Case {
        const char* answer;
        const char* refusal;
        int value;
    };
    const Case cases[] = {
        {"8000", "", 0x8000},
        {"c000h", "", 0xC000},
        {"0", "", 0},
        {"FFFF", "", 0xFFFF},
        {"10000", "Allowed range 0000h-FFFFh.", 0x4000},
        {"G000", "Allowed range 0000h-FFFFh.", 0x4000},
    };
    for (const Case& c : cases) {
        MemorySettingsStore settings;
        VideoScreen screen;
        screen.LoadSettings(settings);
        EXPECT_EQ(screen.ChangeAddress(settings, c.answer), c.refusal) << c.answer;
        EXPECT_EQ(screen.VideoAddress, c.value);
        EXPECT_EQ(settings.GetSettingInt("Video Addr", -1), c.value);
    }
}

TEST(VideoScreenTest, SettingsDefaultsAndStoredValuesOutOfRange) {
    MemorySettingsStore settings;
    VideoScreen screen;
    screen.LoadSettings(settings);
    EXPECT_EQ(settings.GetSettingInt("Video Addr", -1), 0x4000);
    EXPECT_EQ(settings.GetSettingInt("Video Cols", -1), 32);
    EXPECT_EQ(settings.GetSettingInt("Video Rows", -1), 24);
    EXPECT_EQ(settings.GetSettingInt("Video Color Scheme", -1), 0);

    settings.SetSettingInt("Video Cols", 81);
    settings.SetSettingInt("Video Rows", 1);
    settings.SetSettingInt("Video Color Scheme", 5);
    settings.SetSettingInt("Video Addr", 0x10000);
    VideoScreen reread;
    reread.LoadSettings(settings);
    EXPECT_EQ(reread.VideoCols, 32);
    EXPECT_EQ(reread.VideoRows, 24);
    EXPECT_EQ(reread.VideoColorScheme, 0);
    EXPECT_EQ(reread.VideoAddress, 0x4000);

    EXPECT_TRUE(reread.ChangeColorScheme(settings, 4));
    EXPECT_FALSE(reread.ChangeColorScheme(settings, 5));
    EXPECT_EQ(settings.GetSettingInt("Video Color Scheme", -1), 4);
    EXPECT_STREQ(kVideoSchemeNames[4], "blue background");
}

TEST(VideoScreenTest, ScreenTextShowsEachRowWithItsAddress) {
    Machine m;
    VideoScreen screen;
    screen.VideoAddress = 0x8000;
    screen.VideoCols = 16;
    screen.VideoRows = 3;
    const std::string hello = "Hello, world!";
    for (size_t i = 0; i < hello.size(); ++i) m.MemoryImage[0x8010 + i] = hello[i];
    m.MemoryImage[0x8020] = 0x01;  // no printable form
    m.MemoryImage[0x8021] = 0xC1;
    m.MemoryImage[0x802F] = '~';
    EXPECT_EQ(screen.RowText(m, 0), "8000: " + std::string(16, ' '));
    EXPECT_EQ(screen.RowText(m, 1), "8010: Hello, world!   ");
    EXPECT_EQ(screen.RowText(m, 2), "8020: .." + std::string(13, ' ') + "~");
    EXPECT_EQ(screen.ScreenText(m), screen.RowText(m, 0) + "\r\n" + screen.RowText(m, 1) + "\r\n" +
                                        screen.RowText(m, 2) + "\r\n");

    screen.VideoAddress = 0xFFF8;  // past FFFFh the screen shows 0000h on
    m.MemoryImage[0xFFFF] = 'Z';
    m.MemoryImage[0x0000] = 'A';
    EXPECT_EQ(screen.RowText(m, 0), "FFF8:        ZA       ");
    EXPECT_EQ(screen.RowText(m, 1), "0008: " + std::string(16, ' '));
}

// The write path: with the screen open each MemoryWrite reaches the host.
TEST(VideoScreenTest, TheWritePathReachesTheScreenOnlyWhileItIsOpen) {
    Machine m;
    VideoScreen screen;
    int redraws = 0;
    testing::QuietHost host;
    host.onRefresh = [&](int bits) {
        if ((bits & kViewVideoScreen) && screen.memorijaprint(m)) ++redraws;
    };
    AccessHooks hooks;
    hooks.host = &host;
    hooks.PromptBeforeIn = false;
    hooks.UpdateMask(m);
    MemoryWrite(m, 0x4000, 'A');
    EXPECT_EQ(redraws, 0);
    hooks.MemoryViewsOpen = true;
    hooks.UpdateMask(m);
    MemoryWrite(m, 0x4000, 'B');
    MemoryWrite(m, 0x4300, 'C');  // past the screen
    MemoryWrite(m, 0x42FF, 'D');
    EXPECT_EQ(redraws, 2);
    EXPECT_EQ(m.MemoryImage[0x4300], 'C');
    // Ports do not take the hooked path for the memory views.
    EXPECT_EQ(m.AccessHookMask & kPortHooks, 0);
}

}  // namespace
}  // namespace mb
