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

bool isFull(std::string_view prefix) {
    return prefix == FullInsertPrefix || prefix == FullRemovePrefix;
}

} // namespace

bool LumoraUndoableTrackChange::isPrefix(std::string_view prefix) {
    return prefix == InsertPrefix || prefix == RemovePrefix || isFull(prefix);
}

void LumoraUndoableTrackChange::InitializeGroup(LumoraDocument& document, bool insert, int channel,
                                                bool onState,
                                                std::vector<LumoraPlacedElement> segments) {
    document_ = &document;
    insert_ = insert;
    channel_ = channel;
    onState_ = onState;
    segments_ = std::move(segments);
    Assert(ascends());
    // A file does not hold the second levels of segments without functions, and what is inserted
    // must be what a reopened file inserts.
    if (insert_ && !hasFunctions())
        for (LumoraPlacedElement& segment : segments_)
            segment.element.setBrightness2(0);
}

void LumoraUndoableTrackChange::Initialize(LumoraDocument& document, bool insert, int channel,
                                           bool onState, LumoraPlacedElement segment) {
    InitializeGroup(document, insert, channel, onState, {std::move(segment)});
}

void LumoraUndoableTrackChange::Serialize(std::string& prefix,
                                          std::vector<std::string>& Data) const {
    const bool full = hasFunctions();
    prefix = insert_ ? (full ? FullInsertPrefix : InsertPrefix)
                     : (full ? FullRemovePrefix : RemovePrefix);
    Data = {std::to_string(channel_), onState_ ? "1" : "0"};
    Data.reserve(HeadLength + segments_.size() * (full ? FullStride : PlainStride));
    for (const auto& [index, element] : segments_) {
        Data.push_back(std::to_string(index));
        Data.push_back(std::to_string(element.brightness()));
        Data.push_back(WriteNumber(element.time()));
        if (!full)
            continue;
        Data.emplace_back(Trim(element.functionCode()));
        Data.push_back(std::to_string(element.brightness2()));
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
    for (auto& [index, element] : segments_) {
        index = ReadInteger(field[0]);
        element = {ReadInteger(field[1]), ReadNumber(field[2])};
        if (stride == FullStride) {
            element.setFunctionCode(std::string(Trim(field[3])));
            element.setBrightness2(ReadInteger(field[4]));
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
           std::adjacent_find(segments_.begin(), segments_.end(), [](const auto& a, const auto& b) {
               return a.index >= b.index;
           }) == segments_.end();
}

bool LumoraUndoableTrackChange::fitsALine() const {
    const std::size_t stride = hasFunctions() ? FullStride : PlainStride;
    return 1 + HeadLength + segments_.size() * stride <= MostArguments;
}

bool LumoraUndoableTrackChange::hasFunctions() const {
    return std::any_of(segments_.begin(), segments_.end(), [](const auto& segment) {
        return !Trim(segment.element.functionCode()).empty();
    });
}

void LumoraUndoableTrackChange::insert() const {
    LumoraTrack& track = writable(*document_, channel_, onState_);
    const int before = track.GetTrackCount();
    AllOrNothing(
        [&] {
            for (const auto& [index, element] : segments_)
                track.InsertTrack(index, element);
        },
        [&] {
            for (int done = track.GetTrackCount() - before; done > 0; --done)
                Despite([&] { track.RemoveTrack(indexAt(done)); });
        });
}

void LumoraUndoableTrackChange::remove() const {
    LumoraTrack& track = writable(*document_, channel_, onState_);
    Assert(segments_.back().index <= track.GetTrackCount());
    const int before = track.GetTrackCount();
    std::vector<LumoraPlacedElement> removed; // as they were, which a file need not tell
    removed.reserve(segments_.size());
    AllOrNothing(
        [&] {
            for (int left = count(); left > 0; --left) {
                removed.push_back({indexAt(left), track.GetTrack(indexAt(left))});
                track.RemoveTrack(indexAt(left));
            }
        },
        [&] {
            removed.resize(static_cast<std::size_t>(before - track.GetTrackCount()));
            for (; !removed.empty(); removed.pop_back())
                Despite([&] {
                    track.InsertTrack(removed.back().index, std::move(removed.back().element));
                });
        });
}

} // namespace corvane
