// The runtime routines that a compiled BASIC program calls, as Z80 assembly
// lines, selected by the flags of RuntimeNeeds. The text of each routine group
// is a file of runtime/asm, embedded at build time.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/runtime_needs.h"

namespace mb {

// The decimals of the Single print when the program sets none.
constexpr int kDefaultSingleDecimals = 3;

// One routine group: its flag, the comment line that opens its text, and the
// file of runtime/asm that holds the text.
struct RuntimeGroup {
    int Flag;
    std::string_view CommentLine;
    std::string_view Source;
};

// All groups, in the order of emission.
std::span<const RuntimeGroup> RuntimeGroups();

// The runtime routine groups that needs selects, in emission order, as lines
// without line ends. singleDecimals: 1..6, the digits of the Single print (a
// value outside is taken as the nearest of them). The string group emits each
// separately flagged entry (kStringRoutineEntries) only when its entry flag is
// set. Exactly the flagged groups are emitted: the groups that they call must
// be flagged too (AddRuntimeDependencies).
std::vector<std::string> RuntimeLines(const RuntimeNeeds& needs, int singleDecimals);

// Adds to needs every group, and every string entry, that a flagged one calls,
// until nothing more is added: Long comparison calls the Long subtraction, the
// print routines the print buffer and their division, the Single print the
// Long print, the conversions, the Single subtraction and multiplication; some
// string entries copy through SG20. A string entry flag sets the string group.
void AddRuntimeDependencies(RuntimeNeeds& needs);

}  // namespace mb
