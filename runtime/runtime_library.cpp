// Selection of the runtime routine groups and the few lines that depend on a
// compile option.
#include "runtime/runtime_library.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include "runtime/runtime_sources.h"
#include "runtime/single_model.h"

namespace mb {
namespace {

constexpr std::array<RuntimeGroup, 26> kGroups = {{
    {kNeedIntegerMultiply, "; Integer Multiplication Routine", "integer_multiplication"},
    {kNeedIntegerDivide, "; Integer Division Routine", "integer_division"},
    {kNeedIntegerCompare, "; Integer Comparison Routine", "integer_comparison"},
    {kNeedLongAdd, "; Long Addition Routine", "long_addition"},
    {kNeedLongSubtract, "; Long Subtraction Routine", "long_subtraction"},
    {kNeedLongMultiply, "; Long Multiplication Routine", "long_multiplication"},
    {kNeedLongDivide, "; Long Division Routine", "long_division"},
    {kNeedLongCompare, "; Long Comparison Routine", "long_comparison"},
    {kNeedSingleAdd, "; Single Precision Addition Routine", "single_addition"},
    {kNeedSingleSubtract, "; Single Precision Subtraction Routine", "single_subtraction"},
    {kNeedSingleMultiply, "; Single Precision Multiplication Routine", "single_multiplication"},
    {kNeedSingleDivide, "; Single Precision Division Routine", "single_division"},
    {kNeedSingleCompare, "; Single Precision Comparison Routine", "single_comparison"},
    {kNeedSingleMath, "; Single Precision Mathematical Functions", "single_math"},
    {kNeedShortMultiply, "; Short Multiplication Routine", "short_multiplication"},
    {kNeedShortDivide, "; Short Division Routine", "short_division"},
    {kNeedShortCompare, "; Short Comparison Routine", "short_comparison"},
    {kNeedSingleToLong, "; Single To Long Conversion Routine", "single_to_long"},
    {kNeedLongToSingle, "; Long To Single Conversion Routine", "long_to_single"},
    {kNeedPrint, "; Print Routine", "print"},
    {kNeedIntegerPrint, "; Integer Print Routine", "print_integer"},
    {kNeedShortPrint, "; Short Print Routine", "print_short"},
    {kNeedBitPrint, "; Bit Print Routine", "print_bit"},
    {kNeedLongPrint, "; Long Print Routine", "print_long"},
    {kNeedSinglePrint, "; Single Print Routine", "print_single"},
    {kNeedStrings, "; String Routine", "strings"},
}};

// Groups that a group calls into.
struct GroupCall {
    int Caller;
    int Callee;
};
constexpr GroupCall kGroupCalls[] = {
    {kNeedLongCompare, kNeedLongSubtract},  // C102 goes on in S102
    {kNeedIntegerPrint, kNeedPrint},
    {kNeedIntegerPrint, kNeedIntegerDivide},
    {kNeedShortPrint, kNeedPrint},
    {kNeedShortPrint, kNeedShortDivide},
    {kNeedBitPrint, kNeedPrint},
    {kNeedLongPrint, kNeedPrint},
    {kNeedLongPrint, kNeedLongDivide},
    {kNeedSinglePrint, kNeedPrint},
    {kNeedSinglePrint, kNeedLongPrint},
    {kNeedSinglePrint, kNeedSingleToLong},
    {kNeedSinglePrint, kNeedLongToSingle},
    {kNeedSinglePrint, kNeedSingleSubtract},
    {kNeedSinglePrint, kNeedSingleMultiply},
};

// String entries that copy through SG20.
constexpr std::string_view kStringEntriesCallingSg20[] = {"SG25", "SG30", "SG86",
                                                          "SG89", "SG92", "SG95"};

const RuntimeSource* FindSource(std::string_view name) {
    for (int i = 0; i < kRuntimeSourceCount; ++i) {
        if (name == kRuntimeSources[i].Name) return &kRuntimeSources[i];
    }
    return nullptr;
}

std::vector<std::string> SplitLines(const char* text) {
    std::vector<std::string> lines;
    std::string_view rest(text);
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        lines.emplace_back(rest.substr(0, end));
        if (end == std::string_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    return lines;
}

// The entry whose sub-block a line opens ("; SG05: ..."), or "".
std::string_view SubBlockEntry(std::string_view line) {
    for (std::string_view entry : kStringRoutineEntries) {
        if (line.size() > entry.size() + 2 && line.substr(0, 2) == "; " &&
            line.substr(2, entry.size()) == entry && line[entry.size() + 2] == ':')
            return entry;
    }
    return {};
}

void AppendStrings(const RuntimeNeeds& needs, const std::vector<std::string>& lines,
                   std::vector<std::string>& out) {
    bool emitting = true;  // the lines in front of the first sub-block always go
    for (const std::string& line : lines) {
        const std::string_view entry = SubBlockEntry(line);
        if (!entry.empty()) emitting = needs.HasStringEntry(entry);
        if (emitting) out.push_back(line);
    }
}

// A 16-bit value as the compiler writes it: 4 hexadecimal digits and "H",
// with a "0" in front of a first digit above 9.
std::string Hex4(unsigned value) {
    char text[8];
    std::snprintf(text, sizeof text, "%04X", value & 0xFFFF);
    std::string result = text;
    if (result[0] > '9') result.insert(0, "0");
    return result + "H";
}

// Replaces the last operand of an instruction line, keeping its comment.
std::string WithOperand(const std::string& line, const std::string& operand) {
    const std::size_t comment = line.find(';');
    std::string code = line.substr(0, comment);
    while (!code.empty() && (code.back() == '\t' || code.back() == ' ')) code.pop_back();
    const std::size_t operandStart = code.find_last_of(", ");
    if (operandStart == std::string::npos) return line;
    std::string result = code.substr(0, operandStart + 1) + operand;
    if (comment != std::string::npos) result += line.substr(code.size());
    return result;
}

void AppendSinglePrint(int decimals, const std::vector<std::string>& lines,
                       std::vector<std::string>& out) {
    double power = 1;
    for (int i = 0; i < decimals; ++i) power *= 10;
    const uint32_t bits = SingleFromDouble(power).Bits;
    for (const std::string& line : lines) {
        if (line.find("; 10^n as a Single, high word") != std::string::npos)
            out.push_back(WithOperand(line, Hex4(bits >> 16)));
        else if (line.find("; 10^n as a Single, low word") != std::string::npos)
            out.push_back(WithOperand(line, Hex4(bits & 0xFFFF)));
        else if (line.find("; the n decimals") != std::string::npos)
            out.push_back(WithOperand(line, "P401_" + std::to_string(decimals)));
        else
            out.push_back(line);
    }
}

}  // namespace

std::span<const RuntimeGroup> RuntimeGroups() {
    return kGroups;
}

std::vector<std::string> RuntimeLines(const RuntimeNeeds& needs, int singleDecimals) {
    const int decimals = std::clamp(singleDecimals, 1, 6);
    std::vector<std::string> out;
    for (const RuntimeGroup& group : kGroups) {
        if (!needs.Has(group.Flag)) continue;
        const RuntimeSource* source = FindSource(group.Source);
        if (!source) continue;  // every group has its file: the runtime tests see to it
        const std::vector<std::string> lines = SplitLines(source->Text);
        if (group.Flag == kNeedStrings)
            AppendStrings(needs, lines, out);
        else if (group.Flag == kNeedSinglePrint)
            AppendSinglePrint(decimals, lines, out);
        else
            out.insert(out.end(), lines.begin(), lines.end());
    }
    return out;
}

void AddRuntimeDependencies(RuntimeNeeds& needs) {
    for (std::string_view entry : kStringEntriesCallingSg20) {
        if (needs.HasStringEntry(entry)) needs.SetStringEntry("SG20");
    }
    for (bool added = true; added;) {
        added = false;
        for (const GroupCall& call : kGroupCalls) {
            if (needs.Has(call.Caller) && !needs.Has(call.Callee)) {
                needs.Set(call.Callee);
                added = true;
            }
        }
    }
    for (bool entry : needs.StringEntries) {
        if (entry) needs.Set(kNeedStrings);
    }
}

}  // namespace mb
