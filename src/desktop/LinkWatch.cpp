#include "desktop/LinkWatch.h"

namespace corvane {

namespace {
constexpr int LookAgain = 5; // ms, at a device that can't tell when it has something
}

LinkWatch::LinkWatch(KOCommLink& link, KODevice& device)
    : link_(link), device_(device), onReady_(link.ReadyStateChanged.connect([this] { follow(); })) {
    connect(&timer_, &QTimer::timeout, this, [this] { serve(); });
    follow();
}

void LinkWatch::follow() {
    notifier_.reset();
    timer_.stop();
    if (!link_.ready() || !link_.IsLinkDevice())
        return;
    if (const int descriptor = device_.Descriptor(); descriptor >= 0) {
        notifier_ = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        connect(notifier_.get(), &QSocketNotifier::activated, this, [this] { serve(); });
    } else {
        timer_.start(LookAgain);
    }
}

void LinkWatch::serve() {
    // A device that is gone is the link's to find; until then it would have something all the time.
    if (device_.GetDeviceState2() != -1 && notifier_ != nullptr)
        notifier_->setEnabled(false);
}

} // namespace corvane
