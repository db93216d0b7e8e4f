#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace corvane {

/// A document that a command works on, and what the command's options say.
struct DocumentJob {
    std::string file;
    std::string out;            ///< File for the raw bytes; empty to print them.
    bool older = false;         ///< For the older controller for lights.
    std::optional<bool> answer; ///< To the questions that come; nothing to ask the person.
    std::size_t slot = 0;       ///< 0 or 1, of a product that has two.
};

} // namespace corvane
