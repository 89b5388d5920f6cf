// The BASIC compiler: the text of a .bas program to one Z80 assembler source,
// <name>.asm beside it, in two complete runs over the text. The first run
// learns which variables, routines and runtime groups are used; the second
// lays the variables out and writes the output.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "assembler/source_text.h"
#include "compiler/compiler_state.h"
#include "compiler/type_codes.h"

namespace mb {

class SettingsStore;

// Where a compile reports. Every method may do nothing, so that the compiler
// runs without any window.
class CompileSink {
  public:
    virtual ~CompileSink() = default;
    // A compile error, with its location prefix; the compile has ended.
    virtual void showError(const std::string& /*text*/) {}
    // A progress text between stages ("Compiling in progress...   5%").
    virtual void setProgressText(const std::string& /*text*/) {}
    // A plain note, such as the execution time.
    virtual void showMessage(const std::string& /*text*/) {}
    // The error lies in an included file: the editor may open it at that line.
    virtual void openIncludeAt(const std::string& /*file*/, int /*line*/) {}
};

// Settings keys of the compiler's options.
inline constexpr const char* kKeyShowWarnings = "Show Warnings";
inline constexpr const char* kKeyDoNotCompileUnused = "Do Not Compile Unused";
inline constexpr const char* kKeyInitializeVariables = "Initialize Variables";
inline constexpr const char* kKeyOptimizeVariables = "Optimize Variables";
inline constexpr const char* kKeyDynamicTemps = "Dynamic Temporary Variables Management";
inline constexpr const char* kKeyTasmListing = "TASM Compatible Listing";
inline constexpr const char* kKeyShowProgress = "Show Compile Progress";
inline constexpr const char* kKeySelectAsm = "Automatically Select Compiled ASM File";
inline constexpr const char* kKeyAssistant = "Assistant";
inline constexpr const char* kKeyExecutionTimePopup = "Execution Time Popup - Compiler";
inline constexpr const char* kKeyDebugComments = "Print Debug Comment Lines in Compiler Listing";
inline constexpr const char* kKeyMultipleAssignment =
    "Complex Expressions - Allow Multiple Assignment Operators";
inline constexpr const char* kKeyPostIncrementTemp =
    "Complex Expressions - Post-increment Returns Temp Var";
inline constexpr const char* kKeyAsciiPrintTemp =
    "Complex Expressions - Ascii Print # Returns String Temp Var";
inline constexpr const char* kKeyResultAsTemp = "Complex Expressions - Use Result As Temp Var";
inline constexpr const char* kKeyByteMathTemps =
    "Complex Expressions - Allow 1-Byte Math Temp Results";
inline constexpr const char* kKeyOptimizeStringTemps =
    "Complex Expressions - Optimize String Temp Vars";
inline constexpr const char* kKeyArbitraryFunctionName =
    "Complex Expressions - Allow Arbitrary Use of User Function Name";

// Options of the BASIC window, read when the window starts and written at each
// change, and the developer switches.
struct CompilerOptions {
    bool showWarnings = true;
    bool doNotCompileUnused = false;
    bool initializeVariables = false;
    bool optimizeVariables = true;
    bool dynamicTemps = false;
    bool tasmListing = false;
    bool showProgress = true;
    // Developer switches.
    bool generateDebugFiles = false;   // "Generate Compiler Debug Txt Files"
    bool disableLineCrypting = false;  // "Disable Lines Crypting in Compiler Listing"
    bool printAppendLines = false;     // "Print Append Code Lines in Compiler Listing"
    // The simulator's clock, for the header line.
    double clockMHz = 4.0;
};

CompilerOptions ReadCompilerOptions(SettingsStore& settings);

// Options read from the store at the start of each run.
struct RunOptions {
    bool debugComments = false;
    bool multipleAssignment = false;
    bool postIncrementTemp = true;
    bool asciiPrintTemp = true;
    bool resultAsTemp = false;
    bool byteMathTemps = true;
    bool optimizeStringTemps = true;
    bool arbitraryFunctionName = false;
};

// A statement cut into tokens: [0] is empty, [1] the first word; tokens past
// the last read as empty up to index kMaxTokens.
inline constexpr int kMaxTokens = 300;
using Tokens = std::vector<std::string>;
// False when the text has more than kMaxTokens tokens.
bool statementTokens(std::string_view text, Tokens& tokens);
// The trimmed text of the tokens from k on.
std::string restOfTokens(const Tokens& tokens, int k);
// Cuts the first argument of a comma list off text and returns it trimmed;
// commas inside double quotes or parentheses do not cut.
std::string nextArgument(std::string& text);
int countOccurrences(std::string_view text, std::string_view part);
// A Dim line "Dim list As Type" with a known type: its name list and type name.
bool dimParts(const std::string& text, std::string& list, std::string& typeName);
// A list cut at ", ".
std::vector<std::string> splitList(const std::string& list);
// The element count of "name(n)", or -1.
int arrayCount(const std::string& name);
// A generated line with ",low"/",high" operands as the TASM assembler wants them.
std::string tasmRewrite(const std::string& line);
// Source text as the user reads it: a two-byte UTF-8 sequence stays one
// character, any other byte above 127 stands for itself.
std::string decodeSourceText(std::string_view text);

// Where a value lives: its type and its offset from the IX base or, for an
// array element with a variable index, its descriptor: |array offset| *
// kDescriptorBase + |index offset|.
inline constexpr int kDescriptorBase = 100000;
struct Resolved {
    bool found = false;
    TypeCode type = kTypeNone;
    int address = 0;
    int size = 0;
};

// The argument count of a string builtin, or -1 for another name.
int stringBuiltinArguments(const std::string& name);

bool isSignedType(TypeCode type);   // Short, Integer, Long, Single
bool isIntegerType(TypeCode type);  // the six integer types
bool isNumericType(TypeCode type);  // integers and Single
TypeCode signedCounterpart(TypeCode type);

class Compiler {
  public:
    Compiler(SettingsStore& settings, CompileSink& sink, CompilerOptions options = {});

