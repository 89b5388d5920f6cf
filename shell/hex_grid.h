// The fixed-pitch grid of the Memory Editors, the I/O Ports Editor and the Video
// Memory Screen: rows of text drawn from a model, scrolled by rows, with
// coloured pointer cells and the entry box that edits a cell in place.
#pragma once

#include <QAbstractScrollArea>
#include <QColor>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>
#include <string>

#include "debug/memory_view.h"

namespace mb {

// What a grid shows and edits. Cells are numbered row by row from 0.
class HexGridModel {
  public:
    virtual ~HexGridModel() = default;
    virtual int RowCount() const = 0;
    virtual int VisibleRows() const = 0;
    virtual int Columns() const = 0;
    virtual int TopRow() const { return 0; }
    virtual void SetTopRow(int) {}
    // The line over the rows; empty for none.
    virtual std::string Heading() const { return {}; }
    virtual std::string RowText(int row) const = 0;
    // Where a cell stands in its row's text, and how many characters it takes.
    virtual int CellPosition(int col) const = 0;
    virtual int CellChars() const { return 2; }
    // Where the cell's character stands in the row's text, -1 for none.
    virtual int CharPosition(int) const { return -1; }
    virtual int CellValue(int cell) const = 0;
    // The entry box's value for the cell, written without any hook.
    virtual void WriteCell(int cell, int value) = 0;
    // Background of a cell: invalid for the grid's own.
    virtual QColor CellColor(int) const { return {}; }
    // Colours of the whole grid: invalid for the palette's.
    virtual QColor Background() const { return {}; }
    virtual QColor Foreground() const { return {}; }
};

class HexGrid;

// The entry box over a cell: hexadecimal digits only.
class CellEntryBox : public QLineEdit {
    Q_OBJECT
  public:
    explicit CellEntryBox(HexGrid& grid);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    HexGrid& grid_;
};

class HexGrid : public QAbstractScrollArea {
    Q_OBJECT
  public:
    HexGrid(HexGridModel& model, QWidget* parent);

    // The model changed: one redraw is queued however often this is called
    // before the grid paints, so the write path may call it for every write.
    void Changed() {
        if (pending_) return;
        pending_ = true;
        QueueRedraw();
    }
    // The number of rows or columns changed.
    void Relayout();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    // Entry box (also for tests): the cell it stands on, -1 when closed.
    void OpenEntry(int cell);
    int EntryCell() const { return entry_.Cell(); }
    CellEntryBox* entryBox() const { return box_; }
    // The cell under a point of the viewport, -1 for none; and back.
    int CellAt(const QPoint& pos) const;
    QRect CellRect(int cell) const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

  private:
    friend class CellEntryBox;
    // A running program may change the grid thousands of times between two
    // yields of the run loop; drawing it more than kMinPaintMs apart is enough
    // for the eye and leaves the time to the simulation.
    static constexpr int kMinPaintMs = 40;
    void QueueRedraw();
    // A change by the user: drawn at the next paint.
    void RedrawNow();
    void Apply(const CellEntry::Outcome& outcome);
    void CloseEntry();
    void MoveEntry(int delta);
    void PlaceBox();
    void SyncScrollBar();
    int LineHeight() const;
    qreal CharWidth() const;
    // The left edge of a text position.
    int X(int position) const;
    int RowsTop() const;
    int LineChars() const;

    HexGridModel& model_;
    CellEntry entry_;
    CellEntryBox* box_;
    bool pending_ = false;
    QElapsedTimer sincePaint_;
    QTimer redraw_;
};

}  // namespace mb
