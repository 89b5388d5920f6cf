// Source preparation: the editor's text and the included files to cleaned line
// records, string constants taken out into their table, and the token rules by
// which every later stage reads a statement.
#include <filesystem>
#include <fstream>
#include <sstream>

#include "compiler/compiler.h"
#include "compiler/line_cleaner.h"

namespace mb {

namespace fs = std::filesystem;

bool statementTokens(std::string_view text, Tokens& tokens) {
    tokens.assign(1, std::string());
    std::size_t from = 0;
    while (true) {
        const std::size_t blank = text.find(' ', from);
        tokens.emplace_back(
            text.substr(from, blank == std::string_view::npos ? blank : blank - from));
        if (blank == std::string_view::npos) break;
        from = blank + 1;
        if (static_cast<int>(tokens.size()) > kMaxTokens + 1) return false;
    }
    if (static_cast<int>(tokens.size()) > kMaxTokens + 1) return false;
    tokens.resize(kMaxTokens + 1);
    return true;
}

std::string restOfTokens(const Tokens& tokens, int k) {
    std::string text;
    for (int i = k; i < static_cast<int>(tokens.size()); ++i) {
        if (i > k) text += ' ';
        text += tokens[i];
    }
    return TrimText(text);
}

std::string nextArgument(std::string& text) {
    int depth = 0;
    bool quoted = false;
    std::size_t comma = std::string::npos;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            quoted = !quoted;
        } else if (!quoted && c == '(') {
            ++depth;
        } else if (!quoted && c == ')') {
            --depth;
        } else if (!quoted && depth <= 0 && c == ',') {
            comma = i;
            break;
        }
    }
    std::string first = TrimText(std::string_view(text).substr(0, comma));
    text = comma == std::string::npos ? "" : TrimText(std::string_view(text).substr(comma + 1));
    return first;
}

