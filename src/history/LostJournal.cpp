#include "history/LostJournal.h"

#include "base/ContentMark.h"
#include "history/DocumentHead.h"
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

/// A document as lines that stand for its changes, to which the steps of a journal are applied.
struct Steps {
    DocumentHead head;
    std::vector<std::string_view> changes;
    bool settled = false;

    [[nodiscard]] bool apply(std::string_view line) {
        const std::string record = std::string(DocumentJournal::RecordWord) + "\t";
        const std::string_view word = line.substr(0, line.size() - 1);
        settled = word == DocumentJournal::SaveWord || word == DocumentJournal::ResetWord;
        if (settled)
            return true;
        if (line.starts_with(record)) {
            changes.resize(static_cast<std::size_t>(head.position));
            changes.push_back(line.substr(record.size()));
            ++head.position;
            return true;
        }
        if (word == DocumentJournal::UndoWord && head.position > 0) {
            head.stopPoint = std::min(head.stopPoint, --head.position);
            return true;
        }
        if (word != DocumentJournal::RedoWord ||
            static_cast<std::size_t>(head.position) == changes.size())
            return false;
        ++head.position;
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
    Lines lines(bytes);
    std::string beginning(lines.next());
    beginning += lines.next();
    KOIOReader reader;
    std::string word;
    std::vector<std::string> words;
    if (!reader.Load(std::move(beginning)) || !reader.More())
        return false;
    reader.ReadArray(word, words);
    Steps steps;
    DocumentHead& head = steps.head;
    if (word != DocumentJournal::HeaderWord || words.size() != 3 ||
        words[0] != std::to_string(DocumentJournal::FormatVersion) || !head.read(reader))
        return false;
    documentPath_ = words[1];
    mark_ = words[2];
    for (std::int32_t i = head.length; i > 0 && lines.more(); --i)
        steps.changes.push_back(lines.next());
    if (!head.isSound(steps.changes.size()) || head.stopPoint > head.position)
        return false;
    while (lines.more())
        if (!steps.apply(lines.next()))
            return false;
    settled_ = steps.settled;
    typeCode_ = head.typeCode;
    length_ = head.length = static_cast<int>(steps.changes.size());
    if (!head.write(document_))
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
    return FileMark(*files_, documentPath_) == mark_ ? documentPath_ : std::string();
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
