#include "memory_editor_window.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QPushButton>

#include "core/numtext.h"
#include "settings/settings_store.h"

namespace mb {

QColor WritePointerColor() {
    return {255, 138, 128};
}
QColor ReadPointerColor() {
    return {128, 216, 255};
}
QColor StackMarkerColor() {
    return {255, 229, 127};
}

namespace {
// A small swatch with its caption, the key of the pointer colours.
QLabel* Swatch(const QString& caption, const QColor& color, QWidget* parent) {
    auto* label = new QLabel(caption, parent);
    label->setAutoFillBackground(true);
    QPalette palette = label->palette();
    palette.setColor(QPalette::Window, color);
    palette.setColor(QPalette::WindowText, Qt::black);
    label->setPalette(palette);
    label->setContentsMargins(4, 0, 4, 0);
    return label;
}
}  // namespace

MemoryEditorWindow::MemoryEditorWindow(int number, Machine& m, SettingsStore& settings,
                                       QWidget* parent)
    : HexGridDialog(m, settings, WindowNumber(number), parent), view_(number) {
    setWindowTitle(number == 1 ? tr("Memory Editor") : tr("Memory Editor %1").arg(number));
    view_.LoadSettings(settings_);
    ascii_ = settings_.GetSettingInt("Show ASCII Characters", 1) != 0;

    auto* tracking = new QHBoxLayout;
    track_ = new QCheckBox(tr("Track R/W Access"), this);
    track_->setChecked(view_.TrackRW);
    connect(track_, &QCheckBox::toggled, this, [this](bool on) { SetTrackRW(on); });
    range_ = new QPushButton(RangeCaption(), this);
    range_->setToolTip(tr("Memory range of the R/W access tracking"));
    connect(range_, &QPushButton::clicked, this, [this] { ChangeRange(); });
    optimize_ = new QCheckBox(tr("Optimize For Ultimate Rate"), this);
    optimize_->setChecked(view_.Optimize);
    connect(optimize_, &QCheckBox::toggled, this, [this](bool on) { SetOptimize(on); });
    tracking->addWidget(track_);
    tracking->addWidget(range_);
    tracking->addWidget(optimize_);
    tracking->addStretch();

    auto* bottom = new QHBoxLayout;
    auto* focus = new QPushButton(tr("Focus SP"), this);
    connect(focus, &QPushButton::clicked, this, [this] { FocusSP(); });
    bottom->addWidget(focus);
    bottom->addWidget(Swatch(tr("Write"), WritePointerColor(), this));
    bottom->addWidget(Swatch(tr("Read"), ReadPointerColor(), this));
    bottom->addWidget(Swatch(tr("SP"), StackMarkerColor(), this));
    bottom->addStretch();
    FinishLayout({tracking, bottom});
    Refresh();
}

QString MemoryEditorWindow::RangeCaption() const {
    return QString::fromStdString(view_.RangeText());
}

void MemoryEditorWindow::SetShowAscii(bool on) {
    if (on == ascii_) return;
    ascii_ = on;
    grid_->Relayout();
}

void MemoryEditorWindow::SetTrackRW(bool on) {
    view_.SetTrackRW(settings_, on);
    if (track_->isChecked() != on) track_->setChecked(on);
    Refresh();
}

void MemoryEditorWindow::SetOptimize(bool on) {
    if (on == view_.Optimize) return;
    view_.SetOptimize(settings_, on);
    if (optimize_->isChecked() != on) optimize_->setChecked(on);
    if (on) Show(kOptimizeText);
}

void MemoryEditorWindow::ChangeRange() {
    const auto start =
        Ask(kRangeStartPrompt, QString::fromStdString(HexDigits(view_.RangeStart, 4)));
    if (!start || start->trimmed().isEmpty()) return;
    const auto end = Ask(kRangeEndPrompt, QString::fromStdString(HexDigits(view_.RangeEnd, 4)));
    if (!end || end->trimmed().isEmpty()) return;
    const std::string refusal = view_.SetRange(settings_, start->toStdString(), end->toStdString());
    if (!refusal.empty()) {
        Show(refusal);
        return;
    }
    range_->setText(RangeCaption());
    Refresh();
}

void MemoryEditorWindow::FocusSP() {
    view_.FocusSP(m_);
    grid_->Changed();
}

void MemoryEditorWindow::WriteCell(int cell, int value) {
    if (cell < 0 || cell >= kMemorySize) return;
    m_.MemoryImage[cell] = value;
    // The cells above FFFFh mirror the first five for the operand fetch.
    if (cell < kMemoryImageSize - kMemorySize) m_.MemoryImage[kMemorySize + cell] = value;
    if (edited) edited();
}

QColor MemoryEditorWindow::CellColor(int cell) const {
    if (cell == view_.WritePointer()) return WritePointerColor();
    if (cell == view_.ReadPointer()) return ReadPointerColor();
    if (cell == m_.SP) return StackMarkerColor();
    return {};
}

}  // namespace mb
