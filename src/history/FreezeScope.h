#pragma once

#include "history/History.h"

#include <exception>

namespace corvane {

/// Begins something with a history and ends it when its scope is left, whichever way. What a
/// listener throws at the end goes on, unless it would take the place of what is under way already;
/// so it must not be a part of something that can't throw at its end, as in an `optional`.
template<void (History::*Begin)(), void (History::*End)()>
class HistoryScope {
  public:
    explicit HistoryScope(History& history) : history_(history) { (history_.*Begin)(); }
    ~HistoryScope() noexcept(false) {
        try {
            (history_.*End)();
        } catch (...) {
            if (std::uncaught_exceptions() == before_)
                throw;
        }
    }
    HistoryScope(const HistoryScope&) = delete;
    HistoryScope& operator=(const HistoryScope&) = delete;

  private:
    History& history_;
    int before_ = std::uncaught_exceptions();
};

/// Nothing is repainted meanwhile.
using FreezeScope = HistoryScope<&History::Freeze, &History::Unfreeze>;
/// Within a freeze: what is shown meanwhile is repainted.
using ThawScope = HistoryScope<&History::QuickUnfreeze, &History::QuickFreeze>;

} // namespace corvane
