#pragma once

#include "light/LumoraDocument.h"

namespace corvane {

/// Writes documents as a change does, without one.
struct Writing : UndoableChange {
    using UndoableChange::access;
};

template<class Document>
void setData(Document& document, int index, std::string_view propertyName, std::string_view text) {
    document.setData(Writing::access(), index, propertyName, text);
}
inline LumoraTrack& writable(LumoraDocument& document, int track) {
    return document.track(Writing::access(), track);
}
inline void setFunction(LumoraTrack& track, int index, const char* code) {
    LumoraTrackElement element = track.GetTrack(index);
    element.setFunctionCode(code);
    track.SetTrack(index, std::move(element));
}

} // namespace corvane
