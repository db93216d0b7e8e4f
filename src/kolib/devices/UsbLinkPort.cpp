#include "kolib/devices/UsbLinkPort.h"

#include "kolib/devices/ChipMemory.h"

#include <ftdi.h>
#include <libusb.h>

#include <algorithm>

namespace corvane {

namespace {

using namespace std::chrono_literals;

constexpr int BaudRate = 250000;
constexpr unsigned char LatencyMilliseconds = 1;
constexpr auto PowerOffTime = 100ms;
constexpr int WriteTimeout = 500; // ms
constexpr std::size_t ReadingsUnderWay = 8;
constexpr std::size_t ReadingSize = 512;     // bytes, a whole number of USB packets
constexpr std::size_t PacketSize = 64;       // bytes, of a full-speed bulk endpoint
constexpr std::size_t StatusLength = 2;      // modem status at the head of each packet
constexpr std::size_t ReceivedLimit = 65536; // bytes that nobody has taken

std::string openProblem(int result, const char* reason) {
    if (result == -5)
        return "The link device is busy: another program or a system service has claimed it. "
               "Close that program, or stop the service, and try again.";
    return std::string("The link device can't be opened (") + reason +
           "). Unplug it, plug it in again, and try another USB port if it stays so.";
}

} // namespace

UsbLinkPort::Chip::~Chip() {
    if (context != nullptr)
        ftdi_free(context); // closes, and gives the kernel's driver back
}

OpenOutcome UsbLinkPort::open(libusb_context* context, libusb_device* device) {
    auto chip = std::make_unique<Chip>();
    chip->context = ftdi_new();
    if (chip->context == nullptr)
        return {nullptr, "The link device can't be opened: no memory."};
    ftdi_context* ftdi = chip->context;
    ftdi->module_detach_mode = AUTO_DETACH_REATACH_SIO_MODULE;
    ftdi->usb_write_timeout = WriteTimeout;
    if (const int result = ftdi_usb_open_dev(ftdi, device); result < 0)
        return {nullptr, openProblem(result, ftdi_get_error_string(ftdi))};
    if (ftdi_set_baudrate(ftdi, BaudRate) < 0 ||
        ftdi_set_line_property(ftdi, BITS_8, STOP_BIT_1, NONE) < 0 ||
        ftdi_setflowctrl(ftdi, SIO_DISABLE_FLOW_CTRL) < 0 ||
        ftdi_set_latency_timer(ftdi, LatencyMilliseconds) < 0 || ftdi_setrts(ftdi, 1) < 0)
        return {nullptr, openProblem(0, ftdi_get_error_string(ftdi))};
    std::unique_ptr<UsbLinkPort> port(new UsbLinkPort(context, std::move(chip)));
    port->startReading();
    return {std::move(port), {}};
}

UsbLinkPort::UsbLinkPort(libusb_context* context, std::unique_ptr<Chip> chip)
    : context_(context), chip_(std::move(chip)) {}

UsbLinkPort::~UsbLinkPort() {
    closing_ = true;
    for (const auto& reading : readings_)
        if (reading->underWay)
            libusb_cancel_transfer(reading->transfer);
    const auto isUnderWay = [](const auto& reading) { return reading->underWay; };
    const auto giveUp = std::chrono::steady_clock::now() + 1s;
    while (std::any_of(readings_.begin(), readings_.end(), isUnderWay) &&
           std::chrono::steady_clock::now() < giveUp)
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

std::size_t UsbLinkPort::read(std::span<std::uint8_t> target) {
    const std::size_t count = std::min(target.size(), received_.size());
    std::copy_n(received_.begin(), count, target.begin());
    received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(count));
    return count;
}

void UsbLinkPort::write(wire::ByteView bytes) {
    if (!alive_ || bytes.empty())
        return;
    const int result =
        ftdi_write_data(chip_->context, bytes.data(), static_cast<int>(bytes.size()));
    // A write that only took too long has lost bytes, which the transport makes good.
    alive_ = result >= 0 || result == LIBUSB_ERROR_TIMEOUT;
}

void UsbLinkPort::service() {
    handleEvents(0);
    if (powerBackAt_ == std::chrono::steady_clock::time_point{} ||
        std::chrono::steady_clock::now() < powerBackAt_)
        return;
    powerBackAt_ = {};
    alive_ = ftdi_setrts(chip_->context, 1) == 0 && alive_;
}

void UsbLinkPort::powerCycle() {
    alive_ = ftdi_setrts(chip_->context, 0) == 0 && alive_;
    powerBackAt_ = std::chrono::steady_clock::now() + PowerOffTime;
}

bool UsbLinkPort::writeStrings(const DeviceInfo& strings) {
    ftdi_context* ftdi = chip_->context;
    // The defaults prepare the library for this chip, and stand in for a content that is broken.
    // The library takes the texts as changeable.
    std::string manufacturer = strings.Manufacturer;
    std::string product = strings.Description;
    std::string serial = strings.SerialNumber;
    if (ftdi_eeprom_initdefaults(ftdi, manufacturer.data(), product.data(), serial.data()) != 0 ||
        ftdi_read_eeprom(ftdi) != 0)
        return false;
    ChipMemory memory{};
    constexpr int size = std::tuple_size_v<ChipMemory>;
    if (ftdi_get_eeprom_buf(ftdi, memory.data(), size) != 0)
        return false;
    if (IsSound(memory)) {
        std::optional<ChipMemory> changed = WithStrings(memory, strings);
        if (!changed || ftdi_set_eeprom_buf(ftdi, changed->data(), size) != 0)
            return false;
    } else if (ftdi_eeprom_build(ftdi) < 0) {
        return false;
    }
    const bool written = ftdi_write_eeprom(ftdi) == 0;
    // Writing leaves it slow.
    return ftdi_set_latency_timer(ftdi, LatencyMilliseconds) == 0 && written;
}

void UsbLinkPort::waitForData(int milliseconds) {
    if (received_.empty())
        handleEvents(milliseconds);
}

void UsbLinkPort::startReading() {
    for (std::size_t i = 0; i < ReadingsUnderWay; ++i) {
        auto reading = std::make_unique<Reading>();
        reading->port = this;
        reading->buffer.resize(ReadingSize);
        reading->transfer = libusb_alloc_transfer(0);
        if (reading->transfer == nullptr)
            break;
        libusb_fill_bulk_transfer(
            reading->transfer, chip_->context->usb_dev,
            static_cast<unsigned char>(chip_->context->out_ep), reading->buffer.data(),
            static_cast<int>(ReadingSize),
            [](libusb_transfer* transfer) {
                auto& ended = *static_cast<Reading*>(transfer->user_data);
                ended.underWay = false;
                if (ended.port != nullptr)
                    ended.port->readingEnded(ended);
            },
            reading.get(), 0);
        reading->underWay = libusb_submit_transfer(reading->transfer) == 0;
        alive_ = alive_ && reading->underWay;
        readings_.push_back(std::move(reading));
    }
}

void UsbLinkPort::readingEnded(Reading& reading) {
    if (closing_)
        return;
    if (reading.transfer->status != LIBUSB_TRANSFER_COMPLETED) {
        alive_ = false;
        return;
    }
    const auto length = static_cast<std::size_t>(reading.transfer->actual_length);
    for (std::size_t at = 0; at < length; at += PacketSize) {
        const std::size_t end = std::min(at + PacketSize, length);
        if (end - at > StatusLength && received_.size() < ReceivedLimit)
            received_.insert(received_.end(),
                             reading.buffer.begin() +
                                 static_cast<std::ptrdiff_t>(at + StatusLength),
                             reading.buffer.begin() + static_cast<std::ptrdiff_t>(end));
    }
    reading.underWay = libusb_submit_transfer(reading.transfer) == 0;
    alive_ = alive_ && reading.underWay;
}

void UsbLinkPort::handleEvents(int milliseconds) {
    timeval limit{0, suseconds_t{milliseconds} * 1000};
    libusb_handle_events_timeout_completed(context_, &limit, nullptr);
}

} // namespace corvane
