#include "terminal_window.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

#include "core/numtext.h"
#include "entry_dialogs.h"
#include "window_place.h"

namespace mb {

namespace {

// Text and background of each scheme, in the order of kTerminalSchemeNames.
struct SchemeColors {
    QColor text, background;
};
const SchemeColors kSchemes[kTerminalSchemes] = {
    {QColor(64, 255, 64), QColor(0, 0, 0)},      // green on black
    {QColor(255, 176, 0), QColor(0, 0, 0)},      // amber on black
    {QColor(224, 224, 224), QColor(0, 0, 0)},    // white on black
    {QColor(0, 0, 0), QColor(255, 255, 255)},    // black on white
    {QColor(255, 255, 255), QColor(0, 0, 160)},  // white on blue
};

QString Latin1(std::string_view text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

bool IsLetterKey(int value) {
    return value >= 'A' && value <= 'Z';
}

}  // namespace

TerminalWindow::TerminalWindow(Terminal& terminal, SettingsStore& settings, QWidget* parent)
    : QDialog(parent),
      terminal_(terminal),
      settings_(settings),
      windowNumber_(TerminalWindowNumber(terminal.Kind())) {
    setWindowTitle(TerminalTitle(terminal.Kind()));
    auto* layout = new QVBoxLayout(this);

    screen_ = new QPlainTextEdit(this);
    screen_->setReadOnly(true);
    screen_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    screen_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    const QFontMetrics metrics(screen_->font());
    screen_->setMinimumSize(metrics.horizontalAdvance(QString(64, 'M')) + 24,
                            metrics.lineSpacing() * 10);
    layout->addWidget(screen_, 1);

    auto* screenCommands = new QHBoxLayout;
    auto* clear = new QPushButton(tr("Clear"), this);
    clear->setObjectName("clearScreen");
    clear->setToolTip(tr("Clears the screen"));
    connect(clear, &QPushButton::clicked, this, [this] { ClearScreen(); });
    auto* scheme = new QPushButton(tr("Color Scheme"), this);
    connect(scheme, &QPushButton::clicked, this, [this] { ChangeColorScheme(); });
    auto* info = new QPushButton(tr("Info"), this);
    connect(info, &QPushButton::clicked, this, [this] { ShowInfo(); });
    screenCommands->addWidget(clear);
    screenCommands->addWidget(scheme);
    screenCommands->addWidget(info);
    screenCommands->addStretch();
    receivedFrame_ = new QGroupBox(tr("Last received char hex code"), this);
    auto* receivedBox = new QHBoxLayout(receivedFrame_);
    receivedBox->setContentsMargins(6, 2, 6, 2);
    received_ = new QLabel(receivedFrame_);
    received_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    received_->setAlignment(Qt::AlignCenter);
    receivedBox->addWidget(received_);
    // The frame comes and goes; its room stays, so the controls do not jump.
    QSizePolicy keep = receivedFrame_->sizePolicy();
    keep.setRetainSizeWhenHidden(true);
    receivedFrame_->setSizePolicy(keep);
    receivedFrame_->hide();
    screenCommands->addWidget(receivedFrame_);
    screenCommands->addWidget(OnTopCheckBox(*this, settings_, windowNumber_));
    layout->addLayout(screenCommands);

    auto* registers = new QHBoxLayout;
    registers->addWidget(BuildRegisters(true));
    registers->addWidget(BuildRegisters(false));
    layout->addLayout(registers);
    layout->addWidget(BuildInput());
    layout->addWidget(BuildKeys());

    receivedTimer_.setInterval(kReceivedTickMs);
    connect(&receivedTimer_, &QTimer::timeout, this, [this] { terminal_.ReceivedTick(); });
    // A window that closed may wait for its deletion while a new one shows
    // the terminal: the notices go to the newest window only.
    terminal_.changed = [window = QPointer<TerminalWindow>(this)](int changes) {
        if (window) window->Changed(changes);
    };
    ApplyScheme();
    RedrawRegisters();
    RedrawScreen();
    pending_ = Terminal::kQueueChanged | Terminal::kReceivedChanged;
    Flush();
    RestoreWindowPlace(*this, settings_, windowNumber_);
}

QWidget* TerminalWindow::BuildRegisters(bool output) {
    auto* frame = new QGroupBox(output ? tr("Output terminal") : tr("Input terminal"), this);
    auto* grid = new QGridLayout(frame);
    auto label = [&] {
        auto* l = new QLabel(frame);
        l->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        return l;
    };
    auto change = [&](bool status) {
        auto* button = new QPushButton(tr("Change"), frame);
        connect(button, &QPushButton::clicked, this,
                [this, output, status] { ChangeRegister(output, status); });
        return button;
    };
    grid->addWidget(new QLabel(terminal_.DataCaption(output), frame), 0, 0);
    (output ? outData_ : inData_) = label();
    grid->addWidget(output ? outData_ : inData_, 0, 1);
    grid->addWidget(change(false), 0, 2);
    auto* statusCaption = new QLabel(tr("Status register, bit:"), frame);
    statusCaption->setToolTip(output ? tr("The bit is the Transmit Data Register Empty signal")
                                     : tr("The bit is the Receive Data Register Full signal"));
    grid->addWidget(statusCaption, 1, 0);
    (output ? outStatus_ : inStatus_) = label();
    grid->addWidget(output ? outStatus_ : inStatus_, 1, 1);
    grid->addWidget(change(true), 1, 2);
    if (output) {
        grid->addWidget(new QLabel(tr("Busy time (clock cycles):"), frame), 2, 0);
        busy_ = label();
        grid->addWidget(busy_, 2, 1);
    }
    return frame;
}

QWidget* TerminalWindow::BuildInput() {
    auto* frame = new QGroupBox(tr("Input queue"), this);
    auto* box = new QVBoxLayout(frame);
    queue_ = new QLabel(frame);
    queue_->setWordWrap(true);
    queue_->setTextFormat(Qt::PlainText);
    queue_->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    queue_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    queue_->setMinimumHeight(queue_->fontMetrics().lineSpacing() * 2);
    queue_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    box->addWidget(queue_);
    auto* commands = new QHBoxLayout;
    const struct {
        const char* caption;
        const char* tip;
        QueueKind kind;
    } sends[] = {
        {"Send String", "Send alphanumeric characters to the terminal input queue", kQueueString},
        {"Send Hex Bytes", "Send comma-separated HEX bytes to the terminal input queue", kQueueHex},
        {"Send Dec Bytes", "Send comma-separated decimal bytes to the terminal input queue",
         kQueueDecimal},
    };
    for (const auto& send : sends) {
        auto* button = new QPushButton(tr(send.caption), frame);
        button->setToolTip(tr(send.tip));
        const QueueKind kind = send.kind;
        connect(button, &QPushButton::clicked, this, [this, kind] { SendToQueue(kind); });
        commands->addWidget(button);
    }
    auto* paste = new QPushButton(tr("Paste"), frame);
    paste->setToolTip(
        tr("Send textual content from the Clipboard to the terminal input queue "
           "(multiple lines accepted)"));
    connect(paste, &QPushButton::clicked, this, [this] { PasteClipboard(); });
    commands->addWidget(paste);
    auto* clear = new QPushButton(tr("Clear"), frame);
    clear->setObjectName("clearQueue");
    clear->setToolTip(tr("Empties the input queue"));
    connect(clear, &QPushButton::clicked, this, [this] { ClearQueue(); });
    commands->addWidget(clear);
    commands->addStretch();
    box->addLayout(commands);
    return frame;
}

QWidget* TerminalWindow::BuildKeys() {
    auto* frame = new QGroupBox(tr("Keys"), this);
    auto* grid = new QGridLayout(frame);
    grid->setSpacing(2);
    constexpr int kColumns = 19;
    const int width = fontMetrics().horizontalAdvance('W') * 2 + 10;
    int index = 0;
    for (const std::string& caption : TerminalKeyCaptions()) {
        const int value = TerminalKeyValue(caption);
        auto* key = new QPushButton(QString::fromStdString(caption), frame);
        key->setFocusPolicy(Qt::NoFocus);
        const bool named = caption.size() > 2;
        if (named && index < kColumns * 3) index = kColumns * 3;  // the named keys' row
        const int span = named ? 4 : 1;
        if (!named) key->setFixedWidth(width);
        connect(key, &QPushButton::clicked, this, [this, key] { PressKey(key->text()); });
        grid->addWidget(key, index / kColumns, index % kColumns, 1, span);
        index += span;
        keys_[value] = key;
    }
    small_ = new QCheckBox(tr("Small Letters"), frame);
    small_->setChecked(terminal_.SmallLetters());
    RelabelLetters(terminal_.SmallLetters());
    connect(small_, &QCheckBox::toggled, this, [this](bool on) { SetSmallLetters(on); });
    grid->addWidget(small_, index / kColumns, index % kColumns, 1, kColumns - index % kColumns);
    return frame;
}

QPushButton* TerminalWindow::key(int value) const {
    const auto it = keys_.find(value >= 'a' && value <= 'z' ? value - 32 : value);
    return it == keys_.end() ? nullptr : it->second;
}

void TerminalWindow::Changed(int changes) {
    if (pending_ == 0) {
        QMetaObject::invokeMethod(
            this, [this] { Flush(); }, Qt::QueuedConnection);
    }
    pending_ |= changes;
}

void TerminalWindow::Flush() {
    const int changes = pending_;
    pending_ = 0;
    if (changes & Terminal::kScreenChanged) RedrawScreen();
    if (changes & Terminal::kQueueChanged) queue_->setText(Latin1(terminal_.QueueText()));
    if (changes & Terminal::kReceivedChanged) {
        const bool shown = terminal_.ReceivedShown();
        received_->setText(QString::fromStdString(terminal_.LastReceivedText()));
        receivedFrame_->setVisible(shown);
        if (!shown) {
            receivedTimer_.stop();
        } else if (!receivedTimer_.isActive()) {
            receivedTimer_.start();
        }
    }
}

// While the screen only grows at its end, what is on view stays and the rest
// is appended; a backspace, a clearing or a cut draws it anew.
void TerminalWindow::RedrawScreen() {
    const std::string& text = terminal_.OutputText();
    if (terminal_.ScreenGeneration() != screenGeneration_ || text.size() < screenShown_) {
        screen_->setPlainText(Latin1(ScreenLines(text)));
        screenGeneration_ = terminal_.ScreenGeneration();
    } else if (text.size() > screenShown_) {
        const char previous = screenShown_ > 0 ? text[screenShown_ - 1] : 0;
        QTextCursor end(screen_->document());
        end.movePosition(QTextCursor::End);
        end.insertText(Latin1(ScreenLines(std::string_view(text).substr(screenShown_), previous)));
    }
    screenShown_ = text.size();
    screen_->verticalScrollBar()->setValue(screen_->verticalScrollBar()->maximum());
}

void TerminalWindow::RedrawRegisters() {
    outData_->setText(QString::fromStdString(terminal_.DataText(true)));
    outStatus_->setText(QString::fromStdString(terminal_.StatusText(true)));
    busy_->setText(QString::number(terminal_.Binding().BusyTime));
    inData_->setText(QString::fromStdString(terminal_.DataText(false)));
    inStatus_->setText(QString::fromStdString(terminal_.StatusText(false)));
}

void TerminalWindow::ApplyScheme() {
    const SchemeColors& colors = kSchemes[terminal_.ColorScheme()];
    QPalette palette = screen_->palette();
    palette.setColor(QPalette::Base, colors.background);
    palette.setColor(QPalette::Text, colors.text);
    screen_->setPalette(palette);
}

std::optional<QString> TerminalWindow::Ask(const QString& prompt, const QString& offered) {
    if (ask) return ask(prompt, offered);
    return AskTextLine(this, windowTitle(), prompt, offered);
}

bool TerminalWindow::AskRegister(TerminalRegister r) {
    const TerminalBinding& b = terminal_.Binding();
    const bool memory = terminal_.Kind() == TerminalKind::MemoryMapped;
    int current = 0;
    switch (r) {
        case TerminalRegister::OutData: current = b.OutData; break;
        case TerminalRegister::OutStatus: current = b.OutStatus; break;
        case TerminalRegister::OutBit: current = b.OutBit; break;
        case TerminalRegister::BusyTime: current = b.BusyTime; break;
        case TerminalRegister::InData: current = b.InData; break;
        case TerminalRegister::InStatus: current = b.InStatus; break;
        case TerminalRegister::InBit: current = b.InBit; break;
    }
    const bool address = r == TerminalRegister::OutData || r == TerminalRegister::OutStatus ||
                         r == TerminalRegister::InData || r == TerminalRegister::InStatus;
    const QString offered = address ? QString::fromStdString(HexDigits(current, memory ? 4 : 2))
                                    : QString::number(current);
    const auto answer = Ask(QString::fromStdString(terminal_.Prompt(r)), offered);
    if (!answer || answer->trimmed().isEmpty()) return false;
    const std::string refusal = terminal_.Change(r, answer->toStdString());
    RedrawRegisters();
    Show(refusal);
    return refusal.empty();
}

void TerminalWindow::ChangeRegister(bool output, bool status) {
    using R = TerminalRegister;
    if (!status) {
        AskRegister(output ? R::OutData : R::InData);
        return;
    }
    if (!AskRegister(output ? R::OutStatus : R::InStatus)) return;
    if (!AskRegister(output ? R::OutBit : R::InBit)) return;
    if (output) AskRegister(R::BusyTime);
}

void TerminalWindow::SendToQueue(QueueKind kind) {
    const auto answer = Ask(QString::fromStdString(SendPrompt(kind, "terminal")),
                            Latin1(terminal_.LastEntry(kind)));
    if (!answer) return;
    Show(terminal_.Send(kind, answer->toLatin1().toStdString()));
    Flush();
}

void TerminalWindow::PasteClipboard() {
    const QByteArray text = QApplication::clipboard()->text().toLatin1();
    terminal_.Paste(std::string_view(text.constData(), static_cast<size_t>(text.size())));
    Flush();
}

void TerminalWindow::PressKey(const QString& caption) {
    terminal_.Key(caption.toLatin1().toStdString());
    Flush();
}

void TerminalWindow::ClearQueue() {
    terminal_.ClearQueue();
    Flush();
}

void TerminalWindow::ClearScreen() {
    terminal_.ClearScreen();
    Flush();
}

void TerminalWindow::ChangeColorScheme() {
    QStringList names;
    for (const char* name : kTerminalSchemeNames) names << name;
    std::optional<int> chosen;
    if (choose) {
        chosen = choose(names, terminal_.ColorScheme());
    } else {
        bool ok = false;
        const QString item =
            QInputDialog::getItem(this, tr("Please select"), tr("Terminal screen color scheme:"),
                                  names, terminal_.ColorScheme(), false, &ok);
        if (ok) chosen = static_cast<int>(names.indexOf(item));
    }
    if (chosen && terminal_.ChangeColorScheme(*chosen)) ApplyScheme();
}

void TerminalWindow::ShowInfo() {
    if (report) report(TerminalInfo(terminal_.Kind()));
}

void TerminalWindow::SetSmallLetters(bool small) {
    terminal_.SetSmallLetters(small);
    if (small_->isChecked() != small) small_->setChecked(small);
    RelabelLetters(small);
}

void TerminalWindow::RelabelLetters(bool small) {
    for (auto& [value, button] : keys_) {
        if (IsLetterKey(value)) button->setText(QString(QChar(small ? value + 32 : value)));
    }
}

void TerminalWindow::closeEvent(QCloseEvent* event) {
    terminal_.Close();
    SaveWindowPlace(*this, settings_, windowNumber_);
    if (closed) closed();
    QDialog::closeEvent(event);
}

}  // namespace mb
