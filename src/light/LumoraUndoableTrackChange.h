#pragma once

#include "light/LumoraUndoableChange.h"

namespace corvane {

/// Segments that come to a track or go from it, all in one step.
class LumoraUndoableTrackChange final : public LumoraUndoableChange {
  public:
    /// Whether a file's prefix is one of the four of this change.
    [[nodiscard]] static bool isPrefix(std::string_view prefix);

    /// The indices are those once all are there, and must strictly ascend.
    void InitializeGroup(LumoraDocument& document, bool insert, int channel, bool onState,
                         std::vector<LumoraPlacedElement> segments);
    void Initialize(LumoraDocument& document, bool insert, int channel, bool onState,
                    LumoraPlacedElement segment);

    [[nodiscard]] int count() const { return static_cast<int>(segments_.size()); }
    void Redo() override { insert_ ? insert() : remove(); }
    void Undo() override { insert_ ? remove() : insert(); }
    void Serialize(std::string& prefix, std::vector<std::string>& Data) const override;
    [[nodiscard]] bool Deserialize(History& history, std::string_view prefix,
                                   const std::vector<std::string>& Data) override;
    [[nodiscard]] int Channel() const override { return channel_; }
    [[nodiscard]] bool fits(LumoraSegmentCounts& counts) const override;
    [[nodiscard]] bool isApplicable() const override;

  private:
    [[nodiscard]] bool isSound() const { return isChannel(channel_) && ascends() && fitsALine(); }
    [[nodiscard]] bool fitsALine() const;
    [[nodiscard]] bool fitsInto(int& present) const;
    /// Of the n-th segment from 1.
    [[nodiscard]] int indexAt(int n) const {
        return segments_[static_cast<std::size_t>(n) - 1].index;
    }
    [[nodiscard]] bool ascends() const;
    [[nodiscard]] bool hasFunctions() const;
    void insert() const;
    void remove() const;

    LumoraDocument* document_ = nullptr;
    bool insert_ = false;
    int channel_ = 0;
    bool onState_ = false;
    std::vector<LumoraPlacedElement> segments_;
};

} // namespace corvane
