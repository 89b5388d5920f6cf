// mbsim end to end: small hand-assembled programs written to a temporary
// folder, run by the built program, checked on stdout, stderr and exit status.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/numtext.h"
#include "tests/support/tool_run.h"

namespace mb::testing {
namespace {

namespace fs = std::filesystem;

class MbsimTest : public ToolTest {
  protected:
    ToolResult Run(const std::string& args, const std::string& input = "") {
        return ToolTest::Run(MB_BINARY_DIR "/tools/mbsim/mbsim", args, input);
    }
};

// Prints the zero-ended text at MSG on port 01H, then halts.
const std::vector<int> kHello = {
    0x21, 0x0D, 0x00,               // 0000 LD HL,000DH
    0x7E,                           // 0003 LOOP: LD A,(HL)
    0xB7,                           // 0004 OR A
    0x28, 0x05,                     // 0005 JR Z,DONE
    0xD3, 0x01,                     // 0007 OUT (01H),A
    0x23,                           // 0009 INC HL
    0x18, 0xF7,                     // 000A JR LOOP
    0x76,                           // 000C DONE: HALT
    'H',  'E',  'L',  'L', 'O', 0,  // 000D MSG
};

// Intel HEX text of bytes at `address`, 16 to a record.
std::string HexText(const std::vector<int>& bytes, int address) {
    std::string text;
    for (size_t at = 0; at < bytes.size(); at += 16) {
        const size_t n = std::min<size_t>(16, bytes.size() - at);
        std::string record = mb::pb_hex2(n) + mb::pb_hex4(address + at) + "00";
        int sum = static_cast<int>(n) + ((address + at) >> 8) + ((address + at) & 0xFF);
        for (size_t i = 0; i < n; ++i) {
            record += mb::pb_hex2(bytes[at + i]);
            sum += bytes[at + i];
        }
        text += ":" + record + mb::pb_hex2(256 - sum % 256) + "\r\n";
    }
    return text + ":00000001FF\r\n";
}

TEST_F(MbsimTest, PrintsHelloThroughAPort) {
    Write("hello.obj", kHello);
    const ToolResult r = Run("--out-port 01 hello.obj");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "HELLO");
    // LD HL; six per character; the last LD, OR, JR; HALT.
    EXPECT_NE(r.err.find("Total number of executed instructions is 35.\n"), std::string::npos)
        << r.err;
    EXPECT_NE(r.err.find(" seconds elapsed.\n"), std::string::npos);
    EXPECT_NE(r.err.find("at 4.0MHz."), std::string::npos);
}

TEST_F(MbsimTest, LoadsHexWritesLogsAndStopsAtAnAddress) {
    WriteText("hello.hex", HexText(kHello, 0));
    fs::create_directories(dir / "logs");
    const ToolResult r =
        Run("--out-port 1H --stop-at 000CH --log --iolog --log-dir logs --clock 2 hello.hex");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "HELLO");
    EXPECT_NE(r.err.find("is 34.\n"), std::string::npos) << r.err;  // the HALT did not run
    EXPECT_NE(r.err.find("at 2.0MHz."), std::string::npos);
    const std::string log = Read(fs::path("logs") / "log.txt");
    EXPECT_EQ(log.rfind("Simulation started at ", 0), 0u);
    EXPECT_NE(log.find("\r\n      10000  LD HL,000DH     "), std::string::npos);
    EXPECT_NE(log.find("Simulation stopped at "), std::string::npos);
    const std::string io = Read(fs::path("logs") / "io.txt");
    EXPECT_NE(io.find("\t0007H: OUT (01H),A\tData 48H sent to port 01H\r\n"), std::string::npos)
        << io;
    EXPECT_FALSE(fs::exists(dir / "log.txt"));
}

TEST_F(MbsimTest, EchoesStandardInputUntilItsEnd) {
    Write("echo.obj", {
                          0xDB, 0x02,  // 0000 IN A,(02H)
                          0xB7,        // 0002 OR A
                          0x28, 0x04,  // 0003 JR Z,0009H (0 at end of input)
                          0xD3, 0x01,  // 0005 OUT (01H),A
                          0x18, 0xF7,  // 0007 JR 0000H
                          0x76,        // 0009 HALT
                      });
    const ToolResult r = Run("--in-port 2 --out-port 1 echo.obj", "line one\nand two");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "line one\nand two");
}

