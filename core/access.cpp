// The hooked forms of the data paths: every device in its fixed order.
#include "access.h"

#include "host.h"
#include "instruction_text.h"
#include "numtext.h"
#include "simlog.h"

namespace mb {

namespace {

// A module may redirect an access through the by-reference address; a value
// outside the array keeps the original address.
int Redirected(int original, int changed, int limit) {
    return changed >= 0 && changed < limit ? changed : original;
}

// Bit `bit` of `cell` cleared, then set when `on`.
int WithBit(int cell, int bit, bool on) {
    cell &= ~(1 << bit);
    return on ? cell | (1 << bit) : cell;
}

// `clean` restarts the cycle count, so a later output count is stale.
void CheckCycleRestart(const Machine& m, TerminalBinding& t) {
    if (m.ClockCycles < t.LastOutCycle) t.LastOutCycle = 0;
}

// More than BusyTime cycles since the last output. Counted as the distance
// between the two 32-bit counts, so that the bit comes back also when the
// count runs past 2^31 and turns negative; a plain comparison would then hold
// the bit low for 2^31 cycles.
bool TransmitReady(const Machine& m, const TerminalBinding& t) {
    const unsigned elapsed =
        static_cast<unsigned>(m.ClockCycles) - static_cast<unsigned>(t.LastOutCycle);
    return elapsed > static_cast<unsigned>(t.BusyTime);
}

void MemoryTerminalRead(Machine& m, TerminalBinding& t, int address) {
    int& cell = m.MemoryImage[address];
    CheckCycleRestart(m, t);
    if (address == t.InStatus) cell = WithBit(cell, t.InBit, t.Device->interm_notempty());
    if (address == t.InData) cell = t.Device->interm_notempty() ? t.Device->interm_getbyte() : 0;
    if (address == t.OutStatus) cell = WithBit(cell, t.OutBit, TransmitReady(m, t));
}

// Port terminal on IN: true when one of its ports answered.
bool PortTerminalIn(Machine& m, TerminalBinding& t, int port, int& result) {
    CheckCycleRestart(m, t);
    if (port == t.InData) {
        result = t.Device->interm_notempty() ? t.Device->interm_getbyte() : 0;
        return true;
    }
    bool matched = false;
    if (port == t.InStatus) {
        result = WithBit(result, t.InBit, t.Device->interm_notempty());
        matched = true;
    }
    if (port == t.OutStatus) {
        result = WithBit(result, t.OutBit, TransmitReady(m, t));
        matched = true;
    }
    return matched;
}

// Peripheral devices and the input queue on IN: true when the search ended.
bool PortDevicesIn(AccessHooks& h, int port, int& result) {
    for (PortBinding& d : h.Devices) {
        if (!d.Enabled || !d.InputMode || d.Port != port) continue;
        if (d.OneShot >= 0) {
            result = d.OneShot;
            d.OneShot = -1;
            if (h.host) h.host->RefreshViews(kViewDevices);
            return true;
        }
        result = d.Value;
    }
    StringInPort& q = h.InputQueue;
    if (q.Enabled && q.Port == port && !q.QueueChars.empty()) {
        result = static_cast<unsigned char>(q.QueueChars[0]);
        q.QueueChars.erase(0, 1);
        if (!q.QueueKinds.empty()) q.QueueKinds.erase(0, 1);
        if (h.host) h.host->RefreshViews(kViewDevices);
        return true;
    }
    return false;
}

void PortDevicesOut(AccessHooks& h, int port, int value) {
    bool changed = false;
    for (PortBinding& d : h.Devices) {
        if (d.Enabled && !d.InputMode && d.Port == port) {
            d.Value = value;
            changed = true;
        }
    }
    StringOutPort& s = h.OutputString;
    if (s.Enabled && s.Port == port) {
        if (value > 0) s.OutputText += static_cast<char>(value);
        if (s.OutputText.size() > StringOutPort::kTextLimit) {
            s.OutputText.erase(0, s.OutputText.size() / 2);
            ++s.Cuts;
        }
        changed = true;
    }
    if (changed && h.host) h.host->RefreshViews(kViewDevices);
}

int AskInValue(Machine& m, Host& host, int port) {
    std::string text = CurrentTextForLog(m);
    m.CurrentInstructionText = text;
    std::string caption = pb_hex4(m.InstructionPC) + "H: " + text;
    int value =
        host.AskInValue(caption, "Enter data received on port " + pb_hex2(port) + "H [00-FF].");
    return value >= 0 && value <= 255 ? value : 0;
}

}  // namespace

void AccessHooks::UpdateMask(Machine& m) {
    int mask = 0;
    for (ExternalModule* module : Modules) {
        if (module) mask |= kHookModules;
    }
    if (MemoryTerminal.Active && MemoryTerminal.Device) mask |= kHookMemoryTerminal;
    if (PortTerminal.Active && PortTerminal.Device) mask |= kHookPortTerminal;
    for (const PortBinding& d : Devices) {
        if (d.Enabled) mask |= kHookPortDevices;
    }
    if (OutputString.Enabled || InputQueue.Enabled) mask |= kHookPortDevices;
    if (SpectrumActive && Spectrum) mask |= kHookSpectrum;
    if (PromptBeforeIn && host) mask |= kHookInPrompt;
    if (log && log->IoLoggingOn) mask |= kHookIoLog;
    if (PortsEditorOpen && host) mask |= kHookPortsEditor;
    if (MemoryViewsOpen && host) mask |= kHookMemoryViews;
    m.Hooks = this;
    m.AccessHookMask = mask;
}

namespace {
// The I/O Ports Editor follows every access at the rates that show each
// instruction; at Ultimate it is redrawn with the other views at timer ticks.
void RefreshPortsEditor(const Machine& m, AccessHooks& h) {
    if (m.SimulationRate != kRateUltimate) h.host->RefreshViews(kViewPortsEditor);
}
}  // namespace

int MemoryReadHooked(Machine& m, int address) {
    AccessHooks& h = *m.Hooks;
    if (m.AccessHookMask & kHookModules) {
        int value = -1;
        int a = address;
        for (ExternalModule* module : h.Modules) {
            if (module) module->readmem(a, value);
        }
        address = Redirected(address, a, kMemorySize);
        if (value > -1) m.MemoryImage[address] = value & 0xFF;
    }
    if (m.AccessHookMask & kHookMemoryTerminal) MemoryTerminalRead(m, h.MemoryTerminal, address);
    m.LastReadAddress = address;
    return m.MemoryImage[address];
}

void MemoryWriteHooked(Machine& m, int address, int value) {
    AccessHooks& h = *m.Hooks;
    m.MemoryImage[address] = value;
    m.LastWriteAddress = address;
    if ((m.AccessHookMask & kHookSpectrum) && address >= 16384 && address <= 23295) {
        h.SpectrumMarks.ScreenDirty = 1;
        if (address <= 22527) {
            h.SpectrumMarks.PixelDirty[address - 16384] = 1;
        } else {
            h.SpectrumMarks.AttrDirty[address - 22528] = 1;
        }
    }
    if ((m.AccessHookMask & kHookMemoryTerminal) && address == h.MemoryTerminal.OutData) {
        h.MemoryTerminal.LastOutCycle = m.ClockCycles;
        h.MemoryTerminal.Device->outterm_addbyte(value);
    }
    if (m.AccessHookMask & kHookModules) {
        int a = address, v = value;
        for (ExternalModule* module : h.Modules) {
            if (module) module->writemem(a, v);
        }
    }
    if (m.AccessHookMask & kHookMemoryViews) {
        h.host->RefreshViews(kViewMemoryEditors | kViewVideoScreen);
    }
}

int PortInHooked(Machine& m, int port) {
    AccessHooks& h = *m.Hooks;
    const int mask = m.AccessHookMask;
    int result = -1;
    if (mask & kHookModules) {
        int p = port;
        for (ExternalModule* module : h.Modules) {
            if (module) module->readio(p, result);
        }
        port = Redirected(port, p, kPortCount);
        if (result > 255) result &= 0xFF;
    }
    if (result < 0) {
        if (mask & kHookSpectrum) return h.Spectrum->KeyboardRow(port, m.PrevA);
        result = m.PortImage[port];
        bool supplied = (mask & kHookPortDevices) && PortDevicesIn(h, port, result);
        if (!supplied && (mask & kHookPortTerminal)) {
            supplied = PortTerminalIn(m, h.PortTerminal, port, result);
        }
        if (!supplied && (mask & kHookInPrompt)) result = AskInValue(m, *h.host, port);
    }
    m.PortImage[port] = result;
    if (mask & kHookPortsEditor) RefreshPortsEditor(m, h);
    if ((mask & kHookIoLog) && h.host) h.log->IoAccess(m, h.host->Now(), port, result, true);
    return result;
}

void PortOutHooked(Machine& m, int port, int value) {
    AccessHooks& h = *m.Hooks;
    const int mask = m.AccessHookMask;
    if ((mask & kHookIoLog) && h.host) h.log->IoAccess(m, h.host->Now(), port, value, false);
    if ((mask & kHookSpectrum) && port == 254) h.Spectrum->SetBorder(value & 7);
    if ((mask & kHookPortTerminal) && port == h.PortTerminal.OutData) {
        h.PortTerminal.LastOutCycle = m.ClockCycles;
        h.PortTerminal.Device->outterm_addbyte(value);
    }
    if (mask & kHookPortDevices) PortDevicesOut(h, port, value);
    m.PortImage[port] = value;
    if (mask & kHookPortsEditor) RefreshPortsEditor(m, h);
    if (mask & kHookModules) {
        int p = port, v = value;
        for (ExternalModule* module : h.Modules) {
            if (module) module->writeio(p, v);
        }
    }
}

void ApplySimulationDirective(Machine& m, const SimulationDirective& row) {
    const bool memory = row.Kind == 1;
    if (row.Address < 0 || row.Address >= (memory ? kMemorySize : kPortCount)) return;
    int value = row.Value & 0xFF;
    if (row.Mask != -1) {
        int byte = memory ? MemoryRead(m, row.Address) : PortIn(m, row.Address);
        value = row.Value == 0 ? byte & ~row.Mask & 0xFF : (byte | row.Mask) & 0xFF;
    }
    if (memory) {
        MemoryWrite(m, row.Address, value);
    } else {
        PortOut(m, row.Address, value);
    }
}

std::string CurrentTextForLog(const Machine& m) {
    if (m.TextMode != 0 && !m.CurrentInstructionText.empty()) return m.CurrentInstructionText;
    return InstructionTextAt(m, m.InstructionPC);
}

std::string InstructionTextAt(const Machine& m, int pc) {
    if (pc < 0 || pc >= kMemorySize) return "";
    DecodeOptions opt;
    opt.unofficial = m.UnofficialEnabled != 0;
    opt.relativeHex = m.RelativeBranchHex != 0;
    return InstructionText(m.MemoryImage[pc], m.MemoryImage[pc + 1], m.MemoryImage[pc + 2],
                           m.MemoryImage[pc + 3], opt);
}

}  // namespace mb
