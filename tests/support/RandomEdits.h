#pragma once

#include "eeprom/KOEEPROMDocument.h"
#include "light/LumoraUndoableSegmentChange.h"
#include "light/LumoraUndoableTrackChange.h"
#include "pwm/QuillonProgram.h"
#include "relay/PactorDocument.h"

#include <random>
#include <stdexcept>

namespace corvane {

class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}
    int below(int limit) { return static_cast<int>(engine_() % static_cast<unsigned>(limit)); }
    template<class T, std::size_t N>
    T among(const std::array<T, N>& choices) {
        return choices[engine_() % N];
    }

  private:
    std::mt19937 engine_;
};

/// Each records one change of a document, as its product's editor would.
inline void editAtRandom(PactorDocument& document, Random& random) {
    if (random.below(2) == 0)
        document.record(PactorDocument::TripPoint, 0, std::to_string(random.below(101)));
    else
        document.record(PactorDocument::Relay, random.below(2),
                        random.below(2) == 0 ? PactorDocument::On : "");
}

inline void editAtRandom(QuillonProgram& document, Random& random) {
    static_cast<void>(document.append(static_cast<std::uint8_t>(random.below(256))));
}

inline void editAtRandom(KOEEPROMDocument& document, Random& random) {
    constexpr std::array comments{"", "plain", "tab\tand\nline\\", "\u00e4\u6c34"};
    const int index = 1 + random.below(document.EntryCount() + 1);
    if (index > document.EntryCount() || random.below(5) == 0)
        document.recordAdding(index, {random.below(70000), 2, random.among(comments), {1, 171}});
    else if (random.below(5) == 0)
        document.recordRemoving(index);
    else if (random.below(2) == 0)
        document.record(index, KOEEPROMDocument::Comments, random.among(comments));
    else
        document.record(index, KOEEPROMDocument::Address, std::to_string(random.below(256)));
}

inline void editAtRandom(LumoraDocument& document, Random& random) {
    constexpr std::array functions{"", "", "P", "PT"};
    const int channel = 1 + random.below(LumoraDocument::ChannelCount);
    const bool onState = random.below(2) == 0;
    const LumoraTrack& track = document.Channel(channel, onState);
    const int count = track.GetTrackCount();
    const auto record = [&](auto change, auto... values) {
        change->Initialize(document, values...);
        document.HistoryObject().Record(std::move(change));
    };
    const LumoraPlacedElement segment{1 + random.below(count + 1),
                                      {random.below(101), (1 + random.below(250)) / 100.0,
                                       random.among(functions), random.below(101)}};
    switch (count == 0 ? 0 : random.below(6)) {
    case 0:
        return record(std::make_unique<LumoraUndoableTrackChange>(), true, channel, onState,
                      segment);
    case 1:
        return record(std::make_unique<LumoraUndoableTrackChange>(), false, channel, onState,
                      LumoraPlacedElement{count, track.GetTrack(count)});
    case 2:
        return record(std::make_unique<LumoraUndoableTimeChange>(), channel, onState, 1,
                      track.GetTrack(1).time(), segment.element.time());
    case 3:
        return record(std::make_unique<LumoraUndoableBrightnessChange>(), channel, onState, 1,
                      track.GetTrack(1).brightness(), segment.element.brightness());
    case 4:
        return record(std::make_unique<LumoraUndoableTextChange>(), channel, "Trip Point",
                      std::to_string(random.below(101)));
    default: // a few that come or go at once, which has steps in between
        std::vector<LumoraPlacedElement> group;
        for (const int index : {1, 2, 4})
            if (index <= count)
                group.push_back({index, track.GetTrack(index)});
        auto change = std::make_unique<LumoraUndoableTrackChange>();
        const bool come = group.size() < 3;
        change->InitializeGroup(document, come, channel, onState, std::move(group));
        document.HistoryObject().Record(std::move(change));
    }
}

/// What each document is, whatever way led there.
inline std::string stateOf(const PactorDocument& document) {
    std::string state = document.Data(0, PactorDocument::TripPoint);
    for (int i = 0; i < 2; ++i)
        state += "," + document.Data(i, PactorDocument::Relay);
    return state;
}

inline std::string stateOf(const QuillonProgram& document) {
    const auto bytes = document.blocks().bytes();
    return {bytes.begin(), bytes.end()};
}

inline std::string stateOf(const KOEEPROMDocument& document) {
    std::string state;
    for (int i = 1; i <= document.EntryCount(); ++i)
        for (const auto property :
             {KOEEPROMDocument::Address, KOEEPROMDocument::Length, KOEEPROMDocument::Comments,
              KOEEPROMDocument::DataType, KOEEPROMDocument::DataValue})
            state += document.Data(i, property) + "|";
    return state;
}

inline std::string stateOf(const LumoraDocument& document) {
    std::string state;
    for (int i = 1; i <= LumoraDocument::TrackCount; ++i) {
        const LumoraTrack& track = document.track(i);
        for (const char* name :
             {"Trip Point", "Hysteresis", "Max Current", "Turn Off Point", "No Signal",
              "Light Color", "Sim Light Image", "Sim Light Position"})
            state += document.Data(LumoraDocument::channelOf(i), name) + "|";
        for (int segment = 1; segment <= track.GetTrackCount(); ++segment) {
            const LumoraTrackElement& element = track.GetTrack(segment);
            state += element.FormatTime(element.time()) + element.functionCode() +
                     std::to_string(element.brightness()) + "-" +
                     std::to_string(element.brightness2()) + " ";
        }
    }
    for (const char* name :
         {"XMit Min", "XMit Max", "Sim Background Color", "Sim Background Image"})
        state += document.Data(0, name) + "|";
    return state;
}

} // namespace corvane
