// The small entry dialogs of the simulator: the IN Instruction Entry Dialog, the
// HEX Value Entry Dialog and the ASCII Keyboard they share.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>

class QLineEdit;
class QLabel;
class QCheckBox;

namespace mb {

class SettingsStore;

// One key per printable character plus "(space)", "(tab)" and "(enter)"; the
// letters are one block of keys, in capitals, or in small letters while "Small
// Letters" is checked. A click sets the value and closes the window; Cancel
// leaves the value as it was.
class AsciiKeyboard : public QDialog {
    Q_OBJECT
  public:
    AsciiKeyboard(SettingsStore& settings, QWidget* parent);
    // The value a key caption stands for: "(tab)" is 8, "&&" the ampersand.
    static int KeyValue(const QString& caption);
    int value = -1;

  private:
    void SetSmallLetters(bool small);
    SettingsStore& settings_;
    QCheckBox* small_;
    std::vector<class QPushButton*> letters_;
};

// The one-line text question of the windows: nullopt when the user cancels.
std::optional<QString> AskTextLine(QWidget* parent, const QString& title, const QString& prompt,
                                   const QString& offered);

// A byte as two hexadecimal digits; one digit gets a "0" in front. -1 when the
// text is no byte.
int ByteFromText(const QString& text);

// Asks for one byte with "Enter", "Keyboard" and, for the IN dialog, "Switch To
// Step By Step Rate", or "Cancel" for the HEX dialog.
class ByteEntryDialog : public QDialog {
    Q_OBJECT
  public:
    enum class Kind { InInstruction, HexValue };
    ByteEntryDialog(Kind kind, const QString& caption, const QString& prompt,
                    SettingsStore& settings, QWidget* parent);
    // Takes the typed text as Enter does; false when it is no byte.
    bool Enter(const QString& text);
    int value = -1;  // the pending value; -1 after Cancel
    std::function<void()> switchToStepByStep;

  private:
    Kind kind_;
    SettingsStore& settings_;
    QLineEdit* edit_;
};

}  // namespace mb
