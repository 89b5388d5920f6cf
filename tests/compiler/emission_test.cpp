// The text conventions of the output: loads and stores of plain variables (run
// on the core to show they move the right bytes), labels, the TASM rewrite, the
// protected stretches and the single-byte file form.
#include <gtest/gtest.h>

#include "compiler/output_text.h"
#include "core/numtext.h"
#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

// A compiler whose second run is under way, so that the emitters write.
class Emitting : public ::testing::Test {
  protected:
    // Declares the variables of decls in a compile of its own, then keeps the
    // compiler to call the emitters on.
    void Declare(const std::string& decls) {
        std::string uses;
        std::istringstream in(decls);
        std::string line;
        while (std::getline(in, line)) {
            const std::size_t space = line.find(' ', 4);
            uses += "ASM: LD HL," + line.substr(4, space - 4) + "\r\n";
        }
        ASSERT_EQ(b.Compile(decls + uses), 0);
        marker = b.compiler->state().outputLines.size();
    }
    std::vector<std::string> Emitted() const {
        const auto& lines = b.compiler->state().outputLines;
        return {lines.begin() + static_cast<long>(marker), lines.end()};
    }
    int Offset(const std::string& name) {
        const int row = b.compiler->findVariable(name);
        return b.compiler->state().symbols[row].address;
    }
    // The lines that loading each variable (a constant when it has no row) emits.
    struct Load {
        TypeCode target;
        const char* reg;
        TypeCode source;
        const char* variable;
        std::vector<std::string> code;
    };
    void ExpectLoads(const std::vector<Load>& loads) {
        for (const Load& l : loads) {
            marker = b.compiler->state().outputLines.size();
            const int offset = b.compiler->findVariable(l.variable) < 0 ? 0 : Offset(l.variable);
            ASSERT_TRUE(b.compiler->load(l.target, l.reg, l.source, l.variable, offset));
            EXPECT_EQ(Emitted(), l.code) << l.variable << " into " << l.reg;
        }
    }

    BasicRun b{"emitting"};
    std::size_t marker = 0;
};

TEST_F(Emitting, EightBitLoadsUseIxOnlyWithinReach) {
    b.options.optimizeVariables = false;
    // 125 bytes of padding put `near` at offset -126 and `far` at -127.
    Declare("Dim pad(125) As Byte\nDim near As Byte\nDim far As Byte\n");
    ASSERT_EQ(Offset("near"), -126);
    ASSERT_EQ(Offset("far"), -127);
    const TypeCode u8 = kTypeUShort;
    ExpectLoads({{u8, "L", u8, "near", {"\tLD L,(IX-7EH)"}},
                 {u8, "L", u8, "far", {"\tLD HL,0FE81H", "\tLD L,(HL)"}},
                 {u8, "A", u8, "near", {"\tLD A,(0FE82H)"}},
                 {u8, "E", u8, "far", {"\tLD HL,0FE81H", "\tLD E,(HL)"}}});
}

TEST_F(Emitting, WideningLoadsTable) {
    Declare("Dim b As Byte\nDim s As Short\nDim w As Word\nDim i As Integer\nDim l As Long\n");
    auto at = [this](const char* v, int plus = 0) {
        return "(" + codeHex4(0xFF00 + Offset(v) + plus) + ")";
    };
    const std::string ixb = "(IX-" + codeHex2(-Offset("b")) + ")";
    const TypeCode i32 = kTypeLong, i16 = kTypeInteger;
    // clang-format off
    ExpectLoads({
        {i32, "BC:DE", kTypeUShort, "b", {"\tLD E," + ixb, "\tLD BC,0000H", "\tLD D,B"}},
        {i32, "BC:DE", kTypeShort, "s",
         {"\tLD A," + at("s"), "\tLD E,A", "\tRLCA", "\tSBC A,A", "\tLD D,A", "\tLD C,A",
          "\tLD B,A"}},
        {i32, "BC:DE", kTypeUInteger, "w", {"\tLD DE," + at("w"), "\tLD BC,0000H"}},
        {i32, "BC:DE", i16, "i",
         {"\tLD DE," + at("i"), "\tLD A,D", "\tRLCA", "\tSBC A,A", "\tLD C,A", "\tLD B,A"}},
        {i32, "BC:DE", i32, "l", {"\tLD DE," + at("l"), "\tLD BC," + at("l", 2)}},
        {i16, "HL", kTypeShort, "s",
         {"\tLD A," + at("s"), "\tLD L,A", "\tRLCA", "\tSBC A,A", "\tLD H,A"}},
        {i16, "DE", kTypeUShort, "b", {"\tLD E," + ixb, "\tLD D,00H"}},
        {i16, "HL", i16, "i", {"\tLD HL," + at("i")}}});
    // clang-format on
}

