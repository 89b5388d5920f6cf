// Runs a CPU-bound program at Ultimate inside the IDE's main window (run loop on
// the Qt event loop, display refreshed by the ultimate timer) and prints
// instructions per second, for comparison with `mbsim --bench`.
// Usage: mbbench_gui program.obj   (QT_QPA_PLATFORM=offscreen works)
#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <cstdio>

#include "shell/main_window.h"
#include "shell/qt_settings_store.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: mbbench_gui program.obj\n");
        return 2;
    }
    QTemporaryDir dir;
    mb::QtSettingsStore settings(dir.filePath("settings.ini"));
    settings.SetSettingText("Simulation Rate", "6");
    mb::MainWindow window(settings);
    window.show();
    if (!window.images().LoadProgram(argv[1])) return 2;
    QElapsedTimer timer;
    timer.start();
    window.runControl().menustart();
    const double seconds = timer.nsecsElapsed() / 1e9;
    const int count = window.machine().InstructionCount;
    std::printf("%d instructions in %.3f s: %.0f instructions per second\n", count, seconds, count / seconds);
    return 0;
}
