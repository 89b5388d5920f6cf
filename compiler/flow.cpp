// Flow statements: If and its one-line form, Select Case, While, For, CFor,
// their exits, and the calls of procedures and functions with the tests that
// decide their jumps.
#include <algorithm>
#include <limits>

#include "compiler/basic_numbers.h"
#include "compiler/compiler.h"
#include "compiler/output_text.h"

namespace mb {

namespace {

bool isComparisonOperator(const std::string& t) {
    return t == "==" || t == "!=" || t == "<" || t == "<=" || t == ">" || t == ">=";
}

std::string opposite(const std::string& op) {
    if (op == "==") return "!=";
    if (op == "!=") return "==";
    if (op == "<") return ">=";
    if (op == ">=") return "<";
    if (op == "<=") return ">";
    return "<=";
}

std::vector<std::string> splitAt(const std::string& text, const std::string& separator) {
    std::vector<std::string> parts;
    std::size_t from = 0;
    while (true) {
        const std::size_t at = text.find(separator, from);
        parts.push_back(TrimText(text.substr(from, at == std::string::npos ? at : at - from)));
        if (at == std::string::npos) break;
        from = at + separator.size();
    }
    return parts;
}

// The text inside every pair of parentheses that encloses all of it, trimmed:
// "((a = 1))" gives "a = 1". A pair encloses the text when the depth, counted
// from its "(", stays above zero up to its ")" at the end. The depth is counted
// once for the whole text, so that a test in thousands of pairs is read in one
// pass and not once per pair.
std::string unwrapped(const std::string& text) {
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    const std::string t = TrimText(text);
    const std::size_t n = t.size();
    std::vector<int> depth(n);  // after each character, from the start
    int d = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (t[i] == '(') ++d;
        if (t[i] == ')') --d;
        depth[i] = d;
    }
    // The pairs' own characters: a run of "(" and blanks up to lead, a run of
    // ")" and blanks from trail. Between them every pair sees the same lowest depth.
    std::size_t lead = 0, trail = n;
    while (lead < n && (t[lead] == '(' || blank(t[lead]))) ++lead;
    while (trail > lead && (t[trail - 1] == ')' || blank(t[trail - 1]))) --trail;
    int middle = std::numeric_limits<int>::max();
    for (std::size_t i = lead; i < trail; ++i) middle = std::min(middle, depth[i]);
    // The pair number `pair` stands at from and to - 1; inside the leading run
    // the depth only rises, inside the trailing one it only falls.
    std::size_t from = 0, to = n;
    for (int pair = 1; to - from >= 2 && t[from] == '(' && t[to - 1] == ')' && middle >= pair &&
                       (to - 2 < trail || depth[to - 2] >= pair);
         ++pair) {
        ++from;
        --to;
        while (from < to && blank(t[from])) ++from;
        while (to > from && blank(t[to - 1])) --to;
    }
    return t.substr(from, to - from);
}

}  // namespace

// ---------------------------------------------------------------------------
// Tests

int Compiler::classifyTest(std::string& text) {
    const std::string test = unwrapped(text);
    int calls = 0;
    for (const RoutineRow& f : st_.functions) {
        const std::string name = f.name.substr(0, f.name.find('[')) + "(";
        calls += countOccurrences(test, name);
    }
    if (calls > 1) return 0;
    Tokens t;
    if (!statementTokens(test, t)) return 0;
    for (int k = 1; k <= kMaxTokens && !t[k].empty(); ++k) {
        // Parentheses that group parts of the test (not those of an element or
        // a call) leave it to the general test.
        const std::string& w = t[k];
        if (w[0] == '(' || countOccurrences(w, ")") > countOccurrences(w, "(")) return 0;
    }
    int c = 0, a = 0, o = 0, b = 0;
    std::vector<std::string> words;
    for (int k = 1; k <= kMaxTokens && !t[k].empty(); ++k) {
        std::string w = t[k];
        if (w == "=") w = "==";
        if (w == "<>") w = "!=";
        if (w == "And") w = "&&";
        if (w == "Or") w = "||";
        if (w == "Not") w = "!";
        if (w == "Xor") w = "^";
        if (isComparisonOperator(w)) ++c;
        if (w == "&&") ++a;
        if (w == "||") ++o;
        if (w == "|" || w == "^" || w == "&") ++b;
        words.push_back(w);
    }
    int kind = 0;
    if (c == 1 && a == 0 && o == 0 && b == 0) kind = 1;
    if (c > 1 && a == c - 1 && o == 0 && b == 0) kind = 1;
    if (c > 1 && a == 0 && o == c - 1 && b == 0) kind = 2;
    if (kind == 0) return 0;
    text.clear();
    for (const std::string& w : words) {
        std::string out = w;
        if (kind == 2 && w == "||") out = "&&";
        if (kind == 2 && isComparisonOperator(w)) out = opposite(w);
        text += (text.empty() ? "" : " ") + out;
    }
    return kind;
}

