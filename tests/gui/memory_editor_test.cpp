// The Memory Editors, the I/O Ports Editor and the Video Memory Screen inside the
// main window: opened from the Tools menu, edited through the entry box, and
// following a program at the Ultimate rate.
#include <QAction>
#include <QCheckBox>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <deque>

#include "core/access.h"
#include "ide_fixture.h"
#include "shell/main_window.h"
#include "shell/memory_views.h"
#include "shell/qt_settings_store.h"

using namespace mb;

class MemoryEditorTest : public QObject, protected testing::IdeFixture {
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
    bool Hooked(int bit) { return (window->machine().AccessHookMask & bit) != 0; }

  private slots:
    void init() {
        FreshSettings();
        settings->SetSettingInt("Prompt Before IN New", 0);
    }
    void cleanup() { window.reset(); }

    void editsACellThroughTheEntryBox() {
        Open();
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
        Open();
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
        editor->ask = [](const QString& prompt, const QString&) {
            return std::optional<QString>(prompt.contains("starting") ? "8000" : "80FF");
        };
        editor->ChangeRange();
        QCOMPARE(editor->RangeCaption(), QString("8000h-80FFh"));
        editor->SetOptimize(true);
        QCOMPARE(window->messages.back(), std::string(kOptimizeText));
        QVERIFY(Hooked(kHookMemoryViews));

        Trigger("Ultimate");
        Trigger("Start");
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
        Open();
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
        Open();
        Trigger("Memory Editor 3");
        views().memoryEditor(3)->SetTrackRW(false);
        views().memoryEditor(3)->ask = [](const QString&, const QString&) {
            return std::optional<QString>("12345");
        };
        views().memoryEditor(3)->ChangeRange();
        QCOMPARE(window->messages.back(), std::string("Allowed range 0000h-FFFFh."));
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
        Open();
        Trigger("I/O Ports Editor");
        IoPortsEditorWindow* ports = views().portsEditor();
        QVERIFY(ports);
        QVERIFY(Hooked(kHookPortsEditor));
        Type(ports->grid(), 0x05, "5A");
        QCOMPARE(window->machine().PortImage[0x05], 0x5A);
        LoadBytes(
            QByteArray::fromHex("DB05"
                                "D306"
                                "76"));  // IN A,(05H); OUT (06H),A; HALT
        Trigger("Ultimate");
        Trigger("Start");
        QCOMPARE(window->machine().A, 0x5A);
        QCOMPARE(window->machine().PortImage[0x06], 0x5A);
        ports->close();
        QVERIFY(!Hooked(kHookPortsEditor));
    }

    void videoScreenCommandsAndEdits() {
        Open();
        Trigger("Video Memory Screen");
        VideoScreenWindow* video = views().videoScreen();
        QVERIFY(video);
        std::deque<QString> answers;
        QStringList prompts;
        video->ask = [&](const QString& prompt, const QString&) {
            prompts << prompt;
            const QString a = answers.front();
            answers.pop_front();
            return std::optional<QString>(a);
        };
        const int width = video->grid()->sizeHint().width();
        answers = {"81", "80", "1", "2", "8000"};
        video->ChangeCols();
        QCOMPARE(window->messages.back(), std::string("Allowed range 16-80."));
        QCOMPARE(video->screen().VideoCols, 32);
        video->ChangeCols();
        QCOMPARE(video->screen().VideoCols, 80);
        QVERIFY(video->grid()->sizeHint().width() > width);  // laid out anew
        video->ChangeRows();
        QCOMPARE(window->messages.back(), std::string("Allowed range 2-40."));
        video->ChangeRows();
        video->ChangeAddress();
        QCOMPARE(settings->GetSettingInt("Video Addr", -1), 0x8000);
        QCOMPARE(settings->GetSettingInt("Video Rows", -1), 2);
        QVERIFY(prompts.at(0).startsWith("Please enter the new columns setting"));
        QVERIFY(prompts.at(2).startsWith("Please enter the new rows setting"));
        QVERIFY(prompts.at(4).startsWith("Please enter the new starting memory address"));

        video->choose = [](const QStringList& schemes, int current) {
            return current == 0 && schemes.size() == 5 ? std::optional<int>(3) : std::nullopt;
        };
        video->ChangeColorScheme();
        QCOMPARE(settings->GetSettingInt("Video Color Scheme", -1), 3);

        Type(video->grid(), 80 + 1, "41");  // second row, second column
        QCOMPARE(window->machine().MemoryImage[0x8051], 0x41);
    }
};

QTEST_MAIN(MemoryEditorTest)
#include "memory_editor_test.moc"
