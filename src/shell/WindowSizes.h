#pragma once

#include "link/ProductControl.h"
#include "system/SettingsStore.h"

#include <optional>
#include <string>

namespace corvane {

/// How large the window was when a screen was last left, for screens that ask for no size.
class WindowSizes {
  public:
    /// The store must outlive it. It holds nothing that a person would miss.
    explicit WindowSizes(SettingsStore& store) : store_(store) {}

    /// Client area; nothing if it is not known.
    [[nodiscard]] std::optional<TwipSize> of(const std::string& controlClass) const;
    void keep(const std::string& controlClass, TwipSize size);

  private:
    SettingsStore& store_;
};

} // namespace corvane
