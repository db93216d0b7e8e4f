#include "shell/ProductDocuments.h"

#include "eeprom/KOEEPROMDocument.h"
#include "light/LumoraDocument.h"
#include "pwm/QuillonProgram.h"
#include "relay/PactorDocument.h"

namespace corvane {

namespace {

template<class Document>
class Headless final : public ProductDocument {
  public:
    explicit Headless(const History::Surroundings& surroundings) : document_(surroundings) {}
    History& history() override { return document_.HistoryObject(); }

  private:
    Document document_;
};

template<class Document>
std::unique_ptr<ProductDocument> make(const History::Surroundings& surroundings) {
    return std::make_unique<Headless<Document>>(surroundings);
}

} // namespace

ProductDocuments::ProductDocuments() {
    add("Corvane.LumoraControl", make<LumoraDocument>);
    add("Corvane.PactorControl", make<PactorDocument>);
    add("Corvane.EEPROMEditorControl", make<KOEEPROMDocument>);
    add("Corvane.QuillonControl", make<QuillonProgram>);
}

} // namespace corvane