TEST_F(Emitting, ConstantLoads) {
    Declare("Dim b As Byte\n");
    const TypeCode u32 = kTypeULong;
    ExpectLoads({{u32, "A", u32, "0", {"\tXOR A"}},
                 {u32, "E", u32, "0", {"\tLD E,00H"}},
                 {u32, "A", u32, "255", {"\tLD A,0FFH"}},
                 {u32, "HL", u32, "4096", {"\tLD HL,1000H"}},
                 {u32, "DE", u32, "65535", {"\tLD DE,0FFFFH"}},
                 {u32, "BC:DE", u32, "100000", {"\tLD BC,0001H", "\tLD DE,86A0H"}}});
}

// Loads and stores between every pair of integer types, assembled and run: the
// target holds the source's value extended by its sign, or cut to its width.
TEST(EmittedCode, StoresMoveValuesBetweenTypes) {
    struct Type {
        const char* name;
        TypeCode code;
        int bytes;
        bool isSigned;
    };
    const Type types[] = {{"Byte", kTypeUShort, 1, false},   {"Short", kTypeShort, 1, true},
                          {"Word", kTypeUInteger, 2, false}, {"Integer", kTypeInteger, 2, true},
                          {"ULong", kTypeULong, 4, false},   {"Long", kTypeLong, 4, true}};
    const long long value = 0x89ABCDEF;  // high bits set in every part
    for (const Type& from : types) {
        for (const Type& to : types) {
            BasicRun b("emitted_stores");
            const std::string setSource = from.bytes == 1 ? "ASM: LD A,0EFh\r\nASM: LD (src),A\r\n"
                                          : from.bytes == 2
                                              ? "ASM: LD HL,0CDEFh\r\nASM: LD (src),HL\r\n"
                                              : "ASM: LD HL,0CDEFh\r\nASM: LD (src),HL\r\nASM: LD "
                                                "HL,89ABh\r\nASM: LD (src+2),HL\r\n";
            const std::string program = "Dim src As " + std::string(from.name) + "\r\nDim dst As " +
                                        to.name + "\r\n" + setSource + "ASM: LD HL,dst\r\n";
            ASSERT_EQ(b.Compile(program), 0);
            // Re-emit the program with the load and store behind the set-up lines.
            const CompilerState& st = b.compiler->state();
            const int src = b.compiler->findVariable("src"), dst = b.compiler->findVariable("dst");
            std::vector<std::string> lines = st.outputLines;
            const auto end = std::find(lines.begin(), lines.end(), "; End of user code");
            std::size_t mark = st.outputLines.size();
            const char* reg = to.bytes == 1 ? "E" : to.bytes == 2 ? "HL" : "BC:DE";
            ASSERT_TRUE(b.compiler->load(to.code, reg, from.code, "src", st.symbols[src].address));
            ASSERT_TRUE(b.compiler->store(to.code, st.symbols[dst].address, from.code, reg));
            const std::vector<std::string> code(st.outputLines.begin() + static_cast<long>(mark),
                                                st.outputLines.end());
            lines.insert(end, code.begin(), code.end());
            b.Write("moved.asm", Lines(lines));
            ASSERT_EQ(b.run.Assemble(b.dir.string(), "moved.asm"), 0) << b.run.AssemblerErrors;
            ASSERT_TRUE(b.run.Load((b.dir / "moved.obj").string()));
            ASSERT_TRUE(b.run.Run());
            const long long mask = (1LL << (8 * from.bytes)) - 1;
            long long expected = value & mask;
            if (from.isSigned && (expected >> (8 * from.bytes - 1)) & 1) expected -= mask + 1;
            expected &= (1LL << (8 * to.bytes)) - 1;
            const int a = b.AddressOf("dst");
            const long long got = to.bytes == 1   ? b.run.Byte(a)
                                  : to.bytes == 2 ? b.run.Word(a)
                                                  : b.run.Long(a);
            EXPECT_EQ(got, expected) << from.name << " into " << to.name;
        }
    }
}

