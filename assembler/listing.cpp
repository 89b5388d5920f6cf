// The listing, the object image, the HEX file and the OBJ copy of a run.
#include <filesystem>
#include <fstream>

#include "assembler.h"
#include "core/numtext.h"
#include "images/hex_writer.h"

namespace mb {

namespace fs = std::filesystem;

namespace {

std::string FourDigitLine(int n) {
    std::string s = std::to_string(n % 10000);
    return std::string(4 - s.size(), '0') + s;
}

std::string Marker(int level) {
    return level == 0 ? "   " : level == 1 ? "+  " : level == 2 ? "++ " : "+++";
}

// The opcode text padded with blanks to a multiple of 12 (an empty one to 12).
std::string PaddedOpcodes(const std::string& text) {
    std::string padded = text;
    const size_t groups = text.empty() ? 1 : (text.size() + 11) / 12;
    padded.resize(groups * 12, ' ');
    return padded;
}

constexpr const char* kEol = "\r\n";
const std::string kRule(45, '-');

}  // namespace

void Assembler::WriteListing(bool silent) {
    AssemblySession& s = session_;
    const std::string path = s.Folder + s.BaseName + ".lst";
    std::error_code ec;
    fs::remove(path, ec);

    const bool mapping = !silent && options_.Tracking && s.ErrorCount == 0;
    if (mapping) {
        s.Map.IncludeIndex.assign(65536, 0);
        s.Map.FileLine.assign(65536, 0);
        s.Map.ListingLine.assign(65536, 0);
    }
    std::string out = kRule + kEol + "CORVALENT Z80 ASSEMBLER LISTING" + kEol +
                      "Line   Addr Opcode      Label   Instruction" + kEol + kRule + kEol;
    s.ListingLine = 5;
    for (int i : WalkOrder()) {
        const SourceLine& line = s.Lines[i];
        const std::string head = FourDigitLine(line.FileLine) + Marker(line.IncludeLevel);
        if (mapping && line.Address >= 0 && line.Address <= 65535) {
            s.Map.IncludeIndex[line.Address] = line.IncludeIndex;
            s.Map.FileLine[line.Address] = line.FileLine;
            s.Map.ListingLine[line.Address] = s.ListingLine;
        }
        const std::string opcodes = PaddedOpcodes(line.OpcodeText);
        for (size_t g = 0; g < opcodes.size(); g += 12) {
            out += head + pb_hex4(line.Address + static_cast<int>(g / 3)) + " " +
                   opcodes.substr(g, 12);
            if (g == 0) out += line.Text;
            out += kEol;
            ++s.ListingLine;
        }
        if (line.ErrorSeverity > 0) {
            out += "Line " + FourDigitLine(line.FileLine) + ": Error: " + line.ErrorText + kEol;
            AssemblerError e;
            if (line.IncludeIndex > 0) {
                e.File = s.IncludeFiles[line.IncludeIndex - 1];
                s.ErrorInIncludeFile = true;
            }
            e.FileLine = line.FileLine;
            e.ListingLine = s.ListingLine;
            e.Severity = line.ErrorSeverity;
            e.Text = "Line " + FourDigitLine(line.FileLine) + ":     " +
                     TrimText(CleanSourceLine(protection_.UnprotectLine(line.Text))) +
                     "          Error: " + line.ErrorText;
            s.ErrorList.push_back(std::move(e));
            ++s.ListingLine;
        }
    }
    out += "Number of errors = " + std::to_string(s.ErrorCount) + kEol;
    s.Map.Valid = mapping;
    std::ofstream(path, std::ios::binary) << out;
}

void Assembler::WriteObjectFiles() {
    AssemblySession& s = session_;
    int highest = -1;
    for (int i : WalkOrder()) {
        const SourceLine& line = s.Lines[i];
        const std::string text = TrimRight(line.OpcodeText);
        const int count = static_cast<int>(text.size() + 1) / 3;
        int address = line.Address;
        for (int k = 0; k < count && address <= 65535; ++k, ++address) {
            s.ObjectCells[address] = pb_dec2(text.substr(static_cast<size_t>(k) * 3, 2));
            highest = std::max(highest, address);
        }
    }
    const std::string stem = s.Folder + s.BaseName;
    HexImageRange range{&s.ObjectCells, s.ObjStartAddress, highest};
    WriteObjectFile(stem + ".obj", range);
    if (HexEnabled()) WriteIntelHexFile(stem + ".hex", range, s.FillValue);
    if (ObjCopyWanted()) {
        std::error_code ec;
        const std::string copy = stem + "." + options_.ObjCopyExtension;
        fs::remove(copy, ec);
        fs::copy_file(stem + ".obj", copy, ec);
    }
}

}  // namespace mb
