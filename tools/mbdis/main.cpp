// mbdis: the disassembler on the command line.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include "core/numtext.h"
#include "disasm/disassembler.h"
#include "images/command_line_host.h"
#include "images/program_image.h"

namespace {

const char* kUsage =
    "Usage: mbdis [options] prog.obj|prog.hex\n"
    "Disassembles a program image into a listing.\n"
    "Options:\n"
    "  --offset HHHH   load address of an object file (hex, default 0000)\n"
    "  --from HHHH     start address of the listing (hex, default 0000)\n"
    "  --no-opcodes    listing without addresses and opcodes, ready to assemble again\n"
    "  --keep-empty    list every zero byte (by default runs past ten are skipped)\n"
    "  --unofficial    decode unofficial instructions\n"
    "  -o FILE         write the listing to FILE instead of standard output\n"
    "Exit status: 0 success, 2 bad usage or a file that can not be loaded.\n";

bool HexAddress(const std::string& text, int& out) {
    std::string t = text;
    for (char& c : t) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (t.empty() || t.size() > 4) return false;
    t = std::string(4 - t.size(), '0') + t;
    out = mb::pb_dec4(t);
    return out >= 0;
}

}  // namespace

int main(int argc, char** argv) {
    int offset = 0, from = 0;
    bool withOpcodes = true;
    mb::Disassembler dis;
    std::string input, output;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            std::cout << kUsage;
            return 0;
        } else if ((arg == "--offset" || arg == "--from") && i + 1 < argc) {
            if (!HexAddress(argv[++i], arg == "--offset" ? offset : from)) {
                std::cerr << "mbdis: " << arg << " takes a hex address 0000-FFFF\n";
                return 2;
            }
        } else if (arg == "--no-opcodes") {
            withOpcodes = false;
        } else if (arg == "--keep-empty") {
            dis.skipEmptyRanges = false;
        } else if (arg == "--unofficial") {
            dis.options.unofficial = true;
        } else if (arg == "-o" && i + 1 < argc) {
            output = argv[++i];
        } else if (!arg.empty() && arg[0] == '-') {
            std::cerr << "mbdis: unknown option " << arg << "\n" << kUsage;
            return 2;
        } else {
            input = arg;
        }
    }
    if (input.empty()) {
        std::cerr << kUsage;
        return 2;
    }
    if (!std::filesystem::is_regular_file(input)) {
        std::cerr << "mbdis: cannot read " << input << "\n";
        return 2;
    }
    mb::CommandLineImageHost host;
    if (!dis.LoadFile(input, offset, host)) {
        std::cerr << "mbdis: " << host.LastMessage << "\n";
        return 2;
    }

    char pattern[] = "/tmp/mbdis-XXXXXX";
    const char* dir = mkdtemp(pattern);
    if (!dir) {
        std::cerr << "mbdis: cannot make a temporary folder\n";
        return 2;
    }
    const std::string listing = dis.Disassemble(from, withOpcodes, dir);
    int status = 0;
    if (listing.empty()) {
        std::cerr << "mbdis: cannot write the listing\n";
        status = 2;
    } else {
        std::ifstream in(listing, std::ios::binary);
        if (output.empty()) {
            std::cout << in.rdbuf();
        } else if (!(std::ofstream(output, std::ios::binary) << in.rdbuf())) {
            std::cerr << "mbdis: cannot write " << output << "\n";
            status = 2;
        }
    }
    std::filesystem::remove_all(dir);
    return status;
}
