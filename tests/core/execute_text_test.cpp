// Instruction texts during execution: built before the instruction runs, the
// next one after it, none at rate Ultimate; and the executor agrees with the
// decoder on the length of every instruction that does not jump.
#include <gtest/gtest.h>

#include <string>

#include "core/execute.h"
#include "core/instruction_text.h"
#include "test_cpu.h"

namespace mb::test {
namespace {

TEST(ExecuteText, CurrentAndNextTexts) {
    struct {
        std::vector<int> code;
        bool unofficial;
        int relativeHex;
        const char* current;
        const char* next;
    } cases[] = {
        {{0x01, 0x34, 0x12, 0x00}, false, 0, "LD BC,1234H", "NOP"},
        {{0x3E, 0xFF, 0x76}, false, 0, "LD A,0FFH", "HALT"},
        {{0x18, 0x10}, false, 0, "JR +18", "NOP"},
        {{0x18, 0x10}, false, 1, "JR +12H", "NOP"},
        {{0xDD, 0x77, 0x05, 0xDD, 0x7C}, true, 0, "LD (IX+05H),A", "LD A,IXh"},
        {{0xDD, 0x7C}, false, 0, "UNRECOGNIZED", "LD A,H"},
        {{0xDD, 0x00}, true, 0, "DD NOP", "NOP"},
        {{0xDD, 0xCB, 0x05, 0xC7}, true, 0, "SET 0,(IX+05H),A", "NOP"},
        {{0xED, 0x77, 0x00}, true, 0, "ED NOP NOP", "NOP"},
    };
    for (const auto& c : cases) {
        Cpu cpu(c.unofficial);
        Machine& m = cpu.m;
        m.RelativeBranchHex = c.relativeHex;
        cpu.Program(c.code);
        m.IX = 0x9000;
        cpu.Step();
        EXPECT_EQ(m.CurrentInstructionText, c.current);
        EXPECT_EQ(m.NextInstructionText, c.next) << c.current;
    }
}

TEST(ExecuteText, TextIsTakenBeforeTheInstructionOverwritesItself) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Program({0x36, 0x00});  // LD (HL),00H with HL on itself
    SetHL(m, kOrigin);
    cpu.Step();
    EXPECT_EQ(m.CurrentInstructionText, "LD (HL),00H");
    EXPECT_EQ(m.MemoryImage[kOrigin], 0);
}

TEST(ExecuteText, NoTextAtUltimate) {
    Cpu cpu;
    Machine& m = cpu.m;
    cpu.Load(0, {0x3E, 0x01, 0xDD, 0x00});
    m.SimulationRate = kRateUltimate;
    m.CurrentInstructionText = "before";
    m.NextInstructionText = "before";
    cpu.Step(2);
    EXPECT_EQ(m.TextMode, 0);
    EXPECT_EQ(m.CurrentInstructionText, "before");
    EXPECT_EQ(m.NextInstructionText, "before");
    EXPECT_EQ(m.A, 1);
    m.SimulationRate = kRateFast;
    cpu.Step();
    EXPECT_EQ(m.TextMode, 1);
    EXPECT_EQ(m.CurrentInstructionText, "NOP");
}

bool Jumps(const std::string& text) {
    for (const char* word : {"JP", "JR", "DJNZ", "CALL", "RET", "RST", "HALT"})
        if (text.rfind(word, 0) == 0) return true;
    return false;
}

// Every opcode of every group, with both settings: a non-jumping instruction
// advances PC by exactly the length the decoder gives it.
TEST(ExecuteText, ExecutedLengthMatchesDecodedLength) {
    std::vector<std::vector<int>> codes;
    for (int op = 0; op < 256; ++op) {
        codes.push_back({op, 0x05, 0x06, 0x07});
        codes.push_back({0xCB, op, 0x06, 0x07});
        codes.push_back({0xED, op, 0x06, 0x07});
        codes.push_back({0xDD, op, 0x06, 0x07});
        codes.push_back({0xFD, op, 0x06, 0x07});
        codes.push_back({0xDD, 0xCB, 0x05, op});
        codes.push_back({0xFD, 0xCB, 0x05, op});
    }
    int checked = 0;
    for (int unofficial : {0, 1}) {
        for (const auto& code : codes) {
            const DecodedInstruction decoded = DecodeInstruction(
                code[0], code[1], code[2], code[3], DecodeOptions{unofficial != 0, false});
            Cpu cpu(unofficial != 0);
            Machine& m = cpu.m;
            cpu.Program(code);
            // Block instructions end after one round: BC = 1, or B = 1 for the I/O ones.
            const bool blockIo = code[0] == 0xED && code[1] >= 0xA0 && (code[1] & 2);
            SetBC(m, blockIo ? 0x0101 : 1);
            m.SP = 0x9000;
            SetHL(m, 0x8000);
            cpu.Step();
            if (Jumps(m.CurrentInstructionText)) continue;
            ++checked;
            EXPECT_EQ(m.PC - kOrigin, decoded.length)
                << std::hex << code[0] << " " << code[1] << " " << code[3] << " "
                << m.CurrentInstructionText << " unofficial " << unofficial;
        }
    }
    EXPECT_GT(checked, 3000);
}

}  // namespace
}  // namespace mb::test
