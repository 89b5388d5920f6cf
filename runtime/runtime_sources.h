// The assembly text of the runtime routine groups, one entry per file of
// runtime/asm, embedded at build time (embed_asm.cmake). Internal to the
// library; the compiler asks runtime_library.h.
#pragma once

namespace mb {

struct RuntimeSource {
    const char* Name;  // the file's stem, e.g. "single_addition"
    const char* Text;  // its lines, each ending in "\n"
};

extern const RuntimeSource kRuntimeSources[];
extern const int kRuntimeSourceCount;

}  // namespace mb
