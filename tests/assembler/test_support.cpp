#include "test_support.h"

#include <unistd.h>

#include <fstream>
#include <sstream>

namespace mb::testing {

void AssemblerFixture::SetUp() {
    char pattern[] = "/tmp/mbasm-test-XXXXXX";
    dir = mkdtemp(pattern);
    folder = dir.string() + "/";
}

void AssemblerFixture::TearDown() {
    std::filesystem::remove_all(dir);
}

void AssemblerFixture::Write(const std::string& name, const std::string& text) {
    std::ofstream(dir / name, std::ios::binary) << text;
}

std::string AssemblerFixture::Read(const std::string& name) const {
    std::ifstream in(dir / name, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

bool AssemblerFixture::Exists(const std::string& name) const {
    return std::filesystem::exists(dir / name);
}

int AssemblerFixture::Assemble(const std::string& name) {
    assembler = std::make_unique<Assembler>(settings, host, options);
    int status = 0;
    return assembler->AssembleSource(folder, name, status);
}

std::string AssemblerFixture::One(const std::string& statement, int origin) {
    Write("one.asm", " ORG " + std::to_string(origin) + "\n" + statement + "\n");
    Assemble("one.asm");
    const SourceLine& line = LineAt(2);
    return line.ErrorText.empty() ? line.OpcodeText : line.ErrorText;
}

const SourceLine& AssemblerFixture::LineAt(int fileLine) const {
    for (const SourceLine& l : assembler->Session().Lines)
        if (l.FileLine == fileLine && l.IncludeIndex == 0) return l;
    static SourceLine none;
    ADD_FAILURE() << "no line " << fileLine;
    return none;
}

}  // namespace mb::testing
