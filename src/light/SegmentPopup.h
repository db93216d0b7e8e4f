#pragma once

#include "controls/Menu.h"
#include "light/SegmentBlock.h"

namespace corvane {

class LumoraScrollableTracks;

/// The menu of a segment's block.
class SegmentPopup {
  public:
    SegmentPopup();

    MenuItem mnuPopupChangeBrightness{"Change &Brightness..."};
    MenuItem mnuPopupChangeTime{"Change Ti&me..."};
    MenuItem mnuPopupSep1{MenuItem::Separator};
    MenuItem mnuPopupFunction{"&Function"};
    MenuItem mnuPopupFunctionNormal{"&Normal Behavior"};
    MenuItem mnuPopupFunctionSep{MenuItem::Separator};
    MenuItem mnuPopupFunctionProportional{"&Proportional"};
    MenuItem mnuPopupFunctionFromTrip{"P&roportional from Trip Point"};
    MenuItem mnuPopupSep2{MenuItem::Separator};
    MenuItem mnuPopupAddSegment{"&Add"};
    MenuItem mnuPopupInsertSegment{"&Insert"};
    MenuItem mnuPopupDeleteSegment{"&Delete"};
    MenuItem mnuPopupSep3{MenuItem::Separator};
    MenuItem mnuPopupCut{"Cu&t"};
    MenuItem mnuPopupCopy{"&Copy"};
    MenuItem mnuPopupPaste{"&Paste"};

    [[nodiscard]] std::vector<MenuPlace> layout();
    [[nodiscard]] std::vector<MenuPlace> functionLayout();
    /// Makes it ready for a segment, which gets the focus. False if there is no menu now.
    [[nodiscard]] bool prepare(LumoraScrollableTracks& tracks, int trackIndex, int elementIndex);

  private:
    [[nodiscard]] SegmentBlock* block() const;

    LumoraScrollableTracks* tracks_ = nullptr;
    int trackIndex_ = 0;
    Connections on_;
};

/// The menu of the empty part of a track.
class TrackPopup {
  public:
    TrackPopup();

    MenuItem mnuPopupAdd{"&Add"};
    MenuItem mnuPopupSep{MenuItem::Separator};
    MenuItem mnuPopupPaste{"&Paste"};

    [[nodiscard]] std::vector<MenuPlace> layout();
    /// Makes it ready for a track, which gets the focus.
    void prepare(LumoraScrollableTracks& tracks, int trackIndex);

  private:
    LumoraScrollableTracks* tracks_ = nullptr;
    int trackIndex_ = 0;
    Connections on_;
};

} // namespace corvane
