#include "compiler/basic_numbers.h"

#include <charconv>
#include <cmath>

#include "assembler/expression.h"
#include "core/single_encoding.h"

namespace mb {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool equalsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        const char x = (a[i] >= 'a' && a[i] <= 'z') ? static_cast<char>(a[i] - 32) : a[i];
        const char y = (b[i] >= 'a' && b[i] <= 'z') ? static_cast<char>(b[i] - 32) : b[i];
        if (x != y) return false;
    }
    return true;
}

// [-]number of any readNumber form, but none with a "." (a Single in this
// language, while the reader would take .5 as 5).
std::optional<long long> readSignedInteger(std::string_view t) {
    const bool negative = !t.empty() && t[0] == '-';
    if (negative) t.remove_prefix(1);
    if (t.empty() || t.find('.') != std::string_view::npos) return std::nullopt;
    const std::optional<uint32_t> magnitude = readNumber(t);
    if (!magnitude) return std::nullopt;
    return negative ? -static_cast<long long>(*magnitude) : static_cast<long long>(*magnitude);
}

const char* constantTypeName(TypeCode type) {
    switch (type) {
        case kTypeBit: return "Bit";
        case kTypeShort: return "Short";
        case kTypeInteger: return "Integer";
        case kTypeLong: return "Long";
        case kTypeSingle: return "Single";
        case kTypeString: return "String";
        case kTypeStrPtr: return "UInteger";
        case kTypeUShort: return "UShort";
        case kTypeUInteger: return "UInteger";
        case kTypeULong: return "ULong";
        default: return "";
    }
}

struct Range {
    long long low, high;
    int bits;
};

std::optional<Range> integerRange(TypeCode type) {
    switch (type) {
        case kTypeShort: return Range{-128, 127, 8};
        case kTypeInteger: return Range{-32768, 32767, 16};
        case kTypeLong: return Range{-2147483648LL, 2147483647LL, 32};
        case kTypeUShort: return Range{0, 255, 8};
        case kTypeUInteger:
        case kTypeStrPtr: return Range{0, 65535, 16};
        case kTypeULong: return Range{0, 4294967295LL, 32};
        default: return std::nullopt;
    }
}

// Plain decimal text of the digits of `scientific` ("d.ddde±x" as to_chars
// writes it), always with a "." in it.
std::string plainDecimal(std::string_view scientific) {
    std::string sign;
    if (!scientific.empty() && scientific[0] == '-') {
        sign = "-";
        scientific.remove_prefix(1);
    }
    const size_t e = scientific.find('e');
    std::string digits;
    for (char c : scientific.substr(0, e))
        if (isDigit(c)) digits += c;
    int exponent = 0;
    const std::string_view ex = scientific.substr(e + 1);
    std::from_chars(ex.data() + (ex[0] == '+' ? 1 : 0), ex.data() + ex.size(), exponent);
    while (digits.size() > 1 && digits.back() == '0') digits.pop_back();

    const long long point = exponent + 1LL;  // digits before the "."
    const long long count = static_cast<long long>(digits.size());
    std::string text;
    if (point <= 0) {
        text = "0." + std::string(static_cast<size_t>(-point), '0') + digits;
    } else if (point >= count) {
        text = digits + std::string(static_cast<size_t>(point - count), '0') + ".0";
    } else {
        text = digits.substr(0, static_cast<size_t>(point)) + "." +
               digits.substr(static_cast<size_t>(point));
    }
    text = sign + text;
    if (text.size() > 10) {
        if (text.size() >= 2 && text.compare(text.size() - 2, 2, ".0") == 0) {
            text.pop_back();
        } else if (text.compare(sign.size(), 2, "0.") == 0) {
            text.erase(sign.size(), 1);
        }
    }
    return text;
}

}  // namespace

double parseNumber(std::string_view text) {
    const double v = ParseNumber(text);
    return v < kNotANumber ? v : kBasicNotANumber;
}

std::optional<uint32_t> readNumber(std::string_view text) {
    const double v = ParseNumber(text);
    if (!(v < kNotANumber)) return std::nullopt;
    return static_cast<uint32_t>(v);
}

