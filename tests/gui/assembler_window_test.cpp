#include "shell/assembler_window.h"

#include <Qsci/qscilexer.h>
#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QTemporaryDir>
#include <QtTest>

#include "ide_fixture.h"
#include "shell/asm_lexer.h"
#include "shell/format_options_dialog.h"
#include "shell/main_window.h"
#include "shell/qt_settings_store.h"

using namespace mb;

class AssemblerWindowTest : public QObject, protected testing::IdeFixture {
    Q_OBJECT

  private:
    AssemblerWindow* editor = nullptr;

    QString Path(const char* name) const { return dir.filePath(name); }
    // A command of the Assembler window.
    void Command(const char* caption) {
        QAction* a = editor->Action(caption);
        QVERIFY2(a, caption);
        a->trigger();
    }
    // Types the text into the editor as a user would (the editor indents new
    // lines like the one before).
    void Type(const QString& text) {
        QWidget* target = editor->sourceEditor()->viewport();
        editor->sourceEditor()->setFocus();
        for (QChar c : text) {
            if (c == '\n')
                QTest::keyClick(target, Qt::Key_Return);
            else if (c == '\t')
                QTest::keyClick(target, Qt::Key_Tab);
            else
                QTest::keyClicks(target, QString(c));
        }
    }
    std::string ReadFile(const QString& path) {
        QFile f(path);
        if (!f.open(QIODevice::ReadOnly)) return {};
        return f.readAll().toStdString();
    }

  private slots:
    void init() {
        for (const char* name : {"prog.asm", "prog.lst", "prog.obj", "prog.hex", "bad.asm",
                                 "bad.lst", "bad.obj", "marks.asm"})
            QFile::remove(Path(name));
        FreshSettings();
        Open();
        Trigger("Assembler");
        editor = window->assemblerWindow();
        QVERIFY(editor);
        editor->questionAnswer = [](const std::string&) { return 0; };
    }
    void cleanup() {
        window.reset();
        editor = nullptr;
    }

    // A program typed, saved through Save As, assembled, loaded and run.
    void typeAssembleLoadAndRun() {
        QVERIFY(editor->FilePath().endsWith("UNTITLED"));
        Type("\tORG 0\nLD A,2AH\nLD B,3\nINC A\nDJNZ $-1\nHALT\n");
        const QString path = Path("prog");
        editor->fileAnswer = [path](bool save) { return save ? path.toStdString() : ""; };
        Command("Assemble && Load");
        QCOMPARE(editor->FilePath(), Path("prog.asm"));
        QVERIFY(QFileInfo::exists(Path("prog.obj")));
        QVERIFY(QFileInfo::exists(Path("prog.hex")));
        QVERIFY2(editor->ListingText().contains("DJNZ $-1"), qPrintable(editor->ListingText()));
        // The listing is scrolled to its end.
        QVERIFY(editor->ListingText().size() > 0);
        QCOMPARE(window->machine().MemoryImage[1], 0x2A);
        Trigger("Ultimate");
        Trigger("Start");
        QCOMPARE(window->machine().A, 0x2D);
        QCOMPARE(window->machine().HaltState, 1);
    }

    void errorsGiveTheBoxAndLeaveNoOutputs() {
        editor->SetSourceText("\tORG 0\n\tLD Q,1\n\tJP nowhere\n");
        const QString path = Path("bad.asm");
        editor->fileAnswer = [path](bool) { return path.toStdString(); };
        window->messages.clear();
        window->machine().MemoryImage[0] = 0x11;
        Command("Assemble && Load");
        // The evaluator's box for the unknown name comes first, once.
        QCOMPARE(window->messages.size(), size_t(2));
        QVERIFY2(window->messages.front().find("Error evaluating expression: nowhere") !=
                     std::string::npos,
                 window->messages.front().c_str());
        const std::string& box = window->messages.back();
        QVERIFY2(box.rfind("Here is the list of assembler errors:", 0) == 0, box.c_str());
        QVERIFY2(
            box.find("Assembly was not successful.\nYour assembler source contains 2 errors.") !=
                std::string::npos,
            box.c_str());
        QCOMPARE(editor->ErrorLines(), (std::vector<int>{2, 3}));
        QVERIFY(!QFileInfo::exists(Path("bad.obj")));
        QVERIFY(!QFileInfo::exists(Path("bad.lst")));
        QVERIFY(!editor->ListingText().isEmpty());         // the listing stays on show
        QCOMPARE(window->machine().MemoryImage[0], 0x11);  // nothing was loaded
    }

