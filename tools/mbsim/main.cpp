// mbsim: the simulator on the command line, for scripts and CI. It loads an
// .obj or .hex image and runs it at Ultimate through the same run control as
// the IDE, until HALT, a jump to itself, a stop address or an instruction limit.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/access.h"
#include "core/console_host.h"
#include "core/execute.h"
#include "core/host.h"
#include "core/machine.h"
#include "core/numtext.h"
#include "core/run_control.h"
#include "core/simlog.h"
#include "devices/console_stage.h"
#include "devices/terminal.h"
#include "images/command_line_host.h"
#include "images/program_image.h"
#include "settings/settings_store.h"

namespace {

constexpr int kExitNormal = 0;
constexpr int kExitBadInput = 2;
constexpr int kExitInstructionLimit = 3;

const char* kUsage =
    "Usage: mbsim [options] program.obj|program.hex|program.com\n"
    "Runs a Z80 program at the Ultimate rate until HALT, a jump to itself, the stop\n"
    "address or the instruction limit, then prints the statistics on stderr.\n"
    "Options:\n"
    "  --offset ADDR            load address of an .obj file (default 0000)\n"
    "  --start ADDR             starting address (default 0000)\n"
    "  --clock MHZ              clock frequency, 0.01-120 (default 4)\n"
    "  --unofficial             enable unofficial instructions\n"
    "  --ff-off                 registers power on as 0 instead of FF\n"
    "  --stop-at ADDR           stop when PC reaches ADDR\n"
    "  --max-instructions N     stop after N instructions\n"
    "  --out-port PORT          OUT to PORT writes the byte to stdout\n"
    "  --in-port PORT           IN from PORT reads a byte from stdin (0 at end of input)\n"
    "  --terminal PORT          the Input/Output Terminal on ports: data on PORT, status\n"
    "                           on FE with bit 0 set while a character waits and bit 1\n"
    "                           set while the terminal can take one; stdout is its\n"
    "                           screen and stdin its keyboard (line ends arrive as 13)\n"
    "  --mm-terminal ADDR       the same terminal on memory: data at ADDR, status at A000\n"
    "  --terminal-status REG[,IN-BIT,OUT-BIT]\n"
    "                           the terminal's status port or address, and its bits for\n"
    "                           \"a character waits\" (default 0) and \"can take one\"\n"
    "                           (default 1). When stdin has ended and the program has\n"
    "                           found nothing waiting 10000 times without printing, the\n"
    "                           run ends\n"
    "  --cpm                    CP/M console program (.com or .obj): load and start at\n"
    "                           0100H; CALL 0005H serves BDOS 0 (end), 2 (character in E)\n"
    "                           and 9 (string at DE up to '$') on stdout; reaching 0000H\n"
    "                           ends the run\n"
    "  --log                    write log.txt (one line per instruction)\n"
    "  --iolog                  write io.txt (one line per IN and OUT)\n"
    "  --log-dir DIR            folder of log.txt and io.txt (default: current folder)\n"
    "  --dump FROM-TO           at the end print memory FROM to TO on stdout, on a new\n"
    "                           line behind the program's output: rows of 16 bytes\n"
    "                           \"ADDR: XX XX ...\" (e.g. --dump 8000-80FF)\n"
    "  --bench                  print instructions per second on stdout at the end\n"
    "  --help                   this text\n"
    "Addresses and ports are hexadecimal (0100, 100H or 0x100); N is decimal.\n"
    "Exit status: 0 normal end, 2 bad option or unreadable program, 3 instruction\n"
    "limit reached.\n";

struct Options {
    std::string program;
    int offset = 0;
    int start = 0;
    bool startGiven = false;
    float clock = 4.0f;
    bool unofficial = false;
    bool ffOff = false;
    int stopAt = -1;
    long long maxInstructions = -1;
    int outPort = -1;
    int inPort = -1;
    int terminalData = -1;  // --terminal or --mm-terminal
    bool memoryTerminal = false;
    std::string terminalStatus;  // --terminal-status as given
    bool cpm = false;
    bool log = false;
    bool ioLog = false;
    std::string logDir = ".";
    bool bench = false;
    int dumpFrom = -1;  // --dump: both ends are included
    int dumpTo = -1;
};

// What the program wrote last on stdout, so that the dump begins on a line of
// its own.
int lastOutput = '\n';

void WriteOutput(int c) {
    std::putchar(c);
    lastOutput = c;
}

int Fail(const std::string& message) {
    std::cerr << "mbsim: " << message << "\n";
    return kExitBadInput;
}

// Hexadecimal with an optional "0x" in front or "H" behind; -1 when invalid
// or above `limit`.
int ParseHex(std::string text, int limit) {
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) text.erase(0, 2);
    if (!text.empty() && (text.back() == 'h' || text.back() == 'H')) text.pop_back();
    if (text.empty() || text.size() > 8) return -1;
    if (!std::all_of(text.begin(), text.end(),
                     [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); })) {
        return -1;
    }
    const long value = std::strtol(text.c_str(), nullptr, 16);
    return value <= limit ? static_cast<int>(value) : -1;
}