bool Compiler::compileTest(const std::string& original, const std::string& falseLabel) {
    std::string test = original;
    const int kind = classifyTest(test);
    debugComment("test expression: " + original);
    if (kind == 0) return generalTest(original, falseLabel);
    const std::string success = kind == 2 ? newLabel() : "";
    for (const std::string& part : splitAt(test, " && ")) {
        Tokens t;
        statementTokens(part, t);
        int at = 0;
        for (int k = 1; k <= kMaxTokens && !t[k].empty(); ++k) {
            if (isComparisonOperator(t[k])) at = k;
        }
        const std::string left =
            at > 1 ? TrimText(part.substr(0, part.find(" " + t[at] + " "))) : "";
        const std::string right = at > 1 ? restOfTokens(t, at + 1) : "";
        if (left.empty() || right.empty()) return fail("Bad If test expression:\r\n" + original);
        std::string l, r;
        if (!compileExpression(left, l, "", 0, true) || !compileExpression(right, r, "", 0, true)) {
            return false;
        }
        if (!emitComparison(l, t[at], r, kind == 2 ? success : falseLabel)) return false;
    }
    if (kind == 2) {
        emitCode("JP " + falseLabel);
        emitLabel(success);
    }
    return true;
}

bool Compiler::generalTest(const std::string& test, const std::string& falseLabel) {
    std::string result;
    if (!compileExpression(test, result, "", 0, true)) return false;
    Operand r = operand(result);
    if (r.constant || (!r.variable && r.type == kTypeBit)) {
        const std::string bit = newTemp(kTypeBit);
        if (bit.empty() || !emitAssign(bit, result, "", "")) return false;
        result = bit;
        r = operand(bit);
    }
    if (r.variable && isNumericType(r.type)) {
        static const char* const kNames[] = {"",       "Bit",    "Short",  "Integer",  "Long",
                                             "Single", "String", "",       "",         "",
                                             "StrPtr", "",       "UShort", "UInteger", "ULong"};
        warnLine(std::string(kNames[r.type]) + " data type variable '" + result +
                 "' is the result of condition expression evaluation: " + test +
                 ". Any non-zero value will be interpreted as True...");
        const std::string bit = bitOfNumber(result);
        if (bit.empty()) return false;
        result = bit;
        r = operand(bit);
    }
    if (r.type != kTypeBit) {
        return fail("Bad expression: The expression must be evaluated to Bit data type.");
    }
    return emitComparison(result, "==", "1", falseLabel);
}

// ---------------------------------------------------------------------------
// If, Else, Endif

bool Compiler::ifStatement(const std::string& rest, const std::string& line) {
    const std::size_t then = (" " + rest + " ").find(" Then ");
    if (then == std::string::npos) return fail("Then is missing.");
    const std::string test = TrimText(rest.substr(0, then));
    pushStructure("If");
    st_.ifStack.push_back({newLabel(), "", false});
    if (!compileTest(test, st_.ifStack.back().falseLabel)) return false;
    // The statements behind Then on the same line, if any.
    const std::size_t at = (" " + line + " ").find(" Then ");
    const std::string tail =
        at == std::string::npos ? "" : TrimText(line.substr(std::min(at + 5, line.size())));
    if (tail.empty()) return true;
    const std::size_t elseAt = (" " + tail + " ").find(" Else ");
    const std::string first =
        TrimText(tail.substr(0, elseAt == std::string::npos ? tail.size() : elseAt));
    if (!oneLineStatement(first)) return false;
    if (elseAt != std::string::npos) {
        if (!elseStatement()) return false;
        if (!oneLineStatement(TrimText(tail.substr(std::min(elseAt + 5, tail.size())))))
            return false;
    }
    return endifStatement();
}

