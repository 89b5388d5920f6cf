// Writers of program images: flat object files and Intel HEX files, over a range
// of byte cells. The memory saver and the assembler both write through them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mb {

// Checksum of a text of hexadecimal digit pairs: 256 minus the byte sum modulo
// 256, as two upper-case digits (a sum of 0 gives "00").
std::string ChecksumText(std::string_view pairs);

// Cells first..last (inclusive) of a table of byte cells. last < first is empty;
// the writers leave out whatever part of a range lies outside the table.
struct HexImageRange {
    const std::vector<int>* cells = nullptr;
    int first = 0;
    int last = -1;
};

// One byte per cell of the range. An empty range gives an empty file.
bool WriteObjectFile(const std::string& path, const HexImageRange& range);

// Records of 16 bytes from range.first (the last one shorter), each ":" length
// address "00" data checksum, CR LF ended; a full record whose 16 bytes all equal
// skipValue is left out; then the end record ":00000001FF".
bool WriteIntelHexFile(const std::string& path, const HexImageRange& range, int skipValue);

// The text WriteIntelHexFile writes.
std::string IntelHexText(const HexImageRange& range, int skipValue);

}  // namespace mb
