#include "light/TrackSelection.h"

#include <algorithm>

namespace corvane {

/// The first run that ends at this segment or behind it.
TrackSelection::Runs::const_iterator TrackSelection::reaching(int index) const {
    return std::partition_point(runs_.begin(), runs_.end(),
                                [index](const Run& run) { return run.last < index; });
}

bool TrackSelection::isSelected(int index) const {
    const auto run = reaching(index);
    return run != runs_.end() && run->first <= index;
}

std::vector<int> TrackSelection::indices() const {
    std::vector<int> selected;
    selected.reserve(static_cast<std::size_t>(count_));
    for (const Run& run : runs_)
        for (int index = run.first; index <= run.last; ++index)
            selected.push_back(index);
    return selected;
}

void TrackSelection::selectRun(int first, int last) {
    runs_.clear();
    count_ = 0;
    if (first < 1 || last > length_ || first > last)
        return;
    runs_.push_back({first, last});
    count_ = last - first + 1;
}

void TrackSelection::selectOnly(int index) {
    selectRun(index, index);
}

void TrackSelection::set(int index, bool selected) {
    if (index < 1 || index > length_ || isSelected(index) == selected)
        return;
    const auto at = runs_.begin() + (reaching(index) - runs_.cbegin());
    count_ += selected ? 1 : -1;
    if (selected) {
        const bool meetsBefore = at != runs_.begin() && std::prev(at)->last == index - 1;
        const bool meetsBehind = at != runs_.end() && at->first == index + 1;
        if (meetsBefore && meetsBehind) {
            std::prev(at)->last = at->last;
            runs_.erase(at);
        } else if (meetsBefore) {
            std::prev(at)->last = index;
        } else if (meetsBehind) {
            at->first = index;
        } else {
            runs_.insert(at, {index, index});
        }
        return;
    }
    const Run whole = *at;
    if (whole.first == whole.last) {
        runs_.erase(at);
    } else if (whole.first == index) {
        at->first = index + 1;
    } else {
        at->last = index - 1;
        if (whole.last != index)
            runs_.insert(std::next(at), {index + 1, whole.last});
    }
}

void TrackSelection::extendTo(int target) {
    if (runs_.empty())
        return selectOnly(target);
    Run run = runs_.front();
    if (target < run.first)
        run.first = target;
    else if (target > run.first)
        run.last = target;
    selectRun(std::max(1, run.first), std::min(run.last, length_));
}

void TrackSelection::inserted(int index) {
    ++length_;
    auto run = runs_.begin() + (reaching(index) - runs_.cbegin());
    if (run != runs_.end() && run->first < index) { // it comes within
        const Run behind{index, run->last};
        run->last = index - 1;
        run = runs_.insert(std::next(run), behind);
    }
    for (; run != runs_.end(); ++run) {
        ++run->first;
        ++run->last;
    }
}

void TrackSelection::removed(int index) {
    set(index, false);
    --length_;
    auto run = runs_.begin() + (reaching(index) - runs_.cbegin());
    if (run != runs_.end() && run != runs_.begin() && std::prev(run)->last + 1 == index &&
        run->first == index + 1) { // nothing is between them any more
        std::prev(run)->last = run->last - 1;
        run = runs_.erase(run);
    }
    for (; run != runs_.end(); ++run) {
        --run->first;
        --run->last;
    }
}

} // namespace corvane
