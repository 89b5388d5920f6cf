// The data paths of instructions: the only way a program's data reaches memory
// and ports with the devices looking on. Opcode and operand fetches, PushWord and
// PopWord, the editors and the loaders use the arrays directly instead.
//
// Every device sits behind one bit of Machine::AccessHookMask, so the bare path
// is one integer test; AccessHooks::UpdateMask recomputes the bits whenever a
// device, a module or an option changes.
#pragma once

#include <array>
#include <string>

#include "machine.h"

namespace mb {

class Host;
class SimLog;

// Bits of Machine::AccessHookMask.
enum AccessHookBits {
    kHookModules = 1 << 0,         // an external module slot is loaded
    kHookMemoryTerminal = 1 << 1,  // memory-mapped terminal active
    kHookPortTerminal = 1 << 2,    // port terminal active
    kHookPortDevices = 1 << 3,     // a port binding or the string ports enabled
    kHookSpectrum = 1 << 4,        // ZX Spectrum interface active
    kHookInPrompt = 1 << 5,        // "Prompt For Value Before IN Instruction"
    kHookIoLog = 1 << 6,           // "Enable IN/OUT Instructions Logging"
    kHookPortsEditor = 1 << 7,     // I/O Ports Editor open: refresh on each access
    kHookMemoryViews = 1 << 8,     // a Memory Editor or the Video Memory Screen follows writes
};
constexpr int kMemoryReadHooks = kHookModules | kHookMemoryTerminal;
constexpr int kMemoryWriteHooks =
    kHookModules | kHookMemoryTerminal | kHookSpectrum | kHookMemoryViews;
constexpr int kPortHooks = ~kHookMemoryViews;  // every other hook concerns the ports

// One external module (automation object) in a slot. Address and value travel
// by reference: a module may redirect a read, and a later module sees what an
// earlier one set. Errors of a call are the implementation's to swallow.
class ExternalModule {
  public:
    virtual ~ExternalModule() = default;
    virtual void objectinit() = 0;
    virtual void objectrefresh() = 0;
    virtual void readmem(int& address, int& value) = 0;
    virtual void writemem(int& address, int& value) = 0;
    virtual void readio(int& address, int& value) = 0;
    virtual void writeio(int& address, int& value) = 0;
};
constexpr int kModuleSlots = 5;

// The character side of a terminal: its input queue and its screen.
class TerminalDevice {
  public:
    virtual ~TerminalDevice() = default;
    virtual bool interm_notempty() = 0;
    virtual int interm_getbyte() = 0;
    virtual void outterm_addbyte(int value) = 0;
};

// Registers of a terminal: addresses for the memory-mapped one, ports for the
// port one.
struct TerminalBinding {
    bool Active = false;
    int OutData = 0, OutStatus = 0, OutBit = 0;
    int InData = 0, InStatus = 0, InBit = 0;
    int BusyTime = 0;
    int LastOutCycle = 0;
    TerminalDevice* Device = nullptr;
};

// One byte-wide device of the Peripheral Devices window.
struct PortBinding {
    bool Enabled = false;
    bool InputMode = false;
    int Port = 0;
    int Value = 0;
    int OneShot = -1;
};

// Output terminal (device 5): the text the program sent. Past kTextLimit bytes
// the older half goes; Cuts counts that and every clearing, so that a view
// which shows the text so far knows when appending the rest is not enough.
struct StringOutPort {
    static constexpr size_t kTextLimit = 1 << 20;
    bool Enabled = false;
    int Port = 0;
    std::string OutputText;
    int Cuts = 0;
};

// Input queue (device 6): bytes waiting for IN, with one display marker each.
struct StringInPort {
    bool Enabled = false;
    int Port = 0;
    std::string QueueChars;
    std::string QueueKinds;
};

// The ZX Spectrum interface's side of the data paths.
class SpectrumBus {
  public:
    virtual ~SpectrumBus() = default;
    // Keyboard row for IN from the key held and the high address byte.
    virtual int KeyboardRow(int port, int highByte) = 0;
    // Border colour 0..7 from OUT 254.
    virtual void SetBorder(int colour) = 0;
};

// Dirty marks of the Spectrum screen, set by MemoryWrite and cleared by the
// interface when it draws.
struct SpectrumScreenMarks {
    int ScreenDirty = 0;
    std::array<unsigned char, 6144> PixelDirty{};
    std::array<unsigned char, 768> AttrDirty{};
};

// Everything that looks on the data paths, in the order the paths call it.
class AccessHooks {
  public:
    std::array<ExternalModule*, kModuleSlots> Modules{};  // nullptr: slot not loaded
    TerminalBinding MemoryTerminal;
    TerminalBinding PortTerminal;
    std::array<PortBinding, 4> Devices;
    StringOutPort OutputString;
    StringInPort InputQueue;
    bool SpectrumActive = false;
    SpectrumBus* Spectrum = nullptr;
    SpectrumScreenMarks SpectrumMarks;
    bool PromptBeforeIn = true;  // "Prompt For Value Before IN Instruction"
    bool PortsEditorOpen = false;
    // A Memory Editor (with "Refresh Memory Editor" on) or the Video Memory
    // Screen is open: each write refreshes them (memorijaprint).
    bool MemoryViewsOpen = false;

