// The Peripheral Devices window: four byte-wide devices with eight lamps, the
// output terminal (device 5) and the input queue (device 6). It shows and
// edits the devices of PeripheralDevices; they go on working when it closes.
#pragma once

#include <QDialog>
#include <QString>
#include <array>
#include <functional>
#include <optional>
#include <string>

#include "devices/peripheral_devices.h"

class QGroupBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace mb {

class SettingsStore;

// A row of eight lamps, bit 7 on the left: lit or grey by the bits of a value.
class LampRow : public QWidget {
    Q_OBJECT
  public:
    explicit LampRow(QWidget* parent);
    void SetValue(int value);
    QColor LampColor(int bit) const;
    // Where lamp `bit` stands, for a click.
    QRect LampRect(int bit) const;
    QSize sizeHint() const override;
    std::function<void(int bit)> clicked;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    int value_ = 0;
};

class PeripheralDevicesWindow : public QDialog {
    Q_OBJECT
  public:
    static constexpr int kWindowNumber = 5;

    PeripheralDevicesWindow(PeripheralDevices& devices, SettingsStore& settings, QWidget* parent);

    // The data paths changed a device: the window redraws once the run loop
    // next yields, however many accesses came before.
    void RequestRefresh();
    // Redraws every device from its state now.
    void Refresh();

    // The commands of the controls, k from 1 to 6.
    void ToggleDevice(int k);  // its ON/OFF button
    void ChooseInputMode(int k, bool input);
    void ClickLamp(int k, int bit);
    void ClickValue(int k);
    void ClickOneShot(int k);
    void SendToQueue(QueueKind kind);
    void ClearOutput();
    void ClearQueue();

    // The controls, for tests.
    QGroupBox* frame(int k) const { return rows_[Index(k)].frame; }
    QPushButton* onButton(int k) const { return rows_[Index(k)].onOff; }
    QRadioButton* inputButton(int k) const { return rows_[Index(k)].input; }
    LampRow* lamps(int k) const { return rows_[Index(k)].lamps; }
    QLabel* valueLabel(int k) const { return rows_[Index(k)].value; }
    QLabel* oneShotField(int k) const { return rows_[Index(k)].oneShot; }
    QPlainTextEdit* outputView() const { return output_; }
    QPushButton* clearOutputButton() const { return clearOutput_; }
    QLabel* queueLabel() const { return queue_; }

    // Tests answer the questions through these; nullopt and -1 are Cancel.
    std::function<std::optional<QString>(const QString& prompt, const QString& offered)> ask;
    std::function<int(const QString& prompt)> askByte;
    // Shows a refusal or a notice to the user.
    std::function<void(const std::string&)> message;
    std::function<void()> closed;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    struct Row {
        QGroupBox* frame = nullptr;
        QPushButton* onOff = nullptr;
        QRadioButton* output = nullptr;
        QRadioButton* input = nullptr;
        LampRow* lamps = nullptr;
        QLabel* value = nullptr;
        QLabel* oneShot = nullptr;
    };
    static size_t Index(int k) { return static_cast<size_t>(k - 1); }
    QWidget* BuildLampDevice(int k);
    QWidget* BuildOutputTerminal();
    QWidget* BuildInputQueue();
    QPushButton* OnOffButton(int k);
    void refresh(int k);  // refresh1 to refresh4, and the frames of 5 and 6
    void refresh5();
    void refresh6();
    void refreshoneshot();
    std::optional<QString> Ask(const QString& prompt, const QString& offered);
    int AskByte(const QString& prompt);
    void Show(const std::string& text) {
        if (!text.empty() && message) message(text);
    }

    PeripheralDevices& devices_;
    SettingsStore& settings_;
    std::array<Row, 6> rows_{};
    QPlainTextEdit* output_ = nullptr;
    QPushButton* clearOutput_ = nullptr;
    QLabel* queue_ = nullptr;
    size_t outputShown_ = 0;  // bytes of the output text on view
    int outputCuts_ = 0;      // the cuts of the text when it was drawn
    bool refreshPending_ = false;
};

}  // namespace mb
