#pragma once

#include "system/InstanceChannel.h"

#include <QTimer>
#include <QWidget>

#include <deque>
#include <functional>
#include <memory>

class QSocketNotifier;

namespace corvane {

/// Serves further starts of the program while it runs: shows its window, and opens their files, one
/// after the other and none in the middle of a question or of a blocking operation. Whoever sent a
/// file waits until it is open.
class InstanceDoor final : public QObject {
  public:
    using Open = std::function<void(const std::string& path)>;

    /// Marks the channel. Channel and window must outlive it.
    InstanceDoor(InstanceChannel& channel, QWidget& window, Open open);
    ~InstanceDoor() override;

    /// Takes the mark away; nothing is opened any more.
    void close();

  private:
    void serve();
    void openNext();
    void showWindow(const std::string& activationToken);

    InstanceChannel& channel_;
    QWidget& window_;
    Open open_;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::deque<InstanceChannel::Delivery> waiting_;
    bool opening_ = false;
    QTimer later_;
};

} // namespace corvane