TEST(EmittedText, LabelsCountToNineThousandNineHundredNinetyNineAndWrap) {
    MemorySettingsStore settings;
    CompileSink sink;
    Compiler c(settings, sink);
    std::vector<std::string> labels;
    for (int i = 0; i < 10001; ++i) labels.push_back(c.newLabel());
    EXPECT_EQ(labels[0], "L0001");
    EXPECT_EQ(labels[41], "L0042");
    EXPECT_EQ(labels[9998], "L9999");
    EXPECT_EQ(labels[9999], "L0000");
    EXPECT_EQ(labels[10000], "L0001");
}

TEST(EmittedText, LineForms) {
    MemorySettingsStore settings;
    CompileSink sink;
    Compiler c(settings, sink);
    c.emitLabel("L0012");
    c.emitLabel("L0013", "NOP");
    c.emitLabel("PRINT_STR", ".EQU 0FEC0H");
    c.emitCode("LD A,0FFH");
    c.emitComment("; 12: x = 1");
    EXPECT_EQ(c.state().outputLines,
              (std::vector<std::string>{"L0012:\t", "L0013:\tNOP", "PRINT_STR\t.EQU 0FEC0H",
                                        "\tLD A,0FFH", "; 12: x = 1"}));
    const struct {
        int value;
        const char* two;
        const char* four;
    } hex[] = {{0, "00H", "0000H"},
               {10, "0AH", "000AH"},
               {255, "0FFH", "00FFH"},
               {0xFEC0, "0C0H", "0FEC0H"},
               {0x9000, "00H", "9000H"}};
    for (const auto& h : hex) {
        EXPECT_EQ(codeHex2(h.value), h.two);
        EXPECT_EQ(codeHex4(h.value), h.four);
    }
}

TEST(EmittedText, TasmRewriteOfLowAndHigh) {
    const struct {
        const char* in;
        const char* out;
    } cases[] = {
        // clang-format off
        {"LD A,5", "LD A,5"}, {"LD BC,high 1234H", "LD BC,0012H"},
        {"LD BC,highw 100000", "LD BC,0001H"}, {"LD DE,loww 100000", "LD DE,86A0H"},
        {"LD A,low 4660", "LD A,0034H"}, {"LD A,high 4660", "LD A,0012H"},
        {"LD A,low high 74565", "LD A,0023H"}, {"LD A,low label", "LD A,label & 0FFH"},
        {"LD A,high label", "LD A,(label >> 8) & 0FFH"},
        {"LD A,high label + 1", "LD A,high label + 1"},
        // clang-format on
    };
    for (const auto& c : cases) EXPECT_EQ(tasmRewrite(c.in), c.out) << c.in;
}

TEST(EmittedText, ProtectedStretchesAndTheirMarkers) {
    const std::vector<std::string> lines = {"\tNOP", ";crypt_start", "A101:\tLD A,E",
                                            "\tRET", ";crypt_stop",  ";crypt_start",
                                            "\tEXX", ";crypt_stop",  "; End of listing"};
    LineProtection clear;
    EXPECT_EQ(joinOutputLines(lines, false, clear),
              "\tNOP\r\n;crypt_start\r\nA101:\tLD A,E\r\n\tRET\r\n\tEXX\r\n;crypt_stop\r\n; End of "
              "listing\r\n");
    LineProtection scramble;
    const std::string text = joinOutputLines(lines, true, scramble);
    // Three protected lines, read back in order by the assembler's reader.
    std::istringstream in(text);
    std::vector<std::string> read;
    std::string line;
    LineProtection reader;
    while (std::getline(in, line)) {
        line.pop_back();  // CR
        if (line.rfind(";protected:", 0) == 0) read.push_back(reader.UnprotectLine(line));
    }
    EXPECT_EQ(read, (std::vector<std::string>{"A101:\tLD A,E", "\tRET", "\tEXX"}));
    EXPECT_EQ(text.find(";crypt_stop\r\n;crypt_start"), std::string::npos);
}

