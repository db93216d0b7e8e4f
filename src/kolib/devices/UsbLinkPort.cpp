#include "kolib/devices/UsbLinkPort.h"

#include <ftdi.h>
#include <libusb.h>

#include <algorithm>
#include <thread>

namespace corvane {

namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr auto PowerOffTime = 100ms;
constexpr unsigned char ReadEndpoint = 0x81;
constexpr unsigned char WriteEndpoint = 0x02;
constexpr unsigned WriteTimeout = 500; // ms
// The chip holds 256 bytes, 10 ms of the wire, and ends a transfer each millisecond. So many under
// way keep what comes while this program does not get its turn.
constexpr std::size_t Readings = 64;
constexpr std::size_t IdleReadings = 8; // enough while nobody is expected to speak
constexpr auto SpeakingTime = 1s;
constexpr std::size_t ReadingSize = 1024;    // bytes, a whole number of USB packets
constexpr std::size_t PacketSize = 64;       // bytes, of a full-speed bulk endpoint
constexpr std::size_t StatusLength = 2;      // modem status at the head of each packet
constexpr std::size_t ReceivedLimit = 65536; // bytes that nobody has taken
constexpr int StumblesLimit = 20;

OpenOutcome refused(int error, const std::string& node, DeviceHolder& holders) {
    using Kind = LinkHindrance::Kind;
    switch (error) {
    case LIBUSB_ERROR_ACCESS:
        return {nullptr,
                "The link device may not be opened: no permission to use " + node +
                    ". Install the udev rule 60-corvane.rules and plug the link in again.",
                {Kind::Forbidden, {}}};
    case LIBUSB_ERROR_BUSY: {
        std::string holder = holders.of(node);
        return {nullptr,
                "The link device is busy: " +
                    (holder.empty() ? "another program or a system service" : holder) +
                    " has claimed it. Close that program, or stop the service, and try again.",
                {Kind::Busy, std::move(holder)}};
    }
    case LIBUSB_ERROR_NO_DEVICE:
    case LIBUSB_ERROR_NOT_FOUND:
        return {nullptr, "The link device is gone.", {}};
    default:
        return {nullptr,
                std::string("The link device can't be opened (") + libusb_strerror(error) +
                    "). Unplug it, plug it in again, and try another USB port if it stays so.",
                {Kind::Broken, {}}};
    }
}

int codeOf(libusb_transfer_status status) {
    switch (status) {
    case LIBUSB_TRANSFER_COMPLETED:
        return LIBUSB_SUCCESS;
    case LIBUSB_TRANSFER_NO_DEVICE:
        return LIBUSB_ERROR_NO_DEVICE;
    case LIBUSB_TRANSFER_STALL:
        return LIBUSB_ERROR_PIPE;
    case LIBUSB_TRANSFER_TIMED_OUT:
        return LIBUSB_ERROR_TIMEOUT;
    default:
        return LIBUSB_ERROR_IO;
    }
}

} // namespace

OpenOutcome UsbLinkPort::open(ftdi_context* ftdi, libusb_device* device, const std::string& node,
                              DeviceHolder& holder) {
    int error = LIBUSB_SUCCESS;
    std::unique_ptr<UsbChip> chip = UsbChip::open(ftdi, device, error);
    if (!chip)
        return refused(error, node, holder);
    std::unique_ptr<UsbLinkPort> port(new UsbLinkPort(ftdi->usb_ctx, std::move(chip)));
    port->makeReadings();
    return {std::move(port), {}};
}

UsbLinkPort::UsbLinkPort(libusb_context* context, std::unique_ptr<UsbChip> chip)
    : context_(context), chip_(std::move(chip)) {}

UsbLinkPort::~UsbLinkPort() {
    // A product must not stay without power because the program ends in the middle.
    if (powerBackAt_ != Time{}) {
        std::this_thread::sleep_until(powerBackAt_);
        givePowerBack();
    }
    endReadings();
}

std::size_t UsbLinkPort::read(std::span<std::uint8_t> target) {
    const std::size_t count = std::min(target.size(), received_.size());
    std::copy_n(received_.begin(), count, target.begin());
    received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(count));
    return count;
}

void UsbLinkPort::write(wire::ByteView bytes) {
    if (!alive_ || bytes.empty())
        return;
    // Before the request goes out, so that an answer at once finds room.
    busyUntil_ = SteadyClock::now() + SpeakingTime;
    submitAll();
    std::vector<std::uint8_t> outgoing(bytes.begin(), bytes.end()); // the library wants them so
    judge(libusb_bulk_transfer(chip_->handle(), WriteEndpoint, outgoing.data(),
                               static_cast<int>(outgoing.size()), nullptr, WriteTimeout),
          WriteEndpoint);
}

void UsbLinkPort::service() {
    handleEvents(0);
    if (powerBackAt_ != Time{} && SteadyClock::now() >= powerBackAt_)
        givePowerBack();
}