    Host* host = nullptr;   // IN prompt and view refreshes
    SimLog* log = nullptr;  // io.txt; the IN/OUT logging switch lives there

    // Recomputes m.AccessHookMask from the fields above and attaches the hooks.
    void UpdateMask(Machine& m);
};

// Out-of-line hooked forms, reached only with a nonzero mask.
int MemoryReadHooked(Machine& m, int address);
void MemoryWriteHooked(Machine& m, int address, int value);
int PortInHooked(Machine& m, int port);
void PortOutHooked(Machine& m, int port, int value);

// How an instruction reaches the data paths: with the hook test at every access
// (kChecked, the form for everyone else), or straight to the arrays (kBare).
// An instruction takes the bare form only when it finds the mask clear at its
// start; nothing but a hook changes the mask, so it meets no hook on its way.
enum class Paths { kChecked, kBare };

template <Paths P = Paths::kChecked>
inline int MemoryRead(Machine& m, int address) {
    if (P == Paths::kChecked && (m.AccessHookMask & kMemoryReadHooks))
        return MemoryReadHooked(m, address);
    m.LastReadAddress = address;
    return m.MemoryImage[static_cast<unsigned>(address)];
}

template <Paths P = Paths::kChecked>
inline void MemoryWrite(Machine& m, int address, int value) {
    if (P == Paths::kChecked && (m.AccessHookMask & kMemoryWriteHooks))
        return MemoryWriteHooked(m, address, value);
    m.MemoryImage[static_cast<unsigned>(address)] = value;
    m.LastWriteAddress = address;
}

template <Paths P = Paths::kChecked>
inline int PortIn(Machine& m, int port) {
    if (P == Paths::kChecked && (m.AccessHookMask & kPortHooks)) return PortInHooked(m, port);
    return m.PortImage[static_cast<unsigned>(port)];
}

template <Paths P = Paths::kChecked>
inline void PortOut(Machine& m, int port, int value) {
    if (P == Paths::kChecked && (m.AccessHookMask & kPortHooks))
        return PortOutHooked(m, port, value);
    m.PortImage[static_cast<unsigned>(port)] = value;
}

// One #sim / #simio row of the listing.
struct SimulationDirective {
    int Pc = 0;
    int Kind = 1;  // 1 memory, 2 port
    int Address = 0;
    int Mask = -1;  // -1: the whole byte
    int Value = 0;
};

// Carries out one row when PC reaches its address.
void ApplySimulationDirective(Machine& m, const SimulationDirective& row);

// Text of the instruction at InstructionPC, built on demand when the fast rate
// built none (IN prompt, I/O log, log line).
std::string CurrentTextForLog(const Machine& m);
// Text of the instruction whose bytes stand at pc ("" outside memory).
std::string InstructionTextAt(const Machine& m, int pc);

}  // namespace mb
