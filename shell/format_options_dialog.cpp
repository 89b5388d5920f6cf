#include "format_options_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace mb {

namespace {

struct Field {
    const char* caption;
    int FormatCodeOptions::*member;
    int max;
};

constexpr Field kFields[] = {
    {"Label Add Colon (0/1)", &FormatCodeOptions::LabelAddColon, 1},
    {"Label Tabs", &FormatCodeOptions::LabelTabs, 8},
    {"Label Min Space", &FormatCodeOptions::LabelMinSpace, 40},
    {"Label Width", &FormatCodeOptions::LabelWidth, 80},
    {"Argument Tabs", &FormatCodeOptions::ArgumentTabs, 8},
    {"Argument Min Space", &FormatCodeOptions::ArgumentMinSpace, 40},
    {"Argument Width", &FormatCodeOptions::ArgumentWidth, 80},
    {"Argument Space After Comma (0/1)", &FormatCodeOptions::ArgumentSpaceAfterComma, 1},
    {"Comment Spaces After Semicolon", &FormatCodeOptions::CommentSpacesAfterSemicolon, 20},
    {"Comment Tabs", &FormatCodeOptions::CommentTabs, 16},
    {"Comment Start Column", &FormatCodeOptions::CommentStartColumn, 200},
    {"Comment Min Space", &FormatCodeOptions::CommentMinSpace, 40},
};

}  // namespace

FormatOptionsDialog::FormatOptionsDialog(const FormatCodeOptions& options, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle("Format Code Options");
    auto* form = new QFormLayout;
    for (int i = 0; i < kCount; ++i) {
        fields_[i] = new QSpinBox(this);
        fields_[i]->setRange(0, kFields[i].max);
        form->addRow(kFields[i].caption, fields_[i]);
    }
    auto* buttons = new QDialogButtonBox(
        QDialogButtonBox::Save | QDialogButtonBox::Cancel | QDialogButtonBox::RestoreDefaults, this);
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
    for (int i = 0; i < kCount; ++i) options.*(kFields[i].member) = fields_[i]->value();
    return options;
}

void FormatOptionsDialog::SetOptions(const FormatCodeOptions& options) {
    for (int i = 0; i < kCount; ++i) fields_[i]->setValue(options.*(kFields[i].member));
}

}  // namespace mb
