#include "io_ports_editor_window.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "settings/settings_store.h"
#include "window_place.h"

namespace mb {

IoPortsEditorWindow::IoPortsEditorWindow(Machine& m, SettingsStore& settings, QWidget* parent)
    : QDialog(parent), m_(m), settings_(settings) {
    setWindowTitle(tr("I/O Ports Editor"));
    auto* layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    grid_ = new HexGrid(*this, this);
    layout->addWidget(grid_);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    QCheckBox* onTop = OnTopCheckBox(*this, settings_, kWindowNumber);
    bottom->addWidget(onTop);
    layout->addLayout(bottom);
    RestoreWindowPlace(*this, settings_, kWindowNumber);
}

void IoPortsEditorWindow::WriteCell(int cell, int value) {
    if (cell < 0 || cell >= kPortCount) return;
    m_.PortImage[cell] = value;
    grid_->Changed();
}

void IoPortsEditorWindow::closeEvent(QCloseEvent* event) {
    SaveWindowPlace(*this, settings_, kWindowNumber);
    if (closed) closed();
    QDialog::closeEvent(event);
}

}  // namespace mb
