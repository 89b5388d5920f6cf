// Text forms of the compiler's output: numbers in generated code, the joined
// output with its protected stretches, the single-byte file form, and the
// diagnostic logs.
#pragma once

#include <string>
#include <vector>

#include "assembler/source_text.h"
#include "compiler/compiler_state.h"

namespace mb {

// "0FFH", "00H", "0FEC0H": upper-case digits, "0" in front of a letter, "H" behind.
std::string codeHex2(int value);
std::string codeHex4(int value);

// The lines joined by CR LF (one behind the last). Lines strictly between
// ";crypt_start" and ";crypt_stop" are scrambled when protect is set; a
// ";crypt_stop" line directly followed by a ";crypt_start" line goes with it.
std::string joinOutputLines(const std::vector<std::string>& lines, bool protect,
                            LineProtection& protection);

// The .asm file's bytes: a byte 181 that does not follow a byte 194 becomes "u".
std::string singleByteOutput(const std::string& text);

// The diagnostic files: fixed columns, each padded or cut to its width and
// closed by " |" (the 50-wide columns are padded but never cut).
std::string addressLogText(const std::vector<std::string>& lines);
std::string lineLogText(const CompilerState& st);
std::string declarationLogText(const CompilerState& st);

}  // namespace mb