// "FROM-TO", both hexadecimal addresses as ParseHex takes them; what is wrong
// with the text, or nothing.
std::string ParseRange(const std::string& text, int& from, int& to) {
    const size_t dash = text.find('-');
    if (dash == std::string::npos) return "FROM-TO needed";
    from = ParseHex(text.substr(0, dash), 0xFFFF);
    to = ParseHex(text.substr(dash + 1), 0xFFFF);
    if (from < 0 || to < 0) return "addresses are hexadecimal, 0000 to FFFF";
    if (to < from) return "TO lies below FROM";
    return "";
}

// Rows of up to 16 bytes from `from` to `to`: "8000: 3E 01 ...".
void PrintMemory(const mb::Machine& m, int from, int to) {
    if (lastOutput != '\n') std::putchar('\n');
    for (int row = from; row <= to; row += 16) {
        std::string line = mb::pb_hex4(row) + ":";
        for (int a = row; a <= to && a < row + 16; ++a) line += " " + mb::pb_hex2(m.MemoryImage[a]);
        std::printf("%s\n", line.c_str());
    }
}

// "REG[,IN-BIT,OUT-BIT]" into the terminal's settings; what is wrong, or "".
std::string TerminalStatusSettings(const std::string& text, mb::TerminalKind kind,
                                   mb::SettingsStore& settings) {
    std::vector<std::string> parts(1);
    for (char c : text) {
        if (c == ',')
            parts.emplace_back();
        else
            parts.back() += c;
    }
    if (parts.size() != 1 && parts.size() != 3) return "REG or REG,IN-BIT,OUT-BIT needed";
    const bool memory = kind == mb::TerminalKind::MemoryMapped;
    const int reg = ParseHex(parts[0], memory ? 0xFFFF : 0xFF);
    if (reg < 0) return memory ? "addresses are 0000 to FFFF" : "ports are 00 to FF";
    settings.SetSettingInt(mb::TerminalKey(kind, "In Ctrl"), reg);
    settings.SetSettingInt(mb::TerminalKey(kind, "Out Ctrl"), reg);
    if (parts.size() == 1) return "";
    const char* keys[] = {"In Ctrl Bit", "Out Ctrl Bit"};
    for (int i = 0; i < 2; ++i) {
        const std::string& bit = parts[static_cast<size_t>(i) + 1];
        if (bit.size() != 1 || bit[0] < '0' || bit[0] > '7') return "bits are 0 to 7";
        settings.SetSettingInt(mb::TerminalKey(kind, keys[i]), bit[0] - '0');
    }
    return "";
}

