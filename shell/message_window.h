// The messages of the system, all through one routine (Messages::Show).
//
// A notice goes to the Confirmation window: a note, not a question. It has no
// button, goes by itself after "Messages Duration" seconds (a thin bar along its
// foot shows the time left), stays while the pointer rests on it, and goes at
// once when clicked. "Messages Mode" sets where it stands: 0 over the main
// window, 1 in the corner of the screen. With "Show Confirmations" at "ON" a
// notice is a message box that waits for OK instead.
//
// A report is a text that must be read, such as the assembler's list of errors:
// it stays in its box until the user closes it, and a new report replaces the
// text of the open box.
//
// A notice that arrives while another is shown is dropped, as long as the user
// has given no command since the first one appeared; after a command of the
// user, the new notice takes the old one's place. So one command shows one
// notice, and a command's answer is never lost behind an earlier one.
#pragma once

#include <QElapsedTimer>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWidget>

class QLabel;

namespace mb {

class SettingsStore;

enum class MessageKind { Notice, Report };

// The Confirmation window.
class InfoFrame : public QWidget {
    Q_OBJECT
  public:
    InfoFrame(const QString& text, int durationMs, QWidget* owner);
    QString Text() const;
    // Milliseconds left before the window goes; the clock stands still while
    // the pointer is over the window.
    int RemainingMs() const { return std::max(0, durationMs_ - shownMs_); }
    // Advances the clock by the time since the last tick (the timer calls it).
    void Tick();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    QLabel* text_;
    QTimer timer_;
    QElapsedTimer sinceTick_;
    int durationMs_;
    int shownMs_ = 0;
};

class Messages : public QObject {
    Q_OBJECT
  public:
    // owner: the main window; the message windows belong to it.
    Messages(SettingsStore& settings, QWidget& owner);
    ~Messages() override;

    void Show(const QString& text, MessageKind kind = MessageKind::Notice);

    // The notice shown now (an InfoFrame or, with "Show Confirmations" on, the
    // message box), or null; the open report box, or null.
    QWidget* notice() const { return notice_; }
    QMessageBox* report() const { return report_; }

  protected:
    // Counts the user's key presses and clicks outside the message windows.
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void ShowNotice(const QString& text);
    void ShowReport(const QString& text);
    void Place(QWidget& window);

    SettingsStore& settings_;
    QWidget& owner_;
    QPointer<QWidget> notice_;
    QPointer<QMessageBox> report_;
    bool boxShowing_ = false;  // the modal box of "Show Confirmations" is up
    unsigned userCommands_ = 0;
    unsigned commandsAtNotice_ = 0;
};

}  // namespace mb
