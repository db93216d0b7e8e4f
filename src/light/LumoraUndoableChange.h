#pragma once

#include "history/UndoableChange.h"
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
    [[nodiscard]] virtual const std::string& PropertyName() const;
    /// Whether what the change applies to is there, and what is there after it.
    [[nodiscard]] virtual bool fits(LumoraSegmentCounts&) const { return true; }

  protected:
    [[nodiscard]] static bool isChannel(int channel) {
        return channel >= 1 && channel <= LumoraDocument::ChannelCount;
    }
    /// The document that hosts a history, or nothing.
    [[nodiscard]] static LumoraDocument* documentOf(const History& history) {
        return dynamic_cast<LumoraDocument*>(&history.ManagingControl());
    }
};

/// A setting, as the text that `Data` gives and takes.
class LumoraUndoableTextChange final : public LumoraUndoableChange {
  public:
    static constexpr std::string_view Prefix = "LumoraText";

    void Initialize(LumoraDocument& document, int channel, std::string propertyName,
                    std::string newValue);
    void Redo() override { document_->setData(channel_, propertyName_, newValue_); }
    void Undo() override { document_->setData(channel_, propertyName_, oldValue_); }
    void Serialize(std::string& prefix, std::vector<std::string>& Data) const override;
    [[nodiscard]] bool Deserialize(History& history, std::string_view prefix,
                                   const std::vector<std::string>& Data) override;
    [[nodiscard]] int Channel() const override { return channel_; }
    [[nodiscard]] const std::string& PropertyName() const override { return propertyName_; }

  private:
    LumoraDocument* document_ = nullptr;
    int channel_ = 0;
    std::string propertyName_;
    std::string oldValue_;
    std::string newValue_;
};

} // namespace corvane
