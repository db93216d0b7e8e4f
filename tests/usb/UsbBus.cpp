#include "usb/UsbBus.h"

#include "usb/UsbfsProtocol.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <poll.h>
#include <set>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace corvane::usb {

namespace {

namespace fs = std::filesystem;
constexpr int PipeSize = 4096;

std::string threeDigits(int number) {
    char text[8];
    std::snprintf(text, sizeof text, "%03d", number);
    return text;
}

} // namespace

struct UsbBus::Device {
    Ft232 chip;
    int port = 1;
    Time stringsAfter{0};
    Time pluggedInAt{0};
    bool stringsShown = false;
    int number = 0;
    bool in = false;
    bool driver = false; // the kernel's has it
    bool rights = true;
    bool elsewhere = false; // claimed by a program that is not here
    Client* claimedBy = nullptr;

    [[nodiscard]] std::string name() const { return "1-" + std::to_string(port); }
    [[nodiscard]] std::string place() const { return "sys/bus/usb/devices/" + name(); }
    [[nodiscard]] std::string node() const { return "/dev/bus/usb/001/" + threeDigits(number); }
};

/// A connection: of a program that watches, or of a device that a program has open. Its descriptor
/// there is the end of a pipe that is full until a transfer has ended: so it polls as the kernel's.
struct UsbBus::Client {
    int socket = -1;
    int full = -1;    // the end that the program polls
    int drained = -1; // the other
    bool watches = false;
    bool closed = false;
    Device* device = nullptr;
    std::set<std::uint64_t> underWay;
    std::deque<Ended> ended;

    ~Client() {
        for (const int descriptor : {socket, full, drained})
            if (descriptor >= 0)
                ::close(descriptor);
    }
    void end(Ended transfer) {
        underWay.erase(transfer.id);
        ended.push_back(std::move(transfer));
        std::array<char, PipeSize> bytes;
        while (drained >= 0 && ::read(drained, bytes.data(), bytes.size()) > 0) {
        }
    }
    void fill() const {
        const std::array<char, PipeSize> bytes{};
        while (::write(full, bytes.data(), bytes.size()) > 0) {
        }
    }
    void deviceIsGone() {
        for (const std::uint64_t id : std::set<std::uint64_t>(underWay))
            end({id, -ESHUTDOWN, 0, {}});
        device = nullptr;
        ::close(std::exchange(drained, -1)); // which polls as an error
    }
};

UsbBus::UsbBus() {
    const fs::path root = folder_.path();
    fs::create_directories(root / "dev/bus/usb/001");
    fs::create_directories(root / "sys/bus/usb/devices");
    listener_ = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = root / "bus";
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    void* generic = &address;
    if (::bind(listener_, static_cast<sockaddr*>(generic), sizeof address) != 0 ||
        ::listen(listener_, 64) != 0)
        throw std::runtime_error("no socket for the bus");
    wake_ = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    ::setenv("CORVANE_USB", root.c_str(), 1);
    ::setenv("LD_PRELOAD", CORVANE_USBFS_SHIM, 1);
    thread_ = std::thread([this] { loop(); });
}

UsbBus::~UsbBus() {
    with([this] { ending_ = true; });
    wake();
    thread_.join();
    for (const char* name : {"CORVANE_USB", "LD_PRELOAD"})
        ::unsetenv(name);
    clients_.clear();
    ::close(listener_);
    ::close(wake_);
}

Time UsbBus::now() const {
    return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now() - start_);
}

void UsbBus::wake() const {
    const std::uint64_t one = 1;
    if (::write(wake_, &one, sizeof one) < 0)
        return; // it is awake
}

Ft232& UsbBus::plugIn(const std::string& product, const std::string& serial, int port) {
    return plugIn({stockMemory("Ortaline Works", "Corvane", serial), product, Time{0}, port});
}

Ft232& UsbBus::plugIn(const Chip& chip) {
    Ft232* added = nullptr;
    with([&] {
        devices_.push_back(std::unique_ptr<Device>(new Device{
            Ft232(chip.memory, chip.product, chip.writeTime), chip.port, chip.stringsAfter}));
        added = &devices_.back()->chip;
        show(*devices_.back());
    });
    wake();
    return *added;
}

void UsbBus::plugInAgain(Ft232& chip) {
    with([&] { show(of(chip)); });
    wake();
}

void UsbBus::unplug(Ft232& chip) {
    with([&] { hide(of(chip)); });
}

UsbBus::Device& UsbBus::of(const Ft232& chip) {
    return **std::find_if(devices_.begin(), devices_.end(),
                          [&](const auto& device) { return &device->chip == &chip; });
}

void UsbBus::setRights(const Ft232& chip, bool given) {
    with([&] {
        Device& device = of(chip);
        device.rights = given;
        if (device.in)
            fs::permissions(folder_.path() / device.node().substr(1),
                            given ? fs::perms(0600) : fs::perms(0400));
    });
}

