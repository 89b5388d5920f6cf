// The main window and its tool windows as a user meets them: defaults, runs,
// registers, menus and options; tool windows in front of an always-on-top main
// window, inside the screen and answering the run keys; one instance a user.
#include "shell/main_window.h"

#include <Qsci/qsciscintilla.h>

#include <QCheckBox>
#include <QClipboard>
#include <QGroupBox>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>

#include "ide_fixture.h"
#include "shell/assembler_window.h"
#include "shell/device_windows.h"
#include "shell/ieee754_window.h"
#include "shell/memory_views.h"
#include "shell/options_dialogs.h"

using namespace mb;

class MainWindowTest : public QObject, protected testing::IdeFixture {
    Q_OBJECT

    static bool OnTop(const QWidget* w) {
        return w->windowFlags().testFlag(Qt::WindowStaysOnTopHint);
    }
    // Opens each tool window through its command.
    QList<QWidget*> OpenTools() {
        for (const char* command :
             {"Memory Editor", "Assembler", "IEEE 754 Conversion Tool", "Simulation Log Viewer",
              "I/O Ports Editor", "Peripheral Devices", "Input/Output Terminal (Memory Mapped)",
              "Input/Output Terminal"})
            Trigger(command);
        DeviceWindows& devices = window->deviceWindows();
        return {window->memoryViews().memoryEditor(1),
                window->assemblerWindow(),
                window->ieee754Window(),
                window->logViewerWindow(),
                window->memoryViews().portsEditor(),
                devices.peripheralDevicesWindow(),
                devices.terminalWindow(TerminalKind::MemoryMapped),
                devices.terminalWindow(TerminalKind::Port)};
    }

    QList<QAction*> FileMenu() { return window->menuBar()->actions().first()->menu()->actions(); }

  private slots:
    void init() {
        FreshSettings();
        Open();
    }

    // The run control's own defaults are written too (StartupSettings tests).
    void firstStartWritesDefaults() {
        QSettings raw(Path("settings.ini"), QSettings::IniFormat);
        QCOMPARE(raw.value("FF Power On Defaults").toString(), QString("ON"));
        QCOMPARE(raw.value("Simulation Rate Slow Delay").toInt(), 140);
        QCOMPARE(window->FieldText("A"), QString("FF"));
        QCOMPARE(window->FieldText("SP"), QString("FFFF"));
        QVERIFY(window->Action("Fast")->isChecked());
    }

    void runAtUltimateUntilHalt() {
        LoadExample("counter.obj");
        RunUltimate();
        QCOMPARE(window->machine().HaltState, 1);
        QCOMPARE(window->machine().InstructionCount, 2 + 1000 * 4 + 1);
        MB_VERIFY_STARTS(LastMessage(), "Total number of executed instructions is 4003.");
        QVERIFY(window->Action("Start")->isEnabled());
        QVERIFY(!window->Action("Stop")->isEnabled());
        QCOMPARE(window->FieldText("B"), QString("00"));
    }

    // One instruction a step; an NMI is carried out at once at Step By Step, and
    // RESET clears the counters.
    void stepByStepWithNmiAndReset() {
        LoadExample("hello.obj");
        StartStepping();
        QCOMPARE(window->machine().InstructionCount, 0);
        QVERIFY(window->Action("Step")->isEnabled());
        Trigger("Step");
        QCOMPARE(window->machine().InstructionCount, 1);
        QCOMPARE(window->FieldText("PC"), QString("0003"));
        QCOMPARE(window->FieldText("H"), QString("00"));
        Trigger("Step");
        window->runControl().Command1();  // NMI
        QCOMPARE(window->machine().PC, 0x66);
        QCOMPARE(window->machine().CurrentInstructionText, std::string("NMI"));
        window->runControl().Command3Press();
        window->runControl().Command3Release();
        QCOMPARE(window->machine().InstructionCount, 0);
        QCOMPARE(window->machine().PC, 0);
        QCOMPARE(window->machine().CurrentInstructionText, std::string("RESET"));
        Trigger("Stop");
        QVERIFY(window->Action("Start")->isEnabled());
    }

