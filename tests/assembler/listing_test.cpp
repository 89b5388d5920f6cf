#include <climits>
#include <tuple>

#include "test_support.h"

namespace mb::testing {
namespace {

using Listing = AssemblerFixture;

const std::string kHeader =
    "---------------------------------------------\r\n"
    "CORVALENT Z80 ASSEMBLER LISTING\r\n"
    "Line   Addr Opcode      Label   Instruction\r\n"
    "---------------------------------------------\r\n";

TEST_F(Listing, EmptySourceGivesHeaderAndEmptyObject) {
    Write("prog.asm", "");
    EXPECT_EQ(Assemble(), 0);
    EXPECT_EQ(Read("prog.lst"), kHeader + "Number of errors = 0\r\n");
    EXPECT_TRUE(Exists("prog.obj"));
    EXPECT_EQ(Read("prog.obj"), "");
    EXPECT_EQ(Read("prog.hex"), ":00000001FF\r\n");
}

TEST_F(Listing, ColumnsContinuationsAndErrors) {
    Write("prog.asm",
          "; text\n"
          "\tDB 1,2,3,4\n"
          "\tDB 1,2,3,4,5\n"
          "L1:\tLD A,300 ; too big\n"
          "\tDB 1,2,3,4,5,6,7,8,9,10\n");
    EXPECT_EQ(Assemble(), 1);
    EXPECT_EQ(Read("prog.lst"), kHeader +
                                    "0001   0000             ; text\r\n"
                                    "0002   0000 01 02 03 04 \tDB 1,2,3,4\r\n"
                                    "0003   0004 01 02 03 04 \tDB 1,2,3,4,5\r\n"
                                    "0003   0008 05          \r\n"
                                    "0004   0009             L1:\tLD A,300 ; too big\r\n"
                                    "Line 0004: Error: Invalid argument of the instruction. '12Ch "
                                    "(300)' (-80-FFh (-128-255) value expected)\r\n"
                                    "0005   000B 01 02 03 04 \tDB 1,2,3,4,5,6,7,8,9,10\r\n"
                                    "0005   000F 05 06 07 08 \r\n"
                                    "0005   0013 09 0A       \r\n"
                                    "Number of errors = 1\r\n");
    const auto& errors = assembler->Session().ErrorList;
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].ListingLine, 10);
    EXPECT_EQ(
        errors[0].Text,
        "Line 0004:     L1: LD A,300          Error: Invalid argument of the instruction. '12Ch "
        "(300)' (-80-FFh (-128-255) value expected)");
    // The failed line keeps its space; the image keeps the fill value there.
    EXPECT_EQ(Read("prog.obj").substr(9, 2), std::string(2, '\0'));
}

TEST_F(Listing, LineTenThousandShowsItsLastFourDigits) {
    std::string source;
    for (int i = 1; i < 10000; ++i) source += ";\n";
    source += " NOP\n";
    Write("prog.asm", source);
    EXPECT_EQ(Assemble(), 0);
    EXPECT_NE(Read("prog.lst").find("\r\n0000   0000 00           NOP\r\n"), std::string::npos);
}

TEST_F(Listing, IncludedLinesStandWhereTheIncludeStands) {
    Write("lib.inc", " NOP\n INCLUDE \"deep.inc\"\n ;\n");
    Write("deep.inc", " HALT\n");
    Write("prog.asm", " INCLUDE \"lib.inc\"\n LD A,1\n");
    EXPECT_EQ(Assemble(), 0);
    EXPECT_EQ(Read("prog.lst"), kHeader +
                                    "0001   0000              INCLUDE \"lib.inc\"\r\n"
                                    "0001+  0000 00           NOP\r\n"
                                    "0002+  0001              INCLUDE \"deep.inc\"\r\n"
                                    "0001++ 0001 76           HALT\r\n"
                                    "0003+  0002              ;\r\n"
                                    "0002   0002 3E 01        LD A,1\r\n"
                                    "Number of errors = 0\r\n");
    EXPECT_EQ(Read("prog.obj"), std::string("\x00\x76\x3E\x01", 4));
}

