#include "update/SoftwareUpdateBand.h"

#include <algorithm>

namespace corvane {

namespace {

enum State {
    Nothing = 0,
    Offered = 1,
    Downloading = 3,
    DownloadingHidden = 4,
    Ready = 5,
    Failed = 6
};

constexpr const char* Mark = "Update"; // for what installs it

constexpr float Speed = 100.0F * 15;      // twips a second: 100 pixels
constexpr float Nearly = 0.0001F;         // so that a whole number is not cut to the one below
constexpr std::size_t LongestLog = 32000; // characters

/// The first so many characters of UTF-8 text.
std::string firstCharacters(const std::string& text, std::size_t count) {
    std::size_t at = 0;
    for (; at < text.size(); ++at) {
        const bool begins = (static_cast<unsigned char>(text[at]) & 0xC0U) != 0x80U;
        if (begins && count-- == 0)
            break;
    }
    return text.substr(0, at);
}

} // namespace

SoftwareUpdateBand::SoftwareUpdateBand(KOUpdates& client, const KORegistry& registry,
                                       const Clock& clock)
    : client_(client), registry_(registry), frames_(clock) {
    YesButton.setToolTipText("Fetch the new version in the background");
    NoButton.setToolTipText("Ask again at the next start");
    SkipButton.setToolTipText("Do not ask again about this version");
    DetailsButton.setToolTipText("What is new in that version");
    RestartButton.setToolTipText("Ask to save what is open, and install the new version");
    RestartButton.setVisible(false);
    DetailsRegion.setVisible(false);
    on_(SoftwareUpdateTimer.Fired, [this] { SoftwareUpdateTimer.setEnabled(poll()); });
    on_(DownloadHideTimer.Fired, [this] {
        if (state_ == Downloading)
            setState(DownloadingHidden);
    });
    on_(AnimationTimer.Fired, [this] { animationTick(); });
    on_(YesButton.Click, [this] {
        client_.UC_DownloadUpdate();
        setState(Downloading);
        SoftwareUpdateTimer.setEnabled(poll());
    });
    on_(NoButton.Click, [this] { decline(false); });
    on_(SkipButton.Click, [this] { decline(true); });
    on_(RestartButton.Click, [this] { RestartRequested.raise(); });
    on_(DetailsButton.Click, [this] {
        detailsShown_ = !detailsShown_;
        DetailsButton.setCaption(detailsShown_ ? "<< Details" : "Details >>");
        slide();
    });
    setMark(false); // until this run knows that a package lies there
    if (KOOptions(registry).AutopatchEnabled()) {
        client_.UC_Begin();
        SoftwareUpdateTimer.setEnabled(true);
    }
}

void SoftwareUpdateBand::CheckNow() {
    if (state_ != Nothing)
        return;
    lastClientState_ = KOUpdates::Working;
    client_.UC_BeginNow();
    SoftwareUpdateTimer.setEnabled(true);
}

void SoftwareUpdateBand::decline(bool forGood) {
    client_.UC_Decline(forGood);
    setState(Nothing);
}

void SoftwareUpdateBand::setMark(bool marked) const {
    if (!marked && !registry_.OpenSettingsForReading())
        return; // no settings, no mark
    auto key = registry_.OpenSettingsForWriting();
    if (key && marked)
        key->setIntegers(Mark, 1);
    else if (key)
        key->DeleteValue(Mark);
}

int SoftwareUpdateBand::DesiredTop() const {
    return static_cast<int>(-(currentHeight_ + Nearly));
}

int SoftwareUpdateBand::DesiredHeight() const {
    return static_cast<int>(layoutHeight_ + Nearly);
}

void SoftwareUpdateBand::setDesiredHeight(int height) {
    if (height == DesiredHeight())
        return;
    targetHeight_ = static_cast<float>(height);
    animationTick();
}

void SoftwareUpdateBand::setMainHeight(int height) {
    if (height == mainHeight_)
        return;
    mainHeight_ = height;
    slide();
}

bool SoftwareUpdateBand::poll() {
    const int state = client_.UC_GetState();
    if (state == KOUpdates::Working || state == lastClientState_)
        return true;
    lastClientState_ = state;
    if (state == KOUpdates::Failed && state_ != Nothing)
        setState(Failed);
    // The text first: it shows as soon as the band does.
    if (state == KOUpdates::Available || state == KOUpdates::Downloaded)
        ChangeLogText.setCaption(firstCharacters(client_.UC_GetChangeLog(), LongestLog));
    if (state == KOUpdates::Available)
        setState(Offered);
    if (state == KOUpdates::Downloaded)
        setState(Ready);
    return false;
}

void SoftwareUpdateBand::setState(int state) {
    if (state == Ready) {
        if (registry_.OpenSettingsForWriting())
            setMark(true);
        else
            state = Failed;
    }
    if (state == state_)
        return;
    state_ = state;
    DownloadHideTimer.setEnabled(state == Downloading);
    showState();
}

void SoftwareUpdateBand::showState() {
    if (state_ == Nothing || state_ == DownloadingHidden)
        return setWanted(false);
    NotifyLabel.setCaption(
        state_ == Offered ? "A new version of Corvane is available. Would you like to download it?"
        : state_ == Downloading
            ? "Downloading. Feel free to keep working - it will not affect the download process."
        : state_ == Ready
            ? "Corvane must restart to install the update. Click Restart when you are ready."
            : "An error occured while updating.");
    YesNoButtons.setVisible(state_ == Offered);
    RestartButton.setVisible(state_ == Ready);
    setWanted(true);
}

void SoftwareUpdateBand::setWanted(bool wanted) {
    if (wanted == wanted_)
        return;
    wanted_ = wanted;
    slide();
}

void SoftwareUpdateBand::slide() {
    const int whole = mainHeight_ + (detailsShown_ ? DetailsHeight : 0);
    targetHeight_ = static_cast<float>(wanted_ ? whole : 0);
    animationTick();
}

void SoftwareUpdateBand::animationTick() {
    if (currentHeight_ == targetHeight_) {
        AnimationTimer.setEnabled(false);
        layOut();
        return DesiredPositionChanged.raise(); // it may be lower than what slid away
    }
    if (currentHeight_ < targetHeight_)
        layOut(); // for the whole height, into which it grows
    if (!AnimationTimer.Enabled()) {
        AnimationTimer.setEnabled(true);
        frames_.Reset();
        return;
    }
    frames_.Update();
    step(std::max(0.0F, frames_.TimeStepInSeconds())); // of a clock that was set back too
}

void SoftwareUpdateBand::step(float seconds) {
    const float distance = seconds * Speed;
    currentHeight_ = currentHeight_ < targetHeight_
                         ? std::min(targetHeight_, currentHeight_ + distance)
                         : std::max(targetHeight_, currentHeight_ - distance);
    DesiredPositionChanged.raise();
}

void SoftwareUpdateBand::layOut() {
    layoutHeight_ = targetHeight_;
    DetailsRegion.setVisible(layoutHeight_ > static_cast<float>(mainHeight_));
}

} // namespace corvane
