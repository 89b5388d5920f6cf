#include <gtest/gtest.h>

#include "images/hex_writer.h"
#include "test_image_host.h"

namespace mb::testing {
namespace {

const std::string kHead = "Input program file in Intel Hex Format contains errors.\nLine number ";

TEST(ChecksumText, TwoUpperCaseDigits) {
    EXPECT_EQ(ChecksumText("00000001"), "FF");
    EXPECT_EQ(ChecksumText("0300300002337A"), "1E");
    EXPECT_EQ(ChecksumText("0100000000"), "FF");
    EXPECT_EQ(ChecksumText("01000000FF"), "00");  // a sum of 0 gives 256, printed "00"
}

std::string Record(const std::string& body) {
    return ":" + body + ChecksumText(body) + "\n";
}

// What ReadIntelHex gives for text as the content of a file.
struct HexRead {
    int end;
    HexBuffer buffer;
    std::vector<std::string> messages;
    std::string Last() const { return messages.empty() ? "" : messages.back(); }
};

HexRead ReadHex(const std::string& text) {
    TempFolder dir;
    ScriptedImageHost host;
    HexRead r;
    r.end = ReadIntelHex(dir.Write("p.hex", text), r.buffer, host);
    r.messages = host.messages;
    return r;
}

TEST(ReadIntelHex, EveryNumberedError) {
    // A file and the end of the message, "" for a file without data
    const std::pair<std::string, const char*> cases[] = {
        {"X0300300002337A1E\n", "1: The record does not begin with ':' simbol."},
        {":0300300\n", "1: The record is too short."},
        {":00000001F\n", "1: The record is too short."},  // 10 characters; 11 are enough
        {":0300300002337A1e\n", "1: Invalid 'checksum' field in the record."},
        {":0300300002337A1F\n", "1: Invalid 'checksum' field in the record."},
        {":0300300002337a1e\n", "1: Invalid 'checksum' field in the record."},
        {Record("00000006"), "1: Invalid 'record type' field in the record."},
        {Record("0100000000") + Record("020000040001") + Record("0100000000"),
         "3: Address out of range."},
        {Record("030000040001FF"), "1: Invalid '04 type' record."},
        {Record("020001040000"), "1: Invalid '04 type' record."},
        {Record("02000004GGGG"), "1: Invalid '04 type' record."},
        // Checksums match, so that the field checks are reached.
        {Record("G000000000"), "1: Invalid 'number of bytes' field in the record."},
        {Record("0100G00000"), "1: Invalid 'address' field in the record."},
        {Record("0300000001"), "1: The record does not contain the specified number of bytes."},
        {Record("01FFFF0000") + Record("02FFFF000102"), "2: Address out of range."},
        {Record("0100000000") + Record("02000000GG00"), "2: Invalid data byte in the record."},
        {Record("020000021001"), "1: Invalid '02 type' record."},
        {Record("020001021000"), "1: Invalid '02 type' record."},
        {Record("00000001"), ""},
    };
    for (const auto& [text, message] : cases) {
        const HexRead r = ReadHex(text);
        const std::string want =
            *message ? kHead + message : "Input program file in Intel Hex Format contains no data.";
        EXPECT_EQ(r.Last(), want) << text;
        EXPECT_EQ(r.end, 0) << text;
    }
}

TEST(ReadIntelHex, SegmentAndLinearRecordsMoveTheAddress) {
    const HexRead r =
        ReadHex(Record("020000020100") + Record("0100050011") + Record("020000040000") +
                Record("00000003") + Record("00000005") + Record("00000001"));
    EXPECT_EQ(r.end, 0x1006);
    EXPECT_EQ(r.buffer.cells[0x1005], 0x11);
}

TEST(ReadIntelHex, LineEndsBlankAndCommentLines) {
    for (const char* eol : {"\n", "\r\n", "\r"}) {
        const std::string text = std::string(";comment") + eol + eol + ":0300300002337A1E" + eol +
                                 "   " + eol + ":00000001FF" + eol + "garbage after the end" + eol;
        const HexRead r = ReadHex(text);
        EXPECT_EQ(r.end, 0x33) << "eol " << int(eol[0]);
        EXPECT_TRUE(r.messages.empty());
        EXPECT_EQ(r.buffer.cells[0x30], 0x02);
        EXPECT_EQ(r.buffer.cells[0x32], 0x7A);
        EXPECT_EQ(r.buffer.lowestAddress, 0x30);
    }
}

// Line ends are counted after CR became LF and doubled line ends were halved
// twice, so the line numbers of the messages follow that count: a CR LF line
// end is one line, a blank line between CR LF lines does not count, and runs
// of k line ends count ceil(ceil(k/2)/2).
TEST(ReadIntelHex, LineNumbersCountCollapsedLineEnds) {
    const std::string ok = ":00000001FF";
    const std::pair<std::string, int> cases[] = {
        {"x", 1},
        {"\nx", 2},
        {"\n\nx", 2},
        {"\n\n\nx", 2},
        {"\n\n\n\nx", 2},
        {"\n\n\n\n\nx", 3},
        {"\r\n\r\nx", 2},
        {"\r\n\r\n\r\nx", 3},
        {"\r\r\r\r\r\r\r\r\rx", 4},
        {";a\r\n;b\r\n\r\n;c\r\nx", 4},
        {"\n;a\n\n\n;b\nx", 4},
    };
    for (const auto& [text, line] : cases)
        EXPECT_EQ(ReadHex(text + "\n" + ok).Last(),
                  kHead + std::to_string(line) + ": The record does not begin with ':' simbol.")
            << ::testing::PrintToString(text);
}

// A long file reads in time proportional to its length: 400,000 records with
// CR LF line ends (a quadratic line-end pass would not finish).
TEST(ReadIntelHex, LongFileWithManyLineEnds) {
    std::string text;
    const std::string record = Record("04010000DEADBEEF");
    text.reserve(400000 * (record.size() + 2));
    for (int i = 0; i < 400000; ++i) text += record.substr(0, record.size() - 1) + "\r\n\r\n";
    text += ":00000001FF\r\n";
    const HexRead r = ReadHex(text);
    EXPECT_EQ(r.end, 0x104);
    EXPECT_TRUE(r.messages.empty());
    EXPECT_EQ(r.buffer.cells[0x103], 0xEF);
}

TEST(WriteIntelHex, SkipsFullBlocksOfTheSkipValueOnly) {
    std::vector<int> cells(65536, 0);
    for (int a = 0; a < 16; ++a) cells[a] = 1;
    cells[40] = 5;  // block 32..47 holds one non-zero byte; block 16..31 is all zero
    const std::string text = IntelHexText({&cells, 0, 40}, 0);
    EXPECT_EQ(text,
              ":1000000001010101010101010101010101010101E0\r\n"
              ":09002000000000000000000005D2\r\n"
              ":00000001FF\r\n");
}

TEST(WriteIntelHex, RangesReachingOutsideTheTableKeepToIt) {
    std::vector<int> cells(20);
    for (int a = 0; a < 20; ++a) cells[a] = a + 1;
    struct Case {
        int first, last;
        std::string obj, hex;
    } cases[] = {
        {-4, 1, "\x01\x02", ":020000000102FB\r\n"},
        {18, 40, "\x13\x14", ":020012001314C5\r\n"},
        {25, 30, "", ""},
        {-30, -10, "", ""},
    };
    TempFolder dir;
    for (const auto& c : cases) {
        const HexImageRange range{&cells, c.first, c.last};
        EXPECT_EQ(IntelHexText(range, 0), c.hex + ":00000001FF\r\n") << c.first << ".." << c.last;
        ASSERT_TRUE(WriteObjectFile((dir.path / "p.obj").string(), range));
        EXPECT_EQ(dir.Read("p.obj"), c.obj) << c.first << ".." << c.last;
    }
}

}  // namespace
}  // namespace mb::testing