// Parses the command line; returns false after printing the reason.
bool ParseOptions(int argc, char** argv, Options& o, bool& help) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto next = [&](std::string& out) {
            if (i + 1 >= argc) {
                Fail(arg + " needs a value");
                return false;
            }
            out = argv[++i];
            return true;
        };
        auto hex = [&](int limit, int& out) {
            std::string text;
            if (!next(text)) return false;
            out = ParseHex(text, limit);
            if (out < 0) {
                Fail(arg + ": not a hexadecimal value up to " + mb::pb_hex4(limit) + "H: " + text);
                return false;
            }
            return true;
        };
        std::string text;
        if (arg == "--help" || arg == "-h") {
            help = true;
            return true;
        } else if (arg == "--offset") {
            if (!hex(0xFFFF, o.offset)) return false;
        } else if (arg == "--start") {
            if (!hex(0xFFFF, o.start)) return false;
            o.startGiven = true;
        } else if (arg == "--stop-at") {
            if (!hex(0xFFFF, o.stopAt)) return false;
        } else if (arg == "--out-port") {
            if (!hex(0xFF, o.outPort)) return false;
        } else if (arg == "--in-port") {
            if (!hex(0xFF, o.inPort)) return false;
        } else if (arg == "--terminal" || arg == "--mm-terminal") {
            if (o.terminalData >= 0) {
                Fail("only one --terminal or --mm-terminal may be given");
                return false;
            }
            o.memoryTerminal = arg == "--mm-terminal";
            if (!hex(o.memoryTerminal ? 0xFFFF : 0xFF, o.terminalData)) return false;
        } else if (arg == "--terminal-status") {
            if (!next(o.terminalStatus)) return false;
        } else if (arg == "--clock") {
            if (!next(text)) return false;
            const std::optional<double> v = mb::ClockFrequencyEntry(text);
            if (!v) {
                Fail("--clock: Allowed range 0.01-120MHz.");
                return false;
            }
            o.clock = static_cast<float>(*v);
        } else if (arg == "--max-instructions") {
            if (!next(text)) return false;
            char* end = nullptr;
            const long long v = std::strtoll(text.c_str(), &end, 10);
            if (text.empty() || *end || v < 1 || v > 2147483647LL) {
                Fail("--max-instructions: a count from 1 to 2147483647 is needed: " + text);
                return false;
            }
            o.maxInstructions = v;
        } else if (arg == "--dump") {
            if (!next(text)) return false;
            const std::string problem = ParseRange(text, o.dumpFrom, o.dumpTo);
            if (!problem.empty()) {
                Fail("--dump: " + problem + ": " + text);
                return false;
            }
        } else if (arg == "--log-dir") {
            if (!next(o.logDir)) return false;
        } else if (arg == "--unofficial") {
            o.unofficial = true;
        } else if (arg == "--ff-off") {
            o.ffOff = true;
        } else if (arg == "--cpm") {
            o.cpm = true;
        } else if (arg == "--log") {
            o.log = true;
        } else if (arg == "--iolog") {
            o.ioLog = true;
        } else if (arg == "--bench") {
            o.bench = true;
        } else if (!arg.empty() && arg[0] == '-') {
            Fail("unknown option " + arg + " (see mbsim --help)");
            return false;
        } else if (o.program.empty()) {
            o.program = arg;
        } else {
            Fail("only one program file may be given");
            return false;
        }
    }
    if (o.program.empty() && !help) {
        Fail("no program file given (see mbsim --help)");
        return false;
    }
    if (!o.terminalStatus.empty() && o.terminalData < 0) {
        Fail("--terminal-status needs --terminal or --mm-terminal");
        return false;
    }
    if (o.terminalData >= 0 && (o.inPort >= 0 || o.outPort >= 0)) {
        Fail("the terminal takes stdin and stdout: not with --in-port or --out-port");
        return false;
    }
    if (!o.terminalStatus.empty()) {
        mb::MemorySettingsStore scratch;
        const std::string problem = TerminalStatusSettings(
            o.terminalStatus,
            o.memoryTerminal ? mb::TerminalKind::MemoryMapped : mb::TerminalKind::Port, scratch);
        if (!problem.empty()) {
            Fail("--terminal-status: " + problem + ": " + o.terminalStatus);
            return false;
        }
    }
    return true;
}

// Loads an .obj file at m.ObjOffset or an .hex file through the shared loader.
bool LoadProgramFile(const std::string& path, mb::Machine& m, std::string& error) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
        error = path + ": no such file";
        return false;
    }
    if (!std::filesystem::is_regular_file(path, ec)) {
        error = path + ": is not a program file";
        return false;
    }
    mb::CommandLineImageHost host;
    mb::MemorySettingsStore settings;
    mb::ProgramImages images(m, settings, host);
    if (images.LoadProgram(path)) return true;
    std::string message = host.LastMessage;
    std::replace(message.begin(), message.end(), '\n', ' ');
    error = path + ": " + message;
    return false;
}

// The bound ports: a port terminal whose screen is stdout and whose keyboard
// is stdin.
class ConsoleTerminal : public mb::TerminalDevice {
  public:
    bool interm_notempty() override {
        std::fflush(stdout);
        const int c = std::getchar();
        if (c == EOF) return false;
        std::ungetc(c, stdin);
        return true;
    }
    int interm_getbyte() override { return std::getchar() & 0xFF; }
    void outterm_addbyte(int value) override { WriteOutput(value & 0xFF); }
};

// The Input/Output Terminal with stdout as its screen and stdin as its
// keyboard. Input is read when the queue has run dry, without waiting, so the
// program sees a live terminal; when stdin has ended, a program that keeps
// finding nothing waiting, and prints nothing, is stopped.
class StdioTerminal : public mb::Terminal {
  public:
    static constexpr int kPollsAtEnd = 10000;

    StdioTerminal(mb::TerminalKind kind, mb::Machine& m, mb::AccessHooks& hooks,
                  mb::SettingsStore& settings)
        : Terminal(kind, m, hooks, settings), m_(m) {}

    bool interm_notempty() override {
        if (QueueChars.empty()) Fill();
        if (!QueueChars.empty()) return true;
        if (ended_ && ++emptyPolls_ >= kPollsAtEnd) m_.StopRequest = true;
        return false;
    }
    int interm_getbyte() override {
        if (QueueChars.empty()) Fill();
        return Terminal::interm_getbyte();
    }
    void outterm_addbyte(int value) override {
        emptyPolls_ = 0;
        if (value > 0) WriteOutput(value & 0xFF);
    }

