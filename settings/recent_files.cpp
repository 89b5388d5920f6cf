#include "recent_files.h"

#include <algorithm>

namespace mb {

RecentFiles::RecentFiles(SettingsStore& settings, std::function<bool(const std::string&)> exists)
    : settings_(settings), exists_(std::move(exists)) {}

std::string RecentFiles::Key(int slot) {
    return "Recent Files - Simulator - " + std::to_string(slot);
}

std::vector<std::string> RecentFiles::Read() {
    const bool dropDeleted =
        settings_.GetSettingInt("Show Recent Files - Remove Deleted Files", 1) == 1;
    std::vector<std::string> paths;
    for (int slot = 1; slot <= kSlots; ++slot) {
        const std::string path = settings_.GetSettingText(Key(slot), "");
        if (path.empty() || (dropDeleted && !exists_(path))) continue;
        paths.push_back(path);
    }
    Write(paths);
    return paths;
}

void RecentFiles::Write(const std::vector<std::string>& paths) {
    for (int slot = 1; slot <= kSlots; ++slot)
        settings_.SetSettingText(Key(slot),
                                 slot <= static_cast<int>(paths.size()) ? paths[slot - 1] : "");
}

void RecentFiles::Add(const std::string& path) {
    std::vector<std::string> paths = Read();
    paths.erase(std::remove(paths.begin(), paths.end(), path), paths.end());
    paths.insert(paths.begin(), path);
    if (static_cast<int>(paths.size()) > kSlots) paths.resize(kSlots);
    Write(paths);
}

void RecentFiles::Clear() {
    Write({});
}

std::string RecentFiles::Caption(int index, const std::string& path) {
    const bool shorten = settings_.GetSettingInt("Show Recent Files - Shorten Long Paths", 1) == 1;
    const std::string number = index == 9 ? "1&0" : std::to_string(index + 1);
    return number + ": " + (shorten ? ShortenPath(path) : path);
}

std::string ShortenPath(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return path;
    const std::string folder = path.substr(0, slash);
    if (folder.size() <= 45) return path;
    // U+2026, the ellipsis, in UTF-8.
    return folder.substr(0, 20) + " \xE2\x80\xA6 " + folder.substr(folder.size() - 20) +
           path.substr(slash);
}

}  // namespace mb
