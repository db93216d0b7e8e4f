#include "history/DocumentJournal.h"

#include "base/TextLines.h"
#include "history/History.h"

namespace corvane {

void DocumentJournal::Recorded(const History& history, const UndoableChange& change) {
    if (journals_ == nullptr || !keepsUp(history))
        return;
    data_.clear();
    change.Serialize(prefix_, data_);
    line_ = RecordWord;
    line_ += '\t';
    if (TextLines::append(line_, prefix_, data_))
        append();
    else
        behind_ = true; // no file could hold it either
}

void DocumentJournal::note(const History& history, const char* word) {
    if (journals_ == nullptr || !keepsUp(history))
        return;
    line_ = word;
    line_ += '\n';
    append();
}

/// Whether the journal holds all but the last step. If not it is begun anew, with that step.
bool DocumentJournal::keepsUp(const History& history) {
    if (isUpToDate())
        return true;
    if (std::chrono::steady_clock::now() >= retryAt_)
        begin(history);
    return false;
}

void DocumentJournal::append() {
    if (journals_->Append(file_, line_))
        return;
    behind_ = true; // but what it has is better than nothing
    retryAt_ = std::chrono::steady_clock::now() + journals_->RetryAfter;
}

bool DocumentJournal::Begin(const History& history, const std::string& path) {
    if (journals_ == nullptr)
        return false;
    path_ = path;
    sum_ = FileSum(journals_->files(), path);
    return begin(history);
}

bool DocumentJournal::begin(const History& history) {
    std::string content;
    bool good =
        TextLines::append(content, {HeaderWord, std::to_string(FormatVersion), path_, sum_});
    good = history.Compose(content) && good;
    std::shared_ptr<AppendedFile> begun = good ? journals_->Begin(content) : nullptr;
    if (begun == nullptr) {
        behind_ = true;
        retryAt_ = std::chrono::steady_clock::now() + journals_->RetryAfter;
        return false;
    }
    if (file_ != nullptr)
        file_->Remove();
    file_ = std::move(begun);
    behind_ = false;
    return true;
}

void DocumentJournal::settle(const char* word, const std::string& path) {
    if (journals_ == nullptr)
        return;
    end(word);
    path_ = path;
    sum_ = FileSum(journals_->files(), path);
    retryAt_ = {};
}

void DocumentJournal::end(const char* word) {
    if (file_ == nullptr)
        return;
    // In words too, should the file not go away.
    static_cast<void>(file_->Append(std::string(word) + "\n"));
    file_->Remove();
    file_.reset();
    behind_ = false;
}

} // namespace corvane
