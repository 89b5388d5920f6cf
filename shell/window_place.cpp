#include "window_place.h"

#include <QCheckBox>
#include <QWidget>
#include <string>

#include "settings/settings_store.h"

namespace mb {

namespace {
constexpr int kTwipsPerPixel = 15;

bool SavePositions(SettingsStore& settings) {
    return settings.GetSettingText("Save Positions", "ON") == "ON";
}

std::string Key(int number, const char* what) {
    return "Window" + std::to_string(number) + " " + what;
}
}  // namespace

void RestoreWindowPlace(QWidget& window, SettingsStore& settings, int number) {
    if (!SavePositions(settings)) return;
    const int defLeft = number == 1 ? 2000 : 3000, defTop = number == 1 ? 1230 : 1850;
    int left = settings.GetSettingInt(Key(number, "Left"), defLeft);
    int top = settings.GetSettingInt(Key(number, "Top"), defTop);
    if (left < 0) left = defLeft;
    if (top < 0) top = defTop;
    window.move(left / kTwipsPerPixel, top / kTwipsPerPixel);
}

void SaveWindowPlace(const QWidget& window, SettingsStore& settings, int number) {
    if (!SavePositions(settings)) return;
    settings.SetSettingInt(Key(number, "Left"), window.pos().x() * kTwipsPerPixel);
    settings.SetSettingInt(Key(number, "Top"), window.pos().y() * kTwipsPerPixel);
}

void RestoreWindowSize(QWidget& window, SettingsStore& settings, int number) {
    if (!SavePositions(settings)) return;
    const int width = settings.GetSettingInt(Key(number, "Width"), 0);
    const int height = settings.GetSettingInt(Key(number, "Height"), 0);
    if (width > 0 && height > 0) window.resize(width / kTwipsPerPixel, height / kTwipsPerPixel);
}

void SaveWindowSize(const QWidget& window, SettingsStore& settings, int number) {
    if (!SavePositions(settings)) return;
    settings.SetSettingInt(Key(number, "Width"), window.width() * kTwipsPerPixel);
    settings.SetSettingInt(Key(number, "Height"), window.height() * kTwipsPerPixel);
}

bool RestoreOnTop(QWidget& window, SettingsStore& settings, int number) {
    const bool on = settings.GetSettingInt("On Top " + std::to_string(number), 0) != 0;
    window.setWindowFlag(Qt::WindowStaysOnTopHint, on);
    return on;
}

void SetOnTop(QWidget& window, SettingsStore& settings, int number, bool on) {
    settings.SetSettingInt("On Top " + std::to_string(number), on ? 1 : 0);
    const bool visible = window.isVisible();
    window.setWindowFlag(Qt::WindowStaysOnTopHint, on);
    if (visible) window.show();  // a change of flags hides the window
}

QCheckBox* OnTopCheckBox(QWidget& window, SettingsStore& settings, int number) {
    auto* box = new QCheckBox(QObject::tr("On Top"), &window);
    box->setChecked(RestoreOnTop(window, settings, number));
    QObject::connect(box, &QCheckBox::toggled, &window, [&window, &settings, number](bool on) {
        SetOnTop(window, settings, number, on);
    });
    return box;
}

}  // namespace mb