bool Compiler::oneLineStatement(const std::string& text) {
    Tokens t;
    if (!statementTokens(text, t)) return fail("Line too long.");
    static const char* const kNotHere[] = {
        "For",  "Next",      "While",   "Wend",   "If",     "Else",   "Endif",   "Select",
        "Case", "EndSelect", "CNext",   "Sub",    "Return", "End",    "Proc",    "Function",
        "Dim",  "Const",     "#define", "Define", "#sim",   "#simio", "Include", "IncludeASM"};
    for (const char* word : kNotHere) {
        if (t[1] == word || t[1].compare(0, 4, "CFor") == 0 || t[1].compare(0, 4, "ASM:") == 0) {
            return fail("Invalid statement in If-Then line.");
        }
    }
    const auto assignment = [](const std::string& s) {
        return s == "=" || s == "+=" || s == "-=" || s == "*=" || s == "/=";
    };
    bool allowed =
        (assignment(t[2]) && !t[3].empty()) || t[1] == "SetStrPtr" ||
        (t[1] == "Exit" && (t[2] == "For" || t[2] == "CFor" || t[2] == "Sub") && t[3].empty()) ||
        ((t[1] == "Goto" || t[1] == "Gosub") && !t[2].empty() && t[3].empty()) ||
        (t[1] == "Exit" && t[2].empty()) || (t[1] == "ReturnValue" && !t[2].empty()) ||
        (t[1] == "Call" && !t[2].empty()) || t[1] == "Print" || findProcedure(t[1]) >= 0;
    for (int k = 1; !allowed && k <= kMaxTokens && !t[k].empty(); ++k) {
        if (assignment(t[k])) allowed = true;
    }
    if (allowed) return dispatch(text);
    std::string result;
    if (compileExpression(text, result, "", 0, false)) return true;
    return fail("Invalid statement in If-Then line.");
}

bool Compiler::elseStatement() {
    if (!popStructure("If")) return false;
    pushStructure("If");
    IfRow& row = st_.ifStack.back();
    if (row.elseSeen) return fail("Duplicate Else.");
    row.endLabel = newLabel();
    emitCode("JP " + row.endLabel);
    emitLabel(row.falseLabel);
    row.elseSeen = true;
    return true;
}

bool Compiler::endifStatement() {
    if (!popStructure("If")) return false;
    const IfRow row = st_.ifStack.back();
    st_.ifStack.pop_back();
    emitLabel(row.elseSeen ? row.endLabel : row.falseLabel);
    return true;
}

// ---------------------------------------------------------------------------
// Select Case

bool Compiler::selectStatement(const std::string& selector) {
    pushStructure("Select Case");
    st_.selectStack.push_back({selector, 0});
    return true;
}

bool Compiler::caseStatement(const std::string& list) {
    if (!popStructure("Select Case")) return false;
    pushStructure("Select Case");
    SelectRow& row = st_.selectStack.back();
    if (row.branches > 0) {
        pushStructure("If");
        if (!elseStatement()) return false;
        st_.structureStack.pop_back();
    }
    const std::vector<std::string> elements = splitAt(list, ", ");
    std::string test;
    const std::string& x = row.selector;
    for (const std::string& element : elements) {
        std::string part;
        const std::size_t to = element.find(" To ");
        Tokens t;
        statementTokens(element, t);
        if (to != std::string::npos) {
            const std::string a = TrimText(element.substr(0, to)),
                              b = TrimText(element.substr(to + 4));
            const std::optional<double> va = readSingle(a), vb = readSingle(b);
            part = va && vb && *va > *vb ? x + " <= " + a + " && " + x + " >= " + b
                                         : x + " >= " + a + " && " + x + " <= " + b;
            if (elements.size() > 1) part = "(" + part + ")";
        } else if (t[1] == "=" || t[1] == "<>" || isComparisonOperator(t[1])) {
            part = x + " " + element;
        } else {
            part = x + " == " + element;
        }
        test += (test.empty() ? "" : " || ") + part;
    }
    ++row.branches;
    const std::string rest = test + " Then";
    if (!ifStatement(rest, "")) return false;
    st_.structureStack.pop_back();  // the branch's If stays open until EndSelect
    return true;
}

