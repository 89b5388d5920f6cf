// A host for the run-control tests: counts yields and sleeps, runs scripted
// actions at chosen points, answers questions from a queue and records what
// the simulator shows.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "core/access.h"
#include "core/host.h"
#include "core/machine.h"
#include "core/run_control.h"
#include "core/simlog.h"
#include "settings/settings_store.h"

namespace mb::testing {

class ScriptedHost : public Host {
  public:
    int yields = 0;
    int sleeps5 = 0;
    std::vector<int> longSleeps;
    double secondsSinceMidnight = 36000.0;
    double monotonic = 0;
    LocalDateTime now{2026, 3, 14, 9, 26, 53};
    int viewBits = 0;  // every view asked for, or-ed
    int registerRedraws = 0;
    std::vector<int> timer;  // intervals given to SetUltimateTimer

    // Run at every yield (after counting it) and at every 5 ms sleep.
    std::function<void()> onYield;
    std::function<void()> onSleep;

    std::deque<std::string> answers;  // for AskText
    std::vector<std::string> questions;
    std::deque<int> inValues;  // for AskInValue
    std::vector<std::string> inCaptions, inPrompts;
    std::vector<std::string> messages;
    std::vector<std::string> viewerLines;
    std::vector<std::string> shownFiles;

    void Yield() override {
        ++yields;
        if (onYield) onYield();
    }
    void Sleep5ms() override {
        ++sleeps5;
        if (onSleep) onSleep();
    }
    void SleepMs(int ms) override { longSleeps.push_back(ms); }
    double SecondsSinceMidnight() override { return secondsSinceMidnight; }
    double MonotonicSeconds() override { return monotonic += 0.001; }
    LocalDateTime Now() override { return now; }
    void RefreshViews(int bits) override {
        viewBits |= bits;
        if (bits & kViewRegisters) ++registerRedraws;
    }
    void SetUltimateTimer(int intervalMs) override { timer.push_back(intervalMs); }
    int AskInValue(const std::string& caption, const std::string& prompt) override {
        inCaptions.push_back(caption);
        inPrompts.push_back(prompt);
        if (inValues.empty()) return 0;
        int v = inValues.front();
        inValues.pop_front();
        return v;
    }
    bool AskText(const std::string& prompt, const std::string&, std::string& answer) override {
        questions.push_back(prompt);
        if (answers.empty()) {
            // A question the script did not expect: answer something valid for
            // every question so that a faulty loop cannot hang the test.
            ADD_FAILURE() << "unexpected question: " << prompt;
            answer = "2";
            return true;
        }
        answer = answers.front();
        answers.pop_front();
        return answer != "<cancel>";
    }
    void ShowMessage(const std::string& text) override { messages.push_back(text); }
    void AppendLogViewer(const std::string& line) override { viewerLines.push_back(line); }
    void ClearLogViewer() override { viewerLines.clear(); }
    void ShowFile(const std::string& path) override { shownFiles.push_back(path); }
};

// A machine under run control with the scripted host, settings in memory and
// no device on the data paths.
class RunControlFixture : public ::testing::Test {
  protected:
    Machine m;
    ScriptedHost host;
    MemorySettingsStore settings;
    AccessHooks hooks;
    SimLog log;
    RunControl rc{m, host, settings, hooks, log};

    void Load(int address, std::initializer_list<int> bytes) {
        for (int b : bytes) m.MemoryImage[address++] = b;
    }
};

}  // namespace mb::testing
