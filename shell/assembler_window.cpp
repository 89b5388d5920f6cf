#include "assembler_window.h"

#include <Qsci/qsciscintilla.h>

#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QInputDialog>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QSaveFile>
#include <QSplitter>
#include <QStatusBar>
#include <QThread>

#include "asm_lexer.h"
#include "assembler/assembler.h"
#include "assembler/format_code.h"
#include "assembler/tasm.h"
#include "core/numtext.h"
#include "entry_dialogs.h"
#include "format_options_dialog.h"
#include "settings/editor_settings.h"
#include "settings/settings_store.h"
#include "theme.h"
#include "window_place.h"

namespace mb {

namespace {

constexpr int kWindowNumber = 17;
constexpr int kBookmarkMarker = 0;
constexpr int kBreakpointMarker = 1;
constexpr int kErrorMarker = 2;  // line background of a line with an error
constexpr const char* kUntitled = "UNTITLED";
constexpr const char* kLastFile = "Assembler Last File";
constexpr const char* kAutoLoadLst = "Auto Load LST File";
constexpr const char* kAutoSave = "Assembler Auto Save";
constexpr const char* kStopsSimulation = "Assemble and Load Stops Simulation";
constexpr int kStopPollMs = 10;
constexpr const char* kHexAlso = "Generate HEX File Also";

std::string Std(const QString& text) {
    return text.toStdString();
}

// Base name of the outputs: the source name without ".asm", as the assembler
// names them.
QString OutputStem(const QString& path) {
    return path.endsWith(".asm", Qt::CaseInsensitive) ? path.left(path.size() - 4) : path;
}

// Progress of an assembly in the status line; the interface stays drawn but
// takes no input meanwhile.
class WindowAssemblerHost : public AssemblerHost {
  public:
    WindowAssemblerHost(std::function<void(const QString&)> status,
                        std::function<void(const std::string&)> message)
        : status_(std::move(status)), message_(std::move(message)) {}
    void Status(const std::string& first, const std::string& second) override {
        status_(QString::fromStdString(second.empty() ? first : first + " " + second));
    }
    void Pause(int milliseconds) override {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents, milliseconds);
    }
    void Yield() override { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }
    void ShowEvaluationError(const std::string& text) override { message_(text); }

  private:
    std::function<void(const QString&)> status_;
    std::function<void(const std::string&)> message_;
};

// The outside assembler's run: the status line shows it, and the interface
// stays drawn while the window waits.
class WindowTasmHooks : public TasmHooks {
  public:
    explicit WindowTasmHooks(std::function<void(const QString&)> status)
        : status_(std::move(status)) {}
    void ShowStatus(const std::string& first, const std::string& second) override {
        status_(QString::fromStdString(first + " " + second));
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
    void HideStatus() override { status_(QString()); }
    void WaitStep() override {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }

  private:
    std::function<void(const QString&)> status_;
};

}  // namespace

AssemblerWindow::AssemblerWindow(SettingsStore& settings, AssemblerWindowHooks hooks,
                                 QWidget* parent)
    : QMainWindow(parent, Qt::Window), settings_(settings), hooks_(std::move(hooks)) {
    source_ = new QsciScintilla(this);
    listing_ = new QsciScintilla(this);
    lexer_ = new AsmLexer(source_);
    source_->setLexer(lexer_);
    source_->setUtf8(true);
    source_->setMarginType(1, QsciScintilla::SymbolMargin);
    source_->setMarginWidth(1, 16);
    source_->setMarginSensitivity(1, true);
    source_->setMarginMarkerMask(1, (1 << kBookmarkMarker) | (1 << kBreakpointMarker));
    source_->markerDefine(QsciScintilla::Circle, kBookmarkMarker);
    source_->markerDefine(QsciScintilla::RightArrow, kBreakpointMarker);
    source_->markerDefine(QsciScintilla::Background, kErrorMarker);
    source_->setCaretLineVisible(true);
    source_->setAutoIndent(true);
    source_->setTabWidth(8);
    listing_->setReadOnly(true);
    listing_->setUtf8(true);

    auto* split = new QSplitter(Qt::Vertical, this);
    split->addWidget(source_);
    split->addWidget(listing_);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 1);
    setCentralWidget(split);
    status_ = new QLabel(this);
    statusBar()->addWidget(status_, 1);

