#include "assembler/tasm.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "test_support.h"

namespace mb {
namespace {

namespace fs = std::filesystem;
using testing::ReadText;
using testing::WriteText;

// The start of every fake tool: it notes its arguments and working folder
// beside itself and takes the source path from its last argument.
const char* const kScriptHead =
    "#!/bin/sh\n"
    "here=$(dirname \"$0\")\n"
    "printf '%s\\n' \"$@\" > \"$here/args.txt\"\n"
    "pwd > \"$here/cwd.txt\"\n"
    "for src do :; done\n"
    "base=${src%.*}\n";
const char* const kWritesListing =
    "printf 'X = 7\\r\\n0000 00 NOP\\r\\ntasm: Number of errors = 0\\r\\n' > \"$base.lst\"\n";
const char* const kWritesObject = "printf 'AB' > \"$base.obj\"\n";

class RecordingHooks : public TasmHooks {
  public:
    void ShowStatus(const std::string& first, const std::string& second) override {
        status = first + " " + second;
    }
    void HideStatus() override { hidden = true; }
    void WaitStep() override { ++steps; }
    int StartProcess(const std::string& line, const std::string& folder) override {
        commandLine = line;
        startFolder = folder;
        ++starts;
        return TasmHooks::StartProcess(line, folder);
    }

    std::string status, commandLine, startFolder;
    bool hidden = false;
    int steps = 0, starts = 0;
};

class Tasm : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/mbtasm-test-XXXXXX";
        dir = fs::canonical(mkdtemp(pattern));
        fs::create_directories(dir / "my tools");
        fs::create_directories(dir / "src");
        tool = (dir / "my tools" / "fake tasm.sh").string();
        request.ToolPath = tool;
        request.SourcePath = (dir / "src" / "prog.asm").string();
        request.SourceText = "\tNOP\r\n";
        WriteText(request.SourcePath, request.SourceText);
    }
    void TearDown() override { fs::remove_all(dir); }

    void Tool(const std::string& body) {
        WriteText(tool, kScriptHead + body);
        chmod(tool.c_str(), 0755);
    }
    fs::path Output(const char* extension) const {
        return fs::path(request.SourcePath).replace_extension(extension);
    }

    fs::path dir;
    std::string tool;
    TasmRequest request;
    RecordingHooks hooks;
};

TEST_F(Tasm, RunsTheToolOnTheSourceInItsFolder) {
    Tool(std::string(kWritesListing) + kWritesObject);
    const TasmOutcome out = AssembleWithTasm(request, hooks);
    EXPECT_EQ(out.Message, "");
    EXPECT_TRUE(out.Ran);
    EXPECT_TRUE(out.Succeeded);
    EXPECT_EQ(out.ErrorCount, 0);
    EXPECT_EQ(out.ListingPath, Output(".lst").string());
    EXPECT_EQ(out.ObjectPath, Output(".obj").string());
    EXPECT_NE(out.ListingText.find("0000 00 NOP"), std::string::npos);
    EXPECT_EQ(ReadText(Output(".obj")), "AB");

    EXPECT_EQ(hooks.commandLine, "\"" + tool + "\" -80 -b \"" + request.SourcePath + "\"");
    EXPECT_EQ(ReadText(dir / "my tools" / "args.txt"), "-80\n-b\n" + request.SourcePath + "\n");
    EXPECT_EQ(ReadText(dir / "my tools" / "cwd.txt"), (dir / "src").string() + "\n");
    EXPECT_EQ(hooks.status, "TASM is running...");
    EXPECT_TRUE(hooks.hidden);
}

TEST_F(Tasm, OptionsAreSplitAndPathsAreTakenLiterally) {
    // A folder name that the shell would expand if it were not escaped.
    fs::create_directories(dir / "src $HOME `x`");
    request.SourcePath = (dir / "src $HOME `x`" / "prog.asm").string();
    request.Options = "-80  -b -fFF";
    Tool(std::string(kWritesListing) + kWritesObject);
    const TasmOutcome out = AssembleWithTasm(request, hooks);
    EXPECT_TRUE(out.Succeeded) << out.Message;
    EXPECT_EQ(ReadText(dir / "my tools" / "args.txt"),
              "-80\n-b\n-fFF\n" + request.SourcePath + "\n");
    EXPECT_TRUE(fs::exists(Output(".obj")));
}

