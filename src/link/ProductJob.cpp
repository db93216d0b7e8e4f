#include "link/ProductJob.h"

namespace corvane {

ProductJob::ProductJob(const Workplace& place)
    : with_(place), onPacket_(place.link.PacketReceived.connect([this](const KOPacket& packet) {
          ProcessPacket(packet);
      })) {}

bool ProductJob::Connect(const std::string& className, const std::string& friendlyName,
                         bool anyDevice) {
    if (!with_.link.IsConnected())
        return fail(NoLinkOpen(with_.link));
    JobOutcome reached = ReachProduct(with_, className, anyDevice);
    reached.text = "Unable to connect to the " + friendlyName + ".";
    return reached.done() || fail(std::move(reached));
}

bool ProductJob::fail(JobOutcome outcome) {
    outcome_ = std::move(outcome);
    outcome_.told = true;
    with_.pointer.set(false);
    with_.dialogs.ShowError(outcome_.inWords());
    return false;
}

bool ProductJob::fail(const std::string& text, const std::string& cure) {
    return fail(JobOutcome{JobOutcome::Reason::Failed, text, cure});
}

} // namespace corvane
