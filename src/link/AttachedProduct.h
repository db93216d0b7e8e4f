#pragma once

#include "link/KOProductList.h"

namespace corvane {

/// What the product behind the link has told of itself in the session that lasts.
struct AttachedProduct {
    enum class Record {
        None,    ///< It has told nothing yet, or there is no session.
        Damaged, ///< What it told is no record.
        Unknown, ///< The program knows no such product.
        Known,
    };

    Record record = Record::None;
    const KOProductProfile* profile = nullptr; ///< Of a known one.
    Version deviceType;                        ///< Of a known or unknown one.
    Version firmwareVersion;

    [[nodiscard]] bool isOf(std::string_view className) const {
        return profile != nullptr && profile->Class == className;
    }
    /// Such as "Pactor 3.1"; empty for one that is not known.
    [[nodiscard]] std::string name() const {
        return profile == nullptr ? std::string() : profile->Name + " " + deviceType.ToString();
    }

    bool operator==(const AttachedProduct&) const = default;
};

} // namespace corvane
