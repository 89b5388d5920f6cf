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
#include "device_windows.h"
#include "entry_dialogs.h"
#include "ieee754_window.h"
#include "memory_views.h"
#include "options_dialogs.h"
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

MainWindow::MainWindow(SettingsStore& settings, QWidget* parent)
    : QMainWindow(parent),
      settings_(settings),
      m_(std::make_unique<Machine>()),
      recent_(settings, [](const std::string& path) {
          return QFileInfo::exists(QString::fromStdString(path));
      }) {
    hooks_.host = this;
    hooks_.log = &log_;
    messages_ = std::make_unique<Messages>(settings_, *this);
    rc_ = std::make_unique<RunControl>(*m_, *this, settings_, hooks_, log_);
    images_ = std::make_unique<ProgramImages>(*m_, settings_, *this);
    memoryViews_ = std::make_unique<MemoryViews>(
        *m_, hooks_, settings_, [this](const std::string& text) { ShowMessage(text); }, this);
    devices_ = std::make_unique<DeviceWindows>(
        *m_, hooks_, settings_, [this](const std::string& text) { ShowMessage(text); },
        [this](const std::string& text) { ShowReport(text); }, this);
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
    // The tool windows opened later stand with it (window_place.h).
    if (settings_.GetSettingText("Save Always On Top", "1") == "1")
        setWindowFlag(Qt::WindowStaysOnTopHint, true);
    // The main font and the colour theme before the window takes its size;
    // windows opened later get them from the appearance as they show.
    appearance_->ApplyTo(*this);
    ApplyArrangement();
    RestoreWindowPlace(*this, settings_, 1);
    ekran();
    UpdateCommands();
}

MainWindow::~MainWindow() = default;

// "Arrange Mode" 0 stacks the blocks in one column; 1 sets them in two: the
// registers and flags on the left, the rest on the right.
void MainWindow::ApplyArrangement() {
    const int mode = settings_.GetSettingInt("Arrange Mode", 0) == 1 ? 1 : 0;
    if (arrangement_ >= 0) arrangementSizes_[arrangement_] = size();
    QWidget* central = centralWidget();
    delete central->layout();  // the blocks stay, children of the central widget
    if (mode == 0) {
        auto* column = new QVBoxLayout(central);
        for (QWidget* block : blocks_) column->addWidget(block);
        column->addStretch();
    } else {
        auto* columns = new QHBoxLayout(central);
        auto* left = new QVBoxLayout;
        auto* right = new QVBoxLayout;
        for (size_t i = 0; i < blocks_.size(); ++i) (i < 2 ? left : right)->addWidget(blocks_[i]);
        left->addStretch();
        right->addStretch();
        columns->addLayout(left);
        columns->addLayout(right);
    }
    central->layout()->activate();
    layout()->invalidate();
    layout()->activate();
    const auto kept = arrangementSizes_.find(mode);
    const QSize want = kept != arrangementSizes_.end() ? kept->second : sizeHint();
    resize(want.expandedTo(minimumSizeHint()));
    arrangement_ = mode;
}

// The start-up table, read in its order; a read writes a missing default back.
void MainWindow::ReadStartupSettings() {
    mb::ReadStartupSettings(*m_, settings_, QDir::homePath().toStdString());
}

