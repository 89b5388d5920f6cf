// The look of all windows: the colour theme ("Color Theme"), the frames of the
// controls ("Color Theme Border") and the main font ("Main Font").
//
// Every window gets the look as it opens: Appearance watches the application for
// windows being polished or shown and runs settheme and ApplyMainFont on them,
// so a tool window needs no call of its own. A change of theme or font runs
// ApplyTheme / ApplyMainFont over every open window.
#pragma once

#include <QObject>
#include <QPalette>
#include <QPointer>
#include <QString>
#include <functional>
#include <optional>
#include <utility>

#include "settings/color_themes.h"

class QWidget;

namespace mb {

class SettingsStore;
class ColorThemeDialog;
class EditorSetupDialog;

// The palette of a theme: slot 1 window, 2 light and 3 dark frame edges,
// 4 midlight, 5 mid and selection, 6/7 fields, 8/9 buttons, 10 window text,
// 11 shadow, 12 alternate rows, 13/14 links, 15/17 tool tips, 16 placeholder
// text. Disabled text is drawn halfway between its colour and its background.
QPalette ThemePalette(const ColorTheme& theme);
// The selection colour and the selected text of a theme, as RGB values: the
// text that reads best on the theme's selection colour, and that colour made
// darker or lighter where the text would not read well enough on it.
std::pair<int, int> SelectionColours(const ColorTheme& theme);

// A window with colours of its own beyond the palette (a screen, a terminal)
// implements this; settheme calls it after setting the palette.
class ThemedWindow {
  public:
    virtual ~ThemedWindow() = default;
    virtual void settheme(const ColorTheme& theme) = 0;
};

// Colours one window from the slots and shows or hides the frames of its
// controls (group boxes, framed labels and views, line edits).
void settheme(QWidget& window, const ColorTheme& theme);
// ReadTheme, then settheme on every top-level window of the application.
void ApplyTheme(SettingsStore& settings);

// Sets the family of "Main Font" (default "Tahoma") on the controls of the
// window that use the user interface font: those that inherit it, and those with
// an own font of the platform's or the window's former family. Controls with a
// font of their own, such as the fixed-pitch register display and dumps, keep it.
void ApplyMainFont(QWidget& window, SettingsStore& settings);
void ApplyMainFont(QWidget& window, const QString& family);

// The scale of the screen against 96 dots per inch; the editors' default font
// size grows above 1.
double ScreenScale();

// Keeps the look of the application and serves the three commands of the
// Options menu. The main window owns one.
class Appearance : public QObject {
    Q_OBJECT
  public:
    explicit Appearance(SettingsStore& settings, QObject* parent = nullptr);
    ~Appearance() override;

    // Theme, frames and main font on one window.
    void ApplyTo(QWidget& window);
    // The same on every open window.
    void ApplyAll();

    // "Editor Setup", "Change Color Theme" (both open without blocking; a second
    // call brings the open one to the front) and "Change Main Font".
    void menueditorsetup(QWidget* parent);
    void menucolortheme(QWidget* parent);
    void menumainfont(QWidget* parent);

    // The open dialogs, or null.
    ColorThemeDialog* colorThemeDialog() const;
    EditorSetupDialog* editorSetupDialog() const;

    // Runs after "Editor Setup" saved, so that the open editors take the settings.
    std::function<void()> editorsApplied;
    // Tests answer "Change Main Font" through these; false or nullopt is Cancel.
    std::function<bool(const QString& warning)> mainFontWarningAnswer;
    std::function<std::optional<QString>(const QString& current)> mainFontAnswer;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    SettingsStore& settings_;
    QPointer<ColorThemeDialog> colorTheme_;
    QPointer<EditorSetupDialog> editorSetup_;
};

}  // namespace mb
