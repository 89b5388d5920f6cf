// A scripted ImageHost: answers from queues, records every message.
#pragma once

#include <unistd.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "images/program_image.h"

namespace mb::testing {

class ScriptedImageHost : public ImageHost {
  public:
    void ShowMessage(const std::string& text) override { messages.push_back(text); }
    std::string AskOpenFile(const std::string&, const std::string&, int& filter) override {
        filter = filterAnswer;
        return Next(openAnswers).value_or("");
    }
    std::string AskSaveFile(const std::string&, const std::string&, int& filter) override {
        filter = filterAnswer;
        return Next(saveAnswers).value_or("");
    }
    bool AskYesNo(const std::string& q) override {
        questions.push_back(q);
        return yes;
    }
    std::optional<std::string> AskText(const std::string& prompt, const std::string&) override {
        questions.push_back(prompt);
        return Next(textAnswers);
    }
    bool SimulationRunning() override { return running; }

    std::string Last() const { return messages.empty() ? "" : messages.back(); }

    std::deque<std::string> openAnswers, saveAnswers, textAnswers;
    std::vector<std::string> messages, questions;
    bool yes = true, running = false;
    int filterAnswer = 1;

  private:
    static std::optional<std::string> Next(std::deque<std::string>& q) {
        if (q.empty()) return std::nullopt;
        std::string a = q.front();
        q.pop_front();
        return a;
    }
};

struct TempFolder {
    TempFolder() {
        char pattern[] = "/tmp/mbimg-XXXXXX";
        path = mkdtemp(pattern);
    }
    ~TempFolder() { std::filesystem::remove_all(path); }
    std::string Write(const std::string& name, const std::string& data) const {
        const std::string p = (path / name).string();
        std::ofstream(p, std::ios::binary) << data;
        return p;
    }
    std::string Read(const std::string& name) const { return ReadFile(path / name); }
    static std::string ReadFile(const std::filesystem::path& file) {
        std::ifstream in(file, std::ios::binary);
        return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }
    std::filesystem::path path;
};

}  // namespace mb::testing
