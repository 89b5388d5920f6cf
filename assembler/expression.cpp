#include "expression.h"

#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "source_text.h"

namespace mb {

// ---- Symbols ----

void Symbols::Clear() {
    names_.clear();
    values_.clear();
    lines_.clear();
    first_.clear();
}

int Symbols::Add(const std::string& name, int value, int line) {
    names_.push_back(UpperText(name));
    values_.push_back(value);
    lines_.push_back(line);
    const int index = Count();
    first_.emplace(names_.back(), index);  // keeps the first equal entry
    return index;
}

int Symbols::FindLabel(std::string_view name) const {
    auto it = first_.find(UpperText(name));
    return it == first_.end() ? 0 : it->second;
}

// ---- Literals ----

namespace {

struct Stage {
    int hexDigits, binDigits, decDigits;
    double decMax;
    bool characters;
};
constexpr Stage kStage16{4, 16, 5, 65535.0, true};
constexpr Stage kStage32{8, 32, 10, 4294967295.0, false};

bool StartsWith(std::string_view s, std::string_view p) {
    return s.substr(0, p.size()) == p;
}
bool EndsWith(std::string_view s, std::string_view p) {
    return s.size() >= p.size() && s.substr(s.size() - p.size()) == p;
}
bool Quoted(std::string_view s, std::string_view open) {
    return s.size() >= open.size() + 1 && StartsWith(s, open) && EndsWith(s, "'");
}

std::string_view DropLeadingZeros(std::string_view d) {
    while (d.size() >= 2 && d[0] == '0') d.remove_prefix(1);
    return d;
}

double DigitsValue(std::string_view digits, int base, int maxDigits) {
    digits = DropLeadingZeros(digits);
    if (digits.empty() || static_cast<int>(digits.size()) > maxDigits) return kNotANumber;
    double v = 0;
    for (char c : digits) {
        int d = (c >= '0' && c <= '9') ? c - '0' : (c >= 'A' && c <= 'F') ? c - 'A' + 10 : 99;
        if (d >= base) return kNotANumber;
        v = v * base + d;
    }
    return v;
}

double DecimalValue(std::string_view digits, const Stage& st) {
    digits = DropLeadingZeros(digits);
    if (digits.empty() || static_cast<int>(digits.size()) > st.decDigits) return kNotANumber;
    if (digits.find('.') != std::string_view::npos) return kNotANumber;
    for (char c : digits)
        if (c < '0' || c > '9') return kNotANumber;  // the round trip admits pure digits only
    double v = std::strtod(std::string(digits).c_str(), nullptr);
    return v > st.decMax ? kNotANumber : v;
}

bool IsBarePrefix(std::string_view u) {
    static constexpr std::array<std::string_view, 21> kBare = {
        "",   "'", "''", "\"\"", "A'", "A''", "H'", "H''", "0X",  "$", "H",
        "&H", "&", "B'", "B''",  "%",  "0B",  "B",  "D'",  "D''", "."};
    for (auto b : kBare)
        if (u == b) return true;
    return u == "\"";
}

double ParseStage(std::string_view orig, std::string_view u, const Stage& st) {
    if (IsBarePrefix(u)) return kNotANumber;
    // 1: character literals
    const bool charForm =
        (u.size() >= 2 && (u[0] == '\'' || u[0] == '"') && u.back() == u[0]) || Quoted(u, "A'");
    if (charForm) {
        if (!st.characters) return kNotANumber;
        const size_t open = u[0] == 'A' ? 2 : 1;
        if (u.size() != open + 2) return kNotANumber;
        return static_cast<unsigned char>(orig[open]);
    }
    const auto hex = [&](std::string_view d) { return DigitsValue(d, 16, st.hexDigits); };
    const auto bin = [&](std::string_view d) { return DigitsValue(d, 2, st.binDigits); };
    if (Quoted(u, "H'")) return hex(u.substr(2, u.size() - 3));
    if (StartsWith(u, "0X")) return hex(u.substr(2));
    if (StartsWith(u, "$")) return hex(u.substr(1));
    if (EndsWith(u, "H")) return hex(u.substr(0, u.size() - 1));
    if (StartsWith(u, "&H")) return hex(u.substr(2));
    if (StartsWith(u, "&")) return hex(u.substr(1));
    if (Quoted(u, "B'")) return bin(u.substr(2, u.size() - 3));
    if (StartsWith(u, "%")) return bin(u.substr(1));
    if (StartsWith(u, "0B")) return bin(u.substr(2));
    if (EndsWith(u, "B")) return bin(u.substr(0, u.size() - 1));
    if (Quoted(u, "D'")) return DecimalValue(u.substr(2, u.size() - 3), st);
    if (StartsWith(u, ".")) return DecimalValue(u.substr(1), st);
    return DecimalValue(u, st);
}

}  // namespace

double ParseNumber(std::string_view text) {
    if (!text.empty() && text[0] == '#') text.remove_prefix(1);
    const std::string u = UpperText(text);
    const double first = ParseStage(text, u, kStage16);
    if (first < 100000) return first;
    return ParseStage(text, u, kStage32);
}

// ---- Word lists ----

namespace {
template <size_t N>
bool InList(std::string_view w, const std::string_view (&list)[N]) {
    for (auto x : list)
        if (w == x) return true;
    return false;
}
}  // namespace

bool IsInstructionMnemonic(std::string_view word, bool unofficial) {
    static constexpr std::string_view kMnemonics[] = {
        "ld",   "push", "pop",  "ex",   "exx",  "ldi",  "ldir", "ldd", "lddr", "cpi",
        "cpir", "cpd",  "cpdr", "add",  "adc",  "sub",  "sbc",  "and", "or",   "xor",
        "cp",   "inc",  "dec",  "daa",  "cpl",  "neg",  "ccf",  "scf", "nop",  "halt",
        "di",   "ei",   "im",   "rlca", "rla",  "rrca", "rra",  "rlc", "rl",   "rrc",
        "rr",   "sla",  "sra",  "srl",  "rld",  "rrd",  "bit",  "set", "res",  "jp",
        "jr",   "djnz", "call", "ret",  "reti", "retn", "rst",  "in",  "ini",  "inir",
        "ind",  "indr", "out",  "outi", "otir", "outd", "otdr"};
    const std::string w = LowerText(word.substr(0, word.find(' ')));
    if (w.empty()) return false;
    return InList(w, kMnemonics) || (unofficial && w == "sll");
}

bool IsReservedKeyword(std::string_view word) {
    static constexpr std::string_view kReserved[] = {
        "pc",      "low",     "high",   "loww",    "highw",    "org",    "equ",
        "db",      "defb",    "dw",     "defw",    "ds",       "defs",   "end",
        "byte",    "word",    "block",  "include", "addinstr", "avsym",  "bseg",
        "cseg",    "dseg",    "nseg",   "xseg",    "chk",      "codes",  "nocodes",
        "define",  "defcont", "echo",   "eject",   "ifdef",    "ifndef", "if",
        "else",    "endif",   "export", "fill",    "list",     "nolist", "locallabelchar",
        "lsfirst", "msfirst", "module", "page",    "nopage",   "set",    "sym",
        "text",    "title"};
    return InList(LowerText(word), kReserved);
}

// ---- Evaluator ----

std::string NumberText(double v) {
    if (v == 0) return "0";
    if (v == std::floor(v) && std::fabs(v) < 1e15) return std::to_string(static_cast<long long>(v));
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.15g", v);
    return buf;
}

namespace {

bool IsUnaryWord(std::string_view t) {
    return t == "low" || t == "high" || t == "loww" || t == "highw";
}

bool IsOperator(std::string_view t) {
    static constexpr std::string_view kBinary[] = {"|", "^", "&", "<<", ">>",
                                                   "+", "-", "*", "/",  "\\"};
    return InList(t, kBinary) || IsUnaryWord(t);
}

int Precedence(std::string_view op, bool flat) {
    if (IsUnaryWord(op)) return 11;
    if (flat) return 1;
    if (op == "|") return 1;
    if (op == "^") return 2;
    if (op == "&") return 3;
    if (op == "<<" || op == ">>") return 4;
    if (op == "+" || op == "-") return 5;
    return 6;  // * / \ .
}

void AppendSeparated(std::string& out, std::string_view token) {
    if (out.empty() || out.back() != ' ') out.push_back(' ');
    out.append(token);
    out.push_back(' ');
}

// Step 1: operators become tokens of their own; brackets become parentheses.
std::string Tokenise(std::string_view text) {
    std::string out;
    bool single = false, dbl = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\'' && !dbl) single = !single;
        if (c == '"' && !single) dbl = !dbl;
        if (single || dbl || c == '\'' || c == '"') {
            out.push_back(c);
            continue;
        }
        const std::string_view two = text.substr(i, 2);
        if (two == "<<" || two == ">>") {
            AppendSeparated(out, two);
            ++i;
        } else if (c == '[' || c == ']') {
            AppendSeparated(out, c == '[' ? "(" : ")");
        } else if (std::string_view("(),+-*/\\&|^").find(c) != std::string_view::npos) {
            AppendSeparated(out, std::string_view(&text[i], 1));
        } else if (c == '<' || c == '>') {
            if (out.empty() || out.back() != ' ') out.push_back(' ');
            out.append(c == '<' ? "low " : "high ");
        } else if (c == ' ') {
            if (out.empty() || out.back() != ' ') out.push_back(' ');
        } else {
            out.push_back(c);
        }
    }
    return TrimText(out);
}

