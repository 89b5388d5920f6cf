// The Single format of the BASIC runtime library, computed in C++ exactly as the
// Z80 routines compute it: the reference for their tests, and the conversion
// between the format and host numbers for tools.
//
// A Single is 32 bits in the IEEE 754 single layout (sign, 8 exponent bits with
// bias 127, 23 fraction bits), with these rules of its own: a biased exponent of
// 0 is the value 0 whatever the fraction holds; there are no denormals,
// infinities or NaNs, so exponent 255 is an ordinary exponent; results are
// rounded by adding 80H to a guard byte below the 24-bit significand, so halves
// round away from zero; operands are aligned without a sticky bit.
#pragma once

#include <cstdint>

namespace mb {

// A result and the value that the routine stores in the error word at 0FF00H:
// 0 when it leaves the word alone, 1 for an argument outside the domain,
// 2 for an overflow.
struct SingleResult {
    uint32_t Bits = 0;
    int Error = 0;
};

// The routines of the library, bit for bit.
uint32_t SingleAdd(uint32_t left, uint32_t right);                // A201
uint32_t SingleSubtract(uint32_t left, uint32_t right);           // S201
SingleResult SingleMultiply(uint32_t left, uint32_t right);       // M201
SingleResult SingleDivide(uint32_t left, uint32_t right);         // D201
bool SingleEqual(uint32_t left, uint32_t right);                  // C201
uint32_t SingleCompareDifference(uint32_t left, uint32_t right);  // C202: left - right
uint32_t SingleToLong(uint32_t value);                            // X001
uint32_t LongToSingle(int32_t value);                             // X101
uint32_t ULongToSingle(uint32_t value);                           // X111

// What C202 leaves in the flags: S set when left < right, Z set when equal.
inline bool SingleDifferenceNegative(uint32_t difference) {
    return (difference >> 31) != 0;
}
inline bool SingleDifferenceZero(uint32_t difference) {
    return (difference >> 23) == 0;
}

// The value of a Single (exponent 0 is 0; exponent 255 is ordinary).
double SingleToDouble(uint32_t value);

// The Single nearest to a host number, halves away from zero. Magnitudes below
// 2^-126 give 0; at 2^129 and above the result is the largest pattern with the
// sign and Error 2; a NaN gives 0 with Error 1.
SingleResult SingleFromDouble(double value);

}  // namespace mb
