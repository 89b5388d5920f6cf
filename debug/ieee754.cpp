#include "ieee754.h"

#include <charconv>
#include <cmath>

#include "core/numtext.h"
#include "core/single_encoding.h"

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
    const SingleEncoding s = EncodeSingle(x);
    std::string bits;
    for (int k = 31; k >= 0; --k) bits += ((s.bits >> k) & 1) ? '1' : '0';
    t.binary = std::string(kIeee754BinaryHead) + "\n" + Grouped(bits);
    for (int i = 0; i < 4; ++i) {
        const int byte = static_cast<int>((s.bits >> (24 - 8 * i)) & 0xFF);
        t.bytes[static_cast<size_t>(i)] = byte;
        t.hex += (i ? " " : "") + pb_hex2(byte);
    }
    t.exactValue = ShortestNumberText(s.kept);
    t.resolution = ShortestNumberText(s.exact ? 0 : s.step);
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
    return DecodeSingle(static_cast<uint32_t>(bits));
}

}  // namespace mb
