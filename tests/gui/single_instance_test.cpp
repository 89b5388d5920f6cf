// A second start for the same user ends at once and leaves the first running.
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

class SingleInstanceTest : public QObject {
    Q_OBJECT

  private slots:
    void secondStartEndsSilently() {
        QTemporaryDir home;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("QT_QPA_PLATFORM", "offscreen");
        env.insert("HOME", home.path());
        env.insert("XDG_RUNTIME_DIR", home.path());
        env.insert("XDG_DATA_HOME", home.filePath("data"));
        env.insert("XDG_CONFIG_HOME", home.filePath("config"));

        QProcess first;
        first.setProcessEnvironment(env);
        first.start(MB_IDE, {});
        QVERIFY(first.waitForStarted());
        QTest::qWait(2500);  // past the start-up picture, holding the lock
        QCOMPARE(first.state(), QProcess::Running);

        QProcess second;
        second.setProcessEnvironment(env);
        second.start(MB_IDE, {});
        QVERIFY(second.waitForFinished(5000));
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(first.state(), QProcess::Running);

        first.kill();
        first.waitForFinished();
    }
};

QTEST_MAIN(SingleInstanceTest)
#include "single_instance_test.moc"
