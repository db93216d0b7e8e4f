#pragma once

#include "base/Event.h"
#include "controls/Dialogs.h"
#include "history/DocumentHead.h"
#include "history/DocumentJournal.h"
#include "history/UndoableChange.h"

#include <cstdint>
#include <optional>

namespace corvane {

/// What hosts a history: the document that its changes write to. A change finds its own kind of
/// document by a cast.
class HistoryHost {
  public:
    virtual ~HistoryHost() = default;
};

/// A document as a list of changes, of which the first `position` are applied; those behind are
/// what can be redone. The file holds the same list. Asks the person before anything is lost.
/// Everything is done inside the calls, and the events are raised from within them.
class History {
  public:
    struct Surroundings {
        Dialogs& dialogs;
        BusyPointer& pointer;
        FileDoor& files;
        Journals* journals = nullptr; ///< Where what is not saved is kept; nothing for nowhere.
    };

    /// Host and surroundings must outlive the history.
    History(HistoryHost& managingControl, Surroundings surroundings)
        : host_(managingControl), with_(surroundings), journal_(surroundings.journals, *this) {}
    History(const History&) = delete;
    History& operator=(const History&) = delete;

    static constexpr const char* NotUnderstood = "Can't understand the file format.";
    static constexpr const char* NotRecorded =
        "This change can't be made, because a file with it could not be opened again. The document "
        "is as it was.";

    Event<> Changed; ///< Last step of every recording, undo and redo.
    Event<> NewFileCreating;
    Event<> NewFileCreated;
    Event<const std::string&> FileOpened;
    /// An opening ended without a document although a name was given or chosen.
    Event<const std::string&> FileOpenFailed;
    /// The new name and the one before, empty for a document that was never saved.
    Event<const std::string&, const std::string&> FileSaved;
    /// Before a person's undo (true) or redo (false) of this change; the last argument refuses it.
    Event<UndoableChange&, bool, bool&> FilteringRequested;
    Event<> Freezing;
    Event<> ResettingToDefaults;
    Event<> SaveStateChanged;
    Event<> UndoStateChanged;
    Event<bool> Unfreezing; ///< True if no repaint is wanted.

    // Set by the product before files are saved or opened.
    [[nodiscard]] const std::string& Filter() const { return filter_; }
    void setFilter(std::string filter) { filter_ = std::move(filter); }
    [[nodiscard]] const std::string& TypeCode() const { return typeCode_; }
    void setTypeCode(std::string code) { typeCode_ = std::move(code); }
    [[nodiscard]] std::int32_t VersionCode() const { return versionCode_; }
    void setVersionCode(std::int32_t code) { versionCode_ = code; }
    [[nodiscard]] const HistoryLoader* Loader() const { return loader_.get(); }
    void setLoader(std::unique_ptr<HistoryLoader> loader) { loader_ = std::move(loader); }

    [[nodiscard]] bool CanUndo() const { return position_ > undoStopPoint_; }
    [[nodiscard]] bool CanRedo() const { return position_ < Length(); }
    /// Changes in all, those that can be redone included.
    [[nodiscard]] int Length() const { return static_cast<int>(changes_.size()); }
    [[nodiscard]] int position() const { return position_; }
    [[nodiscard]] int undoStopPoint() const { return undoStopPoint_; }
    [[nodiscard]] bool SaveDirty() const { return saveDirty_; }
    /// Empty for a document that was never saved.
    [[nodiscard]] const std::string& savePath() const { return savePath_; }
    /// The version that the opened file was written by; the present one for a new document.
    [[nodiscard]] std::int32_t fileVersion() const { return fileVersion_.value_or(versionCode_); }
    [[nodiscard]] HistoryHost& ManagingControl() const { return host_; }
    /// The window title: with the path, or the file name alone, and a star for unsaved changes.
    [[nodiscard]] std::string GetCaption(const std::string& basicTitle, bool shortened) const;

    // If a change throws, all is as before the call, what could be redone included, and so is the
    // document.

    /// Applies a change through its `Redo` and keeps it; what could be redone is dropped. False,
    /// and nothing has been touched, if a file with it could not be opened again, which is told.
    bool Record(std::unique_ptr<UndoableChange> action, bool dontCountAsDirty = false);
    /// Needs an applied change, but does not mind the stop point.
    void Undo(bool dontCountAsDirty = false);
    /// Needs `CanRedo`.
    void Redo(bool dontCountAsDirty = false);
    void SetUndoStopPoint() { undoStopPoint_ = position_; }

