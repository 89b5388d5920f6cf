// The selection of the runtime text: emission order and comment lines, the
// line forms, the string entries, the Single print's decimals, and that each
// group assembles with exactly what AddRuntimeDependencies adds to it.
#include "runtime/runtime_library.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fstream>
#include <regex>
#include <sstream>

#include "runtime/single_model.h"
#include "support/runtime_program.h"

namespace mb::testing {
namespace {

RuntimeNeeds AllNeeds() {
    RuntimeNeeds needs;
    for (const RuntimeGroup& group : RuntimeGroups()) needs.Set(group.Flag);
    for (std::string_view entry : kStringRoutineEntries) needs.SetStringEntry(entry);
    return needs;
}

bool Contains(const std::vector<std::string>& lines, const std::string& text) {
    return std::find(lines.begin(), lines.end(), text) != lines.end();
}

bool DefinesLabel(const std::vector<std::string>& lines, const std::string& label) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
        return line == label + ":" || line.rfind(label + ":\t", 0) == 0;
    });
}

TEST(RuntimeLibrary, GroupsComeInTableOrderEachOpenedByItsCommentLine) {
    const std::vector<std::string> lines = RuntimeLines(AllNeeds(), kDefaultSingleDecimals);
    std::size_t previous = 0;
    for (const RuntimeGroup& group : RuntimeGroups()) {
        const auto at = std::find(lines.begin(), lines.end(), std::string(group.CommentLine));
        ASSERT_NE(at, lines.end()) << group.CommentLine;
        const std::size_t index = static_cast<std::size_t>(at - lines.begin());
        EXPECT_TRUE(index == 0 || index > previous) << group.CommentLine << " out of order";
        previous = index;
    }
    EXPECT_EQ(lines.front(), "; Integer Multiplication Routine");
    // Flags in the table order: 1 to 19, then 40 to 45 and 48.
    int last = 0;
    for (const RuntimeGroup& group : RuntimeGroups()) {
        EXPECT_GT(group.Flag, last);
        last = group.Flag;
    }
}

TEST(RuntimeLibrary, OnlyFlaggedGroupsAreEmitted) {
    EXPECT_TRUE(RuntimeLines(RuntimeNeeds{}, 3).empty());
    for (const RuntimeGroup& group : RuntimeGroups()) {
        const RuntimeNeeds needs = NeedsOf({group.Flag});
        const std::vector<std::string> lines = RuntimeLines(needs, 3);
        ASSERT_FALSE(lines.empty()) << group.Source;
        EXPECT_EQ(lines.front(), group.CommentLine);
        for (const RuntimeGroup& other : RuntimeGroups()) {
            if (other.Flag != group.Flag) {
                EXPECT_FALSE(Contains(lines, std::string(other.CommentLine)));
            }
        }
    }
}

// Labels in column 1 with a tab behind the colon, instructions behind a tab,
// comments; nothing that the listing readers would take for a source line
// ("; 12: ...") or a variable (".EQU").
TEST(RuntimeLibrary, LinesKeepTheOutputForms) {
    const std::regex label(R"(^[A-Z][A-Z0-9_]*:(\t.*)?$)");
    const std::regex sourceMapping(R"(^; [0-9]+: )");
    for (const std::string& line : RuntimeLines(AllNeeds(), 3)) {
        ASSERT_FALSE(line.empty());
        ASSERT_EQ(line.find_first_of("\r\n"), std::string::npos) << line;
        ASSERT_TRUE(line[0] == ';' || line[0] == '\t' || std::regex_match(line, label)) << line;
        ASSERT_FALSE(std::regex_search(line, sourceMapping)) << line;
        ASSERT_EQ(line.find(".EQU"), std::string::npos) << line;
        ASSERT_NE(std::isspace(static_cast<unsigned char>(line.back())), 1)
            << "trailing blank: " << line;
        for (char c : line) ASSERT_TRUE(c == '\t' || (c >= 32 && c < 127)) << line;
    }
}

// The embedded text is the file, line for line.
TEST(RuntimeLibrary, EmbeddedTextIsTheAssemblyFile) {
    for (const RuntimeGroup& group : RuntimeGroups()) {
        if (group.Flag == kNeedStrings || group.Flag == kNeedSinglePrint) continue;
        std::ifstream file(std::string(MB_SOURCE_DIR) + "/runtime/asm/" +
                           std::string(group.Source) + ".asm");
        ASSERT_TRUE(file) << group.Source;
        std::vector<std::string> fileLines;
        for (std::string line; std::getline(file, line);) {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            fileLines.push_back(line);
        }
        const RuntimeNeeds needs = NeedsOf({group.Flag});
        EXPECT_EQ(RuntimeLines(needs, 3), fileLines) << group.Source;
    }
}

