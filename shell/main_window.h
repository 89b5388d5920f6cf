// The main window: the register display, the run commands and the menus. It is
// the host of run control and of the program image commands.
#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "core/access.h"
#include "core/host.h"
#include "core/machine.h"
#include "core/run_control.h"
#include "core/simlog.h"
#include "images/program_image.h"
#include "settings/recent_files.h"
#include "shell/ieee754_window.h"
#include "shell/log_viewer_window.h"
#include "shell/message_window.h"
#include "shell/register_fields.h"
#include "shell/theme.h"

class QAction;
class QActionGroup;
class QBoxLayout;
class QGridLayout;
class QMenu;
class QPushButton;

namespace mb {

class AssemblerWindow;
class DeviceWindows;
class MemoryViews;
class SettingsStore;

class MainWindow : public QMainWindow, public Host, public ImageHost {
    Q_OBJECT
  public:
    explicit MainWindow(SettingsStore& settings, QWidget* parent = nullptr);
    ~MainWindow() override;

    Machine& machine() { return *m_; }
    RunControl& runControl() { return *rc_; }
    ProgramImages& images() { return *images_; }

    // Redraws the register display from the machine.
    void ekran();
    // Edits a register by name ("A", "A'", "FlagZ", "PC", ...) with the rules of
    // the display; false when the text is refused or editing is not allowed now.
    bool EditRegister(const QString& name, const QString& text);
    // Text shown in a field, for tests.
    QString FieldText(const QString& name) const;
    RegisterField* Field(const QString& name) const;
    PathLabel* programField() const { return program_; }
    // The message windows: the Confirmation window and the report box.
    Messages& messageWindows() { return *messages_; }
    // A text that must be read, such as a list of errors: it stays until closed.
    void ShowReport(const std::string& text);
    QAction* Action(const QString& caption) const;
    Ieee754Window* ieee754Window() const { return ieee754_; }
    LogViewerWindow* logViewerWindow() const { return logViewer_; }
    // The colour theme, the main font and their commands.
    Appearance& appearance() { return *appearance_; }
    AssemblerWindow* assemblerWindow() const;
    // The Memory Editors, the I/O Ports Editor and the Video Memory Screen.
    MemoryViews& memoryViews() { return *memoryViews_; }
    // The Peripheral Devices, the two terminals and their windows.
    DeviceWindows& deviceWindows() { return *devices_; }

    // Host
    void Yield() override;
    void Sleep5ms() override;
    void SleepMs(int ms) override;
    double SecondsSinceMidnight() override;
    double MonotonicSeconds() override;
    LocalDateTime Now() override;
    void RefreshViews(int viewBits) override;
    void SetUltimateTimer(int intervalMs) override;
    int AskInValue(const std::string& caption, const std::string& prompt) override;
    bool AskText(const std::string& prompt, const std::string& proposed,
                 std::string& answer) override;
    void ShowMessage(const std::string& text) override;
    void AppendLogViewer(const std::string& line) override {
        if (logViewer_) logViewer_->logadd(line);
    }
    void ClearLogViewer() override {
        if (logViewer_) logViewer_->logclean();
    }
    void ShowFile(const std::string& path) override;

    // ImageHost
    std::string AskOpenFile(const std::string& title, const std::string& folder,
                            int& filterIndex) override;
    std::string AskSaveFile(const std::string& title, const std::string& folder,
                            int& filterIndex) override;
    bool AskYesNo(const std::string& question) override;
    std::optional<std::string> AskText(const std::string& prompt,
                                       const std::string& offered) override;
    bool SimulationRunning() override { return rc_->SimulationRunning; }
    int SimulationRate() override { return m_->SimulationRate; }
    void SelectStepByStep() override { rc_->menuspeed1(); }
    void ProgramLoaded(const std::string& path) override;
    void MemoryCleared() override;
    void RefreshMemoryViews() override;

    // Tests answer the questions of the window through these.
    std::function<int(const std::string&)> inValueAnswer;
    std::function<std::optional<std::string>(const std::string&)> textAnswer;
    std::function<std::string(bool save)> fileAnswer;
    std::vector<std::string> messages;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void ReadStartupSettings();
    void BuildMenus();
    void OpenAssembler();
    QWidget* BuildRegisterDisplay();
    void AddField(QGridLayout* grid, int row, int col, const QString& caption, const QString& name,
                  int digits);
    void UpdateCommands();
    void RebuildRecentMenu();
    // Lays the blocks of the display out by "Arrange Mode"; each arrangement
    // comes back at the size it had.
    void ApplyArrangement();
    void menuregistry();
    void menuregistry2();
    // Creates and deletes a file in the folder; false (after a message) when the
    // user may not write there.
    bool WriteTest(const std::string& folder);
    void OpenRecent(const std::string& path);
    void OnFieldEdit(RegisterField* field);
    void AddOption(QMenu* menu, const QString& caption, const char* key, int def);
    // An option stored as a text: on and off are its two values.
    void AddTextOption(QMenu* menu, const QString& caption, const char* key, const char* def,
                       const char* on = "ON", const char* off = "OFF");
    void ApplyOptions();
    int* RegisterByName(const QString& name);

    SettingsStore& settings_;
    std::unique_ptr<Machine> m_;
    AccessHooks hooks_;
    SimLog log_;
    std::unique_ptr<RunControl> rc_;
    std::unique_ptr<ProgramImages> images_;
    QTimer ultimateTimer_;
    std::map<QString, RegisterField*> fields_;
    QLabel* current_ = nullptr;
    QLabel* next_ = nullptr;
    QLabel* count_ = nullptr;
    QLabel* cycles_ = nullptr;
    PathLabel* program_ = nullptr;
    QPushButton* nmi_ = nullptr;
    QPushButton* int_ = nullptr;
    QPushButton* reset_ = nullptr;
    QActionGroup* rates_ = nullptr;
    // The blocks of the display, in the order of the one-column arrangement.
    std::vector<QWidget*> blocks_;
    int arrangement_ = -1;
    std::map<int, QSize> arrangementSizes_;
    std::map<QString, QAction*> actions_;
    RecentFiles recent_;
    QMenu* fileMenu_ = nullptr;
    QAction* recentEnd_ = nullptr;  // the separator below the recent entries
    std::vector<QAction*> recentActions_;
    bool closing_ = false;
    QPointer<Ieee754Window> ieee754_;
    // Forgotten as it closes, so a reopening makes a new one.
    QPointer<LogViewerWindow> logViewer_;
    std::unique_ptr<Appearance> appearance_;
    QPointer<AssemblerWindow> assembler_;
    // After hooks_ and the machine: it tells the hooks as it goes.
    std::unique_ptr<MemoryViews> memoryViews_;
    std::unique_ptr<Messages> messages_;
    // Last: its windows and devices call the message windows as they go.
    std::unique_ptr<DeviceWindows> devices_;
};

}  // namespace mb
