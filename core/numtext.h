// Number texts used by every part of the system: fixed-width hexadecimal,
// hexadecimal text to value, byte extraction, and the assembler operand forms.
#pragma once

#include <string>
#include <string_view>

namespace mb {

// Exactly n upper-case hexadecimal digits of the low 4·n bits of value.
std::string HexDigits(long long value, int digits);

// One line per helper: the groups read as tables.
// clang-format off
inline std::string pb_hex2(long long v) { return HexDigits(v, 2); }
inline std::string pb_hex3(long long v) { return HexDigits(v, 3); }
inline std::string pb_hex4(long long v) { return HexDigits(v, 4); }
inline std::string pb_hex8(long long v) { return HexDigits(v, 8); }
inline std::string pb_hex0x2(long long v) { return "0x" + HexDigits(v, 2); }
inline std::string pb_hex0x3(long long v) { return "0x" + HexDigits(v, 3); }
inline std::string pb_hex0x4(long long v) { return "0x" + HexDigits(v, 4); }
inline std::string pb_hex2H(long long v) { return HexDigits(v, 2) + "H"; }
inline std::string pb_hex3H(long long v) { return HexDigits(v, 3) + "H"; }
inline std::string pb_hex4H(long long v) { return HexDigits(v, 4) + "H"; }

// Value of a text of exactly `digits` upper-case hexadecimal digits, or -1 when
// the text is not that.
long long HexValue(std::string_view text, int digits);

// A typed hexadecimal entry: blanks around and lower case allowed, at most
// `digits` digits, a shorter entry counted with leading zeros. Its value, or -1
// (also for an empty entry).
long long HexEntryValue(std::string_view text, int digits);

inline int pb_dec2(std::string_view t) { return static_cast<int>(HexValue(t, 2)); }
inline int pb_dec3(std::string_view t) { return static_cast<int>(HexValue(t, 3)); }
inline int pb_dec4(std::string_view t) { return static_cast<int>(HexValue(t, 4)); }
inline int pb_dec6(std::string_view t) { return static_cast<int>(HexValue(t, 6)); }
inline long long pb_dec8(std::string_view t) { return HexValue(t, 8); }

// Byte 0 (lowest) to byte 3 of a 32-bit value.
inline int pb_getbyte0(long long v) { return static_cast<int>(v & 0xFF); }
inline int pb_getbyte1(long long v) { return static_cast<int>((v >> 8) & 0xFF); }
inline int pb_getbyte2(long long v) { return static_cast<int>((v >> 16) & 0xFF); }
inline int pb_getbyte3(long long v) { return static_cast<int>((v >> 24) & 0xFF); }
// clang-format on

// Assembler operand forms: two or four digits, with a "0" in front when the first
// digit is a letter (10 -> "0A", 255 -> "0FF", 65535 -> "0FFFF", 4096 -> "1000").
std::string AsmHex2(int value);
std::string AsmHex4(int value);

}  // namespace mb
