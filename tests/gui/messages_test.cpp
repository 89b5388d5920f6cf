// The message windows as a user meets them: a notice that goes by itself, a
// second notice of the same command dropped, a report that stays.
#include <Qsci/qsciscintilla.h>

#include <QAbstractButton>
#include <QComboBox>
#include <QCursor>
#include <QMessageBox>
#include <QSpinBox>

#include "ide_fixture.h"
#include "shell/assembler_window.h"
#include "shell/message_window.h"
#include "shell/options_dialogs.h"

using namespace mb;

class MessagesTest : public QObject, protected testing::IdeFixture {
    Q_OBJECT

  private:
    Messages& Shown() { return window->messageWindows(); }
    InfoFrame* Notice() { return qobject_cast<InfoFrame*>(Shown().notice()); }
    // The Confirmation windows on screen.
    int VisibleNotices() {
        int count = 0;
        for (InfoFrame* f : window->findChildren<InfoFrame*>()) count += f->isVisible();
        return count;
    }
    // A key press in the main window: the user gives a command.
    void UserPressesAKey() { QTest::keyClick(window.get(), Qt::Key_Shift); }

  private slots:
    void init() {
        FreshSettings();
        settings->SetSettingInt("Messages Duration", 1);
        QCursor::setPos(0, 0);
        Open();
    }

    // A note, not a question: no button, no modality, gone after its time.
    void noticeLooksTransientAndGoesByItself() {
        window->ShowMessage("Operation completed.\nTotal 12 (0.01K) bytes loaded.");
        InfoFrame* frame = Notice();
        QVERIFY(frame && frame->isVisible());
        QCOMPARE(frame->Text(), QString("Operation completed.\nTotal 12 (0.01K) bytes loaded."));
        QVERIFY(frame->findChildren<QAbstractButton*>().isEmpty());
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY(!frame->isModal());
        QTRY_VERIFY_WITH_TIMEOUT(!Notice(), 3000);
    }

    void pointerOverTheNoticeHoldsIt() {
        window->ShowMessage("Copied to clipboard.");
        QPointer<InfoFrame> frame = Notice();
        QVERIFY(frame);
        QCursor::setPos(frame->frameGeometry().center());
        QTest::qWait(1500);  // longer than "Messages Duration"
        QVERIFY(frame && frame->isVisible());
        QVERIFY2(frame->RemainingMs() > 800, qPrintable(QString::number(frame->RemainingMs())));
        QCursor::setPos(0, 0);
        QTRY_VERIFY_WITH_TIMEOUT(!frame, 2500);
    }

    // A question that waits for the user closes the note; a note that comes
    // during a question belongs to it, and a click takes it away.
    void noticeGivesWayToAQuestion() {
        window->ShowMessage("Operation completed.");
        QPointer<InfoFrame> before = Notice();
        QVERIFY(before);
        QDialog question(window.get());
        question.open();
        QTRY_VERIFY(!before);
        window->ShowMessage("Please stop the simulation first.");
        QPointer<InfoFrame> during = Notice();
        QVERIFY(during && during->isVisible());
        QCOMPARE(during->parentWidget(), &question);
        QTest::mouseClick(during, Qt::LeftButton);
        QTRY_VERIFY(!during);
        QVERIFY(question.isVisible());
    }

    // One command, one notice; the answer to a later command replaces it.
    void secondNoticeOfOneCommandIsDropped() {
        window->ShowMessage("first");
        window->ShowMessage("second");
        QCOMPARE(Notice()->Text(), QString("first"));
        QCOMPARE(VisibleNotices(), 1);
        UserPressesAKey();
        window->ShowMessage("third");
        QCOMPARE(Notice()->Text(), QString("third"));
        QCOMPARE(VisibleNotices(), 1);
    }

    // With "Show Pop-up Info Message Boxes" the notice waits for OK, and what
    // comes while it is up is dropped.
    void popUpBoxWaitsForOkAndDropsWhatComesMeanwhile() {
        window.reset();
        settings->SetSettingText("Show Confirmations", "ON");
        Open();
        QString seen;
        QTimer::singleShot(50, this, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            seen = box->text();
            window->ShowMessage("arrives meanwhile");
            QCOMPARE(Shown().notice(), box);
            box->button(QMessageBox::Ok)->click();
        });
        window->ShowMessage("The memory is empty.");
        QCOMPARE(seen, QString("The memory is empty."));
        QVERIFY(!Shown().notice());
        QCOMPARE(VisibleNotices(), 0);
    }

    // Assembler errors stay until the user closes them, beside notices.
    void reportStaysUntilClosed() {
        window->ShowMessage("a notice");
        window->ShowReport("Here is the list of assembler errors:\nbad line");
        QMessageBox* report = Shown().report();
        QVERIFY(report && report->isVisible());
        QVERIFY(!report->isModal());
        QTest::qWait(1500);
        QVERIFY(Shown().report() && report->isVisible());
        window->ShowReport("Here is the list of assembler errors:\nother line");
        QCOMPARE(Shown().report(), report);
        QVERIFY(report->text().endsWith("other line"));
        report->button(QMessageBox::Close)->click();
        QTRY_VERIFY(!Shown().report());
    }

    // F7 during a run: the run stops, its statistics show, the program is
    // assembled and loaded, and the load's confirmation does not pile up.
    void assembleAndLoadDuringARunStopsItFirst() {
        LoadExample("counter.obj");
        Trigger("Assembler");
        AssemblerWindow* editor = window->assemblerWindow();
        editor->questionAnswer = [](const std::string&) { return 0; };
        WriteFile("prog.asm", "\tORG 0\n\tLD A,7\n\tHALT\n");
        QVERIFY(editor->OpenFile(Path("prog.asm")));
        Trigger("Slow");
        QTimer::singleShot(300, this, [&] {
            editor->activateWindow();
            QTest::keyClick(editor->sourceEditor(), Qt::Key_F7);
        });
        Trigger("Start");
        QTRY_VERIFY(window->images().ProgramFileName() == Path("prog.obj").toStdString());
        QVERIFY(!window->runControl().SimulationRunning);
        QCOMPARE(VisibleNotices(), 1);
        MB_VERIFY_STARTS(Notice()->Text(), "Total number of executed instructions");
        MB_VERIFY_STARTS(LastMessage(), "Operation completed.");
        QCOMPARE(window->FieldText("PC"), QString("0000"));
    }

    void configureInfoMessageFrames() {
        QTimer::singleShot(0, this, [] {
            auto* dialog = qobject_cast<InfoFramesDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(dialog->duration()->value(), 1);
            dialog->duration()->setValue(7);
            dialog->place()->setCurrentIndex(1);
            dialog->accept();
        });
        Trigger("Configure Info Message Frames");
        QCOMPARE(settings->GetSettingInt("Messages Duration", 0), 7);
        QCOMPARE(settings->GetSettingInt("Messages Mode", 0), 1);
        // Mode 1: the corner of the screen, away from the main window.
        window->ShowMessage("in the corner");
        const QRect area = window->screen()->availableGeometry();
        QVERIFY(Notice()->geometry().right() > area.center().x());
        QVERIFY(Notice()->geometry().bottom() > area.center().y());
        QVERIFY(Notice()->RemainingMs() > 6000);
    }
};

QTEST_MAIN(MessagesTest)
#include "messages_test.moc"
