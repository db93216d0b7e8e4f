#include "kolib/devices/UsbChip.h"

#include <ftdi.h>
#include <libusb.h>

namespace corvane {

namespace {

constexpr int BaudRate = 250000;
constexpr unsigned char LatencyMilliseconds = 1;
// While words of its memory are written the chip wants this latency, or it may lose some.
constexpr unsigned char WritingLatency = 0x77;
constexpr std::uint8_t VendorRequest = 0x40; // to the device
constexpr unsigned ControlTimeout = 1000;    // ms
constexpr int PacketSize = 64;               // bytes, of a full-speed bulk endpoint
constexpr int MemorySize = std::tuple_size_v<ChipMemory>;

} // namespace

std::unique_ptr<UsbChip> UsbChip::open(ftdi_context* ftdi, libusb_device* device, int& error) {
    libusb_device_handle* handle = nullptr;
    error = libusb_open(device, &handle);
    if (error != LIBUSB_SUCCESS)
        return nullptr;
    std::unique_ptr<UsbChip> chip(new UsbChip(ftdi, handle));
    libusb_set_auto_detach_kernel_driver(handle, 1);
    error = libusb_claim_interface(handle, 0);
    if (error != LIBUSB_SUCCESS)
        return nullptr;
    chip->claimed_ = true;
    // Opening by the library itself would reset the chip.
    ftdi_set_usbdev(ftdi, handle);
    ftdi->type = TYPE_R;
    ftdi->max_packet_size = PacketSize;
    ftdi->usb_read_timeout = ControlTimeout;
    ftdi->usb_write_timeout = ControlTimeout;
    error = chip->prepare();
    return error == LIBUSB_SUCCESS ? std::move(chip) : nullptr;
}

UsbChip::~UsbChip() {
    ftdi_set_usbdev(ftdi_, nullptr);
    if (claimed_)
        libusb_release_interface(handle_, 0); // attaches the kernel's driver
    libusb_close(handle_);
}

int UsbChip::prepare() {
    if (ftdi_set_baudrate(ftdi_, BaudRate) < 0 ||
        ftdi_set_line_property(ftdi_, BITS_8, STOP_BIT_1, NONE) < 0 ||
        ftdi_setflowctrl(ftdi_, SIO_DISABLE_FLOW_CTRL) < 0 ||
        ftdi_set_latency_timer(ftdi_, LatencyMilliseconds) < 0 || ftdi_tcioflush(ftdi_) < 0)
        return LIBUSB_ERROR_IO;
    return setRts(true);
}

int UsbChip::setRts(bool on) {
    constexpr int tries = 3; // a request may stall
    int result = LIBUSB_ERROR_OTHER;
    for (int i = 0; i < tries && result != LIBUSB_SUCCESS && result != LIBUSB_ERROR_NO_DEVICE; ++i)
        result = libusb_control_transfer(
            handle_, VendorRequest, SIO_SET_MODEM_CTRL_REQUEST,
            static_cast<std::uint16_t>(on ? SIO_SET_RTS_HIGH : SIO_SET_RTS_LOW),
            static_cast<std::uint16_t>(ftdi_->index), nullptr, 0, ControlTimeout);
    return result;
}

std::optional<ChipMemory> UsbChip::readMemory() {
    ChipMemory memory{};
    if (ftdi_read_eeprom(ftdi_) != 0 || ftdi_get_eeprom_buf(ftdi_, memory.data(), MemorySize) != 0)
        return std::nullopt;
    return memory;
}

std::optional<ChipMemory> UsbChip::freshMemory(const DeviceInfo& strings) {
    // The library takes the texts as changeable.
    std::string manufacturer = strings.Manufacturer;
    std::string product = strings.Description;
    std::string serial = strings.SerialNumber;
    ChipMemory memory{};
    if (ftdi_eeprom_initdefaults(ftdi_, manufacturer.data(), product.data(), serial.data()) != 0 ||
        ftdi_set_eeprom_value(ftdi_, CHANNEL_A_DRIVER, DRIVER_VCP) != 0 ||
        ftdi_eeprom_build(ftdi_) < 0 || ftdi_get_eeprom_buf(ftdi_, memory.data(), MemorySize) != 0)
        return std::nullopt;
    return memory;
}

bool UsbChip::writeMemory(const ChipMemory& memory) {
    const bool written = writeWords(memory);
    const bool fastAgain = ftdi_set_latency_timer(ftdi_, LatencyMilliseconds) == 0;
    return written && fastAgain && readMemory() == memory;
}

bool UsbChip::writeWords(const ChipMemory& memory) {
    unsigned short status = 0;
    if (ftdi_poll_modem_status(ftdi_, &status) != 0 ||
        ftdi_set_latency_timer(ftdi_, WritingLatency) != 0)
        return false;
    // Word by word, since the library's way of writing them begins with a reset of the chip.
    for (std::uint16_t word = 0; word < memory.size() / 2; ++word) {
        const auto value =
            static_cast<std::uint16_t>(memory[2U * word] | memory[2U * word + 1U] << 8);
        if (libusb_control_transfer(handle_, VendorRequest, SIO_WRITE_EEPROM_REQUEST, value, word,
                                    nullptr, 0, ControlTimeout) < 0)
            return false;
    }
    return true;
}

} // namespace corvane