    // Compiles editorText, whose file is path (".bas" is dropped from it), into
    // the .asm beside it. Returns the error line, 0 on success; resultMessage
    // gets the success text.
    int compile(const std::string& path, const std::string& editorText, std::string& resultMessage);

    const CompilerState& state() const { return st_; }
    CompilerOptions& options() { return options_; }
    // The .asm written by the last successful compile.
    const std::string& outputPath() const { return outputPath_; }

    static std::string successText(int lineCount, const std::string& folder,
                                   const std::string& name);
    static std::string headerClockText(double mhz);

    // --- Used by the stages and by the statement compilers. ---
    bool fail(const std::string& message);
    std::string errorPrefix() const;
    void reportWarning(const std::string& text);
    // "Line n: " + text, the form of every warning.
    void warnLine(const std::string& text);

    // Output.
    void emitComment(const std::string& text);
    void emitLabel(const std::string& label, const std::string& text = "");
    void emitCode(const std::string& text);
    std::string newLabel();
    void debugComment(const std::string& text);

    // Symbols.
    int lookupVariable(std::string_view name, const std::string& scope = "");
    int lookupConstant(std::string_view name, const std::string& scope = "");
    // The same lookups without counting a use.
    int findVariable(std::string_view name, const std::string& scope = "") const;
    int findConstant(std::string_view name, const std::string& scope = "") const;
    void countUse(int row, bool variable);
    // 1000000 for a quoted token or a string Const, n for a placeholder #[n], else 0.
    int stringConstantAt(const std::string& token) const;
    std::string internalError(const std::string& specifics) const;
    // Whether text is a number literal (with an optional sign), not a name.
    bool isNumberText(const std::string& text) const;
    void needRuntime(int flag);
    // HL := the address of the element a descriptor names; the index code uses
    // DE, which protectDE keeps.
    void emitElementAddress(int descriptor, TypeCode element, bool protectDE);
    int absoluteAddress(int offset) const { return st_.ixBase() + offset; }
    int allocate(int bytes);
    void releaseBytes(int bytes, int offset);
    int reserveSystem(const std::string& name, int bytes);
    bool registerUserName(const std::string& name);
    std::string newTemp(TypeCode type, int length = 0);
    void freeTemp(const std::string& name);
    bool endOfStatement();

