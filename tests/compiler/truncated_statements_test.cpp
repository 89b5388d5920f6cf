// The compiler on broken text: every statement form of the language cut short
// at each of its tokens (and a few lines at each character), random bytes,
// random runs of keywords, and lines of 100,000 characters. Whatever the text,
// a compile ends in one of two ways: success with its .asm, or exactly one
// error that names a line and says what is wrong, with no .asm written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <random>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

// A program with every numeric statement form, which compiles as it stands;
// a row of the table holds a group of statements (a structure, a routine).
// clang-format off
const std::vector<std::string> kNumericProgram = {
    "' every statement form", "Include \"part.bas\"", "IncludeASM \"part.asm\"",
    "#define STRING_MAX_LENGTH = 20", "#define SINGLE_DECIMAL_PLACES = 3", "Define RAMEND = 65535",
    "#sim (8000H) = 5", "#simio (20.3) = 1",
    "Dim a, b, c As Byte", "Dim s As Short", "Dim i, j As Integer", "Dim w(8) As Word",
    "Dim l As Long", "Dim u As ULong", "Dim f As Single", "Dim t As Bit", "Dim g As Boolean",
    "Const N = 10", "Const MASK = 0F0H", "Const HALF = 0.5", "Const TITLE = \"Bench\"",
    "ASM: LD A,N", "ASM:here: NOP",
    "a = 1", "b = a + 2 * (c - 1) / 3", "c = a Mod 3", "c = a And MASK Or 1 Xor 2", "s = -s",
    "i = i << 2", "i = i >> 1", "i = Not i", "j = ~i",
    "t = a < b", "t = a <= b And b <> c", "t = a == b || b != c && a >= c", "t = a > b",
    "a += 1", "a -= 1", "a *= 2", "a /= 2", "a++", "--b",
    "w(2) = 500", "w(a) = w(2) + 1", "w = (1, 2, 3, 4, 5, 6, 7, 8)", "w(1).LB = 0FFH",
    "a = i.HB", "l = u.HW + l.3B", "f = HALF * 3",
    "f = Sqr(f) + Sin(f) + Cos(f) + Tan(f) + Ln(2) + Log(2) + Exp(1)",
    "l = CLong(i) + CInteger(a) + CULong(s)", "s = CShort(b) + CUShort(c)", "f = CSingle(l)",
    "w(0) = VarAddr(a) + CUInteger(j)", "Poke 8000H, a", "a = Peek(8000H)", "Put 1, a",
    "a = Get(1)", "SetBit 1, c", "ResetBit 2, c", "InvertBit 3, c", "MakeBit 4, c, t",
    "t = TestBit(5, c)", "Print 1, \"a=\", a, \" \", l, \" \", f, CrLf, Cr, Lf, Qt",
    "Print 1, TITLE",
    "If a = 1 Then b = 2", "If a = 1 Then b = 2 Else b = 3",
    "If a = 1 And b = 2 Then", "b = 3", "Else", "b = 4", "Endif",
    "If (a = 1 Or b = 9) And c = 3 Then Print 1, \"x\"",
    "Select Case a", "Case 1", "b = 1", "Case 2, 3", "b = 2", "Case 4 To 6", "b = 3",
    "Case > 7", "b = 4", "Case Else", "b = 5", "EndSelect",
    "While a < 10", "a = a + 1", "Wend",
    "For a = 1 To 10 Step 2", "If a = 5 Then Exit For", "Next a",
    "For i = 10 To 1 Step -1", "Next i",
    "CFor(a = 0, b = 10; a < b; a++, b--)", "If a = 3 Then Exit CFor", "CNext",
    "top:", "If a < 3 Then Goto top", "Gosub report",
    "Call Twice(i)", "Twice i", "Swap i, j", "l = Cube(3) + Cube(l) + Half(4)", "End",
    "report:", "Print 1, a", "Return",
    "Sub other", "If a = 2 Then Exit Sub", "End Sub",
    "Proc Twice(ByVal v As Integer)", "v = v * 2", "Exit", "End Proc",
    "Proc Swap(ByRef x As Integer, ByRefOut y As Integer)", "Dim keep As Integer", "keep = x",
    "y = keep", "End Proc",
    "Function Cube(x As Long) As Long", "ReturnValue x * x * x", "End Function"};

