#pragma once

#include "history/TextChange.h"
#include "light/LumoraDocument.h"

#include <array>

namespace corvane {

/// Numbers of segments of all tracks, for looking whether changes fit without applying them.
class LumoraSegmentCounts {
  public:
    [[nodiscard]] int& of(int channel, bool onState) {
        return counts_[static_cast<std::size_t>(LumoraDocument::trackIndex(channel, onState)) - 1];
    }

  private:
    std::array<int, LumoraDocument::TrackCount> counts_{};
};

/// A change of a light program.
class LumoraUndoableChange : public UndoableChange {
  public:
    /// 0 for one of the whole document.
    [[nodiscard]] virtual int Channel() const = 0;
    /// Name of the setting; empty for a change of segments.
    [[nodiscard]] virtual const std::string& PropertyName() const {
        static const std::string none;
        return none;
    }
    /// Whether what the change applies to is there, and what is there after it.
    [[nodiscard]] virtual bool fits(LumoraSegmentCounts&) const { return true; }

  protected:
    [[nodiscard]] static bool isChannel(int channel) {
        return channel >= 1 && channel <= LumoraDocument::ChannelCount;
    }
    [[nodiscard]] static LumoraTrack& writable(LumoraDocument& document, int channel,
                                               bool onState) {
        return document.track(access(), LumoraDocument::trackIndex(channel, onState));
    }
    /// The document that hosts a history, or nothing.
    [[nodiscard]] static LumoraDocument* documentOf(const History& history) {
        return dynamic_cast<LumoraDocument*>(&history.ManagingControl());
    }
};

/// A setting, as the text that `Data` gives and takes.
class LumoraUndoableTextChange final : public TextChange<LumoraDocument, LumoraUndoableChange> {
  public:
    /// 0 also for a channel that is none, with a name that ignores it.
    [[nodiscard]] int Channel() const override { return isChannel(index()) ? index() : 0; }
    [[nodiscard]] const std::string& PropertyName() const override { return property(); }
};

} // namespace corvane