QWidget* MainWindow::BuildRegisterDisplay() {
    // Five blocks, which ApplyArrangement lays out: three groups of fields, the
    // instruction and program lines, the interrupt buttons.
    auto* central = new QWidget(this);
    // Each group has a grid of its own, so narrow fields stay narrow.
    auto group = [&](const QString& title) {
        auto* box = new QGroupBox(title, central);
        auto* grid = new QGridLayout(box);
        grid->setHorizontalSpacing(4);
        grid->setVerticalSpacing(2);
        blocks_.push_back(box);
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

    auto* infoBlock = new QWidget(central);
    auto* info = new QGridLayout(infoBlock);
    info->setContentsMargins(0, 0, 0, 0);
    info->setColumnStretch(1, 1);
    blocks_.push_back(infoBlock);
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
    current_->setObjectName("qinstrukcija");
    next_->setObjectName("qinstrukcijanext");
    info->addWidget(new QLabel(tr("Program:"), central), 4, 0);
    program_ = new PathLabel(central);
    program_->setObjectName("qprogram");
    info->addWidget(program_, 4, 1);

    auto* buttonBlock = new QWidget(central);
    auto* buttons = new QHBoxLayout(buttonBlock);
    buttons->setContentsMargins(0, 0, 0, 0);
    blocks_.push_back(buttonBlock);
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

    // The run commands answer their keys in every window of the system.
    QMenu* sim = menuBar()->addMenu(tr("&Simulation"));
    const std::pair<QAction*, QKeySequence> keys[] = {
        {add(sim, "Start", [this] { rc_->menustart(); }), QKeySequence(Qt::Key_F5)},
        {add(sim, "Step", [this] { rc_->menustep(); }), QKeySequence(Qt::Key_F8)},
        {add(sim, "Stop", [this] { rc_->menustop(); }), QKeySequence(Qt::SHIFT | Qt::Key_F5)}};
    for (const auto& [action, key] : keys) {
        action->setShortcut(key);
        action->setShortcutContext(Qt::ApplicationShortcut);
    }

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
    add(tools, "Peripheral Devices", [this] { devices_->OpenPeripheralDevices(); });
    add(tools, TerminalTitle(TerminalKind::MemoryMapped),
        [this] { devices_->OpenTerminal(TerminalKind::MemoryMapped); });
    add(tools, TerminalTitle(TerminalKind::Port),
        [this] { devices_->OpenTerminal(TerminalKind::Port); });
    add(tools, "Assembler", [this] { OpenAssembler(); });
    add(tools, "IEEE 754 Conversion Tool", [this] {
        if (!ieee754_) {
            ieee754_ = new Ieee754Window(
                settings_, [this](const std::string& text) { ShowMessage(text); }, this);
            ieee754_->setAttribute(Qt::WA_DeleteOnClose);
        }
        ShowToolWindow(*ieee754_);
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
        ShowToolWindow(*logViewer_);
    });

    // The commands of the Options menu that this version has, in their order.
    QMenu* options = menuBar()->addMenu(tr("&Options"));
    options->setToolTipsVisible(true);
    AddOption(options, "Enable Unofficial Instructions", "Enable Unofficial Instructions", 0);
    AddOption(options, "Enable Logging", "Enable Logging New", 0);
    AddOption(options, "HALT Stops Simulation", "HALT Stops Simulation New", 1);
    AddOption(options, "Infinite Loop Stops Simulation", "Infinite Loop Stop New", 0);
    AddTextOption(options, "FF Power On Defaults", "FF Power On Defaults", "ON");
    AddOption(options, "Refresh Memory Editor", "Refresh Memory Editor New", 1);
    AddOption(options, "Show ASCII Characters", "Show ASCII Characters", 1);
    AddOption(options, "Refresh Breakpoints Manager", "Refresh Breakpoints Manager New", 1);
    Action("Refresh Breakpoints Manager")
        ->setToolTip(tr("Kept for the Fast Debugger - Breakpoints Manager, which this version "
                        "does not have yet: the choice is stored and changes nothing now."));
    AddTextOption(options, "Save Positions", "Save Positions", "ON");
    AddTextOption(options, "Save Always On Top", "Save Always On Top", "1", "1", "0");
    AddTextOption(options, "Show Pop-up Info Message Boxes", "Show Confirmations", "OFF");
    add(options, "Configure Info Message Frames", [this] {
        InfoFramesDialog dialog(settings_, this);
        dialog.exec();
    });
    options->addSeparator();
    add(options, "Change Clock Frequency", [this] { rc_->ChangeClockFrequency(); });
    add(options, "Change Starting Address", [this] { rc_->ChangeStartingAddress(); });
    add(options, "Change Offset Address For OBJ Files Loading", [this] { rc_->ChangeObjOffset(); });
    AddOption(options, "Prompt For Value Before IN Instruction", "Prompt Before IN New", 1);
    AddOption(options, "Enable IN/OUT Instructions Logging", "Log IN And OUT New", 0);
    add(options, "Change Registers Arrangement", [this] {
        settings_.SetSettingInt("Arrange Mode",
                                settings_.GetSettingInt("Arrange Mode", 0) == 0 ? 1 : 0);
        ApplyArrangement();
    });
    add(options, "Change Ultimate Rate Refresh Interval",
        [this] { rc_->ChangeUltimateInterval(); });
    options->addSeparator();
    add(options, "Editor Setup", [this] { appearance_->menueditorsetup(this); });
    QAction* showRecent = options->addAction("Show Recent Files");
    showRecent->setCheckable(true);
    showRecent->setChecked(settings_.GetSettingInt("Show Recent Files - Simulator", 1) == 1);
    connect(showRecent, &QAction::toggled, this, [this](bool on) {
        settings_.SetSettingInt("Show Recent Files - Simulator", on ? 1 : 0);
        RebuildRecentMenu();
    });
    actions_["Show Recent Files"] = showRecent;
    add(options, "Change Color Theme", [this] { appearance_->menucolortheme(this); });
    add(options, "Change Main Font", [this] { appearance_->menumainfont(this); });
    options->addSeparator();
    add(options, "Clear App Registry Settings", [this] { menuregistry(); });
    add(options, "Reset Windows Layout Settings", [this] { menuregistry2(); });
    options->addSeparator();
    add(options, "Miscellaneous Options", [this] {
        MiscOptionsDialog dialog(settings_, this);
        if (dialog.exec() == QDialog::Accepted) ApplyOptions();
    });
}

AssemblerWindow* MainWindow::assemblerWindow() const {
    return assembler_;
}

void MainWindow::OpenAssembler() {
    if (!assembler_) {
        AssemblerWindowHooks hooks;
        hooks.message = [this](const std::string& text) { ShowMessage(text); };
        hooks.report = [this](const std::string& text) { ShowReport(text); };
        hooks.simulationRunning = [this] { return rc_->SimulationRunning != 0; };
        hooks.stopSimulation = [this] {
            rc_->menustop();
            UpdateCommands();
        };
        hooks.loadProgram = [this](const std::string& path) {
            const bool loaded = images_->LoadMainProgram(path);
            UpdateCommands();
            ekran();
            return loaded;
        };
        assembler_ = new AssemblerWindow(settings_, std::move(hooks), this);
        assembler_->setAttribute(Qt::WA_DeleteOnClose);
    }
    ShowToolWindow(*assembler_);
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

void MainWindow::AddTextOption(QMenu* menu, const QString& caption, const char* key,
                               const char* def, const char* on, const char* off) {
    QAction* a = menu->addAction(caption);
    a->setCheckable(true);
    a->setChecked(settings_.GetSettingText(key, def) == on);
    connect(a, &QAction::toggled, this, [this, key, on, off](bool checked) {
        settings_.SetSettingText(key, checked ? on : off);
        ApplyOptions();
    });
    actions_[caption] = a;
}

void MainWindow::ApplyOptions() {
    const bool onTop = settings_.GetSettingText("Save Always On Top", "1") == "1";
    if (onTop != windowFlags().testFlag(Qt::WindowStaysOnTopHint)) {
        SetStaysOnTop(*this, onTop);
        ApplyOnTopToOwned(*this);
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
    program_->SetPath(QString::fromStdString(images_->ProgramFileName()));
}

QString MainWindow::FieldText(const QString& name) const {
    auto it = fields_.find(name);
    return it == fields_.end() ? QString() : it->second->text();
}

RegisterField* MainWindow::Field(const QString& name) const {
    auto it = fields_.find(name);
    return it == fields_.end() ? nullptr : it->second;
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

// The value is edited in a box over its field, and taken on Enter.
void MainWindow::OnFieldEdit(RegisterField* field) {
    if (rc_->StopEnabled && m_->SimulationRate != kRateStepByStep) return;
    const QString name = field->Name();
    field->OpenEditor([this, name](const QString& text) { EditRegister(name, text); });
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
    if (viewBits & kViewDevices) devices_->Refresh();
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
    if (messages_) messages_->Show(QString::fromStdString(text), MessageKind::Notice);
}

void MainWindow::ShowReport(const std::string& text) {
    messages.push_back(text);
    if (messages_) messages_->Show(QString::fromStdString(text), MessageKind::Report);
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
    ShowToolWindow(*viewer);
}

// ---- ImageHost ----

std::string MainWindow::AskOpenFile(const std::string& title, const std::string& folder,
                                    int& filterIndex) {
    if (fileAnswer) return fileAnswer(false);
    const QStringList filters = {tr("Object files (*.obj)"), tr("Intel HEX files (*.hex)"),
                                 tr("All files (*)")};
    QString selected = filters.value(filterIndex - 1, filters[0]);
    const QString path =
        QFileDialog::getOpenFileName(this, QString::fromStdString(title),
                                     QString::fromStdString(folder), filters.join(";;"), &selected);
    filterIndex = static_cast<int>(filters.indexOf(selected)) + 1;
    return path.toStdString();
}

std::string MainWindow::AskSaveFile(const std::string& title, const std::string& folder,
                                    int& filterIndex) {
    if (fileAnswer) return fileAnswer(true);
    const QStringList filters = {tr("Object files (*.obj)"), tr("Intel HEX files (*.hex)")};
    QString selected = filters.value(filterIndex - 1, filters[0]);
    const QString path = QFileDialog::getSaveFileName(
        this, QString::fromStdString(title), QString::fromStdString(folder), filters.join(";;"),
        &selected, QFileDialog::DontConfirmOverwrite);
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
    ShowReport(removed > 0
                   ? "Window layout settings deleted (for " + std::to_string(removed) + " windows)."
                   : "Window layout settings not found.");
    // The program ends once the user has read the answer.
    if (QMessageBox* box = messages_->report())
        connect(box, &QObject::destroyed, qApp, [] { QCoreApplication::exit(0); });
    else
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
    images_->LoadMainProgram(path);
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
    devices_->CloseAll();
    if (logViewer_) logViewer_->close();
    SaveWindowPlace(*this, settings_, 1);
    ultimateTimer_.stop();
    event->accept();
}

}  // namespace mb