// String statements and builtins; this version may still refuse them with a
// message of its own.
const std::vector<std::string> kStringProgram = {
    "#define STRING_MAX_LENGTH = 30", "Dim s, t As String", "Dim r[10] As String",
    "Dim p As StrPtr", "Dim n As Byte", "Dim w As Word", "Dim l As ULong", "Dim f As Single",
    "s = \"Hello\"", "t = s + \", \" + \"World\"", "t = \"x=\" + 42", "SetStrPtr p = s",
    "r = LeftStr(s, 3) + RightStr(s, 2) + MidStr(s, 2, 2)",
    "n = Len(t) + Asc(s) + InStr(t, 61) + InStrRev(t, 61) + CountChr(t, 61)",
    "t = Chr(65) + FillStr(42, 3)", "t = LTrim(s) + RTrim(s) + LTrimChr(s, 32) + RTrimChr(s, 32)",
    "t = LCase(s) + UCase(s) + ReverseStr(s)",
    "t = LShiftStr(s, 1) + RShiftStr(s, 1) + LRotateStr(s) + RRotateStr(s)",
    "t = ReplaceChr(s, 65, 66)", "t = HexStr(w)", "w = DecFromHex(s)", "n = StrValB(s)",
    "w = StrValW(s)", "l = StrValL(s)", "f = StrValS(s)",
    "If s = \"Hello\" Then Print 1, \" eq\", CrLf", "If s <> t Then Print 1, s, t",
    "Print 1, t, \" \", Len(t), CrLf", "End"};
// clang-format on

// Lines also cut at every character.
const std::vector<std::string> kCharacterCutLines = {
    "CFor(a = 0, b = 10; a < b; a++, b--)",
    "Print 1, \"a=\", a, \" \", l, \" \", f, CrLf, Cr, Lf, Qt",
    "If a = 1 Then b = 2 Else b = 3",
    "Proc Swap(ByRef x As Integer, ByRefOut y As Integer)",
    "#simio (20.3) = 1",
    "w = (1, 2, 3, 4, 5, 6, 7, 8)",
    "t = \"x=\" + 42"};

const char* const kIncludedBasic =
    "Function Half(x As Long) As Long\r\nReturnValue x / 2\r\nEnd Function\r\n";
const char* const kIncludedAsm = "\tNOP\r\n";

std::string Join(const std::vector<std::string>& lines, bool lastLineEnds = true) {
    std::string text;
    for (std::size_t k = 0; k < lines.size(); ++k) {
        text += lines[k];
        if (lastLineEnds || k + 1 < lines.size()) text += "\r\n";
    }
    return text;
}

// Where a line may be cut: after each token, a word or number being one token,
// each other character another, and a run of blanks a third.
std::vector<std::size_t> TokenCuts(const std::string& line) {
    auto word = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '#';
    };
    std::vector<std::size_t> cuts;
    for (std::size_t k = 1; k < line.size(); ++k) {
        const char before = line[k - 1], here = line[k];
        const bool same = (word(before) && word(here)) || (before == ' ' && here == ' ');
        if (!same) cuts.push_back(k);
    }
    return cuts;
}

std::vector<std::size_t> CharacterCuts(const std::string& line) {
    std::vector<std::size_t> cuts;
    for (std::size_t k = 1; k < line.size(); ++k) cuts.push_back(k);
    return cuts;
}

