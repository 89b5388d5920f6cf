// The loader's host for programs run from a command line or a benchmark: it
// asks nothing and keeps the last message, which the caller reports when a
// load fails.
#pragma once

#include <optional>
#include <string>

#include "program_image.h"

namespace mb {

class CommandLineImageHost : public ImageHost {
  public:
    void ShowMessage(const std::string& text) override { LastMessage = text; }
    std::string AskOpenFile(const std::string&, const std::string&, int&) override { return ""; }
    std::string AskSaveFile(const std::string&, const std::string&, int&) override { return ""; }
    bool AskYesNo(const std::string&) override { return false; }
    std::optional<std::string> AskText(const std::string&, const std::string&) override {
        return std::nullopt;
    }

    std::string LastMessage;
};

}  // namespace mb
