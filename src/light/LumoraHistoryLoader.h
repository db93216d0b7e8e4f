#pragma once

#include "history/UndoableChange.h"

namespace corvane {

/// Knows the changes of light programs.
class LumoraHistoryLoader final : public HistoryLoader {
  public:
    [[nodiscard]] std::unique_ptr<UndoableChange> Load(std::string_view prefix) const override;
    [[nodiscard]] bool FitTogether(const UndoableChanges& changes) const override;
};

} // namespace corvane
