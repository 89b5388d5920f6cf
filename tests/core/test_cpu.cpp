#include "test_cpu.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

#include "core/execute.h"

namespace mb::test {

Cpu::Cpu(bool unofficial) {
    m.FFPowerOnDefaults = "OFF";
    m.UnofficialEnabled = unofficial ? 1 : 0;
    m.SimulationRate = kRateStepByStep;
    m.HaltStopsSimulation = 0;
    m.InfiniteLoopStopsSimulation = 0;
    clean(m);
}

void Cpu::Load(int address, const std::vector<int>& bytes) {
    for (int b : bytes) m.MemoryImage[address++ & 0xFFFF] = b;
    RefreshMemoryMirror(m);
}

void Cpu::Program(const std::vector<int>& code) {
    Load(kOrigin, code);
    m.PC = kOrigin;
}

void Cpu::Step(int count) {
    for (int i = 0; i < count; ++i) ExecuteInstruction(m);
}

namespace {

const char kFlagNames[] = "SZYHXPNC";

const std::map<std::string, int Machine::*> kRegisters = {
    {"A", &Machine::A},  {"B", &Machine::B},   {"C", &Machine::C},   {"D", &Machine::D},
    {"E", &Machine::E},  {"H", &Machine::H},   {"L", &Machine::L},   {"I", &Machine::I},
    {"R", &Machine::R},  {"IX", &Machine::IX}, {"IY", &Machine::IY}, {"SP", &Machine::SP},
    {"PC", &Machine::PC}};

// "SZ.H.PNC" with '.' for a clear flag, so a failing compare shows which flag.
std::string FlagText(int f) {
    std::string text;
    for (int bit = 0; bit < 8; ++bit) text += (f & (0x80 >> bit)) ? kFlagNames[bit] : '.';
    return text;
}

int Hex(const std::string& text, size_t digits) {
    if (text.size() != digits || text.find_first_not_of("0123456789ABCDEF") != std::string::npos)
        throw std::invalid_argument("expected " + std::to_string(digits) + " hex digits: " + text);
    return std::stoi(text, nullptr, 16);
}

// Every value a row names, one per register half, flag byte, memory cell
// ("(9001)") or port ("port(10)"), so that pairs and runs are checked cell by cell.
std::map<std::string, int> Parse(const std::string& text) {
    std::map<std::string, int> fields;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const size_t eq = word.find('=');
        if (eq == std::string::npos || eq + 1 == word.size())
            throw std::invalid_argument("no value in " + word);
        const std::string key = word.substr(0, eq), value = word.substr(eq + 1);
        if (key == "F") {
            int f = 0;
            for (char flag : value == "-" ? std::string() : value) {
                const char* at = std::strchr(kFlagNames, flag);
                if (!at) throw std::invalid_argument("no such flag: " + value);
                f |= 0x80 >> (at - kFlagNames);
            }
            fields[key] = f;
        } else if (key == "BC" || key == "DE" || key == "HL") {
            const int word16 = Hex(value, 4);
            fields[key.substr(0, 1)] = word16 >> 8;
            fields[key.substr(1)] = word16 & 0xFF;
        } else if (kRegisters.count(key)) {
            fields[key] = Hex(value, key.size() == 1 ? 2 : 4);
        } else if (key.size() == 6 && key.front() == '(' && key.back() == ')') {
            int address = Hex(key.substr(1, 4), 4);
            std::istringstream bytes(value);
            for (std::string byte; std::getline(bytes, byte, ',');) {
                char cell[8];
                std::snprintf(cell, sizeof cell, "(%04X)", address++);
                fields[cell] = Hex(byte, 2);
            }
        } else if (key.size() == 8 && key.rfind("port(", 0) == 0 && key.back() == ')') {
            Hex(key.substr(5, 2), 2);  // the port number must be two hex digits
            fields[key] = Hex(value, 2);
        } else {
            throw std::invalid_argument("not a register, flag, cell or port: " + word);
        }
    }
    return fields;
}

int& Cell(Machine& m, const std::string& key) {
    if (key[0] == '(') return m.MemoryImage[std::stoi(key.substr(1), nullptr, 16)];
    if (key[0] == 'p') return m.PortImage[std::stoi(key.substr(5), nullptr, 16)];
    return m.*kRegisters.at(key);
}

}  // namespace

void RunRows(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Cpu cpu;
        Machine& m = cpu.m;
        std::vector<int> code;
        std::istringstream bytes(row.code);
        for (std::string byte; bytes >> byte;) code.push_back(Hex(byte, 2));
        cpu.Program(code);
        for (const auto& [key, value] : Parse(row.in)) {
            if (key == "F")
                SpreadFlags(m, value);
            else
                Cell(m, key) = value;
        }
        cpu.Step();
        for (const auto& [key, value] : Parse(row.out)) {
            if (key == "F") {
                EXPECT_EQ(FlagText(ComposeFlags(m)), FlagText(value)) << "flags";
            } else {
                EXPECT_EQ(Cell(m, key), value) << key;
            }
        }
        EXPECT_EQ(m.TStates, row.t) << "T-states";
        EXPECT_EQ(m.ClockCycles, row.t) << "clock cycles";
        if (row.len >= 0) {
            EXPECT_EQ(m.PC, kOrigin + row.len) << "length";
        }
        EXPECT_EQ(m.InstructionCount, 1);
    }
}

}  // namespace mb::test
