#include "link/DefaultControl.h"

#include "base/Product.h"

namespace corvane {

DefaultControl::DefaultControl(KOCommLink& link, Programs& programs)
    : onLogo_(Logo.Click.connect([&programs] { programs.OpenInBrowser(MakerSite); })),
      onLumora_(LumoraPicture.Click.connect([this] { choose("Corvane.LumoraControl"); })),
      onDervan_(DervanPicture.Click.connect([this] { choose("Corvane.PactorControl"); })) {
    Logo.setToolTipText("Open the maker's web site");
    LumoraPicture.setToolTipText("Edit a light program");
    DervanPicture.setToolTipText("Edit the settings of a relay");
    link.setMaintainConnection(true);
}

void DefaultControl::choose(const char* className) const {
    if (changer_ != nullptr)
        changer_->setClass(className);
}

} // namespace corvane
