// A host that answers nothing and shows nothing, for tests that only watch
// which views the data paths ask to refresh.
#pragma once

#include <functional>
#include <string>

#include "core/host.h"

namespace mb::testing {

class QuietHost : public Host {
  public:
    std::function<void(int viewBits)> onRefresh;

    void RefreshViews(int viewBits) override {
        if (onRefresh) onRefresh(viewBits);
    }
    void Yield() override {}
    void Sleep5ms() override {}
    void SleepMs(int) override {}
    double SecondsSinceMidnight() override { return 0; }
    double MonotonicSeconds() override { return 0; }
    LocalDateTime Now() override { return {}; }
    void SetUltimateTimer(int) override {}
    int AskInValue(const std::string&, const std::string&) override { return 0; }
    bool AskText(const std::string&, const std::string&, std::string&) override { return false; }
    void ShowMessage(const std::string&) override {}
    void AppendLogViewer(const std::string&) override {}
    void ClearLogViewer() override {}
    void ShowFile(const std::string&) override {}
};

}  // namespace mb::testing
