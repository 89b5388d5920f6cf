// The compile frame as a user meets it: the header and success texts, progress,
// warnings, the messages of errors with their lines, and what a failed compile
// leaves on disk.
#include <gtest/gtest.h>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

TEST(CompileFrame, HeaderAndSuccessTextToTheCharacter) {
    BasicRun b("frame_header");
    b.options.clockMHz = 3.579545;
    ASSERT_EQ(b.Compile(Lines({"Dim a As Byte", "End"})), 0);
    const std::string text = b.Asm();
    EXPECT_EQ(text.substr(0, text.find("\r\n;       ")),
              "; Compiled with: Marrowgate Bench v0.1\r\n"
              "; Microprocessor model: Z80\r\n"
              "; Clock frequency: 3.579545MHz\r\n"
              ";");
    const int lines = b.State().outputLineCount;
    EXPECT_EQ(lines, std::count(text.begin(), text.end(), '\n'));
    EXPECT_EQ(b.result, "The compilation process was successful.\r\nTotal " +
                            std::to_string(lines) +
                            " lines of assembler source generated.\r\nOutput saved as " +
                            b.dir.string() + "/prog.asm");
}

TEST(CompileFrame, ClockTextOfTheHeader) {
    const struct {
        double mhz;
        const char* text;
    } cases[] = {
        {4, "4.0MHz"}, {0.5, "0.5MHz"}, {3.5, "3.5MHz"}, {120, "120.0MHz"}, {0.01, "0.01MHz"}};
    for (const auto& c : cases) EXPECT_EQ(Compiler::headerClockText(c.mhz), c.text) << c.mhz;
}

TEST(CompileFrame, ProgressTextsComeInOrder) {
    BasicRun b("frame_progress");
    ASSERT_EQ(b.Compile(Lines({"Dim a As Byte"})), 0);
    const std::vector<std::string> expected = {
        "Compiling in progress...   5%",  "Compiling in progress...   10%",
        "Compiling in progress...   15%", "Compiling in progress...   45%",
        "Compiling in progress...   50%", "Compiling in progress...   55%",
        "Compiling in progress...   60%", "Compiling in progress...   65%",
        "Compiling in progress...   95%", "Compiling in progress...   100%"};
    EXPECT_EQ(b.sink.progress, expected);
}

TEST(CompileFrame, AFirstRunErrorStopsTheProgressAtItsStep) {
    BasicRun b("frame_progress_error");
    ASSERT_EQ(b.Compile(Lines({"Dim a As Byte", "Const 9x = 1"})), 2);
    const std::vector<std::string> expected = {
        "Compiling in progress...   5%", "Compiling in progress...   10%",
        "Compiling in progress...   15%", "Compiling in progress...   50%",
        "Compiling in progress...   100%"};
    EXPECT_EQ(b.sink.progress, expected);
    EXPECT_EQ(b.sink.errors.size(), 1u);
}

TEST(CompileFrame, EqualWarningsInARowAreKeptOnce) {
    MemorySettingsStore settings;
    CompileSink sink;
    Compiler c(settings, sink);
    for (const char* w : {"A", "A", "B", "A", "A"}) c.reportWarning(w);
    EXPECT_EQ(c.state().warningText, "A\r\nB\r\nA\r\n");
}

TEST(CompileFrame, WarningsOfTheFirstRunVanish) {
    BasicRun b("frame_warnings");
    // Both runs warn of the statement after End; the list holds it once.
    ASSERT_EQ(b.Compile(Lines({"Dim a As Byte", "ASM: LD (a),A", "End", "ASM: NOP"})), 0);
    EXPECT_EQ(b.State().warningText,
              "Line 4: Executable statement found outside any Sub, Proc, or Function: ASM: "
              "NOP\r\n");
}

TEST(CompileFrame, UnusedDeclarationsAreWarnedInTheSecondRunOnly) {
    BasicRun b("frame_unused");
    ASSERT_EQ(b.Compile(Lines({"Dim used As Byte", "Dim idle As Byte", "Dim x, y As Byte",
                               "ASM: LD (used),A"})),
              0);
    EXPECT_EQ(b.State().warningText, "Line 2: Unused declaration: Dim idle As Byte\r\n");
    EXPECT_NE(b.AddressOf("idle"), -1);

    BasicRun dropped("frame_unused_dropped");
    dropped.settings.SetSettingInt(kKeyDoNotCompileUnused, 1);
    dropped.options.doNotCompileUnused = true;
    ASSERT_EQ(dropped.Compile(Lines({"Dim used As Byte", "Dim idle As Byte", "ASM: LD (used),A"})),
              0);
    EXPECT_EQ(dropped.State().warningText,
              "Line 2: Unused declaration. Not compiled: Dim idle As Byte\r\n");
    EXPECT_EQ(dropped.AddressOf("idle"), -1);
}