    connect(source_, &QsciScintilla::marginClicked, this,
            [this](int, int line, Qt::KeyboardModifiers state) {
                ToggleMarker(state & Qt::ControlModifier ? kBookmarkMarker : kBreakpointMarker,
                             line);
            });
    connect(source_, &QsciScintilla::modificationChanged, this, [this] { UpdateTitle(); });
    connect(source_, &QsciScintilla::textChanged, this, [this] {
        source_->markerDeleteAll(kErrorMarker);
        ScheduleAutoSave();
    });
    autoSave_.setSingleShot(true);
    autoSave_.setInterval(3000);
    connect(&autoSave_, &QTimer::timeout, this, [this] {
        if (source_->isModified() && !path_.endsWith(kUntitled)) WriteSource(path_);
    });

    BuildMenus();
    ApplyEditorSettings();
    resize(760, 640);
    RestoreWindowPlace(*this, settings_, kWindowNumber);

    const QString last = QString::fromStdString(settings_.GetSettingText(kLastFile, ""));
    if (last.isEmpty() || !QFileInfo::exists(last) || !OpenFile(last)) {
        path_ = QString::fromStdString(settings_.GetSettingText("Last Path", "")) + "/" + kUntitled;
        UpdateTitle();
    }
}

AssemblerWindow::~AssemblerWindow() = default;

QAction* AssemblerWindow::AddCommand(QMenu* menu, const QString& caption,
                                     std::function<void()> slot) {
    QAction* a = menu->addAction(caption);
    connect(a, &QAction::triggered, this, [slot] { slot(); });
    actions_[QString(caption).remove('&')] = a;
    return a;
}

QAction* AssemblerWindow::AddToggle(QMenu* menu, const QString& caption, std::function<bool()> get,
                                    std::function<void(bool)> set) {
    QAction* a = menu->addAction(caption);
    a->setCheckable(true);
    a->setChecked(get());
    // The tick shows what was stored: a prompt may refuse the change.
    connect(a, &QAction::triggered, this, [a, get, set](bool on) {
        set(on);
        a->setChecked(get());
    });
    actions_[QString(caption).remove('&')] = a;
    return a;
}