void UsbLinkPort::powerCycle() {
    judge(chip_->setRts(false), 0);
    powerBackAt_ = SteadyClock::now() + PowerOffTime;
}

void UsbLinkPort::givePowerBack() {
    powerBackAt_ = {};
    alive_ = chip_->setRts(true) == LIBUSB_SUCCESS && alive_;
}

bool UsbLinkPort::writeStrings(const DeviceInfo& strings) {
    const std::optional<ChipMemory> present = chip_->readMemory();
    if (!present)
        return false;
    if (IsSound(*present))
        lastSound_ = present;
    const std::optional<ChipMemory> changed =
        lastSound_ ? WithStrings(*lastSound_, strings) : chip_->freshMemory(strings);
    if (!changed || !chip_->writeMemory(*changed))
        return false;
    lastSound_.reset();
    return true;
}

void UsbLinkPort::waitForData(int milliseconds) {
    if (received_.empty())
        handleEvents(milliseconds);
}

void UsbLinkPort::makeReadings() {
    for (std::size_t i = 0; i < Readings; ++i) {
        auto reading = std::make_unique<Reading>();
        reading->port = this;
        reading->buffer.resize(ReadingSize);
        reading->transfer = libusb_alloc_transfer(0);
        if (reading->transfer == nullptr)
            break;
        libusb_fill_bulk_transfer(
            reading->transfer, chip_->handle(), ReadEndpoint, reading->buffer.data(),
            static_cast<int>(ReadingSize),
            [](libusb_transfer* transfer) {
                auto& ended = *static_cast<Reading*>(transfer->user_data);
                ended.underWay = false;
                if (ended.port != nullptr)
                    ended.port->readingEnded(ended);
            },
            reading.get(), 0);
        readings_.push_back(std::move(reading));
        if (i < IdleReadings)
            submit(*readings_.back());
    }
    alive_ = alive_ && underWay_ > 0;
}

void UsbLinkPort::submitAll() {
    for (const auto& reading : readings_)
        if (!reading->underWay && alive_)
            submit(*reading);
}

void UsbLinkPort::submit(Reading& reading) {
    const int result = libusb_submit_transfer(reading.transfer);
    reading.underWay = result == LIBUSB_SUCCESS;
    if (reading.underWay)
        ++underWay_;
    else
        judge(result, ReadEndpoint);
}

void UsbLinkPort::readingEnded(Reading& reading) {
    --underWay_;
    if (closing_)
        return;
    takePackets(reading);
    judge(codeOf(reading.transfer->status), ReadEndpoint);
    if (alive_ && (underWay_ < IdleReadings || SteadyClock::now() < busyUntil_))
        submit(reading);
}

void UsbLinkPort::takePackets(const Reading& reading) {
    const auto length = static_cast<std::size_t>(reading.transfer->actual_length);
    for (std::size_t at = 0; at < length; at += PacketSize) {
        const std::size_t end = std::min(at + PacketSize, length);
        if (end - at <= StatusLength || received_.size() >= ReceivedLimit)
            continue;
        received_.insert(received_.end(),
                         reading.buffer.begin() + static_cast<std::ptrdiff_t>(at + StatusLength),
                         reading.buffer.begin() + static_cast<std::ptrdiff_t>(end));
        busyUntil_ = SteadyClock::now() + SpeakingTime;
    }
}

void UsbLinkPort::endReadings() {
    // A cancelled transfer ends later, by an event; its buffer must stay until then.
    closing_ = true;
    for (const auto& reading : readings_)
        if (reading->underWay)
            libusb_cancel_transfer(reading->transfer);
    const auto giveUp = SteadyClock::now() + 1s;
    while (underWay_ > 0 && SteadyClock::now() < giveUp)
        handleEvents(10);
    for (auto& reading : readings_) {
        if (!reading->underWay) {
            libusb_free_transfer(reading->transfer);
        } else {
            reading->port = nullptr;
            static_cast<void>(reading.release()); // the system still holds it
        }
    }
}

/// A transfer that failed has lost bytes, which the transport makes good: only a device that is
/// gone, or that fails again and again, is given up.
void UsbLinkPort::judge(int result, unsigned char endpoint) {
    if (result >= LIBUSB_SUCCESS) {
        stumbles_ = 0;
        return;
    }
    const bool stalled = result == LIBUSB_ERROR_PIPE && endpoint != 0;
    if ((stalled ? libusb_clear_halt(chip_->handle(), endpoint) : result) == LIBUSB_ERROR_NO_DEVICE)
        alive_ = false;
    alive_ = alive_ && ++stumbles_ < StumblesLimit;
}

void UsbLinkPort::handleEvents(int milliseconds) {
    timeval limit{0, suseconds_t{milliseconds} * 1000};
    libusb_handle_events_timeout_completed(context_, &limit, nullptr);
}

} // namespace corvane
