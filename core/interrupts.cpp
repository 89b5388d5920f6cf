// The NMI, INT and RESET commands. The simulated Z80 has no interrupt pins: the
// user, a device or a module presses a command, and it is accepted between two
// instructions.
#include <cctype>

#include "execute.h"
#include "numtext.h"
#include "run_control.h"

namespace mb {

namespace {

constexpr int kHaltOpcode = 118;
constexpr const char* kWrongEntry = "Wrong entry.";

std::string CleanAnswer(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c != ' ' && c != '\t')
            out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return out;
}

std::string WithWrongEntry(const std::string& prompt) {
    std::string text = prompt;
    text += '\n';
    text += kWrongEntry;
    return text;
}

// An interrupt accepted on a HALT returns to the instruction after it.
void StepPastHalt(Machine& m) {
    if (m.PC >= 0 && m.PC < kMemorySize && m.MemoryImage[m.PC] == kHaltOpcode) m.PC += 1;
}

}  // namespace

void RunControl::RedrawRegisters() {
    host_.RefreshViews(kViewRegisters | kViewCommands);
}

void RunControl::WriteInterruptLogLine() {
    if (!log_.IsOpen() && !logViewerOpen_) return;
    const std::string line = LogLineText(m_, m_.PC, m_.CurrentInstructionText);
    log_.WriteLine(line);
    if (logViewerOpen_) host_.AppendLogViewer(line);
}

void RunControl::Command1() {
    if (m_.SimulationRate != kRateStepByStep && !m_.NmiRequest) {
        m_.NmiRequest = true;
        m_.EndStageMask |= kEndStageRequests;
        host_.Yield();
        return;
    }
    CarryOutNmi();
}

void RunControl::Command2() {
    if (m_.SimulationRate != kRateStepByStep && !m_.IntRequest) {
        m_.IntRequest = true;
        m_.EndStageMask |= kEndStageRequests;
        host_.Yield();
        return;
    }
    CarryOutInt();
}

void RunControl::CarryOutNmi() {
    m_.NmiRequest = false;
    IncrementR(m_);
    StepPastHalt(m_);
    PushWord(m_, m_.PC);
    m_.PC = 0x66;
    m_.IFF1 = 0;
    m_.NmiCommandEnabled = m_.IntCommandEnabled = false;
    m_.ClockCycles = WrapAdd32(m_.ClockCycles, 11);
    m_.InstructionCount = WrapAdd32(m_.InstructionCount, 1);
    m_.CurrentInstructionText = "NMI";
    RedrawRegisters();
    WriteInterruptLogLine();
}

void RunControl::CarryOutInt() {
    m_.IntRequest = false;
    IncrementR(m_);
    StepPastHalt(m_);
    PushWord(m_, m_.PC);
    m_.IFF1 = m_.IFF2 = 0;
    m_.IntCommandEnabled = false;
    RedrawRegisters();
    switch (m_.InterruptMode) {
        case 0:
            m_.ClockCycles = WrapAdd32(m_.ClockCycles, 13);
            m_.PC = (AskRestartChoice() - 1) * 8;
            break;
        case 1:
            m_.ClockCycles = WrapAdd32(m_.ClockCycles, 13);
            m_.PC = 0x38;
            break;
        default: {
            m_.ClockCycles = WrapAdd32(m_.ClockCycles, 19);
            const int vector = hooks_.SpectrumActive ? 0 : AskVector();
            const int at = m_.I * 256 + vector;
            m_.PC = m_.MemoryImage[at] + m_.MemoryImage[at + 1] * 256;
            break;
        }
    }
    m_.InstructionCount = WrapAdd32(m_.InstructionCount, 1);
    m_.CurrentInstructionText = "INT";
    RedrawRegisters();
    WriteInterruptLogLine();
}

// Mode 0: which RST the device puts on the bus, 1 to 8; asked until valid.
int RunControl::AskRestartChoice() {
    std::string prompt = "Enter the choice of instruction supplied by the peripheral device:";
    for (int k = 0; k < 8; ++k) {
        prompt += '\n';
        prompt += static_cast<char>('1' + k);
        prompt += " - RST ";
        prompt += pb_hex2H(k * 8);
    }
    std::string question = prompt;
    for (;;) {
        std::string answer;
        if (host_.AskText(question, "", answer)) {
            answer = CleanAnswer(answer);
            if (answer.size() == 1 && answer[0] >= '1' && answer[0] <= '8') return answer[0] - '0';
        }
        question = WithWrongEntry(prompt);
    }
}

// Mode 2: the even vector byte of the device; asked until valid.
int RunControl::AskVector() {
    const std::string prompt =
        "Enter the 8-bit vector supplied by the peripheral device:\n(it must be an even value in "
        "the "
        "range [00-FF])";
    std::string question = prompt;
    for (;;) {
        std::string answer;
        if (host_.AskText(question, "", answer)) {
            answer = CleanAnswer(answer);
            if (answer.size() == 1) answer = "0" + answer;
            const int vector = answer.size() == 2 ? pb_dec2(answer) : -1;
            if (vector >= 0 && vector % 2 == 0) return vector;
        }
        question = WithWrongEntry(prompt);
    }
}

void RunControl::Command3Press() {
    Step2Enabled = false;
    m_.ResetHold = true;
    CommandsChanged();
    host_.Yield();
    if (m_.SimulationRate == kRateStepByStep) {
        clean(m_);
        m_.NmiCommandEnabled = m_.IntCommandEnabled = false;
        CommandsChanged();
    }
}

void RunControl::Command3Release() {
    clean(m_);
    if (ResetFromText() && !RunLoopActive) RunLoop();
}

void RunControl::clickreset() {
    if (SimulationRunning && m_.SimulationRate != kRateStepByStep && !ResetRequest) {
        ResetRequest = m_.ResetHold = true;
        host_.Yield();
        return;
    }
    AutoResetSteps();
    if (ResetFromText() && !RunLoopActive) RunLoop();
}

void RunControl::AutoResetSteps() {
    ResetRequest = m_.ResetHold = false;
    Step2Enabled = false;
    m_.NmiCommandEnabled = m_.IntCommandEnabled = false;
    CommandsChanged();
    clean(m_);
    host_.Yield();
    clean(m_);
}

bool RunControl::ResetFromText() {
    m_.CurrentInstructionText = "RESET";
    SetNextInstructionText();
    RedrawRegisters();
    m_.ResetCommandEnabled = false;
    CommandsChanged();
    host_.Yield();
    host_.SleepMs(500);
    m_.ResetCommandEnabled = true;
    StartTimer = static_cast<float>(host_.SecondsSinceMidnight() - 0.01);
    m_.NmiCommandEnabled = true;
    CommandsChanged();
    if (log_.IsOpen()) log_.WriteLine("RESET");
    log_.IoReset();
    m_.ResetHold = false;
    host_.Yield();
    if (!SimulationRunning) return false;
    if (m_.SimulationRate == kRateStepByStep) {
        EnableStepCommands();
        return false;
    }
    return true;
}

}  // namespace mb
