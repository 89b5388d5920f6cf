#include "input_queue.h"

#include <cctype>

#include "core/numtext.h"

namespace mb {

namespace {

// One item of a byte list, blanks already removed; -1 when it is no byte.
int ByteItem(std::string_view item, int base) {
    if (item.empty()) return -1;
    if (base == 16) {
        if (item.size() > 2) return -1;
        std::string digits(item);
        if (digits.size() == 1) digits.insert(0, "0");
        for (char& c : digits) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return pb_dec2(digits);
    }
    int value = 0;
    for (char c : item) {
        if (!std::isdigit(static_cast<unsigned char>(c))) return -1;
        value = value * 10 + (c - '0');
        if (value > 255) return -1;
    }
    return value;
}

}  // namespace

std::optional<std::string> ParseByteList(std::string_view entry, int base) {
    std::string text;
    for (char c : entry) {
        if (c != ' ' && c != '\t') text += c;
    }
    if (!text.empty() && text.front() == ',') text.erase(0, 1);
    if (!text.empty() && text.back() == ',') text.pop_back();
    std::string bytes;
    size_t start = 0;
    for (;;) {
        const size_t comma = text.find(',', start);
        const std::string_view item = std::string_view(text).substr(
            start, comma == std::string::npos ? std::string::npos : comma - start);
        const int value = ByteItem(item, base);
        if (value < 0) return std::nullopt;
        bytes += static_cast<char>(value);
        if (comma == std::string::npos) return bytes;
        start = comma + 1;
    }
}

void QueueAppend(std::string& chars, std::string& kinds, std::string_view bytes, QueueKind kind) {
    chars.append(bytes);
    kinds.append(bytes.size(), static_cast<char>(kind));
}

int QueueTake(std::string& chars, std::string& kinds) {
    if (chars.empty()) return -1;
    const int value = static_cast<unsigned char>(chars.front());
    chars.erase(0, 1);
    if (!kinds.empty()) kinds.erase(0, 1);
    return value;
}

std::string QueueSend(std::string& chars, std::string& kinds, QueueKind kind,
                      std::string_view entry) {
    if (entry.empty()) return "";
    if (kind == kQueueString) {
        QueueAppend(chars, kinds, entry, kind);
        return "";
    }
    bool blank = true;
    for (char c : entry) blank = blank && (c == ' ' || c == '\t');
    if (blank) return "";
    const std::optional<std::string> bytes = ParseByteList(entry, kind == kQueueHex ? 16 : 10);
    if (!bytes) return kIncorrectInput;
    QueueAppend(chars, kinds, *bytes, kind);
    return "";
}

// Built item by item rather than by joining every byte and then taking the
// separators out between string bytes: that way a comma or a quote in the
// queue cannot be mistaken for a separator.
std::string QueueDisplay(std::string_view chars, std::string_view kinds) {
    std::string text;
    bool inRun = false;
    for (size_t i = 0; i < chars.size(); ++i) {
        const char kind = i < kinds.size() ? kinds[i] : static_cast<char>(kQueueString);
        const int value = static_cast<unsigned char>(chars[i]);
        if (kind == kQueueString) {
            if (!inRun) {
                if (!text.empty()) text += ',';
                text += '"';
                inRun = true;
            }
            text += chars[i];
            continue;
        }
        if (inRun) text += '"';
        inRun = false;
        if (!text.empty()) text += ',';
        text += kind == kQueueHex ? pb_hex2H(value) : std::to_string(value);
    }
    if (inRun) text += '"';
    return text;
}

std::string PastedBytes(std::string_view text, char previous) {
    std::string bytes;
    for (char c : text) {
        if (c != '\n') {
            bytes += c;
        } else if (previous != '\r') {
            bytes += '\r';
        }
        previous = c;
    }
    return bytes;
}

std::string SendPrompt(QueueKind kind, std::string_view queue) {
    std::string prompt = "Enter string to be sent to the " + std::string(queue) + " input queue\n";
    switch (kind) {
        case kQueueString: return prompt + "(alphanumeric characters)";
        case kQueueHex: return prompt + "(comma-separated hex bytes)";
        case kQueueDecimal: return prompt + "(comma-separated decimal bytes)";
    }
    return prompt;
}

std::string ScreenLines(std::string_view raw, char previous) {
    std::string text;
    text.reserve(raw.size());
    for (char c : raw) {
        if (c == '\n') {
            if (previous != '\r') text += '\n';
        } else if (c == '\r') {
            text += '\n';
        } else if (c == '\t' || (static_cast<unsigned char>(c) >= 32 && c != 127)) {
            text += c;
        }
        previous = c;
    }
    return text;
}

}  // namespace mb
