// The 8-, 16- and 32-bit multiply, divide and compare routines against C++ on
// random operands and on the extremes, each from one assembled program.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "support/runtime_suite.h"

namespace mb::testing {
namespace {

class IntegerRoutines : public RuntimeSuite {
  protected:
    static void SetUpTestSuite() {
        Build(NeedsOf({kNeedIntegerMultiply, kNeedIntegerDivide, kNeedIntegerCompare, kNeedLongAdd,
                       kNeedLongSubtract, kNeedLongMultiply, kNeedLongDivide, kNeedLongCompare,
                       kNeedShortMultiply, kNeedShortDivide, kNeedShortCompare}));
    }
};

// Operands: every pair of the extremes, then random ones with a share of small
// magnitudes, where the division and comparison paths differ most.
std::vector<std::pair<uint32_t, uint32_t>> Operands(const std::vector<uint32_t>& extremes,
                                                    uint32_t mask, int randomCount, uint32_t seed) {
    std::vector<std::pair<uint32_t, uint32_t>> pairs;
    for (uint32_t a : extremes)
        for (uint32_t b : extremes) pairs.emplace_back(a & mask, b & mask);
    std::mt19937 rng(seed);
    auto value = [&] {
        const uint32_t r = rng();
        switch (rng() % 4) {
            case 0: return (r % 200) & mask;
            case 1: return (0u - r % 200) & mask;
            default: return r & mask;
        }
    };
    for (int i = 0; i < randomCount; ++i) {
        const uint32_t a = value();
        pairs.emplace_back(a, value());
    }
    return pairs;
}

const std::vector<uint32_t> kExtremes16 = {0,      1,      2,      10,     0x7FFF,
                                           0x8000, 0x8001, 0xFFFF, 0xFFFE, 0x1234};
const std::vector<uint32_t> kExtremes8 = {0, 1, 2, 10, 0x7F, 0x80, 0x81, 0xFF, 0xFE};
const std::vector<uint32_t> kExtremes32 = {0,          1,          2,          10,
                                           1000000000, 0x7FFFFFFF, 0x80000000, 0x80000001,
                                           0xFFFFFFFF, 0xFFFFFFFE, 0x10000,    0xFFFF};

int16_t S16(uint32_t v) {
    return static_cast<int16_t>(v & 0xFFFF);
}
int8_t S8(uint32_t v) {
    return static_cast<int8_t>(v & 0xFF);
}
int32_t S32(uint32_t v) {
    return static_cast<int32_t>(v);
}

// The division rule of the library: magnitudes divided unsigned, a zero
// divisor giving all ones, the quotient negated when the signs differ; the
// remainder is that of the magnitudes.
struct Division {
    uint32_t Quotient, Remainder;
};
Division Divide(uint32_t a, uint32_t b, int bits, bool isSigned) {
    const uint32_t mask = bits == 32 ? 0xFFFFFFFF : (1u << bits) - 1;
    const uint32_t top = 1u << (bits - 1);
    bool negative = false;
    if (isSigned) {
        negative = ((a ^ b) & top) != 0;
        if (a & top) a = (0u - a) & mask;
        if (b & top) b = (0u - b) & mask;
    }
    Division d{b == 0 ? mask : a / b, b == 0 ? a : a % b};
    if (negative) d.Quotient = (0u - d.Quotient) & mask;
    return d;
}

TEST_F(IntegerRoutines, SixteenBitMultiplyKeepsTheLowWordAndPreservesBcDe) {
    std::vector<RoutineCall> calls;
    const auto pairs = Operands(kExtremes16, 0xFFFF, 3000, 16);
    for (auto [a, b] : pairs) calls.push_back({0xABCD0000u | b, static_cast<int>(a)});
    const auto results = CallEach(*program_, "M001", calls);
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const auto [a, b] = pairs[i];
        ASSERT_EQ(results[i].HL, static_cast<int>((a * b) & 0xFFFF)) << a << " * " << b;
        ASSERT_EQ(results[i].BCDE, calls[i].BCDE) << "BC and DE must come back";
    }
}

TEST_F(IntegerRoutines, SixteenBitDivisionUnsignedAndSigned) {
    std::vector<RoutineCall> calls;
    const auto pairs = Operands(kExtremes16, 0xFFFF, 3000, 17);
    for (auto [a, b] : pairs) calls.push_back({0x5AA50000u | b, static_cast<int>(a)});
    for (bool isSigned : {false, true}) {
        const auto results = CallEach(*program_, isSigned ? "D001" : "D011", calls);
        for (std::size_t i = 0; i < calls.size(); ++i) {
            const auto [a, b] = pairs[i];
            const Division d = Divide(a, b, 16, isSigned);
            ASSERT_EQ(results[i].HL, static_cast<int>(d.Quotient))
                << (isSigned ? "signed " : "unsigned ") << a << " / " << b;
            if (!isSigned) {
                ASSERT_EQ(results[i].BCDE & 0xFFFF, d.Remainder) << a << " % " << b;
            }
            ASSERT_EQ(results[i].BCDE >> 16, 0x5AA5u) << "BC must come back";
        }
    }
}

TEST_F(IntegerRoutines, SixteenBitCompareGivesCarryForLessAndZeroForEqual) {
    std::vector<RoutineCall> calls;
    const auto pairs = Operands(kExtremes16, 0xFFFF, 2000, 18);
    for (auto [a, b] : pairs) calls.push_back({b, static_cast<int>(a)});
    const auto results = CallEach(*program_, "C001", calls);
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const auto [a, b] = pairs[i];
        ASSERT_EQ((results[i].F & kFlagC) != 0, S16(a) < S16(b)) << S16(a) << " < " << S16(b);
        ASSERT_EQ((results[i].F & kFlagZ) != 0, a == b) << S16(a) << " == " << S16(b);
    }
}

