#include "disasm/disassembler.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <tuple>

#include "../images/test_image_host.h"

namespace mb::testing {
namespace {

std::string Golden(const std::string& name) {
    return TempFolder::ReadFile(std::string(MB_TEST_DATA) + "/golden/" + name);
}

class DisassemblerTest : public ::testing::Test {
  protected:
    std::string Listing(int start, bool withOpcodes) {
        const std::string path = dis.Disassemble(start, withOpcodes, dir.path.string());
        EXPECT_FALSE(std::filesystem::exists(dir.path / kDisassemblerPass1File));
        return TempFolder::ReadFile(path);
    }
    void Load(const std::string& golden) {
        ASSERT_TRUE(dis.LoadFile(std::string(MB_TEST_DATA) + "/golden/" + golden, 0, host));
    }
    Disassembler dis;
    ScriptedImageHost host;
    TempFolder dir;
};

TEST_F(DisassemblerTest, GoldenListings) {
    // The image, whether empty ranges are skipped, whether opcodes are listed, the listing
    const std::tuple<const char*, bool, bool, const char*> cases[] = {
        {"sample.obj", true, true, "sample_opcodes.lst"},
        {"sample.obj", false, false, "sample_source.lst"},
        {"jumps.obj", true, false, "jumps_source.lst"},
        {"jumps.obj", true, true, "jumps_opcodes.lst"}};
    for (const auto& [image, skip, withOpcodes, golden] : cases) {
        dis.Clear();
        Load(image);
        dis.skipEmptyRanges = skip;
        EXPECT_EQ(Listing(0, withOpcodes), Golden(golden)) << golden;
    }
}

TEST_F(DisassemblerTest, AllZeroBufferListsTenNops) {
    dis.SetSize(65536);
    const std::string listing = Listing(0, true);
    size_t nops = 0;
    for (size_t at = listing.find("NOP"); at != std::string::npos; at = listing.find("NOP", at + 1))
        ++nops;
    EXPECT_EQ(nops, 10u);
    EXPECT_NE(listing.find("0009   00                  NOP\r\n"), std::string::npos);
}

TEST_F(DisassemblerTest, JumpIntoTheMiddleOfAnInstructionBecomesAnEqu) {
    Load("jumps.obj");  // JR to itself at 0000H; JP 0004H lands inside JP's own operand
    const std::string source = Listing(0, false);
    EXPECT_NE(source.find("L0002:  .EQU 0004H\r\n\r\nL0001:  JR L0001\r\n"), std::string::npos);
    const std::string withOpcodes = Listing(0, true);
    EXPECT_EQ(withOpcodes.find(".EQU"), std::string::npos);
    EXPECT_NE(withOpcodes.find("L0002:  0004"), std::string::npos);
}

// Any start above 0000H, even 0001H, needs an ORG line for the listing to
// assemble back at the same addresses; 0000H needs none.
TEST_F(DisassemblerTest, StartAboveZeroWritesOrg) {
    Load("jumps.obj");
    EXPECT_EQ(Listing(0, false).find(".ORG"), std::string::npos);
    EXPECT_NE(Listing(1, false).find("        .ORG 0001H\r\n"), std::string::npos);
    const std::string source = Listing(2, false);
    EXPECT_NE(source.find("        .ORG 0002H\r\n        JP L0001\r\n"), std::string::npos);
}

TEST_F(DisassemblerTest, LoadRefusals) {
    const std::string big = dir.Write("big.obj", std::string(16, '\x01'));
    EXPECT_FALSE(dis.LoadFile(big, 0xFFF8, host));
    EXPECT_EQ(host.Last(), "The selected file can not fit in 64K memory with the selected offset.");
    EXPECT_FALSE(dis.LoadFile(dir.Write("empty.obj", ""), 0, host));
    EXPECT_EQ(host.Last(), "The size of the selected file is zero.");
    EXPECT_TRUE(dis.LoadFile(big, 0x10, host));
    EXPECT_EQ(dis.Size(), 0x20);
}

}  // namespace
}  // namespace mb::testing
