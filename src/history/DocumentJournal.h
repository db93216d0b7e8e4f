#pragma once

#include "history/Journals.h"

#include <chrono>
#include <string>
#include <vector>

namespace corvane {

class History;
class UndoableChange;

/// The journal of one document: a line for each thing that is done to it, from the first that is
/// not in its file until it is saved or given up. If something else removes it or cuts it short, it
/// is begun anew with the next look or piece. It begins with the whole document, so that it
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
    DocumentJournal(Journals* journals, const History& history);
    ~DocumentJournal() { end(ResetWord); }
    DocumentJournal(const DocumentJournal&) = delete;
    DocumentJournal& operator=(const DocumentJournal&) = delete;

    /// Each after it has been done.
    void Recorded(const UndoableChange& change);
    void Undone() { note(UndoWord); }
    void Redone() { note(RedoWord); }
    /// More was done than it was told of: it is begun anew with the next thing that is.
    void FallBehind();
    /// The document is now what its file is, or a new one; nothing of it can be lost. `mark` stands
    /// for the file's content, see `ContentMark`.
    void Saved(const std::string& path, const std::string& mark) { settle(SaveWord, path, mark); }
    void Reset(const std::string& path, const std::string& mark) { settle(ResetWord, path, mark); }
    /// None of the document is safe elsewhere. True if it is now.
    bool Begin();

    /// Whether all that was done is kept.
    [[nodiscard]] bool isUpToDate() const { return file_ != nullptr && !behind_; }

  private:
    [[nodiscard]] bool keepsUp();
    [[nodiscard]] bool mayRetry() const { return std::chrono::steady_clock::now() >= retryAt_; }
    void look(bool& any);
    void note(const char* word);
    void append();
    void writeOut();
    void replace();
    void failed();
    void settle(const char* word, const std::string& path, const std::string& mark);
    void end(const char* word);
    bool begin();

    Journals* journals_;
    const History& history_;
    std::shared_ptr<AppendedFile> file_;
    bool behind_ = false; // it lacks what was done since a failure
    std::chrono::steady_clock::time_point retryAt_;
    std::string path_; // of the document's file
    std::string mark_; // of what stood there
    Connection onLook_;
    Connection onWriteOut_;
    std::string lines_; // that have been held back
    // Kept from line to line for their room.
    std::string prefix_;
    std::vector<std::string> data_;
};

} // namespace corvane
