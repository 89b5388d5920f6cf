#include "program_image.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

#include "core/numtext.h"
#include "hex_writer.h"
#include "settings/settings_store.h"

namespace mb {

namespace fs = std::filesystem;

namespace {

bool ReadWholeFile(const std::string& path, std::string& data) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::stringstream s;
    s << in.rdbuf();
    data = s.str();
    return true;
}

// Every occurrence of from, left to right and not overlapping, replaced by to. The
// text is built anew: replacing in place would move the tail at each hit, and a
// file of many short lines would take time with the square of its length.
std::string ReplaceAll(std::string_view s, std::string_view from, std::string_view to) {
    std::string out;
    out.reserve(s.size());
    size_t start = 0;
    for (size_t at = s.find(from); at != std::string_view::npos; at = s.find(from, start)) {
        out.append(s.substr(start, at - start)).append(to);
        start = at + from.size();
    }
    return out.append(s.substr(start));
}

std::string Upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

std::string Lower(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string HexError(int line, const char* ending) {
    return "Input program file in Intel Hex Format contains errors.\nLine number " +
           std::to_string(line) + ending;
}

// Parses the records; returns the error text, or "" when the file is good.
std::string ParseRecords(const std::string& text, HexBuffer& buffer, int& size) {
    const std::string t =
        ReplaceAll(ReplaceAll(ReplaceAll(text, "\r", "\n"), "\n\n", "\n"), "\n\n", "\n");
    int linear = 0, segment = 0, number = 0;
    size_t start = 0;
    while (start <= t.size()) {
        size_t end = t.find('\n', start);
        if (end == std::string::npos) end = t.size();
        std::string line = t.substr(start, end - start);
        start = end + 1;
        ++number;
        while (!line.empty() && line.back() == ' ') line.pop_back();
        if (line.empty() || line[0] == ';') continue;
        if (line[0] != ':') return HexError(number, ": The record does not begin with ':' simbol.");
        if (line.size() < 11) return HexError(number, ": The record is too short.");
        const std::string body = line.substr(1, line.size() - 3);
        if (line.substr(line.size() - 2) != ChecksumText(body))
            return HexError(number, ": Invalid 'checksum' field in the record.");
        const int length = pb_dec2(body.substr(0, 2));
        const int address = pb_dec4(body.substr(2, 4));
        const int type = pb_dec2(body.substr(6, 2));
        const std::string data = body.substr(8);
        if (type == 1) break;
        if (type == 3 || type == 5) continue;
        if (type == 4) {
            if (data.size() != 4 || address != 0 || pb_dec4(data) < 0)
                return HexError(number, ": Invalid '04 type' record.");
            linear = pb_dec4(data);
            continue;
        }
        if (type == 2) {
            if (data.size() != 4 || data[3] != '0' || address != 0 || pb_dec4(data) < 0)
                return HexError(number, ": Invalid '02 type' record.");
            segment = pb_dec4(data);
            continue;
        }
        if (type != 0) return HexError(number, ": Invalid 'record type' field in the record.");
        if (length < 0) return HexError(number, ": Invalid 'number of bytes' field in the record.");
        if (address < 0) return HexError(number, ": Invalid 'address' field in the record.");
        if (static_cast<int>(data.size()) != 2 * length)
            return HexError(number, ": The record does not contain the specified number of bytes.");
        long long at = (static_cast<long long>(linear) * 4096 + segment) * 16 + address;
        for (int k = 0; k < length; ++k, ++at) {
            if (at > 65535) return HexError(number, ": Address out of range.");
            const int v = pb_dec2(data.substr(static_cast<size_t>(k) * 2, 2));
            if (v < 0) return HexError(number, ": Invalid data byte in the record.");
            buffer.cells[at] = v;
            if (at < buffer.lowestAddress) buffer.lowestAddress = static_cast<int>(at);
            if (at + 1 > size) size = static_cast<int>(at + 1);
        }
    }
    return "";
}

}  // namespace

bool IsHexFileName(const std::string& path) {
    return path.size() >= 4 && Lower(path.substr(path.size() - 4)) == ".hex";
}

std::string CompletionText(int bytes, const std::string& verb) {
    char kb[40];
    std::snprintf(kb, sizeof kb, "%.15g", bytes / 1024.0);
    return "Operation completed.\nTotal " + std::to_string(bytes) + " (" +
           std::string(kb).substr(0, 4) + "K) bytes " + verb + ".";
}

int ReadIntelHex(const std::string& path, HexBuffer& buffer, ImageHost& host) {
    buffer = HexBuffer{};
    std::string text;
    if (!ReadWholeFile(path, text)) {
        host.ShowMessage("The file " + path + " can not be read.");
        return 0;
    }
    int size = 0;
    const std::string error = ParseRecords(text, buffer, size);
    if (!error.empty()) {
        host.ShowMessage(error);
        return 0;
    }
    if (size == 0) host.ShowMessage("Input program file in Intel Hex Format contains no data.");
    return size;
}

void NormaliseLineEnds(const std::string& path) {
    std::string text;
    if (!ReadWholeFile(path, text)) return;
    std::string fixed;
    fixed.reserve(text.size() + text.size() / 16);
    for (char c : text) {
        if (c == '\r') continue;
        if (c == '\n') fixed += '\r';
        fixed += c;
    }
    if (fixed.size() == text.size()) return;
    const fs::path p(path);
    const fs::path copy =
        p.parent_path() / (p.stem().string() + "_lf_orig" + p.extension().string());
    std::error_code ec;
    fs::copy_file(p, copy, fs::copy_options::overwrite_existing, ec);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << fixed;
}

bool ProgramImages::RefuseWhileRunning() {
    if (!host_.SimulationRunning()) return false;
    host_.ShowMessage("Please stop the simulation first.");
    return true;
}

bool ProgramImages::LoadProgram(const std::string& path) {
    if (IsHexFileName(path)) {
        NormaliseLineEnds(path);
        HexBuffer buffer;
        const int size = ReadIntelHex(path, buffer, host_);
        if (size == 0) return false;
        programFileName_ = path;
        host_.Yield();
        loadedSize_ = size;
        for (int a = 0; a < size; ++a) m_.MemoryImage[a] = buffer.cells[a];
    } else {
        std::string data;
        if (!ReadWholeFile(path, data)) {
            host_.ShowMessage("The file " + path + " can not be read.");
            return false;
        }
        const long long size = static_cast<long long>(data.size());
        if (size > 65536) {
            host_.ShowMessage("The size of the selected file is greater than 64K.");
            return false;
        }
        if (size == 0) {
            host_.ShowMessage("The size of the selected file is zero.");
            return false;
        }
        if (m_.ObjOffset + size > 65536) {
            host_.ShowMessage(
                "The selected file can not fit in 64K memory with the current offset for OBJ files "
                "loading.");
            return false;
        }
        programFileName_ = path;
        host_.Yield();
        loadedSize_ = static_cast<int>(size);
        for (long long i = 0; i < size; ++i)
            m_.MemoryImage[m_.ObjOffset + i] = static_cast<unsigned char>(data[i]);
    }
    host_.RefreshMemoryViews();
    host_.ShowMessage(CompletionText(loadedSize_, "loaded"));
    host_.ProgramLoaded(path);
    return true;
}

bool ProgramImages::LoadMainProgram(const std::string& path) {
    if (RefuseWhileRunning()) return false;
    ClearMemory();
    return LoadProgram(path);
}

void ProgramImages::ClearMemory() {
    if (RefuseWhileRunning()) return;
    for (int a = 0; a < kMemorySize; ++a) m_.MemoryImage[a] = 0;
    loadedSize_ = 0;
    programFileName_.clear();
    host_.MemoryCleared();
    clean(m_);
}

void ProgramImages::menuload() {
    if (RefuseWhileRunning()) return;
    int filter = settings_.GetSettingInt("File Load Filter Index", 1);
    const std::string path =
        host_.AskOpenFile("Load Program", settings_.GetSettingText("Last Path", ""), filter);
    if (path.empty()) return;
    settings_.SetSettingText("Last Path", fs::path(path).parent_path().string());
    settings_.SetSettingInt("File Load Filter Index", IsHexFileName(path) ? 2 : 1);
    LoadMainProgram(path);
}

void ProgramImages::menureload() {
    if (RefuseWhileRunning()) return;
    if (programFileName_.empty()) {
        host_.ShowMessage("Please load program file first.");
        return;
    }
    const std::string path = programFileName_;
    if (!fs::exists(path)) {
        host_.ShowMessage("The file does not exist any more.");
        return;
    }
    LoadMainProgram(path);
}

std::optional<int> ProgramImages::AskOffset(const std::string& prompt) {
    const std::optional<std::string> answer = host_.AskText(prompt, "0");
    if (!answer || answer->empty()) return std::nullopt;
    std::string text = Upper(*answer);
    if (text.size() < 4) text = std::string(4 - text.size(), '0') + text;
    const int offset = pb_dec4(text);
    if (offset < 0) {
        host_.ShowMessage("Operation aborted...\nWrong entry.");
        return std::nullopt;
    }
    return offset;
}

void ProgramImages::menuload2() {
    if (programFileName_.empty()) {
        host_.ShowMessage("The main program file must be loaded first.");
        return;
    }
    if (host_.SimulationRunning() && host_.SimulationRate() != kRateStepByStep) {
        host_.ShowMessage("The simulation will be now switched to the Step By Step mode.");
        host_.SelectStepByStep();
        host_.Yield();
    }
    int filter = settings_.GetSettingInt("File Load Another Filter Index", 1);
    const std::string path = host_.AskOpenFile("Load Another Program File",
                                               settings_.GetSettingText("Last Path", ""), filter);
    if (path.empty()) return;
    settings_.SetSettingInt("File Load Another Filter Index", filter);
    int bytes = 0;
    if (IsHexFileName(path)) {
        HexBuffer buffer;
        const int size = ReadIntelHex(path, buffer, host_);
        if (size == 0) return;
        const std::optional<int> offset =
            AskOffset("Enter the offset address this HEX file loading [0000-FFFF]:");
        if (!offset) return;
        if (size - 1 + *offset >= 65536) {
            host_.ShowMessage(
                "Operation aborted...\nThe HEX file to be loaded could not fit 64K memory range.");
            return;
        }
        for (int a = buffer.lowestAddress; a < size; ++a)
            m_.MemoryImage[a + *offset] = buffer.cells[a];
        bytes = size - buffer.lowestAddress;
    } else {
        std::string data;
        if (!ReadWholeFile(path, data) || data.empty() || data.size() > 65536) {
            host_.ShowMessage(data.empty() ? "The size of the selected file is zero."
                                           : "The size of the selected file is greater than 64K.");
            return;
        }
        const std::optional<int> offset =
            AskOffset("Enter the offset address this OBJ file loading [0000-FFFF]:");
        if (!offset) return;
        if (*offset + static_cast<long long>(data.size()) > 65536) {
            host_.ShowMessage(
                "Operation aborted...\nThe OBJ file to be loaded could not fit 64K memory range.");
            return;
        }
        for (size_t i = 0; i < data.size(); ++i)
            m_.MemoryImage[*offset + i] = static_cast<unsigned char>(data[i]);
        bytes = static_cast<int>(data.size());
    }
    host_.RefreshMemoryViews();
    host_.ShowMessage(CompletionText(bytes, "loaded"));
}

void ProgramImages::menusave() {
    if (RefuseWhileRunning()) return;
    int last = kMemorySize - 1;
    while (last >= 0 && m_.MemoryImage[last] == 0) --last;
    if (last < 0) {
        host_.ShowMessage("The memory is empty.");
        return;
    }
    int filter = settings_.GetSettingInt("File Save Filter Index", 1);
    std::string path =
        host_.AskSaveFile("Save Memory", settings_.GetSettingText("Last Path", ""), filter);
    if (path.empty()) return;
    settings_.SetSettingText("Last Path", fs::path(path).parent_path().string());
    const std::string typed = path.size() >= 4 ? Lower(path.substr(path.size() - 4)) : "";
    if (typed == ".hex")
        filter = 2;
    else if (typed == ".obj")
        filter = 1;
    settings_.SetSettingInt("File Save Filter Index", filter);
    if (typed == ".hex" || typed == ".obj") path.resize(path.size() - 4);
    path += filter == 2 ? ".hex" : ".obj";
    if (fs::exists(path)) {
        if (!host_.AskYesNo("Do you want to overwrite existing file " + path + "?")) return;
        std::error_code ec;
        fs::remove(path, ec);
    }
    std::vector<int> cells(m_.MemoryImage.begin(), m_.MemoryImage.begin() + kMemorySize);
    const HexImageRange range{&cells, 0, last};
    const bool written =
        filter == 2 ? WriteIntelHexFile(path, range, 0) : WriteObjectFile(path, range);
    if (!written) {
        host_.ShowMessage("The file " + path + " can not be written.");
        return;
    }
    programFileName_ = path;
    loadedSize_ = last + 1;
    host_.ShowMessage(CompletionText(loadedSize_, "saved"));
}

}  // namespace mb
