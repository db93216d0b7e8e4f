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
/// learns which product it is, passes packets on, and lets the product go again. It is a state
/// machine; "wanted" is `MaintainConnection`:
///
/// | State       | Device | Product      | ready | Goes on to                                     |
/// |-------------|--------|--------------|-------|------------------------------------------------|
/// | Searching   | none   |              | no    | Blank, Idle or, if wanted, Negotiating: found  |
/// | Blank       | a chip that is no link yet | yes |                                            |
/// | Idle        | a link | is let be    | no    | Negotiating: wanted                            |
/// | Negotiating | a link | is greeted   | no    | Connected: it has spoken. Idle: not wanted     |
/// | Connected   | a link | speaks       | yes   | Leaving: not wanted. Negotiating: reset        |
/// | Leaving     | a link | speaks       | yes   | Exiting: asked to exit. Connected: wanted      |
/// | Exiting     | a link | lets go      | no    | Negotiating: wanted                            |
///
/// Leaving and Exiting end in Idle when the product has acknowledged, was asked ten times, or the
/// queue has failed, and each state in Searching when the device is gone. A device that could not
/// be opened is one that goes with the next step.
///
/// A step is an `Update`; the events are raised from within it, except for what a caller changes.
/// A listener must not start a blocking operation.
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
        return state_ != State::Searching && Hindrance_.kind == LinkHindrance::Kind::None;
    }
    /// Class name of the control for the product that was last identified, be it long ago.
    [[nodiscard]] const std::string& Class() const { return Class_; }
    [[nodiscard]] const Version& deviceType() const { return deviceType_; }
    [[nodiscard]] const Version& firmwareVersion() const { return firmwareVersion_; }
    /// Who is behind the link now, as far as this session has told.
    [[nodiscard]] const AttachedProduct& Product() const { return Product_; }
    /// Something has answered a hello since the link began to negotiate.
    [[nodiscard]] bool EchoHeard() const { return echoes_.heard; }
    /// The open device is link hardware and not a blank chip.
    [[nodiscard]] bool IsLinkDevice() const { return state_ > State::Blank; }
    /// The product has spoken, and has not been let go.
    [[nodiscard]] bool Negotiated() const { return state_ >= State::Connected; }

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
    enum class State { Searching, Blank, Idle, Negotiating, Connected, Leaving, Exiting };
    struct Candidate {
        int index = -1; // none
        bool blank = false;
    };
    struct Echoes {
        int missed = 0;           // in a row, 0 to 2
        bool lastMissing = false; // that of the last hello, so far
        bool heard = false;
    };

    template<class Field>
    void report(Field& field, const Field& value) {
        if (value == field)
            return;
        field = value;
        AvailabilityChanged.raise();
    }
    void become(State state);
    /// With a device that has just been opened, or without one.
    void begin(State state);
    /// Of a link that is open and has no session.
    [[nodiscard]] State unsettled() const {
        return MaintainConnection_ ? State::Negotiating : State::Idle;
    }
    void SetIdentity(const std::string& Class, const Version& deviceType,
                     const Version& firmwareVersion);
    void setProduct(const AttachedProduct& product);
    void search();
    Candidate findCandidate(const std::vector<DeviceInfo>& devices);
    void NegotiateStep();
    [[nodiscard]] bool sendHelloIfDue();
    void drain();
    void identify(const KOBuffer& record);
    void noteEcho();
    void UnnegotiateStep();
    void log(const std::string& text) const { with_.debug.DebugWriteLine(text); }

    LinkSurroundings with_;
    State state_ = State::Searching;
    bool MaintainConnection_ = false;
    Echoes echoes_;
    std::optional<std::uint32_t> LastMissTime_;
    std::string Class_;
    Version deviceType_;
    Version firmwareVersion_;
    AttachedProduct Product_;
    int ExitRetries_ = 0; // requests still to send
    std::uint32_t LastExitTime_ = 0;
    bool ResetAfterExit_ = false;
    bool InUse_ = false;
    LinkHindrance Hindrance_;
    std::vector<DeviceInfo> strangers_; // all that is plugged in, if none of it is a link
    // As they were last told.
    bool ReportedReady_ = false;
    bool ReportedConnected_ = false;
    bool ReportedDriver_ = true;
};

/// The control class that a run of the program starts with when no file decides.
[[nodiscard]] std::string StartClass(const RunModes& modes);

} // namespace corvane