TEST_F(Listing, IncludedBytesOnTheLastLineAndBeyondTheNestingLimit) {
    Write("deep.inc", " HALT\n");
    struct Case {
        const char *what, *lib, *prog;
        int limit;
        std::string obj;
    } cases[] = {
        {"an include on the last line of an included file goes on behind its parent",
         " NOP\n INCLUDE \"deep.inc\"\n", " INCLUDE \"lib.inc\"\n LD A,1\n DB 2\n", 10,
         std::string("\x00\x76\x3E\x01\x02", 5)},
        {"the nesting limit stops deeper levels", " NOP\n INCLUDE \"deep.inc\"\n",
         " INCLUDE \"lib.inc\"\n LD A,1\n", 1, std::string("\x00\x3E\x01", 3)},
        {"an include on the last line adds nothing", " NOP\n", " HALT\n INCLUDE \"lib.inc\"\n", 10,
         "\x76"},
    };
    for (const auto& c : cases) {
        settings.SetSettingInt("Assembler Include Nesting Level Limit", c.limit);
        Write("lib.inc", c.lib);
        Write("prog.asm", c.prog);
        EXPECT_EQ(Assemble(), 0) << c.what;
        EXPECT_EQ(Read("prog.obj"), c.obj) << c.what;
    }
}

TEST_F(Listing, SelfIncludesGrowByLevelsInTimeInProportion) {
    // Three includes of the file itself: each level triples the lines. Appending
    // them must not copy all lines read so far at each include.
    Write("prog.asm",
          " INCLUDE \"prog.asm\"\n INCLUDE \"prog.asm\"\n INCLUDE \"prog.asm\"\n NOP\n");
    struct Case {
        int limit, lines, bytes;
    } cases[] = {{0, 4, 1}, {1, 16, 4}, {4, 484, 121}, {8, 39364, 9841}};
    for (const auto& c : cases) {
        settings.SetSettingInt("Assembler Include Nesting Level Limit", c.limit);
        EXPECT_EQ(Assemble(), 0) << c.limit;
        EXPECT_EQ(assembler->Session().LineCount(), c.lines) << c.limit;
        EXPECT_EQ(Read("prog.obj"), std::string(static_cast<size_t>(c.bytes), '\0')) << c.limit;
    }
}

TEST(IncludeNames, ResolvedFromTheProjectOrTheIncludingFile) {
    // The name, the file that includes it, the path it resolves to
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"x.inc", "proj/p.asm", "proj/x.inc"},
        {"x.inc", "proj/sub/lib.inc", "proj/x.inc"},  // a bare name: the project folder
        {"sub/x.inc", "proj/p.asm", "proj/sub/x.inc"},
        {"sub\\x.inc", "proj/p.asm", "proj/sub/x.inc"},
        {"deeper/y.inc", "proj/sub/lib.inc", "proj/sub/deeper/y.inc"},
        {"../up.inc", "proj/sub/lib.inc", "proj/sub/../up.inc"},
        {"./here.inc", "/abs/p.asm", "/abs/./here.inc"},
        {"/usr/share/z.inc", "proj/p.asm", "/usr/share/z.inc"},
        {"sub/x.inc", "p.asm", "sub/x.inc"},
    };
    for (const auto& [name, including, want] : cases)
        EXPECT_EQ(ResolveIncludeName(name, "proj/", including), want) << name;
}

TEST_F(Listing, IncludeArgumentErrors) {
    Write("prog.asm",
          " INCLUDE lib.inc\n"
          " INCLUDE \"lib.txt\"\n"
          " INCLUDE \"missing.inc\"\n"
          " INCLUDE <x>\n");
    EXPECT_EQ(Assemble(), 4);
    EXPECT_EQ(LineAt(1).ErrorText, "Invalid argument of the INCLUDE directive.");
    EXPECT_EQ(LineAt(2).ErrorText, ".ASM (or .INC) file extension expected.");
    EXPECT_EQ(LineAt(3).ErrorText, "File \"" + folder + "missing.inc\" does not exist.");
    EXPECT_EQ(LineAt(4).ErrorText, ".ASM (or .INC) file extension expected.");
}

TEST_F(Listing, ErrorsInIncludedFilesNameTheFile) {
    Write("lib.inc", " LD A,999\n");
    Write("prog.asm", " INCLUDE \"lib.inc\"\n NOP\n ORG 1000000\n");
    EXPECT_EQ(Assemble(), 2);
    EXPECT_TRUE(assembler->Session().ErrorInIncludeFile);
    EXPECT_EQ(
        assembler->FormatAssemblerErrors(),
        "Here is the list of assembler errors:\n"
        "<" +
            folder +
            "lib.inc>: Line 0001:     LD A,999          Error: Invalid argument of the "
            "instruction. '3E7h (999)' (-80-FFh (-128-255) value expected)\n"
            "Line 0003:     ORG 1000000          Error: Invalid argument of the ORG directive. "
            "'1000000' (0-FFFFh value expected)\n");
}

