// Compiles the input as "prog.bas" in a scratch folder. The last three bytes
// are switches (the window's options, the Complex Expressions keys, an assembly
// of the output, a second compile, the diagnostic files); a NUL byte in the
// rest cuts it: what follows is written as both "inc.bas" and "inc.asm", for
// Include and IncludeASM lines to find.
//
// Every compile ends one of two ways: success, with no error shown and the .asm
// written; or exactly one error, non-empty and naming a line of the text, with
// no .asm left behind. A second compile of the same text by the same compiler
// ends the same way, with the same .asm: nothing of a compile is left over for
// the next.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "assembler/assembler.h"
#include "compiler/compiler.h"
#include "fuzz_support.h"
#include "settings/settings_store.h"

using namespace mb;

namespace {

// Switch bits of the last input byte: the options of the BASIC window.
enum : int {
    kNoWarnings = 1,
    kSkipUnused = 2,
    kInitialize = 4,
    kNoOptimize = 8,
    kDynamicTemps = 16,
    kTasm = 32,
    kDebugComments = 64,
    kNoLineCrypting = 128,
};

// Switch bits of the byte before it: the Complex Expressions keys, and whether
// a successful output goes through the assembler too.
enum : int {
    kMultipleAssignment = 1,
    kNoPostIncrementTemp = 2,
    kNoAsciiPrintTemp = 4,
    kResultAsTemp = 8,
    kNoByteMathTemps = 16,
    kNoOptimizeStringTemps = 32,
    kArbitraryFunctionName = 64,
    kAssemble = 128,
};

// Switch bits of the third byte from the end.
enum : int {
    kCompileTwice = 1,
    kDebugFiles = 2,  // the developer's diagnostic files beside the output
};

class CountingSink : public CompileSink {
  public:
    void showError(const std::string& text) override {
        ++errors;
        lastError = text;
    }
    int errors = 0;
    std::string lastError;
};

// The line number after "in line " (or "in included file in line "), -1 if none.
int NamedLine(const std::string& message) {
    for (const char* lead : {"Error in line ", "Error in included file in line "}) {
        const std::string prefix = lead;
        if (message.compare(0, prefix.size(), prefix) != 0) continue;
        const std::size_t colon = message.find(':', prefix.size());
        if (colon == std::string::npos || colon == prefix.size() || colon > prefix.size() + 9) {
            return -1;
        }
        const std::string digits = message.substr(prefix.size(), colon - prefix.size());
        if (digits.find_first_not_of("0123456789") != std::string::npos) return -1;
        return std::stoi(digits);
    }
    return -1;
}

int LineCount(const std::string& text) {
    int lines = 1;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '\n' && i + 1 < text.size()) ++lines;
    return lines;
}

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The two ways a compile may end.
void CheckEnding(const Compiler& compiler, const CountingSink& sink, const std::string& program,
                 int errorLine, const std::string& result, const fuzz::ScratchFolder& scratch) {
    const bool written = std::filesystem::exists(scratch.Path("prog.asm"));
    if (errorLine == 0) {
        fuzz::Require(sink.errors == 0, "a successful compile shows no error");
        fuzz::Require(written && !result.empty(), "a successful compile writes its .asm");
        return;
    }
    fuzz::Require(sink.errors == 1, "a failed compile shows exactly one error");
    fuzz::Require(!sink.lastError.empty(), "the error has a text");
    fuzz::Require(result.empty(), "a failed compile gives no success text");
    fuzz::Require(!written, "a failed compile leaves no .asm");
    fuzz::Require(errorLine >= 1 && errorLine <= compiler.state().lineCount() + 1,
                  "the error line lies in the compiled text");
    // The empty editor has a message of its own; every other names its line.
    if (sink.lastError == "The editor is empty.") return;
    const int named = NamedLine(sink.lastError);
    const bool internal = sink.lastError.rfind("The program could not be compiled!", 0) == 0;
    fuzz::Require(internal || named >= 1, "the error names a line");
    fuzz::Require(internal || !compiler.state().errorFile.empty() || named <= LineCount(program),
                  "the named line is a line of the program");
    // What is wrong comes last, after the text of the line.
    const std::size_t lastBreak = sink.lastError.rfind("\r\n");
    fuzz::Require(lastBreak != std::string::npos &&
                      sink.lastError.find_first_not_of(' ', lastBreak + 2) != std::string::npos,
                  "the error says what is wrong");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fuzz::ScratchFolder scratch;
    scratch.Empty();
    fuzz::InputWithOptions input(data, size);
    const int window = input.Take();
    const int complex = input.Take();
    const int more = input.Take();
    std::string program = input.Payload();
    if (const std::size_t cut = program.find('\0'); cut != std::string::npos) {
        const std::string included = program.substr(cut + 1);
        program.resize(cut);
        scratch.Write("inc.bas", included);
        scratch.Write("inc.asm", included);
    }
    const std::string path = scratch.Write("prog.bas", program);

    MemorySettingsStore settings;
    settings.SetSettingInt(kKeyMultipleAssignment, complex & kMultipleAssignment ? 1 : 0);
    settings.SetSettingInt(kKeyPostIncrementTemp, complex & kNoPostIncrementTemp ? 0 : 1);
    settings.SetSettingInt(kKeyAsciiPrintTemp, complex & kNoAsciiPrintTemp ? 0 : 1);
    settings.SetSettingInt(kKeyResultAsTemp, complex & kResultAsTemp ? 1 : 0);
    settings.SetSettingInt(kKeyByteMathTemps, complex & kNoByteMathTemps ? 0 : 1);
    settings.SetSettingInt(kKeyOptimizeStringTemps, complex & kNoOptimizeStringTemps ? 0 : 1);
    settings.SetSettingInt(kKeyArbitraryFunctionName, complex & kArbitraryFunctionName ? 1 : 0);
    settings.SetSettingInt(kKeyDebugComments, window & kDebugComments ? 1 : 0);
    CompilerOptions options;
    options.showWarnings = !(window & kNoWarnings);
    options.doNotCompileUnused = window & kSkipUnused;
    options.initializeVariables = window & kInitialize;
    options.optimizeVariables = !(window & kNoOptimize);
    options.dynamicTemps = window & kDynamicTemps;
    options.tasmListing = window & kTasm;
    options.disableLineCrypting = window & kNoLineCrypting;
    options.showProgress = false;
    options.generateDebugFiles = more & kDebugFiles;

    CountingSink sink;
    Compiler compiler(settings, sink, options);
    std::string result;
    const int errorLine = compiler.compile(path, program, result);
    CheckEnding(compiler, sink, program, errorLine, result, scratch);
    const std::string output = ReadText(scratch.Path("prog.asm"));
    if (more & kCompileTwice) {
        sink = CountingSink{};
        fuzz::Require(compiler.compile(path, program, result) == errorLine,
                      "a second compile ends at the same line");
        CheckEnding(compiler, sink, program, errorLine, result, scratch);
        fuzz::Require(ReadText(scratch.Path("prog.asm")) == output,
                      "a second compile writes the same .asm");
    }
    if (errorLine == 0 && (complex & kAssemble)) {
        // Whatever the output holds, the assembler reads it to the end.
        MemorySettingsStore asmSettings;
        asmSettings.SetSettingInt("Assembler Include Nesting Level Limit", 1);
        AssemblerHost host;
        Assembler assembler(asmSettings, host);
        int status = kSilentAssembly;
        const int errors = assembler.AssembleSource(scratch.Folder(), "prog.asm", status);
        if (errors > 0) assembler.FormatAssemblerErrors();
    }
    return 0;
}
