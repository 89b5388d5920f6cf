// "Change Color Theme": the fifty theme names. A click shows the theme at once
// on every window; "Select" keeps it, "Cancel" brings back the theme and the
// frames that stood when the dialog opened.
#pragma once

#include <QDialog>
#include <string>

class QCheckBox;
class QListWidget;
class QPushButton;

namespace mb {

class SettingsStore;

class ColorThemeDialog : public QDialog {
    Q_OBJECT
  public:
    ColorThemeDialog(SettingsStore& settings, QWidget* parent);

    // A click on a name: stores "Color Theme" and colours every window.
    void Choose(const QString& name);
    // "Show Frames": stores "Color Theme Border" and shows the result.
    void SetShowFrames(bool on);

    QListWidget* list() const { return list_; }
    QCheckBox* showFrames() const { return showFrames_; }
    QPushButton* selectButton() const { return select_; }
    QPushButton* cancelButton() const { return cancel_; }

    // "Cancel", Esc and the close box.
    void reject() override;

  private:
    SettingsStore& settings_;
    std::string openingName_;
    int openingBorder_ = 1;
    QListWidget* list_ = nullptr;
    QCheckBox* showFrames_ = nullptr;
    QPushButton* select_ = nullptr;
    QPushButton* cancel_ = nullptr;
};

}  // namespace mb
