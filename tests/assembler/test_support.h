// Shared fixture: sources written into a fresh folder and assembled there.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "assembler/assembler.h"
#include "assembler/expression.h"
#include "settings/settings_store.h"

namespace mb::testing {

// Reads a whole file; empty when it cannot be read.
inline std::string ReadText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

inline void WriteText(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

class AssemblerFixture : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/mbasm-test-XXXXXX";
        dir = mkdtemp(pattern);
        folder = dir.string() + "/";
    }
    void TearDown() override { std::filesystem::remove_all(dir); }

    void Write(const std::string& name, const std::string& text) { WriteText(dir / name, text); }
    std::string Read(const std::string& name) const { return ReadText(dir / name); }
    bool Exists(const std::string& name) const { return std::filesystem::exists(dir / name); }
    // Assembles name (default "prog.asm") and returns the error count.
    int Assemble(const std::string& name = "prog.asm") {
        assembler = std::make_unique<Assembler>(settings, host, options);
        int status = 0;
        return assembler->AssembleSource(folder, name, status);
    }
    // Assembles one statement after ORG origin; returns the line's opcode text or,
    // when it has one, its error text.
    std::string One(const std::string& statement, int origin = 0x100) {
        Write("one.asm", " ORG " + std::to_string(origin) + "\n" + statement + "\n");
        Assemble("one.asm");
        const SourceLine& line = LineAt(2);
        return line.ErrorText.empty() ? line.OpcodeText : line.ErrorText;
    }
    const SourceLine& LineAt(int fileLine) const {
        for (const SourceLine& l : assembler->Session().Lines)
            if (l.FileLine == fileLine && l.IncludeIndex == 0) return l;
        static SourceLine none;
        ADD_FAILURE() << "no line " << fileLine;
        return none;
    }

    std::filesystem::path dir;
    std::string folder;
    MemorySettingsStore settings;
    AssemblerHost host;
    AssemblerOptions options;
    std::unique_ptr<Assembler> assembler;
};

// Keeps the texts of the evaluation error boxes.
class RecordingReporter : public EvaluationReporter {
  public:
    void ShowEvaluationError(const std::string& text) override { shown.push_back(text); }
    std::vector<std::string> shown;
};

// A table written as rows of entries "text = result", separated by " | "; the
// result may be empty.
template <size_t N>
std::vector<std::pair<std::string, std::string>> Entries(const char* const (&rows)[N]) {
    std::vector<std::pair<std::string, std::string>> entries;
    for (const std::string row : rows)
        for (size_t at = 0, end; at < row.size(); at = end + 3) {
            end = std::min(row.find(" | ", at), row.size());
            const std::string entry = row.substr(at, end - at);
            const size_t eq = entry.find(" =");
            EXPECT_NE(eq, std::string::npos) << entry;
            const std::string result = entry.substr(std::min(eq + 2, entry.size()));
            entries.emplace_back(entry.substr(0, eq), result.empty() ? result : result.substr(1));
        }
    return entries;
}

}  // namespace mb::testing
