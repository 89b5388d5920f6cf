#include "theme.h"

#include <QApplication>
#include <QEvent>
#include <QFontDatabase>
#include <QFontDialog>
#include <QFontInfo>
#include <QFrame>
#include <QGroupBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QScreen>

#include "color_theme_dialog.h"
#include "editor_setup_dialog.h"
#include "settings/settings_store.h"
#include "window_place.h"

namespace mb {

namespace {

constexpr const char* kDefaultMainFont = "Tahoma";

QColor SlotColor(const ColorTheme& theme, int slot) {
    const int v = theme.Slot(slot);
    return QColor(RedOf(v), GreenOf(v), BlueOf(v));
}

// Each control keeps the frame it was built with in a property, so that frames
// can be taken away and given back any number of times.
void ShowFrames(QWidget& window, bool on) {
    for (QWidget* w : window.findChildren<QWidget*>()) {
        if (w->isWindow()) continue;
        if (auto* box = qobject_cast<QGroupBox*>(w)) {
            if (!box->property("mbFlat").isValid()) box->setProperty("mbFlat", box->isFlat());
            box->setFlat(!on || box->property("mbFlat").toBool());
        } else if (auto* edit = qobject_cast<QLineEdit*>(w)) {
            if (!edit->property("mbFrame").isValid())
                edit->setProperty("mbFrame", edit->hasFrame());
            edit->setFrame(on && edit->property("mbFrame").toBool());
        } else if (auto* frame = qobject_cast<QFrame*>(w)) {
            if (!frame->property("mbFrameStyle").isValid())
                frame->setProperty("mbFrameStyle", frame->frameStyle());
            frame->setFrameStyle(on ? frame->property("mbFrameStyle").toInt()
                                    : int(QFrame::NoFrame));
        }
    }
}

// Font databases tell fixed pitch in different ways; any of them will do.
bool IsFixedPitch(const QFont& font) {
    const QFont::StyleHint hint = font.styleHint();
    return font.fixedPitch() || hint == QFont::TypeWriter || hint == QFont::Monospace ||
           font.family() == QFontDatabase::systemFont(QFontDatabase::FixedFont).family() ||
           QFontDatabase::isFixedPitch(font.family()) || QFontInfo(font).fixedPitch();
}

// Selected text in lists, menus and fields must read at a glance: of the field
// colours, black and white, it takes the one that reads best on the selection
// colour. Where even that falls short of kReadable, the selection colour is
// moved away from the text, darker under light text and lighter under dark.
constexpr double kReadable = 7.0;

int Mix(int color, int toward, double share) {
    auto channel = [share](int a, int b) { return static_cast<int>(a + (b - a) * share + 0.5); };
    return Rgb(channel(RedOf(color), RedOf(toward)), channel(GreenOf(color), GreenOf(toward)),
               channel(BlueOf(color), BlueOf(toward)));
}

}  // namespace

std::pair<int, int> SelectionColours(const ColorTheme& theme) {
    const int black = Rgb(0, 0, 0), white = Rgb(255, 255, 255);
    int selection = theme.Slot(5);
    int text = theme.Slot(6);
    for (int candidate : {theme.Slot(7), black, white})
        if (ContrastRatio(candidate, selection) > ContrastRatio(text, selection)) text = candidate;
    const int away = ContrastRatio(text, black) > ContrastRatio(text, white) ? black : white;
    const int original = selection;
    for (int step = 1; step <= 20 && ContrastRatio(text, selection) < kReadable; ++step)
        selection = Mix(original, away, step / 20.0);
    return {selection, text};
}

namespace {

QString MainFont(SettingsStore& settings) {
    const QString family =
        QString::fromStdString(settings.GetSettingText("Main Font", kDefaultMainFont));
    return family.trimmed().isEmpty() ? QString(kDefaultMainFont) : family;
}

}  // namespace

QPalette ThemePalette(const ColorTheme& theme) {
    auto c = [&theme](int slot) { return SlotColor(theme, slot); };
    QPalette p;
    p.setColor(QPalette::Window, c(1));
    p.setColor(QPalette::Light, c(2));
    p.setColor(QPalette::Dark, c(3));
    p.setColor(QPalette::Midlight, c(4));
    p.setColor(QPalette::Mid, c(5));
    p.setColor(QPalette::Base, c(6));
    p.setColor(QPalette::Text, c(7));
    p.setColor(QPalette::Button, c(8));
    p.setColor(QPalette::ButtonText, c(9));
    p.setColor(QPalette::WindowText, c(10));
    p.setColor(QPalette::Shadow, c(11));
    p.setColor(QPalette::AlternateBase, c(12));
    p.setColor(QPalette::Link, c(13));
    p.setColor(QPalette::LinkVisited, c(14));
    p.setColor(QPalette::ToolTipBase, c(15));
    p.setColor(QPalette::PlaceholderText, c(16));
    p.setColor(QPalette::ToolTipText, c(17));
    const auto [selection, selected] = SelectionColours(theme);
    p.setColor(QPalette::Highlight,
               QColor(RedOf(selection), GreenOf(selection), BlueOf(selection)));
    p.setColor(QPalette::HighlightedText,
               QColor(RedOf(selected), GreenOf(selected), BlueOf(selected)));
    // Disabled text stands halfway between its colour and its background.
    const std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {
        {QPalette::WindowText, QPalette::Window},
        {QPalette::Text, QPalette::Base},
        {QPalette::ButtonText, QPalette::Button}};
    for (const auto& [text, back] : pairs) {
        const QColor a = p.color(QPalette::Active, text);
        const QColor b = p.color(QPalette::Active, back);
        p.setColor(QPalette::Disabled, text,
                   QColor((a.red() + b.red()) / 2, (a.green() + b.green()) / 2,
                          (a.blue() + b.blue()) / 2));
    }
    return p;
}

void settheme(QWidget& window, const ColorTheme& theme) {
    window.setPalette(ThemePalette(theme));
    ShowFrames(window, theme.border);
    if (auto* own = dynamic_cast<ThemedWindow*>(&window)) own->settheme(theme);
}

void ApplyTheme(SettingsStore& settings) {
    const ColorTheme theme = ReadTheme(settings);
    for (QWidget* window : QApplication::topLevelWidgets()) settheme(*window, theme);
}

void ApplyMainFont(QWidget& window, SettingsStore& settings) {
    ApplyMainFont(window, MainFont(settings));
}

void ApplyMainFont(QWidget& window, const QString& family) {
    const QString platform = QApplication::font().family();
    const QString former = window.font().family();
    QFont font = window.font();
    font.setFamily(family);
    window.setFont(font);  // every control that inherits its font follows
    // Controls with an own copy of the interface font (bold captions and such).
    for (QWidget* w : window.findChildren<QWidget*>()) {
        if (w->isWindow() || !w->testAttribute(Qt::WA_SetFont)) continue;
        QFont own = w->font();
        if (own.family() != platform && own.family() != former) continue;
        if (IsFixedPitch(own)) continue;
        own.setFamily(family);
        w->setFont(own);
    }
}

double ScreenScale() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->logicalDotsPerInch() / 96.0 : 1.0;
}

