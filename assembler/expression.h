// Symbols, numeric literals and the expression evaluator of the assembler.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace mb {

// The error value of an evaluation, and the value of a label not yet defined.
constexpr int kExpressionError = 0x7FFFFFFF;
constexpr int kUndefinedValue = 0x7FFFFFFF;
// What ParseNumber answers for a text that is no number.
constexpr double kNotANumber = 1e10;

// Labels in definition order, 1-based; the first equal name wins a lookup.
class Symbols {
  public:
    void Clear();
    // Adds a name (upper-cased) and returns its index.
    int Add(const std::string& name, int value, int line);
    // Index of the first entry equal to the upper-cased name, or 0.
    int FindLabel(std::string_view name) const;
    int Count() const { return static_cast<int>(names_.size()); }
    const std::string& Name(int index) const { return names_[index - 1]; }
    int Value(int index) const { return values_[index - 1]; }
    int Line(int index) const { return lines_[index - 1]; }
    void SetValue(int index, int value) { values_[index - 1] = value; }

  private:
    std::vector<std::string> names_;
    std::vector<int> values_;
    std::vector<int> lines_;
    std::unordered_map<std::string, int> first_;
};

// Literal text to its value, or kNotANumber (1E10). Accepts the fourteen forms:
// 'c' "c" A'c', H'..' 0X.. $.. ..H &H.. &.., B'..' %.. 0B.. ..B, D'..' .nnn nnn.
double ParseNumber(std::string_view text);

bool IsInstructionMnemonic(std::string_view word, bool unofficial);
bool IsReservedKeyword(std::string_view word);

// Shown when an evaluation fails outside silent mode (once per run).
class EvaluationReporter {
  public:
    virtual ~EvaluationReporter() = default;
    virtual void ShowEvaluationError(const std::string& text) = 0;
};

struct ExpressionContext {
    const Symbols* symbols = nullptr;
    int programCounter = 0;
    bool noOperatorPrecedence = false;
    bool* evaluationReported = nullptr;  // the one-box-per-run latch
    EvaluationReporter* reporter = nullptr;
};

struct Evaluation {
    int value = kExpressionError;
    std::string log;  // the evaluation log, as far as it got
};

// Evaluates an expression; kExpressionError on failure. With silent false and the
// latch clear, a failure sets the latch and reports the text and the log. The log
// is built only for that report.
int EvaluateExpression(std::string_view text, bool silent, const ExpressionContext& ctx);
// The same evaluation with its log. A log that would pass 1 MiB ends there, with
// the line "(the rest of the log is left out)".
Evaluation EvaluateWithLog(std::string_view text, const ExpressionContext& ctx);

// Shortest decimal text of a double, 15 significant digits at most.
std::string NumberText(double v);

}  // namespace mb
