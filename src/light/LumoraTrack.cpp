#include "light/LumoraTrack.h"

#include "base/Assert.h"

#include <algorithm>

namespace corvane {

void LumoraTrack::setBinary(bool binary) {
    if (binary == binary_)
        return;
    binary_ = binary;
    for (int index = 1; index <= GetTrackCount(); ++index)
        SetTrack(index, GetTrack(index));
}

void LumoraTrack::setLightColor(int color) {
    if (color == lightColor_)
        return;
    lightColor_ = color;
    ColorChanged.raise();
}

const LumoraTrackElement& LumoraTrack::GetTrack(int index) const {
    Assert(index >= 1 && index <= GetTrackCount());
    return elements_[static_cast<std::size_t>(index) - 1];
}

void LumoraTrack::SetTrack(int index, LumoraTrackElement element) {
    Assert(index >= 1 && index <= GetTrackCount());
    element.fitInto(binary_, topTrack_);
    LumoraTrackElement& place = elements_[static_cast<std::size_t>(index) - 1];
    if (element == place)
        return;
    changed(!place.functionCode().empty(), !element.functionCode().empty());
    place = std::move(element);
    SegmentChanged.raise(index);
}

int LumoraTrack::AddTrack(double time, int brightness) {
    return InsertTrack(GetTrackCount() + 1, time, brightness, {}, -1);
}

int LumoraTrack::InsertTrack(int index, LumoraTrackElement element) {
    Assert(index >= 1 && index <= GetTrackCount() + 1);
    if (element.time() == -1)
        element.setTime(1);
    if (binary_)
        element.setBrightness2(0);
    element.fitInto(binary_, topTrack_);
    const bool hasFunction = !element.functionCode().empty();
    elements_.insert(static_cast<std::size_t>(index) - 1, std::move(element));
    changed(false, hasFunction);
    SegmentInserted.raise(index);
    return index;
}

void LumoraTrack::RemoveTrack(int index) {
    Assert(index >= 1 && index <= GetTrackCount());
    const std::exception_ptr failure = SegmentRemoving.tell(index);
    const auto leaving = elements_.take(static_cast<std::size_t>(index) - 1);
    changed(!leaving.functionCode().empty(), false);
    SegmentRemoved.raise(index);
    if (failure != nullptr)
        std::rethrow_exception(failure);
}

int LumoraTrack::BlockCount() const {
    return std::max(1, GetTrackCount() + functions_);
}

float LumoraTrack::TimeLimit() const {
    sumTimes();
    return elements_.empty() ? 0 : timeLimit_;
}

int LumoraTrack::SegmentAt(double seconds) const {
    sumTimes();
    const auto after = std::upper_bound(ends_.begin(), ends_.end(), seconds);
    return std::min(static_cast<int>(after - ends_.begin()) + 1, GetTrackCount());
}

void LumoraTrack::sumTimes() const {
    if (ends_.size() == elements_.size())
        return;
    ends_.clear();
    timeLimit_ = 0;
    double end = 0;
    for (const LumoraTrackElement& element : elements_) {
        end += element.time();
        ends_.push_back(end);
        timeLimit_ += static_cast<float>(element.time());
    }
}

void LumoraTrack::changed(bool hadFunction, bool hasFunction) {
    functions_ += static_cast<int>(hasFunction) - static_cast<int>(hadFunction);
    ends_.clear();
}

} // namespace corvane
