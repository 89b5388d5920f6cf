#include "run_control.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "execute.h"
#include "numtext.h"
#include "settings/settings_store.h"

namespace mb {

namespace {

// At the rates built for speed the loop yields once per time slice. The clock
// is read only every kSliceCheck instructions, so the loop itself costs a
// counter per instruction.
constexpr int kSliceCheck = 512;
constexpr double kSliceSeconds = 0.004;

constexpr int kMaxPendingSteps = 4;

std::string Trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return "";
    const auto last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

}  // namespace

void ReadStartupSettings(Machine& m, SettingsStore& s, const std::string& home) {
    s.GetSettingText("Last Path", home);
    s.GetSettingText("Last Path 2", home);
    s.GetSettingInt(kSettingLogging, 0);
    m.HaltStopsSimulation = s.GetSettingInt("HALT Stops Simulation New", 1) != 0;
    m.InfiniteLoopStopsSimulation = s.GetSettingInt("Infinite Loop Stop New", 0) != 0;
    m.FFPowerOnDefaults = s.GetSettingText("FF Power On Defaults", "ON");
    s.GetSettingInt("Refresh Memory Editor New", 1);
    s.GetSettingInt("Show ASCII Characters", 1);
    s.GetSettingInt("Refresh Breakpoints Manager New", 1);
    s.GetSettingText("Save Positions", "ON");
    m.UnofficialEnabled = s.GetSettingInt("Enable Unofficial Instructions", 0) != 0;
    s.GetSettingInt(kSettingPromptBeforeIn, 1);
    s.GetSettingInt(kSettingIoLogging, 0);
    s.GetSettingText("Show Confirmations", "OFF");
    s.GetSettingText("Save Always On Top", "1");
    s.GetSettingInt(kSettingNextBasicRate, 2);
    s.GetSettingInt("Basic Program Tracking", 1);
    s.GetSettingInt("Basic Program Tracking Mode", 1);
    m.RelativeBranchHex = s.GetSettingInt("Display Relative Branch Hex Argument", 0) != 0;
    m.ClockMHz =
        static_cast<float>(ClockFrequencyEntry(s.GetSettingText(kSettingClock, "4")).value_or(4.0));
    // The starting address is kept as the four hexadecimal digits it was typed in.
    const long long start = HexEntryValue(s.GetSettingText(kSettingStartingAddress, "0"), 4);
    m.StartingAddress = start < 0 ? 0 : static_cast<int>(start);
    m.ObjOffset = s.GetSettingInt(kSettingObjOffset, 0) & 0xFFFF;
    s.GetSettingText(kSettingRate, "4");
    s.GetSettingInt(kSettingSlowDelay, 140);
    s.GetSettingInt(kSettingNormalDelay, 24);
    s.GetSettingInt(kSettingFastDelay, 5);
    s.GetSettingInt("Messages Duration", 3);
}

std::optional<double> ClockFrequencyEntry(std::string_view text) {
    const std::optional<double> value = ReadDecimal(text);
    if (!value || !InRange(*value, 0.01, 120)) return std::nullopt;
    return value;
}

RunControl::RunControl(Machine& m, Host& host, SettingsStore& settings, AccessHooks& hooks,
                       SimLog& log)
    : m_(m), host_(host), settings_(settings), hooks_(hooks), log_(log) {
    hooks_.host = &host_;
    hooks_.log = &log_;
    m_.EndStage = this;
}

void RunControl::LoadSettings() {
    const int rate = SettingInteger(settings_.GetSettingText(kSettingRate, "4"));
    m_.SimulationRate =
        std::clamp(rate, static_cast<int>(kRateStepByStep), static_cast<int>(kRateUltimate));
    NextBasicRate = std::clamp(settings_.GetSettingInt(kSettingNextBasicRate, 2), 0, 3);
    log_.LoggingOn = settings_.GetSettingInt(kSettingLogging, 0) != 0;
    log_.IoLoggingOn = settings_.GetSettingInt(kSettingIoLogging, 0) != 0;
    log_.Folder = settings_.GetSettingText(kSettingLastPath, "");
    hooks_.PromptBeforeIn = settings_.GetSettingInt(kSettingPromptBeforeIn, 1) != 0;
    hooks_.UpdateMask(m_);
    UpdateEndStageMask();
}

void RunControl::UpdateEndStageMask() {
    int mask = 0;
    const bool ultimate = m_.SimulationRate == kRateUltimate;
    if (!ultimate) mask |= kEndStageText;
    if (!ultimate || UltimateRefreshDue || watchViewOpen_) mask |= kEndStageViews;
    if (log_.IsOpen() || logViewerOpen_) mask |= kEndStageLog;
    if (m_.NmiRequest || m_.IntRequest) mask |= kEndStageRequests;
    if (Debug && Debug->EveryInstruction()) mask |= kEndStageDebug;
    if (Spectrum && hooks_.SpectrumActive) mask |= kEndStageSpectrum;
    for (ExternalModule* module : hooks_.Modules) {
        if (module) mask |= kEndStageModules;
    }
    m_.EndStage = this;
    m_.EndStageMask = mask;
}

void RunControl::SetLogViewerOpen(bool open) {
    logViewerOpen_ = open;
    UpdateEndStageMask();
}

void RunControl::SetWatchViewOpen(bool open) {
    watchViewOpen_ = open;
    UpdateEndStageMask();
}

void RunControl::CommandsChanged() {
    host_.RefreshViews(kViewCommands);
}

void RunControl::SetNextInstructionText() {
    m_.NextInstructionText = InstructionTextAt(m_, m_.PC);
}

void RunControl::EnableStepCommands() {
    StepEnabled = Step2Enabled = true;
    NextBasicEnabled = Debug && Debug->NextBasicAvailable();
    CommandsChanged();
}

void RunControl::DisableStepCommands() {
    StepEnabled = Step2Enabled = NextBasicEnabled = false;
    CommandsChanged();
}

int RunControl::UltimateInterval() {
    const int ms = SettingInteger(settings_.GetSettingText(kSettingUltimateTimer, "500"));
    return std::clamp(ms, 1, 2000);
}

void RunControl::clean1() {
    StartTimer = 0;
    m_.StopRequest = m_.NmiRequest = m_.IntRequest = false;
    m_.ResetHold = ResetRequest = false;
    m_.EiPending = false;
    log_.IoLogWritten = false;
    BreakRequest = false;
    PendingKeyValue = -1;
    m_.TStates = 0;
}

void RunControl::menustart() {
    if (SimulationRunning) return;
    SimulationRunning = true;
    clean(m_);
    clean1();

    SetNextInstructionText();
    host_.RefreshViews(kViewRegisters);
    m_.NmiCommandEnabled = true;
    m_.IntCommandEnabled = false;
    m_.ResetCommandEnabled = true;
    StartEnabled = false;
    StopEnabled = true;
    CommandsChanged();
    host_.Yield();

    StartTimer = static_cast<float>(host_.SecondsSinceMidnight() - 0.01);
    if (log_.LoggingOn && !log_.Open(host_.Now())) {
        host_.ShowMessage("Cannot write the simulation log " + log_.LogPath() + ".");
    }
    if (logViewerOpen_) host_.ClearLogViewer();
    RefreshMemoryMirror(m_);

    NextBasicActive = 0;
    RunToNextBasic = false;
    if (Debug) Debug->PrepareStart();
    for (ExternalModule* module : hooks_.Modules) {
        if (module) module->objectinit();
    }

    hooks_.UpdateMask(m_);
    if (m_.SimulationRate == kRateStepByStep) {
        UpdateEndStageMask();
        EnableStepCommands();
        return;
    }
    if (m_.SimulationRate == kRateUltimate) {
        host_.SetUltimateTimer(UltimateInterval());
        UltimateRefreshDue = false;
    }
    UpdateEndStageMask();
    RunLoop();
}

void RunControl::menustep() {
    if (!SimulationRunning || m_.SimulationRate != kRateStepByStep) return;
    if (RunLoopActive) {
        if (PendingSteps < kMaxPendingSteps) PendingSteps += 1;
        return;
    }
    PendingSteps += 1;
    while (PendingSteps > 0 && SimulationRunning) {
        PendingSteps -= 1;
        RunLoop();
    }
    PendingSteps = 0;
}

void RunControl::menustop() {
    if (!SimulationRunning) return;
    if (!m_.StopRequest && m_.SimulationRate != kRateStepByStep && RunLoopActive) {
        m_.StopRequest = true;
        host_.Yield();
        return;
    }
    Shutdown();
}

void RunControl::Shutdown() {
    SimulationRunning = false;
    if (Debug) Debug->RunEnded();

    StartTimer = ElapsedSeconds(StartTimer, host_.SecondsSinceMidnight());
    const std::string seconds = SecondsText(StartTimer);

    m_.NmiCommandEnabled = m_.IntCommandEnabled = m_.ResetCommandEnabled = false;
    StopEnabled = false;
    StepEnabled = Step2Enabled = NextBasicEnabled = false;
    StartEnabled = true;
    CommandsChanged();

    SyncCounterTotals(m_);
    const bool logged = log_.IsOpen();
    if (logged) log_.Close(host_.Now(), seconds, m_.ClockCycleTotal, m_.ClockMHz);
    log_.IoStop();
    UpdateEndStageMask();

    lastStatistics_ = StatisticsText(m_.InstructionTotal, seconds, m_.ClockCycleTotal, m_.ClockMHz);
    host_.ShowMessage(lastStatistics_);
    if (logged) host_.ShowFile(log_.LogPath());
    host_.SetUltimateTimer(0);

    if (NextBasicActive == 1) {
        NextBasicActive = 0;
        menuspeed1();
    }
}

void RunControl::menuspeed(int rate) {
    if (rate < kRateStepByStep || rate > kRateUltimate) return;
    if (rate >= kRateNormal) NextBasicActive = 0;
    m_.SimulationRate = rate;
    CommandsChanged();
    ApplyRate();
}

void RunControl::ApplyRate() {
    settings_.SetSettingText(kSettingRate, std::to_string(m_.SimulationRate));
    UpdateEndStageMask();
    if (!StopEnabled) return;
    if (m_.SimulationRate == kRateUltimate) {
        host_.SetUltimateTimer(UltimateInterval());
        UltimateRefreshDue = false;
        UpdateEndStageMask();
    }
    if (m_.SimulationRate == kRateStepByStep) {
        EnableStepCommands();
        return;
    }
    if (StepEnabled) {
        DisableStepCommands();
        if (!RunLoopActive) RunLoop();
    }
}

void RunControl::menustep4() {
    if (!SimulationRunning) return;
    if (settings_.GetSettingInt(kSettingNextBasicInfo, 0) == 0) {
        host_.ShowMessage(
            "Be sure to customize this command performace using the 'Run To Next BASIC Statement "
            "Simulation Rate' option (Options menu).");
        settings_.SetSettingInt(kSettingNextBasicInfo, 1);
    }
    RunToNextBasic = true;
    NextBasicActive = 1;
    // The rate is applied as its command does, but without clearing NextBasicActive.
    static constexpr int kRates[] = {kRateNormal, kRateFast, kRateExtremelyFast, kRateUltimate};
    m_.SimulationRate = kRates[std::clamp(NextBasicRate, 0, 3)];
    CommandsChanged();
    ApplyRate();
}

void RunControl::ultimatetimer() {
    UltimateRefreshDue = true;
    m_.EndStageMask |= kEndStageViews;
}

bool RunControl::LeaveLoop() const {
    return m_.SimulationRate == kRateStepByStep || m_.StopRequest || m_.ResetHold;
}

// Up to `count` sleeps of 5 ms with a yield each; false when the wait was cut
// short by a change to Step By Step, Stop or RESET.
bool RunControl::WaitDelay(int count) {
    for (int i = 0; i < count; ++i) {
        if (LeaveLoop()) return false;
        host_.Sleep5ms();
        host_.Yield();
    }
    return !LeaveLoop();
}

void RunControl::WaitAfterInstruction() {
    // The rate is read afresh before each wait, so a change made during one
    // wait takes effect in the same round.
    if (m_.SimulationRate == kRateSlow &&
        !WaitDelay(settings_.GetSettingInt(kSettingSlowDelay, 140))) {
        return;
    }
    if (m_.SimulationRate == kRateNormal) {
        WaitDelay(settings_.GetSettingInt(kSettingNormalDelay, 24));
    } else if (m_.SimulationRate == kRateFast) {
        WaitDelay(settings_.GetSettingInt(kSettingFastDelay, 5));
    }
}

void RunControl::RunLoop() {
    RunLoopActive = 1;
    for (;;) {
        TurnLoop();
        FinalRedraw();
        if (m_.StopRequest) menustop();
        if (!m_.ResetHold) break;
        clean(m_);
        m_.NmiCommandEnabled = m_.IntCommandEnabled = false;
        CommandsChanged();
        if (!ResetRequest) break;
        // Automatic RESET: its steps end by turning the loop again.
        AutoResetSteps();
        if (!ResetFromText()) break;
    }
    RunLoopActive = 0;
}

// The instructions of RunLoop, until it is to be left.
void RunControl::TurnLoop() {
    int countdown = BatchLength();
    double sliceStart = host_.MonotonicSeconds();
    for (;;) {
        if (m_.SimulationRate >= kRateExtremelyFast) {
            // Fast rates: batches of instructions between two looks at the
            // clock, and a yield once per time slice.
            countdown -= ExecuteInstructions(m_, countdown);
            if (LeaveLoop()) return;
            if (countdown > 0) continue;
            SyncCounterTotals(m_);
            if (InstructionLimitStop()) return;
            countdown = BatchLength();
            if (host_.MonotonicSeconds() - sliceStart < kSliceSeconds) continue;
            host_.Yield();
            sliceStart = host_.MonotonicSeconds();
        } else {
            ExecuteInstruction(m_);
            SyncCounterTotals(m_);
            if (InstructionLimitStop()) return;
            host_.Yield();
            WaitAfterInstruction();
            host_.Yield();
        }
        if (LeaveLoop()) return;
    }
}

// Instructions until the next look at the clock: a batch, or fewer when the
// instruction limit comes first.
int RunControl::BatchLength() const {
    if (InstructionLimit <= 0) return kSliceCheck;
    const long long left = InstructionLimit - m_.InstructionCount;
    return static_cast<int>(std::clamp<long long>(left, 1, kSliceCheck));
}

bool RunControl::InstructionLimitStop() {
    if (InstructionLimit <= 0 || m_.InstructionCount < InstructionLimit || m_.StopRequest)
        return false;
    m_.StopRequest = true;
    InstructionLimitReached = true;
    return true;
}

void RunControl::FinalRedraw() {
    SyncCounterTotals(m_);
    m_.CurrentInstructionText = InstructionTextAt(m_, m_.InstructionPC);
    SetNextInstructionText();
    host_.RefreshViews(kViewRegisters | kViewWatch);
}

// End-of-instruction stage.

void RunControl::RefreshViews(Machine& m) {
    if (m.SimulationRate != kRateUltimate) {
        host_.RefreshViews(kViewsAfterInstruction | kViewWatch);
        return;
    }
    if (UltimateRefreshDue) {
        UltimateRefreshDue = false;
        m.CurrentInstructionText = CurrentTextForLog(m);
        SetNextInstructionText();
        host_.RefreshViews(kViewsAfterInstruction | kViewWatch);
        if (!watchViewOpen_) m.EndStageMask &= ~kEndStageViews;
    } else if (watchViewOpen_) {
        host_.RefreshViews(kViewWatch);
    }
}

void RunControl::WriteLogLine(Machine& m) {
    const std::string line = LogLineText(m, m.InstructionPC, CurrentTextForLog(m));
    log_.WriteLine(line);
    if (logViewerOpen_) host_.AppendLogViewer(line);
}

void RunControl::ServeRequests(Machine& m) {
    if (m.NmiRequest) Command1();
    if (m.IntRequest) Command2();
    if (!m.NmiRequest && !m.IntRequest) m.EndStageMask &= ~kEndStageRequests;
}

void RunControl::DebugChecks(Machine& m) {
    if (Debug) Debug->Checks(m);
}

void RunControl::SpectrumWork(Machine& m) {
    if (Spectrum) Spectrum->PerInstruction(m);
}

void RunControl::ModuleRefresh(Machine&) {
    for (ExternalModule* module : hooks_.Modules) {
        if (module) module->objectrefresh();
    }
}

// Change commands.

bool RunControl::RefuseWhileRunning() {
    if (!SimulationRunning) return false;
    host_.ShowMessage("Please stop the simulation first.");
    return true;
}

void RunControl::ChangeClockFrequency() {
    if (RefuseWhileRunning()) return;
    std::string answer;
    const std::string current = FrequencyText(m_.ClockMHz);
    if (!host_.AskText("Enter new clock frequency [0.01-120MHz]:",
                       current.substr(0, current.size() - 3), answer)) {
        return;
    }
    answer = Trimmed(answer);
    if (answer.empty()) return;
    const std::optional<double> value = ClockFrequencyEntry(answer);
    if (!value) {
        host_.ShowMessage("Allowed range 0.01-120MHz.");
        return;
    }
    m_.ClockMHz = static_cast<float>(*value);
    settings_.SetSettingText(kSettingClock, answer);
}

// Asks for a four-digit hexadecimal address; shorter texts are padded with zeros.
bool RunControl::AskAddress(const std::string& prompt, int current, int& value) {
    std::string answer;
    if (!host_.AskText(prompt, pb_hex4(current), answer)) return false;
    if (Trimmed(answer).empty()) return false;
    value = static_cast<int>(HexEntryValue(answer, 4));
    if (value < 0) {
        host_.ShowMessage("Wrong entry!");
        return false;
    }
    return true;
}

void RunControl::ChangeStartingAddress() {
    if (RefuseWhileRunning()) return;
    int value = 0;
    if (!AskAddress("Enter new starting address for the simulation [0000-FFFF]:",
                    m_.StartingAddress, value)) {
        return;
    }
    m_.StartingAddress = value;
    settings_.SetSettingText(kSettingStartingAddress, pb_hex4(value));
    clean(m_);
    SetNextInstructionText();
    host_.RefreshViews(kViewRegisters);
}

void RunControl::ChangeObjOffset() {
    if (RefuseWhileRunning()) return;
    int value = 0;
    if (!AskAddress("Enter new offset address for OBJ files loading [0000-FFFF]:", m_.ObjOffset,
                    value)) {
        return;
    }
    m_.ObjOffset = value;
    settings_.SetSettingInt(kSettingObjOffset, value);
}

void RunControl::ChangeUltimateInterval() {
    if (RefuseWhileRunning()) return;
    std::string answer;
    if (!host_.AskText("Change Ultimate Rate Refresh Interval", std::to_string(UltimateInterval()),
                       answer)) {
        return;
    }
    answer = Trimmed(answer);
    if (answer.empty()) return;
    const bool digits = answer.size() <= 4 && std::all_of(answer.begin(), answer.end(), [](char c) {
                            return std::isdigit(static_cast<unsigned char>(c));
                        });
    const int value = digits ? std::atoi(answer.c_str()) : 0;
    if (value < 1 || value > 2000) {
        host_.ShowMessage("Allowed range 1-2000.");
        return;
    }
    settings_.SetSettingText(kSettingUltimateTimer, std::to_string(value));
}

}  // namespace mb
