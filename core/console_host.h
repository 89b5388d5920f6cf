// The host of a simulation run from a command line or a benchmark: no user
// interface to yield to or refresh, real clocks and sleeps, messages written to
// a stream, and fixed answers to the questions (an IN reads 0).
#pragma once

#include <ostream>
#include <string>

#include "host.h"

namespace mb {

class ConsoleHost : public Host {
  public:
    explicit ConsoleHost(std::ostream& messages) : messages_(messages) {}

    void Yield() override {}
    void Sleep5ms() override;
    void SleepMs(int ms) override;
    double SecondsSinceMidnight() override;
    double MonotonicSeconds() override;
    LocalDateTime Now() override;
    void RefreshViews(int) override {}
    void SetUltimateTimer(int) override {}
    int AskInValue(const std::string&, const std::string&) override { return 0; }
    // No interrupt is pressed here: "8" is a valid answer to any question.
    bool AskText(const std::string&, const std::string&, std::string& answer) override;
    void ShowMessage(const std::string& text) override { messages_ << text << "\n"; }
    void AppendLogViewer(const std::string&) override {}
    void ClearLogViewer() override {}
    void ShowFile(const std::string&) override {}

  private:
    std::ostream& messages_;
};

}  // namespace mb
