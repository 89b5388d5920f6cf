// Every official opcode's text against Debian's z80dasm, once number notation is
// normalised. Differences by design, removed before comparing:
// - numbers: ours are AsmHex2/AsmHex4 with "H", z80dasm's three or five digits
//   with "h"; both become plain lower-case hex values;
// - relative jumps: ours show the displacement plus 2 ("JR +2"), z80dasm shows
//   the same number relative to "$" ("jr $+2");
// - case: ours are upper case;
// - ED 63 and ED 6B (LD (nn),HL and LD HL,(nn) in their four-byte form) are
//   official here and unknown to z80dasm, so they are left out.
// Skipped where z80dasm is absent.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

#include "core/instruction_text.h"

namespace mb {
namespace {

std::string Normalise(std::string t) {
    for (char& c : t) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    t = std::regex_replace(t, std::regex("^\\s+|\\s+$"), "");
    t = std::regex_replace(t, std::regex("^(jr |jr [a-z]+,|djnz )([+-])"), "$1$$$2");
    std::string out;
    std::smatch m;
    static const std::regex number("\\b([0-9][0-9a-f]*)h\\b");
    while (std::regex_search(t, m, number)) {
        std::ostringstream v;
        v << std::hex << std::stoul(m[1].str(), nullptr, 16);
        out += m.prefix().str() + v.str();
        t = m.suffix().str();
    }
    return out + t;
}

TEST(InstructionTextAgainstZ80dasm, EveryOfficialOpcode) {
    if (std::system("command -v z80dasm >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "z80dasm is not installed";
    std::vector<std::vector<int>> program;
    auto add = [&](std::vector<int> bytes) {
        bytes.resize(4, 0x12);
        const DecodedInstruction d = DecodeInstruction(bytes[0], bytes[1], bytes[2], bytes[3], {});
        if (d.text.rfind(".DB", 0) == 0) return;
        bytes.resize(static_cast<size_t>(d.length));
        program.push_back(bytes);
    };
    for (int op = 0; op < 256; ++op) {
        if (op == 0xCB || op == 0xED || op == 0xDD || op == 0xFD) continue;
        add({op, 0x34, 0x12});
    }
    for (int op = 0; op < 256; ++op) {
        add({0xCB, op});
        if (op != 0x63 && op != 0x6B) add({0xED, op, 0x34, 0x12});
        for (int prefix : {0xDD, 0xFD}) {
            if (op != 0xCB) add({prefix, op, 0x85, 0x56});
            add({prefix, 0xCB, 0x05, op});
        }
    }
    char dir[] = "/tmp/mbdasm-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string bin = std::string(dir) + "/all.bin", lst = std::string(dir) + "/all.lst";
    {
        std::ofstream out(bin, std::ios::binary);
        for (const auto& bytes : program)
            for (int b : bytes) out.put(static_cast<char>(b));
    }
    ASSERT_EQ(std::system(("z80dasm -g 0 " + bin + " > " + lst + " 2>/dev/null").c_str()), 0);
    std::ifstream in(lst);
    std::vector<std::string> theirs;
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] == '\t' && line.find("org") == std::string::npos)
            theirs.push_back(Normalise(line));
    std::system(("rm -rf " + std::string(dir)).c_str());

    ASSERT_EQ(theirs.size(), program.size());
    for (size_t i = 0; i < program.size(); ++i) {
        std::vector<int> b = program[i];
        b.resize(4, 0);
        const std::string ours = Normalise(DecodeInstruction(b[0], b[1], b[2], b[3], {}).text);
        EXPECT_EQ(ours, theirs[i]) << std::hex << b[0] << " " << b[1] << " " << b[2] << " " << b[3];
    }
}

}  // namespace
}  // namespace mb
