// The expression compiler: infix text to postfix tokens by the shunting-yard
// method, then one walk over the postfix that emits Z80 text for each operator
// at once, with a stack of names (variables, numbers, placeholders,
// temporaries) standing for the values.
#include <algorithm>
#include <cmath>

#include "compiler/basic_numbers.h"
#include "compiler/compiler.h"
#include "compiler/output_text.h"
#include "core/numtext.h"

namespace mb {

namespace {

struct OperatorInfo {
    const char* name;
    int precedence;
    bool rightAssociative;
};

constexpr OperatorInfo kOperators[] = {
    {"=", 10, true},      {"+=", 10, true},    {"-=", 10, true},    {"*=", 10, true},
    {"/=", 10, true},     {"||", 15, false},   {"&&", 17, false},   {"|", 19, false},
    {"^", 21, false},     {"&", 23, false},    {"==", 28, false},   {"!=", 28, false},
    {"<", 30, false},     {"<=", 30, false},   {">", 30, false},    {">=", 30, false},
    {"<<", 35, false},    {">>", 35, false},   {"+", 40, false},    {"-", 40, false},
    {"*", 45, false},     {"/", 45, false},    {"%", 45, false},    {".", 59, false},
    {"#", 60, true},      {"~", 60, true},     {"!", 60, true},     {"u-", 60, true},
    {"u+", 60, true},     {"pre--", 60, true}, {"pre++", 60, true}, {"post--", 60, true},
    {"post++", 60, true},
};

const OperatorInfo* operatorInfo(const std::string& token) {
    for (const OperatorInfo& o : kOperators) {
        if (token == o.name) return &o;
    }
    return nullptr;
}

bool isAssignmentOperator(const std::string& t) {
    return t == "=" || t == "+=" || t == "-=" || t == "*=" || t == "/=";
}
bool isComparison(const std::string& t) {
    return t == "==" || t == "!=" || t == "<" || t == "<=" || t == ">" || t == ">=";
}
bool isArithmetic(const std::string& t) {
    return t == "+" || t == "-" || t == "*" || t == "/" || t == "%";
}
bool isLogic(const std::string& t) {
    return t == "|" || t == "&" || t == "^" || t == "||" || t == "&&";
}

// The builtin functions and statements of the language.
constexpr const char* kBuiltins[] = {
    "Peek",      "Poke",       "Get",        "Put",        "SetBit",   "ResetBit",   "InvertBit",
    "TestBit",   "MakeBit",    "Sqr",        "Sin",        "Cos",      "Tan",        "Exp",
    "Ln",        "Log",        "CShort",     "CInteger",   "CLong",    "CSingle",    "CUShort",
    "CUInteger", "CULong",     "Pointer",    "Asc",        "Chr",      "Len",        "FillStr",
    "InStr",     "InStrRev",   "CountChr",   "LeftStr",    "RightStr", "MidStr",     "LTrim",
    "LTrimChr",  "RTrim",      "RTrimChr",   "LCase",      "UCase",    "ReverseStr", "LShiftStr",
    "RShiftStr", "LRotateStr", "RRotateStr", "ReplaceChr", "HexStr",   "DecFromHex", "StrValB",
    "StrValW",   "StrValL",    "StrValS",
};

bool isBuiltin(const std::string& name) {
    for (const char* b : kBuiltins) {
        if (name == b) return true;
    }
    return false;
}

int rankOf(TypeCode t) {
    switch (t) {
        case kTypeShort:
        case kTypeUShort: return 2;
        case kTypeInteger:
        case kTypeUInteger: return 3;
        case kTypeLong:
        case kTypeULong: return 4;
        case kTypeSingle: return 5;
        default: return 0;
    }
}

TypeCode typeOfRank(int rank, bool isUnsigned) {
    switch (rank) {
        case 2: return isUnsigned ? kTypeUShort : kTypeShort;
        case 3: return isUnsigned ? kTypeUInteger : kTypeInteger;
        case 4: return isUnsigned ? kTypeULong : kTypeLong;
        case 5: return kTypeSingle;
        default: return kTypeNone;
    }
}

bool isUnsignedType(TypeCode t) {
    return t == kTypeUShort || t == kTypeUInteger || t == kTypeULong;
}

const char* typeNameForMessage(TypeCode t) {
    switch (t) {
        case kTypeBit: return "Bit";
        case kTypeShort: return "Short";
        case kTypeInteger: return "Integer";
        case kTypeLong: return "Long";
        case kTypeSingle: return "Single";
        case kTypeString: return "String";
        case kTypeStrPtr: return "StrPtr";
        case kTypeUShort: return "UShort";
        case kTypeUInteger: return "UInteger";
        case kTypeULong: return "ULong";
        default: return "";
    }
}

std::string joined(const std::vector<std::string>& tokens) {
    std::string text;
    for (const std::string& t : tokens) text += (text.empty() ? "" : " ") + t;
    return text;
}

}  // namespace

TypeCode numberType(const std::string& text) {
    const bool negative = !text.empty() && text[0] == '-';
    const std::string body = negative || (!text.empty() && text[0] == '+') ? text.substr(1) : text;
    if (body.find('.') != std::string::npos) {
        const std::optional<double> v = readSingle(body);
        return v && std::fabs(*v) < 1e10 ? kTypeSingle : kTypeNone;
    }
    const std::optional<uint32_t> magnitude = readNumber(body);
    if (!magnitude) return kTypeNone;
    const long long v = negative ? -static_cast<long long>(*magnitude) : *magnitude;
    TypeCode type = kTypeNone;  // the last range that holds the value wins
    if (v >= -2147483648LL && v <= 2147483646LL) type = kTypeLong;
    if (v >= 0 && v <= 4294967294LL) type = kTypeULong;
    if (v >= -32768 && v <= 32767) type = kTypeInteger;
    if (v >= 0 && v <= 65535) type = kTypeUInteger;
    if (v >= -128 && v <= 127) type = kTypeShort;
    if (v >= 0 && v <= 255) type = kTypeUShort;
    return type;
}

// ---------------------------------------------------------------------------
// Operands of the value stack

Compiler::Operand Compiler::operand(const std::string& text, const std::string& scope) {
    Operand o;
    o.text = text;
    if (text == "True" || text == "False") {
        o.type = kTypeBit;
        o.constant = true;
        o.text = text == "True" ? "1" : "0";
        return o;
    }
    if (isNumberText(text)) {
        o.type = numberType(text);
        o.constant = true;
        return o;
    }
    const int placeholder = stringConstantAt(text);
    if (placeholder > 0) {
        o.type = kTypeString;
        o.constant = true;
        o.stringConstant = true;
        return o;
    }
    const Resolved r = resolve(text, true, true, scope);
    if (r.found) {
        o.type = r.type;
        o.address = r.address;
        o.variable = true;
        return o;
    }
    const bool negative = !text.empty() && text[0] == '-';
    const int c = lookupConstant(negative ? text.substr(1) : text, scope);
    if (c > 0) {
        const ConstantRow& row = st_.constants[c];
        o.constant = true;
        if (row.isString) {
            o.type = kTypeString;
            o.stringConstant = true;
        } else {
            o.text = (negative ? "-" : "") + row.value;
            if (negative && row.value.size() > 1 && row.value[0] == '-')
                o.text = row.value.substr(1);
            o.type = numberType(o.text);
        }
        return o;
    }
    return o;
}

TypeCode Compiler::commonType(const std::vector<Operand>& operands) const {
    int rank = 0;
    bool anySigned = false;
    for (const Operand& o : operands) {
        if (o.type == kTypeBit || o.type == kTypeNone || !isNumericType(o.type)) return kTypeNone;
        rank = std::max(rank, rankOf(o.type));
        if (isSignedType(o.type)) anySigned = true;
    }
    return typeOfRank(rank, !anySigned);
}

TypeCode Compiler::widen(TypeCode a, TypeCode b) const {
    if (a == kTypeNone) return kTypeNone;
    if (!isNumericType(b)) return a;
    const int rank = std::max(rankOf(a), rankOf(b));
    return typeOfRank(rank, isUnsignedType(a) && isUnsignedType(b));
}

// ---------------------------------------------------------------------------
// The entry

bool Compiler::compileExpression(const std::string& original, std::string& result,
                                 const std::string& leftScope, int mode, bool report) {
    const std::size_t outputMark = st_.outputLines.size();
    ++depth_;
    if (!report) ++quiet_;
    Expression e;
    e.leftScope = leftScope;
    e.mode = mode;
    if (depth_ == 1) {
        debugLines_ = {"Original: " + original};
        expressionText_ = original;
    }
    const bool ok = expressionBody(original, e);
    if (ok) result = e.result;
    if (!report) --quiet_;
    --depth_;
    if (!ok && !report) st_.outputLines.resize(outputMark);
    if (depth_ == 0) {
        if (ok) {
            for (const std::string& line : debugLines_) debugComment(line);
        }
        debugLines_.clear();
    }
    return ok;
}

bool Compiler::expressionBody(const std::string& original, Expression& e) {
    std::string text = " " + original + " ";
    // Assignment operators.
    if (e.mode == 1) {
        std::size_t first = std::string::npos;
        for (const char* op : {" = ", " += ", " -= ", " *= ", " /= "}) {
            first = std::min(first, text.find(op));
        }
        const bool single =
            original.find(' ') == std::string::npos &&
            (original.find("++") != std::string::npos || original.find("--") != std::string::npos);
        if (first == std::string::npos && !single) {
            return fail("Bad expression: Assignment operator missing (=, +=, -=, *=, /=).");
        }
        if (!run_.multipleAssignment && first != std::string::npos) {
            const std::size_t after = text.find(' ', first + 1) + 1;
            std::string tail = text.substr(after);
            for (std::size_t at = tail.find(" = "); at != std::string::npos;
                 at = tail.find(" = ", at + 4)) {
                tail.replace(at, 3, " == ");
            }
            if (tail != text.substr(after)) {
                text = text.substr(0, after) + tail;
                warnLine(
                    "Only one assignment operator recognized. The expression will be "
                    "evaluated as: " +
                    TrimText(text));
            }
        }
    } else {
        for (std::size_t at = text.find(" = "); at != std::string::npos;
             at = text.find(" = ", at + 4)) {
            text.replace(at, 3, " == ");
        }
    }
    text = TrimText(text);
    // Statement builtins take their arguments in parentheses.
    for (const char* word : {"Poke", "Put", "SetBit", "ResetBit", "InvertBit", "MakeBit"}) {
        const std::string w = std::string(word) + " ";
        if (text.compare(0, w.size(), w) == 0)
            text = std::string(word) + "(" + text.substr(w.size()) + ")";
    }
    if (e.mode == 1 && arrayInitialiser(text, e)) return e.done;
    // Separate parentheses and commas.
    std::string spaced;
    for (char c : text) {
        if (c == '(' || c == ')' || c == ',') {
            spaced += std::string(" ") + c + " ";
        } else {
            spaced += c;
        }
    }
    if (countOccurrences(text, "(") != countOccurrences(text, ")")) {
        return fail(
            "Bad expression: Improper use of parentheses.\r\nNumbers of occurrences for '(' "
            "and ')' symbols must be equal.");
    }
    Tokens raw;
    {
        std::string collapsed;
        for (char c : spaced) {
            if (c == ' ' && (collapsed.empty() || collapsed.back() == ' ')) continue;
            collapsed += c;
        }
        collapsed = TrimText(collapsed);
        std::size_t from = 0;
        while (from < collapsed.size()) {
            const std::size_t blank = collapsed.find(' ', from);
            raw.push_back(
                collapsed.substr(from, blank == std::string::npos ? blank : blank - from));
            if (blank == std::string::npos) break;
            from = blank + 1;
        }
    }
    std::vector<std::string> infix;
    if (!openTokens(raw, e.mode, infix)) return false;
    debugLog("Infix: " + joined(infix));
    if (!checkInfix(infix)) return false;
    if (!toPostfix(infix, e)) return false;
    debugLog("Postfix: " + joined(e.postfix));
    return evaluate(e);
}

bool Compiler::openTokens(const std::vector<std::string>& raw, int mode,
                          std::vector<std::string>& infix) {
    for (std::size_t k = 0; k < raw.size(); ++k) {
        std::string t = raw[k];
        if (t == "<>") t = "!=";
        if (t == "Mod") t = "%";
        if (t == "ShiftLeft") t = "<<";
        if (t == "ShiftRight") t = ">>";
        if (t == "Xor") t = "^";
        if (t == "Not") t = mode == 1 ? "~" : "!";
        if (t == "And") t = mode == 1 ? "&" : "&&";
        if (t == "Or") t = mode == 1 ? "|" : "||";
        if (operatorInfo(t) || t == "(" || t == ")" || t == ",") {
            infix.push_back(t);
            continue;
        }
        const bool afterClose = !infix.empty() && infix.back() == ")";
        std::vector<std::string> front, back;
        if (t.size() > 1 && t[0] == '#' && t.back() != ']') {
            front.push_back("#");
            t = t.substr(1);
        }
        if (t.size() > 2 || afterClose) {
            if (t.size() > 2 && t.compare(t.size() - 2, 2, "++") == 0) {
                t.resize(t.size() - 2);
                back.push_back("post++");
            } else if (t.size() > 2 && t.compare(t.size() - 2, 2, "--") == 0) {
                t.resize(t.size() - 2);
                back.push_back("post--");
            }
        }
        if (!(t.size() <= 2 && afterClose)) {
            if (t.size() > 2 && t.compare(0, 2, "++") == 0) {
                front.push_back("pre++");
                t = t.substr(2);
            } else if (t.size() > 2 && t.compare(0, 2, "--") == 0) {
                front.push_back("pre--");
                t = t.substr(2);
            }
        }
        while (t.size() >= 2 && (t[0] == '~' || t[0] == '!' || t[0] == '-' || t[0] == '+') &&
               t.back() != '=') {
            front.push_back(t[0] == '-' ? "u-" : t[0] == '+' ? "u+" : std::string(1, t[0]));
            t = t.substr(1);
        }
        for (const std::string& f : front) infix.push_back(f);
        const std::size_t dot = t.find('.');
        if (dot == 0 && t.size() > 1) {
            infix.push_back(".");
            infix.push_back(t.substr(1));
        } else if (dot != std::string::npos && dot > 0 &&
                   t.substr(0, dot).find_first_not_of("0123456789") != std::string::npos) {
            // name.part.part: a chain of dot operators
            std::size_t from = 0;
            bool first = true;
            while (true) {
                const std::size_t next = t.find('.', from);
                if (!first) infix.push_back(".");
                infix.push_back(t.substr(from, next == std::string::npos ? next : next - from));
                first = false;
                if (next == std::string::npos) break;
                from = next + 1;
            }
        } else if (!t.empty()) {
            infix.push_back(t);
        }
        for (const std::string& b : back) infix.push_back(b);
    }
    return true;
}

bool Compiler::checkInfix(const std::vector<std::string>& infix) {
    for (std::size_t k = 0; k + 1 < infix.size(); ++k) {
        if (infix[k + 1] != "(") continue;
        const std::string& name = infix[k];
        if (operatorInfo(name) || name == "(" || name == ")" || name == "," || isBuiltin(name)) {
            continue;
        }
        const int f = findFunction(name);
        if (f >= 0) {
            if (!run_.arbitraryFunctionName && name == st_.currentScope) {
                return fail(
                    "Bad expression: Improper function call.\r\nFunction name can be used "
                    "as a variable only in its own scope.\r\nFunction: " +
                    name);
            }
            continue;
        }
        const int row = findVariable(name);
        if (row > 0 && st_.symbols[row].size == 0 && st_.symbols[row].type != kTypeString) {
            return fail("Bad expression: Improper variable use.\r\nVariable '" + name +
                        "' not declared as array.");
        }
    }
    return true;
}

bool Compiler::toPostfix(const std::vector<std::string>& infix, Expression& e) {
    std::vector<std::string> stack;
    bool seenAssignment = false;
    for (std::size_t k = 0; k < infix.size(); ++k) {
        const std::string& t = infix[k];
        const bool call = k + 1 < infix.size() && infix[k + 1] == "(" && !operatorInfo(t) &&
                          t != "(" && t != ")" && t != ",";
        if (call) {
            const bool builtin = isBuiltin(t);
            stack.push_back(builtin ? t : t + "()");
            continue;
        }
        if (t == "(") {
            stack.push_back(t);
        } else if (t == ",") {
            while (!stack.empty() && stack.back() != "(") {
                e.postfix.push_back(stack.back());
                stack.pop_back();
            }
            if (stack.empty())
                return fail("Bad expression: Improper use of parentheses or commas.");
        } else if (t == ")") {
            while (!stack.empty() && stack.back() != "(") {
                e.postfix.push_back(stack.back());
                stack.pop_back();
            }
            if (stack.empty()) return fail("Bad expression: Improper use of parentheses.");
            stack.pop_back();
            if (!stack.empty() && (isBuiltin(stack.back()) ||
                                   (stack.back().size() > 2 &&
                                    stack.back().compare(stack.back().size() - 2, 2, "()") == 0))) {
                e.postfix.push_back(stack.back());
                stack.pop_back();
            }
        } else if (const OperatorInfo* o = operatorInfo(t)) {
            if (o->precedence < 60) {
                while (!stack.empty()) {
                    const OperatorInfo* top = operatorInfo(stack.back());
                    if (!top) break;
                    if (!o->rightAssociative && top->precedence < o->precedence) break;
                    if (o->rightAssociative && top->precedence <= o->precedence) break;
                    e.postfix.push_back(stack.back());
                    stack.pop_back();
                }
            }
            stack.push_back(t);
            if (isAssignmentOperator(t) && !seenAssignment) {
                seenAssignment = true;
                e.lhsEnd = static_cast<int>(e.postfix.size());
            }
        } else {
            e.postfix.push_back(t);
        }
    }
    while (!stack.empty()) {
        if (stack.back() == "(") return fail("Bad expression: Improper use of parentheses.");
        e.postfix.push_back(stack.back());
        stack.pop_back();
    }
    return true;
}

// ---------------------------------------------------------------------------
// Evaluation

bool Compiler::evaluate(Expression& e) {
    std::vector<std::string>& post = e.postfix;
    // The left side of the first assignment, when it is one token.
    if (e.lhsEnd == 1) {
        e.target = post[0];
        const Operand t = operand(e.target, e.leftScope);
        if (!t.variable) return fail("Variable not declared: '" + e.target + "'.");
        e.targetType = t.type;
        const bool amongOperands = std::find(post.begin() + 1, post.end(), e.target) != post.end();
        if (run_.resultAsTemp && e.mode == 1 && isNumericType(t.type) &&
            t.address < kDescriptorBase && e.leftScope.empty() && !amongOperands) {
            // The target itself serves as the statement's first temporary.
            if (st_.temps.empty()) st_.temps.emplace_back();
            st_.temps[0] = {e.target, t.address, t.type, findVariable(e.target), 0, 0, ""};
            st_.firstTemp = 0;
        }
    }
    auto pop = [&](std::string& out) {
        if (e.stack.empty()) return false;
        out = e.stack.back();
        e.stack.pop_back();
        return true;
    };
    for (std::size_t k = 0; k < post.size(); ++k) {
        e.position = k;
        const std::string& t = post[k];
        const OperatorInfo* info = operatorInfo(t);
        if (!info && !isBuiltin(t) && !(t.size() > 2 && t.compare(t.size() - 2, 2, "()") == 0)) {
            e.stack.push_back(t);
            continue;
        }
        std::string right, left;
        if (info && info->precedence == 60) {
            if (!pop(right)) return fail("Bad expression: Improper use of " + t + "...");
            if (!unaryOperator(e, t, right)) return false;
            continue;
        }
        if (!info) {
            if (!callOperator(e, t)) return false;
            continue;
        }
        if (!pop(right) || !pop(left)) {
            return fail(e.stack.empty() && right.empty()
                            ? "Bad expression: Improper use of " + t + "..."
                            : "Bad expression: Argument(s) missing somewhere...");
        }
        if (!binaryOperator(e, t, left, right)) return false;
    }
    if (e.stack.size() != 1) {
        return fail(e.stack.empty() ? "Bad expression: Argument(s) missing somewhere..."
                                    : "Bad expression: Too many arguments somewhere...");
    }
    e.result = e.stack.back();
    debugLog("Output: " + e.result);
    // Deferred increments, last queued first.
    for (auto it = e.postOperations.rbegin(); it != e.postOperations.rend(); ++it) {
        const std::string& op = *it;
        const std::size_t comma = op.rfind(',');
        const std::string name = op.substr(0, comma), what = op.substr(comma + 1);
        if (what == "++" || what == "--") {
            if (!emitArithmetic(name, name, what == "++" ? "+" : "-", "1")) return false;
        } else if (what == "assign") {
            const std::size_t eq = name.find('=');
            if (!emitAssign(name.substr(0, eq), name.substr(eq + 1), "", "")) return false;
        }
    }
    return true;
}

// The destination of the operator at the walk's position: the statement's
// target when this operator is the last before its "=" and the stack holds
// only the target, else a new temporary of the type.
std::string Compiler::destination(const Expression& e, TypeCode type, int length) {
    const std::vector<std::string>& post = e.postfix;
    if (!e.target.empty() && e.leftScope.empty() && !post.empty() && post.back() == "=" &&
        e.position + 2 == post.size() && e.stack.size() == 1 && e.stack[0] == e.target) {
        return e.target;
    }
    return newTemp(type, length);
}

// Whether "left op right" is a string expression: a String operand, a string
// constant (one of a single character only beside another string), or the last
// operator of an assignment to a String.
bool Compiler::isStringExpression(const Expression& e, const Operand& l, const Operand& r) const {
    auto stringy = [this](const Operand& o, const Operand& other) {
        if (o.variable && (o.type == kTypeString || o.type == kTypeStrPtr)) return true;
        if (o.stringConstant) {
            return stringConstantText(o.text).size() != 1 || !isNumericType(other.type);
        }
        return o.text.size() > 1 && o.text[0] == '#';
    };
    if (stringy(l, r) || stringy(r, l)) return true;
    const bool lastBeforeAssignment =
        !e.postfix.empty() && e.postfix.back() == "=" && e.position + 2 == e.postfix.size();
    return lastBeforeAssignment && (e.targetType == kTypeString || e.targetType == kTypeStrPtr);
}

bool Compiler::binaryOperator(Expression& e, const std::string& op, const std::string& left,
                              const std::string& right) {
    if (op == "=") {
        if (right == left && e.leftScope.empty()) {
            debugLog("assignment operator (no code): " + left);
        } else {
            const Operand target = operand(left, e.leftScope);
            if (target.type == kTypeString || target.type == kTypeStrPtr) {
                if (!emitStringAssign(left, right, e.leftScope, "")) return false;
            } else if (!emitAssign(left, right, e.leftScope, "")) {
                return false;
            }
        }
        freeTemp(right);
        e.stack.push_back(left);
        return true;
    }
    if (op == "+=" || op == "-=" || op == "*=" || op == "/=") {
        if (!emitArithmetic(left, left, op.substr(0, 1), right)) return false;
        freeTemp(right);
        e.stack.push_back(left);
        return true;
    }
    if (op == ".") {
        const std::string joinedName = left + "." + right;
        if (resolve(joinedName, true, true).found) {
            debugLog("dot operator (no evaluation): " + joinedName);
            e.stack.push_back(joinedName);
            return true;
        }
        return fail("Bad expression: Incorrect argument in the expression.");
    }
    const Operand l = operand(left), r = operand(right);
    if (isArithmetic(op) && isStringExpression(e, l, r)) {
        if (op != "+") return fail("Bad expression: Illegal string operation.\r\nOperator: " + op);
        for (const Operand* o : {&l, &r}) {
            if (o->variable && isNumericType(o->type)) {
                return fail("Bad expression: Incorrect argument types in the expression.");
            }
        }
        return concatenate(e, left, right);
    }
    if (isArithmetic(op)) {
        if (!l.variable && !l.constant) return fail("Variable not declared: '" + left + "'.");
        if (!r.variable && !r.constant) return fail("Variable not declared: '" + right + "'.");
        TypeCode type = commonType({l, r});
        if (!run_.byteMathTemps && type == kTypeShort) type = kTypeInteger;
        if (!run_.byteMathTemps && type == kTypeUShort) type = kTypeUInteger;
        if (onlyArithmeticRemains(e) && isNumericType(e.targetType))
            type = widen(type, e.targetType);
        if (type == kTypeNone) {
            if (l.type == kTypeBit || r.type == kTypeBit) {
                return fail("Bit data type variable can not be used here: '" +
                            (l.type == kTypeBit ? left : right) + "'.");
            }
            return fail("Bad expression: Incorrect argument(s) in the expression.");
        }
        freeTemp(left);
        freeTemp(right);
        const std::string dest = destination(e, type);
        if (dest.empty() || !emitArithmetic(dest, left, op, right)) return false;
        e.stack.push_back(dest);
        return true;
    }
    if (isComparison(op)) {
        freeTemp(left);
        freeTemp(right);
        const std::string dest = destination(e, kTypeBit);
        if (dest.empty()) return false;
        const std::string label = newLabel();
        if (!emitAssign(dest, "0", "", "")) return false;
        debugComment(dest + " = 0");
        if (!emitComparison(left, op, right, label)) return false;
        if (!emitAssign(dest, "1", "", "")) return false;
        debugComment(dest + " = 1");
        emitLabel(label);
        e.stack.push_back(dest);
        return true;
    }
    if (isLogic(op)) return logicOperator(e, op, left, right);
    if (op == "<<" || op == ">>") return shiftOperator(e, op, left, right);
    return fail("Bad expression: Improper use of " + op + "...");
}

bool Compiler::onlyArithmeticRemains(const Expression& e) const {
    for (std::size_t k = e.position + 1; k < e.postfix.size(); ++k) {
        const std::string& t = e.postfix[k];
        if (!operatorInfo(t)) {
            if (isBuiltin(t) || (t.size() > 2 && t.compare(t.size() - 2, 2, "()") == 0))
                return false;
            continue;
        }
        if (!isArithmetic(t) && !isAssignmentOperator(t)) return false;
    }
    return true;
}

bool Compiler::unaryOperator(Expression& e, const std::string& op, const std::string& value) {
    const Operand v = operand(value);
    if (op == "u+") {
        if (v.constant && v.type != kTypeString && v.type != kTypeBit) {
            e.stack.push_back(value);
            return true;
        }
        if (v.variable && isNumericType(v.type)) {
            e.stack.push_back(value);
            return true;
        }
        return fail("Bad expression: Incorrect argument in the expression.");
    }
    if (op == "u-") {
        if (v.constant && isNumericType(v.type)) {
            e.stack.push_back(value[0] == '-' ? value.substr(1) : "-" + value);
            return true;
        }
        if (!v.variable || !isNumericType(v.type)) {
            return fail("Bad expression: Incorrect argument in the expression.");
        }
        freeTemp(value);
        const std::string dest = destination(e, commonType({operand("0"), v}));
        if (dest.empty() || !emitArithmetic(dest, "0", "-", value)) return false;
        e.stack.push_back(dest);
        return true;
    }
    if (op == "pre++" || op == "pre--") {
        if (!v.variable) return fail("Bad expression: Incorrect argument in the expression.");
        if (!emitArithmetic(value, value, op == "pre++" ? "+" : "-", "1")) return false;
        e.stack.push_back(value);
        return true;
    }
    if (op == "post++" || op == "post--") {
        if (!v.variable) return fail("Bad expression: Incorrect argument in the expression.");
        const std::string step = op == "post++" ? "++" : "--";
        if (run_.postIncrementTemp && e.postfix.size() > 2) {
            const std::string copy = newTemp(v.type);
            if (copy.empty() || !emitAssign(copy, value, "", "")) return false;
            e.stack.push_back(copy);
        } else {
            e.stack.push_back(value);
        }
        e.postOperations.push_back(value + "," + step);
        return true;
    }
    if (op == "~" || op == "!") return complementOperator(e, op, value);
    if (op == "#") {
        // The decimal text of a number: a lone "#x" is left for its consumer.
        const bool last = e.position + 1 == e.postfix.size();
        if (e.postfix.size() == 2 || (last && !run_.asciiPrintTemp)) {
            debugLog("no evaluation: #");
            e.stack.push_back("#" + value);
            return true;
        }
        if (!run_.asciiPrintTemp) return fail("Bad expression: Improper use of # operator.");
        const Operand n = operand(value);
        if (!isNumericType(n.type) && n.type != kTypeBit) {
            return fail("Bad expression: Incorrect argument in the expression.");
        }
        const std::string text = stringVariable("#" + value);
        if (text.empty()) return false;
        e.stack.push_back(text);
        return true;
    }
    return fail("Bad expression: Improper use of " + op + "...");
}

bool Compiler::callOperator(Expression& e, const std::string& name) {
    if (name.size() > 2 && name.compare(name.size() - 2, 2, "()") == 0) {
        const std::string base = name.substr(0, name.size() - 2);
        if (findFunction(base) >= 0) return functionCall(e, base);
        if (e.stack.empty()) return fail("Bad expression: Argument(s) missing somewhere...");
        const std::string index = e.stack.back();
        e.stack.pop_back();
        const std::string element = base + "(" + index + ")";
        if (!resolve(element, true, true).found) {
            return fail("Bad expression: Incorrect argument in the expression.");
        }
        e.stack.push_back(element);
        return true;
    }
    return builtinOperator(e, name);
}

namespace {

int builtinArgumentCount(const std::string& name) {
    if (const int n = stringBuiltinArguments(name); n > 0) return n;
    if (name == "Poke" || name == "Put" || name == "SetBit" || name == "ResetBit" ||
        name == "InvertBit" || name == "TestBit") {
        return 2;
    }
    if (name == "MakeBit") return 3;
    return 1;
}

}  // namespace

bool Compiler::builtinOperator(Expression& e, const std::string& name) {
    const int count = builtinArgumentCount(name);
    if (static_cast<int>(e.stack.size()) < count) {
        return fail("Bad expression: Argument(s) missing somewhere...");
    }
    std::vector<std::string> args(e.stack.end() - count, e.stack.end());
    e.stack.resize(e.stack.size() - count);
    if (stringBuiltinArguments(name) > 0) return stringBuiltin(e, name, args);
    for (const char* append :
         {"HexStr", "DecFromHex", "StrValB", "StrValW", "StrValL", "StrValS"}) {
        if (name == append) return appendCall(e, name, args[0]);
    }
    for (const std::string& a : args) freeTemp(a);
    if (name == "Peek" || name == "Get") return readBuiltin(e, name, args[0]);
    if (name == "Poke" || name == "Put") return writeBuiltin(e, name, args[0], args[1]);
    if (name == "SetBit" || name == "ResetBit" || name == "InvertBit" || name == "TestBit" ||
        name == "MakeBit") {
        return bitBuiltin(e, name, args);
    }
    static const std::pair<const char*, TypeCode> kConversions[] = {
        {"CShort", kTypeShort},   {"CInteger", kTypeInteger}, {"CLong", kTypeLong},
        {"CSingle", kTypeSingle}, {"CUShort", kTypeUShort},   {"CUInteger", kTypeUInteger},
        {"CULong", kTypeULong}};
    for (const auto& [word, type] : kConversions) {
        if (name != word) continue;
        const std::string temp = newTemp(type);
        if (temp.empty() || !emitAssign(temp, args[0], "", "")) return false;
        e.stack.push_back(temp);
        return true;
    }
    static const char* const kMath[] = {"Sqr", "Sin", "Cos", "Tan", "Exp", "Ln", "Log"};
    for (int k = 0; k < 7; ++k) {
        if (name != kMath[k]) continue;
        const Operand x = operand(args[0]);
        if (!x.variable && !x.constant) return fail("Variable not declared: '" + args[0] + "'.");
        if (!isNumericType(x.type)) {
            return fail("Bad expression: Incorrect argument in the expression.");
        }
        if (!loadOperand(kTypeSingle, "BC:DE", x)) return false;
        emitCode("PUSH BC");
        emitCode("PUSH DE");
        emitCode("CALL F00" + std::to_string(k + 1));
        emitCode("POP HL");
        emitCode("POP HL");
        needRuntime(kNeedSingleMath);
        const std::string dest = destination(e, kTypeSingle);
        if (dest.empty()) return false;
        const Operand d = operand(dest);
        if (!store(d.type, d.address, kTypeSingle, "BC:DE")) return false;
        e.stack.push_back(dest);
        return true;
    }
    if (name == "Pointer") return fail("Pointer function not yet implemented.");
    return fail(internalError("Unknown builtin " + name + "."));
}

// A port number: a constant of 0 to 255.
bool Compiler::portNumber(const std::string& text, bool input, int& port) {
    const Operand o = operand(text);
    const std::optional<uint32_t> value =
        o.constant && !o.stringConstant && o.text[0] != '-' ? readNumber(o.text) : std::nullopt;
    if (!value || *value > 255) {
        return fail(input ? "Incorrect input port number." : "Incorrect output port number.");
    }
    port = static_cast<int>(*value);
    return true;
}

bool Compiler::readBuiltin(Expression& e, const std::string& name, const std::string& arg) {
    if (name == "Get") {
        int port = 0;
        if (!portNumber(arg, true, port)) return false;
        emitCode("IN A,(" + codeHex2(port) + ")");
    } else {
        const Operand a = operand(arg);
        if (!a.variable && !a.constant) return fail("Variable not declared: '" + arg + "'.");
        if (a.constant) {
            long long address = 0;
            if (!constantValue(kTypeUInteger, a.text, address)) return false;
            emitCode("LD A,(" + codeHex4(static_cast<int>(address)) + ")");
        } else {
            if (!load(kTypeUInteger, "DE", a.type, a.text, a.address)) return false;
            emitCode("LD A,(DE)");
        }
    }
    const std::string dest = destination(e, kTypeUShort);
    if (dest.empty()) return false;
    const Operand d = operand(dest);
    if (!store(d.type, d.address, kTypeUShort, "A")) return false;
    e.stack.push_back(dest);
    return true;
}

bool Compiler::writeBuiltin(Expression& e, const std::string& name, const std::string& where,
                            const std::string& value) {
    const Operand v = operand(value);
    if (!v.variable && !v.constant) return fail("Variable not declared: '" + value + "'.");
    if (name == "Put") {
        int port = 0;
        if (!portNumber(where, false, port)) return false;
        if (!loadOperand(kTypeUShort, "A", v)) return false;
        emitCode("OUT (" + codeHex2(port) + "),A");
    } else {
        const Operand a = operand(where);
        if (!a.variable && !a.constant) return fail("Variable not declared: '" + where + "'.");
        if (a.constant) {
            long long address = 0;
            if (!constantValue(kTypeUInteger, a.text, address)) return false;
            if (!loadOperand(kTypeUShort, "A", v)) return false;
            emitCode("LD (" + codeHex4(static_cast<int>(address)) + "),A");
        } else {
            if (!load(kTypeUInteger, "DE", a.type, a.text, a.address)) return false;
            if (!loadOperand(kTypeUShort, "A", v, true)) return false;
            emitCode("LD (DE),A");
        }
    }
    e.stack.push_back("True");  // a statement: nothing to hand on
    return true;
}

bool Compiler::bitBuiltin(Expression& e, const std::string& name,
                          const std::vector<std::string>& args) {
    const Operand n = operand(args[0]);
    const Operand x = operand(args[1]);
    if (!x.variable || (x.type != kTypeShort && x.type != kTypeUShort)) {
        return fail(name == "TestBit"
                        ? "The second argument of TestBit function must be Short or UShort data "
                          "type variable."
                        : "The second argument of " + name +
                              " statement must be Short or UShort data type variable.");
    }
    int bit = -1;
    if (n.constant) {
        long long value = 0;
        if (!constantValue(kTypeShort, n.text, value)) return false;
        if (value < 0 || value > 7) return fail("Incorrect bit number.");
        bit = static_cast<int>(value);
    } else if (!n.variable || !isIntegerType(n.type)) {
        return fail("Incorrect bit number.");
    }
    if (name == "MakeBit") {
        const Operand b = operand(args[2]);
        if (!(b.type == kTypeBit || (b.constant && !b.stringConstant))) {
            return fail(
                "The third argument of MakeBit statement must be Bit data type variable or "
                "constant.");
        }
        if (bit < 0) bitMask(n, false);
        if (!load(kTypeUShort, "B", x.type, x.text, x.address)) return false;
        if (b.constant) {
            long long value = 0;
            if (!constantValue(kTypeBit, b.text, value)) return false;
            emitCode(value ? "LD A,0FFH" : "XOR A");
        } else if (!load(kTypeUShort, "A", kTypeBit, b.text, b.address)) {
            return false;
        }
        emitCode("OR A");
        if (bit >= 0) {
            for (const std::string& l :
                 {std::string("JR NZ,$+2+4"), "RES " + std::to_string(bit) + ",B",
                  std::string("JR $+2+2"), "SET " + std::to_string(bit) + ",B",
                  std::string("LD A,B")}) {
                emitCode(l);
            }
        } else {
            for (const char* l :
                 {"JR NZ,$+2+6", "LD A,C", "XOR 0FFH", "AND B", "JR $+2+2", "LD A,C", "OR B"}) {
                emitCode(l);
            }
        }
        if (!store(x.type, x.address, kTypeUShort, "A")) return false;
        e.stack.push_back("True");
        return true;
    }
    const bool reset = name == "ResetBit";
    if (bit < 0) bitMask(n, reset);
    if (!load(kTypeUShort, "A", x.type, x.text, x.address)) return false;
    const int mask = bit < 0 ? 0 : reset ? (~(1 << bit)) & 0xFF : 1 << bit;
    const std::string operandText = bit < 0 ? "C" : codeHex2(mask);
    const char* mnemonic = name == "SetBit" ? "OR " : name == "InvertBit" ? "XOR " : "AND ";
    emitCode(mnemonic + operandText);
    if (name != "TestBit") {
        if (!store(x.type, x.address, kTypeUShort, "A")) return false;
        e.stack.push_back("True");
        return true;
    }
    for (const char* l : {"JR NZ,$+2+3", "XOR A", "JR Z,$+2+2", "LD A,0FFH"}) emitCode(l);
    const std::string dest = destination(e, kTypeBit);
    if (dest.empty()) return false;
    const Operand d = operand(dest);
    if (d.type != kTypeBit)
        return fail("The result of TestBit function must be Bit data type variable.");
    if (!store(kTypeBit, d.address, kTypeBit, "A")) return false;
    e.stack.push_back(dest);
    return true;
}

// C := a mask with the bit numbered by the variable n set (or, to reset, clear).
void Compiler::bitMask(const Operand& n, bool reset) {
    load(kTypeUShort, "B", n.type, n.text, n.address);
    if (reset) {
        emitCode("OR 0FFH");
    } else {
        emitCode("XOR A");
        emitCode("SCF");
    }
    emitCode("RLA");
    emitCode("DEC B");
    emitCode("JP P,$-1-1");
    emitCode("LD C,A");
}

// ---------------------------------------------------------------------------
// Emitters

bool Compiler::emitAssign(const std::string& dest, const std::string& source,
                          const std::string& destScope, const std::string& sourceScope) {
    const Operand d = operand(dest, destScope);
    Operand s = operand(source, sourceScope);
    if (!d.variable) return fail("Variable not declared: '" + dest + "'.");
    if (!s.variable && !s.constant) return fail("Variable not declared: '" + source + "'.");
    if (s.variable && (s.type == kTypeString || s.type == kTypeStrPtr)) {
        if (s.type == kTypeStrPtr)
            return fail("Bad expression: Incorrect argument types in the expression.");
        s.type = kTypeUShort;  // a String read as a number is its first character
    }
    if (d.type == kTypeBit && s.variable && s.type != kTypeBit) {
        return fail("Variable '" + source + "' can not be assigned to Bit variable.");
    }
    if (s.type == kTypeBit && s.variable && d.type != kTypeBit) {
        return fail("Bit variable can not be assigned to variable '" + dest + "'.");
    }
    if (s.variable && s.address == d.address && s.type == d.type) return true;
    const int width = typeSize(d.type);
    if (d.type == kTypeBit && s.constant) {
        long long value = 0;
        if (!constantValue(kTypeBit, s.text, value)) return false;
        emitCode(value ? "LD A,0FFH" : "XOR A");
        return store(d.type, d.address, kTypeBit, "A");
    }
    const std::string reg = width == 1   ? "A"
                            : width == 2 ? (s.type == d.type ? "BC" : "HL")
                                         : "BC:DE";
    if (s.constant && s.type == kTypeSingle && d.type != kTypeSingle) {
        // A real number into an integer: truncated at run time, as a variable would be.
        if (!loadConstant(kTypeSingle, "BC:DE", s.text)) return false;
        emitCode("CALL X001");
        needRuntime(kNeedSingleToLong);
        return store(d.type, d.address, kTypeLong, "BC:DE");
    }
    if (s.constant) {
        if (!loadConstant(d.type, reg, s.text)) return false;
        return store(d.type, d.address, d.type, reg);
    }
    if (!load(d.type, reg, s.type, s.text, s.address)) return false;
    return store(d.type, d.address, d.type == kTypeSingle ? kTypeSingle : s.type, reg);
}

bool Compiler::emitArithmetic(const std::string& dest, const std::string& leftText,
                              const std::string& op, const std::string& rightText) {
    std::string leftName = leftText, rightName = rightText;
    Operand l = operand(leftName), r = operand(rightName);
    const Operand d = operand(dest);
    for (const Operand* o : {&l, &r}) {
        if (!o->variable && !o->constant) return fail("Variable not declared: '" + o->text + "'.");
        if (o->type == kTypeBit) {
            return fail("Bit data type variable can not be used here: '" + o->text + "'.");
        }
    }
    if (!d.variable) return fail("Variable not declared: '" + dest + "'.");
    TypeCode work = commonType({l, r});
    if (!run_.byteMathTemps && work == kTypeShort) work = kTypeInteger;
    if (!run_.byteMathTemps && work == kTypeUShort) work = kTypeUInteger;
    work = widen(work, d.type);
    if (work == kTypeNone) return fail("Bad expression: Incorrect argument(s) in the expression.");
    std::string target = dest;
    if (work != d.type) {
        target = newTemp(work);
        if (target.empty()) return false;
    }
    const Operand t = operand(target);
    if (op == "+" && l.constant && r.variable && isIntegerType(r.type) &&
        r.address < kDescriptorBase) {
        std::swap(l, r);
    }
    if (work == kTypeSingle && op == "%") {
        return fail("Incorrect operation for the Single data type: % (Mod).");
    }
    const int size = typeSize(work);
    std::string resultReg;
    if (size == 1) {
        if (!loadOperand(work, "A", l) || !loadOperand(work, "L", r)) return false;
        const bool isSigned = work == kTypeShort;
        if (op == "+") emitCode("ADD A,L");
        if (op == "-") emitCode("SUB L");
        if (op == "*") {
            emitCode("CALL M01");
            emitCode("LD A,L");
            needRuntime(kNeedShortMultiply);
        }
        if (op == "/" || op == "%") {
            if (isSigned) {
                emitCode("CALL D01");
            } else {
                emitCode("LD H,L");
                emitCode("LD L,A");
                emitCode("CALL D11");
                emitCode("LD A,L");
            }
            if (op == "%") emitCode("LD A,H");
            needRuntime(kNeedShortDivide);
        }
        resultReg = "A";
    } else if (size == 2) {
        if (!loadOperand(work, "DE", r) || !loadOperand(work, "HL", l, true)) return false;
        const bool isSigned = work == kTypeInteger;
        if (op == "+") {
            if (isSigned) {
                emitCode("OR A");
                emitCode("ADC HL,DE");
            } else {
                emitCode("ADD HL,DE");
            }
        }
        if (op == "-") {
            emitCode("OR A");
            emitCode("SBC HL,DE");
        }
        if (op == "*") {
            emitCode("CALL M001");
            needRuntime(kNeedIntegerMultiply);
        }
        if (op == "/" || op == "%") {
            emitCode(isSigned ? "CALL D001" : "CALL D011");
            if (op == "%") emitCode("EX DE,HL");
            needRuntime(kNeedIntegerDivide);
        }
        resultReg = "HL";
    } else {
        if (!loadOperand(work, "BC:DE", l)) return false;
        emitCode("PUSH BC");
        emitCode("PUSH DE");
        if (!loadOperand(work, "BC:DE", r)) return false;
        if (work == kTypeSingle) {
            const char* call = op == "+"   ? "CALL A201"
                               : op == "-" ? "CALL S201"
                               : op == "*" ? "CALL M201"
                                           : "CALL D201";
            emitCode(call);
            needRuntime(op == "+"   ? kNeedSingleAdd
                        : op == "-" ? kNeedSingleSubtract
                        : op == "*" ? kNeedSingleMultiply
                                    : kNeedSingleDivide);
        } else if (op == "+") {
            emitCode("CALL A101");
            needRuntime(kNeedLongAdd);
        } else if (op == "-") {
            emitCode("OR A");
            emitCode("CALL S101");
            needRuntime(kNeedLongSubtract);
        } else if (op == "*") {
            emitCode("CALL M101");
            needRuntime(kNeedLongMultiply);
        } else {
            emitCode(work == kTypeLong ? "CALL D101" : "CALL D121");
            if (op == "%") emitCode("EXX");
            needRuntime(kNeedLongDivide);
        }
        resultReg = "BC:DE";
    }
    if (!store(work, t.address, work, resultReg)) return false;
    if (target != dest) {
        if (!emitAssign(dest, target, "", "")) return false;
        freeTemp(target);
    }
    return true;
}

bool Compiler::loadOperand(TypeCode work, const std::string& reg, const Operand& o,
                           bool protectDE) {
    if (o.constant) return loadConstant(work, reg, o.text);
    return load(work, reg, o.type, o.text, o.address, protectDE);
}

bool Compiler::emitComparison(const std::string& leftText, const std::string& op,
                              const std::string& rightText, const std::string& falseLabel) {
    Operand l = operand(leftText), r = operand(rightText);
    if (!l.variable && !l.constant) return fail("Variable not declared: '" + leftText + "'.");
    if (!r.variable && !r.constant) return fail("Variable not declared: '" + rightText + "'.");
    const auto stringSide = [this](const Operand& o) {
        return (o.variable && (o.type == kTypeString || o.type == kTypeStrPtr)) ||
               (o.stringConstant && stringConstantText(o.text).size() != 1);
    };
    if (stringSide(l) || stringSide(r))
        return stringComparison(leftText, op, rightText, falseLabel);
    std::string cmp = op;
    TypeCode type;
    if (l.type == kTypeBit || r.type == kTypeBit) {
        if (l.type != kTypeBit) {
            std::swap(l, r);
            if (cmp == "<")
                cmp = ">";
            else if (cmp == ">")
                cmp = "<";
            else if (cmp == "<=")
                cmp = ">=";
            else if (cmp == ">=")
                cmp = "<=";
        }
        if (r.variable && r.type != kTypeBit && isNumericType(r.type)) {
            warnLine(std::string(typeNameForMessage(r.type)) + " data type variable '" + r.text +
                     "' involved in Bit type comparison: " + expressionText_ +
                     ". Any non-zero value will be interpreted as True...");
            const std::string bit = bitOfNumber(r.text);
            if (bit.empty()) return false;
            r = operand(bit);
        }
        if (r.variable && r.type != kTypeBit) {
            return fail("Bit data types expected on both sides of comparison operator.");
        }
        type = kTypeBit;
    } else {
        type = commonType({l, r});
        if (type == kTypeNone)
            return fail("Bad expression: Incorrect argument(s) in the expression.");
        if ((l.variable && l.type != type) || (r.variable && r.type != type)) {
            warnLine("Comparison is performed between different numeric data types: " + leftText +
                     " " + op + " " + rightText +
                     ". Be sure to check if there is a need to use one of the data type conversion "
                     "functions (C" +
                     std::string(typeNameForMessage(type)) +
                     " suggested) to achieve desired precision...");
        }
    }
    const std::string F = falseLabel;
    const int size = type == kTypeBit ? 1 : typeSize(type);
    if (type == kTypeBit && cmp != "==" && cmp != "!=") {
        return fail("Comparison operator not allowed for Bit variables.");
    }
    auto jumps = [&](const char* lt, const char* ge) {
        // Tests through a compare routine whose flags order the operands.
        if (cmp == "<") emitCode(std::string("JP ") + ge + "," + F);
        if (cmp == ">=") emitCode(std::string("JP ") + lt + "," + F);
        if (cmp == "<=") {
            emitCode("JR Z,$+2+3");
            emitCode(std::string("JP ") + ge + "," + F);
        }
        if (cmp == ">") {
            emitCode(std::string("JP ") + lt + "," + F);
            emitCode("JP Z," + F);
        }
    };
    if (type == kTypeBit) {
        // A Bit constant compares as the value a Bit variable holds: 0 or 255.
        for (Operand* o : {&l, &r}) {
            if (!o->constant) continue;
            long long value = 0;
            if (!constantValue(kTypeBit, o->text, value)) return false;
            o->text = std::to_string(value);
            o->type = kTypeUShort;
        }
    }
    if (size == 1) {
        if (!loadOperand(type == kTypeBit ? kTypeUShort : type, "A", l) ||
            !loadOperand(type == kTypeBit ? kTypeUShort : type, "L", r)) {
            return false;
        }
        if (cmp == "==" || cmp == "!=") {
            emitCode(type == kTypeUShort ? "CP L" : "SUB L");
            emitCode((cmp == "==" ? "JP NZ," : "JP Z,") + F);
            if (type == kTypeShort) needRuntime(kNeedShortCompare);
            return true;
        }
        if (type == kTypeShort) {
            emitCode("CALL C01");
            needRuntime(kNeedShortCompare);
            jumps("C", "NC");
        } else if (cmp == "<" || cmp == ">=") {
            emitCode("CP L");
            emitCode((cmp == "<" ? "JP NC," : "JP C,") + F);
        } else {
            emitCode("SCF");
            emitCode("SBC A,L");
            emitCode((cmp == "<=" ? "JP NC," : "JP C,") + F);
        }
        return true;
    }
    if (size == 2) {
        if (!loadOperand(type, "DE", r) || !loadOperand(type, "HL", l, true)) return false;
        if (cmp == "==" || cmp == "!=") {
            emitCode("OR A");
            emitCode("SBC HL,DE");
            emitCode((cmp == "==" ? "JP NZ," : "JP Z,") + F);
            if (type == kTypeInteger) needRuntime(kNeedIntegerCompare);
            return true;
        }
        if (type == kTypeInteger) {
            emitCode("CALL C001");
            needRuntime(kNeedIntegerCompare);
            jumps("C", "NC");
        } else if (cmp == "<" || cmp == ">=") {
            emitCode("OR A");
            emitCode("SBC HL,DE");
            emitCode((cmp == "<" ? "JP NC," : "JP C,") + F);
        } else {
            emitCode("SCF");
            emitCode("SBC HL,DE");
            emitCode((cmp == "<=" ? "JP NC," : "JP C,") + F);
        }
        return true;
    }
    if (!loadOperand(type, "BC:DE", l)) return false;
    emitCode("PUSH BC");
    emitCode("PUSH DE");
    if (!loadOperand(type, "BC:DE", r)) return false;
    if (type == kTypeSingle) {
        needRuntime(kNeedSingleCompare);
        if (cmp == "==" || cmp == "!=") {
            emitCode("CALL C201");
            emitCode((cmp == "==" ? "JP NZ," : "JP Z,") + F);
        } else {
            emitCode("CALL C202");
            jumps("M", "P");
        }
        return true;
    }
    needRuntime(kNeedLongSubtract);
    if (cmp == "==" || cmp == "!=") {
        emitCode("OR A");
        emitCode("CALL S101");
        emitCode((cmp == "==" ? "JP NZ," : "JP Z,") + F);
    } else if (type == kTypeLong) {
        emitCode("CALL C101");
        needRuntime(kNeedLongCompare);
        jumps("C", "NC");
    } else if (cmp == "<" || cmp == ">=") {
        emitCode("OR A");
        emitCode("CALL S101");
        emitCode((cmp == "<" ? "JP NC," : "JP C,") + F);
    } else {
        emitCode("SCF");
        emitCode("CALL S101");
        emitCode((cmp == "<=" ? "JP NC," : "JP C,") + F);
    }
    return true;
}

bool Compiler::logicOperator(Expression& e, const std::string& opText, const std::string& left,
                             const std::string& right) {
    Operand l = operand(left), r = operand(right);
    std::string op = opText;
    TypeCode type = kTypeNone;
    if (l.type == kTypeBit || r.type == kTypeBit) {
        for (Operand* o : {&l, &r}) {
            if (o->variable && o->type != kTypeBit) {
                if (!isNumericType(o->type)) {
                    return fail("Bad expression: Incorrect argument(s) in the expression.");
                }
                warnLine(std::string(typeNameForMessage(o->type)) + " data type variable '" +
                         o->text + "' involved in Bit type logical operation: " + expressionText_ +
                         ". Any non-zero value will be interpreted as True...");
                const std::string bit = bitOfNumber(o->text);
                if (bit.empty()) return false;
                *o = operand(bit);
            }
        }
        type = kTypeBit;
    } else {
        type = commonType({l, r});
    }
    if (type == kTypeNone) return fail("Bad expression: Incorrect argument(s) in the expression.");
    if (type != kTypeBit && op == "||") op = "|";
    if (type != kTypeBit && op == "&&") op = "&";
    const char* mnemonic = op == "|" || op == "||" ? "OR" : op == "&" || op == "&&" ? "AND" : "XOR";
    freeTemp(left);
    freeTemp(right);
    const std::string dest = destination(e, type);
    if (dest.empty()) return false;
    const Operand d = operand(dest);
    if ((d.type == kTypeBit) != (type == kTypeBit)) {
        return fail("Bad expression: Incorrect result variable type in the expression.");
    }
    const TypeCode work = type == kTypeBit ? kTypeUShort : type;
    const int size = typeSize(work);
    if (size == 1) {
        if (!loadOperand(work, "C", r) || !loadOperand(work, "A", l)) return false;
        emitCode(std::string(mnemonic) + " C");
        if (!store(type, d.address, type, "A")) return false;
    } else if (size == 2) {
        if (!loadOperand(work, "BC", l) || !loadOperand(work, "DE", r)) return false;
        for (const char* pair : {"BD", "CE"}) {
            emitCode(std::string("LD A,") + pair[0]);
            emitCode(std::string(mnemonic) + " " + pair[1]);
            emitCode(std::string("LD ") + pair[0] + ",A");
        }
        if (!store(type, d.address, type, "BC")) return false;
    } else {
        if (!loadOperand(work, "BC:DE", r)) return false;
        emitCode("PUSH BC");
        emitCode("PUSH DE");
        if (!loadOperand(work, "BC:DE", l)) return false;
        emitCode("POP HL");
        for (const char* pair : {"DH", "EL"}) {
            emitCode(std::string("LD A,") + pair[0]);
            emitCode(std::string(mnemonic) + " " + pair[1]);
            emitCode(std::string("LD ") + pair[0] + ",A");
        }
        emitCode("POP HL");
        for (const char* pair : {"BH", "CL"}) {
            emitCode(std::string("LD A,") + pair[0]);
            emitCode(std::string(mnemonic) + " " + pair[1]);
            emitCode(std::string("LD ") + pair[0] + ",A");
        }
        if (!store(type, d.address, type, "BC:DE")) return false;
    }
    e.stack.push_back(dest);
    return true;
}

bool Compiler::complementOperator(Expression& e, const std::string& opText,
                                  const std::string& value) {
    const Operand v = operand(value);
    if (!v.variable && !v.constant) return fail("Variable not declared: '" + value + "'.");
    if (!isNumericType(v.type) && v.type != kTypeBit) {
        return fail("Bad expression: Incorrect argument in the expression.");
    }
    (void)opText;  // "!" of a number is "~": both complement every bit
    const TypeCode type = v.constant && v.type != kTypeBit ? v.type : v.type;
    if (type == kTypeSingle) return fail("Bad expression: Incorrect argument in the expression.");
    freeTemp(value);
    const std::string dest = destination(e, type);
    if (dest.empty()) return false;
    const Operand d = operand(dest);
    const int size = typeSize(type == kTypeBit ? kTypeUShort : type);
    const TypeCode work = type == kTypeBit ? kTypeUShort : type;
    if (size == 1) {
        if (!loadOperand(work, "A", v)) return false;
        emitCode("CPL");
        if (!store(d.type, d.address, type, "A")) return false;
    } else if (size == 2) {
        if (!loadOperand(work, "BC", v)) return false;
        for (const char* r : {"B", "C"}) {
            emitCode(std::string("LD A,") + r);
            emitCode("CPL");
            emitCode(std::string("LD ") + r + ",A");
        }
        if (!store(d.type, d.address, type, "BC")) return false;
    } else {
        if (!loadOperand(work, "BC:DE", v)) return false;
        for (const char* r : {"B", "C", "D", "E"}) {
            emitCode(std::string("LD A,") + r);
            emitCode("CPL");
            emitCode(std::string("LD ") + r + ",A");
        }
        if (!store(d.type, d.address, type, "BC:DE")) return false;
    }
    e.stack.push_back(dest);
    return true;
}

bool Compiler::shiftOperator(Expression& e, const std::string& op, const std::string& left,
                             const std::string& right) {
    const Operand l = operand(left), r = operand(right);
    if (!(l.variable || (l.constant && l.type != kTypeNone)) || !isIntegerType(l.type)) {
        return fail("Bad expression: Incorrect first argument in the expression.");
    }
    if (!r.variable && !r.constant) return fail("Variable not declared: '" + right + "'.");
    const TypeCode type = l.type;
    freeTemp(left);
    freeTemp(right);
    const std::string dest = destination(e, type);
    if (dest.empty()) return false;
    const Operand d = operand(dest);
    const int size = typeSize(type);
    const std::string reg = size == 1 ? "C" : size == 2 ? "BC" : "BC:DE";
    const bool constantZero = r.constant && readNumber(r.text) == 0u;
    if (r.constant) {
        if (!loadOperand(type, reg, l)) return false;
        if (!constantZero && !loadOperand(kTypeUShort, "A", r)) return false;
    } else {
        if (!loadOperand(kTypeUShort, "A", r)) return false;
        emitCode("PUSH AF");
        if (!loadOperand(type, reg, l)) return false;
        emitCode("POP AF");
    }
    if (!constantZero) {
        const std::string label = newLabel();
        std::vector<std::string> steps;
        if (size == 1) {
            steps = {op == "<<" ? "SLA C" : "SRL C"};
        } else if (size == 2) {
            steps = op == "<<" ? std::vector<std::string>{"SLA C", "RL B"}
                               : std::vector<std::string>{"SRL B", "RR C"};
        } else {
            steps = op == "<<" ? std::vector<std::string>{"SLA E", "RL D", "RL C", "RL B"}
                               : std::vector<std::string>{"SRL B", "RR C", "RR D", "RR E"};
        }
        emitLabel(label, steps[0]);
        for (std::size_t k = 1; k < steps.size(); ++k) emitCode(steps[k]);
        emitCode("DEC A");
        emitCode("JR NZ," + label);
    }
    if (size == 1) {
        emitCode("LD A,C");
        if (!store(d.type, d.address, type, "A")) return false;
    } else if (!store(d.type, d.address, type, reg)) {
        return false;
    }
    e.stack.push_back(dest);
    return true;
}

bool Compiler::arrayInitialiser(const std::string& text, Expression& e) {
    const std::size_t eq = text.find(" = ");
    if (eq == std::string::npos) return false;
    std::string name = TrimText(text.substr(0, eq));
    const std::string list = TrimText(text.substr(eq + 3));
    if (name.size() > 2 && name.compare(name.size() - 2, 2, "()") == 0)
        name.resize(name.size() - 2);
    if (list.size() < 2 || list.front() != '(' || list.back() != ')') return false;
    const int row = findVariable(name);
    if (row == 0 || st_.symbols[row].size == 0 || st_.symbols[row].type == kTypeString)
        return false;
    e.done = emitArrayInit(row, list.substr(1, list.size() - 2));
    e.result = name;
    return true;
}

bool Compiler::emitArrayInit(int row, std::string list) {
    countUse(row, true);
    const SymbolRow s = st_.symbols[row];
    std::vector<std::string> elements;
    while (!list.empty()) elements.push_back(nextArgument(list));
    if (static_cast<int>(elements.size()) > s.size) {
        return fail("The number of array elements (" + std::to_string(elements.size()) +
                    ") exceeds the array size (0-" + std::to_string(s.size - 1) + ").");
    }
    emitCode("LD HL," + codeHex4(absoluteAddress(s.address)));
    const int size = typeSize(s.type);
    for (const std::string& element : elements) {
        long long value = 0;
        if (!constantValue(s.type, element, value)) return false;
        for (int b = 0; b < size; ++b) {
            emitCode("LD A," + codeHex2(static_cast<int>((value >> (8 * b)) & 0xFF)));
            emitCode("LD (HL),A");
            emitCode("INC HL");
        }
    }
    return true;
}

void Compiler::debugLog(const std::string& text) {
    if (run_.debugComments) debugLines_.push_back(text);
}

// A Bit temporary holding x != 0.
std::string Compiler::bitOfNumber(const std::string& x) {
    const std::string bit = newTemp(kTypeBit);
    if (bit.empty()) return "";
    const std::string label = newLabel();
    if (!emitAssign(bit, "0", "", "") || !emitComparison(x, "!=", "0", label) ||
        !emitAssign(bit, "1", "", "")) {
        return "";
    }
    emitLabel(label);
    return bit;
}

int Compiler::findFunction(const std::string& name) const {
    for (std::size_t i = 0; i < st_.functions.size(); ++i) {
        const std::string& f = st_.functions[i].name;
        if (f.substr(0, f.find('[')) == name) return static_cast<int>(i);
    }
    return -1;
}

}  // namespace mb
