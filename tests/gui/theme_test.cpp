#include "shell/theme.h"

#include <QCheckBox>
#include <QListWidget>
#include <QPushButton>

#include "ide_fixture.h"
#include "settings/editor_settings.h"
#include "shell/color_theme_dialog.h"
#include "shell/editor_setup_dialog.h"

using namespace mb;

namespace {
QColor Slot1(const char* name) {
    const int c = FindColorTheme(name).colors[0];
    return QColor(RedOf(c), GreenOf(c), BlueOf(c));
}
QColor Background(const QWidget& w) {
    return w.palette().color(QPalette::Window);
}
}  // namespace

class ThemeTest : public QObject, protected testing::IdeFixture {
    Q_OBJECT

  private:
    void Click(QListWidget* list, const QString& name) {
        const QList<QListWidgetItem*> items = list->findItems(name, Qt::MatchExactly);
        QVERIFY2(!items.isEmpty(), qPrintable(name));
        list->scrollToItem(items.first());
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(items.first()).center());
    }
    QLabel* Caption(const QString& text) {
        for (QLabel* l : window->findChildren<QLabel*>())
            if (l->text() == text) return l;
        return nullptr;
    }
    std::string Stored(const char* key) { return settings->GetSettingText(key, "?"); }
    // The theme in force: stored, and on the main window's background.
    void InForce(const char* name) {
        QCOMPARE(Stored("Color Theme"), std::string(name));
        QCOMPARE(Background(*window), Slot1(name));
    }

  private slots:
    // Every theme keeps selected text readable on its selection colour: in the
    // palette, and as a list draws its selected row (the style may shade the
    // selection, and the text is drawn smoothed).
    void selectedTextReadsInEveryTheme() {
        const auto rgb = [](const QColor& c) { return Rgb(c.red(), c.green(), c.blue()); };
        for (const ThemeRow& row : ColorThemeTable()) {
            ColorTheme theme;
            theme.name = row.name;
            theme.colors = row.colors;
            const QPalette p = ThemePalette(theme);
            const double inPalette = ContrastRatio(rgb(p.color(QPalette::HighlightedText)),
                                                   rgb(p.color(QPalette::Highlight)));
            QVERIFY2(inPalette >= 7.0, row.name.c_str());

            QListWidget list;
            list.setPalette(p);
            list.addItems({"Toxic", "Uranium"});
            list.setCurrentRow(0);
            list.resize(200, 80);
            list.show();
            QVERIFY(QTest::qWaitForWindowExposed(&list));
            const QImage image = list.viewport()->grab().toImage();
            const QRect item = list.visualItemRect(list.item(0));
            const int selection = rgb(image.pixelColor(item.right() - 2, item.center().y()));
            double drawn = 1;
            for (int y = item.top(); y <= item.bottom(); ++y)
                for (int x = item.left(); x < item.left() + item.width() / 2; ++x)
                    drawn = std::max(drawn, ContrastRatio(rgb(image.pixelColor(x, y)), selection));
            QVERIFY2(drawn >= 4.5, qPrintable(QString("%1: %2").arg(row.name.c_str()).arg(drawn)));
        }
    }

    void init() { FreshSettings(); }

    void cancelAfterTryingThemesGivesTheFirstBack() {
        settings->SetSettingText("Color Theme", "Blues");
        Open();
        QCOMPARE(Background(*window), Slot1("Blues"));
        const int fieldFrame = window->Field("A")->frameStyle();
        QVERIFY(fieldFrame != QFrame::NoFrame);

        Trigger("Change Color Theme");
        ColorThemeDialog* dialog = window->appearance().colorThemeDialog();
        QVERIFY(dialog && dialog->isVisible());
        QCOMPARE(dialog->list()->currentItem()->text(), QString("Blues"));
        for (const char* name : {"Amethyst", "Toxic", "Original Lite"}) {
            Click(dialog->list(), name);
            InForce(name);
            QCOMPARE(Background(*dialog), Slot1(name));
        }
        dialog->showFrames()->click();
        QCOMPARE(settings->GetSettingInt("Color Theme Border", -1), 0);
        QCOMPARE(window->Field("A")->frameStyle(), int(QFrame::NoFrame));

        dialog->cancelButton()->click();
        InForce("Blues");
        QCOMPARE(settings->GetSettingInt("Color Theme Border", -1), 1);
        QCOMPARE(window->Field("A")->frameStyle(), fieldFrame);
        QTRY_VERIFY(!window->appearance().colorThemeDialog());

        Trigger("Change Color Theme");
        dialog = window->appearance().colorThemeDialog();
        Click(dialog->list(), "Grapes");
        dialog->selectButton()->click();
        InForce("Grapes");
    }

    void originalDarkOpensAsZ80Temple() {
        settings->SetSettingText("Color Theme", "Original Dark");
        Open();
        QCOMPARE(Background(*window), Slot1("Original Dark"));
        Trigger("Change Color Theme");
        ColorThemeDialog* dialog = window->appearance().colorThemeDialog();
        QCOMPARE(dialog->list()->currentItem()->text(), QString("Z80 Temple 2001"));
        InForce("Z80 Temple 2001");
        dialog->cancelButton()->click();
        QCOMPARE(Stored("Color Theme"), std::string("Z80 Temple 2001"));
    }

    void windowsOpenedLaterTakeTheLook() {
        settings->SetSettingText("Color Theme", "Sunflower");
        settings->SetSettingInt("Color Theme Border", 0);
        settings->SetSettingText("Main Font", "DejaVu Serif");
        Open();
        Trigger("IEEE 754 Conversion Tool");
        QWidget* tool = window->ieee754Window();
        QVERIFY(tool && tool->isVisible());
        QCOMPARE(Background(*tool), Slot1("Sunflower"));
        QCOMPARE(tool->findChild<QPushButton*>()->font().family(), QString("DejaVu Serif"));
        for (QFrame* f : tool->findChildren<QFrame*>())
            QCOMPARE(f->frameStyle(), int(QFrame::NoFrame));

        QDialog plain;
        auto* label = new QLabel("x", &plain);
        label->setFrameStyle(QFrame::Box);
        plain.show();
        QCOMPARE(Background(plain), Slot1("Sunflower"));
        QCOMPARE(label->frameStyle(), int(QFrame::NoFrame));
    }

    void mainFontLeavesFixedPitchControlsAlone() {
        Open();
        QLabel* caption = Caption("Instruction:");
        QVERIFY(caption);
        QCOMPARE(caption->font().family(), QString("Tahoma"));
        const QString fixed = window->Field("PC")->font().family();
        QVERIFY(fixed != "Tahoma");
        Trigger("IEEE 754 Conversion Tool");

        QString warned;
        window->appearance().mainFontWarningAnswer = [&warned](const QString& text) {
            warned = text;
            return false;
        };
        window->appearance().mainFontAnswer = [](const QString&) {
            return std::optional<QString>("DejaVu Serif");
        };
        Trigger("Change Main Font");
        QVERIFY(warned.startsWith("Please be careful with this command."));
        QVERIFY(warned.contains("The default font is Tahoma."));
        QCOMPARE(Stored("Main Font"), std::string("Tahoma"));  // warned off: nothing changes

        window->appearance().mainFontWarningAnswer = [](const QString&) { return true; };
        Trigger("Change Main Font");
        QCOMPARE(Stored("Main Font"), std::string("DejaVu Serif"));
        QCOMPARE(caption->font().family(), QString("DejaVu Serif"));
        QCOMPARE(window->Field("PC")->font().family(), fixed);
        QWidget* tool = window->ieee754Window();
        QCOMPARE(tool->findChild<QPushButton*>()->font().family(), QString("DejaVu Serif"));

        // A control with its own copy of the interface font follows too.
        QFont bold = caption->font();
        bold.setBold(true);
        caption->setFont(bold);
        window->appearance().mainFontAnswer = [](const QString&) {
            return std::optional<QString>("DejaVu Sans");
        };
        Trigger("Change Main Font");
        QCOMPARE(caption->font().family(), QString("DejaVu Sans"));
        QVERIFY(caption->font().bold());
        QCOMPARE(window->Field("PC")->font().family(), fixed);
    }

    void editorSetupSaveCancelDefaults() {
        Open();
        int applied = 0;
        window->appearance().editorsApplied = [&applied] { ++applied; };
        const double scale = ScreenScale();
        const EditorSettings asmDefaults = DefaultEditorSettings(EditorKind::Assembler, scale);
        const EditorSettings basicDefaults = DefaultEditorSettings(EditorKind::Basic, scale);

        // Cancel drops every change.
        Trigger("Editor Setup");
        EditorSetupDialog* dialog = window->appearance().editorSetupDialog();
        QVERIFY(dialog && dialog->isVisible());
        dialog->colorAnswer = [](int) { return std::optional<int>(Rgb(1, 2, 3)); };
        dialog->EditColor(EditorKind::Assembler, EditorColor::Keyword);
        QCOMPARE(dialog->Edited(EditorKind::Assembler).Color(EditorColor::Keyword), Rgb(1, 2, 3));
        dialog->cancelButton()->click();
        QCOMPARE(applied, 0);
        QVERIFY(ReadEditorSettings(*settings, EditorKind::Assembler, scale) == asmDefaults);
        QTRY_VERIFY(!window->appearance().editorSetupDialog());

        // Save keeps font, colours, switches and a theme chosen for one editor.
        Trigger("Editor Setup");
        dialog = window->appearance().editorSetupDialog();
        QVERIFY(dialog->Edited(EditorKind::Assembler) == asmDefaults);
        dialog->ShowEditor(EditorKind::Assembler);
        dialog->themeAnswer = [](const QStringList& names) {
            return std::optional<int>(static_cast<int>(names.indexOf("Black Style")));
        };
        dialog->SelectPredefinedTheme();
        dialog->fontAnswer = [](const std::string&, int) {
            return std::optional<std::pair<std::string, int>>({"DejaVu Sans Mono", 13});
        };
        dialog->EditFont(EditorKind::Assembler);
        dialog->SetSwitch(EditorKind::Assembler, EditorSwitch::LineWrapping, true);
        dialog->saveButton()->click();
        QCOMPARE(applied, 1);
        const EditorSettings saved = ReadEditorSettings(*settings, EditorKind::Assembler, scale);
        QCOMPARE(saved.fontName, std::string("DejaVu Sans Mono"));
        QCOMPARE(saved.fontSize, 13);
        QVERIFY(saved.On(EditorSwitch::LineWrapping));
        for (const auto& [role, color] : PredefinedEditorThemes()[5].assembler)
            QCOMPARE(saved.Color(role), color);
        QVERIFY(ReadEditorSettings(*settings, EditorKind::Basic, scale) == basicDefaults);
        QTRY_VERIFY(!window->appearance().editorSetupDialog());

        // Defaults bring the table back for the editor shown.
        Trigger("Editor Setup");
        dialog = window->appearance().editorSetupDialog();
        QVERIFY(dialog->Edited(EditorKind::Assembler) == saved);
        dialog->ShowEditor(EditorKind::Assembler);
        dialog->defaultsButton()->click();
        QVERIFY(dialog->Edited(EditorKind::Assembler) == asmDefaults);
        dialog->saveButton()->click();
        QCOMPARE(applied, 2);
        QVERIFY(ReadEditorSettings(*settings, EditorKind::Assembler, scale) == asmDefaults);
    }
};

QTEST_MAIN(ThemeTest)
#include "theme_test.moc"
