// Stands between a program and the kernel's USB file system: with CORVANE_USB set to the folder of
// an emulated bus, the devices that libusb finds, opens and speaks to are those of the bus.
// Everything else goes to the C library. Preloaded into the programs under test, and linked into
// the tests.
#include "usb/UsbfsProtocol.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <linux/usbdevice_fs.h>
#include <memory>
#include <mutex>
#include <string>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace corvane::usb;

template<class Function>
Function next(const char* name) {
    void* found = dlsym(RTLD_NEXT, name);
    Function function = nullptr;
    std::memcpy(&function, &found, sizeof function);
    return function;
}

std::string folder() {
    const char* set = std::getenv("CORVANE_USB");
    return set == nullptr ? "" : set;
}

constexpr const char* Nodes = "/dev/bus/usb";
constexpr const char* Devices = "/sys/bus/usb/devices";

bool below(const char* path, const char* root) {
    return path != nullptr && std::strncmp(path, root, std::strlen(root)) == 0;
}

/// Where the file is in the folder of the bus.
std::string placeOf(const char* path) {
    const bool ours = !folder().empty() && (below(path, Nodes) || below(path, Devices));
    return ours ? folder() + path : path == nullptr ? "" : path;
}

int connectToBus() {
    const int socket = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder() + "/bus";
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    if (::connect(socket, static_cast<sockaddr*>(static_cast<void*>(&address)), sizeof address) !=
        0) {
        static const auto close = next<int (*)(int)>("close");
        close(socket);
        return -1;
    }
    return socket;
}

/// A call of the kernel's file system can't be interrupted by a signal between asking and answer.
template<class Call>
ssize_t insistently(Call call) {
    ssize_t result = -1;
    do
        result = call();
    while (result < 0 && errno == EINTR);
    return result;
}

/// An opened device.
struct Node {
    int socket = -1;
    int file = -1; // of the device, held so that the system tells who has it open
    std::mutex mutex;

    Answer call(const Request& request, const void* data, std::size_t count,
                std::vector<char>& answered) {
        const std::lock_guard lock(mutex);
        std::vector<char> message(sizeof request + count);
        std::memcpy(message.data(), &request, sizeof request);
        if (count > 0)
            std::memcpy(message.data() + sizeof request, data, count);
        Answer answer{-ENODEV, 0, 0, 0};
        if (insistently(
                [&] { return ::send(socket, message.data(), message.size(), MSG_NOSIGNAL); }) < 0)
            return answer;
        answered.resize(sizeof answer + MostData);
        const ssize_t got =
            insistently([&] { return ::recv(socket, answered.data(), answered.size(), 0); });
        if (got < static_cast<ssize_t>(sizeof answer))
            return answer;
        std::memcpy(&answer, answered.data(), sizeof answer);
        answered.resize(static_cast<std::size_t>(got));
        answered.erase(answered.begin(), answered.begin() + sizeof answer);
        return answer;
    }
    int call(Call what, std::uint32_t argument = 0, std::uint64_t id = 0) {
        std::vector<char> ignored;
        return call({what, argument, id, 0}, nullptr, 0, ignored).result;
    }
};

constexpr int MostDescriptors = 4096;
std::atomic<Node*> nodes[MostDescriptors];

Node* nodeAt(int descriptor) {
    return descriptor >= 0 && descriptor < MostDescriptors ? nodes[descriptor].load() : nullptr;
}

int result(int value) {
    if (value >= 0)
        return value;
    errno = -value;
    return -1;
}

