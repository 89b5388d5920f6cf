// The two-pass Z80 assembler: one source file and its includes to a listing, an
// object image and, optionally, an Intel HEX file beside the source.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "assembler/editor_marks.h"
#include "assembler/expression.h"
#include "assembler/source_text.h"
#include "assembler/vocabulary.h"

namespace mb {

class SettingsStore;

struct SourceLine {
    std::string Text;  // as read, then as rewritten by the preprocessor
    int FileLine = 0;
    int Next = 0;  // line to assemble after this one; LineCount + 1 ends the walk
    int IncludeLevel = 0;
    int IncludeIndex = 0;
    std::string ErrorText;
    int ErrorSeverity = 0;  // 0 none, 1 line error, 2 size error
    int Address = 0;
    int ReservedBytes = 0;  // what a DS statement reserved in pass 1
    std::string StatementKey;
    std::string Operand1, Operand2, Operand3;
    std::string OpcodeText;  // "3E 05": upper-case pairs separated by blanks
};

struct AssemblerError {
    std::string File;  // empty for the main file
    int FileLine = 0;
    int ListingLine = 0;
    std::string Text;
    int Severity = 0;
};

// Per address: where its code came from. Filled only for error-free tracked runs.
struct AddressMap {
    bool Valid = false;
    std::vector<int> IncludeIndex, FileLine, ListingLine;
};

struct AssemblySession {
    std::vector<SourceLine> Lines;  // 1-based: Lines[0] is unused
    std::vector<std::string> IncludeFiles;
    int MainLineCount = 0;
    int ErrorCount = 0;
    std::vector<AssemblerError> ErrorList;
    bool ErrorInIncludeFile = false;
    int ProgramCounter = 0;
    int SizeState = 0;
    int ListingLine = 0;
    bool EvaluationReported = false;
    Symbols symbols;
    std::vector<std::pair<std::string, int>> PredefinedSymbols;
    std::vector<int> ObjectCells;
    int FillValue = 0;
    int ObjStartAddress = 0;
    AddressMap Map;
    std::string Folder;      // ends in "/"
    std::string BaseName;    // source name without ".asm"
    std::string SourcePath;  // Folder + the source name

    // The path of the file that a line comes from.
    const std::string& FileOf(const SourceLine& line) const {
        return line.IncludeIndex > 0 ? IncludeFiles[line.IncludeIndex - 1] : SourcePath;
    }

    int LineCount() const { return static_cast<int>(Lines.size()) - 1; }
};

// Options that the IDE keeps beside the settings the driver reads itself.
struct AssemblerOptions {
    bool UnofficialInstructions = false;
    bool NoOperatorPrecedence = false;
    bool GenerateObjCopy = false;
    std::string ObjCopyExtension = "bin";
    bool Tracking = false;  // fill the AddressMap
};

// Setting names of the switches the IDE keeps for the assembler.
inline constexpr const char* kSettingNoOperatorPrecedence = "No Operator Precedence";
inline constexpr const char* kSettingObjCopy = "Generate OBJ File Copy";
inline constexpr const char* kSettingObjCopyExtension = "OBJ File Copy Extension";

// Whether an extension may name the OBJ file copy: up to 8 letters, digits or
// "_", and none of asm, lst, obj, hex, inc, bas in any case, so that the copy can
// never replace the source or another output.
bool IsUsableObjCopyExtension(std::string_view extension);

// The switches as the IDE keeps them ("Enable Unofficial Instructions" too).
AssemblerOptions ReadAssemblerOptions(SettingsStore& settings);

// Progress and the evaluator's error box. Every method may do nothing.
class AssemblerHost : public EvaluationReporter {
  public:
    virtual void Status(const std::string& /*first*/, const std::string& /*second*/) {}
    virtual void Pause(int /*milliseconds*/) {}
    virtual void Yield() {}
    void ShowEvaluationError(const std::string& /*text*/) override {}
};

constexpr int kSilentAssembly = 1000;

// The closing text of the failure box, after the error list when there is one:
// "Assembly was not successful.", a line break, the error count and two line
// breaks. The outside assembler's failure box uses it too.
std::string AssemblyFailureText(int errorCount);

// The errors of a session as "file:line: error: text" lines, each ended by a
// line feed; sourcePath names the main file.
std::string DiagnosticLines(const AssemblySession& session, const std::string& sourcePath);

class Assembler {
  public:
    Assembler(SettingsStore& settings, AssemblerHost& host, AssemblerOptions options = {});

    // Assembles folder + fileName. status: kSilentAssembly on entry for a silent run;
    // on return the error count (also the result).
    int AssembleSource(const std::string& folder, const std::string& fileName, int& status);

    // The compiler's entry: deletes earlier outputs, assembles silently, and
    // deletes the outputs again when there were errors.
    int AssembleGeneratedSource(const std::string& folder, const std::string& baseName);

    // Deletes .lst, .obj, .hex (whether HEX is on or not) and the OBJ copy (when
    // on): every output of a run of that name.
    void DeleteOutputs(const std::string& folder, const std::string& baseName);

    // The text of the error box after a failed run.
    std::string FormatAssemblerErrors() const;

    // Checks the argument of an INCLUDE line of the file includingFile; returns the
    // path, or sets error to the message.
    std::string CheckIncludeArgument(const std::string& argument, const std::string& includingFile,
                                     std::string& error) const;

    const AssemblySession& Session() const { return session_; }
    AssemblerOptions& Options() { return options_; }
    bool HexEnabled();

    // Expression evaluation in this session's context (the program counter, the
    // symbols, the latch).
    int Evaluate(const std::string& text, bool silent);

  private:
    bool ReadMainFile(const std::string& path);
    // The OBJ copy is on and its extension names no file of the run itself.
    bool ObjCopyWanted() const;
    int AppendFile(const std::string& path, int level, int includeIndex);
    void PreprocessSource();
    std::string PreprocessedText(const std::string& orig, const std::string& c,
                                 const std::string& l);
    void TryInclude(int i, int& level);
    void Pass1();
    void Pass1Line(int index);
    void Pass2();
    void Pass2Line(int index);
    bool BuildStatementKey(SourceLine& line, std::string word, std::string op1, std::string op2,
                           std::string op3);
    void MeasureStatement(SourceLine& line);
    void EncodeStatement(SourceLine& line, const int values[3]);
    void EncodeData(SourceLine& line, bool words);
    bool CheckOperand(SourceLine& line, OperandClass cls, int& value, const std::string& text);
    void MarkError(SourceLine& line, const std::string& text, int severity = 1);
    void SizeControl(SourceLine& line);
    // Line indexes in assembly order, along Next.
    std::vector<int> WalkOrder() const;
    void WriteListing(bool silent);
    void WriteObjectFiles();
    void Progress(const std::string& first, const std::string& second, int pauseMs);

    SettingsStore& settings_;
    AssemblerHost& host_;
    AssemblerOptions options_;
    AssemblySession session_;
    LineProtection protection_;
    bool silent_ = false;
};

}  // namespace mb
