// The window of an Input/Output Terminal, memory-mapped or on ports: the
// screen, the registers with their change commands, the input queue with its
// Send commands and the key panel. While it is open the terminal is on the
// data paths; closing it takes the terminal off.
#pragma once

#include <QDialog>
#include <QStringList>
#include <QTimer>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "devices/terminal.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace mb {

class SettingsStore;

class TerminalWindow : public QDialog {
    Q_OBJECT
  public:
    // How often the "Last received char hex code" field counts its ticks.
    static constexpr int kReceivedTickMs = 150;

    TerminalWindow(Terminal& terminal, SettingsStore& settings, QWidget* parent);

    // The commands of the controls.
    // Asks for the data register, or for the status register, its bit and
    // (output side) the busy time; each accepted answer is stored at once, a
    // refusal or Cancel ends the questions.
    void ChangeRegister(bool output, bool status);
    void SendToQueue(QueueKind kind);
    void PasteClipboard();
    void PressKey(const QString& caption);
    void ClearQueue();
    void ClearScreen();
    void ChangeColorScheme();
    void ShowInfo();
    void SetSmallLetters(bool small);

    // The controls, for tests.
    QPlainTextEdit* screen() const { return screen_; }
    QLabel* queueLabel() const { return queue_; }
    QGroupBox* receivedFrame() const { return receivedFrame_; }
    QLabel* receivedField() const { return received_; }
    QLabel* dataLabel(bool output) const { return output ? outData_ : inData_; }
    QLabel* statusLabel(bool output) const { return output ? outStatus_ : inStatus_; }
    QLabel* busyLabel() const { return busy_; }
    // The key of the panel whose caption stands for `value`.
    QPushButton* key(int value) const;

    // Tests answer the questions through these; nullopt is Cancel.
    std::function<std::optional<QString>(const QString& prompt, const QString& offered)> ask;
    std::function<std::optional<int>(const QStringList& schemes, int current)> choose;
    // A refusal or notice; the Info text.
    std::function<void(const std::string&)> message;
    std::function<void(const std::string&)> report;
    std::function<void()> closed;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    QWidget* BuildRegisters(bool output);
    QWidget* BuildInput();
    QWidget* BuildKeys();
    // The terminal says what changed (bits of Terminal::Change): the window
    // redraws it once the run loop next yields, however many bytes came
    // before. The commands of the window redraw at once.
    void Changed(int changes);
    void Flush();
    void RedrawScreen();
    void RedrawRegisters();
    void ApplyScheme();
    void RelabelLetters(bool small);
    // Asks for one register; false when the questions end here.
    bool AskRegister(TerminalRegister r);
    std::optional<QString> Ask(const QString& prompt, const QString& offered);
    void Show(const std::string& text) {
        if (!text.empty() && message) message(text);
    }

    Terminal& terminal_;
    SettingsStore& settings_;
    int windowNumber_;
    QPlainTextEdit* screen_ = nullptr;
    QLabel* queue_ = nullptr;
    QGroupBox* receivedFrame_ = nullptr;
    QLabel* received_ = nullptr;
    QLabel* outData_ = nullptr;
    QLabel* outStatus_ = nullptr;
    QLabel* busy_ = nullptr;
    QLabel* inData_ = nullptr;
    QLabel* inStatus_ = nullptr;
    QCheckBox* small_ = nullptr;
    std::map<int, QPushButton*> keys_;
    QTimer receivedTimer_;
    size_t screenShown_ = 0;  // bytes of the output on view
    int screenGeneration_ = -1;
    int pending_ = 0;  // changes not yet redrawn
};

}  // namespace mb
