// mbasm: the Z80 assembler on the command line. Writes .lst, .obj and .hex beside
// the source; prints each error as "file:line: error: text" on stderr. A run that
// fails leaves none of these files behind, not even those of an earlier run.
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
    "  --fill N            OBJ file fill value, 0 to 255 (default 0)\n"
    "  --obj-start N       starting address for OBJ files creation, 0 to 65535\n"
    "                      (default 0)\n"
    "  --no-hex            do not write the HEX file (an old one is deleted)\n"
    "  --obj-copy EXT      also write a copy of the OBJ file with extension EXT\n"
    "                      (up to 8 letters, digits or _; not asm, lst, obj, hex,\n"
    "                      inc or bas)\n"
    "  --include-limit N   include nesting level limit, 0 to 100 (default 10)\n"
    "  --unofficial        accept unofficial instructions\n"
    "  --no-precedence     no operator precedence (strict left to right)\n"
    "  --verbose           print the error box text after a failed run\n"
    "Numbers take the assembler's literal forms (100, 0FFH, $FF, 0x10, %101).\n"
    "An include name with a folder part is found from the folder of the file that\n"
    "includes it; a bare name from the folder of the source.\n"
    "A failed run deletes prog.lst, prog.obj, prog.hex and the OBJ copy.\n"
    "Exit status: 0 success, 1 assembly errors, 2 bad usage or unreadable file.\n";

// A numeric option, the setting it sets and the values it takes.
struct NumericOption {
    const char* name;
    const char* setting;
    int min, max;
};

constexpr NumericOption kNumericOptions[] = {
    {"--fill", "OBJ File Fill Value", 0, 255},
    {"--obj-start", "Starting Address For OBJ Files Creation", 0, 65535},
    {"--include-limit", "Assembler Include Nesting Level Limit", 0, 100},
};

const NumericOption* FindNumericOption(const std::string& name) {
    for (const NumericOption& o : kNumericOptions)
        if (name == o.name) return &o;
    return nullptr;
}

// The value of a numeric option, or false when the text is no number in range.
bool ParseOptionValue(const NumericOption& option, const char* text, int& out) {
    if (!text) return false;
    const double v = mb::ParseNumber(text);
    if (v < option.min || v > option.max) return false;  // kNotANumber is above every max
    out = static_cast<int>(v);
    return true;
}

int UsageError(const std::string& message) {
    std::cerr << "mbasm: " << message << "\n";
    return kExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
    mb::MemorySettingsStore settings;
    mb::AssemblerOptions options;
    bool verbose = false;
    std::string source;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const char* next = i + 1 < argc ? argv[i + 1] : nullptr;
        if (arg == "--help" || arg == "-h") {
            std::cout << kUsage;
            return 0;
        } else if (const NumericOption* option = FindNumericOption(arg)) {
            int n = 0;
            if (!ParseOptionValue(*option, next, n))
                return UsageError(arg + " needs a number from " + std::to_string(option->min) +
                                  " to " + std::to_string(option->max) +
                                  (next ? ", not '" + std::string(next) + "'" : ""));
            settings.SetSettingInt(option->setting, n);
            ++i;
        } else if (arg == "--no-hex") {
            settings.SetSettingText("Generate HEX File Also", "OFF");
        } else if (arg == "--obj-copy") {
            if (!next || !mb::IsUsableObjCopyExtension(next))
                return UsageError(
                    "--obj-copy needs an extension of up to 8 letters, digits or _, other than "
                    "asm, lst, obj, hex, inc and bas" +
                    (next ? ", not '" + std::string(next) + "'" : std::string()));
            options.GenerateObjCopy = true;
            options.ObjCopyExtension = next;
            ++i;
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
            return UsageError("only one source file, please");
        }
    }
    if (source.empty()) {
        std::cerr << kUsage;
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
    std::error_code ec;
    if (file.empty() || !std::filesystem::is_regular_file(path, ec) || !std::ifstream(source)) {
        if (!file.empty()) assembler.DeleteOutputs(folder, base);
        return UsageError("cannot read " + source);
    }
    assembler.DeleteOutputs(folder, base);
    int status = 0;
    const int errors = assembler.AssembleSource(folder, file, status);
    if (errors == 0) return 0;

    std::cerr << mb::DiagnosticLines(assembler.Session(), source);
    if (verbose) std::cerr << assembler.FormatAssemblerErrors();
    std::cerr << "mbasm: " << errors << " error" << (errors == 1 ? "" : "s") << "\n";
    assembler.DeleteOutputs(folder, base);
    return kExitErrors;
}
