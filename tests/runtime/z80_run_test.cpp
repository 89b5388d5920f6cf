// The shared runner tells a program that never halts from one that does (its
// output and memory are read back by every compiler and runtime test).
#include "support/z80_run.h"

#include <gtest/gtest.h>

namespace mb::testing {
namespace {

TEST(Z80Run, ReportsALoopThatNeverHalts) {
    const auto dir = std::filesystem::temp_directory_path() / "mb_z80_run_loop_test";
    std::filesystem::create_directories(dir);
    Z80Run run;
    ASSERT_EQ(run.AssembleText(dir.string(), "loop.asm",
                               "\t.ORG 0\r\nL1:\tINC A\r\n\tJR L1\r\n\t.END\r\n"),
              0);
    ASSERT_TRUE(run.Load((dir / "loop.obj").string()));
    EXPECT_FALSE(run.Run(1, 1000));
    std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace mb::testing
