#pragma once

#include "kolib/devices/LinkMessages.h"
#include "kolib/devices/LinkPort.h"
#include "kolib/devices/Socket.h"

namespace corvane {

/// An opened virtual link: a program of its own that stands for the link and what hangs on it.
class VirtualLinkPort final : public LinkPort {
  public:
    explicit VirtualLinkPort(Socket socket);

    [[nodiscard]] std::size_t read(std::span<std::uint8_t> target) override;
    void write(wire::ByteView bytes) override;
    void service() override {}
    [[nodiscard]] bool alive() const override { return socket_.connected() && !messages_.broken(); }
    void powerCycle() override;
    [[nodiscard]] bool writeStrings(const DeviceInfo& strings) override;
    [[nodiscard]] int descriptor() const override { return socket_.descriptor(); }
    void waitForData(int milliseconds) override;

  private:
    void receive();

    Socket socket_;
    LinkMessages messages_;
    std::vector<std::uint8_t> serial_;
    std::size_t serialStart_ = 0;
    std::optional<bool> stringsDone_;
};

} // namespace corvane
