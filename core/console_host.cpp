#include "console_host.h"

#include <chrono>
#include <ctime>
#include <thread>

namespace mb {

void ConsoleHost::Sleep5ms() {
    SleepMs(5);
}

void ConsoleHost::SleepMs(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

double ConsoleHost::SecondsSinceMidnight() {
    const LocalDateTime t = Now();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(
                                  std::chrono::system_clock::now().time_since_epoch())
                                  .count() %
                              1000;
    return t.hour * 3600.0 + t.minute * 60.0 + t.second + milliseconds / 1000.0;
}

double ConsoleHost::MonotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

LocalDateTime ConsoleHost::Now() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
            local.tm_hour,        local.tm_min,     local.tm_sec};
}

bool ConsoleHost::AskText(const std::string&, const std::string&, std::string& answer) {
    answer = "8";
    return true;
}

}  // namespace mb
