// Symbols and declarations: the scan of labels and routine headers, the
// declaration pass with scopes, constants and the Dim queue, the layout of the
// variables below the IX base, and the temporaries of expressions.
#include <algorithm>
#include <cmath>
#include <functional>

#include "compiler/basic_numbers.h"
#include "compiler/compiler.h"
#include "compiler/keywords.h"
#include "compiler/output_text.h"
#include "core/numtext.h"
#include "core/product.h"

namespace mb {

namespace {

struct TypeInfo {
    const char* name;
    TypeCode code;
};
constexpr TypeInfo kTypeNames[] = {
    {"Bit", kTypeBit},         {"Boolean", kTypeBit},       {"Short", kTypeShort},
    {"Integer", kTypeInteger}, {"Long", kTypeLong},         {"Single", kTypeSingle},
    {"String", kTypeString},   {"StrPtr", kTypeStrPtr},     {"UShort", kTypeUShort},
    {"Byte", kTypeUShort},     {"UInteger", kTypeUInteger}, {"Word", kTypeUInteger},
    {"ULong", kTypeULong},
};

constexpr int kMaxArguments = 30;

}  // namespace

TypeCode typeOfName(std::string_view name) {
    for (const TypeInfo& t : kTypeNames) {
        if (name == t.name) return t.code;
    }
    return kTypeNone;
}

int typeSize(TypeCode type) {
    switch (type) {
        case kTypeBit:
        case kTypeShort:
        case kTypeUShort: return 1;
        case kTypeInteger:
        case kTypeUInteger:
        case kTypeStrPtr: return 2;
        case kTypeLong:
        case kTypeSingle:
        case kTypeULong: return 4;
        default: return 0;
    }
}

std::string typeTag(TypeCode type) {
    switch (type) {
        case kTypeBit: return "(boolean) ";
        case kTypeShort: return "(short) ";
        case kTypeInteger: return "(integer) ";
        case kTypeLong: return "(long) ";
        case kTypeSingle: return "(single) ";
        case kTypeString: return "(string) ";
        case kTypeStrPtr: return "(uinteger) ";
        case kTypeUShort: return "(ushort) ";
        case kTypeUInteger: return "(uinteger) ";
        case kTypeULong: return "(ulong) ";
        default: return "";
    }
}

std::string typeWord(TypeCode type) {
    switch (type) {
        case kTypeBit: return "Boolean";
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

bool dimParts(const std::string& text, std::string& list, std::string& typeName) {
    if (text.compare(0, 4, "Dim ") != 0) return false;
    const std::size_t as = text.rfind(" As ");
    if (as == std::string::npos || as < 3) return false;
    typeName = text.substr(as + 4);
    if (typeOfName(typeName) == kTypeNone) return false;
    list = TrimText(std::string_view(text).substr(3, as - 3));
    return true;
}

// Splits a list at ", ".
std::vector<std::string> splitList(const std::string& list) {
    std::vector<std::string> parts;
    std::size_t from = 0;
    while (true) {
        const std::size_t at = list.find(", ", from);
        parts.push_back(TrimText(std::string_view(list).substr(from, at - from)));
        if (at == std::string::npos) break;
        from = at + 2;
    }
    return parts;
}

// The element count between the parentheses of "name(n)", or -1.
int arrayCount(const std::string& name) {
    const std::size_t open = name.find('(');
    if (open == std::string::npos || name.back() != ')') return -1;
    const std::string digits = name.substr(open + 1, name.size() - open - 2);
    if (digits.empty() || digits.size() > 6 ||
        digits.find_first_not_of("0123456789") != std::string::npos) {
        return -1;
    }
    return std::stoi(digits);
}

// ---------------------------------------------------------------------------
// Declaration scan

bool Compiler::declarationScan() {
    Tokens t;
    for (int i = 1; i <= st_.lineCount(); ++i) {
        st_.currentLine = i;
        const std::string& text = st_.lines[i].xlinija;
        std::string list, typeName;
        if (dimParts(text, list, typeName)) {
            if (list.empty()) return fail("Variable name(s) missing in Dim statement.");
            const TypeCode type = typeOfName(typeName);
            if (type == kTypeLong || type == kTypeULong) st_.learned.longArithmetic = true;
            if (type == kTypeSingle) st_.learned.singleArithmetic = true;
            if (type == kTypeString) st_.learned.strings = true;
            if (type == kTypeStrPtr) st_.learned.stringPointers = true;
            continue;
        }
        if (!scanLabel(i)) return false;
        statementTokens(st_.lines[i].xlinija, t);
        if (t[1] == "Sub" && !t[2].empty() && t[3].empty()) {
            if (!isValidName(t[2], false).ok) return fail("Incorrect subroutine name.");
            st_.subs.push_back({t[2], newLabel(), false});
        } else if ((t[1] == "Proc" || t[1] == "Function") && !t[2].empty()) {
            if (!scanRoutine(i, t)) return false;
        }
    }
    return true;
}

bool Compiler::scanLabel(int i) {
    BasicLine& line = st_.lines[i];
    const std::size_t blank = line.xlinija.find(' ');
    const std::string first = line.xlinija.substr(0, blank);
    if (first.empty() || first.back() != ':' || first.compare(0, 4, "ASM:") == 0) return true;
    if (first == ":") return fail("Label name missing.");
    const std::string name = first.substr(0, first.size() - 1);
    if (!isValidName(name, false).ok || name.find('[') != std::string::npos) {
        return fail("Incorrect line label name.");
    }
    line.xlinelabel2 = name;
    line.xlinelabel1 = newLabel();
    line.xlinija = blank == std::string::npos ? "" : TrimText(line.xlinija.substr(blank + 1));
    return true;
}

bool Compiler::scanRoutine(int /*line*/, const Tokens& t) {
    const bool function = t[1] == "Function";
    const std::string text = restOfTokens(t, 2);
    RoutineRow row;
    const std::size_t open = text.find('(');
    std::size_t close = std::string::npos;
    if (!function) {
        if (open == std::string::npos || text.back() != ')') {
            return fail("Incorrect procedure declaration.");
        }
        close = text.size() - 1;
    } else {
        close = text.rfind(')');
        if (open == std::string::npos || close == std::string::npos || close < open) {
            return fail("Incorrect function declaration.");
        }
        const std::string tail = text.substr(close + 1);
        if (tail.compare(0, 4, " As ") != 0 || typeOfName(tail.substr(4)) == kTypeNone) {
            return fail("Incorrect function declaration: '" + text + "'.");
        }
        row.resultTypeName = tail.substr(4);
        row.resultType = typeOfName(row.resultTypeName);
    }
    row.name = TrimText(text.substr(0, open));
    if (!isValidName(row.name, false).ok) {
        return fail(function ? "Incorrect function name." : "Incorrect procedure name.");
    }
    if (!parseArguments(text.substr(open + 1, close - open - 1), row, function)) return false;
    row.label = newLabel();
    (function ? st_.functions : st_.procs).push_back(std::move(row));
    return true;
}

bool Compiler::parseArguments(const std::string& list, RoutineRow& row, bool function) {
    if (TrimText(list).empty()) return true;
    for (std::string arg : splitList(list)) {
        if (static_cast<int>(row.arguments.size()) == kMaxArguments) {
            return fail(function ? "Too many arguments of the function (30 max)."
                                 : "Too many arguments of the procedure (30 max).");
        }
        RoutineArgument a;
        const std::string whole = arg;
        const std::string lower = LowerText(arg);
        for (const auto& [word, mode] : {std::pair{"byval ", 0}, {"byref ", 1}, {"byrefout ", 2}}) {
            if (lower.compare(0, std::string_view(word).size(), word) == 0) {
                a.mode = mode;
                arg = arg.substr(std::string_view(word).size());
                break;
            }
        }
        const std::size_t as = arg.find(" As ");
        const std::string name = as == std::string::npos ? arg : arg.substr(0, as);
        if (!isValidName(name, false).ok) return fail("Incorrect argument name: '" + name + "'.");
        a.type = as == std::string::npos ? kTypeNone : typeOfName(arg.substr(as + 4));
        if (a.type == kTypeNone) return fail("Incorrect argument declaration: '" + whole + "'.");
        if (a.type == kTypeString && a.mode != 0) {
            a.type = kTypeStrPtr;  // strings go by reference as pointers
            a.mode = 0;
        }
        a.name = name;
        row.arguments.push_back(a);
    }
    return true;
}

// ---------------------------------------------------------------------------
// Declaration pass

namespace {

std::string argumentTypeName(const RoutineArgument& a) {
    return a.type == kTypeStrPtr ? "StrPtr" : typeWord(a.type);
}

std::string withoutSuffix(const std::string& name) {
    return name.substr(0, name.find('['));
}

}  // namespace

bool Compiler::declarationPass() {
    for (const std::string& line :
         {std::string("; Compiled with: ") + kProductName + " v" + kProductVersion,
          std::string("; Microprocessor model: Z80"),
          "; Clock frequency: " + headerClockText(options_.clockMHz), std::string(";")}) {
        emitComment(line);
    }
    if (!st_.firstRun) normaliseMemory();
    prepareMemoryMap();
    st_.currentScope = "global";
    bool skip = false;
    std::size_t subIndex = 0, procIndex = 0, functionIndex = 0;
    // Sub rows of the scan come first; a label after End adds one behind them.
    std::size_t scannedSubs = st_.subs.size();
    Tokens t;
    for (int i = 1; i <= st_.lineCount(); ++i) {
        st_.currentLine = i;
        BasicLine& line = st_.lines[i];
        bool leave = false;
        line.xlinelabelscope = st_.currentScope;
        statementTokens(line.xlinija, t);
        if (!line.xlinelabel2.empty()) {
            if (!skip && !registerUserName(line.xlinelabel2)) return false;
            if (st_.currentScope == "global" && st_.mainEnded) {
                const std::size_t row = st_.subs.size();
                st_.subs.push_back({line.xlinelabel2, line.xlinelabel1, false});
                st_.inSubroutine = true;
                if (unusedCheck(row, i, "subroutine")) {
                    st_.currentScope = line.xlinelabel2;
                } else {
                    skip = true;
                }
            }
        }
        std::string list, typeName;
        if (dimParts(line.xlinija, list, typeName)) {
            if (!queueDim(line.xlinija, skip)) return false;
        } else if (t[1] == "Const" && t[3] == "=" && !t[4].empty() && t[5].empty()) {
            if (!skip && !declareConstant(t)) return false;
        } else if (t[1] == "Sub" && !t[2].empty() && t[3].empty()) {
            const std::size_t row = subIndex < scannedSubs ? subIndex++ : st_.subs.size();
            st_.inSubroutine = true;
            if (unusedCheck(row, i, "subroutine")) {
                st_.currentScope = t[2];
            } else {
                skip = true;
            }
        } else if ((t[1] == "End" && t[2] == "Sub" && t[3].empty()) ||
                   (t[1] == "Return" && t[2].empty())) {
            if (st_.inSubroutine) leave = true;
            st_.inSubroutine = false;
            st_.currentScope = "global";
        } else if (t[1] == "End" && t[2].empty()) {
            st_.mainEnded = true;
        } else if (t[1] == "End" && (t[2] == "Proc" || t[2] == "Function") && t[3].empty()) {
            (t[2] == "Proc" ? st_.inProc : st_.inFunction) = false;
            st_.currentScope = "global";
            leave = true;
        } else if (t[1] == "Proc" && !t[2].empty() && procIndex < st_.procs.size()) {
            st_.inProc = true;
            if (!declareRoutine(procIndex++, false, skip)) return false;
        } else if (t[1] == "Function" && !t[2].empty() && functionIndex < st_.functions.size()) {
            st_.inFunction = true;
            if (!declareRoutine(functionIndex++, true, skip)) return false;
        } else if (!line.xlinija.empty() && st_.mainEnded && st_.currentScope == "global" &&
                   !st_.inSubroutine && !st_.inProc && !st_.inFunction) {
            warnLine("Executable statement found outside any Sub, Proc, or Function: " +
                     line.xlinijafull);
        }
        if (skip) {
            line.xlinijafull = "'NOT COMPILED: " + line.xlinijafull;
            line.xlinija.clear();
            line.xlinelabel1.clear();
            line.xlinelabel2.clear();
            line.xlinelabelscope.clear();
        }
        if (leave) skip = false;
    }
    st_.currentScope = "global";
    st_.mainEnded = st_.inSubroutine = st_.inProc = st_.inFunction = false;
    if (!allocateQueue()) return false;
    return reserveStringTemps();
}

// "Optimize String Temp Vars": the string temporaries that the statements of the
// first run asked for, made once for the whole program. The k-th temporary is
// as long as the longest k-th request of any statement, so that every statement
// finds rows long enough among them.
bool Compiler::reserveStringTemps() {
    if (st_.firstRun || !run_.optimizeStringTemps || options_.dynamicTemps) return true;
    std::vector<std::vector<int>> rows = st_.learned.stringTempLengths;
    std::vector<int> lengths;
    while (true) {
        int longest = 0;
        bool any = false;
        for (std::vector<int>& row : rows) {
            if (row.empty()) continue;
            any = true;
            longest = std::max(longest, row.back());
            row.pop_back();
        }
        if (!any) break;
        lengths.push_back(longest);
    }
    std::sort(lengths.begin(), lengths.end());  // the largest last
    std::vector<std::string> names;
    for (int length : lengths) names.push_back(newTemp(kTypeString, length));
    for (const std::string& name : names) {
        if (name.empty()) return false;
        freeTemp(name);
    }
    if (!lengths.empty()) {
        std::string list;
        for (int length : lengths) list += (list.empty() ? "" : ", ") + std::to_string(length);
        debugComment("string temporaries reserved: " + list);
    }
    return true;
}

bool Compiler::declareRoutine(std::size_t index, bool function, bool& skip) {
    RoutineRow& row = function ? st_.functions[index] : st_.procs[index];
    const std::string plainName = withoutSuffix(row.name);
    if (!unusedCheck(index, st_.currentLine, function ? "function" : "procedure")) {
        skip = true;
        const std::size_t places = row.arguments.size() + (function ? 1 : 0);
        for (std::size_t k = 0; k < places; ++k) {
            st_.declarations.push_back({"", "", "", st_.currentLine, 0, 0});
        }
        return true;
    }
    if (!registerUserName(plainName)) return false;
    st_.currentScope = plainName;
    if (function) {
        st_.declarations.push_back(
            {row.name, row.resultTypeName, plainName, st_.currentLine, 0, 0});
    }
    for (const RoutineArgument& a : row.arguments) {
        st_.declarations.push_back({a.name, argumentTypeName(a), plainName, st_.currentLine, 0, 0});
    }
    return true;
}

bool Compiler::unusedCheck(std::size_t row, int line, const std::string& kind) {
    if (st_.firstRun) return true;
    const std::vector<bool>& used = kind == "subroutine"  ? st_.learned.subUsed
                                    : kind == "procedure" ? st_.learned.procUsed
                                                          : st_.learned.functionUsed;
    if (row < used.size() && used[row]) return true;
    const std::string text = st_.lines[line].xlinijafull;
    const std::string lineText = "Line " + std::to_string(line);
    if (options_.doNotCompileUnused) {
        reportWarning(lineText + ": Unused " + kind + ". Not compiled: " + text);
        return false;
    }
    reportWarning(lineText + ": Unused " + kind + ": " + text);
    return true;
}

bool Compiler::queueDim(const std::string& text, bool skip) {
    std::string list, typeName;
    dimParts(text, list, typeName);
    if (list.empty()) return fail("Variable name(s) missing in Dim statement.");
    const std::vector<std::string> names = splitList(list);
    for (const std::string& name : names) {
        DeclarationRow row{name, typeName, st_.currentScope, st_.currentLine, 0, 0};
        const std::size_t q = st_.declarations.size();
        bool keep = !skip;
        if (keep && names.size() == 1 && !st_.firstRun) {
            const bool used =
                q < st_.learned.declarationUsed.size() && st_.learned.declarationUsed[q] > 0;
            if (!used) {
                const std::string lineText = "Line " + std::to_string(st_.currentLine);
                const std::string& full = st_.lines[st_.currentLine].xlinijafull;
                if (options_.doNotCompileUnused) {
                    reportWarning(lineText + ": Unused declaration. Not compiled: " + full);
                    keep = false;
                } else {
                    reportWarning(lineText + ": Unused declaration: " + full);
                }
            }
        }
        if (!keep) row = {"", "", "", st_.currentLine, 0, 0};
        st_.declarations.push_back(row);
    }
    return true;
}

bool Compiler::allocateQueue() {
    std::vector<std::size_t> order;
    const bool byScore = !st_.firstRun && options_.optimizeVariables;
    for (std::size_t q = 0; q < st_.declarations.size(); ++q) {
        DeclarationRow& row = st_.declarations[q];
        if (byScore && !row.declprepareime.empty()) {
            const int used =
                q < st_.learned.declarationUsed.size() ? st_.learned.declarationUsed[q] : 0;
            row.score = (used + 2) / 4;
            const int size = declarationBytes(row);
            if (25 - size > 0) row.score += 25 - size;
        }
        order.push_back(q);
    }
    if (byScore) {
        std::stable_sort(order.begin(), order.end(), [this](std::size_t a, std::size_t b) {
            return st_.declarations[a].score > st_.declarations[b].score;
        });
    }
    std::vector<std::string> comments(st_.declarations.size());
    std::vector<UserVariableRow> reportRows(st_.declarations.size());
    for (std::size_t q : order) {
        DeclarationRow& row = st_.declarations[q];
        if (row.declprepareime.empty()) continue;
        st_.currentLine = row.declpreparebrj;
        const int used =
            q < st_.learned.declarationUsed.size() ? st_.learned.declarationUsed[q] : 0;
        if (!declareVariable(row.declprepareime, row.declpreparetip, row.declpreparescp, used)) {
            return false;
        }
        row.symbolRow = static_cast<int>(st_.symbols.size()) - 1;
        comments[q] = lastDeclarationComment_;
        reportRows[q] = st_.userVariables.back();
        st_.userVariables.pop_back();
    }
    // Comments and report rows in source order, whatever the allocation order was.
    for (std::size_t q = 0; q < comments.size(); ++q) {
        if (comments[q].empty()) continue;
        emitComment(comments[q]);
        st_.userVariables.push_back(reportRows[q]);
    }
    return true;
}

int Compiler::declarationBytes(const DeclarationRow& row) const {
    const TypeCode type = typeOfName(row.declpreparetip);
    const std::string& name = row.declprepareime;
    if (type == kTypeString) {
        const std::size_t open = name.find('[');
        if (open != std::string::npos && name.back() == ']') {
            const std::string digits = name.substr(open + 1, name.size() - open - 2);
            if (!digits.empty() && digits.size() <= 6 &&
                digits.find_first_not_of("0123456789") == std::string::npos) {
                return std::stoi(digits) + 1;
            }
        }
        return st_.stringMaxLength + 1;
    }
    const int count = arrayCount(name);
    return typeSize(type) * (count > 0 ? count : 1);
}

bool Compiler::declareVariable(const std::string& name, const std::string& typeName,
                               const std::string& scope, int used) {
    const TypeCode type = typeOfName(typeName);
    std::string plain = name;
    int count = 0;
    int bytes = typeSize(type);
    const std::size_t bracket = name.find('[');
    if (bracket != std::string::npos) {
        const std::string digits =
            name.back() == ']' ? name.substr(bracket + 1, name.size() - bracket - 2) : "";
        const bool plainDigits = !digits.empty() && digits.size() <= 6 &&
                                 digits.find_first_not_of("0123456789") == std::string::npos;
        const int n = plainDigits ? std::stoi(digits) : 0;
        if (type != kTypeString || n <= 0) {
            return fail("'" + name + "'\r\nIncorrect variable declaration.\r\n'" + name + "'");
        }
        if (!st_.firstRun && n > st_.stringMaxLength) {
            return fail("'" + name + "'\r\n'" + name +
                        "'\r\nMaximal number of characters in any string variable is: " +
                        std::to_string(st_.stringMaxLength) +
                        ".\r\nUse #define directive to change STRING_MAX_LENGTH parameter value.");
        }
        plain = name.substr(0, bracket);
        bytes = n + 1;
    } else if (name.find('(') != std::string::npos || name.find(')') != std::string::npos) {
        if (type == kTypeString || type == kTypeStrPtr) {
            return fail("Arrays are not supported for String variables.");
        }
        plain = name.substr(0, name.find('('));
        count = arrayCount(name);
        if (!isValidName(plain, false).ok || count <= 0 || count >= 100000) {
            return fail("Incorrect array declaration.");
        }
        bytes *= count;
    } else if (type == kTypeString) {
        bytes = st_.stringMaxLength + 1;
    }
    if (!isValidName(plain, false).ok) {
        const NameCheck check = isValidName(plain, false);
        return fail(check.message.empty() ? "Incorrect variable name." : check.message);
    }
    const std::string savedScope = st_.currentScope;
    st_.currentScope = scope;
    const bool registered = registerUserName(plain);
    st_.currentScope = savedScope;
    if (!registered) return false;
    const int offset = allocate(bytes);
    if (offset == 0) return fail("Not enough RAM memory available for this declaration.");
    SymbolRow row{plain, offset, type == kTypeString ? bytes : count,
                  type,  scope,  std::min(used, 255)};
    st_.addSymbol(row);
    if (type == kTypeString) {
        st_.learned.strings = true;
        st_.learned.needs.Set(kNeedStrings);
    }
    const int address = absoluteAddress(offset);
    std::string arrayPart;
    if (type == kTypeString) {
        arrayPart = "(array " + std::to_string(bytes) + ") ";
    } else if (count > 0) {
        arrayPart = "(array " + std::to_string(count) + ") ";
    }
    lastDeclarationComment_ = ";       The address of '" + plain + "' " + arrayPart +
                              typeTag(type) + "(" + scope + ") is " + pb_hex4(address) + "H (IX" +
                              std::to_string(offset) + ")";
    st_.userVariables.push_back({plain, typeWord(type), pb_hex4(address) + "H", scope});
    return true;
}

bool Compiler::declareConstant(const Tokens& t) {
    const std::string& name = t[2];
    if (!isValidName(name, false).ok) return fail("Incorrect constant name.");
    if (!registerUserName(name)) return false;
    std::string value = t[4];
    const int placeholder = stringConstantAt(value);
    ConstantRow row{name, value, st_.currentScope, false};
    if (placeholder > 0 && placeholder < 1000000) {
        row.value = st_.stringConstants[placeholder];
        row.isString = true;
    } else if (placeholder == 1000000) {
        const int c = findConstant(value);
        row.value = c > 0 ? st_.constants[c].value : value.substr(1, value.size() - 2);
        row.isString = true;
    } else {
        const TypeCode type = value.find('.') != std::string::npos   ? kTypeSingle
                              : value.find('-') != std::string::npos ? kTypeLong
                                                                     : kTypeULong;
        double number = 0;
        if (!constantValue(type, value, row.code, &number)) return false;
        const int c = findConstant(TrimText(value[0] == '-' ? value.substr(1) : value));
        row.isSingle = type == kTypeSingle;
        if (row.isSingle) {
            row.value = canonicalSingleText(number);
        } else if (c > 0) {
            row.value = (value[0] == '-' ? "-" : "") + st_.constants[c].value;
        }
    }
    st_.addConstant(row);
    emitComment(";       The value of '" + name + "' (" + st_.currentScope + ") is " +
                (row.isString ? "\"" + decodeSourceText(row.value) + "\"" : row.value));
    return true;
}

bool Compiler::constantValue(TypeCode type, std::string text, long long& value, double* number) {
    const std::string original = text;
    if (!text.empty() && text[0] == '+') text.erase(0, 1);
    const bool negative = !text.empty() && text[0] == '-';
    const std::string body = negative ? text.substr(1) : text;
    const int c = findConstant(body);
    if (c > 0) {
        countUse(c, false);
        text = (negative ? "-" : "") + st_.constants[c].value;
    } else {
        const int s = stringConstantAt(body);
        if (s > 0 && s < 1000000 && st_.stringConstants[s].size() == 1) {
            text = std::to_string(static_cast<unsigned char>(st_.stringConstants[s][0]));
        }
    }
    const ConstantCheck check = checkConstant(type, text);
    if (!check.ok)
        return fail(check.message.empty() ? "Argument '" + original + "' is not a valid " +
                                                typeWord(type) + " type constant."
                                          : check.message);
    if (check.bitRangeWarning) {
        warnLine(
            "Constant out of standard Bit data type range (0-1). Any non-zero value will be "
            "interpreted as True...");
    }
    value = check.value;
    if (number) *number = check.number;
    return true;
}

// ---------------------------------------------------------------------------
// Names and lookups

bool Compiler::registerUserName(const std::string& name) {
    const std::string keyword = reservedKeywordMatching(name);
    if (!keyword.empty()) {
        return fail("Reserved system keyword '" + keyword + "' used for user element name.");
    }
    if (LowerText(name).rfind("corvalent_temp", 0) == 0 || name == "PRINT_STR" ||
        name == "PRINT_IND" || (name.size() == 6 && name.compare(0, 5, "REG_R") == 0)) {
        return fail("Internal system keyword '" + name + "' used for user element name.");
    }
    if (!st_.scopedNames.insert(st_.currentScope + "\t" + name).second) {
        return fail("User element name already used within the same scope.");
    }
    st_.names.push_back({name, st_.currentScope});
    return true;
}

// The row of name in scope (the current one when empty), else in "global".
static int findRow(const std::unordered_map<std::string, std::vector<int>>& index,
                   std::string_view name, const std::string& scope,
                   const std::function<const std::string&(int)>& scopeOf) {
    const auto it = index.find(std::string(name));
    if (it == index.end()) return 0;
    for (const std::string* s : {&scope, &Compiler::kGlobalScope}) {
        for (auto row = it->second.rbegin(); row != it->second.rend(); ++row) {
            if (scopeOf(*row) == *s) return *row;
        }
    }
    return 0;
}

int Compiler::findVariable(std::string_view name, const std::string& scope) const {
    return findRow(st_.symbolRows, name, scope.empty() ? st_.currentScope : scope,
                   [this](int row) -> const std::string& { return st_.symbols[row].scope; });
}

int Compiler::findConstant(std::string_view name, const std::string& scope) const {
    return findRow(st_.constantRows, name, scope.empty() ? st_.currentScope : scope,
                   [this](int row) -> const std::string& { return st_.constants[row].scope; });
}

void Compiler::countUse(int row, bool variable) {
    if (!st_.firstRun || !variable || row < 1) return;
    SymbolRow& s = st_.symbols[row];
    if (s.name.rfind("corvalent_temp", 0) == 0) return;
    if (s.used < 255) ++s.used;
}

int Compiler::lookupVariable(std::string_view name, const std::string& scope) {
    const int row = findVariable(name, scope);
    countUse(row, true);
    return row;
}

int Compiler::lookupConstant(std::string_view name, const std::string& scope) {
    return findConstant(name, scope);
}

// ---------------------------------------------------------------------------
// Memory layout

void Compiler::normaliseMemory() {
    if (st_.ramStart < st_.romEnd + 1) st_.ramStart = st_.romEnd + 1;
    if (st_.ramEnd < st_.ramStart + 1023) st_.ramEnd = st_.ramStart + 1023;
}

void Compiler::prepareMemoryMap() {
    st_.memoryMap.assign(65536, 0);
    auto take = [this](int from, int to) {
        for (int a = std::max(from, 0); a <= std::min(to, 65535); ++a) st_.memoryMap[a] = 1;
    };
    for (int a = 0; a < st_.ramStart && a < 65536; ++a) st_.memoryMap[a] = 1;
    take(st_.ixBase(), 65535);
    take(st_.ramStart, st_.ramStart + 255);
}

int Compiler::allocate(int bytes) {
    st_.totalRam += bytes;
    if (st_.firstRun) return -1;
    int cell = std::min(st_.ramEnd, 65535);
    while (cell >= st_.ramStart && st_.memoryMap[cell]) --cell;
    if (cell < st_.ramStart) return 0;
    const int start = cell + 1 - bytes;
    if (start <= st_.ramStart + 255 || start < 0) return 0;
    for (int a = start; a <= cell; ++a) st_.memoryMap[a] = 1;
    return start - st_.ixBase();
}

void Compiler::releaseBytes(int bytes, int offset) {
    if (st_.firstRun) return;
    const int start = st_.ixBase() + offset;
    for (int a = std::max(start, 0); a < start + bytes && a < 65536; ++a) st_.memoryMap[a] = 0;
}

int Compiler::reserveSystem(const std::string& name, int bytes) {
    const int offset = allocate(bytes);
    if (offset == 0) {
        fail(
            "The compiler could not allocate an appropriate memory location for a system "
            "variable declaration.\r\n" +
            (name.empty() ? std::string("(unnamed system variable)") : name) + " (" +
            std::to_string(bytes) + " bytes)");
        return 0;
    }
    const int address = absoluteAddress(offset);
    if (!st_.firstRun) {
        if (!name.empty()) {
            emitLabel(name, ".EQU " + codeHex4(address));
        } else if (run_.debugComments) {
            emitComment(";       system reserve declaration; address: " + pb_hex4(address) +
                        "H; length: " + std::to_string(bytes));
        }
    }
    st_.lastSystemAddress = address;
    return offset;
}

// ---------------------------------------------------------------------------
// Temporaries

namespace {

const char* tempWord(TypeCode type) {
    switch (type) {
        case kTypeBit: return "boolean";
        case kTypeShort: return "short";
        case kTypeInteger: return "integer";
        case kTypeLong: return "long";
        case kTypeSingle: return "single";
        case kTypeString: return "string";
        case kTypeUShort: return "ushort";
        case kTypeUInteger: return "uinteger";
        case kTypeULong: return "ulong";
        default: return "integer";
    }
}

}  // namespace

std::string Compiler::newTemp(TypeCode type, int length) {
    if (st_.temps.empty()) st_.temps.emplace_back();  // row 0: the assignment target
    if (type == kTypeString) {
        length = std::min(length > 0 ? length : st_.stringMaxLength, st_.stringMaxLength);
        if (st_.firstRun) st_.currentStringTemps.push_back(length);
    }
    for (std::size_t i = static_cast<std::size_t>(st_.firstTemp); i < st_.temps.size(); ++i) {
        TempRow& row = st_.temps[i];
        if (row.state != 0 || row.type != type || row.name.empty()) continue;
        if (i > 0 && row.scope != st_.currentScope) continue;
        if (type == kTypeString) {
            if (row.length < length) continue;
            st_.symbols[row.symbolRow].size = length + 1;
        }
        row.state = 1;
        return row.name;
    }
    const int n = static_cast<int>(st_.temps.size());  // rows counted from 1 behind row 0
    const std::string name =
        std::string("corvalent_temp_") + tempWord(type) + "_" + std::to_string(n);
    const int bytes = type == kTypeString ? length + 1 : typeSize(type);
    const int offset = allocate(bytes);
    if (offset == 0) {
        fail(
            "Too many variables used.\r\nThe compiler could not allocate an appropriate memory "
            "location for a system variable declaration.\r\n" +
            name + " (" + std::to_string(bytes) + " bytes)");
        return "";
    }
    st_.addSymbol({name, offset, type == kTypeString ? bytes : 0, type, "global", 0});
    st_.temps.push_back({name, offset, type, static_cast<int>(st_.symbols.size()) - 1,
                         type == kTypeString ? length : 0, 1, st_.currentScope});
    if (type == kTypeLong || type == kTypeULong) st_.learned.longArithmetic = true;
    if (type == kTypeSingle) st_.learned.singleArithmetic = true;
    if (type == kTypeString) st_.learned.strings = true;
    if (!st_.firstRun) {
        const std::string address = codeHex4(absoluteAddress(offset));
        if (options_.dynamicTemps) {
            emitComment(";     " + name + " address: " + address);
        } else if (type == kTypeString) {
            emitLabel(name + "[" + std::to_string(bytes - 1) + "]", ".EQU " + address);
        } else {
            emitLabel(name, ".EQU " + address);
        }
    }
    return name;
}

void Compiler::freeTemp(const std::string& name) {
    for (std::size_t i = 0; i < st_.temps.size(); ++i) {
        TempRow& row = st_.temps[i];
        if (row.name != name || row.state != 1) continue;
        row.state = 0;
        if (row.type == kTypeString) st_.symbols[row.symbolRow].size = row.length + 1;
    }
}

bool Compiler::endOfStatement() {
    if (st_.firstRun && !st_.currentStringTemps.empty()) {
        std::sort(st_.currentStringTemps.begin(), st_.currentStringTemps.end());
        st_.learned.stringTempLengths.push_back(st_.currentStringTemps);
    }
    st_.currentStringTemps.clear();
    for (std::size_t i = static_cast<std::size_t>(std::max(st_.firstTemp, 1)); i < st_.temps.size();
         ++i) {
        TempRow& row = st_.temps[i];
        if (row.state == 1) row.state = 0;
        if (row.type == kTypeString && row.symbolRow > 0) {
            st_.symbols[row.symbolRow].size = row.length + 1;
        }
    }
    if (!st_.temps.empty()) st_.temps[0] = TempRow{};
    st_.firstTemp = 1;
    if (!options_.dynamicTemps) return true;
    while (st_.temps.size() > 1) {
        const TempRow row = st_.temps.back();
        if (row.symbolRow != static_cast<int>(st_.symbols.size()) - 1) {
            return fail("Unexpected situation.");
        }
        releaseBytes(row.type == kTypeString ? row.length + 1 : typeSize(row.type), row.address);
        st_.popSymbol();
        st_.temps.pop_back();
    }
    return true;
}

}  // namespace mb
