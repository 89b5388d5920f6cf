#include "assembler/format_code.h"

#include <fstream>
#include <sstream>

#include "assembler/editor_marks.h"
#include "assembler/source_text.h"
#include "test_support.h"

namespace mb::testing {
namespace {

std::string Sp(int n) {
    return std::string(static_cast<size_t>(n), ' ');
}

struct LineCase {
    std::string in, want;
};

TEST(FormatCode, LinesWithDefaultOptions) {
    const FormatCodeOptions o;
    const LineCase cases[] = {
        {"START: LD HL,MESSAGE", "START:\tLD HL,MESSAGE"},
        {"  ld   a ,  b", "\tld a,b"},
        {"LOOP\tDJNZ   LOOP\t ", "LOOP\tDJNZ LOOP"},
        {"MESSAGE:   DB \"HELLO\",0", "MESSAGE:\tDB \"HELLO\",0"},
        {"\tLD A,1 ; load", "\tLD A,1" + Sp(16) + ";  load"},
        // Quotes hold ";", "," and runs of blanks.
        {" DB \"a;b,  c\" ,  ';'  ;  note", "\tDB \"a;b,  c\",';'" + Sp(6) + ";  note"},
        {" CP ';' ; semicolon", "\tCP ';'" + Sp(16) + ";  semicolon"},
        // The quote of AF' opens nothing: the comment is still found.
        {" EX AF,AF' ; swap, 'now'", "\tEX AF,AF'" + Sp(13) + ";  swap, 'now'"},
        {" ex af , af'", "\tex af,af'"},
        // An unclosed quote runs to the end of the line.
        {" DB \"abc ; not  a comment", "\tDB \"abc ; not  a comment"},
        {"X EQU 5", "X\tEQU 5"},
        {"  ORG   8000H", "\tORG 8000H"},
        {".ORG 100", ".ORG\t100"},
        {"X=5", "X=5"},
        {"loop:ld a,1", "loop:\tld a,1"},
        {"DONE", "DONE"},
        {"DONE:   ; the end", "DONE:" + Sp(25) + ";  the end"},
        {" NOP ;", "\tNOP" + Sp(19) + ";"},
        {" LD HL,A_VERY_LONG_LABEL_NAME ; c", "\tLD HL,A_VERY_LONG_LABEL_NAME   ;  c"},
        // Tabs advance to the next multiple of 8.
        {"ABCDEFGHIJ NOP ; x", "ABCDEFGHIJ\tNOP" + Sp(11) + ";  x"},
        // Comments on lines of their own: column 0 stays, the others move.
        {";   header   text  ", ";  header   text"},
        {"\t\t;note", Sp(30) + ";  note"},
        {";", ";"},
        {"", ""},
        {"  \t  ", ""},
        // Lines that must stay byte for byte.
        {";protected:ab  c", ";protected:ab  c"},
        {std::string(kBookmarksComment) + "bookmarks=1",
         std::string(kBookmarksComment) + "bookmarks=1"},
    };
    for (const LineCase& c : cases) EXPECT_EQ(FormatCodeLine(c.in, o), c.want) << c.in;
}

TEST(FormatCode, EachOptionChangesItsField) {
    struct Case {
        const char* what;
        void (*set)(FormatCodeOptions&);
        std::string in, want;
    } cases[] = {
        {"colon added", [](FormatCodeOptions& o) { o.LabelAddColon = 1; }, "START LD A,1",
         "START:\tLD A,1"},
        {"colon not doubled", [](FormatCodeOptions& o) { o.LabelAddColon = 1; }, "START: NOP",
         "START:\tNOP"},
        {"colon on a label alone", [](FormatCodeOptions& o) { o.LabelAddColon = 1; }, "END_1",
         "END_1:"},
        {"no colon on a directive", [](FormatCodeOptions& o) { o.LabelAddColon = 1; }, "ORG 100",
         "ORG\t100"},
        {"no colon on .ORG", [](FormatCodeOptions& o) { o.LabelAddColon = 1; }, ".ORG 100",
         ".ORG\t100"},
        {"no colon on X=5", [](FormatCodeOptions& o) { o.LabelAddColon = 1; }, "X=5", "X=5"},
        {"no label, no colon", [](FormatCodeOptions& o) { o.LabelAddColon = 1; }, " NOP", "\tNOP"},
        {"two label tabs", [](FormatCodeOptions& o) { o.LabelTabs = 2; }, "A1 NOP", "A1\t\tNOP"},
        {"no label tabs", [](FormatCodeOptions& o) { o.LabelTabs = 0; }, "A1 NOP", "A1 NOP"},
        {"no label tabs, no label", [](FormatCodeOptions& o) { o.LabelTabs = 0; }, "  NOP", " NOP"},
        {"label min space",
         [](FormatCodeOptions& o) {
             o.LabelTabs = 0;
             o.LabelMinSpace = 4;
         },
         "A1 NOP", "A1    NOP"},
        {"label width",
         [](FormatCodeOptions& o) {
             o.LabelTabs = 0;
             o.LabelWidth = 10;
         },
         "A1 NOP", "A1" + Sp(8) + "NOP"},
        {"label wider than its field",
         [](FormatCodeOptions& o) {
             o.LabelTabs = 0;
             o.LabelWidth = 10;
         },
         "LONGLABEL12 NOP", "LONGLABEL12 NOP"},
        {"argument tab", [](FormatCodeOptions& o) { o.ArgumentTabs = 1; }, " LD A,1", "\tLD\tA,1"},
        {"argument min space", [](FormatCodeOptions& o) { o.ArgumentMinSpace = 3; }, " LD A,1",
         "\tLD   A,1"},
        {"argument min space 0 keeps one", [](FormatCodeOptions& o) { o.ArgumentMinSpace = 0; },
         " LD A,1", "\tLD A,1"},
        {"argument width", [](FormatCodeOptions& o) { o.ArgumentWidth = 6; }, " LD A,1",
         "\tLD" + Sp(4) + "A,1"},
        {"space after comma", [](FormatCodeOptions& o) { o.ArgumentSpaceAfterComma = 1; },
         " LD A ,1", "\tLD A, 1"},
        {"space after comma, quoted commas kept",
         [](FormatCodeOptions& o) { o.ArgumentSpaceAfterComma = 1; }, " DB ',',\"a,b\",2,",
         "\tDB ',', \"a,b\", 2,"},
        {"no blanks after semicolon",
         [](FormatCodeOptions& o) { o.CommentSpacesAfterSemicolon = 0; }, ";   x", ";x"},
        {"comment tab", [](FormatCodeOptions& o) { o.CommentTabs = 1; }, " NOP ; x", "\tNOP\t;  x"},
        {"comment tab, comment alone", [](FormatCodeOptions& o) { o.CommentTabs = 1; }, "  ; x",
         "\t;  x"},
        {"comment column", [](FormatCodeOptions& o) { o.CommentStartColumn = 40; }, " NOP ; x",
         "\tNOP" + Sp(29) + ";  x"},
        {"comment min space", [](FormatCodeOptions& o) { o.CommentMinSpace = 5; },
         " LD HL,A_VERY_LONG_LABEL_NAME ; c", "\tLD HL,A_VERY_LONG_LABEL_NAME     ;  c"},
        {"wild width is limited",
         [](FormatCodeOptions& o) {
             o.LabelTabs = 0;
             o.LabelWidth = 1 << 30;
         },
         "A NOP", "A" + Sp(254) + "NOP"},
    };
    for (const Case& c : cases) {
        FormatCodeOptions o;
        c.set(o);
        EXPECT_EQ(FormatCodeLine(c.in, o), c.want) << c.what;
    }
}

TEST(FormatCode, TextKeepsItsLineBreaks) {
    const FormatCodeOptions o;
    EXPECT_EQ(FormatCode("START LD A,1\r\n  NOP  \r\n\r\n;c", o),
              "START\tLD A,1\r\n\tNOP\r\n\r\n;  c");
    EXPECT_EQ(FormatCode("A NOP\n B\n", o), "A\tNOP\n\tB\n");
    EXPECT_EQ(FormatCode("A NOP\r B\r\n", o), "A\tNOP\r\tB\r\n");
    EXPECT_EQ(FormatCode("", o), "");
}

TEST(FormatCode, OptionsLiveInTheSettings) {
    MemorySettingsStore settings;
    const FormatCodeOptions defaults = ReadFormatCodeOptions(settings);
    EXPECT_EQ(settings.GetSettingInt("Assembler Format Code - Comment Start Column", -1), 30);
    EXPECT_EQ(settings.GetSettingInt("Assembler Format Code - Label Tabs", -1), 1);
    EXPECT_EQ(defaults.CommentMinSpace, 3);

    const std::pair<const char*, int FormatCodeOptions::*> keys[] = {
        {"Label Add Colon", &FormatCodeOptions::LabelAddColon},
        {"Label Tabs", &FormatCodeOptions::LabelTabs},
        {"Label Min Space", &FormatCodeOptions::LabelMinSpace},
        {"Label Width", &FormatCodeOptions::LabelWidth},
        {"Argument Tabs", &FormatCodeOptions::ArgumentTabs},
        {"Argument Min Space", &FormatCodeOptions::ArgumentMinSpace},
        {"Argument Width", &FormatCodeOptions::ArgumentWidth},
        {"Argument Space After Comma", &FormatCodeOptions::ArgumentSpaceAfterComma},
        {"Comment Spaces After Semicolon", &FormatCodeOptions::CommentSpacesAfterSemicolon},
        {"Comment Tabs", &FormatCodeOptions::CommentTabs},
        {"Comment Start Column", &FormatCodeOptions::CommentStartColumn},
        {"Comment Min Space", &FormatCodeOptions::CommentMinSpace},
    };
    int value = 100;
    for (const auto& [name, member] : keys)
        settings.SetSettingInt(std::string("Assembler Format Code - ") + name, ++value);
    const FormatCodeOptions read = ReadFormatCodeOptions(settings);
    value = 100;
    for (const auto& [name, member] : keys) EXPECT_EQ(read.*member, ++value) << name;

    FormatCodeOptions changed;
    changed.ArgumentWidth = 7;
    changed.CommentTabs = 2;
    WriteFormatCodeOptions(settings, changed);
    EXPECT_EQ(settings.GetSettingInt("Assembler Format Code - Argument Width", -1), 7);
    EXPECT_EQ(settings.GetSettingInt("Assembler Format Code - Comment Tabs", -1), 2);
    EXPECT_EQ(settings.GetSettingInt("Assembler Format Code - Label Tabs", -1), 1);
}

// A source with every kind of line the formatter treats on its own.
const char* const kMixedSource =
    "; Formatting must not change a single byte.\r\n"
    "\tORG 100H\r\n"
    "COUNT   EQU 5\r\n"
    "LIMIT = COUNT*2\r\n"
    "X=3\r\n"
    "start:ld  a , COUNT   ; load\r\n"
    "LOOP    DJNZ   LOOP\r\n"
    "        EX AF,AF'   ; swap, then 'go'\r\n"
    "  ex   af , af'\r\n"
    "\tLD  HL , ( TABLE + 1 )\r\n"
    "        LD (IX + 2) , A\r\n"
    "TABLE:  DB \"a;b,  c\" , ';' , ',' ,  0   ;data\r\n"
    "        DB 'it''s'\r\n"
    "        DW LOOP , TABLE , LIMIT\r\n"
    "        DS 3 , 0FFH\r\n"
    "\r\n"
    "   \t\r\n"
    "DONE\r\n"
    "        ;  indented comment\r\n"
    "        HALT\r\n"
    "        END\r\n";

FormatCodeOptions Variant(int n) {
    FormatCodeOptions o;
    switch (n) {
        case 1:
            o.LabelAddColon = 1;
            o.ArgumentSpaceAfterComma = 1;
            o.ArgumentTabs = 1;
            o.CommentTabs = 2;
            break;
        case 2:
            o.LabelTabs = 0;
            o.LabelMinSpace = 0;
            o.ArgumentMinSpace = 0;
            o.CommentMinSpace = 0;
            o.CommentStartColumn = 0;
            o.CommentSpacesAfterSemicolon = 0;
            break;
        case 3:
            o.LabelTabs = 0;
            o.LabelWidth = 12;
            o.ArgumentWidth = 8;
            o.CommentStartColumn = 44;
            o.LabelAddColon = 1;
            break;
        default: break;
    }
    return o;
}

constexpr int kVariants = 4;

std::string ReadCorpus(const std::string& name) {
    std::ifstream in(std::string(MB_TEST_DATA) + "/corpus/" + name, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

TEST(FormatCode, FormattingTwiceChangesNothing) {
    const std::string sources[] = {kMixedSource, ReadCorpus("official.asm")};
    for (const std::string& source : sources) {
        ASSERT_FALSE(source.empty());
        for (int v = 0; v < kVariants; ++v) {
            const std::string once = FormatCode(source, Variant(v));
            EXPECT_EQ(FormatCode(once, Variant(v)), once) << "variant " << v;
        }
    }
}

using FormatAndAssemble = AssemblerFixture;

TEST_F(FormatAndAssemble, FormattedSourceGivesTheSameBytes) {
    const std::string sources[] = {kMixedSource, ReadCorpus("official.asm")};
    for (const std::string& source : sources) {
        Write("prog.asm", source);
        ASSERT_EQ(Assemble(), 0) << assembler->FormatAssemblerErrors();
        const std::string bytes = Read("prog.obj");
        ASSERT_FALSE(bytes.empty());
        for (int v = 0; v < kVariants; ++v) {
            const std::string formatted = FormatCode(source, Variant(v));
            EXPECT_NE(formatted, source);
            Write("prog.asm", formatted);
            EXPECT_EQ(Assemble(), 0) << "variant " << v << "\n"
                                     << assembler->FormatAssemblerErrors() << formatted;
            EXPECT_EQ(Read("prog.obj"), bytes) << "variant " << v << "\n" << formatted;
        }
    }
}

}  // namespace
}  // namespace mb::testing
