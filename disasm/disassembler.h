// The disassembler: a buffer of its own, separate from the simulated memory, to a
// listing with or without opcodes, with labels for jump and call targets.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/instruction_text.h"

namespace mb {

class ImageHost;

// Temporary files of the two passes, in the folder of "Last Path".
inline constexpr const char* kDisassemblerPass1File = "z80_disassembler_temporary_file2";
inline constexpr const char* kDisassemblerListingFile = "z80_disassembler_temporary_file";

class Disassembler {
  public:
    Disassembler();

    // Four cells beyond FFFFH let the decoder read ahead at the top.
    std::vector<int>& Buffer() { return buffer_; }
    int Size() const { return size_; }
    void SetSize(int size) { size_ = size; }
    void Clear();

    // Loads an object file at offset, or a HEX file at its own addresses, into the
    // buffer. Messages go to host; false when refused.
    bool LoadFile(const std::string& path, int offset, ImageHost& host);

    // Decodes the instruction at address, with jump and call targets as labels.
    DecodedInstruction DecodeWithLabels(int address);

    // Writes the listing to folder + kDisassemblerListingFile and returns its path
    // ("" when the files can not be written). progress(n) is called per line.
    std::string Disassemble(int start, bool withOpcodes, const std::string& folder,
                            const std::function<void(int)>& progress = nullptr);

    bool skipEmptyRanges = true;  // "Disassembler Skip Empty Ranges"
    DecodeOptions options;
    const std::vector<int>& Labels() const { return labels_; }

  private:
    int LabelNumber(int address);

    std::vector<int> buffer_;
    int size_ = 0;
    std::vector<int> labels_;  // LabelList: targets in order of first use
};

// "L0001:" for label number 1.
std::string LabelName(int number);

}  // namespace mb