void AssemblerWindow::BuildMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    AddCommand(file, "&New", [this] { menunew(); })->setShortcut(QKeySequence::New);
    AddCommand(file, "&Open", [this] { menuopen(); })->setShortcut(QKeySequence::Open);
    AddCommand(file, "&Save", [this] { menusave(); })->setShortcut(QKeySequence::Save);
    AddCommand(file, "Save &As", [this] { menusaveas(); });
    file->addSeparator();
    AddCommand(file, "&Close", [this] { close(); });

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    AddCommand(edit, "&Undo", [this] { source_->undo(); })->setShortcut(QKeySequence::Undo);
    AddCommand(edit, "&Redo", [this] { source_->redo(); })->setShortcut(QKeySequence::Redo);
    edit->addSeparator();
    AddCommand(edit, "Cu&t", [this] { source_->cut(); })->setShortcut(QKeySequence::Cut);
    AddCommand(edit, "&Copy", [this] { source_->copy(); })->setShortcut(QKeySequence::Copy);
    AddCommand(edit, "&Paste", [this] { source_->paste(); })->setShortcut(QKeySequence::Paste);
    AddCommand(edit, "Select A&ll", [this] {
        source_->selectAll();
    })->setShortcut(QKeySequence::SelectAll);
    edit->addSeparator();
    AddCommand(edit, "&Find", [this] {
        const auto text = AskText("Find:", Std(source_->selectedText()));
        if (text && !text->empty() &&
            !source_->findFirst(QString::fromStdString(*text), false, false, false, true))
            Message("The text was not found.");
    })->setShortcut(QKeySequence::Find);
    AddCommand(edit, "Find &Next", [this] {
        source_->findNext();
    })->setShortcut(QKeySequence::FindNext);

    QMenu* marks = menuBar()->addMenu(tr("&Bookmarks"));
    AddCommand(marks, "Toggle Bookmark", [this] {
        int line = 0, index = 0;
        source_->getCursorPosition(&line, &index);
        ToggleMarker(kBookmarkMarker, line);
    })->setShortcut(Qt::CTRL | Qt::Key_F2);
    AddCommand(marks, "Next Bookmark", [this] { JumpToBookmark(true); })->setShortcut(Qt::Key_F2);
    AddCommand(marks, "Previous Bookmark", [this] {
        JumpToBookmark(false);
    })->setShortcut(Qt::SHIFT | Qt::Key_F2);
    AddCommand(marks, "Clear All Bookmarks", [this] { source_->markerDeleteAll(kBookmarkMarker); });
    marks->addSeparator();
    AddCommand(marks, "Toggle Breakpoint", [this] {
        int line = 0, index = 0;
        source_->getCursorPosition(&line, &index);
        ToggleMarker(kBreakpointMarker, line);
    })->setShortcut(Qt::Key_F9);
    AddCommand(marks, "Clear All Breakpoints",
               [this] { source_->markerDeleteAll(kBreakpointMarker); });

    QMenu* tools = menuBar()->addMenu(tr("&Tools"));
    AddCommand(tools, "&Assemble", [this] { menuassemble(); })->setShortcut(Qt::CTRL | Qt::Key_F7);
    AddCommand(tools, "Assemble && &Load", [this] { menuassembleload(); })->setShortcut(Qt::Key_F7);
    AddCommand(tools, "Assemble With TASM", [this] { menutasm(); });
    AddCommand(tools, "Assemble With TASM && Load", [this] { menutasmload(); });
    tools->addSeparator();
    AddToggle(
        tools, "Generate HEX File Also",
        [this] { return settings_.GetSettingText(kHexAlso, "ON") == "ON"; },
        [this](bool on) { settings_.SetSettingText(kHexAlso, on ? "ON" : "OFF"); });
    AddToggle(
        tools, "Generate OBJ File Copy (Set Extension)",
        [this] { return settings_.GetSettingInt(kSettingObjCopy, 0) != 0; },
        [this](bool) { menuobjcopy(); });
    AddCommand(tools, "OBJ File Fill Value", [this] { menuobjfill(); });
    AddCommand(tools, "Change Starting Address For OBJ Files Creation", [this] { menuoffset(); });
    tools->addSeparator();
    AddCommand(tools, "Change TASM Path", [this] { menutasmpath(); });
    AddCommand(tools, "Change TASM Command Line Options", [this] { menutasmoptions(); });
    AddToggle(
        tools, "No Operator Precedence (TASM Compatibility)",
        [this] { return settings_.GetSettingInt(kSettingNoOperatorPrecedence, 0) != 0; },
        [this](bool on) { settings_.SetSettingInt(kSettingNoOperatorPrecedence, on ? 1 : 0); });
    tools->addSeparator();
    AddCommand(tools, "Format Code", [this] { menuformat(); });
    AddCommand(tools, "Format Code Options", [this] { menuformatoptions(); });
    tools->addSeparator();
    AddToggle(
        tools, "Auto Load LST File",
        [this] { return settings_.GetSettingInt(kAutoLoadLst, 0) != 0; },
        [this](bool on) { settings_.SetSettingInt(kAutoLoadLst, on ? 1 : 0); });
    AddToggle(
        tools, "Auto Save", [this] { return settings_.GetSettingInt(kAutoSave, 0) != 0; },
        [this](bool on) { settings_.SetSettingInt(kAutoSave, on ? 1 : 0); });
}

QAction* AssemblerWindow::Action(const QString& caption) const {
    QString key = caption;
    key.remove('&');
    const auto it = actions_.find(key);
    return it == actions_.end() ? nullptr : it->second;
}

// Files

QString AssemblerWindow::SourceText() const {
    return source_->text();
}

void AssemblerWindow::SetSourceText(const QString& text) {
    source_->setText(text);
}

QString AssemblerWindow::ListingText() const {
    return listing_->text();
}

void AssemblerWindow::UpdateTitle() {
    setWindowTitle(QString("Assembler - %1%2")
                       .arg(QFileInfo(path_).fileName(), source_->isModified() ? " *" : ""));
}

bool AssemblerWindow::MaySetSourceAside() {
    if (!source_->isModified()) return true;
    const int answer = AskQuestion("Assembler source has been modified.\nDo you want to save it?",
                                   /*withCancel=*/true);
    if (answer < 0) return false;
    if (answer == 0) return true;
    return menusave();
}

void AssemblerWindow::menunew() {
    if (!MaySetSourceAside()) return;
    source_->clear();
    source_->markerDeleteAll();
    listing_->clear();
    path_ = QFileInfo(path_).absolutePath() + "/" + kUntitled;
    source_->setModified(false);
    UpdateTitle();
}

