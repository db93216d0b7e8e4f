#pragma once

#include "kolib/devices/LinkPort.h"

#include <chrono>

struct ftdi_context;
struct libusb_context;
struct libusb_device;
struct libusb_transfer;

namespace corvane {

/// An opened FT232R: serial bytes at 250 000 baud, the product's power on RTS. The kernel's own
/// serial driver is detached while this lives and given back afterwards.
class UsbLinkPort final : public LinkPort {
  public:
    /// The device must belong to the context, which must outlive the port.
    [[nodiscard]] static OpenOutcome open(libusb_context* context, libusb_device* device);

    ~UsbLinkPort() override;
    UsbLinkPort(const UsbLinkPort&) = delete;
    UsbLinkPort& operator=(const UsbLinkPort&) = delete;

    [[nodiscard]] std::size_t read(std::span<std::uint8_t> target) override;
    void write(wire::ByteView bytes) override;
    void service() override;
    [[nodiscard]] bool alive() const override { return alive_; }
    void powerCycle() override;
    [[nodiscard]] bool writeStrings(const DeviceInfo& strings) override;
    void waitForData(int milliseconds) override;

  private:
    struct Chip {
        ftdi_context* context = nullptr;
        ~Chip();
    };
    struct Reading {
        libusb_transfer* transfer = nullptr;
        std::vector<std::uint8_t> buffer;
        bool underWay = false;
        UsbLinkPort* port = nullptr;
    };

    UsbLinkPort(libusb_context* context, std::unique_ptr<Chip> chip);
    void startReading();
    void readingEnded(Reading& reading);
    void handleEvents(int milliseconds);

    libusb_context* context_;
    std::unique_ptr<Chip> chip_;
    std::vector<std::unique_ptr<Reading>> readings_;
    std::vector<std::uint8_t> received_;
    bool alive_ = true;
    bool closing_ = false;
    std::chrono::steady_clock::time_point powerBackAt_{};
};

} // namespace corvane
