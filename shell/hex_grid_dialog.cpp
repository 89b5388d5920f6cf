#include "hex_grid_dialog.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "entry_dialogs.h"
#include "window_place.h"

namespace mb {

HexGridDialog::HexGridDialog(Machine& m, SettingsStore& settings, int windowNumber, QWidget* parent)
    : QDialog(parent), m_(m), settings_(settings), windowNumber_(windowNumber) {}

void HexGridDialog::FinishLayout(std::initializer_list<QHBoxLayout*> rows) {
    auto* layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    grid_ = new HexGrid(*this, this);
    layout->addWidget(grid_);
    for (QHBoxLayout* row : rows) layout->addLayout(row);
    rows.end()[-1]->addWidget(OnTopCheckBox(*this, settings_, windowNumber_));
    RestoreWindowPlace(*this, settings_, windowNumber_);
}

std::optional<QString> HexGridDialog::Ask(const QString& prompt, const QString& offered) {
    if (ask) return ask(prompt, offered);
    return AskTextLine(this, windowTitle(), prompt, offered);
}

void HexGridDialog::closeEvent(QCloseEvent* event) {
    SaveWindowPlace(*this, settings_, windowNumber_);
    if (closed) closed();
    QDialog::closeEvent(event);
}

}  // namespace mb
