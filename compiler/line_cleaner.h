#pragma once
#include <string>
#include <string_view>
namespace mb {
std::string cleanBasicLine(std::string_view line);
}
