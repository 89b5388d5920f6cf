#include "editor_setup_dialog.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QFontDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTabWidget>
#include <QVBoxLayout>

#include "settings/settings_store.h"

namespace mb {

namespace {

QColor ToQColor(int color) {
    return QColor(RedOf(color), GreenOf(color), BlueOf(color));
}

// A colour shown as itself, with its numbers in black or white, whichever reads.
void PaintSwatch(QLabel& swatch, int color) {
    QPalette p = swatch.palette();
    p.setColor(QPalette::Window, ToQColor(color));
    const bool dark = ContrastRatio(color, Rgb(0, 0, 0)) < ContrastRatio(color, Rgb(255, 255, 255));
    p.setColor(QPalette::WindowText, dark ? Qt::white : Qt::black);
    swatch.setPalette(p);
    swatch.setText(QString("%1, %2, %3").arg(RedOf(color)).arg(GreenOf(color)).arg(BlueOf(color)));
}

}  // namespace

EditorSetupDialog::EditorSetupDialog(SettingsStore& settings, double screenScale, QWidget* parent)
    : QDialog(parent), settings_(settings), scale_(screenScale) {
    setWindowTitle(tr("Editor Setup"));
    edited_[0] = ReadEditorSettings(settings_, EditorKind::Basic, scale_);
    edited_[1] = ReadEditorSettings(settings_, EditorKind::Assembler, scale_);

    auto* layout = new QVBoxLayout(this);
    tabs_ = new QTabWidget(this);
    tabs_->addTab(BuildPage(EditorKind::Basic), tr("BASIC Editor"));
    tabs_->addTab(BuildPage(EditorKind::Assembler), tr("Assembler Editor"));
    layout->addWidget(tabs_);

    auto* themes = new QPushButton(tr("Select Predefined Color Theme"), this);
    defaults_ = new QPushButton(tr("Defaults"), this);
    save_ = new QPushButton(tr("Save"), this);
    cancel_ = new QPushButton(tr("Cancel"), this);
    save_->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(themes);
    buttons->addWidget(defaults_);
    buttons->addStretch();
    buttons->addWidget(save_);
    buttons->addWidget(cancel_);
    layout->addLayout(buttons);
    connect(themes, &QPushButton::clicked, this, &EditorSetupDialog::SelectPredefinedTheme);
    connect(defaults_, &QPushButton::clicked, this, &EditorSetupDialog::LoadDefaults);
    connect(save_, &QPushButton::clicked, this, &EditorSetupDialog::Save);
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);

    Show(EditorKind::Basic);
    Show(EditorKind::Assembler);
}

QWidget* EditorSetupDialog::BuildPage(EditorKind kind) {
    const EditorRows& rows = EditorSettingRows(kind);
    Page& page = PageOf(kind);
    auto* scroll = new QScrollArea;
    auto* inner = new QWidget;
    auto* grid = new QGridLayout(inner);
    int line = 0;

    grid->addWidget(new QLabel(tr("Font"), inner), line, 0);
    page.font = new QLabel(inner);
    grid->addWidget(page.font, line, 1);
    auto* fontButton = new QPushButton(tr("Change..."), inner);
    connect(fontButton, &QPushButton::clicked, this, [this, kind] { EditFont(kind); });
    grid->addWidget(fontButton, line++, 2);

    for (const EditorColorRow& row : rows.colors) {
        grid->addWidget(new QLabel(tr(row.caption), inner), line, 0);
        auto* swatch = new QLabel(inner);
        swatch->setAutoFillBackground(true);
        swatch->setAlignment(Qt::AlignCenter);
        swatch->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        swatch->setMinimumWidth(swatch->fontMetrics().horizontalAdvance("255, 255, 255") + 16);
        page.swatches[row.role] = swatch;
        grid->addWidget(swatch, line, 1);
        auto* button = new QPushButton(tr("Change..."), inner);
        const EditorColor role = row.role;
        connect(button, &QPushButton::clicked, this, [this, kind, role] { EditColor(kind, role); });
        grid->addWidget(button, line++, 2);
    }
    for (const EditorSwitchRow& row : rows.switches) {
        auto* toggle = new QCheckBox(tr(row.caption), inner);
        page.toggles[row.role] = toggle;
        const EditorSwitch role = row.role;
        connect(toggle, &QCheckBox::toggled, this,
                [this, kind, role](bool on) { SetSwitch(kind, role, on); });
        grid->addWidget(toggle, line++, 0, 1, 3);
    }
    grid->setRowStretch(line, 1);
    scroll->setWidget(inner);
    scroll->setWidgetResizable(true);
    return scroll;
}