TEST_F(Listing, ErrorBoxListsSizeErrorFirstAndAtMostTen) {
    std::string source = " ORG 0FFFFh\n NOP\n NOP\n";
    for (int i = 0; i < 11; ++i) source += " FOO\n";
    Write("prog.asm", source);
    EXPECT_EQ(Assemble(), 12);
    const std::string box = assembler->FormatAssemblerErrors();
    EXPECT_EQ(box.rfind("Here is the list of the first 10 assembler errors:\nLine 0003:", 0), 0u);
    EXPECT_EQ(std::count(box.begin(), box.end(), '\n'), 11);
}

TEST_F(Listing, FillValueAndObjectStartAddress) {
    settings.SetSettingInt("OBJ File Fill Value", 0xFF);
    Write("prog.asm", " ORG 10h\n DB 1,2\n ORG 30h\n DB 0FFh\n");
    EXPECT_EQ(Assemble(), 0);
    std::string want(16, '\xFF');
    want += "\x01\x02" + std::string(30, '\xFF');
    want += '\xFF';
    EXPECT_EQ(Read("prog.obj"), want);
    // The first and third blocks are all fill value and are left out; the last
    // record is short and is written although it holds only fill bytes.
    EXPECT_EQ(Read("prog.hex"),
              ":100010000102FFFFFFFFFFFFFFFFFFFFFFFFFFFFEB\r\n"
              ":01003000FFD0\r\n"
              ":00000001FF\r\n");
}

TEST_F(Listing, ObjectStartOutsideMemoryWritesOnlyWhatLiesInside) {
    // A start address from a hand-edited setting: the files hold the part of
    // the image that lies between it and the end of the code.
    Write("prog.asm", " ORG 10h\n DB 1,2\n");
    const std::string fromZero = std::string(16, '\0') + "\x01\x02";
    // The start address and the OBJ and HEX files
    const std::tuple<int, std::string, std::string> cases[] = {
        {-16, fromZero, ":020010000102EB\r\n:00000001FF\r\n"},
        {INT_MIN, fromZero, ":020010000102EB\r\n:00000001FF\r\n"},
        {0x11, "\x02", ":0100110002EC\r\n:00000001FF\r\n"},
        {INT_MAX, "", ":00000001FF\r\n"},
    };
    for (const auto& [start, obj, hex] : cases) {
        settings.SetSettingInt("Starting Address For OBJ Files Creation", start);
        EXPECT_EQ(Assemble(), 0) << start;
        EXPECT_EQ(Read("prog.obj"), obj) << start;
        EXPECT_EQ(Read("prog.hex"), hex) << start;
    }
}

// Every output a run can write, with an OBJ copy named "bin".
const char* const kOutputs[] = {"prog.lst", "prog.obj", "prog.hex", "prog.bin"};

