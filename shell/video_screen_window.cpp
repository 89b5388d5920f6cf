#include "video_screen_window.h"

#include <QHBoxLayout>
#include <QInputDialog>
#include <QPushButton>

#include "core/numtext.h"

namespace mb {

namespace {
// Text and background of each scheme, in the order of kVideoSchemeNames.
struct SchemeColors {
    QColor text, background;
};
const SchemeColors kSchemes[kVideoSchemes] = {
    {QColor(0, 0, 0), QColor(255, 255, 255)},     // white background
    {QColor(40, 40, 40), QColor(224, 224, 216)},  // light background
    {QColor(208, 208, 208), QColor(32, 32, 32)},  // dark background
    {QColor(200, 255, 200), QColor(0, 88, 0)},    // green background
    {QColor(255, 255, 255), QColor(0, 0, 160)},   // blue background
};
}  // namespace

VideoScreenWindow::VideoScreenWindow(Machine& m, SettingsStore& settings, QWidget* parent)
    : HexGridDialog(m, settings, kWindowNumber, parent) {
    setWindowTitle(tr("Video Memory Screen"));
    screen_.LoadSettings(settings_);

    auto* commands = new QHBoxLayout;
    auto command = [&](const QString& caption, void (VideoScreenWindow::*slot)()) {
        auto* button = new QPushButton(caption, this);
        connect(button, &QPushButton::clicked, this, [this, slot] { (this->*slot)(); });
        commands->addWidget(button);
    };
    command(tr("Address"), &VideoScreenWindow::ChangeAddress);
    command(tr("Columns"), &VideoScreenWindow::ChangeCols);
    command(tr("Rows"), &VideoScreenWindow::ChangeRows);
    command(tr("Color Scheme"), &VideoScreenWindow::ChangeColorScheme);
    commands->addStretch();
    FinishLayout({commands});
}

QColor VideoScreenWindow::Background() const {
    return kSchemes[screen_.VideoColorScheme].background;
}
QColor VideoScreenWindow::Foreground() const {
    return kSchemes[screen_.VideoColorScheme].text;
}

void VideoScreenWindow::WriteCell(int cell, int value) {
    if (cell < 0 || cell >= screen_.CellCount()) return;
    const int address = screen_.CellAddress(cell);
    m_.MemoryImage[address] = value;
    if (address < kMemoryImageSize - kMemorySize) m_.MemoryImage[kMemorySize + address] = value;
    grid_->Changed();
    if (edited) edited();
}

void VideoScreenWindow::Change(const char* prompt, const QString& offered,
                               std::string (VideoScreen::*change)(SettingsStore&,
                                                                  const std::string&)) {
    const auto answer = Ask(prompt, offered);
    if (!answer || answer->trimmed().isEmpty()) return;
    const std::string refusal = (screen_.*change)(settings_, answer->toStdString());
    if (!refusal.empty()) {
        Show(refusal);
        return;
    }
    Relayout();
}

void VideoScreenWindow::ChangeAddress() {
    Change(kVideoAddressPrompt, QString::fromStdString(HexDigits(screen_.VideoAddress, 4)),
           &VideoScreen::ChangeAddress);
}

void VideoScreenWindow::ChangeCols() {
    Change(kVideoColsPrompt, QString::number(screen_.VideoCols), &VideoScreen::ChangeCols);
}

void VideoScreenWindow::ChangeRows() {
    Change(kVideoRowsPrompt, QString::number(screen_.VideoRows), &VideoScreen::ChangeRows);
}

void VideoScreenWindow::ChangeColorScheme() {
    QStringList names;
    for (const char* name : kVideoSchemeNames) names << name;
    std::optional<int> chosen;
    if (choose) {
        chosen = choose(names, screen_.VideoColorScheme);
    } else {
        bool ok = false;
        const QString item = QInputDialog::getItem(this, kVideoSchemeTitle, kVideoSchemePrompt,
                                                   names, screen_.VideoColorScheme, false, &ok);
        if (ok) chosen = static_cast<int>(names.indexOf(item));
    }
    if (chosen && screen_.ChangeColorScheme(settings_, *chosen)) memorijaprint(true);
}

void VideoScreenWindow::Relayout() {
    grid_->Relayout();
    adjustSize();
}

}  // namespace mb
