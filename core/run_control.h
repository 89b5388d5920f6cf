// Run control: Start, Step, Stop, the six rates, the run loop, the interrupt and
// RESET commands, and the change commands of the simulation options. It drives
// ExecuteInstruction over a Host, so the IDE and the tests run the same code.
//
// One thread: a command that arrives during a yield of the run loop only sets a
// request flag when the machine is running at a rate other than Step By Step;
// the loop or the end of the instruction serves it at its fixed point.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "access.h"
#include "host.h"
#include "machine.h"
#include "simlog.h"

namespace mb {

class SettingsStore;

// Debugging tools at the end of an instruction (breakpoints, break requests,
// Run To Next BASIC Statement, tracking, #sim rows, source breakpoints) and the
// Start/Stop work of the source windows.
class DebugStage {
  public:
    virtual ~DebugStage() = default;
    // Step 12 of the cycle, in its fixed order: after every instruction when
    // EveryInstruction says so, otherwise only when PC arrives on an address
    // marked in Machine::AddressMarks.
    virtual void Checks(Machine& m) = 0;
    virtual bool EveryInstruction() const { return true; }
    // Start: clear tracking, source breakpoint lists and highlights.
    virtual void PrepareStart() = 0;
    // Stop: the BASIC and Assembler windows clear their run state.
    virtual void RunEnded() = 0;
    // BASIC tracking is on and the BASIC program is mapped: the Next Basic
    // Statement commands may be offered.
    virtual bool NextBasicAvailable() = 0;
};

// The ZX Spectrum interface's work after each instruction.
class SpectrumStage {
  public:
    virtual ~SpectrumStage() = default;
    virtual void PerInstruction(Machine& m) = 0;
};

// Setting keys read by run control.
inline constexpr const char* kSettingRate = "Simulation Rate";
inline constexpr const char* kSettingSlowDelay = "Simulation Rate Slow Delay";
inline constexpr const char* kSettingNormalDelay = "Simulation Rate Normal Delay";
inline constexpr const char* kSettingFastDelay = "Simulation Rate Fast Delay";
inline constexpr const char* kSettingUltimateTimer = "Ultimate Timer";
inline constexpr const char* kSettingNextBasicRate = "Run To Next BASIC Statement Simulation Rate";
inline constexpr const char* kSettingNextBasicInfo =
    "Run To Next BASIC Statement Simulation Rate Info";
inline constexpr const char* kSettingClock = "Clock Frequency";
inline constexpr const char* kSettingStartingAddress = "Starting Address";
inline constexpr const char* kSettingObjOffset = "Offset Address For OBJ Files Loading";
inline constexpr const char* kSettingLogging = "Enable Logging New";
inline constexpr const char* kSettingIoLogging = "Log IN And OUT New";
inline constexpr const char* kSettingPromptBeforeIn = "Prompt Before IN New";
inline constexpr const char* kSettingLastPath = "Last Path";

// Reads the start-up table of options into the machine, in the table's order;
// a missing value is written back as its default (`home` for the two paths).
// A stored clock frequency outside 0.01-120 MHz, or not a number, counts as
// the default 4 MHz.
void ReadStartupSettings(Machine& m, SettingsStore& s, const std::string& home);

// The clock frequency the user typed: a decimal number of MHz in 0.01..120.
std::optional<double> ClockFrequencyEntry(std::string_view text);

class RunControl : public EndStageHandler {
  public:
    RunControl(Machine& m, Host& host, SettingsStore& settings, AccessHooks& hooks, SimLog& log);

    // Reads the rate, the Run To Next BASIC rate, the logging switches, the IN
    // prompt and the log folder from the settings, and attaches the hooks.
    void LoadSettings();

