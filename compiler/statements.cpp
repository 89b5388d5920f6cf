// The statement pass: the frame of the program, the dispatcher, the structure
// stack, the directives, inline assembler lines and variable initialisation.
#include <algorithm>
#include <cctype>

#include "compiler/basic_numbers.h"
#include "compiler/compiler.h"
#include "compiler/output_text.h"
#include "core/numtext.h"
#include "runtime/runtime_library.h"

namespace mb {

bool Compiler::codeGeneration() {
    if (st_.learned.needs.Has(kNeedPrint)) {
        if (!reserveSystem("PRINT_STR", 12) || !reserveSystem("PRINT_IND", 1)) return false;
    }
    for (const char* name : {"REG_R3", "REG_R2", "REG_R1", "REG_R0"}) {
        if (!reserveSystem(name, 1)) return false;
    }
    if (const int size = appendBlockSize(); size > 0) {
        const int offset = reserveSystem("", size);
        if (offset == 0) return false;
        st_.appendBase = absoluteAddress(offset);
    }
    const int base = st_.ixBase();
    emitCode(".ORG 0000H");
    emitCode("LD IX," + codeHex4(base));
    emitCode("LD SP," + codeHex4(base - st_.totalRam));
    st_.stackPointerLine = static_cast<int>(st_.outputLines.size()) - 1;
    emitComment("; User code start");
    if (!st_.firstRun) labelInlineAssembler();
    pushStructure("Main Routine");
    st_.currentScope = "global";
    for (int i = 1; i <= st_.lineCount(); ++i) {
        if (!compileLine(i)) return false;
    }
    st_.currentLine = st_.lineCount() + 1;
    if (!checkStructure(true, false)) return false;
    emitComment("; End of user code");
    emitCode("HALT");
    if (!compileAppendRoutines()) return false;
    RuntimeNeeds needs = st_.learned.needs;
    AddRuntimeDependencies(needs);
    for (const std::string& line : RuntimeLines(needs, st_.singleDigits)) {
        st_.outputLines.push_back(line);
    }
    emitComment(";crypt_start");
    emitComment(";crypt_stop");
    emitComment("; End of listing");
    emitCode(".END");
    st_.outputLines[st_.stackPointerLine] = "\tLD SP," + codeHex4(base - st_.totalRam);
    return true;
}

bool Compiler::compileLine(int i) {
    st_.currentLine = i;
    BasicLine& line = st_.lines[i];
    if (st_.currentScope == "global" && st_.mainEnded && !line.xlinelabel2.empty()) {
        if (!checkStructure(false, true)) return false;
        pushStructure("Subroutine");
        st_.currentScope = line.xlinelabel2;
        st_.inSubroutine = true;
    }
    line.xlinelabelscope = st_.currentScope;
    emitComment("; " + std::to_string(i) + ": " + line.xlinijafull);
    if (!line.xlinelabel1.empty()) emitLabel(line.xlinelabel1);
    std::string text = line.xlinija;
    statementLine_ = text;
    const std::size_t then = text.find(" Then");
    if (then != std::string::npos && text.compare(0, 4, "ASM:") != 0) {
        // The tail of a one-line If is compiled by the If statement itself.
        const std::size_t end = then + 5;
        if (end == text.size() || text[end] == ' ') text.resize(end);
    }
    if (!replaceVarAddr(text) || !dispatch(text)) return false;
    return endOfStatement();
}

// VarAddr(x) is the address of x, written into the text before the statement
// is read: "VarAddr(total)" becomes "FEF8H".
bool Compiler::replaceVarAddr(std::string& text) {
    static const std::string kWord = "VarAddr(";
    for (std::size_t at = text.rfind(kWord); at != std::string::npos; at = text.rfind(kWord)) {
        int depth = 0, deepest = 0;
        std::size_t end = std::string::npos;
        for (std::size_t k = at + kWord.size() - 1; k < text.size(); ++k) {
            if (text[k] == '(') deepest = std::max(deepest, ++depth);
            if (text[k] == ')' && --depth == 0) {
                end = k;
                break;
            }
        }
        if (end == std::string::npos || deepest > 2) {
            return fail("Syntax error in 'VarAddr'. Improper use of parentheses.");
        }
        const std::string whole = text.substr(at, end + 1 - at);
        const std::string name =
            TrimText(whole.substr(kWord.size(), whole.size() - kWord.size() - 1));
        const Resolved r = resolve(name, true, true);
        if (!r.found || r.address >= kDescriptorBase) {
            return fail("Error in 'VarAddr'. Incorrect variable name: '" + name + "'.");
        }
        const std::string address = pb_hex4(absoluteAddress(r.address)) + "H";
        for (std::size_t k = text.find(whole); k != std::string::npos; k = text.find(whole, k)) {
            text.replace(k, whole.size(), address);
        }
    }
    return true;
}

bool Compiler::dispatch(const std::string& text) {
    Tokens t;
    if (!statementTokens(text, t)) return fail("Line too long.");
    const auto assignment = [](const std::string& s) {
        return s == "=" || s == "+=" || s == "-=" || s == "*=" || s == "/=";
    };
    std::string list, typeName;
    if (t[1] == "Dim" && dimParts(text, list, typeName)) return dimInitialisation(text);
    if ((t[1] == "Include" || t[1] == "IncludeASM") && !t[2].empty()) return true;
    if (t[1] == "Const" && t[3] == "=" && !t[4].empty() && t[5].empty()) return true;
    if (t[1] == "#sim" || t[1] == "#simio") return simDirective(t);
    if ((t[1] == "#define" || t[1] == "Define") && t[3] == "=" && !t[4].empty() && t[5].empty()) {
        return directive(t);
    }
    if (t[1].compare(0, 4, "ASM:") == 0) return inlineAssembler(text.substr(4));
    // A CFor header holds "=" as its second token; it is no assignment.
    if (t[1].compare(0, 5, "CFor(") == 0 || (t[1] == "CFor" && t[2].compare(0, 1, "(") == 0)) {
        return cforStatement(text);
    }
    if (t[1] == "SetStrPtr" && t[3] == "=" && !t[4].empty()) {
        return setStrPtrStatement(t[2], restOfTokens(t, 4));
    }
    if (assignment(t[2]) && !t[3].empty()) return assignmentStatement(text);
    if (t[1] == "While") return whileStatement(restOfTokens(t, 2));
    if (t[1] == "Wend" && t[2].empty()) return wendStatement("While");
    if (t[1] == "If") return ifStatement(restOfTokens(t, 2), statementLine_);
    if (t[1] == "Else" && t[2].empty()) return elseStatement();
    if (t[1] == "Endif" && t[2].empty()) return endifStatement();
    if (t[1] == "Select" && t[2] == "Case" && !t[3].empty() && t[4].empty()) {
        return selectStatement(t[3]);
    }
    if (t[1] == "Case" && t[2] == "Else" && t[3].empty()) return caseElseStatement();
    if (t[1] == "Case" && !t[2].empty()) return caseStatement(restOfTokens(t, 2));
    if (t[1] == "EndSelect" && t[2].empty()) return endSelectStatement();
    if (t[1] == "For") return forStatement(restOfTokens(t, 2));
    if (t[1] == "Next" && !t[2].empty() && t[3].empty()) return nextStatement(t[2]);
    if (t[1] == "Exit" && t[2] == "For" && t[3].empty()) return exitLoop(false);
    if (t[1] == "CNext" && t[2].empty()) return cnextStatement();
    if (t[1] == "Exit" && t[2] == "CFor" && t[3].empty()) return exitLoop(true);
    if ((t[1] == "Goto" || t[1] == "Gosub") && !t[2].empty() && t[3].empty()) {
        return t[1] == "Goto" ? gotoStatement(t[2]) : gosubStatement(t[2]);
    }
    if (t[1] == "Sub" && !t[2].empty() && t[3].empty()) return openRoutine("Subroutine", t[2]);
    if (t[1] == "Exit" && t[2] == "Sub" && t[3].empty()) {
        if (!st_.inSubroutine) return fail("Exit Sub without subroutine declaration.");
        emitCode("RET");
        return true;
    }
    if ((t[1] == "End" && t[2] == "Sub" && t[3].empty()) || (t[1] == "Return" && t[2].empty())) {
        return closeRoutine("Subroutine");
    }
    if (t[1] == "End" && t[2].empty()) return endStatement();
    if ((t[1] == "Proc" || t[1] == "Function") && !t[2].empty()) {
        const std::string text = restOfTokens(t, 2);
        const std::string name = TrimText(text.substr(0, text.find('(')));
        return openRoutine(t[1], name.substr(0, name.find('[')));
    }
    if (t[1] == "Exit" && t[2].empty()) {
        if (!st_.inProc && !st_.inFunction) {
            return fail("Exit without Proc or Function declaration.");
        }
        emitCode("RET");
        return true;
    }
    if (t[1] == "End" && (t[2] == "Proc" || t[2] == "Function") && t[3].empty()) {
        return closeRoutine(t[2]);
    }
    if (t[1] == "ReturnValue" && !t[2].empty()) return returnValueStatement(restOfTokens(t, 2));
    if (t[1] == "Call" && !t[2].empty()) return callStatement(restOfTokens(t, 2));
    if (t[1] == "Print" && t[2].size() > 1 && t[2].back() == ',' && !t[3].empty()) {
        return printStatement(t[2].substr(0, t[2].size() - 1), restOfTokens(t, 3));
    }
    if (findProcedure(t[1]) >= 0 && t[1].find('(') == std::string::npos) {
        return callStatement(t[1] + "(" + restOfTokens(t, 2) + ")");
    }
    for (int k = 1; k <= kMaxTokens && !t[k].empty(); ++k) {
        if (assignment(t[k])) return assignmentStatement(text);
    }
    if (t[1].empty()) return true;
    if (t[2].empty() &&
        (t[1].find("++") != std::string::npos || t[1].find("--") != std::string::npos)) {
        return assignmentStatement(text);
    }
    for (const char* word : {"Poke", "Put", "SetBit", "ResetBit", "InvertBit", "MakeBit"}) {
        // Statement builtins: their own messages are worth more than "Syntax error.".
        if (t[1] == word) {
            std::string result;
            return compileExpression(text, result, "", 0, true);
        }
    }
    return standaloneExpression(text);
}

bool Compiler::openRoutine(const std::string& kind, const std::string& name) {
    if (!checkStructure(false, true)) return false;
    pushStructure(kind);
    std::string label;
    if (kind == "Subroutine") {
        for (const SubRow& row : st_.subs) {
            if (row.name == name) label = row.label;
        }
        st_.inSubroutine = true;
    } else {
        for (const RoutineRow& row : kind == "Proc" ? st_.procs : st_.functions) {
            if (row.name.substr(0, row.name.find('[')) == name) label = row.label;
        }
        (kind == "Proc" ? st_.inProc : st_.inFunction) = true;
    }
    if (!label.empty()) emitLabel(label);
    st_.currentScope = name;
    return true;
}

bool Compiler::closeRoutine(const std::string& kind) {
    if (!popStructure(kind)) return false;
    emitCode("RET");
    if (kind == "Subroutine") st_.inSubroutine = false;
    if (kind == "Proc") st_.inProc = false;
    if (kind == "Function") st_.inFunction = false;
    st_.currentScope = "global";
    return true;
}

bool Compiler::gotoStatement(const std::string& name) {
    int any = 0, global = 0;
    for (int i = 1; i <= st_.lineCount(); ++i) {
        const BasicLine& l = st_.lines[i];
        if (l.xlinelabel2 != name) continue;
        if (l.xlinelabelscope == st_.currentScope) {
            emitCode("JP " + l.xlinelabel1);
            return true;
        }
        if (l.xlinelabelscope == "global" && global == 0) global = i;
        if (any == 0) any = i;
    }
    if (global == 0 && any > 0) warnLine("Goto branch to a label with an incorrect scope: " + name);
    const int target = global > 0 ? global : any;
    if (target == 0) return fail("Incorrect line label name.");
    emitCode("JP " + st_.lines[target].xlinelabel1);
    return true;
}

bool Compiler::gosubStatement(const std::string& name) {
    for (std::size_t row = 0; row < st_.subs.size(); ++row) {
        if (st_.subs[row].name != name) continue;
        emitCode("CALL " + st_.subs[row].label);
        if (st_.firstRun) {
            if (st_.learned.subUsed.size() <= row) st_.learned.subUsed.resize(row + 1);
            st_.learned.subUsed[row] = true;
        }
        return true;
    }
    for (int i = 1; i <= st_.lineCount(); ++i) {
        if (st_.lines[i].xlinelabel2 == name) {
            warnLine("Gosub call to a label with an incorrect scope: " + name);
            emitCode("CALL " + st_.lines[i].xlinelabel1);
            return true;
        }
    }
    return fail("Incorrect subroutine name.");
}

// Print port, item, item...: string constants go out character by character,
// String variables through the print routine, numbers as decimal text.
bool Compiler::printStatement(const std::string& portText, std::string items) {
    int port = 0;
    if (!portNumber(portText, false, port)) return false;
    const std::string portCode = codeHex2(port);
    while (!items.empty()) {
        const std::string item = nextArgument(items);
        if (item.empty()) return fail("Syntax error.");
        // The line-end and quote names stand for their characters also on a line
        // without double quotes, which the string pass leaves as it is.
        static const std::pair<const char*, const char*> kNamed[] = {
            {"CrLf", "\r\n"}, {"Cr", "\r"}, {"Lf", "\n"}, {"Qt", "\""}};
        const char* named = nullptr;
        for (const auto& [name, text] : kNamed) {
            if (item == name && findVariable(item) == 0) named = text;
        }
        const int placeholder = named ? 1 : stringConstantAt(item);
        if (placeholder > 0) {
            std::string value;
            if (named) {
                value = named;
            } else if (placeholder < 1000000) {
                value = st_.stringConstants[placeholder];
            } else {
                const int c = findConstant(item);
                value = c > 0 ? st_.constants[c].value : item.substr(1, item.size() - 2);
            }
            for (unsigned char ch : value) {
                emitCode("LD A," + codeHex2(ch));
                emitCode("OUT (" + portCode + "),A");
            }
            continue;
        }
        std::string value;
        if (!compileExpression(item, value, "", 0, true)) return false;
        if (!value.empty() && value[0] == '#') value = value.substr(1);
        const Operand o = operand(value);
        if (o.variable && o.type == kTypeString) {
            emitCode("LD C," + portCode);
            emitCode("LD HL," + codeHex4(absoluteAddress(o.address)));
            emitCode("CALL P002");
            needRuntime(kNeedPrint);
            continue;
        }
        if (!printNumber(o)) return false;
        emitCode("LD C," + portCode);
        emitCode("CALL P001");
    }
    return true;
}

// The decimal text of a number into PRINT_STR, by the print routine of its type.
bool Compiler::printNumber(const Operand& value) {
    Operand o = value;
    if (!o.variable && !o.constant) return fail("Variable not declared: '" + o.text + "'.");
    if (o.constant) {
        const TypeCode type = o.type == kTypeBit ? kTypeBit : commonType({o});
        if (type == kTypeNone)
            return fail("Bad expression: Incorrect argument(s) in the expression.");
        const std::string temp = newTemp(type);
        if (temp.empty() || !emitAssign(temp, o.text, "", "")) return false;
        o = operand(temp);
    }
    needRuntime(kNeedPrint);
    struct Printer {
        TypeCode type;
        const char* reg;
        const char* call;
        int flag;
    };
    static const Printer kPrinters[] = {
        {kTypeBit, "E", "CALL P301", kNeedBitPrint},
        {kTypeShort, "E", "CALL P201", kNeedShortPrint},
        {kTypeUShort, "E", "CALL P211", kNeedShortPrint},
        {kTypeInteger, "DE", "CALL P101", kNeedIntegerPrint},
        {kTypeUInteger, "DE", "CALL P111", kNeedIntegerPrint},
        {kTypeLong, "BC:DE", "CALL P401", kNeedLongPrint},
        {kTypeULong, "BC:DE", "CALL P411", kNeedLongPrint},
        {kTypeSingle, "BC:DE", "CALL P501", kNeedSinglePrint},
    };
    for (const Printer& p : kPrinters) {
        if (p.type != o.type) continue;
        if (!load(o.type, p.reg, o.type, o.text, o.address)) return false;
        emitCode(p.call);
        needRuntime(p.flag);
        if (p.type == kTypeInteger || p.type == kTypeUInteger) needRuntime(kNeedIntegerDivide);
        if (p.type == kTypeShort || p.type == kTypeUShort) needRuntime(kNeedShortDivide);
        if (p.type == kTypeLong || p.type == kTypeULong) needRuntime(kNeedLongDivide);
        if (p.type == kTypeSingle) {
            for (int flag : {kNeedLongPrint, kNeedLongDivide, kNeedSingleSubtract,
                             kNeedSingleMultiply, kNeedSingleToLong, kNeedLongToSingle}) {
                needRuntime(flag);
            }
        }
        return true;
    }
    return fail("Bad expression: Incorrect argument(s) in the expression.");
}

bool Compiler::assignmentStatement(const std::string& text) {
    std::string result;
    return compileExpression(text, result, "", 1, true);
}

// A line that is no statement may still be an expression: it compiles when its
// value is True or a variable (with a warning for the variable), else it is a
// syntax error.
bool Compiler::standaloneExpression(const std::string& text) {
    std::string result;
    if (!compileExpression(text, result, "", 0, false)) return fail("Syntax error.");
    if (result == "True") return true;
    if (const int row = findVariable(result);
        row > 0 && st_.symbols[row].name.rfind("corvalent_temp", 0) != 0) {
        warnLine("Standalone expression without an assignment operator.");
        return true;
    }
    return fail("Syntax error.");
}

int Compiler::findProcedure(const std::string& name) const {
    for (std::size_t i = 0; i < st_.procs.size(); ++i) {
        if (st_.procs[i].name == name) return static_cast<int>(i);
    }
    for (std::size_t i = 0; i < st_.functions.size(); ++i) {
        if (st_.functions[i].name.substr(0, st_.functions[i].name.find('[')) == name) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

// ---------------------------------------------------------------------------
// Structure stack

namespace {

struct StructureWords {
    const char* kind;
    const char* missingOpen;  // the line of a closing word without its opening
    const char* ending;
};
constexpr StructureWords kStructures[] = {
    {"Main Routine", "Duplicate End statement.", " (End is missing)"},
    {"While", "Wend without While.", " (Wend is missing)"},
    {"CFor", "CNext without CFor.", " (CNext is missing)"},
    {"For", "Next without For.", " (Next is missing)"},
    {"If", "If is missing.", " (Endif is missing)"},
    {"Select Case", "Select Case is missing.", " (EndSelect is missing)"},
    {"Proc", "Proc declaration is missing.", " (End Proc is missing)"},
    {"Function", "Function declaration is missing.", " (End Function is missing)"},
    {"On Interrupt", "On Interrupt declaration is missing.", " (Resume is missing)"},
    {"Subroutine", "Subroutine declaration is missing.", " (End Sub/Return is missing)"},
};

const StructureWords* wordsOf(const std::string& kind) {
    for (const StructureWords& w : kStructures) {
        if (kind == w.kind) return &w;
    }
    return nullptr;
}

std::string openText(const std::string& kind, bool upToThisLine) {
    const StructureWords* w = wordsOf(kind);
    std::string ending = w ? w->ending : "";
    if (upToThisLine && !ending.empty()) ending.insert(ending.size() - 1, " up to this line");
    return kind + " structure is not completed..." + ending;
}

}  // namespace

void Compiler::pushStructure(const std::string& kind) {
    st_.structureStack.push_back(kind);
}

bool Compiler::popStructure(const std::string& kind) {
    std::vector<std::string>& stack = st_.structureStack;
    if (!stack.empty() && stack.back() == kind) {
        stack.pop_back();
        return true;
    }
    std::string message;
    if (std::find(stack.begin(), stack.end(), kind) == stack.end()) {
        const StructureWords* w = wordsOf(kind);
        message = w ? w->missingOpen : "";
    }
    if (stack.size() > 1) {
        if (!message.empty()) message += "\r\n";
        message += openText(stack.back(), true);
    }
    return fail(message + "\r\nIncorrect program structure.");
}

bool Compiler::checkStructure(bool atEnd, bool forNewRoutine) {
    const std::vector<std::string>& stack = st_.structureStack;
    // At the end only the main routine may be open: closed by End, or not.
    const bool good = atEnd ? stack.empty() || (stack.size() == 1 && stack[0] == "Main Routine")
                      : forNewRoutine ? stack.empty()
                                      : true;
    if (good) return true;
    std::string message;
    for (auto it = stack.rbegin(); it != stack.rend(); ++it) {
        message += openText(*it, !atEnd) + "\r\n";
    }
    return fail(message + "Incorrect program structure.");
}

bool Compiler::endStatement() {
    if (!popStructure("Main Routine")) return false;
    st_.mainEnded = true;
    emitCode("HALT");
    return true;
}

// ---------------------------------------------------------------------------
// Directives

bool Compiler::directive(const Tokens& t) {
    const std::string& name = t[2];
    struct Parameter {
        const char* name;
        long long low, high;
        const char* message;
        int* value;
    };
    const Parameter parameters[] = {
        {"ROMEND", 1023, 64511,
         "Invalid value of parameter [03FFh-FBFFh/1023-64511 allowed range].", &st_.romEnd},
        {"RAMSTART", 1024, 64512,
         "Invalid value of parameter [0400h-FC00h/1024-64512 allowed range].", &st_.ramStart},
        {"RAMEND", 2047, 65535,
         "Invalid value of parameter [07FFh-FFFFh/2047-65535 allowed range].", &st_.ramEnd},
        {"STRING_MAX_LENGTH", 8, 100, "Invalid value of parameter [8-100 allowed range].",
         &st_.stringMaxLength},
        {"SINGLE_DECIMAL_PLACES", 1, 6, "Invalid value of parameter [1-6 allowed range].",
         &st_.singleDigits},
        {"PRINT_SINGLE_DIGITS", 1, 6, "Invalid value of parameter [1-6 allowed range].",
         &st_.singleDigits},
    };
    const Parameter* p = nullptr;
    for (const Parameter& candidate : parameters) {
        if (name == candidate.name) p = &candidate;
    }
    if (!p) return fail("Unrecognized parameter.");
    long long value = 0;
    const int variable = lookupVariable(t[4]);
    if (variable > 0) {
        value = absoluteAddress(st_.symbols[variable].address);
    } else if (!constantValue(kTypeLong, t[4], value)) {
        return false;
    }
    if (value < p->low || value > p->high) return fail(p->message);
    *p->value = static_cast<int>(value);
    const bool memory =
        p->value == &st_.romEnd || p->value == &st_.ramStart || p->value == &st_.ramEnd;
    if (memory && !st_.firstRun) normaliseMemory();
    emitComment(";       The value of '" + name + "' is " + std::to_string(value) +
                (memory ? "/" + pb_hex4(value) + "H" : ""));
    return true;
}

bool Compiler::simDirective(const Tokens& t) {
    const std::string arg = restOfTokens(t, 2);
    const std::size_t open = arg.find('('), close = arg.find(')');
    if (open != 0 || close == std::string::npos) {
        return fail("Incorrect format of the directive argument (parentheses expected):\r\n'" +
                    arg + "'.");
    }
    std::string inside = arg.substr(1, close - 1);
    std::string rest = TrimText(arg.substr(close + 1));
    if (rest.empty() || rest[0] != '=') {
        return fail("Incorrect format of the directive argument (parentheses expected):\r\n'" +
                    arg + "'.");
    }
    rest = TrimText(rest.substr(1));
    int bit = -1;
    const std::size_t dot = inside.find('.');
    if (dot != std::string::npos) {
        long long b = 0;
        if (!constantValue(kTypeUShort, inside.substr(dot + 1), b)) return false;
        if (b > 7) return fail("Bit position out of range (0-7).");
        bit = static_cast<int>(b);
        inside.resize(dot);
    }
    long long address = 0, value = 0;
    if (!constantValue(kTypeUInteger, inside, address)) return false;
    if (bit >= 0) {
        if (readNumber(rest) == 255u) rest = "1";
        if (!constantValue(kTypeBit, rest, value)) return false;
        value = value ? 1 : 0;
    } else if (!constantValue(kTypeUShort, rest, value)) {
        return false;
    }
    emitComment(";     " + t[1] + " (" + std::to_string(address) +
                (bit >= 0 ? "." + std::to_string(bit) : "") + ")=" + std::to_string(value));
    return true;
}

// ---------------------------------------------------------------------------
// Inline assembler

namespace {

// Hexadecimal for inline assembler lines: "0FEC0h", "2Ah", "0FFh".
std::string lowerHex(long long value, int width) {
    std::string digits = HexDigits(value, width) + "h";
    if (std::isalpha(static_cast<unsigned char>(digits[0]))) digits.insert(0, "0");
    return digits;
}

std::string upperMnemonic(const std::string& text) {
    std::string out = text;
    for (std::size_t i = 0; i < out.size() && out[i] != ' ' && out[i] != '\t'; ++i) {
        out[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(out[i])));
    }
    return out;
}

}  // namespace

bool Compiler::inlineAssembler(const std::string& original) {
    const std::string text = substituteAsmNames(restorePlaceholders(original));
    if (TrimText(text).empty()) return true;
    if (text[0] == ' ' || text[0] == '\t') {
        emitCode(upperMnemonic(TrimText(text)));
        return true;
    }
    const std::size_t blank = text.find_first_of(" \t");
    std::string label = text.substr(0, blank);
    if (!label.empty() && label.back() == ':') label.pop_back();
    const std::string rest = blank == std::string::npos ? "" : TrimText(text.substr(blank));
    const std::string key = st_.currentScope + "\t" + label;
    if (st_.firstRun) {
        if (!asmLabelsLower_.insert(LowerText(key)).second) {
            return fail("Assembler label name in the same scope already exists:\r\n" + label);
        }
        asmLabelOrder_.push_back(key);
        asmLabels_[key] = label;
    }
    const auto it = asmLabels_.find(key);
    const std::string generated = it == asmLabels_.end() ? label : it->second;
    emitLabel(generated, rest.empty() ? "" : upperMnemonic(rest));
    return true;
}

// The names in an inline assembler text: the current scope's assembler labels
// (first occurrence, second run), then variables by their absolute address and
// constants by their value. A name counts only as a whole word between
// separators (blanks, tabs, parentheses, commas, operators, brackets, colons).
std::string Compiler::substituteAsmNames(const std::string& text) {
    static constexpr std::string_view kSeparators = " \t(),+-*/\\&|^<>[]:";
    struct Word {
        std::size_t at, length;
        std::string replacement;
    };
    std::vector<Word> words;
    for (std::size_t i = 0; i < text.size();) {
        if (kSeparators.find(text[i]) != std::string_view::npos) {
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end < text.size() && kSeparators.find(text[end]) == std::string_view::npos) ++end;
        words.push_back({i, end - i, ""});
        i = end;
    }
    std::unordered_set<std::string> labelsDone;
    for (Word& w : words) {
        const std::string word = text.substr(w.at, w.length);
        if (!st_.firstRun) {
            const auto label = asmLabels_.find(st_.currentScope + "\t" + word);
            if (label != asmLabels_.end() && labelsDone.insert(word).second) {
                w.replacement = label->second;
                continue;
            }
        }
        if (const int row = findVariable(word); row > 0) {
            countUse(row, true);
            w.replacement = lowerHex(absoluteAddress(st_.symbols[row].address), 4);
        } else if (const int c = findConstant(word);
                   c > 0 && !st_.constants[c].isString && !st_.constants[c].isSingle) {
            const long long value = st_.constants[c].code & 0xFFFFFFFF;
            w.replacement = lowerHex(value, value < 256 ? 2 : value < 65536 ? 4 : 8);
        }
    }
    std::string out = text;
    for (auto w = words.rbegin(); w != words.rend(); ++w) {
        if (!w->replacement.empty()) out.replace(w->at, w->length, w->replacement);
    }
    return out;
}

// Gives every inline assembler label of the program its generated label, before
// the second run's statement pass meets the lines that use them.
void Compiler::labelInlineAssembler() {
    for (const std::string& key : asmLabelOrder_) asmLabels_[key] = newLabel();
}

// ---------------------------------------------------------------------------
// Dim lines: variables cleared at their declaration

bool Compiler::dimInitialisation(const std::string& text) {
    if (st_.firstRun) return true;
    std::string list, typeName;
    dimParts(text, list, typeName);
    for (const std::string& name : splitList(list)) {
        const std::string plain = name.substr(0, name.find_first_of("[("));
        const int row = findVariable(plain);
        if (row == 0) continue;  // not compiled
        const SymbolRow& s = st_.symbols[row];
        if (s.scope != st_.currentScope && !(s.scope == "global" && st_.currentScope == "global")) {
            continue;
        }
        int bytes = 0;
        if (s.type == kTypeString) {
            bytes = 1;  // a string starts empty
        } else if (options_.initializeVariables) {
            bytes = typeSize(s.type) * (s.size > 0 ? s.size : 1);
        }
        if (bytes > 0) clearBytes(s.address, bytes);
    }
    return true;
}

void Compiler::clearBytes(int offset, int n) {
    const std::string a = codeHex4(absoluteAddress(offset));
    const bool inReach = offset >= -126 && offset - 1 + n <= 0 && offset + n - 1 >= -126;
    if (inReach && (n == 1 || n == 2 || n == 4)) {
        emitCode("XOR A");
        for (int k = 0; k < n; ++k) emitCode("LD (IX-" + codeHex2(-(offset + k)) + "),A");
    } else if (n <= 4) {
        emitCode("XOR A");
        emitCode("LD HL," + a);
        emitCode("LD (HL),A");
        for (int k = 1; k < n; ++k) {
            emitCode("INC HL");
            emitCode("LD (HL),A");
        }
    } else if (n <= 256) {
        const std::string label = newLabel();
        emitCode("XOR A");
        emitCode("LD HL," + a);
        emitCode("LD B," + codeHex2(n == 256 ? 0 : n));
        emitLabel(label, "LD (HL),A");
        emitCode("INC HL");
        emitCode("DJNZ " + label);
    } else {
        const std::string label = newLabel();
        emitCode("LD HL," + a);
        emitCode("LD BC," + codeHex4(n));
        emitLabel(label, "XOR A");
        emitCode("LD (HL),A");
        emitCode("INC HL");
        emitCode("DEC BC");
        emitCode("LD A,B");
        emitCode("OR C");
        emitCode("JR NZ," + label);
    }
}

}  // namespace mb
