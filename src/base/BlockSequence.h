#pragma once

#include "base/Assert.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace corvane {

/// A sequence by index, from 0, in which things come and go anywhere, at the front too, for little
/// more than at the end: it is kept in small blocks. What moves within it must not throw in doing
/// so. References hold until the next coming or going.
template<class T>
class BlockSequence {
  public:
    /// How many a block holds at most: so many that shifting them costs about as much as finding
    /// the block.
    static constexpr std::size_t Most =
        std::clamp<std::size_t>(4096 / sizeof(T), std::size_t{16}, std::size_t{512});

    template<class Sequence, class Value>
    class Place {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = Value*;
        using reference = Value&;

        Place() = default;
        Place(Sequence& sequence, std::size_t block) : sequence_(&sequence), block_(block) {}
        reference operator*() const { return sequence_->blocks_[block_][offset_]; }
        pointer operator->() const { return &**this; }
        Place& operator++() {
            if (++offset_ == sequence_->blocks_[block_].size()) {
                ++block_;
                offset_ = 0;
            }
            return *this;
        }
        Place operator++(int) {
            const Place before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Place&) const = default;

      private:
        Sequence* sequence_ = nullptr;
        std::size_t block_ = 0;
        std::size_t offset_ = 0;
    };
    using iterator = Place<BlockSequence, T>;
    using const_iterator = Place<const BlockSequence, const T>;

    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] bool empty() const { return size_ == 0; }
    [[nodiscard]] T& operator[](std::size_t index) {
        const std::size_t block = blockOf(index);
        return blocks_[block][index - starts_[block]];
    }
    [[nodiscard]] const T& operator[](std::size_t index) const {
        const std::size_t block = blockOf(index);
        return blocks_[block][index - starts_[block]];
    }
    [[nodiscard]] iterator begin() { return {*this, 0}; }
    [[nodiscard]] iterator end() { return {*this, blocks_.size()}; }
    [[nodiscard]] const_iterator begin() const { return {*this, 0}; }
    [[nodiscard]] const_iterator end() const { return {*this, blocks_.size()}; }

    /// The new one has this index, at most the present size.
    void insert(std::size_t index, T value) {
        Assert(index <= size_);
        const std::size_t block = makeRoom(index);
        std::vector<T>& values = blocks_[block];
        values.insert(values.begin() + offset(index, block), std::move(value));
        ++size_;
        for (std::size_t later = block + 1; later < starts_.size(); ++later)
            ++starts_[later];
    }
    /// Takes one out.
    T take(std::size_t index) {
        Assert(index < size_);
        const std::size_t block = blockOf(index);
        std::vector<T>& values = blocks_[block];
        T taken = std::move(values[index - starts_[block]]);
        values.erase(values.begin() + offset(index, block));
        --size_;
        for (std::size_t later = block + 1; later < starts_.size(); ++later)
            --starts_[later];
        if (values.empty())
            remove(block);
        else if (block + 1 < blocks_.size() &&
                 values.size() + blocks_[block + 1].size() <= Most / 2)
            joinNext(block);
        return taken;
    }
    void clear() {
        blocks_.clear();
        starts_.clear();
        size_ = 0;
    }

  private:
    [[nodiscard]] std::size_t blockOf(std::size_t index) const {
        return static_cast<std::size_t>(std::upper_bound(starts_.begin(), starts_.end(), index) -
                                        starts_.begin()) -
               1;
    }
    [[nodiscard]] std::ptrdiff_t offset(std::size_t index, std::size_t block) const {
        return static_cast<std::ptrdiff_t>(index - starts_[block]);
    }
    void addBlock(std::size_t block, std::size_t start, std::vector<T> values) {
        starts_.reserve(starts_.size() + 1);
        blocks_.insert(blocks_.begin() + static_cast<std::ptrdiff_t>(block), std::move(values));
        starts_.insert(starts_.begin() + static_cast<std::ptrdiff_t>(block), start);
    }
    /// The block in which there is room for one at this index.
    [[nodiscard]] std::size_t makeRoom(std::size_t index) {
        if (index == size_) {
            if (blocks_.empty() || blocks_.back().size() == Most)
                addBlock(blocks_.size(), size_, {});
            return blocks_.size() - 1;
        }
        const std::size_t block = blockOf(index);
        if (blocks_[block].size() < Most)
            return block;
        std::vector<T>& values = blocks_[block];
        const auto half = values.begin() + Most / 2;
        std::vector<T> upper(std::make_move_iterator(half), std::make_move_iterator(values.end()));
        values.erase(half, values.end());
        addBlock(block + 1, starts_[block] + Most / 2, std::move(upper));
        return index <= starts_[block + 1] ? block : block + 1;
    }
    void remove(std::size_t block) {
        blocks_.erase(blocks_.begin() + static_cast<std::ptrdiff_t>(block));
        starts_.erase(starts_.begin() + static_cast<std::ptrdiff_t>(block));
    }
    void joinNext(std::size_t block) {
        std::move(blocks_[block + 1].begin(), blocks_[block + 1].end(),
                  std::back_inserter(blocks_[block]));
        remove(block + 1);
    }

    std::vector<std::vector<T>> blocks_; // none is empty
    std::vector<std::size_t> starts_;    // index of each one's first
    std::size_t size_ = 0;
};

} // namespace corvane
