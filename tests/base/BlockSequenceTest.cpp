#include "base/BlockSequence.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

namespace corvane {
namespace {

/// A large thing, of which few are in a block. Counts how often one is moved.
struct Large {
    explicit Large(int number) : value(number) {}
    Large(Large&& other) noexcept : value(other.value) { ++moves; }
    Large& operator=(Large&& other) noexcept {
        value = other.value;
        ++moves;
        return *this;
    }

    static inline int moves = 0;
    int value;
    char ballast[600] = {};
};

TEST(BlockSequence, IsWhatAPlainListWouldBe) {
    BlockSequence<Large> sequence;
    std::vector<int> plain;
    std::mt19937 random(7);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    for (int i = 0; i < 20000; ++i) {
        // Growing and shrinking in turn, at the ends and in between.
        const bool grows = i % 4000 < 2200 ? below(5) > 0 : below(5) == 0;
        if (grows || plain.empty()) {
            const std::size_t places[] = {0, plain.size(), below(plain.size() + 1)};
            const std::size_t at = places[below(3)];
            sequence.insert(at, Large(i));
            plain.insert(plain.begin() + static_cast<std::ptrdiff_t>(at), i);
        } else {
            const std::size_t places[] = {0, plain.size() - 1, below(plain.size())};
            const std::size_t at = places[below(3)];
            EXPECT_EQ(sequence.take(at).value, plain[at]);
            plain.erase(plain.begin() + static_cast<std::ptrdiff_t>(at));
        }
        ASSERT_EQ(sequence.size(), plain.size());
        if (!plain.empty()) {
            const std::size_t at = below(plain.size());
            ASSERT_EQ(sequence[at].value, plain[at]);
        }
        if (i % 100 == 0) {
            std::vector<int> all;
            for (const Large& large : sequence)
                all.push_back(large.value);
            ASSERT_EQ(all, plain);
        }
    }
    sequence.clear();
    Large::moves = 0;
    for (int i = 0; i < 20000; ++i)
        sequence.insert(0, Large(i));
    EXPECT_LT(Large::moves / 20000, 32); // each, however many there are
    sequence.clear();
    EXPECT_TRUE(sequence.empty() && sequence.begin() == sequence.end());
    EXPECT_THROW(sequence.take(0), AssertionFailed);
    EXPECT_THROW(sequence.insert(1, Large(0)), AssertionFailed);
}

} // namespace
} // namespace corvane
