#include "assembler/format_code.h"

#include "assembler/editor_marks.h"
#include "assembler/source_text.h"
#include "test_support.h"

namespace mb::testing {
namespace {

std::string Sp(int n) {
    return std::string(static_cast<size_t>(n), ' ');
}

TEST(FormatCode, LinesWithDefaultOptions) {
    const FormatCodeOptions o;
    const std::pair<std::string, std::string> cases[] = {
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
    for (const auto& [in, want] : cases) EXPECT_EQ(FormatCodeLine(in, o), want) << in;
}

using O = FormatCodeOptions;

// The default options with fields changed: With(&O::A, 1, &O::B, 2, ...).
O With() {
    return O();
}
template <typename... Rest>
O With(int O::*field, int value, Rest... rest) {
    O o = With(rest...);
    o.*field = value;
    return o;
}

TEST(FormatCode, EachOptionChangesItsField) {
    const O colon = With(&O::LabelAddColon, 1), noLabelTabs = With(&O::LabelTabs, 0);
    const O labelWidth = With(&O::LabelTabs, 0, &O::LabelWidth, 10);
    struct Case {
        const char* what;
        O options;
        std::string in, want;
    } cases[] = {
        {"colon added", colon, "START LD A,1", "START:\tLD A,1"},
        {"colon not doubled", colon, "START: NOP", "START:\tNOP"},
        {"colon on a label alone", colon, "END_1", "END_1:"},
        {"no colon on a directive", colon, "ORG 100", "ORG\t100"},
        {"no colon on .ORG", colon, ".ORG 100", ".ORG\t100"},
        {"no colon on X=5", colon, "X=5", "X=5"},
        {"no label, no colon", colon, " NOP", "\tNOP"},
        {"two label tabs", With(&O::LabelTabs, 2), "A1 NOP", "A1\t\tNOP"},
        {"no label tabs", noLabelTabs, "A1 NOP", "A1 NOP"},
        {"no label tabs, no label", noLabelTabs, "  NOP", " NOP"},
        {"label min space", With(&O::LabelTabs, 0, &O::LabelMinSpace, 4), "A1 NOP", "A1    NOP"},
        {"label width", labelWidth, "A1 NOP", "A1" + Sp(8) + "NOP"},
        {"label wider than its field", labelWidth, "LONGLABEL12 NOP", "LONGLABEL12 NOP"},
        {"argument tab", With(&O::ArgumentTabs, 1), " LD A,1", "\tLD\tA,1"},
        {"argument min space", With(&O::ArgumentMinSpace, 3), " LD A,1", "\tLD   A,1"},
        {"argument min space 0 keeps one", With(&O::ArgumentMinSpace, 0), " LD A,1", "\tLD A,1"},
        {"argument width", With(&O::ArgumentWidth, 6), " LD A,1", "\tLD" + Sp(4) + "A,1"},
        {"space after comma", With(&O::ArgumentSpaceAfterComma, 1), " LD A ,1", "\tLD A, 1"},
        {"space after comma, quoted commas kept", With(&O::ArgumentSpaceAfterComma, 1),
         " DB ',',\"a,b\",2,", "\tDB ',', \"a,b\", 2,"},
        {"no blanks after semicolon", With(&O::CommentSpacesAfterSemicolon, 0), ";   x", ";x"},
        {"comment tab", With(&O::CommentTabs, 1), " NOP ; x", "\tNOP\t;  x"},
        {"comment tab, comment alone", With(&O::CommentTabs, 1), "  ; x", "\t;  x"},
        {"comment column", With(&O::CommentStartColumn, 40), " NOP ; x", "\tNOP" + Sp(29) + ";  x"},
        {"comment min space", With(&O::CommentMinSpace, 5), " LD HL,A_VERY_LONG_LABEL_NAME ; c",
         "\tLD HL,A_VERY_LONG_LABEL_NAME     ;  c"},
        {"wild width is limited", With(&O::LabelTabs, 0, &O::LabelWidth, 1 << 30), "A NOP",
         "A" + Sp(254) + "NOP"},
    };
    for (const Case& c : cases) EXPECT_EQ(FormatCodeLine(c.in, c.options), c.want) << c.what;
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

    // Writing stores every field under its own name.
    FormatCodeOptions changed = read;
    for (const auto& [name, member] : keys) changed.*member += 100;
    WriteFormatCodeOptions(settings, changed);
    for (const auto& [name, member] : keys)
        EXPECT_EQ(settings.GetSettingInt(std::string("Assembler Format Code - ") + name, -1),
                  read.*member + 100)
            << name;
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

// Option sets that between them change every field; the first is the defaults.
const O kVariants[] = {
    O(),
    With(&O::LabelAddColon, 1, &O::ArgumentTabs, 1, &O::CommentTabs, 2, &O::ArgumentSpaceAfterComma,
         1),
    With(&O::LabelTabs, 0, &O::LabelMinSpace, 0, &O::ArgumentMinSpace, 0, &O::CommentMinSpace, 0,
         &O::CommentStartColumn, 0, &O::CommentSpacesAfterSemicolon, 0),
    With(&O::LabelTabs, 0, &O::LabelWidth, 12, &O::ArgumentWidth, 8, &O::CommentStartColumn, 44,
         &O::LabelAddColon, 1),
};

using FormatAndAssemble = AssemblerFixture;

// Formatting a second time changes nothing, and the formatted source assembles
// to the bytes of the original.
TEST_F(FormatAndAssemble, FormattedSourceIsStableAndGivesTheSameBytes) {
    const std::string sources[] = {kMixedSource, ReadText(MB_TEST_DATA "/corpus/official.asm")};
    for (const std::string& source : sources) {
        Write("prog.asm", source);
        ASSERT_EQ(Assemble(), 0) << assembler->FormatAssemblerErrors();
        const std::string bytes = Read("prog.obj");
        ASSERT_FALSE(bytes.empty());
        for (int v = 0; v < static_cast<int>(std::size(kVariants)); ++v) {
            const std::string formatted = FormatCode(source, kVariants[v]);
            EXPECT_NE(formatted, source);
            EXPECT_EQ(FormatCode(formatted, kVariants[v]), formatted) << "variant " << v;
            Write("prog.asm", formatted);
            EXPECT_EQ(Assemble(), 0) << "variant " << v << "\n"
                                     << assembler->FormatAssemblerErrors() << formatted;
            EXPECT_EQ(Read("prog.obj"), bytes) << "variant " << v << "\n" << formatted;
        }
    }
}

}  // namespace
}  // namespace mb::testing
