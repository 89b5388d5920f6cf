#include "peripheral_devices.h"

#include <cctype>

#include "core/numtext.h"
#include "settings/settings_store.h"

namespace mb {

std::string DeviceKey(int k) {
    return "Device " + std::to_string(k);
}
std::string DeviceInputKey(int k) {
    return DeviceKey(k) + " Input";
}
std::string DevicePortNumberKey(int k) {
    return DeviceKey(k) + " Port Number";
}

PeripheralDevices::PeripheralDevices(Machine& m, AccessHooks& hooks, SettingsStore& settings)
    : m_(m), hooks_(hooks), settings_(settings) {}

bool& PeripheralDevices::EnabledFlag(int k) {
    if (k == kOutputTerminalDevice) return hooks_.OutputString.Enabled;
    if (k == kInputQueueDevice) return hooks_.InputQueue.Enabled;
    return hooks_.Devices[Index(k)].Enabled;
}

int& PeripheralDevices::PortField(int k) {
    if (k == kOutputTerminalDevice) return hooks_.OutputString.Port;
    if (k == kInputQueueDevice) return hooks_.InputQueue.Port;
    return hooks_.Devices[Index(k)].Port;
}

bool PeripheralDevices::Enabled(int k) const {
    if (k == kOutputTerminalDevice) return hooks_.OutputString.Enabled;
    if (k == kInputQueueDevice) return hooks_.InputQueue.Enabled;
    return hooks_.Devices[Index(k)].Enabled;
}

int PeripheralDevices::Port(int k) const {
    if (k == kOutputTerminalDevice) return hooks_.OutputString.Port;
    if (k == kInputQueueDevice) return hooks_.InputQueue.Port;
    return hooks_.Devices[Index(k)].Port;
}

void PeripheralDevices::LoadSettings() {
    for (int k = 1; k <= kInputQueueDevice; ++k) {
        const bool on = settings_.GetSettingText(DeviceKey(k), "OFF") == "ON";
        int port = SettingInteger(settings_.GetSettingText(DevicePortNumberKey(k), "0"));
        if (port < 0 || port > 255) port = 0;
        EnabledFlag(k) = on;
        PortField(k) = on ? port : 0;
        if (k > kPortDeviceCount) continue;
        PortBinding& d = hooks_.Devices[Index(k)];
        d.InputMode = on && settings_.GetSettingText(DeviceInputKey(k), "OFF") == "ON";
        d.OneShot = -1;
        if (d.InputMode) d.Value = m_.PortImage[static_cast<size_t>(d.Port)];
    }
    hooks_.UpdateMask(m_);
}

void PeripheralDevices::Store(int k) {
    settings_.SetSettingText(DeviceKey(k), Enabled(k) ? "ON" : "OFF");
    settings_.SetSettingText(DevicePortNumberKey(k), std::to_string(Port(k)));
    if (k <= kPortDeviceCount)
        settings_.SetSettingText(DeviceInputKey(k), Device(k).InputMode ? "ON" : "OFF");
}

std::string PeripheralDevices::Caption(int k) const {
    return Enabled(k) ? "I/O port " + pb_hex2H(Port(k)) : "I/O port";
}

std::string PeripheralDevices::TurnOn(int k, const std::string& answer) {
    std::string text;
    for (char c : answer) {
        if (c != ' ' && c != '\t')
            text += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    if (text.empty()) return "";
    if (text.size() == 1) text.insert(0, "0");
    const int port = pb_dec2(text);
    if (port < 0) return kWrongEntry;
    EnabledFlag(k) = true;
    PortField(k) = port;
    Store(k);
    hooks_.UpdateMask(m_);
    return "";
}

void PeripheralDevices::TurnOff(int k) {
    EnabledFlag(k) = false;
    PortField(k) = 0;
    if (k <= kPortDeviceCount) {
        PortBinding& d = hooks_.Devices[Index(k)];
        d.InputMode = false;
        d.Value = 0;
        d.OneShot = -1;
    }
    if (k == kOutputTerminalDevice) ClearOutput();
    Store(k);
    hooks_.UpdateMask(m_);
}

std::string PeripheralDevices::SetInputMode(int k, bool input) {
    PortBinding& d = hooks_.Devices[Index(k)];
    if (!d.Enabled) return "";
    d.InputMode = input;
    if (input) {
        d.Value = m_.PortImage[static_cast<size_t>(d.Port)];
    } else {
        d.OneShot = -1;
    }
    Store(k);
    return input && hooks_.PromptBeforeIn ? kInputModeWarning : "";
}

void PeripheralDevices::FlipLamp(int k, int bit) {
    if (bit < 0 || bit > 7) return;
    hooks_.Devices[Index(k)].Value ^= 1 << bit;
}

void PeripheralDevices::SetValue(int k, int value) {
    if (value >= 0 && value <= 255) hooks_.Devices[Index(k)].Value = value;
}

std::string PeripheralDevices::ValueText(int k) const {
    return pb_hex2H(Device(k).Value);
}

bool PeripheralDevices::ClickOneShot(int k) {
    PortBinding& d = hooks_.Devices[Index(k)];
    if (d.Enabled && d.InputMode && d.OneShot < 0) return true;
    d.OneShot = -1;
    return false;
}

void PeripheralDevices::SetOneShot(int k, int value) {
    hooks_.Devices[Index(k)].OneShot = value >= 0 && value <= 255 ? value : -1;
}

std::string PeripheralDevices::OneShotText(int k) const {
    const int value = Device(k).OneShot;
    return value < 0 ? "Set\none-shot\nIN value" : "One-shot\nIN value:\n" + pb_hex2H(value);
}

std::string PeripheralDevices::Send(QueueKind kind, const std::string& entry) {
    if (!entry.empty()) lastEntry_[kind] = entry;
    StringInPort& q = hooks_.InputQueue;
    return QueueSend(q.QueueChars, q.QueueKinds, kind, entry);
}

std::string PeripheralDevices::QueueText() const {
    return QueueDisplay(hooks_.InputQueue.QueueChars, hooks_.InputQueue.QueueKinds);
}

void PeripheralDevices::ClearQueue() {
    hooks_.InputQueue.QueueChars.clear();
    hooks_.InputQueue.QueueKinds.clear();
}

}  // namespace mb
