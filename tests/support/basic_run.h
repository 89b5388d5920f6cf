// The compiler's end-to-end harness: a BASIC text is compiled in a fresh folder,
// the .asm assembled silently by our assembler, loaded and run to HALT on our
// core; the port output, the memory and the variables' addresses (from the
// address comments) are read back.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "compiler/compiler.h"
#include "settings/settings_store.h"
#include "tests/support/z80_run.h"

namespace mb::testing {

// Keeps everything the compiler reports.
class RecordingSink : public CompileSink {
  public:
    void showError(const std::string& text) override { errors.push_back(text); }
    void setProgressText(const std::string& text) override { progress.push_back(text); }
    void showMessage(const std::string& text) override { messages.push_back(text); }
    void openIncludeAt(const std::string& file, int line) override {
        includeFile = file;
        includeLine = line;
    }
    std::vector<std::string> errors, progress, messages;
    std::string includeFile;
    int includeLine = 0;
};

// Lines of a text written by the compiler: CR LF becomes a line break of the
// test's own text.
inline std::string ReadFileText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

class BasicRun {
  public:
    explicit BasicRun(const std::string& name = "basic_run") {
        dir = std::filesystem::temp_directory_path() /
              ("mb_" + name + "_" + std::to_string(getpid()) + "_" +
               std::to_string(reinterpret_cast<std::uintptr_t>(this)));
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
    }
    ~BasicRun() {
        std::error_code ec;
        std::filesystem::remove_all(dir, ec);
    }

    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(dir / name, std::ios::binary) << text;
    }
    std::string Read(const std::string& name) const { return ReadFileText(dir / name); }
    bool Exists(const std::string& name) const { return std::filesystem::exists(dir / name); }

    // Compiles text as prog.bas (written to disk too); the error line, 0 on success.
    int Compile(const std::string& text, const std::string& name = "prog.bas") {
        Write(name, text);
        sink = RecordingSink{};
        compiler = std::make_unique<Compiler>(settings, sink, options);
        return compiler->compile((dir / name).string(), text, result);
    }

    // Compiles, assembles, loads and runs; false (with the reason in Failure)
    // when a stage fails or the program does not halt.
    bool CompileAndRun(const std::string& text, int outPort = 1) {
        Failure.clear();
        if (Compile(text) != 0) {
            Failure = "compile: " + (sink.errors.empty() ? "" : sink.errors.back());
            return false;
        }
        if (run.Assemble(dir.string(), "prog.asm") != 0) {
            Failure = "assembly: " + run.AssemblerErrors;
            return false;
        }
        if (!run.Load((dir / "prog.obj").string())) {
            Failure = "load: " + run.LoadMessage;
            return false;
        }
        if (!run.Run(outPort)) {
            Failure = "the program did not halt";
            return false;
        }
        return true;
    }

    // What the program printed on outPort, or why it did not run to its end.
    std::string RunOutput(const std::string& text, int outPort = 1) {
        return CompileAndRun(text, outPort) ? run.Output : "(" + Failure + ")";
    }

    // The one error of a compile that fails at line and writes no .asm, or
    // what happened instead.
    std::string ErrorAt(const std::string& text, int line) {
        const int got = Compile(text);
        const std::string first = sink.errors.empty() ? "" : ": " + sink.errors[0];
        if (got != line) return "(the compile ended at line " + std::to_string(got) + first + ")";
        if (sink.errors.size() != 1) return "(" + std::to_string(sink.errors.size()) + " errors)";
        if (Exists("prog.asm")) return "(a failed compile left its .asm)";
        return sink.errors[0];
    }

    std::string Asm() const { return Read("prog.asm"); }

    // The address the listing's comment gives a variable: "The address of 'x'".
    int AddressOf(const std::string& variable) const {
        const std::regex re(";       The address of '" + variable + "' .*is ([0-9A-F]{4})H");
        std::smatch m;
        const std::string text = Asm();
        if (!std::regex_search(text, m, re)) return -1;
        return std::stoi(m[1].str(), nullptr, 16);
    }

    const CompilerState& State() const { return compiler->state(); }

    std::filesystem::path dir;
    MemorySettingsStore settings;
    CompilerOptions options;
    RecordingSink sink;
    std::unique_ptr<Compiler> compiler;
    std::string result, Failure;
    Z80Run run;
};

// "a\nb" with CR LF line ends, for program texts in tests.
inline std::string Lines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    return text;
}

// Rows of the compiler's tables: a program and what it prints on port 1; a
// program and its one error with the error's line; one line behind a table's
// fixed declarations and the text its error gives behind the line.
struct RunCase {
    const char* name;
    std::vector<std::string> lines;
    std::string output;
};
struct ErrorCase {
    const char* name;
    std::vector<std::string> lines;
    int line;
    std::string message;  // what the error box says behind the text of the line
};
struct LineError {
    const char* name;
    std::string line;
    std::string message;
};
inline void PrintTo(const RunCase& c, std::ostream* os) {
    *os << c.name;
}
inline void PrintTo(const ErrorCase& c, std::ostream* os) {
    *os << c.name;
}
inline void PrintTo(const LineError& c, std::ostream* os) {
    *os << c.name;
}
// The whole text of the error box of a row.
inline std::string ErrorText(const ErrorCase& c) {
    return "Error in line " + std::to_string(c.line) + ":\r\n" + c.lines[c.line - 1] + "\r\n" +
           c.message;
}
// The test name of a row: its name.
inline constexpr auto CaseName = [](const auto& info) { return std::string(info.param.name); };

}  // namespace mb::testing
