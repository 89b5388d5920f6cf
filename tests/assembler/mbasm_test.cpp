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
    // Runs mbasm with args, from the folder cwd when one is given.
    ToolRun Start(const std::string& args, const std::string& cwd = "") {
        const std::string errFile = folder + "stderr.txt";
        const std::string cmd = (cwd.empty() ? "" : "cd '" + cwd + "' && ") +
                                std::string(MB_BINARY_DIR) + "/tools/mbasm/mbasm " + args + " 2>" +
                                errFile;
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
}

TEST_F(Mbasm, OptionsReachTheAssembler) {
    Write("prog.asm", " SLL A\n LD A,1+2*3\n");
    EXPECT_EQ(Start(folder + "prog.asm").status, 1);
    ASSERT_EQ(Start("--unofficial --no-precedence " + folder + "prog.asm").status, 0);
    ASSERT_TRUE(Exists("prog.hex"));
    // A run without HEX deletes the HEX of the earlier run.
    EXPECT_EQ(Start("--unofficial --no-precedence --no-hex " + folder + "prog.asm").status, 0);
    EXPECT_EQ(Read("prog.obj"), std::string("\xCB\x37\x3E\x09", 4));
    EXPECT_FALSE(Exists("prog.hex"));
}

// Every output a run can write, with an OBJ copy named "bin".
const char* const kOutputs[] = {"prog.lst", "prog.obj", "prog.hex", "prog.bin"};

TEST_F(Mbasm, FailedRunLeavesNoOutputOfAnEarlierRun) {
    struct Case {
        const char* what;
        const char* source;  // nullptr: the source is gone
        const char* options;
        int status;
    } cases[] = {
        {"missing source", nullptr, "--obj-copy bin", 2},
        {"errors", " NOP\n FOO\n", "--obj-copy bin", 1},
        {"errors, no HEX", " FOO\n", "--no-hex --obj-copy bin", 1},
        {"size error, no object written", " ORG 0FFFFh\n NOP\n NOP\n", "--obj-copy bin", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Write("prog.asm", " LD A,1\n");
        ASSERT_EQ(Start("--obj-copy bin " + folder + "prog.asm").status, 0);
        for (const char* out : kOutputs) ASSERT_TRUE(Exists(out)) << out;

        if (c.source)
            Write("prog.asm", c.source);
        else
            std::filesystem::remove(dir / "prog.asm");
        EXPECT_EQ(Start(std::string(c.options) + " " + folder + "prog.asm").status, c.status);
        for (const char* out : kOutputs) EXPECT_FALSE(Exists(out)) << out;
    }
}

TEST_F(Mbasm, IncludesAreFoundFromTheIncludingFile) {
    // proj/p.asm includes sub/x.inc, which includes deeper/y.inc from its own
    // folder and the bare name z.inc from the project folder.
    std::filesystem::create_directories(dir / "proj" / "sub" / "deeper");
    Write("proj/p.asm", " include \"sub/x.inc\"\n include \"sub\\w.inc\"\n HALT\n");
    Write("proj/sub/x.inc", " LD A,1\n include \"deeper/y.inc\"\n include \"z.inc\"\n NOP\n");
    Write("proj/sub/w.inc", " LD A,4\n");
    Write("proj/sub/deeper/y.inc", " LD A,2\n");
    Write("proj/z.inc", " LD A,3\n");
    const std::string want("\x3E\x01\x3E\x02\x3E\x03\x00\x3E\x04\x76", 10);

    // From the folder above the project, from elsewhere and from the project folder.
    for (const auto& [path, cwd] : {std::pair<std::string, std::string>{"proj/p.asm", dir.string()},
                                    {folder + "proj/p.asm", "/"},
                                    {"p.asm", (dir / "proj").string()}}) {
        std::filesystem::remove(dir / "proj/p.obj");
        const ToolRun r = Start(path, cwd);
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(Read("proj/p.obj"), want) << cwd;
    }
}

TEST_F(Mbasm, OptionValuesAreRangeChecked) {
    Write("prog.asm", " ORG 2\n NOP\n");
    const std::string copyRule =
        "mbasm: --obj-copy needs an extension of up to 8 letters, digits or _, other than asm, "
        "lst, obj, hex, inc and bas";
    // Options and the message, none when they are accepted
    const std::pair<const char*, std::string> cases[] = {
        {"--fill 300", "mbasm: --fill needs a number from 0 to 255, not '300'\n"},
        {"--fill 256", "mbasm: --fill needs a number from 0 to 255, not '256'\n"},
        {"--fill -1", "mbasm: --fill needs a number from 0 to 255, not '-1'\n"},
        {"--fill x", "mbasm: --fill needs a number from 0 to 255, not 'x'\n"},
        {"--obj-start 65536", "mbasm: --obj-start needs a number from 0 to 65535, not '65536'\n"},
        {"--obj-start 4294967295",
         "mbasm: --obj-start needs a number from 0 to 65535, not '4294967295'\n"},
        {"--include-limit 101", "mbasm: --include-limit needs a number from 0 to 100, not '101'\n"},
        {"--obj-copy asm", copyRule + ", not 'asm'\n"},
        {"--obj-copy OBJ", copyRule + ", not 'OBJ'\n"},
        {"--obj-copy ../b", copyRule + ", not '../b'\n"},
        {"--fill 255", ""},
        {"--fill 0FFh", ""},
        {"--obj-start 65535", ""},
        {"--include-limit 0", ""},
        {"--include-limit 100", ""},
        {"--obj-copy b_2", ""},
    };
    for (const auto& [options, message] : cases) {
        SCOPED_TRACE(options);
        const ToolRun r = Start(std::string(options) + " " + folder + "prog.asm");
        EXPECT_EQ(r.status, message.empty() ? 0 : 2);
        EXPECT_EQ(r.err, message);
    }
    // The values accepted reach the object file.
    EXPECT_EQ(Start("--fill 0FFh " + folder + "prog.asm").status, 0);
    EXPECT_EQ(Read("prog.obj"), std::string("\xFF\xFF\x00", 3));
    EXPECT_EQ(Start("--obj-start 65535 " + folder + "prog.asm").status, 0);
    EXPECT_EQ(Read("prog.obj"), "");
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
