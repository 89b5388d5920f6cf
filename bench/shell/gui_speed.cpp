// Runs a CPU-bound program at Ultimate inside the IDE's main window (run loop on
// the Qt event loop, display refreshed by the ultimate timer) and prints
// instructions per second, for comparison with `mbsim --bench`.
//
// Usage: mbbench_gui [--memory-editor] [program.obj]   (QT_QPA_PLATFORM=offscreen works)
//
// --memory-editor opens Memory Editor 1 with its Optimize option on, so that the
// figure shows what an open editor costs the write path. Without a program the
// built-in one runs: about 51 million instructions, two of every five a memory
// write, alternating between a moving address and a fixed one.
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

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

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    bool editor = false;
    std::string program;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--memory-editor") == 0) {
            editor = true;
        } else if (argv[i][0] == '-' || !program.empty()) {
            std::fprintf(stderr, "usage: mbbench_gui [--memory-editor] [program.obj]\n");
            return 2;
        } else {
            program = argv[i];
        }
    }
    QTemporaryDir dir;
    if (program.empty()) {
        QFile file(dir.filePath("bench.obj"));
        if (!file.open(QIODevice::WriteOnly)) return 2;
        file.write(reinterpret_cast<const char*>(kProgram), sizeof kProgram);
        file.close();
        program = file.fileName().toStdString();
    }
    mb::QtSettingsStore settings(dir.filePath("settings.ini"));
    settings.SetSettingText("Simulation Rate", "6");
    settings.SetSettingInt("Memory Editor 1 Track R/W Optimization", 1);
    mb::MainWindow window(settings);
    window.show();
    if (!window.images().LoadProgram(program)) return 2;
    if (editor) window.memoryViews().OpenMemoryEditor(1);
    QElapsedTimer timer;
    timer.start();
    const std::clock_t cpuStart = std::clock();
    window.runControl().menustart();
    const double seconds = timer.nsecsElapsed() / 1e9;
    // The process's CPU time too: on a shared machine the wall clock counts
    // other people's work against the simulation.
    const double cpu = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
    const int count = window.machine().InstructionCount;
    std::printf("%d instructions in %.3f s: %.0f instructions per second (%.0f per CPU second)%s\n",
                count, seconds, count / seconds, count / cpu,
                editor ? ", Memory Editor 1 open with Optimize on" : "");
    return 0;
}
