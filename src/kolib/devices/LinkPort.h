#pragma once

#include "kolib/KODevice.h"
#include "kolib/wire/HostSession.h"

#include <memory>
#include <string>
#include <vector>

namespace corvane {

/// An opened link device. Closes when it ends.
class LinkPort : public wire::ByteStream {
  public:
    /// Does what is due by the clock and notices an unplugging.
    virtual void service() = 0;
    [[nodiscard]] virtual bool alive() const = 0;
    /// Takes the power from what hangs on the link, and gives it back a little later.
    virtual void powerCycle() = 0;
    /// Readable when there is something to read; -1 if there is no such descriptor.
    [[nodiscard]] virtual int descriptor() const { return -1; }
    [[nodiscard]] virtual bool writeStrings(const DeviceInfo& strings) = 0;
};

/// What came of opening a device: the port, or why there is none and what to do about it.
struct OpenOutcome {
    std::unique_ptr<LinkPort> port;
    std::string problem;
    LinkHindrance hindrance{};
};

/// One kind of link devices that may be plugged in.
class LinkSource {
  public:
    struct Device {
        DeviceInfo info;
        bool accessible = true; ///< False if the system has not given the rights to open it.
    };

    virtual ~LinkSource() = default;
    /// True if the list has changed. Looks again only where the system has told of a change.
    [[nodiscard]] virtual bool refresh() = 0;
    [[nodiscard]] virtual bool pending() const = 0;
    [[nodiscard]] virtual const std::vector<Device>& devices() const = 0;
    [[nodiscard]] virtual OpenOutcome open(std::size_t index) = 0;
};

} // namespace corvane
