// Cost of the BASIC runtime routines on our core: for each arithmetic routine,
// conversion, print routine and mathematical function, the T-states of a call
// over a set of typical operands (from the routine's first instruction to its
// RET; the caller's CALL adds 17, its pushes of a stack operand 22), and the
// bytes of the group that holds it. Prints a Markdown table.
//
//   mbbench_runtime
//
// The figures are counted, not timed, so they are the same on every machine.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "core/execute.h"
#include "runtime/single_model.h"
#include "support/runtime_program.h"

namespace {

using mb::testing::RoutineCall;
using mb::testing::RuntimeProgram;
using mb::testing::StackOperand;

struct Measure {
    const char* routine;
    int flag;
    const char* what;
    std::function<RoutineCall(std::mt19937&)> operands;
};

uint32_t S(double value) {
    return mb::SingleFromDouble(value).Bits;
}

// A Single from 10^-2 to 10^3 with a random sign.
uint32_t TypicalSingle(std::mt19937& rng) {
    const double magnitude = std::pow(10.0, -2.0 + 5.0 * (rng() % 10000) / 10000.0);
    const bool negative = rng() % 2;
    return S(negative ? -magnitude : magnitude);
}

double Uniform(std::mt19937& rng, double from, double to) {
    return from + (to - from) * (rng() % 100000) / 100000.0;
}

RoutineCall Registers(uint32_t bcde, int hl = 0, int a = 0) {
    return {bcde, hl, a};
}
RoutineCall Stacked(uint32_t left, uint32_t right) {
    return {right, 0, 0, false, StackOperand::kConsumed, left};
}
RoutineCall Argument(uint32_t x) {
    return {x, 0, 0, false, StackOperand::kArgument, x};
}

struct Cost {
    long long min = 0, max = 0;
    double mean = 0;
};

// Runs the driver over the records instruction by instruction and adds up
// the T-states from the routine's entry to the driver's return point.
Cost Count(RuntimeProgram& program, const std::string& routine,
           const std::vector<RoutineCall>& calls) {
    mb::Machine& m = program.Runner().M();
    const int entry = program.Address(routine);
    const int back = program.Address("ZBACK");
    const int done = program.Address("ZDONE");
    program.Call(routine, calls);  // writes the records (and checks that the driver ends)
    m.SimulationRate = mb::kRateUltimate;
    m.TextMode = 0;
    m.HaltStopsSimulation = 0;
    mb::RefreshMemoryMirror(m);
    mb::clean(m);
    m.PC = 0;
    std::vector<long long> costs;
    long long total = 0, start = -1;
    while (m.PC != done) {
        if (m.PC == entry && start < 0) start = total;
        mb::ExecuteInstruction(m);
        total += m.TStates;
        if (m.PC == back && start >= 0) {
            costs.push_back(total - start);
            start = -1;
        }
    }
    Cost cost;
    if (costs.empty()) return cost;
    cost.min = *std::min_element(costs.begin(), costs.end());
    cost.max = *std::max_element(costs.begin(), costs.end());
    double sum = 0;
    for (long long c : costs) sum += static_cast<double>(c);
    cost.mean = sum / static_cast<double>(costs.size());
    return cost;
}

// The bytes of each group: the whole library assembled with a label in
// front of every group.
std::map<int, int> GroupSizes() {
    std::string text = mb::testing::RuntimeTestHeader();
    for (const mb::RuntimeGroup& group : mb::RuntimeGroups()) {
        mb::RuntimeNeeds one;
        one.Set(group.Flag);
        if (group.Flag == mb::kNeedStrings) {
            for (std::string_view entry : mb::kStringRoutineEntries) one.SetStringEntry(entry);
        }
        text += "ZG" + std::to_string(group.Flag) + ":\r\n";
        for (const std::string& line : mb::RuntimeLines(one, mb::kDefaultSingleDecimals))
            text += line + "\r\n";
    }
    text += "ZGEND:\r\n\t.END\r\n";
    RuntimeProgram program;
    std::map<int, int> sizes;
    if (!program.BuildText(text)) {
        std::fprintf(stderr, "mbbench_runtime: the library does not assemble:\n%s\n",
                     program.Errors.c_str());
        return sizes;
    }
    const auto groups = mb::RuntimeGroups();
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const std::string next =
            i + 1 < groups.size() ? "ZG" + std::to_string(groups[i + 1].Flag) : "ZGEND";
        sizes[groups[i].Flag] =
            program.Address(next) - program.Address("ZG" + std::to_string(groups[i].Flag));
    }
    return sizes;
}

}  // namespace

