// The string routines on tables of inputs: empty strings, destinations shorter
// than the source (cut without a message, always terminated, nothing written
// behind the capacity) and characters above 127.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/runtime_suite.h"

namespace mb::testing {
namespace {

constexpr int kSource = 0x3000, kSecond = 0x3200, kDestination = 0x3100;
constexpr int kFill = 0xEE;  // the destination's cells before a call

// Wrappers as the compiler chains the routines: the length first (with no
// limit), then the routine with the destination's capacity.
std::string Wrappers() {
    std::string text;
    for (const char* entry : {"SG25", "SG30", "SG83", "SG86", "SG89", "SG92", "SG95"})
        text +=
            std::string("W") + entry +
            ":\tPUSH BC\r\n\tLD B,0\r\n\tCALL SG05\r\n\tLD A,C\r\n\tPOP BC\r\n\tLD C,A\r\n\tJP " +
            entry + "\r\n";
    text += "WLTRIM:\tCALL SG35\r\n\tJP SG10\r\n";
    text += "WRTRIM:\tCALL SG40\r\n\tJP SG20\r\n";
    // a + b into the destination, the second part skipped when the first fills it
    text +=
        "WCAT:\tCALL SG10\r\n\tLD A,B\r\n\tOR B\r\n\tRET Z\r\n\tDEC HL\r\n\tLD DE,3200H\r\n\tJP "
        "SG11\r\n";
    return text;
}

class StringRoutines : public RuntimeSuite {
  protected:
    static void SetUpTestSuite() {
        RuntimeNeeds needs;
        for (std::string_view entry : kStringRoutineEntries) needs.SetStringEntry(entry);
        Build(needs, Wrappers());
    }

