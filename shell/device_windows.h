// The simulated devices and their windows: the Peripheral Devices and the two
// Input/Output Terminals. This object owns the devices' logic for the life of
// the main window, so that the Peripheral Devices go on working with their
// window closed, opens the windows, and carries the refreshes of the data paths
// to them.
#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <string>

#include "core/access.h"
#include "core/machine.h"
#include "devices/peripheral_devices.h"
#include "devices/terminal.h"
#include "shell/peripheral_devices_window.h"
#include "shell/terminal_window.h"

class QWidget;

namespace mb {

class SettingsStore;

class DeviceWindows : public QObject {
    Q_OBJECT
  public:
    using Message = std::function<void(const std::string&)>;
    // Restores the Peripheral Devices from the settings.
    DeviceWindows(Machine& m, AccessHooks& hooks, SettingsStore& settings, Message message,
                  Message report, QWidget* parent);
    ~DeviceWindows() override;

    PeripheralDevices& peripheralDevices() { return devices_; }
    Terminal& terminal(TerminalKind kind) {
        return kind == TerminalKind::MemoryMapped ? memoryTerminal_ : portTerminal_;
    }

    // The Tools menu commands; an open window comes to the front.
    void OpenPeripheralDevices();
    // Opening puts the terminal on the data paths.
    void OpenTerminal(TerminalKind kind);

    // The open windows, or null.
    PeripheralDevicesWindow* peripheralDevicesWindow() const { return devicesWindow_; }
    TerminalWindow* terminalWindow(TerminalKind kind) const {
        return kind == TerminalKind::MemoryMapped ? memoryTerminalWindow_ : portTerminalWindow_;
    }

    // The data paths changed a peripheral device (kViewDevices).
    void Refresh() {
        if (devicesWindow_) devicesWindow_->RequestRefresh();
    }
    // Closes the open windows.
    void CloseAll();

  private:
    template <class Window>
    void Track(Window*& slot, Window* window);

    SettingsStore& settings_;
    Message message_, report_;
    QWidget* parent_;
    PeripheralDevices devices_;
    Terminal memoryTerminal_, portTerminal_;
    PeripheralDevicesWindow* devicesWindow_ = nullptr;
    TerminalWindow* memoryTerminalWindow_ = nullptr;
    TerminalWindow* portTerminalWindow_ = nullptr;
};

}  // namespace mb
