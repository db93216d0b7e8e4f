#pragma once

#include "base/Clock.h"
#include "base/Event.h"
#include "base/KODebug.h"
#include "base/RunModes.h"
#include "kolib/KODevice.h"
#include "kolib/KOPackets.h"
#include "link/AttachedProduct.h"
#include "link/KOPacket.h"

#include <optional>

namespace corvane {

/// What the link works with. All of it must outlive the link.
struct LinkSurroundings {
    KODevice& device;
    KOPackets& packets;
    const KOProductList& products;
    const RunModes& modes;
    const Clock& clock;
    const KODebug& debug;
    Pause& pause; ///< Between the steps of a blocking operation.
};

/// The link to the product: finds a link device, opens it, negotiates with the product behind it,
/// learns which product it is, passes packets on, and lets the product go again. Everything
/// happens in `Update`; the events are raised from within it. A listener must not start a
/// blocking operation.
class KOCommLink {
  public:
    explicit KOCommLink(LinkSurroundings surroundings);

    Event<> ClassChanged;
    Event<const KOPacket&> PacketReceived;
    Event<> ReadyStateChanged;
    /// A device was opened or is gone.
    Event<> ConnectedChanged;
    /// `Product` has changed.
    Event<> ProductChanged;
    /// `DriverExists`, `Hindrance` or `InUse` has changed.
    Event<> AvailabilityChanged;

    /// A device is open.
    [[nodiscard]] bool IsConnected() const {
        return DeviceOpen_ && Hindrance_.kind == LinkHindrance::Kind::None;
    }
    /// Class name of the control for the product that was last identified, be it long ago.
    [[nodiscard]] const std::string& Class() const { return Class_; }
    [[nodiscard]] const Version& deviceType() const { return deviceType_; }
    [[nodiscard]] const Version& firmwareVersion() const { return firmwareVersion_; }
    /// Who is behind the link now, as far as this session has told.
    [[nodiscard]] const AttachedProduct& Product() const { return Product_; }
    /// Something has answered a hello since the link began to negotiate.
    [[nodiscard]] bool EchoHeard() const { return EchoHeard_; }
    /// The open device is link hardware and not a blank chip.
    [[nodiscard]] bool IsLinkDevice() const { return IsLinkDevice_; }
    /// The product has spoken.
    [[nodiscard]] bool Negotiated() const { return Negotiated_; }

    void ResetDevice();
    /// Blocks until the product is there and true, or false after about 5 s without a device, or
    /// 10 s and one reset with a silent one. If `anyDevice` is false, a product of another class
    /// also gives false, and the link stays connected to it.
    [[nodiscard]] bool Connect(const std::string& desiredClass, bool anyDevice);
    /// Why the link that is plugged in is not open, if it is not.
    [[nodiscard]] const LinkHindrance& Hindrance() const { return Hindrance_; }
    /// Another program has it.
    [[nodiscard]] bool Claimed() const { return Hindrance_.kind == LinkHindrance::Kind::Busy; }
    /// From `Connect` on until the product is let go: a job works with it.
    [[nodiscard]] bool InUse() const { return InUse_; }
    /// Begins to let the product go; `pleaseReset` power-cycles it at the end.
    void Disconnect(bool pleaseReset);
    /// The same, and returns when the product has been let go.
    void DisconnectAndBlock(bool pleaseReset);
    [[nodiscard]] bool DriverExists() const { return with_.device.CheckForDriver(); }
    /// Whether the link is to negotiate by itself; false lets the product go.
    [[nodiscard]] bool MaintainConnection() const { return MaintainConnection_; }
    void setMaintainConnection(bool value);
    /// Packets can be exchanged, or blank hardware can be programmed.
    [[nodiscard]] bool ready() const;
    /// One step. Called by the main loop every 50 ms, and by blocking operations in between.
    void Update();
    /// Raises `ReadyStateChanged` if `ready` has changed since it was last told.
    void UpdateReadyState();

    /// A new packet for sending on this link.
    [[nodiscard]] KOPacket makePacket() const { return KOPacket(with_.packets); }

  private:
    template<class Field>
    void report(Field& field, const Field& value) {
        if (value == field)
            return;
        field = value;
        AvailabilityChanged.raise();
    }
    void ClearConnection();
    void SetIdentity(const std::string& Class, const Version& deviceType,
                     const Version& firmwareVersion);
    void setNegotiated(bool value);
    void setProduct(const AttachedProduct& product);
    void search();
    int findCandidate(int count);
    void NegotiateStep();
    [[nodiscard]] bool sendHelloIfDue();
    void drain();
    void identify(const KOBuffer& record);
    void noteEcho();
    void UnnegotiateStep();
    void log(const std::string& text) const { with_.debug.DebugWriteLine(text); }

    LinkSurroundings with_;
    bool DeviceOpen_ = false;
    bool IsLinkDevice_ = false;
    int EchoMisses_ = 0;
    bool EchoMissed_ = false; // that of the last hello, so far
    bool EchoHeard_ = false;
    std::optional<std::uint32_t> LastMissTime_;
    bool Negotiated_ = false;
    bool Unnegotiating_ = false;
    bool ResetAfterExit_ = false;
    bool ReportedReady_ = false;
    bool ReportedConnected_ = false;
    std::string Class_;
    Version deviceType_;
    Version firmwareVersion_;
    AttachedProduct Product_;
    int ExitRetries_ = 0;
    std::uint32_t LastExitTime_ = 0;
    bool MaintainConnection_ = false;
    bool InUse_ = false;
    LinkHindrance Hindrance_;
    bool ReportedDriver_ = true;
};

/// The control class that a run of the program starts with when no file decides.
[[nodiscard]] std::string StartClass(const RunModes& modes);

} // namespace corvane
