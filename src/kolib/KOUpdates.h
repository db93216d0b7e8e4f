#pragma once

#include <string>

namespace corvane {

/// How it stands with updates, for whoever asks.
struct UpdateStanding {
    enum class State {
        Off,     ///< This build has no updates.
        Unknown, ///< Nobody has looked yet in this run.
        Looking, ///< For a new version.
        Newest,  ///< There is none.
        Offered, ///< There is one.
        Downloading,
        Ready,     ///< The package lies there, and the next restart installs it.
        Elsewhere, ///< Another Corvane of this person is at work on it.
        Failed     ///< `why` tells.
    };

    State state = State::Unknown;
    std::string version; ///< That is offered, or further.
    int percent = 0;     ///< Of the download.
    bool skipped = false;
    std::string why;
    int daysWithoutNews = 0; ///< Since the newest manifest was made that has come.
};

/// The update client: looks for a new version, fetches it, and makes sure that it is ours, all in
/// the background. Remembers on the disk how far it has come.
class KOUpdates {
  public:
    // What `UC_GetState` tells.
    static constexpr int Working = 0;
    static constexpr int Failed = -1;
    static constexpr int NothingNew = 1;
    static constexpr int Available = 2;
    static constexpr int Downloaded = 3; ///< And verified.

    virtual ~KOUpdates() = default;
    /// Starts a check, and goes on with a download that was under way.
    virtual void UC_Begin() = 0;
    /// The same for a person who asks: also tells of a version that is to be skipped.
    virtual void UC_BeginNow() = 0;
    /// Ends whatever is going on.
    virtual void UC_Reset() = 0;
    [[nodiscard]] virtual int UC_GetState() const = 0;
    /// What is new in the version that is available.
    [[nodiscard]] virtual std::string UC_GetChangeLog() const = 0;
    /// Fetches the version that is available.
    virtual void UC_DownloadUpdate() = 0;
    /// The person does not want the version that is available, for this run or for good.
    virtual void UC_Decline(bool forGood) = 0;
    [[nodiscard]] virtual UpdateStanding UC_GetStanding() const = 0;
};

} // namespace corvane
