// The list of recently loaded program files: ten slots under "Recent Files -
// Simulator - 1" to "- 10", newest first.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "settings_store.h"

namespace mb {

class RecentFiles {
  public:
    static constexpr int kSlots = 10;

    // exists(path) tells whether a file is still there (the file system in use).
    RecentFiles(SettingsStore& settings, std::function<bool(const std::string&)> exists);

    // Reads the slots; with "Show Recent Files - Remove Deleted Files" on, files
    // that are gone are dropped. The list is packed and written back.
    std::vector<std::string> Read();
    // Puts path first, drops an equal entry further down and lets the tenth fall off.
    void Add(const std::string& path);
    void Clear();

    // The menu caption of entry index (0-based): "1: path" ... "1&0: path", the
    // folder part shortened when "Show Recent Files - Shorten Long Paths" is on.
    std::string Caption(int index, const std::string& path);

  private:
    void Write(const std::vector<std::string>& paths);
    static std::string Key(int slot);

    SettingsStore& settings_;
    std::function<bool(const std::string&)> exists_;
};

// A folder part of more than 45 characters becomes its first 20, " … " and its
// last 20 characters.
std::string ShortenPath(const std::string& path);

}  // namespace mb
