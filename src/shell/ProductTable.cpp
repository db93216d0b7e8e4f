#include "shell/ProductTable.h"

#include "eeprom/EEPROMEditorControl.h"
#include "light/LumoraControl.h"
#include "link/DefaultControl.h"
#include "pwm/QuillonControl.h"
#include "relay/PactorControl.h"
#include "shell/ProgrammerControl.h"

#include <array>

namespace corvane {

namespace {

/// What the program makes for a class name.
struct ProductParts {
    const char* className;
    std::unique_ptr<ProductControl> (*makeControl)(const Workplace&, const KOKeyboard&);
    std::shared_ptr<History> (*makeDocument)(const History::Surroundings&);
};

template<class Control>
std::unique_ptr<ProductControl> makeControl(const Workplace& place, const KOKeyboard& keyboard) {
    if constexpr (std::is_constructible_v<Control, const Workplace&, const KOKeyboard&>)
        return std::make_unique<Control>(place, keyboard);
    else
        return std::make_unique<Control>(place);
}

template<class Document>
std::shared_ptr<History> makeDocument(const History::Surroundings& surroundings) {
    auto document = std::make_shared<Document>(surroundings);
    History& history = document->HistoryObject();
    return {std::move(document), &history};
}

constexpr std::array table{
    ProductParts{ControlClass::Lumora, makeControl<LumoraControl>, makeDocument<LumoraDocument>},
    ProductParts{ControlClass::Pactor, makeControl<PactorControl>, makeDocument<PactorDocument>},
    ProductParts{ControlClass::EEPROMEditor, makeControl<EEPROMEditorControl>,
                 makeDocument<KOEEPROMDocument>},
    ProductParts{ControlClass::Quillon, makeControl<QuillonControl>, makeDocument<QuillonProgram>},
    ProductParts{ControlClass::Programmer, makeControl<ProgrammerControl>, nullptr},
    ProductParts{ControlClass::Default, makeControl<DefaultControl>, nullptr},
};

} // namespace

ProductControls::ProductControls(const Workplace& place, const KOKeyboard& keyboard) {
    for (const ProductParts& product : table)
        add(product.className,
            [place, &keyboard, make = product.makeControl] { return make(place, keyboard); });
}

std::unique_ptr<ProductControl> ProductControls::create(const std::string& className) const {
    const auto maker = makers_.find(className);
    return (maker == makers_.end() ? makers_.at(ControlClass::Default) : maker->second)();
}

std::shared_ptr<History> MakeDocument(std::string_view className,
                                      const History::Surroundings& surroundings) {
    for (const ProductParts& product : table)
        if (className == product.className && product.makeDocument != nullptr)
            return product.makeDocument(surroundings);
    return nullptr;
}

} // namespace corvane
