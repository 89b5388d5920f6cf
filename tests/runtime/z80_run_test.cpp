// The shared runner: a source assembled by our assembler, run to HALT, its port
// output and memory read back.
#include "support/z80_run.h"

#include <gtest/gtest.h>

namespace mb::testing {
namespace {

TEST(Z80Run, AssemblesRunsToHaltAndKeepsPortOutputAndMemory) {
    const auto dir = std::filesystem::temp_directory_path() / "mb_z80_run_test";
    std::filesystem::create_directories(dir);
    Z80Run run;
    ASSERT_EQ(run.AssembleText(dir.string(), "prog.asm",
                               "\t.ORG 0\r\n"
                               "\tLD A,'H'\r\n\tOUT (1),A\r\n\tLD A,'i'\r\n\tOUT (1),A\r\n"
                               "\tLD A,2\r\n\tOUT (2),A\r\n"
                               "\tLD HL,1234H\r\n\tLD (8000H),HL\r\n\tHALT\r\n\t.END\r\n"),
              0)
        << run.AssemblerErrors;
    ASSERT_TRUE(run.Load((dir / "prog.obj").string())) << run.LoadMessage;
    EXPECT_TRUE(run.Run(1));
    EXPECT_EQ(run.Output, "Hi");
    EXPECT_EQ(run.Word(0x8000), 0x1234);
    std::filesystem::remove_all(dir);
}

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
