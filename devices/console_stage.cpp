#include "console_stage.h"

#include <algorithm>
#include <iterator>

#include "core/execute.h"

namespace mb {

ConsoleStage::ConsoleStage(Machine& m, Options options, Output output, Warning warning)
    : m_(m), options_(options), output_(std::move(output)), warning_(std::move(warning)) {
    if (options_.cpm) {
        // JP 0000H at the warm boot keeps a stray jump there harmless; the
        // BDOS entry's JP gives the top of the program area at 0006H.
        const int page0[] = {0xC3, 0x00, 0x00, 0x00, 0x00, 0xC3, kBdosTop & 0xFF, kBdosTop >> 8};
        std::copy(std::begin(page0), std::end(page0), m.MemoryImage.begin());
        MarkAddress(m, kWarmBoot, kMarkHostChecks);
        MarkAddress(m, kBdosEntry, kMarkHostChecks);
    }
    if (options_.stopAt >= 0) MarkAddress(m, options_.stopAt, kMarkHostChecks);
}

void ConsoleStage::Checks(Machine& m) {
    if (options_.cpm) {
        if (m.PC == kBdosEntry) ServeBdos(m);
        if (m.PC == kWarmBoot) m.StopRequest = true;
    }
    if (m.PC == options_.stopAt) m.StopRequest = true;
}

void ConsoleStage::PrepareStart() {
    if (!options_.cpm) return;
    m_.SP = kBdosTop;
    PushWord(m_, kWarmBoot);
}

void ConsoleStage::ServeBdos(Machine& m) {
    switch (m.C) {
        case 0: m.StopRequest = true; break;
        case 2: output_(m.E); break;
        case 9:
            for (int i = 0, a = RegDE(m); i < kMemorySize && (m.MemoryImage[a] & 0xFF) != '$';
                 ++i, a = (a + 1) & 0xFFFF) {
                output_(m.MemoryImage[a] & 0xFF);
            }
            break;
        default:
            if (!warned_[m.C & 0xFF]) {
                warning_("BDOS function " + std::to_string(m.C) + " is not served");
                warned_[m.C & 0xFF] = true;
            }
    }
    m.PC = PopWord(m);  // the RET of the BDOS entry
}

}  // namespace mb
