#include "window_place.h"

#include <QCheckBox>
#include <QGuiApplication>
#include <QMainWindow>
#include <QScreen>
#include <QWidget>
#include <algorithm>
#include <string>

#include "settings/settings_store.h"

namespace mb {

namespace {
constexpr int kTwipsPerPixel = 15;
// Room for the title bar that the window manager adds above a window not yet shown.
constexpr int kTitleBarAllowance = 32;
constexpr const char* kOwnOnTop = "mbOwnOnTop";

bool SavePositions(SettingsStore& settings) {
    return settings.GetSettingText("Save Positions", "ON") == "ON";
}

std::string Key(int number, const char* what) {
    return "Window" + std::to_string(number) + " " + what;
}

bool OwnerOnTop(const QWidget& window) {
    const QWidget* owner = window.parentWidget() ? window.parentWidget()->window() : nullptr;
    return owner && owner->windowFlags().testFlag(Qt::WindowStaysOnTopHint);
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
    KeepOnScreen(window);
    KeepClearOfMenuBar(window);
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

void KeepOnScreen(QWidget& window) {
    QScreen* screen = QGuiApplication::screenAt(window.pos());
    if (!screen) screen = QGuiApplication::primaryScreen();
    if (!screen) return;
    const QRect area = screen->availableGeometry();
    // A window not yet shown has the size its layout asks for, and no frame yet.
    QSize size = window.testAttribute(Qt::WA_Resized) ? window.size() : window.sizeHint();
    const int frame =
        window.isVisible() ? window.frameGeometry().height() - window.height() : kTitleBarAllowance;
    // A window larger than the screen is made to fit, as far as it can shrink.
    const QSize fitting =
        size.boundedTo(area.size() - QSize(0, frame)).expandedTo(window.minimumSize());
    if (fitting != size && window.testAttribute(Qt::WA_Resized)) {
        window.resize(fitting);
        size = fitting;
    }
    size.rheight() += frame;
    const int x = std::max(area.left(), std::min(window.x(), area.right() + 1 - size.width()));
    const int y = std::max(area.top(), std::min(window.y(), area.bottom() + 1 - size.height()));
    if (x != window.x() || y != window.y()) window.move(x, y);
}

void KeepClearOfMenuBar(QWidget& window) {
    const auto* owner = qobject_cast<const QMainWindow*>(
        window.parentWidget() ? window.parentWidget()->window() : nullptr);
    if (!owner || !owner->isVisible() || !owner->menuWidget()) return;
    const QWidget* bar = owner->menuWidget();
    const QRect barRect(bar->mapToGlobal(QPoint(0, 0)), bar->size());
    const QSize size = window.testAttribute(Qt::WA_Resized) ? window.size() : window.sizeHint();
    // The window with the title bar that it gets above it.
    const QRect place(window.x(), window.y() - kTitleBarAllowance, size.width(),
                      size.height() + kTitleBarAllowance);
    if (place.intersects(barRect))
        window.move(window.x(), barRect.bottom() + 1 + kTitleBarAllowance);
}

bool RestoreOnTop(QWidget& window, SettingsStore& settings, int number) {
    const bool on = settings.GetSettingInt("On Top " + std::to_string(number), 0) != 0;
    window.setProperty(kOwnOnTop, on);
    ApplyOnTop(window);
    return on;
}

void SetOnTop(QWidget& window, SettingsStore& settings, int number, bool on) {
    settings.SetSettingInt("On Top " + std::to_string(number), on ? 1 : 0);
    window.setProperty(kOwnOnTop, on);
    ApplyOnTop(window);
}

QCheckBox* OnTopCheckBox(QWidget& window, SettingsStore& settings, int number) {
    auto* box = new QCheckBox(QObject::tr("On Top"), &window);
    box->setObjectName("onTop");
    box->setChecked(RestoreOnTop(window, settings, number));
    QObject::connect(box, &QCheckBox::toggled, &window, [&window, &settings, number](bool on) {
        SetOnTop(window, settings, number, on);
    });
    return box;
}

void SetStaysOnTop(QWidget& window, bool on) {
    if (window.windowFlags().testFlag(Qt::WindowStaysOnTopHint) == on) return;
    const bool visible = window.isVisible();
    window.setWindowFlag(Qt::WindowStaysOnTopHint, on);
    if (visible) window.show();  // a change of flags hides the window
}

void ApplyOnTop(QWidget& window) {
    SetStaysOnTop(window, window.property(kOwnOnTop).toBool() || OwnerOnTop(window));
}

void ApplyOnTopToOwned(QWidget& owner) {
    for (QWidget* w : owner.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        const Qt::WindowType type = w->windowType();
        if (w->isWindow() && (type == Qt::Window || type == Qt::Dialog)) ApplyOnTop(*w);
    }
}

void ShowToolWindow(QWidget& window) {
    ApplyOnTop(window);
    window.show();
    window.raise();
    window.activateWindow();
}

}  // namespace mb
