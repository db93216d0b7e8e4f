#include "kolib/devices/VirtualLinkSource.h"

#include "base/PrivateFolder.h"
#include "kolib/devices/VirtualLinkPort.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace corvane {

namespace {

constexpr int MaxTries = 10;
constexpr std::int32_t RetryAfter = 200;    // ms, for a link that closed or does not listen yet
constexpr std::int32_t AnswerWithin = 1000; // ms

} // namespace

VirtualLinkSource::VirtualLinkSource(std::filesystem::path folder, const Clock& clock)
    : folder_(std::move(folder)),
      clock_(clock),
      notifications_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

std::filesystem::path VirtualLinkSource::userFolder() {
    if (const char* folder = std::getenv("CORVANE_BENCH_DIR"); folder != nullptr && *folder != 0)
        return folder;
    if (const char* folder = std::getenv("XDG_RUNTIME_DIR"); folder != nullptr && *folder != 0)
        return std::filesystem::path(folder) / "corvane-bench";
    return "/tmp/corvane-bench-" + std::to_string(::geteuid());
}

std::string VirtualLinkSource::ProblemWith(const std::filesystem::path& folder) {
    std::error_code error;
    if (!std::filesystem::exists(std::filesystem::symlink_status(folder, error)) ||
        IsPrivateFolder(folder))
        return {};
    const std::string path = folder.string();
    return "Virtual links are not listed, because " + path +
           " is not a folder that is yours and closed to others. Try: chmod 700 " + path;
}

bool VirtualLinkSource::refresh() {
    // Watched before it is looked into: what appears in between is told rather than missed.
    if ((watch_ < 0 && watchFolder()) || folderChanged())
        lookIntoFolder();

    for (auto& [name, link] : links_) {
        if (link.socket.connected())
            listen(link);
        else if (link.tries < MaxTries && Elapsed(clock_.now(), link.askedAt) > RetryAfter)
            ask(name, link);
    }

    std::vector<std::string> names;
    for (const auto& [name, link] : links_)
        if (link.info)
            names.push_back(name);
    const bool sameInfo =
        names == names_ && std::equal(names.begin(), names.end(), devices_.begin(), devices_.end(),
                                      [&](const std::string& name, const Device& device) {
                                          return links_.at(name).info == device.info;
                                      });
    if (sameInfo)
        return false;
    names_ = std::move(names);
    devices_.clear();
    for (const std::string& name : names_)
        devices_.push_back({*links_.at(name).info, true});
    return true;
}

bool VirtualLinkSource::pending() const {
    return std::any_of(links_.begin(), links_.end(), [this](const auto& entry) {
        const Link& link = entry.second;
        return !link.info && link.socket.connected() &&
               Elapsed(clock_.now(), link.askedAt) < AnswerWithin;
    });
}

OpenOutcome VirtualLinkSource::open(std::size_t index) {
    if (index >= names_.size())
        return {nullptr, "The virtual link is gone.", {}};
    return VirtualLinkPort::open(folder_ / names_[index], holder_);
}

bool VirtualLinkSource::watchFolder() {
    if (!IsPrivateFolder(folder_))
        return false;
    watch_ = ::inotify_add_watch(notifications_.get(), folder_.c_str(),
                                 IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM |
                                     IN_DELETE_SELF | IN_MOVE_SELF | IN_ATTRIB | IN_ONLYDIR);
    return watch_ >= 0;
}

bool VirtualLinkSource::folderChanged() {
    alignas(inotify_event) std::array<char, 4096> buffer;
    bool changed = false;
    for (;;) {
        const ssize_t count = ::read(notifications_.get(), buffer.data(), buffer.size());
        if (count <= 0)
            return changed;
        changed = true;
        for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            at += sizeof event + event.len;
            if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF)) != 0)
                stopWatching(); // the next look finds the folder again if another stands there
        }
    }
}

void VirtualLinkSource::stopWatching() {
    ::inotify_rm_watch(notifications_.get(), watch_);
    watch_ = -1;
}

void VirtualLinkSource::lookIntoFolder() {
    std::map<std::string, Link> found;
    if (IsPrivateFolder(folder_)) {
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder_, error)) {
            if (entry.path().extension() != ".link")
                continue;
            const std::string name = entry.path().filename();
            const auto known = links_.find(name);
            Link& link = found[name];
            if (known != links_.end())
                link = std::move(known->second);
            if (!link.socket.connected()) {
                link.tries = 0; // something has happened here: it is worth asking again
                ask(name, link);
            }
        }
    } else if (watch_ >= 0) {
        stopWatching();
    }
    links_ = std::move(found);
}

void VirtualLinkSource::ask(const std::string& name, Link& link) const {
    // What is left of an earlier talk, a half message too, goes; only the count stays.
    const int tries = link.tries + 1;
    link = {};
    link.tries = tries;
    link.askedAt = clock_.now();
    link.socket = Socket(folder_ / name);
    link.socket.send(LinkMessages::encode('I', {}));
}

void VirtualLinkSource::listen(Link& link) const {
    std::array<std::uint8_t, 4096> buffer;
    link.messages.feed(std::span(buffer).first(link.socket.receive(buffer)));
    while (const std::optional<LinkMessage> message = link.messages.next())
        if (message->kind == 'I')
            link.info = LinkMessages::decodeStrings(message->payload);
    if (link.info)
        link.tries = 0;
    if (!link.socket.connected() || link.messages.broken()) {
        link.info.reset();
        link.socket = {};
    }
}

} // namespace corvane
