// mbbasic end to end: programs written to a temporary folder, compiled and
// assembled by the built tool, checked on its output files, messages and exit
// status.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/tool_run.h"

namespace mb::testing {
namespace {

const std::string kMbbasic = MB_BINARY_DIR "/tools/mbbasic/mbbasic";
const std::string kMbsim = MB_BINARY_DIR "/tools/mbsim/mbsim";

using MbbasicTest = ToolTest;

TEST_F(MbbasicTest, CompilesAssemblesAndTheProgramRuns) {
    WriteText(
        "prog.bas",
        "Dim value As Word\r\nConst start = 1234H\r\nASM: LD HL,start\r\nASM: LD (value),HL\r\n"
        "End\r\n");
    const ToolResult r = Run(kMbbasic, "prog.bas");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("The compilation process was successful."), std::string::npos);
    EXPECT_NE(r.out.find("Generated OBJ file: "), std::string::npos);
    EXPECT_TRUE(Exists("prog.asm"));
    EXPECT_TRUE(Exists("prog.lst"));
    EXPECT_TRUE(Exists("prog.obj"));
    EXPECT_FALSE(Exists("prog.hex"));
    const ToolResult sim = Run(kMbsim, "--dump FEFE-FEFF prog.obj");
    EXPECT_EQ(sim.status, 0) << sim.err;
    EXPECT_NE(sim.out.find("FEFE: 34 12"), std::string::npos) << sim.out;
}

TEST_F(MbbasicTest, CompileOnlyAndHex) {
    WriteText("prog.bas", "Dim a As Byte\r\nASM: LD (a),A\r\n");
    EXPECT_EQ(Run(kMbbasic, "--compile-only prog.bas").status, 0);
    EXPECT_TRUE(Exists("prog.asm"));
    EXPECT_FALSE(Exists("prog.obj"));
    EXPECT_EQ(Run(kMbbasic, "--hex prog.bas").status, 0);
    EXPECT_TRUE(Exists("prog.hex"));
}

TEST_F(MbbasicTest, ErrorsNameTheFileAndLine) {
    WriteText("sub.bas", "Dim inner As Byte\r\nDim 9x As Byte\r\n");
    WriteText("prog.bas", "Dim a As Byte\r\nEnd\r\nEnd\r\n");
    ToolResult r = Run(kMbbasic, "prog.bas");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err,
              "prog.bas:3: error: Duplicate End statement.\n    Incorrect program structure.\n");
    EXPECT_FALSE(Exists("prog.asm"));

    WriteText("prog.bas", "Dim a As Byte\r\nInclude \"sub.bas\"\r\nEnd\r\n");
    r = Run(kMbbasic, "prog.bas");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "sub.bas:2: error: Incorrect variable name.\n");
}

TEST_F(MbbasicTest, WarningsUnlessSwitchedOff) {
    WriteText("prog.bas", "Dim idle As Byte\r\nDim used As Byte\r\nASM: LD (used),A\r\n");
    ToolResult r = Run(kMbbasic, "--compile-only prog.bas");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, "prog.bas:1: warning: Unused declaration: Dim idle As Byte\n");
    r = Run(kMbbasic, "--compile-only --no-warnings prog.bas");
    EXPECT_EQ(r.err, "");
}

TEST_F(MbbasicTest, AnAssemblyErrorOfTheGeneratedTextIsReported) {
    WriteText("prog.bas", "ASM: LD Q,1\r\n");
    const ToolResult r = Run(kMbbasic, "prog.bas");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("prog.asm:"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("Generated assembler source contains 1 errors."), std::string::npos);
    EXPECT_FALSE(Exists("prog.obj"));
}

TEST_F(MbbasicTest, BadUsageAndUnreadableFiles) {
    EXPECT_EQ(Run(kMbbasic, "missing.bas").status, 2);
    EXPECT_NE(Read("stderr.txt").find("cannot read missing.bas"), std::string::npos);
    EXPECT_EQ(Run(kMbbasic, "--bogus x.bas").status, 2);
    EXPECT_EQ(Run(kMbbasic, "--clock nan x.bas").status, 2);
    EXPECT_EQ(Run(kMbbasic, "").status, 2);
    const ToolResult help = Run(kMbbasic, "--help");
    EXPECT_EQ(help.status, 0);
    for (const char* flag : {"--initialize-variables", "--no-optimize-variables", "--dynamic-temps",
                             "--debug-files", "--no-line-crypting", "--compile-only"}) {
        EXPECT_NE(help.out.find(flag), std::string::npos) << flag;
    }
}

TEST_F(MbbasicTest, ReportsPrintToTheCharacter) {
    WriteText("prog.bas", "Dim a As Byte\r\nDim n As Integer\r\na = 1\r\nn = a\r\n");
    const ToolResult r = Run(kMbbasic,
                             "--compile-only --no-optimize-variables --report-variables "
                             "--report-usage prog.bas");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("Name      Type      Address   Scope     \n"
                         "---------------------------------------------\n"
                         "a         UShort    FEFFH     global    \n"
                         "n         Integer   FEFDH     global    \n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("Total: "), std::string::npos);
    EXPECT_NE(r.out.find("Instruction    Number    \n"), std::string::npos);
}

}  // namespace
}  // namespace mb::testing
