#pragma once

#include "kolib/devices/DeviceHolder.h"
#include "kolib/devices/LinkPort.h"
#include "kolib/devices/UsbChip.h"

#include <chrono>

struct libusb_context;
struct libusb_transfer;

namespace corvane {

/// An opened FT232R: serial bytes at 250 000 baud, the product's power on RTS. Power that was taken
/// is given back, at the latest at the end of this.
class UsbLinkPort final : public LinkPort {
  public:
    /// The device must belong to the context, which must outlive the port; `node` is its file. Of
    /// a busy one the holder is asked for.
    [[nodiscard]] static OpenOutcome open(ftdi_context* ftdi, libusb_device* device,
                                          const std::string& node, DeviceHolder& holder);

    ~UsbLinkPort() override;
    UsbLinkPort(const UsbLinkPort&) = delete;
    UsbLinkPort& operator=(const UsbLinkPort&) = delete;

    [[nodiscard]] std::size_t read(std::span<std::uint8_t> target) override;
    /// Loses the bytes if the chip does not take them in time.
    void write(wire::ByteView bytes) override;
    void service() override;
    [[nodiscard]] bool alive() const override { return alive_; }
    void powerCycle() override;
    [[nodiscard]] bool writeStrings(const DeviceInfo& strings) override;
    void waitForData(int milliseconds) override;

  private:
    using Time = std::chrono::steady_clock::time_point;
    struct Reading {
        libusb_transfer* transfer = nullptr;
        std::vector<std::uint8_t> buffer;
        bool underWay = false;
        UsbLinkPort* port = nullptr;
    };

    UsbLinkPort(libusb_context* context, std::unique_ptr<UsbChip> chip);
    void makeReadings();
    void submitAll();
    void submit(Reading& reading);
    void readingEnded(Reading& reading);
    void endReadings();
    void takePackets(const Reading& reading);
    void judge(int result, unsigned char endpoint);
    void givePowerBack();
    void handleEvents(int milliseconds);

    libusb_context* context_;
    std::unique_ptr<UsbChip> chip_;
    std::vector<std::unique_ptr<Reading>> readings_;
    std::size_t underWay_ = 0;
    Time busyUntil_{}; // bytes may come at any moment until then
    std::vector<std::uint8_t> received_;
    std::optional<ChipMemory> lastSound_; // what the chip held before a writing that failed
    bool alive_ = true;
    bool closing_ = false;
    int stumbles_ = 0; // transfers in a row that failed
    Time powerBackAt_{};
};

} // namespace corvane
