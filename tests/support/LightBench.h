#pragma once

#include "light/LumoraControl.h"
#include "support/ControlBench.h"
#include "support/Writing.h"

namespace corvane {

/// A light editor at work on a desk, with room for its tracks.
class LightBench : public ControlBench<LumoraControl> {
  public:
    LightBench() { control.tracks.Resize(9000, 3000); }

    LumoraDocument& document = control.document;
    LumoraScrollableTracks& tracks = control.tracks;
    Connection onPacket = desk.bench.link.PacketReceived.connect(
        [this](const KOPacket& packet) { control.ProcessPacket(packet); });

    LumoraTrackEditor& track(int channel, bool onState = false) const {
        return control.tracks.track(LumoraDocument::trackIndex(channel, onState));
    }
    enum class Held { Nothing, Shift, Ctrl };
    /// A click on a segment of a channel's top track.
    void press(int channel, int segment, Held held = Held::Nothing) {
        desk.keys.shift = held == Held::Shift;
        desk.keys.ctrl = held == Held::Ctrl;
        track(channel).press(segment);
        desk.keys = {};
    }
    /// Levels of a track's segments, such as "50 100".
    [[nodiscard]] std::string levels(int channel, bool onState = false) const {
        std::string text;
        const LumoraTrack& segments = document.Channel(channel, onState);
        for (int i = 1; i <= segments.GetTrackCount(); ++i)
            text += (i == 1 ? "" : " ") + std::to_string(segments.GetTrack(i).brightness());
        return text;
    }
    /// Puts segments of these levels into a track, through changes.
    void fill(int channel, const std::vector<int>& brightness, bool onState = false) {
        int index = 0;
        for (const int level : brightness)
            insert(channel, onState, {++index, {level, 1.0}});
    }
    void insert(int channel, bool onState, const LumoraPlacedElement& segment) {
        auto change = std::make_unique<LumoraUndoableTrackChange>();
        change->Initialize(document, true, channel, onState, segment);
        history.Record(std::move(change));
    }
    /// A segment with a function, through a change.
    void add(int channel, bool onState, int level, double time, const std::string& function = {},
             int level2 = 0) {
        insert(channel, onState,
               {document.Channel(channel, onState).GetTrackCount() + 1,
                {level, time, function, level2}});
    }
};

} // namespace corvane
