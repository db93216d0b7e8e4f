#pragma once

#include <vector>

namespace corvane {

/// Which segments of one track are selected. Indices count from 1; 0 means none. Kept as runs of
/// selected segments, so that it costs what is selected and not what there is.
class TrackSelection {
  public:
    [[nodiscard]] bool isSelected(int index) const;
    /// The first selected segment.
    [[nodiscard]] int first() const { return runs_.empty() ? 0 : runs_.front().first; }
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
    struct Run {
        int first;
        int last;
    };
    using Runs = std::vector<Run>;

    [[nodiscard]] Runs::const_iterator reaching(int index) const;
    void selectRun(int first, int last);

    Runs runs_; // ascending, with something between each and the next
    int length_ = 0;
    int count_ = 0;
};

} // namespace corvane
