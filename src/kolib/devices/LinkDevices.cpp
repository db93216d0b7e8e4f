#include "kolib/devices/LinkDevices.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace corvane {

namespace {
constexpr std::int32_t TryAgainAfter = 1000; // ms
}

void LinkDevices::EnumerateDevices() {
    for (const auto& source : sources_)
        changed_ = source->refresh() || changed_;
    if (!changed_)
        return;
    list_.clear();
    failed_.reset();
    // An index means the same device to everybody only once all have told their strings.
    if (EnumerationPending())
        return;
    changed_ = false;
    for (const auto& source : sources_)
        for (std::size_t i = 0; i < source->devices().size(); ++i)
            list_.push_back({source.get(), i, source->devices()[i]});
}

DeviceInfo LinkDevices::GetDeviceInfo(int index) const {
    if (index < 0 || index >= GetDeviceCount())
        return {};
    return list_[static_cast<std::size_t>(index)].device.info;
}

bool LinkDevices::EnumerationPending() const {
    return std::any_of(sources_.begin(), sources_.end(),
                       [](const auto& source) { return source->pending(); });
}

void LinkDevices::OpenDevice(int index) {
    CloseDevice();
    if (index < 0 || index >= GetDeviceCount())
        return;
    if (failed_ && failed_->index == index && Elapsed(clock_.now(), failed_->at) < TryAgainAfter)
        return;
    Listed& listed = list_[static_cast<std::size_t>(index)];
    // From here on a signal waits: a device that is half opened would keep its power and its claim.
    HoldingChanged.raise(true);
    OpenOutcome outcome = listed.source->open(listed.index);
    hindrance_ = std::move(outcome.hindrance);
    if (!outcome.port) {
        failed_ = Failed{index, clock_.now()};
        debug_.DebugWriteLine(outcome.problem);
        HoldingChanged.raise(false);
        return;
    }
    failed_.reset();
    listed.device.accessible = true; // whatever was said of its rights before
    port_ = std::move(outcome.port);
    session_.attach(port_.get());
}

void LinkDevices::CloseDevice() {
    if (!port_)
        return;
    // The session first, which still points at the port.
    session_.attach(nullptr);
    port_.reset();
    HoldingChanged.raise(false);
}

int LinkDevices::GetDeviceState2() {
    if (!port_)
        return 0;
    port_->service();
    session_.pump();
    return port_->alive() ? -1 : 0;
}

void LinkDevices::ResetDevice() {
    if (!port_)
        return;
    // What the product has sent until now belongs to its life before.
    session_.productReset();
    port_->powerCycle();
}

bool LinkDevices::CheckForDriver() {
    return list_.empty() || std::any_of(list_.begin(), list_.end(), [](const Listed& listed) {
               return listed.device.accessible;
           });
}

bool LinkDevices::ProgramDevice(const DeviceInfo& strings) {
    return port_ && port_->writeStrings(strings);
}

void LinkDevices::WaitForData(int milliseconds) {
    if (port_ && port_->alive())
        port_->waitForData(milliseconds);
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

} // namespace corvane
