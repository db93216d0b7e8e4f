#pragma once

#include "history/History.h"
#include "support/Nobody.h"

#include <cstdint>

namespace corvane {

/// A file that is kept in memory, whatever its name.
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

/// Any bytes as the changes of a document: refused, or opened, undone to its beginning, redone to
/// its end, and saved to a file that opens again.
template<class Document>
int FuzzDocument(const char* header, const std::uint8_t* data, std::size_t size) {
    MemoryFile file;
    file.content = header + std::string(data, data + size);
    Nobody nobody;
    Document document({nobody, nobody, file});
    History& history = document.HistoryObject();
    if (!history.OpenHistory("x"))
        return 0;
    while (history.position() > 0)
        history.Undo(true);
    while (history.CanRedo())
        history.Redo(true);
    history.SaveHistory();
    if (!history.OpenHistory("x"))
        __builtin_trap();
    return 0;
}

} // namespace corvane
