#pragma once

#include "apps/support/ConsoleDialogs.h"

namespace corvane {

/// How a command answers questions of Yes or No: as told, or else by the
/// person at the terminal, or No where there is no terminal.
class AnsweringDialogs final : public ConsoleDialogs {
  public:
    explicit AnsweringDialogs(std::optional<bool> answer) : answer_(answer) {}
    Answer Message(const MessageBox& box) override;

  private:
    std::optional<bool> answer_;
};

} // namespace corvane
