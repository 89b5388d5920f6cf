// Line services shared by the assembler and the BASIC compiler: comment removal,
// quote blanking, and the protected-line scrambling of generated sources.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mb {

// The line without its comment (first ";" outside quotes) and trailing blanks.
// Tabs become blanks and runs of blanks outside quotes collapse to one, so a line
// that began with white space still begins with one blank. Quoted text is kept.
std::string CleanSourceLine(std::string_view text);

// A text of equal length in which every character from an opening quote up to,
// not including, its closing quote is a blank. A "'" directly behind "af" (any
// case) opens nothing, so EX AF,AF' needs no closing quote.
std::string BlankQuoted(std::string_view text);

// For each character, whether it lies inside quotes by the same rule: an opening
// quote and the text behind it count as inside, the closing quote as outside.
std::vector<bool> QuotedPositions(std::string_view text);

// The path of the file that an include line names. A backslash and "/" both separate
// folders. A bare name lies in the project folder (which ends in "/"); a relative
// name with a folder part is taken from the folder of the including file, so a
// source finds its includes wherever the assembler is started; an absolute name
// stands as it is.
std::string ResolveIncludeName(std::string_view name, std::string_view projectFolder,
                               std::string_view includingFile);

std::string TrimText(std::string_view text);
std::string TrimLeft(std::string_view text);
std::string TrimRight(std::string_view text);
std::string UpperText(std::string_view text);
std::string LowerText(std::string_view text);

// Scrambling of generated lines between ";crypt_start" and ";crypt_stop". The key
// index runs on from line to line, so lines are unscrambled in writing order.
class LineProtection {
  public:
    void Reset() { index_ = 0; }
    std::string ProtectLine(std::string_view text);
    // A line that does not begin with ";protected:" passes unchanged.
    std::string UnprotectLine(std::string_view text);

  private:
    int NextKey();
    int index_ = 0;
};

inline constexpr std::string_view kProtectedPrefix = ";protected:";

}  // namespace mb