TEST_F(MbsimTest, TerminalOnStdinAndStdout) {
    struct Case {
        const char* args;
        const char* input;
        const char* output;
    };
    const Case cases[] = {
        // Line ends arrive as 13; the firmware adds a line feed to each.
        {"--terminal FF echo_port.obj", "Hello\nworld\n", "Echo ready\r\nHello\r\nworld\r\n"},
        {"--terminal 0FFH --terminal-status FE,0,1 echo_port.obj", "a\r\nb",
         "Echo ready\r\na\r\nb"},
        {"--mm-terminal A001 echo_mm.obj", "x\x03unread", "Echo ready\r\nx"},  // Ctrl+C halts
        {"--mm-terminal A001 echo_mm.obj", "", "Echo ready\r\n"},
        // A terminal of its own registers: data on port 10H, status on 80H
        // with bit 7 for "a character waits" and bit 6 for "can take one".
        {"--terminal 10 --terminal-status 80,7,6 own.obj", "ab.cd", "ab."},
    };
    fs::copy_file(fs::path(MB_EXAMPLES) / "echo_port.obj", dir / "echo_port.obj");
    fs::copy_file(fs::path(MB_EXAMPLES) / "echo_mm.obj", dir / "echo_mm.obj");
    Write("own.obj", {
                         0xDB, 0x80,  // 0000 LOOP: IN A,(80H)
                         0xCB, 0x7F,  // 0002 BIT 7,A
                         0x28, 0xFA,  // 0004 JR Z,LOOP
                         0xDB, 0x10,  // 0006 IN A,(10H)
                         0x47,        // 0008 LD B,A
                         0xDB, 0x80,  // 0009 TX: IN A,(80H)
                         0xCB, 0x77,  // 000B BIT 6,A
                         0x28, 0xFA,  // 000D JR Z,TX
                         0x78,        // 000F LD A,B
                         0xD3, 0x10,  // 0010 OUT (10H),A
                         0xFE, '.',   // 0012 CP '.'
                         0x20, 0xEA,  // 0014 JR NZ,LOOP
                         0x76,        // 0016 HALT
                     });
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const ToolResult r = Run(c.args, c.input);
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, c.output);
    }
}

TEST_F(MbsimTest, RunsCpmStringOutput) {
    Write("hi.obj", {
                        0x0E, 0x09,        // 0100 LD C,09H
                        0x11, 0x10, 0x01,  // 0102 LD DE,0110H
                        0xCD, 0x05, 0x00,  // 0105 CALL 0005H
                        0x0E, 0x02,        // 0108 LD C,02H
                        0x1E, 0x21,        // 010A LD E,'!'
                        0xCD, 0x05, 0x00,  // 010C CALL 0005H
                        0xC9,              // 010F RET (to 0000H)
                        'H',  'i',  ' ',  'C', 'P', '/', 'M', '$',
                    });
    const ToolResult r = Run("--cpm hi.obj");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "Hi CP/M!");

    // The same program under the name CP/M gives its programs.
    fs::copy_file(dir / "hi.obj", dir / "HI.COM");
    const ToolResult com = Run("--cpm HI.COM");
    EXPECT_EQ(com.status, 0) << com.err;
    EXPECT_EQ(com.out, "Hi CP/M!");
    const ToolResult plain = Run("HI.COM");
    EXPECT_EQ(plain.status, 2);
    EXPECT_NE(plain.err.find("HI.COM: a CP/M .com program needs --cpm"), std::string::npos)
        << plain.err;
}

TEST_F(MbsimTest, InstructionLimitHasItsOwnStatus) {
    Write("spin.obj", {0x00, 0xC3, 0x00, 0x00});  // NOP; JP 0000H
    const ToolResult r = Run("--max-instructions 100 spin.obj");
    EXPECT_EQ(r.status, 3);
    EXPECT_NE(r.err.find("Total number of executed instructions is 100.\n"), std::string::npos)
        << r.err;

    Write("self.obj", {0x00, 0x18, 0xFE});  // NOP; JR +0 (itself): the infinite-loop test ends it
    EXPECT_EQ(Run("--max-instructions 100 self.obj").status, 0);
}

TEST_F(MbsimTest, OffsetStartAndBench) {
    Write("z.obj", {0x3E, 'Z', 0xD3, 0x07, 0x76});  // LD A,'Z'; OUT (07H),A; HALT
    const ToolResult r = Run("--offset 4000 --start 0x4000 --out-port 7 --bench z.obj");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.substr(0, 1), "Z");
    EXPECT_NE(r.out.find("3 instructions in "), std::string::npos) << r.out;
    EXPECT_NE(r.out.find(" instructions per second\n"), std::string::npos);
}