    // Calls routine with the source text, capacity B, count C and the two
    // argument cells; the destination is filled with kFill first.
    static RoutineResult Run(const std::string& routine, const std::string& source, int capacity,
                             int count = 0, int r0 = 0, int r1 = 0,
                             const std::string& second = "") {
        program_->SetText(kSource, source);
        program_->SetText(kSecond, second);
        for (int i = 0; i < 200; ++i) program_->Runner().SetByte(kDestination + i, kFill);
        program_->Runner().SetByte(kRegR0, r0);
        program_->Runner().SetByte(kRegR1, r1);
        const uint32_t bcde = static_cast<uint32_t>(capacity & 0xFF) << 24 |
                              static_cast<uint32_t>(count & 0xFF) << 16 | kSource;
        return program_->CallOnce(routine, {bcde, kDestination});
    }
};

TEST_F(StringRoutines, CopiesCutAtTheCapacityAndAlwaysTerminate) {
    struct Case {
        const char* what;
        std::string routine, source;
        int capacity, count, r0, r1;
        std::string expected;
        std::string second = "";
    } cases[] = {
        {"copy", "SG10", "HELLO", 10, 0, 0, 0, "HELLO"},
        {"copy cut", "SG10", "HELLO", 3, 0, 0, 0, "HEL"},
        {"copy of empty", "SG10", "", 10, 0, 0, 0, ""},
        {"copy into no room", "SG10", "HELLO", 0, 0, 0, 0, ""},
        {"copy above 127", "SG10", "\xC3\xA9t\xE9\xFF", 10, 0, 0, 0, "\xC3\xA9t\xE9\xFF"},
        {"concatenation", "WCAT", "AB", 10, 0, 0, 0, "ABCDE", "CDE"},
        {"concatenation cut", "WCAT", "AB", 4, 0, 0, 0, "ABCD", "CDE"},
        {"concatenation, first part fills", "WCAT", "AB", 2, 0, 0, 0, "AB", "CDE"},
        {"concatenation of empty", "WCAT", "", 10, 0, 0, 0, "CDE", "CDE"},
        {"Left", "SG20", "HELLO", 10, 3, 0, 0, "HEL"},
        {"Left longer than the string", "SG20", "HELLO", 10, 9, 0, 0, "HELLO"},
        {"Left 0", "SG20", "HELLO", 10, 0, 0, 0, ""},
        {"Left cut", "SG20", "HELLO", 2, 3, 0, 0, "HE"},
        {"Right", "WSG25", "HELLO", 10, 0, 3, 0, "LLO"},
        {"Right longer than the string", "WSG25", "HELLO", 10, 0, 9, 0, "HELLO"},
        {"Right 0", "WSG25", "HELLO", 10, 0, 0, 0, ""},
        {"Right of empty", "WSG25", "", 10, 0, 3, 0, ""},
        {"Right cut", "WSG25", "HELLO", 2, 0, 3, 0, "LL"},
        {"Mid", "WSG30", "HELLO", 10, 0, 2, 3, "ELL"},
        {"Mid from 0 counts from 1", "WSG30", "HELLO", 10, 0, 0, 2, "HE"},
        {"Mid at the end", "WSG30", "HELLO", 10, 0, 5, 5, "O"},
        {"Mid behind the end", "WSG30", "HELLO", 10, 0, 6, 2, ""},
        {"Mid of 0 characters", "WSG30", "HELLO", 10, 0, 2, 0, ""},
        {"Mid cut", "WSG30", "HELLO", 1, 0, 2, 3, "E"},
        {"LTrim", "WLTRIM", "  HI ", 10, 0, ' ', 0, "HI "},
        {"LTrim of blanks only", "WLTRIM", "    ", 10, 0, ' ', 0, ""},
        {"LTrim of another character", "WLTRIM", "xxAx", 10, 0, 'x', 0, "Ax"},
        {"RTrim", "WRTRIM", "  HI  ", 10, 0, ' ', 0, "  HI"},
        {"RTrim of blanks only", "WRTRIM", "   ", 10, 0, ' ', 0, ""},
        {"RTrim of empty", "WRTRIM", "", 10, 0, ' ', 0, ""},
        {"RTrim cut", "WRTRIM", "ABCD  ", 2, 0, ' ', 0, "AB"},
        {"FillStr", "SG70", "", 10, 3, '*', 0, "***"},
        {"FillStr cut", "SG70", "", 2, 5, '*', 0, "**"},
        {"FillStr 0 times", "SG70", "", 10, 0, '*', 0, ""},
        {"FillStr above 127", "SG70", "", 10, 2, 0xE9, 0, "\xE9\xE9"},
        {"ReplaceChr", "SG77", "HELLO", 10, 0, 'L', 'J', "HEJJO"},
        {"ReplaceChr cut", "SG77", "HELLO", 3, 0, 'L', 'J', "HEJ"},
        {"ReplaceChr above 127", "SG77", "caf\xE9", 10, 0, 0xE9, 'e', "cafe"},
        {"LCase", "SG79", "Hello, World! 123 @[`{\xC4", 30, 0, 0, 0, "hello, world! 123 @[`{\xC4"},
        {"LCase cut", "SG79", "HELLO", 3, 0, 0, 0, "hel"},
        {"UCase", "SG81", "Hello, world! `{@[\xE4", 30, 0, 0, 0, "HELLO, WORLD! `{@[\xE4"},
        {"UCase of empty", "SG81", "", 30, 0, 0, 0, ""},
        {"ReverseStr", "WSG83", "HELLO", 10, 0, 0, 0, "OLLEH"},
        {"ReverseStr of empty", "WSG83", "", 10, 0, 0, 0, ""},
        {"ReverseStr cut", "WSG83", "HELLO", 3, 0, 0, 0, "OLL"},
        {"LShiftStr", "WSG86", "HELLO", 10, 0, '_', 0, "ELLO_"},
        {"LShiftStr of one", "WSG86", "A", 10, 0, '_', 0, "_"},
        {"LShiftStr of empty", "WSG86", "", 10, 0, '_', 0, ""},
        {"LShiftStr cut", "WSG86", "HELLO", 3, 0, '_', 0, "ELL"},
        {"RShiftStr", "WSG89", "HELLO", 10, 0, '_', 0, "_HELL"},
        {"RShiftStr of one", "WSG89", "A", 10, 0, '_', 0, "_"},
        {"RShiftStr cut", "WSG89", "HELLO", 3, 0, '_', 0, "_HE"},
        {"LRotateStr", "WSG92", "HELLO", 10, 0, 0, 0, "ELLOH"},
        {"LRotateStr of one", "WSG92", "A", 10, 0, 0, 0, "A"},
        {"LRotateStr of empty", "WSG92", "", 10, 0, 0, 0, ""},
        {"RRotateStr", "WSG95", "HELLO", 10, 0, 0, 0, "OHELL"},
        {"RRotateStr above 127", "WSG95", "ab\xFF", 10, 0, 0, 0,
         "\xFF"
         "ab"},
        {"RRotateStr cut", "WSG95", "HELLO", 2, 0, 0, 0, "OH"},
        {"RRotateStr into no room", "WSG95", "HELLO", 0, 0, 0, 0, ""},
    };
    for (const Case& c : cases) {
        Run(c.routine, c.source, c.capacity, c.count, c.r0, c.r1, c.second);
        ASSERT_TRUE(program_->Errors.empty()) << program_->Errors;
        EXPECT_EQ(program_->Text(kDestination, 200), c.expected) << c.what;
        EXPECT_EQ(program_->Runner().Byte(kDestination + c.capacity + 1), kFill)
            << c.what << ": written behind the capacity";
    }
}

TEST_F(StringRoutines, LengthSearchCountAndCompare) {
    struct Case {
        const char* what;
        std::string routine, source;
        int capacity, r0;
        int expectedC;
    } cases[] = {
        // clang-format off
        {"Len", "SG05", "HELLO", 0, 0, 5}, {"Len of empty", "SG05", "", 0, 0, 0},
        {"Len at most B", "SG05", "HELLO", 3, 0, 3}, {"Len above 127", "SG05", "\x80\xFF", 0, 0, 2},
        {"InStr", "SG65", "HELLO", 0, 'L', 3}, {"InStr first place", "SG65", "HELLO", 0, 'H', 1},
        {"InStr not found", "SG65", "HELLO", 0, 'Z', 0}, {"InStr in empty", "SG65", "", 0, 'A', 0},
        {"InStr above 127", "SG65", "ab\xE9", 0, 0xE9, 3}, {"InStrRev", "SG60", "HELLO", 0, 'L', 4},
        {"InStrRev last place", "SG60", "HELLO", 0, 'O', 5},
        {"InStrRev not found", "SG60", "HELLO", 0, 'Z', 0},
        {"CountChr", "SG75", "HELLO", 0, 'L', 2}, {"CountChr none", "SG75", "HELLO", 0, 'Z', 0},
        {"CountChr in empty", "SG75", "", 0, 'L', 0},
        {"CountChr above 127", "SG75", "\xFF" "a\xFF", 0, 0xFF, 2},
        // clang-format on
    };
    for (const Case& c : cases) {
        const RoutineResult r = Run(c.routine, c.source, c.capacity, 0, c.r0);
        EXPECT_EQ(static_cast<int>((r.BCDE >> 16) & 0xFF), c.expectedC) << c.what;
    }
    // Len leaves DE on the terminator.
    const RoutineResult len = Run("SG05", "HELLO", 0);
    EXPECT_EQ(static_cast<int>(len.BCDE & 0xFFFF), kSource + 5);
}

TEST_F(StringRoutines, CompareOverAtMostBCharacters) {
    struct Case {
        const char* left;
        const char* right;
        int capacity;
        bool equal;
    } cases[] = {
        {"ABC", "ABC", 10, true},   {"ABC", "ABD", 10, false}, {"ABC", "AB", 10, false},
        {"AB", "ABC", 10, false},   {"", "", 10, true},        {"", "A", 10, false},
        {"ABCD", "ABCE", 3, true},  {"ABC", "XYZ", 0, true},   {"\xE9", "\xE9", 5, true},
        {"\xE9", "\xE8", 5, false},
    };
    for (const Case& c : cases) {
        program_->SetText(kDestination, c.left);
        program_->SetText(kSource, c.right);
        const uint32_t bcde = static_cast<uint32_t>(c.capacity) << 24 | kSource;
        const RoutineResult r = program_->CallOnce("SG50", {bcde, kDestination});
        EXPECT_EQ((r.F & kFlagZ) != 0, c.equal)
            << '"' << c.left << "\" = \"" << c.right << "\" over " << c.capacity;
    }
}

TEST_F(StringRoutines, CharactersOneByOne) {
    // SG01 stores and terminates, HL on the terminator; SG03 reads the first character.
    program_->SetText(kDestination, "");
    RoutineResult r = program_->CallOnce("SG01", {0, kDestination, 'X'});
    r = program_->CallOnce("SG01", {0, r.HL, 0xE9});
    EXPECT_EQ(program_->Text(kDestination), "X\xE9");
    EXPECT_EQ(r.HL, kDestination + 2);
    program_->CallOnce("SG01A", {0, kDestination + 1});
    EXPECT_EQ(program_->Text(kDestination), "X");
    r = program_->CallOnce("SG03", {0, kDestination});
    EXPECT_EQ(static_cast<int>(r.BCDE >> 24), 'X');
    // SG110 stores while B allows.
    program_->SetText(kDestination, "");
    r = program_->CallOnce("SG110", {0x01000000, kDestination, 'A'});
    r = program_->CallOnce("SG110", {r.BCDE, r.HL, 'B'});
    EXPECT_EQ(program_->Text(kDestination), "A");
}

}  // namespace
}  // namespace mb::testing
