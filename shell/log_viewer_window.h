// The Simulation Log Viewer: the lines that the run loop composes for log.txt,
// shown live under the heading of the log, and log files opened from disk.
//
// A run at a fast rate adds a line per instruction: added lines wait in a batch
// that goes into the view a few dozen times a second, the view keeps only the
// newest kMaxRecords records, and it lays out and colours only the rows on
// show.
#pragma once

#include <QMainWindow>
#include <QStringList>
#include <QTimer>
#include <functional>
#include <map>
#include <string>
#include <vector>

class QAbstractScrollArea;
class QAction;
class QLabel;

namespace mb {

class LogView;
class SettingsStore;

// A coloured part of a record.
struct LogSpan {
    enum Kind { Count, Address, Instruction, Changed };
    int start = 0, length = 0;
    Kind kind = Count;
    bool operator==(const LogSpan&) const = default;
};
// The colouring of one line: the count, the address and the instruction of a
// record, and the registers and flags that differ from the record before it
// (`previous`, null for none). Lines that are not records have no colours.
std::vector<LogSpan> LogLineSpans(const QString& line, const QString* previous);

class LogViewerWindow : public QMainWindow {
    Q_OBJECT
  public:
    // Its number in the table of window places.
    static constexpr int kWindowNumber = 26;
    // The most records the view holds; older ones give way.
    static constexpr int kMaxRecords = 100000;

    LogViewerWindow(SettingsStore& settings, QWidget* parent);
    ~LogViewerWindow() override;

    // The run loop: one composed line; Start empties the view.
    void logadd(const std::string& line);
    void logclean();

    // The menu commands.
    void menuopenlog();
    void menusavelog();
    void menucloselog();

    // The records shown (pending ones included) and the heading above them.
    QStringList Lines();
    static QString Heading();
    // The file that "&Open Log File" shows, or empty.
    const QString& OpenedFile() const { return openedFile_; }
    QAbstractScrollArea* view() const;
    // The colours of a shown record as drawn (none with "No Colors").
    std::vector<LogSpan> Spans(int row);
    QAction* Action(const QString& caption) const;

    // What the window needs from around it.
    std::function<void(const std::string&)> message;
    std::function<bool()> simulationRunning;
    // The window closes.
    std::function<void()> closed;
    // Tests answer the file dialogs through this; an empty text is Cancel.
    std::function<QString(bool save)> fileAnswer;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void Flush();
    void UpdateStatus();
    void Message(const std::string& text);
    QString AskFile(bool save);
    QAction* AddOption(const QString& caption, const char* key, int def);

    SettingsStore& settings_;
    LogView* view_ = nullptr;
    QLabel* status_ = nullptr;
    QStringList pending_;
    QTimer flushTimer_;
    bool keepLastInFocus_ = true;
    bool dropped_ = false;  // older records gave way since the last clearing
    QString openedFile_;
    std::map<QString, QAction*> actions_;
};

}  // namespace mb
