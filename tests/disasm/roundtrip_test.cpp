// A listing without opcodes goes through the assembler again to the same bytes.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "../images/test_image_host.h"
#include "assembler/assembler.h"
#include "disasm/disassembler.h"
#include "settings/settings_store.h"

namespace mb::testing {
namespace {

TEST(DisassemblyRoundTrip, ListingWithoutOpcodesAssemblesToTheSameBytes) {
    TempFolder dir;
    ScriptedImageHost host;
    Disassembler dis;
    dis.skipEmptyRanges = false;
    ASSERT_TRUE(dis.LoadFile(std::string(MB_TEST_DATA) + "/golden/sample.obj", 0, host));
    // Every opcode of the base group with two operand bytes, behind the sample;
    // wherever the decoder resynchronises, the text must still give the bytes.
    for (int op = 0; op < 256; ++op) {
        if (op == 0xCB || op == 0xED || op == 0xDD || op == 0xFD) continue;
        const int at = 0x200 + op * 3;
        dis.Buffer()[at] = op;
        dis.Buffer()[at + 1] = 0x10;
        dis.Buffer()[at + 2] = 0x02;
    }
    dis.SetSize(0x200 + 256 * 3);
    const std::string listing = dis.Disassemble(0, false, dir.path.string());
    std::filesystem::copy_file(listing, dir.path / "again.asm");

    MemorySettingsStore settings;
    AssemblerHost quiet;
    Assembler assembler(settings, quiet);
    int status = 0;
    EXPECT_EQ(assembler.AssembleSource(dir.path.string(), "again.asm", status), 0);
    const std::string obj = dir.Read("again.obj");
    ASSERT_EQ(obj.size(), static_cast<size_t>(dis.Size()));
    for (int a = 0; a < dis.Size(); ++a)
        ASSERT_EQ(static_cast<unsigned char>(obj[a]), dis.Buffer()[a]) << std::hex << a;
}

}  // namespace
}  // namespace mb::testing
