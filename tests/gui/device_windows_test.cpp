// The Peripheral Devices window and the two Input/Output Terminal windows in
// the IDE: devices turned on through their buttons, programs run at the
// Ultimate rate, and what the lamps, the output text and the terminal screens
// show; keys typed into a terminal while its firmware runs.
#include "shell/device_windows.h"

#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QtTest>
#include <deque>

#include "core/access.h"
#include "ide_fixture.h"

using namespace mb;

Q_DECLARE_METATYPE(mb::TerminalKind)

class DeviceWindowsTest : public QObject, protected testing::IdeFixture {
    Q_OBJECT

  private:
    DeviceWindows& devices() { return window->deviceWindows(); }
    PeripheralDevicesWindow* OpenDevices() {
        Trigger("Peripheral Devices");
        PeripheralDevicesWindow* w = devices().peripheralDevicesWindow();
        if (w) {
            w->ask = [this](const QString&, const QString&) {
                return std::optional<QString>(answers.empty() ? QString() : answers.front());
            };
            w->askByte = [this](const QString&) { return byteAnswer; };
        }
        return w;
    }
    // Turns device k on at `port` through its OFF button.
    void TurnOn(PeripheralDevicesWindow* w, int k, const QString& port) {
        answers = {port};
        w->onButton(k)->click();
        answers.clear();
    }
    // Runs the loaded program at the Ultimate rate, and lets the windows redraw.
    void Run() {
        Trigger("Ultimate");
        Trigger("Start");
        QCoreApplication::processEvents();
    }
    static QString Lamps(PeripheralDevicesWindow* w, int k) {
        QString lit;
        for (int bit = 7; bit >= 0; --bit)
            lit += w->lamps(k)->LampColor(bit) == QColor(0x80, 0xFF, 0x80) ? '1' : '0';
        return lit;
    }
    bool Hooked(int bit) { return (window->machine().AccessHookMask & bit) != 0; }

    std::deque<QString> answers;
    int byteAnswer = -1;

  private slots:
    void init() {
        FreshSettings();
        settings->SetSettingInt("Prompt Before IN New", 0);
    }
    void cleanup() { window.reset(); }

    void lampsAndOutputTerminalShowAProgramsOutput() {
        Open();
        PeripheralDevicesWindow* w = OpenDevices();
        QVERIFY(w);
        QCOMPARE(w->windowTitle(), QString("Peripheral Devices"));
        QCOMPARE(w->onButton(1)->text(), QString("OFF"));
        QVERIFY(!w->clearOutputButton()->isVisible());
        TurnOn(w, 1, "1");
        TurnOn(w, kOutputTerminalDevice, "01");
        QCOMPARE(w->frame(1)->title(), QString("I/O port 01H"));
        QCOMPARE(w->onButton(1)->text(), QString("ON"));
        QVERIFY(w->clearOutputButton()->isVisible());
        QVERIFY(Hooked(kHookPortDevices));

        LoadExample("hello.obj");  // HELLO on port 01H
        Run();
        QCOMPARE(window->machine().HaltState, 1);
        QCOMPARE(w->outputView()->toPlainText(), QString("HELLO"));
        QCOMPARE(w->valueLabel(1)->text(), QString("4FH"));
        QCOMPARE(Lamps(w, 1), QString("01001111"));

        // A click on the leftmost lamp sets bit 7.
        QTest::mouseClick(w->lamps(1), Qt::LeftButton, {}, w->lamps(1)->LampRect(7).center());
        QCOMPARE(w->valueLabel(1)->text(), QString("CFH"));
        QCOMPARE(Lamps(w, 1), QString("11001111"));

        // Closed, the devices go on working; the window shows them when opened.
        w->close();
        QTest::qWait(0);
        QVERIFY(!devices().peripheralDevicesWindow());
        Run();
        w = OpenDevices();
        QCOMPARE(w->outputView()->toPlainText(), QString("HELLOHELLO"));
        QCOMPARE(w->valueLabel(1)->text(), QString("4FH"));
        w->clearOutputButton()->click();
        QCOMPARE(w->outputView()->toPlainText(), QString(""));
        QVERIFY(settings->GetSettingInt("Window5 Left", -1) >= 0);
    }

