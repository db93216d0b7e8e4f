#include "kolib/devices/UsbLinkSource.h"

#include "kolib/devices/UsbLinkPort.h"

#include <ftdi.h>
#include <libusb.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <unistd.h>
#include <utility>
#include <vector>

namespace corvane {

namespace {

constexpr int FtdiVendor = 0x0403;
constexpr int Ft232Product = 0x6001;
// The rights on a new device and its strings come a moment after the device itself.
constexpr std::int32_t SettlesWithin = 3000; // ms
constexpr std::int32_t LookEvery = 50;       // ms, until then
// Rights may also be given to a device that has long been there, and nobody tells of that.
constexpr std::int32_t LookForRightsEvery = 1000; // ms

/// Bus and the ports on the way to the device.
using PlugPlace = std::pair<int, std::vector<std::uint8_t>>;

PlugPlace plugPlaceOf(libusb_device* device) {
    std::vector<std::uint8_t> ports(8);
    const int depth = libusb_get_port_numbers(device, ports.data(), static_cast<int>(ports.size()));
    ports.resize(static_cast<std::size_t>(std::max(depth, 0)));
    return {libusb_get_bus_number(device), ports};
}

std::string systemFolder(libusb_device* device) {
    const auto [bus, ports] = plugPlaceOf(device);
    std::string name = std::to_string(bus);
    for (std::size_t i = 0; i < ports.size(); ++i)
        name += (i == 0 ? "-" : ".") + std::to_string(ports[i]);
    return "/sys/bus/usb/devices/" + name;
}

std::string deviceNode(libusb_device* device) {
    std::array<char, 40> path{};
    std::snprintf(path.data(), path.size(), "/dev/bus/usb/%03d/%03d", libusb_get_bus_number(device),
                  libusb_get_device_address(device));
    return path.data();
}

/// The strings that the kernel keeps of a device in its folder. What can't be read is empty. The
/// manufacturer ID is the start of the serial number, as on every FT232R.
DeviceInfo readUsbStrings(const std::string& folder) {
    const auto line = [&folder](const char* name) {
        std::ifstream file(folder + "/" + name);
        std::string text;
        std::getline(file, text);
        return text;
    };
    DeviceInfo info{line("product"), line("manufacturer"), {}, line("serial")};
    info.ManufacturerID = info.SerialNumber.substr(0, 2);
    return info;
}

bool mayOpen(libusb_device* device) {
    return ::access(deviceNode(device).c_str(), R_OK | W_OK) == 0;
}

int LIBUSB_CALL noteChange(libusb_context*, libusb_device*, libusb_hotplug_event, void* changed) {
    *static_cast<bool*>(changed) = true;
    return 0;
}

} // namespace

UsbLinkSource::UsbLinkSource(const Clock& clock) : clock_(clock), ftdi_(ftdi_new()) {
    if (ftdi_ == nullptr)
        return;
    if (libusb_has_capability(LIBUSB_CAP_HAS_HOTPLUG) == 0 ||
        libusb_hotplug_register_callback(
            ftdi_->usb_ctx,
            static_cast<libusb_hotplug_event>(LIBUSB_HOTPLUG_EVENT_DEVICE_ARRIVED |
                                              LIBUSB_HOTPLUG_EVENT_DEVICE_LEFT),
            LIBUSB_HOTPLUG_NO_FLAGS, LIBUSB_HOTPLUG_MATCH_ANY, LIBUSB_HOTPLUG_MATCH_ANY,
            LIBUSB_HOTPLUG_MATCH_ANY, &noteChange, &changed_, nullptr) != LIBUSB_SUCCESS) {
        ftdi_free(ftdi_);
        ftdi_ = nullptr;
    }
}

UsbLinkSource::~UsbLinkSource() {
    release();
    if (ftdi_ != nullptr)
        ftdi_free(ftdi_);
}

bool UsbLinkSource::refresh() {
    if (ftdi_ == nullptr)
        return false;
    timeval atOnce{};
    libusb_handle_events_timeout_completed(ftdi_->usb_ctx, &atOnce, nullptr);
    if (!lookIsDue())
        return false;
    lookedAt_ = clock_.now();
    const std::vector<Device> before = devices_;
    const std::vector<libusb_device*> handlesBefore = handles_;
    lookAgain();
    return handles_ != handlesBefore ||
           !std::equal(devices_.begin(), devices_.end(), before.begin(), before.end(),
                       [](const Device& a, const Device& b) {
                           return a.info == b.info && a.accessible == b.accessible;
                       });
}

bool UsbLinkSource::lookIsDue() {
    const std::uint32_t now = clock_.now();
    if (std::exchange(changed_, false)) {
        changedAt_ = now;
        settled_ = false;
        return true;
    }
    settled_ = settled_ || Elapsed(now, changedAt_) > SettlesWithin;
    const std::int32_t sinceLook = Elapsed(now, lookedAt_);
    if (!settled_)
        return sinceLook >= LookEvery;
    return sinceLook >= LookForRightsEvery &&
           std::any_of(devices_.begin(), devices_.end(),
                       [](const Device& device) { return !device.accessible; });
}

OpenOutcome UsbLinkSource::open(std::size_t index) {
    if (index >= handles_.size())
        return {nullptr, "The link device is gone.", {}};
    return UsbLinkPort::open(ftdi_, handles_[index], deviceNode(handles_[index]), holder_);
}

void UsbLinkSource::lookAgain() {
    libusb_device** list = nullptr;
    const ssize_t count = libusb_get_device_list(ftdi_->usb_ctx, &list);
    if (count < 0)
        return;
    std::vector<libusb_device*> found;
    for (ssize_t i = 0; i < count; ++i) {
        libusb_device_descriptor descriptor{};
        if (libusb_get_device_descriptor(list[i], &descriptor) == LIBUSB_SUCCESS &&
            descriptor.idVendor == FtdiVendor && descriptor.idProduct == Ft232Product)
            found.push_back(libusb_ref_device(list[i]));
    }
    libusb_free_device_list(list, 1);
    // In the library's order a device moves when another is plugged in.
    std::sort(found.begin(), found.end(),
              [](libusb_device* a, libusb_device* b) { return plugPlaceOf(a) < plugPlaceOf(b); });
    release();
    handles_ = std::move(found);
    devices_.clear();
    for (libusb_device* device : handles_)
        devices_.push_back({readUsbStrings(systemFolder(device)), mayOpen(device)});
}

void UsbLinkSource::release() {
    for (libusb_device* device : handles_)
        libusb_unref_device(device);
    handles_.clear();
}

} // namespace corvane