    // Compiles an expression: mode 1 an assignment, 0 a value or a test. result
    // gets the name of the final value. leftScope: the scope in which the left
    // side is looked up (argument passing), "" for the current one. With report
    // false a failure shows nothing and leaves no code.
    bool compileExpression(const std::string& text, std::string& result,
                           const std::string& leftScope, int mode, bool report);
    bool emitAssign(const std::string& dest, const std::string& source,
                    const std::string& destScope, const std::string& sourceScope);
    bool emitStringAssign(const std::string& dest, const std::string& source,
                          const std::string& destScope, const std::string& sourceScope);
    bool setStrPtrStatement(const std::string& pointer, const std::string& value);
    bool emitArithmetic(const std::string& dest, const std::string& left, const std::string& op,
                        const std::string& right);
    // Jumps to falseLabel when "left op right" does not hold.
    bool emitComparison(const std::string& left, const std::string& op, const std::string& right,
                        const std::string& falseLabel);

    // A name of the program (a variable, an element "a(i)", dot parts "x.LB")
    // resolved in scope (the current one when empty). A String read as a value
    // is its first character unless keepString; unsigned types turn signed
    // unless keepSign. A lookup counts as a use in the first run.
    Resolved resolve(const std::string& text, bool keepSign, bool keepString,
                     const std::string& scope = "");

    // Loads of variables, elements and constants into registers, and stores
    // back. register is one of A B C E L, BC DE HL, or BC:DE; type is the type
    // the register is to hold. protectDE keeps DE across an element address.
    bool load(TypeCode type, const std::string& reg, TypeCode sourceType, const std::string& text,
              int address, bool protectDE = false);
    bool store(TypeCode destType, int address, TypeCode sourceType, const std::string& reg);

    // A value of the expression stack: a variable or element, a number, a
    // string constant, or a temporary.
    struct Operand {
        std::string text;  // a Const stands as its value
        TypeCode type = kTypeNone;
        int address = 0;
        bool variable = false, constant = false, stringConstant = false;
    };
    Operand operand(const std::string& text, const std::string& scope = "");
    // The type in which operands are combined: the highest rank of Short,
    // Integer, Long, Single; unsigned only if no operand is signed.
    TypeCode commonType(const std::vector<Operand>& operands) const;
    TypeCode widen(TypeCode a, TypeCode b) const;

