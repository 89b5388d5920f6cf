#include "log_viewer_window.h"

#include <QAbstractScrollArea>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPainter>
#include <QSaveFile>
#include <QScrollBar>
#include <QStatusBar>
#include <algorithm>
#include <array>
#include <cmath>

#include "core/simlog.h"
#include "settings/settings_store.h"
#include "window_place.h"

namespace mb {

namespace {

constexpr const char* kTitle = "Simulation Log Viewer";
constexpr const char* kSettingKeepLast = "Log Viewer Keep Last Record In Focus";
constexpr const char* kSettingNoColors = "Log Viewer No Colors";
// Added lines reach the view at most this often.
constexpr int kFlushMs = 40;

// A record: the count in 7 characters, the address in 4, two blanks, the
// instruction (16 characters or more), then the registers in a tail of fixed
// width.
constexpr int kPcStart = 7;
constexpr int kTextStart = 13;
constexpr int kTailWidth = 76;

struct Field {
    int start, length;  // in the tail
};

// The register columns of the tail: A, the eight flags one by one, B to L, IX,
// IY, SP, A', the alternate flags, B' to L'.
constexpr std::array<Field, 33> kFields = [] {
    std::array<Field, 33> fields{};
    size_t n = 0;
    auto flags = [&](int start) {
        for (int i = 0; i < 8; ++i) fields[n++] = {start + i, 1};
    };
    fields[n++] = {0, 2};
    flags(3);
    for (int i = 0; i < 6; ++i) fields[n++] = {13 + 3 * i, 2};
    for (int i = 0; i < 3; ++i) fields[n++] = {31 + 5 * i, 4};
    fields[n++] = {46, 2};
    flags(49);
    for (int i = 0; i < 6; ++i) fields[n++] = {59 + 3 * i, 2};
    return fields;
}();
static_assert(kFields[32].start + kFields[32].length == kTailWidth);

bool IsHexDigit(QChar c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
}

bool IsRecord(const QString& text) {
    if (text.size() < kTextStart + kTailWidth) return false;
    for (int i = kPcStart; i < kPcStart + 4; ++i) {
        if (!IsHexDigit(text[i])) return false;
    }
    const int tail = static_cast<int>(text.size()) - kTailWidth;
    return text[kPcStart + 4] == ' ' && text[kPcStart + 5] == ' ' && text[tail + 2] == ' ' &&
           text[tail + 11] == ' ';
}

}  // namespace

std::vector<LogSpan> LogLineSpans(const QString& line, const QString* previous) {
    std::vector<LogSpan> spans;
    if (!IsRecord(line)) return spans;
    const int tail = static_cast<int>(line.size()) - kTailWidth;
    spans.push_back({0, kPcStart, LogSpan::Count});
    spans.push_back({kPcStart, 4, LogSpan::Address});
    spans.push_back({kTextStart, tail - kTextStart, LogSpan::Instruction});
    if (!previous || !IsRecord(*previous)) return spans;
    const int tailBefore = static_cast<int>(previous->size()) - kTailWidth;
    for (const Field& f : kFields) {
        if (QStringView(line).mid(tail + f.start, f.length) !=
            QStringView(*previous).mid(tailBefore + f.start, f.length))
            spans.push_back({tail + f.start, f.length, LogSpan::Changed});
    }
    return spans;
}

// The records under the heading of the log. It holds the lines as texts and
// draws only the rows on show, so an added line costs next to nothing. Whole
// rows are selected with the mouse and copied with the Copy key.
class LogView : public QAbstractScrollArea {
  public:
    explicit LogView(QWidget* parent) : QAbstractScrollArea(parent) {
        setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        viewport()->setBackgroundRole(QPalette::Base);
        viewport()->setAutoFillBackground(true);
        setFocusPolicy(Qt::StrongFocus);
        UpdateScrollBars();
    }

    const QStringList& Lines() const { return lines_; }

    // Adds the lines at the end; the oldest give way beyond kMaxRecords. With
    // `follow` the view goes to the last record, otherwise the records on show
    // stay. Returns how many records gave way.
    int Append(QStringList batch, bool follow) {
        constexpr int max = LogViewerWindow::kMaxRecords;
        for (const QString& line : batch) widest_ = std::max(widest_, int(line.size()));
        int removed = 0;
        if (batch.size() >= max) {
            removed = static_cast<int>(lines_.size() + batch.size()) - max;
            batch.remove(0, batch.size() - max);
            lines_ = std::move(batch);
        } else {
            lines_ += batch;
            if (lines_.size() > max) {
                removed = static_cast<int>(lines_.size()) - max;
                lines_.remove(0, removed);
            }
        }
        if (anchor_ >= 0) {
            anchor_ -= removed;
            current_ -= removed;
            if (anchor_ < 0 && current_ < 0)
                anchor_ = current_ = -1;  // the selected records gave way
            else
                anchor_ = std::max(0, anchor_), current_ = std::max(0, current_);
        }
        QScrollBar* bar = verticalScrollBar();
        const int place = std::max(0, bar->value() - removed);
        UpdateScrollBars();
        bar->setValue(follow ? bar->maximum() : place);
        viewport()->update();
        return removed;
    }