std::vector<std::string> SplitOutsideQuotes(std::string_view text) {
    std::vector<std::string> tokens;
    std::string cur;
    bool single = false, dbl = false;
    for (char c : text) {
        if (c == '\'' && !dbl) single = !single;
        if (c == '"' && !single) dbl = !dbl;
        if (c == ' ' && !single && !dbl) {
            if (!cur.empty()) tokens.push_back(cur);
            cur.clear();
        } else {
            cur.push_back(c);
        }
    }
    if (!cur.empty()) tokens.push_back(cur);
    return tokens;
}

std::string JoinTokens(const std::vector<std::string>& tokens) {
    std::string out;
    for (const auto& t : tokens) {
        if (t.empty()) continue;
        if (!out.empty()) out.push_back(' ');
        out += t;
    }
    return out;
}

// Step 2: location symbols, unary words in lower case, and signs glued to values.
std::string ResolveInfix(const std::string& tokenised, int pc) {
    std::vector<std::string> tk = SplitOutsideQuotes(tokenised);
    const std::string pcText = std::to_string(pc);
    for (size_t i = 0; i < tk.size(); ++i) {
        const bool signNear = (i + 1 < tk.size() && (tk[i + 1] == "+" || tk[i + 1] == "-")) ||
                              (i > 0 && (tk[i - 1] == "+" || tk[i - 1] == "-"));
        const std::string lower = LowerText(tk[i]);
        if (tk[i] == "*" && signNear)
            tk[i] = pcText;
        else if (tk[i] == "$" || lower == "pc")
            tk[i] = pcText;
        else if (IsUnaryWord(lower))
            tk[i] = lower;
    }
    bool valueMayBegin = true;
    for (size_t i = 0; i + 1 < tk.size(); ++i) {
        while (valueMayBegin && tk[i] == "#" && i + 2 < tk.size() &&
               (tk[i + 1] == "+" || tk[i + 1] == "-")) {
            tk[i + 2] = tk[i] + tk[i + 1] + tk[i + 2];
            tk[i].clear();
            tk[i + 1].clear();
        }
        if (valueMayBegin && (tk[i] == "#" || tk[i] == "+" || tk[i] == "-")) {
            tk[i + 1] = tk[i] + tk[i + 1];
            tk[i].clear();
        }
        valueMayBegin = tk[i] == "," || tk[i] == "(" || IsOperator(tk[i]);
    }
    return JoinTokens(tk);
}

