#pragma once

#include <string>
#include <string_view>
#include <vector>

// Text files are lines, each a list of one or more arguments, of which the first is its prefix.
// Between two arguments stands a TAB; within one, \\ \t \n \r and \0 stand for the characters that
// can't stand for themselves.

namespace corvane {

/// Of a line. An argument costs much more memory than the character that it may be in a file.
inline constexpr std::size_t MostArguments = 1000000;

/// Reads the text of such a file line by line.
class KOIOReader {
  public:
    /// Once only. False if the bytes are no such lines: not UTF-8, a NUL, a carriage return without
    /// a line feed, a backslash that stands for nothing, or a line of too many arguments.
    [[nodiscard]] bool Load(std::string bytes);
    [[nodiscard]] bool More() const { return remaining_ > 0; }
    /// Lines that have not been handed out.
    [[nodiscard]] std::size_t Remaining() const { return remaining_; }
    /// The next line, of which there must be one: its first argument and those behind it.
    void ReadArray(std::string& prefix, std::vector<std::string>& values);

  private:
    bool loaded_ = false;
    std::string bytes_;
    std::size_t at_ = 0; // where the next line begins
    std::size_t remaining_ = 0;
};

/// Writes lines behind what `target` holds.
class KOIOWriter {
  public:
    explicit KOIOWriter(std::string& target) : target_(target) {}
    /// False, and nothing is appended, if an argument is not UTF-8 or there are too many.
    [[nodiscard]] bool WriteArray(const std::string& prefix,
                                  const std::vector<std::string>& values);

  private:
    std::string& target_;
};

/// Whether the bytes are well-formed UTF-8.
[[nodiscard]] bool IsUtf8(std::string_view bytes);

} // namespace corvane
