#include "history/History.h"

#include "base/Assert.h"
#include "base/Text.h"
#include "system/File.h"

namespace corvane {

std::string History::GetCaption(const std::string& basicTitle, bool shortened) const {
    std::string caption = basicTitle;
    if (const std::string path(Trim(savePath_)); !path.empty())
        caption += " - " + (shortened ? KOIOFilename(path) : path);
    if (saveDirty_)
        caption += "*";
    return caption;
}

bool History::Record(std::unique_ptr<UndoableChange> action, bool dontCountAsDirty) {
    Assert(action != nullptr);
    if (!action->isApplicable()) {
        with_.dialogs.ShowError(NotRecorded);
        return false;
    }
#ifndef NDEBUG
    Assert(comesBack(*action), "A change is not what its line in a file is.");
#endif
    changes_.resize(static_cast<std::size_t>(position_));
    changes_.push_back(std::move(action));
    ++position_;
    Freeze();
    if (!dontCountAsDirty)
        saveDirty_ = true;
    change(position_).Redo();
    journal_.Recorded(*this, change(position_));
    UndoStateChanged.raise();
    SaveStateChanged.raise();
    Unfreeze();
    Changed.raise();
    return true;
}

void History::Undo(bool dontCountAsDirty) {
    Assert(position_ >= 1);
    if (!dontCountAsDirty && refused(change(position_), true))
        return;
    Freeze();
    change(position_).Undo();
    --position_;
    if (undoStopPoint_ > position_)
        undoStopPoint_ = position_;
    if (!replaying_)
        journal_.Undone(*this);
    if (!dontCountAsDirty) {
        saveDirty_ = true;
        SaveStateChanged.raise();
    }
    UndoStateChanged.raise();
    Unfreeze();
    Changed.raise();
}

void History::Redo(bool dontCountAsDirty) {
    Assert(CanRedo());
    if (!dontCountAsDirty && refused(change(position_ + 1), false))
        return;
    Freeze();
    ++position_;
    change(position_).Redo();
    if (!replaying_)
        journal_.Redone(*this);
    if (!dontCountAsDirty) {
        saveDirty_ = true;
        SaveStateChanged.raise();
    }
    UndoStateChanged.raise();
    Unfreeze();
    Changed.raise();
}

bool History::NewHistory() {
    if (!mayBeLost())
        return false;
    {
        const BusyScope busy(with_.pointer);
        reset();
    }
    saveDirty_ = false;
    savePath_.clear();
    fileVersion_.reset();
    journal_.Reset({});
    UndoStateChanged.raise();
    SaveStateChanged.raise();
    NewFileCreating.raise();
    NewFileCreated.raise();
    return true;
}

void History::Freeze() {
    if (freezeCount_ == 0)
        Freezing.raise();
    ++freezeCount_;
}

void History::Unfreeze() {
    --freezeCount_;
    if (freezeCount_ == 0)
        Unfreezing.raise(false);
}

bool History::refused(UndoableChange& next, bool undoing) {
    bool cancel = false;
    FilteringRequested.raise(next, undoing, cancel);
    return cancel;
}

bool History::mayBeLost() {
    if (!saveDirty_)
        return true;
    switch (
        with_.dialogs.Message({"Corvane", "Changes have been made. Would you like to save them?",
                               MessageBox::Icon::Question, MessageBox::Buttons::YesNoCancel})) {
    case Answer::Yes:
        return SaveHistoryAs();
    case Answer::No:
        return true;
    default:
        return false;
    }
}

void History::reset() {
    {
        const FreezeScope frozen(*this);
        const bool replayingBefore = std::exchange(replaying_, true);
        while (position_ >= 1)
            Undo(true);
        replaying_ = replayingBefore;
    }
    ResettingToDefaults.raise();
    changes_.clear();
}

} // namespace corvane
