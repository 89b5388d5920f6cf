#include "io_ports_editor_window.h"

#include <QHBoxLayout>

namespace mb {

IoPortsEditorWindow::IoPortsEditorWindow(Machine& m, SettingsStore& settings, QWidget* parent)
    : HexGridDialog(m, settings, kWindowNumber, parent) {
    setWindowTitle(tr("I/O Ports Editor"));
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    FinishLayout({bottom});
}

void IoPortsEditorWindow::WriteCell(int cell, int value) {
    if (cell < 0 || cell >= kPortCount) return;
    m_.PortImage[cell] = value;
    grid_->Changed();
}

}  // namespace mb
