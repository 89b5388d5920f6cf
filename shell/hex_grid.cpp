#include "hex_grid.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSignalBlocker>
#include <algorithm>

namespace mb {

namespace {
constexpr int kMargin = 4;
}

// ---- CellEntryBox ----

CellEntryBox::CellEntryBox(HexGrid& grid) : QLineEdit(grid.viewport()), grid_(grid) {
    setFrame(false);
    setAlignment(Qt::AlignCenter);
    setAutoFillBackground(true);
    hide();
}

void CellEntryBox::keyPressEvent(QKeyEvent* event) {
    CellEntry& entry = grid_.entry_;
    const int cell = entry.Cell();
    switch (event->key()) {
        case Qt::Key_Escape: grid_.CloseEntry(); return;
        case Qt::Key_Return:
        case Qt::Key_Enter: {
            const CellEntry::Outcome out = entry.Finish();
            if (out.cell < 0) {
                grid_.CloseEntry();
            } else {
                grid_.Apply(out);
            }
            return;
        }
        case Qt::Key_Backspace:
            entry.Backspace();
            setText(QString::fromStdString(entry.Text(grid_.model_.CellValue(cell))));
            return;
        case Qt::Key_Left: grid_.MoveEntry(-1); return;
        case Qt::Key_Right: grid_.MoveEntry(1); return;
        case Qt::Key_Up: grid_.MoveEntry(-grid_.model_.Columns()); return;
        case Qt::Key_Down: grid_.MoveEntry(grid_.model_.Columns()); return;
        default: break;
    }
    const QString text = event->text();
    if (text.size() == 1 && text[0].unicode() < 128) {
        const CellEntry::Outcome out = entry.Key(static_cast<char>(text[0].unicode()));
        if (out.cell >= 0) {
            grid_.Apply(out);
        } else if (out.taken) {
            setText(QString::fromStdString(entry.Typed()));
        }
    }
    // Every other key is swallowed: the box holds digits only.
}

// Leaving the box keeps a lone digit, completed with a "0".
void CellEntryBox::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    if (!grid_.entry_.IsOpen()) return;
    const CellEntry::Outcome out = grid_.entry_.Finish();
    if (out.cell >= 0) grid_.model_.WriteCell(out.cell, out.value);
    grid_.CloseEntry();
}

// ---- HexGrid ----

HexGrid::HexGrid(HexGridModel& model, QWidget* parent)
    : QAbstractScrollArea(parent),
      model_(model),
      entry_(model.RowCount() * model.Columns()),
      box_(nullptr) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    setFont(font);
    viewport()->setFont(font);
    viewport()->setCursor(Qt::IBeamCursor);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    box_ = new CellEntryBox(*this);
    box_->setFont(font);
    redraw_.setSingleShot(true);
    connect(&redraw_, &QTimer::timeout, viewport(), qOverload<>(&QWidget::update));
    Relayout();
}

void HexGrid::RedrawNow() {
    pending_ = true;
    redraw_.stop();
    viewport()->update();
    if (entry_.IsOpen()) PlaceBox();
}

void HexGrid::QueueRedraw() {
    if (entry_.IsOpen()) PlaceBox();
    const qint64 since = sincePaint_.isValid() ? sincePaint_.elapsed() : kMinPaintMs;
    if (since >= kMinPaintMs) {
        viewport()->update();
    } else {
        redraw_.start(static_cast<int>(kMinPaintMs - since));
    }
}