int openNode(const char* path) {
    const std::string place = placeOf(path);
    struct stat status {};
    if (::stat(place.c_str(), &status) != 0)
        return result(-ENOENT);
    if ((status.st_mode & 0222U) == 0)
        return result(-EACCES);
    auto node = std::make_unique<Node>();
    node->socket = connectToBus();
    if (node->socket < 0)
        return result(-ENODEV);
    const Request request{
        Call::Open, static_cast<std::uint32_t>(std::atoi(path + std::strlen(path) - 3)), 0, 0};
    static_cast<void>(::send(node->socket, &request, sizeof request, MSG_NOSIGNAL));
    Answer answer{};
    iovec part{&answer, sizeof answer};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const bool got =
        insistently([&] { return ::recvmsg(node->socket, &message, MSG_CMSG_CLOEXEC); }) > 0;
    const cmsghdr* head = CMSG_FIRSTHDR(&message);
    if (!got || answer.result < 0 || head == nullptr) {
        static const auto close = next<int (*)(int)>("close");
        close(node->socket);
        return result(got && answer.result < 0 ? answer.result : -ENODEV);
    }
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(head), sizeof descriptor);
    static const auto open = next<int (*)(const char*, int, ...)>("open");
    node->file = open(place.c_str(), O_RDONLY | O_CLOEXEC);
    nodes[descriptor] = node.release();
    return descriptor;
}

int submit(Node& node, usbdevfs_urb& urb) {
    const auto* bytes = static_cast<const char*>(urb.buffer);
    const bool isControl = urb.type == USBDEVFS_URB_TYPE_CONTROL;
    const bool in = isControl ? (bytes[0] & 0x80) != 0 : (urb.endpoint & 0x80) != 0;
    const auto length = static_cast<std::size_t>(urb.buffer_length);
    const std::size_t outgoing = isControl && in ? 8 : in ? 0 : length;
    std::uint64_t id = 0;
    usbdevfs_urb* address = &urb;
    std::memcpy(&id, &address, sizeof address);
    std::vector<char> ignored;
    return node
        .call({Call::Submit, isControl ? 0U : urb.endpoint, id, static_cast<std::uint32_t>(length)},
              bytes, outgoing, ignored)
        .result;
}

int reap(Node& node, void* target) {
    std::vector<char> data;
    const Answer answer = node.call({Call::Reap, 0, 0, 0}, nullptr, 0, data);
    if (answer.result < 0)
        return answer.result;
    usbdevfs_urb* urb = nullptr;
    std::memcpy(&urb, &answer.id, sizeof urb);
    urb->status = answer.status;
    urb->actual_length = static_cast<int>(answer.length);
    if (!data.empty())
        std::memcpy(static_cast<char*>(urb->buffer) +
                        (urb->type == USBDEVFS_URB_TYPE_CONTROL ? 8 : 0),
                    data.data(), data.size());
    std::memcpy(target, &urb, sizeof urb);
    return 0;
}

int command(Node& node, unsigned long request, void* argument) {
    switch (request) {
    case USBDEVFS_GET_CAPABILITIES:
        *static_cast<std::uint32_t*>(argument) = USBDEVFS_CAP_ZERO_PACKET |
                                                 USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                                                 USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
        return 0;
    case USBDEVFS_SUBMITURB:
        return submit(node, *static_cast<usbdevfs_urb*>(argument));
    case USBDEVFS_REAPURBNDELAY:
        return reap(node, argument);
    case USBDEVFS_DISCARDURB: {
        std::uint64_t id = 0;
        std::memcpy(&id, &argument, sizeof argument);
        return node.call(Call::Discard, 0, id);
    }
    case USBDEVFS_CLAIMINTERFACE:
        return node.call(Call::Claim, 0);
    case USBDEVFS_DISCONNECT_CLAIM:
        return node.call(Call::Claim, 1);
    case USBDEVFS_RELEASEINTERFACE:
        return node.call(Call::Release);
    case USBDEVFS_CLEAR_HALT:
        return node.call(Call::ClearHalt, *static_cast<unsigned*>(argument));
    case USBDEVFS_GETDRIVER: {
        const int driver = node.call(Call::GetDriver);
        if (driver <= 0)
            return driver < 0 ? driver : -ENODATA;
        std::strcpy(static_cast<usbdevfs_getdriver*>(argument)->driver,
                    driver == 1 ? "usbfs" : "ftdi_sio");
        return 0;
    }
    case USBDEVFS_IOCTL: {
        const unsigned inner =
            static_cast<unsigned>(static_cast<usbdevfs_ioctl*>(argument)->ioctl_code);
        if (inner == USBDEVFS_CONNECT)
            return node.call(Call::Connect);
        if (inner == USBDEVFS_DISCONNECT)
            return node.call(Call::Disconnect);
        return -ENOTTY;
    }
    default:
        return -ENOTTY;
    }
}

