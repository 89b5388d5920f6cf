// The mathematical functions F001 to F007 against the C library over dense
// sweeps of their domains, their domain and overflow cases, and the block's
// private arithmetic against the Single model.
//
// Bounds. Sqr, Exp, Ln and Log keep relative precision: they are held to 1,
// 1.5, 1.5 and 2.5 units in the last place of the result (a unit is 2^-24 to
// 2^-23 of the value; 0.66, 1.06, 1.01 and 2.04 were measured). Sin, Cos and
// Tan are held to absolute bounds: their arguments are reduced with the Single
// values of pi/2 and 2 pi, which differ from the true ones by 4.4E-8 and 1.7E-7,
// and Sin adds -pi/2 to its argument, which rounds it to the last place of
// |x| + pi/2; near a zero of the function no relative bound can hold. Cos is
// within 1.2E-7 for |x| up to pi/2 (8.2E-8 measured), 2E-7 up to 2 pi; Sin
// within 4E-7 up to 2 pi (3.0E-7 measured); beyond, both grow with the
// reduction by 1.5E-7 |x| (1.2E-7 |x| measured). Tan, Sin / Cos, is within
// 3E-7 (1 + tan^2 x) on |x| <= 1.5 (from the bounds of both).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

#include "runtime/single_model.h"
#include "support/runtime_suite.h"

