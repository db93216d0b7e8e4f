#include "kolib/devices/UsbLinkSource.h"

#include "kolib/devices/UsbLinkPort.h"

#include <libusb.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <unistd.h>

namespace corvane {

namespace {

constexpr int FtdiVendor = 0x0403;
constexpr int Ft232Product = 0x6001;
// The rights on a new device and its strings come a moment after the device itself.
constexpr int LooksAfterChange = 20;

std::string systemFolder(libusb_device* device) {
    std::array<std::uint8_t, 8> ports{};
    const int depth = libusb_get_port_numbers(device, ports.data(), static_cast<int>(ports.size()));
    std::string name = std::to_string(libusb_get_bus_number(device));
    for (int i = 0; i < depth; ++i)
        name += (i == 0 ? "-" : ".") + std::to_string(ports[static_cast<std::size_t>(i)]);
    return "/sys/bus/usb/devices/" + name;
}

std::string deviceNode(libusb_device* device) {
    std::array<char, 40> path{};
    std::snprintf(path.data(), path.size(), "/dev/bus/usb/%03d/%03d", libusb_get_bus_number(device),
                  libusb_get_device_address(device));
    return path.data();
}

bool mayOpen(libusb_device* device) {
    return ::access(deviceNode(device).c_str(), R_OK | W_OK) == 0;
}

int LIBUSB_CALL noteChange(libusb_context*, libusb_device*, libusb_hotplug_event, void* changed) {
    *static_cast<bool*>(changed) = true;
    return 0;
}

} // namespace

DeviceInfo readUsbStrings(const std::filesystem::path& folder) {
    const auto line = [&folder](const char* name) {
        std::ifstream file(folder / name);
        std::string text;
        std::getline(file, text);
        return text;
    };
    DeviceInfo info{line("product"), line("manufacturer"), {}, line("serial")};
    info.ManufacturerID = info.SerialNumber.substr(0, 2);
    return info;
}

UsbLinkSource::UsbLinkSource() {
    if (libusb_init(&context_) != LIBUSB_SUCCESS) {
        context_ = nullptr;
        return;
    }
    if (libusb_has_capability(LIBUSB_CAP_HAS_HOTPLUG) == 0 ||
        libusb_hotplug_register_callback(
            context_,
            static_cast<libusb_hotplug_event>(LIBUSB_HOTPLUG_EVENT_DEVICE_ARRIVED |
                                              LIBUSB_HOTPLUG_EVENT_DEVICE_LEFT),
            LIBUSB_HOTPLUG_NO_FLAGS, LIBUSB_HOTPLUG_MATCH_ANY, LIBUSB_HOTPLUG_MATCH_ANY,
            LIBUSB_HOTPLUG_MATCH_ANY, &noteChange, &changed_, nullptr) != LIBUSB_SUCCESS) {
        libusb_exit(context_);
        context_ = nullptr;
    }
}

UsbLinkSource::~UsbLinkSource() {
    release();
    if (context_ != nullptr)
        libusb_exit(context_);
}

bool UsbLinkSource::refresh() {
    if (context_ == nullptr)
        return false;
    timeval atOnce{};
    libusb_handle_events_timeout_completed(context_, &atOnce, nullptr);
    if (changed_) {
        changed_ = false;
        looksLeft_ = LooksAfterChange;
    } else if (looksLeft_ == 0) {
        return false;
    }
    --looksLeft_;
    const std::vector<Device> before = devices_;
    const std::vector<libusb_device*> handlesBefore = handles_;
    lookAgain();
    return handles_ != handlesBefore ||
           !std::equal(devices_.begin(), devices_.end(), before.begin(), before.end(),
                       [](const Device& a, const Device& b) {
                           return a.info == b.info && a.accessible == b.accessible;
                       });
}

OpenOutcome UsbLinkSource::open(std::size_t index) {
    if (index >= handles_.size())
        return {nullptr, "The link device is gone."};
    libusb_device* device = handles_[index];
    if (!mayOpen(device))
        return {nullptr,
                "The link device may not be opened: no permission to use " + deviceNode(device) +
                    ". Install the udev rule 60-corvane.rules and plug the link in again."};
    return UsbLinkPort::open(context_, device);
}

void UsbLinkSource::lookAgain() {
    libusb_device** list = nullptr;
    const ssize_t count = libusb_get_device_list(context_, &list);
    if (count < 0)
        return;
    devices_.clear();
    std::vector<libusb_device*> found;
    for (ssize_t i = 0; i < count; ++i) {
        libusb_device_descriptor descriptor{};
        if (libusb_get_device_descriptor(list[i], &descriptor) != LIBUSB_SUCCESS ||
            descriptor.idVendor != FtdiVendor || descriptor.idProduct != Ft232Product)
            continue;
        devices_.push_back({readUsbStrings(systemFolder(list[i])), mayOpen(list[i])});
        found.push_back(libusb_ref_device(list[i]));
    }
    libusb_free_device_list(list, 1);
    release();
    handles_ = std::move(found);
}

void UsbLinkSource::release() {
    for (libusb_device* device : handles_)
        libusb_unref_device(device);
    handles_.clear();
}

} // namespace corvane
