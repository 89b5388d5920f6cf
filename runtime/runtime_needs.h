// Which runtime routine groups a compiled program calls. The compiler's first run
// sets the flags as it meets operations; the second run emits the groups that
// were flagged, in the order of the group table.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace mb {

// Flag numbers of the routine groups.
enum RuntimeFlag : int {
    kNeedIntegerMultiply = 1,
    kNeedIntegerDivide = 2,
    kNeedIntegerCompare = 3,
    kNeedLongAdd = 4,
    kNeedLongSubtract = 5,
    kNeedLongMultiply = 6,
    kNeedLongDivide = 7,
    kNeedLongCompare = 8,
    kNeedSingleAdd = 9,
    kNeedSingleSubtract = 10,
    kNeedSingleMultiply = 11,
    kNeedSingleDivide = 12,
    kNeedSingleCompare = 13,
    kNeedSingleMath = 14,
    kNeedShortMultiply = 15,
    kNeedShortDivide = 16,
    kNeedShortCompare = 17,
    kNeedSingleToLong = 18,
    kNeedLongToSingle = 19,
    kNeedPrint = 40,
    kNeedIntegerPrint = 41,
    kNeedShortPrint = 42,
    kNeedBitPrint = 43,
    kNeedLongPrint = 44,
    kNeedSinglePrint = 45,
    kNeedStrings = 48,
};

// The string routine entries that are emitted only when called.
inline constexpr std::array<std::string_view, 20> kStringRoutineEntries = {
    "SG05", "SG10", "SG20", "SG25", "SG30", "SG35", "SG40", "SG50", "SG60", "SG65",
    "SG70", "SG75", "SG77", "SG79", "SG81", "SG83", "SG86", "SG89", "SG92", "SG95"};

struct RuntimeNeeds {
    std::array<bool, 100> Flags{};
    std::array<bool, kStringRoutineEntries.size()> StringEntries{};

    void Reset() { *this = RuntimeNeeds{}; }
    void Set(int flag) {
        if (flag > 0 && flag < static_cast<int>(Flags.size())) Flags[flag] = true;
    }
    bool Has(int flag) const {
        return flag > 0 && flag < static_cast<int>(Flags.size()) && Flags[flag];
    }
    // Marks one string entry ("SG65") and the string group; false for a name
    // that is no separately emitted entry (the group flag is set all the same).
    bool SetStringEntry(std::string_view entry) {
        Set(kNeedStrings);
        for (std::size_t i = 0; i < kStringRoutineEntries.size(); ++i) {
            if (kStringRoutineEntries[i] == entry) {
                StringEntries[i] = true;
                return true;
            }
        }
        return false;
    }
    bool HasStringEntry(std::string_view entry) const {
        for (std::size_t i = 0; i < kStringRoutineEntries.size(); ++i) {
            if (kStringRoutineEntries[i] == entry) return StringEntries[i];
        }
        return false;
    }
};

}  // namespace mb
