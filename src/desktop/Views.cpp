#include "desktop/Views.h"

#include "desktop/DefaultView.h"
#include "desktop/ProgrammerView.h"
#include "desktop/eeprom/EEPROMEditorView.h"
#include "desktop/light/LumoraView.h"
#include "desktop/pwm/QuillonView.h"
#include "desktop/relay/PactorView.h"

#include <array>

namespace corvane {

namespace {

/// Nothing for a control that it is not the view of.
template<class Control, class View>
QWidget* makeIfOf(ProductControl& control, QWidget* parent) {
    auto* own = dynamic_cast<Control*>(&control);
    return own == nullptr ? nullptr : new View(*own, parent);
}

constexpr std::array table{
    makeIfOf<LumoraControl, LumoraView>,
    makeIfOf<PactorControl, PactorView>,
    makeIfOf<EEPROMEditorControl, EEPROMEditorView>,
    makeIfOf<QuillonControl, QuillonView>,
    makeIfOf<ProgrammerControl, ProgrammerView>,
    makeIfOf<DefaultControl, DefaultView>,
};

} // namespace

QWidget* MakeView(ProductControl& control, QWidget* parent) {
    for (auto* make : table)
        if (QWidget* view = make(control, parent))
            return view;
    return new QWidget(parent);
}

} // namespace corvane
