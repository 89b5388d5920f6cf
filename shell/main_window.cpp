#include "main_window.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QDialog>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QInputDialog>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QThread>
#include <QTime>
#include <QVBoxLayout>
#include <fstream>

#include "assembler_window.h"
#include "core/numtext.h"
#include "entry_dialogs.h"
#include "ieee754_window.h"
#include "memory_views.h"
#include "settings/settings_store.h"
#include "window_place.h"

namespace mb {

namespace {
constexpr const char* kTitle = "Marrowgate Bench";
const QString kRateCaptions[6] = {"Step By Step", "Slow",           "Normal",
                                  "Fast",         "Extremely Fast", "Ultimate"};

QString Hex(int value, int digits) {
    return QString::fromStdString(HexDigits(value, digits));
}
}  // namespace

RegisterField::RegisterField(const QString& name, int digits, QWidget* parent)
    : QLabel(parent), name_(name), digits_(digits) {
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
    // Drawn as a field: the colour theme's field background and text.
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    setForegroundRole(QPalette::Text);
    setAlignment(Qt::AlignCenter);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setMinimumWidth(fontMetrics().horizontalAdvance('0') * (digits + 2));
    setToolTip(QObject::tr("Double-click to change %1").arg(name));
}

void RegisterField::mouseDoubleClickEvent(QMouseEvent*) {
    emit EditRequested(this);
}

MainWindow::MainWindow(SettingsStore& settings, QWidget* parent)
    : QMainWindow(parent),
      settings_(settings),
      m_(std::make_unique<Machine>()),
      recent_(settings, [](const std::string& path) {
          return QFileInfo::exists(QString::fromStdString(path));
      }) {
    hooks_.host = this;
    hooks_.log = &log_;
    rc_ = std::make_unique<RunControl>(*m_, *this, settings_, hooks_, log_);
    images_ = std::make_unique<ProgramImages>(*m_, settings_, *this);
    memoryViews_ = std::make_unique<MemoryViews>(
        *m_, hooks_, settings_, [this](const std::string& text) { ShowMessage(text); }, this);
    connect(&ultimateTimer_, &QTimer::timeout, this, [this] { rc_->ultimatetimer(); });
    appearance_ = std::make_unique<Appearance>(settings_);
    appearance_->editorsApplied = [this] {
        if (assembler_) assembler_->ApplyEditorSettings();
    };

    setWindowTitle(kTitle);
    setCentralWidget(BuildRegisterDisplay());
    BuildMenus();
    ReadStartupSettings();
    clean(*m_);
    rc_->LoadSettings();
    rc_->menuspeed(m_->SimulationRate);
    // Layouts of resized windows are dropped once after an update.
    if (settings_.GetSettingInt("Reset Windows Layout Settings Counter", 0) < 5) {
        settings_.DeleteLayoutSettings();
        settings_.SetSettingInt("Reset Windows Layout Settings Counter", 5);
    }
    if (settings_.GetSettingText("Save Always On Top", "1") == "1")
        setWindowFlag(Qt::WindowStaysOnTopHint, true);
    // The main font and the colour theme before the window takes its size;
    // windows opened later get them from the appearance as they show.
    appearance_->ApplyTo(*this);
    RestoreWindowPlace(*this, settings_, 1);
    ApplyArrangement();
    ekran();
    UpdateCommands();
}

MainWindow::~MainWindow() = default;

// "Arrange Mode" 0 stacks the register groups, 1 sets them side by side.
void MainWindow::ApplyArrangement() {
    const bool sideBySide = settings_.GetSettingInt("Arrange Mode", 0) == 1;
    groups_->setDirection(sideBySide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    adjustSize();
}

// The start-up table, read in its order; a read writes a missing default back.
void MainWindow::ReadStartupSettings() {
    mb::ReadStartupSettings(*m_, settings_, QDir::homePath().toStdString());
}

QWidget* MainWindow::BuildRegisterDisplay() {
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    groups_ = new QBoxLayout(QBoxLayout::TopToBottom);
    layout->addLayout(groups_);
    // Each group has a grid of its own, so narrow fields stay narrow.
    auto group = [&](const QString& title) {
        auto* box = new QGroupBox(title, central);
        auto* grid = new QGridLayout(box);
        grid->setHorizontalSpacing(4);
        grid->setVerticalSpacing(2);
        groups_->addWidget(box);
        return grid;
    };
    QGridLayout* regs = group(tr("Registers"));
    const char* names[7] = {"A", "B", "C", "D", "E", "H", "L"};
    for (int i = 0; i < 7; ++i) {
        AddField(regs, 0, i, names[i], names[i], 2);
        AddField(regs, 2, i, QString(names[i]) + "'", QString(names[i]) + "'", 2);
    }
    QGridLayout* flags = group(tr("Flags"));
    const char* bits[8] = {"S", "Z", "Y", "H", "X", "P", "N", "C"};
    for (int i = 0; i < 8; ++i) {
        AddField(flags, 0, i, bits[i], QString("Flag") + bits[i], 1);
        AddField(flags, 2, i, QString(bits[i]) + "'", QString("Flag") + bits[i] + "'", 1);
    }
    QGridLayout* special = group(tr("Interrupts and 16-bit registers"));
    const std::pair<const char*, int> others[9] = {{"I", 2},    {"R", 2},  {"IFF1", 1},
                                                   {"IFF2", 1}, {"IM", 1}, {"IX", 4},
                                                   {"IY", 4},   {"SP", 4}, {"PC", 4}};
    for (int i = 0; i < 9; ++i)
        AddField(special, 0, i, others[i].first, others[i].first, others[i].second);

    auto* info = new QGridLayout;
    auto label = [&](int row, const QString& caption) {
        info->addWidget(new QLabel(caption, central), row, 0);
        auto* value = new QLabel(central);
        value->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        info->addWidget(value, row, 1);
        return value;
    };
    current_ = label(0, tr("Instruction:"));
    next_ = label(1, tr("Next instruction:"));
    count_ = label(2, tr("Instructions:"));
    cycles_ = label(3, tr("Clock cycles:"));
    program_ = label(4, tr("Program:"));
    // A long path must not widen the window; the whole path is in the tool tip.
    program_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addLayout(info);

    auto* buttons = new QHBoxLayout;
    nmi_ = new QPushButton("NMI", central);
    int_ = new QPushButton("INT", central);
    reset_ = new QPushButton("RESET", central);
    connect(nmi_, &QPushButton::clicked, this, [this] {
        rc_->Command1();
        UpdateCommands();
    });
    connect(int_, &QPushButton::clicked, this, [this] {
        rc_->Command2();
        UpdateCommands();
    });
    connect(reset_, &QPushButton::pressed, this, [this] { rc_->Command3Press(); });
    connect(reset_, &QPushButton::released, this, [this] {
        rc_->Command3Release();
        memoryViews_->RedrawAll();  // the pointers go back with the trackers
        UpdateCommands();
    });
    for (QPushButton* b : {nmi_, int_, reset_}) buttons->addWidget(b);
    buttons->addStretch();
    layout->addLayout(buttons);
    layout->addStretch();
    return central;
}

void MainWindow::AddField(QGridLayout* grid, int row, int col, const QString& caption,
                          const QString& name, int digits) {
    auto* title = new QLabel(caption, grid->parentWidget());
    title->setAlignment(Qt::AlignCenter);
    auto* field = new RegisterField(name, digits, grid->parentWidget());
    grid->addWidget(title, row, col);
    grid->addWidget(field, row + 1, col);
    fields_[name] = field;
    connect(field, &RegisterField::EditRequested, this, &MainWindow::OnFieldEdit);
}

void MainWindow::BuildMenus() {
    auto add = [this](QMenu* menu, const QString& caption, auto slot) {
        QAction* a = menu->addAction(caption);
        connect(a, &QAction::triggered, this, [this, slot] {
            slot();
            memoryViews_->RedrawAll();
            UpdateCommands();
            ekran();
        });
        actions_[caption] = a;
        return a;
    };
    QMenu* file = menuBar()->addMenu(tr("&File"));
    add(file, "Clear Memory", [this] { images_->ClearMemory(); });
    add(file, "Load Program", [this] { images_->menuload(); });
    add(file, "Reload", [this] { images_->menureload(); });
    add(file, "Save Memory", [this] {
        if (WriteTest(settings_.GetSettingText("Last Path", ""))) images_->menusave();
    });
    add(file, "Load Another Program File", [this] { images_->menuload2(); });
    file->addSeparator();
    recentEnd_ = file->addSeparator();
    add(file, "Clear Recent Files List", [this] {
        recent_.Clear();
        RebuildRecentMenu();
    });
    file->addSeparator();
    add(file, "Exit", [this] { close(); });
    fileMenu_ = file;
    RebuildRecentMenu();

    QMenu* sim = menuBar()->addMenu(tr("&Simulation"));
    add(sim, "Start", [this] { rc_->menustart(); });
    add(sim, "Step", [this] { rc_->menustep(); })->setShortcut(Qt::Key_F8);
    add(sim, "Stop", [this] { rc_->menustop(); });

    QMenu* rate = menuBar()->addMenu(tr("&Rate"));
    rates_ = new QActionGroup(this);
    for (int i = 0; i < 6; ++i) {
        QAction* a = add(rate, kRateCaptions[i], [this, i] { rc_->menuspeed(i + 1); });
        a->setCheckable(true);
        rates_->addAction(a);
    }

    QMenu* tools = menuBar()->addMenu(tr("&Tools"));
    add(tools, "Memory Editor", [this] { memoryViews_->OpenMemoryEditor(1); });
    add(tools, "I/O Ports Editor", [this] { memoryViews_->OpenPortsEditor(); });
    add(tools, "Memory Editor 2", [this] { memoryViews_->OpenMemoryEditor(2); });
    add(tools, "Memory Editor 3", [this] { memoryViews_->OpenMemoryEditor(3); });
    add(tools, "Video Memory Screen", [this] { memoryViews_->OpenVideoScreen(); });
    add(tools, "Assembler", [this] { OpenAssembler(); });
    add(tools, "IEEE 754 Conversion Tool", [this] {
        if (!ieee754_) {
            ieee754_ = new Ieee754Window(
                settings_, [this](const std::string& text) { ShowMessage(text); }, this);
            ieee754_->setAttribute(Qt::WA_DeleteOnClose);
        }
        ieee754_->show();
        ieee754_->raise();
    });
    add(tools, "Simulation Log Viewer", [this] {
        if (!logViewer_) {
            logViewer_ = new LogViewerWindow(settings_, this);
            logViewer_->setAttribute(Qt::WA_DeleteOnClose);
            logViewer_->message = [this](const std::string& text) { ShowMessage(text); };
            logViewer_->simulationRunning = [this] { return rc_->SimulationRunning; };
            // Lines are composed only while the viewer is open.
            logViewer_->closed = [this] {
                logViewer_ = nullptr;
                rc_->SetLogViewerOpen(false);
            };
            rc_->SetLogViewerOpen(true);
        }
        logViewer_->show();
        logViewer_->raise();
    });

    QMenu* options = menuBar()->addMenu(tr("&Options"));
    AddOption(options, "Enable Unofficial Instructions", "Enable Unofficial Instructions", 0);
    AddOption(options, "Enable Logging", "Enable Logging New", 0);
    AddOption(options, "HALT Stops Simulation", "HALT Stops Simulation New", 1);
    AddOption(options, "Infinite Loop Stops Simulation", "Infinite Loop Stop New", 0);
    AddTextOption(options, "FF Power On Defaults", "FF Power On Defaults", "ON");
    AddOption(options, "Refresh Memory Editor", "Refresh Memory Editor New", 1);
    AddOption(options, "Show ASCII Characters", "Show ASCII Characters", 1);
    AddTextOption(options, "Save Positions", "Save Positions", "ON");
    AddTextOption(options, "Show Pop-up Info Message Boxes", "Show Confirmations", "OFF");
    options->addSeparator();
    add(options, "Change Clock Frequency", [this] { rc_->ChangeClockFrequency(); });
    add(options, "Change Starting Address", [this] { rc_->ChangeStartingAddress(); });
    add(options, "Change Offset Address For OBJ Files Loading", [this] { rc_->ChangeObjOffset(); });
    AddOption(options, "Prompt For Value Before IN Instruction", "Prompt Before IN New", 1);
    AddOption(options, "Enable IN/OUT Instructions Logging", "Log IN And OUT New", 0);
    add(options, "Change Ultimate Rate Refresh Interval",
        [this] { rc_->ChangeUltimateInterval(); });
    add(options, "Change Registers Arrangement", [this] {
        settings_.SetSettingInt("Arrange Mode",
                                settings_.GetSettingInt("Arrange Mode", 0) == 0 ? 1 : 0);
        ApplyArrangement();
    });
    QAction* showRecent = options->addAction("Show Recent Files");
    showRecent->setCheckable(true);
    showRecent->setChecked(settings_.GetSettingInt("Show Recent Files - Simulator", 1) == 1);
    connect(showRecent, &QAction::toggled, this, [this](bool on) {
        settings_.SetSettingInt("Show Recent Files - Simulator", on ? 1 : 0);
        RebuildRecentMenu();
    });
    actions_["Show Recent Files"] = showRecent;
    add(options, "Editor Setup", [this] { appearance_->menueditorsetup(this); });
    add(options, "Change Color Theme", [this] { appearance_->menucolortheme(this); });
    add(options, "Change Main Font", [this] { appearance_->menumainfont(this); });
    AddOption(options, "Display Relative Branch Hex Argument",
              "Display Relative Branch Hex Argument", 0);
}

AssemblerWindow* MainWindow::assemblerWindow() const {
    return assembler_;
}

void MainWindow::OpenAssembler() {
    if (!assembler_) {
        AssemblerWindowHooks hooks;
        hooks.message = [this](const std::string& text) { ShowMessage(text); };
        hooks.simulationRunning = [this] { return rc_->SimulationRunning != 0; };
        hooks.stopSimulation = [this] {
            rc_->menustop();
            UpdateCommands();
        };
        hooks.loadProgram = [this](const std::string& path) {
            const bool loaded = images_->LoadProgram(path);
            UpdateCommands();
            ekran();
            return loaded;
        };
        assembler_ = new AssemblerWindow(settings_, std::move(hooks), this);
        assembler_->setAttribute(Qt::WA_DeleteOnClose);
    }
    assembler_->show();
    assembler_->raise();
}

// An on/off option stored as 0 or 1.
void MainWindow::AddOption(QMenu* menu, const QString& caption, const char* key, int def) {
    QAction* a = menu->addAction(caption);
    a->setCheckable(true);
    a->setChecked(settings_.GetSettingInt(key, def) != 0);
    connect(a, &QAction::toggled, this, [this, key](bool on) {
        settings_.SetSettingInt(key, on ? 1 : 0);
        ApplyOptions();
    });
    actions_[caption] = a;
}

// An on/off option stored as "ON" or "OFF".
void MainWindow::AddTextOption(QMenu* menu, const QString& caption, const char* key,
                               const char* def) {
    QAction* a = menu->addAction(caption);
    a->setCheckable(true);
    a->setChecked(settings_.GetSettingText(key, def) == "ON");
    connect(a, &QAction::toggled, this, [this, key](bool on) {
        settings_.SetSettingText(key, on ? "ON" : "OFF");
        ApplyOptions();
    });
    actions_[caption] = a;
}

void MainWindow::ApplyOptions() {
    const bool onTop = settings_.GetSettingText("Save Always On Top", "1") == "1";
    if (onTop != bool(windowFlags() & Qt::WindowStaysOnTopHint)) {
        setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
        show();
    }
    const int rate = m_->SimulationRate;
    ReadStartupSettings();
    m_->SimulationRate = rate;
    const std::string rateText = std::to_string(rate);
    settings_.SetSettingText(kSettingRate, rateText);
    if (!rc_->SimulationRunning) rc_->LoadSettings();
    memoryViews_->ApplyOptions();
    ekran();
}

QAction* MainWindow::Action(const QString& caption) const {
    auto it = actions_.find(caption);
    return it == actions_.end() ? nullptr : it->second;
}

int* MainWindow::RegisterByName(const QString& n) {
    Machine& m = *m_;
    const std::map<QString, int*> table = {{"A", &m.A},
                                           {"B", &m.B},
                                           {"C", &m.C},
                                           {"D", &m.D},
                                           {"E", &m.E},
                                           {"H", &m.H},
                                           {"L", &m.L},
                                           {"A'", &m.AltA},
                                           {"B'", &m.AltB},
                                           {"C'", &m.AltC},
                                           {"D'", &m.AltD},
                                           {"E'", &m.AltE},
                                           {"H'", &m.AltH},
                                           {"L'", &m.AltL},
                                           {"FlagS", &m.FlagS},
                                           {"FlagZ", &m.FlagZ},
                                           {"FlagY", &m.FlagY},
                                           {"FlagH", &m.FlagH},
                                           {"FlagX", &m.FlagX},
                                           {"FlagP", &m.FlagP},
                                           {"FlagN", &m.FlagN},
                                           {"FlagC", &m.FlagC},
                                           {"FlagS'", &m.AltFlagS},
                                           {"FlagZ'", &m.AltFlagZ},
                                           {"FlagY'", &m.AltFlagY},
                                           {"FlagH'", &m.AltFlagH},
                                           {"FlagX'", &m.AltFlagX},
                                           {"FlagP'", &m.AltFlagP},
                                           {"FlagN'", &m.AltFlagN},
                                           {"FlagC'", &m.AltFlagC},
                                           {"I", &m.I},
                                           {"R", &m.R},
                                           {"IFF1", &m.IFF1},
                                           {"IFF2", &m.IFF2},
                                           {"IM", &m.InterruptMode},
                                           {"IX", &m.IX},
                                           {"IY", &m.IY},
                                           {"SP", &m.SP},
                                           {"PC", &m.PC}};
    auto it = table.find(n);
    return it == table.end() ? nullptr : it->second;
}

void MainWindow::ekran() {
    for (auto& [name, field] : fields_) {
        const int* reg = RegisterByName(name);
        if (reg) field->setText(Hex(*reg, field->Digits()));
    }
    current_->setText(QString::fromStdString(m_->CurrentInstructionText));
    next_->setText(QString::fromStdString(m_->NextInstructionText));
    // The wide totals: a long run never shows a wrapped, negative count.
    SyncCounterTotals(*m_);
    count_->setText(QString::number(m_->InstructionTotal));
    cycles_->setText(QString::number(m_->ClockCycleTotal));
    const QString program = QString::fromStdString(images_->ProgramFileName());
    program_->setText(program);
    program_->setToolTip(program);
}

QString MainWindow::FieldText(const QString& name) const {
    auto it = fields_.find(name);
    return it == fields_.end() ? QString() : it->second->text();
}

// A register takes the last digits typed: one for a flag or a one-digit value,
// two for a byte, four for a word. Anything unreadable changes nothing.
bool MainWindow::EditRegister(const QString& name, const QString& typed) {
    if (rc_->StopEnabled && m_->SimulationRate != kRateStepByStep) return false;
    int* reg = RegisterByName(name);
    auto it = fields_.find(name);
    if (!reg || it == fields_.end()) return false;
    const int digits = it->second->Digits();
    const QString text = typed.trimmed().toUpper();
    if (text.isEmpty()) return false;
    const std::string tail = text.right(digits).rightJustified(digits, '0').toStdString();
    const long long value = HexValue(tail, digits);
    if (value < 0) return false;
    if (digits == 1 && value > (name == "IM" ? 2 : 1)) return false;
    *reg = static_cast<int>(value);
    if (name == "PC") m_->NextInstructionText = InstructionTextAt(*m_, m_->PC);
    ekran();
    return true;
}

void MainWindow::OnFieldEdit(RegisterField* field) {
    if (rc_->StopEnabled && m_->SimulationRate != kRateStepByStep) return;
    const auto text =
        AskTextLine(this, kTitle, tr("New value of %1:").arg(field->Name()), field->text());
    if (text) EditRegister(field->Name(), *text);
}

void MainWindow::UpdateCommands() {
    const Machine& m = *m_;
    auto enable = [this](const QString& caption, bool on) {
        if (QAction* a = Action(caption)) a->setEnabled(on);
    };
    enable("Start", rc_->StartEnabled);
    enable("Stop", rc_->StopEnabled);
    enable("Step", rc_->StepEnabled);
    nmi_->setEnabled(m.NmiCommandEnabled);
    int_->setEnabled(m.IntCommandEnabled);
    reset_->setEnabled(m.ResetCommandEnabled);
    if (m.SimulationRate >= 1 && m.SimulationRate <= 6)
        Action(kRateCaptions[m.SimulationRate - 1])->setChecked(true);
}

// ---- Host ----

void MainWindow::Yield() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}
void MainWindow::Sleep5ms() {
    QThread::msleep(5);
}
void MainWindow::SleepMs(int ms) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(5);
    }
}

