#include "device_windows.h"

#include "window_place.h"

namespace mb {

DeviceWindows::DeviceWindows(Machine& m, AccessHooks& hooks, SettingsStore& settings,
                             Message message, Message report, QWidget* parent)
    : settings_(settings),
      message_(std::move(message)),
      report_(std::move(report)),
      parent_(parent),
      devices_(m, hooks, settings),
      memoryTerminal_(TerminalKind::MemoryMapped, m, hooks, settings),
      portTerminal_(TerminalKind::Port, m, hooks, settings) {
    devices_.LoadSettings();
}

// The windows are children of the main window and would outlive the logic
// they show: they go first.
DeviceWindows::~DeviceWindows() {
    delete devicesWindow_;
    delete memoryTerminalWindow_;
    delete portTerminalWindow_;
}

// The slot forgets the window as it closes or goes: only while it still names
// that window, since a window may be opened again before the old one is
// deleted.
template <class Window>
void DeviceWindows::Track(Window*& slot, Window* window) {
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->message = message_;
    auto forget = [&slot, window] {
        if (slot == window) slot = nullptr;
    };
    window->closed = forget;
    connect(window, &QObject::destroyed, this, forget);
    slot = window;
}

void DeviceWindows::OpenPeripheralDevices() {
    if (!devicesWindow_) {
        Track(devicesWindow_, new PeripheralDevicesWindow(devices_, settings_, parent_));
    }
    ShowToolWindow(*devicesWindow_);
}

void DeviceWindows::OpenTerminal(TerminalKind kind) {
    TerminalWindow*& slot =
        kind == TerminalKind::MemoryMapped ? memoryTerminalWindow_ : portTerminalWindow_;
    if (!slot) {
        terminal(kind).Open();
        auto* window = new TerminalWindow(terminal(kind), settings_, parent_);
        window->report = report_;
        Track(slot, window);
    }
    ShowToolWindow(*slot);
}

void DeviceWindows::CloseAll() {
    if (devicesWindow_) devicesWindow_->close();
    if (memoryTerminalWindow_) memoryTerminalWindow_->close();
    if (portTerminalWindow_) portTerminalWindow_->close();
}

}  // namespace mb