// Step 3: infix to postfix with an operator stack; false on unbalanced parentheses.
bool ToPostfix(const std::string& infix, bool flat, std::vector<std::string>& out) {
    std::vector<std::string> stack;
    for (const std::string& t : SplitOutsideQuotes(infix)) {
        if (t == "(") {
            stack.push_back(t);
        } else if (t == ")") {
            while (!stack.empty() && stack.back() != "(") {
                out.push_back(stack.back());
                stack.pop_back();
            }
            if (stack.empty()) return false;
            stack.pop_back();
        } else if (IsUnaryWord(t)) {
            stack.push_back(t);
        } else if (IsOperator(t)) {
            const int p = Precedence(t, flat);
            while (!stack.empty() && IsOperator(stack.back()) &&
                   p <= Precedence(stack.back(), flat)) {
                out.push_back(stack.back());
                stack.pop_back();
            }
            stack.push_back(t);
        } else {
            out.push_back(t);
        }
    }
    while (!stack.empty()) {
        if (stack.back() == "(") return false;
        out.push_back(stack.back());
        stack.pop_back();
    }
    return true;
}

// Operand lookup: labels first, then literals; false when the text is no number.
bool LookupOperand(std::string_view token, const Symbols* symbols, double& value) {
    if (!token.empty() && token[0] == '#') token.remove_prefix(1);
    if (!token.empty() && token[0] == '+') token.remove_prefix(1);
    bool negative = false;
    if (!token.empty() && token[0] == '-') {
        negative = true;
        token.remove_prefix(1);
    }
    if (symbols) {
        if (int index = symbols->FindLabel(token)) {
            value = symbols->Value(index);
            if (negative) value = -value;
            return true;
        }
    }
    const double v = ParseNumber(token);
    if (v >= kNotANumber) return false;
    value = negative ? -v : v;
    return true;
}

