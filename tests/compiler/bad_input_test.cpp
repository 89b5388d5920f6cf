// Inputs far outside what a person writes, each of which once broke the
// compiler: the compile must end with the right result or one clear message.
#include <gtest/gtest.h>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

// text inside `pairs` pairs of parentheses.
std::string Nested(const std::string& text, int pairs) {
    return std::string(pairs, '(') + text + std::string(pairs, ')');
}

// Tests of If and While inside 50,000 pairs of parentheses, 100,000 characters
// each: the pairs are taken off in one pass over the text, not one pass per pair.
TEST(BadInput, TestsInDeepParenthesesCompileAndRun) {
    constexpr int kPairs = 50000;
    BasicRun b("bad_input_deep_tests");
    ASSERT_TRUE(b.CompileAndRun(Lines({
        "Dim a, n As Byte",
        "a = 1",
        "If " + Nested("a = 1", kPairs) + " Then n = n + 1",
        "If " + Nested("a = 2", kPairs) + " Then n = n + 10",
        "If " + Nested("a = 1 And n = 1", kPairs) + " Then",
        "n = n + 100",
        "Endif",
        "While " + Nested("a < 5", kPairs),
        "a = a + 1",
        "Wend",
        "Print 1, n, \" \", a",
    }))) << b.Failure;
    EXPECT_EQ(b.run.Output, "101 5");
}

}  // namespace
}  // namespace mb::testing