bool Compiler::caseElseStatement() {
    if (!popStructure("Select Case")) return false;
    pushStructure("Select Case");
    if (st_.selectStack.back().branches == 0) return true;
    pushStructure("If");
    if (!elseStatement()) return false;
    st_.structureStack.pop_back();
    return true;
}

bool Compiler::endSelectStatement() {
    if (!popStructure("Select Case")) return false;
    const int branches = st_.selectStack.back().branches;
    st_.selectStack.pop_back();
    for (int k = 0; k < branches; ++k) {
        pushStructure("If");
        if (!endifStatement()) return false;
    }
    return true;
}

// ---------------------------------------------------------------------------
// While, For, CFor

bool Compiler::whileStatement(const std::string& test) {
    pushStructure("While");
    st_.whileStack.push_back({newLabel(), newLabel()});
    emitLabel(st_.whileStack.back().start);
    return compileTest(test, st_.whileStack.back().end);
}

bool Compiler::wendStatement(const std::string& kind) {
    if (!popStructure(kind)) return false;
    const WhileRow row = st_.whileStack.back();
    st_.whileStack.pop_back();
    emitCode("JP " + row.start);
    emitLabel(row.end);
    return true;
}

bool Compiler::forStatement(const std::string& rest) {
    const std::size_t to = rest.find(" To ");
    if (to == std::string::npos) {
        if (rest.size() >= 3 && rest.compare(rest.size() - 3, 3, " To") == 0) {
            return fail("To expression is missing.");
        }
        return fail("To is missing.");
    }
    std::string limit = TrimText(rest.substr(to + 4));
    if (limit.empty()) return fail("To expression is missing.");
    std::string step = "1";
    const std::size_t stepAt = (limit + " ").find(" Step ");
    if (stepAt != std::string::npos || limit.compare(0, 5, "Step ") == 0 || limit == "Step") {
        step = stepAt == std::string::npos
                   ? ""
                   : TrimText(limit.substr(std::min(stepAt + 6, limit.size())));
        limit = stepAt == std::string::npos ? "" : TrimText(limit.substr(0, stepAt));
        if (step.empty()) return fail("Step expression is missing.");
        if (limit.empty()) return fail("To expression is missing.");
    }
    const std::string init = TrimText(rest.substr(0, to));
    const std::size_t eq = init.find(" = ");
    if (eq == std::string::npos) {
        return fail("Bad For expression: Assignment operator is missing.\r\n" + init);
    }
    const std::string variable = TrimText(init.substr(0, eq));
    const Resolved v = resolve(variable, true, false);
    if (!v.found || !isNumericType(v.type) || v.address >= kDescriptorBase) {
        return fail("Bad For loop variable.\r\n" + variable);
    }
    pushStructure("For");
    const std::string start = TrimText(init.substr(eq + 3));
    const std::optional<double> low = readSingle(start), high = readSingle(limit);
    st_.forBoundsKnown = low && high;
    if (st_.forBoundsKnown) {
        st_.forVariable = variable;
        st_.forLow = static_cast<long long>(std::min(*low, *high));
        st_.forHigh = static_cast<long long>(std::max(*low, *high));
    }
    std::string result;
    if (!compileExpression(init, result, "", 1, true)) return false;
    debugComment("for_init_expression: " + init);
    const bool down = !step.empty() && step[0] == '-';
    const std::string startLabel = newLabel(), endLabel = newLabel();
    emitLabel(startLabel);
    std::string l, r;
    if (!compileExpression(limit, l, "", 0, true)) return false;
    if (!emitComparison(l, down ? "<=" : ">=", variable, endLabel)) return false;
    debugComment("for_cond_expression: " + limit + (down ? " <= " : " >= ") + variable);
    st_.forStack.push_back({endLabel, variable, step, startLabel});
    return true;
}

