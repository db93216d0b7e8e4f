#pragma once

#include "base/KOFrameTimer.h"
#include "controls/BottomBand.h"
#include "controls/Inputs.h"
#include "kolib/KOUpdates.h"
#include "system/KORegistry.h"

#include <vector>

namespace corvane {

/// The strip that slides up at the window's lower edge when there is a new version: offers it,
/// fetches it, and leads to the restart that installs it. Looks for one when it is made, if the
/// person wants that.
class SoftwareUpdateBand final : public BottomBand {
  public:
    static constexpr int MainHeight = 660; ///< Twips, of the region that always shows, at first.
    static constexpr int DetailsHeight = 2400; ///< Twips, of the region with the change log.

    /// All of it must outlive the band.
    SoftwareUpdateBand(KOUpdates& client, const KORegistry& registry, const Clock& clock);
    ~SoftwareUpdateBand() override { client_.UC_Reset(); }
    SoftwareUpdateBand(const SoftwareUpdateBand&) = delete;
    SoftwareUpdateBand& operator=(const SoftwareUpdateBand&) = delete;

    /// 0 nothing, 1 on offer, 3 downloading, 4 the same but hidden, 5 ready, 6 failed.
    [[nodiscard]] int BandState() const { return state_; }
    [[nodiscard]] int DesiredTop() const override;
    [[nodiscard]] int DesiredHeight() const override;
    /// Looks for a new version now, also for one that is to be skipped, unless one is at hand.
    void CheckNow();
    /// Slides to this height.
    void setDesiredHeight(int height);
    /// What the region that always shows needs for its text at the present width, in twips.
    void setMainHeight(int height);

    Timer SoftwareUpdateTimer{2000};
    Timer DownloadHideTimer{15000};
    Timer AnimationTimer{5};
    Label NotifyLabel;
    Frame YesNoButtons;
    Button YesButton{"Yes"};
    Button NoButton{"No"};
    Button SkipButton{"Skip This Version"}; ///< Beside them, and shows with them.
    Button DetailsButton{"Details >>"};
    Button RestartButton{"Restart"};
    Frame DetailsRegion; ///< Shows while the band is higher than its main region.
    Label ChangeLogText;

  private:
    [[nodiscard]] bool poll();
    void setState(int state);
    void decline(bool forGood);
    void setMark(bool marked) const;
    void showState();
    void setWanted(bool wanted);
    void slide();
    void animationTick();
    void step(float seconds);
    void layOut();

    KOUpdates& client_;
    const KORegistry& registry_;
    KOFrameTimer frames_;
    int state_ = 0;
    int lastClientState_ = 0;
    bool wanted_ = false;
    bool detailsShown_ = false;
    int mainHeight_ = MainHeight;
    float currentHeight_ = 0; // twips, like the others
    float targetHeight_ = 0;
    float layoutHeight_ = 0;
    Connections on_;
};

} // namespace corvane
