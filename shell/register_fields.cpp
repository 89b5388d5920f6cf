#include "register_fields.h"

#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QPainter>
#include <algorithm>

namespace mb {

namespace {
constexpr int kLongestTyped = 8;  // "1FF" and the like: the last digits count
}

RegisterEditBox::RegisterEditBox(const QString& text, std::function<void(const QString&)> take,
                                 QWidget* field)
    : QLineEdit(text, field), take_(std::move(take)) {
    setObjectName("registerEditBox");
    setFont(field->font());
    setAlignment(Qt::AlignCenter);
    setMaxLength(kLongestTyped);
    setGeometry(field->rect());
    selectAll();
}

void RegisterEditBox::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        Finish(true);
    } else if (event->key() == Qt::Key_Escape) {
        Finish(false);
    } else {
        QLineEdit::keyPressEvent(event);
    }
}

void RegisterEditBox::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    // A menu or a context menu takes the focus only for a while.
    if (event->reason() != Qt::PopupFocusReason) Finish(false);
}

void RegisterEditBox::Finish(bool take) {
    if (done_) return;
    done_ = true;
    hide();
    if (take && take_) take_(text());
    deleteLater();
}

RegisterField::RegisterField(const QString& name, int digits, QWidget* parent)
    : QLabel(parent), name_(name), digits_(digits) {
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
    // Drawn as a field: the colour theme's field background and text.
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    setForegroundRole(QPalette::Text);
    setAlignment(Qt::AlignCenter);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setMinimumWidth(fontMetrics().horizontalAdvance('0') * (digits + 2));
    // A taller group must not stretch the fields.
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setToolTip(QObject::tr("Double-click to change %1").arg(name));
}

void RegisterField::OpenEditor(std::function<void(const QString&)> take) {
    if (editor_) return;
    editor_ = new RegisterEditBox(text(), std::move(take), this);
    editor_->show();
    editor_->setFocus(Qt::OtherFocusReason);
}

void RegisterField::mouseDoubleClickEvent(QMouseEvent*) {
    emit EditRequested(this);
}

PathLabel::PathLabel(QWidget* parent) : QWidget(parent) {
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
}

void PathLabel::SetPath(const QString& path) {
    if (path == path_) return;
    path_ = path;
    setToolTip(QDir::toNativeSeparators(path));
    updateGeometry();
    update();
}

QString PathLabel::DisplayedText() const {
    const QString full = QDir::toNativeSeparators(path_);
    const QFontMetrics fm = fontMetrics();
    const int room = contentsRect().width();
    if (fm.horizontalAdvance(full) <= room) return full;
    const QString name = QFileInfo(path_).fileName();
    const QString folder = full.left(full.size() - name.size());
    const int folderRoom = room - fm.horizontalAdvance(name);
    const QString ellipsis(QChar(0x2026));
    if (folder.isEmpty() || folderRoom <= fm.horizontalAdvance(ellipsis + folder.right(1)))
        return fm.elidedText(name, Qt::ElideMiddle, room);
    // The middle of the folder goes first; in a narrow room its end stays, so
    // that the name still follows a separator.
    QString shortened = fm.elidedText(folder, Qt::ElideMiddle, folderRoom);
    if (shortened == ellipsis) shortened = fm.elidedText(folder, Qt::ElideLeft, folderRoom);
    return shortened + name;
}

// The field asks for no more than the name: the folder takes what room the
// window has anyway.
QSize PathLabel::sizeHint() const {
    return minimumSizeHint();
}

QSize PathLabel::minimumSizeHint() const {
    const QFontMetrics fm = fontMetrics();
    const QString name = QFileInfo(path_).fileName();
    // Room for the name and a shortened folder in front of it, and the pixel to
    // spare that shortening wants.
    const QString shortest = QChar(0x2026) + QDir::toNativeSeparators("/") + name;
    const int width =
        std::min(fm.horizontalAdvance(shortest) + 2, fm.horizontalAdvance('0') * kLongestName);
    return {width, fm.height()};
}

void PathLabel::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setPen(palette().color(foregroundRole()));
    p.drawText(contentsRect(), Qt::AlignLeft | Qt::AlignVCenter, DisplayedText());
}

}  // namespace mb
