// The Video Memory Screen window: VideoCols x VideoRows cells of memory from
// VideoAddress, drawn as characters in one of five colour schemes. A click on a
// cell opens the entry box of the Memory Editor over it.
#pragma once

#include <QStringList>
#include <functional>
#include <optional>
#include <string>

#include "core/machine.h"
#include "devices/video_screen.h"
#include "shell/hex_grid_dialog.h"

namespace mb {

class VideoScreenWindow : public HexGridDialog {
    Q_OBJECT
  public:
    static constexpr int kWindowNumber = 7;

    VideoScreenWindow(Machine& m, SettingsStore& settings, QWidget* parent);

    // Redraws when `force` is set or the last write fell on the screen.
    void memorijaprint(bool force = false) {
        if (screen_.memorijaprint(m_, force)) grid_->Changed();
    }

    // The commands: ask, check, store, lay the window out anew.
    void ChangeAddress();
    void ChangeCols();
    void ChangeRows();
    void ChangeColorScheme();

    const VideoScreen& screen() const { return screen_; }

    // Tests choose the colour scheme through this; nullopt is Cancel.
    std::function<std::optional<int>(const QStringList& schemes, int current)> choose;

  private:
    void Change(const char* prompt, const QString& offered,
                std::string (VideoScreen::*change)(SettingsStore&, const std::string&));
    void Relayout();

    // HexGridModel
    int RowCount() const override { return screen_.VideoRows; }
    int VisibleRows() const override { return screen_.VideoRows; }
    int Columns() const override { return screen_.VideoCols; }
    std::string RowText(int row) const override { return screen_.RowText(m_, row); }
    int CellPosition(int col) const override { return 6 + col; }
    int CellChars() const override { return 1; }
    int CellValue(int cell) const override { return m_.MemoryImage[screen_.CellAddress(cell)]; }
    void WriteCell(int cell, int value) override;
    QColor Background() const override;
    QColor Foreground() const override;

    VideoScreen screen_;
};

}  // namespace mb
