// Any bytes as a document file: refused or opened, and what was opened can be saved and read again.
#include "FuzzedDocument.h"

#include <cstdlib>

namespace {

using namespace corvane;

/// Keeps any line as it is.
struct AnyChange final : UndoableChange {
    std::string kept;
    std::vector<std::string> data;

    void Redo() override {}
    void Undo() override {}
    void Serialize(std::string& prefix, std::vector<std::string>& Data) const override {
        prefix = kept;
        Data = data;
    }
    bool Deserialize(History&, std::string_view prefix,
                     const std::vector<std::string>& Data) override {
        kept = prefix;
        data = Data;
        return true;
    }
    bool isApplicable() const override { return true; }
};

struct AnyLoader final : HistoryLoader {
    std::unique_ptr<UndoableChange> Load(std::string_view) const override {
        return std::make_unique<AnyChange>();
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemoryFile file;
    // The header's type is given, so that the rest is reached.
    file.content = std::string(size % 2 == 0 ? "T" : "") + std::string(data, data + size);
    Nobody nobody;
    HistoryHost host;
    History history(host, {nobody, nobody, file});
    history.setFilter("T");
    history.setTypeCode("T");
    history.setVersionCode(1);
    history.setLoader(std::make_unique<AnyLoader>());
    if (history.OpenHistory("x")) {
        history.SaveHistory();
        const std::string saved = file.content;
        if (!history.OpenHistory("x"))
            std::abort();
        history.SaveHistory();
        if (file.content != saved)
            std::abort();
    }
    return 0;
}
