// The Single routines as plain integer arithmetic on the working form that the
// Z80 code uses: exponent, sign, and the significand with its hidden bit in bits
// 31..8 and the guard byte in bits 7..0 (registers D, E, H, L).
#include "runtime/single_model.h"

#include <cmath>

namespace mb {
namespace {

struct Working {
    int Sign = 0;  // 0 or 1
    int Exponent = 0;
    uint32_t Significand = 0;
};

// Unpacking sets the hidden bit whatever the exponent, also for 0.
Working Unpack(uint32_t value) {
    Working w;
    w.Sign = static_cast<int>(value >> 31);
    w.Exponent = static_cast<int>((value >> 23) & 0xFF);
    w.Significand = ((value & 0x7FFFFF) | 0x800000) << 8;
    return w;
}

uint32_t Pack(int sign, int exponent, uint32_t significand) {
    return static_cast<uint32_t>(sign) << 31 | static_cast<uint32_t>(exponent & 0xFF) << 23 |
           ((significand >> 8) & 0x7FFFFF);
}

// Rounding adds 80H to the guard byte; a carry out of the significand moves
// to the next binade. Returns the new exponent (it may pass 255).
int Round(int exponent, uint32_t& significand) {
    if ((significand & 0x80) == 0) return exponent;
    const uint32_t top = (significand >> 8) + 1;
    if (top == 0x1000000) {
        significand = 0;
        return exponent + 1;
    }
    significand = top << 8;
    return exponent;
}

// Normalise, round and pack (A203): exponent 0 gives 0, and so does reaching
// exponent 0 while shifting left. An exponent carried past 255 by the rounding
// wraps to 0, as the 8-bit register does.
uint32_t NormalisePack(int sign, int exponent, uint32_t significand) {
    if (exponent == 0) return 0;
    while ((significand & 0x80000000u) == 0) {
        significand <<= 1;
        if (--exponent == 0) return 0;
    }
    exponent = Round(exponent, significand);
    return Pack(sign, exponent, significand);
}

uint32_t ShiftRight(uint32_t value, int places) {
    return places >= 32 ? 0 : value >> places;
}

constexpr uint32_t kLargestPattern = 0x7FFFFFFF;

}  // namespace

uint32_t SingleAdd(uint32_t left, uint32_t right) {
    Working l = Unpack(left);
    Working r = Unpack(right);
    // The smaller one shifts right one place per round, bits falling off.
    int exponent = r.Exponent;
    if (l.Exponent > r.Exponent) {
        r.Significand = ShiftRight(r.Significand, l.Exponent - r.Exponent);
        exponent = l.Exponent;
    } else if (l.Exponent < r.Exponent) {
        l.Significand = ShiftRight(l.Significand, r.Exponent - l.Exponent);
    }
    if (l.Sign == r.Sign) {
        const uint64_t sum = static_cast<uint64_t>(l.Significand) + r.Significand;
        uint32_t significand = static_cast<uint32_t>(sum);
        if ((sum >> 32) != 0 && (significand != 0 || exponent != 0)) {
            significand = significand >> 1 | 0x80000000u;
            exponent = (exponent + 1) & 0xFF;
        }
        return NormalisePack(r.Sign, exponent, significand);
    }
    if (l.Significand >= r.Significand)
        return NormalisePack(l.Sign, exponent, l.Significand - r.Significand);
    return NormalisePack(r.Sign, exponent, r.Significand - l.Significand);
}

uint32_t SingleSubtract(uint32_t left, uint32_t right) {
    return SingleAdd(left, right ^ 0x80000000u);
}

uint32_t SingleCompareDifference(uint32_t left, uint32_t right) {
    return SingleAdd(left, right ^ 0x80000000u);
}

bool SingleEqual(uint32_t left, uint32_t right) {
    // Only B is looked at for -0: a B of 80H counts as 0.
    if ((left >> 24) == 0x80) left &= 0x00FFFFFF;
    if ((right >> 24) == 0x80) right &= 0x00FFFFFF;
    return left == right;
}

SingleResult SingleMultiply(uint32_t left, uint32_t right) {
    const Working l = Unpack(left);
    const Working r = Unpack(right);
    if (l.Exponent == 0 || r.Exponent == 0) return {};
    const int sign = l.Sign ^ r.Sign;
    // The unbiased sum must fit a signed byte.
    const int sum = (l.Exponent - 128) + (r.Exponent - 128);
    if (sum < -128) return {0, 2};
    if (sum > 127) return {static_cast<uint32_t>(sign) << 31 | kLargestPattern, 2};
    // 32 rounds of shift-right multiplication keep the upper 32 bits.
    uint32_t product =
        static_cast<uint32_t>((static_cast<uint64_t>(l.Significand) * r.Significand) >> 32);
    int exponent = sum + 128;
    if (product & 0x80000000u) {
        exponent += 2;
    } else {
        product <<= 1;
        exponent += 1;
    }
    if (exponent > 255) return {static_cast<uint32_t>(sign) << 31 | kLargestPattern, 2};
    exponent = Round(exponent, product);
    if (exponent > 255) return {static_cast<uint32_t>(sign) << 31 | kLargestPattern, 2};
    return {Pack(sign, exponent, product), 0};
}

SingleResult SingleDivide(uint32_t left, uint32_t right) {
    const Working l = Unpack(left);
    const Working r = Unpack(right);
    if (l.Exponent == 0) return {};
    if (r.Exponent == 0) return {0, 1};
    const int sign = l.Sign ^ r.Sign;
    const int difference = l.Exponent - r.Exponent;
    if (difference < -128 || difference > 127) return {0, 2};
    // 32 rounds of restoring division of the 24-bit significands.
    const uint64_t dividend = static_cast<uint64_t>(l.Significand >> 8) << 31;
    uint32_t quotient = static_cast<uint32_t>(dividend / (r.Significand >> 8));
    int exponent = difference + 128;
    if (quotient & 0x80000000u) {
        exponent -= 1;
    } else {
        quotient <<= 1;
        exponent -= 2;
    }
    if (exponent <= 0) return {};
    return {NormalisePack(sign, exponent, quotient), 0};
}

uint32_t SingleToLong(uint32_t value) {
    const Working w = Unpack(value);
    if (w.Exponent < 0x7F) return 0;
    const int places = 0x9E - w.Exponent;
    if (places < 0) return 0;
    const uint32_t magnitude = w.Significand >> places;
    return w.Sign ? 0u - magnitude : magnitude;
}

uint32_t ULongToSingle(uint32_t value) {
    if (value == 0) return 0;
    return NormalisePack(0, 0x9E, value);
}

uint32_t LongToSingle(int32_t value) {
    if (value >= 0) return ULongToSingle(static_cast<uint32_t>(value));
    const uint32_t magnitude = 0u - static_cast<uint32_t>(value);
    return NormalisePack(1, 0x9E, magnitude);
}

double SingleToDouble(uint32_t value) {
    const int exponent = static_cast<int>((value >> 23) & 0xFF);
    if (exponent == 0) return 0.0;
    const double magnitude =
        std::ldexp(static_cast<double>((value & 0x7FFFFF) | 0x800000), exponent - 150);
    return (value >> 31) ? -magnitude : magnitude;
}

SingleResult SingleFromDouble(double value) {
    if (std::isnan(value)) return {0, 1};
    const uint32_t sign = std::signbit(value) ? 0x80000000u : 0;
    const double magnitude = std::fabs(value);
    if (magnitude == 0.0) return {};
    if (std::isinf(magnitude)) return {sign | kLargestPattern, 2};
    int binary = 0;
    const double fraction = std::frexp(magnitude, &binary);  // [0.5, 1)
    // 24 significant bits, the half rounding away from zero.
    double scaled = std::floor(std::ldexp(fraction, 24) + 0.5);
    int exponent = binary - 1 + 127;
    if (scaled >= 16777216.0) {
        scaled /= 2;
        exponent += 1;
    }
    if (exponent < 1) return {};
    if (exponent > 255) return {sign | kLargestPattern, 2};
    const uint32_t significand = static_cast<uint32_t>(scaled);
    return {sign | static_cast<uint32_t>(exponent) << 23 | (significand & 0x7FFFFF), 0};
}

}  // namespace mb
