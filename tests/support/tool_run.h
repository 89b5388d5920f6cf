// The command-line programs end to end: each test gets a fresh temporary
// folder, in which a built program runs with a file as its standard input; the
// exit status, standard output and standard error come back.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace mb::testing {

struct ToolResult {
    int status = -1;
    std::string out, err;
};

class ToolTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dir = std::filesystem::temp_directory_path() /
              ("mbtool_" +
               std::string(
                   ::testing::UnitTest::GetInstance()->current_test_info()->test_suite_name()) +
               "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
    }
    void TearDown() override { std::filesystem::remove_all(dir); }

    std::filesystem::path WriteText(const std::string& name, const std::string& text) {
        std::ofstream(dir / name, std::ios::binary) << text;
        return dir / name;
    }
    std::filesystem::path Write(const std::string& name, const std::vector<int>& bytes) {
        return WriteText(name, std::string(bytes.begin(), bytes.end()));
    }
    std::string Read(const std::filesystem::path& name) const {
        std::ifstream in(dir / name, std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }
    bool Exists(const std::string& name) const { return std::filesystem::exists(dir / name); }

    // Runs tool with args in the folder, input on its standard input.
    ToolResult Run(const std::string& tool, const std::string& args,
                   const std::string& input = "") {
        WriteText("stdin.txt", input);
        const std::string command = "cd '" + dir.string() + "' && '" + tool + "' " + args +
                                    " < stdin.txt > stdout.txt 2> stderr.txt";
        const int raw = std::system(command.c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, Read("stdout.txt"), Read("stderr.txt")};
    }

    std::filesystem::path dir;
};

}  // namespace mb::testing
