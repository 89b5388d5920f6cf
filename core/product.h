// The product's name and version, as generated files and reports show them.
#pragma once

namespace mb {

inline constexpr const char* kProductName = "Marrowgate Bench";
inline constexpr const char* kProductVersion = "0.1";

}  // namespace mb
