#include "shell/assembler_window.h"

#include <Qsci/qscilexer.h>
#include <Qsci/qsciscintilla.h>

#include "ide_fixture.h"
#include "shell/asm_lexer.h"
#include "shell/format_options_dialog.h"

using namespace mb;

class AssemblerWindowTest : public QObject, protected testing::IdeFixture {
    Q_OBJECT

  private:
    AssemblerWindow* editor = nullptr;

    void Command(const char* caption) { Trigger(editor, caption); }
    // The answer of the editor's file dialogs, and of its text entries.
    void FileAnswer(const char* name) {
        editor->fileAnswer = [path = Path(name)](bool) { return path.toStdString(); };
    }
    void TextAnswer(std::optional<std::string> text) {
        editor->textAnswer = [text](const std::string&, const std::string&) { return text; };
    }
    // Types the text into the editor as a user would (the editor indents new
    // lines like the one before).
    void Type(const QString& text) {
        QWidget* target = editor->sourceEditor()->viewport();
        editor->sourceEditor()->setFocus();
        for (QChar c : text) {
            if (c == '\n' || c == '\t')
                QTest::keyClick(target, c == '\n' ? Qt::Key_Return : Qt::Key_Tab);
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
        FreshSettings();
        Open();
        Trigger("Assembler");
        editor = window->assemblerWindow();
        QVERIFY(editor);
        editor->questionAnswer = [](const std::string&) { return 0; };
    }

    // A program typed, saved through Save As, assembled, loaded and run.
    void typeAssembleLoadAndRun() {
        QVERIFY(editor->FilePath().endsWith("UNTITLED"));
        Type("\tORG 0\nLD A,2AH\nLD B,3\nINC A\nDJNZ $-1\nHALT\n");
        const QString path = Path("prog");
        editor->fileAnswer = [path](bool save) { return save ? path.toStdString() : ""; };
        Command("Assemble && Load");
        QCOMPARE(editor->FilePath(), Path("prog.asm"));
        for (const char* name : {"prog.obj", "prog.hex"})
            QVERIFY2(QFileInfo::exists(Path(name)), name);
        MB_VERIFY_HAS(editor->ListingText(), "DJNZ $-1");
        QCOMPARE(window->machine().MemoryImage[1], 0x2A);
        RunUltimate();
        QCOMPARE(window->machine().A, 0x2D);
        QCOMPARE(window->machine().HaltState, 1);
    }

    void errorsGiveTheBoxAndLeaveNoOutputs() {
        editor->SetSourceText("\tORG 0\n\tLD Q,1\n\tJP nowhere\n");
        FileAnswer("bad.asm");
        window->messages.clear();
        window->machine().MemoryImage[0] = 0x11;
        Command("Assemble && Load");
        // The evaluator's box for the unknown name comes first, once.
        QCOMPARE(window->messages.size(), size_t(2));
        MB_VERIFY_HAS(window->messages.front(), "Error evaluating expression: nowhere");
        MB_VERIFY_STARTS(LastMessage(), "Here is the list of assembler errors:");
        MB_VERIFY_HAS(LastMessage(),
                      "Assembly was not successful.\nYour assembler source contains 2 errors.");
        QCOMPARE(editor->ErrorLines(), (std::vector<int>{2, 3}));
        for (const char* name : {"bad.obj", "bad.lst"})
            QVERIFY2(!QFileInfo::exists(Path(name)), name);
        QVERIFY(!editor->ListingText().isEmpty());         // the listing stays on show
        QCOMPARE(window->machine().MemoryImage[0], 0x11);  // nothing was loaded
    }

    void refusalsAndCancels() {
        window->messages.clear();
        Command("Assemble");
        QCOMPARE(LastMessage(), "The editor is empty.");
        // Save As cancelled: the command ends and nothing is written.
        editor->SetSourceText("\tNOP\n");
        editor->fileAnswer = [](bool) { return std::string(); };
        QCOMPARE(editor->menuassemble(), -1);
        QVERIFY(editor->FilePath().endsWith("UNTITLED"));
        // Cancelled prompt for TASM options.
        TextAnswer(std::nullopt);
        Command("Change TASM Command Line Options");
        QCOMPARE(LastMessage(), "TASM command line options not changed...");
        QCOMPARE(settings->GetSettingText("TASM Command Line Options", "-80 -b"), "-80 -b");
        // A TASM path that is not a file.
        FileAnswer("missing.exe");
        Command("Change TASM Path");
        QCOMPARE(LastMessage(), "The file does not exist.");
    }

    void objectOptionsTakeHexEntries() {
        // The command, its setting, and entries: taken with the value stored, or
        // refused (-1) with "Wrong entry!".
        auto check = [this](const char* command, const char* key,
                            std::vector<std::pair<const char*, int>> entries) {
            for (auto [typed, stored] : entries) {
                settings->SetSettingInt(key, 7);
                TextAnswer(typed);
                window->messages.clear();
                Command(command);
                QCOMPARE(settings->GetSettingInt(key, 0), stored < 0 ? 7 : stored);
                if (stored < 0) QCOMPARE(LastMessage(), "Wrong entry!");
            }
        };
        check("OBJ File Fill Value", "OBJ File Fill Value", {{"ff", 255}, {"100", -1}});
        check("Change Starting Address For OBJ Files Creation",
              "Starting Address For OBJ Files Creation", {{"8000", 0x8000}, {"x1", -1}});
    }

    void objCopyWithItsExtension() {
        TextAnswer(".bin");
        Command("Generate OBJ File Copy (Set Extension)");
        QVERIFY(editor->Action("Generate OBJ File Copy (Set Extension)")->isChecked());
        editor->SetSourceText("\tORG 0\n\tLD A,1\n\tHALT\n");
        FileAnswer("prog.asm");
        QCOMPARE(editor->menuassemble(), 0);
        QCOMPARE(ReadFile(Path("prog.bin")), ReadFile(Path("prog.obj")));
        Command("Generate OBJ File Copy (Set Extension)");
        QVERIFY(!editor->Action("Generate OBJ File Copy (Set Extension)")->isChecked());
    }

    void marksAreKeptInTheLastLine() {
        editor->SetSourceText("\tORG 0\n\tNOP\n\tHALT\n");
        editor->SetMarks({{1}, {3}});
        FileAnswer("marks.asm");
        QVERIFY(editor->menusaveas());
        MB_VERIFY_HAS(ReadFile(Path("marks.asm")), "'corvalent_bookmarks_and_breakpoints_info:");
        QCOMPARE(editor->menuassemble(), 0);  // the comment is not assembled
        editor->menunew();
        QVERIFY(editor->Marks().Bookmarks.empty());
        QVERIFY(editor->OpenFile(Path("marks.asm")));
        QCOMPARE(editor->SourceText(), QString("\tORG 0\n\tNOP\n\tHALT"));
        QCOMPARE(editor->Marks(), (EditorMarks{{1}, {3}}));
    }

    // A stand-in for TASM: writes the listing with its error count and a
    // two-byte object file beside the source it is given.
    std::string FakeTasm(int errors) {
        WriteFile("faketasm.sh", QString("#!/bin/sh\n"
                                         "for last; do :; done\n"
                                         "base=\"${last%%.asm}\"\n"
                                         "echo \"$@\" > \"$base.args\"\n"
                                         "printf 'TASM listing\\nNumber of errors = %1\\n' > "
                                         "\"$base.lst\"\n"
                                         "printf '\\076\\007' > \"$base.obj\"\n")
                                     .arg(errors)
                                     .toUtf8());
        QFile::setPermissions(Path("faketasm.sh"),
                              QFile::permissions(Path("faketasm.sh")) | QFileDevice::ExeOwner);
        return Path("faketasm.sh").toStdString();
    }

    void tasmAssemblesAndLoads() {
        settings->SetSettingText("TASM Path", FakeTasm(0));
        editor->SetSourceText("\tLD A,7\n");
        FileAnswer("prog.asm");
        window->messages.clear();
        Command("Assemble With TASM && Load");
        MB_VERIFY_HAS(editor->ListingText(), "Number of errors = 0");
        QCOMPARE(window->machine().MemoryImage[0], 0x3E);
        QCOMPARE(window->machine().MemoryImage[1], 0x07);
        QCOMPARE(ReadFile(Path("prog.args")), "-80 -b " + Path("prog.asm").toStdString() + "\n");

        settings->SetSettingText("TASM Path", FakeTasm(3));
        window->machine().MemoryImage[0] = 0;
        Command("Assemble With TASM && Load");
        MB_VERIFY_HAS(LastMessage(), "Your assembler source contains 3 errors.");
        QVERIFY(!QFileInfo::exists(Path("prog.obj")));
        QCOMPARE(window->machine().MemoryImage[0], 0);  // nothing loaded

        editor->SetSourceText("\tNOP ;protected: by the compiler\n");
        Command("Assemble With TASM");
        MB_VERIFY_STARTS(
            LastMessage(),
            "A part of the assembler source is crypted by the integrated basic compiler.");
    }

    void formatCodeIsOneUndoStep() {
        const QString original = "start: ld a , 1 ;go\n\tjp start\n";
        editor->SetSourceText(original);
        editor->SetMarks({{2}, {}});
        Command("Format Code");
        MB_VERIFY_STARTS(editor->SourceText(), "start:\tld a,1");
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
        MB_VERIFY_STARTS(editor->SourceText(), "start:\tld a, 1");
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
        FileAnswer("prog.asm");
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
        QVERIFY(!AsText(ReadFile(Path("prog.asm"))).contains("HALT"));
        QTRY_VERIFY_WITH_TIMEOUT(AsText(ReadFile(Path("prog.asm"))).contains("HALT"), 6000);
    }

    void unsavedChangesAreAskedFor() {
        editor->SetSourceText("\tNOP\n");
        FileAnswer("prog.asm");
        QVERIFY(editor->menusaveas());
        Type("x");
        std::string asked;
        editor->questionAnswer = [&asked](const std::string& q) {
            asked = q;
            return -1;  // Cancel: the window stays and keeps its text
        };
        editor->close();
        QVERIFY(editor->isVisible());
        QCOMPARE(asked, "Assembler source has been modified.\nDo you want to save it?");
        editor->questionAnswer = [](const std::string&) { return 1; };  // Yes: saved
        editor->close();
        MB_VERIFY_HAS(ReadFile(Path("prog.asm")), 'x');
    }
};

QTEST_MAIN(AssemblerWindowTest)
#include "assembler_window_test.moc"
