// Feeds the input, as the disassembler's buffer from address 0, to the decoder
// and to Disassemble, with the start address and options from its last 3 bytes.
#include <cstddef>
#include <cstdint>

#include "disasm/disassembler.h"
#include "fuzz_support.h"

using namespace mb;

namespace {

// Option bits of the last input byte.
enum : int {
    kWithOpcodes = 1,
    kKeepEmpty = 2,
    kUnofficial = 4,
    kRelativeHex = 8,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fuzz::ScratchFolder scratch;
    static Disassembler dis;
    scratch.Empty();
    fuzz::InputWithOptions input(data, size);
    const int switches = input.Take();
    const int startChoice = input.Take() | input.Take() << 8;
    std::string bytes = input.Payload();
    if (bytes.size() > 65536) bytes.resize(65536);

    dis.Clear();
    for (size_t a = 0; a < bytes.size(); ++a)
        dis.Buffer()[a] = static_cast<unsigned char>(bytes[a]);
    dis.SetSize(static_cast<int>(bytes.size()));
    dis.skipEmptyRanges = !(switches & kKeepEmpty);
    dis.options.unofficial = switches & kUnofficial;
    dis.options.relativeHex = switches & kRelativeHex;

    for (int a = 0; a < dis.Size(); ++a) {
        const std::vector<int>& b = dis.Buffer();
        const DecodedInstruction d =
            DecodeInstruction(b[a], b[a + 1], b[a + 2], b[a + 3], dis.options);
        fuzz::Require(d.length >= 1 && d.length <= 4, "an instruction is 1 to 4 bytes long");
        fuzz::Require(!d.text.empty(), "every instruction has a text");
    }
    const int start = startChoice % (dis.Size() + 1);
    const std::string listing = dis.Disassemble(start, switches & kWithOpcodes, scratch.Folder());
    fuzz::Require(!listing.empty(), "the listing is written");
    return 0;
}
