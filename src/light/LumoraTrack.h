#pragma once

#include "base/BlockSequence.h"
#include "base/Event.h"
#include "light/LumoraTrackElement.h"

#include <vector>

namespace corvane {

/// The three parts of a light's colour that can be shown; a document may hold 32 bits.
[[nodiscard]] constexpr int LightPart(int color) {
    return color & 0xFFFFFF;
}

/// The segments of one track, played one after another, each within the track's limits. "Track" in
/// the operations' names means one segment. Indices count from 1; one out of range is a caller's
/// fault.
class LumoraTrack {
  public:
    /// `topTrack`: the one that is in force from the channel's trip point on.
    explicit LumoraTrack(bool topTrack) : topTrack_(topTrack) {}
    LumoraTrack(const LumoraTrack&) = delete;
    LumoraTrack& operator=(const LumoraTrack&) = delete;

    Event<int> SegmentInserted;
    Event<int> SegmentRemoving; ///< It is still there.
    Event<int> SegmentRemoved;
    Event<int> SegmentChanged;
    Event<> ColorChanged;

    [[nodiscard]] bool topTrack() const { return topTrack_; }
    /// All segments only fully on and fully off, and without functions.
    [[nodiscard]] bool Binary() const { return binary_; }
    void setBinary(bool binary);
    /// An RGB value with red in the low byte.
    [[nodiscard]] int LightColor() const { return lightColor_; }
    void setLightColor(int color);

    [[nodiscard]] int GetTrackCount() const { return static_cast<int>(elements_.size()); }
    /// Stays where it is until a segment comes or goes.
    [[nodiscard]] const LumoraTrackElement& GetTrack(int index) const;
    /// Puts another segment in the place of one, which is told if they differ.
    void SetTrack(int index, LumoraTrackElement element);
    /// Adds a segment without a function at the end and gives its index.
    int AddTrack(double time, int brightness);
    /// Inserts a segment before the one at `index`, or at the end. -1 stands for a time of 1
    /// second and for a level of 0. A two-level track takes no function and no second level.
    int InsertTrack(int index, double time, int brightness, std::string functionCode,
                    int brightness2) {
        return InsertTrack(index, {brightness, time, std::move(functionCode), brightness2});
    }
    int InsertTrack(int index, LumoraTrackElement element);
    void RemoveTrack(int index);

    /// Program blocks that the track costs: 1 a segment, 2 with a function, and 1 if it is empty.
    [[nodiscard]] int BlockCount() const;
    /// Seconds that it takes to play.
    [[nodiscard]] float TimeLimit() const;
    /// The segment that plays at so many seconds from the beginning, on a border the later one;
    /// the last one past the end, 0 in an empty track.
    [[nodiscard]] int SegmentAt(double seconds) const;

  private:
    void changed(bool hadFunction, bool hasFunction);
    void sumTimes() const;

    bool topTrack_;
    bool binary_ = false;
    int lightColor_ = 0xFFFFFF;
    BlockSequence<LumoraTrackElement> elements_;
    int functions_ = 0; // segments that have one
    // Worked out when they are asked for.
    mutable std::vector<double> ends_; // of the segments, in seconds
    mutable float timeLimit_ = 0;
};

} // namespace corvane
