#pragma once

#include "history/Journals.h"

#include <chrono>
#include <string>
#include <vector>

namespace corvane {

class History;
class UndoableChange;

/// The journal of one document: a line for each thing that is done to it, from the first that is
/// not in its file until it is saved or given up. It begins with the whole document, so that it
/// needs nothing else to bring that back. Ends with this in an orderly way.
class DocumentJournal {
  public:
    /// Words that lines begin with.
    static constexpr const char* HeaderWord = "CorvaneJournal";
    static constexpr const char* RecordWord = "Record";
    static constexpr const char* UndoWord = "Undo";
    static constexpr const char* RedoWord = "Redo";
    static constexpr const char* SaveWord = "Save";
    static constexpr const char* ResetWord = "Reset";
    static constexpr int FormatVersion = 1;

    /// Keeps nothing without journals.
    explicit DocumentJournal(Journals* journals) : journals_(journals) {}
    ~DocumentJournal() { end(ResetWord); }
    DocumentJournal(const DocumentJournal&) = delete;
    DocumentJournal& operator=(const DocumentJournal&) = delete;

    /// Each after it has been done.
    void Recorded(const History& history, const UndoableChange& change);
    void Undone(const History& history) { note(history, UndoWord); }
    void Redone(const History& history) { note(history, RedoWord); }
    /// The document is now what its file is, or a new one; nothing of it can be lost.
    void Saved(const std::string& path) { settle(SaveWord, path); }
    void Reset(const std::string& path) { settle(ResetWord, path); }
    /// The document is this, and none of it is safe elsewhere. True if it is now.
    bool Begin(const History& history, const std::string& path);

    /// Whether all that was done is kept.
    [[nodiscard]] bool isUpToDate() const { return file_ != nullptr && !behind_; }

  private:
    [[nodiscard]] bool keepsUp(const History& history);
    void note(const History& history, const char* word);
    void append();
    void settle(const char* word, const std::string& path);
    void end(const char* word);
    bool begin(const History& history);

    Journals* journals_;
    std::shared_ptr<AppendedFile> file_;
    bool behind_ = false; // it lacks what was done since a failure
    std::chrono::steady_clock::time_point retryAt_;
    std::string path_; // of the document, and what stood there
    std::string sum_;
    // Kept from line to line for their room.
    std::string line_;
    std::string prefix_;
    std::vector<std::string> data_;
};

} // namespace corvane
