#include "images/program_image.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "settings/settings_store.h"
#include "test_image_host.h"

namespace mb::testing {
namespace {

class Images : public ::testing::Test {
  protected:
    std::unique_ptr<Machine> m = std::make_unique<Machine>();
    MemorySettingsStore settings;
    ScriptedImageHost host;
    ProgramImages images{*m, settings, host};
    TempFolder dir;
};

TEST_F(Images, ObjectFileSizeLimits) {
    const std::string full = dir.Write("full.obj", std::string(65536, '\x11'));
    EXPECT_TRUE(images.LoadProgram(full));
    EXPECT_EQ(host.Last(), "Operation completed.\nTotal 65536 (64K) bytes loaded.");
    EXPECT_EQ(m->MemoryImage[65535], 0x11);

    m->ObjOffset = 1;
    host.messages.clear();
    EXPECT_FALSE(images.LoadProgram(full));
    EXPECT_EQ(host.Last(),
              "The selected file can not fit in 64K memory with the current offset for OBJ files "
              "loading.");
    EXPECT_FALSE(images.LoadProgram(dir.Write("empty.obj", "")));
    EXPECT_EQ(host.Last(), "The size of the selected file is zero.");
    EXPECT_FALSE(images.LoadProgram(dir.Write("big.obj", std::string(65537, 'x'))));
    EXPECT_EQ(host.Last(), "The size of the selected file is greater than 64K.");
}

TEST_F(Images, ObjectLoadsAtTheOffset) {
    m->ObjOffset = 0x100;
    EXPECT_TRUE(images.LoadProgram(dir.Write("p.obj", std::string("\x3E\x05\x76", 3))));
    EXPECT_EQ(m->MemoryImage[0x100], 0x3E);
    EXPECT_EQ(m->MemoryImage[0x102], 0x76);
    EXPECT_EQ(images.LoadedSize(), 3);
    EXPECT_EQ(host.Last(), "Operation completed.\nTotal 3 (0.00K) bytes loaded.");
}

TEST_F(Images, HexLoadFillsGapsWithZeroAndIgnoresOffset) {
    m->ObjOffset = 0x100;
    m->MemoryImage[1] = 0x99;
    const std::string path = dir.Write("p.hex", ":0100000011EE\n:0100020022DB\n:00000001FF\n");
    EXPECT_TRUE(images.LoadProgram(path));
    EXPECT_EQ(m->MemoryImage[0], 0x11);
    EXPECT_EQ(m->MemoryImage[1], 0);
    EXPECT_EQ(m->MemoryImage[2], 0x22);
    EXPECT_EQ(images.LoadedSize(), 3);
    // Line ends were put right, and the original kept beside the file.
    EXPECT_EQ(dir.Read("p.hex"), ":0100000011EE\r\n:0100020022DB\r\n:00000001FF\r\n");
    EXPECT_EQ(dir.Read("p_lf_orig.hex"), ":0100000011EE\n:0100020022DB\n:00000001FF\n");
}

TEST_F(Images, BadHexLeavesMemoryAlone) {
    m->MemoryImage[0] = 0x42;
    EXPECT_FALSE(images.LoadProgram(dir.Write("bad.hex", ":0100000011EE\r\nnonsense\r\n")));
    EXPECT_EQ(m->MemoryImage[0], 0x42);
    EXPECT_TRUE(images.ProgramFileName().empty());
}

TEST_F(Images, SaveAndLoadRoundTripInBothFormats) {
    for (int filter : {1, 2}) {
        for (int a = 0; a < 65536; ++a) m->MemoryImage[a] = 0;
        for (int a = 0; a < 20; ++a) m->MemoryImage[a] = a + 1;
        m->MemoryImage[0x40] = 0x77;  // a zero block (20..3F) lies between
        m->MemoryImage[0x41] = 0;     // trailing zero: not saved
        host.filterAnswer = filter;
        host.saveAnswers.push_back((dir.path / "saved").string());
        images.menusave();
        const std::string name = filter == 2 ? "saved.hex" : "saved.obj";
        EXPECT_EQ(host.Last(), "Operation completed.\nTotal 65 (0.06K) bytes saved.");
        EXPECT_EQ(images.ProgramFileName(), (dir.path / name).string());
        if (filter == 1)
            EXPECT_EQ(dir.Read(name).size(), 65u);
        else  // the zero block is left out
            EXPECT_EQ(dir.Read(name).find(":10002000"), std::string::npos);

        std::vector<int> before(m->MemoryImage.begin(), m->MemoryImage.begin() + 65536);
        images.ClearMemory();
        EXPECT_EQ(m->MemoryImage[0x40], 0);
        EXPECT_TRUE(images.LoadProgram((dir.path / name).string()));
        EXPECT_TRUE(std::equal(before.begin(), before.end(), m->MemoryImage.begin())) << name;
    }
}

TEST_F(Images, SaveAsksBeforeOverwriting) {
    m->MemoryImage[0] = 1;
    dir.Write("p.obj", "old");
    host.yes = false;
    host.saveAnswers.push_back((dir.path / "p").string());
    images.menusave();
    EXPECT_EQ(host.questions.back(),
              "Do you want to overwrite existing file " + (dir.path / "p.obj").string() + "?");
    EXPECT_EQ(dir.Read("p.obj"), "old");
}

TEST_F(Images, RefusalsAndMessages) {
    images.menusave();
    EXPECT_EQ(host.Last(), "The memory is empty.");
    images.menureload();
    EXPECT_EQ(host.Last(), "Please load program file first.");
    images.menuload2();
    EXPECT_EQ(host.Last(), "The main program file must be loaded first.");

    const std::string path = dir.Write("p.obj", "\x01");
    EXPECT_TRUE(images.LoadProgram(path));
    std::filesystem::remove(path);
    images.menureload();
    EXPECT_EQ(host.Last(), "The file does not exist any more.");

    host.running = true;
    images.menuload();
    EXPECT_EQ(host.Last(), "Please stop the simulation first.");
    images.ClearMemory();
    EXPECT_EQ(host.Last(), "Please stop the simulation first.");
}

TEST_F(Images, LoadAnotherFileAtAnOffset) {
    EXPECT_TRUE(images.LoadProgram(dir.Write("main.obj", "\x01\x02")));
    const auto loadAt = [&](const std::string& file, const char* offset) {
        host.openAnswers.push_back(file);
        host.textAnswers.push_back(offset);
        images.menuload2();
        return host.Last();
    };
    const std::string more = dir.Write("more.obj", "\xAA\xBB");
    EXPECT_EQ(loadAt(more, "10"), "Operation completed.\nTotal 2 (0.00K) bytes loaded.");
    EXPECT_EQ(m->MemoryImage[0x10], 0xAA);
    EXPECT_EQ(m->MemoryImage[0x11], 0xBB);
    EXPECT_EQ(images.LoadedSize(), 2);
    EXPECT_EQ(loadAt(more, "FFFF"),
              "Operation aborted...\nThe OBJ file to be loaded could not fit 64K memory range.");
    EXPECT_EQ(loadAt(more, "XYZ"), "Operation aborted...\nWrong entry.");
    loadAt(dir.Write("more.hex", ":02001000334477\r\n:00000001FF\r\n"), "100");
    EXPECT_EQ(m->MemoryImage[0x110], 0x33);
    EXPECT_EQ(m->MemoryImage[0x111], 0x44);
}

TEST_F(Images, HexFilesAgreeWithSrecCat) {
    if (std::system("command -v srec_cat >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "srec_cat is not installed";
    for (int a = 0; a < 300; ++a) m->MemoryImage[a] = (a * 7 + 3) & 0xFF;
    host.filterAnswer = 2;
    host.saveAnswers.push_back((dir.path / "ours.hex").string());
    images.menusave();
    const std::string dirText = dir.path.string();
    ASSERT_EQ(
        std::system(("srec_cat " + dirText + "/ours.hex -intel -o " + dirText + "/back.bin -binary")
                        .c_str()),
        0);
    const std::string back = dir.Read("back.bin");
    ASSERT_EQ(back.size(), 300u);
    for (int a = 0; a < 300; ++a)
        ASSERT_EQ(static_cast<unsigned char>(back[a]), m->MemoryImage[a]) << a;

    dir.Write("in.bin", std::string("\x10\x20\x30\x40\x50", 5));
    ASSERT_EQ(std::system(("srec_cat " + dirText + "/in.bin -binary -offset 0x1234 -o " + dirText +
                           "/theirs.hex -intel")
                              .c_str()),
              0);
    images.ClearMemory();
    EXPECT_TRUE(images.LoadProgram(dirText + "/theirs.hex"));
    EXPECT_EQ(m->MemoryImage[0x1234], 0x10);
    EXPECT_EQ(m->MemoryImage[0x1238], 0x50);
}

}  // namespace
}  // namespace mb::testing
