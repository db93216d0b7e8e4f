#include "shell/ProductControls.h"

#include "link/DefaultControl.h"

namespace corvane {

namespace {
constexpr const char* DefaultClass = "Corvane.DefaultControl";
}

ProductControls::ProductControls(const Workplace& place) {
    add(DefaultClass,
        [place] { return std::make_unique<DefaultControl>(place.link, place.programs); });
}

std::unique_ptr<ProductControl> ProductControls::create(const std::string& className) const {
    const auto maker = makers_.find(className);
    return (maker == makers_.end() ? makers_.at(DefaultClass) : maker->second)();
}

} // namespace corvane
