#include "format_options_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace mb {

namespace {
// Switches take 0 or 1; the other options are counts of tabs, blanks or columns.
int Maximum(int FormatCodeOptions::*member) {
    return member == &FormatCodeOptions::LabelAddColon ||
                   member == &FormatCodeOptions::ArgumentSpaceAfterComma
               ? 1
               : 255;
}
}  // namespace

FormatOptionsDialog::FormatOptionsDialog(const FormatCodeOptions& options, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle("Format Code Options");
    auto* form = new QFormLayout;
    for (const FormatCodeOptionKey& key : FormatCodeOptionKeys()) {
        auto* field = new QSpinBox(this);
        field->setRange(0, Maximum(key.member));
        form->addRow(key.name, field);
        fields_.push_back(field);
    }
    auto* buttons = new QDialogButtonBox(
        QDialogButtonBox::Save | QDialogButtonBox::Cancel | QDialogButtonBox::RestoreDefaults,
        this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            [this] { SetOptions(FormatCodeOptions{}); });
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    SetOptions(options);
}

FormatCodeOptions FormatOptionsDialog::Options() const {
    FormatCodeOptions options;
    const auto& keys = FormatCodeOptionKeys();
    for (size_t i = 0; i < keys.size(); ++i) options.*(keys[i].member) = fields_[i]->value();
    return options;
}

void FormatOptionsDialog::SetOptions(const FormatCodeOptions& options) {
    const auto& keys = FormatCodeOptionKeys();
    for (size_t i = 0; i < keys.size(); ++i) fields_[i]->setValue(options.*(keys[i].member));
}

}  // namespace mb
