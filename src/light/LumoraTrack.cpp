#include "light/LumoraTrack.h"

#include "base/Assert.h"

#include <algorithm>

namespace corvane {

void LumoraTrack::setBinary(bool binary) {
    if (binary == binary_)
        return;
    binary_ = binary;
    for (const auto& element : elements_)
        element->clampAgain();
}

void LumoraTrack::setLightColor(int color) {
    if (color == lightColor_)
        return;
    lightColor_ = color;
    ColorChanged.raise();
}

LumoraTrackElement& LumoraTrack::place(int index) const {
    Assert(index >= 1 && index <= GetTrackCount());
    return *elements_[static_cast<std::size_t>(index) - 1];
}

int LumoraTrack::AddTrack(double time, int brightness) {
    return InsertTrack(GetTrackCount() + 1, time, brightness, {}, -1);
}

int LumoraTrack::InsertTrack(int index, double time, int brightness,
                             const std::string& functionCode, int brightness2) {
    Assert(index >= 1 && index <= GetTrackCount() + 1);
    auto element = std::make_unique<LumoraTrackElement>(
        *this, time == -1 ? 1 : time, brightness == -1 ? 0 : brightness,
        binary_ ? std::string() : functionCode, binary_ || brightness2 == -1 ? 0 : brightness2);
    const bool hasFunction = !element->functionCode().empty();
    elements_.insert(static_cast<std::size_t>(index) - 1, std::move(element));
    functions_ += hasFunction ? 1 : 0;
    ends_.clear();
    SegmentInserted.raise(index);
    return index;
}

void LumoraTrack::RemoveTrack(int index) {
    Assert(index >= 1 && index <= GetTrackCount());
    const std::exception_ptr failure = SegmentRemoving.tell(index);
    functionChanges(GetTrack(index).functionCode(), {});
    const auto leaving = elements_.take(static_cast<std::size_t>(index) - 1);
    ends_.clear();
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
    for (const auto& element : elements_) {
        end += element->time();
        ends_.push_back(end);
        timeLimit_ += static_cast<float>(element->time());
    }
}

void LumoraTrack::elementChanged(const LumoraTrackElement& element) {
    ends_.clear();
    SegmentChanged.raise(element);
}

void LumoraTrack::functionChanges(const std::string& before, const std::string& after) {
    functions_ += (after.empty() ? 0 : 1) - (before.empty() ? 0 : 1);
}

} // namespace corvane
