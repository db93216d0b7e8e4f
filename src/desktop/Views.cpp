#include "desktop/Views.h"

#include "desktop/DefaultView.h"
#include "desktop/ProgrammerView.h"
#include "desktop/eeprom/EEPROMEditorView.h"
#include "desktop/light/LumoraView.h"
#include "desktop/pwm/QuillonView.h"
#include "desktop/relay/PactorView.h"

namespace corvane {

QWidget* MakeView(ProductControl& control, QWidget* parent) {
    if (auto* start = dynamic_cast<DefaultControl*>(&control))
        return new DefaultView(*start, parent);
    if (auto* programmer = dynamic_cast<ProgrammerControl*>(&control))
        return new ProgrammerView(*programmer, parent);
    if (auto* light = dynamic_cast<LumoraControl*>(&control))
        return new LumoraView(*light, parent);
    if (auto* relay = dynamic_cast<PactorControl*>(&control))
        return new PactorView(*relay, parent);
    if (auto* eeprom = dynamic_cast<EEPROMEditorControl*>(&control))
        return new EEPROMEditorView(*eeprom, parent);
    if (auto* pwm = dynamic_cast<QuillonControl*>(&control))
        return new QuillonView(*pwm, parent);
    return new QWidget(parent);
}

} // namespace corvane