    void entriesAreCheckedAndKept() {
        Open();
        PeripheralDevicesWindow* w = OpenDevices();
        TurnOn(w, 2, "zz");
        QCOMPARE(window->messages.back(), std::string("Wrong entry."));
        QCOMPARE(w->onButton(2)->text(), QString("OFF"));
        QCOMPARE(w->frame(2)->title(), QString("I/O port"));

        TurnOn(w, kInputQueueDevice, "2");
        answers = {"1,,2"};
        w->SendToQueue(kQueueHex);
        QCOMPARE(window->messages.back(), std::string("Incorrect input!"));
        QCOMPARE(w->queueLabel()->text(), QString(""));
        answers = {"41, 42"};
        w->SendToQueue(kQueueHex);
        answers = {"a,b"};
        w->SendToQueue(kQueueString);
        QCOMPARE(w->queueLabel()->text(), QString("41H,42H,\"a,b\""));

        // Input mode while the IN prompt is on: chosen, with the warning.
        settings->SetSettingInt("Prompt Before IN New", 1);
        window->runControl().LoadSettings();
        TurnOn(w, 3, "10");
        w->inputButton(3)->click();
        QVERIFY(w->inputButton(3)->isChecked());
        QCOMPARE(window->messages.back(), std::string(kInputModeWarning));

        // The next start of the IDE finds the devices where they were.
        window.reset();
        Open();
        w = OpenDevices();
        QCOMPARE(w->frame(3)->title(), QString("I/O port 10H"));
        QVERIFY(w->inputButton(3)->isChecked());
        QCOMPARE(w->frame(kInputQueueDevice)->title(), QString("I/O port 02H"));
        QCOMPARE(w->queueLabel()->text(), QString(""));  // bytes are not kept
        QCOMPARE(w->onButton(2)->text(), QString("OFF"));
    }

    void aOneShotValueFeedsTheNextIn() {
        Open();
        PeripheralDevicesWindow* w = OpenDevices();
        TurnOn(w, 3, "10");
        w->inputButton(3)->click();
        byteAnswer = 0x5C;
        QTest::mouseClick(w->valueLabel(3), Qt::LeftButton);
        QCOMPARE(w->valueLabel(3)->text(), QString("5CH"));
        QCOMPARE(w->oneShotField(3)->text(), QString("Set\none-shot\nIN value"));
        byteAnswer = 0x77;
        QTest::mouseClick(w->oneShotField(3), Qt::LeftButton);
        QCOMPARE(w->oneShotField(3)->text(), QString("One-shot\nIN value:\n77H"));
        TurnOn(w, 4, "11");
        LoadBytes(
            QByteArray::fromHex("DB10"   // IN A,(10H)  the one-shot value
                                "D311"   // OUT (11H),A
                                "DB10"   // IN A,(10H)  the device's value
                                "3C"     // INC A
                                "D312"   // OUT (12H),A
                                "76"));  // HALT
        TurnOn(w, 1, "12");
        Run();
        QCOMPARE(w->valueLabel(4)->text(), QString("77H"));
        QCOMPARE(Lamps(w, 4), QString("01110111"));
        QCOMPARE(w->valueLabel(1)->text(), QString("5DH"));
        QCOMPARE(w->oneShotField(3)->text(), QString("Set\none-shot\nIN value"));
    }

