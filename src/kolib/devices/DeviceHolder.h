#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace corvane {

/// Finds the other program that has a device open. Looking through all that run is work, so it
/// looks again only once the one that it found has let go, or 10 s after it found none.
class DeviceHolder {
  public:
    /// Who has this device node, or what else the system names so among open files, open, such as
    /// "minicom (process 1234)". Empty if nobody has, or if the system does not tell this user.
    [[nodiscard]] std::string of(const std::string& node);

  private:
    void search();

    std::string node_;
    std::string name_;
    std::string file_; // the link to the node among the files that the program has open
    std::optional<std::chrono::steady_clock::time_point> searched_;
};

} // namespace corvane
