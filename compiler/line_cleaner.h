// The canonical form of one BASIC source line. Every later stage of the compiler
// cuts a statement into tokens at single blanks, so this is the one place that
// decides where blanks stand.
//
// Rules, applied to the statement part of the line (the part before a comment):
//
//  - Leading and trailing blanks, tabs and line-end characters are removed; runs
//    of white space between tokens become one blank.
//  - Tokens: words (names, keywords, numbers and number forms such as 0FFH, $FF,
//    1.5, .5, a.LB, #define, #x), quoted texts, string placeholders #[n],
//    parentheses and brackets, "," and ";", ":", and operators.
//  - Two words, or a word and a quoted text, are separated by one blank. Two
//    quoted texts written without a blank between them stay joined, so """" (one
//    double quote) keeps its form.
//  - Binary operators get one blank on each side:
//      = += -= *= /= == != <> < <= > >= + - * / % << >> & | ^ && ||
//  - "," and ";" take no blank before and one after; so does ":" (a label).
//  - No blank after "(" or "[", none before ")" or "]". No blank between a name
//    and its "(" or "[" (f(x), a(3), s[17], f[10](x)). A keyword that is followed
//    by an expression keeps its blank: If (a), Not (b), Poke (a), 1.
//  - Unary signs stay on their operand: -x, +3, -(a), ~a, !b, #x, #(a). A "-" or
//    "+" is unary where an operand is due: at the start, after "(", "[", ",", ";",
//    ":", an operator, or a keyword that introduces an expression (If, Then,
//    Else, While, Case, To, Step, Return, ReturnValue, And, Or, Not, Xor, Mod,
//    ShiftLeft, ShiftRight, Print, Poke, Put, SetBit, ResetBit, InvertBit,
//    MakeBit; any case). Two signs that would run together into ++ or -- keep a
//    blank between them: x = - -5.
//  - "++" and "--" stay on their variable: i++, ++i, a(1)--. Written between two
//    operands they are a binary and a unary sign: a--b is a - -b.
//  - "." never has a blank beside it: a . LB becomes a.LB.
//  - Where an operand is due, "&" and "%" directly before a letter or digit begin
//    a number (&HFF, &FF, %101); elsewhere they are operators (a & b, a % 3).
//  - There are no exponent forms: 1.5E-3 reads as 1.5E - 3.
//
// Left as written:
//  - Quoted text, also an unterminated one (up to the end of the line).
//  - A comment: "'" or "//" outside quotes up to the end of the line, kept as
//    written behind one blank. Since "'" always opens a comment, the quote forms
//    of numbers ('c', A'c', H'FF', B'101', D'12') cannot be written in a BASIC
//    line; use "c", 0FFH, %101 or 12.
//  - An inline assembler line: text that begins "ASM:" (exactly so), also behind
//    a label (lab: ASM: LD A,1 keeps everything from "ASM:" on).
//  - A #sim or #simio directive keeps its argument in one piece without blanks:
//    #sim ( 1000.3 ) = 1 becomes #sim (1000.3)=1.
//
// Bytes above 127 and characters with no meaning in the language (such as "@")
// are kept in the word they stand in; nothing is ever dropped but white space,
// so a bad line still shows what the user wrote. Cleaning a cleaned line gives
// the same line, and the work grows linearly with the length of the line.
#pragma once

#include <string>
#include <string_view>

namespace mb {

std::string cleanBasicLine(std::string_view line);

}  // namespace mb
