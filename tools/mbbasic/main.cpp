// mbbasic: the BASIC compiler on the command line. Compiles prog.bas into
// prog.asm beside it, then assembles that silently into prog.lst, prog.obj and
// (with --hex) prog.hex, as the BASIC window's Compile & Assemble does.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "assembler/assembler.h"
#include "compiler/compiler.h"
#include "compiler/reports.h"
#include "core/run_control.h"
#include "settings/settings_store.h"

namespace {

constexpr int kExitErrors = 1;
constexpr int kExitUsage = 2;

// A switch of the compiler: the flag, the settings key it sets and the value.
struct Switch {
    const char* flag;
    const char* key;
    int value;
    const char* help;
};

constexpr Switch kSwitches[] = {
    {"--no-warnings", mb::kKeyShowWarnings, 0, "do not print warnings (Show Warnings off)"},
    {"--do-not-compile-unused", mb::kKeyDoNotCompileUnused, 1, "Do Not Compile Unused Code"},
    {"--initialize-variables", mb::kKeyInitializeVariables, 1,
     "Initialize Variables On Declaration"},
    {"--no-optimize-variables", mb::kKeyOptimizeVariables, 0, "Optimize Variables Declaration off"},
    {"--dynamic-temps", mb::kKeyDynamicTemps, 1, "Dynamic Temporary Variables Management"},
    {"--tasm-listing", mb::kKeyTasmListing, 1, "Generate TASM Compatible Listing"},
    {"--progress", mb::kKeyShowProgress, 1, "print the progress texts on stderr"},
    {"--execution-time", mb::kKeyExecutionTimePopup, 1, "print the compile time"},
    {"--debug-comments", mb::kKeyDebugComments, 1, "Print Debug Comment Lines in Compiler Listing"},
    {"--multiple-assignment", mb::kKeyMultipleAssignment, 1,
     "Complex Expressions - Allow Multiple Assignment Operators"},
    {"--no-post-increment-temp", mb::kKeyPostIncrementTemp, 0,
     "Complex Expressions - Post-increment Returns Temp Var off"},
    {"--no-ascii-print-temp", mb::kKeyAsciiPrintTemp, 0,
     "Complex Expressions - Ascii Print # Returns String Temp Var off"},
    {"--result-as-temp", mb::kKeyResultAsTemp, 1, "Complex Expressions - Use Result As Temp Var"},
    {"--no-byte-math-temps", mb::kKeyByteMathTemps, 0,
     "Complex Expressions - Allow 1-Byte Math Temp Results off"},
    {"--no-optimize-string-temps", mb::kKeyOptimizeStringTemps, 0,
     "Complex Expressions - Optimize String Temp Vars off"},
    {"--arbitrary-function-name", mb::kKeyArbitraryFunctionName, 1,
     "Complex Expressions - Allow Arbitrary Use of User Function Name"},
};

void PrintUsage(std::ostream& out) {
    out << "Usage: mbbasic [options] prog.bas\n"
           "Compiles a BASIC program into prog.asm beside it and assembles that into\n"
           "prog.lst and prog.obj.\n"
           "Options:\n"
           "  --compile-only                stop after prog.asm\n"
           "  --report-variables            print the User Variables report\n"
           "  --report-usage                print the Instructions Usage Statistics\n"
           "  --hex                         also write prog.hex\n"
           "  --clock MHZ                   clock frequency of the header line, 0.01-120\n"
           "                                (default 4)\n";
    for (const Switch& s : kSwitches) {
        std::string flag = s.flag;
        flag.resize(30, ' ');
        out << "  " << flag << s.help << "\n";
    }
    out << "  --debug-files                 Generate Compiler Debug Txt Files (developer)\n"
           "  --no-line-crypting            Disable Lines Crypting in Compiler Listing\n"
           "                                (developer)\n"
           "  --append-lines                Print Append Code Lines in Compiler Listing\n"
           "                                (developer)\n"
           "Errors print as prog.bas:LINE: error: TEXT, warnings as\n"
           "prog.bas:LINE: warning: TEXT (a line of an included file names that file).\n"
           "Exit status: 0 success, 1 compile or assembly errors, 2 bad usage or\n"
           "unreadable file.\n";
}

int UsageError(const std::string& text) {
    std::cerr << "mbbasic: " << text << "\n";
    return kExitUsage;
}

// Prints compile errors and progress for a terminal.
class TerminalSink : public mb::CompileSink {
  public:
    void setProgressText(const std::string& text) override { std::cerr << text << "\n"; }
    void showMessage(const std::string& text) override { std::cout << text << "\n"; }
};

// Where line n of the compile's numbering lies: the file and its own line.
std::pair<std::string, int> SourcePlace(const mb::CompilerState& st, const std::string& source,
                                        int n) {
    if (n <= st.mainLineCount || st.mainLineCount < 1) return {source, n};
    int previousEnd = st.mainLineCount;
    for (const mb::IncludeEntry& inc : st.includes) {
        if (inc.endLine >= n) return {inc.name, n - previousEnd - 3};
        previousEnd = inc.endLine;
    }
    return {source, n};
}

// The lines of a message: the first behind the location, the others indented.
std::string Indented(const std::string& text) {
    std::string out;
    std::istringstream in(text);
    std::string line;
    bool first = true;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        out += (first ? "" : "    ") + line + "\n";
        first = false;
    }
    return out;
}