std::optional<double> readSingle(std::string_view text) {
    const bool negative = !text.empty() && text[0] == '-';
    if (negative) text.remove_prefix(1);
    double value = 0;
    const bool decimal =
        !text.empty() && text.find_first_not_of("0123456789.") == std::string_view::npos;
    if (decimal) {
        int digits = 0, points = 0;
        for (char c : text) {
            if (isDigit(c)) {
                ++digits;
            } else if (c == '.') {
                ++points;
            } else {
                return std::nullopt;
            }
        }
        if (digits == 0 || points > 1) return std::nullopt;
        // from_chars wants a digit before the "."
        const std::string full = text[0] == '.' ? "0" + std::string(text) : std::string(text);
        const auto r = std::from_chars(full.data(), full.data() + full.size(), value,
                                       std::chars_format::fixed);
        if (r.ec != std::errc() || r.ptr != full.data() + full.size()) return std::nullopt;
    } else {
        const std::optional<uint32_t> n = readNumber(text);
        if (!n) return std::nullopt;
        value = *n;
    }
    return negative ? -value : value;
}

ConstantCheck checkConstant(TypeCode type, std::string_view text) {
    ConstantCheck r;
    const std::string quoted = "Argument '" + std::string(text) + "' is not a valid ";
    r.message = quoted + constantTypeName(type) + " type constant.";
    std::string_view t = text;
    if (!t.empty() && t[0] == '+') t.remove_prefix(1);

    if (type == kTypeBit) {
        if (equalsNoCase(t, "TRUE") || equalsNoCase(t, "FALSE")) {
            r.number = equalsNoCase(t, "TRUE") ? 1 : 0;
        } else {
            const std::optional<long long> v = readSignedInteger(t);
            if (!v || *v < 0 || *v > 65535) return r;
            r.bitRangeWarning = *v > 1;
            r.number = *v > 0 ? 1 : 0;
        }
        r.value = r.number != 0 ? 255 : 0;
    } else if (type == kTypeSingle) {
        if (t.size() > 10) {
            r.message = quoted + "Single type constant (it is longer than 10 chars).";
            return r;
        }
        const std::optional<double> v = readSingle(t);
        if (!v || !(std::fabs(*v) < 1e10)) return r;
        r.number = *v;
        r.value = singleBits(*v);
    } else if (const std::optional<Range> range = integerRange(type)) {
        const std::optional<long long> v = readSignedInteger(t);
        if (!v || *v < range->low || *v > range->high) return r;
        r.number = static_cast<double>(*v);
        r.value = *v < 0 ? *v + (1LL << range->bits) : *v;
    } else {
        if (type != kTypeString) r.message = quoted + "constant.";
        return r;
    }
    r.ok = true;
    r.message.clear();
    return r;
}

uint32_t singleBits(double value) {
    return EncodeSingle(value).bits;
}

namespace {

// The fewest significant digits of `value` that give `bits` again, as plain
// decimal text: the first of at most 10 characters, else empty with the first
// one found in `longer`.
std::string fittingText(double value, uint32_t bits, std::string& longer) {
    char buffer[64];
    for (int digits = 1; digits <= 17; ++digits) {
        const auto r = std::to_chars(buffer, buffer + sizeof buffer, value,
                                     std::chars_format::scientific, digits - 1);
        double back = 0;
        std::from_chars(buffer, r.ptr, back);
        if (singleBits(back) != bits) continue;
        std::string text =
            plainDecimal(std::string_view(buffer, static_cast<size_t>(r.ptr - buffer)));
        if (text.size() <= 10) return text;
        if (longer.empty()) longer = std::move(text);
    }
    return "";
}

}  // namespace

std::string canonicalSingleText(double value) {
    if (!std::isfinite(value)) return "";
    const uint32_t bits = singleBits(value);
    // Digits of the number the bytes hold, so that all texts of the same bytes
    // get the same canonical one.
    const double held = DecodeSingle(bits);
    if (held == 0) return "0.0";
    std::string longer;
    std::string text = fittingText(held, bits, longer);
    // 1000000000. is too long, but 999999999. gives the same bytes.
    if (text.empty()) text = fittingText(value, bits, longer);
    return text.empty() ? longer : text;
}

NameCheck isValidName(std::string_view name, bool allowInternal) {
    name = name.substr(0, name.find('['));
    if (!allowInternal && name.substr(0, 14) == "corvalent_temp") {
        return {false, "You tried to use the reserved name... Shame on you ;-)"};
    }
    if (name.empty()) return {false, "Variable name missing..."};
    if (!isLetter(name[0]) && name[0] != '_') return {false, ""};
    for (char c : name)
        if (!isLetter(c) && !isDigit(c) && c != '_') return {false, ""};
    return {true, ""};
}

}  // namespace mb
