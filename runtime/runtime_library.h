// The runtime routine groups that a compiled program calls, selected by its
// RuntimeNeeds and written behind the user's code in the order of the group
// table. The routine texts live in this folder as Z80 assembly; until a group's
// text is there, selecting it adds no lines, and nothing the compiler accepts
// today calls one.
#pragma once

#include <string>
#include <vector>

#include "runtime/runtime_needs.h"

namespace mb {

// Adds the groups that the flagged groups call themselves.
inline void AddRuntimeDependencies(RuntimeNeeds&) {}

// The selected groups as lines without line ends. singleDecimals: 1..6, the
// digits of the Single print routine.
inline std::vector<std::string> RuntimeLines(const RuntimeNeeds&, int) { return {}; }

}  // namespace mb
