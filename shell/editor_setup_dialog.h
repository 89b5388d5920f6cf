// "Editor Setup": the font, colours and switches of the BASIC and assembler
// editors, one row per setting, on one tab per editor. Nothing is stored before
// "Save".
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "settings/editor_settings.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QTabWidget;

namespace mb {

class SettingsStore;

class EditorSetupDialog : public QDialog {
    Q_OBJECT
  public:
    EditorSetupDialog(SettingsStore& settings, double screenScale, QWidget* parent);

    // The values as edited so far.
    const EditorSettings& Edited(EditorKind kind) const;
    EditorKind ShownEditor() const;
    void ShowEditor(EditorKind kind);

    // The commands of the rows.
    void EditColor(EditorKind kind, EditorColor role);  // a colour dialog
    void EditFont(EditorKind kind);                     // a font dialog: name and size
    void SetSwitch(EditorKind kind, EditorSwitch role, bool on);
    // "Select Predefined Color Theme" and "Defaults" work on the editor shown.
    void SelectPredefinedTheme();
    void LoadDefaults();
    // "Save": stores both editors, runs applied and closes.
    void Save();

    QPushButton* saveButton() const { return save_; }
    QPushButton* cancelButton() const { return cancel_; }
    QPushButton* defaultsButton() const { return defaults_; }

    // Re-applies the settings to the open editors after "Save".
    std::function<void()> applied;
    // Tests answer the dialogs through these; nullopt is Cancel.
    std::function<std::optional<int>(int current)> colorAnswer;
    std::function<std::optional<std::pair<std::string, int>>(const std::string& name, int size)>
        fontAnswer;
    std::function<std::optional<int>(const QStringList& names)> themeAnswer;

  private:
    struct Page {
        QLabel* font = nullptr;
        std::map<EditorColor, QLabel*> swatches;
        std::map<EditorSwitch, QCheckBox*> toggles;
    };
    QWidget* BuildPage(EditorKind kind);
    void Show(EditorKind kind);  // the rows show the edited values
    EditorSettings& Of(EditorKind kind) { return edited_[Index(kind)]; }
    Page& PageOf(EditorKind kind) { return pages_[Index(kind)]; }
    static size_t Index(EditorKind kind) { return kind == EditorKind::Basic ? 0 : 1; }

    SettingsStore& settings_;
    double scale_;
    std::array<EditorSettings, 2> edited_;
    std::array<Page, 2> pages_;
    QTabWidget* tabs_ = nullptr;
    QPushButton* save_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QPushButton* defaults_ = nullptr;
};

}  // namespace mb
