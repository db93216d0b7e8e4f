#pragma once

#include <vector>

namespace corvane {

/// Which segments of one track are selected. Indices count from 1; 0 means none.
class TrackSelection {
  public:
    [[nodiscard]] bool isSelected(int index) const;
    /// The first selected segment.
    [[nodiscard]] int first() const;
    [[nodiscard]] int count() const { return count_; }
    /// All selected segments, ascending.
    [[nodiscard]] std::vector<int> indices() const;

    /// This one and no other; one that is not there clears the selection.
    void selectOnly(int index);
    void set(int index, bool selected);
    /// Makes the first run of selected segments reach up or down to this one, or, if it lies
    /// within, end there; nothing else stays selected.
    void extendTo(int target);

    void inserted(int index);
    void removed(int index);

  private:
    std::vector<bool> flags_;
    int count_ = 0;
};

} // namespace corvane
