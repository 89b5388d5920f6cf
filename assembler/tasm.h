// Assemble With TASM: runs the outside assembler on a saved source as a child
// process and reads back its listing and object file from the source's folder.
#pragma once

#include <string>

namespace mb {

// The longest source path (in bytes) that is handed to the tool.
inline constexpr size_t kTasmPathLimit = 255;
inline constexpr int kTasmWaitStepMs = 100;

struct TasmRequest {
    std::string SourcePath;          // the saved source, with its folder
    std::string SourceText;          // the editor's text, searched for protected lines
    std::string ToolPath;            // "TASM Path"
    std::string Options = "-80 -b";  // "TASM Command Line Options"
    int TimeoutSteps = 100;          // "TASM time-out (unit 100ms)"
};

struct TasmOutcome {
    bool Ran = false;        // the tool was started
    bool Succeeded = false;  // it ran, left both files and counted no error
    int ErrorCount = 0;      // the number behind the last "=" of the listing
    std::string ListingPath, ObjectPath;
    std::string ListingText;  // read when both files were there, kept after a failure
    // The box to show, lines separated by "\n"; empty after a clean run.
    std::string Message;
};

// What the window lends to a run. The process methods have working POSIX
// versions; tests may replace them.
class TasmHooks {
  public:
    virtual ~TasmHooks() = default;
    // The status frame: shown with ("TASM", "is running...") before the start,
    // hidden when the tool has ended.
    virtual void ShowStatus(const std::string& /*first*/, const std::string& /*second*/) {}
    virtual void HideStatus() {}
    // Once per wait step of 100 ms: the window keeps its interface alive here.
    virtual void WaitStep() {}

    // Runs commandLine by /bin/sh -c in folder, in a process group of its own,
    // with no input and its output discarded; returns the process id or -1.
    virtual int StartProcess(const std::string& commandLine, const std::string& folder);
    // Waits up to milliseconds; true once the process has ended (and is reaped).
    virtual bool WaitProcess(int pid, int milliseconds);
    // Ends the process and everything it started, and reaps it.
    virtual void KillProcess(int pid);
};

// "\"<tool>\" <options> \"<source>\"". Within the quotes the characters the shell
// would still read there (\ " $ `) are escaped.
std::string TasmCommandLine(const std::string& toolPath, const std::string& options,
                            const std::string& sourcePath);

// Checks the request, deletes the old .lst and .obj beside the source, runs the
// tool, waits up to the time-out and reads the result. Outputs of a failed run
// are deleted.
TasmOutcome AssembleWithTasm(const TasmRequest& request, TasmHooks& hooks);

}  // namespace mb
