#include "asm_lexer.h"

#include <Qsci/qsciscintilla.h>

#include "assembler/asm_highlight.h"

namespace mb {

AsmLexer::AsmLexer(QObject* parent) : QsciLexerCustom(parent) {}

QString AsmLexer::description(int style) const {
    static const char* kNames[] = {"Default", "Mnemonic", "Register", "Directive",
                                   "Comment", "String",   "Number"};
    return style >= 0 && style < StyleCount ? kNames[style] : QString();
}

void AsmLexer::styleText(int start, int end) {
    QsciScintilla* ed = editor();
    if (!ed || end <= start) return;
    // Restyle whole lines: a word's class depends on where the line begins.
    int line = 0, index = 0;
    ed->lineIndexFromPosition(start, &line, &index);
    const int first = ed->positionFromLineIndex(line, 0);
    int lastLine = 0;
    ed->lineIndexFromPosition(end, &lastLine, &index);
    startStyling(first);
    for (int l = line; l <= lastLine && l < ed->lines(); ++l) {
        const QByteArray bytes = ed->text(l).toUtf8();
        int at = 0;
        for (const AsmSpan& span : HighlightAsmLine(std::string_view(bytes.data(), bytes.size()))) {
            if (span.Start > at) setStyling(span.Start - at, Default);
            setStyling(span.Length, static_cast<int>(span.Style));
            at = span.Start + span.Length;
        }
        if (bytes.size() > at) setStyling(static_cast<int>(bytes.size()) - at, Default);
    }
}

}  // namespace mb
