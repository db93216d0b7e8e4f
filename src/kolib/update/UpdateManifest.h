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
    std::string sha256;       ///< Of the package, in lower case.
    std::int64_t issued = 0;  ///< Seconds since 1970.
    std::int64_t expires = 0; ///< From then on it says nothing any more.

    /// Nothing if the text is no such JSON object: a part missing or of another kind, a version
    /// that is none, a size out of range, an address without a plain file name at its end, or
    /// dates that do not follow one another.
    [[nodiscard]] static std::optional<UpdateManifest> read(std::string_view json);

    /// The file's name at the end of the address.
    [[nodiscard]] std::string name() const;
    /// What the signatures say in their trusted comments.
    [[nodiscard]] std::string manifestComment() const { return "corvane manifest " + version; }
    [[nodiscard]] std::string packageComment() const { return "corvane " + version + " " + name(); }
};

} // namespace corvane
