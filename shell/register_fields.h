// The fields of the main window's display: a register field, which a double
// click edits in place, and the field of the loaded program's path.
#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <functional>

namespace mb {

// The edit box over a register field: the value selected, the field's font.
// Enter hands the text on; Esc, or leaving the box, drops it.
class RegisterEditBox : public QLineEdit {
    Q_OBJECT
  public:
    RegisterEditBox(const QString& text, std::function<void(const QString&)> take, QWidget* field);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void Finish(bool take);
    std::function<void(const QString&)> take_;
    bool done_ = false;
};

// One field of the register display; a double click asks to edit it.
class RegisterField : public QLabel {
    Q_OBJECT
  public:
    RegisterField(const QString& name, int digits, QWidget* parent);
    const QString& Name() const { return name_; }
    int Digits() const { return digits_; }
    // Opens the edit box over the field; take gets the text on Enter.
    void OpenEditor(std::function<void(const QString&)> take);
    // The open edit box, or null.
    RegisterEditBox* editor() const { return editor_; }

  signals:
    void EditRequested(RegisterField* field);

  protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;

  private:
    QString name_;
    int digits_;  // 1 flag or one-digit value, 2 byte, 4 word
    QPointer<RegisterEditBox> editor_;
};

// A file's path in one line. When the whole path does not fit, the folder is
// shortened in its middle and the file name stays whole; the field asks for the
// room of the name only (up to kLongestName characters), and the tool tip holds
// the full path.
class PathLabel : public QWidget {
    Q_OBJECT
  public:
    static constexpr int kLongestName = 48;

    explicit PathLabel(QWidget* parent);
    void SetPath(const QString& path);
    const QString& Path() const { return path_; }
    // The text as drawn at the present width.
    QString DisplayedText() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString path_;
};

}  // namespace mb
