// Shared fixture: sources written into a fresh folder and assembled there.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "assembler/assembler.h"
#include "settings/settings_store.h"

namespace mb::testing {

class AssemblerFixture : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    void Write(const std::string& name, const std::string& text);
    std::string Read(const std::string& name) const;
    bool Exists(const std::string& name) const;
    // Assembles name (default "prog.asm") and returns the error count.
    int Assemble(const std::string& name = "prog.asm");
    // Assembles one statement after ORG origin; returns the line's opcode text or,
    // when it has one, its error text.
    std::string One(const std::string& statement, int origin = 0x100);
    const SourceLine& LineAt(int fileLine) const;

    std::filesystem::path dir;
    std::string folder;
    MemorySettingsStore settings;
    AssemblerHost host;
    AssemblerOptions options;
    std::unique_ptr<Assembler> assembler;
};

}  // namespace mb::testing
