// Where a tool window stands: "WindowN Left"/"WindowN Top" in twips (15 per
// pixel), restored and kept only while "Save Positions" is "ON"; and whether it
// stays above the other windows.
#pragma once

class QCheckBox;
class QWidget;

namespace mb {

class SettingsStore;

// Moves the window to its kept place (defaults: the main window's 2000/1230,
// the others' 3000/1850), within the screen so that it can be seen.
void RestoreWindowPlace(QWidget& window, SettingsStore& settings, int number);
// Keeps the window's place; call it when the window closes.
void SaveWindowPlace(const QWidget& window, SettingsStore& settings, int number);
// The same for windows that keep their size too ("WindowN Width"/"Height").
void RestoreWindowSize(QWidget& window, SettingsStore& settings, int number);
void SaveWindowSize(const QWidget& window, SettingsStore& settings, int number);
// Moves the window back inside the available area of its screen where it lies
// partly or wholly outside it.
void KeepOnScreen(QWidget& window);
// Keeps the menus of the main window within reach: a window of it that would
// stand over its menu bar moves down below the bar.
void KeepClearOfMenuBar(QWidget& window);

// A window of the main window stays on top when its own "On Top N" says so, and
// also while the main window stays on top ("Save Always On Top"): otherwise it
// would open hidden behind the main window, menus and all.
//
// "On Top N": the window's own choice (default off), restored and applied.
bool RestoreOnTop(QWidget& window, SettingsStore& settings, int number);
void SetOnTop(QWidget& window, SettingsStore& settings, int number, bool on);
// An "On Top" check box for the window: restored now, kept when toggled.
QCheckBox* OnTopCheckBox(QWidget& window, SettingsStore& settings, int number);
// Sets or clears the stay-on-top hint, showing the window again if the change
// hid it.
void SetStaysOnTop(QWidget& window, bool on);
// Gives the window the stay-on-top hint that its own choice and its owner call for.
void ApplyOnTop(QWidget& window);
// The same on every window that the owner holds, after the owner's hint changed.
void ApplyOnTopToOwned(QWidget& owner);
// Opens a tool window in front: on top as above, shown, raised and active.
void ShowToolWindow(QWidget& window);

}  // namespace mb