void HexGrid::Relayout() {
    CloseEntry();
    entry_ = CellEntry(model_.RowCount() * model_.Columns());
    const int scroll = std::max(0, model_.RowCount() - model_.VisibleRows());
    verticalScrollBar()->setRange(0, scroll);
    verticalScrollBar()->setPageStep(model_.VisibleRows());
    verticalScrollBar()->setSingleStep(1);
    setVerticalScrollBarPolicy(scroll > 0 ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    SyncScrollBar();
    updateGeometry();
    RedrawNow();
}

int HexGrid::LineHeight() const {
    return fontMetrics().height();
}
// The advance of a fixed-pitch font is fractional: positions are taken from
// it, not from a rounded width, so that cells stay under their digits.
qreal HexGrid::CharWidth() const {
    return QFontMetricsF(font()).horizontalAdvance('0');
}
int HexGrid::X(int position) const {
    return kMargin + qRound(position * CharWidth());
}
int HexGrid::RowsTop() const {
    return kMargin + (model_.Heading().empty() ? 0 : LineHeight() + 2);
}

int HexGrid::LineChars() const {
    size_t chars = model_.Heading().size();
    if (model_.RowCount() > 0) chars = std::max(chars, model_.RowText(0).size());
    return static_cast<int>(chars);
}

QSize HexGrid::sizeHint() const {
    const int width =
        X(LineChars()) + 2 + kMargin + 2 * frameWidth() +
        (model_.RowCount() > model_.VisibleRows() ? verticalScrollBar()->sizeHint().width() : 0);
    const int height = RowsTop() + model_.VisibleRows() * LineHeight() + kMargin + 2 * frameWidth();
    return {width, height};
}

void HexGrid::SyncScrollBar() {
    const QSignalBlocker block(verticalScrollBar());
    verticalScrollBar()->setValue(model_.TopRow());
}

void HexGrid::scrollContentsBy(int, int) {
    if (verticalScrollBar()->value() == model_.TopRow()) return;
    model_.SetTopRow(verticalScrollBar()->value());
    RedrawNow();
}

QRect HexGrid::CellRect(int cell) const {
    const int columns = model_.Columns();
    if (cell < 0 || columns <= 0) return {};
    const int row = cell / columns - model_.TopRow();
    const int position = model_.CellPosition(cell % columns);
    const int x = X(position);
    return {x, RowsTop() + row * LineHeight(), X(position + model_.CellChars()) - x, LineHeight()};
}

int HexGrid::CellAt(const QPoint& pos) const {
    const int line = (pos.y() - RowsTop());
    if (line < 0) return -1;
    const int row = line / LineHeight();
    if (row >= model_.VisibleRows() || model_.TopRow() + row >= model_.RowCount()) return -1;
    // A cell takes the blank after it, so a click between two cells lands.
    const int chars = model_.CellChars() + (model_.CellChars() > 1 ? 1 : 0);
    for (int col = 0; col < model_.Columns(); ++col) {
        const int position = model_.CellPosition(col);
        if (pos.x() >= X(position) && pos.x() < X(position + chars)) {
            return (model_.TopRow() + row) * model_.Columns() + col;
        }
    }
    return -1;
}

void HexGrid::paintEvent(QPaintEvent*) {
    pending_ = false;
    sincePaint_.start();
    SyncScrollBar();
    QPainter p(viewport());
    const QColor background =
        model_.Background().isValid() ? model_.Background() : palette().color(QPalette::Base);
    const QColor foreground =
        model_.Foreground().isValid() ? model_.Foreground() : palette().color(QPalette::Text);
    p.fillRect(viewport()->rect(), background);
    p.setPen(foreground);
    const int lineHeight = LineHeight();
    const int ascent = fontMetrics().ascent();
    const std::string heading = model_.Heading();
    if (!heading.empty()) {
        p.drawText(QPointF(kMargin, kMargin + ascent), QString::fromLatin1(heading.c_str()));
    }
    const int columns = model_.Columns();
    const int top = model_.TopRow();
    const int last = std::min(model_.RowCount(), top + model_.VisibleRows());
    for (int row = top; row < last; ++row) {
        const int y = RowsTop() + (row - top) * lineHeight;
        for (int col = 0; col < columns; ++col) {
            const QColor mark = model_.CellColor(row * columns + col);
            if (!mark.isValid()) continue;
            const QRect cell = CellRect(row * columns + col);
            p.fillRect(cell, mark);
            const int charPos = model_.CharPosition(col);
            if (charPos >= 0) {
                p.fillRect(QRect(X(charPos), y, X(charPos + 1) - X(charPos), lineHeight), mark);
            }
        }
        p.drawText(kMargin, y + ascent, QString::fromLatin1(model_.RowText(row).c_str()));
    }
}

void HexGrid::mousePressEvent(QMouseEvent* event) {
    const int cell = CellAt(event->position().toPoint());
    if (cell >= 0) OpenEntry(cell);
}

void HexGrid::OpenEntry(int cell) {
    entry_.Open(cell);
    if (!entry_.IsOpen()) {
        CloseEntry();
        return;
    }
    const int row = cell / model_.Columns();
    if (row < model_.TopRow()) model_.SetTopRow(row);
    if (row >= model_.TopRow() + model_.VisibleRows())
        model_.SetTopRow(row - model_.VisibleRows() + 1);
    RedrawNow();
    PlaceBox();
    box_->setText(QString::fromStdString(entry_.Text(model_.CellValue(cell))));
    box_->show();
    box_->raise();
    box_->setFocus();
    box_->selectAll();
}

void HexGrid::PlaceBox() {
    const QRect cell = CellRect(entry_.Cell());
    const int width = qRound(std::max(2, model_.CellChars()) * CharWidth()) + 6;
    box_->setGeometry(cell.center().x() - width / 2, cell.top(), width, cell.height());
}

void HexGrid::CloseEntry() {
    entry_.Close();
    if (box_ && box_->isVisible()) {
        const bool hadFocus = box_->hasFocus();
        box_->hide();
        if (hadFocus) viewport()->setFocus();
    }
}

void HexGrid::MoveEntry(int delta) {
    const int cell = entry_.Cell() + delta;
    if (cell >= 0 && cell < model_.RowCount() * model_.Columns()) OpenEntry(cell);
}

void HexGrid::Apply(const CellEntry::Outcome& out) {
    model_.WriteCell(out.cell, out.value);
    if (entry_.IsOpen()) {
        OpenEntry(entry_.Cell());
    } else {
        CloseEntry();
    }
    RedrawNow();
}

}  // namespace mb
