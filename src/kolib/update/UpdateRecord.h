#pragma once

#include "base/FileDoor.h"
#include "base/Handle.h"
#include "kolib/update/UpdateManifest.h"

#include <filesystem>

namespace corvane {

/// How it stands with updates, in one place, whichever program looks and however the last one
/// ended.
struct UpdateRecord {
    enum class State {
        Nothing,
        Offered,     ///< The person has not answered yet.
        Downloading, ///< The person wants it.
        Ready,       ///< The package lies there, verified.
        Installing   ///< It has been handed to the system.
    };

    State state = State::Nothing;
    /// The text of the manifest that the state, and what lies in the download folder, belong to.
    std::string manifest;
    // Seconds since 1970; 0 for never.
    std::int64_t issued = 0; ///< Date of the newest manifest that was ever taken.
    std::int64_t looked = 0; ///< When one was last taken.
    std::int64_t since = 0;  ///< When anybody first looked for one.
    std::string skipped;     ///< A version that the person does not want to hear of.
    std::string why;         ///< What the last attempt failed at; empty if it did not.

    /// The manifest's content; nothing if there is none.
    [[nodiscard]] std::optional<UpdateManifest> update() const {
        return UpdateManifest::read(manifest);
    }
    /// Whole days since the newest manifest was made, or since anybody first looked for one.
    [[nodiscard]] int daysWithoutNews(std::int64_t now) const;
};

/// The file of the record, and the lock of whoever works on it: one program at a time, as long as
/// it wants to. The lock goes with its holder.
class UpdateRecordFile {
  public:
    /// The folder is made when something is first written.
    UpdateRecordFile(std::filesystem::path folder, FileDoor& files)
        : folder_(std::move(folder)), files_(files) {}

    /// True if the lock is ours, now or already.
    [[nodiscard]] bool acquire();
    void release() { lock_ = Handle(); }

    /// An empty record if there is none, or it is damaged.
    [[nodiscard]] UpdateRecord load() const;
    /// False if it can't be written; the old one then stands.
    [[nodiscard]] bool save(const UpdateRecord& record) const;

    /// Appends a line with the time to the log beside the record, which keeps the last hundreds.
    void log(const std::string& line) const;

  private:
    [[nodiscard]] std::string pathOf(const char* name) const { return folder_ / name; }
    void makeFolder() const;

    std::filesystem::path folder_;
    FileDoor& files_;
    Handle lock_;
};

} // namespace corvane
