#include "vocabulary.h"

#include <algorithm>
#include <utility>

namespace mb {

namespace {

using OC = OperandClass;

constexpr const char* kR[8] = {"B", "C", "D", "E", "H", "L", "(HL)", "A"};
constexpr int kRegCodes[7] = {0, 1, 2, 3, 4, 5, 7};  // r without (HL)
constexpr const char* kSS[4] = {"BC", "DE", "HL", "SP"};
constexpr const char* kQQ[4] = {"BC", "DE", "HL", "AF"};
constexpr const char* kCond[8] = {"NZ", "Z", "NC", "C", "PO", "PE", "P", "M"};
constexpr const char* kIdx[2] = {"IX", "IY"};
constexpr int kIdxPrefix[2] = {0xDD, 0xFD};

struct AluOp {
    const char* head;  // text up to the operand
    int reg, imm;      // register base and immediate opcode
};
constexpr AluOp kAlu[8] = {{"ADD A,", 0x80, 0xC6}, {"ADC A,", 0x88, 0xCE}, {"SUB ", 0x90, 0xD6},
                           {"SBC A,", 0x98, 0xDE}, {"AND ", 0xA0, 0xE6},   {"XOR ", 0xA8, 0xEE},
                           {"OR ", 0xB0, 0xF6},    {"CP ", 0xB8, 0xFE}};
constexpr const char* kShift[8] = {"RLC", "RRC", "RL", "RR", "SLA", "SRA", "SLL", "SRL"};

class Builder {
  public:
    explicit Builder(std::vector<VocabularyEntry>& out) : out_(out) {}

    void Add(std::string key, std::vector<int> pattern, std::vector<OC> classes = {}) {
        out_.push_back(
            {std::move(key), std::move(pattern), std::move(classes), unofficial_, Directive::None});
    }
    void AddDirective(std::string key, Directive d) {
        out_.push_back({std::move(key), {}, {}, false, d});
    }
    void Unofficial(bool on) { unofficial_ = on; }

