#include "color_theme_dialog.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "settings/color_themes.h"
#include "settings/settings_store.h"
#include "theme.h"

namespace mb {

ColorThemeDialog::ColorThemeDialog(SettingsStore& settings, QWidget* parent)
    : QDialog(parent), settings_(settings) {
    setWindowTitle(tr("Change Color Theme"));
    const std::string stored = settings_.GetSettingText("Color Theme", "Original Lite");
    openingName_ = ThemeNameAtDialogOpen(settings_);
    openingBorder_ = settings_.GetSettingInt("Color Theme Border", 1);
    if (openingName_ != stored) ApplyTheme(settings_);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Color themes:"), this));
    list_ = new QListWidget(this);
    for (const ThemeRow& row : ColorThemeTable()) list_->addItem(QString::fromStdString(row.name));
    // The row in force is marked; an unknown stored name shows as "Original Lite".
    const QString inForce = QString::fromStdString(FindColorTheme(openingName_).name);
    const QList<QListWidgetItem*> found = list_->findItems(inForce, Qt::MatchExactly);
    if (!found.isEmpty()) list_->setCurrentItem(found.first());
    list_->setMinimumHeight(list_->sizeHintForRow(0) * 16);
    layout->addWidget(list_);

    showFrames_ = new QCheckBox(tr("Show Frames"), this);
    showFrames_->setChecked(openingBorder_ != 0);
    layout->addWidget(showFrames_);

    auto* buttons = new QHBoxLayout;
    select_ = new QPushButton(tr("Select"), this);
    cancel_ = new QPushButton(tr("Cancel"), this);
    select_->setDefault(true);
    buttons->addStretch();
    buttons->addWidget(select_);
    buttons->addWidget(cancel_);
    layout->addLayout(buttons);

    connect(list_, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { Choose(item->text()); });
    connect(list_, &QListWidget::currentTextChanged, this, [this](const QString& name) {
        if (!name.isEmpty()) Choose(name);
    });
    connect(showFrames_, &QCheckBox::toggled, this, &ColorThemeDialog::SetShowFrames);
    connect(select_, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel_, &QPushButton::clicked, this, &ColorThemeDialog::reject);
}

void ColorThemeDialog::Choose(const QString& name) {
    if (settings_.GetSettingText("Color Theme", "") == name.toStdString()) return;
    settings_.SetSettingText("Color Theme", name.toStdString());
    ApplyTheme(settings_);
}

void ColorThemeDialog::SetShowFrames(bool on) {
    settings_.SetSettingInt("Color Theme Border", on ? 1 : 0);
    ApplyTheme(settings_);
}

void ColorThemeDialog::reject() {
    settings_.SetSettingText("Color Theme", openingName_);
    settings_.SetSettingInt("Color Theme Border", openingBorder_);
    ApplyTheme(settings_);
    QDialog::reject();
}

}  // namespace mb