TEST_F(Tasm, ErrorsInTheListingFailTheRunAndRemoveTheOutputs) {
    Tool("printf 'X = 7\\r\\nline\\r\\ntasm: Number of errors = 2\\r\\n' > \"$base.lst\"\n" +
         std::string(kWritesObject));
    const TasmOutcome out = AssembleWithTasm(request, hooks);
    EXPECT_TRUE(out.Ran);
    EXPECT_FALSE(out.Succeeded);
    EXPECT_EQ(out.ErrorCount, 2);
    EXPECT_EQ(out.Message,
              "Assembly was not successful.\nYour assembler source contains 2 errors.\n\n");
    EXPECT_NE(out.ListingText.find("errors = 2"), std::string::npos);
    EXPECT_FALSE(fs::exists(Output(".lst")));
    EXPECT_FALSE(fs::exists(Output(".obj")));
}

TEST_F(Tasm, AMissingOutputIsReportedAndNoStaleFileSurvives) {
    WriteText(Output(".lst"), "old listing");
    WriteText(Output(".obj"), "old object");
    Tool(kWritesListing);
    const TasmOutcome out = AssembleWithTasm(request, hooks);
    EXPECT_TRUE(out.Ran);
    EXPECT_FALSE(out.Succeeded);
    EXPECT_EQ(out.Message, "TASM failed to generate the expected files:\n" +
                               Output(".obj").string() + " and " + Output(".lst").string() +
                               "\nAssembly was not successful.");
    EXPECT_EQ(out.ListingText, "");
    EXPECT_FALSE(fs::exists(Output(".lst")));
    EXPECT_FALSE(fs::exists(Output(".obj")));
}

TEST_F(Tasm, ATimeOutStopsTheTool) {
    Tool("sleep 1\ntouch \"$here/late.txt\"\n" + std::string(kWritesListing) + kWritesObject);
    request.TimeoutSteps = 3;
    const TasmOutcome out = AssembleWithTasm(request, hooks);
    EXPECT_EQ(out.Message, "Error: Time-out while waiting TASM to complete the process.");
    EXPECT_TRUE(out.Ran);
    EXPECT_FALSE(out.Succeeded);
    EXPECT_EQ(hooks.steps, 3);
    EXPECT_TRUE(hooks.hidden);
    // The tool and what it started are gone, not waited for: nothing appears later.
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_FALSE(fs::exists(dir / "my tools" / "late.txt"));
    EXPECT_FALSE(fs::exists(Output(".lst")));
}

TEST_F(Tasm, RefusalsLeaveTheToolUnstarted) {
    Tool(std::string(kWritesListing) + kWritesObject);
    struct Case {
        const char* what;
        std::string sourcePath, sourceText, toolPath, want;
    } cases[] = {
        {"protected line", request.SourcePath, "\tNOP\r\n;protected:xyz\r\n", tool,
         "A part of the assembler source is crypted by the integrated basic compiler.\n"
         "This assembler source can be assembled by the integrated assembler only."},
        {"dot in the name", (dir / "src" / "my.prog.asm").string(), "\tNOP\r\n", tool,
         "Your file name contains '.' symbol.\nDue to TASM limitations this needs to be "
         "changed."},
        {"missing tool", request.SourcePath, "\tNOP\r\n", (dir / "none.sh").string(),
         "The file does not exist.\n" + (dir / "none.sh").string()},
    };
    WriteText(Output(".lst"), "kept");
    for (const Case& c : cases) {
        TasmRequest r = request;
        r.SourcePath = c.sourcePath;
        r.SourceText = c.sourceText;
        r.ToolPath = c.toolPath;
        const TasmOutcome out = AssembleWithTasm(r, hooks);
        EXPECT_EQ(out.Message, c.want) << c.what;
        EXPECT_FALSE(out.Ran) << c.what;
    }
    EXPECT_EQ(hooks.starts, 0);
    EXPECT_TRUE(fs::exists(Output(".lst")));
}

TEST(TasmLimits, APathAtTheLimitIsAccepted) {
    // A path of the limit's length reaches the tool check, one byte more does not.
    RecordingHooks hooks;
    TasmRequest r;
    r.ToolPath = "/nonexistent/tool";
    r.SourcePath = "/" + std::string(kTasmPathLimit - 5, 'a') + ".asm";
    EXPECT_EQ(AssembleWithTasm(r, hooks).Message.rfind("The file does not exist.", 0), 0u);
    r.SourcePath = "/" + std::string(kTasmPathLimit - 4, 'a') + ".asm";
    EXPECT_EQ(AssembleWithTasm(r, hooks).Message,
              "The assembler source file needs to be saved to a shorter path.\nThe full path of "
              "the file to be assembled:\n" +
                  r.SourcePath + "\nThat is TASM limitation.");
    EXPECT_EQ(hooks.starts, 0);
}

}  // namespace
}  // namespace mb