  private:
    std::vector<VocabularyEntry>& out_;
    bool unofficial_ = false;
};

std::string S(const char* a) {
    return a;
}
std::string IdxMem(int x) {
    return std::string("(") + kIdx[x] + "*)";
}

void AddLoads(Builder& b) {
    for (int d = 0; d < 8; ++d)
        for (int s = 0; s < 8; ++s)
            if (!(d == 6 && s == 6)) b.Add(S("LD ") + kR[d] + "," + kR[s], {0x40 + 8 * d + s});
    for (int r = 0; r < 8; ++r) b.Add(S("LD ") + kR[r] + ",*", {0x06 + 8 * r, kOp1Low}, {OC::Byte});
    for (int x = 0; x < 2; ++x) {
        const int p = kIdxPrefix[x];
        for (int r : kRegCodes) {
            b.Add(S("LD ") + kR[r] + "," + IdxMem(x), {p, 0x46 + 8 * r, kOp1Low},
                  {OC::Displacement});
            b.Add(S("LD ") + IdxMem(x) + "," + kR[r], {p, 0x70 + r, kOp1Low}, {OC::Displacement});
        }
        b.Add(S("LD ") + IdxMem(x) + ",*", {p, 0x36, kOp1Low, kOp2Low},
              {OC::Displacement, OC::Byte});
    }
    b.Add("LD A,(BC)", {0x0A});
    b.Add("LD A,(DE)", {0x1A});
    b.Add("LD (BC),A", {0x02});
    b.Add("LD (DE),A", {0x12});
    b.Add("LD A,(*)", {0x3A, kOp1Low, kOp1High}, {OC::Address});
    b.Add("LD (*),A", {0x32, kOp1Low, kOp1High}, {OC::Address});
    b.Add("LD A,I", {0xED, 0x57});
    b.Add("LD A,R", {0xED, 0x5F});
    b.Add("LD I,A", {0xED, 0x47});
    b.Add("LD R,A", {0xED, 0x4F});
    struct Pair {
        const char* name;
        std::vector<int> imm, load, store;
    };
    const Pair pairs[6] = {{"BC", {0x01}, {0xED, 0x4B}, {0xED, 0x43}},
                           {"DE", {0x11}, {0xED, 0x5B}, {0xED, 0x53}},
                           {"HL", {0x21}, {0x2A}, {0x22}},
                           {"SP", {0x31}, {0xED, 0x7B}, {0xED, 0x73}},
                           {"IX", {0xDD, 0x21}, {0xDD, 0x2A}, {0xDD, 0x22}},
                           {"IY", {0xFD, 0x21}, {0xFD, 0x2A}, {0xFD, 0x22}}};
    auto with = [](std::vector<int> v) {
        v.push_back(kOp1Low);
        v.push_back(kOp1High);
        return v;
    };
    for (const Pair& p : pairs) b.Add(S("LD ") + p.name + ",*", with(p.imm), {OC::Word});
    for (const Pair& p : pairs) b.Add(S("LD ") + p.name + ",(*)", with(p.load), {OC::Address});
    for (const Pair& p : pairs) b.Add(S("LD (*),") + p.name, with(p.store), {OC::Address});
    b.Add("LD SP,HL", {0xF9});
    b.Add("LD SP,IX", {0xDD, 0xF9});
    b.Add("LD SP,IY", {0xFD, 0xF9});
}

void AddStackAndExchange(Builder& b) {
    for (int q = 0; q < 4; ++q) {
        b.Add(S("PUSH ") + kQQ[q], {0xC5 + 16 * q});
        b.Add(S("POP ") + kQQ[q], {0xC1 + 16 * q});
    }
    for (int x = 0; x < 2; ++x) {
        b.Add(S("PUSH ") + kIdx[x], {kIdxPrefix[x], 0xE5});
        b.Add(S("POP ") + kIdx[x], {kIdxPrefix[x], 0xE1});
    }
    b.Add("EX DE,HL", {0xEB});
    b.Add("EX AF,AF'", {0x08});
    b.Add("EXX", {0xD9});
    b.Add("EX (SP),HL", {0xE3});
    b.Add("EX (SP),IX", {0xDD, 0xE3});
    b.Add("EX (SP),IY", {0xFD, 0xE3});
    const std::pair<const char*, int> block[16] = {
        {"LDI", 0xA0},  {"LDIR", 0xB0}, {"LDD", 0xA8},  {"LDDR", 0xB8},
        {"CPI", 0xA1},  {"CPIR", 0xB1}, {"CPD", 0xA9},  {"CPDR", 0xB9},
        {"INI", 0xA2},  {"INIR", 0xB2}, {"IND", 0xAA},  {"INDR", 0xBA},
        {"OUTI", 0xA3}, {"OTIR", 0xB3}, {"OUTD", 0xAB}, {"OTDR", 0xBB}};
    for (int i = 0; i < 8; ++i) b.Add(block[i].first, {0xED, block[i].second});
}

void AddArithmetic(Builder& b) {
    for (const AluOp& op : kAlu) {
        for (int r = 0; r < 8; ++r) b.Add(S(op.head) + kR[r], {op.reg + r});
        for (int x = 0; x < 2; ++x)
            b.Add(S(op.head) + IdxMem(x), {kIdxPrefix[x], op.reg + 6, kOp1Low}, {OC::Displacement});
        b.Add(S(op.head) + "*", {op.imm, kOp1Low}, {OC::Byte});
    }
    for (int r = 0; r < 8; ++r) {
        b.Add(S("INC ") + kR[r], {0x04 + 8 * r});
        b.Add(S("DEC ") + kR[r], {0x05 + 8 * r});
    }
    for (int x = 0; x < 2; ++x) {
        b.Add(S("INC ") + IdxMem(x), {kIdxPrefix[x], 0x34, kOp1Low}, {OC::Displacement});
        b.Add(S("DEC ") + IdxMem(x), {kIdxPrefix[x], 0x35, kOp1Low}, {OC::Displacement});
    }
    const std::pair<const char*, std::vector<int>> plain[9] = {
        {"DAA", {0x27}}, {"CPL", {0x2F}},  {"NEG", {0xED, 0x44}}, {"CCF", {0x3F}}, {"SCF", {0x37}},
        {"NOP", {0x00}}, {"HALT", {0x76}}, {"DI", {0xF3}},        {"EI", {0xFB}}};
    for (const auto& p : plain) b.Add(p.first, p.second);
    b.Add("IM 0", {0xED, 0x46});
    b.Add("IM 1", {0xED, 0x56});
    b.Add("IM 2", {0xED, 0x5E});
    for (int s = 0; s < 4; ++s) {
        b.Add(S("ADD HL,") + kSS[s], {0x09 + 16 * s});
        b.Add(S("ADC HL,") + kSS[s], {0xED, 0x4A + 16 * s});
        b.Add(S("SBC HL,") + kSS[s], {0xED, 0x42 + 16 * s});
    }
    for (int x = 0; x < 2; ++x) {
        const char* pairs[4] = {"BC", "DE", kIdx[x], "SP"};
        for (int s = 0; s < 4; ++s)
            b.Add(S("ADD ") + kIdx[x] + "," + pairs[s], {kIdxPrefix[x], 0x09 + 16 * s});
    }
    for (int s = 0; s < 4; ++s) {
        b.Add(S("INC ") + kSS[s], {0x03 + 16 * s});
        b.Add(S("DEC ") + kSS[s], {0x0B + 16 * s});
    }
    for (int x = 0; x < 2; ++x) {
        b.Add(S("INC ") + kIdx[x], {kIdxPrefix[x], 0x23});
        b.Add(S("DEC ") + kIdx[x], {kIdxPrefix[x], 0x2B});
    }
}

void AddRotatesAndBits(Builder& b) {
    b.Add("RLCA", {0x07});
    b.Add("RLA", {0x17});
    b.Add("RRCA", {0x0F});
    b.Add("RRA", {0x1F});
    b.Add("RLD", {0xED, 0x6F});
    b.Add("RRD", {0xED, 0x67});
    for (int op = 0; op < 8; ++op) {
        b.Unofficial(op == 6);  // SLL
        for (int r = 0; r < 8; ++r) b.Add(S(kShift[op]) + " " + kR[r], {0xCB, 8 * op + r});
        for (int x = 0; x < 2; ++x)
            b.Add(S(kShift[op]) + " " + IdxMem(x), {kIdxPrefix[x], 0xCB, kOp1Low, 8 * op + 6},
                  {OC::Displacement});
    }
    b.Unofficial(false);
    const std::pair<const char*, int> bitOps[3] = {{"BIT ", 0x40}, {"RES ", 0x80}, {"SET ", 0xC0}};
    for (const auto& [name, base] : bitOps)
        for (int n = 0; n < 8; ++n) {
            const std::string head = S(name) + std::to_string(n) + ",";
            for (int r = 0; r < 8; ++r) b.Add(head + kR[r], {0xCB, base + 8 * n + r});
            for (int x = 0; x < 2; ++x)
                b.Add(head + IdxMem(x), {kIdxPrefix[x], 0xCB, kOp1Low, base + 8 * n + 6},
                      {OC::Displacement});
        }
}

void AddJumps(Builder& b) {
    b.Add("JP *", {0xC3, kOp1Low, kOp1High}, {OC::Address});
    for (int c = 0; c < 8; ++c)
        b.Add(S("JP ") + kCond[c] + ",*", {0xC2 + 8 * c, kOp1Low, kOp1High}, {OC::Address});
    b.Add("JP (HL)", {0xE9});
    b.Add("JP (IX)", {0xDD, 0xE9});
    b.Add("JP (IY)", {0xFD, 0xE9});
    b.Add("JR *", {0x18, kOp1Low}, {OC::Relative});
    for (int c = 0; c < 4; ++c)
        b.Add(S("JR ") + kCond[c] + ",*", {0x20 + 8 * c, kOp1Low}, {OC::Relative});
    b.Add("DJNZ *", {0x10, kOp1Low}, {OC::Relative});
    b.Add("CALL *", {0xCD, kOp1Low, kOp1High}, {OC::Address});
    for (int c = 0; c < 8; ++c)
        b.Add(S("CALL ") + kCond[c] + ",*", {0xC4 + 8 * c, kOp1Low, kOp1High}, {OC::Address});
    b.Add("RET", {0xC9});
    for (int c = 0; c < 8; ++c) b.Add(S("RET ") + kCond[c], {0xC0 + 8 * c});
    b.Add("RETI", {0xED, 0x4D});
    b.Add("RETN", {0xED, 0x45});
    b.Add("RST *", {kOp1Low}, {OC::Restart});
}

void AddInputOutput(Builder& b) {
    b.Add("IN A,(*)", {0xDB, kOp1Low}, {OC::Byte});
    b.Add("OUT (*),A", {0xD3, kOp1Low}, {OC::Byte});
    for (int r : kRegCodes) {
        b.Add(S("IN ") + kR[r] + ",(C)", {0xED, 0x40 + 8 * r});
        b.Add(S("OUT (C),") + kR[r], {0xED, 0x41 + 8 * r});
    }
    const std::pair<const char*, int> block[8] = {{"INI", 0xA2},  {"INIR", 0xB2}, {"IND", 0xAA},
                                                  {"INDR", 0xBA}, {"OUTI", 0xA3}, {"OTIR", 0xB3},
                                                  {"OUTD", 0xAB}, {"OTDR", 0xBB}};
    for (const auto& [name, op] : block) b.Add(name, {0xED, op});
}

void AddDirectives(Builder& b) {
    b.AddDirective("ORG *", Directive::Org);
    b.AddDirective("EQU *", Directive::Equ);
    b.AddDirective("DB *", Directive::Db);
    b.AddDirective("DW *", Directive::Dw);
    b.AddDirective("DS *", Directive::Ds);
    b.AddDirective("DS *,*", Directive::DsFill);
    b.AddDirective("END", Directive::End);
    b.AddDirective("INCLUDE *", Directive::Include);
}

// Index halves: codes 4 and 5 of r stand for the high and low half.
void AddIndexHalves(Builder& b) {
    const int five[5] = {0, 1, 2, 3, 7};
    for (int x = 0; x < 2; ++x) {
        const int p = kIdxPrefix[x];
        const std::string half[2] = {S(kIdx[x]) + "h", S(kIdx[x]) + "l"};
        auto reg = [&](int code) {
            return code == 4 ? half[0] : code == 5 ? half[1] : S(kR[code]);
        };
        for (int h = 0; h < 2; ++h) {
            for (int r : five) b.Add("LD " + reg(r) + "," + half[h], {p, 0x44 + 8 * r + h});
            for (int r : {0, 1, 2, 3, 7, 4, 5})
                b.Add("LD " + half[h] + "," + reg(r), {p, 0x60 + 8 * h + r});
            b.Add("LD " + half[h] + ",*", {p, 0x26 + 8 * h, kOp1Low}, {OC::Byte});
            for (const AluOp& op : kAlu) b.Add(S(op.head) + half[h], {p, op.reg + 4 + h});
            b.Add("INC " + half[h], {p, 0x24 + 8 * h});
            b.Add("DEC " + half[h], {p, 0x25 + 8 * h});
        }
    }
}

void AddIndexBitCopies(Builder& b) {
    for (int x = 0; x < 2; ++x) {
        const int p = kIdxPrefix[x];
        for (int op = 0; op < 8; ++op)
            for (int r : kRegCodes)
                b.Add(S(kShift[op]) + " " + IdxMem(x) + "," + kR[r], {p, 0xCB, kOp1Low, 8 * op + r},
                      {OC::Displacement});
        for (const auto& [name, base] : {std::pair{"SET ", 0xC0}, std::pair{"RES ", 0x80}})
            for (int n = 0; n < 8; ++n)
                for (int r : kRegCodes)
                    b.Add(S(name) + std::to_string(n) + "," + IdxMem(x) + "," + kR[r],
                          {p, 0xCB, kOp1Low, base + 8 * n + r}, {OC::Displacement});
    }
}

}  // namespace

Vocabulary::Vocabulary() {
    Builder b(entries_);
    AddLoads(b);
    AddStackAndExchange(b);
    AddArithmetic(b);
    AddRotatesAndBits(b);
    AddJumps(b);
    AddInputOutput(b);
    AddDirectives(b);
    b.Unofficial(true);
    b.Add("IN (C)", {0xED, 0x70});
    b.Add("OUT (C),0", {0xED, 0x71});
    AddIndexHalves(b);
    AddIndexBitCopies(b);

    for (int i = 0; i < static_cast<int>(entries_.size()); ++i) index_.emplace(entries_[i].key, i);
}

const Vocabulary& Vocabulary::Instance() {
    static const Vocabulary vocabulary;
    return vocabulary;
}

const VocabularyEntry* Vocabulary::Find(std::string_view key) const {
    auto it = index_.find(key);
    return it == index_.end() ? nullptr : &entries_[it->second];
}

std::string_view CanonicalDirective(std::string_view upperWord) {
    static constexpr std::pair<std::string_view, std::string_view> kAliases[] = {
        {".ORG", "ORG"},        {".EQU", "EQU"}, {"=", "EQU"},    {".DB", "DB"},
        {"DEFB", "DB"},         {".DEFB", "DB"}, {".BYTE", "DB"}, {"BYTE", "DB"},
        {".DW", "DW"},          {"DEFW", "DW"},  {".DEFW", "DW"}, {".WORD", "DW"},
        {"WORD", "DW"},         {".DS", "DS"},   {"DEFS", "DS"},  {".DEFS", "DS"},
        {".BLOCK", "DS"},       {"BLOCK", "DS"}, {".END", "END"}, {".INCLUDE", "INCLUDE"},
        {"#INCLUDE", "INCLUDE"}};
    for (const auto& [from, to] : kAliases)
        if (upperWord == from) return to;
    return upperWord;
}

}  // namespace mb
