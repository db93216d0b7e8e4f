// Any bytes as a journal: refused, or a document that a file could hold, with as many changes as
// the journal tells.
#include "FuzzedDocument.h"
#include "history/LostJournal.h"

#include <algorithm>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvane;
    // The beginning is given, so that the rest is reached.
    const std::string start = "CorvaneJournal\t1\t\t\n";
    MemoryFile file;
    file.content = (size % 4 == 0 ? "" : start) + std::string(data, data + size);
    const LostJournal lost(Handle(), "x.journal", file);
    if (!lost.isSound())
        return 0;
    const auto lines =
        static_cast<std::size_t>(std::count(lost.document().begin(), lost.document().end(), '\n'));
    if (lines != static_cast<std::size_t>(lost.Length()) + 1)
        std::abort();
    return 0;
}
