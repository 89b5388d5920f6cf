#include "compiler/line_cleaner.h"

#include <array>
#include <vector>

namespace mb {

namespace {

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

bool isAsciiAlnum(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

bool isOperatorChar(char c) {
    switch (c) {
        case '=':
        case '+':
        case '-':
        case '*':
        case '/':
        case '%':
        case '<':
        case '>':
        case '&':
        case '|':
        case '^':
        case '~':
        case '!': return true;
        default: return false;
    }
}

// Everything that is neither white space, punctuation of the language nor an
// operator belongs to a word: letters, digits, "_", "$", ".", bytes above 127
// and stray characters, which then reach the name checks as written.
bool isWordChar(char c) {
    if (isSpace(c) || isOperatorChar(c)) return false;
    switch (c) {
        case '"':
        case '\'':
        case '(':
        case ')':
        case '[':
        case ']':
        case ',':
        case ';':
        case ':':
        case '#': return false;
        default: return true;
    }
}

bool equalsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'a' && x <= 'z') x = static_cast<char>(x - 'a' + 'A');
        if (y >= 'a' && y <= 'z') y = static_cast<char>(y - 'a' + 'A');
        if (x != y) return false;
    }
    return true;
}

// Keywords behind which an operand is due, so that a following "-" is a sign
// and a following "(" opens an expression rather than an argument list.
bool introducesExpression(std::string_view word) {
    static constexpr std::array<std::string_view, 23> kWords = {
        "If",          "Then", "Else", "While",  "Case",     "To",        "Step",      "Return",
        "ReturnValue", "And",  "Or",   "Not",    "Xor",      "Mod",       "ShiftLeft", "ShiftRight",
        "Print",       "Poke", "Put",  "SetBit", "ResetBit", "InvertBit", "MakeBit"};
    if (word.size() < 2 || word.size() > 11) return false;
    for (std::string_view k : kWords)
        if (equalsNoCase(word, k)) return true;
    return false;
}

enum class Role {
    Operand,   // word, number, quoted text, placeholder
    Keyword,   // a word of introducesExpression
    Binary,    // operator between two operands
    Unary,     // sign or prefix: - + ~ ! #
    PreStep,   // ++ or -- before its operand
    PostStep,  // ++ or -- behind its operand
    Open,      // ( [
    Close,     // ) ]
    Separator  // , ; :
};

struct Token {
    Role role;
    std::string text;
    bool quoted = false;       // a quoted text
    bool spaceBefore = false;  // white space stood before it in the source
    bool glued = false;        // no blank before it, whatever the neighbours
};

// Splits a statement into tokens, deciding each operator's role from what
// precedes it. Each character is looked at a bounded number of times.
class Lexer {
  public:
    explicit Lexer(std::string_view s) : s_(s) {}

    std::vector<Token> run() {
        while (i_ < s_.size()) {
            const char c = s_[i_];
            if (isSpace(c)) {
                space_ = true;
                ++i_;
            } else if (c == '"') {
                size_t end = s_.find('"', i_ + 1);
                end = end == std::string_view::npos ? s_.size() : end + 1;
                Token t{Role::Operand, std::string(s_.substr(i_, end - i_))};
                t.quoted = true;
                push(std::move(t));
                i_ = end;
            } else if (c == '#') {
                hash();
            } else if (c == '(' || c == '[') {
                push({Role::Open, std::string(1, c)});
                ++i_;
            } else if (c == ')' || c == ']') {
                push({Role::Close, std::string(1, c)});
                ++i_;
            } else if (c == ',' || c == ';' || c == ':') {
                push({Role::Separator, std::string(1, c)});
                ++i_;
            } else if (isOperatorChar(c)) {
                op();
            } else {
                word(wordEnd(i_));
            }
        }
        return std::move(tokens_);
    }

  private:
    size_t wordEnd(size_t from) const {
        while (from < s_.size() && isWordChar(s_[from])) ++from;
        return from;
    }

    // "#[digits]" at `at`: the end of the placeholder, or 0.
    size_t placeholderEnd(size_t at) const {
        if (at + 3 >= s_.size() || s_[at] != '#' || s_[at + 1] != '[') return 0;
        size_t k = at + 2;
        while (k < s_.size() && s_[k] >= '0' && s_[k] <= '9') ++k;
        if (k == at + 2 || k >= s_.size() || s_[k] != ']') return 0;
        return k + 1;
    }

    size_t skipSpace(size_t k) const {
        while (k < s_.size() && isSpace(s_[k])) ++k;
        return k;
    }

