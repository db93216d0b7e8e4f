#include "link/ProductReach.h"

#include "link/HindranceTexts.h"

namespace corvane {

namespace {

using Reason = JobOutcome::Reason;
using Record = AttachedProduct::Record;

// The identification follows the echo at once; what came before it may have been something else.
constexpr std::int32_t RecordWithin = 500; // ms

JobOutcome silent(const KOCommLink& link) {
    if (!link.EchoHeard())
        return {Reason::NoAnswer,
                {},
                "The product behind the link does not answer. Check its cable and its power."};
    return {Reason::NoIdentity,
            {},
            "The product behind the link answers, but does not say what it is. Take its power away "
            "and give it back, then try again."};
}

JobOutcome other(const AttachedProduct& product) {
    switch (product.record) {
    case Record::Known:
        return {Reason::OtherProduct,
                {},
                "The product behind the link is a " + product.name() +
                    ". Plug in the right one, or open a document that is made for this one."};
    case Record::Unknown:
        return {Reason::OtherProduct,
                {},
                "The product behind the link is of type " + product.deviceType.ToString() +
                    ", which this program does not know. Plug in the right one, or look for a "
                    "newer version of the program."};
    case Record::Damaged:
    case Record::None:
        break;
    }
    return {Reason::NoIdentity,
            {},
            "The product behind the link does not say properly what it is. Take its power away and "
            "give it back, then try again."};
}

} // namespace

JobOutcome NoLinkOpen(const KOCommLink& link) {
    JobOutcome outcome{Reason::NoLink, "No Corvane is connected.",
                       "Plug in a Corvane link, then try again."};
    const LinkHindrance::Kind kind = link.Hindrance().kind;
    if (!link.DriverExists() || kind == LinkHindrance::Kind::Forbidden) {
        outcome.reason = Reason::Forbidden;
        outcome.cure = ForbiddenAdvice;
    } else if (kind != LinkHindrance::Kind::None) {
        outcome.reason = kind == LinkHindrance::Kind::Busy       ? Reason::LinkBusy
                         : kind == LinkHindrance::Kind::Stranger ? Reason::NoLink
                                                                 : Reason::Failed;
        outcome.cure = HindranceInWords(link.Hindrance());
    }
    return outcome;
}

std::string NoReplyCure(const KOCommLink& link) {
    return link.IsConnected() ? "The product has stopped answering. Check its cable and its power, "
                                "then try again."
                              : "The link has been unplugged. Plug it in, then try again.";
}

JobOutcome ReachProduct(const Workplace& place, const std::string& desiredClass, bool anyDevice) {
    KOCommLink& link = place.link;
    // Its answer goes by the class, which outlives products. What counts is this session's record.
    static_cast<void>(link.Connect(desiredClass, anyDevice));
    AwaitLink(place, RecordWithin,
              [&link] { return link.Product().record != Record::None || !link.Negotiated(); });
    JobOutcome outcome;
    if (!link.IsConnected() || !link.DriverExists()) {
        outcome = NoLinkOpen(link);
        outcome.text.clear();
    } else if (!link.Negotiated()) {
        outcome = silent(link);
    } else if (!anyDevice && !link.Product().isOf(desiredClass)) {
        outcome = other(link.Product());
    }
    if (!outcome.done())
        place.debug.DebugWriteLine("No job for '" + desiredClass + "': " + outcome.cure);
    return outcome;
}

} // namespace corvane
