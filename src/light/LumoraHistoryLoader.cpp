#include "light/LumoraHistoryLoader.h"

#include "light/LumoraUndoableSegmentChange.h"
#include "light/LumoraUndoableTrackChange.h"

#include <algorithm>

namespace corvane {

std::unique_ptr<UndoableChange> LumoraHistoryLoader::Load(std::string_view prefix) const {
    if (prefix == LumoraDocument::TextPrefix)
        return std::make_unique<LumoraUndoableTextChange>();
    if (LumoraUndoableTrackChange::isPrefix(prefix))
        return std::make_unique<LumoraUndoableTrackChange>();
    if (prefix == LumoraSegmentValues::Brightness::Prefix)
        return std::make_unique<LumoraUndoableBrightnessChange>();
    if (prefix == LumoraSegmentValues::Brightness2::Prefix)
        return std::make_unique<LumoraUndoableBrightness2Change>();
    if (prefix == LumoraSegmentValues::Function::Prefix)
        return std::make_unique<LumoraUndoableFunctionChange>();
    if (prefix == LumoraSegmentValues::Time::Prefix)
        return std::make_unique<LumoraUndoableTimeChange>();
    return nullptr;
}

bool LumoraHistoryLoader::FitTogether(const UndoableChanges& changes) const {
    LumoraSegmentCounts counts;
    return std::all_of(changes.begin(), changes.end(), [&counts](const auto& change) {
        const auto* light = dynamic_cast<const LumoraUndoableChange*>(change.get());
        return light == nullptr || light->fits(counts);
    });
}

} // namespace corvane
