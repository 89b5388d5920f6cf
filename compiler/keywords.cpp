#include "compiler/keywords.h"

namespace mb {

namespace {

std::string upper(std::string_view text) {
    std::string u(text);
    for (char& c : u)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return u;
}

struct Entry {
    const char* name;
    KeywordClass colourClass;
};

using K = KeywordClass;

// In the order of loading, which is the order of the log.
constexpr Entry kKeywords[] = {
    {"Dim", K::Declaration},
    {"As", K::Declaration},
    {"Boolean", K::Type},
    {"Bit", K::Type},
    {"Short", K::Type},
    {"Integer", K::Type},
    {"Long", K::Type},
    {"Single", K::Type},
    {"Byte", K::Type},
    {"Word", K::Type},
    {"UShort", K::Type},
    {"UInteger", K::Type},
    {"ULong", K::Type},
    {"String", K::Type},
    {"StrPtr", K::Type},
    {"SetStrPtr", K::Statement},
    {"CShort", K::Function},
    {"CInteger", K::Function},
    {"CLong", K::Function},
    {"CSingle", K::Function},
    {"CUShort", K::Function},
    {"CUInteger", K::Function},
    {"CULong", K::Function},
    {"VarAddr", K::Function},
    {"True", K::Constant},
    {"False", K::Constant},
    {"LB", K::RegisterPart},
    {"HB", K::RegisterPart},
    {"3B", K::RegisterPart},
    {"4B", K::RegisterPart},
    {"LW", K::RegisterPart},
    {"HW", K::RegisterPart},
    {"Mod", K::Operator},
    {"Include", K::Directive},
    {"IncludeASM", K::Directive},
    {"Const", K::Declaration},
    {"Define", K::Directive},
    {"#define", K::Directive},
    {"#sim", K::Directive},
    {"#simio", K::Directive},
    {"ASM", K::Directive},
    {"ShiftLeft", K::Operator},
    {"ShiftRight", K::Operator},
    {"Pointer", K::Function},
    {"Not", K::Operator},
    {"Or", K::Operator},
    {"And", K::Operator},
    {"Xor", K::Operator},
    {"While", K::Statement},
    {"Wend", K::Statement},
    {"If", K::Statement},
    {"Then", K::Statement},
    {"Else", K::Statement},
    {"Endif", K::Statement},
    {"Select", K::Statement},
    {"Case", K::Statement},
    {"EndSelect", K::Statement},
    {"For", K::Statement},
    {"To", K::Statement},
    {"Step", K::Statement},
    {"Next", K::Statement},
    {"CFor", K::Statement},
    {"CNext", K::Statement},
    {"Goto", K::Statement},
    {"Sub", K::Declaration},
    {"Gosub", K::Statement},
    {"Return", K::Statement},
    {"End", K::Statement},
    {"Proc", K::Declaration},
    {"Function", K::Declaration},
    {"ReturnValue", K::Statement},
    {"Exit", K::Statement},
    {"Call", K::Statement},
    {"ByVal", K::Declaration},
    {"ByRef", K::Declaration},
    {"ByRefOut", K::Declaration},
    {"Print", K::Statement},
    {"CrLf", K::Constant},
    {"Cr", K::Constant},
    {"Lf", K::Constant},
    {"Qt", K::Constant},
    {"STRING_MAX_LENGTH", K::Directive},
    {"SINGLE_DECIMAL_PLACES", K::Directive},
    {"PRINT_SINGLE_DIGITS", K::Directive},
    {"Asc", K::Function},
    {"Chr", K::Function},
    {"Len", K::Function},
    {"FillStr", K::Function},
    {"InStr", K::Function},
    {"LeftStr", K::Function},
    {"RightStr", K::Function},
    {"MidStr", K::Function},
    {"LTrim", K::Function},
    {"RTrim", K::Function},
    {"StrValB", K::Function},
    {"StrValW", K::Function},
    {"StrValL", K::Function},
    {"StrValS", K::Function},
    {"InStrRev", K::Function},
    {"LTrimChr", K::Function},
    {"RTrimChr", K::Function},
    {"CountChr", K::Function},
    {"ReplaceChr", K::Function},
    {"LCase", K::Function},
    {"UCase", K::Function},
    {"HexStr", K::Function},
    {"DecFromHex", K::Function},
    {"ReverseStr", K::Function},
    {"LShiftStr", K::Function},
    {"RShiftStr", K::Function},
    {"LRotateStr", K::Function},
    {"RRotateStr", K::Function},
    {"Peek", K::Function},
    {"Poke", K::Statement},
    {"Get", K::Function},
    {"Put", K::Statement},
    {"SetBit", K::Statement},
    {"ResetBit", K::Statement},
    {"InvertBit", K::Statement},
    {"TestBit", K::Function},
    {"MakeBit", K::Statement},
    {"Sqr", K::Function},
    {"Ln", K::Function},
    {"Log", K::Function},
    {"Exp", K::Function},
    {"Sin", K::Function},
    {"Cos", K::Function},
    {"Tan", K::Function},
    {"ROMEND", K::Directive},
    {"RAMSTART", K::Directive},
    {"RAMEND", K::Directive},
};

KeywordTable buildTable() {
    KeywordTable table;
    for (const Entry& e : kKeywords) {
        const std::string_view name = e.name;
        // True and False stay usable in their constant meaning.
        table.add(name, name != "True" && name != "False", e.colourClass);
    }
    return table;
}

}  // namespace

bool KeywordTable::add(std::string_view name, bool reserved, KeywordClass colourClass) {
    const auto [it, added] = index_.emplace(upper(name), rows_.size());
    if (!added) {
        log_ += "keyword blocked (main): " + std::string(name) + "\r\n";
        return false;
    }
    rows_.push_back({std::string(name), reserved, colourClass});
    log_ += "keyword (main): " + std::string(name) + "\r\n";
    return true;
}

const Keyword* KeywordTable::find(std::string_view name) const {
    const auto it = index_.find(upper(name));
    return it == index_.end() ? nullptr : &rows_[it->second];
}

const KeywordTable& keywordTable() {
    static const KeywordTable table = buildTable();
    return table;
}

bool isKeyword(std::string_view name) {
    return keywordTable().find(name) != nullptr;
}

std::string reservedKeywordMatching(std::string_view name) {
    const Keyword* k = keywordTable().find(name);
    return k && k->reservedKeyword ? k->name : std::string();
}

std::string reservedKeywordMessage(std::string_view keyword) {
    return "Reserved system keyword '" + std::string(keyword) + "' used for user element name.";
}

std::string keywordLoadLog() {
    return keywordTable().loadLog();
}

}  // namespace mb
