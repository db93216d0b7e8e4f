#include "history/History.h"

#include "base/Assert.h"
#include "base/Text.h"
#include "history/FreezeScope.h"
#include "system/File.h"

#include <algorithm>

namespace corvane {

namespace {

/// After something was told that is to last: if a listener threw, it does not last, which is told
/// too, and the failure goes on.
template<class TellBack>
void balanced(const std::exception_ptr& failure, TellBack tellBack) {
    if (failure == nullptr)
        return;
    static_cast<void>(tellBack());
    std::rethrow_exception(failure);
}

} // namespace

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
    UndoableChanges tail;
    appendCuttingTail(std::move(action), tail);
    const bool dirtyBefore = saveDirty_;
    bool pending = true; // neither applied nor taken back
    const auto takeBack = [&] {
        if (!std::exchange(pending, false))
            return;
        saveDirty_ = dirtyBefore;
        --position_;
        changes_.resize(static_cast<std::size_t>(position_));
        std::move(tail.begin(), tail.end(), std::back_inserter(changes_)); // into its own room
    };
    try {
        const FreezeScope frozen(*this);
        saveDirty_ = saveDirty_ || !dontCountAsDirty;
        AllOrNothing([this] { change(position_).Redo(); }, takeBack);
        pending = false;
        journal_.Recorded(change(position_));
        UndoStateChanged.raise();
        SaveStateChanged.raise();
    } catch (...) {
        takeBack();
        throw;
    }
    Changed.raise();
    return true;
}

void History::appendCuttingTail(std::unique_ptr<UndoableChange> action, UndoableChanges& tail) {
    const auto cut = changes_.begin() + position_;
    tail.reserve(static_cast<std::size_t>(changes_.end() - cut));
    std::move(cut, changes_.end(), std::back_inserter(tail));
    changes_.erase(cut, changes_.end());
    changes_.push_back(std::move(action));
    ++position_;
}

void History::Undo(bool dontCountAsDirty) {
    Assert(position_ >= 1);
    if (!dontCountAsDirty && refused(change(position_), true))
        return;
    {
        const FreezeScope frozen(*this);
        change(position_).Undo();
        --position_;
        undoStopPoint_ = std::min(undoStopPoint_, position_);
        if (!replaying_)
            journal_.Undone();
        if (!dontCountAsDirty) {
            saveDirty_ = true;
            SaveStateChanged.raise();
        }
        UndoStateChanged.raise();
    }
    Changed.raise();
}

void History::Redo(bool dontCountAsDirty) {
    Assert(CanRedo());
    if (!dontCountAsDirty && refused(change(position_ + 1), false))
        return;
    {
        const FreezeScope frozen(*this);
        ++position_;
        try {
            change(position_).Redo();
        } catch (...) {
            --position_;
            throw;
        }
        if (!replaying_)
            journal_.Redone();
        if (!dontCountAsDirty) {
            saveDirty_ = true;
            SaveStateChanged.raise();
        }
        UndoStateChanged.raise();
    }
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
    journal_.Reset({}, {});
    UndoStateChanged.raise();
    SaveStateChanged.raise();
    NewFileCreating.raise();
    NewFileCreated.raise();
    return true;
}

void History::Freeze() {
    if (freezeCount_ == 0)
        balanced(Freezing.tell(), [this] { return Unfreezing.tell(true); });
    ++freezeCount_;
}

void History::QuickUnfreeze() {
    balanced(Unfreezing.tell(true), [this] { return Freezing.tell(); });
}

void History::Unfreeze() {
    --freezeCount_;
    if (freezeCount_ == 0)
        Unfreezing.raise(false);
}

bool History::refused(UndoableChange& next, bool undoing) {
    bool cancel = false;
    FilteringRequested.raise(next, undoing, cancel);
    // What a listener shows may make a box count that was being typed into, which is a change.
    const int index = undoing ? position_ : position_ + 1;
    return cancel || index < 1 || index > Length() || &change(index) != &next;
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
    const ReplayScope replay(*this);
    {
        const FreezeScope frozen(*this);
        while (position_ >= 1)
            Undo(true);
    }
    ResettingToDefaults.raise();
    changes_.clear();
}

History::ReplayScope::ReplayScope(History& history)
    : history_(history), before_(std::exchange(history.replaying_, true)) {}

History::ReplayScope::~ReplayScope() {
    history_.replaying_ = before_;
    // It was not told of what was done until something threw.
    if (std::uncaught_exceptions() > exceptions_)
        history_.journal_.FallBehind();
}

} // namespace corvane
