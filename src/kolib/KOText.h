#pragma once

#include <string>
#include <vector>

namespace corvane {

/// Line-based text files: one read list, one write list and one current line. An argument goes
/// through unchanged, whatever text it holds.
class KOText {
  public:
    virtual ~KOText() = default;

    virtual void SerReadClear() = 0;
    /// 0: loaded. 1: there is no such file. Anything else: it can't be read or is no such list.
    [[nodiscard]] virtual int SerReadLoad(const std::string& path) = 0;
    [[nodiscard]] virtual int SerReadLineCount() const = 0;
    /// Makes a line of the read list the current one, counted from 0.
    virtual void SerReadLineGet(int index) = 0;

    virtual void SerLineClear() = 0;
    [[nodiscard]] virtual int SerLineArgCount() const = 0;
    [[nodiscard]] virtual const std::string& SerLineArgGet(int index) const = 0;
    virtual void SerLineArgSet(int index, const std::string& text) = 0;

    virtual void SerWriteClear() = 0;
    /// Appends the current line to the write list.
    virtual void SerWriteAddLine() = 0;
    /// 0: saved. Anything else: what stood at the path still stands there.
    [[nodiscard]] virtual int SerWriteSave(const std::string& path) = 0;

    /// What stands for the content of a file as it is now; empty if there is no such file or it
    /// can't be read.
    [[nodiscard]] virtual std::string FileMark(const std::string& path) = 0;
    /// The same of the file that was loaded or saved last, as it was then.
    [[nodiscard]] virtual const std::string& Mark() const = 0;
};

} // namespace corvane
