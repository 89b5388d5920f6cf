#include "terminal.h"

#include <cctype>
#include <cstdlib>

#include "core/numtext.h"
#include "settings/settings_store.h"

namespace mb {

const std::array<const char*, kTerminalSchemes> kTerminalSchemeNames = {
    "green on black", "amber on black", "white on black", "black on white", "white on blue"};

namespace {

std::string Trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Up to four hexadecimal digits, with or without "h"; -1 when it is not that.
int HexEntry(std::string text) {
    text = Trimmed(text);
    if (!text.empty() && (text.back() == 'h' || text.back() == 'H')) text.pop_back();
    return static_cast<int>(HexEntryValue(text, 4));
}

// A whole decimal number of up to five digits; -1 when it is not that.
int DecimalEntry(const std::string& text) {
    const std::string t = Trimmed(text);
    if (t.empty() || t.size() > 5) return -1;
    for (char c : t) {
        if (!std::isdigit(static_cast<unsigned char>(c))) return -1;
    }
    return std::atoi(t.c_str());
}

bool IsAddress(TerminalRegister r) {
    return r == TerminalRegister::OutData || r == TerminalRegister::OutStatus ||
           r == TerminalRegister::InData || r == TerminalRegister::InStatus;
}

}  // namespace

const char* TerminalTitle(TerminalKind kind) {
    return kind == TerminalKind::MemoryMapped ? "Input/Output Terminal (Memory Mapped)"
                                              : "Input/Output Terminal";
}

int TerminalWindowNumber(TerminalKind kind) {
    return kind == TerminalKind::MemoryMapped ? 22 : 25;
}

std::string TerminalKey(TerminalKind kind, const char* name) {
    return std::string(kind == TerminalKind::MemoryMapped ? "IO Terminal " : "IO Terminal2 ") +
           name;
}

TerminalBinding DefaultTerminalRegisters(TerminalKind kind) {
    TerminalBinding b;
    const bool memory = kind == TerminalKind::MemoryMapped;
    b.OutData = b.InData = memory ? 0xA001 : 0xFF;
    b.OutStatus = b.InStatus = memory ? 0xA000 : 0xFE;
    b.OutBit = 1;
    b.InBit = 0;
    b.BusyTime = 0;
    return b;
}

std::string TerminalInfo(TerminalKind kind) {
    if (kind == TerminalKind::MemoryMapped) {
        return "Input/Output Terminal is a memory mapped simulation tool designed to make it easy "
               "to communicate with various Z80 firmwares supporting serial input/output during "
               "the simulation of the code execution.\n\n"
               "The interface is defined by the addresses of the input and output terminal memory "
               "mapped data and status registers, and the bit numbers in the status register that "
               "should serve the purpose of the Transmit Data Register Empty signal for the "
               "output terminal, and the Receive Data Register Full signal for the input "
               "terminal.";
    }
    return "Input/Output Terminal is an I/O port simulation tool designed to make it easy to "
           "communicate with various Z80 firmwares supporting serial input/output during the "
           "simulation of the code execution.\n\n"
           "The interface is defined by the I/O ports of the input and output terminal data and "
           "status registers, and the bit numbers in the status register that should serve the "
           "purpose of the Transmit Data Register Empty signal for the output terminal, and the "
           "Receive Data Register Full signal for the input terminal.";
}

const std::vector<std::string>& TerminalKeyCaptions() {
    static const std::vector<std::string> captions = [] {
        std::vector<std::string> keys;
        for (char c = '0'; c <= '9'; ++c) keys.emplace_back(1, c);
        for (char c = 'A'; c <= 'Z'; ++c) keys.emplace_back(1, c);
        for (const char* sign : {".", ",",  ":", ";", "?",  "!", "-", "+", "*", "/",
                                 "=", "&&", "(", ")", "\"", "'", "$", "#", "<", ">"}) {
            keys.emplace_back(sign);
        }
        for (const char* named : {"(space)", "(return)", "(back)", "(ctrl+c)"})
            keys.emplace_back(named);
        return keys;
    }();
    return captions;
}

int TerminalKeyValue(std::string_view caption) {
    if (caption == "&&") return '&';
    if (caption == "(space)") return 32;
    if (caption == "(return)") return 13;
    if (caption == "(back)") return 8;
    if (caption == "(ctrl+c)") return 3;
    if (caption.size() != 1) return -1;
    return static_cast<unsigned char>(caption[0]);
}

Terminal::Terminal(TerminalKind kind, Machine& m, AccessHooks& hooks, SettingsStore& settings)
    : kind_(kind),
      m_(m),
      hooks_(hooks),
      binding_(kind == TerminalKind::MemoryMapped ? hooks.MemoryTerminal : hooks.PortTerminal),
      settings_(settings) {}

Terminal::~Terminal() {
    if (binding_.Device == this) {
        binding_.Active = false;
        binding_.Device = nullptr;
        hooks_.UpdateMask(m_);
    }
}

void Terminal::Open() {
    const TerminalBinding defaults = DefaultTerminalRegisters(kind_);
    const int top = kind_ == TerminalKind::MemoryMapped ? 0xFFFF : 0xFF;
    auto read = [&](const char* name, int def, int high) {
        const int value = settings_.GetSettingInt(TerminalKey(kind_, name), def);
        return value >= 0 && value <= high ? value : def;
    };
    binding_.OutData = read("Out Addr", defaults.OutData, top);
    binding_.OutStatus = read("Out Ctrl", defaults.OutStatus, top);
    binding_.OutBit = read("Out Ctrl Bit", defaults.OutBit, 7);
    binding_.BusyTime = read("Out Busy Time", defaults.BusyTime, kTerminalMaxBusyTime);
    binding_.InData = read("In Addr", defaults.InData, top);
    binding_.InStatus = read("In Ctrl", defaults.InStatus, top);
    binding_.InBit = read("In Ctrl Bit", defaults.InBit, 7);
    colorScheme_ = read("Color Scheme", 0, kTerminalSchemes - 1);
    smallLetters_ = read("Keyboard Small Letters", 0, 1) == 1;
    binding_.LastOutCycle = 0;
    binding_.Device = this;
    binding_.Active = true;
    hooks_.UpdateMask(m_);
}

void Terminal::Close() {
    binding_.Active = false;
    hooks_.UpdateMask(m_);
}

int Terminal::interm_getbyte() {
    const int value = QueueTake(QueueChars, QueueKinds);
    Notify(kQueueChanged);
    return value < 0 ? 0 : value;
}

void Terminal::outterm_addbyte(int value) {
    lastReceived_ = value & 0xFF;
    receivedTicks_ = 0;
    if (value == 8) {
        if (!outputText_.empty()) {
            outputText_.pop_back();
            ++generation_;
        }
    } else if (value > 0) {
        outputText_ += static_cast<char>(value);
        if (outputText_.size() > kScreenLimit) TrimScreen();
    }
    if (value == 12) {
        outputText_.clear();
        ++generation_;
    }
    Notify(kScreenChanged | kReceivedChanged);
}

// Drops the oldest quarter of the screen, up to the end of a line.
void Terminal::TrimScreen() {
    size_t cut = outputText_.find_first_of("\r\n", outputText_.size() / 4);
    if (cut == std::string::npos) cut = outputText_.size() / 4;
    while (cut < outputText_.size() && (outputText_[cut] == '\r' || outputText_[cut] == '\n'))
        ++cut;
    outputText_.erase(0, cut);
    ++generation_;
}

void Terminal::ClearScreen() {
    outputText_.clear();
    ++generation_;
    Notify(kScreenChanged);
}

std::string Terminal::LastReceivedText() const {
    return "$" + pb_hex2(lastReceived_);
}

void Terminal::ReceivedTick() {
    if (receivedTicks_ < 0) return;
    if (++receivedTicks_ >= kReceivedTicks) {
        receivedTicks_ = -1;
        Notify(kReceivedChanged);
    }
}

int& Terminal::Field(TerminalRegister r) {
    switch (r) {
        case TerminalRegister::OutData: return binding_.OutData;
        case TerminalRegister::OutStatus: return binding_.OutStatus;
        case TerminalRegister::OutBit: return binding_.OutBit;
        case TerminalRegister::BusyTime: return binding_.BusyTime;
        case TerminalRegister::InData: return binding_.InData;
        case TerminalRegister::InStatus: return binding_.InStatus;
        case TerminalRegister::InBit: return binding_.InBit;
    }
    return binding_.OutData;
}

const char* Terminal::Name(TerminalRegister r) const {
    switch (r) {
        case TerminalRegister::OutData: return "Out Addr";
        case TerminalRegister::OutStatus: return "Out Ctrl";
        case TerminalRegister::OutBit: return "Out Ctrl Bit";
        case TerminalRegister::BusyTime: return "Out Busy Time";
        case TerminalRegister::InData: return "In Addr";
        case TerminalRegister::InStatus: return "In Ctrl";
        case TerminalRegister::InBit: return "In Ctrl Bit";
    }
    return "";
}

std::string Terminal::Prompt(TerminalRegister r) const {
    const bool memory = kind_ == TerminalKind::MemoryMapped;
    const bool output = r == TerminalRegister::OutData || r == TerminalRegister::OutStatus ||
                        r == TerminalRegister::OutBit || r == TerminalRegister::BusyTime;
    const std::string side = output ? "output" : "input";
    if (IsAddress(r)) {
        const std::string reg =
            r == TerminalRegister::OutData || r == TerminalRegister::InData ? "data" : "status";
        if (memory) {
            return "Please enter the address for the " + side + " terminal memory mapped " + reg +
                   " register (allowed range 0000h-FFFFh):";
        }
        return "Please enter the I/O port for the " + side + " terminal " + reg +
               " register (allowed range 00h-FFh):";
    }
    if (r == TerminalRegister::BusyTime) {
        return "Please enter 'busy time' in clock cycles that will delay the Transmit Data "
               "Register Empty signal after a data byte has been received (allowed range "
               "0-10000):";
    }
    return std::string(
               "Please enter the bit number in the status register that should serve "
               "the purpose of the ") +
           (output ? "Transmit Data Register Empty" : "Receive Data Register Full") +
           " signal (allowed range 0-7):";
}

std::string Terminal::Change(TerminalRegister r, const std::string& answer) {
    int value = -1;
    std::string refusal;
    if (IsAddress(r)) {
        const bool memory = kind_ == TerminalKind::MemoryMapped;
        value = HexEntry(answer);
        if (!memory && value > 0xFF) value = -1;
        refusal = memory ? "Allowed range 0000h-FFFFh." : "Allowed range 00h-FFh.";
    } else if (r == TerminalRegister::BusyTime) {
        value = DecimalEntry(answer);
        if (value > kTerminalMaxBusyTime) value = -1;
        refusal = "Allowed range 0-10000.";
    } else {
        value = DecimalEntry(answer);
        if (value > 7) value = -1;
        refusal = "Allowed range 0-7.";
    }
    if (value < 0) return refusal;
    Field(r) = value;
    settings_.SetSettingInt(TerminalKey(kind_, Name(r)), value);
    return "";
}

const char* Terminal::DataCaption(bool output) const {
    if (kind_ == TerminalKind::MemoryMapped)
        return output ? "Output terminal address:" : "Input terminal address:";
    return output ? "Output terminal I/O port:" : "Input terminal I/O port:";
}

std::string Terminal::DataText(bool output) const {
    const int digits = kind_ == TerminalKind::MemoryMapped ? 4 : 2;
    return HexDigits(output ? binding_.OutData : binding_.InData, digits);
}

std::string Terminal::StatusText(bool output) const {
    const int digits = kind_ == TerminalKind::MemoryMapped ? 4 : 2;
    return HexDigits(output ? binding_.OutStatus : binding_.InStatus, digits) + "," +
           std::to_string(output ? binding_.OutBit : binding_.InBit);
}

std::string Terminal::Send(QueueKind kind, const std::string& entry) {
    if (!entry.empty()) lastEntry_[kind] = entry;
    const std::string message = QueueSend(QueueChars, QueueKinds, kind, entry);
    Notify(kQueueChanged);
    return message;
}

void Terminal::Paste(std::string_view text) {
    QueueAppend(QueueChars, QueueKinds, PastedBytes(text), kQueueString);
    Notify(kQueueChanged);
}

bool Terminal::Key(std::string_view caption) {
    const int value = TerminalKeyValue(caption);
    if (value < 0) return false;
    QueueAppend(QueueChars, QueueKinds, std::string(1, static_cast<char>(value)), kQueueString);
    Notify(kQueueChanged);
    return true;
}

void Terminal::ClearQueue() {
    QueueChars.clear();
    QueueKinds.clear();
    Notify(kQueueChanged);
}

bool Terminal::ChangeColorScheme(int scheme) {
    if (scheme < 0 || scheme >= kTerminalSchemes) return false;
    colorScheme_ = scheme;
    settings_.SetSettingInt(TerminalKey(kind_, "Color Scheme"), scheme);
    Notify(kScreenChanged);
    return true;
}

void Terminal::SetSmallLetters(bool small) {
    smallLetters_ = small;
    settings_.SetSettingInt(TerminalKey(kind_, "Keyboard Small Letters"), small ? 1 : 0);
}

}  // namespace mb
