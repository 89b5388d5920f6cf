// The texts of the logs and the statistics, and log.txt / io.txt written by a
// run, against golden text.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <sstream>

#include "core/access.h"
#include "core/run_control.h"
#include "core/simlog.h"
#include "scripted_host.h"
#include "settings/settings_store.h"

namespace mb {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedHost;

TEST(SimLogTexts, ElapsedTimeFrequencyAndSeconds) {
    struct TimeCase {
        long long cycles;
        float mhz;
        const char* text;
    };
    for (const TimeCase& c : std::initializer_list<TimeCase>{
             {4000, 4.0f, "1000.00\xC2\xB5s"},
             {4, 4.0f, "1.00\xC2\xB5s"},
             {5, 1.0f, "5.00\xC2\xB5s"},
             {0, 4.0f, "0.00\xC2\xB5s"},
             {1, 4.0f, "0.25\xC2\xB5s"},
             {1, 3.0f, "0.33\xC2\xB5s"},
             {2, 3.0f, "0.67\xC2\xB5s"},               // rounded below ten million cycles
             {20000002, 3.0f, "6666667.33\xC2\xB5s"},  // cut from ten million on
             {9999997, 6.0f, "1666666.17\xC2\xB5s"},   // the last count that is rounded
             {10000000, 6.0f, "1666666.66\xC2\xB5s"},  // ten million itself is cut
             {1099511627776LL, 1.0f, "1099511627776.00\xC2\xB5s"},  // 2^40 cycles
         }) {
        EXPECT_EQ(ElapsedTimeText(c.cycles, c.mhz), c.text) << c.cycles << " at " << c.mhz;
    }
    EXPECT_EQ(FrequencyText(4.0f), "4.0MHz");
    EXPECT_EQ(FrequencyText(0.5f), "0.5MHz");
    EXPECT_EQ(FrequencyText(3.58f), "3.58MHz");
    EXPECT_EQ(FrequencyText(0.01f), "0.01MHz");
    EXPECT_EQ(FrequencyText(120.0f), "120.0MHz");

    EXPECT_EQ(SecondsText(12.05), "12.5");  // the hundredths lose their leading zero
    EXPECT_EQ(SecondsText(12.5), "12.50");
    EXPECT_EQ(SecondsText(0.0), "0.0");
    EXPECT_EQ(SecondsText(3.999), "4.0");

    EXPECT_FLOAT_EQ(ElapsedSeconds(86399.0f, 1.5), 2.5f);  // across midnight
    EXPECT_FLOAT_EQ(ElapsedSeconds(100.0f, 160.25), 60.25f);
}

TEST(SimLogTexts, LogLineColumns) {
    Machine m;
    m.FFPowerOnDefaults = "OFF";
    clean(m);
    m.InstructionCount = 42;
    m.A = 0x12;
    m.FlagS = 1;
    m.FlagC = 1;
    m.B = 0xAB;
    m.L = 0x01;
    m.IX = 0x1234;
    m.SP = 0xFFFE;
    m.AltA = 0xFF;
    m.AltFlagZ = 1;
    m.AltL = 0x9C;
    EXPECT_EQ(LogLineText(m, 0x0100, "LD A,12H"),
              "     420100  LD A,12H        12 10000001  AB 00 00 00 00 01 1234 0000 FFFE FF "
              "01000000  00 00 00 00 00 9C");
    m.InstructionCount = 1234567;
    EXPECT_EQ(LogLineText(m, 0xFFFF, "LD (IX+7FH),0FFH").substr(0, 31),
              " 234567FFFF  LD (IX+7FH),0FFH12");  // sixteen characters: no fill
    m.InstructionCount = 1000005;
    EXPECT_EQ(LogLineText(m, 0, "NOP").substr(0, 7), " 000005");
    m.InstructionCount = 999999;
    EXPECT_EQ(LogLineText(m, 0, "NOP").substr(0, 7), " 999999");
}

TEST(SimLogTexts, StatisticsText) {
    EXPECT_EQ(
        StatisticsText(3, "12.5", 4000, 4.0f),
        "Total number of executed instructions is 3.\n"
        "12.5 seconds elapsed.\n"
        "Real-time duration of the simulation is 4000 clock cycles or 1000.00\xC2\xB5s at 4.0MHz.");
}

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

class LogFileTest : public testing::RunControlFixture {
  protected:
    fs::path dir;

