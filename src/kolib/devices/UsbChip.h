#pragma once

#include "kolib/devices/ChipMemory.h"

#include <memory>

struct ftdi_context;
struct libusb_device;
struct libusb_device_handle;

namespace corvane {

/// An FT232R that is claimed for this process, ready at the link's speed and with RTS on. What
/// hangs on it does not notice that it is claimed or let go: nothing here resets the chip, which
/// would take RTS away, and with it the product's power. The kernel's own serial driver is detached
/// while this lives and given back afterwards. Results are codes of libusb.
class UsbChip {
  public:
    /// The context must outlive the chip, which has it for itself meanwhile; the device is one of
    /// its devices. Nothing, and a code in `error`, if the chip can't be had.
    [[nodiscard]] static std::unique_ptr<UsbChip> open(ftdi_context* ftdi, libusb_device* device,
                                                       int& error);
    ~UsbChip();
    UsbChip(const UsbChip&) = delete;
    UsbChip& operator=(const UsbChip&) = delete;

    [[nodiscard]] libusb_device_handle* handle() const { return handle_; }
    [[nodiscard]] int setRts(bool on);

    /// Nothing if the chip does not answer.
    [[nodiscard]] std::optional<ChipMemory> readMemory();
    /// What a chip with an empty memory gets.
    [[nodiscard]] std::optional<ChipMemory> freshMemory(const DeviceInfo& strings);
    /// Writes all of it and reads it back. False if it is not there afterwards.
    [[nodiscard]] bool writeMemory(const ChipMemory& memory);

  private:
    UsbChip(ftdi_context* ftdi, libusb_device_handle* handle) : ftdi_(ftdi), handle_(handle) {}
    [[nodiscard]] int prepare();
    [[nodiscard]] bool writeWords(const ChipMemory& memory);

    ftdi_context* ftdi_;
    libusb_device_handle* handle_;
    bool claimed_ = false;
};

} // namespace corvane
