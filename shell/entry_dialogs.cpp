#include "entry_dialogs.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/numtext.h"
#include "settings/settings_store.h"

namespace mb {

int AsciiKeyboard::KeyValue(const QString& caption) {
    if (caption == "(space)") return 32;
    if (caption == "(tab)") return 8;  // the keyboard has always sent 8 here
    if (caption == "(enter)") return 13;
    if (caption.isEmpty()) return -1;
    return caption.at(0).toLatin1() & 0xFF;  // "&&" shows one ampersand
}

AsciiKeyboard::AsciiKeyboard(SettingsStore& settings, QWidget* parent)
    : QDialog(parent), settings_(settings) {
    setWindowTitle(tr("ASCII Keyboard"));
    auto* layout = new QVBoxLayout(this);
    auto* grid = new QGridLayout;
    grid->setSpacing(3);
    // Keys of one character in four rows of 17; the three wide keys below them.
    constexpr int kColumns = 17, kWideSpan = 3;
    const int keyWidth = fontMetrics().horizontalAdvance('W') * 2 + 12;
    int index = 0;
    auto addKey = [&](const QString& caption, int span) {
        auto* key = new QPushButton(caption, this);
        // Narrower than a push button would be: the keys of a keyboard.
        if (span == 1)
            key->setFixedWidth(keyWidth);
        else
            key->setMinimumWidth(keyWidth * span);
        connect(key, &QPushButton::clicked, this, [this, key] {
            value = KeyValue(key->text());
            accept();
        });
        grid->addWidget(key, index / kColumns, index % kColumns, 1, span);
        index += span;
        return key;
    };
    // One block of letter keys, upper or lower case as "Small Letters" says.
    for (int code = 33; code < 127; ++code) {
        const QChar c(code);
        if (c >= 'a' && c <= 'z') continue;
        QPushButton* key = addKey(c == '&' ? QString("&&") : QString(c), 1);
        if (c >= 'A' && c <= 'Z') letters_.push_back(key);
    }
    index = (index + kColumns - 1) / kColumns * kColumns;
    for (const char* wide : {"(space)", "(tab)", "(enter)"}) addKey(wide, kWideSpan);
    layout->addLayout(grid);
    auto* bottom = new QHBoxLayout;
    small_ = new QCheckBox(tr("Small Letters"), this);
    auto* cancel = new QPushButton(tr("Cancel"), this);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    bottom->addWidget(small_);
    bottom->addStretch();
    bottom->addWidget(cancel);
    layout->addLayout(bottom);
    small_->setChecked(settings_.GetSettingText("Keyboard Small Letters", "0") == "1");
    SetSmallLetters(small_->isChecked());
    connect(small_, &QCheckBox::toggled, this, [this](bool on) {
        settings_.SetSettingText("Keyboard Small Letters", on ? "1" : "0");
        SetSmallLetters(on);
    });
}

void AsciiKeyboard::SetSmallLetters(bool small) {
    for (QPushButton* key : letters_)
        key->setText(small ? key->text().toLower() : key->text().toUpper());
}

std::optional<QString> AskTextLine(QWidget* parent, const QString& title, const QString& prompt,
                                   const QString& offered) {
    bool ok = false;
    const QString text =
        QInputDialog::getText(parent, title, prompt, QLineEdit::Normal, offered, &ok);
    if (!ok) return std::nullopt;
    return text;
}

int ByteFromText(const QString& text) {
    QString t = text.trimmed().toUpper();
    if (t.size() == 1) t.prepend('0');
    return pb_dec2(t.toStdString());
}

ByteEntryDialog::ByteEntryDialog(Kind kind, const QString& caption, const QString& prompt,
                                 SettingsStore& settings, QWidget* parent)
    : QDialog(parent), kind_(kind), settings_(settings) {
    setWindowTitle(caption);
    setModal(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(prompt, this));
    edit_ = new QLineEdit(this);
    edit_->setMaxLength(2);
    layout->addWidget(edit_);
    auto* buttons = new QHBoxLayout;
    auto* enter = new QPushButton(tr("Enter"), this);
    enter->setDefault(true);
    auto* keyboard = new QPushButton(tr("Keyboard"), this);
    buttons->addWidget(enter);
    buttons->addWidget(keyboard);
    connect(enter, &QPushButton::clicked, this, [this] {
        if (Enter(edit_->text())) accept();
    });
    connect(keyboard, &QPushButton::clicked, this, [this] {
        AsciiKeyboard board(settings_, this);
        if (board.exec() == QDialog::Accepted && board.value >= 0) {
            value = board.value;
            accept();
        }
    });
    if (kind_ == Kind::InInstruction) {
        auto* step = new QPushButton(tr("Switch To Step By Step Rate"), this);
        connect(step, &QPushButton::clicked, this, [this] {
            if (switchToStepByStep) switchToStepByStep();
        });
        buttons->addWidget(step);
    } else {
        auto* cancel = new QPushButton(tr("Cancel"), this);
        connect(cancel, &QPushButton::clicked, this, [this] {
            value = -1;
            reject();
        });
        buttons->addWidget(cancel);
    }
    layout->addLayout(buttons);
}

bool ByteEntryDialog::Enter(const QString& text) {
    const int v = ByteFromText(text);
    if (v < 0) {
        edit_->selectAll();
        return false;
    }
    value = v;
    return true;
}

}  // namespace mb
