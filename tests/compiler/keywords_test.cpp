#include "compiler/keywords.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace mb {
namespace {

// The language's words in the order in which the table loads them.
const char* const kLanguageWords =
    "Dim As Boolean Bit Short Integer Long Single Byte Word UShort UInteger ULong String StrPtr "
    "SetStrPtr CShort CInteger CLong CSingle CUShort CUInteger CULong VarAddr True False LB HB 3B "
    "4B LW HW Mod Include IncludeASM Const Define #define #sim #simio ASM ShiftLeft ShiftRight "
    "Pointer Not Or And Xor While Wend If Then Else Endif Select Case EndSelect For To Step Next "
    "CFor CNext Goto Sub Gosub Return End Proc Function ReturnValue Exit Call ByVal ByRef "
    "ByRefOut Print CrLf Cr Lf Qt STRING_MAX_LENGTH SINGLE_DECIMAL_PLACES PRINT_SINGLE_DIGITS "
    "Asc Chr Len FillStr InStr LeftStr RightStr MidStr LTrim RTrim StrValB StrValW StrValL "
    "StrValS InStrRev LTrimChr RTrimChr CountChr ReplaceChr LCase UCase HexStr DecFromHex "
    "ReverseStr LShiftStr RShiftStr LRotateStr RRotateStr Peek Poke Get Put SetBit ResetBit "
    "InvertBit TestBit MakeBit Sqr Ln Log Exp Sin Cos Tan ROMEND RAMSTART RAMEND";

std::vector<std::string> languageWords() {
    std::istringstream in(kLanguageWords);
    std::vector<std::string> words;
    for (std::string w; in >> w;) words.push_back(w);
    return words;
}

TEST(Keywords, TheLoadLogListsEveryWordInOrder) {
    const std::vector<std::string> words = languageWords();
    ASSERT_EQ(words.size(), 131u);
    std::string expected;
    for (const std::string& w : words) expected += "keyword (main): " + w + "\r\n";
    EXPECT_EQ(keywordLoadLog(), expected);
    ASSERT_EQ(keywordTable().rows().size(), words.size());
    for (size_t i = 0; i < words.size(); ++i) EXPECT_EQ(keywordTable().rows()[i].name, words[i]);
}

TEST(Keywords, LookupIgnoresCase) {
    struct Case {
        const char* name;
        bool keyword;
    } cases[] = {
        // clang-format off
        {"Dim", true}, {"dim", true}, {"DIM", true}, {"#DEFINE", true}, {"#Sim", true},
        {"3b", true}, {"string_max_length", true}, {"true", true}, {"Dimension", false},
        {"Di", false}, {"", false}, {"Rem", false}, {"Symbol", false}, {"Resume", false},
        {"On", false}, {"Dim ", false}, {"#sim(1)", false}, {"x", false},
        // clang-format on
    };
    for (const Case& c : cases) EXPECT_EQ(isKeyword(c.name), c.keyword) << c.name;
}

TEST(Keywords, AllReservedButTrueAndFalse) {
    for (const Keyword& k : keywordTable().rows()) {
        const bool constant = k.name == "True" || k.name == "False";
        EXPECT_EQ(k.reservedKeyword, !constant) << k.name;
    }
    struct Case {
        const char* name;
        const char* match;
    } cases[] = {
        {"integer", "Integer"}, {"SQR", "Sqr"}, {"ramend", "RAMEND"}, {"bYvAl", "ByVal"},
        {"True", ""},           {"FALSE", ""},  {"counter", ""},      {"", ""},
    };
    for (const Case& c : cases) EXPECT_EQ(reservedKeywordMatching(c.name), c.match) << c.name;
    EXPECT_EQ(reservedKeywordMessage("Integer"),
              "Reserved system keyword 'Integer' used for user element name.");
}

TEST(Keywords, ColourClasses) {
    struct Case {
        const char* name;
        KeywordClass colourClass;
    } cases[] = {
        {"Dim", KeywordClass::Declaration},    {"ByRefOut", KeywordClass::Declaration},
        {"Proc", KeywordClass::Declaration},   {"Word", KeywordClass::Type},
        {"StrPtr", KeywordClass::Type},        {"Goto", KeywordClass::Statement},
        {"Poke", KeywordClass::Statement},     {"Peek", KeywordClass::Function},
        {"CULong", KeywordClass::Function},    {"VarAddr", KeywordClass::Function},
        {"Mod", KeywordClass::Operator},       {"ShiftRight", KeywordClass::Operator},
        {"#simio", KeywordClass::Directive},   {"ASM", KeywordClass::Directive},
        {"RAMSTART", KeywordClass::Directive}, {"Qt", KeywordClass::Constant},
        {"False", KeywordClass::Constant},     {"HW", KeywordClass::RegisterPart},
    };
    for (const Case& c : cases) {
        const Keyword* k = keywordTable().find(c.name);
        ASSERT_NE(k, nullptr) << c.name;
        EXPECT_EQ(k->colourClass, c.colourClass) << c.name;
    }
}

TEST(Keywords, ATableRefusesAWordItHasInAnyCase) {
    KeywordTable table;
    EXPECT_TRUE(table.add("Print", true, KeywordClass::Statement));
    EXPECT_FALSE(table.add("PRINT", false, KeywordClass::Function));
    EXPECT_FALSE(table.add("Print", true, KeywordClass::Statement));
    EXPECT_TRUE(table.add("Printer", true, KeywordClass::Statement));
    EXPECT_EQ(table.loadLog(),
              "keyword (main): Print\r\n"
              "keyword blocked (main): PRINT\r\n"
              "keyword blocked (main): Print\r\n"
              "keyword (main): Printer\r\n");
    ASSERT_EQ(table.rows().size(), 2u);
    // The first spelling and its properties stay.
    const Keyword* k = table.find("print");
    ASSERT_NE(k, nullptr);
    EXPECT_EQ(k->name, "Print");
    EXPECT_TRUE(k->reservedKeyword);
    EXPECT_EQ(k->colourClass, KeywordClass::Statement);
}

}  // namespace
}  // namespace mb
