#include "link/KOCommLink.h"

#include <array>

namespace corvane {

namespace {

constexpr int HelloValue = 125;
constexpr std::int32_t HelloSpacing = 500; // ms
constexpr int MissedEchoes = 2;

constexpr int ExitRequests = 10;
constexpr std::int32_t ExitSpacing = 250;   // ms
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
        return ControlClass::EEPROMEditor;
    return modes.ProgramMode ? ControlClass::Default : ControlClass::Lumora;
}

KOCommLink::KOCommLink(LinkSurroundings surroundings)
    : with_(surroundings), Class_(StartClass(surroundings.modes)) {}

void KOCommLink::ResetDevice() {
    if (state_ == State::Searching)
        return;
    log("Resetting device.");
    with_.device.ResetDevice();
    ResetAfterExit_ = false;
    if (IsLinkDevice())
        become(unsettled());
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
        while (!Negotiated()) {
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
            if (!Negotiated())
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
    ResetAfterExit_ = state_ != State::Searching && pleaseReset;
}

void KOCommLink::DisconnectAndBlock(bool pleaseReset) {
    Disconnect(pleaseReset);
    while (Negotiated()) {
        Update();
        if (Negotiated())
            with_.pause.pause();
    }
}

void KOCommLink::setMaintainConnection(bool value) {
    if (!value)
        report(InUse_, false);
    if (MaintainConnection_ == value)
        return;
    MaintainConnection_ = value;
    echoes_.heard = echoes_.heard && !value;
    ExitRetries_ = value ? 0 : ExitRequests;
    LastExitTime_ = with_.clock.now();
    if (state_ == State::Connected)
        become(State::Leaving);
    else if (state_ == State::Leaving)
        become(State::Connected); // nothing has been asked of the product yet
    else if (IsLinkDevice())
        become(unsettled()); // an exit that is under way does not stand in the way of a new session
}

bool KOCommLink::ready() const {
    return IsConnected() &&
           (state_ == State::Blank || state_ == State::Connected || state_ == State::Leaving);
}

void KOCommLink::Update() {
    if (state_ == State::Searching) {
        search();
    } else if (with_.device.GetDeviceState2() != -1) {
        with_.device.CloseDevice();
        log("Disconnected.");
        log("");
        begin(State::Searching);
    } else if (state_ == State::Negotiating || state_ == State::Connected) {
        NegotiateStep();
    } else if (state_ != State::Blank) {
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

void KOCommLink::become(State state) {
    state_ = state;
    if (!Negotiated())
        setProduct({});
}

void KOCommLink::begin(State state) {
    echoes_ = {};
    become(state);
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
    std::vector<DeviceInfo> devices;
    for (int index = 0; index < count; ++index)
        devices.push_back(with_.device.GetDeviceInfo(index));
    // None of them is one, as was told when they came.
    if (count > 0 && devices == strangers_)
        return;
    strangers_.clear();
    if (count <= 0)
        return report(Hindrance_, {});
    log(std::to_string(count) + " device(s).");
    const Candidate candidate = findCandidate(devices);
    if (candidate.index >= 0) {
        with_.device.OpenDevice(candidate.index);
        begin(candidate.blank ? State::Blank : unsettled());
        log("Connected to device " + std::to_string(candidate.index) + ".");
        report(Hindrance_,
               with_.device.GetDeviceState2() == -1 ? LinkHindrance{} : with_.device.Hindrance());
    } else {
        log("No viable candidates found.");
        const DeviceInfo& last = devices.back();
        report(Hindrance_, {LinkHindrance::Kind::Stranger,
                            "'" + last.Description + "' of '" + last.Manufacturer + "'"});
        strangers_ = std::move(devices);
    }
    log("");
}

KOCommLink::Candidate KOCommLink::findCandidate(const std::vector<DeviceInfo>& devices) {
    Candidate candidate;
    int index = -1;
    for (const DeviceInfo& info : devices) {
        ++index;
        log("  Candidate device " + std::to_string(index) + ":");
        log("    Description: " + info.Description);
        log("    Manufacturer: " + info.Manufacturer);
        log("    Manufacturer ID: " + info.ManufacturerID);
        log("    Serial Number: " + info.SerialNumber);
        if (!isBlankHardware(info) && !with_.modes.ProgramAnyDevice) {
            if (isProgrammedLink(info))
                candidate = {index, false};
        } else if (with_.modes.ProgramMode) {
            candidate = {index, true};
            SetIdentity(ControlClass::Programmer, Version(), Version());
        }
    }
    return candidate;
}

void KOCommLink::NegotiateStep() {
    const bool helloSent = sendHelloIfDue();
    drain();
    if (helloSent && state_ == State::Negotiating)
        noteEcho();
}

bool KOCommLink::sendHelloIfDue() {
    if (Negotiated() ||
        (LastMissTime_ && Elapsed(with_.clock.now(), *LastMissTime_) <= HelloSpacing))
        return false;
    if (echoes_.missed == MissedEchoes) {
        log("False alarm.");
        echoes_.missed = 0;
    }
    if (std::exchange(echoes_.lastMissing, false) && with_.packets.ReceivedHello()) {
        log("Echo received late.");
        echoes_.heard = true;
    }
    if (!with_.packets.SendHello(HelloValue))
        log("Hello send failed.");
    return true;
}

void KOCommLink::drain() {
    int channel = 0;
    int length = 0;
    // A listener may have ended the session; what is left of it is nobody's then.
    while (state_ > State::Idle && with_.packets.ReceivePacket(channel, length)) {
        std::vector<std::uint8_t> data(static_cast<std::size_t>(length));
        if (length > 0)
            with_.packets.ReceivePacketData(data);
        log("Received packet on channel " + std::to_string(channel) + " (length " +
            std::to_string(length) + ").");
        const bool signOfLife = channel != ExitChannel && channel != SilenceChannel;
        if (signOfLife && state_ == State::Negotiating) {
            become(State::Connected);
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
        echoes_.missed = 0;
        echoes_.heard = true;
    } else if (echoes_.missed < MissedEchoes) {
        log("Echo missed.");
        ++echoes_.missed;
        echoes_.lastMissing = true;
        LastMissTime_ = with_.clock.now();
        if (echoes_.missed == MissedEchoes)
            log("Waiting for identifier.");
    }
}

void KOCommLink::UnnegotiateStep() {
    int channel = 0;
    int length = 0;
    while (with_.packets.ReceivePacket(channel, length)) {
        if (channel != ExitAcknowledgeChannel)
            continue;
        log("Received packet acknowledging exit request.");
        ExitRetries_ = 0;
    }
    if (!Negotiated())
        return;

    int errorCount = 0;
    const int unsent = with_.packets.SendQueue(errorCount);
    if (errorCount != 0) {
        log("Unnegotiation complete, with errors.");
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
        become(State::Exiting);
        LastExitTime_ = with_.clock.now();
    } else {
        log("Unnegotiation complete.");
        become(State::Idle);
        if (ResetAfterExit_)
            ResetDevice();
    }
}

} // namespace corvane
