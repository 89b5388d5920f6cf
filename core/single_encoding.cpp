#include "single_encoding.h"

#include <cmath>

namespace mb {

SingleEncoding EncodeSingle(double x) {
    SingleEncoding s;
    if (x == 0) return s;
    const uint32_t sign = std::signbit(x) ? 0x80000000u : 0;
    if (std::isnan(x)) {
        s.bits = 0x7FC00000u;
        s.kept = x;
        return s;
    }
    if (std::isinf(x)) {
        s.bits = sign | 0x7F800000u;
        s.kept = x;
        return s;
    }
    const double v = std::fabs(x);
    int p = 0;
    std::frexp(v, &p);  // v = f * 2^p with 0.5 <= f < 1
    const int e = p - 1;

    // Take the 24 bits from 2^e down to 2^(e-23), largest first.
    double rest = v, kept = 0;
    uint32_t mantissa = 0;
    for (int k = e; k >= e - 23; --k) {
        const double weight = std::ldexp(1.0, k);
        mantissa <<= 1;
        if (weight <= rest) {
            mantissa |= 1;
            rest -= weight;
            kept += weight;
        }
    }
    s.step = std::ldexp(1.0, e - 23);
    if (v != kept) {
        s.exact = false;
        if (s.step + kept - v < v - kept) {
            kept += s.step;
            ++mantissa;  // a carry into bit 24 falls off below
        }
    }
    const uint32_t exponent = static_cast<uint32_t>(e + 127) & 0xFFu;
    s.bits = sign | (exponent << 23) | (mantissa & 0x7FFFFFu);
    s.kept = sign ? -kept : kept;
    return s;
}

double DecodeSingle(uint32_t bits) {
    if ((bits & 0x7FFFFFFFu) == 0) return 0;
    const int exponent = static_cast<int>((bits >> 23) & 0xFF) - 127;
    const double mantissa = 1.0 + static_cast<double>(bits & 0x7FFFFFu) / 8388608.0;
    const double value = std::ldexp(mantissa, exponent);
    return (bits >> 31) ? -value : value;
}

}  // namespace mb
