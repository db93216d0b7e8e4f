#include "shell/ProductControls.h"

#include "eeprom/EEPROMEditorControl.h"
#include "light/LumoraControl.h"
#include "link/DefaultControl.h"
#include "pwm/QuillonControl.h"
#include "relay/PactorControl.h"
#include "shell/ProgrammerControl.h"

namespace corvane {

namespace {
constexpr const char* DefaultClass = "Corvane.DefaultControl";
}

ProductControls::ProductControls(const Workplace& place, const KOKeyboard& keyboard) {
    add("Corvane.LumoraControl",
        [place, &keyboard] { return std::make_unique<LumoraControl>(place, keyboard); });
    add("Corvane.PactorControl", [place] { return std::make_unique<PactorControl>(place); });
    add("Corvane.EEPROMEditorControl",
        [place] { return std::make_unique<EEPROMEditorControl>(place); });
    add("Corvane.QuillonControl", [place] { return std::make_unique<QuillonControl>(place); });
    add("Corvane.ProgrammerControl",
        [place] { return std::make_unique<ProgrammerControl>(place); });
    add(DefaultClass,
        [place] { return std::make_unique<DefaultControl>(place.link, place.programs); });
}

std::unique_ptr<ProductControl> ProductControls::create(const std::string& className) const {
    const auto maker = makers_.find(className);
    return (maker == makers_.end() ? makers_.at(DefaultClass) : maker->second)();
}

} // namespace corvane
