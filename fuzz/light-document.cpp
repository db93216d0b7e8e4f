// Any bytes as a light program: refused, or opened, undone to its beginning and redone to its end.
#include "kolib/text/TextFiles.h"
#include "light/LumoraDocument.h"
#include "support/Nobody.h"

namespace {

using namespace corvane;

struct MemoryFile final : FileDoor {
    std::string content;

    ReadResult ReadWhole(const std::string&, std::string& bytes) override {
        bytes = content;
        return ReadResult::Done;
    }
    bool ReplaceWhole(const std::string&, std::string_view bytes) override {
        content = bytes;
        return true;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemoryFile file;
    file.content = "Lumora\t3\t2\t0\t2\n" + std::string(data, data + size);
    TextFiles text(file);
    Nobody nobody;
    LumoraDocument document({nobody, nobody, text});
    History& history = document.HistoryObject();
    if (!history.OpenHistory("x"))
        return 0;
    while (history.position() > 0)
        history.Undo(true);
    while (history.CanRedo())
        history.Redo(true);
    history.SaveHistory();
    return 0;
}
