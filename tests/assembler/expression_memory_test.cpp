// Memory of the evaluator on long expressions. This test program counts every
// heap allocation, so it runs on its own, apart from the other evaluator tests.
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "test_support.h"

namespace {

std::atomic<size_t> liveBytes{0};
std::atomic<size_t> peakBytes{0};

}  // namespace

void* operator new(std::size_t size) {
    void* p = std::malloc(size ? size : 1);
    if (!p) throw std::bad_alloc();
    const size_t now = liveBytes += malloc_usable_size(p);
    size_t peak = peakBytes;
    while (now > peak && !peakBytes.compare_exchange_weak(peak, now)) {
    }
    return p;
}

void operator delete(void* p) noexcept {
    if (!p) return;
    liveBytes -= malloc_usable_size(p);
    std::free(p);
}

void operator delete(void* p, std::size_t) noexcept {
    operator delete(p);
}

namespace mb::testing {
namespace {

// The most heap that f held at one time beyond what was held before it.
template <typename F>
size_t PeakHeapDuring(F f) {
    const size_t before = liveBytes;
    peakBytes = before;
    f();
    return peakBytes - before;
}

// 1+(1+(...(1+1)...)): every operand waits on the stack for the innermost sum.
std::string Nested(int depth, const std::string& tail = "") {
    std::string text;
    for (int i = 0; i < depth; ++i) text += "1+(";
    text += "1";
    text.append(depth, ')');
    return text + tail;
}

// Heap per character of the text that an evaluation may hold at its peak: the
// token lists and the stacks.
constexpr size_t kBytesPerCharacter = 200;

// The box of a failure at the end of a deep expression: its log begins like every
// log and is cut at its limit.
void CheckTheBoxOfADeepFailure(const std::string& box, const std::string& bad) {
    EXPECT_EQ(box.rfind("Error evaluating expression: " + bad +
                            "\nExpression evaluation log:\nOriginal: " + bad + "\n",
                        0),
              0u);
    EXPECT_NE(box.find("\nExecution:\n2 = 1 + 1 "), std::string::npos);
    const std::string cut = "(the rest of the log is left out)\n";
    ASSERT_GT(box.size(), cut.size());
    EXPECT_EQ(box.substr(box.size() - cut.size()), cut);
    EXPECT_LT(box.size(), (size_t{1} << 20) + 2 * bad.size());
}

TEST(EvaluatorMemory, NestedExpressionsTakeMemoryInProportionToTheirLength) {
    struct Case {
        const char* what;
        bool fails;  // at the very end, so the box shows a log of every step
    } cases[] = {{"sum", false}, {"failing at the end", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        size_t peak[2] = {0, 0};
        std::string text;
        for (int k = 0; k < 2; ++k) {
            const int depth = 12500 << k;  // the second text is 100,000 characters long
            text = c.fails ? "(" + Nested(depth, ")/0") : Nested(depth);
            Symbols symbols;
            RecordingReporter reporter;
            bool latch = false;
            ExpressionContext ctx{&symbols, 0, false, &latch, &reporter};
            int value = 0;
            peak[k] = PeakHeapDuring([&] { value = EvaluateExpression(text, false, ctx); });
            EXPECT_EQ(value, c.fails ? kExpressionError : depth + 1);
            EXPECT_LT(peak[k], kBytesPerCharacter * text.size()) << text.size() << " characters";
            ASSERT_EQ(reporter.shown.size(), c.fails ? 1u : 0u);
            if (c.fails) CheckTheBoxOfADeepFailure(reporter.shown[0], text);
        }
        ASSERT_GE(text.size(), 100000u);
        // Twice the text, at most about twice the memory (four times if it grew
        // with the square of the length).
        EXPECT_LT(peak[1], 3 * peak[0]) << peak[0] << " then " << peak[1] << " bytes";
    }
}

using AssemblerMemory = AssemblerFixture;

TEST_F(AssemblerMemory, NestedExpressionAssemblesInLinearMemory) {
    const std::string source = " DW " + Nested(25000) + "\n";
    Write("prog.asm", source);
    int errors = -1;
    const size_t peak = PeakHeapDuring([&] { errors = Assemble(); });
    EXPECT_EQ(errors, 0);
    EXPECT_EQ(Read("prog.obj"), "\xA9\x61");  // 25001
    // The object cells, the listing text and the line table, and a bounded
    // multiple of the source for the evaluation.
    EXPECT_LT(peak, 1024 * 1024 + kBytesPerCharacter * source.size());
}

}  // namespace
}  // namespace mb::testing
