// The Peripheral Devices: simple hardware on the I/O ports, with no code. Four
// byte-wide devices with eight lamps each (1 to 4), an output terminal that
// keeps the text the program sends (5) and an input queue that feeds IN (6).
//
// Their state lives in AccessHooks (Devices, OutputString, InputQueue), where
// the port paths serve them whether or not the window is open; this object
// carries out the window's commands on that state and keeps the settings.
#pragma once

#include <array>
#include <string>

#include "core/access.h"
#include "core/machine.h"
#include "devices/input_queue.h"

namespace mb {

class SettingsStore;

constexpr int kPortDeviceCount = 4;
constexpr int kOutputTerminalDevice = 5;
constexpr int kInputQueueDevice = 6;

inline constexpr const char* kDevicePortPrompt = "Enter I/O port number for this device [00-FF].";
inline constexpr const char* kWrongEntry = "Wrong entry.";
inline constexpr const char* kInputModeWarning =
    "In order to use port input values from the Peripheral Devices the 'Prompt For Value "
    "Before IN Instruction' option should be turned off.";
inline constexpr const char* kDeviceValueCaption = "HEX Value Entry Dialog";
inline constexpr const char* kDeviceValuePrompt =
    "Enter new value supplied by this device [00-FF].";
inline constexpr const char* kOneShotTip =
    "Set one-shot value to be used for the very next IN instruction";

// Lamp colours, 0xRRGGBB.
constexpr int kLampLit = 0x80FF80;
constexpr int kLampDark = 0x808080;

// Settings keys of device k (1 to 6).
std::string DeviceKey(int k);            // "Device k": "ON" or "OFF"
std::string DeviceInputKey(int k);       // "Device k Input" (1 to 4): "ON" or "OFF"
std::string DevicePortNumberKey(int k);  // "Device k Port Number": decimal

class PeripheralDevices {
  public:
    PeripheralDevices(Machine& m, AccessHooks& hooks, SettingsStore& settings);

    // Restores enable, mode and port of each device from the settings. Values
    // and the queue are not kept: a device in input mode starts from PortImage,
    // every one-shot value is cleared.
    void LoadSettings();

    // Devices 1 to 6.
    bool Enabled(int k) const;
    int Port(int k) const;
    // "I/O port", or "I/O port 3CH" while the device is on.
    std::string Caption(int k) const;
    // Turns the device on at the port the user answered to kDevicePortPrompt
    // (one or two hexadecimal digits). A wrong entry gives kWrongEntry, an
    // empty one nothing; either way the device stays off. The message, or "".
    std::string TurnOn(int k, const std::string& answer);
    // Off: output mode, port 0, value 0. The output terminal forgets its text;
    // the queue keeps what it holds.
    void TurnOff(int k);

    // Devices 1 to 4.
    const PortBinding& Device(int k) const { return hooks_.Devices[Index(k)]; }
    // Input mode takes its value from PortImage; output mode drops the
    // one-shot value; a device that is off keeps output mode. Returns
    // kInputModeWarning when input mode is chosen while the IN prompt option
    // is on (the mode is set all the same), else "".
    std::string SetInputMode(int k, bool input);
    // Flips bit `bit` (0 to 7, 7 the leftmost lamp) of the value.
    void FlipLamp(int k, int bit);
    // The value from the HEX Value Entry Dialog; -1 (Cancel) keeps it.
    void SetValue(int k, int value);
    // "3CH".
    std::string ValueText(int k) const;
    static bool LampLit(int value, int bit) { return (value >> bit) & 1; }
    // A click on the one-shot field: true when the value is to be asked (the
    // device is on, in input mode and has none); otherwise the one-shot value
    // is cleared and false returned.
    bool ClickOneShot(int k);
    // The answer of that question; -1 leaves it empty.
    void SetOneShot(int k, int value);
    // Three lines: "Set", "one-shot", "IN value" when empty, else "One-shot",
    // "IN value:", "3CH".
    std::string OneShotText(int k) const;

    // Device 5.
    const std::string& OutputText() const { return hooks_.OutputString.OutputText; }
    void ClearOutput() {
        hooks_.OutputString.OutputText.clear();
        ++hooks_.OutputString.Cuts;
    }
    // Counts the cuts and clearings of the output text (StringOutPort::Cuts).
    int OutputCuts() const { return hooks_.OutputString.Cuts; }

    // Device 6: Send String, Send Hex Bytes, Send Dec Bytes with the text the
    // user typed; the message ("Incorrect input!") or "".
    std::string Send(QueueKind kind, const std::string& entry);
    // The last text entered for each kind, proposed again.
    const std::string& LastEntry(QueueKind kind) const { return lastEntry_[kind]; }
    std::string QueueText() const;
    void ClearQueue();

  private:
    static size_t Index(int k) { return static_cast<size_t>(k - 1); }
    bool& EnabledFlag(int k);
    int& PortField(int k);
    void Store(int k);

    Machine& m_;
    AccessHooks& hooks_;
    SettingsStore& settings_;
    std::array<std::string, 3> lastEntry_;
};

}  // namespace mb
