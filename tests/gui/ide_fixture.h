// Shared set-up of the window tests: a fresh settings file in an empty folder
// of its own, the main window, its commands by caption, and answers to the
// questions the windows ask.
#pragma once

#include <QAction>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "shell/main_window.h"
#include "shell/qt_settings_store.h"

// Verifies that a text holds a part, or begins with it, and shows the text when not.
#define MB_VERIFY_HAS(text, part) QVERIFY2(AsText(text).contains(part), qPrintable(AsText(text)))
#define MB_VERIFY_STARTS(text, part) \
    QVERIFY2(AsText(text).startsWith(part), qPrintable(AsText(text)))

namespace mb::testing {

class IdeFixture {
  protected:
    static QString AsText(const std::string& s) { return QString::fromStdString(s); }
    static QString AsText(const QString& s) { return s; }
    QTemporaryDir dir;
    std::unique_ptr<QtSettingsStore> settings;
    std::unique_ptr<MainWindow> window;
    std::deque<QString> answers;  // for Answers(), in turn
    QStringList prompts;          // the questions Answers() was asked

    // An empty folder and a settings file of its own, with "Last Path" there.
    void FreshSettings() {
        window.reset();
        QDir(dir.path()).removeRecursively();
        QDir().mkpath(dir.path());
        settings = std::make_unique<QtSettingsStore>(dir.filePath("settings.ini"));
        settings->SetSettingText("Last Path", dir.path().toStdString());
        answers.clear();
        prompts.clear();
    }
    void Open() {
        window = std::make_unique<MainWindow>(*settings);
        window->show();
    }
    QString Path(const char* name) const { return dir.filePath(name); }
    std::string LastMessage() const {
        return window->messages.empty() ? "(no message)" : window->messages.back();
    }

    // A command by its caption, of the main window or of a tool window.
    template <class W>
    static void Trigger(W* w, const char* caption) {
        QAction* a = w->Action(caption);
        QVERIFY2(a, caption);
        a->trigger();
    }
    void Trigger(const char* caption) { Trigger(window.get(), caption); }
    // Runs the loaded program at the Ultimate rate, to its HALT.
    void RunUltimate() {
        Trigger("Ultimate");
        Trigger("Start");
    }
    // Starts at Step By Step and takes `steps` steps.
    void StartStepping(int steps = 0) {
        Trigger("Step By Step");
        Trigger("Start");
        for (int i = 0; i < steps; ++i) Trigger("Step");
    }

    // Loads a file through File > Load Program, answering the file dialog.
    void LoadFile(const std::string& path) {
        window->fileAnswer = [path](bool) { return path; };
        Trigger("Load Program");
        window->fileAnswer = nullptr;
    }
    void LoadExample(const char* name) { LoadFile(std::string(MB_EXAMPLES) + "/" + name); }
    void WriteFile(const char* name, const QByteArray& bytes) {
        QFile file(Path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    // Writes the bytes as an object file in the test folder and loads it.
    void LoadBytes(const QByteArray& bytes, const char* name = "program.obj") {
        WriteFile(name, bytes);
        LoadFile(Path(name).toStdString());
    }

    // A window's question answered from `answers` in turn, Cancel when none
    // is left; each prompt goes to `prompts`.
    auto Answers() {
        return [this](const QString& prompt, const QString&) {
            prompts << prompt;
            if (answers.empty()) return std::optional<QString>();
            const QString answer = answers.front();
            answers.pop_front();
            return std::optional<QString>(answer);
        };
    }
};

}  // namespace mb::testing
