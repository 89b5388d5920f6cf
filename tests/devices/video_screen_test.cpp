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

// Columns, rows and the address: taken within their ranges, else refused and
// kept at the default.
TEST(VideoScreenTest, EntriesWithinTheirRanges) {
    using Change = std::string (VideoScreen::*)(SettingsStore&, const std::string&);
    auto check = [](const char* key, Change change, int VideoScreen::*value, const char* refusal,
                    std::vector<const char*> refused,
                    std::vector<std::pair<const char*, int>> taken) {
        for (const char* answer : refused) taken.push_back({answer, -1});
        for (auto [answer, stored] : taken) {
            SCOPED_TRACE(std::string(key) + " '" + answer + "'");
            MemorySettingsStore settings;
            VideoScreen screen;
            screen.LoadSettings(settings);
            const int expected = stored < 0 ? VideoScreen{}.*value : stored;
            EXPECT_EQ((screen.*change)(settings, answer), stored < 0 ? refusal : "");
            EXPECT_EQ(screen.*value, expected);
            EXPECT_EQ(settings.GetSettingInt(key, -1), expected);
        }
    };
    check("Video Cols", &VideoScreen::ChangeCols, &VideoScreen::VideoCols, "Allowed range 16-80.",
          {"15", "81", "2x", "-20"}, {{"16", 16}, {"80", 80}, {" 40 ", 40}});
    check("Video Rows", &VideoScreen::ChangeRows, &VideoScreen::VideoRows, "Allowed range 2-40.",
          {"1", "41", "99999"}, {{"2", 2}, {"40", 40}});
    check("Video Addr", &VideoScreen::ChangeAddress, &VideoScreen::VideoAddress,
          "Allowed range 0000h-FFFFh.", {"10000", "G000"},
          {{"8000", 0x8000}, {"c000h", 0xC000}, {"0", 0}, {"FFFF", 0xFFFF}});
}

TEST(VideoScreenTest, SettingsDefaultsAndStoredValuesOutOfRange) {
    MemorySettingsStore settings;
    VideoScreen screen;
    screen.LoadSettings(settings);
    // Each setting: its default, written at the first reading, and a stored
    // value out of range.
    const std::tuple<const char*, int, int> fields[] = {{"Video Addr", 0x4000, 0x10000},
                                                        {"Video Cols", 32, 81},
                                                        {"Video Rows", 24, 1},
                                                        {"Video Color Scheme", 0, 5}};
    for (const auto& [key, byDefault, outOfRange] : fields) {
        EXPECT_EQ(settings.GetSettingInt(key, -1), byDefault) << key;
        settings.SetSettingInt(key, outOfRange);
    }
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
