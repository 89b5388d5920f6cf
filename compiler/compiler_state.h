// The tables of one compile. They are rebuilt at each run and stay readable
// after it, for the reports, the tests and the windows.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "compiler/type_codes.h"
#include "runtime/runtime_needs.h"

namespace mb {

// One source line (main program first, then the included files) as the stages
// see it. The member names follow the columns of the compiler's line log.
struct BasicLine {
    std::string xlinijafull;      // as written, leading blanks and tabs removed
    std::string xlinija;          // cleaned statement: no comment, placeholders for strings
    std::string xlinelabel2;      // the user's label of the line
    std::string xlinelabel1;      // the generated label standing for it
    std::string xlinelabelscope;  // scope recorded by the declaration pass
};

struct SymbolRow {
    std::string name;  // without [n]
    int address = 0;   // offset from the IX base, negative
    int size = 0;      // 0 scalar, element count of an array, byte size of a String
    TypeCode type = kTypeNone;
    std::string scope;
    int used = 0;  // first-run use count, capped at 255
};

struct ConstantRow {
    std::string name, value, scope;
    bool isString = false;
    bool isSingle = false;
    long long code = 0;  // a number as the code uses it: two's complement, Single bytes
};

struct SubRow {
    std::string name, label;
    bool used = false;
};

struct RoutineArgument {
    std::string name;  // may carry [n]
    TypeCode type = kTypeNone;
    int mode = 0;  // 0 ByVal, 1 ByRef, 2 ByRefOut
};

// A Proc, or a Function when resultType is set.
struct RoutineRow {
    std::string name;  // may carry [n] for a String function
    std::string label;
    std::vector<RoutineArgument> arguments;
    TypeCode resultType = kTypeNone;
    std::string resultTypeName;
    bool used = false;
};

struct NameRow {
    std::string name, scope;
};

// A Dim name waiting for its address. An empty name keeps the place of a
// declaration that is not compiled, so that row numbers agree between runs.
struct DeclarationRow {
    std::string declprepareime;  // name with any (n) or [n]
    std::string declpreparetip;  // type name
    std::string declpreparescp;  // scope
    int declpreparebrj = 0;      // line number
    int symbolRow = 0;           // row made when allocated, 0 before
    int score = 0;               // allocation priority in the second run
};

struct TempRow {
    std::string name;
    int address = 0;
    TypeCode type = kTypeNone;
    int symbolRow = 0;
    int length = 0;  // strings
    int state = 0;   // 0 free, 1 in use, 2 held by a post-operation
    // The scope whose statements use the row. Routines keep rows of their own,
    // so that a call inside an expression leaves the caller's values alone.
    std::string scope;
};

// A row of the User Variables report.
struct UserVariableRow {
    std::string name, typeWord, address, scope;
};

struct IncludeEntry {
    std::string name;  // as resolved
    std::string text;  // banner lines and the file
    int endLine = 0;
};

// The append routines, in the order in which they are compiled.
enum AppendRoutineIndex : int {
    kAppendHexStr,
    kAppendDecFromHex,
    kAppendStrValW,
    kAppendStrValL,
    kAppendStrValS,
    kAppendRoutineCount
};

// What the first run learns and the second run uses.
struct FirstRunKnowledge {
    std::array<bool, kAppendRoutineCount> appendUsed{};
    RuntimeNeeds needs;
    bool longArithmetic = false, singleArithmetic = false, strings = false, stringPointers = false;
    std::vector<bool> subUsed, procUsed, functionUsed;
    std::vector<int> declarationUsed;                 // per declaration queue row
    std::vector<std::vector<int>> stringTempLengths;  // per statement, sorted
};

struct CompilerState {
    bool firstRun = true;  // CompileRun: first gathers, second writes
    bool compileInProgress = false;
    int errorLine = 0;
    int errorIncludeLine = 0;
    std::string errorFile;     // the include that holds the error, or ""
    std::string errorMessage;  // the message without its location prefix
    std::string warningText, lastWarning;
    std::vector<std::string> outputLines;
    int outputLineCount = 0;
    std::string outputText;
    int currentLine = 0;
    std::string currentScope = "global";
    bool mainEnded = false, inSubroutine = false, inProc = false, inFunction = false;
    bool internalCompile = false;

    std::vector<BasicLine> lines = std::vector<BasicLine>(1);                // 1-based
    std::vector<std::string> stringConstants = std::vector<std::string>(1);  // 1-based
    std::vector<IncludeEntry> includes;
    int mainLineCount = 0;

    std::vector<SymbolRow> symbols = std::vector<SymbolRow>(1);        // 1-based
    std::vector<ConstantRow> constants = std::vector<ConstantRow>(1);  // 1-based
    std::vector<SubRow> subs;
    std::vector<RoutineRow> procs, functions;
    std::vector<NameRow> names;
    std::vector<DeclarationRow> declarations;
    std::vector<TempRow> temps;  // row 0 is the assignment target
    int firstTemp = 1;
    std::vector<std::string> structureStack;
    // Rows of the open flow structures.
    struct WhileRow {
        std::string start, end;
    };
    struct ForRow {
        std::string exit, variable, step, start;
    };
    struct CForRow {
        std::string variable, loop, exit;
    };
    struct IfRow {
        std::string falseLabel, endLabel;
        bool elseSeen = false;
    };
    struct SelectRow {
        std::string selector;
        int branches = 0;
    };
    std::vector<WhileRow> whileStack;
    std::vector<ForRow> forStack;
    std::vector<CForRow> cforStack;
    std::vector<IfRow> ifStack;
    std::vector<SelectRow> selectStack;
    // Constant bounds of the innermost For, for the array range checks.
    std::string forVariable;
    long long forLow = 0, forHigh = 0;
    bool forBoundsKnown = false;
    std::vector<std::uint8_t> memoryMap;  // 65536 cells, 1 taken
    int totalRam = 0;
    int labelCounter = 0;

    // Directive values.
    int romEnd = 0x3FFF, ramStart = 0x4000, ramEnd = 0xFFFF;
    int stringMaxLength = 16, singleDigits = 3;
    int ixBase() const { return ramEnd - 255; }

    FirstRunKnowledge learned;
    int stackPointerLine = -1;            // the LD SP line to patch
    std::vector<int> currentStringTemps;  // lengths asked for by this statement
    std::vector<int> optimizedStringTemps;
    std::vector<UserVariableRow> userVariables;
    int lastSystemAddress = 0;
    int appendBase = 0;  // the block the append routines' variables overlay
    // Entry labels of the append routines: the second run calls what the first compiled.
    std::array<std::string, kAppendRoutineCount> appendLabels{};

    // Rows by name, so that lookups do not walk the tables.
    std::unordered_map<std::string, std::vector<int>> symbolRows, constantRows;
    std::unordered_set<std::string> scopedNames;  // scope + TAB + name

    int lineCount() const { return static_cast<int>(lines.size()) - 1; }
    void addSymbol(SymbolRow row) {
        symbolRows[row.name].push_back(static_cast<int>(symbols.size()));
        symbols.push_back(std::move(row));
    }
    void popSymbol() {
        std::vector<int>& rows = symbolRows[symbols.back().name];
        if (!rows.empty()) rows.pop_back();
        symbols.pop_back();
    }
    void addConstant(ConstantRow row) {
        constantRows[row.name].push_back(static_cast<int>(constants.size()));
        constants.push_back(std::move(row));
    }
};

}  // namespace mb
