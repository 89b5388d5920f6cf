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

    // One block of letters: capitals, or small letters while the box is checked,
    // kept for the next opening; every other printable character once.
    void smallLettersSwitchTheOneBlockOfLetters() {
        MemorySettingsStore settings;
        for (const bool small : {false, true, false}) {
            AsciiKeyboard board(settings, nullptr);
            board.findChild<QCheckBox*>()->setChecked(small);
            QStringList letters, captions;
            for (QPushButton* b : board.findChildren<QPushButton*>()) {
                if (b->text() == "Cancel") continue;
                captions << b->text();
                if (b->text().size() == 1 && b->text().at(0).isLetter()) letters << b->text();
            }
            QCOMPARE(letters.size(), 26);
            for (const QString& letter : letters)
                QVERIFY2(small ? letter.at(0).isLower() : letter.at(0).isUpper(),
                         qPrintable(letter));
            QCOMPARE(captions.removeDuplicates(), 0);
            QCOMPARE(captions.size(), 94 - 26 + 3);  // printable, one block of letters, 3 wide
            AsciiKeyboard reopened(settings, nullptr);
            QCOMPARE(reopened.findChild<QCheckBox*>()->isChecked(), small);
        }
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
