#include "assembler/asm_highlight.h"

#include <gtest/gtest.h>

#include <string>

namespace mb {
namespace {

// Renders the spans as "word:class" pairs for readable expectations.
std::string Classes(const std::string& line) {
    std::string out;
    for (const AsmSpan& s : HighlightAsmLine(line)) {
        static const char* kNames[] = {"-", "mn", "reg", "dir", "com", "str", "num"};
        if (!out.empty()) out += ' ';
        out += line.substr(s.Start, s.Length) + ":" + kNames[static_cast<int>(s.Style)];
    }
    return out;
}

TEST(AsmHighlight, WordsGetTheirClasses) {
    const std::pair<const char*, const char*> cases[] = {
        {"\tld a,(ix+5)", "ld:mn a:reg ix:reg 5:num"},
        {"loop:\tDJNZ loop ; again", "DJNZ:mn ; again:com"},
        {"start LD HL,0FFFFh", "LD:mn HL:reg 0FFFFh:num"},
        {"\tEX AF,AF'", "EX:mn AF:reg AF':reg"},
        {"\t.org 100h", ".org:dir 100h:num"},
        {"\tDEFB 'a;b', \"x\" ;c", "DEFB:dir 'a;b':str \"x\":str ;c:com"},
        {"COUNT EQU $10", "EQU:dir $10:num"},
        {"\tJP NZ,far", "JP:mn NZ:reg"},
        {"; only a comment", "; only a comment:com"},
        {"ld a,1", "1:num"},  // an instruction in the label column is a label
        {"\tDB 'open", "DB:dir 'open:str"},
        {"", ""},
    };
    for (const auto& [line, expected] : cases) EXPECT_EQ(Classes(line), expected) << line;
}

TEST(AsmHighlight, SpansStayInsideTheLine) {
    const std::string lines[] = {"'", "\"", ";", "AF'", "\tEX AF,AF", "x:", "\t$", "%"};
    for (const std::string& line : lines)
        for (const AsmSpan& s : HighlightAsmLine(line)) {
            EXPECT_GE(s.Start, 0) << line;
            EXPECT_LE(s.Start + s.Length, static_cast<int>(line.size())) << line;
        }
}

}  // namespace
}  // namespace mb