Appearance::Appearance(SettingsStore& settings, QObject* parent)
    : QObject(parent), settings_(settings) {
    qApp->installEventFilter(this);
}

Appearance::~Appearance() {
    qApp->removeEventFilter(this);
}

void Appearance::ApplyTo(QWidget& window) {
    ApplyMainFont(window, settings_);
    settheme(window, ReadTheme(settings_));
}

void Appearance::ApplyAll() {
    const ColorTheme theme = ReadTheme(settings_);
    const QString family = MainFont(settings_);
    for (QWidget* window : QApplication::topLevelWidgets()) {
        ApplyMainFont(*window, family);
        settheme(*window, theme);
    }
}

// A window is polished once before it first shows, early enough for its size
// to follow the font; the show event catches controls added after that.
bool Appearance::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if ((type == QEvent::Polish || type == QEvent::Show) && watched->isWidgetType()) {
        auto* widget = static_cast<QWidget*>(watched);
        if (widget->isWindow()) ApplyTo(*widget);
    }
    return QObject::eventFilter(watched, event);
}

ColorThemeDialog* Appearance::colorThemeDialog() const {
    return colorTheme_;
}

EditorSetupDialog* Appearance::editorSetupDialog() const {
    return editorSetup_;
}

void Appearance::menueditorsetup(QWidget* parent) {
    if (!editorSetup_) {
        editorSetup_ = new EditorSetupDialog(settings_, ScreenScale(), parent);
        editorSetup_->setAttribute(Qt::WA_DeleteOnClose);
        editorSetup_->applied = [this] {
            if (editorsApplied) editorsApplied();
        };
    }
    ApplyOnTop(*editorSetup_);
    editorSetup_->open();
    editorSetup_->raise();
}

void Appearance::menucolortheme(QWidget* parent) {
    if (!colorTheme_) {
        colorTheme_ = new ColorThemeDialog(settings_, parent);
        colorTheme_->setAttribute(Qt::WA_DeleteOnClose);
    }
    ApplyOnTop(*colorTheme_);
    colorTheme_->open();
    colorTheme_->raise();
}

void Appearance::menumainfont(QWidget* parent) {
    const QString warning =
        tr("Please be careful with this command.\nThe default font is Tahoma.\nPreviously, the "
           "default font was Microsoft Sans Serif...");
    const bool go =
        mainFontWarningAnswer
            ? mainFontWarningAnswer(warning)
            : QMessageBox::warning(parent, tr("Change Main Font"), warning,
                                   QMessageBox::Ok | QMessageBox::Cancel) == QMessageBox::Ok;
    if (!go) return;
    const QString current = MainFont(settings_);
    std::optional<QString> family;
    if (mainFontAnswer) {
        family = mainFontAnswer(current);
    } else {
        bool ok = false;
        const QFont chosen = QFontDialog::getFont(&ok, QFont(current), parent, tr("Main Font"));
        if (ok) family = chosen.family();
    }
    if (!family || family->trimmed().isEmpty()) return;
    settings_.SetSettingText("Main Font", family->trimmed().toStdString());
    ApplyAll();
}

}  // namespace mb
