// The keyword table of the BASIC language: every word with its spelling, whether
// user names may not take it, and its colour class for the editor. The table is
// built once, on first use, and the building is logged for the compiler's
// diagnostic file.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mb {

// How the editor colours a keyword.
enum class KeywordClass {
    Declaration,   // Dim, As, Const, Sub, Proc, Function, ByVal...
    Type,          // Byte, Integer, Single, String...
    Statement,     // If, For, Goto, Print, Poke...
    Function,      // Asc, Peek, Sqr, CInteger, VarAddr...
    Operator,      // And, Or, Not, Xor, Mod, ShiftLeft, ShiftRight
    Directive,     // #define, #sim, Include, ASM, RAMEND...
    Constant,      // True, False, CrLf, Cr, Lf, Qt
    RegisterPart,  // LB, HB, 3B, 4B, LW, HW
};

struct Keyword {
    std::string name;      // the spelling the editor's case control writes
    bool reservedKeyword;  // refused as a user element name, in any case
    KeywordClass colourClass;
};

class KeywordTable {
  public:
    // Adds a keyword unless one equal to it in any case is present; logs
    // "keyword (main): " + name or "keyword blocked (main): " + name.
    bool add(std::string_view name, bool reserved, KeywordClass colourClass);

    // The row whose name equals `name` in any case, or nullptr.
    const Keyword* find(std::string_view name) const;
    const std::vector<Keyword>& rows() const { return rows_; }
    // The log lines, each ended by CR LF.
    const std::string& loadLog() const { return log_; }

  private:
    std::vector<Keyword> rows_;
    std::unordered_map<std::string, size_t> index_;  // upper-case name to row
    std::string log_;
};

// The language's table, built on first use.
const KeywordTable& keywordTable();

// Whether the word is a keyword, compared in any case.
bool isKeyword(std::string_view name);

// The table's spelling of the reserved keyword equal to `name` in any case, or
// an empty text. True and False are keywords but not reserved.
std::string reservedKeywordMatching(std::string_view name);

// "Reserved system keyword '" + keyword + "' used for user element name."
std::string reservedKeywordMessage(std::string_view keyword);

// The building log of the table, for the "_comp_log.txt" file.
std::string keywordLoadLog();

}  // namespace mb