    void Clear() {
        lines_.clear();
        widest_ = 0;
        anchor_ = current_ = -1;
        UpdateScrollBars();
        viewport()->update();
    }

    void SetColors(bool on) {
        colors_ = on;
        viewport()->update();
    }

    void ScrollToLast() { verticalScrollBar()->setValue(verticalScrollBar()->maximum()); }

    std::vector<LogSpan> Spans(int row) const {
        if (!colors_ || row < 0 || row >= lines_.size()) return {};
        return LogLineSpans(lines_[row], row > 0 ? &lines_[row - 1] : nullptr);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(viewport());
        const QPalette& pal = palette();
        const int lh = LineHeight(), ascent = fontMetrics().ascent();
        const qreal cw = CharWidth();
        const qreal x0 = kMargin - horizontalScrollBar()->value();
        auto draw = [&](int col, int y, const QString& text) {
            p.drawText(QPointF(x0 + col * cw, y + ascent), text);
        };

        p.fillRect(0, 0, viewport()->width(), lh, pal.color(QPalette::Button));
        p.setPen(pal.color(QPalette::ButtonText));
        draw(0, 0, LogViewerWindow::Heading());

        const bool dark = pal.color(QPalette::Base).lightness() < 128;
        const QColor colours[4] = {
            QColor(0x80, 0x80, 0x80),
            dark ? QColor(0x70, 0xA0, 0xFF) : QColor(0x00, 0x40, 0xC0),
            dark ? QColor(0x70, 0xD0, 0x70) : QColor(0x00, 0x70, 0x00),
            dark ? QColor(0xFF, 0x70, 0x70) : QColor(0xC0, 0x00, 0x00),
        };
        const int selFirst = std::min(anchor_, current_), selLast = std::max(anchor_, current_);
        const int first = verticalScrollBar()->value();
        const int rows = viewport()->height() / lh + 1;
        for (int i = 0; i < rows && first + i < lines_.size(); ++i) {
            const int row = first + i, y = (i + 1) * lh;
            const QString& text = lines_[row];
            if (anchor_ >= 0 && row >= selFirst && row <= selLast) {
                p.fillRect(0, y, viewport()->width(), lh, pal.color(QPalette::Highlight));
                p.setPen(pal.color(QPalette::HighlightedText));
                draw(0, y, text);
                continue;
            }
            // Each part at its column, so the parts stand in the heading's grid.
            int col = 0;
            for (const LogSpan& s : Spans(row)) {
                p.setPen(pal.color(QPalette::Text));
                if (s.start > col) draw(col, y, text.mid(col, s.start - col));
                p.setPen(colours[s.kind]);
                draw(s.start, y, text.mid(s.start, s.length));
                col = s.start + s.length;
            }
            p.setPen(pal.color(QPalette::Text));
            draw(col, y, text.mid(col));
        }
    }

    void resizeEvent(QResizeEvent* event) override {
        QAbstractScrollArea::resizeEvent(event);
        UpdateScrollBars();
    }

    void changeEvent(QEvent* event) override {
        QAbstractScrollArea::changeEvent(event);
        if (event->type() == QEvent::FontChange) UpdateScrollBars();
    }

