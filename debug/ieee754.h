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

// The exponent is the floor of the binary logarithm; 24 bits are taken and the
// last one is rounded up only when that comes strictly closer. A carry out of the
// mantissa is dropped and the exponent is never fixed up: that is how the
// compiler stores numbers, so the tool shows the same.
Ieee754Texts ToIeee754(double x);

// The number that four bytes stand for; nullopt when the text is not eight
// hexadecimal digits (blanks are ignored).
std::optional<double> FromIeee754Text(const std::string& text);

// Shortest text that reads back to the same double.
std::string ShortestNumberText(double v);

}  // namespace mb
