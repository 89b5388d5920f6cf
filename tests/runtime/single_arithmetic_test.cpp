// The Single routines of the library against the reference model, bit for bit:
// 10,000 random operand pairs for each of add, subtract, multiply, divide and
// the two comparisons (fixed seed), an edge table, and the conversions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <random>
#include <sstream>
#include <vector>

#include "runtime/single_model.h"
#include "support/runtime_suite.h"

namespace mb::testing {
namespace {

constexpr int kPairs = 10000;
constexpr int kPreservedHL = 0x1234;

class SingleRoutines : public RuntimeSuite {
  protected:
    static void SetUpTestSuite() {
        Build(NeedsOf({kNeedSingleAdd, kNeedSingleSubtract, kNeedSingleMultiply, kNeedSingleDivide,
                       kNeedSingleCompare, kNeedSingleToLong, kNeedLongToSingle}));
    }
};

std::string Hex(uint32_t value) {
    std::ostringstream text;
    text << std::hex << std::uppercase << std::setw(8) << std::setfill('0') << value;
    return text.str();
}

// Random pairs: half of them with exponents close together (where the
// significands meet), the rest anywhere, zeros and exponent 255 included;
// fractions now and then all zeros or all ones.
std::vector<std::pair<uint32_t, uint32_t>> RandomPairs(uint32_t seed) {
    std::mt19937 rng(seed);
    auto fraction = [&] {
        switch (rng() % 8) {
            case 0: return 0u;
            case 1: return 0x7FFFFFu;
            default: return static_cast<uint32_t>(rng() & 0x7FFFFF);
        }
    };
    std::vector<std::pair<uint32_t, uint32_t>> pairs;
    for (int i = 0; i < kPairs; ++i) {
        const uint32_t e1 = rng() % 256;
        uint32_t e2 = rng() % 256;
        if (i % 2)
            e2 = static_cast<uint32_t>(
                std::clamp<int>(static_cast<int>(e1) + static_cast<int>(rng() % 61) - 30, 0, 255));
        const uint32_t left = (rng() & 0x80000000u) | e1 << 23;
        const uint32_t leftFraction = fraction();
        const uint32_t right = (rng() & 0x80000000u) | e2 << 23;
        pairs.emplace_back(left | leftFraction, right | fraction());
    }
    return pairs;
}

// Operands where the rules of the format decide.
const std::vector<std::pair<uint32_t, uint32_t>> kEdges = {
    {0x00000000, 0x00000000},  // 0 and 0
    {0x80000000, 0x00000000},  // -0 and 0
    {0x00000000, 0x80000000},
    {0x80000000, 0x80000000},
    {0x00000000, 0x3F800000},  // 0 and 1
    {0x3F800000, 0x00000000},
    {0x00000000, 0x00800000},  // 0 and the smallest: the zero's hidden bit shifts one place only
    {0x00000001, 0x00000001},  // a fraction under exponent 0
    {0x7F800000, 0x3F800000},  // exponent 255 is ordinary
    {0x7FFFFFFF, 0x7FFFFFFF},
    {0xFFFFFFFF, 0x7FFFFFFF},
    {0x7F800000, 0x40000000},  // 2^128 * 2 overflows; / 2 does not
    {0x7F000000, 0x7F000000},  // overflow of the multiply, of the add's exponent
    {0x00800000, 0x00800000},  // too small for the multiply
    {0x00800000, 0x7F000000},  // the divide's exponent difference out of range
    {0x3F800000, 0x00000000},  // division by zero
    {0x3F800000, 0x80000000},
    {0x3F800000, 0x33800000},  // 1 and 2^-24: the half rounds away from zero
    {0x3F800000, 0x33000000},  // 25 places apart
    {0x3F800000, 0x2B800000},  // 40 places apart
    {0x3F800000, 0x00800000},  // 126 places apart
    {0x7F7FFFFF, 0x00800000},  // 253 places apart
    {0x3F800000, 0xBF800000},  // cancel
    {0x3F800001, 0xBF800000},
    {0x3FFFFFFF, 0x3FFFFFFF},  // rounding carries into the exponent
    {0x7F7FFFFF, 0x3F800001},  // product rounding at the top of the range
    {0x7FFFFFFF, 0x3F800001},
    {0x3F800000, 0x3F800000},
    {0xC0490FDB, 0x40490FDB},
};

std::vector<RoutineCall> Calls(const std::vector<std::pair<uint32_t, uint32_t>>& pairs) {
    std::vector<RoutineCall> calls;
    for (auto [left, right] : pairs)
        calls.push_back({right, kPreservedHL, 0, false, StackOperand::kConsumed, left});
    return calls;
}

// Runs routine over pairs and edges and compares each result with expected,
// which gives the model's bits and error word value.
template <typename Model>
void ExpectAgreement(RuntimeProgram& program, const char* routine, uint32_t seed, Model model) {
    auto pairs = RandomPairs(seed);
    pairs.insert(pairs.end(), kEdges.begin(), kEdges.end());
    const auto results = CallEach(program, routine, Calls(pairs));
    int agreeing = 0;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto [left, right] = pairs[i];
        const SingleResult expected = model(left, right);
        const std::string what = std::string(routine) + " " + Hex(left) + ", " + Hex(right);
        EXPECT_EQ(Hex(results[i].BCDE), Hex(expected.Bits)) << what;
        EXPECT_EQ(results[i].ErrorWord, expected.Error) << what;
        EXPECT_EQ(results[i].HL, kPreservedHL) << what << ": HL must come back";
        EXPECT_EQ(results[i].SP, kStackTop - 2) << what << ": the operand must be taken off";
        agreeing += results[i].BCDE == expected.Bits && results[i].ErrorWord == expected.Error;
        if (::testing::Test::HasFailure()) return;
    }
    EXPECT_EQ(agreeing, static_cast<int>(pairs.size()));
}

TEST_F(SingleRoutines, AddAgreesWithTheModel) {
    ExpectAgreement(*program_, "A201", 201, [](uint32_t l, uint32_t r) {
        return SingleResult{SingleAdd(l, r), 0};
    });
}

TEST_F(SingleRoutines, SubtractAgreesWithTheModel) {
    ExpectAgreement(*program_, "S201", 202, [](uint32_t l, uint32_t r) {
        return SingleResult{SingleSubtract(l, r), 0};
    });
}

TEST_F(SingleRoutines, MultiplyAgreesWithTheModelErrorsIncluded) {
    ExpectAgreement(*program_, "M201", 203, SingleMultiply);
}

TEST_F(SingleRoutines, DivideAgreesWithTheModelErrorsIncluded) {
    ExpectAgreement(*program_, "D201", 204, SingleDivide);
}

TEST_F(SingleRoutines, OrderingLeavesTheDifferenceAndItsSignAndZeroInTheFlags) {
    ExpectAgreement(*program_, "C202", 205, [](uint32_t l, uint32_t r) {
        return SingleResult{SingleCompareDifference(l, r), 0};
    });
    auto pairs = RandomPairs(206);
    pairs.insert(pairs.end(), kEdges.begin(), kEdges.end());
    const auto results = CallEach(*program_, "C202", Calls(pairs));
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const uint32_t difference = SingleCompareDifference(pairs[i].first, pairs[i].second);
        ASSERT_EQ((results[i].F & kFlagS) != 0, SingleDifferenceNegative(difference))
            << Hex(pairs[i].first) << " < " << Hex(pairs[i].second);
        ASSERT_EQ((results[i].F & kFlagZ) != 0, SingleDifferenceZero(difference))
            << Hex(pairs[i].first) << " == " << Hex(pairs[i].second);
    }
}

