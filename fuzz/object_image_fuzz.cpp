// Feeds the input, as an ".obj" file (offset in its last two bytes), to Load Program and
// the disassembler's loader; memory saved as ".obj" and ".hex" must load back the same.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/machine.h"
#include "disasm/disassembler.h"
#include "fuzz_support.h"
#include "settings/settings_store.h"

using namespace mb;

namespace {

// Saves memory through Save Memory as the given kind and loads the file again
// into cleared memory; the memory must come back as it was.
void SaveAndReload(ProgramImages& images, Machine& machine, fuzz::PresetImageHost& host,
                   const fuzz::ScratchFolder& scratch, int filter) {
    const std::vector<int> before(machine.MemoryImage.begin(),
                                  machine.MemoryImage.begin() + kMemorySize);
    host.filter = filter;
    host.savePath = scratch.Path(filter == 2 ? "saved.hex" : "saved.obj");
    images.menusave();
    images.ClearMemory();
    machine.ObjOffset = 0;
    fuzz::Require(images.LoadProgram(host.savePath), "a saved memory loads");
    fuzz::Require(std::equal(before.begin(), before.end(), machine.MemoryImage.begin()),
                  "a saved memory loads back the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fuzz::ScratchFolder scratch;
    scratch.Empty();
    fuzz::InputWithOptions input(data, size);
    const int offset = input.Take() | input.Take() << 8;
    const std::string path = scratch.Write("image.obj", input.Payload());

    auto machine = std::make_unique<Machine>();
    machine->ObjOffset = offset;
    MemorySettingsStore settings;
    fuzz::PresetImageHost host;
    ProgramImages images(*machine, settings, host);
    static Disassembler dis;
    dis.Clear();
    if (dis.LoadFile(path, offset, host))
        fuzz::Require(dis.Size() == offset + static_cast<int>(input.Payload().size()),
                      "the disassembler holds the file");
    if (!images.LoadProgram(path)) return 0;
    fuzz::Require(images.LoadedSize() == static_cast<int>(input.Payload().size()),
                  "an object image loads whole");
    if (std::all_of(machine->MemoryImage.begin(), machine->MemoryImage.begin() + kMemorySize,
                    [](int v) { return v == 0; }))
        return 0;  // "The memory is empty.": nothing to save
    SaveAndReload(images, *machine, host, scratch, 1);
    SaveAndReload(images, *machine, host, scratch, 2);
    return 0;
}
