#pragma once

#include "support/LinkBench.h"

#include <algorithm>
#include <string>
#include <vector>

namespace corvane {

/// A document, and a product that it must not get into.
struct WrongPair {
    std::string extension; ///< Of the document.
    std::string product;   ///< As the bench calls it; a pair of numbers for an unknown type.
    std::string named;     ///< What a person reads of it.
    std::string vendor = "KO";
};

/// A document of each kind that changes something, as its file.
[[nodiscard]] inline std::string DocumentOf(const std::string& extension) {
    if (extension == "lumora")
        return "Lumora\t1\t1\t0\t1\nLumoraTrackInsert\t1\t0\t1\t50\t0.5\n";
    if (extension == "relay")
        return "Pactor\t1\t1\t0\t1\nPactorText\t0\tTrip Point\t50\t30\n";
    if (extension == "Quillon")
        return "Quillon\t1\t1\t0\t1\nQuillonPWM\t7\n";
    return "KOEEPROM\t1\t1\t0\t1\nKOEEPROMListAdd\t1\t0\t1\tfirst\t07\tHex\n";
}

[[nodiscard]] inline std::vector<WrongPair> WrongPairs() {
    return {
        {"lumora", "pactor-2.1", "Pactor 2.1"},    {"lumora", "pactor-3.1", "Pactor 3.1"},
        {"lumora", "eeprom", "KOEEPROM 255.1"},    {"lumora", "quillon", "100.1"},
        {"relay", "lumora-1.1", "Lumora 1.1"},     {"relay", "lumora-1.2", "Lumora 1.2"},
        {"relay", "eeprom", "KOEEPROM 255.1"},     {"relay", "quillon", "100.1"},
        {"ko_eeprom", "lumora-1.1", "Lumora 1.1"}, {"ko_eeprom", "lumora-1.2", "Lumora 1.2"},
        {"ko_eeprom", "pactor-2.1", "Pactor 2.1"}, {"ko_eeprom", "pactor-3.1", "Pactor 3.1"},
        {"Quillon", "lumora-1.1", "1.1", "RQ"},    {"Quillon", "pactor-3.1", "3.1", "RQ"},
        {"Quillon", "eeprom", "255.1", "RQ"},
    };
}

/// The frames, as the bench tells of them, that change what is in a product.
template<class Frames>
[[nodiscard]] int WritesAmong(const Frames& frames) {
    return static_cast<int>(std::count_if(frames.begin(), frames.end(), [](const auto& frame) {
        if (!frame.starts_with("to product: DATA"))
            return false;
        const std::string channel = " on channel ";
        const std::size_t at = frame.find(channel);
        const std::string number =
            at == std::string::npos ? std::string() : frame.substr(at + channel.size(), 3);
        return number == "148" || number == "209" ||
               (number >= "180" && number <= "184" && number != "183");
    }));
}

} // namespace corvane
