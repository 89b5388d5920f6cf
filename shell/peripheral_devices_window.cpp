#include "peripheral_devices_window.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QVBoxLayout>

#include "entry_dialogs.h"
#include "window_place.h"

namespace mb {

namespace {

constexpr int kLampSize = 18;
constexpr int kLampGap = 4;

// A label that answers a click.
class ClickLabel : public QLabel {
  public:
    ClickLabel(std::function<void()> onClick, QWidget* parent)
        : QLabel(parent), onClick_(std::move(onClick)) {
        setFrameStyle(QFrame::Panel | QFrame::Sunken);
        setAlignment(Qt::AlignCenter);
        setCursor(Qt::PointingHandCursor);
    }

  protected:
    void mousePressEvent(QMouseEvent*) override { onClick_(); }

  private:
    std::function<void()> onClick_;
};

QString Latin1(const std::string& text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

LampRow::LampRow(QWidget* parent) : QWidget(parent) {
    setCursor(Qt::PointingHandCursor);
    setToolTip(tr("A click on a lamp flips its bit"));
}

void LampRow::SetValue(int value) {
    if (value == value_) return;
    value_ = value;
    update();
}

QColor LampRow::LampColor(int bit) const {
    return QColor::fromRgb(
        static_cast<QRgb>(PeripheralDevices::LampLit(value_, bit) ? kLampLit : kLampDark));
}

QRect LampRow::LampRect(int bit) const {
    const int slot = 7 - bit;
    return QRect(slot * (kLampSize + kLampGap), (height() - kLampSize) / 2, kLampSize, kLampSize);
}

QSize LampRow::sizeHint() const {
    return QSize(8 * kLampSize + 7 * kLampGap, kLampSize + 2);
}

void LampRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(64, 64, 64));
    for (int bit = 7; bit >= 0; --bit) {
        painter.setBrush(LampColor(bit));
        painter.drawEllipse(LampRect(bit).adjusted(1, 1, -1, -1));
    }
}

// Each lamp owns the slot of its width and the gap to its right.
void LampRow::mousePressEvent(QMouseEvent* event) {
    const int slot = static_cast<int>(event->position().x()) / (kLampSize + kLampGap);
    if (slot < 0 || slot > 7 || !clicked) return;
    clicked(7 - slot);
}

PeripheralDevicesWindow::PeripheralDevicesWindow(PeripheralDevices& devices,
                                                 SettingsStore& settings, QWidget* parent)
    : QDialog(parent), devices_(devices), settings_(settings) {
    setWindowTitle(tr("Peripheral Devices"));
    auto* layout = new QVBoxLayout(this);
    auto* grid = new QGridLayout;
    for (int k = 1; k <= kPortDeviceCount; ++k)
        grid->addWidget(BuildLampDevice(k), (k - 1) / 2, (k - 1) % 2);
    grid->addWidget(BuildOutputTerminal(), 2, 0);
    grid->addWidget(BuildInputQueue(), 2, 1);
    layout->addLayout(grid);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    bottom->addWidget(OnTopCheckBox(*this, settings_, kWindowNumber));
    layout->addLayout(bottom);
    Refresh();
    RestoreWindowPlace(*this, settings_, kWindowNumber);
}

QPushButton* PeripheralDevicesWindow::OnOffButton(int k) {
    auto* button = new QPushButton(this);
    button->setFixedWidth(fontMetrics().horizontalAdvance("OFF") + 24);
    button->setToolTip(tr("Turns the device on at a port, or off"));
    connect(button, &QPushButton::clicked, this, [this, k] { ToggleDevice(k); });
    return button;
}

QWidget* PeripheralDevicesWindow::BuildLampDevice(int k) {
    Row& row = rows_[Index(k)];
    row.frame = new QGroupBox(this);
    auto* box = new QGridLayout(row.frame);
    box->addWidget(new QLabel(tr("Device %1").arg(k), row.frame), 0, 0);
    row.onOff = OnOffButton(k);
    box->addWidget(row.onOff, 0, 1);
    row.output = new QRadioButton(tr("Output"), row.frame);
    row.input = new QRadioButton(tr("Input"), row.frame);
    connect(row.output, &QRadioButton::clicked, this, [this, k] { ChooseInputMode(k, false); });
    connect(row.input, &QRadioButton::clicked, this, [this, k] { ChooseInputMode(k, true); });
    box->addWidget(row.output, 0, 2);
    box->addWidget(row.input, 0, 3);
    row.lamps = new LampRow(row.frame);
    row.lamps->clicked = [this, k](int bit) { ClickLamp(k, bit); };
    box->addWidget(row.lamps, 1, 0, 1, 3);
    row.value = new ClickLabel([this, k] { ClickValue(k); }, row.frame);
    row.value->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    row.value->setToolTip(tr("In input mode, a click sets the value the device supplies"));
    box->addWidget(row.value, 1, 3);
    row.oneShot = new ClickLabel([this, k] { ClickOneShot(k); }, row.frame);
    row.oneShot->setToolTip(kOneShotTip);
    box->addWidget(row.oneShot, 0, 4, 2, 1);
    return row.frame;
}

QWidget* PeripheralDevicesWindow::BuildOutputTerminal() {
    Row& row = rows_[Index(kOutputTerminalDevice)];
    row.frame = new QGroupBox(this);
    auto* box = new QGridLayout(row.frame);
    box->addWidget(new QLabel(tr("Device 5: output terminal"), row.frame), 0, 0);
    row.onOff = OnOffButton(kOutputTerminalDevice);
    box->addWidget(row.onOff, 0, 1);
    clearOutput_ = new QPushButton(tr("Clear"), row.frame);
    connect(clearOutput_, &QPushButton::clicked, this, [this] { ClearOutput(); });
    box->addWidget(clearOutput_, 0, 2);
    output_ = new QPlainTextEdit(row.frame);
    output_->setReadOnly(true);
    output_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    output_->setMinimumHeight(output_->fontMetrics().lineSpacing() * 5);
    box->addWidget(output_, 1, 0, 1, 3);
    return row.frame;
}

QWidget* PeripheralDevicesWindow::BuildInputQueue() {
    Row& row = rows_[Index(kInputQueueDevice)];
    row.frame = new QGroupBox(this);
    auto* box = new QGridLayout(row.frame);
    box->addWidget(new QLabel(tr("Device 6: input queue"), row.frame), 0, 0);
    row.onOff = OnOffButton(kInputQueueDevice);
    box->addWidget(row.onOff, 0, 1);
    queue_ = new QLabel(row.frame);
    queue_->setWordWrap(true);
    queue_->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    queue_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    queue_->setMinimumHeight(queue_->fontMetrics().lineSpacing() * 3);
    queue_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    queue_->setTextFormat(Qt::PlainText);
    box->addWidget(queue_, 1, 0, 1, 2);
    const struct {
        const char* caption;
        QueueKind kind;
    } sends[] = {{"Send String", kQueueString},
                 {"Send Hex Bytes", kQueueHex},
                 {"Send Dec Bytes", kQueueDecimal}};
    int place = 0;
    for (const auto& send : sends) {
        auto* button = new QPushButton(tr(send.caption), row.frame);
        const QueueKind kind = send.kind;
        connect(button, &QPushButton::clicked, this, [this, kind] { SendToQueue(kind); });
        box->addWidget(button, 2 + place / 2, place % 2);
        ++place;
    }
    auto* clear = new QPushButton(tr("Clear"), row.frame);
    clear->setObjectName("clearQueue");
    connect(clear, &QPushButton::clicked, this, [this] { ClearQueue(); });
    box->addWidget(clear, 3, 1);
    return row.frame;
}

void PeripheralDevicesWindow::RequestRefresh() {
    if (refreshPending_) return;
    refreshPending_ = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            refreshPending_ = false;
            Refresh();
        },
        Qt::QueuedConnection);
}

