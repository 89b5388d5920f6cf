#include "settings/recent_files.h"

#include <gtest/gtest.h>

#include <set>

namespace mb {
namespace {

class Recent : public ::testing::Test {
  protected:
    MemorySettingsStore settings;
    std::set<std::string> present;
    RecentFiles recent{settings, [this](const std::string& p) { return present.count(p) != 0; }};

    void Have(const std::string& p) {
        present.insert(p);
        recent.Add(p);
    }
};

TEST_F(Recent, NewestFirstWithoutDuplicatesAndAtMostTen) {
    for (int i = 1; i <= 11; ++i) Have("/p/f" + std::to_string(i) + ".obj");
    Have("/p/f5.obj");
    const auto list = recent.Read();
    ASSERT_EQ(list.size(), 10u);
    EXPECT_EQ(list[0], "/p/f5.obj");
    EXPECT_EQ(list[1], "/p/f11.obj");
    EXPECT_EQ(list[9], "/p/f2.obj");  // f1 fell off
    EXPECT_EQ(settings.GetSettingText("Recent Files - Simulator - 1", ""), "/p/f5.obj");
}

TEST_F(Recent, DeletedFilesVanishAndTheRestMoveUp) {
    Have("/p/a.obj");
    Have("/p/b.obj");
    Have("/p/c.obj");
    present.erase("/p/b.obj");
    EXPECT_EQ(recent.Read(), (std::vector<std::string>{"/p/c.obj", "/p/a.obj"}));
    EXPECT_EQ(settings.GetSettingText("Recent Files - Simulator - 3", "x"), "");

    settings.SetSettingInt("Show Recent Files - Remove Deleted Files", 0);
    settings.SetSettingText("Recent Files - Simulator - 3", "/p/gone.obj");
    EXPECT_EQ(recent.Read().size(), 3u);
}

TEST_F(Recent, CaptionsAndShortening) {
    EXPECT_EQ(recent.Caption(0, "/p/a.obj"), "1: /p/a.obj");
    EXPECT_EQ(recent.Caption(9, "/p/a.obj"), "1&0: /p/a.obj");
    const std::string folder =
        "/home/user/projects/z80/firmware/board-rev-b/build/output";  // 56 characters
    EXPECT_EQ(ShortenPath(folder + "/rom.hex"),
              "/home/user/projects/ \xE2\x80\xA6 d-rev-b/build/output/rom.hex");
    const std::string exactly45(45, 'x');
    EXPECT_EQ(ShortenPath("/" + exactly45.substr(1) + "/a.obj"),
              "/" + exactly45.substr(1) + "/a.obj");
    settings.SetSettingInt("Show Recent Files - Shorten Long Paths", 0);
    EXPECT_EQ(recent.Caption(1, folder + "/rom.hex"), "2: " + folder + "/rom.hex");
}

TEST_F(Recent, ClearEmptiesEverySlot) {
    Have("/p/a.obj");
    recent.Clear();
    EXPECT_TRUE(recent.Read().empty());
}

}  // namespace
}  // namespace mb
