#pragma once

#include "history/History.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace corvane {

/// A document of some product, without a screen.
class ProductDocument {
  public:
    virtual ~ProductDocument() = default;
    [[nodiscard]] virtual History& history() = 0;
};

/// Makes a document from the class name of its product's control.
class ProductDocuments {
  public:
    using Maker = std::function<std::unique_ptr<ProductDocument>(History::Surroundings)>;

    /// The documents of all products of the program.
    ProductDocuments();

    void add(const std::string& className, Maker maker) { makers_[className] = std::move(maker); }
    /// Nothing for a class that has no documents. The surroundings must outlive the document.
    [[nodiscard]] std::unique_ptr<ProductDocument>
    create(const std::string& className, const History::Surroundings& surroundings) const {
        const auto maker = makers_.find(className);
        return maker == makers_.end() ? nullptr : maker->second(surroundings);
    }

  private:
    std::map<std::string, Maker> makers_;
};

} // namespace corvane