TEST(CompileFrame, BothRunsGiveTheSameLabels) {
    BasicRun b("frame_labels");
    b.options.generateDebugFiles = true;
    ASSERT_EQ(b.Compile(Lines(
                  {"Dim a As Byte", "first: ASM: NOP", "second:", "ASM: LD (a),A", "third: End"})),
              0);
    auto labels = [](const std::string& log) {
        std::vector<std::string> found;
        const std::regex re("L[0-9]{4}:");
        for (auto it = std::sregex_iterator(log.begin(), log.end(), re);
             it != std::sregex_iterator(); ++it) {
            found.push_back(it->str());
        }
        return found;
    };
    const auto first = labels(b.Read("z80_debug_adr_log_pass1.txt"));
    const auto second = labels(b.Read("z80_debug_adr_log.txt"));
    EXPECT_EQ(first, (std::vector<std::string>{"L0001:", "L0002:", "L0003:"}));
    EXPECT_EQ(first, second);
}

// --- Errors ---------------------------------------------------------------

class CompileErrors : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(CompileErrors, GiveTheMessageAndTheLine) {
    BasicRun b(std::string("frame_error_") + GetParam().name);
    EXPECT_EQ(b.ErrorAt(Lines(GetParam().lines), GetParam().line), ErrorText(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    Frame, CompileErrors,
    ::testing::Values(
        // clang-format off
        ErrorCase{"odd_quotes", {"Dim a As Byte", "Const s = \"abc"}, 2,
                  "Bad expression: Improper use of double quotes."},
        ErrorCase{"label_missing", {": Dim a As Byte"}, 1, "Label name missing."},
        ErrorCase{"bad_label", {"9lab: End"}, 1, "Incorrect line label name."},
        ErrorCase{"duplicate_end", {"End", "End"}, 2,
                  "Duplicate End statement.\r\nIncorrect program structure."},
        ErrorCase{"syntax", {"Dim a As Byte", "Hello there"}, 2, "Syntax error."},
        ErrorCase{"include_quotes", {"Include sub.bas"}, 1, "Incorrect argument: 'sub.bas'."},
        ErrorCase{"include_extension", {"Include \"sub.txt\""}, 1,
                  "Include file must have .BAS extension."},
        ErrorCase{"include_asm_extension", {"IncludeASM \"sub.bas\""}, 1,
                  "Include file must have .ASM extension."},
        ErrorCase{"include_missing", {"Dim a As Byte", "Include \"nowhere.bas\""}, 2,
                  "Include file not found."}),
    // clang-format on
    CaseName);

// A lone byte stands for its own character, a UTF-8 pair for one.
TEST(CompileFrame, BytesAbove127InTheMessage) {
    BasicRun b("frame_error_bytes_above_127");
    EXPECT_EQ(b.ErrorAt(Lines({"Dim a As Byte", "x\xe9\xc3\xa9 = 1"}), 2),
              "Error in line 2:\r\nx\xc3\xa9\xc3\xa9 = 1\r\nVariable not declared: "
              "'x\xc3\xa9\xc3\xa9'.");
}

TEST(CompileFrame, TheEditorIsEmpty) {
    for (const char* text : {"", "   \r\n\t\r\n"}) {
        BasicRun b("frame_empty");
        EXPECT_GT(b.Compile(text), 0);
        EXPECT_EQ(b.sink.errors, std::vector<std::string>{"The editor is empty."});
        EXPECT_TRUE(b.sink.progress.empty());
    }
}

TEST(CompileFrame, AnErrorInAnIncludeNamesItsOwnLine) {
    BasicRun b("frame_include_error");
    b.Write("sub.bas", Lines({"Dim inner As Byte", "Const 1bad = 2"}));
    EXPECT_EQ(b.Compile(Lines({"Dim a As Byte", "Include \"sub.bas\"", "End"})), 3 + 3 + 2);
    ASSERT_EQ(b.sink.errors.size(), 1u);
    EXPECT_EQ(b.sink.errors[0],
              "Error in included file in line 2:\r\nConst 1bad = 2\r\nIncorrect constant name.");
    EXPECT_EQ(b.State().errorIncludeLine, 2);
    EXPECT_EQ(b.sink.includeLine, 2);
    EXPECT_EQ(b.sink.includeFile, (b.dir / "sub.bas").string());
}

TEST(CompileFrame, LineTooLongAtThreeHundredAndOneTokens) {
    for (int tokens : {300, 301}) {
        BasicRun b("frame_tokens");
        std::string line = "ASM: ;";
        for (int k = 2; k < tokens; ++k) line += " x";
        const int error = b.Compile(Lines({"Dim a As Byte", line}));
        if (tokens == 300) {
            EXPECT_EQ(error, 0) << (b.sink.errors.empty() ? "" : b.sink.errors[0]);
        } else {
            EXPECT_EQ(error, 2);
            ASSERT_EQ(b.sink.errors.size(), 1u);
            EXPECT_EQ(b.sink.errors[0].substr(b.sink.errors[0].rfind("\r\n") + 2),
                      "Line too long.");
        }
    }
}

TEST(CompileFrame, AFailedCompileLeavesTheOldAsmUntouched) {
    BasicRun b("frame_stale");
    ASSERT_EQ(b.Compile(Lines({"Dim a As Byte", "End"})), 0);
    const std::string good = b.Asm();
    EXPECT_EQ(b.Compile(Lines({"Dim a As Byte", "Dim 2b As Byte", "End"})), 2);
    EXPECT_EQ(b.Asm(), good);
}

TEST(CompileFrame, AnIncludeOfItselfIsReadOnceAndReported) {
    BasicRun b("frame_self_include");
    const std::string text = Lines({"Dim a As Byte", "Include \"prog.bas\"", "End"});
    EXPECT_EQ(b.Compile(text), 3 + 3 + 1);
    ASSERT_EQ(b.sink.errors.size(), 1u);
    EXPECT_EQ(b.sink.errors[0],
              "Error in included file in line 1:\r\nDim a As Byte\r\nUser element name already "
              "used within the same scope.");
}

// --- Diagnostic files -----------------------------------------------------

TEST(CompileFrame, DiagnosticFilesHaveTheirColumns) {
    BasicRun b("frame_debug_files");
    b.options.generateDebugFiles = true;
    ASSERT_EQ(b.Compile(Lines({"Dim counter As Byte", "top: ASM: LD (counter),A", "End"})), 0);
    const std::string adr = b.Read("z80_debug_adr_log.txt");
    EXPECT_EQ(adr.substr(0, adr.find("\r\n")),
              "#      |xlistingline                                       |");
    EXPECT_EQ(adr.substr(adr.find("\r\n") + 2, 62), std::string(60, '-') + "\r\n");
    EXPECT_NE(adr.find("\r\n10     |        .ORG 0000H"), std::string::npos) << adr;

    const std::string lin = b.Read("z80_debug_lin_log.txt");
    const std::string header = lin.substr(0, lin.find("\r\n"));
    EXPECT_EQ(header, "xlinelabel2      |xlinelabel1 |xlinelabelscope  |xlinija" +
                          std::string(43, ' ') + " |xlinijafull" + std::string(39, ' ') + " |");
    EXPECT_NE(lin.find("top              |L0001       |global           |ASM: LD (counter),A"),
              std::string::npos)
        << lin;
    EXPECT_NE(lin.find(std::string(153, '-')), std::string::npos);

    const std::string decl = b.Read("z80_debug_declaration_optim_log.txt");
    EXPECT_NE(decl.find("declpreparebrj |declpreparescp |declprepareime |declpreparetip "
                        "|declprepareuse |xpromused |"),
              std::string::npos);
    EXPECT_NE(decl.find("1              |global         |counter        |Byte           |1     "
                        "         |"),
              std::string::npos)
        << decl;
    EXPECT_TRUE(b.Exists("z80_debug_adr_log_pass1.txt"));
    const std::string keywords = b.Read("_comp_log.txt");
    EXPECT_EQ(keywords.substr(0, keywords.find("\r\n")), "keyword (main): Dim");
}

TEST(CompileFrame, IncludesOfBothKindsAreAddedBehindTheProgram) {
    auto run = [](BasicRun& b, const std::string& include) {
        b.Write("values.bas", Lines({"Const seven = 7", "Dim result As Byte"}));
        b.Write("lib.asm", "store:\tLD (result),A\r\n\tRET\r\n");
        return b.CompileAndRun(Lines({"Include " + include, "IncludeASM \"lib.asm\"",
                                      "ASM: LD A,seven", "ASM: CALL store", "End"}));
    };
    // The same file twice declares its names twice.
    BasicRun b("frame_includes");
    EXPECT_FALSE(run(b, "\"values.bas\", \"values.bas\""));
    ASSERT_EQ(b.sink.errors.size(), 1u);
    EXPECT_NE(b.sink.errors[0].find("User element name already used within the same scope."),
              std::string::npos);

    BasicRun once("frame_includes_once");
    ASSERT_TRUE(run(once, "\"values.bas\"")) << once.Failure;
    EXPECT_EQ(once.run.Byte(once.AddressOf("result")), 7);
    const std::string text = once.Asm();
    EXPECT_NE(text.find("; 6: '=================================================="),
              std::string::npos);
    EXPECT_NE(text.find("'INCLUDED FROM FILE: " + (once.dir / "lib.asm").string()),
              std::string::npos);
}

}  // namespace
}  // namespace mb::testing
