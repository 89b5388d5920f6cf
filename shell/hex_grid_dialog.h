// A tool window around one HexGrid: the grid on top, rows of commands below it
// with the On Top box at the end, and its place kept under its window number.
// The Memory Editors, the I/O Ports Editor and the Video Memory Screen are such
// windows; each is the model of its own grid.
#pragma once

#include <QDialog>
#include <QString>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>

#include "core/machine.h"
#include "shell/hex_grid.h"

class QHBoxLayout;

namespace mb {

class SettingsStore;

class HexGridDialog : public QDialog, protected HexGridModel {
    Q_OBJECT
  public:
    HexGrid* grid() const { return grid_; }

    // Tests answer the questions through this; nullopt is Cancel.
    std::function<std::optional<QString>(const QString& prompt, const QString& offered)> ask;
    // Shows a refusal or a notice to the user.
    std::function<void(const std::string&)> message;
    // The entry box wrote memory.
    std::function<void()> edited;
    // The window closes.
    std::function<void()> closed;

  protected:
    HexGridDialog(Machine& m, SettingsStore& settings, int windowNumber, QWidget* parent);

    // Lays out the grid over the rows, puts the On Top box at the end of the
    // last row and the window in its kept place. Called once, at the end of
    // the constructor, when the model answers for the grid.
    void FinishLayout(std::initializer_list<QHBoxLayout*> rows);

    // A text question in a box of the window's own title.
    std::optional<QString> Ask(const QString& prompt, const QString& offered);
    // Passes a refusal or notice to `message`.
    void Show(const std::string& text) {
        if (message) message(text);
    }

    void closeEvent(QCloseEvent* event) override;

    Machine& m_;
    SettingsStore& settings_;
    HexGrid* grid_ = nullptr;

  private:
    int windowNumber_;
};

}  // namespace mb
