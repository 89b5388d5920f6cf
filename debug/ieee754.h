// The four-byte single precision form in which the BASIC compiler stores a real
// number, worked out the way the conversion tool shows it, and back.
#pragma once

#include <array>
#include <optional>
#include <string>

namespace mb {

struct Ieee754Texts {
    std::string entered;     // "Entered real number:"
    std::string binary;      // head line, line end, the 32 bits in groups of eight
    std::string hex;         // "3F 80 00 00"
    std::string exactValue;  // "Exact value of the representation:"
    std::string resolution;  // "Resolution:"
    std::array<int, 4> bytes{};
};

inline constexpr const char* kIeee754BinaryHead = "SEEEEEEE  EMMMMMMM  MMMMMMMM  MMMMMMMM";

// The bytes come from EncodeSingle (core/single_encoding.h), the routine by
// which the compiler stores its Single constants, so the tool shows the same;
// "exact value" is the rounded 24-bit value, also where a lost carry makes the
// bytes read as less.
Ieee754Texts ToIeee754(double x);

// The number that four bytes stand for; nullopt when the text is not eight
// hexadecimal digits (blanks are ignored).
std::optional<double> FromIeee754Text(const std::string& text);

// Shortest text that reads back to the same double.
std::string ShortestNumberText(double v);

}  // namespace mb
