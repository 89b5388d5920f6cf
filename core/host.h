// What the simulator needs from the program around it: the user interface of the
// IDE, a scripted double in the tests, or the console of the command-line tools.
// Everything runs on one thread; every call returns to the caller on that thread.
#pragma once

#include <string>

namespace mb {

// Views that the run loop asks to refresh. The host decides what is open.
enum ViewBits {
    kViewRegisters = 1 << 0,      // register display (ekran), both instruction texts
    kViewWatch = 1 << 1,          // Watch Variables
    kViewBreakpoints = 1 << 2,    // Breakpoints Manager
    kViewMemoryEditors = 1 << 3,  // the three Memory Editors
    kViewVideoScreen = 1 << 4,    // Video Memory Screen
    kViewPortsEditor = 1 << 5,    // I/O Ports Editor
    kViewDevices = 1 << 6,        // Peripheral Devices window
    kViewCommands = 1 << 7,       // enabled state of Start/Stop/Step/NMI/INT/RESET/rates
    // The views that step 9 of the cycle refreshes after an instruction.
    kViewsAfterInstruction = kViewBreakpoints | kViewMemoryEditors | kViewVideoScreen |
                             kViewPortsEditor | kViewRegisters,
};

struct LocalDateTime {
    int year = 0, month = 0, day = 0;
    int hour = 0, minute = 0, second = 0;
};

class Host {
  public:
    virtual ~Host() = default;

    // Processes the pending user-interface events once. Commands that arrive
    // here only set request flags on the machine or the run control.
    virtual void Yield() = 0;
    // Blocks for 5 ms (the unit of the rate delays).
    virtual void Sleep5ms() = 0;
    // Blocks for ms milliseconds (the hold of RESET).
    virtual void SleepMs(int ms) = 0;
    // Wall-clock seconds since local midnight, with hundredths at least.
    virtual double SecondsSinceMidnight() = 0;
    // A steady counter in seconds for time slices (not wall-clock).
    virtual double MonotonicSeconds() = 0;
    // Local date and time, for the log head and tail and the I/O log.
    virtual LocalDateTime Now() = 0;

    // Refreshes the views named by bits of ViewBits.
    virtual void RefreshViews(int viewBits) = 0;
    // Starts (intervalMs > 0) or stops (0) the ultimate timer; each tick must
    // call RunControl::UltimateTimerTick.
    virtual void SetUltimateTimer(int intervalMs) = 0;

    // Modal question for an IN: caption and prompt; returns 0..255.
    virtual int AskInValue(const std::string& caption, const std::string& prompt) = 0;
    // Modal text entry: prompt lines, proposed text. Returns false when the user
    // cancelled (only the change commands may be cancelled).
    virtual bool AskText(const std::string& prompt, const std::string& proposed,
                         std::string& answer) = 0;
    // A message to the user (message box or Confirmation window, by "Show
    // Confirmations").
    virtual void ShowMessage(const std::string& text) = 0;

    // Simulation Log Viewer (its open state is told to RunControl::SetLogViewerOpen):
    // one appended line, clearing.
    virtual void AppendLogViewer(const std::string& line) = 0;
    virtual void ClearLogViewer() = 0;
    // Opens a finished text file (the log) in a file viewer window.
    virtual void ShowFile(const std::string& path) = 0;
};

}  // namespace mb
