#include "compiler/keywords.h"
namespace mb {
std::string reservedKeywordMatching(std::string_view) {
    return "";
}
std::string keywordLoadLog() {
    return "";
}
}  // namespace mb
