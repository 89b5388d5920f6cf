#include "hex_writer.h"

#include <algorithm>
#include <fstream>

#include "core/numtext.h"

namespace mb {

std::string ChecksumText(std::string_view pairs) {
    int sum = 0;
    for (size_t i = 0; i + 1 < pairs.size(); i += 2) {
        const int v = pb_dec2(pairs.substr(i, 2));
        if (v > 0) sum += v;
    }
    return pb_hex2(256 - sum % 256);
}

namespace {

// The part of a range that lies inside its table of cells.
HexImageRange InsideTable(HexImageRange range) {
    const int size = range.cells ? static_cast<int>(range.cells->size()) : 0;
    range.first = std::max(range.first, 0);
    range.last = std::min(range.last, size - 1);
    return range;
}

}  // namespace

bool WriteObjectFile(const std::string& path, const HexImageRange& wanted) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    const HexImageRange range = InsideTable(wanted);
    for (int a = range.first; a <= range.last; ++a)
        out.put(static_cast<char>((*range.cells)[a] & 0xFF));
    return static_cast<bool>(out);
}

std::string IntelHexText(const HexImageRange& wanted, int skipValue) {
    const HexImageRange range = InsideTable(wanted);
    std::string out;
    for (int block = range.first; block <= range.last; block += 16) {
        const int length = std::min(16, range.last - block + 1);
        std::string data;
        bool allSkip = length == 16;
        for (int k = 0; k < length; ++k) {
            const int v = (*range.cells)[block + k] & 0xFF;
            allSkip = allSkip && v == (skipValue & 0xFF);
            data += pb_hex2(v);
        }
        if (allSkip) continue;
        const std::string body = pb_hex2(length) + pb_hex4(block) + "00" + data;
        out += ":" + body + ChecksumText(body) + "\r\n";
    }
    out += ":00000001" + ChecksumText("00000001") + "\r\n";
    return out;
}

bool WriteIntelHexFile(const std::string& path, const HexImageRange& range, int skipValue) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out << IntelHexText(range, skipValue);
    return static_cast<bool>(out);
}

}  // namespace mb