void PeripheralDevicesWindow::Refresh() {
    for (int k = 1; k <= kInputQueueDevice; ++k) refresh(k);
    refresh5();
    refresh6();
    refreshoneshot();
}

void PeripheralDevicesWindow::refresh(int k) {
    Row& row = rows_[Index(k)];
    const bool on = devices_.Enabled(k);
    row.frame->setTitle(QString::fromStdString(devices_.Caption(k)));
    row.onOff->setText(on ? tr("ON") : tr("OFF"));
    if (k == kOutputTerminalDevice) clearOutput_->setVisible(on);
    if (k > kPortDeviceCount) return;
    const PortBinding& d = devices_.Device(k);
    row.output->setEnabled(on);
    row.input->setEnabled(on);
    (d.InputMode ? row.input : row.output)->setChecked(true);
    row.lamps->SetValue(d.Value);
    row.value->setText(QString::fromStdString(devices_.ValueText(k)));
}

// While the text only grows at its end, what is on view stays and the rest is
// appended; a cut or a clearing draws it anew.
void PeripheralDevicesWindow::refresh5() {
    const std::string& text = devices_.OutputText();
    if (devices_.OutputCuts() != outputCuts_ || text.size() < outputShown_) {
        output_->setPlainText(Latin1(ScreenLines(text)));
        outputCuts_ = devices_.OutputCuts();
    } else if (text.size() > outputShown_) {
        const char previous = outputShown_ > 0 ? text[outputShown_ - 1] : 0;
        const std::string tail = ScreenLines(std::string_view(text).substr(outputShown_), previous);
        QTextCursor end(output_->document());
        end.movePosition(QTextCursor::End);
        end.insertText(Latin1(tail));
    }
    outputShown_ = text.size();
    output_->verticalScrollBar()->setValue(output_->verticalScrollBar()->maximum());
}

