#include "simlog.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "access.h"
#include "numtext.h"

namespace mb {

namespace {

constexpr const char* kLineEnd = "\r\n";
constexpr const char* kMicroUtf8 = "\xC2\xB5";
constexpr const char* kMicroLatin1 = "\xB5";

std::string TwoDigits(int v) {
    return std::string(1, char('0' + v / 10 % 10)) + char('0' + v % 10);
}

std::string FlagDigits(int s, int z, int y, int h, int x, int p, int n, int c) {
    std::string out;
    for (int f : {s, z, y, h, x, p, n, c}) out += char('0' + (f ? 1 : 0));
    return out;
}

std::string CountColumn(long long count) {
    std::string text = std::to_string(count >= 1000000 ? count % 1000000 : count);
    const size_t width = count >= 1000000 ? 6 : 7;
    std::string out;
    if (count >= 1000000) out += ' ';
    if (text.size() < width) out.append(width - text.size(), count >= 1000000 ? '0' : ' ');
    out += text;
    return out;
}

// The file is single-byte text: the micro sign takes its one-byte form.
std::string SingleByte(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, kMicroUtf8) == 0) {
            out += kMicroLatin1;
            ++i;
        } else {
            out += text[i];
        }
    }
    return out;
}

}  // namespace

std::string DateText(const LocalDateTime& t) {
    return std::to_string(t.year) + "-" + TwoDigits(t.month) + "-" + TwoDigits(t.day);
}

std::string TimeText(const LocalDateTime& t) {
    return TwoDigits(t.hour) + ":" + TwoDigits(t.minute) + ":" + TwoDigits(t.second);
}

std::string LogLineText(const Machine& m, int address, const std::string& instruction) {
    // The 32-bit count read as unsigned, so a long run never shows a minus sign.
    std::string line = CountColumn(static_cast<unsigned>(m.InstructionCount)) + pb_hex4(address) +
                       "  " + instruction;
    if (instruction.size() < 16) line.append(16 - instruction.size(), ' ');
    line += pb_hex2(m.A) + " ";
    line +=
        FlagDigits(m.FlagS, m.FlagZ, m.FlagY, m.FlagH, m.FlagX, m.FlagP, m.FlagN, m.FlagC) + "  ";
    for (int r : {m.B, m.C, m.D, m.E, m.H, m.L}) line += pb_hex2(r) + " ";
    for (int r : {m.IX, m.IY, m.SP}) line += pb_hex4(r) + " ";
    line += pb_hex2(m.AltA) + " ";
    line += FlagDigits(m.AltFlagS, m.AltFlagZ, m.AltFlagY, m.AltFlagH, m.AltFlagX, m.AltFlagP,
                       m.AltFlagN, m.AltFlagC) +
            "  ";
    line += pb_hex2(m.AltB) + " " + pb_hex2(m.AltC) + " " + pb_hex2(m.AltD) + " " +
            pb_hex2(m.AltE) + " " + pb_hex2(m.AltH) + " " + pb_hex2(m.AltL);
    return line;
}

std::string ElapsedTimeText(long long cycles, float mhz) {
    const double exact = static_cast<double>(cycles) * 100.0 / static_cast<double>(mhz);
    // Printed from the double, so that any total of a long run has its digits.
    char text[400];
    std::snprintf(text, sizeof text, "%.0f",
                  cycles >= 10000000 ? std::floor(exact) : std::round(exact));
    std::string digits = text;
    if (digits.size() == 1) digits = "00" + digits;
    if (digits.size() == 2) digits = "0" + digits;
    return digits.substr(0, digits.size() - 2) + "." + digits.substr(digits.size() - 2) +
           kMicroUtf8 + "s";
}

std::string FrequencyText(float mhz) {
    char buffer[64];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, mhz, std::chars_format::fixed);
    std::string text = ec == std::errc() ? std::string(buffer, end) : std::to_string(mhz);
    if (!text.empty() && text[0] == '.') text = "0" + text;
    if (text.find('.') == std::string::npos) text += ".0";
    return text + "MHz";
}

std::string SecondsText(double seconds) {
    const long long hundredths = std::llround(seconds * 100.0);
    return std::to_string(hundredths / 100) + "." + std::to_string(hundredths % 100);
}

float ElapsedSeconds(float start, double now) {
    if (now < start) start -= 86400.0f;
    return static_cast<float>(now - start);
}

std::string StatisticsText(long long count, const std::string& seconds, long long cycles,
                           float mhz) {
    return "Total number of executed instructions is " + std::to_string(count) + ".\n" + seconds +
           " seconds elapsed.\n" + "Real-time duration of the simulation is " +
           std::to_string(cycles) + " clock cycles or " + ElapsedTimeText(cycles, mhz) + " at " +
           FrequencyText(mhz) + ".";
}

SimLog::~SimLog() {
    if (file_) std::fclose(file_);
}

static std::string InFolder(const std::string& folder, const char* name) {
    if (folder.empty()) return name;
    return folder.back() == '/' ? folder + name : folder + "/" + name;
}

std::string SimLog::LogPath() const {
    return InFolder(Folder, "log.txt");
}
std::string SimLog::IoPath() const {
    return InFolder(Folder, "io.txt");
}

bool SimLog::Open(const LocalDateTime& now) {
    if (file_) std::fclose(file_);
    std::remove(LogPath().c_str());
    file_ = std::fopen(LogPath().c_str(), "wb");
    if (!file_) return false;
    WriteLine("Simulation started at " + DateText(now) + " " + TimeText(now) + ".");
    WriteLine(kLogHeadColumns);
    WriteLine("");
    return true;
}

void SimLog::WriteLine(const std::string& line) {
    if (!file_) return;
    std::string text = SingleByte(line) + kLineEnd;
    std::fwrite(text.data(), 1, text.size(), file_);
}

void SimLog::Close(const LocalDateTime& now, const std::string& seconds, long long cycles,
                   float mhz) {
    if (!file_) return;
    WriteLine("Simulation stopped at " + DateText(now) + " " + TimeText(now) + ".");
    WriteLine(seconds + " seconds elapsed.");
    WriteLine("Real-time duration of the simulation is " + std::to_string(cycles) +
              " clock cycles or " + ElapsedTimeText(cycles, mhz) + " at " + FrequencyText(mhz) +
              ".");
    std::fclose(file_);
    file_ = nullptr;
}

bool SimLog::AppendIo(const std::string& text) {
    std::FILE* f = std::fopen(IoPath().c_str(), "ab");
    if (!f) return false;
    std::string bytes = SingleByte(text);
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
    return true;
}

void SimLog::IoAccess(const Machine& m, const LocalDateTime& now, int port, int value, bool in) {
    std::string line = DateText(now) + " " + TimeText(now) + "\t" + pb_hex4(m.InstructionPC) +
                       "H: " + CurrentTextForLog(m) + "\tData " + pb_hex2(value) +
                       (in ? "H received on port " : "H sent to port ") + pb_hex2(port) + "H" +
                       kLineEnd;
    if (AppendIo(line)) IoLogWritten = true;
}

void SimLog::IoReset() {
    if (IoLogWritten && IoLoggingOn) AppendIo(std::string("RESET") + kLineEnd);
}

void SimLog::IoStop() {
    if (IoLogWritten) AppendIo(std::string(kLineEnd) + kLineEnd);
}

}  // namespace mb