int32_t ToInt32(double v) {
    return static_cast<int32_t>(static_cast<int64_t>(std::llround(v)));
}

bool ApplyBinary(std::string_view op, double l, double r, double& result) {
    if (op == "|")
        result = ToInt32(l) | ToInt32(r);
    else if (op == "^")
        result = ToInt32(l) ^ ToInt32(r);
    else if (op == "&")
        result = ToInt32(l) & ToInt32(r);
    else if (op == "<<")
        result = l * std::pow(2.0, r);
    else if (op == ">>")
        result = std::floor(l / std::pow(2.0, r));
    else if (op == "+")
        result = l + r;
    else if (op == "-")
        result = l - r;
    else if (op == "*")
        result = l * r;
    else if (op == "/" || op == "\\") {
        if (r == 0) return false;
        const double q = std::floor(l / r);
        result = op == "/" ? q : l - q * r;
    }
    return std::isfinite(result);
}

double ApplyUnary(std::string_view word, double v) {
    if (v < 0) v += 4294967296.0;
    if (word == "low") return std::fmod(v, 256.0);
    if (word == "high") return std::fmod(std::floor(v / 256.0), 256.0);
    if (word == "loww") return std::fmod(v, 65536.0);
    return std::floor(v / 65536.0);
}

// The log of an evaluation is built only when someone will read it: a null log
// costs nothing. Each execution line shows the whole stack, so the log of a deeply
// nested expression grows with the square of its length; it ends at kMaxLogSize
// with a line that says so, which keeps the error box readable and memory bounded.
constexpr size_t kMaxLogSize = size_t{1} << 20;
constexpr std::string_view kLogCut = "(the rest of the log is left out)\n";

bool LogWanted(const std::string* log) {
    return log && log->size() < kMaxLogSize;
}

void AddToLog(std::string* log, std::string_view text) {
    if (!LogWanted(log)) return;
    log->append(text);
    if (log->size() >= kMaxLogSize) log->append(kLogCut);
}

void LogWithStack(std::string* log, const std::string& line,
                  const std::vector<std::string>& stack) {
    if (!LogWanted(log)) return;
    std::string out = line;
    const size_t pad = out.size() + 10 <= 80 ? 80 - out.size() : 10;
    out.append(pad, ' ');
    out += "stack:";
    for (const auto& e : stack) out += " " + e;
    out += "\n";
    AddToLog(log, out);
}

