#include "compiler/line_cleaner.h"

#include "assembler/source_text.h"
namespace mb {
std::string cleanBasicLine(std::string_view line) {
    return TrimText(line);
}
}  // namespace mb
