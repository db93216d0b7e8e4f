// Writes what the fuzzers begin with into the folder that is named: small ones of the documents
// that the tests of heavy documents make.
#include "support/HeavyDocuments.h"

#include <filesystem>
#include <fstream>

namespace {

using namespace corvane;
namespace fs = std::filesystem;

void write(const fs::path& folder, const std::string& name, const std::string& bytes) {
    fs::create_directories(folder);
    std::string dashed = name;
    std::replace(dashed.begin(), dashed.end(), ' ', '-');
    std::ofstream(folder / dashed, std::ios::binary) << bytes;
}

/// A file of the type "T", of which the fuzzer gives the first letter if the rest is even.
std::string anyFile(HeavyDocument document) {
    document.type = "";
    document.version = 1;
    const std::string file = document.file();
    return file + (file.size() % 2 == 0 ? "" : "\n");
}

/// What a killed program leaves that opened the document, undid a change, and made it again.
std::string journal(const HeavyDocument& document) {
    const std::string& lines = document.lines;
    const std::string last = lines.substr(lines.rfind('\n', lines.size() - 2) + 1);
    const std::string all = document.file() + "Undo\nRecord\t" + last + "Undo\nRedo\n";
    return all + (all.size() % 4 == 0 ? "U" : ""); // the fuzzer gives the header otherwise
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    const fs::path folder = argv[1];
    const std::string dot = // a picture of one dot
        "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR4nGNgYPj/HwADAgH/"
        "p0n5GQAAAABJRU5ErkJggg==";
    const std::vector<std::pair<std::string, std::vector<HeavyDocument>>> all{
        {"light-document",
         {HeavyDocuments::segmentsInFront(4), HeavyDocuments::segmentsAtOnce(3),
          HeavyDocuments::values(2), HeavyDocuments::pictures({dot, "", dot})}},
        {"relay-document", {HeavyDocuments::settings(2)}},
        {"eeprom-document", {HeavyDocuments::variablesInFront(4)}},
        {"pwm-document", {HeavyDocuments::blocks(5)}},
    };
    for (const auto& [fuzzer, documents] : all)
        for (const HeavyDocument& document : documents) {
            write(folder / fuzzer, document.name, document.lines);
            write(folder / "document-file", document.name, anyFile(document));
            write(folder / "journal", document.name, journal(document));
        }
    // Segments come, are selected, pasted, dragged, zoomed, undone, saved and opened, on all tabs.
    const std::string add(1, '\0');
    const auto bytes = [](std::initializer_list<int> values) {
        return std::string(values.begin(), values.end());
    };
    write(folder / "light-acts", "editing",
          add + add +
              bytes({11, 0, 0, 19, 0, 4, 0, 20, 140, 1, 13, 15, 15, 3, 3, 4, 2, 6, 9, 10, 1}));
    write(folder / "light-acts", "tabs", add + bytes({7, 2,  0, 0,  7, 6,  5, 0, 5, 1, 8, 90, 90,
                                                      6, 16, 9, 17, 0, 50, 7, 8, 3, 7, 7, 10, 0}));
    write(folder / "light-acts", "selection",
          add + add + add +
              bytes({11, 0, 0, 18, 0, 1, 11, 0, 2, 14, 3, 18, 1, 0, 12, 2, 1, 15, 2, 2, 2, 4}));
    return 0;
}
