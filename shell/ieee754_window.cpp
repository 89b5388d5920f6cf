#include "ieee754_window.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QInputDialog>
#include <QLabel>
#include <QPushButton>

#include "debug/ieee754.h"
#include "entry_dialogs.h"
#include "settings/settings_store.h"
#include "window_place.h"

namespace mb {

namespace {
// The window's number in the table of window positions.
constexpr int kWindowNumber = 13;

// A field that copies its text when clicked.
class CopyLabel : public QLabel {
  public:
    CopyLabel(std::function<void()> onClick, QWidget* parent)
        : QLabel(parent), onClick_(std::move(onClick)) {
        setFrameStyle(QFrame::Panel | QFrame::Sunken);
        setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        setCursor(Qt::PointingHandCursor);
        setToolTip(tr("Click to copy"));
        setMinimumWidth(fontMetrics().horizontalAdvance(QString(40, '0')));
        setTextInteractionFlags(Qt::NoTextInteraction);
    }

  protected:
    void mousePressEvent(QMouseEvent*) override { onClick_(); }

  private:
    std::function<void()> onClick_;
};
}  // namespace

Ieee754Window::Ieee754Window(SettingsStore& settings,
                             std::function<void(const std::string&)> message, QWidget* parent)
    : QDialog(parent), settings_(settings), message_(std::move(message)) {
    setWindowTitle(tr("IEEE 754 Conversion Tool"));
    auto* grid = new QGridLayout(this);
    auto* convert = new QPushButton(
        tr("Four-byte IEEE 754 single precision floating point representation"), this);
    auto* back =
        new QPushButton(tr("Calculate exact real number from the four FP hex bytes"), this);
    grid->addWidget(convert, 0, 0, 1, 2);
    grid->addWidget(back, 1, 0, 1, 2);
    const char* captions[5] = {"Entered real number:", "IEEE 754 representation (binary values):",
                               "IEEE 754 representation (hex values):",
                               "Exact value of the representation:", "Resolution:"};
    for (int i = 0; i < 5; ++i) {
        grid->addWidget(new QLabel(captions[i], this), i + 2, 0, Qt::AlignTop);
        fields_[static_cast<size_t>(i)] = new CopyLabel([this, i] { CopyField(i); }, this);
        grid->addWidget(fields_[static_cast<size_t>(i)], i + 2, 1);
    }
    connect(convert, &QPushButton::clicked, this, [this] {
        const auto text =
            Ask(tr("Enter a real number to make its four-byte IEEE 754 single precision floating "
                   "point representation used in the integrated basic compiler."),
                "");
        if (text) Convert(*text);
    });
    connect(back, &QPushButton::clicked, this, [this] {
        const auto text =
            Ask(tr("Enter four FP hex bytes (IEEE 754 format) to calculate the exact represented "
                   "real number."),
                "3F 80 00 00");
        if (text) ConvertBack(*text);
    });
    RestoreWindowPlace(*this, settings_, kWindowNumber);
}

std::optional<QString> Ieee754Window::Ask(const QString& prompt, const QString& offered) {
    if (ask) return ask(prompt, offered);
    return AskTextLine(this, windowTitle(), prompt, offered);
}

void Ieee754Window::Convert(const QString& text) {
    // A plain numeric reading: an unreadable text counts as 0.
    const double x = ReadDecimal(text.toStdString()).value_or(0.0);
    const Ieee754Texts t = ToIeee754(x);
    const std::string values[5] = {t.entered, t.binary, t.hex, t.exactValue, t.resolution};
    for (int i = 0; i < 5; ++i)
        fields_[static_cast<size_t>(i)]->setText(QString::fromStdString(values[i]));
}

void Ieee754Window::ConvertBack(const QString& text) {
    const std::optional<double> value = FromIeee754Text(text.toStdString());
    if (!value) return;  // a wrong text changes nothing
    message_("The exact represented real number is: " + ShortestNumberText(*value));
}

QString Ieee754Window::FieldText(int index) const {
    return fields_[static_cast<size_t>(index)]->text();
}

void Ieee754Window::CopyField(int index) {
    QApplication::clipboard()->setText(FieldText(index));
    message_("Copied to clipboard.");
}

void Ieee754Window::closeEvent(QCloseEvent* event) {
    SaveWindowPlace(*this, settings_, kWindowNumber);
    event->accept();
}

}  // namespace mb
