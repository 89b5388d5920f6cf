#include "compiler/line_cleaner.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace mb {
namespace {

struct Case {
    std::string in, out;
};
struct Group {
    const char* name;
    std::vector<Case> cases;
};
void PrintTo(const Group& g, std::ostream* os) {
    *os << g.name;
}

// clang-format off
const Group kGroups[] = {
    {"BlanksAroundBinaryOperators", {
        {"a=b+1", "a = b + 1"}, {"x   =    y  -   1", "x = y - 1"},
        {"x=a*b/c%d", "x = a * b / c % d"}, {"x+=1", "x += 1"}, {"x-=y", "x -= y"},
        {"x*=2", "x *= 2"}, {"x/=2", "x /= 2"}, {"t=a==b", "t = a == b"}, {"t=a!=b", "t = a != b"},
        {"t=a<>b", "t = a <> b"}, {"t=a<b", "t = a < b"}, {"t=a<=b", "t = a <= b"},
        {"t=a>b", "t = a > b"}, {"t=a>=b", "t = a >= b"}, {"x=y<<2", "x = y << 2"},
        {"x=y>>2", "x = y >> 2"}, {"x=a&b", "x = a & b"}, {"x=a|b", "x = a | b"},
        {"x=a^b", "x = a ^ b"}, {"t=a&&b||c", "t = a && b || c"},
        {"x = y ShiftLeft 2", "x = y ShiftLeft 2"}, {"x=a Mod b", "x = a Mod b"}}},
    {"UnarySignsStayOnTheirOperand", {
        {"x=-1", "x = -1"}, {"x = - 5", "x = -5"}, {"x=+3", "x = +3"}, {"x=a*-b", "x = a * -b"},
        {"x=5--3", "x = 5 - -3"}, {"x=a<=-1", "x = a <= -1"}, {"x=(-1)", "x = (-1)"},
        {"x=-(a+b)", "x = -(a + b)"}, {"f(-1,-2)", "f(-1, -2)"}, {"Print 0,-x", "Print 0, -x"},
        {"-x", "-x"}, {"x=~a", "x = ~a"}, {"x=!b And ~c", "x = !b And ~c"}, {"x = ! b", "x = !b"},
        {"x = -~a", "x = -~a"},
        // Signs that would run together into ++ or -- keep a blank.
        {"x=- -5", "x = - -5"}, {"x = - - - 5", "x = - - -5"}, {"x = + ++i", "x = + ++i"},
        {"x = -", "x = -"}}},
    {"SignsBehindKeywordsThatIntroduceAnExpression", {
        {"For i=10 To 1 Step -1", "For i = 10 To 1 Step -1"},
        {"For i=-5 To -1", "For i = -5 To -1"},
        {"If x<-1 Then y=-x Else y=x", "If x < -1 Then y = -x Else y = x"},
        {"If -x>0 Then", "If -x > 0 Then"}, {"While -x>0", "While -x > 0"}, {"Case -1", "Case -1"},
        {"Case -10 To -1", "Case -10 To -1"}, {"ReturnValue -1", "ReturnValue -1"},
        {"x = a And -b", "x = a And -b"}, {"x = a or -b", "x = a or -b"},
        {"x = Not -b", "x = Not -b"}, {"x = a Mod -3", "x = a Mod -3"}, {"Put 1,-x", "Put 1, -x"},
        // A keyword keeps its blank before "(", a name does not.
        {"If(a=1)Then x=1", "If (a = 1) Then x = 1"}, {"x=Not(a)", "x = Not (a)"},
        {"Poke (a),1", "Poke (a), 1"}, {"y = Sqr (x)", "y = Sqr(x)"},
        {"While(a<b)", "While (a < b)"}}},
    {"IncrementsAndDecrements", {
        {"i++", "i++"}, {"i --", "i--"}, {"++i", "++i"}, {"-- i", "--i"},
        {"a=b++ +1", "a = b++ + 1"}, {"a = b+++1", "a = b++ + 1"}, {"x = a-- - b", "x = a-- - b"},
        {"a(1)++", "a(1)++"}, {"CFor(i=0;i<10;i++)", "CFor(i = 0; i < 10; i++)"},
        // Between two operands they are a binary operator and a sign.
        {"x=a--b", "x = a - -b"}, {"x=a++b", "x = a + +b"}, {"x = a--(b)", "x = a - -(b)"},
        // Behind its operand before a keyword: still the step.
        {"If i++ Then", "If i++ Then"}}},
    {"NamesCallsIndexesAndParts", {
        {"Dim a(10),b As Byte", "Dim a(10), b As Byte"},
        {"Dim s [17] As String", "Dim s[17] As String"},
        {"Dim a, b, c As Word", "Dim a, b, c As Word"},
        {"Proc p(ByVal a As Byte,b As Word)", "Proc p(ByVal a As Byte, b As Word)"},
        {"Function f[10](x As Byte) As String", "Function f[10](x As Byte) As String"},
        {"x = f( a , b )", "x = f(a, b)"}, {"x = a(i+1)", "x = a(i + 1)"}, {"f(a,)", "f(a,)"},
        {"x=a.LB+b.HB", "x = a.LB + b.HB"}, {"x = a . LB", "x = a.LB"},
        {"x = y.HW.LB", "x = y.HW.LB"}, {"x=a(1).LB", "x = a(1).LB"}, {"x = a.3B", "x = a.3B"},
        {"x = .5 + a", "x = .5 + a"}, {"x=1.5*2", "x = 1.5 * 2"},
        {"For i=0 To 1 Step .5", "For i = 0 To 1 Step .5"}, {"Call p(1,2)", "Call p(1, 2)"},
        {"lab:x=1", "lab: x = 1"}, {"lab :", "lab:"}, {"Goto lab", "Goto lab"}, {"End", "End"}}},
    {"NumberForms", {
        {"x=&HFF+&H10", "x = &HFF + &H10"}, {"x=&FF", "x = &FF"}, {"x=a&&HFF", "x = a && HFF"},
        {"x=%101+a%2", "x = %101 + a % 2"}, {"x=a And %1", "x = a And %1"}, {"x=$FF", "x = $FF"},
        {"x=0FFH+10B", "x = 0FFH + 10B"}, {"x=0x1F", "x = 0x1F"}, {"x = - &H10", "x = -&H10"},
        // No exponent form in the language.
        {"x=1.5E-3", "x = 1.5E - 3"}}},
    {"QuotedTextAndPlaceholders", {
        {"x=\"a,b  c\"+\"d\"", "x = \"a,b  c\" + \"d\""}, {"Print 0,\"AB\"", "Print 0, \"AB\""},
        {"x = \"\"\"\"", "x = \"\"\"\""}, {"x = \"a\"\"b\"", "x = \"a\"\"b\""},
        {"x = \"a\" \"b\"", "x = \"a\" \"b\""}, {"x=\"a\"+CrLf", "x = \"a\" + CrLf"},
        {"x = \"unterminated  text", "x = \"unterminated  text"},
        {"x = \"it's // no comment\"", "x = \"it's // no comment\""},
        {"Include \"a.bas\",\"b.bas\"", "Include \"a.bas\", \"b.bas\""},
        {"x=#[3]+#[12]", "x = #[3] + #[12]"}, {"Print 0,#[1],#x,# y", "Print 0, #[1], #x, #y"},
        {"x = # [2]", "x = #[2]"}, {"x=#(a+1)", "x = #(a + 1)"}, {"x = #-1", "x = #-1"}}},
    {"CommentsAreKeptAsWritten", {
        {"x=1'comment  ", "x = 1 'comment  "}, {"x=1   ' two  blanks", "x = 1 ' two  blanks"},
        {"x=1//c=d", "x = 1 //c=d"}, {"x=\"a'b\" ' c", "x = \"a'b\" ' c"},
        {"' whole line", "' whole line"}, {"   // whole line", "// whole line"},
        {"x = a / b // half", "x = a / b // half"},
        // The quote forms of numbers meet the comment rule first.
        {"Const c = 'a'", "Const c = 'a'"}, {"x=A'c'", "x = A 'c'"}}},
    {"DirectivesAndInlineAssembler", {
        {"#define ROMEND=3FFFH", "#define ROMEND = 3FFFH"},
        {"  #define   RAMEND   =  0FFFFH", "#define RAMEND = 0FFFFH"},
        {"Define STRING_MAX_LENGTH=32", "Define STRING_MAX_LENGTH = 32"},
        {"#sim (1000.3)=1", "#sim (1000.3)=1"}, {"#sim ( 1000.3 ) = 1", "#sim (1000.3)=1"},
        {"#sim(1000)=255", "#sim (1000)=255"}, {"# sim (10) = 1", "#sim (10)=1"},
        {"#simio (1)=1 ' c", "#simio (1)=1 ' c"}, {"#SIM (1 0)=1", "#SIM (1 0)=1"},
        {"#sim", "#sim"}, {"#simulate=1", "#simulate = 1"},
        {"ASM: LD A,(IX-1) ' x", "ASM: LD A,(IX-1) ' x"}, {"\t ASM:lab: NOP  ", "ASM:lab: NOP  "},
        {"lab : ASM: LD A,1", "lab: ASM: LD A,1"}, {"lab:ASM:NOP", "lab: ASM:NOP"},
        // Only "ASM:" as written opens inline assembler.
        {"asm: ld a,1", "asm: ld a, 1"}, {"ASM : ld a,1", "ASM: ld a, 1"}}},
    {"WhiteSpaceAndOddInput", {
        {"", ""}, {"   \t  ", ""}, {"\tx\t=\t1\t", "x = 1"}, {"x = 1\r", "x = 1"},
        {"x = \xC3\xA9 + 1", "x = \xC3\xA9 + 1"}, {"x\xFF=1", "x\xFF = 1"}, {"x=@+?", "x = @ + ?"},
        {"x = a !b", "x = a !b"}, {"x = a#", "x = a #"}, {"#", "#"}, {")))(((", ")))((("},
        {",,,", ",,,"}, {"= = =", "= = ="}, {"x = \\a", "x = \\a"},
        {std::string("x=\0y", 4), std::string("x = \0y", 6)}}},
};
// clang-format on

class CleanLines : public ::testing::TestWithParam<Group> {};

// Each line cleans to its form, and cleaning a clean line changes nothing.
TEST_P(CleanLines, AsTheTableSaysAndStayClean) {
    for (const Case& c : GetParam().cases) {
        const std::string once = cleanBasicLine(c.in);
        EXPECT_EQ(once, c.out) << "line: " << c.in;
        EXPECT_EQ(cleanBasicLine(once), once) << "line: " << c.in;
    }
}

INSTANTIATE_TEST_SUITE_P(LineCleaner, CleanLines, ::testing::ValuesIn(kGroups),
                         [](const auto& info) { return std::string(info.param.name); });

std::string withoutWhiteSpace(const std::string& text) {
    std::string out;
    for (char c : text)
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n' && c != '\v' && c != '\f') out += c;
    return out;
}

// Random lines from pieces that stress the decisions: the result is stable and
// differs from the line only in white space.
TEST(LineCleaner, RandomLinesLoseNothingAndAreStable) {
    const std::vector<std::string> pieces = {
        "a",  "b1",       "x.", ".",    " ",  ".5",   "5",   "-",   "+",    "--",   "++",
        "=",  "==",       "<",  ">",    "<>", "!",    "~",   "#",   "#[2]", "[",    "]",
        "(",  ")",        ",",  ";",    ":",  "&",    "%",   "&H",  "\"",   "'",    "/",
        "*",  "^",        "|",  "Then", "To", "Step", "If",  "and", "Not",  "ASM:", "sim",
        "\t", "\xC3\xA9", "@",  "$",    "E",  "0FFH", "Mod", "lab", "//"};
    std::mt19937 random(20240611);
    for (int n = 0; n < 50000; ++n) {
        std::string line;
        const int count = static_cast<int>(random() % 12);
        for (int k = 0; k < count; ++k) line += pieces[random() % pieces.size()];
        const std::string once = cleanBasicLine(line);
        ASSERT_EQ(cleanBasicLine(once), once) << "line: " << line;
        ASSERT_EQ(withoutWhiteSpace(once), withoutWhiteSpace(line)) << "line: " << line;
    }
}

// Lines of 100,000 characters: all complete, keep every character, and cost
// time in proportion to their length (each character is looked at a fixed number
// of times; a quadratic pass would take minutes here).
TEST(LineCleaner, VeryLongLines) {
    std::string sum = "x=a";
    for (int i = 0; i < 50000; ++i) sum += "+b";
    std::string dotted = "x = a";
    for (int i = 0; i < 50000; ++i) dotted += " .";
    const std::string signs = "x = " + std::string(100000, '-');
    struct Long {
        std::string line;
        size_t cleanedSize;
        std::string cleanedStart;
    } cases[] = {
        {sum, 200005, "x = a + b + b"},                           // blanks around each "+"
        {std::string(100000, 'a'), 100000, "aaaa"},               // one word
        {std::string(100000, '('), 100000, "(((("},               // nothing but "("
        {std::string(100000, ' ') + "x", 1, "x"},                 // leading blanks
        {"x=\"" + std::string(100000, ' '), 100005, "x = \"  "},  // an open quote
        {"' " + std::string(100000, '\''), 100002, "' ''"},       // a comment
        {dotted, 50005, "x = a..."},                              // dots join the word
        {signs, 150003, "x = -- -- "},                            // decrements kept apart
    };
    for (const Long& c : cases) {
        const std::string once = cleanBasicLine(c.line);
        EXPECT_EQ(once.size(), c.cleanedSize) << c.cleanedStart;
        EXPECT_EQ(once.substr(0, c.cleanedStart.size()), c.cleanedStart);
        EXPECT_EQ(withoutWhiteSpace(once), withoutWhiteSpace(c.line)) << c.cleanedStart;
        EXPECT_EQ(cleanBasicLine(once), once) << c.cleanedStart;
    }
}

}  // namespace
}  // namespace mb