    // A double click opens an edit box over the field itself, with the value
    // selected; Enter takes the last digits typed, Esc leaves the register.
    void registersAreEditedInPlace() {
        struct Row {
            const char* field;
            const char* typed;
            Qt::Key key;
            const char* shown;
        };
        const Row rows[] = {
            {"A", "3c", Qt::Key_Return, "3C"},     {"A", "1FF", Qt::Key_Return, "FF"},
            {"B", "12", Qt::Key_Escape, "FF"},     {"FlagZ", "0", Qt::Key_Enter, "0"},
            {"FlagZ", "2", Qt::Key_Return, "0"},   {"PC", "12345", Qt::Key_Return, "2345"},
            {"SP", "xyz", Qt::Key_Return, "FFFF"}, {"B'", "7", Qt::Key_Return, "07"},
        };
        for (const Row& row : rows) {
            RegisterField* field = window->Field(row.field);
            QVERIFY(field);
            const QString before = field->text();
            QTest::mouseDClick(field, Qt::LeftButton);
            QLineEdit* box = field->editor();
            QVERIFY2(box && box->isVisible(), row.field);
            QCOMPARE(box->parentWidget(), field);
            QCOMPARE(box->geometry(), field->rect());
            QCOMPARE(box->selectedText(), before);
            QVERIFY(!QApplication::activeModalWidget());
            QTest::keyClicks(box, row.typed);
            QTest::keyClick(box, row.key);
            QTRY_VERIFY(!field->editor());
            QCOMPARE(field->text(), QString(row.shown));
        }
        QCOMPARE(window->machine().A, 0xFF);
        QCOMPARE(window->machine().PC, 0x2345);
        QCOMPARE(window->machine().AltB, 7);
    }

    // While the machine runs at a rate other than Step By Step a double click
    // does nothing.
    void noRegisterEditWhileRunningFast() {
        LoadExample("counter.obj");
        Trigger("Fast");
        bool opened = true;
        QTimer::singleShot(150, this, [&] {
            QTest::mouseDClick(window->Field("A"), Qt::LeftButton);
            opened = window->Field("A")->editor() != nullptr;
            Trigger("Stop");
        });
        Trigger("Start");
        QVERIFY(!opened);
    }

    // The program line shows the file name whole, however long the folder.
    void programFieldShowsTheWholeFileName() {
        const QString folder = dir.filePath(
            "a folder with a rather long name for a program/and another one below it/and a third");
        QVERIFY(QDir().mkpath(folder));
        const QString path = folder + "/counter-program-with-a-long-name.obj";
        QVERIFY(QFile::copy(QString(MB_EXAMPLES) + "/counter.obj", path));
        LoadFile(path.toStdString());
        PathLabel* field = window->programField();
        // The window widens for the name as its layout settles.
        QTRY_VERIFY2(field->DisplayedText().endsWith("/counter-program-with-a-long-name.obj"),
                     qPrintable(field->DisplayedText()));
        const QString shown = field->DisplayedText();
        QVERIFY2(shown.contains(QChar(0x2026)), qPrintable(shown));  // the folder is shortened
        QVERIFY(field->fontMetrics().horizontalAdvance(shown) <= field->contentsRect().width());
        QCOMPARE(field->toolTip(), path);
    }

    void recentFilesInTheFileMenu() {
        QVERIFY(window->Action("Clear Recent Files List"));
        auto captions = [this] {
            QStringList out;
            for (QAction* a : FileMenu()) out << a->text();
            return out;
        };
        QVERIFY(captions().contains("<empty>"));
        LoadExample("hello.obj");
        LoadExample("counter.obj");
        const QStringList now = captions();
        QVERIFY(!now.contains("<empty>"));
        const int first = now.indexOf(QString("1: ") + MB_EXAMPLES + "/counter.obj");
        QVERIFY2(first >= 0, qPrintable(now.join("|")));
        QCOMPARE(now.at(first + 1), QString("2: ") + MB_EXAMPLES + "/hello.obj");
        Trigger("Clear Recent Files List");
        QVERIFY(captions().contains("<empty>"));
    }

