#include "compiler/basic_numbers.h"

#include <cctype>
#include <cstdlib>
namespace mb {
double parseNumber(std::string_view text) {
    std::string t(text);
    if (t.empty()) return kNotANumber;
    char* end = nullptr;
    double v = std::strtod(t.c_str(), &end);
    if (*end) return kNotANumber;
    return v;
}
ConstantCheck checkConstant(TypeCode type, std::string_view text) {
    ConstantCheck c;
    std::string t(text);
    if (!t.empty() && t[0] == '+') t.erase(0, 1);
    double v = parseNumber(t);
    if (v == kNotANumber) {
        c.message = "Argument '" + std::string(text) + "' is not a valid type constant.";
        return c;
    }
    long long lo = 0, hi = 0;
    switch (type) {
        case kTypeShort:
            lo = -128;
            hi = 127;
            break;
        case kTypeInteger:
            lo = -32768;
            hi = 32767;
            break;
        case kTypeUShort: hi = 255; break;
        case kTypeUInteger: hi = 65535; break;
        case kTypeLong:
            lo = -2147483648LL;
            hi = 2147483647LL;
            break;
        case kTypeULong: hi = 4294967295LL; break;
        default: lo = -1e10; hi = 1e10;
    }
    if (v < lo || v > hi) {
        c.message = "Argument '" + std::string(text) + "' is not a valid type constant.";
        return c;
    }
    c.ok = true;
    c.value = static_cast<long long>(v);
    return c;
}
NameCheck isValidName(std::string_view name, bool allowInternal) {
    std::string n(name.substr(0, name.find('[')));
    if (!allowInternal && n.rfind("corvalent_temp", 0) == 0)
        return {false, "You tried to use the reserved name... Shame on you ;-)"};
    if (n.empty()) return {false, "Variable name missing..."};
    if (!(std::isalpha((unsigned char)n[0]) || n[0] == '_')) return {false, ""};
    for (char ch : n)
        if (!(std::isalnum((unsigned char)ch) || ch == '_')) return {false, ""};
    return {true, ""};
}
std::string canonicalSingleText(double value) {
    return std::to_string(value);
}
}  // namespace mb
