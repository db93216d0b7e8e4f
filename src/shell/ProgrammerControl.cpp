#include "shell/ProgrammerControl.h"

#include "base/Product.h"
#include "shell/KOFlash.h"

namespace corvane {

ProgrammerControl::ProgrammerControl(const Workplace& place) : place_(place) {
    Logo.setToolTipText("Open the maker's web site");
    UpdateReadyState(false);
    on_(Logo.Click, [this] { place_.programs.OpenInBrowser(MakerSite); });
    jobs_.add(ProgramButton, [this] { program(); });
}

void ProgrammerControl::UpdateReadyState(bool ready) {
    ProgramButton.setEnabled(ready, "Plug in a chip to be programmed.");
    if (ready)
        ProgramButton.setToolTipText("Write a link's strings into the chip that is plugged in");
    StateLabel.setCaption("");
}

void ProgrammerControl::program() {
    StateLabel.setCaption("");
    BusyScope busy(place_.pointer);
    if (ProgramLinkDevice(place_.device)) {
        StateLabel.setCaption("Programming complete.");
        place_.dialogs.Beep(false);
        return;
    }
    busy.end();
    StateLabel.setCaption("Error programming device.");
    place_.dialogs.Message(
        {"Error", "Error programming device.", MessageBox::Icon::Warning, MessageBox::Buttons::Ok});
}

} // namespace corvane
