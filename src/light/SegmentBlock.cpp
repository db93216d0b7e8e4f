#include "light/SegmentBlock.h"

#include "base/KOMath.h"
#include "base/Numbers.h"

#include <utility>

namespace corvane {

SegmentBlock::SegmentBlock(Surroundings surroundings, int index)
    : with_(surroundings), index_(index) {
    showStored();
    for (TextBox* box : {&txtBrightness, &txtBrightness2})
        on_(box->Changed, [this] { LookChanged.raise(); });
    on_(txtBrightness.Validate, [this] { commitBrightness(); });
    on_(txtBrightness2.Validate, [this] { commitBrightness2(); });
    on_(txtTime.Validate, [this] { commitTime(); });
}

void SegmentBlock::Commit() {
    commitBrightness();
    commitBrightness2();
    commitTime();
}

void SegmentBlock::follow() {
    // What is being typed into a box stays there while another value changes.
    const LumoraTrackElement stored = element();
    if (std::exchange(shownBrightness_, stored.brightness()) != stored.brightness())
        txtBrightness.setText(std::to_string(shownBrightness_));
    if (std::exchange(shownBrightness2_, stored.brightness2()) != stored.brightness2())
        txtBrightness2.setText(std::to_string(shownBrightness2_));
    if (std::exchange(shownTime_, stored.time()) != stored.time())
        txtTime.setText(LumoraTrackElement::FormatTime(shownTime_));
}

void SegmentBlock::showStored() {
    shownBrightness_ = element().brightness();
    shownBrightness2_ = element().brightness2();
    shownTime_ = element().time();
    txtBrightness.setText(std::to_string(shownBrightness_));
    txtBrightness2.setText(std::to_string(shownBrightness2_));
    txtTime.setText(LumoraTrackElement::FormatTime(shownTime_));
}

int SegmentBlock::levelIn(const TextBox& box) const {
    return element().ClampBrightness(RoundToInteger(ReadNumber(box.Text())));
}

int SegmentBlock::level1() const {
    return levelIn(txtBrightness);
}

int SegmentBlock::level2() const {
    return levelIn(txtBrightness2);
}

double SegmentBlock::shownTime() const {
    return widthDrag_ ? LumoraTrackElement::ClampTime(ReadNumber(txtTime.Text()))
                      : element().time();
}

void SegmentBlock::startWidthDrag(int blockWidth, double timeScale, int x) {
    widthDrag_ = WidthDrag{static_cast<float>(blockWidth), timeScale, x};
}

void SegmentBlock::moveWidthDrag(int x) {
    if (!widthDrag_)
        return;
    WidthDrag& drag = *widthDrag_;
    // `x` counts from an edge that follows the pointer, so each step adds what that lags behind.
    drag.width = std::max(0.0F, drag.width + static_cast<float>(x - drag.pressedX));
    const double time = LumoraTrackElement::ClampTime(drag.width / drag.timeScale);
    const std::string text = LumoraTrackElement::FormatTime(time);
    if (text == txtTime.Text())
        return;
    txtTime.setText(text);
    drag.width = std::min(drag.width, static_cast<float>(RoundToInteger(drag.timeScale * time)));
    TrackResized.raise();
    LookChanged.raise();
}

void SegmentBlock::endWidthDrag() {
    if (!widthDrag_)
        return;
    // Over before the time is requested, or the block would go on showing the drag's.
    const double shown = shownTime();
    widthDrag_.reset();
    if (shown != element().time())
        commitTime();
    TrackResized.raise();
}

void SegmentBlock::dragBrightness(double y, double height) {
    // The range reaches eight percent beyond the block, so that 0 and 100 are easy to hit.
    const int whole = std::max(1, RoundToInteger(height));
    txtBrightness.setText(
        std::to_string(element().ClampBrightness(108 - RoundToInteger(y * 116) / whole)));
}

void SegmentBlock::cancel() {
    const bool resized = widthDrag_.has_value();
    widthDrag_.reset();
    showStored();
    if (resized)
        TrackResized.raise();
    LookChanged.raise();
}

void SegmentBlock::changeBrightness() {
    ask(txtBrightness, "What percent brightness should this segment be?", "Change Brightness");
}

void SegmentBlock::changeTime() {
    ask(txtTime,
        "How many seconds should this segment take? (minimum " +
            LumoraTrackElement::FormatTime(LumoraTrackElement::MinTime) + ", maximum " +
            LumoraTrackElement::FormatTime(LumoraTrackElement::MaxTime) + ")",
        "Change Time");
}

void SegmentBlock::chooseFunction(std::string_view code) {
    if (code != element().functionCode())
        with_.requests.TrackFunctionChanged(with_.trackIndex, index_, std::string(code));
}

void SegmentBlock::commitBrightness() {
    const int value = level1();
    txtBrightness.setText(std::to_string(value));
    if (value != element().brightness())
        with_.requests.TrackBrightnessChanged(with_.trackIndex, index_, value);
}

void SegmentBlock::commitBrightness2() {
    const int value = level2();
    txtBrightness2.setText(std::to_string(value));
    if (value != element().brightness2())
        with_.requests.TrackBrightness2Changed(with_.trackIndex, index_, value);
}

void SegmentBlock::commitTime() {
    const double value = LumoraTrackElement::ClampTime(ReadNumber(txtTime.Text()));
    txtTime.setText(LumoraTrackElement::FormatTime(value));
    if (value != element().time())
        with_.requests.TrackTimeChanged(with_.trackIndex, index_, value);
}

void SegmentBlock::ask(TextBox& box, const std::string& prompt, const std::string& title) {
    const std::optional<std::string> answer = with_.dialogs.Input(prompt, title, box.Text());
    if (!answer || *answer == box.Text())
        return;
    box.setText(*answer);
    box.leave();
}

KORgbValue SegmentColorAt(const LumoraTrackElement& element, int lightColor, int level1, int level2,
                          float t) {
    const KORgbValue color = KORgbValue::FromColor(LightPart(lightColor));
    if (t < -0.001F)
        return color.Attenuate(0);
    const float level = static_cast<float>(level1) + t * static_cast<float>(level2 - level1);
    return color.Attenuate(element.ClampBrightness(RoundToInteger(level)));
}

std::string_view FunctionLabel(std::string_view functionCode) {
    if (functionCode.empty())
        return {};
    if (functionCode == LumoraTrackElement::Proportional)
        return "PROPORTIONAL";
    if (functionCode == LumoraTrackElement::ProportionalFromTrip)
        return "PROP FROM TRIP";
    return "UNKNOWN FUNCTION";
}

} // namespace corvane
