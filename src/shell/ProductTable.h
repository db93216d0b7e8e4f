#pragma once

#include "controls/Inputs.h"
#include "history/History.h"
#include "link/ProductControl.h"
#include "link/Workplace.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace corvane {

/// Makes a product control from its class name.
class ProductControls {
  public:
    using Maker = std::function<std::unique_ptr<ProductControl>()>;

    /// All controls of the program, at work in this place, which must outlive them.
    ProductControls(const Workplace& place, const KOKeyboard& keyboard);

    void add(const std::string& className, Maker maker) { makers_[className] = std::move(maker); }
    /// The start screen for a class that this program does not have.
    [[nodiscard]] std::unique_ptr<ProductControl> create(const std::string& className) const;

  private:
    std::map<std::string, Maker> makers_;
};

/// The history of a new document without a screen, with the document itself behind it. Nothing for
/// a class that has no documents. The surroundings must outlive it.
[[nodiscard]] std::shared_ptr<History> MakeDocument(std::string_view className,
                                                    const History::Surroundings& surroundings);

} // namespace corvane
