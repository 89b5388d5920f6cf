#include "shell/entry_dialogs.h"

#include <QCheckBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include "settings/settings_store.h"

using namespace mb;

class EntryDialogsTest : public QObject {
    Q_OBJECT

  private slots:
    void keyValues() {
        const std::pair<const char*, int> table[] = {{"A", 65},       {"a", 97},    {"&&", 38},
                                                     {"(space)", 32}, {"(tab)", 8}, {"(enter)", 13},
                                                     {"~", 126}};
        for (const auto& [caption, value] : table)
            QCOMPARE(AsciiKeyboard::KeyValue(caption), value);
    }

    void bytesFromText() {
        QCOMPARE(ByteFromText("41"), 0x41);
        QCOMPARE(ByteFromText("f"), 0x0F);
        QCOMPARE(ByteFromText(" ff "), 0xFF);
        QCOMPARE(ByteFromText("G1"), -1);
        QCOMPARE(ByteFromText(""), -1);
        QCOMPARE(ByteFromText("100"), -1);
    }

    void keyboardClickSetsTheValueAndSmallLettersAreStored() {
        MemorySettingsStore settings;
        AsciiKeyboard board(settings, nullptr);
        QPushButton* tab = nullptr;
        QPushButton* letterA = nullptr;
        for (QPushButton* b : board.findChildren<QPushButton*>()) {
            if (b->text() == "(tab)") tab = b;
            if (b->text() == "A") letterA = b;
        }
        QVERIFY(tab && letterA);
        tab->click();
        QCOMPARE(board.value, 8);
        QCOMPARE(board.result(), int(QDialog::Accepted));
        board.findChild<QCheckBox*>()->setChecked(true);
        QCOMPARE(letterA->text(), QString("a"));
        QCOMPARE(settings.GetSettingText("Keyboard Small Letters", "0"), std::string("1"));
        letterA->click();
        QCOMPARE(board.value, 97);
    }

    void hexValueDialogCancelGivesMinusOne() {
        MemorySettingsStore settings;
        ByteEntryDialog dialog(ByteEntryDialog::Kind::HexValue, "Device",
                               "Enter new value supplied by this device [00-FF].", settings,
                               nullptr);
        QVERIFY(!dialog.Enter("XY"));
        QCOMPARE(dialog.value, -1);
        QVERIFY(dialog.Enter("7e"));
        QCOMPARE(dialog.value, 0x7E);
        for (QPushButton* b : dialog.findChildren<QPushButton*>())
            if (b->text() == "Cancel") b->click();
        QCOMPARE(dialog.value, -1);
    }
};

QTEST_MAIN(EntryDialogsTest)
#include "entry_dialogs_test.moc"
