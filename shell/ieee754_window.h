// The IEEE 754 Conversion Tool: a real number to the four bytes the BASIC
// compiler stores, and four bytes back to the number.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <optional>

class QLabel;

namespace mb {

class SettingsStore;

class Ieee754Window : public QDialog {
    Q_OBJECT
  public:
    Ieee754Window(SettingsStore& settings, std::function<void(const std::string&)> message,
                  QWidget* parent);

    // The two commands; the text is what the user typed.
    void Convert(const QString& text);
    void ConvertBack(const QString& text);
    QString FieldText(int index) const;  // 0..4: Text1..Text5
    void CopyField(int index);

    // Tests answer the questions through this; nullopt is Cancel.
    std::function<std::optional<QString>(const QString& prompt, const QString& offered)> ask;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    std::optional<QString> Ask(const QString& prompt, const QString& offered);

    SettingsStore& settings_;
    std::function<void(const std::string&)> message_;
    std::array<QLabel*, 5> fields_{};
};

}  // namespace mb
