// The I/O Ports Editor: the 256 cells of PortImage, 16 rows of 16, edited in
// place with the entry box of the Memory Editor.
#pragma once

#include "core/machine.h"
#include "debug/memory_view.h"
#include "shell/hex_grid_dialog.h"

namespace mb {

class IoPortsEditorWindow : public HexGridDialog {
    Q_OBJECT
  public:
    static constexpr int kWindowNumber = 20;

    IoPortsEditorWindow(Machine& m, SettingsStore& settings, QWidget* parent);

    // Called on every port access while the window is open.
    void ioprint() { grid_->Changed(); }

  private:
    // HexGridModel
    int RowCount() const override { return kPortCount / kDumpColumns; }
    int VisibleRows() const override { return RowCount(); }
    int Columns() const override { return kDumpColumns; }
    std::string Heading() const override { return std::string(6, ' ') + DumpColumnHeading(); }
    std::string RowText(int row) const override { return PortRowText(m_, row); }
    int CellPosition(int col) const override { return DumpCellPosition(col); }
    int CellValue(int cell) const override { return m_.PortImage[cell]; }
    void WriteCell(int cell, int value) override;
};

}  // namespace mb
