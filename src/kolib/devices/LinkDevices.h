#pragma once

#include "base/Clock.h"
#include "base/Event.h"
#include "base/KODebug.h"
#include "kolib/KODevice.h"
#include "kolib/devices/LinkPort.h"
#include "kolib/wire/HostSession.h"

#include <optional>

namespace corvane {

/// All link devices of this machine, source after source in the order given, and the one that is
/// open. What arrives on it goes to the session, which must live as long.
class LinkDevices final : public KODevice {
  public:
    LinkDevices(std::vector<std::unique_ptr<LinkSource>> sources, wire::HostSession& session,
                const KODebug& debug, const Clock& clock)
        : sources_(std::move(sources)), session_(session), debug_(debug), clock_(clock) {}
    ~LinkDevices() override { CloseDevice(); }
    LinkDevices(const LinkDevices&) = delete;
    LinkDevices& operator=(const LinkDevices&) = delete;

    /// True before a device is opened, false once it is closed.
    Event<bool> HoldingChanged;

    void EnumerateDevices() override;
    [[nodiscard]] int GetDeviceCount() const override { return static_cast<int>(list_.size()); }
    [[nodiscard]] DeviceInfo GetDeviceInfo(int index) const override;
    [[nodiscard]] bool EnumerationPending() const override;
    void OpenDevice(int index) override;
    [[nodiscard]] LinkHindrance Hindrance() const override { return hindrance_; }
    void CloseDevice() override;
    int GetDeviceState2() override;
    void ResetDevice() override;
    bool CheckForDriver() override;
    bool ProgramDevice(const DeviceInfo& strings) override;
    [[nodiscard]] int Descriptor() const override { return port_ ? port_->descriptor() : -1; }
    void WaitForData(int milliseconds) override;

  private:
    struct Listed {
        LinkSource* source = nullptr;
        std::size_t index = 0;
        LinkSource::Device device;
    };

    struct Failed {
        int index = 0;
        std::uint32_t at = 0;
    };

    std::vector<std::unique_ptr<LinkSource>> sources_;
    wire::HostSession& session_;
    const KODebug& debug_;
    const Clock& clock_;
    std::vector<Listed> list_;
    bool changed_ = false; // a source has changed since the list was made
    std::unique_ptr<LinkPort> port_;
    std::optional<Failed> failed_; // what did not open last, of the list as it is
    LinkHindrance hindrance_;
};

} // namespace corvane
