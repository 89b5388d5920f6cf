#include "core/instruction_text.h"

#include <gtest/gtest.h>

namespace mb {
namespace {

struct TextCase {
    std::vector<int> bytes;
    const char* text;
    int length;
};

void Check(const std::vector<TextCase>& cases, const DecodeOptions& opt) {
    for (const auto& c : cases) {
        std::vector<int> b = c.bytes;
        b.resize(4, 0);
        const DecodedInstruction d = DecodeInstruction(b[0], b[1], b[2], b[3], opt);
        EXPECT_EQ(d.text, c.text) << std::hex << c.bytes[0] << " "
                                  << (c.bytes.size() > 1 ? c.bytes[1] : 0);
        EXPECT_EQ(d.length, c.length) << c.text;
    }
}

TEST(InstructionText, BaseGroup) {
    Check({{{0x00}, "NOP", 1},
           {{0x01, 0x34, 0x12}, "LD BC,1234H", 3},
           {{0x3E, 0xFF}, "LD A,0FFH", 2},
           {{0x3E, 0x0A}, "LD A,0AH", 2},
           {{0xC3, 0x00, 0xC0}, "JP 0C000H", 3},
           {{0xC3, 0x00, 0x10}, "JP 1000H", 3},
           {{0x22, 0x00, 0x80}, "LD (8000H),HL", 3},
           {{0x3A, 0x05, 0x00}, "LD A,(0005H)", 3},
           {{0x08}, "EX AF,AF'", 1},
           {{0x76}, "HALT", 1},
           {{0x7E}, "LD A,(HL)", 1},
           {{0x40}, "LD B,B", 1},
           {{0x86}, "ADD A,(HL)", 1},
           {{0x96}, "SUB (HL)", 1},
           {{0xFE, 0x28}, "CP 28H", 2},
           {{0xE9}, "JP (HL)", 1},
           {{0xE3}, "EX (SP),HL", 1},
           {{0xD3, 0x01}, "OUT (01H),A", 2},
           {{0xDB, 0xFE}, "IN A,(0FEH)", 2},
           {{0xFF}, "RST 38H", 1},
           {{0xC7}, "RST 00H", 1},
           {{0xF5}, "PUSH AF", 1},
           {{0xCC, 0x00, 0x01}, "CALL Z,0100H", 3},
           {{0xE0}, "RET PO", 1},
           {{0x27}, "DAA", 1},
           {{0x33}, "INC SP", 1},
           {{0x39}, "ADD HL,SP", 1}},
          {});
}

TEST(InstructionText, RelativeJumpsShowTheDisplacementPlusTwo) {
    const std::vector<TextCase> decimal = {{{0x18, 0xFE}, "JR +0", 2},
                                           {{0x18, 0x00}, "JR +2", 2},
                                           {{0x20, 0xFC}, "JR NZ,-2", 2},
                                           {{0x10, 0x80}, "DJNZ -126", 2},
                                           {{0x38, 0x7F}, "JR C,+129", 2}};
    Check(decimal, {});
    const std::vector<TextCase> hex = {{{0x18, 0xFE}, "JR +00H", 2},
                                       {{0x10, 0x80}, "DJNZ -7EH", 2},
                                       {{0x38, 0x7F}, "JR C,+81H", 2}};
    Check(hex, {false, true});
}

TEST(InstructionText, CbAndEdGroups) {
    Check({{{0xCB, 0x00}, "RLC B", 2},
           {{0xCB, 0x3E}, "SRL (HL)", 2},
           {{0xCB, 0x7F}, "BIT 7,A", 2},
           {{0xCB, 0x86}, "RES 0,(HL)", 2},
           {{0xCB, 0xFF}, "SET 7,A", 2},
           {{0xCB, 0x30}, ".DB 0CBH ;UNRECOGNIZED", 1},
           {{0xED, 0x44}, "NEG", 2},
           {{0xED, 0x4C}, ".DB 0EDH ;UNRECOGNIZED", 1},
           {{0xED, 0x77}, ".DB 0EDH ;UNRECOGNIZED", 1},
           {{0xED, 0x70}, ".DB 0EDH ;UNRECOGNIZED", 1},
           {{0xED, 0x78}, "IN A,(C)", 2},
           {{0xED, 0x79}, "OUT (C),A", 2},
           {{0xED, 0x43, 0x34, 0x12}, "LD (1234H),BC", 4},
           {{0xED, 0x7B, 0x00, 0xF0}, "LD SP,(0F000H)", 4},
           {{0xED, 0x4A}, "ADC HL,BC", 2},
           {{0xED, 0x72}, "SBC HL,SP", 2},
           {{0xED, 0x45}, "RETN", 2},
           {{0xED, 0x4D}, "RETI", 2},
           {{0xED, 0x5E}, "IM 2", 2},
           {{0xED, 0x57}, "LD A,I", 2},
           {{0xED, 0x6F}, "RLD", 2},
           {{0xED, 0xB0}, "LDIR", 2},
           {{0xED, 0xB9}, "CPDR", 2},
           {{0xED, 0xA3}, "OUTI", 2},
           {{0xED, 0xBB}, "OTDR", 2}},
          {});
    Check({{{0xCB, 0x30}, "SLL B", 2},
           {{0xED, 0x4C}, "NEG", 2},
           {{0xED, 0x70}, "IN (C)", 2},
           {{0xED, 0x71}, "OUT (C),0", 2},
           {{0xED, 0x76}, "IM 1", 2},
           {{0xED, 0x55}, "RETN", 2},
           {{0xED, 0x77}, ".DB 0EDH ;ED NOP NOP", 2},
           {{0xED, 0x00}, ".DB 0EDH ;ED NOP NOP", 2}},
          {true, false});
}

TEST(InstructionText, IndexGroups) {
    Check({{{0xDD, 0x21, 0x34, 0x12}, "LD IX,1234H", 4},
           {{0xFD, 0x7E, 0x05}, "LD A,(IY+05H)", 3},
           {{0xDD, 0x77, 0xFF}, "LD (IX-01H),A", 3},
           {{0xDD, 0x36, 0x80, 0x0A}, "LD (IX-80H),0AH", 4},
           {{0xDD, 0x34, 0x0A}, "INC (IX+0AH)", 3},
           {{0xDD, 0x86, 0x00}, "ADD A,(IX+00H)", 3},
           {{0xFD, 0xBE, 0x7F}, "CP (IY+7FH)", 3},
           {{0xDD, 0x29}, "ADD IX,IX", 2},
           {{0xFD, 0x09}, "ADD IY,BC", 2},
           {{0xDD, 0xE9}, "JP (IX)", 2},
           {{0xFD, 0xE3}, "EX (SP),IY", 2},
           {{0xDD, 0x22, 0x00, 0x80}, "LD (8000H),IX", 4},
           {{0xDD, 0x7C}, ".DB 0DDH ;UNRECOGNIZED", 1},
           {{0xDD, 0x00}, ".DB 0DDH ;UNRECOGNIZED", 1},
           {{0xDD, 0xCB, 0x05, 0xC6}, "SET 0,(IX+05H)", 4},
           {{0xFD, 0xCB, 0xFE, 0x46}, "BIT 0,(IY-02H)", 4},
           {{0xDD, 0xCB, 0x05, 0xC7}, ".DB 0DDH ;UNRECOGNIZED", 1},
           {{0xDD, 0xCB, 0x05, 0x36}, ".DB 0DDH ;UNRECOGNIZED", 1}},
          {});
    Check({{{0xDD, 0x7C}, "LD A,IXh", 2},
           {{0xFD, 0x65}, "LD IYh,IYl", 2},
           {{0xDD, 0x2E, 0x12}, "LD IXl,12H", 3},
           {{0xFD, 0x94}, "SUB IYh", 2},
           {{0xDD, 0x24}, "INC IXh", 2},
           {{0xDD, 0x00}, ".DB 0DDH ;DD NOP", 1},
           {{0xFD, 0x41}, ".DB 0FDH ;FD NOP", 1},
           {{0xDD, 0xDD}, ".DB 0DDH ;DD NOP", 1},
           {{0xDD, 0xCB, 0x05, 0xC7}, "SET 0,(IX+05H),A", 4},
           {{0xDD, 0xCB, 0x05, 0x36}, "SLL (IX+05H)", 4},
           {{0xFD, 0xCB, 0x01, 0x11}, "RL (IY+01H),C", 4},
           {{0xDD, 0xCB, 0x05, 0x40}, "BIT 0,(IX+05H)", 4}},
          {true, false});
}

TEST(InstructionText, EveryOpcodeDecodesToSomethingOfOneToFourBytes) {
    for (bool unofficial : {false, true})
        for (int b0 = 0; b0 < 256; ++b0)
            for (int b1 = 0; b1 < 256; ++b1) {
                const DecodedInstruction d =
                    DecodeInstruction(b0, b1, 0x12, b1, {unofficial, false});
                ASSERT_FALSE(d.text.empty());
                ASSERT_GE(d.length, 1);
                ASSERT_LE(d.length, 4);
            }
}

}  // namespace
}  // namespace mb