TEST_F(MbsimTest, DumpsMemoryAfterTheProgramsOutput) {
    Write("poke.obj", {
                          0x21, 0x00, 0x80,  // 0000 LD HL,8000H
                          0x36, 0x41,        // 0003 LD (HL),41H
                          0x23,              // 0005 INC HL
                          0x36, 0x42,        // 0006 LD (HL),42H
                          0x3E, 'H',         // 0008 LD A,'H'
                          0xD3, 0x01,        // 000A OUT (01H),A
                          0x76,              // 000C HALT
                      });
    // Rows start at FROM, 16 bytes each; the last one stops at TO.
    const ToolResult r = Run("--out-port 1 --dump 7FFE-8011 poke.obj");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out,
              "H\n"
              "7FFE: 00 00 41 42 00 00 00 00 00 00 00 00 00 00 00 00\n"
              "800E: 00 00 00 00\n");

    // Without output of its own the dump is all; one byte, and the H form.
    const ToolResult one = Run("--dump 0003H-0003H poke.obj");
    EXPECT_EQ(one.status, 0) << one.err;
    EXPECT_EQ(one.out, "0003: 36\n");

    // The top of memory ends the last row without running past it.
    const ToolResult top = Run("--dump FFF8-FFFF poke.obj");
    EXPECT_EQ(top.out, "FFF8: 00 00 00 00 00 00 00 00\n");
}

TEST_F(MbsimTest, BadInputIsReportedWithStatus2) {
    WriteText("bad.hex", ":0100000041BF\r\n:00000001FF\r\n");  // wrong checksum
    WriteText("empty.obj", "");
    WriteText("prog.bin", "x");
    struct Case {
        const char* args;
        const char* message;
    };
    const Case cases[] = {
        {"missing.obj", "missing.obj: no such file"},
        {"bad.hex",
         "bad.hex: Input program file in Intel Hex Format contains errors. Line number 1: Invalid "
         "'checksum' field in the record."},
        {"empty.obj", "The size of the selected file is zero."},
        {"prog.bin", "not an .obj, .hex or CP/M .com program file"},
        {"--cpm prog.bin", "not an .obj, .hex or CP/M .com program file"},
        {"--frobnicate x.obj", "unknown option --frobnicate"},
        {"--clock 200 x.obj", "Allowed range 0.01-120MHz."},
        {"--clock nan x.obj", "Allowed range 0.01-120MHz."},
        {"--clock -nan x.obj", "Allowed range 0.01-120MHz."},
        {"--clock inf x.obj", "Allowed range 0.01-120MHz."},
        {"--clock 0x10 x.obj", "Allowed range 0.01-120MHz."},
        {"--start 10000 x.obj", "--start"},
        {"--max-instructions", "--max-instructions needs a value"},
        {"", "no program file given"},
        {"--log --log-dir nowhere x.obj", "no such folder: nowhere"},
        {"--dump 8000 x.obj", "--dump: FROM-TO needed: 8000"},
        {"--dump 80FF-8000 x.obj", "--dump: TO lies below FROM: 80FF-8000"},
        {"--dump 8000-10000 x.obj", "--dump: addresses are hexadecimal, 0000 to FFFF: 8000-10000"},
        {"--dump zz-ff x.obj", "--dump: addresses are hexadecimal"},
        {"--dump -8000 x.obj", "--dump: addresses are hexadecimal"},
        {"--dump", "--dump needs a value"},
        {"--terminal 100 x.obj", "--terminal: not a hexadecimal value up to 00FFH: 100"},
        {"--mm-terminal 10000 x.obj", "--mm-terminal: not a hexadecimal value up to FFFFH"},
        {"--terminal 1 --mm-terminal 1 x.obj", "only one --terminal or --mm-terminal"},
        {"--terminal 1 --in-port 2 x.obj", "not with --in-port or --out-port"},
        {"--terminal-status FE x.obj", "--terminal-status needs --terminal or --mm-terminal"},
        {"--terminal 1 --terminal-status FE,8,1 x.obj", "--terminal-status: bits are 0 to 7"},
        {"--terminal 1 --terminal-status FE,1 x.obj", "REG or REG,IN-BIT,OUT-BIT needed"},
        {"--terminal 1 --terminal-status A000 x.obj", "--terminal-status: ports are 00 to FF"},
        {"--mm-terminal 1 --terminal-status 1A000 x.obj", "addresses are 0000 to FFFF"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const ToolResult r = Run(c.args);
        EXPECT_EQ(r.status, 2);
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_EQ(r.out, "");
    }
    const ToolResult help = Run("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("Usage: mbsim"), std::string::npos);
    EXPECT_NE(help.out.find("--dump FROM-TO"), std::string::npos);
    EXPECT_NE(help.out.find("--terminal-status REG[,IN-BIT,OUT-BIT]"), std::string::npos);
}

}  // namespace
}  // namespace mb::testing
