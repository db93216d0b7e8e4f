#include "shell/LinkStatus.h"

#include "link/HindranceTexts.h"

namespace corvane {

LinkStatus::LinkStatus(KOCommLink& link) : link_(link) {
    for (Event<>* event : {&link.ConnectedChanged, &link.ReadyStateChanged, &link.ProductChanged,
                           &link.AvailabilityChanged})
        on_(*event, [this] { refresh(); });
    refresh();
}

void LinkStatus::refresh() {
    using Kind = LinkHindrance::Kind;
    const LinkHindrance& hindrance = link_.Hindrance();
    if (!link_.DriverExists() || hindrance.kind == Kind::Forbidden)
        return tell(State::NoPermission, "The link may not be opened",
                    "Choose Help, Troubleshooting, Reinstall Corvane Drivers, or click here; "
                    "then plug the link in again.");
    if (link_.Claimed())
        return tell(State::Busy, "The link is busy", BusyAdvice(hindrance));
    if (hindrance.kind == Kind::Broken)
        return tell(State::Waiting, "The link can't be opened", BrokenAdvice);
    if (!link_.IsConnected())
        return tell(State::NoDevice, "No link is plugged in",
                    hindrance.kind == Kind::Stranger ? StrangerAdvice(hindrance)
                                                     : "Plug in a Corvane link to begin.");
    const std::string name = link_.Product().name();
    if (link_.InUse())
        return tell(State::Busy,
                    link_.ready() && !name.empty() ? "Busy with " + name : "The link is busy",
                    "Leave it plugged in until the job is done.");
    if (!link_.ready())
        return tell(State::Waiting, "A link is plugged in",
                    link_.MaintainConnection() ? "Looking for the product behind it."
                                               : "It is free until you program or read.");
    if (!link_.IsLinkDevice())
        return tell(State::Ready, "Link hardware is plugged in", "It can be programmed.");
    if (name.empty())
        return tell(State::Ready, "Unrecognized product",
                    "This version of the program does not know the product behind the link.");
    tell(State::Ready, name, "Firmware " + link_.Product().firmwareVersion.ToString());
}

void LinkStatus::tell(State state, std::string headline, std::string detail) {
    if (state == state_ && headline == headline_ && detail == detail_)
        return;
    state_ = state;
    headline_ = std::move(headline);
    detail_ = std::move(detail);
    Changed.raise();
}

} // namespace corvane
