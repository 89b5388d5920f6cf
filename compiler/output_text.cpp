#include "compiler/output_text.h"

#include "core/numtext.h"

namespace mb {

std::string codeHex2(int value) {
    return AsmHex2(value & 0xFF) + "H";
}
std::string codeHex4(int value) {
    return AsmHex4(value & 0xFFFF) + "H";
}

std::string joinOutputLines(const std::vector<std::string>& lines, bool protect,
                            LineProtection& protection) {
    std::string text;
    bool inside = false;
    for (const std::string& line : lines) {
        if (line == ";crypt_stop") inside = false;
        text += inside && protect ? protection.ProtectLine(line) : line;
        text += "\r\n";
        if (line == ";crypt_start") inside = true;
    }
    const std::string pair = ";crypt_stop\r\n;crypt_start\r\n";
    std::string joined;
    joined.reserve(text.size());
    std::size_t from = 0;
    for (std::size_t at = text.find(pair); at != std::string::npos; at = text.find(pair, from)) {
        const bool lineStart = at == 0 || text[at - 1] == '\n';
        joined.append(text, from, at - from);
        if (!lineStart) joined.append(pair);
        from = at + pair.size();
    }
    joined.append(text, from);
    return joined;
}

std::string singleByteOutput(const std::string& text) {
    std::string bytes = text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (static_cast<unsigned char>(bytes[i]) == 181 &&
            (i == 0 || static_cast<unsigned char>(bytes[i - 1]) != 194)) {
            bytes[i] = 'u';
        }
    }
    return bytes;
}

namespace {

std::string column(std::string text, std::size_t width) {
    for (char& c : text) {
        if (c == '\t') c = ' ';
    }
    if (text.size() > width && width != 50) text.resize(width);
    if (text.size() < width) text.append(width - text.size(), ' ');
    return text + " |";
}

std::string expandTabs(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\t') {
            out += "        ";
        } else {
            out += c;
        }
    }
    return out;
}

}  // namespace

std::string addressLogText(const std::vector<std::string>& lines) {
    std::string text = column("#", 6) + column("xlistingline", 50) + "\r\n";
    text += std::string(60, '-') + "\r\n";
    for (std::size_t i = 0; i < lines.size(); ++i) {
        text += column(std::to_string(i + 1), 6) + column(expandTabs(lines[i]), 50) + "\r\n";
    }
    return text;
}

std::string lineLogText(const CompilerState& st) {
    std::string text = column("xlinelabel2", 16) + column("xlinelabel1", 11) +
                       column("xlinelabelscope", 16) + column("xlinija", 50) +
                       column("xlinijafull", 50) + "\r\n";
    text += std::string(153, '-') + "\r\n";
    for (int i = 1; i <= st.lineCount(); ++i) {
        const BasicLine& l = st.lines[i];
        text += column(l.xlinelabel2, 16) + column(l.xlinelabel1, 11) +
                column(l.xlinelabelscope, 16) + column(l.xlinija, 50) + column(l.xlinijafull, 50) +
                "\r\n";
    }
    return text;
}

std::string declarationLogText(const CompilerState& st) {
    std::string text = column("declpreparebrj", 14) + column("declpreparescp", 14) +
                       column("declprepareime", 14) + column("declpreparetip", 14) +
                       column("declprepareuse", 14) + column("xpromused", 9) + "\r\n";
    text += std::string(91, '-') + "\r\n";
    for (std::size_t q = 0; q < st.declarations.size(); ++q) {
        const DeclarationRow& d = st.declarations[q];
        const int used = q < st.learned.declarationUsed.size() ? st.learned.declarationUsed[q] : 0;
        text += column(std::to_string(d.declpreparebrj), 14) + column(d.declpreparescp, 14) +
                column(d.declprepareime, 14) + column(d.declpreparetip, 14) +
                column(std::to_string(used), 14) + column(std::to_string(d.score), 9) + "\r\n";
    }
    return text;
}

}  // namespace mb