void PrintWarnings(const mb::CompilerState& st, const std::string& source) {
    std::istringstream in(st.warningText);
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        int n = 0;
        std::size_t colon = std::string::npos;
        if (line.rfind("Line ", 0) == 0) {
            colon = line.find(": ");
            n = std::atoi(line.c_str() + 5);
        }
        const auto [file, k] = SourcePlace(st, source, n);
        std::cerr << file << ":" << k
                  << ": warning: " << (colon == std::string::npos ? line : line.substr(colon + 2))
                  << "\n";
    }
}

}  // namespace

int main(int argc, char** argv) {
    mb::MemorySettingsStore settings;
    settings.SetSettingInt(mb::kKeyShowProgress, 0);
    std::string source;
    bool compileOnly = false, hex = false, reportVariables = false, reportUsage = false;
    mb::CompilerOptions developer;
    double clock = 4.0;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const Switch* sw = nullptr;
        for (const Switch& s : kSwitches) {
            if (arg == s.flag) sw = &s;
        }
        if (sw) {
            settings.SetSettingInt(sw->key, sw->value);
        } else if (arg == "--help" || arg == "-h") {
            PrintUsage(std::cout);
            return 0;
        } else if (arg == "--compile-only") {
            compileOnly = true;
        } else if (arg == "--report-variables") {
            reportVariables = true;
        } else if (arg == "--report-usage") {
            reportUsage = true;
        } else if (arg == "--append-lines") {
            developer.printAppendLines = true;
        } else if (arg == "--hex") {
            hex = true;
        } else if (arg == "--debug-files") {
            developer.generateDebugFiles = true;
        } else if (arg == "--no-line-crypting") {
            developer.disableLineCrypting = true;
        } else if (arg == "--clock") {
            const auto value = i + 1 < argc ? mb::ClockFrequencyEntry(argv[++i]) : std::nullopt;
            if (!value) return UsageError("--clock: Allowed range 0.01-120MHz.");
            clock = *value;
        } else if (!arg.empty() && arg[0] == '-') {
            return UsageError("unknown option " + arg + " (see --help)");
        } else if (source.empty()) {
            source = arg;
        } else {
            return UsageError("one program at a time: " + arg);
        }
    }
    if (source.empty()) {
        PrintUsage(std::cerr);
        return kExitUsage;
    }
    std::error_code ec;
    std::ifstream in(source, std::ios::binary);
    if (!std::filesystem::is_regular_file(source, ec) || !in) {
        return UsageError("cannot read " + source);
    }
    std::ostringstream text;
    text << in.rdbuf();

    mb::CompilerOptions options = mb::ReadCompilerOptions(settings);
    options.generateDebugFiles = developer.generateDebugFiles;
    options.disableLineCrypting = developer.disableLineCrypting;
    options.printAppendLines = developer.printAppendLines;
    options.clockMHz = clock;
    TerminalSink sink;
    mb::Compiler compiler(settings, sink, options);
    std::string result;
    const int errorLine = compiler.compile(source, text.str(), result);
    const mb::CompilerState& st = compiler.state();
    if (errorLine > 0) {
        const auto [file, k] = SourcePlace(st, source, errorLine);
        std::cerr << file << ":" << k << ": error: " << Indented(st.errorMessage);
        return kExitErrors;
    }
    if (options.showWarnings) PrintWarnings(st, source);
    std::cout << result << "\n";
    // The reports as the BASIC window shows them, with the line ends of the text.
    auto print = [](const std::string& text) {
        std::string plain = text;
        for (std::size_t at = plain.find("\r\n"); at != std::string::npos;
             at = plain.find("\r\n", at))
            plain.erase(at, 1);
        std::cout << plain;
    };
    if (reportVariables) print(mb::userVariablesReport(st));
    if (reportUsage) print(mb::instructionUsageReport(st.outputText));
    if (compileOnly) return 0;

    const std::filesystem::path asmPath(compiler.outputPath());
    std::string folder = asmPath.parent_path().string();
    if (!folder.empty()) folder += '/';
    const std::string base = asmPath.stem().string();
    settings.SetSettingText("Generate HEX File Also", hex ? "ON" : "OFF");
    mb::AssemblerHost host;
    mb::Assembler assembler(settings, host);
    const int errors = assembler.AssembleGeneratedSource(folder, base);
    if (errors > 0) {
        std::cerr << mb::DiagnosticLines(assembler.Session(), compiler.outputPath());
        std::cerr << "Assembly was not successful.\nGenerated assembler source contains " << errors
                  << " errors.\n";
        return kExitErrors;
    }
    std::cout << "Listing file: " << folder << base << ".lst\n"
              << "Generated OBJ file: " << folder << base << ".obj\n";
    if (hex) std::cout << "Generated HEX file: " << folder << base << ".hex\n";
    return 0;
}
