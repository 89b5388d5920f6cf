// Feeds the input, as a ".hex" file, to Load Program (line ends, HEX reader, memory),
// then to Load Another Program File and the disassembler's loader at an offset.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/machine.h"
#include "core/numtext.h"
#include "disasm/disassembler.h"
#include "fuzz_support.h"
#include "settings/settings_store.h"

using namespace mb;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fuzz::ScratchFolder scratch;
    scratch.Empty();
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string path = scratch.Write("image.hex", text);

    auto machine = std::make_unique<Machine>();
    MemorySettingsStore settings;
    fuzz::PresetImageHost host;
    ProgramImages images(*machine, settings, host);
    if (images.LoadProgram(path)) {
        const int loaded = images.LoadedSize();
        fuzz::Require(loaded >= 1 && loaded <= kMemorySize, "loaded size within 64K");
        for (int a = 0; a < kMemorySize; ++a)
            fuzz::Require(machine->MemoryImage[a] >= 0 && machine->MemoryImage[a] <= 255,
                          "memory holds bytes");
        // The same file once more on top, at an offset that depends on the input.
        const int offset = static_cast<int>(size % kMemorySize);
        host.openPath = path;
        host.textAnswer = pb_hex4(offset);
        images.menuload2();
        static Disassembler dis;
        dis.Clear();
        if (dis.LoadFile(path, offset, host))
            fuzz::Require(dis.Size() == loaded + offset, "the disassembler holds the file");
    }
    return 0;
}