TEST(RuntimeLibrary, StringEntriesAreEmittedOnlyWhenFlagged) {
    RuntimeNeeds needs;
    needs.SetStringEntry("SG65");
    const std::vector<std::string> lines = RuntimeLines(needs, 3);
    EXPECT_EQ(lines.front(), "; String Routine");
    for (const char* base : {"SG01", "SG01A", "SG03", "SG110", "SG115"})
        EXPECT_TRUE(DefinesLabel(lines, base)) << base;
    EXPECT_TRUE(DefinesLabel(lines, "SG65"));
    for (std::string_view entry : kStringRoutineEntries) {
        if (entry != "SG65") {
            EXPECT_FALSE(DefinesLabel(lines, std::string(entry))) << entry;
        }
    }
    // Each entry has its own sub-block.
    const std::vector<std::string> all = RuntimeLines(AllNeeds(), 3);
    for (std::string_view entry : kStringRoutineEntries) {
        RuntimeNeeds one;
        one.SetStringEntry(entry);
        const std::vector<std::string> own = RuntimeLines(one, 3);
        EXPECT_TRUE(DefinesLabel(own, std::string(entry))) << entry;
        EXPECT_TRUE(DefinesLabel(all, std::string(entry))) << entry;
    }
    // The string group's flag alone gives the base only.
    const RuntimeNeeds group = NeedsOf({kNeedStrings});
    EXPECT_TRUE(DefinesLabel(RuntimeLines(group, 3), "SG01"));
    EXPECT_FALSE(DefinesLabel(RuntimeLines(group, 3), "SG10"));
}

TEST(RuntimeLibrary, SinglePrintTakesThePowerOfTenAndTheEntryOfItsDecimals) {
    const RuntimeNeeds needs = NeedsOf({kNeedSinglePrint});
    const char* powers[] = {"LD BC,4120H", "LD BC,42C8H", "LD BC,447AH",
                            "LD BC,461CH", "LD BC,47C3H", "LD BC,4974H"};
    const char* lows[] = {"LD DE,0000H", "LD DE,0000H", "LD DE,0000H",
                          "LD DE,4000H", "LD DE,5000H", "LD DE,2400H"};
    for (int n = 1; n <= 6; ++n) {
        std::ostringstream text;
        for (const std::string& line : RuntimeLines(needs, n)) text << line << "\n";
        EXPECT_NE(text.str().find(std::string("\t") + powers[n - 1] + "\t"), std::string::npos)
            << n;
        EXPECT_NE(text.str().find(std::string("\t") + lows[n - 1] + "\t"), std::string::npos) << n;
        EXPECT_NE(text.str().find("\tJP P401_" + std::to_string(n) + "\t"), std::string::npos) << n;
        EXPECT_EQ(SingleToDouble(SingleFromDouble(std::pow(10.0, n)).Bits), std::pow(10.0, n));
    }
    // Out of range: the nearest of 1 and 6.
    EXPECT_EQ(RuntimeLines(needs, 0), RuntimeLines(needs, 1));
    EXPECT_EQ(RuntimeLines(needs, 9), RuntimeLines(needs, 6));
}

TEST(RuntimeLibrary, DependenciesCloseOverWhatTheGroupsCall) {
    RuntimeNeeds needs = NeedsOf({kNeedSinglePrint});
    AddRuntimeDependencies(needs);
    for (int flag : {kNeedPrint, kNeedLongPrint, kNeedLongDivide, kNeedSingleToLong,
                     kNeedLongToSingle, kNeedSingleSubtract, kNeedSingleMultiply})
        EXPECT_TRUE(needs.Has(flag)) << flag;
    EXPECT_FALSE(needs.Has(kNeedSingleAdd));
    RuntimeNeeds compare = NeedsOf({kNeedLongCompare});
    AddRuntimeDependencies(compare);
    EXPECT_TRUE(compare.Has(kNeedLongSubtract));
    RuntimeNeeds right;
    right.SetStringEntry("SG25");
    AddRuntimeDependencies(right);
    EXPECT_TRUE(right.HasStringEntry("SG20"));
    EXPECT_TRUE(right.Has(kNeedStrings));
}

// Each group, and each string entry, assembles without errors together with
// what AddRuntimeDependencies adds (and the system variables the compiler
// defines); everything at once assembles too, so no label is defined twice.
TEST(RuntimeLibrary, EachGroupAssemblesWithItsDependencies) {
    auto assemble = [](RuntimeNeeds needs, bool dependencies = true) {
        if (dependencies) AddRuntimeDependencies(needs);
        std::string text = RuntimeTestHeader() + "\tHALT\r\n";
        for (const std::string& line : RuntimeLines(needs, 3)) text += line + "\r\n";
        RuntimeProgram program;
        const bool ok = program.BuildText(text + "\t.END\r\n");
        return ok ? std::string() : program.Errors;
    };
    for (const RuntimeGroup& group : RuntimeGroups()) {
        EXPECT_EQ(assemble(NeedsOf({group.Flag})), "") << group.Source;
    }
    for (std::string_view entry : kStringRoutineEntries) {
        RuntimeNeeds needs;
        needs.SetStringEntry(entry);
        EXPECT_EQ(assemble(needs), "") << entry;
    }
    EXPECT_EQ(assemble(AllNeeds()), "");
    // Without its dependencies a calling group does not assemble.
    EXPECT_NE(assemble(NeedsOf({kNeedLongCompare}), false), "");
}

}  // namespace
}  // namespace mb::testing