// Step 4: runs the postfix form on a stack of number texts.
bool RunPostfix(const std::vector<std::string>& postfix, const Symbols* symbols, std::string* log,
                double& result) {
    std::vector<std::string> stack;
    for (const std::string& t : postfix) {
        if (IsUnaryWord(t)) {
            if (stack.empty()) return false;
            const std::string operand = stack.back();
            const double r = ApplyUnary(t, std::strtod(operand.c_str(), nullptr));
            stack.back() = NumberText(r);
            if (LogWanted(log))
                LogWithStack(log, stack.back() + " = " + t + " (" + operand + ")", stack);
        } else if (IsOperator(t)) {
            if (stack.size() < 2) return false;
            const std::string right = stack.back();
            stack.pop_back();
            const std::string left = stack.back();
            double r = 0;
            if (!ApplyBinary(t, std::strtod(left.c_str(), nullptr),
                             std::strtod(right.c_str(), nullptr), r))
                return false;
            stack.back() = NumberText(r);
            if (LogWanted(log))
                LogWithStack(log, stack.back() + " = " + left + " " + t + " " + right, stack);
        } else {
            double v = 0;
            if (!LookupOperand(t, symbols, v)) return false;
            stack.push_back(NumberText(std::floor(v)));
        }
    }
    if (stack.size() != 1) return false;
    result = std::strtod(stack[0].c_str(), nullptr);
    if (!(result < 2147483647.0) || result < -2147483648.0) return false;
    if (LogWanted(log))
        AddToLog(log, "Output: " + stack[0] + " " + std::to_string(ToInt32(result)) + "\n");
    return true;
}

// The four steps; log, when not null, receives the evaluation log as far as it got.
int Evaluate(std::string_view text, const ExpressionContext& ctx, std::string* log) {
    if (LogWanted(log)) AddToLog(log, "Original: " + std::string(text) + "\n");
    const std::string tokenised = Tokenise(text);
    const std::string blanked = BlankQuoted(tokenised);
    size_t open = 0, close = 0;
    for (char c : blanked) open += c == '(', close += c == ')';
    if (open != close) return kExpressionError;

    const std::string infix = ResolveInfix(tokenised, ctx.programCounter);
    if (LogWanted(log)) AddToLog(log, "Infix: " + infix + "\n");
    std::vector<std::string> postfix;
    if (!ToPostfix(infix, ctx.noOperatorPrecedence, postfix)) return kExpressionError;
    if (LogWanted(log)) {
        std::string joined;
        for (const auto& t : postfix) {
            if (!joined.empty()) joined += ' ';
            joined += t;
        }
        AddToLog(log, "Postfix: " + joined + "\nExecution:\n");
    }
    double result = 0;
    if (!RunPostfix(postfix, ctx.symbols, log, result)) return kExpressionError;
    return ToInt32(result);
}

// A lone label or number needs no tokens, no postfix form and no log: it gives
// what the full evaluation would give. Anything else, and every failure, takes
// the full way.
bool EvaluateSingleOperand(std::string_view text, const ExpressionContext& ctx, int& value) {
    if (text.empty()) return false;
    for (char c : text)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_' && c != '.' && c != '#')
            return false;
    const std::string lower = LowerText(text);
    if (lower == "pc" || IsUnaryWord(lower)) return false;
    double v = 0;
    if (!LookupOperand(text, ctx.symbols, v)) return false;
    v = std::floor(v);
    if (!(v < 2147483647.0) || v < -2147483648.0) return false;
    value = ToInt32(v);
    return true;
}

}  // namespace

Evaluation EvaluateWithLog(std::string_view text, const ExpressionContext& ctx) {
    Evaluation ev;
    ev.value = Evaluate(text, ctx, &ev.log);
    return ev;
}

int EvaluateExpression(std::string_view text, bool silent, const ExpressionContext& ctx) {
    int value = 0;
    if (EvaluateSingleOperand(text, ctx, value)) return value;
    value = Evaluate(text, ctx, nullptr);
    if (value == kExpressionError && !silent && ctx.evaluationReported &&
        !*ctx.evaluationReported) {
        *ctx.evaluationReported = true;
        // The evaluation depends only on the text and the context, so a second run
        // fails at the same point and writes the log of the first.
        if (ctx.reporter)
            ctx.reporter->ShowEvaluationError("Error evaluating expression: " + std::string(text) +
                                              "\nExpression evaluation log:\n" +
                                              EvaluateWithLog(text, ctx).log);
    }
    return value;
}

}  // namespace mb
