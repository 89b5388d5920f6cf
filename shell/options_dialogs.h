// Two dialogs of the Options menu. "Configure Info Message Frames" sets how long
// the Confirmation window stays ("Messages Duration", 1 to 10 seconds) and where
// it stands ("Messages Mode"). "Miscellaneous Options" holds the settings that
// have no command of their own: the waits of the Slow, Normal and Fast rates (in
// steps of 5 ms) and the hexadecimal display of relative jumps.
//
// Each shows the stored values and writes them on OK; Cancel changes nothing.
#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QSpinBox;

namespace mb {

class SettingsStore;

class InfoFramesDialog : public QDialog {
    Q_OBJECT
  public:
    InfoFramesDialog(SettingsStore& settings, QWidget* parent);
    QSpinBox* duration() const { return duration_; }
    QComboBox* place() const { return place_; }
    void accept() override;

  private:
    SettingsStore& settings_;
    QSpinBox* duration_;
    QComboBox* place_;
};

class MiscOptionsDialog : public QDialog {
    Q_OBJECT
  public:
    MiscOptionsDialog(SettingsStore& settings, QWidget* parent);
    // The waits in milliseconds: 0 Slow, 1 Normal, 2 Fast.
    QSpinBox* delay(int index) const { return delays_[index]; }
    QCheckBox* relativeHex() const { return relativeHex_; }
    void accept() override;

  private:
    SettingsStore& settings_;
    QSpinBox* delays_[3];
    QCheckBox* relativeHex_;
};

}  // namespace mb
