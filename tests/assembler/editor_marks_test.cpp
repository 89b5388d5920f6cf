#include "assembler/editor_marks.h"

#include <gtest/gtest.h>

#include "test_support.h"

namespace mb {
namespace {

TEST(EditorMarks, RoundTripKeepsTextAndMarks) {
    const std::pair<const char*, EditorMarks> cases[] = {
        {"\tLD A,1\n\tHALT\n", {{1}, {2}}},
        {"\tLD A,1\r\n\tHALT\r\n", {{}, {1, 2}}},
        {"\tNOP", {{1}, {}}},
        {"", {{}, {}}},
    };
    for (const auto& [text, marks] : cases) {
        std::string stored = AppendMarksComment(text, marks);
        EditorMarks read;
        ASSERT_TRUE(TakeMarksComment(stored, read, 100)) << text;
        EXPECT_EQ(read, marks) << text;
        std::string expected = text;
        while (!expected.empty() && (expected.back() == '\n' || expected.back() == '\r'))
            expected.pop_back();
        EXPECT_EQ(stored, expected) << text;
    }
}

TEST(EditorMarks, OnlyTheLastLineCounts) {
    std::string text = std::string(kBookmarksComment) + "bookmarks=1\n\tNOP\n";
    EditorMarks marks;
    EXPECT_FALSE(TakeMarksComment(text, marks, 10));
    EXPECT_EQ(text, std::string(kBookmarksComment) + "bookmarks=1\n\tNOP\n");
}

TEST(EditorMarks, DamagedPartsAndLinesOutsideTheTextAreSkipped) {
    std::string text = "\tNOP\n\tNOP\n" + std::string(kBookmarksComment) +
                       "bookmarks=2,x,,7,2;breakpoints=-1,1;junk";
    EditorMarks marks;
    ASSERT_TRUE(TakeMarksComment(text, marks, 2));
    EXPECT_EQ(marks.Bookmarks, std::vector<int>{2});
    EXPECT_EQ(marks.Breakpoints, std::vector<int>{1});
    EXPECT_EQ(text, "\tNOP\n\tNOP");
}

// The assembler never sees the comment: same bytes, same line numbers.
class MarksAssembly : public testing::AssemblerFixture {};

TEST_F(MarksAssembly, CommentIsNotAssembled) {
    Write("prog.asm", AppendMarksComment("\tORG 0\n\tLD A,5\n\tHALT\n", {{2}, {3}}));
    EXPECT_EQ(Assemble(), 0);
    EXPECT_EQ(assembler->Session().MainLineCount, 3);
}

}  // namespace
}  // namespace mb