bool AssemblerWindow::OpenFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        Message("The file does not exist.");
        return false;
    }
    std::string text = file.readAll().toStdString();
    EditorMarks marks;
    const int lines = static_cast<int>(std::count(text.begin(), text.end(), '\n')) + 1;
    TakeMarksComment(text, marks, lines);
    source_->setText(QString::fromStdString(text));
    source_->markerDeleteAll();
    SetMarks(marks);
    source_->setModified(false);
    path_ = QFileInfo(path).absoluteFilePath();
    settings_.SetSettingText(kLastFile, Std(path_));
    listing_->clear();
    if (settings_.GetSettingInt(kAutoLoadLst, 0) && QFileInfo::exists(OutputStem(path_) + ".lst"))
        LoadListing(OutputStem(path_) + ".lst");
    UpdateTitle();
    return true;
}

void AssemblerWindow::menuopen() {
    if (!MaySetSourceAside()) return;
    const std::string path = AskFile(false);
    if (!path.empty()) OpenFile(QString::fromStdString(path));
}

bool AssemblerWindow::WriteSource(const QString& path) {
    std::string text = Std(source_->text());
    const EditorMarks marks = Marks();
    if (settings_.GetSettingInt("Assembler Save Bookmarks And Breakpoints", 1) &&
        (!marks.Bookmarks.empty() || !marks.Breakpoints.empty()))
        text = AppendMarksComment(text, marks);
    // Written beside and then renamed: a failed write leaves the old file whole.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(text.data(), static_cast<qint64>(text.size())) !=
            static_cast<qint64>(text.size()) ||
        !file.commit()) {
        Message("The file could not be saved:\n" + Std(path));
        return false;
    }
    source_->setModified(false);
    UpdateTitle();
    return true;
}

bool AssemblerWindow::menusave() {
    if (path_.endsWith(kUntitled)) return menusaveas();
    return WriteSource(path_);
}

bool AssemblerWindow::menusaveas() {
    std::string chosen = AskFile(true);
    if (chosen.empty()) return false;
    QString path = QString::fromStdString(chosen);
    if (QFileInfo(path).suffix().isEmpty()) path += ".asm";
    if (!WriteSource(path)) return false;
    path_ = QFileInfo(path).absoluteFilePath();
    settings_.SetSettingText(kLastFile, Std(path_));
    UpdateTitle();
    return true;
}

void AssemblerWindow::ScheduleAutoSave() {
    if (settings_.GetSettingInt(kAutoSave, 0)) autoSave_.start();
}

// Marks

void AssemblerWindow::ToggleMarker(int marker, int line) {
    const char* key =
        marker == kBookmarkMarker ? "Assembler Enable Bookmarks" : "Assembler Enable Breakpoints";
    if (!settings_.GetSettingInt(key, 1)) return;
    if (source_->markersAtLine(line) & (1 << marker))
        source_->markerDelete(line, marker);
    else
        source_->markerAdd(line, marker);
}

void AssemblerWindow::JumpToBookmark(bool forward) {
    int line = 0, index = 0;
    source_->getCursorPosition(&line, &index);
    const unsigned mask = 1u << kBookmarkMarker;
    int found = forward ? source_->markerFindNext(line + 1, mask)
                        : source_->markerFindPrevious(line - 1, mask);
    if (found < 0)  // wrap around
        found = forward ? source_->markerFindNext(0, mask)
                        : source_->markerFindPrevious(source_->lines() - 1, mask);
    if (found >= 0) {
        source_->setCursorPosition(found, 0);
        source_->ensureLineVisible(found);
    }
}

EditorMarks AssemblerWindow::Marks() const {
    EditorMarks marks;
    for (int line = 0; line < source_->lines(); ++line) {
        const unsigned at = source_->markersAtLine(line);
        if (at & (1u << kBookmarkMarker)) marks.Bookmarks.push_back(line + 1);
        if (at & (1u << kBreakpointMarker)) marks.Breakpoints.push_back(line + 1);
    }
    return marks;
}

std::vector<int> AssemblerWindow::ErrorLines() const {
    std::vector<int> lines;
    for (int line = source_->markerFindNext(0, 1u << kErrorMarker); line >= 0;
         line = source_->markerFindNext(line + 1, 1u << kErrorMarker))
        lines.push_back(line + 1);
    return lines;
}