TEST_F(SingleRoutines, EqualityAgreesWithTheModel) {
    auto pairs = RandomPairs(207);
    // Equal pairs, with -0 against 0 and against another B of 80H.
    for (int i = 0; i < 2000; ++i) pairs.emplace_back(pairs[i].first, pairs[i].first);
    pairs.insert(pairs.end(), kEdges.begin(), kEdges.end());
    pairs.insert(pairs.end(),
                 {{0x80000000, 0x00000000}, {0x80123456, 0x00123456}, {0x00000001, 0}});
    const auto results = CallEach(*program_, "C201", Calls(pairs));
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        ASSERT_EQ((results[i].F & kFlagZ) != 0, SingleEqual(pairs[i].first, pairs[i].second))
            << Hex(pairs[i].first) << " == " << Hex(pairs[i].second);
        ASSERT_EQ(results[i].HL, kPreservedHL);
        ASSERT_EQ(results[i].SP, kStackTop - 2);
    }
}

TEST_F(SingleRoutines, SingleToLongTruncatesAndKeepsHL) {
    struct Case {
        float value;
        uint32_t expected;
    } cases[] = {
        // clang-format off
        {0.0f, 0}, {-0.0f, 0}, {0.999f, 0}, {-0.999f, 0}, {1.0f, 1}, {-2.75f, 0xFFFFFFFE},
        {12345.9f, 12345}, {-1e9f, static_cast<uint32_t>(-1000000000)}, {2147483648.0f, 0x80000000},
        {3e9f, 3000000000u}, {-3e9f, static_cast<uint32_t>(-3000000000LL)},
        {4294967040.0f, 4294967040u}, {5e9f, 0}, {1e30f, 0}, {1e-30f, 0},
        // clang-format on
    };
    std::vector<RoutineCall> calls;
    std::vector<uint32_t> expected;
    for (const Case& c : cases) {
        uint32_t bits;
        std::memcpy(&bits, &c.value, sizeof bits);
        calls.push_back({bits, kPreservedHL});
        expected.push_back(c.expected);
    }
    std::mt19937 rng(208);
    for (int i = 0; i < 5000; ++i) {
        const uint32_t bits = RandomSingle(rng, 110, 60);
        calls.push_back({bits, kPreservedHL});
        expected.push_back(SingleToLong(bits));
    }
    const auto results = CallEach(*program_, "X001", calls);
    for (std::size_t i = 0; i < calls.size(); ++i) {
        ASSERT_EQ(results[i].BCDE, expected[i]) << "X001 of " << Hex(calls[i].BCDE);
        ASSERT_EQ(results[i].HL, kPreservedHL);
    }
}