    // Control flags.
    bool SimulationRunning = false;
    bool ResetRequest = false;
    bool UltimateRefreshDue = false;
    int RunLoopActive = 0;
    int PendingSteps = 0;
    bool RunToNextBasic = false;
    int NextBasicActive = 0;
    int NextBasicRate = 2;  // 0 Normal, 1 Fast, 2 Extremely Fast, 3 Ultimate
    float StartTimer = 0;
    // When above 0, the run stops once InstructionCount has reached it, and
    // InstructionLimitReached tells that this was the reason.
    long long InstructionLimit = 0;
    bool InstructionLimitReached = false;
    bool BreakRequest = false;  // a device asked for a break (served by DebugStage)
    int PendingKeyValue = -1;   // the pending keyboard value of the IN dialog

    // Enabled state of the run commands (NMI/INT/RESET live in Machine).
    bool StartEnabled = true;
    bool StopEnabled = false;
    bool StepEnabled = false;       // menustep
    bool Step2Enabled = false;      // menustep2, the shortcuts panel
    bool NextBasicEnabled = false;  // menustep4 and menustep3

    // Pluggable stages; nullptr when absent.
    DebugStage* Debug = nullptr;
    SpectrumStage* Spectrum = nullptr;

    // Commands.
    void menustart();
    void menustep();
    void menustep2() { menustep(); }
    void menustop();
    void menuspeed(int rate);
    void menuspeed1() { menuspeed(kRateStepByStep); }
    void menuspeed2() { menuspeed(kRateSlow); }
    void menuspeed3() { menuspeed(kRateNormal); }
    void menuspeed4() { menuspeed(kRateFast); }
    void menuspeed5() { menuspeed(kRateExtremelyFast); }
    void menuspeed6() { menuspeed(kRateUltimate); }
    void ApplyRate();
    void menustep4();
    void menustep3() { menustep4(); }
    void ultimatetimer();  // one tick of the ultimate timer

    // Interrupts and RESET (interrupts.cpp).
    void Command1();  // NMI
    void Command2();  // INT
    void Command3Press();
    void Command3Release();
    void clickreset();

    // Change commands of the Simulation menu.
    void ChangeClockFrequency();
    void ChangeStartingAddress();
    void ChangeObjOffset();
    void ChangeUltimateInterval();

    // The shell tells which views are open, so the end stage knows its work.
    void SetLogViewerOpen(bool open);
    void SetWatchViewOpen(bool open);
    // Recomputes Machine::EndStageMask; call after attaching a stage or a module.
    void UpdateEndStageMask();

    // The run loop; entered by Start, Step, a rate change and RESET.
    void RunLoop();

    // Statistics text of the last Stop.
    const std::string& LastStatistics() const { return lastStatistics_; }

    // End-of-instruction stage (steps 9 to 14).
    void RefreshViews(Machine& m) override;
    void WriteLogLine(Machine& m) override;
    void ServeRequests(Machine& m) override;
    void DebugChecks(Machine& m) override;
    void SpectrumWork(Machine& m) override;
    void ModuleRefresh(Machine& m) override;

  private:
    void clean1();
    bool WaitDelay(int count);
    void WaitAfterInstruction();
    bool LeaveLoop() const;
    void TurnLoop();
    int BatchLength() const;
    bool InstructionLimitStop();
    void FinalRedraw();
    void SetNextInstructionText();
    void CommandsChanged();
    void EnableStepCommands();
    void DisableStepCommands();
    void CarryOutNmi();
    void CarryOutInt();
    int AskRestartChoice();
    int AskVector();
    void WriteInterruptLogLine();
    void RedrawRegisters();
    // The steps of RESET from the text "RESET" on; true when the run loop should
    // turn again.
    bool ResetFromText();
    // The first steps of the automatic RESET: flags, commands, clean twice.
    void AutoResetSteps();
    void Shutdown();
    int UltimateInterval();
    bool RefuseWhileRunning();
    bool AskAddress(const std::string& prompt, int current, int& value);

    Machine& m_;
    Host& host_;
    SettingsStore& settings_;
    AccessHooks& hooks_;
    SimLog& log_;
    bool logViewerOpen_ = false;
    bool watchViewOpen_ = false;
    std::string lastStatistics_;
};

}  // namespace mb
