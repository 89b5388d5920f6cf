#include "disassembler.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "core/numtext.h"
#include "images/program_image.h"

namespace mb {

namespace fs = std::filesystem;

namespace {

const std::string kHeadNoOpcodes[4] = {";-------------------------------------------------",
                                       ";Z80 DISASSEMBLER LISTING", ";Label  Instruction",
                                       ";-------------------------------------------------"};
const std::string kHeadOpcodes[4] = {
    "--------------------------------------------------", "Z80 DISASSEMBLER LISTING",
    "Addr   Opcodes     Label   Instruction", "--------------------------------------------------"};
const std::string kLabelsHeadNoOpcodes[4] = {
    ";--------------------------------------------", ";LIST OF LABELS",
    ";Sorted by address:      Sorted by name:", ";--------------------------------------------"};
const std::string kLabelsHeadOpcodes[4] = {
    "---------------------------------------------", "LIST OF LABELS",
    "Sorted by address:      Sorted by name:", "---------------------------------------------"};
constexpr const char* kEol = "\r\n";

std::string FourDigits(int n) {
    const std::string s = "000" + std::to_string(n);
    return s.substr(s.size() - 4);
}

// Opcodes whose operand becomes a label: relative, then absolute jumps and calls.
bool IsRelativeJump(int op) {
    return op == 0x10 || op == 0x18 || op == 0x20 || op == 0x28 || op == 0x30 || op == 0x38;
}
bool IsAbsoluteJump(int op) {
    return op == 0xC3 || op == 0xCD || ((op & 0xC7) == 0xC2) || ((op & 0xC7) == 0xC4);
}

}  // namespace

std::string LabelName(int number) {
    return "L" + FourDigits(number) + ":";
}

Disassembler::Disassembler() {
    Clear();
}

void Disassembler::Clear() {
    buffer_.assign(65536 + 4, 0);
    size_ = 0;
    labels_.clear();
}

bool Disassembler::LoadFile(const std::string& path, int offset, ImageHost& host) {
    if (IsHexFileName(path)) {
        HexBuffer hex;
        const int size = ReadIntelHex(path, hex, host);
        if (size == 0) return false;
        if (size - 1 + offset > 65535) {
            host.ShowMessage(
                "The selected file can not fit in 64K memory with the selected offset.");
            return false;
        }
        for (int a = hex.lowestAddress; a < size; ++a) buffer_[a + offset] = hex.cells[a];
        size_ = std::max(size_, size + offset);
        host.ShowMessage(CompletionText(size - hex.lowestAddress, "loaded"));
        return true;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        host.ShowMessage("The file " + path + " can not be read.");
        return false;
    }
    const std::string data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (data.empty()) {
        host.ShowMessage("The size of the selected file is zero.");
        return false;
    }
    if (data.size() > 65536) {
        host.ShowMessage("The size of the selected file is greater than 64K.");
        return false;
    }
    if (offset + static_cast<long long>(data.size()) > 65536) {
        host.ShowMessage("The selected file can not fit in 64K memory with the selected offset.");
        return false;
    }
    for (size_t i = 0; i < data.size(); ++i)
        buffer_[offset + i] = static_cast<unsigned char>(data[i]);
    size_ = std::max(size_, offset + static_cast<int>(data.size()));
    host.ShowMessage(CompletionText(static_cast<int>(data.size()), "loaded"));
    return true;
}

int Disassembler::LabelNumber(int address) {
    auto it = std::find(labels_.begin(), labels_.end(), address);
    if (it != labels_.end()) return static_cast<int>(it - labels_.begin()) + 1;
    labels_.push_back(address);
    return static_cast<int>(labels_.size());
}

DecodedInstruction Disassembler::DecodeWithLabels(int address) {
    const int* b = &buffer_[address];
    DecodedInstruction d = DecodeInstruction(b[0], b[1], b[2], b[3], options);
    const int op = b[0];
    int target = -1;
    if (IsRelativeJump(op))
        target = (address + 2 + (b[1] < 128 ? b[1] : b[1] - 256)) & 0xFFFF;
    else if (IsAbsoluteJump(op))
        target = b[1] + 256 * b[2];
    if (target < 0) return d;
    // The stem is the text up to the operand: "JR NZ," keeps its comma.
    const size_t comma = d.text.find(',');
    const std::string stem = comma != std::string::npos ? d.text.substr(0, comma + 1)
                                                        : d.text.substr(0, d.text.find(' ') + 1);
    d.text = stem + "L" + FourDigits(LabelNumber(target));
    return d;
}

std::string Disassembler::Disassemble(int start, bool withOpcodes, const std::string& folder,
                                      const std::function<void(int)>& progress) {
    const std::string dir = folder.empty() || folder.back() == '/' ? folder : folder + "/";
    const std::string pass1Path = dir + kDisassemblerPass1File,
                      listingPath = dir + kDisassemblerListingFile;
    labels_.clear();
    std::error_code ec;
    fs::remove(pass1Path, ec);

    // Pass 1: every line in the full form, label column empty.
    std::vector<std::string> lines;
    int run = 0;
    for (int address = start; address < size_;) {
        run = (buffer_[address] == 0 && skipEmptyRanges) ? run + 1 : 0;
        if (run >= 11) {
            ++address;
            continue;
        }
        const DecodedInstruction d = DecodeWithLabels(address);
        std::string bytes;
        for (int k = 0; k < d.length; ++k) bytes += (k ? " " : "") + pb_hex2(buffer_[address + k]);
        bytes.resize(12, ' ');
        lines.push_back(pb_hex4(address) + "   " + bytes + std::string(8, ' ') + d.text);
        if (progress) progress(static_cast<int>(lines.size()));
        address += d.length;
    }
    {
        std::ofstream pass1(pass1Path, std::ios::binary);
        if (!pass1) return "";
        for (const auto& h : withOpcodes ? kHeadOpcodes : kHeadNoOpcodes) pass1 << h << kEol;
        pass1 << kEol;
        for (const auto& l : lines) pass1 << l << kEol;
    }

    // Pass 2: labels sorted by address, placed on their lines or as .EQU lines.
    const int count = static_cast<int>(labels_.size());
    std::vector<int> order(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return labels_[a] < labels_[b]; });
    std::vector<bool> onLine(static_cast<size_t>(count), false);
    {
        size_t k = 0;
        for (const auto& l : lines) {
            const int address = pb_dec4(l.substr(0, 4));
            while (k < order.size() && labels_[order[k]] < address) ++k;
            while (k < order.size() && labels_[order[k]] == address) onLine[order[k++]] = true;
        }
    }
    std::ofstream out(listingPath, std::ios::binary);
    if (!out) return "";
    for (const auto& h : withOpcodes ? kHeadOpcodes : kHeadNoOpcodes) out << h << kEol;
    out << kEol;
    if (!withOpcodes) {
        bool any = false;
        for (int i : order)
            if (!onLine[i]) {
                out << LabelName(i + 1) << "  .EQU " << AsmHex4(labels_[i]) << "H" << kEol;
                any = true;
            }
        if (any) out << kEol;
        if (start > 0) out << "        .ORG " << AsmHex4(start) << "H" << kEol;
    }
    size_t next = 0;
    for (std::string l : lines) {
        const int address = pb_dec4(l.substr(0, 4));
        while (next < order.size() && labels_[order[next]] < address) ++next;
        if (next < order.size() && labels_[order[next]] == address) {
            l.replace(19, 6, LabelName(order[next] + 1));
            while (next < order.size() && labels_[order[next]] == address) ++next;
        }
        out << (withOpcodes ? l : l.substr(19)) << kEol;
    }
    if (count > 0) {
        out << kEol;
        for (const auto& h : withOpcodes ? kLabelsHeadOpcodes : kLabelsHeadNoOpcodes)
            out << h << kEol;
        out << kEol;
        for (int k = 0; k < count; ++k) {
            const int sorted = order[k];
            out << (withOpcodes ? "" : ";") << LabelName(sorted + 1) << "  "
                << pb_hex4(labels_[sorted]) << std::string(12, ' ') << "L" << FourDigits(k + 1)
                << ":  " << pb_hex4(labels_[k]) << kEol;
        }
    }
    out.close();
    fs::remove(pass1Path, ec);
    return listingPath;
}

}  // namespace mb
