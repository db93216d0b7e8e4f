#include "link/DefaultControl.h"

#include "base/Product.h"

namespace corvane {

DefaultControl::DefaultControl(const Workplace& place) {
    on_(Logo.Click, [&programs = place.programs] { programs.OpenInBrowser(MakerSite); });
    on_(LumoraPicture.Click, [this] { choose(ControlClass::Lumora); });
    on_(DervanPicture.Click, [this] { choose(ControlClass::Pactor); });
    Logo.setToolTipText("Open the maker's web site");
    LumoraPicture.setToolTipText("Edit a light program");
    DervanPicture.setToolTipText("Edit the settings of a relay");
    place.link.setMaintainConnection(true);
}

void DefaultControl::choose(const char* className) const {
    if (changer_ != nullptr)
        changer_->setClass(className);
}

} // namespace corvane