void UsbBus::claimElsewhere(const Ft232& chip, bool claimed) {
    with([&] {
        Device& device = of(chip);
        device.elsewhere = claimed;
        device.driver = false;
    });
}

bool UsbBus::hasTty(const Ft232& chip) {
    return with([&] { return of(chip).driver; });
}

int UsbBus::users(const Ft232& chip) {
    return with([&] {
        const Device& device = of(chip);
        return static_cast<int>(std::count_if(clients_.begin(), clients_.end(), [&](auto& client) {
            return client->device == &device;
        }));
    });
}

void UsbBus::show(Device& device) {
    device.number = ++lastNumber_;
    device.in = true;
    device.driver = !device.elsewhere;
    device.pluggedInAt = now();
    device.stringsShown = false;
    device.chip.plugIn(device.pluggedInAt);
    device.chip.driverBound();
    const fs::path place = folder_.path() / device.place();
    fs::create_directories(place);
    std::ofstream(place / "busnum") << "1\n";
    std::ofstream(place / "devnum") << device.number << "\n";
    std::ofstream(place / "speed") << "12\n";
    std::ofstream(place / "bConfigurationValue") << "1\n";
    const Bytes descriptors = device.chip.descriptors();
    std::ofstream(place / "descriptors", std::ios::binary)
        << std::string(descriptors.begin(), descriptors.end());
    showStrings(device);
    const fs::path node = folder_.path() / device.node().substr(1);
    std::ofstream(node) << "";
    fs::permissions(node, device.rights ? fs::perms(0600) : fs::perms(0400));
    tell(device, "add");
}

void UsbBus::showStrings(Device& device) const {
    if (device.stringsShown || now() < device.pluggedInAt + device.stringsAfter)
        return;
    device.stringsShown = true;
    const auto& strings = device.chip.strings();
    for (const std::size_t i : {2, 0, 1}) // the one that a link is known by at last
        std::ofstream(folder_.path() / device.place() /
                      std::array{"manufacturer", "product", "serial"}[i])
            << strings[i] << "\n";
}

void UsbBus::hide(Device& device) {
    if (!device.in)
        return;
    device.in = false;
    device.driver = false;
    device.claimedBy = nullptr;
    device.chip.unplug();
    fs::remove_all(folder_.path() / device.place());
    fs::remove(folder_.path() / device.node().substr(1));
    for (const auto& client : clients_)
        if (client->device == &device)
            client->deviceIsGone();
    tell(device, "remove");
}

void UsbBus::tell(const Device& device, const std::string& action) {
    const std::string line = action + " " + device.name() + " " + device.node();
    for (const auto& client : clients_)
        if (client->watches)
            static_cast<void>(
                ::send(client->socket, line.data(), line.size(), MSG_NOSIGNAL | MSG_DONTWAIT));
}

