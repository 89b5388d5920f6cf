// Pure decoder: up to four bytes to the text and length of one instruction.
#pragma once

#include <string>

namespace mb {

struct DecodeOptions {
    bool unofficial = false;   // "Enable Unofficial Instructions"
    bool relativeHex = false;  // "Display Relative Branch Hex Argument"
};

struct DecodedInstruction {
    std::string text;
    int length = 1;
};

DecodedInstruction DecodeInstruction(int b0, int b1, int b2, int b3, const DecodeOptions& opt);

inline std::string InstructionText(int b0, int b1, int b2, int b3, const DecodeOptions& opt) {
    return DecodeInstruction(b0, b1, b2, b3, opt).text;
}
inline int DecodedLength(int b0, int b1, int b2, int b3, const DecodeOptions& opt) {
    return DecodeInstruction(b0, b1, b2, b3, opt).length;
}

}  // namespace mb