bool Compiler::nextStatement(const std::string& variable) {
    if (!popStructure("For")) return false;
    const ForRow row = st_.forStack.back();
    if (variable != row.variable) {
        return fail("Incorrect For loop variable: '" + variable + "'.\r\n'" + row.variable +
                    "' expected.");
    }
    std::string step = row.step;
    const bool down = !step.empty() && step[0] == '-';
    if (down) step = TrimText(step.substr(1));
    std::string value = step;
    if (!isNumberText(step) && !compileExpression(step, value, "", 0, true)) return false;
    if (!emitArithmetic(row.variable, row.variable, down ? "-" : "+", value)) return false;
    const Resolved v = resolve(row.variable, true, false);
    switch (v.type) {
        case kTypeShort:
        case kTypeInteger: emitCode("JP PE," + row.exit); break;
        case kTypeLong:
            if (!down) emitCode("JP PE," + row.exit);
            break;
        case kTypeUShort:
        case kTypeUInteger:
        case kTypeULong: emitCode("JR C," + row.exit); break;
        default: break;
    }
    emitCode("JP " + row.start);
    emitLabel(row.exit);
    st_.forStack.pop_back();
    st_.forBoundsKnown = false;
    return true;
}

bool Compiler::exitLoop(bool cfor) {
    if (cfor) {
        if (st_.cforStack.empty()) return fail("CFor structure is missing.");
        emitCode("JP " + st_.cforStack.back().exit);
    } else {
        if (st_.forStack.empty()) return fail("For structure is missing.");
        emitCode("JP " + st_.forStack.back().exit);
    }
    return true;
}

bool Compiler::cforStatement(const std::string& text) {
    std::string body = TrimText(text);
    if (body.compare(0, 4, "CFor") == 0) body = TrimText(body.substr(4));
    if (body.empty() || body.front() != '(' || body.back() != ')') {
        return fail("Bad CFor statement format.");
    }
    const std::vector<std::string> parts = splitAt(body.substr(1, body.size() - 2), "; ");
    if (parts.empty() || parts[0].empty()) return fail("Init expression is missing.");
    if (parts.size() < 2 || parts[1].empty()) return fail("Condition expression is missing.");
    if (parts.size() < 3 || parts[2].empty()) return fail("Loop expression is missing.");
    const std::vector<std::string> inits = splitAt(parts[0], ", ");
    const std::size_t eq = inits[0].find(" = ");
    if (eq == std::string::npos) {
        return fail("Bad CFor init expression: Assignment operator is missing.\r\n" + inits[0]);
    }
    const std::string variable = TrimText(inits[0].substr(0, eq));
    const Resolved v = resolve(variable, true, false);
    if (!v.found || !isNumericType(v.type)) return fail("Bad CFor loop variable.\r\n" + variable);
    pushStructure("CFor");
    for (const std::string& init : inits) {
        std::string result;
        if (!compileExpression(init, result, "", 1, true)) return false;
    }
    debugComment("cfor_init_expression: " + parts[0]);
    st_.whileStack.push_back({newLabel(), newLabel()});
    emitLabel(st_.whileStack.back().start);
    if (!generalTest(parts[1], st_.whileStack.back().end)) return false;
    debugComment("cfor_cond_expression: " + parts[1]);
    st_.cforStack.push_back({variable, parts[2], st_.whileStack.back().end});
    return true;
}

bool Compiler::cnextStatement() {
    if (!popStructure("CFor")) return false;
    const CForRow row = st_.cforStack.back();
    for (const std::string& element : splitAt(row.loop, ", ")) {
        std::string result;
        const bool assignment =
            element.find(" = ") != std::string::npos || element.find(" += ") != std::string::npos ||
            element.find(" -= ") != std::string::npos ||
            element.find(" *= ") != std::string::npos || element.find(" /= ") != std::string::npos;
        if (assignment) {
            if (!compileExpression(element, result, "", 1, true)) return false;
        } else if (!compileExpression(element, result, "", 1, false) &&
                   !compileExpression(element, result, "", 0, false)) {
            return fail("Bad CFor loop expression: Could not evaluate it.\r\n" + element);
        }
    }
    debugComment("cfor_loop_expression: " + row.loop);
    st_.cforStack.pop_back();
    pushStructure("While");
    return wendStatement("While");
}

// ---------------------------------------------------------------------------
// Calls

