#pragma once

#include "light/LumoraUndoableChange.h"

namespace corvane {

/// One value of one segment. The four kinds differ in the value, as `Kind` tells: its type, its
/// prefix in files, how it is read, written and assigned.
template<class Kind>
class LumoraUndoableSegmentChange final : public LumoraUndoableChange {
  public:
    using Value = typename Kind::Value;

    void Initialize(LumoraDocument& document, int channel, bool onState, int element,
                    const Value& oldValue, const Value& newValue) {
        document_ = &document;
        channel_ = channel;
        onState_ = onState;
        element_ = element;
        oldValue_ = Kind::taken(oldValue);
        newValue_ = Kind::taken(newValue);
    }
    void Redo() override { assign(newValue_); }
    void Undo() override { assign(oldValue_); }
    void Serialize(std::string& prefix, std::vector<std::string>& Data) const override {
        prefix = Kind::Prefix;
        Data = {std::to_string(channel_), onState_ ? "1" : "0", std::to_string(element_),
                Kind::write(oldValue_), Kind::write(newValue_)};
    }
    [[nodiscard]] bool Deserialize(History& history, std::string_view prefix,
                                   const std::vector<std::string>& Data) override;
    [[nodiscard]] int Channel() const override { return channel_; }
    [[nodiscard]] bool fits(LumoraSegmentCounts& counts) const override {
        return element_ <= counts.of(channel_, onState_);
    }
    [[nodiscard]] bool isApplicable() const override {
        return document_ != nullptr && isSound() &&
               element_ <= document_->Channel(channel_, onState_).GetTrackCount();
    }

  private:
    [[nodiscard]] bool isSound() const { return isChannel(channel_) && element_ >= 1; }
    void assign(const Value& value) const {
        LumoraTrack& track = writable(*document_, channel_, onState_);
        const LumoraTrackElement before = track.GetTrack(element_);
        LumoraTrackElement after = before;
        Kind::assign(after, value);
        AllOrNothing([&] { track.SetTrack(element_, after); },
                     [&] { track.SetTrack(element_, before); });
    }

    LumoraDocument* document_ = nullptr;
    int channel_ = 0;
    bool onState_ = false;
    int element_ = 0;
    Value oldValue_{};
    Value newValue_{};
};

namespace LumoraSegmentValues {

struct Brightness {
    using Value = int;
    static constexpr std::string_view Prefix = "LumoraBrightness";
    static Value taken(Value value) { return value; }
    static Value of(const LumoraTrackElement& element) { return element.brightness(); }
    static void assign(LumoraTrackElement& element, Value value) { element.setBrightness(value); }
    static std::string write(Value value) { return std::to_string(value); }
    static Value read(std::string_view text);
};

struct Brightness2 : Brightness {
    static constexpr std::string_view Prefix = "LumoraBrightness2";
    static Value of(const LumoraTrackElement& element) { return element.brightness2(); }
    static void assign(LumoraTrackElement& element, Value value) { element.setBrightness2(value); }
};

struct Function {
    using Value = std::string;
    static constexpr std::string_view Prefix = "LumoraFunction";
    static Value taken(std::string_view value);
    static const Value& of(const LumoraTrackElement& element) { return element.functionCode(); }
    static void assign(LumoraTrackElement& element, const Value& value) {
        element.setFunctionCode(value);
    }
    static Value write(const Value& value) { return value; }
    static Value read(std::string_view text) { return taken(text); }
};

struct Time {
    using Value = double;
    static constexpr std::string_view Prefix = "LumoraTime";
    static Value taken(Value value) { return value; }
    static Value of(const LumoraTrackElement& element) { return element.time(); }
    static void assign(LumoraTrackElement& element, Value value) { element.setTime(value); }
    static std::string write(Value value);
    static Value read(std::string_view text);
};

} // namespace LumoraSegmentValues

using LumoraUndoableBrightnessChange = LumoraUndoableSegmentChange<LumoraSegmentValues::Brightness>;
using LumoraUndoableBrightness2Change =
    LumoraUndoableSegmentChange<LumoraSegmentValues::Brightness2>;
using LumoraUndoableFunctionChange = LumoraUndoableSegmentChange<LumoraSegmentValues::Function>;
using LumoraUndoableTimeChange = LumoraUndoableSegmentChange<LumoraSegmentValues::Time>;

} // namespace corvane
