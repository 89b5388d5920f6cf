#include "numtext.h"

#include <cctype>
#include <string>

namespace mb {

namespace {
constexpr char kHexDigits[] = "0123456789ABCDEF";

int DigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string WithLeadingZeroForLetter(std::string digits) {
    if (digits[0] >= 'A') digits.insert(digits.begin(), '0');
    return digits;
}
}  // namespace

std::string HexDigits(long long value, int digits) {
    std::string out(static_cast<size_t>(digits), '0');
    unsigned long long v = static_cast<unsigned long long>(value);
    for (int i = digits - 1; i >= 0; --i) {
        out[static_cast<size_t>(i)] = kHexDigits[v & 15];
        v >>= 4;
    }
    return out;
}

long long HexValue(std::string_view text, int digits) {
    if (static_cast<int>(text.size()) != digits) return -1;
    long long v = 0;
    for (char c : text) {
        int d = DigitValue(c);
        if (d < 0) return -1;
        v = v * 16 + d;
    }
    return v;
}

long long HexEntryValue(std::string_view text, int digits) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    if (text.empty() || static_cast<int>(text.size()) > digits) return -1;
    std::string padded(static_cast<size_t>(digits) - text.size(), '0');
    for (char c : text) padded += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return HexValue(padded, digits);
}

std::string AsmHex2(int value) {
    return WithLeadingZeroForLetter(HexDigits(value, 2));
}
std::string AsmHex4(int value) {
    return WithLeadingZeroForLetter(HexDigits(value, 4));
}

}  // namespace mb
