#include "history/KOIO.h"

#include "base/Assert.h"

namespace corvane {

int KOIOReader::Load(const std::string& path) {
    Assert(!loaded_);
    const int result = text_.SerReadLoad(path);
    loaded_ = result == 0;
    lineIndex_ = 0;
    return result;
}

void KOIOReader::ReadArray(std::string& prefix, std::vector<std::string>& values) {
    Assert(More());
    text_.SerReadLineGet(lineIndex_);
    ++lineIndex_;
    const int count = text_.SerLineArgCount();
    Assert(count > 0);
    prefix = text_.SerLineArgGet(0);
    values.resize(static_cast<std::size_t>(count) - 1);
    for (int i = 1; i < count; ++i)
        values[static_cast<std::size_t>(i) - 1] = text_.SerLineArgGet(i);
}

void KOIOWriter::WriteArray(const std::string& prefix, const std::vector<std::string>& values) {
    text_.SerLineClear();
    text_.SerLineArgSet(0, prefix);
    int index = 0;
    for (const std::string& value : values)
        text_.SerLineArgSet(++index, value);
    text_.SerWriteAddLine();
}

} // namespace corvane