double MainWindow::SecondsSinceMidnight() {
    return QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
}

double MainWindow::MonotonicSeconds() {
    static QElapsedTimer clock = [] {
        QElapsedTimer t;
        t.start();
        return t;
    }();
    return clock.nsecsElapsed() / 1e9;
}

LocalDateTime MainWindow::Now() {
    const QDateTime now = QDateTime::currentDateTime();
    return {now.date().year(), now.date().month(),  now.date().day(),
            now.time().hour(), now.time().minute(), now.time().second()};
}

void MainWindow::RefreshViews(int viewBits) {
    if (viewBits & kViewRegisters) ekran();
    if (viewBits & kViewCommands) UpdateCommands();
    if (viewBits & (kViewMemoryEditors | kViewVideoScreen | kViewPortsEditor))
        memoryViews_->Refresh(viewBits);
}

void MainWindow::SetUltimateTimer(int intervalMs) {
    if (intervalMs > 0)
        ultimateTimer_.start(intervalMs);
    else
        ultimateTimer_.stop();
}

int MainWindow::AskInValue(const std::string& caption, const std::string& prompt) {
    if (inValueAnswer) return inValueAnswer(prompt);
    ByteEntryDialog dialog(ByteEntryDialog::Kind::InInstruction, QString::fromStdString(caption),
                           QString::fromStdString(prompt), settings_, this);
    dialog.switchToStepByStep = [this] {
        rc_->menuspeed1();
        UpdateCommands();
    };
    // The question has no way out: it is asked until a byte is given.
    while (dialog.exec() != QDialog::Accepted || dialog.value < 0) {
    }
    return dialog.value;
}

