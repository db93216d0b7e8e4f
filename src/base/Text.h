#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// ASCII letters in lower case, everything else as it is.
[[nodiscard]] inline std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

/// Without the blanks at both ends.
[[nodiscard]] inline std::string_view Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace corvane