    /// False if the person would rather keep the document.
    bool NewHistory();
    /// Asks for a file if `filename` is empty. False if no other document was opened; the present
    /// one then stands as it was.
    bool OpenHistory(std::string filename);
    void SaveHistory();
    /// False if nothing was saved.
    bool SaveHistoryAs();
    /// Opens the document that a file of this text would be, as the changed document of a path or,
    /// if that is empty, as a new one. What is there is lost. False if it is unsound, which has
    /// been told.
    bool Recover(std::string lost, const std::string& path);
    /// Whether what the file lacks is kept elsewhere, as long as the program runs.
    [[nodiscard]] bool isJournalUpToDate() const { return journal_.isUpToDate(); }
    /// Appends all of it as a file holds it. False if it has text that no file can hold.
    [[nodiscard]] bool Compose(std::string& target) const;
    /// Whether the document may be left.
    [[nodiscard]] bool ExitHistory() { return mayBeLost(); }

    /// Between the outermost pair nothing is repainted. `FreezeScope` never forgets the second.
    void Freeze();
    void Unfreeze();
    /// Lift the freeze for a moment, without a repaint: first `QuickUnfreeze`, then `QuickFreeze`.
    void QuickFreeze() { Freezing.raise(); }
    void QuickUnfreeze();

  private:
    /// What has become of reading a file.
    enum class Loading {
        Done,
        NotFound,
        NotUnderstood,
        NewerVersion,
        UnknownPrefix,
        Unfit, // for this document
    };
    struct Loaded {
        DocumentHead head;
        UndoableChanges changes;
    };

    /// Much is undone and redone that the journal need not be told of, step by step.
    class ReplayScope {
      public:
        explicit ReplayScope(History& history);
        ~ReplayScope();
        ReplayScope(const ReplayScope&) = delete;
        ReplayScope& operator=(const ReplayScope&) = delete;

      private:
        History& history_;
        bool before_;
        int exceptions_ = std::uncaught_exceptions();
    };

    [[nodiscard]] UndoableChange& change(int index) const {
        return *changes_[static_cast<std::size_t>(index) - 1];
    }
    [[nodiscard]] bool refused(UndoableChange& next, bool undoing);
    [[nodiscard]] bool mayBeLost();
    void appendCuttingTail(std::unique_ptr<UndoableChange> action, UndoableChanges& tail);
    void reset();
    [[nodiscard]] std::string dialogFilter() const;
    [[nodiscard]] std::optional<std::string> askForName() const;
    [[nodiscard]] bool completeName(std::string& path) const;
    [[nodiscard]] bool mayReplace(const std::string& path) const;
    enum class Overwriting { Agreed, SaveAs, Refused };
    [[nodiscard]] bool isChangedByAnother(const std::string& path) const;
    [[nodiscard]] Overwriting mayOverwrite(const std::string& path) const;
    [[nodiscard]] bool writeTo(const std::string& path);
    [[nodiscard]] static const char* inWords(Loading outcome);
    [[nodiscard]] Loading read(const std::string& path, std::string& bytes) const;
    /// Touches nothing but `loaded`, and asks nobody.
    [[nodiscard]] Loading load(std::string bytes, Loaded& loaded);
    [[nodiscard]] bool isDone(Loading outcome) const;
    [[nodiscard]] std::unique_ptr<UndoableChange> emptyChange(std::string_view prefix) const;
    [[nodiscard]] bool comesBack(const UndoableChange& change);
    [[nodiscard]] bool open(std::string bytes, const std::string& path, const std::string& mark,
                            bool lost);
    void replay(Loaded loaded, const std::string& path);

    HistoryHost& host_;
    Surroundings with_;
    std::string filter_;
    std::string typeCode_;
    std::int32_t versionCode_ = 0;
    std::unique_ptr<HistoryLoader> loader_;
    UndoableChanges changes_;
    int position_ = 0;
    int undoStopPoint_ = 0;
    int freezeCount_ = 0;
    bool replaying_ = false;
    bool saveDirty_ = false;
    std::string savePath_;
    std::string fileMark_; // of what stood there when it was opened or saved last
    std::optional<std::int32_t> fileVersion_;
    DocumentJournal journal_;
};

} // namespace corvane