// One compile checked for its two endings; "" when it ended well, else what was wrong.
std::string CheckEnding(BasicRun& b, const std::string& program, int& outcome) {
    std::filesystem::remove(b.dir / "prog.asm");
    const int line = b.Compile(program);
    outcome = line;
    const bool written = b.Exists("prog.asm");
    if (line == 0) {
        if (!b.sink.errors.empty()) return "a successful compile showed: " + b.sink.errors[0];
        if (!written) return "a successful compile wrote no .asm";
        return "";
    }
    if (written) return "a failed compile left its .asm";
    if (b.sink.errors.size() != 1) {
        return "a failed compile showed " + std::to_string(b.sink.errors.size()) + " errors";
    }
    const std::string& message = b.sink.errors[0];
    if (message == "The editor is empty.") return "";
    // "Error in line N:" or "Error in included file in line N:", then a line break.
    bool included = false;
    std::size_t at = std::string::npos;
    for (const auto& [lead, inInclude] : {std::pair<std::string, bool>{"Error in line ", false},
                                          {"Error in included file in line ", true}}) {
        if (message.compare(0, lead.size(), lead) == 0) {
            at = lead.size();
            included = inInclude;
        }
    }
    const std::size_t colon = at == std::string::npos ? at : message.find(":\r\n", at);
    const std::string digits = colon == std::string::npos ? "" : message.substr(at, colon - at);
    if (digits.empty() || digits.size() > 9 ||
        digits.find_first_not_of("0123456789") != std::string::npos) {
        return "the error names no line: " + message.substr(0, 300);
    }
    const int named = std::stoi(digits);
    const int lines = static_cast<int>(std::count(program.begin(), program.end(), '\n')) + 1;
    if (named < 1 || named > lines) return "the error names line " + digits + ": " + message;
    if (!included && named != line) {
        return "the error names line " + digits + ", the compile gave " + std::to_string(line);
    }
    // The message ends with what is wrong, after the text of the line.
    const std::string says = message.substr(message.rfind("\r\n") + 2);
    if (says.find_first_not_of(' ') == std::string::npos) {
        return "the error says nothing: " + message;
    }
    return "";
}

struct Tally {
    int compiles = 0, successes = 0;
    std::vector<std::string> faults;

    void Check(BasicRun& b, const std::string& program) {
        int outcome = 0;
        const std::string fault = CheckEnding(b, program, outcome);
        ++compiles;
        if (outcome == 0) ++successes;
        if (!fault.empty() && faults.size() < 20) faults.push_back(fault + "\nin:\n" + program);
    }
    std::string Report() const {
        std::string text;
        for (const std::string& f : faults) text += f + "\n----\n";
        return text;
    }
};

// Each line of the program cut at each cut: once in place, with the lines after
// it kept, and once as the program's last line, with no line end.
void CutEveryLine(BasicRun& b, const std::vector<std::string>& program, Tally& tally,
                  std::vector<std::size_t> (*cuts)(const std::string&),
                  const std::vector<std::string>* only = nullptr) {
    for (std::size_t n = 0; n < program.size(); ++n) {
        const std::string& line = program[n];
        if (only && std::find(only->begin(), only->end(), line) == only->end()) continue;
        for (std::size_t cut : cuts(line)) {
            std::vector<std::string> inPlace = program;
            inPlace[n] = line.substr(0, cut);
            tally.Check(b, Join(inPlace));
            std::vector<std::string> last(program.begin(), program.begin() + n);
            last.push_back(line.substr(0, cut));
            tally.Check(b, Join(last, false));
        }
    }
}

BasicRun& WithIncludes(BasicRun& b) {
    b.Write("part.bas", kIncludedBasic);
    b.Write("part.asm", kIncludedAsm);
    return b;
}

TEST(TruncatedStatements, TheWholeProgramCompiles) {
    BasicRun b("truncated_whole");
    ASSERT_EQ(WithIncludes(b).Compile(Join(kNumericProgram)), 0)
        << (b.sink.errors.empty() ? "" : b.sink.errors[0]);
}

TEST(TruncatedStatements, EveryStatementCutAtEveryToken) {
    BasicRun b("truncated_tokens");
    WithIncludes(b);
    Tally tally;
    CutEveryLine(b, kNumericProgram, tally, TokenCuts);
    EXPECT_TRUE(tally.faults.empty()) << tally.Report();
    // Most cuts break their statement, some leave another one that compiles.
    EXPECT_GT(tally.compiles, 1000);
    EXPECT_GT(tally.successes, 0);
    EXPECT_LT(tally.successes, tally.compiles / 2);
}

TEST(TruncatedStatements, StringStatementsCutAtEveryToken) {
    BasicRun b("truncated_strings");
    Tally tally;
    tally.Check(b, Join(kStringProgram));
    CutEveryLine(b, kStringProgram, tally, TokenCuts);
    EXPECT_TRUE(tally.faults.empty()) << tally.Report();
    EXPECT_GT(tally.compiles, 300);
}

