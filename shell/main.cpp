// Marrowgate Bench: one instance per user, the data folder with the examples, the
// start-up picture, the main window.
#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QLockFile>
#include <QPainter>
#include <QSplashScreen>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

#include "main_window.h"
#include "qt_settings_store.h"

namespace {

// The shipped examples: beside the executable in a build, or installed.
QString ExamplesFolder() {
    const QString app = QCoreApplication::applicationDirPath();
    for (const QString& candidate :
         {app + "/../../examples", app + "/../share/marrowgate-bench/examples"})
        if (QDir(candidate).exists()) return QDir(candidate).absolutePath();
    return {};
}

// Copies the examples into the data folder, never over a file of the same name.
void CopyExamples(const QString& dataFolder) {
    const QString from = ExamplesFolder();
    if (from.isEmpty()) return;
    QDirIterator it(from, {"*.asm", "*.bas", "*.hex", "*.obj", "*.lst", "*.inc"}, QDir::Files);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString target = dataFolder + "/" + QFileInfo(source).fileName();
        if (!QFile::exists(target)) QFile::copy(source, target);
    }
}

QPixmap StartupPicture() {
    QPixmap picture(420, 200);
    picture.fill(QColor(0x2d, 0x3b, 0x45));
    QPainter p(&picture);
    p.setPen(QColor(0xf2, 0xc1, 0x4e));
    QFont font = p.font();
    font.setPointSize(24);
    font.setBold(true);
    p.setFont(font);
    p.drawText(picture.rect().adjusted(0, 0, 0, -40), Qt::AlignCenter, "Marrowgate Bench");
    font.setPointSize(11);
    font.setBold(false);
    p.setFont(font);
    p.setPen(QColor(0xb8, 0xc4, 0xcc));
    p.drawText(picture.rect().adjusted(0, 80, 0, 0), Qt::AlignCenter,
               "Z80 development and simulation");
    return picture;
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName("Marrowgate Bench");
    QCoreApplication::setApplicationName("Marrowgate Bench");

    QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (runtime.isEmpty()) runtime = QDir::tempPath();
    QLockFile lock(runtime + "/marrowgate-bench.lock");
    if (!lock.tryLock(0)) return 0;  // another instance runs for this user

    // The user's XDG data folder: ~/.local/share/Marrowgate Bench.
    const QString dataFolder =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Marrowgate Bench";
    QDir().mkpath(dataFolder);
    CopyExamples(dataFolder);

    QSplashScreen splash(StartupPicture());
    splash.show();
    app.processEvents();
    QThread::msleep(1000);

    mb::QtSettingsStore settings;
    settings.GetSettingText("Last Path", dataFolder.toStdString());
    mb::MainWindow window(settings);
    window.show();
    splash.finish(&window);
    return app.exec();
}
