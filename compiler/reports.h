// The two reports drawn from a compile: the variables and where they live, and
// how often each instruction occurs in the output.
#pragma once

#include <string>

#include "compiler/compiler_state.h"

namespace mb {

// Name, type, address and scope of each declared variable, in order of
// declaration, each column as wide as 10 or its text and one blank.
std::string userVariablesReport(const CompilerState& state);

// The count of each of 67 instructions in the output text: the used ones first
// in the list's order, then those not used.
std::string instructionUsageReport(const std::string& outputText);

}  // namespace mb
