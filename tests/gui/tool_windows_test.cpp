// The tool windows as a user opens them: in front of an always-on-top main
// window, inside the screen, and answering the run keys.
#include <Qsci/qsciscintilla.h>

#include <QCheckBox>
#include <QMenuBar>
#include <QScreen>
#include <QtTest>

#include "ide_fixture.h"
#include "shell/assembler_window.h"
#include "shell/device_windows.h"
#include "shell/memory_views.h"

using namespace mb;

class ToolWindowsTest : public QObject, protected testing::IdeFixture {
    Q_OBJECT

  private:
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

  private slots:
    void init() { FreshSettings(); }
    void cleanup() { window.reset(); }

    // While the main window stays on top its tool windows stand with it, in
    // front; "Save Always On Top" turns both off, and is kept.
    void toolWindowsStandWithAnAlwaysOnTopMainWindow() {
        Open();
        QVERIFY(OnTop(window.get()));
        const QList<QWidget*> tools = OpenTools();
        for (QWidget* tool : tools) {
            QVERIFY2(tool && tool->isVisible(), tool ? qPrintable(tool->windowTitle()) : "");
            QVERIFY2(OnTop(tool), qPrintable(tool->windowTitle()));
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

    // At their first opening the tool windows leave the main window's menus in
    // reach, with room for a title bar of 30 pixels.
    void toolWindowsLeaveTheMenusInReach() {
        Open();
        QWidget* bar = window->menuBar();
        const int barBottom = bar->mapToGlobal(QPoint(0, bar->height())).y();
        for (QWidget* tool : OpenTools()) {
            const bool beside =
                tool->geometry().left() > bar->mapToGlobal(bar->rect().topRight()).x();
            QVERIFY2(beside || tool->geometry().top() > barBottom + 30,
                     qPrintable(tool->windowTitle()));
        }
    }

    // F5 starts, F8 steps and Shift+F5 stops from any window of the system.
    void runKeysWorkInEveryWindow() {
        Open();
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
};

QTEST_MAIN(ToolWindowsTest)
#include "tool_windows_test.moc"