void AssemblerWindow::SetMarks(const EditorMarks& marks) {
    for (int line : marks.Bookmarks) source_->markerAdd(line - 1, kBookmarkMarker);
    for (int line : marks.Breakpoints) source_->markerAdd(line - 1, kBreakpointMarker);
}

// Assembly

void AssemblerWindow::LoadListing(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        listing_->clear();
        return;
    }
    ShowListing(QString::fromUtf8(file.readAll()));
}

void AssemblerWindow::ShowListing(const QString& text) {
    listing_->setText(text);
    const int last = std::max(0, listing_->lines() - 1);
    listing_->setCursorPosition(last, 0);
    listing_->ensureLineVisible(last);
}

bool AssemblerWindow::PrepareSource() {
    if (source_->text().trimmed().isEmpty()) {
        Message("The editor is empty.");
        return false;
    }
    if (path_.endsWith(kUntitled)) {
        menusaveas();
        if (path_.endsWith(kUntitled)) return false;
    }
    return WriteSource(path_);
}

int AssemblerWindow::menuassemble() {
    if (!PrepareSource()) return -1;

    const QFileInfo info(path_);
    const std::string folder = Std(info.absolutePath()) + "/";
    const std::string base = Std(QFileInfo(OutputStem(path_)).fileName());
    WindowAssemblerHost host([this](const QString& text) { Status(text); },
                             [this](const std::string& text) { Message(text); });
    Assembler assembler(settings_, host, ReadAssemblerOptions(settings_));
    assembler.DeleteOutputs(folder, base);
    Status("Assembling in progress...");
    int status = 0;
    const int errors = assembler.AssembleSource(folder, Std(info.fileName()), status);
    Status("");
    LoadListing(OutputStem(path_) + ".lst");
    MarkErrorLines(assembler.Session());
    if (errors > 0) {
        Report(assembler.FormatAssemblerErrors() + AssemblyFailureText(errors));
        assembler.DeleteOutputs(folder, base);
    }
    return errors;
}

// Lines of the main file with an error get the error background, and the caret
// goes to the first of them; the next edit clears the marks.
void AssemblerWindow::MarkErrorLines(const AssemblySession& session) {
    source_->markerDeleteAll(kErrorMarker);
    int first = -1;
    for (const AssemblerError& error : session.ErrorList) {
        if (!error.File.empty() || error.FileLine < 1 || error.FileLine > source_->lines())
            continue;
        source_->markerAdd(error.FileLine - 1, kErrorMarker);
        if (first < 0 || error.FileLine - 1 < first) first = error.FileLine - 1;
    }
    if (first >= 0) {
        source_->setCursorPosition(first, 0);
        source_->ensureLineVisible(first);
    }
}

// A run loop that is turning ends only after the command that asked it to stop
// has returned; so the command goes on when the run has ended.
void AssemblerWindow::AfterStoppingSimulation(std::function<void()> then) {
    if (!settings_.GetSettingInt(kStopsSimulation, 1) || !hooks_.simulationRunning()) {
        then();
        return;
    }
    hooks_.stopSimulation();
    WhenStopped(std::move(then));
}

void AssemblerWindow::WhenStopped(std::function<void()> then) {
    if (!hooks_.simulationRunning()) {
        then();
        return;
    }
    QTimer::singleShot(kStopPollMs, this, [this, then = std::move(then)] { WhenStopped(then); });
}

void AssemblerWindow::LoadProgramAfter(int errors) {
    if (errors == 0) hooks_.loadProgram(Std(OutputStem(path_)) + ".obj");
}

void AssemblerWindow::menuassembleload() {
    AfterStoppingSimulation([this] { LoadProgramAfter(menuassemble()); });
}

int AssemblerWindow::menutasm() {
    if (!PrepareSource()) return -1;
    TasmRequest request;
    request.SourcePath = Std(path_);
    request.SourceText = Std(source_->text());
    request.ToolPath = settings_.GetSettingText("TASM Path", "");
    request.Options = settings_.GetSettingText("TASM Command Line Options", "-80 -b");
    request.TimeoutSteps = settings_.GetSettingInt("TASM time-out (unit 100ms)", 100);
    WindowTasmHooks hooks([this](const QString& text) { Status(text); });
    const TasmOutcome outcome = AssembleWithTasm(request, hooks);
    if (!outcome.ListingText.empty()) ShowListing(QString::fromStdString(outcome.ListingText));
    if (!outcome.Message.empty()) {
        if (outcome.ErrorCount > 0)
            Report(outcome.Message);
        else
            Message(outcome.Message);
    }
    if (outcome.Succeeded) return 0;
    return outcome.ErrorCount > 0 ? outcome.ErrorCount : -1;
}

