// Every program of the language manual (docs/basic.md) compiles and assembles
// with no error, so that the manual can not drift from the compiler.
#include <gtest/gtest.h>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

std::vector<std::string> BasicBlocks(const std::string& text) {
    std::vector<std::string> blocks;
    const std::string open = "```basic\n";
    for (std::size_t at = text.find(open); at != std::string::npos; at = text.find(open, at)) {
        at += open.size();
        const std::size_t end = text.find("```", at);
        if (end == std::string::npos) break;
        blocks.push_back(text.substr(at, end - at));
        at = end + 3;
    }
    return blocks;
}

TEST(LanguageManual, EveryExampleCompilesAndAssembles) {
    const std::string manual =
        ReadFileText(std::filesystem::path(MB_TEST_DATA) / "../../docs/basic.md");
    const std::vector<std::string> blocks = BasicBlocks(manual);
    ASSERT_GE(blocks.size(), 9u);
    for (std::size_t k = 0; k < blocks.size(); ++k) {
        BasicRun b("manual_example");
        b.Write("values.bas", "Const answer = 42\r\n");
        ASSERT_EQ(b.Compile(blocks[k]), 0) << "example " << k + 1 << ":\n"
                                           << blocks[k] << "\n"
                                           << b.sink.errors.back();
        EXPECT_EQ(b.run.Assemble(b.dir.string(), "prog.asm"), 0)
            << "example " << k + 1 << ": " << b.run.AssemblerErrors;
    }
}

}  // namespace
}  // namespace mb::testing
