// The corpus under corpus/ is written in the dialect that this assembler and
// pasmo share; both must produce the same bytes. Skipped where pasmo is absent.
#include <cstdlib>

#include "test_support.h"

namespace mb::testing {
namespace {

using AgainstPasmo = AssemblerFixture;

TEST_F(AgainstPasmo, CorpusAssemblesToTheSameBytes) {
    if (std::system("command -v pasmo >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "pasmo is not installed";
    struct Case {
        const char* file;
        int origin;
        bool unofficial;
    } cases[] = {{"official.asm", 0x8000, false}, {"unofficial.asm", 0, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string source = std::string(MB_TEST_DATA) + "/corpus/" + c.file;
        std::filesystem::copy_file(source, dir / c.file);
        const std::string reference = (dir / "reference.bin").string();
        ASSERT_EQ(
            std::system(("pasmo " + (dir / c.file).string() + " " + reference + " >/dev/null 2>&1")
                            .c_str()),
            0);

        settings.SetSettingInt("Starting Address For OBJ Files Creation", c.origin);
        options.UnofficialInstructions = c.unofficial;
        EXPECT_EQ(Assemble(c.file), 0);
        const std::string obj =
            std::string(c.file).substr(0, std::string(c.file).size() - 4) + ".obj";
        const std::string ours = Read(obj), theirs = Read("reference.bin");
        EXPECT_GT(ours.size(), 100u);
        ASSERT_EQ(ours.size(), theirs.size());
        for (size_t i = 0; i < ours.size(); ++i)
            ASSERT_EQ(ours[i], theirs[i])
                << "first difference at address " << std::hex << c.origin + i;
    }
}

}  // namespace
}  // namespace mb::testing
