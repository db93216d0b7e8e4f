#include "link/KOBuffer.h"

#include "base/Assert.h"
#include "base/KODebug.h"

#include <algorithm>

namespace corvane {

std::vector<KOBuffer> KOBuffer::Split(int MaxLength) const {
    Assert(Length() > 0 && MaxLength > 0);
    std::vector<KOBuffer> pieces;
    for (int index = 1; index <= Length();) {
        const int count = std::min(Length() - index + 1, MaxLength);
        pieces.emplace_back().AppendBuffer(*this, index, index + count - 1);
        index += count;
    }
    return pieces;
}

void KOBuffer::RemoveAtEnd() {
    Assert(!bytes_.empty());
    bytes_.pop_back();
}

void KOBuffer::SetLength(int newLength, int padByte) {
    Assert(newLength >= 0 && padByte >= 0 && padByte <= 255);
    bytes_.resize(static_cast<std::size_t>(newLength), static_cast<std::uint8_t>(padByte));
}

void KOBuffer::AppendArray(std::span<const std::uint8_t> values, int minimum, int maximum) {
    if (minimum > maximum)
        return;
    Assert(minimum >= 0 && static_cast<std::size_t>(maximum) < values.size());
    bytes_.insert(bytes_.end(), values.begin() + minimum, values.begin() + maximum + 1);
}

void KOBuffer::AppendBuffer(const KOBuffer& buffer, int first, int last) {
    Assert(&buffer != this);
    const int from = first == -1 ? 1 : first;
    const int to = last == -1 ? buffer.Length() : last;
    AppendArray(buffer.bytes_, from - 1, to - 1);
}

std::uint8_t KOBuffer::Data(int index) const {
    return bytes_[slot(index)];
}

void KOBuffer::setData(int index, std::uint8_t value) {
    bytes_[slot(index)] = value;
}

std::vector<std::uint8_t> KOBuffer::GetDataArray() const {
    std::vector<std::uint8_t> array(1, 0);
    array.insert(array.end(), bytes_.begin(), bytes_.end());
    return array;
}

std::string KOBuffer::ToString() const {
    return DecimalBytes(bytes_);
}

std::size_t KOBuffer::slot(int index) const {
    Assert(index >= 1 && index <= Length());
    return static_cast<std::size_t>(index) - 1;
}

} // namespace corvane
