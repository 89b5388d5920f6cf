// The windows on the data paths inside the IDE: the Memory Editors, the I/O
// Ports Editor and the Video Memory Screen, edited through their entry boxes
// and following a program at the Ultimate rate; the Peripheral Devices window
// and the two Input/Output Terminal windows, devices turned on through their
// buttons, what the lamps, the output text and the terminal screens show, keys
// typed into a terminal while its firmware runs; the entry dialogs they open.
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

#include "core/access.h"
#include "ide_fixture.h"
#include "settings/settings_store.h"
#include "shell/device_windows.h"
#include "shell/entry_dialogs.h"
#include "shell/memory_views.h"

using namespace mb;

Q_DECLARE_METATYPE(mb::TerminalKind)

class DataPathWindowsTest : public QObject, protected testing::IdeFixture {
    Q_OBJECT

  private:
    MemoryViews& views() { return window->memoryViews(); }
    // Clicks a cell of a grid and types into the entry box over it.
    static void Type(HexGrid* grid, int cell, const QString& keys) {
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier,
                          grid->CellRect(cell).center());
        QCOMPARE(grid->EntryCell(), cell);
        QVERIFY(grid->entryBox()->isVisible());
        QTest::keyClicks(grid->entryBox(), keys);
    }
    DeviceWindows& devices() { return window->deviceWindows(); }
    PeripheralDevicesWindow* OpenDevices() {
        Trigger("Peripheral Devices");
        PeripheralDevicesWindow* w = devices().peripheralDevicesWindow();
        if (w) w->ask = Answers();
        if (w) w->askByte = [this](const QString&) { return byteAnswer; };
        return w;
    }
    // Turns device k on at `port` through its OFF button.
    void TurnOn(PeripheralDevicesWindow* w, int k, const QString& port) {
        answers = {port};
        w->onButton(k)->click();
        QVERIFY(answers.empty());
    }
    // Runs the loaded program at the Ultimate rate, and lets the windows redraw.
    void Run() {
        RunUltimate();
        QCoreApplication::processEvents();
    }
    static QString Lamps(PeripheralDevicesWindow* w, int k) {
        QString lit;
        for (int bit = 7; bit >= 0; --bit)
            lit += w->lamps(k)->LampColor(bit) == QColor(0x80, 0xFF, 0x80) ? '1' : '0';
        return lit;
    }
    bool Hooked(int bit) { return (window->machine().AccessHookMask & bit) != 0; }

    int byteAnswer = -1;

  private slots:
    void init() {
        FreshSettings();
        settings->SetSettingInt("Prompt Before IN New", 0);
        Open();
    }

    void lampsAndOutputTerminalShowAProgramsOutput() {
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
        PeripheralDevicesWindow* w = OpenDevices();
        TurnOn(w, 2, "zz");
        QCOMPARE(LastMessage(), "Wrong entry.");
        QCOMPARE(w->onButton(2)->text(), QString("OFF"));
        QCOMPARE(w->frame(2)->title(), QString("I/O port"));

        TurnOn(w, kInputQueueDevice, "2");
        answers = {"1,,2"};
        w->SendToQueue(kQueueHex);
        QCOMPARE(LastMessage(), "Incorrect input!");
        QCOMPARE(w->queueLabel()->text(), QString(""));
        answers = {"41, 42", "a,b"};
        w->SendToQueue(kQueueHex);
        w->SendToQueue(kQueueString);
        QCOMPARE(w->queueLabel()->text(), QString("41H,42H,\"a,b\""));

        // Input mode while the IN prompt is on: chosen, with the warning.
        settings->SetSettingInt("Prompt Before IN New", 1);
        window->runControl().LoadSettings();
        TurnOn(w, 3, "10");
        w->inputButton(3)->click();
        QVERIFY(w->inputButton(3)->isChecked());
        QCOMPARE(LastMessage(), kInputModeWarning);

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
        QTest::newRow("ports") << TerminalKind::Port;
        QTest::newRow("memory mapped") << TerminalKind::MemoryMapped;
    }
    void terminalEchoesWhatIsTyped() {
        QFETCH(TerminalKind, kind);
        const bool port = kind == TerminalKind::Port;
        const int hook = port ? kHookPortTerminal : kHookMemoryTerminal;
        QVERIFY(!Hooked(hook));
        Trigger(TerminalTitle(kind));
        TerminalWindow* t = devices().terminalWindow(kind);
        QVERIFY(t);
        QCOMPARE(t->windowTitle(), QString(TerminalTitle(kind)));
        QVERIFY(Hooked(hook));
        QCOMPARE(t->dataLabel(true)->text(), QString(port ? "FF" : "A001"));
        QCOMPARE(t->statusLabel(false)->text(), QString(port ? "FE,0" : "A000,0"));

        LoadExample(port ? "echo_port.obj" : "echo_mm.obj");
        window->runControl().InstructionLimit = 100'000'000;  // a safety net only
        // The keys are typed while the firmware runs: the run loop yields to
        // the event loop, where this timer waits.
        QTimer::singleShot(0, t, [t] {
            t->key('O')->click();
            t->key('K')->click();
            t->SetSmallLetters(true);
            for (int key : {int{'K'}, 13, 3}) t->key(key)->click();  // Ctrl+C: the firmware halts
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
        QVERIFY(settings->GetSettingInt(
                    "Window" + std::to_string(TerminalWindowNumber(kind)) + " Left", -1) >= 0);
    }

    void terminalRegistersAreChangedAndStored() {
        Trigger("Input/Output Terminal");
        TerminalWindow* t = devices().terminalWindow(TerminalKind::Port);
        t->ask = Answers();
        answers = {"80", "6", "250"};
        t->ChangeRegister(true, true);
        QCOMPARE(prompts.size(), 3);
        QCOMPARE(t->statusLabel(true)->text(), QString("80,6"));
        QCOMPARE(t->busyLabel()->text(), QString("250"));
        QCOMPARE(settings->GetSettingInt("IO Terminal2 Out Ctrl", -1), 0x80);
        QCOMPARE(settings->GetSettingInt("IO Terminal2 Out Busy Time", -1), 250);

        answers = {"81", "9", "1"};  // the bit is refused: no more questions
        prompts.clear();
        t->ChangeRegister(false, true);
        QCOMPARE(prompts.size(), 2);
        QCOMPARE(LastMessage(), "Allowed range 0-7.");
        QCOMPARE(t->statusLabel(false)->text(), QString("81,0"));

        answers = {"100"};
        t->ChangeRegister(false, false);
        QCOMPARE(LastMessage(), "Allowed range 00h-FFh.");
        QCOMPARE(t->dataLabel(false)->text(), QString("FF"));

        t->ShowInfo();
        QCOMPARE(LastMessage(), TerminalInfo(TerminalKind::Port));
        MB_VERIFY_HAS(LastMessage(), "Receive Data Register Full");
    }

    void editsACellThroughTheEntryBox() {
        Trigger("Memory Editor");
        MemoryEditorWindow* editor = views().memoryEditor(1);
        QVERIFY(editor);
        QVERIFY(editor->isVisible());
        QCOMPARE(editor->windowTitle(), QString("Memory Editor"));
        HexGrid* grid = editor->grid();
        Type(grid, 0x12, "3c");
        QCOMPARE(window->machine().MemoryImage[0x12], 0x3C);
        QCOMPARE(grid->EntryCell(), 0x13);  // the box moved on
        QTest::keyClicks(grid->entryBox(), "xg7");
        QCOMPARE(grid->entryBox()->text(), QString("7"));
        QTest::keyClick(grid->entryBox(), Qt::Key_Return);
        QCOMPARE(window->machine().MemoryImage[0x13], 0x07);
        QCOMPARE(grid->EntryCell(), 0x14);
        QTest::keyClick(grid->entryBox(), Qt::Key_Escape);
        QCOMPARE(grid->EntryCell(), -1);
        QCOMPARE(window->machine().MemoryImage[0x14], 0);
        // The write went straight into memory, past the data path.
        QCOMPARE(window->machine().LastWriteAddress, -1);
    }

    void followsAProgramAtUltimate() {
        LoadBytes(
            QByteArray::fromHex("2100800600"  // LD HL,8000H; LD B,0
                                "7523"
                                "10FC"  // STORE: LD (HL),L; INC HL; DJNZ STORE
                                "210080"
                                "110090"
                                "010001"  // HL, DE, BC for LDIR
                                "EDB0"
                                "76"));  // LDIR; HALT
        Trigger("Memory Editor");
        MemoryEditorWindow* editor = views().memoryEditor(1);
        QVERIFY(editor);
        editor->ask = Answers();
        answers = {"8000", "80FF"};  // the first and the last address
        editor->ChangeRange();
        QCOMPARE(editor->RangeCaption(), QString("8000h-80FFh"));
        editor->SetOptimize(true);
        QCOMPARE(LastMessage(), kOptimizeText);
        QVERIFY(Hooked(kHookMemoryViews));

        RunUltimate();
        QCOMPARE(window->machine().HaltState, 1);
        QCOMPARE(window->machine().MemoryImage[0x90FF], 0xFF);
        // The last write inside the range was the fill's: only the write path
        // during the run can have put the pointer there, since the copy to
        // 9000H lies outside the range.
        QCOMPARE(editor->view().WritePointer(), 0x80FF);
        QCOMPARE(editor->view().TopRow(), 0x800);        // 8080H scrolled; 80FFH stood on the view
        QCOMPARE(editor->view().ReadPointer(), 0x80FF);  // LDIR read the fill back
    }

    void theWriteHookFollowsTheOpenWindows() {
        QVERIFY(!Hooked(kHookMemoryViews));
        Trigger("Memory Editor 2");
        QVERIFY(views().memoryEditor(2));
        QCOMPARE(views().memoryEditor(2)->windowTitle(), QString("Memory Editor 2"));
        QVERIFY(Hooked(kHookMemoryViews));
        Trigger("Refresh Memory Editor");  // off: the editors no longer follow writes
        QCOMPARE(settings->GetSettingInt("Refresh Memory Editor New", -1), 0);
        QVERIFY(!Hooked(kHookMemoryViews));
        Trigger("Video Memory Screen");  // the screen follows memory anyway
        QVERIFY(Hooked(kHookMemoryViews));
        views().videoScreen()->close();
        QVERIFY(!views().videoScreen());
        QVERIFY(!Hooked(kHookMemoryViews));
        Trigger("Refresh Memory Editor");
        QVERIFY(Hooked(kHookMemoryViews));
        views().memoryEditor(2)->close();
        QVERIFY(!Hooked(kHookMemoryViews));
        QVERIFY(settings->GetSettingInt("Window3 Left", -1) >= 0);
    }

    void editorsKeepTheirOwnSettings() {
        Trigger("Memory Editor 3");
        views().memoryEditor(3)->SetTrackRW(false);
        views().memoryEditor(3)->ask = Answers();
        answers = {"12345", "12345"};
        views().memoryEditor(3)->ChangeRange();
        QCOMPARE(LastMessage(), "Allowed range 0000h-FFFFh.");
        QCOMPARE(settings->GetSettingInt("Memory Editor 3 Track R/W Access", -1), 0);
        QCOMPARE(settings->GetSettingInt("Memory Editor 1 Track R/W Access", 1), 1);
        Trigger("Show ASCII Characters");
        QCOMPARE(settings->GetSettingInt("Show ASCII Characters", -1), 0);
        views().memoryEditor(3)->close();
        QTest::qWait(0);
        Trigger("Memory Editor 3");
        QVERIFY(!views().memoryEditor(3)->view().TrackRW);
    }

    void portsEditorSetsWhatInReads() {
        Trigger("I/O Ports Editor");
        IoPortsEditorWindow* ports = views().portsEditor();
        QVERIFY(ports);
        QVERIFY(Hooked(kHookPortsEditor));
        Type(ports->grid(), 0x05, "5A");
        QCOMPARE(window->machine().PortImage[0x05], 0x5A);
        LoadBytes(QByteArray::fromHex("DB05D30676"));  // IN A,(05H); OUT (06H),A; HALT
        RunUltimate();
        QCOMPARE(window->machine().A, 0x5A);
        QCOMPARE(window->machine().PortImage[0x06], 0x5A);
        ports->close();
        QVERIFY(!Hooked(kHookPortsEditor));
    }

    void videoScreenCommandsAndEdits() {
        Trigger("Video Memory Screen");
        VideoScreenWindow* video = views().videoScreen();
        QVERIFY(video);
        video->ask = Answers();
        const int width = video->grid()->sizeHint().width();
        answers = {"81", "80", "1", "2", "8000"};
        video->ChangeCols();
        QCOMPARE(LastMessage(), "Allowed range 16-80.");
        QCOMPARE(video->screen().VideoCols, 32);
        video->ChangeCols();
        QCOMPARE(video->screen().VideoCols, 80);
        QVERIFY(video->grid()->sizeHint().width() > width);  // laid out anew
        video->ChangeRows();
        QCOMPARE(LastMessage(), "Allowed range 2-40.");
        video->ChangeRows();
        video->ChangeAddress();
        QCOMPARE(settings->GetSettingInt("Video Addr", -1), 0x8000);
        QCOMPARE(settings->GetSettingInt("Video Rows", -1), 2);
        QCOMPARE(prompts.size(), 5);
        MB_VERIFY_STARTS(prompts.at(0), "Please enter the new columns setting");
        MB_VERIFY_STARTS(prompts.at(2), "Please enter the new rows setting");
        MB_VERIFY_STARTS(prompts.at(4), "Please enter the new starting memory address");

        video->choose = [](const QStringList& schemes, int current) {
            return current == 0 && schemes.size() == 5 ? std::optional<int>(3) : std::nullopt;
        };
        video->ChangeColorScheme();
        QCOMPARE(settings->GetSettingInt("Video Color Scheme", -1), 3);

        Type(video->grid(), 80 + 1, "41");  // second row, second column
        QCOMPARE(window->machine().MemoryImage[0x8051], 0x41);
    }

    // The value of a key caption, and of a typed byte (-1: refused).
    void keyValuesAndBytesFromText() {
        const std::pair<const char*, int> keys[] = {{"A", 65},       {"a", 97},    {"&&", 38},
                                                    {"(space)", 32}, {"(tab)", 8}, {"(enter)", 13},
                                                    {"~", 126}};
        for (const auto& [caption, value] : keys) QCOMPARE(AsciiKeyboard::KeyValue(caption), value);
        const std::pair<const char*, int> bytes[] = {{"41", 0x41}, {"f", 0x0F}, {" ff ", 0xFF},
                                                     {"G1", -1},   {"", -1},    {"100", -1}};
        for (const auto& [text, value] : bytes) QCOMPARE(ByteFromText(text), value);
    }

    void keyboardClickSetsTheValueAndSmallLettersAreStored() {
        MemorySettingsStore settings;
        AsciiKeyboard board(settings, nullptr);
        QPushButton* tab = nullptr;
        QPushButton* letterA = nullptr;
        for (QPushButton* b : board.findChildren<QPushButton*>()) {
            if (b->text() == "(tab)") tab = b;
            if (b->text() == "A") letterA = b;
        }
        QVERIFY(tab && letterA);
        tab->click();
        QCOMPARE(board.value, 8);
        QCOMPARE(board.result(), int(QDialog::Accepted));
        board.findChild<QCheckBox*>()->setChecked(true);
        QCOMPARE(letterA->text(), QString("a"));
        QCOMPARE(settings.GetSettingText("Keyboard Small Letters", "0"), std::string("1"));
        letterA->click();
        QCOMPARE(board.value, 97);
    }

    // One block of letters: capitals, or small letters while the box is checked,
    // kept for the next opening; every other printable character once.
    void smallLettersSwitchTheOneBlockOfLetters() {
        MemorySettingsStore settings;
        for (const bool small : {false, true, false}) {
            AsciiKeyboard board(settings, nullptr);
            board.findChild<QCheckBox*>()->setChecked(small);
            QStringList letters, captions;
            for (QPushButton* b : board.findChildren<QPushButton*>()) {
                if (b->text() == "Cancel") continue;
                captions << b->text();
                if (b->text().size() == 1 && b->text().at(0).isLetter()) letters << b->text();
            }
            QCOMPARE(letters.size(), 26);
            for (const QString& letter : letters)
                QVERIFY2(small ? letter.at(0).isLower() : letter.at(0).isUpper(),
                         qPrintable(letter));
            QCOMPARE(captions.removeDuplicates(), 0);
            QCOMPARE(captions.size(), 94 - 26 + 3);  // printable, one block of letters, 3 wide
            AsciiKeyboard reopened(settings, nullptr);
            QCOMPARE(reopened.findChild<QCheckBox*>()->isChecked(), small);
        }
    }

    void hexValueDialogCancelGivesMinusOne() {
        MemorySettingsStore settings;
        ByteEntryDialog dialog(ByteEntryDialog::Kind::HexValue, "Device",
                               "Enter new value supplied by this device [00-FF].", settings,
                               nullptr);
        QVERIFY(!dialog.Enter("XY"));
        QCOMPARE(dialog.value, -1);
        QVERIFY(dialog.Enter("7e"));
        QCOMPARE(dialog.value, 0x7E);
        for (QPushButton* b : dialog.findChildren<QPushButton*>())
            if (b->text() == "Cancel") b->click();
        QCOMPARE(dialog.value, -1);
    }
};

QTEST_MAIN(DataPathWindowsTest)
#include "data_path_windows_test.moc"
