#include "history/LostJournal.h"

#include "base/ContentMark.h"
#include "base/Numbers.h"
#include "base/TextLines.h"
#include "history/DocumentJournal.h"

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane {

namespace fs = std::filesystem;

namespace {

/// The lines of a text one by one, each with its line feed.
class Lines {
  public:
    explicit Lines(std::string_view text) : rest_(text) {}
    [[nodiscard]] bool more() const { return !rest_.empty(); }
    std::string_view next() {
        const std::string_view line = rest_.substr(0, rest_.find('\n') + 1);
        rest_.remove_prefix(line.size());
        return line;
    }

  private:
    std::string_view rest_;
};

std::vector<std::string> wordsOf(std::string_view line) {
    std::vector<std::string> words;
    if (const auto lines = TextLines::parse(std::string(line)); lines && lines->count() == 1)
        lines->read(0, words);
    return words;
}

/// A document as lines that stand for its changes, to which the steps of a journal are applied.
struct Steps {
    std::vector<std::string_view> changes;
    std::size_t position = 0;
    std::size_t stopPoint = 0;
    bool settled = false;

    [[nodiscard]] bool apply(std::string_view line) {
        const std::string record = std::string(DocumentJournal::RecordWord) + "\t";
        const std::string_view word = line.substr(0, line.size() - 1);
        settled = word == DocumentJournal::SaveWord || word == DocumentJournal::ResetWord;
        if (settled)
            return true;
        if (line.starts_with(record)) {
            changes.resize(position);
            changes.push_back(line.substr(record.size()));
            ++position;
            return true;
        }
        if (word == DocumentJournal::UndoWord && position > 0) {
            stopPoint = std::min(stopPoint, --position);
            return true;
        }
        if (word != DocumentJournal::RedoWord || position == changes.size())
            return false;
        ++position;
        return true;
    }
};

} // namespace

LostJournal::LostJournal(Handle file, fs::path path, FileDoor& files)
    : file_(std::move(file)), path_(std::move(path)), files_(&files) {
    std::string bytes;
    if (files.ReadWhole(path_, bytes) != FileDoor::ReadResult::Done)
        return;
    // Behind the last finished line there is a torn one, or room for more.
    bytes.resize(std::min(bytes.find('\0'), bytes.size()));
    bytes.resize(bytes.rfind('\n') + 1);
    sound_ = read(bytes);
}

bool LostJournal::read(std::string_view bytes) {
    constexpr std::size_t headerWords = 4;
    constexpr std::size_t documentWords = 5;
    Lines lines(bytes);
    const std::vector<std::string> header = wordsOf(lines.next());
    if (header.size() != headerWords || header[0] != DocumentJournal::HeaderWord ||
        header[1] != std::to_string(DocumentJournal::FormatVersion))
        return false;
    documentPath_ = header[2];
    mark_ = header[3];
    const std::vector<std::string> head = wordsOf(lines.next());
    if (head.size() != documentWords)
        return false;
    typeCode_ = head[0];
    const auto number = [&head](std::size_t at) {
        return static_cast<std::size_t>(std::max(0, ReadInteger(head[at])));
    };
    Steps steps{{}, number(2), number(3), false};
    for (std::size_t i = number(1); i > 0 && lines.more(); --i)
        steps.changes.push_back(lines.next());
    if (steps.changes.size() != number(1) || steps.position > number(1) ||
        steps.stopPoint > steps.position)
        return false;
    while (lines.more())
        if (!steps.apply(lines.next()))
            return false;
    settled_ = steps.settled;
    length_ = static_cast<int>(steps.changes.size());
    if (!TextLines::append(document_,
                           {typeCode_, std::to_string(length_), std::to_string(steps.position),
                            std::to_string(steps.stopPoint), head[4]}))
        return false;
    for (const std::string_view change : steps.changes)
        document_ += change;
    return true;
}

std::int64_t LostJournal::Time() const {
    struct stat status {};
    return ::fstat(file_.get(), &status) == 0 ? status.st_mtim.tv_sec : 0;
}

bool LostJournal::isAside() const {
    return path_.extension() == Journals::AsideEnding;
}

std::string LostJournal::unchangedPath() const {
    std::string bytes;
    const bool there = !documentPath_.empty() &&
                       files_->ReadWhole(documentPath_, bytes) == FileDoor::ReadResult::Done;
    return (there ? ContentMark(bytes) : std::string()) == mark_ ? documentPath_ : std::string();
}

bool LostJournal::isNothingLost() const {
    std::string bytes;
    return settled_ || (!documentPath_.empty() &&
                        files_->ReadWhole(documentPath_, bytes) == FileDoor::ReadResult::Done &&
                        bytes == document_);
}

void LostJournal::Remove() const {
    ::unlink(path_.c_str());
}

void LostJournal::SetAside() const {
    if (isAside())
        return;
    ::futimens(file_.get(), nullptr); // its week begins
    std::error_code error;
    fs::path aside = path_.string() + Journals::AsideEnding;
    for (int number = 2; fs::exists(aside, error); ++number)
        aside = path_.string() + "-" + std::to_string(number) + Journals::AsideEnding;
    fs::rename(path_, aside, error);
}

} // namespace corvane
