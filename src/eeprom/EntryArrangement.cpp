#include "eeprom/EntryArrangement.h"

#include <algorithm>

namespace corvane {

namespace {

struct Range {
    int start; // address of the first byte
    int end;   // address of the last one; one below the start if there is none
    int index;
};

/// The ranges that reach highest among some of them.
struct Highest {
    int end = -1;
    int index = 0;
    int secondEnd = -1;

    void take(const Range& range) {
        if (range.end > end) {
            secondEnd = end;
            end = range.end;
            index = range.index;
        } else {
            secondEnd = std::max(secondEnd, range.end);
        }
    }
};

} // namespace

EntryArrangement Arrange(const KOEEPROMDocument& document) {
    std::vector<Range> ranges;
    ranges.reserve(static_cast<std::size_t>(document.EntryCount()));
    for (int index = 1; index <= document.EntryCount(); ++index) {
        const EEPROMVariable& variable = document.entry(index);
        ranges.push_back({variable.Address, variable.Address + variable.Length - 1, index});
    }
    std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) {
        return a.start != b.start ? a.start < b.start : a.index > b.index;
    });

    EntryArrangement result;
    result.order.reserve(ranges.size());
    result.conflicts.resize(ranges.size());
    std::vector<Highest> before(ranges.size() + 1); // of the first so many ranges
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        result.order.push_back(ranges[i].index);
        before[i + 1] = before[i];
        before[i + 1].take(ranges[i]);
    }
    for (const Range& range : ranges) {
        // A range overlaps this one if it starts no later than this ends, and ends no earlier than
        // this starts. Those that start early enough stand first, so the highest of them decides.
        const auto tooLate =
            std::upper_bound(ranges.begin(), ranges.end(), range.end,
                             [](int end, const Range& other) { return end < other.start; });
        const Highest& highest = before[static_cast<std::size_t>(tooLate - ranges.begin())];
        const int end = highest.index == range.index ? highest.secondEnd : highest.end;
        result.conflicts[static_cast<std::size_t>(range.index) - 1] =
            highest.index != 0 && end >= range.start;
    }
    return result;
}

} // namespace corvane