void AssemblerWindow::menutasmload() {
    AfterStoppingSimulation([this] { LoadProgramAfter(menutasm()); });
}

void AssemblerWindow::menuformat() {
    const QString formatted =
        QString::fromStdString(FormatCode(Std(source_->text()), ReadFormatCodeOptions(settings_)));
    if (formatted == source_->text()) return;
    int line = 0, index = 0;
    source_->getCursorPosition(&line, &index);
    const EditorMarks marks = Marks();
    // One step for Undo.
    source_->beginUndoAction();
    source_->selectAll();
    source_->replaceSelectedText(formatted);
    source_->endUndoAction();
    source_->markerDeleteAll();
    SetMarks(marks);  // the lines stay where they were
    source_->setCursorPosition(line, 0);
}

void AssemblerWindow::menuformatoptions() {
    FormatOptionsDialog dialog(ReadFormatCodeOptions(settings_), this);
    if (formatOptionsAnswer) {
        formatOptionsAnswer(dialog);
    } else if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    WriteFormatCodeOptions(settings_, dialog.Options());
}

// Options

void AssemblerWindow::menuobjcopy() {
    if (settings_.GetSettingInt(kSettingObjCopy, 0)) {
        settings_.SetSettingInt(kSettingObjCopy, 0);
        return;
    }
    const auto answer = AskText("Enter the file extension of the OBJ file copy:",
                                settings_.GetSettingText(kSettingObjCopyExtension, "bin"));
    if (!answer) return;
    QString ext = QString::fromStdString(*answer).trimmed();
    if (ext.startsWith('.')) ext.remove(0, 1);
    if (!IsUsableObjCopyExtension(Std(ext))) {
        Message("This file extension cannot be used for the OBJ file copy.");
        return;
    }
    settings_.SetSettingText(kSettingObjCopyExtension, Std(ext));
    settings_.SetSettingInt(kSettingObjCopy, 1);
}

void AssemblerWindow::menuobjfill() {
    const int current = settings_.GetSettingInt("OBJ File Fill Value", 0) & 0xFF;
    const auto answer =
        AskText("Enter new fill value for OBJ files creation [00-FF]:", pb_hex2(current));
    if (!answer || QString::fromStdString(*answer).trimmed().isEmpty()) return;
    const long long value = HexEntryValue(*answer, 2);
    if (value < 0) {
        Message("Wrong entry!");
        return;
    }
    settings_.SetSettingInt("OBJ File Fill Value", static_cast<int>(value));
}

void AssemblerWindow::menuoffset() {
    const char* key = "Starting Address For OBJ Files Creation";
    const auto answer = AskText("Enter new starting address for OBJ files creation [0000-FFFF]:",
                                pb_hex4(settings_.GetSettingInt(key, 0) & 0xFFFF));
    if (!answer || QString::fromStdString(*answer).trimmed().isEmpty()) return;
    const long long value = HexEntryValue(*answer, 4);
    if (value < 0) {
        Message("Wrong entry!");
        return;
    }
    settings_.SetSettingInt(key, static_cast<int>(value));
}

void AssemblerWindow::menutasmpath() {
    const std::string path =
        fileAnswer ? fileAnswer(false)
                   : Std(QFileDialog::getOpenFileName(
                         this, "Change TASM Path",
                         QString::fromStdString(settings_.GetSettingText("TASM Path", ""))));
    if (path.empty()) return;
    if (!QFileInfo(QString::fromStdString(path)).isFile()) {
        Message("The file does not exist.");
        return;
    }
    settings_.SetSettingText("TASM Path", path);
}

void AssemblerWindow::menutasmoptions() {
    const auto answer = AskText(
        "Enter new TASM assembler command line options:\n"
        "(for advanced use only; the default is '-80 -b')",
        settings_.GetSettingText("TASM Command Line Options", "-80 -b"));
    if (!answer) {
        Message("TASM command line options not changed...");
        return;
    }
    settings_.SetSettingText("TASM Command Line Options", *answer);
}

// Look

