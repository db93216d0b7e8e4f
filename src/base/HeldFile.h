#pragma once

#include "base/FileDoor.h"

#include <utility>

namespace corvane {

/// A door behind which each file that is read has the same bytes, which need not be on a disk.
/// What is written goes through another door.
class HeldFile final : public FileDoor {
  public:
    HeldFile(std::string bytes, FileDoor& writing) : bytes_(std::move(bytes)), writing_(writing) {}

    ReadResult ReadWhole(const std::string&, std::string& bytes) override {
        bytes = bytes_;
        return ReadResult::Done;
    }
    bool ReplaceWhole(const std::string& path, std::string_view bytes) override {
        return writing_.ReplaceWhole(path, bytes);
    }

  private:
    std::string bytes_;
    FileDoor& writing_;
};

} // namespace corvane
