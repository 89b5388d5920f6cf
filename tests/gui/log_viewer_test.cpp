// The Simulation Log Viewer: a record for each instruction, under the captions
// of the heading, coloured where registers changed, selected, copied, saved and
// opened again.
#include <QAbstractScrollArea>
#include <QApplication>
#include <QClipboard>
#include <QScrollBar>
#include <algorithm>
#include <set>

#include "core/numtext.h"
#include "ide_fixture.h"
#include "shell/log_viewer_window.h"

using namespace mb;

namespace {
using Columns = std::set<std::pair<int, int>>;  // start and length

// Where a caption of the heading stands; records of instructions of up to 16
// characters have their columns under the captions.
int Column(const QString& caption) {
    const QString heading = LogViewerWindow::Heading();
    int at = 0;
    for (const QString& word : heading.split(' ')) {
        if (word == caption) return at;
        at += static_cast<int>(word.size()) + 1;
    }
    return -1;
}

// The columns a record's colours mark as changed.
Columns Changed(const std::vector<LogSpan>& spans) {
    Columns out;
    for (const LogSpan& s : spans)
        if (s.kind == LogSpan::Changed) out.insert({s.start, s.length});
    return out;
}

// The records of a file: its lines without the line ends.
QStringList FileLines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {"<unreadable>"};
    QStringList lines = QString::fromLatin1(file.readAll()).split("\r\n");
    if (!lines.isEmpty() && lines.back().isEmpty()) lines.removeLast();
    return lines;
}
}  // namespace

class LogViewerTest : public QObject, protected testing::IdeFixture {
    Q_OBJECT

  private:
    LogViewerWindow* viewer = nullptr;

    void TriggerViewer(const char* caption) { Trigger(viewer, caption); }
    // The main window with the viewer opened from the Tools menu and
    // counter.obj loaded.
    void OpenWithCounter() {
        Open();
        Trigger("Simulation Log Viewer");
        viewer = window->logViewerWindow();
        QVERIFY(viewer && viewer->isVisible());
        LoadExample("counter.obj");
    }

  private slots:
    void init() {
        FreshSettings();
        // Normal rate without its pause, so a run to HALT is quick.
        settings->SetSettingInt("Simulation Rate Normal Delay", 0);
        OpenWithCounter();
    }

    void stepsShowOneRecordEachUnderTheHeading() {
        StartStepping();
        QVERIFY(viewer->Lines().isEmpty());
        for (int i = 0; i < 3; ++i) Trigger("Step");
        const QStringList lines = viewer->Lines();
        QCOMPARE(lines.size(), 3);
        // LD SP,nn and LD BC,nn take three bytes each, then DEC BC.
        const char* pcs[3] = {"0000", "0003", "0006"};
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(lines[i].left(7), QString::number(i + 1).rightJustified(7));
            QCOMPARE(lines[i].mid(7, 4), QString(pcs[i]));
        }
        MB_VERIFY_STARTS(lines[2].mid(13), "DEC BC");
        // The captions of the heading stand over their columns.
        const QString heading = LogViewerWindow::Heading();
        QCOMPARE(heading.indexOf("PC"), 7);
        QCOMPARE(heading.indexOf("Instruction"), 13);
        QCOMPARE(lines[2].mid(Column("A"), 2),
                 QString::fromStdString(pb_hex2(window->machine().A)));
        // B and C of the last record: BC is 999 after DEC BC.
        QCOMPARE(lines[2].mid(Column("B"), 5), QString("03 E7"));