    void refusalsAndCancels() {
        window->messages.clear();
        Command("Assemble");
        QCOMPARE(window->messages.back(), std::string("The editor is empty."));
        // Save As cancelled: the command ends and nothing is written.
        editor->SetSourceText("\tNOP\n");
        editor->fileAnswer = [](bool) { return std::string(); };
        QCOMPARE(editor->menuassemble(), -1);
        QVERIFY(editor->FilePath().endsWith("UNTITLED"));
        // Cancelled prompt for TASM options.
        editor->textAnswer = [](const std::string&, const std::string&) {
            return std::optional<std::string>();
        };
        Command("Change TASM Command Line Options");
        QCOMPARE(window->messages.back(), std::string("TASM command line options not changed..."));
        QCOMPARE(settings->GetSettingText("TASM Command Line Options", "-80 -b"), "-80 -b");
        // A TASM path that is not a file.
        editor->fileAnswer = [this](bool) { return Path("missing.exe").toStdString(); };
        Command("Change TASM Path");
        QCOMPARE(window->messages.back(), std::string("The file does not exist."));
    }

    void objectOptionsTakeHexEntries() {
        struct Case {
            const char* command;
            const char* key;
            const char* typed;
            int stored;  // -1: refused with "Wrong entry!"
        };
        const Case cases[] = {
            {"OBJ File Fill Value", "OBJ File Fill Value", "ff", 255},
            {"OBJ File Fill Value", "OBJ File Fill Value", "100", -1},
            {"Change Starting Address For OBJ Files Creation",
             "Starting Address For OBJ Files Creation", "8000", 0x8000},
            {"Change Starting Address For OBJ Files Creation",
             "Starting Address For OBJ Files Creation", "x1", -1},
        };
        for (const Case& c : cases) {
            settings->SetSettingInt(c.key, 7);
            const std::string typed = c.typed;
            editor->textAnswer = [typed](const std::string&, const std::string&) {
                return std::optional<std::string>(typed);
            };
            window->messages.clear();
            Command(c.command);
            if (c.stored < 0) {
                QCOMPARE(window->messages.back(), std::string("Wrong entry!"));
                QCOMPARE(settings->GetSettingInt(c.key, 0), 7);
            } else {
                QCOMPARE(settings->GetSettingInt(c.key, 0), c.stored);
            }
        }
    }

    void objCopyWithItsExtension() {
        editor->textAnswer = [](const std::string&, const std::string&) {
            return std::optional<std::string>(".bin");
        };
        Command("Generate OBJ File Copy (Set Extension)");
        QVERIFY(editor->Action("Generate OBJ File Copy (Set Extension)")->isChecked());
        editor->SetSourceText("\tORG 0\n\tLD A,1\n\tHALT\n");
        editor->fileAnswer = [this](bool) { return Path("prog.asm").toStdString(); };
        QCOMPARE(editor->menuassemble(), 0);
        QCOMPARE(ReadFile(Path("prog.bin")), ReadFile(Path("prog.obj")));
        Command("Generate OBJ File Copy (Set Extension)");
        QVERIFY(!editor->Action("Generate OBJ File Copy (Set Extension)")->isChecked());
        QFile::remove(Path("prog.bin"));
    }

    void marksAreKeptInTheLastLine() {
        editor->SetSourceText("\tORG 0\n\tNOP\n\tHALT\n");
        editor->SetMarks({{1}, {3}});
        editor->fileAnswer = [this](bool) { return Path("marks.asm").toStdString(); };
        QVERIFY(editor->menusaveas());
        const std::string stored = ReadFile(Path("marks.asm"));
        QVERIFY2(stored.find("'corvalent_bookmarks_and_breakpoints_info:") != std::string::npos,
                 stored.c_str());
        QCOMPARE(editor->menuassemble(), 0);  // the comment is not assembled
        editor->menunew();
        QVERIFY(editor->Marks().Bookmarks.empty());
        QVERIFY(editor->OpenFile(Path("marks.asm")));
        QCOMPARE(editor->SourceText(), QString("\tORG 0\n\tNOP\n\tHALT"));
        QCOMPARE(editor->Marks(), (EditorMarks{{1}, {3}}));
    }

    // A stand-in for TASM: writes the listing with its error count and a
    // two-byte object file beside the source it is given.
    QString FakeTasm(int errors) {
        const QString script = Path("faketasm.sh");
        QFile f(script);
        if (!f.open(QIODevice::WriteOnly)) return {};
        f.write(QString("#!/bin/sh\n"
                        "for last; do :; done\n"
                        "base=\"${last%%.asm}\"\n"
                        "echo \"$@\" > \"$base.args\"\n"
                        "printf 'TASM listing\\nNumber of errors = %1\\n' > \"$base.lst\"\n"
                        "printf '\\076\\007' > \"$base.obj\"\n")
                    .arg(errors)
                    .toUtf8());
        f.close();
        f.setPermissions(f.permissions() | QFileDevice::ExeOwner);
        return script;
    }

