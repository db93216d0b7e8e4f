#pragma once

#include "base/FileDoor.h"
#include "base/TextLines.h"
#include "kolib/KOText.h"

namespace corvane {

/// Text files over a door to whole files, which must outlive this.
class TextFiles final : public KOText {
  public:
    explicit TextFiles(FileDoor& files) : files_(files) {}

    void SerReadClear() override { lines_ = {}; }
    [[nodiscard]] int SerReadLoad(const std::string& path) override;
    [[nodiscard]] int SerReadLineCount() const override { return static_cast<int>(lines_.count()); }
    void SerReadLineGet(int index) override;

    void SerLineClear() override { line_.clear(); }
    [[nodiscard]] int SerLineArgCount() const override { return static_cast<int>(line_.size()); }
    [[nodiscard]] const std::string& SerLineArgGet(int index) const override;
    void SerLineArgSet(int index, const std::string& text) override;

    void SerWriteClear() override;
    void SerWriteAddLine() override;
    [[nodiscard]] int SerWriteSave(const std::string& path) override;

    [[nodiscard]] std::string FileMark(const std::string& path) override;
    [[nodiscard]] const std::string& Mark() const override { return mark_; }

  private:
    FileDoor& files_;
    TextLines lines_;
    std::vector<std::string> line_;
    std::string written_;
    std::string mark_;
    bool writable_ = true; // all that was added is text
};

} // namespace corvane
