#pragma once

#include "light/LumoraControl.h"
#include "support/Desk.h"
#include "support/Writing.h"

namespace corvane {

/// A light editor at work on a desk, with room for its tracks.
class LightBench {
  public:
    LightBench() { control.tracks.Resize(9000, 3000); }

    Desk desk;
    LumoraControl control{desk.place, desk.keys};
    LumoraDocument& document = control.document;
    History& history = control.document.HistoryObject();
    LumoraScrollableTracks& tracks = control.tracks;
    Connection onPacket = desk.bench.link.PacketReceived.connect(
        [this](const KOPacket& packet) { control.ProcessPacket(packet); });

    LumoraTrackEditor& track(int channel, bool onState = false) const {
        return control.tracks.track(LumoraDocument::trackIndex(channel, onState));
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
    /// What the document's file would hold, without the header.
    [[nodiscard]] std::string lines() {
        const std::string path = desk.folder.path() / "lines.lumora";
        desk.person.files.push_front(path);
        EXPECT(history.SaveHistoryAs());
        const std::string content = desk.folder.content("lines.lumora");
        return content.substr(content.find('\n') + 1);
    }

  private:
    static void EXPECT(bool condition) {
        if (!condition)
            throw std::runtime_error("the document could not be saved");
    }
};

} // namespace corvane
