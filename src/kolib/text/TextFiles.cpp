#include "kolib/text/TextFiles.h"

#include "base/Assert.h"
#include "base/ContentMark.h"

namespace corvane {

namespace {
constexpr int Done = 0;
constexpr int NotFound = 1;
constexpr int Failed = 2;
} // namespace

int TextFiles::SerReadLoad(const std::string& path) {
    SerReadClear();
    std::string bytes;
    switch (files_.ReadWhole(path, bytes)) {
    case FileDoor::ReadResult::NotFound:
        return NotFound;
    case FileDoor::ReadResult::Failed:
        return Failed;
    case FileDoor::ReadResult::Done:
        break;
    }
    mark_ = ContentMark(bytes);
    std::optional<TextLines> lines = TextLines::parse(std::move(bytes));
    if (!lines)
        return Failed;
    lines_ = std::move(*lines);
    return Done;
}

void TextFiles::SerReadLineGet(int index) {
    Assert(index >= 0 && index < SerReadLineCount());
    lines_.read(static_cast<std::size_t>(index), line_);
}

const std::string& TextFiles::SerLineArgGet(int index) const {
    Assert(index >= 0 && index < SerLineArgCount());
    return line_[static_cast<std::size_t>(index)];
}

void TextFiles::SerLineArgSet(int index, const std::string& text) {
    Assert(index >= 0);
    const auto place = static_cast<std::size_t>(index);
    if (place >= line_.size())
        line_.resize(place + 1);
    line_[place] = text;
}

void TextFiles::SerWriteClear() {
    written_.clear();
    writable_ = true;
}

void TextFiles::SerWriteAddLine() {
    writable_ = TextLines::append(written_, line_) && writable_;
}

int TextFiles::SerWriteSave(const std::string& path) {
    if (!writable_ || !files_.ReplaceWhole(path, written_))
        return Failed;
    mark_ = ContentMark(written_);
    return Done;
}

std::string TextFiles::FileMark(const std::string& path) {
    std::string bytes;
    return files_.ReadWhole(path, bytes) == FileDoor::ReadResult::Done ? ContentMark(bytes)
                                                                       : std::string();
}

} // namespace corvane
