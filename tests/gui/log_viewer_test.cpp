#include <QAbstractScrollArea>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <functional>
#include <set>

#include "core/numtext.h"
#include "ide_fixture.h"
#include "shell/log_viewer_window.h"
#include "shell/main_window.h"
#include "shell/qt_settings_store.h"

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

    void TriggerViewer(const char* caption) {
        QAction* a = viewer->Action(caption);
        QVERIFY2(a, caption);
        a->trigger();
    }
    // The main window with the viewer opened from the Tools menu and
    // counter.obj loaded.
    bool OpenWithCounter() {
        Open();
        QAction* tool = window->Action("Simulation Log Viewer");
        if (!tool) return false;
        tool->trigger();
        viewer = window->logViewerWindow();
        if (!viewer || !viewer->isVisible()) return false;
        LoadExample("counter.obj");
        return true;
    }
    void StartStepping(int steps) {
        Trigger("Step By Step");
        Trigger("Start");
        for (int i = 0; i < steps; ++i) Trigger("Step");
    }
    QString Path(const char* name) const { return dir.filePath(name); }

  private slots:
    void init() {
        FreshSettings();
        // Normal rate without its pause, so a run to HALT is quick.
        settings->SetSettingInt("Simulation Rate Normal Delay", 0);
    }
    void cleanup() {
        window.reset();
        viewer = nullptr;
    }

    void stepsShowOneRecordEachUnderTheHeading() {
        QVERIFY(OpenWithCounter());
        StartStepping(0);
        QVERIFY(viewer->Lines().isEmpty());
        Trigger("Step");
        Trigger("Step");
        Trigger("Step");
        const QStringList lines = viewer->Lines();
        QCOMPARE(lines.size(), 3);
        // LD SP,nn and LD BC,nn take three bytes each, then DEC BC.
        const char* pcs[3] = {"0000", "0003", "0006"};
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(lines[i].left(7), QString::number(i + 1).rightJustified(7));
            QCOMPARE(lines[i].mid(7, 4), QString(pcs[i]));
        }
        QVERIFY2(lines[2].mid(13).startsWith("DEC BC"), qPrintable(lines[2]));
        // The captions of the heading stand over their columns.
        const QString heading = LogViewerWindow::Heading();
        QCOMPARE(heading, QString::fromLatin1(kLogHeadColumns));
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
        QVERIFY(OpenWithCounter());
        // LD B,0AH; DJNZ $; HALT: a short run, each DJNZ at 0002.
        QFile program(Path("djnz.obj"));
        QVERIFY(program.open(QIODevice::WriteOnly));
        program.write(QByteArray("\x06\x0A\x10\xFE\x76", 5));
        program.close();
        const std::string path = Path("djnz.obj").toStdString();
        window->fileAnswer = [path](bool) { return path; };
        Trigger("Load Program");
        Trigger("Normal");
        Trigger("Start");  // returns at the HALT
        QVERIFY(!window->runControl().SimulationRunning);
        const Machine& m = window->machine();
        const QStringList lines = viewer->Lines();
        QCOMPARE(lines.size(), m.InstructionCount);
        QCOMPARE(lines.size(), 1 + 10 + 1);
        QCOMPARE(lines.first().mid(7, 4), QString("0000"));
        for (int i = 1; i <= 10; ++i) QCOMPARE(lines[i].mid(7, 4), QString("0002"));
        QVERIFY2(lines.last().mid(13).startsWith("HALT"), qPrintable(lines.last()));
        QCOMPARE(lines.last().mid(7, 4), QString("0004"));
        QCOMPARE(lines.last().left(7), QString::number(m.InstructionCount).rightJustified(7));
    }

    void keepLastRecordInFocusIsAnOption() {
        QVERIFY(OpenWithCounter());
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
        QVERIFY(OpenWithCounter());
        StartStepping(2);  // LD SP,FFF0H then LD BC,1000
        QCOMPARE(viewer->Lines().size(), 2);
        auto changed = [this](int row) {
            Columns out;
            for (const LogSpan& s : viewer->Spans(row))
                if (s.kind == LogSpan::Changed) out.insert({s.start, s.length});
            return out;
        };
        const std::vector<LogSpan> first = viewer->Spans(0);
        QVERIFY(std::find(first.begin(), first.end(), LogSpan{7, 4, LogSpan::Address}) !=
                first.end());
        QVERIFY(changed(0).empty());
        // Against the record before, only B and C changed.
        const Columns bc = {{Column("B"), 2}, {Column("C"), 2}};
        QCOMPARE(changed(1), bc);

        TriggerViewer("No Colors");
        QCOMPARE(settings->GetSettingInt("Log Viewer No Colors", 0), 1);
        QVERIFY(viewer->Spans(0).empty());
        QVERIFY(viewer->Spans(1).empty());
        TriggerViewer("No Colors");
        QCOMPARE(changed(1), bc);
        Trigger("Stop");
    }

    void changedRegistersAgainstTheRecordBefore() {
        const int flags = Column("SZYHXPNC"), altFlags = Column("SZYHXPNC'");
        struct Case {
            const char* name;
            std::function<void(Machine&)> change;
            std::string text;  // of the second record
            Columns expected;  // as they stand for a text of up to 16 characters
        };
        const Case cases[] = {
            {"A", [](Machine& m) { m.A = 5; }, "LD A,05H", {{Column("A"), 2}}},
            {"flag Z", [](Machine& m) { m.FlagZ = 1; }, "OR A", {{flags + 1, 1}}},
            {"IX and alternate carry",
             [](Machine& m) {
                 m.IX = 0x1234;
                 m.AltFlagC = 1;
             },
             "EX AF,AF'",
             {{Column("IX"), 4}, {altFlags + 7, 1}}},
            {"long instruction text",
             [](Machine& m) { m.AltL = 9; },
             "LD (IX+7FH),0FFH",
             {{Column("L'"), 2}}},
            {"nothing", [](Machine& m) { m.InstructionCount += 1; }, "NOP", {}},
        };
        for (const Case& c : cases) {
            auto m = std::make_unique<Machine>();
            const QString before = QString::fromStdString(LogLineText(*m, 0, "NOP"));
            c.change(*m);
            const QString after = QString::fromStdString(LogLineText(*m, 1, c.text));
            const int shift = std::max(0, static_cast<int>(c.text.size()) - 16);
            Columns expected;
            for (auto [start, length] : c.expected) expected.insert({start + shift, length});
            Columns got;
            for (const LogSpan& s : LogLineSpans(after, &before))
                if (s.kind == LogSpan::Changed) got.insert({s.start, s.length});
            QVERIFY2(got == expected, c.name);
            // The instruction is coloured up to the registers, whatever its length.
            const auto spans = LogLineSpans(after, nullptr);
            QVERIFY2(spans.size() == 3 && spans[2].kind == LogSpan::Instruction &&
                         spans[2].start + spans[2].length == Column("A") + shift,
                     c.name);
        }
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
        QVERIFY(OpenWithCounter());
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
        QVERIFY(OpenWithCounter());
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
        settings->SetSettingInt("Enable Logging New", 1);
        QVERIFY(OpenWithCounter());
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
        QVERIFY(OpenWithCounter());
        int asked = 0;
        viewer->fileAnswer = [&asked, this](bool) {
            ++asked;
            return Path("never.txt");
        };
        TriggerViewer("&Save Log File");
        QCOMPARE(window->messages.back(), std::string("Simulation Log Viewer is empty."));
        QCOMPARE(asked, 0);
        QVERIFY(!QFile::exists(Path("never.txt")));

        StartStepping(2);
        const QStringList shown = viewer->Lines();
        struct Case {
            const char* command;
            QString answer;
            std::string message;
        };
        const Case cases[] = {
            {"&Open Log File", Path("anything.txt"), "Please stop the simulation first."},
            {"&Save Log File", Path("no/such/folder/out.txt"),
             "The file could not be saved:\n" + Path("no/such/folder/out.txt").toStdString()},
        };
        for (const Case& c : cases) {
            viewer->fileAnswer = [&c](bool) { return c.answer; };
            TriggerViewer(c.command);
            QCOMPARE(window->messages.back(), c.message);
            QCOMPARE(viewer->Lines(), shown);
        }
        Trigger("Stop");
        viewer->fileAnswer = [this](bool) { return Path("missing.txt"); };
        TriggerViewer("&Open Log File");
        QCOMPARE(window->messages.back(),
                 "The file could not be opened:\n" + Path("missing.txt").toStdString());
        QCOMPARE(viewer->Lines(), shown);
        QVERIFY(viewer->OpenedFile().isEmpty());
    }

    void closingStopsComposingLines() {
        QVERIFY(OpenWithCounter());
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
