// What the fuzz targets share: a private scratch folder that each input starts
// empty, an image host that answers from preset values and shows nothing, and
// the reading of option bytes from the end of an input.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "images/program_image.h"

namespace mb::fuzz {

namespace fs = std::filesystem;

// A folder of its own under $TMPDIR (or /tmp), removed at exit.
class ScratchFolder {
  public:
    ScratchFolder() {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/mbfuzz-XXXXXX";
        std::vector<char> name(pattern.begin(), pattern.end());
        name.push_back('\0');
        if (!mkdtemp(name.data())) {
            std::perror("mkdtemp");
            std::abort();
        }
        path_ = name.data();
    }
    ~ScratchFolder() {
        std::error_code ec;
        fs::remove_all(path_, ec);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // The folder's path with a trailing "/".
    std::string Folder() const { return path_.string() + "/"; }
    std::string Path(const std::string& name) const { return (path_ / name).string(); }

    std::string Write(const std::string& name, const std::string& data) const {
        const std::string p = Path(name);
        std::ofstream(p, std::ios::binary | std::ios::trunc) << data;
        return p;
    }

    // Removes whatever the last input left, so that each input starts alike.
    void Empty() const {
        std::error_code ec;
        for (const auto& entry : fs::directory_iterator(path_, ec)) fs::remove_all(entry, ec);
    }

  private:
    fs::path path_;
};

// Answers every question from the fields below and keeps the last message.
class PresetImageHost : public ImageHost {
  public:
    void ShowMessage(const std::string& text) override { lastMessage = text; }
    std::string AskOpenFile(const std::string&, const std::string&, int& filterIndex) override {
        filterIndex = filter;
        return openPath;
    }
    std::string AskSaveFile(const std::string&, const std::string&, int& filterIndex) override {
        filterIndex = filter;
        return savePath;
    }
    bool AskYesNo(const std::string&) override { return true; }
    std::optional<std::string> AskText(const std::string&, const std::string&) override {
        return textAnswer;
    }

    std::string openPath, savePath, textAnswer, lastMessage;
    int filter = 1;
};

// An input read as a payload followed by option bytes: each Take removes one
// byte from the end (0 once nothing is left), the payload is what stays.
class InputWithOptions {
  public:
    InputWithOptions(const uint8_t* data, size_t size)
        : data_(reinterpret_cast<const char*>(data)), size_(size) {}
    int Take() { return size_ == 0 ? 0 : static_cast<unsigned char>(data_[--size_]); }
    std::string Payload() const { return std::string(data_, size_); }

  private:
    const char* data_;
    size_t size_;
};

// Stops the run with a message when a property of the code under test fails.
inline void Require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "fuzz property failed: %s\n", what);
    std::abort();
}

}  // namespace mb::fuzz
