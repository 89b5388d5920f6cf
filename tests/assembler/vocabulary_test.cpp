#include "assembler/vocabulary.h"

#include <gtest/gtest.h>

#include <set>

namespace mb {
namespace {

TEST(Vocabulary, HoldsEveryKeyOnce) {
    const auto& entries = Vocabulary::Instance().Entries();
    int official = 0, unofficial = 0;
    std::set<std::string> keys;
    for (const auto& e : entries) {
        (e.unofficial ? unofficial : official)++;
        EXPECT_TRUE(keys.insert(e.key).second) << "twice: " << e.key;
    }
    EXPECT_EQ(official, 697);
    EXPECT_EQ(unofficial, 440);
    EXPECT_EQ(entries.size(), 1137u);
}

TEST(Vocabulary, KeysAndTheirBytes) {
    struct Case {
        const char* key;
        std::vector<int> pattern;
        bool unofficial;
    } cases[] = {
        {"LD B,B", {0x40}, false},
        {"LD (HL),*", {0x36, kOp1Low}, false},
        {"LD A,(IX*)", {0xDD, 0x7E, kOp1Low}, false},
        {"LD (IY*),*", {0xFD, 0x36, kOp1Low, kOp2Low}, false},
        {"LD SP,(*)", {0xED, 0x7B, kOp1Low, kOp1High}, false},
        {"BIT 7,(IX*)", {0xDD, 0xCB, kOp1Low, 0x7E}, false},
        {"SET 0,(IY*),A", {0xFD, 0xCB, kOp1Low, 0xC7}, true},
        {"SLL (HL)", {0xCB, 0x36}, true},
        {"LD IXh,IXl", {0xDD, 0x65}, true},
        {"LD A,IYl", {0xFD, 0x7D}, true},
        {"CP IXh", {0xDD, 0xBC}, true},
        {"OUT (C),0", {0xED, 0x71}, true},
        {"JR NC,*", {0x30, kOp1Low}, false},
        {"RST *", {kOp1Low}, false},
        {"EX AF,AF'", {0x08}, false},
        {"IM 2", {0xED, 0x5E}, false},
        {"SBC HL,SP", {0xED, 0x72}, false},
    };
    for (const auto& c : cases) {
        const VocabularyEntry* e = Vocabulary::Instance().Find(c.key);
        ASSERT_NE(e, nullptr) << c.key;
        EXPECT_EQ(e->pattern, c.pattern) << c.key;
        EXPECT_EQ(e->unofficial, c.unofficial) << c.key;
    }
}

TEST(Vocabulary, FormsThatDoNotExist) {
    for (const char* key : {"LD (HL),(HL)", "BIT 0,(IX*),A", "LD H,IXh", "LD IXh,H", "SUB A,B",
                            "CP A,*", "LD A,(IX)", "JR PO,*", "BIT 8,A", "OUT (C),1", "DB"})
        EXPECT_EQ(Vocabulary::Instance().Find(key), nullptr) << key;
}

}  // namespace
}  // namespace mb
