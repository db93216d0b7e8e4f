#pragma once

#include <string>

namespace corvane {

/// The update client: looks for a new version, fetches it, and makes sure that it is ours, all in
/// the background.
class KOUpdates {
  public:
    // What `UC_GetState` tells.
    static constexpr int Working = 0;
    static constexpr int Failed = -1;
    static constexpr int NothingNew = 1;
    static constexpr int Available = 2;
    static constexpr int Downloaded = 3; ///< And verified.

    virtual ~KOUpdates() = default;
    /// Starts a check.
    virtual void UC_Begin() = 0;
    /// Ends whatever is going on.
    virtual void UC_Reset() = 0;
    [[nodiscard]] virtual int UC_GetState() const = 0;
    /// What is new in the version that is available.
    [[nodiscard]] virtual std::string UC_GetChangeLog() const = 0;
    /// Fetches the version that is available.
    virtual void UC_DownloadUpdate() = 0;
};

} // namespace corvane
