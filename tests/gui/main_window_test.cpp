#include "shell/main_window.h"

#include <QAction>
#include <QClipboard>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include "ide_fixture.h"
#include "shell/ieee754_window.h"
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

    void registerEdits() {
        Open();
        QVERIFY(window->EditRegister("A", "1FF"));
        QCOMPARE(window->machine().A, 0xFF);
        QVERIFY(window->EditRegister("A", "3c"));
        QCOMPARE(window->machine().A, 0x3C);
        QVERIFY(window->EditRegister("FlagZ", "0"));
        QCOMPARE(window->machine().FlagZ, 0);
        QVERIFY(!window->EditRegister("FlagZ", "2"));
        QCOMPARE(window->machine().FlagZ, 0);
        QVERIFY(window->EditRegister("PC", "12345"));
        QCOMPARE(window->machine().PC, 0x2345);
        QVERIFY(!window->EditRegister("SP", "xyz"));
        QCOMPARE(window->machine().SP, 0xFFFF);
        QVERIFY(window->EditRegister("B'", "7"));
        QCOMPARE(window->machine().AltB, 7);
        QCOMPARE(window->FieldText("B'"), QString("07"));
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

    void registersArrangementIsStored() {
        Open();
        Trigger("Change Registers Arrangement");
        QCOMPARE(settings->GetSettingInt("Arrange Mode", 0), 1);
        Trigger("Change Registers Arrangement");
        QCOMPARE(settings->GetSettingInt("Arrange Mode", 0), 0);
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
};

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
