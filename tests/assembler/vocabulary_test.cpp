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

TEST(Vocabulary, FormsThatDoNotExist) {
    for (const char* key : {"LD (HL),(HL)", "BIT 0,(IX*),A", "LD H,IXh", "LD IXh,H", "SUB A,B",
                            "CP A,*", "LD A,(IX)", "JR PO,*", "BIT 8,A", "OUT (C),1", "DB"})
        EXPECT_EQ(Vocabulary::Instance().Find(key), nullptr) << key;
}

}  // namespace
}  // namespace mb