    void tasmAssemblesAndLoads() {
        settings->SetSettingText("TASM Path", FakeTasm(0).toStdString());
        editor->SetSourceText("\tLD A,7\n");
        editor->fileAnswer = [this](bool) { return Path("prog.asm").toStdString(); };
        window->messages.clear();
        Command("Assemble With TASM && Load");
        QVERIFY2(editor->ListingText().contains("Number of errors = 0"),
                 qPrintable(editor->ListingText()));
        QCOMPARE(window->machine().MemoryImage[0], 0x3E);
        QCOMPARE(window->machine().MemoryImage[1], 0x07);
        QCOMPARE(ReadFile(Path("prog.args")), "-80 -b " + Path("prog.asm").toStdString() + "\n");

        settings->SetSettingText("TASM Path", FakeTasm(3).toStdString());
        window->machine().MemoryImage[0] = 0;
        Command("Assemble With TASM && Load");
        QVERIFY2(window->messages.back().find("Your assembler source contains 3 errors.") !=
                     std::string::npos,
                 window->messages.back().c_str());
        QVERIFY(!QFileInfo::exists(Path("prog.obj")));
        QCOMPARE(window->machine().MemoryImage[0], 0);  // nothing loaded

        editor->SetSourceText("\tNOP ;protected: by the compiler\n");
        Command("Assemble With TASM");
        QVERIFY2(window->messages.back().rfind(
                     "A part of the assembler source is crypted by the integrated basic compiler.",
                     0) == 0,
                 window->messages.back().c_str());
        QFile::remove(Path("prog.args"));
    }

    void formatCodeIsOneUndoStep() {
        const QString original = "start: ld a , 1 ;go\n\tjp start\n";
        editor->SetSourceText(original);
        editor->SetMarks({{2}, {}});
        Command("Format Code");
        const QString formatted = editor->SourceText();
        QVERIFY2(formatted != original, qPrintable(formatted));
        QVERIFY2(formatted.startsWith("start:\tld a,1"), qPrintable(formatted));
        QCOMPARE(editor->Marks().Bookmarks, std::vector<int>{2});
        Command("Undo");
        QCOMPARE(editor->SourceText(), original);

        editor->formatOptionsAnswer = [](FormatOptionsDialog& dialog) {
            FormatCodeOptions o = dialog.Options();
            o.ArgumentSpaceAfterComma = 1;
            dialog.SetOptions(o);
        };
        Command("Format Code Options");
        QCOMPARE(settings->GetSettingInt("Assembler Format Code - Argument Space After Comma", 0),
                 1);
        Command("Format Code");
        QVERIFY2(editor->SourceText().startsWith("start:\tld a, 1"),
                 qPrintable(editor->SourceText()));
    }

    // Saved editor settings reach the open editor: colours of the classes and
    // the line wrapping.
    void editorSettingsApply() {
        QsciLexer* lexer = editor->sourceEditor()->lexer();
        QCOMPARE(lexer->color(AsmLexer::Mnemonic), QColor(0, 0, 250));
        QCOMPARE(lexer->color(AsmLexer::Comment), QColor(0, 120, 0));
        settings->SetSettingInt("EA ColorASMKeyword", 10 + 256 * 20 + 65536 * 30);
        settings->SetSettingInt("EA LineWrapping", 1);
        window->appearance().editorsApplied();
        QCOMPARE(lexer->color(AsmLexer::Mnemonic), QColor(10, 20, 30));
        QCOMPARE(editor->sourceEditor()->wrapMode(), QsciScintilla::WrapWord);
    }

    void autoSaveAndAutoLoadedListing() {
        editor->SetSourceText("\tORG 0\n\tNOP\n");
        editor->fileAnswer = [this](bool) { return Path("prog.asm").toStdString(); };
        QCOMPARE(editor->menuassemble(), 0);
        // A listing beside the source comes along when the option is on.
        Command("Auto Load LST File");
        editor->menunew();
        QVERIFY(editor->ListingText().isEmpty());
        QVERIFY(editor->OpenFile(Path("prog.asm")));
        QVERIFY(editor->ListingText().contains("NOP"));
        // Edits are written a few seconds after typing stops.
        Command("Auto Save");
        Type("\tHALT\n");
        QVERIFY(ReadFile(Path("prog.asm")).find("HALT") == std::string::npos);
        QTRY_VERIFY_WITH_TIMEOUT(ReadFile(Path("prog.asm")).find("HALT") != std::string::npos,
                                 6000);
    }

    void unsavedChangesAreAskedFor() {
        editor->SetSourceText("\tNOP\n");
        const QString path = Path("prog.asm");
        editor->fileAnswer = [path](bool) { return path.toStdString(); };
        QVERIFY(editor->menusaveas());
        Type("x");
        std::string asked;
        editor->questionAnswer = [&asked](const std::string& q) {
            asked = q;
            return -1;  // Cancel: the window stays and keeps its text
        };
        editor->close();
        QVERIFY(editor->isVisible());
        QCOMPARE(asked,
                 std::string("Assembler source has been modified.\nDo you want to save it?"));
        editor->questionAnswer = [](const std::string&) { return 1; };  // Yes: saved
        QPointer<AssemblerWindow> watch(editor);
        editor->close();
        QVERIFY(ReadFile(path).find('x') != std::string::npos);
    }
};

QTEST_MAIN(AssemblerWindowTest)
#include "assembler_window_test.moc"