    // "#" begins a placeholder, a directive or print-form word (#define, #x), or
    // stands as the print-form operator in front of "(" or a sign.
    void hash() {
        if (const size_t end = placeholderEnd(i_)) {
            push({Role::Operand, std::string(s_.substr(i_, end - i_))});
            i_ = end;
            return;
        }
        const size_t k = skipSpace(i_ + 1);
        if (k < s_.size() && isWordChar(s_[k])) {
            const size_t end = wordEnd(k);
            push({Role::Operand, "#" + std::string(s_.substr(k, end - k))});
            i_ = end;
            return;
        }
        push({Role::Unary, "#"});
        ++i_;
    }

    bool operandFollows(size_t k) const {
        k = skipSpace(k);
        if (k >= s_.size()) return false;
        const char c = s_[k];
        if (c == '"' || c == '(' || c == '[' || c == '#' || c == '~') return true;
        if (c == '!') return k + 1 >= s_.size() || s_[k + 1] != '=';
        if (c == '&' || c == '%') return k + 1 < s_.size() && isAsciiAlnum(s_[k + 1]);
        if (!isWordChar(c)) return false;
        return !introducesExpression(s_.substr(k, wordEnd(k) - k));
    }

    void op() {
        const char c = s_[i_];
        const char d = i_ + 1 < s_.size() ? s_[i_ + 1] : '\0';
        if (expectOperand_ && (c == '&' || c == '%') && isAsciiAlnum(d)) {
            const size_t end = wordEnd(i_ + 1);
            push({Role::Operand, std::string(s_.substr(i_, end - i_))});
            i_ = end;
            return;
        }
        if ((c == '+' || c == '-') && d == c) {
            if (expectOperand_) {
                push({Role::PreStep, std::string(2, c)});
            } else if (operandFollows(i_ + 2)) {
                // a--b: a binary minus and the sign of b
                push({Role::Binary, std::string(1, c)});
                push({Role::Unary, std::string(1, c)});
            } else {
                push({Role::PostStep, std::string(2, c)});
            }
            i_ += 2;
            return;
        }
        static constexpr std::array<std::string_view, 13> kPairs = {
            "+=", "-=", "*=", "/=", "==", "!=", "<>", "<=", ">=", "<<", ">>", "&&", "||"};
        const char pair[2] = {c, d};
        for (std::string_view p : kPairs) {
            if (std::string_view(pair, 2) == p) {
                push({Role::Binary, std::string(p)});
                i_ += 2;
                return;
            }
        }
        const bool unary = c == '~' || c == '!' || ((c == '-' || c == '+') && expectOperand_);
        push({unary ? Role::Unary : Role::Binary, std::string(1, c)});
        ++i_;
    }

    void word(size_t end) {
        std::string_view w = s_.substr(i_, end - i_);
        i_ = end;
        // A dot joins across white space: a . LB is a.LB, but Step .5 stays apart.
        if (!tokens_.empty()) {
            Token& prev = tokens_.back();
            const bool prevWord = prev.role == Role::Operand && !prev.quoted;
            if (prevWord && (prev.text.back() == '.' || w.front() == '.')) {
                prev.text += w;
                space_ = false;
                return;
            }
            if (prev.role == Role::Close && w.front() == '.') {
                Token t{Role::Operand, std::string(w)};
                t.glued = true;
                push(std::move(t));
                return;
            }
        }
        const bool bound = !tokens_.empty() && (tokens_.back().role == Role::Unary ||
                                                tokens_.back().role == Role::PreStep);
        push({!bound && introducesExpression(w) ? Role::Keyword : Role::Operand, std::string(w)});
    }

    void push(Token t) {
        t.spaceBefore = space_;
        space_ = false;
        switch (t.role) {
            case Role::Operand:
            case Role::PostStep:
            case Role::Close: expectOperand_ = false; break;
            default: expectOperand_ = true;
        }
        tokens_.push_back(std::move(t));
    }

    std::string_view s_;
    size_t i_ = 0;
    bool space_ = false;
    bool expectOperand_ = true;
    std::vector<Token> tokens_;
};

bool blankBetween(const Token& prev, const Token& t, char lastOut) {
    if (t.glued) return false;
    if (t.role == Role::Binary || prev.role == Role::Binary) return true;
    if (t.role == Role::Close || t.role == Role::Separator || t.role == Role::PostStep)
        return false;
    if (prev.role == Role::Open) return false;
    if (prev.role == Role::Unary || prev.role == Role::PreStep) {
        // - -5 must not become --5, nor + ++i become +++i
        return (lastOut == '-' || lastOut == '+') && t.text.front() == lastOut;
    }
    if (prev.role == Role::Separator) return true;
    if (t.role == Role::Open) {
        return !((prev.role == Role::Operand && !prev.quoted) || prev.role == Role::Close);
    }
    if (t.quoted && prev.quoted && !t.spaceBefore) return false;
    return true;
}

