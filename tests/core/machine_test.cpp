#include "core/machine.h"

#include <gtest/gtest.h>

#include <memory>

namespace mb {
namespace {

TEST(Clean, PowerOnDefaultsOnAndOff) {
    for (const char* setting : {"ON", "OFF"}) {
        const bool ff = std::string(setting) == "ON";
        auto m = std::make_unique<Machine>();
        m->FFPowerOnDefaults = setting;
        m->StartingAddress = 0x1234;
        m->I = 5;
        m->R = 7;
        m->IFF1 = m->IFF2 = 1;
        m->InterruptMode = 2;
        m->InstructionCount = 99;
        m->ClockCycles = 400;
        m->HaltState = 1;
        m->PrevA = 3;
        m->LastReadAddress = m->LastWriteAddress = 10;
        m->CurrentInstructionText = "NOP";
        m->NextInstructionText = "HALT";
        clean(*m);
        SCOPED_TRACE(setting);
        const int byte = ff ? 255 : 0, word = ff ? 65535 : 0;
        for (int r : {m->A, m->B, m->C, m->D, m->E, m->H, m->L, m->AltA, m->AltB, m->AltC, m->AltD,
                      m->AltE, m->AltH, m->AltL})
            EXPECT_EQ(r, byte);
        EXPECT_EQ(ComposeFlags(*m), byte);
        EXPECT_EQ(ComposeAltFlags(*m), byte);
        EXPECT_EQ(m->IX, word);
        EXPECT_EQ(m->IY, word);
        EXPECT_EQ(m->SP, word);
        EXPECT_EQ(m->PC, 0x1234);
        for (int r : {m->I, m->R, m->IFF1, m->IFF2, m->InterruptMode, m->PrevA, m->InstructionCount,
                      m->ClockCycles, m->HaltState})
            EXPECT_EQ(r, 0);
        EXPECT_EQ(m->LastReadAddress, -1);
        EXPECT_EQ(m->LastWriteAddress, -1);
        EXPECT_TRUE(m->CurrentInstructionText.empty());
        EXPECT_TRUE(m->NextInstructionText.empty());
    }
}

TEST(Clean, LeavesMemoryAndPortsAlone) {
    auto m = std::make_unique<Machine>();
    m->MemoryImage[0] = 0x3E;
    m->MemoryImage[65535] = 0x76;
    m->PortImage[0xFE] = 0x12;
    clean(*m);
    EXPECT_EQ(m->MemoryImage[0], 0x3E);
    EXPECT_EQ(m->MemoryImage[65535], 0x76);
    EXPECT_EQ(m->PortImage[0xFE], 0x12);
}

TEST(Flags, ComposeAndSpreadKeepBitOrder) {
    auto m = std::make_unique<Machine>();
    SpreadFlags(*m, 0x28);  // Y and X only
    EXPECT_EQ(m->FlagY, 1);
    EXPECT_EQ(m->FlagX, 1);
    EXPECT_EQ(m->FlagS + m->FlagZ + m->FlagH + m->FlagP + m->FlagN + m->FlagC, 0);
    for (int b = 0; b < 256; ++b) {
        SpreadFlags(*m, b);
        ASSERT_EQ(ComposeFlags(*m), b);
    }
}

TEST(MemoryMirror, RefreshedOnlyWhenAsked) {
    auto m = std::make_unique<Machine>();
    for (int i = 0; i < 5; ++i) m->MemoryImage[i] = 0x10 + i;
    RefreshMemoryMirror(*m);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(m->MemoryImage[65536 + i], 0x10 + i);
    m->MemoryImage[0] = 0xAA;
    EXPECT_EQ(m->MemoryImage[65536], 0x10);
}

}  // namespace
}  // namespace mb
