// The Assembler window: the source editor, the read-only listing, and the
// commands that assemble (here or with TASM), load, reformat the text and set
// the assembler's options.
#pragma once

#include <QMainWindow>
#include <QTimer>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "assembler/editor_marks.h"

class QAction;
class QLabel;
class QsciScintilla;

namespace mb {

class AsmLexer;
struct AssemblySession;
class FormatOptionsDialog;
class SettingsStore;

// What the window needs from the rest of the IDE.
struct AssemblerWindowHooks {
    std::function<void(const std::string&)> message;  // the one message routine
    // The same routine for a text that must be read (a list of errors): its box
    // stays until the user closes it.
    std::function<void(const std::string&)> report;
    std::function<bool()> simulationRunning;
    std::function<void()> stopSimulation;
    std::function<bool(const std::string& path)> loadProgram;
};

class AssemblerWindow : public QMainWindow {
    Q_OBJECT
  public:
    AssemblerWindow(SettingsStore& settings, AssemblerWindowHooks hooks, QWidget* parent);
    ~AssemblerWindow() override;

    // File commands. Open and New first ask about unsaved changes.
    void menunew();
    bool OpenFile(const QString& path);
    void menuopen();
    bool menusave();
    bool menusaveas();

    // Assembles the editor's text; the error count, or -1 when it did not run.
    int menuassemble();
    void menuassembleload();
    // Runs the outside assembler; the error count, or -1 when it did not finish.
    int menutasm();
    void menutasmload();
    void menuformat();

    QString FilePath() const { return path_; }
    QString SourceText() const;
    void SetSourceText(const QString& text);
    QString ListingText() const;
    EditorMarks Marks() const;
    // Lines (from 1) that carry the error background after an assembly.
    std::vector<int> ErrorLines() const;
    void SetMarks(const EditorMarks& marks);
    QAction* Action(const QString& caption) const;
    QsciScintilla* sourceEditor() const { return source_; }
    // Re-reads the editor settings ("EA " rows) and applies them.
    void ApplyEditorSettings();

    // Tests answer the window's questions through these.
    std::function<std::optional<std::string>(const std::string& prompt, const std::string& offered)>
        textAnswer;
    std::function<std::string(bool save)> fileAnswer;
    // Fills the Format Code Options dialog instead of the user; the options are
    // then stored.
    std::function<void(FormatOptionsDialog&)> formatOptionsAnswer;
    // 1 Yes, 0 No, -1 Cancel.
    std::function<int(const std::string& question)> questionAnswer;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void BuildMenus();
    QAction* AddCommand(QMenu* menu, const QString& caption, std::function<void()> slot);
    QAction* AddToggle(QMenu* menu, const QString& caption, std::function<bool()> get,
                       std::function<void(bool)> set);
    void UpdateTitle();
    // Asks about unsaved changes; false when the user cancels.
    bool MaySetSourceAside();
    bool WriteSource(const QString& path);
    void LoadListing(const QString& path);
    void ShowListing(const QString& text);
    // Checks the editor is not empty, names an untitled source and saves it.
    bool PrepareSource();
    void LoadProgramAfter(int errors);
    // With "Assemble and Load Stops Simulation" a running simulation is stopped
    // first, and `then` runs once the run has ended.
    void AfterStoppingSimulation(std::function<void()> then);
    void WhenStopped(std::function<void()> then);
    void MarkErrorLines(const AssemblySession& session);
    void ToggleMarker(int marker, int line);
    void JumpToBookmark(bool forward);
    void menuobjcopy();
    void menuobjfill();
    void menuoffset();
    void menutasmpath();
    void menutasmoptions();
    void menuformatoptions();
    void ScheduleAutoSave();

    std::optional<std::string> AskText(const std::string& prompt, const std::string& offered);
    std::string AskFile(bool save);
    int AskQuestion(const std::string& question, bool withCancel);
    void Message(const std::string& text) { hooks_.message(text); }
    void Report(const std::string& text) { hooks_.report(text); }
    void Status(const QString& text);

    SettingsStore& settings_;
    AssemblerWindowHooks hooks_;
    QsciScintilla* source_ = nullptr;
    QsciScintilla* listing_ = nullptr;
    AsmLexer* lexer_ = nullptr;
    QLabel* status_ = nullptr;
    QString path_;
    std::map<QString, QAction*> actions_;
    QTimer autoSave_;
};

}  // namespace mb