TEST(TruncatedStatements, SomeLinesCutAtEveryCharacter) {
    BasicRun b("truncated_characters");
    WithIncludes(b);
    Tally tally;
    CutEveryLine(b, kNumericProgram, tally, CharacterCuts, &kCharacterCutLines);
    CutEveryLine(b, kStringProgram, tally, CharacterCuts, &kCharacterCutLines);
    EXPECT_TRUE(tally.faults.empty()) << tally.Report();
    EXPECT_GT(tally.compiles, 400);
}

// Random bytes, and random runs of the language's words, from a fixed seed.
TEST(TruncatedStatements, GarbageGivesOneMessage) {
    static const char* const kWords[] = {
        "Dim",   "As",      "Byte",  "Word",    "Long",  "Single",   "String",      "Bit",
        "Const", "If",      "Then",  "Else",    "Endif", "While",    "Wend",        "For",
        "To",    "Step",    "Next",  "CFor",    "CNext", "Select",   "Case",        "EndSelect",
        "Goto",  "Gosub",   "Sub",   "End",     "Proc",  "Function", "ReturnValue", "Exit",
        "Call",  "Print",   "ASM:",  "#define", "#sim",  "Peek",     "Poke",        "VarAddr",
        "Sqr",   "LeftStr", "x",     "y",       "a(1)",  "1",        "255",         "-1",
        "0FFH",  "1.5",     "\"t\"", "=",       "+",     "-",        "*",           "/",
        "(",     ")",       ",",     ";",       "<",     ">=",       "<>",          "And",
        "Or",    "Not",     "Mod",   "++",      "--",    ".",        ":",           "\r\n",
        "\r\n",  "\r\n"};
    std::mt19937 random(19);
    BasicRun b("truncated_garbage");
    Tally tally;
    for (int n = 0; n < 150; ++n) {
        std::string bytes(1 + random() % 300, ' ');
        for (char& c : bytes) c = static_cast<char>(random() % 256);
        tally.Check(b, bytes);
        std::string words;
        for (int k = 1 + random() % 60; k > 0; --k) {
            words += kWords[random() % std::size(kWords)];
            words += random() % 4 ? " " : "";
        }
        tally.Check(b, "Dim x, y As Byte\r\nDim a(4) As Word\r\n" + words);
    }
    EXPECT_TRUE(tally.faults.empty()) << tally.Report();
    EXPECT_LT(tally.successes, tally.compiles / 2);
    // Bytes no program holds: NULs, a byte-order mark, a lone high byte.
    for (const std::string& odd : {std::string("\0\0\0", 3), std::string("\xff\xfe\r\n\x80")}) {
        int line = 0;
        EXPECT_EQ(CheckEnding(b, odd, line), "");
        EXPECT_GT(line, 0);
    }
}

// Lines of 100,000 characters and more, each with what the user is told.
struct LongLine {
    const char* name;
    std::string program;
    const char* outcome;  // "" when it compiles, else a part of the error
};
void PrintTo(const LongLine& c, std::ostream* os) {
    *os << c.name;
}

std::string Repeat(const std::string& text, int times) {
    std::string out;
    for (int k = 0; k < times; ++k) out += text;
    return out;
}

std::string Nested(const std::string& text, int pairs) {
    return std::string(pairs, '(') + text + std::string(pairs, ')');
}

const std::string kDims = "Dim a, b As Byte\r\nDim w(4) As Word\r\n";

class LongLines : public ::testing::TestWithParam<LongLine> {};