        // Start empties the viewer.
        Trigger("Stop");
        Trigger("Start");
        QVERIFY(viewer->Lines().isEmpty());
        Trigger("Step");
        QCOMPARE(viewer->Lines().size(), 1);
        Trigger("Stop");
    }

    void runToHaltAtNormalRateShowsEveryInstruction() {
        // LD B,0AH; DJNZ $; HALT: a short run, each DJNZ at 0002.
        LoadBytes(QByteArray("\x06\x0A\x10\xFE\x76", 5));
        Trigger("Normal");
        Trigger("Start");  // returns at the HALT
        QVERIFY(!window->runControl().SimulationRunning);
        const Machine& m = window->machine();
        const QStringList lines = viewer->Lines();
        QCOMPARE(lines.size(), m.InstructionCount);
        QCOMPARE(lines.size(), 1 + 10 + 1);
        QCOMPARE(lines.first().mid(7, 4), QString("0000"));
        for (int i = 1; i <= 10; ++i) QCOMPARE(lines[i].mid(7, 4), QString("0002"));
        MB_VERIFY_STARTS(lines.last().mid(13), "HALT");
        QCOMPARE(lines.last().mid(7, 4), QString("0004"));
        QCOMPARE(lines.last().left(7), QString::number(m.InstructionCount).rightJustified(7));
    }

    void keepLastRecordInFocusIsAnOption() {
        StartStepping(60);
        QScrollBar* bar = viewer->view()->verticalScrollBar();
        viewer->Lines();
        // More records than rows: the view stands at the last one.
        QVERIFY(bar->maximum() > 0);
        QCOMPARE(bar->value(), bar->maximum());
        TriggerViewer("Keep Last Record In Focus");
        QCOMPARE(settings->GetSettingInt("Log Viewer Keep Last Record In Focus", 1), 0);
        bar->setValue(0);
        for (int i = 0; i < 20; ++i) Trigger("Step");
        QCOMPARE(viewer->Lines().size(), 80);
        QCOMPARE(bar->value(), 0);
        Trigger("Stop");
    }

    void recordsAreColouredUnlessNoColors() {
        StartStepping(2);  // LD SP,FFF0H then LD BC,1000
        QCOMPARE(viewer->Lines().size(), 2);
        const std::vector<LogSpan> first = viewer->Spans(0);
        QVERIFY(std::find(first.begin(), first.end(), LogSpan{7, 4, LogSpan::Address}) !=
                first.end());
        QVERIFY(Changed(first).empty());
        // Against the record before, only B and C changed.
        const Columns bc = {{Column("B"), 2}, {Column("C"), 2}};
        QCOMPARE(Changed(viewer->Spans(1)), bc);

        TriggerViewer("No Colors");
        QCOMPARE(settings->GetSettingInt("Log Viewer No Colors", 0), 1);
        QVERIFY(viewer->Spans(0).empty());
        QVERIFY(viewer->Spans(1).empty());
        TriggerViewer("No Colors");
        QCOMPARE(Changed(viewer->Spans(1)), bc);
        Trigger("Stop");
    }

    // Against the record before: the columns that changed, where they stand for
    // an instruction text of up to 16 characters; the instruction is coloured up
    // to the registers, whatever its length.
    void changedRegistersAgainstTheRecordBefore() {
        auto check = [](void (*change)(Machine&), const std::string& text, const Columns& columns) {
            auto m = std::make_unique<Machine>();
            const QString before = QString::fromStdString(LogLineText(*m, 0, "NOP"));
            change(*m);
            const QString after = QString::fromStdString(LogLineText(*m, 1, text));
            const int shift = std::max(0, static_cast<int>(text.size()) - 16);
            Columns expected;
            for (auto [start, length] : columns) expected.insert({start + shift, length});
            QVERIFY2(Changed(LogLineSpans(after, &before)) == expected, text.c_str());
            const auto spans = LogLineSpans(after, nullptr);
            QVERIFY2(spans.size() == 3 && spans[2].kind == LogSpan::Instruction &&
                         spans[2].start + spans[2].length == Column("A") + shift,
                     text.c_str());
        };
        const int flags = Column("SZYHXPNC"), altFlags = Column("SZYHXPNC'");
        check([](Machine& m) { m.A = 5; }, "LD A,05H", {{Column("A"), 2}});
        check([](Machine& m) { m.FlagZ = 1; }, "OR A", {{flags + 1, 1}});
        check([](Machine& m) { m.IX = 0x1234, m.AltFlagC = 1; }, "EX AF,AF'",
              {{Column("IX"), 4}, {altFlags + 7, 1}});
        check([](Machine& m) { m.AltL = 9; }, "LD (IX+7FH),0FFH", {{Column("L'"), 2}});
        check([](Machine& m) { m.InstructionCount += 1; }, "NOP", {});
        // Lines that are not records have no colours, nor does a record after one.
        const auto m = std::make_unique<Machine>();
        const QString record = QString::fromStdString(LogLineText(*m, 0, "NOP"));
        for (const QString& other :
             {QString("RESET"), QString(), QString("Simulation started at 2026-01-02 10:11:12.")}) {
            QVERIFY(LogLineSpans(other, &record).empty());
            QCOMPARE(LogLineSpans(record, &other).size(), size_t(3));
        }
    }

    void rowsAreSelectedAndCopied() {
        StartStepping(5);
        const QStringList lines = viewer->Lines();
        QAbstractScrollArea* view = viewer->view();
        const int lh = view->fontMetrics().lineSpacing();
        auto at = [lh](int row) { return QPoint(20, lh * (row + 1) + lh / 2); };
        auto copy = [view] {
            QApplication::clipboard()->clear();
            QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
            return QApplication::clipboard()->text();
        };
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, QPoint(20, lh / 2));  // heading
        QCOMPARE(copy(), QString());
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at(1));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ShiftModifier, at(3));
        QCOMPARE(copy(), lines.mid(1, 3).join('\n'));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at(40));  // below the last
        QCOMPARE(copy(), lines.last());
        QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(copy(), lines.join('\n'));
        Trigger("Stop");
    }

    void saveWritesTheHeadingAndTheRecordsShown() {
        StartStepping(5);
        Trigger("Stop");
        const QString path = Path("saved.txt");
        viewer->fileAnswer = [path](bool save) { return save ? path : QString(); };
        TriggerViewer("&Save Log File");
        const QStringList shown = viewer->Lines();
        QCOMPARE(FileLines(path), QStringList{LogViewerWindow::Heading()} + shown);

        // Closing empties the view; opening the saved file shows the same records.
        TriggerViewer("&Close Log File");
        QVERIFY(viewer->Lines().isEmpty());
        viewer->fileAnswer = [path](bool) { return path; };
        TriggerViewer("&Open Log File");
        QCOMPARE(viewer->Lines(), shown);
        QCOMPARE(viewer->OpenedFile(), path);
        QVERIFY(viewer->windowTitle().endsWith("saved.txt"));
        TriggerViewer("&Close Log File");
        QVERIFY(viewer->OpenedFile().isEmpty());
        QCOMPARE(viewer->windowTitle(), QString("Simulation Log Viewer"));
    }

    void showsTheSameRecordsAsLogTxt() {
        FreshSettings();
        settings->SetSettingInt("Enable Logging New", 1);
        OpenWithCounter();
        StartStepping(4);
        const QStringList live = viewer->Lines();
        Trigger("Stop");
        const QString logPath = Path("log.txt");
        const QStringList file = FileLines(logPath);
        // Head: the start line, the heading, an empty line; then the records.
        QVERIFY2(file.size() > 3 + live.size(), qPrintable(file.join('\n')));
        QCOMPARE(file[1], LogViewerWindow::Heading());
        QCOMPARE(file.mid(3, live.size()), live);

        viewer->fileAnswer = [logPath](bool) { return logPath; };
        TriggerViewer("&Open Log File");
        QStringList withoutHeading = file;
        withoutHeading.removeAt(1);
        QCOMPARE(viewer->Lines(), withoutHeading);
    }

    void refusalsKeepWhatIsShown() {
        int asked = 0;
        viewer->fileAnswer = [&asked, this](bool) {
            ++asked;
            return Path("never.txt");
        };
        TriggerViewer("&Save Log File");
        QCOMPARE(LastMessage(), "Simulation Log Viewer is empty.");
        QCOMPARE(asked, 0);
        QVERIFY(!QFile::exists(Path("never.txt")));

        StartStepping(2);
        const QStringList shown = viewer->Lines();
        struct Case {
            bool stopFirst;
            const char* command;
            QString answer;
            std::string message;
        };
        const Case cases[] = {
            {false, "&Open Log File", Path("anything.txt"), "Please stop the simulation first."},
            {false, "&Save Log File", Path("no/such/folder/out.txt"),
             "The file could not be saved:\n" + Path("no/such/folder/out.txt").toStdString()},
            {true, "&Open Log File", Path("missing.txt"),
             "The file could not be opened:\n" + Path("missing.txt").toStdString()},
        };
        for (const Case& c : cases) {
            if (c.stopFirst) Trigger("Stop");
            viewer->fileAnswer = [&c](bool) { return c.answer; };
            TriggerViewer(c.command);
            QCOMPARE(LastMessage(), c.message);
            QCOMPARE(viewer->Lines(), shown);
            QVERIFY(viewer->OpenedFile().isEmpty());
        }
    }

    void closingStopsComposingLines() {
        StartStepping(1);
        QVERIFY(window->machine().EndStageMask & kEndStageLog);
        QCOMPARE(viewer->Lines().size(), 1);
        viewer->resize(640, 360);
        viewer->close();
        QVERIFY(!window->logViewerWindow());
        QVERIFY(!(window->machine().EndStageMask & kEndStageLog));
        Trigger("Step");
        Trigger("Step");
        // A new viewer shows only what came after it opened, at its kept size.
        Trigger("Simulation Log Viewer");
        viewer = window->logViewerWindow();
        QVERIFY(viewer);
        QCOMPARE(viewer->size(), QSize(640, 360));
        QVERIFY(viewer->Lines().isEmpty());
        Trigger("Step");
        const QStringList lines = viewer->Lines();
        QCOMPARE(lines.size(), 1);
        QCOMPARE(lines[0].left(7), QString("      4"));
        Trigger("Stop");
    }
};

QTEST_MAIN(LogViewerTest)
#include "log_viewer_test.moc"
