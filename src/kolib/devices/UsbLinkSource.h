#pragma once

#include "base/Clock.h"
#include "kolib/devices/DeviceHolder.h"
#include "kolib/devices/LinkPort.h"

struct ftdi_context;
struct libusb_device;

namespace corvane {

/// The FT232R chips on this machine's USB, ordered by the sockets that they are plugged into. The
/// system tells of changes; strings come from what the kernel has read already, so that no device
/// is opened or claimed for being listed. One of them can be open at a time.
class UsbLinkSource final : public LinkSource {
  public:
    explicit UsbLinkSource(const Clock& clock);
    ~UsbLinkSource() override;
    UsbLinkSource(const UsbLinkSource&) = delete;
    UsbLinkSource& operator=(const UsbLinkSource&) = delete;

    [[nodiscard]] bool refresh() override;
    [[nodiscard]] bool pending() const override { return false; }
    [[nodiscard]] const std::vector<Device>& devices() const override { return devices_; }
    [[nodiscard]] OpenOutcome open(std::size_t index) override;

  private:
    [[nodiscard]] bool lookIsDue();
    void lookAgain();
    void release();

    const Clock& clock_;
    DeviceHolder holder_;
    ftdi_context* ftdi_ = nullptr; // with the one context of libusb; nothing if there is no USB
    bool changed_ = true;
    std::uint32_t changedAt_ = 0;
    std::uint32_t lookedAt_ = 0;
    bool settled_ = false; // long enough ago that strings and rights are there
    std::vector<Device> devices_;
    std::vector<libusb_device*> handles_; // of the devices, each with a reference held
};

} // namespace corvane