std::string formatStatement(std::string_view statement) {
    const std::vector<Token> tokens = Lexer(statement).run();
    std::string out;
    out.reserve(statement.size() + statement.size() / 2);
    for (size_t k = 0; k < tokens.size(); ++k) {
        if (k > 0 && blankBetween(tokens[k - 1], tokens[k], out.back())) out += ' ';
        out += tokens[k].text;
    }
    return out;
}

// Where the comment of a line begins: "'" or "//" outside double quotes.
size_t commentStart(std::string_view line) {
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"') {
            quoted = !quoted;
        } else if (!quoted &&
                   (c == '\'' || (c == '/' && i + 1 < line.size() && line[i + 1] == '/'))) {
            return i;
        }
    }
    return line.size();
}

bool isLabelStart(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}
bool isLabelChar(char c) {
    return isLabelStart(c) || (c >= '0' && c <= '9');
}

// "label: ASM:" with any blanks around the first colon: the label's length, and
// in `asmAt` where "ASM:" begins; 0 when the line is not of that form.
size_t labelBeforeAsm(std::string_view s, size_t& asmAt) {
    if (s.empty() || !isLabelStart(s[0])) return 0;
    size_t k = 1;
    while (k < s.size() && isLabelChar(s[k])) ++k;
    const size_t length = k;
    while (k < s.size() && isSpace(s[k])) ++k;
    if (k >= s.size() || s[k] != ':') return 0;
    ++k;
    while (k < s.size() && isSpace(s[k])) ++k;
    if (s.substr(k, 4) != "ASM:") return 0;
    asmAt = k;
    return length;
}

// "#sim" or "#simio" (any case, blanks allowed behind "#") at the start, ended
// by a character that cannot continue a word: the directive's word as written
// without the "#", and in `end` where it ends; empty when there is none.
std::string_view simDirective(std::string_view s, size_t& end) {
    if (s.empty() || s[0] != '#') return {};
    size_t k = 1;
    while (k < s.size() && isSpace(s[k])) ++k;
    for (std::string_view word : {std::string_view("simio"), std::string_view("sim")}) {
        if (s.size() - k >= word.size() && equalsNoCase(s.substr(k, word.size()), word)) {
            end = k + word.size();
            if (end == s.size() || !isWordChar(s[end])) return s.substr(k, word.size());
        }
    }
    return {};
}

// The argument of #sim without blanks, but one kept between two word characters
// so that nothing runs together; quoted text as written.
std::string compactArgument(std::string_view s) {
    std::string out;
    bool pending = false;
    for (size_t i = 0; i < s.size(); ++i) {
        const char c = s[i];
        if (isSpace(c)) {
            pending = true;
            continue;
        }
        if (pending && !out.empty() && isWordChar(out.back()) && isWordChar(c)) out += ' ';
        pending = false;
        if (c == '"') {
            size_t end = s.find('"', i + 1);
            end = end == std::string_view::npos ? s.size() : end + 1;
            out += s.substr(i, end - i);
            i = end - 1;
        } else {
            out += c;
        }
    }
    return out;
}

}  // namespace

std::string cleanBasicLine(std::string_view line) {
    size_t start = 0;
    while (start < line.size() && isSpace(line[start])) ++start;
    line.remove_prefix(start);

    if (line.substr(0, 4) == "ASM:") return std::string(line);
    size_t asmAt = 0;
    if (const size_t label = labelBeforeAsm(line, asmAt)) {
        return std::string(line.substr(0, label)) + ": " + std::string(line.substr(asmAt));
    }

    const size_t comment = commentStart(line);
    const std::string_view statement = line.substr(0, comment);
    std::string out;
    size_t end = 0;
    if (const std::string_view sim = simDirective(statement, end); !sim.empty()) {
        out = "#" + std::string(sim);
        const std::string argument = compactArgument(statement.substr(end));
        if (!argument.empty()) out += " " + argument;
    } else {
        out = formatStatement(statement);
    }
    if (comment < line.size()) {
        if (!out.empty()) out += ' ';
        out += line.substr(comment);
    }
    return out;
}

}  // namespace mb