void AssemblerWindow::ApplyEditorSettings() {
    const EditorSettings look = ReadEditorSettings(settings_, EditorKind::Assembler, ScreenScale());
    auto color = [&look](EditorColor role) {
        const int c = look.Color(role);
        return QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF);
    };
    // The named font, or the nearest fixed-pitch one when it is not installed.
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    const QString family = QString::fromStdString(look.fontName);
    if (QFontDatabase::families().contains(family, Qt::CaseInsensitive)) font.setFamily(family);
    font.setPointSize(look.fontSize);

    static const std::pair<AsmLexer::Style, EditorColor> kStyles[] = {
        {AsmLexer::Default, EditorColor::Text},      {AsmLexer::Mnemonic, EditorColor::Keyword},
        {AsmLexer::Register, EditorColor::Keyword2}, {AsmLexer::Directive, EditorColor::Keyword3},
        {AsmLexer::Comment, EditorColor::Comment},   {AsmLexer::String, EditorColor::String},
        {AsmLexer::Number, EditorColor::Mark2}};
    lexer_->setDefaultFont(font);
    lexer_->setDefaultPaper(color(EditorColor::Back));
    lexer_->setDefaultColor(color(EditorColor::Text));
    for (const auto& [style, role] : kStyles) {
        lexer_->setFont(font, style);
        lexer_->setColor(color(role), style);
        lexer_->setPaper(color(EditorColor::Back), style);
    }
    source_->setMarginsFont(font);
    source_->setMarginLineNumbers(0, true);
    source_->setMarginWidth(0, QFontMetrics(font).horizontalAdvance("00000") + 6);
    source_->setMarginsBackgroundColor(color(EditorColor::LineNumberBack));
    source_->setMarginsForegroundColor(color(EditorColor::LineNumberText));
    source_->setMarginBackgroundColor(1, color(EditorColor::Margin));
    source_->setCaretLineBackgroundColor(color(EditorColor::CaretLine));
    source_->setCaretForegroundColor(color(EditorColor::Text));
    source_->setMarkerBackgroundColor(color(EditorColor::Bookmark), kBookmarkMarker);
    source_->setMarkerBackgroundColor(color(EditorColor::Breakpoint), kBreakpointMarker);
    source_->setMarkerBackgroundColor(color(EditorColor::Error), kErrorMarker);
    source_->setWrapMode(look.On(EditorSwitch::LineWrapping) ? QsciScintilla::WrapWord
                                                             : QsciScintilla::WrapNone);
    lexer_->refreshProperties();
    source_->recolor();

    listing_->setFont(font);
    listing_->setPaper(color(EditorColor::Back));
    listing_->setColor(color(EditorColor::Text));
    listing_->setMarginsFont(font);
    listing_->setMarginWidth(0, 0);
    listing_->setMarginWidth(1, 0);
    listing_->setTabWidth(8);
}

// Questions

void AssemblerWindow::Status(const QString& text) {
    status_->setText(text);
}

std::optional<std::string> AssemblerWindow::AskText(const std::string& prompt,
                                                    const std::string& offered) {
    if (textAnswer) return textAnswer(prompt, offered);
    const auto text = AskTextLine(this, windowTitle(), QString::fromStdString(prompt),
                                  QString::fromStdString(offered));
    if (!text) return std::nullopt;
    return Std(*text);
}

std::string AssemblerWindow::AskFile(bool save) {
    if (fileAnswer) return fileAnswer(save);
    const QString folder = QFileInfo(path_).absolutePath();
    const QString filter = "Assembler source (*.asm *.inc *.z80);;All files (*)";
    return Std(save ? QFileDialog::getSaveFileName(this, "Save As", folder, filter)
                    : QFileDialog::getOpenFileName(this, "Open", folder, filter));
}

int AssemblerWindow::AskQuestion(const std::string& question, bool withCancel) {
    if (questionAnswer) return questionAnswer(question);
    auto buttons = QMessageBox::Yes | QMessageBox::No;
    if (withCancel) buttons |= QMessageBox::Cancel;
    const auto answer =
        QMessageBox::question(this, windowTitle(), QString::fromStdString(question), buttons);
    return answer == QMessageBox::Yes ? 1 : answer == QMessageBox::No ? 0 : -1;
}

void AssemblerWindow::closeEvent(QCloseEvent* event) {
    if (!MaySetSourceAside()) {
        event->ignore();
        return;
    }
    SaveWindowPlace(*this, settings_, kWindowNumber);
    event->accept();
}

}  // namespace mb