void PeripheralDevicesWindow::refresh6() {
    queue_->setText(Latin1(devices_.QueueText()));
}

void PeripheralDevicesWindow::refreshoneshot() {
    for (int k = 1; k <= kPortDeviceCount; ++k)
        rows_[Index(k)].oneShot->setText(QString::fromStdString(devices_.OneShotText(k)));
}

std::optional<QString> PeripheralDevicesWindow::Ask(const QString& prompt, const QString& offered) {
    if (ask) return ask(prompt, offered);
    return AskTextLine(this, windowTitle(), prompt, offered);
}

int PeripheralDevicesWindow::AskByte(const QString& prompt) {
    if (askByte) return askByte(prompt);
    ByteEntryDialog dialog(ByteEntryDialog::Kind::HexValue, kDeviceValueCaption, prompt, settings_,
                           this);
    return dialog.exec() == QDialog::Accepted ? dialog.value : -1;
}

void PeripheralDevicesWindow::ToggleDevice(int k) {
    if (devices_.Enabled(k)) {
        devices_.TurnOff(k);
    } else {
        const auto answer = Ask(kDevicePortPrompt, "");
        if (answer) Show(devices_.TurnOn(k, answer->toStdString()));
    }
    Refresh();
}

void PeripheralDevicesWindow::ChooseInputMode(int k, bool input) {
    Show(devices_.SetInputMode(k, input));
    Refresh();
}

void PeripheralDevicesWindow::ClickLamp(int k, int bit) {
    devices_.FlipLamp(k, bit);
    refresh(k);
}

void PeripheralDevicesWindow::ClickValue(int k) {
    const PortBinding& d = devices_.Device(k);
    if (!d.Enabled || !d.InputMode) return;
    devices_.SetValue(k, AskByte(kDeviceValuePrompt));
    refresh(k);
}

void PeripheralDevicesWindow::ClickOneShot(int k) {
    if (devices_.ClickOneShot(k)) devices_.SetOneShot(k, AskByte(kDeviceValuePrompt));
    refreshoneshot();
}

void PeripheralDevicesWindow::SendToQueue(QueueKind kind) {
    const auto answer =
        Ask(QString::fromStdString(SendPrompt(kind, "port")), Latin1(devices_.LastEntry(kind)));
    if (!answer) return;
    Show(devices_.Send(kind, answer->toLatin1().toStdString()));
    refresh6();
}

void PeripheralDevicesWindow::ClearOutput() {
    devices_.ClearOutput();
    refresh5();
}

void PeripheralDevicesWindow::ClearQueue() {
    devices_.ClearQueue();
    refresh6();
}

void PeripheralDevicesWindow::closeEvent(QCloseEvent* event) {
    SaveWindowPlace(*this, settings_, kWindowNumber);
    if (closed) closed();
    QDialog::closeEvent(event);
}

}  // namespace mb
