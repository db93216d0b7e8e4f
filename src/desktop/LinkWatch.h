#pragma once

#include "link/KOCommLink.h"

#include <QSocketNotifier>
#include <QTimer>

#include <memory>

namespace corvane {

/// Answers the product as soon as it has said something, as long as a session lasts, and not only
/// at the next tick of the main loop: a product repeats what is not acknowledged in time. Link and
/// device must outlive it.
class LinkWatch final : public QObject {
  public:
    LinkWatch(KOCommLink& link, KODevice& device);

  private:
    void follow();
    void serve();

    KOCommLink& link_;
    KODevice& device_;
    std::unique_ptr<QSocketNotifier> notifier_;
    QTimer timer_;
    Connection onReady_;
};

} // namespace corvane
