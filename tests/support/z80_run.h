// Assembles a source with our assembler, loads the object image and runs it on
// our core at the Ultimate rate until HALT (or an instruction limit), keeping
// what the program wrote to the ports. Shared by the runtime library's, the
// compiler's and the devices' end-to-end tests; the devices' tests put their
// own devices on the data paths through Hooks.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "assembler/assembler.h"
#include "core/access.h"
#include "core/console_host.h"
#include "core/machine.h"
#include "core/run_control.h"
#include "core/simlog.h"
#include "images/command_line_host.h"
#include "images/program_image.h"
#include "settings/settings_store.h"

namespace mb::testing {

// Collects every OUT to the bound port; offers no input.
class CollectingTerminal : public TerminalDevice {
  public:
    bool interm_notempty() override { return false; }
    int interm_getbyte() override { return 0; }
    void outterm_addbyte(int value) override { Text.push_back(static_cast<char>(value & 0xFF)); }
    std::string Text;
};

class Z80Run {
  public:
    Z80Run() : m_(std::make_unique<Machine>()) {}

    // Assembles folder/name silently; the error count (0 on success). The
    // assembler's error text is kept in AssemblerErrors, the labels and their
    // values in Labels.
    int Assemble(const std::string& folder, const std::string& name) {
        MemorySettingsStore settings;
        AssemblerHost host;
        Assembler assembler(settings, host);
        int status = kSilentAssembly;
        std::string dir = folder;
        if (!dir.empty() && dir.back() != '/') dir += '/';
        const int errors = assembler.AssembleSource(dir, name, status);
        AssemblerErrors = errors ? assembler.FormatAssemblerErrors() : "";
        Labels.clear();
        const Symbols& symbols = assembler.Session().symbols;
        for (int i = 1; i <= symbols.Count(); ++i) Labels[symbols.Name(i)] = symbols.Value(i);
        return errors;
    }

    // The value of a label of the last assembly (upper case), or -1.
    int Label(const std::string& name) const {
        const auto it = Labels.find(name);
        return it == Labels.end() ? -1 : it->second;
    }

    // Writes text as folder/name (CR LF as given) and assembles it.
    int AssembleText(const std::string& folder, const std::string& name, const std::string& text) {
        std::ofstream(folder + "/" + name, std::ios::binary) << text;
        return Assemble(folder, name);
    }

    // Loads an .obj or .hex image; false with LoadMessage set when that fails.
    bool Load(const std::string& path) {
        CommandLineImageHost host;
        MemorySettingsStore settings;
        ProgramImages images(*m_, settings, host);
        const bool ok = images.LoadProgram(path);
        LoadMessage = host.LastMessage;
        return ok;
    }

    // Runs from address 0 until HALT or limit instructions; true when it halted.
    // Whatever the program wrote to outPort is in Output afterwards.
    bool Run(int outPort = 1, int limit = 50'000'000) {
        Machine& m = *m_;
        m.StartingAddress = 0;
        m.HaltStopsSimulation = 1;
        m.InfiniteLoopStopsSimulation = 1;
        MemorySettingsStore settings;
        settings.SetSettingText(kSettingRate, "6");
        settings.SetSettingInt(kSettingPromptBeforeIn, 0);
        settings.SetSettingInt(kSettingLogging, 0);
        settings.SetSettingInt(kSettingIoLogging, 0);
        std::ostringstream messages;
        ConsoleHost host(messages);
        SimLog log;
        RunControl rc(m, host, settings, Hooks, log);
        rc.InstructionLimit = limit;
        collector_.Text.clear();
        if (!Hooks.PortTerminal.Device || Hooks.PortTerminal.Device == &collector_)
            Hooks.PortTerminal = {true, outPort, -1, 0, -1, -1, 0, 0, 0, &collector_};
        rc.LoadSettings();
        rc.menustart();
        Output = collector_.Text;
        // The host and the log end with this run.
        Hooks.host = nullptr;
        Hooks.log = nullptr;
        Hooks.UpdateMask(m);
        return !rc.InstructionLimitReached && m.HaltState;
    }

    Machine& M() { return *m_; }
    int Byte(int address) const { return m_->MemoryImage[address & 0xFFFF] & 0xFF; }
    int Word(int address) const { return Byte(address) | Byte(address + 1) << 8; }
    long long Long(int address) const {
        return static_cast<long long>(Word(address)) | static_cast<long long>(Word(address + 2))
                                                           << 16;
    }

    // Memory written between runs: a program run again (Run starts from 0 and
    // keeps memory) finds its data there. Low byte first.
    void SetByte(int address, int value) { m_->MemoryImage[address & 0xFFFF] = value & 0xFF; }
    void SetWord(int address, int value) {
        SetByte(address, value);
        SetByte(address + 1, value >> 8);
    }
    void SetLong(int address, uint32_t value) {
        SetWord(address, static_cast<int>(value & 0xFFFF));
        SetWord(address + 2, static_cast<int>(value >> 16));
    }

    // The devices on the data paths of Run. Unless a test binds a port
    // terminal of its own, Run binds one that collects the output of outPort.
    AccessHooks Hooks;

    std::string Output, AssemblerErrors, LoadMessage;
    std::map<std::string, int> Labels;

  private:
    std::unique_ptr<Machine> m_;
    CollectingTerminal collector_;
};

}  // namespace mb::testing
