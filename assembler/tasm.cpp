#include "tasm.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "assembler/assembler.h"
#include "assembler/source_text.h"

namespace mb {

namespace fs = std::filesystem;

namespace {

// Within double quotes the shell still reads these four.
std::string DoubleQuoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '\\' || c == '"' || c == '$' || c == '`') out.push_back('\\');
        out.push_back(c);
    }
    return out + "\"";
}

std::string ReadWholeFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The number behind the last "=", 0 when there is none.
int ListingErrorCount(const std::string& listing) {
    const size_t equals = listing.rfind('=');
    if (equals == std::string::npos) return 0;
    const long count = std::strtol(listing.c_str() + equals + 1, nullptr, 10);
    return static_cast<int>(std::clamp<long>(count, INT_MIN, INT_MAX));
}

void RemoveFiles(const std::string& a, const std::string& b) {
    std::error_code ec;
    fs::remove(a, ec);
    fs::remove(b, ec);
}

}  // namespace

int TasmHooks::StartProcess(const std::string& commandLine, const std::string& folder) {
    // Everything the child needs is made before the fork: between fork and exec
    // only async-signal-safe calls may run.
    const char* argv[] = {"/bin/sh", "-c", commandLine.c_str(), nullptr};
    const char* directory = folder.c_str();
    const pid_t pid = fork();
    if (pid < 0) return -1;
    if (pid == 0) {
        setpgid(0, 0);
        if (chdir(directory) != 0) _exit(127);
        const int null = open("/dev/null", O_RDWR);
        if (null >= 0) {
            dup2(null, STDIN_FILENO);
            dup2(null, STDOUT_FILENO);
            dup2(null, STDERR_FILENO);
            if (null > STDERR_FILENO) close(null);
        }
        execv("/bin/sh", const_cast<char* const*>(argv));
        _exit(127);
    }
    // Also from this side, so that a kill right after the start reaches the group.
    setpgid(pid, pid);
    return pid;
}

bool TasmHooks::WaitProcess(int pid, int milliseconds) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (true) {
        int status = 0;
        const pid_t r = waitpid(pid, &status, WNOHANG);
        // ECHILD: someone else reaped it, so it has ended all the same.
        if (r == pid || (r < 0 && errno != EINTR)) return true;
        if (std::chrono::steady_clock::now() >= until) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void TasmHooks::KillProcess(int pid) {
    if (pid <= 0) return;
    kill(-pid, SIGKILL);
    kill(pid, SIGKILL);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
}

std::string TasmCommandLine(const std::string& toolPath, const std::string& options,
                            const std::string& sourcePath) {
    return DoubleQuoted(toolPath) + " " + options + " " + DoubleQuoted(sourcePath);
}

TasmOutcome AssembleWithTasm(const TasmRequest& request, TasmHooks& hooks) {
    TasmOutcome outcome;
    const fs::path source(request.SourcePath);
    const std::string name = source.filename().string();

    if (request.SourceText.find(kProtectedPrefix) != std::string::npos) {
        outcome.Message =
            "A part of the assembler source is crypted by the integrated basic compiler.\n"
            "This assembler source can be assembled by the integrated assembler only.";
        return outcome;
    }
    if (std::count(name.begin(), name.end(), '.') > 1) {
        outcome.Message =
            "Your file name contains '.' symbol.\n"
            "Due to TASM limitations this needs to be changed.";
        return outcome;
    }
    if (request.SourcePath.size() > kTasmPathLimit) {
        outcome.Message =
            "The assembler source file needs to be saved to a shorter path.\n"
            "The full path of the file to be assembled:\n" +
            request.SourcePath + "\nThat is TASM limitation.";
        return outcome;
    }
    std::error_code ec;
    if (!fs::is_regular_file(request.ToolPath, ec)) {
        outcome.Message = "The file does not exist.\n" + request.ToolPath;
        return outcome;
    }

    const size_t dot = name.rfind('.');
    const std::string stem =
        dot == std::string::npos
            ? request.SourcePath
            : request.SourcePath.substr(0, request.SourcePath.size() - (name.size() - dot));
    outcome.ListingPath = stem + ".lst";
    outcome.ObjectPath = stem + ".obj";
    RemoveFiles(outcome.ListingPath, outcome.ObjectPath);

    std::string folder = source.parent_path().string();
    if (folder.empty()) folder = ".";
    hooks.ShowStatus("TASM", "is running...");
    const int pid = hooks.StartProcess(
        TasmCommandLine(request.ToolPath, request.Options, request.SourcePath), folder);
    if (pid < 0) {
        hooks.HideStatus();
        outcome.Message = "Error: TASM could not be started.";
        return outcome;
    }
    outcome.Ran = true;
    bool ended = false;
    for (int step = 0; step < std::max(1, request.TimeoutSteps) && !ended; ++step) {
        ended = hooks.WaitProcess(pid, kTasmWaitStepMs);
        if (!ended) hooks.WaitStep();
    }
    if (!ended) hooks.KillProcess(pid);
    hooks.HideStatus();
    if (!ended) {
        // Whatever the tool wrote before it was stopped is not a result.
        RemoveFiles(outcome.ListingPath, outcome.ObjectPath);
        outcome.Message = "Error: Time-out while waiting TASM to complete the process.";
        return outcome;
    }

    if (!fs::is_regular_file(outcome.ListingPath, ec) ||
        !fs::is_regular_file(outcome.ObjectPath, ec)) {
        // A half result is not loaded either.
        RemoveFiles(outcome.ListingPath, outcome.ObjectPath);
        outcome.Message = "TASM failed to generate the expected files:\n" + outcome.ObjectPath +
                          " and " + outcome.ListingPath + "\nAssembly was not successful.";
        return outcome;
    }
    outcome.ListingText = ReadWholeFile(outcome.ListingPath);
    outcome.ErrorCount = ListingErrorCount(outcome.ListingText);
    if (outcome.ErrorCount > 0) {
        RemoveFiles(outcome.ListingPath, outcome.ObjectPath);
        outcome.Message = AssemblyFailureText(outcome.ErrorCount);
        return outcome;
    }
    outcome.Succeeded = true;
    return outcome;
}

}  // namespace mb
