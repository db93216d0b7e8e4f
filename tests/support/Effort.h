#pragma once

#include <cstdlib>

namespace corvane {

/// How far a test goes: as usual, or further in the long check, which sets CORVANE_LONG.
inline int effort(int usual, int further) {
    return std::getenv("CORVANE_LONG") == nullptr ? usual : further;
}

} // namespace corvane