int main() {
    using namespace mb;
    const std::map<int, int> sizes = GroupSizes();
    if (sizes.empty()) return 1;

    RuntimeNeeds needs;
    for (const RuntimeGroup& group : RuntimeGroups()) needs.Set(group.Flag);
    RuntimeProgram program;
    if (!program.Build(needs)) {
        std::fprintf(stderr, "mbbench_runtime: %s\n", program.Errors.c_str());
        return 1;
    }

    // Every draw in its own statement, so that the operands are the same
    // with every compiler.
    auto word = [](std::mt19937& r) { return static_cast<int>(r() & 0xFFFF); };
    auto twoWords = [&](std::mt19937& r) {
        const int left = word(r);
        return Registers(static_cast<uint32_t>(word(r)), left);
    };
    auto divisorAndWord = [&](std::mt19937& r) {
        const int dividend = word(r);
        return Registers(1 + r() % 1000, dividend);
    };
    auto twoLongs = [](std::mt19937& r) {
        const uint32_t left = r();
        return Stacked(left, r());
    };
    auto longAndDivisor = [](std::mt19937& r) {
        const uint32_t left = r();
        return Stacked(left, 1 + r() % 100000);
    };
    auto twoSingles = [](std::mt19937& r) {
        const uint32_t left = TypicalSingle(r);
        return Stacked(left, TypicalSingle(r));
    };
    auto twoBytes = [](std::mt19937& r) {
        const int a = static_cast<int>(r() & 0xFF);
        return Registers(0, static_cast<int>(r() & 0xFF), a);
    };
    auto byteAndDivisor = [](std::mt19937& r) {
        const int a = static_cast<int>(r() & 0xFF);
        return Registers(0, static_cast<int>(1 + r() % 20), a);
    };
    auto argument = [](double from, double to) {
        return [=](std::mt19937& r) { return Argument(S(Uniform(r, from, to))); };
    };
    const std::vector<Measure> measures = {
        {"M001", kNeedIntegerMultiply, "16-bit multiply", twoWords},
        {"D011", kNeedIntegerDivide, "16-bit divide, unsigned", divisorAndWord},
        {"D001", kNeedIntegerDivide, "16-bit divide, signed", divisorAndWord},
        {"C001", kNeedIntegerCompare, "16-bit compare", twoWords},
        {"A101", kNeedLongAdd, "32-bit add", twoLongs},
        {"S101", kNeedLongSubtract, "32-bit subtract", twoLongs},
        {"M101", kNeedLongMultiply, "32-bit multiply", twoLongs},
        {"D121", kNeedLongDivide, "32-bit divide, unsigned", longAndDivisor},
        {"D101", kNeedLongDivide, "32-bit divide, signed", longAndDivisor},
        {"C101", kNeedLongCompare, "32-bit compare", twoLongs},
        {"A201", kNeedSingleAdd, "Single add", twoSingles},
        {"S201", kNeedSingleSubtract, "Single subtract", twoSingles},
        {"M201", kNeedSingleMultiply, "Single multiply", twoSingles},
        {"D201", kNeedSingleDivide, "Single divide", twoSingles},
        {"C201", kNeedSingleCompare, "Single equality", twoSingles},
        {"C202", kNeedSingleCompare, "Single ordering", twoSingles},
        {"F001", kNeedSingleMath, "Sqr", argument(0.01, 1000)},
        {"F002", kNeedSingleMath, "Sin", argument(-3.14, 3.14)},
        {"F003", kNeedSingleMath, "Cos", argument(-3.14, 3.14)},
        {"F004", kNeedSingleMath, "Tan", argument(-1.5, 1.5)},
        {"F005", kNeedSingleMath, "Exp", argument(-10, 10)},
        {"F006", kNeedSingleMath, "Ln", argument(0.01, 1000)},
        {"F007", kNeedSingleMath, "Log", argument(0.01, 1000)},
        {"M01", kNeedShortMultiply, "8-bit multiply", twoBytes},
        {"D11", kNeedShortDivide, "8-bit divide, unsigned",
         [](std::mt19937& r) {
             const int dividend = static_cast<int>(r() & 0xFF);
             return Registers(0, static_cast<int>((1 + r() % 20) << 8) | dividend);
         }},
        {"D01", kNeedShortDivide, "8-bit divide, signed", byteAndDivisor},
        {"C01", kNeedShortCompare, "8-bit compare", twoBytes},
        {"X001", kNeedSingleToLong, "Single to Long",
         [](std::mt19937& r) { return Registers(S(Uniform(r, -100000, 100000))); }},
        {"X101", kNeedLongToSingle, "Long to Single",
         [](std::mt19937& r) {
             return Registers(static_cast<uint32_t>(static_cast<int32_t>(r() % 200001) - 100000));
         }},
        {"X111", kNeedLongToSingle, "ULong to Single",
         [](std::mt19937& r) { return Registers(r() % 200001); }},
        {"P101", kNeedIntegerPrint, "Integer print",
         [&](std::mt19937& r) { return Registers(static_cast<uint32_t>(word(r))); }},
        {"P401", kNeedLongPrint, "Long print", [](std::mt19937& r) { return Registers(r()); }},
        {"P501", kNeedSinglePrint, "Single print, 3 decimals",
         [](std::mt19937& r) { return Registers(TypicalSingle(r)); }},
    };

    std::printf("| Routine | Operation | T-states, mean | min - max | Group | Group bytes |\n");
    std::printf("|---|---|---:|---:|---|---:|\n");
    for (const Measure& measure : measures) {
        std::mt19937 rng(1);
        std::vector<RoutineCall> calls;
        for (int i = 0; i < 500; ++i) calls.push_back(measure.operands(rng));
        const Cost cost = Count(program, measure.routine, calls);
        std::string group;
        for (const RuntimeGroup& g : RuntimeGroups())
            if (g.Flag == measure.flag) group = std::string(g.CommentLine.substr(2));
        std::printf("| %s | %s | %.0f | %lld - %lld | %s | %d |\n", measure.routine, measure.what,
                    cost.mean, cost.min, cost.max, group.c_str(), sizes.at(measure.flag));
    }
    std::printf("\nGroup sizes in bytes:\n\n| Flag | Group | Bytes |\n|---:|---|---:|\n");
    int total = 0;
    for (const RuntimeGroup& g : RuntimeGroups()) {
        std::printf("| %d | %s | %d |\n", g.Flag, std::string(g.CommentLine.substr(2)).c_str(),
                    sizes.at(g.Flag));
        total += sizes.at(g.Flag);
    }
    std::printf("| | all groups | %d |\n", total);
    return 0;
}
