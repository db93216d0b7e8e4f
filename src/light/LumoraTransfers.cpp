#include "light/LumoraTransfers.h"

#include "base/Assert.h"
#include "base/KOMath.h"

#include <utility>

namespace corvane {

namespace {

constexpr std::uint8_t TripPointsKind = 1;
constexpr std::uint8_t HysteresisKind = 2;
constexpr std::uint8_t ProgramHKind = 3;
constexpr std::uint8_t ProgramLKind = 4;
constexpr std::uint8_t ProgramKind = 5;
constexpr std::uint8_t StateKind = 6;
constexpr std::uint8_t DefaultsKind = 7;
constexpr std::uint8_t TurnOffPointsKind = 8;
constexpr std::uint8_t StateBefore = 255;
constexpr std::uint8_t StateAfter = 64;
constexpr std::uint8_t EmptyTrackTime = 100;
constexpr int FullTransfer = 54; // bytes, 18 records

KOBuffer single(std::uint8_t byte) {
    KOBuffer buffer;
    buffer.Append(byte);
    return buffer;
}

} // namespace

std::uint8_t LumoraTransfer::checksum() const {
    unsigned sum = kind;
    for (const std::uint8_t byte : data.bytes())
        sum += byte;
    return static_cast<std::uint8_t>(sum % 256);
}

LumoraCompiled LumoraTransferCompiler::compile() {
    using Outcome = LumoraCompiled::Outcome;
    Assert(LumoraEncoding::channelWithUnknownFunction(document_) == 0);
    if (!mayIgnoreRange())
        return {Outcome::Canceled, 0};
    // The controller does not play from the first transfer to the last, since until then its tables
    // do not fit one another.
    queue(StateKind, single(StateBefore));
    if (!CompileProgramBlocks()) {
        transfers_.clear();
        return {decision_ == Decision::DoNot ? Outcome::Canceled : Outcome::TooLarge, segments_};
    }
    queue(DefaultsKind, LumoraEncoding::BuildDefaults(document_));
    queue(HysteresisKind, LumoraEncoding::BuildHysteresis(document_));
    queue(TurnOffPointsKind, LumoraEncoding::BuildTurnOffPoints(document_));
    queue(TripPointsKind, LumoraEncoding::BuildTripPoints(document_));
    queue(StateKind, single(StateAfter));
    return {Outcome::Done, segments_};
}

bool LumoraTransferCompiler::mayIgnoreRange() {
    int xmitMin = document_.transmitterMin();
    int xmitMax = document_.transmitterMax();
    LumoraEncoding::normaliseRange(xmitMin, xmitMax);
    if (xmitMin == LumoraDocument::DefaultRangeMin && xmitMax == LumoraDocument::DefaultRangeMax)
        return true;
    return dialogs_.Message({"Unsupported Feature",
                             "Only newer Lumora controllers support custom transmitter "
                             "ranges.\r\n\r\nProgram anyway? The custom range will not be used.",
                             MessageBox::Icon::Warning, MessageBox::Buttons::YesNo}) == Answer::Yes;
}

bool LumoraTransferCompiler::mayAverage() {
    if (decision_ == Decision::NotAsked) {
        const Answer answer = dialogs_.Message(
            {"Unsupported Block",
             "Only newer Lumora controllers support proportional blocks.\r\n\r\nProgram anyway? "
             "Proportional blocks will be set to average brightness.",
             MessageBox::Icon::Warning, MessageBox::Buttons::YesNo});
        decision_ = answer == Answer::Yes ? Decision::ProgramAnyway : Decision::DoNot;
    }
    return decision_ == Decision::ProgramAnyway;
}

bool LumoraTransferCompiler::CompileProgramBlocks() {
    KOBuffer programH;
    KOBuffer programL;
    bool fits = true;
    const auto appendNumber = [&](KOBuffer& table) {
        if (fits)
            table.Append(static_cast<std::uint8_t>(segments_));
    };
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel) {
        // Each table holds where its tracks begin; the bottom track of a channel follows its top
        // track, so that one's beginning is the other's end.
        appendNumber(programH);
        fits = CompileTrackBlocks(LumoraDocument::trackIndex(channel, false)) && fits;
        appendNumber(programL);
        fits = CompileTrackBlocks(LumoraDocument::trackIndex(channel, true)) && fits;
    }
    appendNumber(programH);
    if (!fits)
        return false;
    queue(ProgramHKind, std::move(programH));
    queue(ProgramLKind, std::move(programL));
    return true;
}

bool LumoraTransferCompiler::CompileTrackBlocks(int trackIndex) {
    const LumoraTrack& track = document_.track(trackIndex);
    const int maxCurrent = document_.settings(LumoraDocument::channelOf(trackIndex)).maxCurrent;
    KOBuffer records;
    const auto record = [&](std::uint8_t time, int current) {
        records.Append(static_cast<std::uint8_t>(segments_));
        records.Append(time);
        records.Append(static_cast<std::uint8_t>(current));
    };
    const int count = track.GetTrackCount();
    if (count == 0) {
        if (segments_ < LumoraDocument::BlockLimit) {
            record(EmptyTrackTime, 0);
            queue(ProgramKind, std::move(records));
        }
        ++segments_;
    }
    for (int i = 1; i <= count; ++i) {
        const LumoraTrackElement& segment = track.GetTrack(i);
        // Those that do not fit are still counted, to tell how many there are too many.
        if (segments_ < LumoraDocument::BlockLimit) {
            int brightness = segment.brightness();
            if (!segment.functionCode().empty()) {
                brightness = RoundToInteger((segment.brightness() + segment.brightness2()) / 2.0);
                if (!mayAverage())
                    return false;
            }
            record(LumoraEncoding::time(segment.time()),
                   LumoraEncoding::current(maxCurrent, brightness));
        }
        ++segments_;
        if (records.Length() > 0 && (records.Length() >= FullTransfer || i == count))
            queue(ProgramKind, std::exchange(records, {}));
    }
    return segments_ <= LumoraDocument::BlockLimit;
}

void LumoraTransferCompiler::queue(std::uint8_t kind, KOBuffer data) {
    transfers_.push_back({kind, std::move(data)});
}

} // namespace corvane
