#include "link/KOCommLink.h"

#include <array>

namespace corvane {

namespace {

constexpr int HelloValue = 125;
constexpr std::int32_t HelloSpacing = 500; // ms
constexpr int MissedEchoes = 2;

constexpr int ExitRequests = 10;
constexpr std::int32_t ExitSpacing = 250;   // ms
constexpr int ExitAcknowledged = -1;        // in place of the requests still to send
constexpr std::int32_t ConnectStage = 5000; // ms

constexpr int IdentificationChannel = 0;
constexpr int SilenceChannel = 1;
constexpr int ExitAcknowledgeChannel = 126;
constexpr int ExitChannel = 127;

bool isProgrammedLink(const DeviceInfo& info) {
    return info.Manufacturer == "Ortaline Works" && info.Description == "Corvane";
}

bool isBlankHardware(const DeviceInfo& info) {
    return info.Manufacturer == "FTDI" && info.Description == "FT232R USB UART";
}

} // namespace

std::string StartClass(const RunModes& modes) {
    if (modes.EEPROMMode)
        return "Corvane.EEPROMEditorControl";
    return modes.ProgramMode ? "Corvane.DefaultControl" : "Corvane.LumoraControl";
}

KOCommLink::KOCommLink(LinkSurroundings surroundings)
    : with_(surroundings), Class_(StartClass(surroundings.modes)) {}

void KOCommLink::ResetDevice() {
    if (!DeviceOpen_)
        return;
    log("Resetting device.");
    with_.device.ResetDevice();
    setNegotiated(false);
    ResetAfterExit_ = false;
}

bool KOCommLink::Connect(const std::string& desiredClass, bool anyDevice) {
    report(InUse_, true);
    if (MaintainConnection_) {
        log("Already connected to a device.");
    } else {
        std::uint32_t start = with_.clock.now();
        bool resetTried = false;
        setMaintainConnection(true);
        log("Making connection attempt.");
        while (!DeviceOpen_ || !Negotiated_) {
            if (!DriverExists()) {
                log("Driver does not exist.");
                setMaintainConnection(false);
                return false;
            }
            if (Elapsed(with_.clock.now(), start) > ConnectStage) {
                if (resetTried || !IsConnected()) {
                    log("Connection to '" + desiredClass + "' timed out.");
                    setMaintainConnection(false);
                    return false;
                }
                log("Trying resetting the device.");
                ResetDevice();
                start = with_.clock.now();
                resetTried = true;
            }
            Update();
            if (!DeviceOpen_ || !Negotiated_)
                with_.pause.pause();
        }
    }
    if (anyDevice)
        return true;
    if (Class_ == desiredClass) {
        log("Got '" + Class_ + "', good.");
        return true;
    }
    log("Wrong product: got '" + Class_ + "', needed '" + desiredClass + "'.");
    return false;
}

void KOCommLink::Disconnect(bool pleaseReset) {
    setMaintainConnection(false);
    ResetAfterExit_ = DeviceOpen_ && pleaseReset;
}

void KOCommLink::DisconnectAndBlock(bool pleaseReset) {
    Disconnect(pleaseReset);
    while (Negotiated_) {
        Update();
        if (Negotiated_)
            with_.pause.pause();
    }
}

void KOCommLink::setMaintainConnection(bool value) {
    if (!value)
        report(InUse_, false);
    if (MaintainConnection_ == value)
        return;
    MaintainConnection_ = value;
    EchoHeard_ = EchoHeard_ && !value;
    ExitRetries_ = value ? 0 : ExitRequests;
    LastExitTime_ = with_.clock.now();
}

bool KOCommLink::ready() const {
    return IsConnected() && ((Negotiated_ && !Unnegotiating_) || !IsLinkDevice_);
}

void KOCommLink::Update() {
    if (!DeviceOpen_) {
        search();
    } else if (with_.device.GetDeviceState2() != -1) {
        with_.device.CloseDevice();
        log("Disconnected.");
        log("");
        ClearConnection();
    } else if (MaintainConnection_) {
        NegotiateStep();
    } else {
        UnnegotiateStep();
    }
    report(ReportedDriver_, DriverExists());
    if (IsConnected() != ReportedConnected_) {
        ReportedConnected_ = IsConnected();
        ConnectedChanged.raise();
    }
    UpdateReadyState();
}

void KOCommLink::UpdateReadyState() {
    if (ready() == ReportedReady_)
        return;
    ReportedReady_ = ready();
    ReadyStateChanged.raise();
}

void KOCommLink::ClearConnection() {
    DeviceOpen_ = false;
    setNegotiated(false);
    EchoMisses_ = 0;
    EchoMissed_ = false;
    EchoHeard_ = false;
}

void KOCommLink::setNegotiated(bool value) {
    Negotiated_ = value;
    if (!value)
        setProduct({});
}

void KOCommLink::setProduct(const AttachedProduct& product) {
    if (product == Product_)
        return;
    Product_ = product;
    ProductChanged.raise();
}

void KOCommLink::SetIdentity(const std::string& Class, const Version& deviceType,
                             const Version& firmwareVersion) {
    if (Class == Class_ && deviceType.Equals(deviceType_) &&
        firmwareVersion.Equals(firmwareVersion_))
        return;
    Class_ = Class;
    deviceType_ = deviceType;
    firmwareVersion_ = firmwareVersion;
    ClassChanged.raise();
}

void KOCommLink::search() {
    with_.device.EnumerateDevices();
    const int count = with_.device.GetDeviceCount();
    if (count <= 0)
        return report(Hindrance_, {});
    log(std::to_string(count) + " device(s).");
    const int candidate = findCandidate(count);
    if (candidate >= 0) {
        with_.device.OpenDevice(candidate);
        ClearConnection();
        DeviceOpen_ = true;
        log("Connected to device " + std::to_string(candidate) + ".");
        report(Hindrance_,
               with_.device.GetDeviceState2() == -1 ? LinkHindrance{} : with_.device.Hindrance());
    } else {
        log("No viable candidates found.");
        report(Hindrance_, {});
    }
    log("");
}

int KOCommLink::findCandidate(int count) {
    int candidate = -1;
    for (int index = 0; index < count; ++index) {
        const DeviceInfo info = with_.device.GetDeviceInfo(index);
        log("  Candidate device " + std::to_string(index) + ":");
        log("    Description: " + info.Description);
        log("    Manufacturer: " + info.Manufacturer);
        log("    Manufacturer ID: " + info.ManufacturerID);
        log("    Serial Number: " + info.SerialNumber);
        if (!isBlankHardware(info) && !with_.modes.ProgramAnyDevice) {
            if (isProgrammedLink(info)) {
                IsLinkDevice_ = true;
                candidate = index;
            }
        } else if (with_.modes.ProgramMode) {
            IsLinkDevice_ = false;
            candidate = index;
            SetIdentity("Corvane.ProgrammerControl", Version(), Version());
        }
    }
    return candidate;
}

void KOCommLink::NegotiateStep() {
    // An exit handshake that was given up half-way must not stand in the way of a new session.
    if (Negotiated_ && Unnegotiating_)
        setNegotiated(false);
    Unnegotiating_ = false;
    if (!IsLinkDevice_)
        return;
    const bool helloSent = sendHelloIfDue();
    drain();
    if (helloSent && !Negotiated_)
        noteEcho();
}

bool KOCommLink::sendHelloIfDue() {
    if (Negotiated_ ||
        (LastMissTime_ && Elapsed(with_.clock.now(), *LastMissTime_) <= HelloSpacing))
        return false;
    if (EchoMisses_ == MissedEchoes) {
        log("False alarm.");
        EchoMisses_ = 0;
    }
    if (std::exchange(EchoMissed_, false) && with_.packets.ReceivedHello()) {
        log("Echo received late.");
        EchoHeard_ = true;
    }
    if (!with_.packets.SendHello(HelloValue))
        log("Hello send failed.");
    return true;
}

void KOCommLink::drain() {
    int channel = 0;
    int length = 0;
    while (with_.packets.ReceivePacket(channel, length)) {
        std::vector<std::uint8_t> data(static_cast<std::size_t>(length));
        if (length > 0)
            with_.packets.ReceivePacketData(data);
        log("Received packet on channel " + std::to_string(channel) + " (length " +
            std::to_string(length) + ").");
        const bool signOfLife = channel != ExitChannel && channel != SilenceChannel;
        if (signOfLife && !Negotiated_) {
            setNegotiated(true);
            log("Ready.");
        }
        KOPacket packet = makePacket();
        packet.setChannel(channel);
        packet.buffer().AppendArray(data, 0, length - 1);
        if (channel == IdentificationChannel)
            identify(packet.buffer());
        else if (signOfLife)
            PacketReceived.raise(packet);
    }
}

void KOCommLink::identify(const KOBuffer& record) {
    Version deviceType;
    Version firmwareVersion;
    const KOProductProfile* product =
        with_.products.ByIdentificationBuffer(record, deviceType, firmwareVersion);
    AttachedProduct attached{AttachedProduct::Record::Damaged, product, deviceType,
                             firmwareVersion};
    if (product != nullptr) {
        attached.record = AttachedProduct::Record::Known;
    } else if (KOProductList::IsRecord(record)) {
        attached.record = AttachedProduct::Record::Unknown;
        attached.deviceType = Version(record.Data(1), record.Data(2));
        attached.firmwareVersion = Version(record.Data(3), record.Data(4));
    }
    setProduct(attached);
    if (product == nullptr) {
        log("Unrecognized product.");
        return;
    }
    SetIdentity(product->Class, deviceType, firmwareVersion);
    log("Detected product '" + product->Name + "'.");
}

void KOCommLink::noteEcho() {
    if (with_.packets.ReceivedHello()) {
        log("Echo received.");
        EchoMisses_ = 0;
        EchoHeard_ = true;
    } else if (EchoMisses_ < MissedEchoes) {
        log("Echo missed.");
        ++EchoMisses_;
        EchoMissed_ = true;
        LastMissTime_ = with_.clock.now();
        if (EchoMisses_ == MissedEchoes)
            log("Waiting for identifier.");
    }
}

void KOCommLink::UnnegotiateStep() {
    if (!IsLinkDevice_)
        return;
    int channel = 0;
    int length = 0;
    while (with_.packets.ReceivePacket(channel, length)) {
        if (channel != ExitAcknowledgeChannel)
            continue;
        log("Received packet acknowledging exit request.");
        ExitRetries_ = ExitAcknowledged;
    }
    if (!Negotiated_)
        return;

    int errorCount = 0;
    const int unsent = with_.packets.SendQueue(errorCount);
    if (errorCount != 0) {
        log("Unnegotiation complete, with errors.");
        setNegotiated(false);
        Unnegotiating_ = true;
        ResetDevice();
    } else if (unsent > 0) {
        return;
    } else if (ExitRetries_ > 0) {
        if (Elapsed(with_.clock.now(), LastExitTime_) <= ExitSpacing)
            return;
        KOPacket request = makePacket();
        request.setChannel(ExitChannel);
        static_cast<void>(request.Send()); // one that is not accepted counts as not answered
        --ExitRetries_;
        log("Unnegotiating...");
        Unnegotiating_ = true;
        LastExitTime_ = with_.clock.now();
    } else {
        log("Unnegotiation complete.");
        setNegotiated(false);
        Unnegotiating_ = false;
        if (ResetAfterExit_)
            ResetDevice();
    }
}

} // namespace corvane