bool MainWindow::AskText(const std::string& prompt, const std::string& proposed,
                         std::string& answer) {
    if (textAnswer) {
        const auto a = textAnswer(prompt);
        if (!a) return false;
        answer = *a;
        return true;
    }
    const auto text =
        AskTextLine(this, kTitle, QString::fromStdString(prompt), QString::fromStdString(proposed));
    if (!text) return false;
    answer = text->toStdString();
    return true;
}

void MainWindow::ShowMessage(const std::string& text) {
    messages.push_back(text);
    if (QApplication::platformName() == "offscreen") return;
    if (settings_.GetSettingText("Show Confirmations", "OFF") == "ON") {
        if (messageShowing_) return;
        messageShowing_ = true;
        QMessageBox::information(this, kTitle, QString::fromStdString(text));
        messageShowing_ = false;
        return;
    }
    // The Confirmation window: not modal, gone after "Messages Duration".
    auto* box = new QMessageBox(QMessageBox::Information, kTitle, QString::fromStdString(text),
                                QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setModal(false);
    box->show();
    const int seconds = std::clamp(settings_.GetSettingInt("Messages Duration", 3), 1, 10);
    QTimer::singleShot(seconds * 1000, box, &QWidget::close);
}

void MainWindow::ShowFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    auto* viewer = new QDialog(this);
    viewer->setAttribute(Qt::WA_DeleteOnClose);
    viewer->setWindowTitle(QString::fromStdString(path));
    auto* edit =
        new QPlainTextEdit(QString::fromLatin1(text.data(), static_cast<int>(text.size())), viewer);
    edit->setReadOnly(true);
    edit->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* layout = new QVBoxLayout(viewer);
    layout->addWidget(edit);
    viewer->resize(900, 600);
    viewer->show();
}

