// mbasm: the Z80 assembler on the command line. Writes .lst, .obj and .hex beside
// the source; prints each error as "file:line: error: text" on stderr.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "assembler/assembler.h"
#include "settings/settings_store.h"

namespace {

constexpr int kExitErrors = 1;
constexpr int kExitUsage = 2;

const char* kUsage =
    "Usage: mbasm [options] prog.asm\n"
    "Assembles a Z80 source into prog.lst, prog.obj and prog.hex beside it.\n"
    "Options:\n"
    "  --fill N            OBJ file fill value (default 0)\n"
    "  --obj-start N       starting address for OBJ files creation (default 0)\n"
    "  --no-hex            do not write the HEX file\n"
    "  --obj-copy EXT      also write a copy of the OBJ file with extension EXT\n"
    "  --include-limit N   include nesting level limit (default 10)\n"
    "  --unofficial        accept unofficial instructions\n"
    "  --no-precedence     no operator precedence (strict left to right)\n"
    "  --verbose           print the error box text after a failed run\n"
    "Numbers take the assembler's literal forms (100, 0FFH, $FF, 0x10, %101).\n"
    "Exit status: 0 success, 1 assembly errors, 2 bad usage or unreadable file.\n";

bool ParseValue(const std::string& text, int& out) {
    const double v = mb::ParseNumber(text);
    if (v >= mb::kNotANumber) return false;
    out = static_cast<int>(v);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    mb::MemorySettingsStore settings;
    mb::AssemblerOptions options;
    bool verbose = false;
    std::string source;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](int& out) {
            if (i + 1 >= argc || !ParseValue(argv[i + 1], out)) {
                std::cerr << "mbasm: " << arg << " needs a number\n";
                std::exit(kExitUsage);
            }
            ++i;
        };
        int n = 0;
        if (arg == "--help" || arg == "-h") {
            std::cout << kUsage;
            return 0;
        } else if (arg == "--fill") {
            value(n);
            settings.SetSettingInt("OBJ File Fill Value", n);
        } else if (arg == "--obj-start") {
            value(n);
            settings.SetSettingInt("Starting Address For OBJ Files Creation", n);
        } else if (arg == "--no-hex") {
            settings.SetSettingText("Generate HEX File Also", "OFF");
        } else if (arg == "--obj-copy" && i + 1 < argc) {
            options.GenerateObjCopy = true;
            options.ObjCopyExtension = argv[++i];
        } else if (arg == "--include-limit") {
            value(n);
            settings.SetSettingInt("Assembler Include Nesting Level Limit", n);
        } else if (arg == "--unofficial") {
            options.UnofficialInstructions = true;
        } else if (arg == "--no-precedence") {
            options.NoOperatorPrecedence = true;
        } else if (arg == "--verbose") {
            verbose = true;
        } else if (!arg.empty() && arg[0] == '-') {
            std::cerr << "mbasm: unknown option " << arg << "\n" << kUsage;
            return kExitUsage;
        } else if (source.empty()) {
            source = arg;
        } else {
            std::cerr << "mbasm: only one source file, please\n";
            return kExitUsage;
        }
    }
    if (source.empty()) {
        std::cerr << kUsage;
        return kExitUsage;
    }
    if (!std::ifstream(source)) {
        std::cerr << "mbasm: cannot read " << source << "\n";
        return kExitUsage;
    }

    const std::filesystem::path path(source);
    const std::string folder = path.has_parent_path() ? path.parent_path().string() + "/" : "./";
    const std::string file = path.filename().string();
    std::string base = file;
    if (base.size() >= 4 && mb::LowerText(base.substr(base.size() - 4)) == ".asm")
        base.resize(base.size() - 4);

    mb::AssemblerHost host;
    mb::Assembler assembler(settings, host, options);
    assembler.DeleteOutputs(folder, base);
    int status = 0;
    const int errors = assembler.AssembleSource(folder, file, status);
    if (errors == 0) return 0;

    const mb::AssemblySession& s = assembler.Session();
    for (const mb::AssemblerError& e : s.ErrorList) {
        const std::string& errorText = e.Text;
        const size_t at = errorText.find("Error: ");
        std::cerr << (e.File.empty() ? source : e.File) << ":" << e.FileLine
                  << ": error: " << (at == std::string::npos ? errorText : errorText.substr(at + 7))
                  << "\n";
    }
    if (verbose) std::cerr << assembler.FormatAssemblerErrors();
    std::cerr << "mbasm: " << errors << " error" << (errors == 1 ? "" : "s") << "\n";
    assembler.DeleteOutputs(folder, base);
    return kExitErrors;
}