void UsbBus::loop() {
    std::unique_lock lock(mutex_);
    while (!ending_) {
        advance();
        std::vector<pollfd> descriptors{{listener_, POLLIN, 0}, {wake_, POLLIN, 0}};
        Time next = now() + std::chrono::milliseconds(100);
        for (const auto& client : clients_)
            descriptors.push_back({client->socket, POLLIN, 0});
        for (const auto& device : devices_)
            if (device->in)
                next = std::min(next, device->chip.nextEvent(now()));
        const auto left = std::chrono::nanoseconds(std::max(next - now(), Time{0}));
        const timespec limit{static_cast<time_t>(left.count() / 1'000'000'000),
                             static_cast<long>(left.count() % 1'000'000'000)};
        lock.unlock();
        ::ppoll(descriptors.data(), descriptors.size(), &limit, nullptr);
        lock.lock();
        std::uint64_t woken = 0;
        while (::read(wake_, &woken, sizeof woken) > 0) {
        }
        advance();
        for (std::size_t i = 2; i < descriptors.size(); ++i)
            if (descriptors[i].revents != 0)
                serve(*clients_[i - 2]);
        if (descriptors[0].revents != 0)
            accept();
        std::erase_if(clients_, [](const auto& client) { return client->closed; });
    }
}

void UsbBus::accept() {
    const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (socket < 0)
        return;
    clients_.push_back(std::make_unique<Client>());
    clients_.back()->socket = socket;
}

void UsbBus::advance() {
    for (const auto& device : devices_) {
        if (!device->in)
            continue;
        showStrings(*device);
        for (Ended& ended : device->chip.run(now()))
            for (const auto& client : clients_)
                if (client->device == device.get() && client->underWay.contains(ended.id))
                    client->end(std::move(ended));
        if (device->chip.unplugDue())
            hide(*device);
    }
}

void UsbBus::serve(Client& client) {
    std::vector<std::uint8_t> message(sizeof(Request) + MostData);
    for (;;) {
        const ssize_t count = ::recv(client.socket, message.data(), message.size(), MSG_DONTWAIT);
        if (count < 0 && errno == EAGAIN)
            return;
        if (count < static_cast<ssize_t>(sizeof(Request)))
            return giveUp(client);
        Request request{};
        std::memcpy(&request, message.data(), sizeof request);
        answer(client, request,
               ByteView(message).subspan(sizeof request,
                                         static_cast<std::size_t>(count) - sizeof request));
        if (client.device != nullptr && client.device->chip.unplugDue())
            hide(*client.device);
    }
}

void UsbBus::giveUp(Client& client) {
    client.closed = true;
    if (client.device == nullptr)
        return;
    for (const std::uint64_t id : client.underWay)
        client.device->chip.cancel(id);
    if (client.device->claimedBy == &client)
        client.device->claimedBy = nullptr;
    client.device = nullptr;
}

void UsbBus::answer(Client& client, const Request& request, ByteView data) {
    Answer answer{-ENODEV, 0, 0, 0};
    Bytes incoming;
    if (request.call == Call::Watch) {
        client.watches = true;
        answer.result = 0;
    } else if (request.call == Call::Open) {
        answer.result = open(client, static_cast<int>(request.argument));
    } else if (request.call == Call::Reap && !client.ended.empty()) {
        Ended ended = std::move(client.ended.front());
        client.ended.pop_front();
        answer = {0, ended.status, ended.id, static_cast<std::uint32_t>(ended.length)};
        incoming = std::move(ended.data);
        if (client.ended.empty() && client.device != nullptr)
            client.fill();
    } else if (Device* device = client.device; device != nullptr) {
        switch (request.call) {
        case Call::Submit:
            answer.result = submit(client, request, data);
            break;
        case Call::Reap:
            answer.result = -EAGAIN;
            break;
        case Call::Discard:
            answer.result = device->chip.cancel(request.id) ? 0 : -EINVAL;
            if (answer.result == 0)
                client.end({request.id, -ENOENT, 0, {}});
            break;
        case Call::Claim:
            answer.result = claim(client, request.argument != 0);
            break;
        case Call::Release:
            answer.result = device->claimedBy == &client ? 0 : -EINVAL;
            if (answer.result == 0)
                device->claimedBy = nullptr;
            break;
        case Call::Connect:
            answer.result = device->claimedBy == nullptr && !device->elsewhere ? 1 : -EBUSY;
            if (answer.result == 1) {
                device->driver = true;
                device->chip.driverBound();
            }
            break;
        case Call::Disconnect:
            answer.result = device->driver ? 0 : -ENODATA;
            device->driver = false;
            break;
        case Call::GetDriver:
            answer.result = device->driver ? 2 : device->claimedBy != nullptr ? 1 : 0;
            break;
        default:
            answer.result = 0;
        }
    }
    std::vector<std::uint8_t> message(sizeof answer);
    std::memcpy(message.data(), &answer, sizeof answer);
    message.insert(message.end(), incoming.begin(), incoming.end());
    iovec part{message.data(), message.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr out{};
    out.msg_iov = &part;
    out.msg_iovlen = 1;
    if (request.call == Call::Open && answer.result >= 0) {
        out.msg_control = control.data();
        out.msg_controllen = control.size();
        cmsghdr* head = CMSG_FIRSTHDR(&out);
        head->cmsg_level = SOL_SOCKET;
        head->cmsg_type = SCM_RIGHTS;
        head->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(head), &client.full, sizeof(int));
    }
    static_cast<void>(::sendmsg(client.socket, &out, MSG_NOSIGNAL));
}

int UsbBus::open(Client& client, int number) {
    ++opened_;
    const auto found = std::find_if(devices_.begin(), devices_.end(), [number](const auto& device) {
        return device->in && device->number == number;
    });
    if (found == devices_.end())
        return -ENODEV;
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_NONBLOCK | O_CLOEXEC) != 0)
        return -EMFILE;
    ::fcntl(ends[1], F_SETPIPE_SZ, PipeSize);
    client.drained = ends[0];
    client.full = ends[1];
    client.fill();
    client.device = found->get();
    return 0;
}

int UsbBus::submit(Client& client, const Request& request, ByteView data) {
    Device& device = *client.device;
    if (request.argument != 0 && device.claimedBy != &client) {
        device.chip.violations.push_back("bytes to a device that is not claimed");
        return -EINVAL;
    }
    client.underWay.insert(request.id);
    if (request.argument == 0)
        client.end(device.chip.control(request.id, data, now()));
    else if ((request.argument & 0x80U) != 0)
        device.chip.submitIn(request.id, request.length);
    else
        device.chip.submitOut(request.id, data, now());
    return 0;
}

int UsbBus::claim(Client& client, bool fromDriver) {
    Device& device = *client.device;
    if (device.elsewhere || (device.claimedBy != nullptr && device.claimedBy != &client) ||
        (device.driver && !fromDriver))
        return -EBUSY;
    device.driver = false;
    device.claimedBy = &client;
    return 0;
}

} // namespace corvane::usb
