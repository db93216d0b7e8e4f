#pragma once

#include "kolib/devices/LinkPort.h"

#include <filesystem>

struct libusb_context;
struct libusb_device;

namespace corvane {

/// The FT232R chips on this machine's USB. The system tells of changes; strings come from what
/// the kernel has read already, so that no device is opened or claimed for being listed.
class UsbLinkSource final : public LinkSource {
  public:
    UsbLinkSource();
    ~UsbLinkSource() override;
    UsbLinkSource(const UsbLinkSource&) = delete;
    UsbLinkSource& operator=(const UsbLinkSource&) = delete;

    [[nodiscard]] bool refresh() override;
    [[nodiscard]] bool pending() const override { return false; }
    [[nodiscard]] const std::vector<Device>& devices() const override { return devices_; }
    [[nodiscard]] OpenOutcome open(std::size_t index) override;

  private:
    void lookAgain();
    void release();

    libusb_context* context_ = nullptr;
    bool changed_ = true;
    int looksLeft_ = 0;
    std::vector<Device> devices_;
    std::vector<libusb_device*> handles_; // of the devices, each with a reference held
};

/// The strings that the kernel keeps of a USB device in its folder under sysfs. What can't be
/// read is empty. The manufacturer ID is the start of the serial number, as on every FT232R.
[[nodiscard]] DeviceInfo readUsbStrings(const std::filesystem::path& folder);

} // namespace corvane
