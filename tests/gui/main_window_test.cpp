#include "shell/main_window.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QGroupBox>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include "ide_fixture.h"
#include "shell/assembler_window.h"
#include "shell/ieee754_window.h"
#include "shell/options_dialogs.h"
#include "shell/qt_settings_store.h"

using namespace mb;

class MainWindowTest : public QObject, protected testing::IdeFixture {
    Q_OBJECT

  private:
  private slots:
    void init() { FreshSettings(); }
    void cleanup() { window.reset(); }

    void firstStartWritesDefaults() {
        Open();
        QSettings raw(dir.filePath("settings.ini"), QSettings::IniFormat);
        QCOMPARE(raw.value("Simulation Rate").toString(), QString("4"));
        QCOMPARE(raw.value("HALT Stops Simulation New").toInt(), 1);
        QCOMPARE(raw.value("FF Power On Defaults").toString(), QString("ON"));
        QCOMPARE(raw.value("Simulation Rate Slow Delay").toInt(), 140);
        QCOMPARE(window->FieldText("A"), QString("FF"));
        QCOMPARE(window->FieldText("SP"), QString("FFFF"));
        QVERIFY(window->Action("Fast")->isChecked());
    }

    void runAtUltimateUntilHalt() {
        Open();
        LoadExample("counter.obj");
        QVERIFY(window->messages.back().rfind("Operation completed.", 0) == 0);
        Trigger("Ultimate");
        Trigger("Start");
        QCOMPARE(window->machine().HaltState, 1);
        QCOMPARE(window->machine().InstructionCount, 2 + 1000 * 4 + 1);
        const std::string& stats = window->messages.back();
        QVERIFY2(stats.rfind("Total number of executed instructions is 4003.", 0) == 0,
                 stats.c_str());
        QVERIFY(stats.find("clock cycles or") != std::string::npos);
        QVERIFY(window->Action("Start")->isEnabled());
        QVERIFY(!window->Action("Stop")->isEnabled());
        QCOMPARE(window->FieldText("B"), QString("00"));
    }

    void stepByStep() {
        Open();
        LoadExample("hello.obj");
        Trigger("Step By Step");
        Trigger("Start");
        QCOMPARE(window->machine().InstructionCount, 0);
        QVERIFY(window->Action("Step")->isEnabled());
        Trigger("Step");
        QCOMPARE(window->machine().InstructionCount, 1);
        QCOMPARE(window->FieldText("PC"), QString("0003"));
        QCOMPARE(window->FieldText("H"), QString("00"));
        Trigger("Stop");
        QVERIFY(window->Action("Start")->isEnabled());
    }

    // A double click opens an edit box over the field itself, with the value
    // selected; Enter takes the last digits typed, Esc leaves the register.
    void registersAreEditedInPlace() {
        Open();
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
        Open();
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
        Open();
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
        Open();
        QVERIFY(window->Action("Clear Recent Files List"));
        auto captions = [this] {
            QStringList out;
            for (QAction* a : window->menuBar()->actions().first()->menu()->actions())
                if (!a->isSeparator()) out << a->text();
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
        Open();
        QFile program(dir.filePath("in.obj"));
        QVERIFY(program.open(QIODevice::WriteOnly));
        program.write(QByteArray("\xDB\x05\x76", 3));  // IN A,(05H); HALT
        program.close();
        const std::string path = dir.filePath("in.obj").toStdString();
        window->fileAnswer = [path](bool) { return path; };
        Trigger("Load Program");
        std::string asked;
        window->inValueAnswer = [&asked](const std::string& prompt) {
            asked = prompt;
            return 0x5A;
        };
        Trigger("Step By Step");
        Trigger("Start");
        Trigger("Step");
        QCOMPARE(asked, std::string("Enter data received on port 05H [00-FF]."));
        QCOMPARE(window->machine().A, 0x5A);
        QCOMPARE(window->FieldText("A"), QString("5A"));
        Trigger("Stop");
    }

    void closingDuringARunStopsIt() {
        Open();
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
        Open();
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
        Open();
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
        QCOMPARE(window->messages.back(), std::string("Copied to clipboard."));
        tool->ConvertBack("C0 20 00 00");
        QCOMPARE(window->messages.back(),
                 std::string("The exact represented real number is: -2.5"));
        tool->ConvertBack("nonsense");
        QCOMPARE(window->messages.back(),
                 std::string("The exact represented real number is: -2.5"));
    }

    void resetClearsCountersAndNmiJumpsTo66() {
        Open();
        LoadExample("hello.obj");
        Trigger("Step By Step");
        Trigger("Start");
        Trigger("Step");
        Trigger("Step");
        window->runControl().Command1();  // NMI, carried out at once at Step By Step
        QCOMPARE(window->machine().PC, 0x66);
        QCOMPARE(window->machine().CurrentInstructionText, std::string("NMI"));
        window->runControl().Command3Press();
        window->runControl().Command3Release();
        QCOMPARE(window->machine().InstructionCount, 0);
        QCOMPARE(window->machine().PC, 0);
        QCOMPARE(window->machine().CurrentInstructionText, std::string("RESET"));
        Trigger("Stop");
    }

    // Every way of loading starts the machine afresh at the new program: PC and
    // Next instruction show it at once, not the program that ran before.
    void everyLoadShowsTheNewProgram() {
        Open();
        const QString source = dir.filePath("prog.asm");
        QFile file(source);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("\tORG 0\n\tLD A,7\n\tHALT\n");
        file.close();
        const std::string counter = std::string(MB_EXAMPLES) + "/counter.obj";
        const std::pair<const char*, std::function<void()>> loads[] = {
            {"Load Program", [&] { LoadFile(counter); }},
            {"Reload", [&] { Trigger("Reload"); }},
            {"recent file",
             [&] {
                 for (QAction* a : window->menuBar()->actions().first()->menu()->actions())
                     if (a->text().startsWith("1: ")) a->trigger();
             }},
            {"Assemble & Load",
             [&] {
                 Trigger("Assembler");
                 AssemblerWindow* editor = window->assemblerWindow();
                 editor->questionAnswer = [](const std::string&) { return 0; };
                 QVERIFY(editor->OpenFile(source));
                 editor->Action("Assemble && Load")->trigger();
             }},
        };
        for (const auto& [how, load] : loads) {
            LoadExample("hello.obj");
            Trigger("Ultimate");
            Trigger("Start");  // runs to its HALT
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
        Open();
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
        Open();
        const struct {
            const char* caption;
            const char* key;
            const char* off;
        } toggles[] = {{"Save Always On Top", "Save Always On Top", "0"},
                       {"Show Pop-up Info Message Boxes", "Show Confirmations", "ON"},
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
};

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
