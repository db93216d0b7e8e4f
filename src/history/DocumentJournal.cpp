#include "history/DocumentJournal.h"

#include "history/History.h"

#include <cerrno>

namespace corvane {

namespace {

constexpr std::size_t LargestPiece = 1 << 16; // bytes

} // namespace

DocumentJournal::DocumentJournal(Journals* journals, const History& history)
    : journals_(journals), history_(history) {
    if (journals_ == nullptr)
        return;
    onLook_ = journals_->Looking.connect([this](bool& any) { look(any); });
    onWriteOut_ = journals_->WritingOut.connect([this] { writeOut(); });
}

void DocumentJournal::Recorded(const UndoableChange& change) {
    if (journals_ == nullptr || !keepsUp())
        return;
    data_.clear();
    change.Serialize(prefix_, data_);
    const std::size_t before = lines_.size();
    lines_ += RecordWord;
    lines_ += '\t';
    if (KOIOWriter(lines_).WriteArray(prefix_, data_))
        return append();
    lines_.resize(before);
    writeOut();
    behind_ = true; // no file could hold it either
}

void DocumentJournal::note(const char* word) {
    if (journals_ == nullptr || !keepsUp())
        return;
    lines_ += word;
    lines_ += '\n';
    append();
}

/// Whether the journal holds all but the last step. If not it is begun anew, with that step.
bool DocumentJournal::keepsUp() {
    if (isUpToDate())
        return true;
    if (mayRetry())
        begin();
    return false;
}

void DocumentJournal::append() {
    if (!journals_->MayHoldBack() || lines_.size() > LargestPiece)
        writeOut();
}

void DocumentJournal::writeOut() {
    if (lines_.empty())
        return;
    if (!file_->isUncut())
        return replace();
    if (!journals_->Append(file_, lines_))
        failed(); // but what it has is better than nothing
    lines_.clear();
}

/// Something else has harmed it.
void DocumentJournal::replace() {
    const bool wasUpToDate = isUpToDate();
    if (begin() && wasUpToDate)
        journals_->tellReplaced();
}

void DocumentJournal::failed() {
    lines_.clear();
    behind_ = true;
    retryAt_ = std::chrono::steady_clock::now() + journals_->RetryAfter;
}

void DocumentJournal::look(bool& any) {
    writeOut();
    if (file_ != nullptr && !behind_ && !file_->isWhole()) {
        replace();
    } else if (file_ != nullptr && !behind_ && file_->syncProblem() != 0) {
        errno = file_->syncProblem();
        journals_->tell();
        failed();
    } else if (behind_ && mayRetry()) {
        begin();
    }
    any = any || file_ != nullptr || behind_;
}

void DocumentJournal::FallBehind() {
    writeOut();
    behind_ = true;
    retryAt_ = {};
}

bool DocumentJournal::Begin() {
    return journals_ != nullptr && begin();
}

bool DocumentJournal::begin() {
    std::string content;
    const bool good =
        KOIOWriter(content).WriteArray(HeaderWord, {std::to_string(FormatVersion), path_, mark_}) &&
        history_.Compose(content);
    std::shared_ptr<AppendedFile> begun = good ? journals_->Begin(content) : nullptr;
    if (begun == nullptr) {
        failed();
        return false;
    }
    if (file_ != nullptr)
        file_->Remove();
    file_ = std::move(begun);
    lines_.clear(); // it has them
    behind_ = false;
    return true;
}

void DocumentJournal::settle(const char* word, const std::string& path, const std::string& mark) {
    if (journals_ == nullptr)
        return;
    end(word);
    path_ = path;
    mark_ = mark;
    retryAt_ = {};
}

void DocumentJournal::end(const char* word) {
    behind_ = false;
    if (file_ == nullptr)
        return;
    // In words too, should the file not go away.
    static_cast<void>(file_->Append(std::exchange(lines_, {}) + word + "\n"));
    file_->Remove();
    file_.reset();
}

} // namespace corvane
