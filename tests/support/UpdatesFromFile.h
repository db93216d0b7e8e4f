#pragma once

#include <string>

namespace corvane {

/// What a test gives to programs that have it built in otherwise.
struct UpdatesFromFile {
    std::string url;       ///< Of the manifest.
    std::string key;       ///< The publisher's.
    std::string authority; ///< File with the certificate of whoever vouches for the server.
    std::string folder;    ///< Of the privileged side.
    std::string root;      ///< Where packages are installed to.

    [[nodiscard]] static UpdatesFromFile read();
};

} // namespace corvane
