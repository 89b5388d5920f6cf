#pragma once
#include <string>
#include <string_view>
namespace mb {
std::string reservedKeywordMatching(std::string_view name);
std::string keywordLoadLog();
}  // namespace mb
