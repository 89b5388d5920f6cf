#include "settings_store.h"

#include <cstdlib>

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

double SettingNumber(const std::string& text) {
    const char* begin = text.c_str();
    char* end = nullptr;
    double v = std::strtod(begin, &end);
    return end == begin ? 0.0 : v;
}

}  // namespace mb
