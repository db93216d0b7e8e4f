#pragma once

#include "light/LumoraDocument.h"
#include "light/LumoraImage.h"

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
/// The bytes that the newer controller gets, of a document that fits.
inline std::vector<std::uint8_t> imageOf(const LumoraDocument& document) {
    LumoraImageCompiler compiler(document);
    static_cast<void>(compiler.compile());
    const auto bytes = compiler.image().bytes();
    return {bytes.begin(), bytes.end()};
}
inline void setFunction(LumoraTrack& track, int index, const char* code) {
    LumoraTrackElement element = track.GetTrack(index);
    element.setFunctionCode(code);
    track.SetTrack(index, std::move(element));
}

} // namespace corvane
