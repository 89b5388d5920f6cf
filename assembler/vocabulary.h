// The statement vocabulary: every key the assembler knows, with its bytes and the
// classes of its open operands. A statement is found by whole-key equality.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mb {

enum class OperandClass { Byte, Displacement, Word, Address, Relative, Restart };

// One byte of an encoding: a literal byte, or a place filled from an operand.
enum : int {
    kOp1Low = -1,   // operand 1, low byte (the whole byte for 8-bit classes)
    kOp1High = -2,  // operand 1, high byte (word and address classes)
    kOp2Low = -3,   // operand 2, low byte
    kOp2High = -4,  // operand 2, high byte
};

enum class Directive { None, Org, Equ, Db, Dw, Ds, DsFill, End, Include };

struct VocabularyEntry {
    std::string key;
    std::vector<int> pattern;           // size is the byte count; directives have none
    std::vector<OperandClass> classes;  // one per open operand, in order
    bool unofficial = false;
    Directive directive = Directive::None;
};

// The directive word that an upper-case alias stands for (".ORG", "DEFB",
// ".BLOCK", "=", ...); any other word comes back unchanged.
std::string_view CanonicalDirective(std::string_view upperWord);

class Vocabulary {
  public:
    static const Vocabulary& Instance();
    // The entry whose key equals the text, or nullptr.
    const VocabularyEntry* Find(std::string_view key) const;
    const std::vector<VocabularyEntry>& Entries() const { return entries_; }

  private:
    Vocabulary();
    std::vector<VocabularyEntry> entries_;
    std::unordered_map<std::string_view, int> index_;  // key -> first entry
};

}  // namespace mb