    void terminalEchoesWhatIsTyped_data() {
        QTest::addColumn<TerminalKind>("kind");
        QTest::addColumn<QString>("program");
        QTest::newRow("ports") << TerminalKind::Port << "echo_port.obj";
        QTest::newRow("memory mapped") << TerminalKind::MemoryMapped << "echo_mm.obj";
    }
    void terminalEchoesWhatIsTyped() {
        QFETCH(TerminalKind, kind);
        QFETCH(QString, program);
        const int hook = kind == TerminalKind::Port ? kHookPortTerminal : kHookMemoryTerminal;
        Open();
        QVERIFY(!Hooked(hook));
        Trigger(TerminalTitle(kind));
        TerminalWindow* t = devices().terminalWindow(kind);
        QVERIFY(t);
        QCOMPARE(t->windowTitle(), QString(TerminalTitle(kind)));
        QVERIFY(Hooked(hook));
        QCOMPARE(t->dataLabel(true)->text(), QString(kind == TerminalKind::Port ? "FF" : "A001"));
        QCOMPARE(t->statusLabel(false)->text(),
                 QString(kind == TerminalKind::Port ? "FE,0" : "A000,0"));

        LoadExample(program.toLatin1().constData());
        window->runControl().InstructionLimit = 100'000'000;  // a safety net only
        // The keys are typed while the firmware runs: the run loop yields to
        // the event loop, where this timer waits.
        QTimer::singleShot(0, t, [t] {
            t->key('O')->click();
            t->key('K')->click();
            t->SetSmallLetters(true);
            t->key('K')->click();
            t->key(13)->click();
            t->key(3)->click();  // Ctrl+C: the firmware halts
        });
        Run();
        QCOMPARE(window->machine().HaltState, 1);
        QCOMPARE(t->screen()->toPlainText(), QString("Echo ready\nOKk\n"));
        QCOMPARE(t->receivedField()->text(), QString("$0A"));
        QCOMPARE(t->queueLabel()->text(), QString(""));
        QCOMPARE(t->key('K')->text(), QString("k"));

        // Typed before the start, the queue waits for the firmware.
        t->key(8)->click();  // "(back)"
        t->key(3)->click();
        QCOMPARE(t->queueLabel()->text(), QString("\"\b\x03\""));
        Run();
        // The echoed backspace took the line feed back; the CR still ends the line.
        QCOMPARE(t->screen()->toPlainText(), QString("Echo ready\nOKk\nEcho ready\n"));

        // Closed and opened again before the old window is gone: the new one
        // shows the screen as it was and takes the terminal's notices.
        t->close();
        QVERIFY(!Hooked(hook));
        Trigger(TerminalTitle(kind));
        TerminalWindow* again = devices().terminalWindow(kind);
        QVERIFY(again && again != t);
        QTest::qWait(0);
        QCOMPARE(devices().terminalWindow(kind), again);
        QVERIFY(Hooked(hook));
        QCOMPARE(again->screen()->toPlainText(), QString("Echo ready\nOKk\nEcho ready\n"));
        again->key('Z')->click();
        QCOMPARE(again->queueLabel()->text(), QString("\"z\""));  // small letters were kept

        again->close();
        QTest::qWait(0);
        QVERIFY(!devices().terminalWindow(kind));
        QVERIFY(!Hooked(hook));
        const int number = TerminalWindowNumber(kind);
        QVERIFY(settings->GetSettingInt("Window" + std::to_string(number) + " Left", -1) >= 0);
    }

    void terminalRegistersAreChangedAndStored() {
        Open();
        Trigger("Input/Output Terminal");
        TerminalWindow* t = devices().terminalWindow(TerminalKind::Port);
        std::vector<QString> prompts;
        t->ask = [&](const QString& prompt, const QString&) {
            prompts.push_back(prompt);
            std::optional<QString> answer;
            if (!answers.empty()) {
                answer = answers.front();
                answers.pop_front();
            }
            return answer;
        };
        answers = {"80", "6", "250"};
        t->ChangeRegister(true, true);
        QCOMPARE(prompts.size(), size_t{3});
        QCOMPARE(t->statusLabel(true)->text(), QString("80,6"));
        QCOMPARE(t->busyLabel()->text(), QString("250"));
        QCOMPARE(settings->GetSettingInt("IO Terminal2 Out Ctrl", -1), 0x80);
        QCOMPARE(settings->GetSettingInt("IO Terminal2 Out Busy Time", -1), 250);

        answers = {"81", "9", "1"};  // the bit is refused: no more questions
        prompts.clear();
        t->ChangeRegister(false, true);
        QCOMPARE(prompts.size(), size_t{2});
        QCOMPARE(window->messages.back(), std::string("Allowed range 0-7."));
        QCOMPARE(t->statusLabel(false)->text(), QString("81,0"));

        answers = {"100"};
        t->ChangeRegister(false, false);
        QCOMPARE(window->messages.back(), std::string("Allowed range 00h-FFh."));
        QCOMPARE(t->dataLabel(false)->text(), QString("FF"));

        t->ShowInfo();
        QCOMPARE(window->messages.back(), TerminalInfo(TerminalKind::Port));
        QVERIFY(window->messages.back().find("Receive Data Register Full") != std::string::npos);
    }
};

QTEST_MAIN(DeviceWindowsTest)
#include "device_windows_test.moc"
