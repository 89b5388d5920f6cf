// Compiles and assembles generated BASIC programs of 1,000 and 5,000 lines (or
// the sizes given) and prints the time of each stage, to show that time grows
// linearly with the length of a program. Usage: mbbench_compiler [lines...]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "assembler/assembler.h"
#include "compiler/compiler.h"
#include "settings/settings_store.h"

namespace {

// A program of `lines` lines: declarations of every numeric type and arrays,
// constants, and assignments of mixed arithmetic.
std::string Program(int lines) {
    static const char* const kTypes[] = {"Byte", "Integer", "Word", "Short", "Long"};
    std::string text = "' generated benchmark program\r\n";
    int written = 1, variables = 0;
    while (written < lines) {
        const int v = variables++;
        const std::string name = "v" + std::to_string(v), c = "c" + std::to_string(v);
        const bool array = v % 10 == 9;
        text += "Dim " + name + (array ? "(8)" : "") + " As " + kTypes[v % 5] + "\r\n";
        text += "Const " + c + " = " + std::to_string(v % 40) + "\r\n";
        if (array) {
            text += name + "(3) = " + c + " + " + std::to_string(v % 7) + "\r\n";
            text += name + "(2) = " + name + "(3) - 1\r\n";
        } else {
            text += name + " = " + c + " + " + name + "\r\n";
            text += name + " = " + name + " - " + std::to_string(v % 5 + 1) + " + " + c + "\r\n";
        }
        written += 4;
    }
    return text + "End\r\n";
}

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
    if (sizes.empty()) sizes = {1000, 5000};
    const auto dir = std::filesystem::temp_directory_path() / "mbbench_compiler";
    std::filesystem::create_directories(dir);
    for (int lines : sizes) {
        const std::string text = Program(lines);
        const std::string path = (dir / "bench.bas").string();
        std::ofstream(path, std::ios::binary) << text;
        mb::MemorySettingsStore settings;
        mb::CompileSink sink;
        mb::CompilerOptions options;
        mb::Compiler compiler(settings, sink, options);
        std::string result;
        auto start = std::chrono::steady_clock::now();
        const int error = compiler.compile(path, text, result);
        const double compileSeconds = Seconds(start);
        if (error) {
            std::fprintf(stderr, "compile failed at line %d: %s\n", error,
                         compiler.state().errorMessage.c_str());
            return 1;
        }
        settings.SetSettingText("Generate HEX File Also", "ON");
        mb::AssemblerHost host;
        mb::Assembler assembler(settings, host);
        start = std::chrono::steady_clock::now();
        const int errors = assembler.AssembleGeneratedSource(dir.string() + "/", "bench");
        const double assembleSeconds = Seconds(start);
        if (errors) {
            std::fprintf(
                stderr, "assembly failed with %d errors:\n%s", errors,
                mb::DiagnosticLines(assembler.Session(), (dir / "bench.asm").string()).c_str());
            return 1;
        }
        std::printf("%6d lines: compile %.3f s, assemble %.3f s, total %.3f s (%d asm lines)\n",
                    lines, compileSeconds, assembleSeconds, compileSeconds + assembleSeconds,
                    compiler.state().outputLineCount);
    }
    std::filesystem::remove_all(dir);
    return 0;
}
