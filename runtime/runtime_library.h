#pragma once
#include <string>
#include <vector>
#include "runtime/runtime_needs.h"
namespace mb {
inline void AddRuntimeDependencies(RuntimeNeeds&) {}
inline std::vector<std::string> RuntimeLines(const RuntimeNeeds&, int) { return {}; }
}
