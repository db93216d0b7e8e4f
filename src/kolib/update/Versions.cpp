#include "kolib/update/Versions.h"

#include "base/NumberWithin.h"

#include <array>

namespace corvane {

namespace {

using Numbers = std::array<int, 4>;

std::optional<Numbers> numbersOf(std::string_view version) {
    constexpr int highest = 1000000;
    Numbers numbers{};
    for (int& place : numbers) {
        const std::size_t point = version.find('.');
        const auto number = NumberWithin<int>(version.substr(0, point), 0, highest);
        if (!number)
            return std::nullopt;
        place = *number;
        if (point == std::string_view::npos)
            return numbers;
        version.remove_prefix(point + 1);
    }
    return std::nullopt;
}

} // namespace

std::optional<bool> IsNewer(std::string_view version, std::string_view than) {
    const auto a = numbersOf(version);
    const auto b = numbersOf(than);
    if (!a || !b)
        return std::nullopt;
    return *a > *b;
}

} // namespace corvane