  private:
    void Fill() {
        if (ended_) return;
        std::fflush(stdout);
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (poll(&input, 1, 0) <= 0) return;
        char buffer[4096];
        const ssize_t n = read(STDIN_FILENO, buffer, sizeof buffer);
        if (n <= 0) {
            ended_ = true;
            return;
        }
        const std::string_view text(buffer, static_cast<size_t>(n));
        mb::QueueAppend(QueueChars, QueueKinds, mb::PastedBytes(text, previous_), mb::kQueueString);
        previous_ = text.back();
    }

    mb::Machine& m_;
    bool ended_ = false;
    int emptyPolls_ = 0;
    char previous_ = 0;
};

std::string LowerExtension(const std::string& path) {
    std::string ext = path.size() >= 4 ? path.substr(path.size() - 4) : "";
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    bool help = false;
    if (!ParseOptions(argc, argv, o, help)) return kExitBadInput;
    if (help) {
        std::cout << kUsage;
        return kExitNormal;
    }
    const std::string ext = LowerExtension(o.program);
    if (ext == ".com" && !o.cpm) return Fail(o.program + ": a CP/M .com program needs --cpm");
    if (ext != ".obj" && ext != ".hex" && ext != ".com")
        return Fail(o.program + ": not an .obj, .hex or CP/M .com program file");
    if ((o.log || o.ioLog) && !std::filesystem::is_directory(o.logDir)) {
        return Fail("--log-dir: no such folder: " + o.logDir);
    }

    mb::Machine m;
    m.ClockMHz = o.clock;
    m.StartingAddress = o.cpm && !o.startGiven ? mb::ConsoleStage::kProgramStart : o.start;
    m.ObjOffset = o.cpm ? mb::ConsoleStage::kProgramStart : o.offset;
    m.FFPowerOnDefaults = o.ffOff ? "OFF" : "ON";
    m.UnofficialEnabled = o.unofficial ? 1 : 0;
    m.HaltStopsSimulation = 1;
    m.InfiniteLoopStopsSimulation = 1;

    std::string error;
    if (!LoadProgramFile(o.program, m, error)) return Fail(error);

    mb::MemorySettingsStore settings;
    settings.SetSettingText(mb::kSettingRate, "6");
    settings.SetSettingInt(mb::kSettingPromptBeforeIn, 0);
    settings.SetSettingInt(mb::kSettingLogging, o.log ? 1 : 0);
    settings.SetSettingInt(mb::kSettingIoLogging, o.ioLog ? 1 : 0);
    settings.SetSettingText(mb::kSettingLastPath, o.logDir);

    mb::ConsoleHost host(std::cerr);
    ConsoleTerminal terminal;
    mb::AccessHooks hooks;
    std::unique_ptr<StdioTerminal> stdioTerminal;
    mb::MemorySettingsStore terminalSettings;
    if (o.terminalData >= 0) {
        const auto kind =
            o.memoryTerminal ? mb::TerminalKind::MemoryMapped : mb::TerminalKind::Port;
        terminalSettings.SetSettingInt(mb::TerminalKey(kind, "Out Addr"), o.terminalData);
        terminalSettings.SetSettingInt(mb::TerminalKey(kind, "In Addr"), o.terminalData);
        if (!o.terminalStatus.empty())
            TerminalStatusSettings(o.terminalStatus, kind, terminalSettings);  // checked above
        stdioTerminal = std::make_unique<StdioTerminal>(kind, m, hooks, terminalSettings);
    }
    mb::SimLog log;
    mb::RunControl rc(m, host, settings, hooks, log);
    mb::ConsoleStage checks(
        m, {o.cpm, o.stopAt}, [](int c) { WriteOutput(c); },
        [](const std::string& text) { std::cerr << "mbsim: " << text << "\n"; });
    if (o.cpm || o.stopAt >= 0) rc.Debug = &checks;
    rc.InstructionLimit = o.maxInstructions;
    if (o.outPort >= 0 || o.inPort >= 0) {
        hooks.PortTerminal = {true, o.outPort, -1, 0, o.inPort, -1, 0, 0, 0, &terminal};
    }
    rc.LoadSettings();
    if (stdioTerminal) stdioTerminal->Open();

    const auto begin = std::chrono::steady_clock::now();
    rc.menustart();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (o.dumpFrom >= 0) PrintMemory(m, o.dumpFrom, o.dumpTo);
    std::fflush(stdout);
    if (o.bench) {
        std::printf("%d instructions in %.3f s: %.0f instructions per second\n", m.InstructionCount,
                    seconds, seconds > 0 ? m.InstructionCount / seconds : 0.0);
    }
    return rc.InstructionLimitReached ? kExitInstructionLimit : kExitNormal;
}