TEST(EmittedText, SingleByteOutputTurnsALoneMicroSignIntoU) {
    EXPECT_EQ(singleByteOutput("1\xb5s \xc2\xb5s \xb5"), "1us \xc2\xb5s u");
}

TEST(EmittedText, InlineAssemblerNamesAndLabels) {
    BasicRun b("emitted_inline");
    ASSERT_EQ(b.Compile(Lines({"Dim count As Byte", "Dim Count As Word", "Const limit = 300",
                               "Const one = 1", "ASM:loop: LD A,(count)", "ASM: ld hl,Count+limit",
                               "ASM: CP one", "ASM: jr nz,loop", "ASM: LD A,COUNT", "ASM:again",
                               "ASM: LD DE,\"ab\""})),
              0);
    const std::string text = b.Asm();
    const std::string count = "0" + HexDigits(b.AddressOf("count"), 4) + "h";
    const std::string wide = "0" + HexDigits(b.AddressOf("Count"), 4) + "h";
    for (const std::string& line : std::vector<std::string>{
             "L0001:\tLD A,(" + count + ")\r\n", "\tLD hl," + wide + "+012Ch\r\n", "\tCP 01h\r\n",
             "\tJR nz,L0001\r\n", "\tLD A,COUNT\r\n", "L0002:\t\r\n", "\tLD DE,\"ab\"\r\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
    }
}

TEST_F(Emitting, TemporariesAreReusedAfterTheirStatement) {
    Declare("Dim a As Byte\n");
    Compiler& c = *b.compiler;
    const std::string t1 = c.newTemp(kTypeInteger);
    const std::string t2 = c.newTemp(kTypeInteger);
    const std::string l1 = c.newTemp(kTypeLong);
    EXPECT_EQ(t1, "corvalent_temp_integer_1");
    EXPECT_EQ(t2, "corvalent_temp_integer_2");
    EXPECT_EQ(l1, "corvalent_temp_long_3");
    c.freeTemp(t1);
    EXPECT_EQ(c.newTemp(kTypeInteger), t1);  // a freed row of the type serves again
    ASSERT_TRUE(c.endOfStatement());
    EXPECT_EQ(c.newTemp(kTypeLong), l1);  // all rows are free after a statement
    const auto lines = Emitted();
    ASSERT_EQ(lines.size(), 3u);
    const int row = c.findVariable(t1);
    EXPECT_EQ(lines[0], t1 + "\t.EQU " + codeHex4(0xFF00 + c.state().symbols[row].address));
    // Every temporary has its own bytes.
    const int a1 = c.state().symbols[c.findVariable(t1)].address;
    const int a2 = c.state().symbols[c.findVariable(t2)].address;
    const int a3 = c.state().symbols[c.findVariable(l1)].address;
    EXPECT_TRUE(a1 + 2 <= a2 || a2 + 2 <= a1);
    EXPECT_TRUE(a3 + 4 <= a1 || a1 + 2 <= a3);
}

TEST_F(Emitting, DynamicTemporariesShareTheirMemoryBetweenStatements) {
    b.options.dynamicTemps = true;
    Declare("Dim a As Byte\n");
    Compiler& c = *b.compiler;
    const std::size_t symbols = c.state().symbols.size();
    const std::string first = c.newTemp(kTypeLong);
    const int address = c.state().symbols[c.findVariable(first)].address;
    ASSERT_TRUE(c.endOfStatement());
    EXPECT_EQ(c.state().symbols.size(), symbols);  // gone from the table
    const std::string again = c.newTemp(kTypeLong);
    EXPECT_EQ(c.state().symbols[c.findVariable(again)].address, address);
    const auto lines = Emitted();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], ";     " + first + " address: " + codeHex4(0xFF00 + address));
}

}  // namespace
}  // namespace mb::testing
