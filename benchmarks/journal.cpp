// Recording 100 000 changes in an editor that is on the screen, with the journal against without
// (at one go, aim: below 2; and each written by itself, as if each were an act); a start that finds
// no journal against a look into an empty folder (aim: below 2).
#include "desktop/EventLoop.h"
#include "desktop/eeprom/EEPROMEditorView.h"
#include "desktop/light/LumoraView.h"
#include "desktop/relay/PactorView.h"
#include "history/Journals.h"
#include "history/LostJournal.h"
#include "support/EmptyDesk.h"
#include "support/Measure.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace {

using namespace corvane;
constexpr int Count = 100000;

/// An editor as a person works at it, with or without a journal.
template<class Control, class View>
struct Bench {
    explicit Bench(Journals* journals) : place(at(desk, journals)), view(control, nullptr) {
        view.resize(1200, 800);
        view.show();
        QApplication::processEvents();
    }

    static Workplace at(const EmptyDesk& desk, Journals* journals) {
        Workplace place = desk.place;
        place.journals = journals;
        return place;
    }

    EmptyDesk desk;
    Workplace place;
    QtKeyboard keyboard;
    Control control = [this] {
        if constexpr (std::is_constructible_v<Control, const Workplace&, const KOKeyboard&>)
            return Control(place, keyboard);
        else
            return Control(place);
    }();
    View view;
};

/// Comes and goes of segments.
void lights(Journals* journals) {
    Bench<LumoraControl, LumoraView> bench(journals);
    LumoraDocument& document = bench.control.document;
    for (int i = 0; i < Count; ++i) {
        auto change = std::make_unique<LumoraUndoableTrackChange>();
        change->Initialize(document, i % 2 == 0, 1 + i % 12 / 2, false, {1, {i % 101, 0.5}});
        document.HistoryObject().Record(std::move(change));
    }
}

void relays(Journals* journals) {
    Bench<PactorControl, PactorView> bench(journals);
    for (int i = 0; i < Count; ++i)
        bench.control.document.record(PactorDocument::TripPoint, 0, std::to_string(i % 101));
}

void variables(Journals* journals) {
    Bench<EEPROMEditorControl, EEPROMEditorView> bench(journals);
    bench.control.document.recordAdding(1, {});
    for (int i = 0; i < Count; ++i)
        bench.control.document.record(1, KOEEPROMDocument::Comments, std::to_string(i));
}

template<class Work>
void measure(const char* what, const std::filesystem::path& folder, Work work) {
    DiskFiles files;
    const auto cost = [&](bool inPieces) {
        return ratio(
            [&] {
                Journals journals(folder, files);
                journals.InPieces = inPieces;
                const BetweenEvents writing([&journals] { journals.WriteOut(); });
                work(&journals);
            },
            [&] { work(nullptr); });
    };
    const double atOnce = cost(true);
    std::printf("%d changes of %s with the journal to without: %.2f at one go (aim: below 2), "
                "%.2f one by one\n",
                Count, what, atOnce, cost(false));
}

void start(const std::filesystem::path& folder) {
    constexpr int times = 2000;
    DiskFiles files;
    std::printf("a start without a journal to a look into a folder: %.2f (aim: below 2)\n",
                ratio(
                    [&] {
                        for (int i = 0; i < times; ++i)
                            if (!Journals(folder, files).Lost().empty())
                                std::abort();
                    },
                    [&] {
                        for (int i = 0; i < times; ++i)
                            if (std::filesystem::directory_iterator(folder) !=
                                std::filesystem::directory_iterator())
                                std::abort();
                    }));
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const DesktopApplication desktop(argc, argv);
    std::string folder = "/tmp/corvane-journal-XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr)
        return 1;
    measure("lights", folder, lights);
    measure("a relay", folder, relays);
    measure("variables", folder, variables);
    start(folder);
    std::filesystem::remove_all(folder);
}
