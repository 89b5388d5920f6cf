// The simulated Z80: registers, flags, interrupt state, memory, ports, counters
// and the configuration that execution reads. Plain data with public fields; every
// part of the system reads and writes it directly.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>

namespace mb {

constexpr int kMemorySize = 65536;
// Cells 65536..65540 mirror cells 0..4 (copied at Start), so that operand and
// text fetches near FFFFH read on without wrap arithmetic.
constexpr int kMemoryImageSize = 65541;
constexpr int kPortCount = 256;

// Simulation rates.
enum SimulationRateValue {
    kRateStepByStep = 1,
    kRateSlow = 2,
    kRateNormal = 3,
    kRateFast = 4,
    kRateExtremelyFast = 5,
    kRateUltimate = 6,
};

// Bits of Machine::EndStageMask: which parts of the end-of-instruction stage have
// work to do. A zero mask means the stage costs one integer test.
enum EndStageBits {
    kEndStageViews = 1 << 0,     // view refresh (register display, editors, screens)
    kEndStageLog = 1 << 1,       // log line to log.txt and the log viewer
    kEndStageRequests = 1 << 2,  // pending NMI / INT commands
    kEndStageDebug = 1 << 3,     // breakpoints, tracking, #sim directives
    kEndStageSpectrum = 1 << 4,  // ZX Spectrum interface work
    kEndStageModules = 1 << 5,   // objectrefresh to external modules
    kEndStageText = 1 << 6,      // rates below Ultimate: the next instruction's text
};

// Bits of Machine::AddressMarks, one per kind of client.
enum AddressMarkBits {
    kMarkHostChecks = 1 << 0,  // checks of the program that hosts the machine (mbsim)
};

struct Machine;

// Receives the end-of-instruction stage, one call per active step, in order.
// Implemented by run control; execution only calls through it.
class EndStageHandler {
  public:
    virtual ~EndStageHandler() = default;
    virtual void RefreshViews(Machine& m) = 0;
    virtual void WriteLogLine(Machine& m) = 0;
    virtual void ServeRequests(Machine& m) = 0;
    virtual void DebugChecks(Machine& m) = 0;
    virtual void SpectrumWork(Machine& m) = 0;
    virtual void ModuleRefresh(Machine& m) = 0;
};

class AccessHooks;  // devices on the data paths (access.h)

struct Machine {
    // Main register set, each 0..255.
    int A = 0, B = 0, C = 0, D = 0, E = 0, H = 0, L = 0;
    int FlagS = 0, FlagZ = 0, FlagY = 0, FlagH = 0, FlagX = 0, FlagP = 0, FlagN = 0, FlagC = 0;

    // Alternate set.
    int AltA = 0, AltB = 0, AltC = 0, AltD = 0, AltE = 0, AltH = 0, AltL = 0;
    int AltFlagS = 0, AltFlagZ = 0, AltFlagY = 0, AltFlagH = 0, AltFlagX = 0, AltFlagP = 0,
        AltFlagN = 0, AltFlagC = 0;

    // 16-bit registers, each 0..65535.
    int IX = 0, IY = 0, SP = 0, PC = 0;

    // Refresh and interrupt state.
    int I = 0, R = 0, IFF1 = 0, IFF2 = 0, InterruptMode = 0;

    // A as it was just before IN A,(n) replaced it (B for the IN r,(C) family).
    int PrevA = 0;

    // Counters. The two 32-bit counts wrap around in a long run (at Ultimate the
    // clock count passes 2^31 within seconds); devices and modules read them
    // as they are.
    int InstructionCount = 0;
    int ClockCycles = 0;
    int TStates = 0;
    int HaltState = 0;

    // Totals of the same counts that do not wrap, for the display and the
    // statistics; SyncCounterTotals brings them up to date.
    long long InstructionTotal = 0;
    long long ClockCycleTotal = 0;
    unsigned TotalsSeenInstructions = 0;  // the counts at the last SyncCounterTotals
    unsigned TotalsSeenCycles = 0;

    // Instruction texts and the PC of the instruction being executed.
    std::string CurrentInstructionText;
    std::string NextInstructionText;
    int InstructionPC = 0;

    // Working fields of the instruction cycle.
    int TextMode = 1;
    int HaltThisInstruction = 0;
    int PrefixRecognised = 0;
    bool EiPending = false;

    // Requests served at fixed points of the cycle and the run loop. StopRequest
    // and ResetHold (the RESET command held down) end the run loop.
    bool StopRequest = false;
    bool ResetHold = false;
    bool NmiRequest = false;
    bool IntRequest = false;

    // Enabled state of the NMI, INT and RESET commands: how the program masks
    // interrupts, so it belongs to the machine.
    bool NmiCommandEnabled = false;
    bool IntCommandEnabled = false;
    bool ResetCommandEnabled = false;

    // Data access trackers, -1 after clean.
    int LastReadAddress = -1;
    int LastWriteAddress = -1;

