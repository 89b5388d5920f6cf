#include "settings_store.h"

#include <charconv>
#include <cstdint>
#include <set>

namespace mb {

std::string MemorySettingsStore::GetSettingText(const std::string& name, const std::string& def) {
    auto it = values_.find(name);
    if (it == values_.end()) {
        SetSettingText(name, def);
        return def.substr(0, 255);
    }
    return it->second.substr(0, 255);
}

int MemorySettingsStore::GetSettingInt(const std::string& name, int def) {
    auto it = values_.find(name);
    if (it == values_.end()) {
        SetSettingInt(name, def);
        return def;
    }
    return SettingInteger(it->second);
}

void MemorySettingsStore::SetSettingText(const std::string& name, const std::string& value) {
    values_[name] = value;
}

void MemorySettingsStore::SetSettingInt(const std::string& name, int value) {
    values_[name] = std::to_string(value);
}

std::string MemorySettingsStore::DumpSettings() {
    std::string out;
    for (const auto& [name, value] : values_) out += name + "\t" + value + "\r\n";
    return out;
}

bool MemorySettingsStore::DeleteAllSettings() {
    values_.clear();
    return true;
}

int MemorySettingsStore::DeleteLayoutSettings() {
    std::set<std::string> groups;
    for (auto it = values_.begin(); it != values_.end();) {
        const size_t slash = it->first.find('\\');
        if (slash == std::string::npos) {
            ++it;
            continue;
        }
        groups.insert(it->first.substr(0, slash));
        it = values_.erase(it);
    }
    return static_cast<int>(groups.size());
}

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

// Length of the decimal number at the start of text, 0 when there is none.
std::size_t DecimalLength(std::string_view t) {
    std::size_t i = 0, digits = 0;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
    for (; i < t.size() && IsDigit(t[i]); ++i) ++digits;
    if (i < t.size() && t[i] == '.')
        for (++i; i < t.size() && IsDigit(t[i]); ++i) ++digits;
    if (digits == 0) return 0;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
        std::size_t j = i + 1, exponentDigits = 0;
        if (j < t.size() && (t[j] == '+' || t[j] == '-')) ++j;
        for (; j < t.size() && IsDigit(t[j]); ++j) ++exponentDigits;
        if (exponentDigits > 0) i = j;
    }
    return i;
}

// The value of a text that DecimalLength accepted whole; independent of the
// process's locale, which may use a decimal comma.
std::optional<double> DecimalValue(std::string_view t) {
    if (!t.empty() && t[0] == '+') t.remove_prefix(1);
    double v = 0;
    const auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), v);
    if (ec != std::errc() || end != t.data() + t.size()) return std::nullopt;
    return v;
}

std::string_view TrimBlanks(std::string_view t) {
    while (!t.empty() && IsBlank(t.front())) t.remove_prefix(1);
    while (!t.empty() && IsBlank(t.back())) t.remove_suffix(1);
    return t;
}

}  // namespace

double SettingNumber(const std::string& text) {
    std::string_view t = text;
    while (!t.empty() && IsBlank(t.front())) t.remove_prefix(1);
    return DecimalValue(t.substr(0, DecimalLength(t))).value_or(0.0);
}

int SettingInteger(const std::string& text) {
    const double v = SettingNumber(text);
    if (v <= -2147483648.0) return INT32_MIN;
    if (v >= 2147483647.0) return INT32_MAX;
    return static_cast<int>(v);
}

std::optional<double> ReadDecimal(std::string_view text) {
    const std::string_view t = TrimBlanks(text);
    if (t.empty() || DecimalLength(t) != t.size()) return std::nullopt;
    return DecimalValue(t);
}

}  // namespace mb