int openFile(const char* name, const char* path, int flags, mode_t mode) {
    if (!folder().empty() && below(path, Nodes))
        return openNode(path);
    const auto open = next<int (*)(const char*, int, ...)>(name);
    return open(placeOf(path).c_str(), flags, mode);
}

std::string lineOf(const std::string& path) {
    std::string line;
    if (FILE* file = std::fopen(path.c_str(), "r")) {
        char text[256] = "";
        if (std::fgets(text, sizeof text, file) != nullptr)
            line.assign(text, std::strcspn(text, "\n"));
        std::fclose(file);
    }
    return line;
}

} // namespace

// NOLINTBEGIN: the names and types are those of the libraries that they stand for
extern "C" {

int open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return openFile("open", path, flags, mode);
}

int __open_2(const char* path, int flags) {
    return openFile("open", path, flags, 0);
}

FILE* fopen64(const char* path, const char* mode) {
    static const auto real = next<FILE* (*)(const char*, const char*)>("fopen64");
    return real(placeOf(path).c_str(), mode);
}

DIR* opendir(const char* path) {
    static const auto real = next<DIR* (*)(const char*)>("opendir");
    return real(placeOf(path).c_str());
}

int statfs(const char* path, struct statfs* status) noexcept {
    static const auto real = next<int (*)(const char*, struct statfs*)>("statfs");
    const int found = real(path, status);
    if (folder().empty() || std::strcmp(path, "/sys") != 0)
        return found;
    status->f_type = SYSFS_MAGIC; // also where the machine shows none
    return 0;
}

int access(const char* path, int mode) {
    static const auto real = next<int (*)(const char*, int)>("access");
    const std::string place = placeOf(path);
    struct stat status {};
    if (place != path && below(path, Nodes) && ::stat(place.c_str(), &status) == 0 &&
        (status.st_mode & 0222U) == 0)
        return result(-EACCES); // also for root
    return real(place.c_str(), mode);
}

ssize_t readlink(const char* path, char* buffer, size_t size) {
    static const auto real = next<ssize_t (*)(const char*, char*, size_t)>("readlink");
    const ssize_t length = real(path, buffer, size);
    const std::string node = folder() + Nodes;
    if (folder().empty() || length < static_cast<ssize_t>(node.size()) ||
        std::memcmp(buffer, node.c_str(), node.size()) != 0)
        return length;
    const auto cut = static_cast<ssize_t>(folder().size());
    std::memmove(buffer, buffer + cut, static_cast<size_t>(length - cut));
    return length - cut;
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list more;
    va_start(more, request);
    void* argument = va_arg(more, void*);
    va_end(more);
    if (Node* node = nodeAt(descriptor))
        return result(command(*node, request, argument));
    static const auto real = next<int (*)(int, unsigned long, ...)>("ioctl");
    return real(descriptor, request, argument);
}

int close(int descriptor) {
    static const auto real = next<int (*)(int)>("close");
    if (Node* node = nodeAt(descriptor)) {
        nodes[descriptor] = nullptr;
        real(node->socket);
        real(node->file);
        delete node;
    }
    return real(descriptor);
}

// What libusb asks of libudev: the devices there are, and a socket that tells of changes.

struct udev {
    int nothing = 0;
};
struct udev_monitor {
    int socket;
};
struct udev_list_entry {
    std::string name;
    udev_list_entry* next;
};
struct udev_enumerate {
    std::vector<std::unique_ptr<udev_list_entry>> entries;
};
struct udev_device {
    std::string action, name, node;
};

