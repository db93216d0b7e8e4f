#include "light/TrackSelection.h"

#include <algorithm>

namespace corvane {

bool TrackSelection::isSelected(int index) const {
    return index >= 1 && index <= static_cast<int>(flags_.size()) &&
           flags_[static_cast<std::size_t>(index) - 1];
}

int TrackSelection::first() const {
    if (count_ == 0)
        return 0;
    return static_cast<int>(std::find(flags_.begin(), flags_.end(), true) - flags_.begin()) + 1;
}

std::vector<int> TrackSelection::indices() const {
    std::vector<int> selected;
    selected.reserve(static_cast<std::size_t>(count_));
    for (int index = 1; index <= static_cast<int>(flags_.size()); ++index)
        if (isSelected(index))
            selected.push_back(index);
    return selected;
}

void TrackSelection::selectOnly(int index) {
    if (count_ > 0)
        std::fill(flags_.begin(), flags_.end(), false);
    count_ = 0;
    set(index, true);
}

void TrackSelection::set(int index, bool selected) {
    if (index < 1 || index > static_cast<int>(flags_.size()) || isSelected(index) == selected)
        return;
    flags_[static_cast<std::size_t>(index) - 1] = selected;
    count_ += selected ? 1 : -1;
}

void TrackSelection::extendTo(int target) {
    int from = first();
    if (from == 0)
        return selectOnly(target);
    int to = from;
    while (isSelected(to + 1))
        ++to;
    if (target < from)
        from = target;
    else if (target > from)
        to = target;
    selectOnly(0);
    for (int index = from; index <= to; ++index)
        set(index, true);
}

void TrackSelection::inserted(int index) {
    flags_.insert(flags_.begin() + (index - 1), false);
}

void TrackSelection::removed(int index) {
    set(index, false);
    flags_.erase(flags_.begin() + (index - 1));
}

} // namespace corvane
