#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "compiler/type_codes.h"
namespace mb {
inline constexpr double kNotANumber = 100000;
double parseNumber(std::string_view text);
struct ConstantCheck {
    bool ok = false;
    long long value = 0;
    std::string message;
    bool bitRangeWarning = false;
};
ConstantCheck checkConstant(TypeCode type, std::string_view text);
struct NameCheck {
    bool ok = false;
    std::string message;
};
NameCheck isValidName(std::string_view name, bool allowInternal);
std::string canonicalSingleText(double value);
}  // namespace mb