// ---- ImageHost ----

std::string MainWindow::AskOpenFile(const std::string& folder, int& filterIndex) {
    if (fileAnswer) return fileAnswer(false);
    const QStringList filters = {tr("Object files (*.obj)"), tr("Intel HEX files (*.hex)"),
                                 tr("All files (*)")};
    QString selected = filters.value(filterIndex - 1, filters[0]);
    const QString path = QFileDialog::getOpenFileName(this, kTitle, QString::fromStdString(folder),
                                                      filters.join(";;"), &selected);
    filterIndex = static_cast<int>(filters.indexOf(selected)) + 1;
    return path.toStdString();
}

std::string MainWindow::AskSaveFile(const std::string& folder, int& filterIndex) {
    if (fileAnswer) return fileAnswer(true);
    const QStringList filters = {tr("Object files (*.obj)"), tr("Intel HEX files (*.hex)")};
    QString selected = filters.value(filterIndex - 1, filters[0]);
    const QString path = QFileDialog::getSaveFileName(this, kTitle, QString::fromStdString(folder),
                                                      filters.join(";;"), &selected,
                                                      QFileDialog::DontConfirmOverwrite);
    filterIndex = static_cast<int>(filters.indexOf(selected)) + 1;
    return path.toStdString();
}

bool MainWindow::AskYesNo(const std::string& question) {
    if (textAnswer) return textAnswer(question).has_value();
    return QMessageBox::question(this, kTitle, QString::fromStdString(question)) ==
           QMessageBox::Yes;
}

