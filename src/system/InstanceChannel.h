#pragma once

#include "base/Handle.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <list>
#include <optional>
#include <string>

namespace corvane {

/// What a second start of the program tells the running one.
struct InstanceRecord {
    static constexpr std::uint32_t Foreground = 1; ///< Show your window; perhaps with a token.
    static constexpr std::uint32_t Path = 100;     ///< Open this file.

    std::uint32_t dwData = 0; ///< Which of these it is.
    std::string lpData;       ///< Bytes, at most `InstanceChannel::MaxData`.

    bool operator==(const InstanceRecord&) const = default;
};

/// The way from a second start of the program to the one that runs. Both meet in a folder that
/// only their user may enter: whoever runs holds a lock there as long as it lives, and a socket,
/// its mark, as long as it takes records. Where there can't be such a folder, nobody is found and
/// nobody hindered.
class InstanceChannel {
  public:
    static constexpr const char* MarkName = "Corvane.Application";
    static constexpr std::size_t MaxData = 65536;

    explicit InstanceChannel(std::filesystem::path folder) : folder_(std::move(folder)) {}
    ~InstanceChannel() { Unmark(); }
    InstanceChannel(const InstanceChannel&) = delete;
    InstanceChannel& operator=(const InstanceChannel&) = delete;

    /// Whether another instance runs, marked or not. If none does, this one runs from now on. What
    /// a killed instance left behind counts as nothing.
    [[nodiscard]] bool EarlierInstanceRuns();

    /// Sends a record to the marked instance. False if there is none. The first way returns at
    /// once, the second when the record has been dealt with, however long that takes; false also if
    /// the other one went away without saying that.
    [[nodiscard]] bool Post(const InstanceRecord& record) const;
    [[nodiscard]] bool Deliver(const InstanceRecord& record) const;

    /// Takes records from now on. False if that can't be.
    bool Mark();
    /// Takes no more, and no longer runs in the eyes of others.
    void Unmark();
    /// Readable while something waits for `Receive`; -1 if there is no mark.
    [[nodiscard]] int descriptor() const { return events_.get(); }
    /// A record that has arrived. Its sender goes on when this ends, as one that was not heard
    /// unless it is told.
    struct Delivery {
        InstanceRecord record;
        Handle sender;

        /// Tells the sender that the record has been dealt with.
        void confirm() const;
    };
    /// The next one that is whole. Never waits: who has sent only a part, or nothing, is kept until
    /// the rest comes, for a second at least. What is too long or someone else's is skipped.
    [[nodiscard]] std::optional<Delivery> Receive();

  private:
    /// Somebody who has called.
    struct Caller {
        Handle socket;
        std::chrono::steady_clock::time_point since;
        std::string bytes{}; // of its record, so far
    };
    enum class Reading { Unfinished, Whole, Useless };

    void acceptCallers();
    [[nodiscard]] static Reading read(Caller& caller);
    [[nodiscard]] Handle openFolder() const;
    [[nodiscard]] bool takeLock();
    [[nodiscard]] Handle call() const;
    [[nodiscard]] Handle send(const InstanceRecord& record) const;

    std::filesystem::path folder_;
    Handle lock_;
    Handle listener_;
    Handle events_; // of the listener and the callers
    std::list<Caller> callers_;
    std::uint64_t mark_ = 0; // number of the socket's file
};

} // namespace corvane
