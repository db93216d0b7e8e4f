#pragma once

#include "base/Clock.h"
#include "kolib/devices/DeviceHolder.h"
#include "kolib/devices/LinkMessages.h"
#include "kolib/devices/LinkPort.h"
#include "kolib/devices/Socket.h"

#include <filesystem>
#include <map>

namespace corvane {

/// The virtual links in one folder, in the order of their names. Each is asked once who it is,
/// over a connection that stays open so that an unplugging shows; nothing here blocks.
class VirtualLinkSource final : public LinkSource {
  public:
    VirtualLinkSource(std::filesystem::path folder, const Clock& clock);

    /// Where virtual links of this user are, whether or not the folder exists.
    [[nodiscard]] static std::filesystem::path userFolder();
    /// Why links in the folder are not listed, and what to do; empty if they are.
    [[nodiscard]] static std::string ProblemWith(const std::filesystem::path& folder);

    [[nodiscard]] bool refresh() override;
    [[nodiscard]] bool pending() const override;
    [[nodiscard]] const std::vector<Device>& devices() const override { return devices_; }
    [[nodiscard]] OpenOutcome open(std::size_t index) override;

  private:
    struct Link {
        Socket socket;
        LinkMessages messages;
        std::optional<DeviceInfo> info;
        std::uint32_t askedAt = 0;
        int tries = 0;
    };

    bool watchFolder();
    bool folderChanged();
    void stopWatching();
    void lookIntoFolder();
    void ask(const std::string& name, Link& link) const;
    void listen(Link& link) const;

    std::filesystem::path folder_;
    const Clock& clock_;
    DeviceHolder holder_;
    Handle notifications_;
    int watch_ = -1;
    std::map<std::string, Link> links_; // by file name
    std::vector<Device> devices_;
    std::vector<std::string> names_; // of the devices
};

} // namespace corvane
