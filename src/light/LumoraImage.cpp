#include "light/LumoraImage.h"

#include "base/Assert.h"

#include <algorithm>
#include <cmath>

namespace corvane {

namespace {

// Above the highest current.
constexpr std::uint8_t ProportionalTag = 251;
constexpr std::uint8_t FromTripTag = 252;
constexpr std::uint8_t EmptyTrackTime = 100; // a second of darkness
constexpr int ProgramLength = 214;
constexpr int SlotLength = 2;

template<class Byte>
KOBuffer perChannel(const LumoraDocument& document, Byte byte) {
    KOBuffer buffer;
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel)
        buffer.Append(byte(document.settings(channel)));
    return buffer;
}

void appendWord(KOBuffer& buffer, int value) {
    buffer.Append(static_cast<std::uint8_t>(value % 256));
    buffer.Append(static_cast<std::uint8_t>(value / 256));
}

} // namespace

namespace LumoraEncoding {

std::uint8_t percent(int value) {
    return static_cast<std::uint8_t>(value * 255 / 100);
}

std::uint8_t time(double seconds) {
    return static_cast<std::uint8_t>(std::trunc(seconds * 100 + 0.0001));
}

int current(int maxCurrent, int brightness) {
    return maxCurrent * brightness / 100;
}

std::uint8_t hysteresis(const LumoraChannelSettings& settings) {
    const int trip = percent(settings.tripPoint);
    const int band = std::min<int>(percent(settings.hysteresis), trip);
    return static_cast<std::uint8_t>(std::min(band, 255 - trip));
}

void normaliseRange(int& xmitMin, int& xmitMax) {
    xmitMin = std::clamp(xmitMin, LumoraDocument::ShortestPulse, LumoraDocument::LongestPulse);
    xmitMax = std::clamp(xmitMax, LumoraDocument::ShortestPulse, LumoraDocument::LongestPulse);
    if (xmitMin > xmitMax)
        std::swap(xmitMin, xmitMax);
    if (xmitMin < xmitMax)
        return;
    if (xmitMin == LumoraDocument::LongestPulse)
        --xmitMin;
    else
        ++xmitMax;
}

KOBuffer BuildTripPoints(const LumoraDocument& document) {
    return perChannel(document, [](const auto& channel) { return percent(channel.tripPoint); });
}

KOBuffer BuildHysteresis(const LumoraDocument& document) {
    return perChannel(document, [](const auto& channel) { return hysteresis(channel); });
}

KOBuffer BuildDefaults(const LumoraDocument& document) {
    return perChannel(document, [](const auto& channel) {
        return static_cast<std::uint8_t>(channel.noSignal == 0 ? 1 : 0);
    });
}

KOBuffer BuildTurnOffPoints(const LumoraDocument& document) {
    return perChannel(document, [](const auto& channel) { return percent(channel.turnOffPoint); });
}

int channelWithUnknownFunction(const LumoraDocument& document) {
    for (int index = 1; index <= LumoraDocument::TrackCount; ++index) {
        const LumoraTrack& track = document.track(index);
        for (int i = 1; i <= track.GetTrackCount(); ++i) {
            const std::string& code = track.GetTrack(i).functionCode();
            if (!code.empty() && code != LumoraTrackElement::Proportional &&
                code != LumoraTrackElement::ProportionalFromTrip)
                return LumoraDocument::channelOf(index);
        }
    }
    return 0;
}

} // namespace LumoraEncoding

LumoraCompiled LumoraImageCompiler::compile() {
    using namespace LumoraEncoding;
    Assert(channelWithUnknownFunction(document_) == 0);
    if (!CompileProgramImage())
        return {LumoraCompiled::Outcome::TooLarge, segments_};
    program_.SetLength(ProgramLength, 0);
    int xmitMin = document_.transmitterMin();
    int xmitMax = document_.transmitterMax();
    normaliseRange(xmitMin, xmitMax);
    image_ = BuildTripPoints(document_);
    for (const KOBuffer& section : {programH_, programL_, BuildHysteresis(document_), program_,
                                    BuildDefaults(document_), BuildTurnOffPoints(document_)})
        image_.AppendBuffer(section);
    appendWord(image_, xmitMin);
    appendWord(image_, xmitMax);
    Assert(image_.Length() == ImageLength);
    return {LumoraCompiled::Outcome::Done, segments_};
}

bool LumoraImageCompiler::CompileProgramImage() {
    bool fits = true;
    const auto appendOffset = [&](KOBuffer& table) {
        if (fits)
            table.Append(static_cast<std::uint8_t>(segments_ * SlotLength));
    };
    // The counting goes on beyond the limit, so that the person is told the real number.
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel) {
        appendOffset(programH_);
        fits = CompileTrackImage(LumoraDocument::trackIndex(channel, false)) && fits;
        appendOffset(programL_);
        fits = CompileTrackImage(LumoraDocument::trackIndex(channel, true)) && fits;
    }
    appendOffset(programH_);
    return fits;
}

bool LumoraImageCompiler::CompileTrackImage(int trackIndex) {
    using namespace LumoraEncoding;
    const LumoraTrack& track = document_.track(trackIndex);
    const int maxCurrent = document_.settings(LumoraDocument::channelOf(trackIndex)).maxCurrent;
    const auto currentByte = [maxCurrent](int brightness) {
        return static_cast<std::uint8_t>(
            std::min(current(maxCurrent, brightness), LumoraDocument::HighestCurrent));
    };
    if (track.GetTrackCount() == 0) {
        program_.Append(EmptyTrackTime);
        program_.Append(0);
        ++segments_;
    }
    for (int i = 1; i <= track.GetTrackCount(); ++i) {
        const LumoraTrackElement& segment = track.GetTrack(i);
        const bool plain = segment.functionCode().empty();
        program_.Append(time(segment.time()));
        if (!plain)
            program_.Append(segment.functionCode() == LumoraTrackElement::Proportional
                                ? ProportionalTag
                                : FromTripTag);
        program_.Append(currentByte(segment.brightness()));
        if (!plain)
            program_.Append(currentByte(segment.brightness2()));
        segments_ += plain ? 1 : 2;
    }
    return segments_ <= LumoraDocument::BlockLimit;
}

} // namespace corvane