    void SetUp() override {
        dir = fs::temp_directory_path() /
              ("mb_simlog_" +
               std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::remove_all(dir);
        fs::create_directories(dir);
        settings.SetSettingText(kSettingLastPath, dir.string());
        settings.SetSettingInt(kSettingPromptBeforeIn, 0);
        settings.SetSettingInt(kSettingLogging, 1);
        settings.SetSettingInt(kSettingIoLogging, 1);
        settings.SetSettingText(kSettingRate, "6");
        m.FFPowerOnDefaults = "OFF";
        rc.LoadSettings();
    }
    void TearDown() override { fs::remove_all(dir); }
    void Load(std::initializer_list<int> bytes) { RunControlFixture::Load(0, bytes); }
};

TEST_F(LogFileTest, RunWritesLogAndIoLog) {
    // LD A,41H; OUT (10H),A; IN A,(11H); HALT
    Load({0x3E, 0x41, 0xD3, 0x10, 0xDB, 0x11, 0x76});
    m.PortImage[0x11] = 0x5A;
    host.secondsSinceMidnight = 1000.0;
    rc.menustart();
    EXPECT_FALSE(rc.SimulationRunning);
    const std::string expected =
        "Simulation started at 2026-03-14 09:26:53.\r\n" + std::string(kLogHeadColumns) +
        "\r\n\r\n"
        "      10000  LD A,41H        41 00000000  00 00 00 00 00 00 0000 0000 0000 00 00000000"
        "  00 00 00 00 00 00\r\n"
        "      20002  OUT (10H),A     41 00000000  00 00 00 00 00 00 0000 0000 0000 00 00000000"
        "  00 00 00 00 00 00\r\n"
        "      30004  IN A,(11H)      5A 00000000  00 00 00 00 00 00 0000 0000 0000 00 00000000"
        "  00 00 00 00 00 00\r\n"
        "      40006  HALT            5A 00000000  00 00 00 00 00 00 0000 0000 0000 00 00000000"
        "  00 00 00 00 00 00\r\n"
        "Simulation stopped at 2026-03-14 09:26:53.\r\n"
        "0.1 seconds elapsed.\r\n"
        "Real-time duration of the simulation is 33 clock cycles or 8.25\xB5s at 4.0MHz.\r\n";
    EXPECT_EQ(ReadFile(dir / "log.txt"), expected);
    const std::string io =
        "2026-03-14 09:26:53\t0002H: OUT (10H),A\tData 41H sent to port 10H\r\n"
        "2026-03-14 09:26:53\t0004H: IN A,(11H)\tData 5AH received on port 11H\r\n"
        "\r\n\r\n";
    EXPECT_EQ(ReadFile(dir / "io.txt"), io);
    ASSERT_EQ(host.shownFiles.size(), 1u);
    EXPECT_EQ(host.shownFiles[0], (dir / "log.txt").string());

    // A second run appends to io.txt and writes log.txt afresh.
    rc.menustart();
    EXPECT_EQ(ReadFile(dir / "io.txt"), io + io);
    EXPECT_EQ(ReadFile(dir / "log.txt"), expected);
}

TEST_F(LogFileTest, RunWithoutPortsLeavesIoLogAsItWas) {
    Load({0x00, 0x76});
    { std::ofstream(dir / "io.txt", std::ios::binary) << "earlier\r\n"; }
    rc.menustart();
    EXPECT_EQ(ReadFile(dir / "io.txt"), "earlier\r\n");
}

TEST_F(LogFileTest, ResetAndInterruptLines) {
    settings.SetSettingText(kSettingRate, "1");
    rc.LoadSettings();
    Load({0xD3, 0x10, 0xED, 0x56, 0x00});  // OUT (10H),A; IM 1; NOP
    rc.menustart();
    rc.menustep();
    rc.menustep();
    rc.Command2();  // carried out at once at Step By Step
    rc.Command3Press();
    rc.Command3Release();
    rc.menustop();
    std::istringstream lines(ReadFile(dir / "log.txt"));
    std::string line;
    std::vector<std::string> all;
    while (std::getline(lines, line)) all.push_back(line);
    ASSERT_EQ(all.size(), 3u + 3 + 1 + 3);
    EXPECT_EQ(all[5].substr(0, 20), "      30038  INT    ");  // PC after the jump
    EXPECT_EQ(all[6], "RESET\r");
    const std::string io = ReadFile(dir / "io.txt");
    EXPECT_NE(io.find("Data 00H sent to port 10H\r\nRESET\r\n\r\n\r\n"), std::string::npos);
}

TEST_F(LogFileTest, UnwritableFolderIsReported) {
    settings.SetSettingText(kSettingLastPath, (dir / "missing" / "deeper").string());
    rc.LoadSettings();
    Load({0x76});
    rc.menustart();
    ASSERT_GE(host.messages.size(), 2u);
    EXPECT_NE(host.messages[0].find("log.txt"), std::string::npos);
    EXPECT_FALSE(rc.SimulationRunning);  // the run itself went on and ended
}

}  // namespace
}  // namespace mb
