#include "settings_store.h"

#include <cstdlib>
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
    return static_cast<int>(SettingNumber(it->second));
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

double SettingNumber(const std::string& text) {
    const char* begin = text.c_str();
    char* end = nullptr;
    double v = std::strtod(begin, &end);
    return end == begin ? 0.0 : v;
}

}  // namespace mb
