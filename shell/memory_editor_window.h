// The Memory Editor: MemoryImage as a hexadecimal dump edited in place, with the
// read and write pointers of the running program and the SP marker. The same
// class serves Memory Editor 1, 2 and 3; they differ in their settings and
// window numbers only.
#pragma once

#include <string>

#include "core/machine.h"
#include "debug/memory_view.h"
#include "shell/hex_grid_dialog.h"

class QCheckBox;
class QPushButton;

namespace mb {

class MemoryEditorWindow : public HexGridDialog {
    Q_OBJECT
  public:
    // number: 1 to 3.
    MemoryEditorWindow(int number, Machine& m, SettingsStore& settings, QWidget* parent);

    int Number() const { return view_.Number(); }
    // Windows 2, 3 and 4 of the table of window places.
    static int WindowNumber(int number) { return number + 1; }

    // Follows the machine: called after instructions and by the write path.
    void memorijaprint() {
        if (view_.memorijaprint(m_)) grid_->Changed();
    }
    // Redraws whatever the machine did (loads, edits, the end of a run).
    void Refresh() {
        view_.memorijaprint(m_, true);
        grid_->Changed();
    }
    void SetShowAscii(bool on);

    // The commands of the window.
    void SetTrackRW(bool on);
    void SetOptimize(bool on);
    void ChangeRange();
    void FocusSP();

    const MemoryView& view() const { return view_; }
    QString RangeCaption() const;

  private:
    // HexGridModel
    int RowCount() const override { return kDumpRows; }
    int VisibleRows() const override { return kViewRows; }
    int Columns() const override { return kDumpColumns; }
    int TopRow() const override { return view_.TopRow(); }
    void SetTopRow(int row) override { view_.SetTopRow(row); }
    std::string Heading() const override { return DumpHeadingLine(ascii_); }
    std::string RowText(int row) const override { return DumpRowText(m_, row, ascii_); }
    int CellPosition(int col) const override { return DumpCellPosition(col); }
    int CharPosition(int col) const override { return ascii_ ? DumpCharPosition(col) : -1; }
    int CellValue(int cell) const override { return m_.MemoryImage[cell]; }
    void WriteCell(int cell, int value) override;
    QColor CellColor(int cell) const override;

    MemoryView view_;
    bool ascii_ = true;
    QCheckBox* track_ = nullptr;
    QCheckBox* optimize_ = nullptr;
    QPushButton* range_ = nullptr;
};

// Colours of the pointers, shared by the windows that mark cells.
QColor WritePointerColor();
QColor ReadPointerColor();
QColor StackMarkerColor();

}  // namespace mb
