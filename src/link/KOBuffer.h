#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace corvane {

/// A growable byte string whose indices count from 1. Indices and lengths out of range are a
/// caller's fault and end in `AssertionFailed`.
class KOBuffer {
  public:
    void Append(std::uint8_t byte) { bytes_.push_back(byte); }
    /// Consecutive pieces of `MaxLength` bytes, the last one perhaps shorter. Neither the buffer
    /// nor `MaxLength` may be empty or 0.
    [[nodiscard]] std::vector<KOBuffer> Split(int MaxLength) const;
    void RemoveAtEnd();
    /// Appends `padByte` (0 to 255) up to the new length, or removes from the end.
    void SetLength(int newLength, int padByte);
    /// Appends values[minimum] to values[maximum] inclusive, indices from 0 as in the span.
    void AppendArray(std::span<const std::uint8_t> values, int minimum, int maximum);
    /// Appends a range of another buffer; -1 stands for its first or last byte.
    void AppendBuffer(const KOBuffer& buffer, int first = -1, int last = -1);
    [[nodiscard]] KOBuffer Clone() const { return *this; }
    void Clear() { bytes_ = {}; }

    [[nodiscard]] std::uint8_t Data(int index) const;
    void setData(int index, std::uint8_t value);
    /// A copy whose indices count from 1: element 0 is a 0 that belongs to no data, so that an
    /// empty buffer gives one element.
    [[nodiscard]] std::vector<std::uint8_t> GetDataArray() const;
    [[nodiscard]] int Length() const { return static_cast<int>(bytes_.size()); }
    /// The bytes in decimal, one blank between two of them.
    [[nodiscard]] std::string ToString() const;

    /// The bytes in place, for handing on; valid until the buffer changes.
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return bytes_; }

  private:
    [[nodiscard]] std::size_t slot(int index) const;

    std::vector<std::uint8_t> bytes_;
};

} // namespace corvane