    void inPromptIsAnsweredThroughTheWindow() {
        LoadBytes(QByteArray("\xDB\x05\x76", 3));  // IN A,(05H); HALT
        std::string asked;
        window->inValueAnswer = [&asked](const std::string& prompt) {
            asked = prompt;
            return 0x5A;
        };
        StartStepping(1);
        QCOMPARE(asked, std::string("Enter data received on port 05H [00-FF]."));
        QCOMPARE(window->machine().A, 0x5A);
        QCOMPARE(window->FieldText("A"), QString("5A"));
        Trigger("Stop");
    }

    void closingDuringARunStopsIt() {
        LoadExample("counter.obj");
        Trigger("Slow");
        QTimer::singleShot(300, window.get(), [this] { window->close(); });
        Trigger("Start");  // returns when the run loop has left
        QTRY_VERIFY(!window->isVisible());
        QVERIFY(!window->runControl().SimulationRunning);
        QVERIFY(window->machine().InstructionCount < 10);
    }

    // Both arrangements fill their window, and each comes back at its size.
    void registersArrangementFillsTheWindowAndComesBack() {
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        auto filled = [this] {
            QWidget* central = window->centralWidget();
            QRect used;
            for (QWidget* w : central->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
                used |= w->geometry();
            return used.width() >= central->width() * 9 / 10 &&
                   used.height() >= central->height() * 9 / 10;
        };
        QVERIFY(filled());
        const QSize column = window->size();
        auto box = [this](const char* title) {
            for (QGroupBox* b : window->findChildren<QGroupBox*>())
                if (b->title() == title) return b->geometry();
            return QRect();
        };
        Trigger("Change Registers Arrangement");
        QCOMPARE(settings->GetSettingInt("Arrange Mode", 0), 1);
        QVERIFY(filled());
        // Two columns: the 16-bit registers beside the registers.
        QVERIFY(box("Interrupts and 16-bit registers").left() > box("Registers").right());
        QVERIFY(window->height() < column.height());
        Trigger("Change Registers Arrangement");
        QCOMPARE(settings->GetSettingInt("Arrange Mode", 0), 0);
        QCOMPARE(window->size(), column);
        QVERIFY(filled());
    }

    void ieee754ToolConvertsAndCopies() {
        Trigger("IEEE 754 Conversion Tool");
        Ieee754Window* tool = window->ieee754Window();
        QVERIFY(tool);
        tool->ask = [](const QString&, const QString&) { return std::optional<QString>("0.1"); };
        for (QPushButton* b : tool->findChildren<QPushButton*>())
            if (b->text().startsWith("Four-byte")) b->click();
        QCOMPARE(tool->FieldText(0), QString("0.1"));
        QCOMPARE(tool->FieldText(2), QString("3D CC CC CD"));
        tool->CopyField(2);
        QCOMPARE(QApplication::clipboard()->text(), QString("3D CC CC CD"));
        QCOMPARE(LastMessage(), "Copied to clipboard.");
        tool->ConvertBack("C0 20 00 00");
        QCOMPARE(LastMessage(), "The exact represented real number is: -2.5");
        tool->ConvertBack("nonsense");  // nothing new to show
        QCOMPARE(LastMessage(), "The exact represented real number is: -2.5");
    }

    // Every way of loading starts the machine afresh at the new program: PC and
    // Next instruction show it at once, not the program that ran before.
    void everyLoadShowsTheNewProgram() {
        WriteFile("prog.asm", "\tORG 0\n\tLD A,7\n\tHALT\n");
        const std::string counter = std::string(MB_EXAMPLES) + "/counter.obj";
        const std::pair<const char*, std::function<void()>> loads[] = {
            {"Load Program", [&] { LoadFile(counter); }},
            {"Reload", [&] { Trigger("Reload"); }},
            {"recent file",
             [&] {
                 for (QAction* a : FileMenu())
                     if (a->text().startsWith("1: ")) a->trigger();
             }},
            {"Assemble & Load",
             [&] {
                 Trigger("Assembler");
                 AssemblerWindow* editor = window->assemblerWindow();
                 editor->questionAnswer = [](const std::string&) { return 0; };
                 QVERIFY(editor->OpenFile(Path("prog.asm")));
                 editor->Action("Assemble && Load")->trigger();
             }},
        };
        for (const auto& [how, load] : loads) {
            LoadExample("hello.obj");
            RunUltimate();
            QVERIFY(window->machine().PC != 0);
            load();
            QVERIFY2(window->FieldText("PC") == "0000", how);
            const QString next = window->findChild<QLabel*>("qinstrukcijanext")->text();
            QCOMPARE(next, QString::fromStdString(InstructionTextAt(window->machine(), 0)));
            QVERIFY2(!next.isEmpty(), how);
            QVERIFY2(window->findChild<QLabel*>("qinstrukcija")->text().isEmpty(), how);
        }
    }

    // The file dialogs carry the caption of their command.
    void fileDialogsAreTitledByTheirCommand() {
        LoadExample("hello.obj");
        for (const char* command : {"Load Program", "Load Another Program File", "Save Memory"}) {
            QString title;
            QTimer::singleShot(200, this, [&title] {
                QWidget* dialog = QApplication::activeModalWidget();
                if (!dialog) return;
                title = dialog->windowTitle();
                static_cast<QDialog*>(dialog)->reject();
            });
            Trigger(command);
            QCOMPARE(title, QString(command));
        }
    }

    // The options of the menu are stored as their settings want them.
    void optionsAreStored() {
        const struct {
            const char* caption;
            const char* key;
            const char* off;
        } toggles[] = {{"Show Pop-up Info Message Boxes", "Show Confirmations", "ON"},
                       {"Save Positions", "Save Positions", "OFF"}};
        for (const auto& t : toggles) {
            Trigger(t.caption);
            QCOMPARE(settings->GetSettingText(t.key, "?"), std::string(t.off));
        }
        Trigger("Refresh Breakpoints Manager");
        QCOMPARE(settings->GetSettingInt("Refresh Breakpoints Manager New", -1), 0);
        QVERIFY(window->Action("Refresh Breakpoints Manager")->toolTip().contains("not have"));

        QTimer::singleShot(0, this, [] {
            auto* misc = qobject_cast<MiscOptionsDialog*>(QApplication::activeModalWidget());
            QVERIFY(misc);
            QCOMPARE(misc->delay(0)->value(), 700);
            QCOMPARE(misc->delay(1)->value(), 120);
            QCOMPARE(misc->delay(2)->value(), 25);
            misc->delay(0)->setValue(502);
            misc->relativeHex()->setChecked(true);
            misc->accept();
        });
        Trigger("Miscellaneous Options");
        QCOMPARE(settings->GetSettingInt("Simulation Rate Slow Delay", 0), 100);
        QCOMPARE(settings->GetSettingInt("Display Relative Branch Hex Argument", 0), 1);
        QCOMPARE(window->machine().RelativeBranchHex, 1);
    }

    // While the main window stays on top its tool windows stand with it, in
    // front; "Save Always On Top" turns both off, and is kept. At their first
    // opening they leave the main window's menus in reach, with room for a
    // title bar of 30 pixels.
    void toolWindowsStandWithAnAlwaysOnTopMainWindow() {
        QVERIFY(OnTop(window.get()));
        QWidget* bar = window->menuBar();
        const QPoint barEnd = bar->mapToGlobal(QPoint(bar->width() - 1, bar->height()));
        const QList<QWidget*> tools = OpenTools();
        for (QWidget* tool : tools) {
            QVERIFY2(tool && tool->isVisible(), tool ? qPrintable(tool->windowTitle()) : "");
            QVERIFY2(OnTop(tool), qPrintable(tool->windowTitle()));
            QVERIFY2(
                tool->geometry().left() > barEnd.x() || tool->geometry().top() > barEnd.y() + 30,
                qPrintable(tool->windowTitle()));
        }
        // The first Memory Editor stays on top by its own choice.
        window->memoryViews().memoryEditor(1)->findChild<QCheckBox*>("onTop")->setChecked(true);

        Trigger("Save Always On Top");
        QCOMPARE(settings->GetSettingText("Save Always On Top", "?"), std::string("0"));
        QVERIFY(!OnTop(window.get()));
        QVERIFY(window->isVisible());
        for (QWidget* tool : tools) {
            QVERIFY2(tool->isVisible(), qPrintable(tool->windowTitle()));
            QCOMPARE(OnTop(tool), tool == window->memoryViews().memoryEditor(1));
        }

        Trigger("Save Always On Top");
        QCOMPARE(settings->GetSettingText("Save Always On Top", "?"), std::string("1"));
        for (QWidget* tool : tools) QVERIFY(OnTop(tool));
    }

    // A window kept far outside the screen, or above it, opens where it can be
    // seen.
    void windowsOpenInsideTheScreen() {
        const std::pair<const char*, int> places[] = {
            {"Window1 Left", 300000}, {"Window1 Top", -5},       {"Window2 Left", 250000},
            {"Window2 Top", 180000},  {"Window17 Left", -40},    {"Window17 Top", 90000},
            {"Window13 Top", 500000}, {"Window26 Left", 400000}, {"Window20 Top", 400000}};
        window.reset();
        for (const auto& [key, value] : places) settings->SetSettingInt(key, value);
        Open();
        QList<QWidget*> windows = OpenTools();
        windows << window.get();
        const QRect screen = window->screen()->availableGeometry();
        for (QWidget* w : windows) {
            const QRect place(w->pos(), w->size());
            QVERIFY2(screen.contains(place.topLeft()) && place.right() <= screen.right(),
                     qPrintable(w->windowTitle()));
            QVERIFY2(place.bottom() <= screen.bottom() || place.top() == screen.top(),
                     qPrintable(w->windowTitle()));
        }
    }

    // F5 starts, F8 steps and Shift+F5 stops from any window of the system.
    void runKeysWorkInEveryWindow() {
        LoadExample("hello.obj");
        Trigger("Step By Step");
        const QList<QWidget*> tools = OpenTools();
        for (QWidget* tool : tools) {
            QWidget* target = tool == window->assemblerWindow()
                                  ? window->assemblerWindow()->sourceEditor()
                                  : tool;
            tool->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(tool));
            QTest::keyClick(target, Qt::Key_F5);
            QVERIFY2(window->runControl().SimulationRunning, qPrintable(tool->windowTitle()));
            QTest::keyClick(target, Qt::Key_F8);
            QTest::keyClick(target, Qt::Key_F8);
            QCOMPARE(window->machine().InstructionCount, 2);
            QTest::keyClick(target, Qt::Key_F5, Qt::ShiftModifier);
            QVERIFY2(!window->runControl().SimulationRunning, qPrintable(tool->windowTitle()));
        }
    }

    // A second start for the same user ends at once and leaves the first running.
    void secondStartEndsSilently() {
        QTemporaryDir home;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("QT_QPA_PLATFORM", "offscreen");
        for (const char* name : {"HOME", "XDG_RUNTIME_DIR"}) env.insert(name, home.path());
        env.insert("XDG_DATA_HOME", home.filePath("data"));
        env.insert("XDG_CONFIG_HOME", home.filePath("config"));
        QProcess first, second;
        for (QProcess* ide : {&first, &second}) ide->setProcessEnvironment(env);
        first.start(MB_IDE, {});
        QVERIFY(first.waitForStarted());
        QTest::qWait(2500);  // past the start-up picture, holding the lock
        QCOMPARE(first.state(), QProcess::Running);
        second.start(MB_IDE, {});
        QVERIFY(second.waitForFinished(5000));
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(first.state(), QProcess::Running);

        first.kill();
        first.waitForFinished();
    }
};

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
