// The simulation logs: log.txt (one line per instruction, open from Start to
// Stop) and io.txt (one line per port access, appended and closed each time),
// and the texts of elapsed time, frequency, seconds and the Stop statistics.
#pragma once

#include <cstdio>
#include <string>

#include "host.h"
#include "machine.h"

namespace mb {

inline constexpr const char* kLogHeadColumns =
    "No.    PC    Instruction     A  SZYHXPNC  B  C  D  E  H  L  IX   IY   SP   A' SZYHXPNC' "
    "B' C' D' E' H' L'";

// "2026-11-22" and "16:05:09".
std::string DateText(const LocalDateTime& t);
std::string TimeText(const LocalDateTime& t);

// One log line: the state after the instruction beside `address`.
std::string LogLineText(const Machine& m, int address, const std::string& instruction);

// Simulated time of `cycles` at `mhz`, always in microseconds: "1000.00µs"
// (UTF-8; the log file gets the single-byte form).
std::string ElapsedTimeText(long long cycles, float mhz);
// "4.0MHz", "0.5MHz".
std::string FrequencyText(float mhz);
// Whole seconds, ".", hundredths with no leading zero: 12.05 s gives "12.5".
std::string SecondsText(double seconds);
// Seconds from `start` to `now`, both seconds since midnight; a run across
// midnight counts from the day before.
float ElapsedSeconds(float start, double now);
// The three lines shown at Stop.
std::string StatisticsText(long long count, const std::string& seconds, long long cycles,
                           float mhz);

class SimLog {
  public:
    ~SimLog();

    bool LoggingOn = false;    // "Enable Logging New"
    bool IoLoggingOn = false;  // "Log IN And OUT New"
    bool IoLogWritten = false;
    std::string Folder;  // "Last Path": where both files lie

    std::string LogPath() const;
    std::string IoPath() const;

    // Deletes an earlier log.txt and writes the head. False when the file
    // cannot be written.
    bool Open(const LocalDateTime& now);
    bool IsOpen() const { return file_ != nullptr; }
    void WriteLine(const std::string& line);
    // Tail and close.
    void Close(const LocalDateTime& now, const std::string& seconds, long long cycles, float mhz);

    // io.txt: one IN or OUT line; "RESET"; the two empty lines of Stop.
    void IoAccess(const Machine& m, const LocalDateTime& now, int port, int value, bool in);
    void IoReset();
    void IoStop();

  private:
    bool AppendIo(const std::string& text);
    std::FILE* file_ = nullptr;
};

}  // namespace mb
