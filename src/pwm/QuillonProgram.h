#pragma once

#include "history/History.h"
#include "link/KOBuffer.h"

namespace corvane {

/// A program of the PWM product as a document: one value a block. Only changes write it, and its
/// history is its file.
class QuillonProgram final : public HistoryHost {
  public:
    static constexpr int MaxLength = 65535; ///< Blocks.
    static constexpr double BlocksPerSecond = 50.0;

    explicit QuillonProgram(const History::Surroundings& surroundings);

    Event<> Changed; ///< Raised for each block that comes or goes.

    [[nodiscard]] History& HistoryObject() { return history_; }
    [[nodiscard]] const KOBuffer& blocks() const { return blocks_; }
    [[nodiscard]] double seconds() const { return blocks_.Length() / BlocksPerSecond; }

    void AddBlock(WriteAccess, std::uint8_t value);
    void RemoveBlock(WriteAccess);

    /// Records a further block as a change that does not count as dirty. False if there is no room.
    [[nodiscard]] bool append(std::uint8_t value);

  private:
    KOBuffer blocks_;
    History history_;
};

} // namespace corvane