void EditorSetupDialog::Show(EditorKind kind) {
    const EditorSettings& e = Of(kind);
    Page& page = PageOf(kind);
    page.font->setText(QString("%1, %2").arg(QString::fromStdString(e.fontName)).arg(e.fontSize));
    for (auto& [role, swatch] : page.swatches) PaintSwatch(*swatch, e.Color(role));
    for (auto& [role, toggle] : page.toggles) {
        const QSignalBlocker quiet(toggle);
        toggle->setChecked(e.On(role));
    }
}

const EditorSettings& EditorSetupDialog::Edited(EditorKind kind) const {
    return edited_[Index(kind)];
}

EditorKind EditorSetupDialog::ShownEditor() const {
    return tabs_->currentIndex() == 0 ? EditorKind::Basic : EditorKind::Assembler;
}

void EditorSetupDialog::ShowEditor(EditorKind kind) {
    tabs_->setCurrentIndex(static_cast<int>(Index(kind)));
}

void EditorSetupDialog::EditColor(EditorKind kind, EditorColor role) {
    EditorSettings& e = Of(kind);
    const int current = e.Color(role);
    if (current < 0) return;  // not a colour of this editor
    std::optional<int> chosen;
    if (colorAnswer) {
        chosen = colorAnswer(current);
    } else {
        const QColor c = QColorDialog::getColor(ToQColor(current), this, windowTitle());
        if (c.isValid()) chosen = Rgb(c.red(), c.green(), c.blue());
    }
    if (!chosen || *chosen < 0 || *chosen > 0xFFFFFF) return;
    e.colors[role] = *chosen;
    Show(kind);
}

void EditorSetupDialog::EditFont(EditorKind kind) {
    EditorSettings& e = Of(kind);
    std::optional<std::pair<std::string, int>> chosen;
    if (fontAnswer) {
        chosen = fontAnswer(e.fontName, e.fontSize);
    } else {
        bool ok = false;
        const QFont f = QFontDialog::getFont(
            &ok, QFont(QString::fromStdString(e.fontName), e.fontSize), this, windowTitle());
        if (ok) chosen = std::make_pair(f.family().toStdString(), f.pointSize());
    }
    if (!chosen || chosen->first.empty() || chosen->second < 1) return;
    e.fontName = chosen->first;
    e.fontSize = chosen->second;
    Show(kind);
}

void EditorSetupDialog::SetSwitch(EditorKind kind, EditorSwitch role, bool on) {
    EditorSettings& e = Of(kind);
    if (!e.switches.count(role)) return;
    e.switches[role] = on;
    Show(kind);
}

void EditorSetupDialog::SelectPredefinedTheme() {
    QStringList names;
    for (const EditorTheme& t : PredefinedEditorThemes()) names << QString::fromStdString(t.name);
    std::optional<int> index;
    if (themeAnswer) {
        index = themeAnswer(names);
    } else {
        bool ok = false;
        const QString name =
            QInputDialog::getItem(this, tr("Select Predefined Color Theme"),
                                  tr("Select Predefined Color Theme:"), names, 0, false, &ok);
        if (ok) index = static_cast<int>(names.indexOf(name));
    }
    if (!index || *index < 0 || *index >= static_cast<int>(names.size())) return;
    const EditorKind kind = ShownEditor();
    ApplyEditorTheme(Of(kind), PredefinedEditorThemes()[static_cast<size_t>(*index)]);
    Show(kind);
}

void EditorSetupDialog::LoadDefaults() {
    const EditorKind kind = ShownEditor();
    Of(kind) = DefaultEditorSettings(kind, scale_);
    Show(kind);
}

void EditorSetupDialog::Save() {
    WriteEditorSettings(settings_, Of(EditorKind::Basic));
    WriteEditorSettings(settings_, Of(EditorKind::Assembler));
    if (applied) applied();
    accept();
}

}  // namespace mb
