// Runs one CPU-bound program at Ultimate twice in the same process: first
// headless, through run control on a console host as mbsim does, then inside
// the IDE's main window (run loop on the Qt event loop, display refreshed by
// the ultimate timer). It prints instructions per second of both runs and the
// IDE's share of the headless figure.
//
// Usage: mbbench_gui [--memory-editor] [--cpm] [--unofficial]
//                    [--max-instructions N] [program.obj|program.com]
//        (QT_QPA_PLATFORM=offscreen works)
//
// --cpm runs a CP/M console program (loaded and started at 0100H, BDOS 0, 2
// and 9 served, its output discarded), for instance an instruction exerciser.
// --memory-editor opens Memory Editor 1 with its Optimize option on, so that
// the figure shows what an open editor costs the write path. Without a program
// the built-in one runs: about 51 million instructions, two of every five a
// memory write, alternating between a moving address and a fixed one.
#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <sstream>
#include <string>

#include "core/console_host.h"
#include "core/numtext.h"
#include "core/run_control.h"
#include "devices/console_stage.h"
#include "images/command_line_host.h"
#include "images/program_image.h"
#include "settings/settings_store.h"
#include "shell/main_window.h"
#include "shell/memory_views.h"
#include "shell/qt_settings_store.h"

namespace {

const unsigned char kProgram[] = {
    0x31, 0x00, 0xF0,  // 0000  LD SP,0F000H
    0x11, 0x40, 0x9C,  // 0003  LD DE,40000      (outer rounds)
    0x21, 0x00, 0x80,  // 0006  outer: LD HL,8000H
    0x06, 0x00,        // 0009  LD B,0           (256 inner rounds)
    0x70,              // 000B  inner: LD (HL),B
    0x23,              // 000C  INC HL
    0x32, 0x00, 0x90,  // 000D  LD (9000H),A
    0x80,              // 0010  ADD A,B
    0x10, 0xF8,        // 0011  DJNZ inner
    0x1B,              // 0013  DEC DE
    0x7A,              // 0014  LD A,D
    0xB3,              // 0015  OR E
    0x20, 0xEE,        // 0016  JR NZ,outer
    0x76,              // 0018  HALT
};

struct Options {
    bool editor = false;
    bool cpm = false;
    bool unofficial = false;
    long long maxInstructions = 0;
    std::string program;
};

bool ParseOptions(int argc, char** argv, Options& o) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--memory-editor") {
            o.editor = true;
        } else if (arg == "--cpm") {
            o.cpm = true;
        } else if (arg == "--unofficial") {
            o.unofficial = true;
        } else if (arg == "--max-instructions" && i + 1 < argc) {
            char* end = nullptr;
            o.maxInstructions = std::strtoll(argv[++i], &end, 10);
            if (*end || o.maxInstructions < 1 || o.maxInstructions > 2147483647LL) return false;
        } else if (arg[0] == '-' || !o.program.empty()) {
            return false;
        } else {
            o.program = arg;
        }
    }
    return true;
}

struct Figure {
    long long instructions = 0;
    double seconds = 0;
    double cpuSeconds = 0;
    double PerSecond() const { return seconds > 0 ? instructions / seconds : 0; }
    double PerCpuSecond() const { return cpuSeconds > 0 ? instructions / cpuSeconds : 0; }
};

// Times a Start that runs to its end.
Figure TimeRun(mb::RunControl& rc, mb::Machine& m) {
    const auto wall = std::chrono::steady_clock::now();
    const std::clock_t cpu = std::clock();
    rc.menustart();
    Figure f;
    f.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count();
    // The process's CPU time too: on a shared machine the wall clock counts
    // other people's work against the simulation.
    f.cpuSeconds = static_cast<double>(std::clock() - cpu) / CLOCKS_PER_SEC;
    f.instructions = m.InstructionTotal;
    return f;
}

mb::ConsoleStage::Options StageOptions(const Options& o) {
    return {o.cpm, -1};
}

void Discard(int) {}
void Warn(const std::string& text) {
    std::fprintf(stderr, "mbbench_gui: %s\n", text.c_str());
}

