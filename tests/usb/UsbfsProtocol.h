#pragma once

#include <cstdint>

namespace corvane::usb {

/// What the stand-in for the kernel's USB file system (`UsbfsShim.cpp`, in the programs) and the
/// emulated bus (`UsbBus`) say to each other over a socket of packets: a request, then its answer.
/// The names of requests are those of the file system.
enum class Call : std::uint32_t {
    Watch, ///< From its answer on there is a line for each device that comes or goes.
    Open,  ///< argument: device number. The answer brings a descriptor to poll.
    Submit,
    Reap,
    Discard,
    Claim, ///< argument: 1 to take it from the kernel's driver
    Release,
    Connect, ///< the kernel's driver
    Disconnect,
    GetDriver, ///< answer: length 1 with the file system itself, 2 with the kernel's driver
    ClearHalt
};

inline constexpr std::size_t MostData = 32768;

struct Request {
    Call call;
    std::uint32_t argument; ///< of Submit: the endpoint
    std::uint64_t id;       ///< of a transfer
    std::uint32_t length;   ///< of Submit: of the whole transfer; what goes out follows
};

struct Answer {
    std::int32_t result; ///< 0 or more, or a negative errno
    std::int32_t status; ///< of the transfer that ended
    std::uint64_t id;
    std::uint32_t length; ///< bytes that passed; what came in follows
};

} // namespace corvane::usb
