// Recording, undoing and redoing small changes against Qt's own undo stack (aim: not slower);
// opening a file against merely reading and splitting it (aim: at most 2), and twice as many
// changes against once (aim: at most 2.2); memory of a change.
#include "history/History.h"

#include "support/Measure.h"
#include "support/Nobody.h"
#include "system/DiskFiles.h"

#include <QUndoStack>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <malloc.h>

namespace {

using namespace corvane;
constexpr int Count = 100000;

struct Values final : HistoryHost {
    std::vector<int> values = std::vector<int>(1000);
};

struct Assignment final : UndoableChange {
    Values* host = nullptr;
    int place = 0;
    int before = 0;
    int after = 0;

    void Redo() override { host->values[static_cast<std::size_t>(place)] = after; }
    void Undo() override { host->values[static_cast<std::size_t>(place)] = before; }
    void Serialize(std::string& prefix, std::vector<std::string>& Data) const override {
        prefix = "Value";
        Data = {std::to_string(place), std::to_string(before), std::to_string(after)};
    }
    bool Deserialize(History& history, std::string_view,
                     const std::vector<std::string>& Data) override {
        host = dynamic_cast<Values*>(&history.ManagingControl());
        if (Data.size() < 3)
            return false;
        place = std::atoi(Data[0].c_str()) % 1000;
        before = std::atoi(Data[1].c_str());
        after = std::atoi(Data[2].c_str());
        return true;
    }
    bool isApplicable() const override {
        return place >= 0 && static_cast<std::size_t>(place) < host->values.size();
    }
};

struct Loader final : HistoryLoader {
    std::unique_ptr<UndoableChange> Load(std::string_view) const override {
        return std::make_unique<Assignment>();
    }
};

struct QtAssignment final : QUndoCommand {
    QtAssignment(Values& values, int index, int value)
        : host(values),
          place(static_cast<std::size_t>(index)),
          before(values.values[place]),
          after(value) {}
    void redo() override { host.values[place] = after; }
    void undo() override { host.values[place] = before; }

    Values& host;
    std::size_t place;
    int before;
    int after;
};

struct Document {
    DiskFiles files;
    Nobody nobody;
    Values values;
    History history{values, {nobody, nobody, files}};

    Document() {
        history.setFilter("V");
        history.setTypeCode("Values");
        history.setVersionCode(1);
        history.setLoader(std::make_unique<Loader>());
    }
    void record(int count) {
        for (int i = 0; i < count; ++i) {
            auto change = std::make_unique<Assignment>();
            change->host = &values;
            change->place = i % 1000;
            change->before = values.values[static_cast<std::size_t>(i) % 1000];
            change->after = i;
            history.Record(std::move(change));
        }
    }
};

void oursThereAndBack() {
    Document document;
    document.record(Count);
    while (document.history.CanUndo())
        document.history.Undo();
    while (document.history.CanRedo())
        document.history.Redo();
}

void qtThereAndBack() {
    Values values;
    QUndoStack stack;
    for (int i = 0; i < Count; ++i)
        stack.push(new QtAssignment(values, i % 1000, i));
    while (stack.canUndo())
        stack.undo();
    while (stack.canRedo())
        stack.redo();
}

std::string fileOf(const std::filesystem::path& folder, int changes) {
    const std::string path = folder / (std::to_string(changes) + ".values");
    std::ofstream file(path);
    file << "Values\t" << changes << '\t' << changes << "\t0\t1\n";
    for (int i = 0; i < changes; ++i)
        file << "Value\t" << i % 1000 << '\t' << i << '\t' << i + 1 << '\n';
    return path;
}

void readAndSplit(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::vector<std::string>> lines;
    for (std::string line; std::getline(file, line);) {
        std::vector<std::string>& fields = lines.emplace_back();
        std::size_t at = 0;
        for (std::size_t tab = line.find('\t'); tab != std::string::npos;
             tab = line.find('\t', at)) {
            fields.push_back(line.substr(at, tab - at));
            at = tab + 1;
        }
        fields.push_back(line.substr(at));
    }
    if (lines.empty())
        std::abort();
}

void open(const std::string& path) {
    Document document;
    if (!document.history.OpenHistory(path))
        std::abort();
}

} // namespace

int main() {
    std::printf("record, undo, redo %d changes, ours to Qt's: %.2f (aim: at most 1)\n", Count,
                ratio(oursThereAndBack, qtThereAndBack));
    std::string name = "/tmp/corvane-history-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr)
        return 1;
    const std::string once = fileOf(name, Count);
    const std::string twice = fileOf(name, 2 * Count);
    std::printf("open %d changes to reading and splitting: %.2f (aim: at most 2)\n", Count,
                ratio([&] { open(once); }, [&] { readAndSplit(once); }));
    std::printf("open %d changes to %d: %.2f (aim: at most 2.2)\n", 2 * Count, Count,
                ratio([&] { open(twice); }, [&] { open(once); }));
    std::filesystem::remove_all(name);

    const auto before = ::mallinfo2().uordblks;
    Document document;
    document.record(Count);
    std::printf("memory of a small change: %.0f bytes\n",
                static_cast<double>(::mallinfo2().uordblks - before) / Count);
}