udev* udev_new() {
    return new udev;
}
udev* udev_unref(udev* it) {
    delete it;
    return nullptr;
}
udev_monitor* udev_monitor_new_from_netlink(udev*, const char*) {
    const int socket = folder().empty() ? ::eventfd(0, EFD_CLOEXEC) : connectToBus();
    if (socket < 0)
        return nullptr;
    const Request request{Call::Watch, 0, 0, 0};
    Answer watched{};
    if (!folder().empty() && (::send(socket, &request, sizeof request, MSG_NOSIGNAL) < 0 ||
                              ::recv(socket, &watched, sizeof watched, 0) <= 0))
        return nullptr;
    return new udev_monitor{socket};
}
int udev_monitor_filter_add_match_subsystem_devtype(udev_monitor*, const char*, const char*) {
    return 0;
}
int udev_monitor_enable_receiving(udev_monitor*) {
    return 0;
}
int udev_monitor_get_fd(udev_monitor* monitor) {
    return monitor->socket;
}
udev_monitor* udev_monitor_unref(udev_monitor* monitor) {
    ::close(monitor->socket);
    delete monitor;
    return nullptr;
}
udev_device* udev_monitor_receive_device(udev_monitor* monitor) {
    char line[256] = "";
    if (::recv(monitor->socket, line, sizeof line - 1, MSG_DONTWAIT) <= 0)
        return nullptr;
    char action[16] = "", name[64] = "", node[64] = "";
    if (std::sscanf(line, "%15s %63s %63s", action, name, node) != 3)
        return nullptr;
    return new udev_device{action, name, node};
}
udev_enumerate* udev_enumerate_new(udev*) {
    return new udev_enumerate;
}
int udev_enumerate_add_match_subsystem(udev_enumerate*, const char*) {
    return 0;
}
int udev_enumerate_add_match_property(udev_enumerate*, const char*, const char*) {
    return 0;
}
int udev_enumerate_scan_devices(udev_enumerate* it) {
    DIR* directory = folder().empty() ? nullptr : opendir(Devices);
    if (directory == nullptr)
        return 0;
    while (const dirent* entry = ::readdir(directory))
        if (std::isdigit(static_cast<unsigned char>(entry->d_name[0])) != 0 &&
            std::strchr(entry->d_name, ':') == nullptr)
            it->entries.push_back(std::make_unique<udev_list_entry>(
                udev_list_entry{std::string(Devices) + "/" + entry->d_name, nullptr}));
    ::closedir(directory);
    for (std::size_t i = 1; i < it->entries.size(); ++i)
        it->entries[i - 1]->next = it->entries[i].get();
    return 0;
}
udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate* it) {
    return it->entries.empty() ? nullptr : it->entries.front().get();
}
udev_enumerate* udev_enumerate_unref(udev_enumerate* it) {
    delete it;
    return nullptr;
}
udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry) {
    return entry->next;
}
const char* udev_list_entry_get_name(udev_list_entry* entry) {
    return entry->name.c_str();
}
udev_device* udev_device_new_from_syspath(udev*, const char* path) {
    const std::string place = placeOf(path);
    const std::string bus = lineOf(place + "/busnum");
    const std::string number = lineOf(place + "/devnum");
    if (bus.empty() || number.empty())
        return nullptr;
    char node[64];
    std::snprintf(node, sizeof node, "%s/%03d/%03d", Nodes, std::atoi(bus.c_str()),
                  std::atoi(number.c_str()));
    return new udev_device{"", std::strrchr(path, '/') + 1, node};
}
const char* udev_device_get_action(udev_device* device) {
    return device == nullptr ? nullptr : device->action.c_str(); // it may just have gone
}
const char* udev_device_get_sysname(udev_device* device) {
    return device == nullptr ? nullptr : device->name.c_str();
}
const char* udev_device_get_devnode(udev_device* device) {
    return device == nullptr ? nullptr : device->node.c_str();
}
udev_device* udev_device_unref(udev_device* device) {
    delete device;
    return nullptr;
}
}
// NOLINTEND
