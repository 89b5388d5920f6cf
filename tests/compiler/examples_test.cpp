// The BASIC examples of examples/basic compile, assemble and print what their
// comments promise, so that they never rot.
#include <gtest/gtest.h>

#include "tests/support/basic_run.h"

namespace mb::testing {
namespace {

TEST(BasicExamples, EachPrintsItsResult) {
    const struct {
        const char* file;
        const char* output;
    } examples[] = {
        {"primes.bas", "2 3 5 7 11 13 17 19 23 29 31 37 41 43 47 \r\n"},
        {"times_table.bas",
         "  1  2  3  4  5  6  7  8  9\r\n  2  4  6  8 10 12 14 16 18\r\n"
         "  3  6  9 12 15 18 21 24 27\r\n  4  8 12 16 20 24 28 32 36\r\n"
         "  5 10 15 20 25 30 35 40 45\r\n  6 12 18 24 30 36 42 48 54\r\n"
         "  7 14 21 28 35 42 49 56 63\r\n  8 16 24 32 40 48 56 64 72\r\n"
         "  9 18 27 36 45 54 63 72 81\r\n"},
        {"bubble_sort.bas",
         "312 -45 7 1000 0 -3000 88 7 15 -1 \r\n-3000 -45 -1 0 7 7 15 88 312 1000 \r\n"},
        {"temperatures.bas",
         "-20 C = -4.0 F\r\n-5 C = 23.0 F\r\n10 C = 50.0 F\r\n25 C = 77.0 F\r\n40 C = 104.0 "
         "F\r\n55 C = 131.0 F\r\n70 C = 158.0 F\r\n85 C = 185.0 F\r\n100 C = 212.0 F\r\n"},
    };
    for (const auto& e : examples) {
        const std::string text =
            ReadFileText(std::filesystem::path(MB_TEST_DATA) / "../../examples/basic" / e.file);
        ASSERT_FALSE(text.empty()) << e.file;
        BasicRun b(std::string("example_") + e.file);
        EXPECT_EQ(b.RunOutput(text), e.output) << e.file;
        EXPECT_EQ(b.State().warningText, "") << e.file;
    }
}

}  // namespace
}  // namespace mb::testing
