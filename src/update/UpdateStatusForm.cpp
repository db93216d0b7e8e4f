#include "update/UpdateStatusForm.h"

#include "base/Product.h"

namespace corvane {

namespace {

using Standing = UpdateStanding::State;

const std::string TryElsewhere = std::string(" Try again later, or look at ") + MakerSite;

std::string textOf(const UpdateStanding& standing) {
    const std::string name = std::string(ProgramName) + " ";
    const std::string version = "Version " + standing.version + " ";
    switch (standing.state) {
    case Standing::Off:
        return "This build of " + name + "looks for no new versions.";
    case Standing::Unknown:
    case Standing::Looking:
        return "Looking for a new version ...";
    case Standing::Newest:
        return name + ProgramVersion + " is the newest version.";
    case Standing::Offered:
        return version + "is available." +
               (standing.skipped ? " So far you have chosen to skip it." : "") +
               " The lower edge of the main window asks what to do with it.";
    case Standing::Downloading:
        return version + "is being downloaded: " + std::to_string(standing.percent) +
               " %. Feel free to keep working.";
    case Standing::Ready:
        return version + "is downloaded and verified. Click Restart at the lower edge of the main "
                         "window to install it.";
    case Standing::Elsewhere:
        return "Another " + name + "of yours is downloading or installing an update just now.";
    case Standing::Failed:
        break;
    }
    return "It did not work: " + standing.why + ".";
}

} // namespace

UpdateStatusForm::UpdateStatusForm(KOUpdates& client, SoftwareUpdateBand& band)
    : client_(client), band_(band) {
    on_(LookTimer.Fired, [this] { look(); });
    on_(OKButton.Click, [this] { close(); });
    OKButton.setToolTipText("Close this window");
}

bool UpdateStatusForm::HasUpdates() const {
    return client_.UC_GetStanding().state != Standing::Off;
}

std::string UpdateStatusForm::News() const {
    constexpr int longTime = 30;
    const UpdateStanding standing = client_.UC_GetStanding();
    if (standing.state == Standing::Off || standing.daysWithoutNews < longTime)
        return {};
    return "No news of new versions has come for " + std::to_string(standing.daysWithoutNews) +
           " days." + TryElsewhere;
}

void UpdateStatusForm::show() {
    if (open_)
        return FocusWanted.raise();
    open_ = true;
    band_.CheckNow();
    look();
    LookTimer.setEnabled(true);
    Shown.raise();
}

void UpdateStatusForm::close() {
    if (!std::exchange(open_, false))
        return;
    LookTimer.setEnabled(false);
    Closed.raise();
}

void UpdateStatusForm::look() {
    const UpdateStanding standing = client_.UC_GetStanding();
    const std::string news = News();
    const bool failed = standing.state == Standing::Failed;
    StatusLabel.setCaption(textOf(standing) + (failed && news.empty() ? TryElsewhere : ""));
    NewsLabel.setCaption(news);
    NewsLabel.setVisible(!news.empty());
}

} // namespace corvane