    void scrollContentsBy(int, int) override { viewport()->update(); }

    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() != Qt::LeftButton || lines_.isEmpty()) return;
        if (event->position().y() < LineHeight()) return;  // the heading
        const int row = RowAt(event->position().y());
        if (!(event->modifiers() & Qt::ShiftModifier) || anchor_ < 0) anchor_ = row;
        current_ = row;
        viewport()->update();
    }

    void mouseMoveEvent(QMouseEvent* event) override {
        if (!(event->buttons() & Qt::LeftButton) || anchor_ < 0) return;
        current_ = std::max(0, RowAt(event->position().y()));  // above: the row above
        viewport()->update();
    }

    void keyPressEvent(QKeyEvent* event) override {
        if (event->matches(QKeySequence::Copy)) {
            if (anchor_ < 0) return;
            const int from = std::min(anchor_, current_), to = std::max(anchor_, current_);
            QApplication::clipboard()->setText(lines_.mid(from, to - from + 1).join('\n'));
        } else if (event->matches(QKeySequence::SelectAll)) {
            if (lines_.isEmpty()) return;
            anchor_ = 0;
            current_ = static_cast<int>(lines_.size()) - 1;
            viewport()->update();
        } else if (event->matches(QKeySequence::MoveToStartOfDocument)) {
            verticalScrollBar()->setValue(0);
        } else if (event->matches(QKeySequence::MoveToEndOfDocument)) {
            ScrollToLast();
        } else {
            QAbstractScrollArea::keyPressEvent(event);
        }
    }

  private:
    static constexpr int kMargin = 4;

    int LineHeight() const { return std::max(1, fontMetrics().lineSpacing()); }
    qreal CharWidth() const { return QFontMetricsF(font()).horizontalAdvance(QLatin1Char('0')); }
    // Rows under the heading.
    int PageRows() const { return std::max(1, viewport()->height() / LineHeight() - 1); }
    // The record at a height of the viewport, at most the last; the heading
    // stands for the row above the first one on show.
    int RowAt(qreal y) const {
        const int row =
            verticalScrollBar()->value() + static_cast<int>(std::floor(y / LineHeight())) - 1;
        return std::min(row, static_cast<int>(lines_.size()) - 1);
    }
    void UpdateScrollBars() {
        const int page = PageRows();
        QScrollBar* v = verticalScrollBar();
        v->setRange(0, std::max(0, static_cast<int>(lines_.size()) - page));
        v->setPageStep(page);
        const int chars = std::max(widest_, static_cast<int>(LogViewerWindow::Heading().size()));
        const int width = static_cast<int>(chars * CharWidth()) + 2 * kMargin;
        QScrollBar* h = horizontalScrollBar();
        h->setRange(0, std::max(0, width - viewport()->width()));
        h->setPageStep(viewport()->width());
        h->setSingleStep(std::max(1, static_cast<int>(CharWidth())));
    }

    QStringList lines_;
    int widest_ = 0;  // the longest line, in characters
    bool colors_ = true;
    int anchor_ = -1, current_ = -1;  // the selected rows, -1 for none
};

LogViewerWindow::LogViewerWindow(SettingsStore& settings, QWidget* parent)
    : QMainWindow(parent), settings_(settings) {
    setWindowTitle(tr(kTitle));
    view_ = new LogView(this);
    setCentralWidget(view_);
    status_ = new QLabel(this);
    statusBar()->addWidget(status_);

    QMenu* file = menuBar()->addMenu(tr("&File"));
    auto add = [this, file](const QString& caption, const QKeySequence& key, auto slot) {
        QAction* a = file->addAction(caption, this, slot);
        a->setShortcut(key);
        actions_[caption] = a;
    };
    add("&Open Log File", QKeySequence::Open, [this] { menuopenlog(); });
    add("&Save Log File", QKeySequence::Save, [this] { menusavelog(); });
    add("&Close Log File", QKeySequence(), [this] { menucloselog(); });

    QMenu* options = menuBar()->addMenu(tr("&Options"));
    QAction* keep = AddOption("Keep Last Record In Focus", kSettingKeepLast, 1);
    options->addAction(keep);
    keepLastInFocus_ = keep->isChecked();
    connect(keep, &QAction::toggled, this, [this](bool on) {
        keepLastInFocus_ = on;
        if (on) view_->ScrollToLast();
    });
    QAction* noColors = AddOption("No Colors", kSettingNoColors, 0);
    options->addAction(noColors);
    view_->SetColors(!noColors->isChecked());
    connect(noColors, &QAction::toggled, this, [this](bool on) { view_->SetColors(!on); });
    options->addSeparator();
    QAction* onTop = options->addAction(tr("On Top"));
    onTop->setCheckable(true);
    onTop->setChecked(RestoreOnTop(*this, settings_, kWindowNumber));
    connect(onTop, &QAction::toggled, this,
            [this](bool on) { SetOnTop(*this, settings_, kWindowNumber, on); });
    actions_["On Top"] = onTop;

    flushTimer_.setSingleShot(true);
    flushTimer_.setInterval(kFlushMs);
    connect(&flushTimer_, &QTimer::timeout, this, [this] { Flush(); });

    const QFontMetrics fm(view_->font());
    resize(fm.horizontalAdvance(Heading()) + 60, fm.lineSpacing() * 30);
    RestoreWindowSize(*this, settings_, kWindowNumber);
    RestoreWindowPlace(*this, settings_, kWindowNumber);
    UpdateStatus();
}

LogViewerWindow::~LogViewerWindow() = default;

QString LogViewerWindow::Heading() {
    return QString::fromLatin1(kLogHeadColumns);
}

QAbstractScrollArea* LogViewerWindow::view() const {
    return view_;
}

QAction* LogViewerWindow::AddOption(const QString& caption, const char* key, int def) {
    auto* a = new QAction(caption, this);
    a->setCheckable(true);
    a->setChecked(settings_.GetSettingInt(key, def) != 0);
    connect(a, &QAction::toggled, this,
            [this, key](bool on) { settings_.SetSettingInt(key, on ? 1 : 0); });
    actions_[caption] = a;
    return a;
}

