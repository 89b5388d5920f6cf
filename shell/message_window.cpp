#include "message_window.h"

#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <algorithm>

#include "settings/settings_store.h"
#include "window_place.h"

namespace mb {

namespace {
constexpr int kTickMs = 40;
constexpr int kBarHeight = 3;
constexpr int kScreenMargin = 24;
}  // namespace

InfoFrame::InfoFrame(const QString& text, int durationMs, QWidget* owner)
    : QWidget(owner, Qt::ToolTip | Qt::FramelessWindowHint), durationMs_(durationMs) {
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setObjectName("infoFrame");
    // The colours of a note: the theme's tool tip colours.
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(14, 10, 18, 10 + kBarHeight);
    layout->setSpacing(12);
    auto* icon = new QLabel(this);
    const int side = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(side, side));
    icon->setAlignment(Qt::AlignTop);
    text_ = new QLabel(text, this);
    text_->setTextFormat(Qt::PlainText);
    text_->setForegroundRole(QPalette::ToolTipText);
    layout->addWidget(icon);
    layout->addWidget(text_, 1);
    connect(&timer_, &QTimer::timeout, this, &InfoFrame::Tick);
    timer_.start(kTickMs);
    sinceTick_.start();
}

QString InfoFrame::Text() const {
    return text_->text();
}

void InfoFrame::Tick() {
    const int elapsed = static_cast<int>(sinceTick_.restart());
    // The reader's pointer holds the note.
    if (isVisible() && frameGeometry().contains(QCursor::pos())) return;
    shownMs_ += elapsed;
    if (shownMs_ >= durationMs_) {
        close();
        return;
    }
    update();
}

void InfoFrame::paintEvent(QPaintEvent*) {
    QPainter p(this);
    QColor edge = palette().color(QPalette::ToolTipText);
    edge.setAlpha(110);
    p.setPen(edge);
    p.drawRect(rect().adjusted(0, 0, -1, -1));
    // The time left, as a bar in the selection colour that shrinks towards the left.
    const int inner = width() - 2;
    const int left = durationMs_ > 0 ? inner * RemainingMs() / durationMs_ : 0;
    p.fillRect(1, height() - 1 - kBarHeight, left, kBarHeight,
               palette().color(QPalette::Highlight));
}

void InfoFrame::mousePressEvent(QMouseEvent*) {
    close();
}

Messages::Messages(SettingsStore& settings, QWidget& owner) : settings_(settings), owner_(owner) {
    qApp->installEventFilter(this);
}

Messages::~Messages() {
    qApp->removeEventFilter(this);
}

bool Messages::eventFilter(QObject* watched, QEvent* event) {
    // A question that waits for the user takes the place of the note, which its
    // modality would leave unclickable.
    if (event->type() == QEvent::Show && watched->isWidgetType() && notice_ && watched != notice_) {
        auto* shown = static_cast<QWidget*>(watched);
        if (shown->isWindow() && shown->isModal() && qobject_cast<InfoFrame*>(notice_))
            notice_->close();
    }
    // A key that is a shortcut reaches the focus widget only as ShortcutOverride.
    const QEvent::Type type = event->type();
    if ((type == QEvent::KeyPress || type == QEvent::ShortcutOverride ||
         type == QEvent::MouseButtonPress) &&
        watched->isWidgetType()) {
        const QWidget* window = static_cast<QWidget*>(watched)->window();
        if (window != notice_ && window != report_) ++userCommands_;
    }
    return QObject::eventFilter(watched, event);
}

void Messages::Show(const QString& text, MessageKind kind) {
    if (kind == MessageKind::Report) {
        ShowReport(text);
        return;
    }
    if (boxShowing_) return;
    if (notice_ && notice_->isVisible()) {
        if (userCommands_ == commandsAtNotice_) return;  // the same command's second word
        notice_->close();
    }
    commandsAtNotice_ = userCommands_;
    ShowNotice(text);
}

void Messages::ShowNotice(const QString& text) {
    const QString title = owner_.windowTitle();
    if (settings_.GetSettingText("Show Confirmations", "OFF") == "ON") {
        QMessageBox box(QMessageBox::Information, title, text, QMessageBox::Ok, &owner_);
        ApplyOnTop(box);
        notice_ = &box;
        boxShowing_ = true;
        box.exec();
        boxShowing_ = false;
        return;
    }
    const int seconds = std::clamp(settings_.GetSettingInt("Messages Duration", 3), 1, 10);
    // Within a modal dialog the note belongs to it, so that a click reaches it.
    QWidget* modal = QApplication::activeModalWidget();
    auto* frame = new InfoFrame(text, seconds * 1000, modal ? modal : &owner_);
    notice_ = frame;
    frame->adjustSize();
    Place(*frame);
    frame->show();
}

void Messages::ShowReport(const QString& text) {
    if (!report_) {
        report_ = new QMessageBox(QMessageBox::Warning, owner_.windowTitle(), text,
                                  QMessageBox::Close, &owner_);
        report_->setAttribute(Qt::WA_DeleteOnClose);
        report_->setModal(false);
        report_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    } else {
        report_->setText(text);
    }
    ShowToolWindow(*report_);
}

// "Messages Mode" 0: centred over the main window; 1: the lower right corner of
// the screen.
void Messages::Place(QWidget& window) {
    const QScreen* screen = owner_.screen() ? owner_.screen() : QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect(0, 0, 800, 600);
    QPoint at;
    if (settings_.GetSettingInt("Messages Mode", 0) == 1) {
        at = area.bottomRight() - QPoint(window.width(), window.height()) -
             QPoint(kScreenMargin, kScreenMargin);
    } else {
        at = owner_.frameGeometry().center() - QPoint(window.width() / 2, window.height() / 2);
    }
    at.setX(std::clamp(at.x(), area.left(), std::max(area.left(), area.right() - window.width())));
    at.setY(std::clamp(at.y(), area.top(), std::max(area.top(), area.bottom() - window.height())));
    window.move(at);
}

}  // namespace mb
