#include "light/LumoraUndoableTrackChange.h"

#include "base/Assert.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "base/TextLines.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr std::string_view InsertPrefix = "LumoraTrackInsert";
constexpr std::string_view RemovePrefix = "LumoraTrackRemove";
constexpr std::string_view FullInsertPrefix = "LumoraTrackInsert2";
constexpr std::string_view FullRemovePrefix = "LumoraTrackRemove2";
constexpr std::size_t HeadLength = 2;  // channel and state
constexpr std::size_t PlainStride = 3; // index, brightness, time
constexpr std::size_t FullStride = 5;  // and function, brightness2

void insertInto(LumoraTrack& track, const LumoraSegment& segment) {
    track.InsertTrack(segment.index, segment.time, segment.brightness, segment.function,
                      segment.brightness2);
}

bool isFull(std::string_view prefix) {
    return prefix == FullInsertPrefix || prefix == FullRemovePrefix;
}

} // namespace

LumoraSegment LumoraSegment::of(const LumoraTrack& track, int index) {
    const LumoraTrackElement& element = track.GetTrack(index);
    return {index, element.brightness(), element.time(), element.functionCode(),
            element.brightness2()};
}

bool LumoraUndoableTrackChange::isPrefix(std::string_view prefix) {
    return prefix == InsertPrefix || prefix == RemovePrefix || isFull(prefix);
}

void LumoraUndoableTrackChange::InitializeGroup(LumoraDocument& document, bool insert, int channel,
                                                bool onState, std::vector<LumoraSegment> segments) {
    document_ = &document;
    insert_ = insert;
    channel_ = channel;
    onState_ = onState;
    segments_ = std::move(segments);
    Assert(ascends());
    // A file does not hold the second levels of segments without functions, and what is inserted
    // must be what a reopened file inserts.
    if (insert_ && !hasFunctions())
        for (LumoraSegment& segment : segments_)
            segment.brightness2 = 0;
}

void LumoraUndoableTrackChange::Initialize(LumoraDocument& document, bool insert, int channel,
                                           bool onState, LumoraSegment segment) {
    InitializeGroup(document, insert, channel, onState, {std::move(segment)});
}

void LumoraUndoableTrackChange::Serialize(std::string& prefix,
                                          std::vector<std::string>& Data) const {
    const bool full =
        std::any_of(segments_.begin(), segments_.end(),
                    [](const LumoraSegment& segment) { return !Trim(segment.function).empty(); });
    prefix = insert_ ? (full ? FullInsertPrefix : InsertPrefix)
                     : (full ? FullRemovePrefix : RemovePrefix);
    Data = {std::to_string(channel_), onState_ ? "1" : "0"};
    Data.reserve(HeadLength + segments_.size() * (full ? FullStride : PlainStride));
    for (const LumoraSegment& segment : segments_) {
        Data.push_back(std::to_string(segment.index));
        Data.push_back(std::to_string(segment.brightness));
        Data.push_back(WriteNumber(segment.time));
        if (!full)
            continue;
        Data.emplace_back(Trim(segment.function));
        Data.push_back(std::to_string(segment.brightness2));
    }
}

bool LumoraUndoableTrackChange::Deserialize(History& history, std::string_view prefix,
                                            const std::vector<std::string>& Data) {
    document_ = documentOf(history);
    if (document_ == nullptr || !isPrefix(prefix))
        return false;
    insert_ = prefix == InsertPrefix || prefix == FullInsertPrefix;
    const std::size_t stride = isFull(prefix) ? FullStride : PlainStride;
    if (Data.size() < HeadLength + stride || (Data.size() - HeadLength) % stride != 0)
        return false;
    channel_ = ReadInteger(Data[0]);
    onState_ = ReadNumber(Data[1]) != 0;
    segments_.resize((Data.size() - HeadLength) / stride);
    auto field = Data.begin() + HeadLength;
    for (LumoraSegment& segment : segments_) {
        segment.index = ReadInteger(field[0]);
        segment.brightness = ReadInteger(field[1]);
        segment.time = ReadNumber(field[2]);
        if (stride == FullStride) {
            segment.function = Trim(field[3]);
            segment.brightness2 = ReadInteger(field[4]);
        }
        field += static_cast<std::ptrdiff_t>(stride);
    }
    return isSound();
}

bool LumoraUndoableTrackChange::isApplicable() const {
    if (document_ == nullptr || !isSound())
        return false;
    int present = document_->Channel(channel_, onState_).GetTrackCount();
    return fitsInto(present);
}

bool LumoraUndoableTrackChange::fits(LumoraSegmentCounts& counts) const {
    return fitsInto(counts.of(channel_, onState_));
}

bool LumoraUndoableTrackChange::fitsInto(int& present) const {
    if (!insert_) {
        const bool there = segments_.back().index <= present;
        present -= count();
        return there;
    }
    return std::all_of(segments_.begin(), segments_.end(),
                       [&present](const auto& segment) { return segment.index <= ++present; });
}

bool LumoraUndoableTrackChange::ascends() const {
    return !segments_.empty() && segments_.front().index >= 1 &&
           std::adjacent_find(segments_.begin(), segments_.end(),
                              [](const LumoraSegment& a, const LumoraSegment& b) {
                                  return a.index >= b.index;
                              }) == segments_.end();
}

bool LumoraUndoableTrackChange::fitsALine() const {
    const std::size_t stride = hasFunctions() ? FullStride : PlainStride;
    return 1 + HeadLength + segments_.size() * stride <= MostArguments;
}

bool LumoraUndoableTrackChange::hasFunctions() const {
    return std::any_of(segments_.begin(), segments_.end(), [](const LumoraSegment& segment) {
        return !Trim(segment.function).empty();
    });
}

void LumoraUndoableTrackChange::insert() const {
    LumoraTrack& track = document_->Channel(channel_, onState_);
    const int before = track.GetTrackCount();
    AllOrNothing(
        [&] {
            for (const LumoraSegment& segment : segments_)
                insertInto(track, segment);
        },
        [&] {
            for (int done = track.GetTrackCount() - before; done > 0; --done)
                Despite([&] { track.RemoveTrack(indexAt(done)); });
        });
}

void LumoraUndoableTrackChange::remove() const {
    LumoraTrack& track = document_->Channel(channel_, onState_);
    Assert(segments_.back().index <= track.GetTrackCount());
    const int before = track.GetTrackCount();
    std::vector<LumoraSegment> removed; // as they were, which a file need not tell
    removed.reserve(segments_.size());
    AllOrNothing(
        [&] {
            for (int left = count(); left > 0; --left) {
                removed.push_back(LumoraSegment::of(track, indexAt(left)));
                track.RemoveTrack(indexAt(left));
            }
        },
        [&] {
            removed.resize(static_cast<std::size_t>(before - track.GetTrackCount()));
            for (; !removed.empty(); removed.pop_back())
                Despite([&] { insertInto(track, removed.back()); });
        });
}

} // namespace corvane
