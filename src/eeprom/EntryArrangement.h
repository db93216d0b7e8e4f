#pragma once

#include "eeprom/KOEEPROMDocument.h"

namespace corvane {

/// In which order variables are shown, and which of them overlap others.
struct EntryArrangement {
    std::vector<int> order;      ///< Indices, from 1, by ascending address.
    std::vector<bool> conflicts; ///< By index less 1.
};

/// In the order of the number of variables times its logarithm. Of variables at one address the one
/// added later comes first.
[[nodiscard]] EntryArrangement Arrange(const KOEEPROMDocument& document);

} // namespace corvane
