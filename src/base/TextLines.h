#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// A text file of lines, each a list of one or more arguments. Between two arguments stands a TAB;
/// within one, \\ \t \n \r and \0 stand for the characters that can't stand for themselves.
class TextLines {
  public:
    /// Of a line. An argument costs much more memory than the character that it may be in a file.
    static constexpr std::size_t MostArguments = 1000000;

    /// Nothing if the bytes are no such lines: not UTF-8, a NUL, a carriage return without a line
    /// feed, a backslash that stands for nothing, or a line of too many arguments.
    [[nodiscard]] static std::optional<TextLines> parse(std::string bytes);

    [[nodiscard]] std::size_t count() const { return starts_.size(); }
    /// Fills `arguments` from a line, counted from 0; there is always at least one.
    void read(std::size_t line, std::vector<std::string>& arguments) const;

    /// Appends a line to `target`. False, and nothing is appended, if an argument is not UTF-8 or
    /// there are too many.
    [[nodiscard]] static bool append(std::string& target,
                                     const std::vector<std::string>& arguments);
    /// The same with a first argument apart.
    [[nodiscard]] static bool append(std::string& target, const std::string& first,
                                     const std::vector<std::string>& others);

  private:
    std::string bytes_;
    std::vector<std::size_t> starts_;
};

/// Whether the bytes are well-formed UTF-8.
[[nodiscard]] bool IsUtf8(std::string_view bytes);

} // namespace corvane
