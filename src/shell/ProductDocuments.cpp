#include "shell/ProductDocuments.h"

#include "light/LumoraDocument.h"

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

} // namespace

ProductDocuments::ProductDocuments() {
    add("Corvane.LumoraControl", [](const History::Surroundings& surroundings) {
        return std::make_unique<Headless<LumoraDocument>>(surroundings);
    });
}

} // namespace corvane