bool Compiler::callStatement(const std::string& text) {
    const std::size_t open = text.find('(');
    if (open == std::string::npos || text.back() != ')') {
        return fail("Incorrect procedure or function call.\r\nParentheses '()' missing.");
    }
    const std::string name = TrimText(text.substr(0, open));
    int index = -1;
    bool function = false;
    for (std::size_t i = 0; i < st_.procs.size(); ++i) {
        if (st_.procs[i].name == name) index = static_cast<int>(i);
    }
    if (index < 0) {
        index = findFunction(name);
        function = index >= 0;
    }
    if (index < 0) return fail("Incorrect procedure or function name.");
    const RoutineRow& routine = function ? st_.functions[index] : st_.procs[index];
    const std::string scope = routine.name.substr(0, routine.name.find('['));
    std::string list = text.substr(open + 1, text.size() - open - 2);
    std::vector<std::string> values;
    while (!TrimText(list).empty()) values.push_back(nextArgument(list));
    if (values.size() > routine.arguments.size()) {
        return fail("Too many arguments (" + std::to_string(routine.arguments.size()) + " max).");
    }
    for (std::size_t k = 0; k < values.size(); ++k) {
        const RoutineArgument& a = routine.arguments[k];
        if (a.mode == 2) continue;
        std::string result;
        const std::string plain = a.name.substr(0, a.name.find('['));
        if (a.type == kTypeStrPtr) {
            // A string by reference: the routine gets its address.
            const std::string saved = st_.currentScope;
            const Operand value = operand(values[k]);
            st_.currentScope = scope;
            const Operand pointer = operand(plain);
            st_.currentScope = saved;
            if (!value.variable || value.type != kTypeString) {
                return fail("String data type variable/argument expected here: '" + values[k] +
                            "'.");
            }
            emitCode("LD HL," + codeHex4(absoluteAddress(value.address)));
            emitCode("LD (" + codeHex4(absoluteAddress(pointer.address)) + "),HL");
            continue;
        }
        if (a.type == kTypeString) {
            const std::string source = stringVariable(values[k]);
            if (source.empty() || !emitStringAssign(plain, source, scope, "")) return false;
            continue;
        }
        if (!compileExpression(plain + " = " + values[k], result, scope, 1, true)) return false;
    }
    emitCode("CALL " + routine.label);
    for (std::size_t k = 0; k < values.size(); ++k) {
        const RoutineArgument& a = routine.arguments[k];
        if (a.mode == 0 || a.type == kTypeStrPtr) continue;
        const std::string plain = a.name.substr(0, a.name.find('['));
        if (!emitAssign(values[k], plain, "", scope)) return false;
    }
    if (st_.firstRun) {
        std::vector<bool>& used = function ? st_.learned.functionUsed : st_.learned.procUsed;
        if (used.size() <= static_cast<std::size_t>(index)) used.resize(index + 1);
        used[index] = true;
    }
    return true;
}

bool Compiler::functionCall(Expression& e, const std::string& name) {
    const int index = findFunction(name);
    const RoutineRow& f = st_.functions[index];
    const std::size_t count = f.arguments.size();
    if (e.stack.size() < count) return fail("Bad expression: Argument(s) missing somewhere...");
    std::string call = name + "(";
    for (std::size_t k = e.stack.size() - count; k < e.stack.size(); ++k) {
        call += (k + count == e.stack.size() ? "" : ", ") + e.stack[k];
    }
    call += ")";
    const std::vector<std::string> args(e.stack.end() - static_cast<long>(count), e.stack.end());
    e.stack.resize(e.stack.size() - count);
    if (!callStatement(call)) return false;
    for (const std::string& a : args) freeTemp(a);
    const std::string scope = f.name.substr(0, f.name.find('['));
    if (f.resultType == kTypeString) {
        const int row = findVariable(scope, scope);
        const int length = row > 0 ? st_.symbols[row].size - 1 : st_.stringMaxLength;
        const std::string dest = destination(e, kTypeString, length);
        if (dest.empty() || !emitStringAssign(dest, scope, "", scope)) return false;
        e.stack.push_back(dest);
        return true;
    }
    const std::string dest = destination(e, f.resultType);
    if (dest.empty() || !emitAssign(dest, scope, "", scope)) return false;
    e.stack.push_back(dest);
    return true;
}

bool Compiler::returnValueStatement(const std::string& value) {
    if (!st_.inFunction) return fail("ReturnValue without Function declaration.");
    std::string result;
    return compileExpression(st_.currentScope + " = " + value, result, "", 1, true);
}

}  // namespace mb
