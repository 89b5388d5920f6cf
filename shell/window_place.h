// Where a tool window stands: "WindowN Left"/"WindowN Top" in twips (15 per
// pixel), restored and kept only while "Save Positions" is "ON".
#pragma once

class QCheckBox;
class QWidget;

namespace mb {

class SettingsStore;

// Moves the window to its kept place (defaults: the main window's 2000/1230,
// the others' 3000/1850).
void RestoreWindowPlace(QWidget& window, SettingsStore& settings, int number);
// Keeps the window's place; call it when the window closes.
void SaveWindowPlace(const QWidget& window, SettingsStore& settings, int number);
// The same for windows that keep their size too ("WindowN Width"/"Height").
void RestoreWindowSize(QWidget& window, SettingsStore& settings, int number);
void SaveWindowSize(const QWidget& window, SettingsStore& settings, int number);
// "On Top N": whether the window stays above the others (default off).
bool RestoreOnTop(QWidget& window, SettingsStore& settings, int number);
void SetOnTop(QWidget& window, SettingsStore& settings, int number, bool on);
// An "On Top" check box for the window: restored now, kept when toggled.
QCheckBox* OnTopCheckBox(QWidget& window, SettingsStore& settings, int number);

}  // namespace mb
