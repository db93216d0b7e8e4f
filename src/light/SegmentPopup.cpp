#include "light/SegmentPopup.h"

#include "light/LumoraScrollableTracks.h"

namespace corvane {

namespace {
constexpr const char* NothingToPaste = "Nothing that fits here has been copied.";
}

SegmentPopup::SegmentPopup() {
    const auto on = [this](MenuItem& item, auto act) {
        on_(item.Click, [this, act] {
            if (SegmentBlock* worked = block())
                act(*worked);
        });
    };
    on(mnuPopupChangeBrightness, [](SegmentBlock& worked) { worked.changeBrightness(); });
    on(mnuPopupChangeTime, [](SegmentBlock& worked) { worked.changeTime(); });
    on(mnuPopupFunctionNormal,
       [](SegmentBlock& worked) { worked.chooseFunction(LumoraTrackElement::Normal); });
    on(mnuPopupFunctionProportional,
       [](SegmentBlock& worked) { worked.chooseFunction(LumoraTrackElement::Proportional); });
    on(mnuPopupFunctionFromTrip, [](SegmentBlock& worked) {
        worked.chooseFunction(LumoraTrackElement::ProportionalFromTrip);
    });
    on(mnuPopupAddSegment,
       [this](const SegmentBlock&) { tracks_->SegmentAddRequested(trackIndex_); });
    const auto request = [this, &on](MenuItem& item, Request<int, int> LumoraRequests::*wanted) {
        on(item, [this, wanted](const SegmentBlock& worked) {
            (tracks_->*wanted)(trackIndex_, worked.index());
        });
    };
    request(mnuPopupInsertSegment, &LumoraRequests::SegmentInsertRequested);
    request(mnuPopupDeleteSegment, &LumoraRequests::SegmentDeleteRequested);
    request(mnuPopupCut, &LumoraRequests::SegmentCutRequested);
    request(mnuPopupCopy, &LumoraRequests::SegmentCopyRequested);
    request(mnuPopupPaste, &LumoraRequests::SegmentPasteRequested);
}

std::vector<MenuPlace> SegmentPopup::functionLayout() {
    return {{&mnuPopupFunctionNormal, {}, nullptr},
            {&mnuPopupFunctionSep, {}, nullptr},
            {&mnuPopupFunctionProportional, {}, nullptr},
            {&mnuPopupFunctionFromTrip, {}, nullptr}};
}

std::vector<MenuPlace> SegmentPopup::layout() {
    return {{&mnuPopupChangeBrightness, {}, nullptr},
            {&mnuPopupChangeTime, {}, nullptr},
            {&mnuPopupSep1, {}, nullptr},
            {&mnuPopupFunction, functionLayout(), nullptr},
            {&mnuPopupSep2, {}, nullptr},
            {&mnuPopupAddSegment, {}, nullptr},
            {&mnuPopupInsertSegment, {}, nullptr},
            {&mnuPopupDeleteSegment, {}, nullptr},
            {&mnuPopupSep3, {}, nullptr},
            {&mnuPopupCut, {}, nullptr},
            {&mnuPopupCopy, {}, nullptr},
            {&mnuPopupPaste, {}, nullptr}};
}

bool SegmentPopup::prepare(LumoraScrollableTracks& tracks, int trackIndex, int elementIndex) {
    tracks_ = &tracks;
    trackIndex_ = trackIndex;
    LumoraTrackEditor& track = tracks.track(trackIndex);
    if (track.block() != nullptr && track.block()->draggingWidth())
        return false;
    track.requestFocus(elementIndex);
    SegmentBlock* worked = block();
    if (worked == nullptr)
        return false;
    worked->Commit();
    const bool binary = worked->element().Binary();
    const std::string& code = worked->element().functionCode();
    mnuPopupPaste.setEnabled(tracks.mayPaste(), NothingToPaste);
    mnuPopupFunction.setVisible(!binary);
    mnuPopupSep2.setVisible(!binary);
    mnuPopupFunctionNormal.setChecked(code == LumoraTrackElement::Normal);
    mnuPopupFunctionProportional.setChecked(code == LumoraTrackElement::Proportional);
    mnuPopupFunctionFromTrip.setChecked(code == LumoraTrackElement::ProportionalFromTrip);
    return true;
}

SegmentBlock* SegmentPopup::block() const {
    return tracks_ == nullptr ? nullptr : tracks_->track(trackIndex_).block();
}

TrackPopup::TrackPopup() {
    on_(mnuPopupAdd.Click, [this] { tracks_->SegmentAddRequested(trackIndex_); });
    on_(mnuPopupPaste.Click, [this] {
        tracks_->SegmentPasteRequested(trackIndex_,
                                       tracks_->track(trackIndex_).track().GetTrackCount() + 1);
    });
}

std::vector<MenuPlace> TrackPopup::layout() {
    return {
        {&mnuPopupAdd, {}, nullptr}, {&mnuPopupSep, {}, nullptr}, {&mnuPopupPaste, {}, nullptr}};
}

void TrackPopup::prepare(LumoraScrollableTracks& tracks, int trackIndex) {
    tracks_ = &tracks;
    trackIndex_ = trackIndex;
    tracks.takeFocus(trackIndex);
    tracks.track(trackIndex).Commit();
    mnuPopupPaste.setEnabled(tracks.mayPaste(), NothingToPaste);
}

} // namespace corvane