  private:
    struct Expression {
        std::string leftScope;
        int mode = 0;
        std::vector<std::string> postfix, stack, postOperations;
        int lhsEnd = -1;
        std::size_t position = 0;
        std::string target, result;
        TypeCode targetType = kTypeNone;
        bool done = false;  // an array initialiser compiled
    };
    bool expressionBody(const std::string& text, Expression& e);
    bool openTokens(const std::vector<std::string>& raw, int mode, std::vector<std::string>& infix);
    bool checkInfix(const std::vector<std::string>& infix);
    bool toPostfix(const std::vector<std::string>& infix, Expression& e);
    bool evaluate(Expression& e);
    std::string destination(const Expression& e, TypeCode type, int length = 0);
    bool isStringExpression(const Expression& e, const Operand& l, const Operand& r) const;
    // Strings.
    int stringCapacity(const Operand& o) const;
    std::string stringConstantText(const std::string& token) const;
    void stringAddress(const Operand& o, const std::string& pair);
    void stringDestination(const Operand& d);
    void needString(const char* entry);
    void callString(const char* entry);
    void measureString(const Operand& o);
    std::string stringVariable(const std::string& text);
    bool concatenate(Expression& e, const std::string& left, const std::string& right);
    bool stringComparison(const std::string& left, const std::string& op, const std::string& right,
                          const std::string& falseLabel);
    bool characterArgument(const std::string& text, const char* cell);
    bool stringBuiltin(Expression& e, const std::string& name,
                       const std::vector<std::string>& args);
    // Append routines.
    int appendBlockSize() const;
    bool compileAppendRoutines();
    bool compileAppendRoutine(int index, int& counter);
    std::string appendError(const std::string& name) const;
    bool appendCall(Expression& e, const std::string& name, const std::string& argument);
    bool binaryOperator(Expression& e, const std::string& op, const std::string& left,
                        const std::string& right);
    bool unaryOperator(Expression& e, const std::string& op, const std::string& value);
    bool callOperator(Expression& e, const std::string& name);
    bool builtinOperator(Expression& e, const std::string& name);
    bool portNumber(const std::string& text, bool input, int& port);
    bool readBuiltin(Expression& e, const std::string& name, const std::string& arg);
    bool writeBuiltin(Expression& e, const std::string& name, const std::string& where,
                      const std::string& value);
    bool bitBuiltin(Expression& e, const std::string& name, const std::vector<std::string>& args);
    void bitMask(const Operand& n, bool reset);
    bool logicOperator(Expression& e, const std::string& op, const std::string& left,
                       const std::string& right);
    bool complementOperator(Expression& e, const std::string& op, const std::string& value);
    bool shiftOperator(Expression& e, const std::string& op, const std::string& left,
                       const std::string& right);
    bool onlyArithmeticRemains(const Expression& e) const;
    bool arrayInitialiser(const std::string& text, Expression& e);
    bool emitArrayInit(int row, std::string list);
    bool loadOperand(TypeCode work, const std::string& reg, const Operand& o,
                     bool protectDE = false);
    void debugLog(const std::string& text);
    int findFunction(const std::string& name) const;
    std::string bitOfNumber(const std::string& x);

    // Driver.
    bool performRun(const std::string& editorText);
    void resetRun();
    void readRunOptions();
    bool codeGeneration();
    void finishOutput();
    bool writeOutput();
    void writeDebugFiles() const;
    void locateIncludeError();
    void progress(const std::string& text);

    // Source preparation.
    void splitSource(const std::string& text);
    bool prepareSource();
    bool runIncludes();
    bool includeFiles(std::string list, bool assembler);
    bool extractStrings(int line);
    bool extractStringsOf(std::string& text);
    std::string restorePlaceholders(const std::string& text) const;

  public:
    inline static const std::string kGlobalScope = "global";

  private:
    // Declarations.
    bool declarationScan();
    bool scanLabel(int line);
    bool scanRoutine(int line, const Tokens& t);
    bool parseArguments(const std::string& list, RoutineRow& row, bool function);
    bool declarationPass();
    bool declareConstant(const Tokens& t);
    bool queueDim(const std::string& text, bool skip);
    bool allocateQueue();
    bool reserveStringTemps();
    bool declareQueued(DeclarationRow& row);
    bool declareVariable(const std::string& name, const std::string& typeName,
                         const std::string& scope, int used);
    bool declareRoutine(std::size_t index, bool function, bool& skip);
    int declarationBytes(const DeclarationRow& row) const;
    bool unusedCheck(std::size_t row, int line, const std::string& kind);
    void prepareMemoryMap();
    void normaliseMemory();
    // Checks text as a constant of type (constant names and one-character
    // strings replaced first): the value as the code uses it, and the number read.
    bool constantValue(TypeCode type, std::string text, long long& value, double* number = nullptr);