QAction* LogViewerWindow::Action(const QString& caption) const {
    auto it = actions_.find(caption);
    return it == actions_.end() ? nullptr : it->second;
}

// Called once per instruction: the line only joins the batch.
void LogViewerWindow::logadd(const std::string& line) {
    pending_.append(QString::fromLatin1(line.data(), static_cast<qsizetype>(line.size())));
    if (pending_.size() > kMaxRecords) {
        pending_.removeFirst();
        dropped_ = true;
    }
    if (!flushTimer_.isActive()) flushTimer_.start();
}

void LogViewerWindow::logclean() {
    flushTimer_.stop();
    pending_.clear();
    view_->Clear();
    dropped_ = false;
    openedFile_.clear();
    setWindowTitle(tr(kTitle));
    UpdateStatus();
}

void LogViewerWindow::Flush() {
    flushTimer_.stop();
    if (pending_.isEmpty()) return;
    QStringList batch;
    batch.swap(pending_);
    if (view_->Append(std::move(batch), keepLastInFocus_) > 0) dropped_ = true;
    UpdateStatus();
}

QStringList LogViewerWindow::Lines() {
    Flush();
    return view_->Lines();
}

std::vector<LogSpan> LogViewerWindow::Spans(int row) {
    Flush();
    return view_->Spans(row);
}

void LogViewerWindow::UpdateStatus() {
    const auto count = view_->Lines().size();
    status_->setText(dropped_ ? tr("The last %1 records").arg(count) : tr("%1 records").arg(count));
}

void LogViewerWindow::Message(const std::string& text) {
    if (message) message(text);
}

QString LogViewerWindow::AskFile(bool save) {
    if (fileAnswer) return fileAnswer(save);
    const QString folder = QString::fromStdString(settings_.GetSettingText("Last Path", ""));
    const QString filters = tr("Log files (*.txt);;All files (*)");
    if (save) return QFileDialog::getSaveFileName(this, tr(kTitle), folder, filters);
    return QFileDialog::getOpenFileName(this, tr(kTitle), folder + "/log.txt", filters);
}

// Shows a log file: its lines as records, but for the heading, which stands
// above them already. A long file shows its last kMaxRecords lines.
void LogViewerWindow::menuopenlog() {
    if (simulationRunning && simulationRunning()) {
        Message("Please stop the simulation first.");
        return;
    }
    const QString path = AskFile(false);
    if (path.isEmpty()) return;
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly)) {
        Message("The file could not be opened:\n" + path.toStdString());
        return;
    }
    const QString heading = Heading();
    QStringList lines;
    bool cut = false;
    while (!in.atEnd()) {
        QByteArray raw = in.readLine();
        while (raw.endsWith('\n') || raw.endsWith('\r')) raw.chop(1);
        QString line = QString::fromLatin1(raw);
        if (line == heading) continue;
        lines.append(std::move(line));
        if (lines.size() > kMaxRecords) {
            lines.removeFirst();
            cut = true;
        }
    }
    if (in.error() != QFileDevice::NoError) {
        Message("The file could not be opened:\n" + path.toStdString());
        return;
    }
    logclean();
    view_->Append(std::move(lines), false);  // a file is read from its beginning
    dropped_ = cut;
    UpdateStatus();
    openedFile_ = path;
    setWindowTitle(tr(kTitle) + " - " + QFileInfo(path).fileName());
    if (cut)
        Message("The file is too long: only its last " + std::to_string(kMaxRecords) +
                " lines are shown.");
}

// Writes the heading and the records shown, with CR LF line ends.
void LogViewerWindow::menusavelog() {
    Flush();
    if (view_->Lines().isEmpty()) {
        Message("Simulation Log Viewer is empty.");
        return;
    }
    const QString path = AskFile(true);
    if (path.isEmpty()) return;
    QSaveFile out(path);
    bool ok = out.open(QIODevice::WriteOnly);
    if (ok) {
        out.write(Heading().toLatin1() + "\r\n");
        for (const QString& line : view_->Lines()) out.write(line.toLatin1() + "\r\n");
        ok = out.commit();
    }
    if (!ok) Message("The file could not be saved:\n" + path.toStdString());
}

void LogViewerWindow::menucloselog() {
    logclean();
}

void LogViewerWindow::closeEvent(QCloseEvent* event) {
    flushTimer_.stop();
    SaveWindowPlace(*this, settings_, kWindowNumber);
    SaveWindowSize(*this, settings_, kWindowNumber);
    if (closed) closed();
    QMainWindow::closeEvent(event);
}

}  // namespace mb
