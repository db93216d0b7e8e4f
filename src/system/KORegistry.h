#pragma once

#include "system/RegistryKey.h"

#include <optional>

namespace corvane {

/// Opens the program's own settings key. The store must outlive what is opened.
class KORegistry {
  public:
    explicit KORegistry(SettingsStore& store) : store_(store) {}

    /// Nothing if nothing has been stored yet.
    [[nodiscard]] std::optional<RegistryKey> OpenSettingsForReading() const {
        RegistryKey key(store_);
        return key.OpenKey(RegistryRoot::CurrentUser, Path, true) ? std::optional(key)
                                                                  : std::nullopt;
    }
    /// Nothing if the store can't be written.
    [[nodiscard]] std::optional<RegistryKey> OpenSettingsForWriting() const {
        RegistryKey key(store_);
        bool created = false;
        return key.CreateKey(RegistryRoot::CurrentUser, Path, created) ? std::optional(key)
                                                                       : std::nullopt;
    }

  private:
    static constexpr const char* Path = "Software\\Ortaline Works\\Corvane";

    SettingsStore& store_;
};

/// The user's options.
class KOOptions {
  public:
    explicit KOOptions(const KORegistry& registry) : registry_(registry) {}

    /// Whether to look for updates. Also false if there are no settings at all.
    [[nodiscard]] bool AutopatchEnabled() const {
        const auto key = registry_.OpenSettingsForReading();
        return key && key->Integers("NoAutopatch") == 0;
    }
    void setAutopatchEnabled(bool enabled) const {
        if (auto key = registry_.OpenSettingsForWriting())
            key->setIntegers("NoAutopatch", enabled ? 0 : 1);
    }

  private:
    const KORegistry& registry_;
};

} // namespace corvane