namespace mb::testing {
namespace {

class SingleMath : public RuntimeSuite {
  protected:
    static void SetUpTestSuite() { Build(NeedsOf({kNeedSingleMath})); }
    static RoutineResult Apply(const char* function, uint32_t argument) {
        return program_->CallOnce(function,
                                  {argument, 0, 0, false, StackOperand::kArgument, argument});
    }
};

double Ulp(double value) {
    int exponent = 0;
    std::frexp(value, &exponent);
    return std::ldexp(1.0, exponent - 24);
}

uint32_t S(double value) {
    return SingleFromDouble(value).Bits;
}

struct Sweep {
    const char* function;
    double (*reference)(double);
    std::vector<double> arguments;
    // The error allowed at x for the reference value y.
    std::function<double(double x, double y)> allowed;
};

std::vector<double> Linear(double from, double to, int count) {
    std::vector<double> values;
    for (int i = 0; i <= count; ++i) values.push_back(from + (to - from) * i / count);
    return values;
}

// Powers of two from 2^from to 2^to, each with a few significands.
std::vector<double> Binades(int from, int to) {
    std::vector<double> values;
    for (int e = from; e <= to; ++e)
        for (double m : {1.0, 1.1, 1.25, 1.4142, 1.5, 1.75, 1.999})
            values.push_back(std::ldexp(m, e));
    return values;
}

std::vector<double> Join(std::vector<double> a, const std::vector<double>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST_F(SingleMath, FunctionsAgreeWithTheCLibraryOverTheirDomains) {
    auto ulps = [](double n) { return [n](double, double y) { return n * Ulp(y); }; };
    auto trig = [](double withinTwoPi, double perX) {
        return [=](double x, double) {
            return std::fabs(x) <= 6.2832 ? withinTwoPi : withinTwoPi + perX * std::fabs(x);
        };
    };
    const std::vector<Sweep> sweeps = {
        {"F001", std::sqrt, Join(Binades(-126, 127), Linear(0, 100, 2000)), ulps(1)},
        {"F002", std::sin, Join(Linear(-6.2832, 6.2832, 3000), Linear(-1000, 1000, 1000)),
         trig(4e-7, 1.5e-7)},
        {"F003", std::cos, Linear(-1.5708, 1.5708, 1000), [](double, double) { return 1.2e-7; }},
        {"F003", std::cos, Join(Linear(-6.2832, 6.2832, 3000), Linear(-1000, 1000, 1000)),
         trig(2e-7, 1.5e-7)},
        {"F004", std::tan, Linear(-1.5, 1.5, 3000),
         [](double, double y) { return 3e-7 * (1 + y * y); }},
        {"F005", std::exp, Join(Linear(-87, 88.72, 3000), Linear(-1, 1, 1000)), ulps(1.5)},
        {"F006", std::log, Join(Binades(-126, 127), Linear(0.5, 2, 2000)), ulps(1.5)},
        {"F007", std::log10, Join(Binades(-126, 127), Linear(0.5, 20, 1000)), ulps(2.5)},
    };
    for (const Sweep& sweep : sweeps) {
        std::vector<RoutineCall> calls;
        std::vector<double> xs;
        for (double value : sweep.arguments) {
            const uint32_t bits = S(value);
            calls.push_back({bits, 0, 0, false, StackOperand::kArgument, bits});
            xs.push_back(SingleToDouble(bits));
        }
        const auto results = CallEach(*program_, sweep.function, calls);
        for (std::size_t i = 0; i < xs.size(); ++i) {
            const double expected = sweep.reference(xs[i]);
            const double got = SingleToDouble(results[i].BCDE);
            ASSERT_LE(std::fabs(got - expected), sweep.allowed(xs[i], expected))
                << sweep.function << "(" << xs[i] << ") = " << got << ", the C library gives "
                << expected;
            ASSERT_EQ(results[i].ErrorWord, 0) << sweep.function << "(" << xs[i] << ")";
            ASSERT_EQ(results[i].SP, kStackTop - 2) << "the argument stays for the caller to drop";
        }
    }
}

TEST_F(SingleMath, ExactValuesDomainErrorsAndOverflows) {
    struct Case {
        const char* function;
        uint32_t argument;
        uint32_t result;
        int error;
    } cases[] = {
        // clang-format off
        {"F001", S(0), 0, 0},
        {"F001", 0x80000000, 0, 0},  // Sqr(-0) is 0, no error
        {"F001", S(1), S(1), 0}, {"F001", S(4), S(2), 0}, {"F001", S(0x1p126), S(0x1p63), 0},
        {"F001", S(-4), 0, 1}, {"F002", S(0), 0, 0}, {"F003", S(0), S(1), 0}, {"F004", S(0), 0, 0},
        {"F004", 0x3FC90FDB, 0x7F7FFFFF, 2},  // pi/2
        {"F004", 0xBFC90FDB, 0x7F7FFFFF, 2}, {"F004", S(1e-16), 0, 0}, {"F004", S(-1e-16), 0, 0},
        {"F005", S(0), S(1), 0},
        {"F005", 0x42B17218, S(std::exp(SingleToDouble(0x42B17218))), 0},  // 88.72284: still fine
        {"F005", 0x42B17219, 0x7F7FFFFF, 2},                               // just above
        {"F005", S(1e30), 0x7F7FFFFF, 2},
        {"F005", S(-88), 0, 0},  // below the range of the format
        {"F005", S(-1e30), 0, 0}, {"F006", S(1), 0, 0}, {"F006", S(0), 0, 1},
        {"F006", 0x80000000, 0, 1}, {"F006", S(-2), 0, 1}, {"F007", S(10), S(1), 0},
        {"F007", S(100), S(2), 0}, {"F007", S(-10), 0, 1},
        // clang-format on
    };
    for (const Case& c : cases) {
        const RoutineResult r = Apply(c.function, c.argument);
        EXPECT_EQ(r.BCDE, c.result)
            << c.function << "(" << SingleToDouble(c.argument) << ") = " << SingleToDouble(r.BCDE);
        EXPECT_EQ(r.ErrorWord, c.error) << c.function << "(" << SingleToDouble(c.argument) << ")";
    }
}

// The block's own add, subtract, negated add, multiply and divide are copies;
// they must agree with the routines they copy.
TEST_F(SingleMath, PrivateArithmeticAgreesWithTheModel) {
    std::mt19937 rng(14);
    std::vector<std::pair<uint32_t, uint32_t>> pairs;
    for (int i = 0; i < 3000; ++i) {
        const uint32_t e1 = rng() % 256;
        const uint32_t e2 = i % 2 ? e1 ^ (rng() % 16) : rng() % 256;
        const uint32_t left = RandomSingle(rng, e1, 1);
        pairs.emplace_back(left, RandomSingle(rng, e2, 1));
    }
    pairs.insert(pairs.end(),
                 {{0, 0}, {0x3F800000, 0}, {0x7F800000, 0x40000000}, {0x00800000, 0x00800000}});
    struct Entry {
        const char* label;
        std::function<SingleResult(uint32_t, uint32_t)> model;
    } entries[] = {
        {"F072",
         [](uint32_t l, uint32_t r) {
             return SingleResult{SingleAdd(l, r), 0};
         }},
        {"F071",
         [](uint32_t l, uint32_t r) {
             return SingleResult{SingleSubtract(l, r), 0};
         }},
        {"F054",
         [](uint32_t l, uint32_t r) {
             return SingleResult{SingleAdd(l ^ 0x80000000u, r), 0};
         }},
        {"F053", SingleMultiply},
        {"F050", SingleDivide},
    };
    std::vector<RoutineCall> calls;
    for (auto [l, r] : pairs) calls.push_back({r, 0x4321, 0, false, StackOperand::kConsumed, l});
    for (const Entry& entry : entries) {
        const auto results = CallEach(*program_, entry.label, calls);
        for (std::size_t i = 0; i < pairs.size(); ++i) {
            const SingleResult expected = entry.model(pairs[i].first, pairs[i].second);
            ASSERT_EQ(results[i].BCDE, expected.Bits)
                << entry.label << std::hex << " " << pairs[i].first << ", " << pairs[i].second;
            ASSERT_EQ(results[i].ErrorWord, expected.Error) << entry.label;
            ASSERT_EQ(results[i].HL, 0x4321) << entry.label << ": HL must come back";
        }
    }
}

}  // namespace
}  // namespace mb::testing
