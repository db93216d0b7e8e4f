#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

/// What a publisher says of the newest version.
struct UpdateManifest {
    static constexpr std::int64_t MaxSize = std::int64_t{1} << 30; ///< Bytes of a package.

    std::string version; ///< Such as "2.22".
    std::string notes;
    std::string url; ///< Of the package.
    std::int64_t size = 0;

    /// Nothing if the text is no such JSON object: a part missing or of another kind, a version
    /// that is none, or a size out of range.
    [[nodiscard]] static std::optional<UpdateManifest> read(std::string_view json);
};

/// Whether a version text, numbers with points between them, is higher than another. Nothing if one
/// of them is no version.
[[nodiscard]] std::optional<bool> IsNewer(std::string_view version, std::string_view than);

} // namespace corvane
