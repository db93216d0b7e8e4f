#include "desktop/InstanceDoor.h"

#include "desktop/EventLoop.h"
#include "desktop/InputWidgets.h"

#include <QSocketNotifier>

namespace corvane {

namespace {

constexpr int LookAgain = 100; // ms

bool personIsBusy() {
    return InsideRepaint() || QApplication::activeModalWidget() != nullptr ||
           QApplication::activePopupWidget() != nullptr;
}

} // namespace

InstanceDoor::InstanceDoor(InstanceChannel& channel, QWidget& window, Open open)
    : channel_(channel), window_(window), open_(std::move(open)) {
    later_.setSingleShot(true);
    connect(&later_, &QTimer::timeout, this, [this] { openNext(); });
    if (!channel_.Mark())
        return;
    notifier_ = std::make_unique<QSocketNotifier>(channel_.descriptor(), QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] { serve(); });
}

InstanceDoor::~InstanceDoor() {
    close();
}

void InstanceDoor::close() {
    if (notifier_ != nullptr)
        notifier_->setEnabled(false); // it may be the one that is calling
    later_.stop();
    waiting_.clear();
    channel_.Unmark();
}

void InstanceDoor::serve() {
    while (auto delivery = channel_.Receive()) {
        if (delivery->record.dwData == InstanceRecord::Foreground)
            showWindow(delivery->record.lpData);
        else if (delivery->record.dwData == InstanceRecord::Path &&
                 !delivery->record.lpData.empty())
            waiting_.push_back(std::move(*delivery));
    }
    openNext();
}

void InstanceDoor::openNext() {
    if (waiting_.empty() || opening_)
        return;
    if (personIsBusy())
        return later_.start(LookAgain);
    // Opening may ask the person, and more files come in meanwhile.
    opening_ = true;
    {
        const InstanceChannel::Delivery delivery = std::move(waiting_.front());
        waiting_.pop_front();
        CommitFocusedBox();
        open_(delivery.record.lpData);
        if (notifier_ != nullptr && notifier_->isEnabled())
            delivery.confirm();
    }
    opening_ = false;
    if (!waiting_.empty())
        later_.start(0);
}

void InstanceDoor::showWindow(const std::string& activationToken) {
    // Where windows may not put themselves to the front, the person's click on the other start
    // allows it.
    if (!activationToken.empty())
        qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken));
    window_.setWindowState(window_.windowState() & ~Qt::WindowMinimized);
    window_.show();
    QWidget* modal = QApplication::activeModalWidget();
    for (QWidget* widget : {&window_, modal})
        if (widget != nullptr) {
            widget->raise();
            widget->activateWindow();
        }
}

} // namespace corvane