TEST_P(LongLines, EndWithTheirOutcome) {
    const LongLine& c = GetParam();
    BasicRun b(std::string("long_") + c.name);
    int line = 0;
    const std::string fault = CheckEnding(b, c.program, line);
    EXPECT_EQ(fault, "");
    if (*c.outcome == 0) {
        EXPECT_EQ(line, 0) << b.sink.errors[0].substr(0, 300);
    } else {
        ASSERT_NE(line, 0);
        EXPECT_NE(b.sink.errors[0].find(c.outcome), std::string::npos)
            << b.sink.errors[0].substr(0, 300);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Compiler, LongLines,
    ::testing::Values(
        LongLine{"comment", kDims + "' " + std::string(100000, 'x') + "\r\n", ""},
        LongLine{"name", "Dim " + std::string(100000, 'x') + " As Byte\r\n", ""},
        LongLine{"undeclared_name", kDims + std::string(100000, 'x') + " = 1\r\n",
                 "Variable not declared"},
        LongLine{"number", kDims + "a = " + std::string(100000, '9') + "\r\n",
                 "Variable not declared"},
        LongLine{"sum_with_blanks", kDims + "a = " + Repeat("1 + ", 25000) + "1\r\n",
                 "Line too long."},
        LongLine{"sum_without_blanks", kDims + "a=" + Repeat("1+", 50000) + "1\r\n",
                 "Line too long."},
        LongLine{"unclosed_parentheses", kDims + "a = " + std::string(100000, '(') + "\r\n",
                 "Improper use of parentheses"},
        LongLine{"parentheses_in_assignment", kDims + "a = " + Nested("1", 50000) + "\r\n", ""},
        LongLine{"parentheses_in_for",
                 kDims + "For a = " + Nested("1", 50000) + " To 3\r\nNext a\r\n", ""},
        LongLine{"parentheses_in_case",
                 kDims + "Select Case a\r\nCase " + Nested("1", 50000) + "\r\nEndSelect\r\n", ""},
        LongLine{"parentheses_in_print", kDims + "Print 1, " + Nested("a", 50000) + "\r\n", ""},
        LongLine{"nested_elements",
                 kDims + "b = " + Repeat("w(", 25000) + "1" + std::string(25000, ')') + "\r\n",
                 "Bad expression"},
        LongLine{
            "nested_conversions",
            kDims + "w(1) = " + Repeat("CUInteger(", 9000) + "a" + std::string(9000, ')') + "\r\n",
            ""},
        LongLine{
            "nested_varaddr",
            kDims + "w(1) = " + Repeat("VarAddr(", 12000) + "a" + std::string(12000, ')') + "\r\n",
            "VarAddr"},
        LongLine{"string_in_print", kDims + "Print 1, \"" + std::string(100000, 'x') + "\"\r\n",
                 ""},
        LongLine{"unclosed_string", kDims + "Print 1, \"" + std::string(100000, 'x') + "\r\n",
                 "double quotes"},
        LongLine{"inline_assembler", kDims + "ASM: " + std::string(100000, 'x') + "\r\n", ""},
        LongLine{
            "label",
            kDims + std::string(100000, 'x') + ":\r\nGoto " + std::string(100000, 'x') + "\r\n",
            ""},
        LongLine{"include_name", kDims + "Include \"" + std::string(100000, 'x') + ".bas\"\r\n",
                 "Include file not found."},
        LongLine{"directive", kDims + "#define RAMEND = " + std::string(100000, '7') + "\r\n",
                 "RAMEND"},
        LongLine{"sim", kDims + "#sim (" + std::string(100000, '1') + ") = 1\r\n", "valid"},
        LongLine{"punctuation", kDims + Repeat("(,;:)", 20000) + "\r\n", "Syntax error."},
        LongLine{"high_bytes", kDims + std::string(100000, '\xE9') + "\r\n", "Syntax error."},
        LongLine{"many_lines", kDims + Repeat("a = a + 1\r\n", 100000), ""},
        LongLine{"many_structures",
                 kDims + Repeat("If a = 1 Then\r\n", 20000) + Repeat("Endif\r\n", 20000), ""}),
    CaseName);

// Tests of If and While inside 50,000 pairs of parentheses, 100,000 characters
// each, compile and run: the pairs are taken off in one pass over the text,
// not one pass per pair.
TEST(DeepParentheses, TestsOfIfAndWhileCompileAndRun) {
    constexpr int kPairs = 50000;
    BasicRun b("long_deep_tests");
    EXPECT_EQ(
        b.RunOutput(Lines(
            {"Dim a, n As Byte", "a = 1", "If " + Nested("a = 1", kPairs) + " Then n = n + 1",
             "If " + Nested("a = 2", kPairs) + " Then n = n + 10",
             "If " + Nested("a = 1 And n = 1", kPairs) + " Then", "n = n + 100", "Endif",
             "While " + Nested("a < 5", kPairs), "a = a + 1", "Wend", "Print 1, n, \" \", a"})),
        "101 5");
}

}  // namespace
}  // namespace mb::testing