TEST_F(Listing, FailedGeneratedRunLeavesNoOutputOfAnEarlierRun) {
    options.GenerateObjCopy = true;
    options.ObjCopyExtension = "bin";
    struct Case {
        const char* what;
        const char* source;  // nullptr: the source is gone
        const char* hex;     // "Generate HEX File Also" of the failing run
    } cases[] = {
        {"missing source", nullptr, "ON"},
        {"errors", " FOO\n", "ON"},
        {"errors, HEX off", " FOO\n", "OFF"},
        {"size error", " ORG 0FFFFh\n NOP\n NOP\n", "ON"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        settings.SetSettingText("Generate HEX File Also", "ON");
        Write("prog.asm", " NOP\n");
        Assembler first(settings, host, options);
        ASSERT_EQ(first.AssembleGeneratedSource(folder, "prog"), 0);
        for (const char* out : kOutputs) ASSERT_TRUE(Exists(out)) << out;

        settings.SetSettingText("Generate HEX File Also", c.hex);
        if (c.source)
            Write("prog.asm", c.source);
        else
            std::filesystem::remove(dir / "prog.asm");
        Assembler second(settings, host, options);
        EXPECT_EQ(second.AssembleGeneratedSource(folder, "prog"), 1);
        for (const char* out : kOutputs) EXPECT_FALSE(Exists(out)) << out;
    }
}

TEST_F(Listing, UnreadableSourceFailsWithoutWritingAnything) {
    std::filesystem::create_directory(dir / "folder.asm");
    for (const char* name : {"missing.asm", "folder.asm"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Assemble(name), 1);
        const std::string base = std::string(name).substr(0, std::string(name).size() - 4);
        for (const char* ext : {".lst", ".obj", ".hex"}) EXPECT_FALSE(Exists(base + ext)) << ext;
        EXPECT_EQ(assembler->FormatAssemblerErrors(),
                  "Here is the list of assembler errors:\nError: File \"" + folder + name +
                      "\" cannot be read.\n");
    }
}

TEST_F(Listing, ObjCopyNeverReplacesTheSourceOrAnotherOutput) {
    for (const char* ext :
         {"asm", "ASM", "lst", "obj", "hex", "inc", "bas", "", "a/b", "..", "toolongext"})
        EXPECT_FALSE(IsUsableObjCopyExtension(ext)) << ext;
    for (const char* ext : {"bin", "rom", "Z80", "b_1", "12345678"})
        EXPECT_TRUE(IsUsableObjCopyExtension(ext)) << ext;

    // A setting that names the source is not used: the source survives both the
    // deletion before the run and the copy after it.
    options.GenerateObjCopy = true;
    options.ObjCopyExtension = "asm";
    Write("prog.asm", " NOP\n");
    Assembler assembler(settings, host, options);
    EXPECT_EQ(assembler.AssembleGeneratedSource(folder, "prog"), 0);
    EXPECT_EQ(Read("prog.asm"), " NOP\n");
    EXPECT_EQ(Read("prog.obj"), std::string(1, '\0'));
}

using Session = AssemblerFixture;

TEST_F(Session, ProtectedLinesAssembleAsThePlainLines) {
    LineProtection protection;
    const std::string first = protection.ProtectLine(" LD A,5");
    const std::string second = protection.ProtectLine(" DB \"a;b\",9\t; tab and quote");
    LineProtection reader;
    EXPECT_EQ(reader.UnprotectLine(first), " LD A,5");
    EXPECT_EQ(reader.UnprotectLine(second), " DB \"a;b\",9\t; tab and quote");
    EXPECT_EQ(reader.UnprotectLine(" NOP"), " NOP");

    Write("prog.asm", first + "\n" + second + "\n");
    EXPECT_EQ(Assemble(), 0);
    EXPECT_EQ(Read("prog.obj"), std::string("\x3E\x05\x61\x3B\x62\x09", 6));
}

TEST_F(Session, AddressMapTiesAddressesToLines) {
    options.Tracking = true;
    Write("lib.inc", " INC A\n");
    Write("prog.asm", " ORG 100h\n LD A,1\n INCLUDE \"lib.inc\"\n HALT\n");
    EXPECT_EQ(Assemble(), 0);
    const AddressMap& map = assembler->Session().Map;
    ASSERT_TRUE(map.Valid);
    EXPECT_EQ(map.FileLine[0x100], 2);
    EXPECT_EQ(map.ListingLine[0x100], 6);
    EXPECT_EQ(map.IncludeIndex[0x102], 1);
    EXPECT_EQ(map.FileLine[0x102], 1);
    EXPECT_EQ(map.FileLine[0x103], 4);

    Write("bad.asm", " FOO\n");
    EXPECT_EQ(Assemble("bad.asm"), 1);
    EXPECT_FALSE(assembler->Session().Map.Valid);
}

class RecordingHost : public AssemblerHost {
  public:
    void Status(const std::string& first, const std::string& second) override {
        if (statuses.empty() || statuses.back() != first) statuses.push_back(first);
        lastSecond = second;
    }
    void Pause(int ms) override { paused += ms; }
    std::vector<std::string> statuses;
    std::string lastSecond;
    int paused = 0;
};

TEST_F(Session, ProgressIsShownUnlessSilent) {
    RecordingHost recording;
    Write("prog.asm", " NOP\n");
    Assembler loud(settings, recording, options);
    int status = 0;
    loud.AssembleSource(folder, "prog.asm", status);
    EXPECT_EQ(recording.statuses,
              (std::vector<std::string>{"Loading source file.", "Running ASM preprocessor.",
                                        "Performing pass 1.", "Performing pass 2.",
                                        "Writing LST file.", "Writing OBJ file."}));
    EXPECT_EQ(recording.paused, 800);

    RecordingHost quiet;
    Assembler silent(settings, quiet, options);
    status = kSilentAssembly;
    EXPECT_EQ(silent.AssembleSource(folder, "prog.asm", status), 0);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(quiet.statuses.empty());
    EXPECT_EQ(quiet.paused, 0);
}

}  // namespace
}  // namespace mb::testing