// The program on the console host, as mbsim runs it.
Figure RunHeadless(const Options& o) {
    auto m = std::make_unique<mb::Machine>();
    m->UnofficialEnabled = o.unofficial ? 1 : 0;
    m->ObjOffset = m->StartingAddress = o.cpm ? mb::ConsoleStage::kProgramStart : 0;
    std::ostringstream messages;
    mb::ConsoleHost host(messages);
    mb::MemorySettingsStore settings;
    settings.SetSettingText(mb::kSettingRate, "6");
    settings.SetSettingInt(mb::kSettingPromptBeforeIn, 0);
    mb::CommandLineImageHost loader;
    mb::ProgramImages images(*m, settings, loader);
    if (!images.LoadProgram(o.program)) return {};
    mb::AccessHooks hooks;
    mb::SimLog log;
    mb::RunControl rc(*m, host, settings, hooks, log);
    mb::ConsoleStage stage(*m, StageOptions(o), Discard, Warn);
    if (o.cpm) rc.Debug = &stage;
    rc.InstructionLimit = o.maxInstructions;
    rc.LoadSettings();
    return TimeRun(rc, *m);
}

// The same program in the IDE's main window.
Figure RunInWindow(const Options& o, QTemporaryDir& dir) {
    mb::QtSettingsStore settings(dir.filePath("settings.ini"));
    settings.SetSettingText("Simulation Rate", "6");
    settings.SetSettingInt("Enable Unofficial Instructions", o.unofficial ? 1 : 0);
    const int origin = o.cpm ? mb::ConsoleStage::kProgramStart : 0;
    settings.SetSettingText("Starting Address", mb::pb_hex4(origin));
    settings.SetSettingInt("Offset Address For OBJ Files Loading", origin);
    settings.SetSettingInt("Memory Editor 1 Track R/W Optimization", 1);
    mb::MainWindow window(settings);
    window.show();
    if (!window.images().LoadProgram(o.program)) return {};
    if (o.editor) window.memoryViews().OpenMemoryEditor(1);
    mb::RunControl& rc = window.runControl();
    mb::ConsoleStage stage(window.machine(), StageOptions(o), Discard, Warn);
    if (o.cpm) rc.Debug = &stage;
    rc.InstructionLimit = o.maxInstructions;
    rc.UpdateEndStageMask();
    const Figure f = TimeRun(rc, window.machine());
    rc.Debug = nullptr;
    return f;
}

void Print(const char* where, const Figure& f) {
    std::printf(
        "%-9s %lld instructions in %.3f s: %.0f instructions per second (%.0f per CPU "
        "second)\n",
        where, f.instructions, f.seconds, f.PerSecond(), f.PerCpuSecond());
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    Options o;
    if (!ParseOptions(argc, argv, o)) {
        std::fprintf(stderr,
                     "usage: mbbench_gui [--memory-editor] [--cpm] [--unofficial] "
                     "[--max-instructions N] [program.obj|program.com]\n");
        return 2;
    }
    QTemporaryDir dir;
    if (o.program.empty()) {
        QFile file(dir.filePath("bench.obj"));
        if (!file.open(QIODevice::WriteOnly)) return 2;
        file.write(reinterpret_cast<const char*>(kProgram), sizeof kProgram);
        file.close();
        o.program = file.fileName().toStdString();
    }
    const Figure headless = RunHeadless(o);
    const Figure ide = RunInWindow(o, dir);
    if (headless.instructions == 0 || ide.instructions == 0) {
        std::fprintf(stderr, "mbbench_gui: cannot load %s\n", o.program.c_str());
        return 2;
    }
    Print("headless", headless);
    Print("IDE", ide);
    std::printf("IDE at %.0f%% of headless (CPU time %.0f%%)%s\n",
                100.0 * ide.PerSecond() / headless.PerSecond(),
                100.0 * ide.PerCpuSecond() / headless.PerCpuSecond(),
                o.editor ? ", Memory Editor 1 open with Optimize on" : "");
    return 0;
}