int countOccurrences(std::string_view text, std::string_view part) {
    if (part.empty()) return 0;
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos;
         at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

std::string decodeSourceText(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        if (c < 128) {
            out += static_cast<char>(c);
        } else if (c >= 194 && c <= 223 && next >= 128 && next <= 191) {
            out += static_cast<char>(c);
            out += static_cast<char>(next);
            ++i;
        } else {  // a byte of its own: the character of that code
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

namespace {

// The statement of a cleaned line: comments gone, tabs as blanks, trimmed. A
// "'" or "//" outside double quotes opens a comment up to the line's end.
std::string statementText(std::string_view full) {
    std::string copy;
    bool quoted = false;
    for (std::size_t i = 0; i < full.size(); ++i) {
        const char c = full[i];
        if (!quoted && (c == '\'' || (c == '/' && i + 1 < full.size() && full[i + 1] == '/'))) {
            break;
        }
        if (c == '"') quoted = !quoted;
        copy += c == '\t' ? ' ' : c;
    }
    return TrimText(copy);
}

bool readFile(const std::string& path, std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream s;
    s << in.rdbuf();
    text = s.str();
    return true;
}

}  // namespace

void Compiler::splitSource(const std::string& text) {
    std::size_t from = 0;
    while (from < text.size()) {
        std::size_t end = text.find('\n', from);
        if (end == std::string::npos) end = text.size();
        std::string_view raw(text.data() + from, end - from);
        if (!raw.empty() && raw.back() == '\r') raw.remove_suffix(1);
        BasicLine line;
        line.xlinijafull = TrimLeft(cleanBasicLine(raw));
        line.xlinija = statementText(line.xlinijafull);
        st_.lines.push_back(std::move(line));
        from = end + 1;
    }
}

bool Compiler::prepareSource() {
    if (!runIncludes()) return false;
    for (int i = 1; i <= st_.lineCount(); ++i) {
        if (!extractStrings(i)) return false;
    }
    return true;
}

bool Compiler::runIncludes() {
    st_.mainLineCount = st_.lineCount();
    Tokens t;
    for (int i = 1; i <= st_.mainLineCount; ++i) {
        st_.currentLine = i;
        if (!statementTokens(st_.lines[i].xlinija, t)) return fail("Line too long.");
        const bool basic = t[1] == "Include", assembler = t[1] == "IncludeASM";
        if ((basic || assembler) && !t[2].empty()) {
            if (!includeFiles(restOfTokens(t, 2), assembler)) return false;
        }
    }
    for (IncludeEntry& inc : st_.includes) {
        splitSource(inc.text);
        inc.endLine = st_.lineCount();
    }
    // Included lines are read by the same token rules: none may pass the limit.
    for (int i = st_.mainLineCount + 1; i <= st_.lineCount(); ++i) {
        st_.currentLine = i;
        if (!statementTokens(st_.lines[i].xlinija, t)) return fail("Line too long.");
    }
    return true;
}

bool Compiler::includeFiles(std::string list, bool assembler) {
    while (!list.empty()) {
        const std::string arg = nextArgument(list);
        if (arg.size() < 3 || arg.front() != '"' || arg.back() != '"') {
            return fail("Incorrect argument: '" + arg + "'.");
        }
        const std::string name = arg.substr(1, arg.size() - 2);
        const std::string ext = name.size() >= 4 ? LowerText(name.substr(name.size() - 4)) : "";
        if (!assembler && ext != ".bas") return fail("Include file must have .BAS extension.");
        if (assembler && ext != ".asm") return fail("Include file must have .ASM extension.");
        const std::string path = ResolveIncludeName(name, folder_, folder_ + name_ + ".bas");
        std::string text;
        std::error_code ec;
        if (!fs::is_regular_file(path, ec) || !readFile(path, text)) {
            return fail("Include file not found.");
        }
        if (assembler) {
            std::string marked = "ASM:";
            for (char c : text) {
                marked += c;
                if (c == '\n') marked += "ASM:";
            }
            text = marked;
        }
        const std::string banner = "'==================================================\r\n";
        st_.includes.push_back(
            {path, banner + "'INCLUDED FROM FILE: " + path + "\r\n" + banner + text + "\r\n", 0});
    }
    return true;
}

bool Compiler::extractStrings(int index) {
    st_.currentLine = index;
    return extractStringsOf(st_.lines[index].xlinija);
}

// Replaces the string constants of a statement by placeholders, adding them to
// the table: "text", four quotes, and Qt, CrLf, Cr, Lf behind a blank.
bool Compiler::extractStringsOf(std::string& text) {
    const std::string line = text;
    if (line.find('"') == std::string::npos) return true;
    if (countOccurrences(line, "\"") % 2 != 0) {
        return fail("Bad expression: Improper use of double quotes.");
    }
    auto at = [&line](std::size_t i) { return i < line.size() ? line[i] : ' '; };
    auto add = [this](const std::string& value) {
        st_.stringConstants.push_back(value);
        return "#[" + std::to_string(st_.stringConstants.size() - 1) + "]";
    };
    std::string out, entry;
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quoted) {
            if (c == '"') {
                out += add(entry);
                quoted = false;
            } else {
                entry += c;
            }
            continue;
        }
        const bool afterBlank = i > 0 && line[i - 1] == ' ';
        auto named = [&](std::string_view word) {
            return afterBlank && line.compare(i, word.size(), word) == 0;
        };
        if (c == '"' && at(i + 1) == '"' && at(i + 2) == '"' && at(i + 3) == '"') {
            out += add("\"");
            i += 3;
        } else if (named("Qt")) {
            out += add("\"");
            i += 1;
        } else if (named("CrLf")) {
            out += add("\r\n");
            i += 3;
        } else if (named("Cr")) {
            out += add("\r");
            i += 1;
        } else if (named("Lf")) {
            out += add("\n");
            i += 1;
        } else if (c == '"') {
            entry.clear();
            quoted = true;
        } else {
            out += c;
        }
    }
    text = out;
    return true;
}

std::string Compiler::restorePlaceholders(const std::string& text) const {
    std::string out = text;
    for (int n = static_cast<int>(st_.stringConstants.size()) - 1; n >= 1; --n) {
        const std::string key = "#[" + std::to_string(n) + "]";
        if (out.find(key) == std::string::npos) continue;
        const std::string& value = st_.stringConstants[n];
        std::string replacement = value == "\""     ? "Qt"
                                  : value == "\r\n" ? "CrLf"
                                  : value == "\r"   ? "Cr"
                                  : value == "\n"   ? "Lf"
                                                    : "\"" + value + "\"";
        for (std::size_t at = out.find(key); at != std::string::npos;
             at = out.find(key, at + replacement.size())) {
            out.replace(at, key.size(), replacement);
        }
    }
    return out;
}

int Compiler::stringConstantAt(const std::string& token) const {
    if (token.size() >= 2 && token.front() == '"' && token.back() == '"') return 1000000;
    const int c = findConstant(token);
    if (c > 0 && st_.constants[c].isString) return 1000000;
    if (token.size() > 3 && token.compare(0, 2, "#[") == 0 && token.back() == ']') {
        const std::string digits = token.substr(2, token.size() - 3);
        if (digits.size() > 9 || digits.find_first_not_of("0123456789") != std::string::npos) {
            return 0;
        }
        const int n = std::stoi(digits);
        if (n >= 1 && n < static_cast<int>(st_.stringConstants.size())) return n;
    }
    return 0;
}

}  // namespace mb
