#pragma once

#include "link/KOCommLink.h"

namespace corvane {

/// What the person is told of the link at every moment. Follows the link, which must outlive it.
class LinkStatus {
  public:
    enum class State { NoDevice, NoPermission, Waiting, Ready, Busy };

    explicit LinkStatus(KOCommLink& link);

    Event<> Changed;

    [[nodiscard]] State state() const { return state_; }
    /// What there is, such as "Lumora 1.2".
    [[nodiscard]] const std::string& headline() const { return headline_; }
    /// What that means or what to do.
    [[nodiscard]] const std::string& detail() const { return detail_; }

  private:
    void refresh();
    void tell(State state, std::string headline, std::string detail);

    KOCommLink& link_;
    State state_ = State::NoDevice;
    std::string headline_;
    std::string detail_;
    Connections on_;
};

} // namespace corvane