std::optional<std::string> MainWindow::AskText(const std::string& prompt,
                                               const std::string& offered) {
    std::string answer;
    if (!AskText(prompt, offered, answer)) return std::nullopt;
    return answer;
}

void MainWindow::ProgramLoaded(const std::string& path) {
    recent_.Add(path);
    if (fileMenu_) RebuildRecentMenu();
    m_->NextInstructionText = InstructionTextAt(*m_, m_->PC);
    ekran();
}

void MainWindow::MemoryCleared() {
    memoryViews_->RedrawAll();
    ekran();
}

void MainWindow::RefreshMemoryViews() {
    memoryViews_->RedrawAll();
}

bool MainWindow::WriteTest(const std::string& folder) {
    const QString path = QString::fromStdString(folder) + "/corvalent_write_test.txt";
    QFile probe(path);
    if (probe.open(QIODevice::WriteOnly) && probe.remove()) return true;
    ShowMessage("The current user does not have write permissions for this folder...\n" + folder);
    return false;
}

void MainWindow::menuregistry() {
    if (!AskYesNo(
            "This command will delete all application registry settings, restoring the state of "
            "the first "
            "application start.\nAlso, the application will be closed.\nDo you want to proceed?"))
        return;
    if (!settings_.DeleteAllSettings()) {
        ShowMessage("The action was not successful.");
        return;
    }
    QCoreApplication::exit(0);
}

