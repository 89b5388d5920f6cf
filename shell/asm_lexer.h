// Z80 colouring for the Assembler window's editor: each line is split into
// words by the assembler library's reading and given one of seven styles.
#pragma once

#include <Qsci/qscilexercustom.h>

namespace mb {

class AsmLexer : public QsciLexerCustom {
    Q_OBJECT
  public:
    // Style numbers follow AsmStyle.
    enum Style { Default, Mnemonic, Register, Directive, Comment, String, Number, StyleCount };

    explicit AsmLexer(QObject* parent = nullptr);
    const char* language() const override { return "Z80"; }
    QString description(int style) const override;
    void styleText(int start, int end) override;
};

}  // namespace mb