    // Configuration.
    float ClockMHz = 4.0f;
    int StartingAddress = 0;
    int ObjOffset = 0;
    std::string FFPowerOnDefaults = "ON";
    int UnofficialEnabled = 0;
    int SimulationRate = kRateFast;
    int HaltStopsSimulation = 1;          // "HALT Stops Simulation"
    int InfiniteLoopStopsSimulation = 0;  // "Infinite Loop Stops Simulation"
    int RelativeBranchHex = 0;            // "Display Relative Branch Hex Argument"

    // End-of-instruction stage: bits of EndStageBits, and who serves them.
    int EndStageMask = 0;
    EndStageHandler* EndStage = nullptr;

    // Addresses whose arrival has work for the end of an instruction (bits of
    // AddressMarkBits): an instruction that leaves PC on a marked address runs
    // the debugging checks of the end stage, while any other address costs one
    // table test.
    std::array<unsigned char, kMemorySize> AddressMarks{};

    // Devices on the data paths: nonzero AccessHookMask means Hooks is consulted.
    int AccessHookMask = 0;
    AccessHooks* Hooks = nullptr;

    std::array<int, kMemoryImageSize> MemoryImage{};
    std::array<int, kPortCount> PortImage{};
};

// Resets the machine to its power-on state (registers per FFPowerOnDefaults,
// PC := StartingAddress, counters and texts cleared). Memory and ports stay.
void clean(Machine& m);

// Adds to the totals what the 32-bit counts advanced since the last call. It
// must run at least once per 2^32 instructions and clock cycles, which the run
// loop's checks do many times over; clean resets both.
void SyncCounterTotals(Machine& m);

// A 32-bit counter advanced with wrap-around instead of overflow.
inline int WrapAdd32(int counter, int add) {
    return static_cast<int>(static_cast<unsigned>(counter) + static_cast<unsigned>(add));
}

// Sets or clears the bit `mark` of AddressMarks at one address.
inline void MarkAddress(Machine& m, int address, int mark, bool on = true) {
    unsigned char& cell = m.AddressMarks[static_cast<unsigned>(address) & 0xFFFFu];
    cell = static_cast<unsigned char>(on ? (cell | mark) : (cell & ~mark));
}

// Copies cells 0..4 into the five mirror cells above FFFFH (done at Start).
void RefreshMemoryMirror(Machine& m);

// Flag byte composed from the eight flag fields, and spread back.
int ComposeFlags(const Machine& m);
int ComposeAltFlags(const Machine& m);

namespace detail {

// The eight flag fields lie in the order of their bits, S first, so a flag byte
// is spread by copying one row of this table over them: two vector stores in
// place of eight scalar ones on the instruction hot path.
struct FlagFieldRow {
    int field[8];
};

constexpr std::array<FlagFieldRow, 256> MakeFlagFieldRows() {
    std::array<FlagFieldRow, 256> rows{};
    for (int byte = 0; byte < 256; ++byte)
        for (int bit = 0; bit < 8; ++bit) rows[byte].field[7 - bit] = (byte >> bit) & 1;
    return rows;
}

alignas(64) inline constexpr std::array<FlagFieldRow, 256> kFlagFieldRows = MakeFlagFieldRows();

static_assert(std::is_standard_layout_v<Machine>);
static_assert(offsetof(Machine, FlagC) - offsetof(Machine, FlagS) == 7 * sizeof(int));
static_assert(offsetof(Machine, AltFlagC) - offsetof(Machine, AltFlagS) == 7 * sizeof(int));

inline void CopyFlagRow(Machine& m, std::size_t firstField, int byte) {
    std::memcpy(reinterpret_cast<unsigned char*>(&m) + firstField, &kFlagFieldRows[byte & 255],
                sizeof(FlagFieldRow));
}

}  // namespace detail

inline void SpreadFlags(Machine& m, int byte) {
    detail::CopyFlagRow(m, offsetof(Machine, FlagS), byte);
}

inline void SpreadAltFlags(Machine& m, int byte) {
    detail::CopyFlagRow(m, offsetof(Machine, AltFlagS), byte);
}

// The halves of a word: div 256 and mod 256 of a value that is never negative,
// computed unsigned so that they cost one shift or mask.
inline int HighByte(int v) {
    return static_cast<int>(static_cast<unsigned>(v) / 256u);
}
inline int LowByte(int v) {
    return static_cast<int>(static_cast<unsigned>(v) % 256u);
}

// Register pairs, computed at each use.
// One line per helper: the group reads as a table.
// clang-format off
inline int RegBC(const Machine& m) { return m.B * 256 + m.C; }
inline int RegDE(const Machine& m) { return m.D * 256 + m.E; }
inline int RegHL(const Machine& m) { return m.H * 256 + m.L; }
inline void SetBC(Machine& m, int v) { m.B = HighByte(v); m.C = LowByte(v); }
inline void SetDE(Machine& m, int v) { m.D = HighByte(v); m.E = LowByte(v); }
inline void SetHL(Machine& m, int v) { m.H = HighByte(v); m.L = LowByte(v); }
// clang-format on

}  // namespace mb
