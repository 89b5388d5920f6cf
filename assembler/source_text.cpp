#include "source_text.h"

#include <algorithm>
#include <cctype>

namespace mb {

namespace {

// Walks a line and reports, for each character, whether it lies inside quotes
// (the opening quote counts as inside, the closing one as outside).
class QuoteTracker {
  public:
    // Returns true when the character at i is quoted text or an opening quote.
    bool Step(std::string_view t, size_t i) {
        const char c = t[i];
        if (quote_ != 0) {
            if (c == quote_) {
                quote_ = 0;
                return false;
            }
            return true;
        }
        if (c == '"' || (c == '\'' && !AfterAf(t, i))) {
            quote_ = c;
            return true;
        }
        return false;
    }

  private:
    static bool AfterAf(std::string_view t, size_t i) {
        return i >= 2 && std::tolower(static_cast<unsigned char>(t[i - 2])) == 'a' &&
               std::tolower(static_cast<unsigned char>(t[i - 1])) == 'f';
    }
    char quote_ = 0;
};

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

}  // namespace

std::string CleanSourceLine(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    QuoteTracker quotes;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i] == '\t' ? ' ' : text[i];
        const bool quoted = quotes.Step(text, i);
        if (!quoted) {
            if (c == ';') break;
            if (c == ' ' && !out.empty() && out.back() == ' ') continue;
        }
        out.push_back(c);
    }
    return TrimRight(out);
}

std::string BlankQuoted(std::string_view text) {
    if (text.find('"') == std::string_view::npos && text.find('\'') == std::string_view::npos)
        return std::string(text);
    std::string out(text);
    QuoteTracker quotes;
    for (size_t i = 0; i < text.size(); ++i)
        if (quotes.Step(text, i)) out[i] = ' ';
    return out;
}

std::vector<bool> QuotedPositions(std::string_view text) {
    std::vector<bool> out(text.size());
    QuoteTracker quotes;
    for (size_t i = 0; i < text.size(); ++i) out[i] = quotes.Step(text, i);
    return out;
}

std::string ResolveIncludeName(std::string_view name, std::string_view projectFolder,
                               std::string_view includingFile) {
    std::string path(name);
    std::replace(path.begin(), path.end(), '\\', '/');
    if (path.find('/') == std::string::npos) return std::string(projectFolder) + path;
    if (path[0] == '/') return path;
    const size_t slash = includingFile.rfind('/');
    const std::string_view folder =
        slash == std::string_view::npos ? std::string_view() : includingFile.substr(0, slash + 1);
    return std::string(folder) + path;
}

std::string TrimLeft(std::string_view t) {
    size_t b = 0;
    while (b < t.size() && IsBlank(t[b])) ++b;
    return std::string(t.substr(b));
}

std::string TrimRight(std::string_view t) {
    size_t e = t.size();
    while (e > 0 && IsBlank(t[e - 1])) --e;
    return std::string(t.substr(0, e));
}

std::string TrimText(std::string_view t) {
    return TrimLeft(TrimRight(t));
}

std::string UpperText(std::string_view t) {
    std::string s(t);
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

std::string LowerText(std::string_view t) {
    std::string s(t);
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

namespace {
// Small additive keys, cycled through one per character.
constexpr int kProtectionKeys[31] = {3, 1, 4, 1, 2, 2, 4, 3, 1, 3, 2, 4, 1, 2, 3, 4,
                                     2, 1, 3, 4, 4, 1, 2, 3, 1, 4, 2, 3, 3, 1, 2};
constexpr char kEscapedFrom[] = {9, 126, 125, 124, 123};
constexpr char kEscapedTo[] = {31, 30, 29, 28, 27};
}  // namespace

int LineProtection::NextKey() {
    const int k = kProtectionKeys[index_];
    index_ = index_ == 30 ? 0 : index_ + 1;
    return k;
}

std::string LineProtection::ProtectLine(std::string_view text) {
    std::string out(kProtectedPrefix);
    for (char c : text) {
        for (int j = 0; j < 5; ++j)
            if (c == kEscapedFrom[j]) c = kEscapedTo[j];
        out.push_back(static_cast<char>(c + NextKey()));
    }
    return out;
}

std::string LineProtection::UnprotectLine(std::string_view text) {
    if (text.substr(0, kProtectedPrefix.size()) != kProtectedPrefix) return std::string(text);
    std::string out;
    for (char c : text.substr(kProtectedPrefix.size())) {
        c = static_cast<char>(c - NextKey());
        for (int j = 0; j < 5; ++j)
            if (c == kEscapedTo[j]) c = kEscapedFrom[j];
        out.push_back(c);
    }
    return out;
}

}  // namespace mb
