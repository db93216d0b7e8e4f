#pragma once

#include "update/SoftwareUpdateBand.h"

namespace corvane {

/// The window that looks for a new version when a person asks, and tells how it stands as long as
/// it is open. Offering and fetching are the band's.
class UpdateStatusForm {
  public:
    /// Both must outlive it.
    UpdateStatusForm(KOUpdates& client, SoftwareUpdateBand& band);

    Event<> Shown;
    Event<> FocusWanted;
    Event<> Closed;

    Label StatusLabel;
    Label NewsLabel; ///< That no news of versions has come for long; shows only then.
    Button OKButton{"OK"};
    Timer LookTimer{250};

    [[nodiscard]] std::string Title() const { return "Check for Updates"; }
    /// Whether this build looks for new versions at all.
    [[nodiscard]] bool HasUpdates() const;
    /// That no news of versions has come for 30 days or more; empty otherwise.
    [[nodiscard]] std::string News() const;
    /// Opens it and looks, or brings it to the front.
    void show();
    void close();

  private:
    void look();

    KOUpdates& client_;
    SoftwareUpdateBand& band_;
    bool open_ = false;
    Connections on_;
};

} // namespace corvane
