// Strings: assignment, concatenation, comparison, the string builtins and
// string pointers, on top of the string routines of the runtime library. A
// string is a run of characters ending in 0; a destination takes at most its
// declared length, handed to the routines in B.
#include "compiler/basic_numbers.h"
#include "compiler/compiler.h"
#include "compiler/output_text.h"
#include "core/numtext.h"

namespace mb {

namespace {

// The characters a number of the type can print.
int printedLength(TypeCode type) {
    switch (type) {
        case kTypeBit: return 1;
        case kTypeShort: return 4;
        case kTypeInteger: return 6;
        case kTypeLong: return 11;
        case kTypeSingle:
        case kTypeULong: return 10;
        case kTypeUShort: return 3;
        case kTypeUInteger: return 5;
        default: return 0;
    }
}

}  // namespace

// The characters a string operand holds at most.
int Compiler::stringCapacity(const Operand& o) const {
    if (o.stringConstant) return static_cast<int>(stringConstantText(o.text).size());
    if (o.variable && o.type == kTypeString) {
        const int row = findVariable(o.text.substr(0, o.text.find('.')));
        if (row > 0 && st_.symbols[row].size > 0) return st_.symbols[row].size - 1;
    }
    return st_.stringMaxLength;
}

std::string Compiler::stringConstantText(const std::string& token) const {
    const int n = stringConstantAt(token);
    if (n > 0 && n < 1000000) return st_.stringConstants[n];
    if (n == 1000000) {
        const int c = findConstant(token);
        if (c > 0) return st_.constants[c].value;
        if (token.size() >= 2) return token.substr(1, token.size() - 2);
    }
    return "";
}

// pair := the address of the characters of a String or StrPtr variable.
void Compiler::stringAddress(const Operand& o, const std::string& pair) {
    if (o.type == kTypeStrPtr) {
        emitCode("LD " + pair + ",(" + codeHex4(absoluteAddress(o.address)) + ")");
    } else {
        emitCode("LD " + pair + "," + codeHex4(absoluteAddress(o.address)));
    }
}

// B := the capacity of a destination, HL := its address.
void Compiler::stringDestination(const Operand& d) {
    emitCode("LD B," + codeHex2(d.type == kTypeStrPtr ? st_.stringMaxLength : stringCapacity(d)));
    stringAddress(d, "HL");
}

void Compiler::needString(const char* entry) {
    st_.learned.needs.SetStringEntry(entry);
    needRuntime(kNeedStrings);
}

void Compiler::callString(const char* entry) {
    emitCode(std::string("CALL ") + entry);
    needString(entry);
}

// C := the length of a string operand, DE := its terminator.
void Compiler::measureString(const Operand& o) {
    emitCode("LD B,00H");
    stringAddress(o, "DE");
    callString("SG05");
}

// A String or StrPtr variable that holds the value of text: the variable
// itself, or a temporary filled with a string constant or a number's text.
std::string Compiler::stringVariable(const std::string& text) {
    const Operand o = operand(text);
    if (o.variable && (o.type == kTypeString || o.type == kTypeStrPtr)) return text;
    if (!o.variable && !o.constant && !(text.size() > 1 && text[0] == '#')) {
        fail("Variable not declared: '" + text + "'.");
        return "";
    }
    int length = st_.stringMaxLength;
    if (o.stringConstant) {
        length = static_cast<int>(stringConstantText(text).size());
    } else {
        const Operand n = operand(text[0] == '#' ? text.substr(1) : text);
        length = printedLength(n.constant ? commonType({n}) : n.type);
    }
    const std::string temp = newTemp(kTypeString, std::max(length, 1));
    if (temp.empty() || !emitStringAssign(temp, text, "", "")) return "";
    return temp;
}

bool Compiler::emitStringAssign(const std::string& destText, const std::string& sourceText,
                                const std::string& destScope, const std::string& sourceScope) {
    const Operand d = operand(destText, destScope);
    if (!d.variable || (d.type != kTypeString && d.type != kTypeStrPtr)) {
        return fail("String data type variable/argument expected here: '" + destText + "'.");
    }
    std::string source = sourceText;
    const bool printForm = source.size() > 1 && source[0] == '#' && source.back() != ']';
    if (printForm) source = source.substr(1);
    const Operand s = operand(source, sourceScope);
    if (s.stringConstant && !printForm) {
        const std::string value = stringConstantText(source);
        stringDestination(d);
        const int capacity = d.type == kTypeStrPtr ? st_.stringMaxLength : stringCapacity(d);
        if (static_cast<int>(value.size()) > capacity) {
            return fail(
                "String constant can not fit in the string variable.\r\nMaximal number of "
                "characters in this string variable is: " +
                std::to_string(capacity) +
                ".\r\nUse #define directive to change STRING_MAX_LENGTH parameter value. "
                "\r\nOr, use the correct [] suffix on string variable declaration.");
        }
        if (value.empty()) {
            emitCode("XOR A");
            emitCode("LD (HL),A");
            return true;
        }
        for (unsigned char c : value) {
            emitCode("LD A," + codeHex2(c));
            emitCode("CALL SG01");
        }
        needRuntime(kNeedStrings);
        return true;
    }
    if (s.variable && (s.type == kTypeString || s.type == kTypeStrPtr) && !printForm) {
        if (d.type == kTypeStrPtr && s.type == kTypeStrPtr) {
            // A pointer to a pointer: the address is copied.
            emitCode("LD HL,(" + codeHex4(absoluteAddress(s.address)) + ")");
            emitCode("LD (" + codeHex4(absoluteAddress(d.address)) + "),HL");
            return true;
        }
        if (s.address == d.address && s.type == d.type) return true;
        stringAddress(s, "DE");
        stringDestination(d);
        callString("SG10");
        return true;
    }
    if (!s.variable && !s.constant) return fail("Variable not declared: '" + source + "'.");
    // A number: its decimal text, through the print buffer.
    if (!printNumber(s)) return false;
    stringDestination(d);
    emitCode("LD DE,PRINT_STR");
    callString("SG10");
    return true;
}

bool Compiler::concatenate(Expression& e, const std::string& leftText,
                           const std::string& rightText) {
    const std::string left = stringVariable(leftText);
    if (left.empty()) return false;
    const std::string right = stringVariable(rightText);
    if (right.empty()) return false;
    const Operand l = operand(left), r = operand(right);
    const int length = std::min(stringCapacity(l) + stringCapacity(r), st_.stringMaxLength);
    std::string dest = destination(e, kTypeString, length);
    if (dest.empty()) return false;
    // A destination that is also the right part is built in a temporary first.
    const std::string target = dest == right ? newTemp(kTypeString, length) : dest;
    if (target.empty()) return false;
    const Operand d = operand(target);
    stringDestination(d);
    stringAddress(l, "DE");
    callString("SG10");
    const std::string label = newLabel();
    emitCode("LD A,B");
    emitCode("OR B");
    emitCode("JR Z," + label);
    emitCode("DEC HL");
    stringAddress(r, "DE");
    emitCode("CALL SG11");  // SG11 lives in the SG10 block
    emitLabel(label);
    if (target != dest && !emitStringAssign(dest, target, "", "")) return false;
    freeTemp(left);
    freeTemp(right);
    e.stack.push_back(dest);
    return true;
}

bool Compiler::stringComparison(const std::string& leftText, const std::string& op,
                                const std::string& rightText, const std::string& falseLabel) {
    if (op != "==" && op != "!=") {
        return fail("Comparison operator not allowed for String variables.");
    }
    const std::string left = stringVariable(leftText);
    if (left.empty()) return false;
    const std::string right = stringVariable(rightText);
    if (right.empty()) return false;
    const Operand l = operand(left), r = operand(right);
    emitCode("LD B," + codeHex2(std::max(stringCapacity(l), stringCapacity(r)) + 1));
    stringAddress(l, "HL");
    stringAddress(r, "DE");
    callString("SG50");
    emitCode((op == "==" ? "JP NZ," : "JP Z,") + falseLabel);
    return true;
}

// ---------------------------------------------------------------------------
// Builtins

namespace {

struct StringBuiltin {
    const char* name;
    int arguments;
};

constexpr StringBuiltin kStringBuiltins[] = {
    {"Asc", 1},        {"Chr", 1},        {"Len", 1},       {"FillStr", 2},   {"InStr", 2},
    {"InStrRev", 2},   {"CountChr", 2},   {"LeftStr", 2},   {"RightStr", 2},  {"MidStr", 3},
    {"LTrim", 1},      {"LTrimChr", 2},   {"RTrim", 1},     {"RTrimChr", 2},  {"LCase", 1},
    {"UCase", 1},      {"ReverseStr", 1}, {"LShiftStr", 2}, {"RShiftStr", 2}, {"LRotateStr", 1},
    {"RRotateStr", 1}, {"ReplaceChr", 3},
};

std::string characterExpected(const std::string& text) {
    return "Any integer data type variable or UShort constant expected here: '" + text + "'.";
}

}  // namespace

int stringBuiltinArguments(const std::string& name) {
    for (const StringBuiltin& b : kStringBuiltins) {
        if (name == b.name) return b.arguments;
    }
    return -1;
}

// A character argument into a REG_ cell: an integer variable or a UShort constant.
bool Compiler::characterArgument(const std::string& text, const char* cell) {
    const Operand o = operand(text);
    if (o.constant && !o.stringConstant) {
        const std::optional<uint32_t> value = o.text[0] == '-' ? std::nullopt : readNumber(o.text);
        if (!value || *value > 255) {
            return fail(characterExpected(text));
        }
        emitCode("LD A," + codeHex2(static_cast<int>(*value)));
    } else if (o.stringConstant && stringConstantText(text).size() == 1) {
        emitCode("LD A," + codeHex2(static_cast<unsigned char>(stringConstantText(text)[0])));
    } else if (o.variable && isIntegerType(o.type)) {
        if (!load(kTypeUShort, "A", o.type, o.text, o.address)) return false;
    } else {
        return fail(characterExpected(text));
    }
    emitCode(std::string("LD (") + cell + "),A");
    return true;
}

bool Compiler::stringBuiltin(Expression& e, const std::string& name,
                             const std::vector<std::string>& args) {
    // The string argument, first for all but Chr and FillStr.
    std::string s;
    if (name != "Chr" && name != "FillStr") {
        s = stringVariable(args[0]);
        if (s.empty()) return false;
    }
    const Operand so = s.empty() ? Operand{} : operand(s);
    const int sourceLength = s.empty() ? st_.stringMaxLength : stringCapacity(so);
    auto numberResult = [&](const char* reg) {
        const std::string dest = destination(e, kTypeUShort);
        if (dest.empty()) return false;
        const Operand d = operand(dest);
        if (!store(d.type, d.address, kTypeUShort, reg)) return false;
        e.stack.push_back(dest);
        return true;
    };
    if (name == "Asc") {
        stringAddress(so, "HL");
        emitCode("CALL SG03");
        needRuntime(kNeedStrings);
        emitCode("LD A,B");
        return numberResult("A");
    }
    if (name == "Len") {
        measureString(so);
        emitCode("LD A,C");
        return numberResult("A");
    }
    if (name == "InStr" || name == "InStrRev" || name == "CountChr") {
        if (!characterArgument(args[1], "REG_R0")) return false;
        stringAddress(so, "DE");
        const char* entry = name == "InStr" ? "SG65" : name == "InStrRev" ? "SG60" : "SG75";
        callString(entry);
        emitCode("LD A,C");
        return numberResult("A");
    }
    // String results.
    int length = sourceLength;
    if (name == "Chr") length = 1;
    if (name == "FillStr") {
        const Operand n = operand(args[1]);
        const std::optional<uint32_t> count = n.constant ? readNumber(n.text) : std::nullopt;
        length = count ? static_cast<int>(std::min<uint32_t>(*count, st_.stringMaxLength))
                       : st_.stringMaxLength;
    }
    if (name == "LeftStr" || name == "RightStr" || name == "MidStr") {
        const Operand n = operand(args[name == "MidStr" ? 2 : 1]);
        const std::optional<uint32_t> count = n.constant ? readNumber(n.text) : std::nullopt;
        if (count) length = static_cast<int>(std::min<uint32_t>(*count, sourceLength));
    }
    const std::string dest = destination(e, kTypeString, std::max(length, 1));
    if (dest.empty()) return false;
    const Operand d = operand(dest);
    auto finish = [&]() {
        if (!s.empty() && s != args[0]) freeTemp(s);
        e.stack.push_back(dest);
        return true;
    };
    if (name == "Chr") {
        const Operand c = operand(args[0]);
        if (!(c.variable && isIntegerType(c.type)) && !(c.constant && !c.stringConstant)) {
            return fail(characterExpected(args[0]));
        }
        stringAddress(d, "HL");
        if (!loadOperand(kTypeUShort, "A", c)) return false;
        emitCode("CALL SG01");
        needRuntime(kNeedStrings);
        return finish();
    }
    if (name == "FillStr") {
        if (!characterArgument(args[0], "REG_R0")) return false;
        const Operand n = operand(args[1]);
        if (!loadOperand(kTypeUShort, "C", n)) return false;
        stringDestination(d);
        callString("SG70");
        return finish();
    }
    if (name == "LeftStr") {
        const Operand n = operand(args[1]);
        if (!loadOperand(kTypeUShort, "C", n)) return false;
        stringDestination(d);
        stringAddress(so, "DE");
        callString("SG20");
        return finish();
    }
    if (name == "RightStr" || name == "MidStr") {
        if (!characterArgument(args[1], "REG_R0")) return false;
        if (name == "MidStr" && !characterArgument(args[2], "REG_R1")) return false;
        measureString(so);
        stringDestination(d);
        callString(name == "RightStr" ? "SG25" : "SG30");
        return finish();
    }
    if (name == "LTrim" || name == "LTrimChr" || name == "RTrim" || name == "RTrimChr") {
        if (name.size() == 5) {
            emitCode("LD A,20H");
            emitCode("LD (REG_R0),A");
        } else if (!characterArgument(args[1], "REG_R0")) {
            return false;
        }
        stringAddress(so, "DE");
        const bool left = name[0] == 'L';
        callString(left ? "SG35" : "SG40");
        stringDestination(d);
        callString(left ? "SG10" : "SG20");
        return finish();
    }
    if (name == "LCase" || name == "UCase" || name == "ReplaceChr") {
        if (name == "ReplaceChr" &&
            (!characterArgument(args[1], "REG_R0") || !characterArgument(args[2], "REG_R1"))) {
            return false;
        }
        stringDestination(d);
        stringAddress(so, "DE");
        callString(name == "LCase" ? "SG79" : name == "UCase" ? "SG81" : "SG77");
        return finish();
    }
    // Reversal, shifts and rotations work behind the length count.
    if ((name == "LShiftStr" || name == "RShiftStr") && !characterArgument(args[1], "REG_R0")) {
        return false;
    }
    measureString(so);
    stringDestination(d);
    callString(name == "ReverseStr"   ? "SG83"
               : name == "LShiftStr"  ? "SG86"
               : name == "RShiftStr"  ? "SG89"
               : name == "LRotateStr" ? "SG92"
                                      : "SG95");
    return finish();
}

bool Compiler::setStrPtrStatement(const std::string& pointer, const std::string& value) {
    const Operand p = operand(pointer);
    if (!p.variable || p.type != kTypeStrPtr) {
        return fail("String pointer variable (StrPtr type) expected here: '" + pointer + "'.");
    }
    const Operand s = operand(value);
    if (s.variable && s.type == kTypeString) {
        emitCode("LD HL," + codeHex4(absoluteAddress(s.address)));
        emitCode("LD (" + codeHex4(absoluteAddress(p.address)) + "),HL");
        return true;
    }
    if ((s.variable && (s.type == kTypeStrPtr || isIntegerType(s.type))) || s.constant) {
        if (!loadOperand(kTypeUInteger, "HL", s)) return false;
        emitCode("LD (" + codeHex4(absoluteAddress(p.address)) + "),HL");
        return true;
    }
    return fail("String data type variable/argument expected here: '" + value + "'.");
}

}  // namespace mb
