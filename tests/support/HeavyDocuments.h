#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace corvane {

/// A document of any size, as its file holds it.
struct HeavyDocument {
    std::string name;
    std::string extension;
    std::string type;
    int version = 1;
    std::string lines = {}; ///< The changes.

    [[nodiscard]] std::string file() const {
        const std::string count = std::to_string(std::count(lines.begin(), lines.end(), '\n'));
        return type + "\t" + count + "\t" + count + "\t0\t" + std::to_string(version) + "\n" +
               lines;
    }
    void line(const std::vector<std::string>& arguments) {
        for (std::size_t i = 0; i < arguments.size(); ++i)
            lines += (i == 0 ? "" : "\t") + arguments[i];
        lines += '\n';
    }
};

/// What is heavy for each product, of a size that is told.
namespace HeavyDocuments {

/// Long segments, each put before all others.
inline HeavyDocument segmentsInFront(int count) {
    HeavyDocument document{"segments in front", "lumora", "Lumora", 2};
    for (int i = 0; i < count; ++i)
        document.line({"LumoraTrackInsert", "1", "0", "1", std::to_string(i % 101), "2.5"});
    return document;
}

/// Segments with functions that come in one step, and go in another, and come again.
inline HeavyDocument segmentsAtOnce(int count) {
    HeavyDocument document{"segments at once", "lumora", "Lumora", 2};
    std::vector<std::string> come{"LumoraTrackInsert2", "2", "1"};
    for (int i = 1; i <= count; ++i)
        come.insert(come.end(), {std::to_string(i), std::to_string(i % 101), ".5", "P", "7"});
    std::vector<std::string> go = come;
    go.front() = "LumoraTrackRemove2";
    document.line(come);
    document.line(go);
    document.line(come);
    return document;
}

/// One segment's values, again and again, in a track of as many.
inline HeavyDocument values(int count) {
    HeavyDocument document{"values", "lumora", "Lumora", 2};
    std::vector<std::string> come{"LumoraTrackInsert", "3", "0"};
    for (int i = 1; i <= count; ++i)
        come.insert(come.end(), {std::to_string(i), "50", "1"});
    document.line(come);
    for (int i = 1; i <= count; ++i) {
        document.line({"LumoraTime", "3", "0", std::to_string(i), "1", "2"});
        document.line(
            {"LumoraBrightness", "3", "0", std::to_string(i), "50", std::to_string(i % 101)});
        document.line({"LumoraFunction", "3", "0", std::to_string(i), "", "PT"});
        document.line({"LumoraText", "3", "Trip Point", "50", std::to_string(i % 101)});
    }
    return document;
}

/// Pictures for the lights one after another, as the text of each is given.
inline HeavyDocument pictures(const std::vector<std::string>& texts) {
    HeavyDocument document{"pictures", "lumora", "Lumora", 2};
    std::string before;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        document.line(
            {"LumoraText", std::to_string(1 + i % 6), "Sim Light Image", before, texts[i]});
        before = texts[i];
    }
    return document;
}

inline HeavyDocument settings(int count) {
    HeavyDocument document{"settings", "relay", "Pactor", 1};
    for (int i = 0; i < count; ++i) {
        document.line({"PactorText", "0", "Trip Point", std::to_string((i + 50) % 101),
                       std::to_string((i + 51) % 101)});
        document.line({"PactorText", std::to_string(i % 2), "Relay", "", "ON"});
    }
    return document;
}

/// Variables, each put before all others, which lie in each other's way.
inline HeavyDocument variablesInFront(int count) {
    HeavyDocument document{"variables in front", "ko_eeprom", "KOEEPROM", 1};
    for (int i = 0; i < count; ++i)
        document.line({"KOEEPROMListAdd", "1", std::to_string(i * 7919 % 65536), "2",
                       "variable " + std::to_string(i), "0A0B", "Hex"});
    return document;
}

inline HeavyDocument blocks(int count) {
    HeavyDocument document{"blocks", "Quillon", "Quillon", 1};
    for (int i = 0; i < count; ++i)
        document.line({"QuillonPWM", std::to_string(i % 256)});
    return document;
}

} // namespace HeavyDocuments

} // namespace corvane
