#include "kolib/devices/SocketPeers.h"

#include "base/Handle.h"

#include <array>
#include <cstring>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <optional>
#include <span>
#include <sys/socket.h>
#include <sys/stat.h>

namespace corvane {

namespace {

using Bytes = std::span<const std::byte>;

template<class T>
std::optional<T> readAt(Bytes bytes, std::size_t at) {
    T value{};
    if (bytes.size() < at + sizeof value)
        return std::nullopt;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

/// Asks for all local connections, with the file of their socket and their other end.
bool ask(int netlink) {
    struct {
        nlmsghdr header;
        unix_diag_req request;
    } question{};
    constexpr unsigned established = 1;
    question.header.nlmsg_len = sizeof question;
    question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    question.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    question.request.sdiag_family = AF_UNIX;
    question.request.udiag_states = 1U << established;
    question.request.udiag_show = UDIAG_SHOW_VFS | UDIAG_SHOW_PEER;
    return ::send(netlink, &question, sizeof question, 0) == sizeof question;
}

/// The other end of a connection that was accepted at the socket with this file.
std::optional<std::uint32_t> peerIn(Bytes message, ino_t file) {
    std::optional<std::uint32_t> peer;
    bool there = false;
    std::size_t at = NLMSG_ALIGN(sizeof(unix_diag_msg));
    while (const auto attribute = readAt<rtattr>(message, at)) {
        if (attribute->rta_len < sizeof(rtattr))
            break;
        const std::size_t value = at + RTA_LENGTH(0);
        if (attribute->rta_type == UNIX_DIAG_PEER)
            peer = readAt<std::uint32_t>(message, value);
        else if (attribute->rta_type == UNIX_DIAG_VFS)
            if (const auto vfs = readAt<unix_diag_vfs>(message, value))
                there = vfs->udiag_vfs_ino == static_cast<std::uint32_t>(file);
        at += RTA_ALIGN(attribute->rta_len);
    }
    return there ? peer : std::nullopt;
}

} // namespace

std::vector<std::string> PeersOf(const std::string& path) {
    std::vector<std::string> peers;
    struct stat file {};
    const Handle netlink(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    if (::stat(path.c_str(), &file) != 0 || !netlink.valid() || !ask(netlink.get()))
        return peers;
    std::array<std::byte, 32768> buffer;
    for (;;) {
        // The kernel has answered before the question returns.
        const ssize_t count = ::recv(netlink.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (count <= 0)
            return peers;
        const Bytes answer = Bytes(buffer).first(static_cast<std::size_t>(count));
        std::size_t at = 0;
        while (const auto header = readAt<nlmsghdr>(answer, at)) {
            if (header->nlmsg_type == NLMSG_DONE || header->nlmsg_type == NLMSG_ERROR ||
                header->nlmsg_len < NLMSG_HDRLEN || header->nlmsg_len > answer.size() - at)
                return peers;
            const std::size_t length = header->nlmsg_len - NLMSG_HDRLEN;
            if (const auto peer = peerIn(answer.subspan(at + NLMSG_HDRLEN, length), file.st_ino))
                peers.push_back("socket:[" + std::to_string(*peer) + "]");
            at += NLMSG_ALIGN(header->nlmsg_len);
        }
    }
}

} // namespace corvane
