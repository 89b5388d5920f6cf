#include "compiler/reports.h"

#include <vector>

namespace mb {

namespace {

std::string padded(const std::string& text, std::size_t width) {
    const std::size_t size = std::max(width, text.size() + 1);
    return text + std::string(size - text.size(), ' ');
}

// The instructions counted, as they begin an instruction line behind its tab.
// One without operands carries the line end, so that RET is not counted in RETI.
constexpr const char* kMnemonics[] = {
    "ADC ", "ADD ", "AND ", "BIT ",  "CALL ", "CCF",   "CP ",  "CPD",  "CPDR", "CPI",
    "CPIR", "CPL",  "DAA",  "DEC ",  "DI",    "DJNZ ", "EI",   "EX ",  "EXX",  "HALT",
    "IM ",  "IN ",  "INC ", "IND",   "INDR",  "INI",   "INIR", "JP ",  "JR ",  "LD ",
    "LDD",  "LDDR", "LDI",  "LDIR",  "NEG",   "NOP",   "OR ",  "OTDR", "OTIR", "OUT ",
    "OUTD", "OUTI", "POP ", "PUSH ", "RES ",  "RET",   "RETI", "RETN", "RL ",  "RLA",
    "RLC ", "RLCA", "RLD",  "RR ",   "RRA",   "RRC ",  "RRCA", "RRD",  "RST ", "SBC ",
    "SCF",  "SET ", "SLA ", "SRA ",  "SRL ",  "SUB ",  "XOR ",
};

int occurrences(const std::string& text, const std::string& pattern) {
    int count = 0;
    for (std::size_t at = text.find(pattern); at != std::string::npos;
         at = text.find(pattern, at + pattern.size())) {
        ++count;
    }
    return count;
}

}  // namespace

std::string userVariablesReport(const CompilerState& state) {
    std::string text = padded("Name", 10) + padded("Type", 10) + padded("Address", 10) +
                       padded("Scope", 10) + "\r\n" + std::string(45, '-') + "\r\n";
    for (const UserVariableRow& row : state.userVariables) {
        text += padded(row.name, 10) + padded(row.typeWord, 10) + padded(row.address, 10) +
                padded(row.scope, 10) + "\r\n";
    }
    return text;
}

std::string instructionUsageReport(const std::string& outputText) {
    struct Row {
        std::string name;
        int count;
    };
    std::vector<Row> rows;
    int total = 0;
    for (const char* m : kMnemonics) {
        std::string pattern = std::string("\t") + m;
        if (pattern.back() != ' ') pattern += "\r\n";
        std::string name = m;
        if (name.back() == ' ') name.pop_back();
        rows.push_back({name, occurrences(outputText, pattern)});
        total += rows.back().count;
    }
    std::string text = "Total: " + std::to_string(total) + " instructions used.\r\n" +
                       std::string(45, '-') + "\r\n" + padded("Instruction", 15) +
                       padded("Number", 10) + "\r\n" + std::string(30, '-') + "\r\n";
    for (bool used : {true, false}) {
        for (const Row& row : rows) {
            if ((row.count > 0) != used) continue;
            text += padded(row.name, 15) + padded(std::to_string(row.count), 10) + "\r\n";
        }
    }
    return text;
}

}  // namespace mb
