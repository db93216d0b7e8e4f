#pragma once

#include "kolib/devices/DeviceHolder.h"
#include "kolib/devices/LinkMessages.h"
#include "kolib/devices/LinkPort.h"
#include "kolib/devices/Socket.h"

namespace corvane {

/// An opened virtual link: a program of its own that stands for the link and what hangs on it.
class VirtualLinkPort final : public LinkPort {
  public:
    /// Asks the link for its serial bytes. Busy if the link has them for somebody else, which shows
    /// in its closing the connection; it has a moment to answer.
    [[nodiscard]] static OpenOutcome open(const std::string& path, DeviceHolder& holders);

    [[nodiscard]] std::size_t read(std::span<std::uint8_t> target) override;
    void write(wire::ByteView bytes) override;
    void service() override {}
    [[nodiscard]] bool alive() const override { return socket_.connected() && !messages_.broken(); }
    void powerCycle() override;
    [[nodiscard]] bool writeStrings(const DeviceInfo& strings) override;
    [[nodiscard]] int descriptor() const override { return socket_.descriptor(); }
    void waitForData(int milliseconds) override;

  private:
    explicit VirtualLinkPort(Socket socket) : socket_(std::move(socket)) {}
    [[nodiscard]] bool admitted();
    void receive();

    Socket socket_;
    LinkMessages messages_;
    std::vector<std::uint8_t> serial_;
    std::size_t serialStart_ = 0;
    bool answered_ = false;
    std::optional<bool> stringsDone_;
};

} // namespace corvane
