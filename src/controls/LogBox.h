#pragma once

#include "controls/ChildControl.h"

#include <vector>

namespace corvane {

/// A box of lines that only grows at its end, or is emptied.
class LogBox final : public ChildControl {
  public:
    Event<> LinesChanged;

    [[nodiscard]] const std::vector<std::string>& Lines() const { return lines_; }
    void append(std::string line) {
        lines_.push_back(std::move(line));
        LinesChanged.raise();
    }
    void clear() {
        lines_ = {};
        LinesChanged.raise();
    }

  private:
    std::vector<std::string> lines_;
};

} // namespace corvane