TEST_F(IntegerRoutines, EightBitMultiplyDivideAndCompare) {
    const auto pairs = Operands(kExtremes8, 0xFF, 1500, 8);
    std::vector<RoutineCall> calls, divideUnsigned;  // A and L, or H divisor and L dividend
    for (auto [a, b] : pairs) {
        calls.push_back({0x12345678, static_cast<int>(b), static_cast<int>(a)});
        divideUnsigned.push_back({0x12345678, static_cast<int>(b << 8 | a), 0});
    }
    const auto products = CallEach(*program_, "M01", calls);
    const auto signedQuotients = CallEach(*program_, "D01", calls);
    const auto unsignedQuotients = CallEach(*program_, "D11", divideUnsigned);
    const auto comparisons = CallEach(*program_, "C01", calls);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto [a, b] = pairs[i];
        ASSERT_EQ(products[i].HL, static_cast<int>(a * b)) << a << " * " << b;
        const Division s = Divide(a, b, 8, true);
        ASSERT_EQ(signedQuotients[i].A, static_cast<int>(s.Quotient)) << S8(a) << " / " << S8(b);
        ASSERT_EQ(signedQuotients[i].HL >> 8, static_cast<int>(s.Remainder))
            << S8(a) << " % " << S8(b);
        const Division u = Divide(a, b, 8, false);
        ASSERT_EQ(unsignedQuotients[i].HL & 0xFF, static_cast<int>(u.Quotient)) << a << " / " << b;
        ASSERT_EQ(unsignedQuotients[i].A, static_cast<int>(u.Quotient));
        ASSERT_EQ(unsignedQuotients[i].HL >> 8, static_cast<int>(u.Remainder)) << a << " % " << b;
        ASSERT_EQ((comparisons[i].F & kFlagC) != 0, S8(a) < S8(b)) << S8(a) << " < " << S8(b);
        ASSERT_EQ((comparisons[i].F & kFlagZ) != 0, a == b);
        for (const auto* r : {&products[i], &signedQuotients[i], &unsignedQuotients[i]})
            ASSERT_EQ(r->BCDE, 0x12345678u) << "BC and DE must come back";
    }
}

TEST_F(IntegerRoutines, LongAddSubtractAndMultiplyConsumeTheStackOperand) {
    const auto pairs = Operands(kExtremes32, 0xFFFFFFFF, 3000, 32);
    std::vector<RoutineCall> calls, borrowing;
    for (auto [a, b] : pairs) {
        calls.push_back({b, 0, 0, false, StackOperand::kConsumed, a});
        borrowing.push_back({b, 0, 0, true, StackOperand::kConsumed, a});
    }
    const auto sums = CallEach(*program_, "A101", calls);
    const auto differences = CallEach(*program_, "S101", calls);
    const auto borrowed = CallEach(*program_, "S101", borrowing);
    const auto products = CallEach(*program_, "M101", calls);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto [a, b] = pairs[i];
        ASSERT_EQ(sums[i].BCDE, a + b) << a << " + " << b;
        ASSERT_EQ(differences[i].BCDE, a - b) << a << " - " << b;
        ASSERT_EQ((differences[i].F & kFlagC) != 0, a < b) << "borrow of " << a << " - " << b;
        ASSERT_EQ((differences[i].F & kFlagZ) != 0, a == b) << "zero of " << a << " - " << b;
        ASSERT_EQ(borrowed[i].BCDE, a - b - 1) << a << " - " << b << " - carry";
        ASSERT_EQ((borrowed[i].F & kFlagC) != 0, a <= b)
            << "borrow of " << a << " - " << b << " - 1";
        ASSERT_EQ(products[i].BCDE, a * b) << a << " * " << b;
        for (const auto* r : {&sums[i], &differences[i], &products[i]})
            ASSERT_EQ(r->SP, kStackTop - 2) << "the stack operand must be taken off";
    }
}

TEST_F(IntegerRoutines, LongDivisionQuotientAndRemainder) {
    const auto pairs = Operands(kExtremes32, 0xFFFFFFFF, 3000, 33);
    std::vector<RoutineCall> calls;
    for (auto [a, b] : pairs) calls.push_back({b, 0, 0, false, StackOperand::kConsumed, a});
    for (bool isSigned : {false, true}) {
        const auto results = CallEach(*program_, isSigned ? "D101" : "D121", calls);
        for (std::size_t i = 0; i < calls.size(); ++i) {
            const auto [a, b] = pairs[i];
            const Division d = Divide(a, b, 32, isSigned);
            ASSERT_EQ(results[i].BCDE, d.Quotient)
                << (isSigned ? "signed " : "unsigned ") << a << " / " << b;
            ASSERT_EQ(results[i].AltBCDE, d.Remainder) << a << " % " << b;
            ASSERT_EQ(results[i].SP, kStackTop - 2);
        }
    }
}

TEST_F(IntegerRoutines, LongCompareGivesCarryForLessAndZeroForEqual) {
    const auto pairs = Operands(kExtremes32, 0xFFFFFFFF, 3000, 34);
    std::vector<RoutineCall> calls;
    for (auto [a, b] : pairs) calls.push_back({b, 0, 0, false, StackOperand::kConsumed, a});
    const auto results = CallEach(*program_, "C101", calls);
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const auto [a, b] = pairs[i];
        ASSERT_EQ((results[i].F & kFlagC) != 0, S32(a) < S32(b)) << S32(a) << " < " << S32(b);
        ASSERT_EQ((results[i].F & kFlagZ) != 0, a == b) << S32(a) << " == " << S32(b);
        ASSERT_EQ(results[i].SP, kStackTop - 2);
    }
}

}  // namespace
}  // namespace mb::testing