TEST_F(SingleRoutines, LongToSingleRoundsToTheNearestHalvesAway) {
    std::vector<uint32_t> values = {0,          1,          0xFFFFFFFF, 0x80000000, 0x7FFFFFFF,
                                    16777217,   16777219,   0x01000001, 1000000000, 0xFFFFFF80,
                                    0x12345678, 0xFEDCBA98, 255,        0x80000001};
    std::mt19937 rng(209);
    for (int i = 0; i < 5000; ++i) {
        const uint32_t value = rng();
        values.push_back(value >> (rng() % 32));
    }
    std::vector<RoutineCall> calls;
    for (uint32_t v : values) calls.push_back({v, kPreservedHL});
    const auto signedResults = CallEach(*program_, "X101", calls);
    const auto unsignedResults = CallEach(*program_, "X111", calls);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const int32_t asSigned = static_cast<int32_t>(values[i]);
        ASSERT_EQ(Hex(signedResults[i].BCDE), Hex(SingleFromDouble(asSigned).Bits))
            << "X101 of " << asSigned;
        ASSERT_EQ(Hex(unsignedResults[i].BCDE), Hex(SingleFromDouble(values[i]).Bits))
            << "X111 of " << values[i];
        ASSERT_EQ(signedResults[i].BCDE, LongToSingle(asSigned));
        ASSERT_EQ(signedResults[i].HL, kPreservedHL);
        ASSERT_EQ(unsignedResults[i].HL, kPreservedHL);
    }
}

}  // namespace
}  // namespace mb::testing
