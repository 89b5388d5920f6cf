// The command-line assembler end to end: outputs, error lines, exit status.
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>

#include "test_support.h"

namespace mb::testing {
namespace {

struct ToolRun {
    int status;
    std::string err;
};

class Mbasm : public AssemblerFixture {
  protected:
    ToolRun Start(const std::string& args) {
        const std::string errFile = folder + "stderr.txt";
        const std::string cmd =
            std::string(MB_BINARY_DIR) + "/tools/mbasm/mbasm " + args + " 2>" + errFile;
        const int raw = std::system(cmd.c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, Read("stderr.txt")};
    }
};

TEST_F(Mbasm, WritesOutputsBesideTheSource) {
    Write("prog.asm", " ORG 10h\n LD A,1\n HALT\n");
    const ToolRun r = Start("--obj-start 16 " + folder + "prog.asm");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(Read("prog.obj"), std::string("\x3E\x01\x76", 3));
    EXPECT_EQ(Read("prog.hex"), ":030010003E017638\r\n:00000001FF\r\n");
    EXPECT_TRUE(Exists("prog.lst"));
}

TEST_F(Mbasm, ReportsErrorsAndLeavesNoOutput) {
    Write("lib.inc", " LD A,300\n");
    Write("prog.asm", " NOP\n FOO\n INCLUDE \"lib.inc\"\n NOP\n");
    const ToolRun r = Start("--verbose " + folder + "prog.asm");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(folder + "prog.asm:2: error: Unrecognized instruction/syntax. 'FOO'\n"),
              std::string::npos)
        << r.err;
    EXPECT_NE(
        r.err.find(folder + "lib.inc:1: error: Invalid argument of the instruction. '12Ch (300)'"),
        std::string::npos)
        << r.err;
    EXPECT_NE(r.err.find("Here is the list of assembler errors:"), std::string::npos);
    for (const char* out : {"prog.lst", "prog.obj", "prog.hex"}) EXPECT_FALSE(Exists(out)) << out;
}

TEST_F(Mbasm, OptionsReachTheAssembler) {
    Write("prog.asm", " SLL A\n LD A,1+2*3\n");
    EXPECT_EQ(Start(folder + "prog.asm").status, 1);
    EXPECT_EQ(Start("--unofficial --no-precedence --no-hex " + folder + "prog.asm").status, 0);
    EXPECT_EQ(Read("prog.obj"), std::string("\xCB\x37\x3E\x09", 4));
    EXPECT_FALSE(Exists("prog.hex"));
}

TEST_F(Mbasm, BadUsage) {
    EXPECT_EQ(Start("").status, 2);
    const ToolRun missing = Start(folder + "nothere.asm");
    EXPECT_EQ(missing.status, 2);
    EXPECT_NE(missing.err.find("cannot read"), std::string::npos);
    EXPECT_EQ(Start("--fill").status, 2);
    EXPECT_EQ(Start("--bogus x.asm").status, 2);
}

}  // namespace
}  // namespace mb::testing
