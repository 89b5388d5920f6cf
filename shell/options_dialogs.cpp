#include "options_dialogs.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>

#include "core/run_control.h"
#include "settings/settings_store.h"

namespace mb {

namespace {
constexpr int kDelayStepMs = 5;  // the run loop waits in sleeps of 5 ms

QDialogButtonBox* OkCancel(QDialog* dialog) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}
}  // namespace

InfoFramesDialog::InfoFramesDialog(SettingsStore& settings, QWidget* parent)
    : QDialog(parent), settings_(settings) {
    setWindowTitle(tr("Configure Info Message Frames"));
    auto* form = new QFormLayout;
    duration_ = new QSpinBox(this);
    duration_->setRange(1, 10);
    duration_->setSuffix(tr(" s"));
    duration_->setValue(std::clamp(settings_.GetSettingInt("Messages Duration", 3), 1, 10));
    form->addRow(tr("A message stays for:"), duration_);
    place_ = new QComboBox(this);
    place_->addItems({tr("Over the main window"), tr("In the corner of the screen")});
    place_->setCurrentIndex(settings_.GetSettingInt("Messages Mode", 0) == 1 ? 1 : 0);
    form->addRow(tr("It stands:"), place_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(OkCancel(this));
}

void InfoFramesDialog::accept() {
    settings_.SetSettingInt("Messages Duration", duration_->value());
    settings_.SetSettingInt("Messages Mode", place_->currentIndex());
    QDialog::accept();
}

MiscOptionsDialog::MiscOptionsDialog(SettingsStore& settings, QWidget* parent)
    : QDialog(parent), settings_(settings) {
    setWindowTitle(tr("Miscellaneous Options"));
    auto* rates = new QGroupBox(tr("Wait after each instruction"), this);
    auto* form = new QFormLayout(rates);
    const struct {
        const char* caption;
        const char* key;
        int def;
    } waits[3] = {{"Slow:", kSettingSlowDelay, 140},
                  {"Normal:", kSettingNormalDelay, 24},
                  {"Fast:", kSettingFastDelay, 5}};
    for (int i = 0; i < 3; ++i) {
        delays_[i] = new QSpinBox(rates);
        delays_[i]->setRange(kDelayStepMs, 5000);
        delays_[i]->setSingleStep(kDelayStepMs);
        delays_[i]->setSuffix(tr(" ms"));
        delays_[i]->setValue(settings_.GetSettingInt(waits[i].key, waits[i].def) * kDelayStepMs);
        form->addRow(tr(waits[i].caption), delays_[i]);
    }
    relativeHex_ = new QCheckBox(tr("Display Relative Branch Hex Argument"), this);
    relativeHex_->setToolTip(tr("JR and DJNZ show their distance in hexadecimal"));
    relativeHex_->setChecked(settings_.GetSettingInt("Display Relative Branch Hex Argument", 0));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(rates);
    layout->addWidget(relativeHex_);
    layout->addWidget(OkCancel(this));
}

// A wait that is no multiple of 5 ms is rounded to the nearest.
void MiscOptionsDialog::accept() {
    const char* keys[3] = {kSettingSlowDelay, kSettingNormalDelay, kSettingFastDelay};
    for (int i = 0; i < 3; ++i)
        settings_.SetSettingInt(
            keys[i], std::max(1, (delays_[i]->value() + kDelayStepMs / 2) / kDelayStepMs));
    settings_.SetSettingInt("Display Relative Branch Hex Argument",
                            relativeHex_->isChecked() ? 1 : 0);
    QDialog::accept();
}

}  // namespace mb
