#include "ieee754.h"

#include <charconv>
#include <cmath>

#include "core/numtext.h"

namespace mb {

std::string ShortestNumberText(double v) {
    char buf[64];
    const auto result = std::to_chars(buf, buf + sizeof buf, v);
    return std::string(buf, result.ptr);
}

namespace {

std::string Grouped(const std::string& bits) {
    return bits.substr(0, 8) + "  " + bits.substr(8, 8) + "  " + bits.substr(16, 8) + "  " +
           bits.substr(24, 8);
}

// Adds one to a text of binary digits; a carry out of the first digit is lost.
void IncrementBits(std::string& bits) {
    for (size_t i = bits.size(); i-- > 0;) {
        if (bits[i] == '0') {
            bits[i] = '1';
            return;
        }
        bits[i] = '0';
    }
}

}  // namespace

Ieee754Texts ToIeee754(double x) {
    Ieee754Texts t;
    if (x == 0) {
        t.entered = "0";
        t.binary = std::string(kIeee754BinaryHead) + "\n" + Grouped(std::string(32, '0'));
        t.hex = "00 00 00 00";
        t.exactValue = t.resolution = "0";
        return t;
    }
    t.entered = ShortestNumberText(x);
    const std::string sign = x < 0 ? "1" : "0";
    const double v = std::fabs(x);
    const int e = static_cast<int>(std::floor(std::log(v) / std::log(2.0)));
    double r = v, acc = 0;
    std::string m;
    for (int k = e; k >= e - 23; --k) {
        const double p = std::ldexp(1.0, k);
        if (p <= r) {
            m += '1';
            r -= p;
            acc += p;
        } else {
            m += '0';
        }
    }
    m = m.substr(1);
    const double step = std::ldexp(1.0, e - 23);
    double resolution = step;
    if (v != acc) {
        if (step + acc - v < v - acc) {
            acc += step;
            IncrementBits(m);
        }
    } else {
        resolution = 0;
    }
    std::string exponent;
    const int b = e + 127;
    for (int k = 7; k >= 0; --k) exponent += ((b >> k) & 1) ? '1' : '0';
    const std::string bits = sign + exponent + m;
    t.binary = std::string(kIeee754BinaryHead) + "\n" + Grouped(bits);
    for (int i = 0; i < 4; ++i) {
        int byte = 0;
        for (int k = 0; k < 8; ++k) byte = byte * 2 + (bits[static_cast<size_t>(i * 8 + k)] - '0');
        t.bytes[static_cast<size_t>(i)] = byte;
        t.hex += (i ? " " : "") + pb_hex2(byte);
    }
    t.exactValue = ShortestNumberText(sign == "1" ? -acc : acc);
    t.resolution = ShortestNumberText(resolution);
    return t;
}

std::optional<double> FromIeee754Text(const std::string& text) {
    std::string digits;
    for (char c : text)
        if (c != ' ') digits += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (digits.size() != 8) return std::nullopt;
    unsigned long bits = 0;
    for (int i = 0; i < 4; ++i) {
        const int byte = pb_dec2(digits.substr(static_cast<size_t>(i) * 2, 2));
        if (byte < 0) return std::nullopt;
        bits = bits * 256 + static_cast<unsigned long>(byte);
    }
    if ((bits & 0x7FFFFFFFul) == 0) return 0.0;  // the form the tool gives for zero
    const int exponent = static_cast<int>((bits >> 23) & 0xFF) - 127;
    const double mantissa = 1.0 + static_cast<double>(bits & 0x7FFFFF) / 8388608.0;
    const double value = std::ldexp(mantissa, exponent);
    return (bits >> 31) ? -value : value;
}

}  // namespace mb
