// Any bytes as what a person does in the light editor, one thing after another: whatever the order,
// what the editor shows is what the document has, and the document is what its file makes of it.
#include "FuzzedDocument.h"
#include "light/LumoraControl.h"
#include "support/EmptyDesk.h"
#include "support/RandomEdits.h"

#include <cstdlib>

namespace {

using namespace corvane;

void require(bool condition) {
    if (!condition)
        std::abort();
}

struct Keys final : KOKeyboard {
    bool ctrl = false;
    bool shift = false;
    bool CtrlHeld() const override { return ctrl; }
    bool ShiftHeld() const override { return shift; }
};

class Player {
  public:
    Player(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {
        control_.tracks.Resize(9000, 3000);
        file_.content = "Lumora\t0\t0\t0\t2\n";
        require(history_.OpenHistory("x"));
    }

    void play() {
        while (left_ > 0) {
            act();
            check();
        }
        control_.tracks.Commit();
        reopen();
        while (history_.position() > 0)
            history_.Undo(true);
        require(stateOf(control_.document) == stateOf(LumoraDocument({nobody_, nobody_, file_})));
        check();
    }

  private:
    int next(int limit) {
        if (left_ == 0)
            return 0;
        --left_;
        return *data_++ % limit;
    }
    /// Some text that might be typed.
    std::string typed() {
        constexpr std::array texts{"0", "50", "100", "-1", ".07", "2.5", "9e9", "", "x", "1,5"};
        return texts[static_cast<std::size_t>(next(texts.size()))];
    }
    SegmentBlock* block() {
        const int track = control_.tracks.focusedTrack();
        return track == 0 ? nullptr : control_.tracks.track(track).block();
    }

    void act() {
        LumoraScrollableTracks& tracks = control_.tracks;
        switch (next(22)) {
        case 0:
            return control_.AddButton.press();
        case 1:
            return control_.InsertButton.press();
        case 2:
            return control_.DeleteButton.press();
        case 3:
            return history_.CanUndo() ? history_.Undo() : void();
        case 4:
            return history_.CanRedo() ? history_.Redo() : void();
        case 5:
            return (next(2) == 0 ? control_.ZoomInButton : control_.ZoomOutButton).press();
        case 6:
            return control_.ZoomToFitButton.press();
        case 7:
            return control_.TabStrip1.select(1 + next(9));
        case 8:
            return tracks.Resize(next(256) * 100, next(256) * 20);
        case 9:
            return history_.SaveHistory();
        case 10:
            static_cast<void>(next(4) > 0 ? history_.OpenHistory("x") : history_.NewHistory());
            return;
        case 11: {
            const int track = 1 + next(LumoraDocument::TrackCount);
            const int count = control_.document.track(track).GetTrackCount();
            if (tracks.TrackVisible(track) && count > 0)
                tracks.track(track).press(1 + next(count));
            return;
        }
        case 12:
            return tracks.moveFocus(next(3) - 1, next(3) - 1);
        case 13:
            return control_.Clipboard_Copy();
        case 14:
            return control_.Clipboard_Cut();
        case 15:
            return control_.Clipboard_Paste();
        case 16:
            return tracks.scrollTo(next(256) * 500);
        case 17:
            return tracks.ZoomAbout(next(2) == 0 ? 1.25F : 0.8F, next(256) * 40);
        case 18: {
            keys_.ctrl = next(2) == 0;
            keys_.shift = next(2) == 0;
            return;
        }
        case 19:
            if (SegmentBlock* worked = block()) {
                TextBox& box = next(2) == 0 ? worked->txtBrightness : worked->txtTime;
                box.setText(typed());
                if (next(2) == 0)
                    tracks.Commit();
            }
            return;
        case 20:
            if (SegmentBlock* worked = block()) {
                const int track = tracks.focusedTrack();
                worked->startWidthDrag(
                    tracks.track(track).GetTrackWidth(tracks.track(track).FocusedIndex()),
                    static_cast<double>(tracks.TimeScale()), 0);
                worked->moveWidthDrag((next(256) - 128) * 60);
                next(4) == 0 ? worked->cancel() : worked->endWidthDrag();
            }
            return;
        default:
            return tracks.loseFocus();
        }
    }

    void check() {
        const LumoraScrollableTracks& tracks = control_.tracks;
        require(frozen_ == 0);
        require(history_.undoStopPoint() <= history_.position() &&
                history_.position() <= history_.Length());
        require(tracks.TimeScale() > 0 &&
                tracks.TimeScale() <= LumoraScrollableTracks::HighestScale);
        int blocks = 0;
        int widest = 0;
        for (int index = 1; index <= LumoraDocument::TrackCount; ++index) {
            const LumoraTrack& track = control_.document.track(index);
            const LumoraTrackEditor& editor = tracks.track(index);
            const int count = track.GetTrackCount();
            int own = 0;
            for (int i = 1; i <= count; ++i)
                own += track.GetTrack(i).functionCode().empty() ? 1 : 2;
            require(track.BlockCount() == std::max(1, own));
            blocks += std::max(1, own);
            const std::vector<int> selected = editor.SelectedIndices();
            require(static_cast<int>(selected.size()) == editor.SelectedIndexCount());
            require(selected.empty() || (selected.front() >= 1 && selected.back() <= count));
            require(editor.block() == nullptr ||
                    (editor.FocusedIndex() >= 1 && tracks.focusedTrack() == index));
            require(editor.ContentWidth() >= 0);
            if (tracks.TrackVisible(index))
                widest = std::max(widest, editor.ContentWidth());
        }
        require(control_.BlockCountLabel.Caption().starts_with(std::to_string(blocks) + "/"));
        require(tracks.SelectedIndex() == 0 || tracks.TrackVisible(tracks.SelectedIndex()));
        require(tracks.focusedTrack() == 0 || tracks.TrackVisible(tracks.focusedTrack()));
        require(tracks.HScroll.Value() >= 0 && tracks.HScroll.Value() <= tracks.HScroll.Max());
        require(tracks.scrollOffset() >= 0 && tracks.scrollOffset() <= widest);
    }

    /// What is saved opens as what was there.
    void reopen() {
        MemoryFile file;
        require(history_.Compose(file.content));
        LumoraDocument twin({nobody_, nobody_, file});
        require(twin.HistoryObject().OpenHistory("x"));
        require(stateOf(twin) == stateOf(control_.document));
    }

    const std::uint8_t* data_;
    std::size_t left_;
    EmptyDesk desk_;
    MemoryFile file_;
    Nobody nobody_;
    Keys keys_;
    Workplace place_{desk_.link,  desk_.device, desk_.products, desk_.modes,   desk_.clock,
                     desk_.pause, desk_.debug,  desk_.debugger, nobody_,       nobody_,
                     file_,       desk_.images, desk_.programs, desk_.registry};
    LumoraControl control_{place_, keys_};
    History& history_ = control_.document.HistoryObject();
    int frozen_ = 0;
    Connection onFreezing_ = history_.Freezing.connect([this] { ++frozen_; });
    Connection onUnfreezing_ = history_.Unfreezing.connect([this](bool) { --frozen_; });
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Player(data, size).play();
    return 0;
}
