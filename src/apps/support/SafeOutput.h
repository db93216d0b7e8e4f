#pragma once

#include <ostream>
#include <streambuf>
#include <string>

namespace corvane {

/// A text that stays in its place in a line: line ends and tabs come out as "\xNN" as well.
[[nodiscard]] std::string InOneField(const std::string& text);

/// Passes text on to another buffer so that it can do nothing to a terminal but appear there: what
/// is neither a line end, a tab nor a printable character of UTF-8 comes out as "\xNN". Names of
/// files, strings of links and what products say may hold anything.
class SafeOutput final : public std::streambuf {
  public:
    /// From now on until its end the stream writes through this.
    explicit SafeOutput(std::ostream& stream) : stream_(stream), target_(stream.rdbuf(this)) {}
    ~SafeOutput() override;
    SafeOutput(const SafeOutput&) = delete;
    SafeOutput& operator=(const SafeOutput&) = delete;

  protected:
    int_type overflow(int_type character) override;
    int sync() override;

  private:
    void take(unsigned char byte);
    void endCharacter();
    void escape();

    std::ostream& stream_;
    std::streambuf* target_;
    std::string begun_;      // bytes of a character that is not whole
    std::size_t length_ = 0; // that it will have
};

} // namespace corvane
