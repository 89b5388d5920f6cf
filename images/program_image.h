// Program images in and out of memory: the object and Intel HEX readers, the
// load, reload, save and clear commands. Questions, file names and messages go
// through an ImageHost, so everything here runs headless.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/machine.h"

namespace mb {

class SettingsStore;

// What the image commands need from the user interface and the rest of the system.
class ImageHost {
  public:
    virtual ~ImageHost() = default;
    virtual void ShowMessage(const std::string& text) = 0;
    // File dialogs under the command's title: the chosen path, or "" when nothing
    // was chosen. filterIndex is 1 for object files, 2 for HEX files, in and out.
    virtual std::string AskOpenFile(const std::string& title, const std::string& folder,
                                    int& filterIndex) = 0;
    virtual std::string AskSaveFile(const std::string& title, const std::string& folder,
                                    int& filterIndex) = 0;
    virtual bool AskYesNo(const std::string& question) = 0;
    // A text answer, or nullopt when cancelled.
    virtual std::optional<std::string> AskText(const std::string& prompt,
                                               const std::string& offered) = 0;
    virtual void Yield() {}
    virtual bool SimulationRunning() { return false; }
    virtual int SimulationRate() { return kRateStepByStep; }
    // Selects rate Step By Step (the break action).
    virtual void SelectStepByStep() {}
    // The memory views redraw (Memory Editors, Video Memory Screen).
    virtual void RefreshMemoryViews() {}
    // A main program was loaded: read its source map and auto-start entries,
    // update the recent-file list.
    virtual void ProgramLoaded(const std::string& /*path*/) {}
    // Memory was cleared: breakpoints and the source map go too.
    virtual void MemoryCleared() {}
};

// Cells filled by ReadIntelHex before anything reaches memory.
struct HexBuffer {
    std::vector<int> cells = std::vector<int>(65536, 0);
    int lowestAddress = 65535;
};

// Reads an Intel HEX file into buffer. Returns the highest address written plus
// one, or 0 after showing the failure (or "contains no data.") through host.
int ReadIntelHex(const std::string& path, HexBuffer& buffer, ImageHost& host);

// Removes every CR and ends every line with CR LF. When that changes the file, the
// original is kept as name + "_lf_orig" + extension first.
void NormaliseLineEnds(const std::string& path);

// True when the name's last four characters, in lower case, are ".hex".
bool IsHexFileName(const std::string& path);

// "Operation completed.\nTotal N (KK) bytes loaded." and its "saved." twin.
std::string CompletionText(int bytes, const std::string& verb);

// The loaded program and the commands on it.
class ProgramImages {
  public:
    ProgramImages(Machine& machine, SettingsStore& settings, ImageHost& host)
        : m_(machine), settings_(settings), host_(host) {}

    // Loads a main program file (object at ObjOffset, or HEX). False when refused.
    bool LoadProgram(const std::string& path);
    // ClearMemory, then LoadProgram: the machine starts afresh with the program,
    // as Load Program, Reload, the recent files and Assemble & Load give it.
    bool LoadMainProgram(const std::string& path);
    void ClearMemory();
    void menuload();
    void menuload2();
    void menureload();
    void menusave();

    int LoadedSize() const { return loadedSize_; }
    const std::string& ProgramFileName() const { return programFileName_; }

  private:
    bool RefuseWhileRunning();
    std::optional<int> AskOffset(const std::string& prompt);

    Machine& m_;
    SettingsStore& settings_;
    ImageHost& host_;
    int loadedSize_ = 0;
    std::string programFileName_;
};

}  // namespace mb
