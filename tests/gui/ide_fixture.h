// Shared set-up of the window tests: a fresh settings file in a folder of its
// own, the main window, and its commands by caption.
#pragma once

#include <QAction>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>
#include <string>

#include "shell/main_window.h"
#include "shell/qt_settings_store.h"

namespace mb::testing {

class IdeFixture {
  protected:
    QTemporaryDir dir;
    std::unique_ptr<QtSettingsStore> settings;
    std::unique_ptr<MainWindow> window;

    // A settings file of its own, with "Last Path" in the test folder.
    void FreshSettings() {
        window.reset();
        QFile::remove(dir.filePath("settings.ini"));
        settings = std::make_unique<QtSettingsStore>(dir.filePath("settings.ini"));
        settings->SetSettingText("Last Path", dir.path().toStdString());
    }
    void Open() {
        window = std::make_unique<MainWindow>(*settings);
        window->show();
    }
    void Trigger(const char* caption) {
        QAction* a = window->Action(caption);
        QVERIFY2(a, caption);
        a->trigger();
    }
    // Loads a file through File > Load Program, answering the file dialog.
    void LoadFile(const std::string& path) {
        window->fileAnswer = [path](bool) { return path; };
        Trigger("Load Program");
        window->fileAnswer = nullptr;
    }
    void LoadExample(const char* name) { LoadFile(std::string(MB_EXAMPLES) + "/" + name); }
    // Writes the bytes as an object file in the test folder and loads it.
    void LoadBytes(const QByteArray& bytes, const char* name = "program.obj") {
        QFile file(dir.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        LoadFile(dir.filePath(name).toStdString());
    }
};

}  // namespace mb::testing
