// Append routines: conversions written in the dialect itself (HexStr,
// DecFromHex, StrValB/StrValW, StrValL, StrValS), compiled behind the user's
// code when the program uses them. Their variables overlay one block of system
// memory with a fixed layout, so that the calls can hand over arguments and
// results at known places.
#include <algorithm>

#include "compiler/basic_numbers.h"
#include "compiler/compiler.h"
#include "compiler/line_cleaner.h"
#include "compiler/output_text.h"
#include "core/numtext.h"

namespace mb {

namespace {

// A backtick stands for a double quote; "[n]" behind a line repeats it n times.
struct AppendRoutine {
    const char* name;   // the routine's scope
    const char* entry;  // its entry label in the text
    const char* text;
};

constexpr AppendRoutine kAppendRoutines[] = {
    {"_routine_str_hexstr_", "str_hexstr_input",
     "Dim in_w As Word\n"
     "Dim out_str[4] As String\n"
     "Dim arg As Word\n"
     "Dim dig As Word\n"
     "\n"
     "str_hexstr_input:\n"
     "out_str = Chr(0)\n"
     "arg = 4096\n"
     "Gosub get_char\n"
     "Gosub get_char2 [3]\n"
     "Return\n"
     "\n"
     "get_char2:\n"
     "arg = arg / 16\n"
     "get_char:\n"
     "dig = in_w / arg\n"
     "dig = dig Mod 16\n"
     "If dig > 9 Then dig = dig + 7\n"
     "dig = dig + 48\n"
     "out_str = out_str + Chr(dig)\n"
     "Return\n"},
    {"_routine_str_decfromhex_", "str_decfromhex_input",
     "Dim out_w As Word\n"
     "Dim in_str[4] As String\n"
     "Dim pos As Byte\n"
     "Dim num As Byte\n"
     "Dim arg As Word\n"
     "str_decfromhex_input:\n"
     "out_w = 0\n"
     "in_str = RightStr(`0000` + in_str, 4)\n"
     "in_str = UCase(in_str)\n"
     "pos = 5\n"
     "arg = 1\n"
     "Gosub get_num2\n"
     "Gosub get_num [3]\n"
     "Return\n"
     "get_num:\n"
     "arg = arg * 16\n"
     "get_num2:\n"
     "pos = pos - 1\n"
     "num = Asc(MidStr(in_str, pos, 1))\n"
     "num = num - 48\n"
     "If num > 9 Then num = num - 7\n"
     "out_w = out_w + num * arg\n"
     "Return\n"},
    {"_routine_str_valw_", "str_valw_input",
     "Dim out_w As Word\n"
     "Dim in_str[5] As String\n"
     "Dim pos As Byte\n"
     "Dim num As Byte\n"
     "Dim arg As Word\n"
     "str_valw_input:\n"
     "out_w = 0\n"
     "in_str = RightStr(`00000` + in_str, 5)\n"
     "in_str = UCase(in_str)\n"
     "pos = 6\n"
     "arg = 1\n"
     "Gosub get_num2\n"
     "Gosub get_num [4]\n"
     "Return\n"
     "get_num:\n"
     "arg = arg * 10\n"
     "get_num2:\n"
     "pos = pos - 1\n"
     "num = Asc(MidStr(in_str, pos, 1))\n"
     "num = num - 48\n"
     "out_w = out_w + num * arg\n"
     "Return\n"},
    {"_routine_str_vall_", "str_vall_input",
     "Dim out_l As ULong\n"
     "Dim in_str[10] As String\n"
     "Dim pos As Byte\n"
     "Dim num As Byte\n"
     "Dim arg As ULong\n"
     "str_vall_input:\n"
     "out_l = 0\n"
     "in_str = FillStr(48, 10 - Len(in_str)) + in_str\n"
     "pos = 11\n"
     "arg = 1\n"
     "Gosub get_num2\n"
     "Gosub get_num [9]\n"
     "Return\n"
     "get_num:\n"
     "arg = arg * 10\n"
     "get_num2:\n"
     "pos = pos - 1\n"
     "num = Asc(MidStr(in_str, pos, 1))\n"
     "num = num - 48\n"
     "out_l = out_l + num * arg\n"
     "Return\n"},
    {"_routine_str_vals_", "str_vals_input",
     "Dim out_s As Single\n"
     "Dim in_str[9] As String\n"
     "Dim pos As Byte\n"
     "Dim num As Byte\n"
     "Dim arg As Single\n"
     "Dim minus As Byte\n"
     "str_vals_input:\n"
     "out_s = 0\n"
     "minus = 0\n"
     "If LeftStr(in_str, 1) = Chr(45) Then\n"
     "minus = 1\n"
     "in_str = MidStr(in_str, 2, 40)\n"
     "Endif\n"
     "pos = InStr(in_str, 46)\n"
     "If pos = 0 Then in_str = in_str + Chr(46)\n"
     "in_str = in_str + FillStr(48, 10 - Len(in_str))\n"
     "pos = InStr(in_str, 46)\n"
     "arg = 0.01\n"
     "For num = 1 To pos\n"
     "arg = arg * 10\n"
     "Next num\n"
     "pos = 0\n"
     "Gosub get_num2\n"
     "Gosub get_num [9]\n"
     "If minus = 1 Then out_s = -1 * out_s\n"
     "Return\n"
     "get_num:\n"
     "arg = arg / 10\n"
     "get_num2:\n"
     "pos = pos + 1\n"
     "num = Asc(MidStr(in_str, pos, 1))\n"
     "If num = 46 Then\n"
     "arg = arg * 10\n"
     "Return\n"
     "Endif\n"
     "num = num - 48\n"
     "out_s = out_s + num * arg\n"
     "Return\n"},
};

// The lines of a routine text, repeats written out and backticks turned into
// double quotes.
std::vector<std::string> routineLines(const char* text) {
    std::vector<std::string> lines;
    std::string line;
    for (const char* p = text; *p; ++p) {
        if (*p != '\n') {
            line += *p == '`' ? '"' : *p;
            continue;
        }
        int repeat = 1;
        const std::size_t open = line.rfind(" [");
        if (open != std::string::npos && line.back() == ']') {
            repeat = std::stoi(line.substr(open + 2, line.size() - open - 3));
            line.resize(open);
        }
        for (int k = 0; k < repeat; ++k) lines.push_back(line);
        line.clear();
    }
    return lines;
}

}  // namespace

int Compiler::appendBlockSize() const {
    int size = 0;
    const auto& uses = st_.learned.appendUsed;
    if (uses[kAppendHexStr] || uses[kAppendDecFromHex]) size = 11;
    if (uses[kAppendStrValW]) size = std::max(size, 12);
    if (uses[kAppendStrValL] || uses[kAppendStrValS]) size = 21;
    return size;
}

bool Compiler::compileAppendRoutines() {
    bool any = false;
    for (int k = 0; k < kAppendRoutineCount; ++k) any = any || st_.learned.appendUsed[k];
    if (!any) return true;
    st_.internalCompile = true;
    st_.currentLine = st_.lineCount() + 1;
    emitComment(";crypt_start");
    int counter = 1;
    for (int k = 0; k < kAppendRoutineCount; ++k) {
        if (!st_.learned.appendUsed[k]) continue;
        if (!compileAppendRoutine(k, counter)) return false;
    }
    emitComment(";crypt_stop");
    st_.internalCompile = false;
    return true;
}

bool Compiler::compileAppendRoutine(int index, int& counter) {
    const AppendRoutine& routine = kAppendRoutines[index];
    const std::string name = routine.name;
    const std::string savedScope = st_.currentScope;
    st_.currentScope = name;
    const std::size_t symbolRows = st_.symbols.size(), constantRows = st_.constants.size();
    emitComment("; APPEND CODE BEGIN: " + name);
    // Declaration round: variables at their places in the block, constants, labels.
    std::vector<std::string> lines;
    std::unordered_map<std::string, std::string> labels;
    int next = st_.appendBase;
    for (const std::string& raw : routineLines(routine.text)) {
        std::string text = TrimText(cleanBasicLine(raw));
        internalLine_ = text;
        if (!extractStringsOf(text)) return false;
        lines.push_back(text);
        std::string list, typeName;
        if (dimParts(text, list, typeName)) {
            const TypeCode type = typeOfName(typeName);
            int bytes = typeSize(type);
            std::string plain = list;
            const std::size_t bracket = list.find('[');
            if (bracket != std::string::npos) {
                bytes = std::stoi(list.substr(bracket + 1)) + 1;
                plain = list.substr(0, bracket);
            }
            st_.addSymbol(
                {plain, next - st_.ixBase(), type == kTypeString ? bytes : 0, type, name, 0});
            next += bytes;
            continue;
        }
        const bool label =
            !text.empty() && text.back() == ':' && text.find(' ') == std::string::npos;
        if (label) {
            const std::string digits = "000" + std::to_string(counter++);
            labels[text.substr(0, text.size() - 1)] =
                "_append_lab_" + digits.substr(digits.size() - 4);
        }
    }
    const auto entry = labels.find(routine.entry);
    if (entry == labels.end()) return fail(appendError(name));
    st_.appendLabels[index] = entry->second;
    // Code round.
    for (const std::string& text : lines) {
        internalLine_ = text;
        statementLine_ = text;
        if (options_.printAppendLines) emitComment("; append code: " + restorePlaceholders(text));
        Tokens t;
        statementTokens(text, t);
        std::string list, typeName;
        if (text.empty() || dimParts(text, list, typeName) || t[1] == "Const") continue;
        if (!text.empty() && text.back() == ':' && t[2].empty()) {
            emitLabel(labels[text.substr(0, text.size() - 1)]);
            continue;
        }
        if ((t[1] == "Goto" || t[1] == "Gosub") && t[3].empty()) {
            const auto target = labels.find(t[2]);
            if (target == labels.end()) return fail(appendError(name));
            emitCode((t[1] == "Goto" ? "JP " : "CALL ") + target->second);
            continue;
        }
        if (t[1] == "Return" && t[2].empty()) {
            emitCode("RET");
            continue;
        }
        if (!dispatch(text) || !endOfStatement()) return false;
    }
    // The routine's names go; its temporaries stay as global rows.
    std::vector<SymbolRow> temporaries;
    for (std::size_t row = symbolRows; row < st_.symbols.size(); ++row) {
        if (st_.symbols[row].name.rfind("corvalent_temp", 0) == 0) {
            temporaries.push_back(st_.symbols[row]);
        }
    }
    while (st_.symbols.size() > symbolRows) st_.popSymbol();
    while (st_.constants.size() > constantRows) {
        std::vector<int>& rows = st_.constantRows[st_.constants.back().name];
        if (!rows.empty()) rows.pop_back();
        st_.constants.pop_back();
    }
    for (TempRow& temp : st_.temps) {
        for (SymbolRow& s : temporaries) {
            if (s.name != temp.name) continue;
            s.scope = "global";
            temp.symbolRow = static_cast<int>(st_.symbols.size());
            st_.addSymbol(s);
        }
    }
    st_.currentScope = savedScope;
    emitComment("; APPEND CODE END.");
    return true;
}

std::string Compiler::appendError(const std::string& name) const {
    return internalError("Append code '" + name + "' problem.");
}

// A call of an append routine from the user's code: the argument handed over
// in the block, the routine called, the result taken from the block.
bool Compiler::appendCall(Expression& e, const std::string& name, const std::string& argument) {
    const bool first = st_.firstRun;
    auto use = [&](int k) {
        if (first) st_.learned.appendUsed[k] = true;
        return st_.appendLabels[k];
    };
    const std::string base = codeHex4(st_.appendBase);
    if (name == "HexStr") {
        const Operand w = operand(argument);
        if (!w.variable && !w.constant) return fail("Variable not declared: '" + argument + "'.");
        if (!loadOperand(kTypeUInteger, "HL", w)) return false;
        emitCode("LD (" + base + "),HL");
        emitCode("CALL " + use(kAppendHexStr));
        const std::string dest = destination(e, kTypeString, 4);
        if (dest.empty()) return false;
        stringDestination(operand(dest));
        emitCode("LD DE," + codeHex4(st_.appendBase + 2));
        callString("SG10");
        e.stack.push_back(dest);
        return true;
    }
    if (name != "DecFromHex" && st_.stringMaxLength < 10) {
        return fail("STRING_MAX_LENGTH parameter should be at least 10 to use " + name +
                    " function.");
    }
    const std::string s = stringVariable(argument);
    if (s.empty()) return false;
    struct Conversion {
        const char* name;
        int routine, length, offset;
        TypeCode result;
    };
    static const Conversion kConversions[] = {
        {"DecFromHex", kAppendDecFromHex, 4, 2, kTypeUInteger},
        {"StrValB", kAppendStrValW, 5, 2, kTypeUShort},
        {"StrValW", kAppendStrValW, 5, 2, kTypeUInteger},
        {"StrValL", kAppendStrValL, 10, 4, kTypeULong},
        {"StrValS", kAppendStrValS, 9, 4, kTypeSingle},
    };
    for (const Conversion& c : kConversions) {
        if (name != c.name) continue;
        emitCode("LD B," + codeHex2(c.length));
        emitCode("LD HL," + codeHex4(st_.appendBase + c.offset));
        stringAddress(operand(s), "DE");
        callString("SG10");
        emitCode("CALL " + use(c.routine));
        const std::string dest = destination(e, c.result);
        if (dest.empty()) return false;
        const Operand d = operand(dest);
        const int width = typeSize(c.result);
        if (width == 4) {
            emitCode("LD DE,(" + base + ")");
            emitCode("LD BC,(" + codeHex4(st_.appendBase + 2) + ")");
            if (!store(d.type, d.address, c.result, "BC:DE")) return false;
        } else {
            emitCode("LD HL,(" + base + ")");
            if (!store(d.type, d.address, kTypeUInteger, width == 1 ? "L" : "HL")) return false;
        }
        e.stack.push_back(dest);
        return true;
    }
    return fail(internalError("Unknown append routine " + name + "."));
}

}  // namespace mb