    // Statements.
    bool compileLine(int line);
    bool dispatch(const std::string& text);
    bool dimInitialisation(const std::string& text);
    bool directive(const Tokens& t);
    bool simDirective(const Tokens& t);
    bool inlineAssembler(const std::string& text);
    bool endStatement();
    void pushStructure(const std::string& kind);
    bool popStructure(const std::string& kind);
    bool checkStructure(bool atEnd, bool forNewRoutine);
    std::string openStructureText(bool upToThisLine) const;
    using WhileRow = CompilerState::WhileRow;
    using ForRow = CompilerState::ForRow;
    using CForRow = CompilerState::CForRow;
    using IfRow = CompilerState::IfRow;
    using SelectRow = CompilerState::SelectRow;
    bool assignmentStatement(const std::string& text);
    // Flow statements.
    int classifyTest(std::string& text);
    bool compileTest(const std::string& test, const std::string& falseLabel);
    bool generalTest(const std::string& test, const std::string& falseLabel);
    bool ifStatement(const std::string& rest, const std::string& line);
    bool oneLineStatement(const std::string& text);
    bool elseStatement();
    bool endifStatement();
    bool selectStatement(const std::string& selector);
    bool caseStatement(const std::string& list);
    bool caseElseStatement();
    bool endSelectStatement();
    bool whileStatement(const std::string& test);
    bool wendStatement(const std::string& kind);
    bool forStatement(const std::string& rest);
    bool nextStatement(const std::string& variable);
    bool exitLoop(bool cfor);
    bool cforStatement(const std::string& text);
    bool cnextStatement();
    bool callStatement(const std::string& text);
    bool functionCall(Expression& e, const std::string& name);
    bool returnValueStatement(const std::string& value);
    bool printStatement(const std::string& port, std::string items);
    bool printNumber(const Operand& value);
    bool replaceVarAddr(std::string& text);
    bool standaloneExpression(const std::string& text);
    bool openRoutine(const std::string& kind, const std::string& name);
    bool closeRoutine(const std::string& kind);
    bool gotoStatement(const std::string& name);
    bool gosubStatement(const std::string& name);
    int findProcedure(const std::string& name) const;
    std::string substituteAsmNames(const std::string& text);
    void labelInlineAssembler();
    void clearBytes(int offset, int n);
    bool resolveElement(const std::string& text, const std::string& scope, Resolved& r);
    void forceWarnings();
    void checkForLoopRange(const std::string& array, const std::string& index, int last);
    bool loadConstant(TypeCode type, const std::string& reg, const std::string& text);
    void loadByte(const std::string& reg, int address, TypeCode element, bool protectDE);
    void loadRaw(TypeCode sourceType, const std::string& reg, int address, bool protectDE);

    SettingsStore& settings_;
    CompileSink& sink_;
    CompilerOptions options_;
    RunOptions run_;
    CompilerState st_;
    std::string folder_, name_, outputPath_;
    // Inline assembler labels by scope + TAB + name: the generated label (the
    // name itself until the second run gives one). Kept into the second run.
    std::unordered_map<std::string, std::string> asmLabels_;
    std::vector<std::string> asmLabelOrder_;
    std::unordered_set<std::string> asmLabelsLower_;
    std::string lastDeclarationComment_;
    LineProtection protection_;
    std::unordered_map<int, TypeCode> descriptorIndexTypes_;
    bool warningsForced_ = false;
    int depth_ = 0;  // nesting of compileExpression
    int quiet_ = 0;  // > 0 while an expression is only tried: failures show nothing
    std::vector<std::string> debugLines_;
    std::string expressionText_;  // the statement's expression, for warnings  // an array range
                                  // warning turned Show Warnings on
    std::string internalLine_;    // the append routine line being compiled
    std::string statementLine_;   // the whole statement text of the line being compiled
};

}  // namespace mb
