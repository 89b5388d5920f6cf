// The Input/Output Terminal: a serial-style terminal that the simulated
// firmware drives through a data register and a status register for each
// direction. One design with two bindings: on memory addresses ("Input/Output
// Terminal (Memory Mapped)") or on I/O ports ("Input/Output Terminal").
//
// The registers live in the binding of AccessHooks (MemoryTerminal or
// PortTerminal), where the data paths serve them while the terminal is open;
// this object is the terminal's screen and keyboard queue behind them, its
// commands and its settings. The windows only show it.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/access.h"
#include "core/machine.h"
#include "devices/input_queue.h"

namespace mb {

class SettingsStore;

enum class TerminalKind { MemoryMapped, Port };

enum class TerminalRegister { OutData, OutStatus, OutBit, BusyTime, InData, InStatus, InBit };

constexpr int kTerminalMaxBusyTime = 10000;
constexpr int kTerminalSchemes = 5;
extern const std::array<const char*, kTerminalSchemes> kTerminalSchemeNames;

// Caption of the window and of its Tools menu command.
const char* TerminalTitle(TerminalKind kind);
// Number of the window for its place: "WindowN Left", "On Top N".
int TerminalWindowNumber(TerminalKind kind);
// The settings key of one of the terminal's values; `name` is "Out Addr",
// "Out Ctrl", "Out Ctrl Bit", "Out Busy Time", "In Addr", "In Ctrl",
// "In Ctrl Bit", "Color Scheme" or "Keyboard Small Letters".
std::string TerminalKey(TerminalKind kind, const char* name);
// The registers of a terminal that has no settings yet.
TerminalBinding DefaultTerminalRegisters(TerminalKind kind);
// The text of the window's Info command.
std::string TerminalInfo(TerminalKind kind);

// Captions of the key panel, in their order: digits, letters, signs and the
// named keys "(space)", "(return)", "(back)", "(ctrl+c)".
const std::vector<std::string>& TerminalKeyCaptions();
// The byte a key puts in the queue: the caption's own character, "&" for
// "&&", 32, 13, 8 and 3 for the named keys; -1 for no key.
int TerminalKeyValue(std::string_view caption);

class Terminal : public TerminalDevice {
  public:
    // Bits of the `changed` notice.
    enum Change { kScreenChanged = 1, kQueueChanged = 2, kReceivedChanged = 4 };
    // Past this size the oldest lines of the screen go.
    static constexpr size_t kScreenLimit = 1 << 20;
    // Timer ticks for which the last received code stays in view.
    static constexpr int kReceivedTicks = 10;

    Terminal(TerminalKind kind, Machine& m, AccessHooks& hooks, SettingsStore& settings);
    ~Terminal() override;
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    TerminalKind Kind() const { return kind_; }
    const TerminalBinding& Binding() const { return binding_; }
    bool Active() const { return binding_.Active; }

    // Opening reads the settings into the registers and puts the terminal on
    // the data paths, with no output counted yet; closing takes it off, so that
    // its registers are ordinary memory or ports again.
    void Open();
    void Close();

    // TerminalDevice: the data paths call these.
    bool interm_notempty() override { return !QueueChars.empty(); }
    int interm_getbyte() override;
    void outterm_addbyte(int value) override;

    // Screen. OutputText holds the bytes received; ScreenLines shows them.
    const std::string& OutputText() const { return outputText_; }
    // Counts the changes of the screen other than appending: a window that
    // has shown the text so far may append the rest while it stays the same.
    int ScreenGeneration() const { return generation_; }
    void ClearScreen();
    // The "Last received char hex code" field: "$" and two digits, in view
    // for kReceivedTicks ticks of its timer after each byte.
    std::string LastReceivedText() const;
    bool ReceivedShown() const { return receivedTicks_ >= 0; }
    void ReceivedTick();

    // Registers: the question for one, and the change with the user's
    // answer: "" when it was taken (and stored at once), else the refusal.
    std::string Prompt(TerminalRegister r) const;
    std::string Change(TerminalRegister r, const std::string& answer);
    // "Output terminal address:" and the like.
    const char* DataCaption(bool output) const;
    // The data register as four (address) or two (port) digits; the status
    // register with its bit: "A000,1".
    std::string DataText(bool output) const;
    std::string StatusText(bool output) const;

    // Input queue.
    std::string QueueChars, QueueKinds;
    std::string Send(QueueKind kind, const std::string& entry);
    const std::string& LastEntry(QueueKind kind) const { return lastEntry_[kind]; }
    // The clipboard's text, each line ending in 13.
    void Paste(std::string_view text);
    // A key of the panel; false when the caption is no key.
    bool Key(std::string_view caption);
    void ClearQueue();
    std::string QueueText() const { return QueueDisplay(QueueChars, QueueKinds); }

    int ColorScheme() const { return colorScheme_; }
    bool ChangeColorScheme(int scheme);
    bool SmallLetters() const { return smallLetters_; }
    void SetSmallLetters(bool small);

    // Told what changed (bits of Change); the window redraws.
    std::function<void(int changes)> changed;

  private:
    void Notify(int changes) {
        if (changed) changed(changes);
    }
    void TrimScreen();
    int& Field(TerminalRegister r);
    const char* Name(TerminalRegister r) const;

    TerminalKind kind_;
    Machine& m_;
    AccessHooks& hooks_;
    TerminalBinding& binding_;
    SettingsStore& settings_;
    std::string outputText_;
    int generation_ = 0;
    int lastReceived_ = 0;
    int receivedTicks_ = -1;  // -1: the field is hidden
    int colorScheme_ = 0;
    bool smallLetters_ = false;
    std::array<std::string, 3> lastEntry_;
};

}  // namespace mb