void MainWindow::menuregistry2() {
    if (!AskYesNo("This command will delete internal application registry settings related to "
                  "window layouts.\n"
                  "It is needed for windows affected with the Resize Windows feature to see the "
                  "correct window "
                  "layout if it has been updated with the new software release.\nAll application "
                  "settings will "
                  "be preserved.\nAlso, the application will be closed.\nDo you want to proceed?"))
        return;
    const int removed = settings_.DeleteLayoutSettings();
    ShowMessage(removed > 0 ? "Window layout settings deleted (for " + std::to_string(removed) +
                                  " windows)."
                            : "Window layout settings not found.");
    QCoreApplication::exit(0);
}

// The recent files stand between two separators of the File menu.
void MainWindow::RebuildRecentMenu() {
    for (QAction* a : recentActions_) {
        fileMenu_->removeAction(a);
        a->deleteLater();
    }
    recentActions_.clear();
    if (settings_.GetSettingInt("Show Recent Files - Simulator", 1) != 1) return;
    const std::vector<std::string> paths = recent_.Read();
    for (int i = 0; i < static_cast<int>(paths.size()); ++i) {
        auto* a = new QAction(QString::fromStdString(recent_.Caption(i, paths[i])), fileMenu_);
        const std::string path = paths[i];
        connect(a, &QAction::triggered, this, [this, path] { OpenRecent(path); });
        recentActions_.push_back(a);
    }
    if (paths.empty()) {
        auto* none = new QAction("<empty>", fileMenu_);
        none->setEnabled(false);
        recentActions_.push_back(none);
    }
    fileMenu_->insertActions(recentEnd_, {recentActions_.begin(), recentActions_.end()});
}

void MainWindow::OpenRecent(const std::string& path) {
    if (rc_->SimulationRunning) {
        ShowMessage("Please stop the simulation first.");
        return;
    }
    if (!QFileInfo::exists(QString::fromStdString(path))) {
        ShowMessage("The file with the path:\n" + path + "\ncould not be found...");
        RebuildRecentMenu();
        return;
    }
    settings_.SetSettingText("Auto Start Hex File", path);
    images_->ClearMemory();
    images_->LoadProgram(path);
    UpdateCommands();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (rc_->SimulationRunning && rc_->RunLoopActive) {
        // Closing is a source of StopRequest: the loop leaves, then we close.
        m_->StopRequest = true;
        closing_ = true;
        event->ignore();
        QTimer::singleShot(0, this, [this] {
            if (rc_->RunLoopActive)
                QTimer::singleShot(10, this, [this] { close(); });
            else
                close();
        });
        return;
    }
    if (rc_->SimulationRunning) rc_->menustop();
    memoryViews_->CloseAll();
    if (logViewer_) logViewer_->close();
    SaveWindowPlace(*this, settings_, 1);
    ultimateTimer_.stop();
    event->accept();
}

}  // namespace mb
