// Number texts of the BASIC language: the literal reader, the validity of a
// constant for each data type, the four bytes of a Single and its canonical
// text, and the rule for user names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "compiler/type_codes.h"

namespace mb {

// What parseNumber answers for a text that is no number.
inline constexpr double kBasicNotANumber = 100000;

// A literal to its value. The forms, letters in any case, one leading "#"
// dropped: decimal (nnn, D'n', .n, where .5 reads as 5), binary (%b, 0Bb, bB,
// B'b'), hexadecimal (nH, 0Xn, $n, &Hn, &n, H'n') and character ('c', A'c',
// "c"). Up to 65535 hexadecimal takes at most 4 digits, binary 16 and decimal 5
// characters; larger values come from the 32-bit reader with the same forms
// (no characters), up to 4294967295. kBasicNotANumber (100000) when the text is
// no number: a caller that must tell it from the number 100000 uses readNumber.
double parseNumber(std::string_view text);

// The same reader with the failure apart: the value, or nullopt.
std::optional<uint32_t> readNumber(std::string_view text);

// A Single literal: [-]digits, [-]digits.digits, [-].digits or [-]digits. in
// decimal, of any length, or another number form of readNumber (0FFH, &H10,
// %101) with an optional "-". There is no exponent form.
std::optional<double> readSingle(std::string_view text);

struct ConstantCheck {
    bool ok = false;
    // As the code uses it: two's complement in the type's width for a negative
    // number (-1 is 255 for Short, 65535 for Integer, 4294967295 for Long);
    // 255 for a true Bit; the four bytes (EncodeSingle) for a Single.
    long long value = 0;
    double number = 0;             // the value read, with its sign (a true Bit is 1)
    std::string message;           // "Argument '...' is not a valid <Type> type constant."
    bool bitRangeWarning = false;  // a Bit constant from 2 to 65535, taken as True
};

// Whether `text` is a constant of the type. A leading "+" is dropped first;
// constant names and one-character strings are the caller's to replace. Bit
// takes TRUE and FALSE in any case, 0 and 1, and 2..65535 as True with the
// warning flag. The integer types take the number forms of readNumber with an
// optional "-", but nothing with a ".". Single: at most 10 characters, below
// 1E10 in magnitude. StrPtr is checked as UInteger. The message quotes `text`
// as given.
ConstantCheck checkConstant(TypeCode type, std::string_view text);

// The four bytes in which a program holds the Single nearest to `value`, by
// EncodeSingle (core/single_encoding.h), which the IEEE 754 tool shows too.
uint32_t singleBits(double value);

// The text a Const with "." keeps: the fewest significant digits that give the
// same four bytes again, in plain decimal notation with a "." always present
// ("0.1", "3.0", "-0.5", "3.1415927"; 0 is "0.0"). A text of more than 10
// characters is avoided, so that a constant that passed the Single check passes
// it again: the "0" before the "." or the one behind it is left out
// (".000000001", "123456790."), and more digits are taken where fewer would need
// more places ("999999999." rather than "1000000000."). Empty for a NaN or an
// infinity, which no literal gives.
std::string canonicalSingleText(double value);

struct NameCheck {
    bool ok = false;
    std::string message;  // only for the reserved prefix and the empty name
};

// The name rule of variables, labels, constants and routines: the text up to a
// "[" must begin with a letter A-Z, a-z or "_" and go on with letters, digits
// and "_". A name that begins "corvalent_temp" is kept for the compiler's
// temporaries unless `allowInternal`.
NameCheck isValidName(std::string_view name, bool allowInternal);

}  // namespace mb
