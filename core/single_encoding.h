// The four bytes in which the BASIC compiler stores a real number (a Single).
// The compiler's constants and the IEEE 754 conversion tool both use this one
// routine, so that the tool shows exactly what a compiled program holds.
#pragma once

#include <cstdint>

namespace mb {

struct SingleEncoding {
    uint32_t bits = 0;  // sign, 8 exponent bits (bias 127), 23 mantissa bits
    double kept = 0;    // the value of the 24 bits taken, after rounding, signed
    double step = 0;    // the weight of the last mantissa bit
    bool exact = true;  // the number needed no rounding
};

// Sign-magnitude form with 24 significant bits: the exponent is the floor of the
// binary logarithm, the bits below the 24th are cut, and the last kept bit goes
// up by one only when that comes strictly closer (a tie stays down). A carry out
// of the mantissa is dropped and never reaches the exponent, so a number just
// below a power of two (such as 1.99999999) is stored as the power below it.
// An exponent outside 1..254 keeps only its low eight bits. 0 (also -0) is all
// zero bits; a NaN gives 7FC00000h and an infinity 7F800000h with its sign.
SingleEncoding EncodeSingle(double x);

// The number that four bytes stand for: sign, 1.mantissa and the exponent less
// 127, every exponent being an ordinary one; all zero bits but the sign are 0.
double DecodeSingle(uint32_t bits);

}  // namespace mb
