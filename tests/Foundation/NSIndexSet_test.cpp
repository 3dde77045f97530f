#include <array>
#include <random>

#include <gtest/gtest.h>

#include <ToviFoundationKit/Foundation/NSMutableIndexSet.h>

#include <support/Expect.h>

using namespace tovi;

static_assert(std::forward_iterator<NSIndexSet::Iterator>);

namespace {

constexpr NSUInteger notFound = NSNotFound;

std::vector<bool> bits(const NSIndexSet& set, NSUInteger limit) {
    std::vector<bool> result(limit);
    for (const NSUInteger index : set)
        result.at(index) = true;
    return result;
}

std::vector<NSRange> runs(const std::vector<bool>& bits) {
    std::vector<NSRange> result;
    for (NSUInteger i = 0; i < bits.size(); ++i)
        if (bits[i] && i && bits[i - 1])
            ++result.back().length;
        else if (bits[i])
            result.push_back({i, 1});
    return result;
}

/// Compares every answer of the set with the bits.
void check(const NSIndexSet& set, const std::vector<bool>& expected, std::mt19937& random) {
    ASSERT_EQ(bits(set, expected.size()), expected);
    ASSERT_EQ(set.ranges(), runs(expected));
    ASSERT_EQ(set.count(), static_cast<NSUInteger>(std::count(expected.begin(), expected.end(), true)));
    const auto next = [&](NSUInteger i, NSUInteger step) {
        while (i < expected.size() && !expected[i])
            i += step;
        return i < expected.size() ? i : notFound;
    };
    EXPECT_EQ(set.firstIndex(), next(0, 1));
    EXPECT_EQ(set.lastIndex(), next(expected.size() - 1, ~NSUInteger{0}));
    for (int i = 0; i < 20; ++i) {
        const NSUInteger index = random() % expected.size();
        const NSRange range{index, random() % 40};
        const NSUInteger end = std::min<NSUInteger>(range.end(), expected.size());
        const auto begin = expected.begin() + static_cast<std::ptrdiff_t>(index);
        const NSUInteger within =
            static_cast<NSUInteger>(std::count(begin, begin + static_cast<std::ptrdiff_t>(end - index), true));
        EXPECT_EQ(set.containsIndex(index), expected[index]);
        EXPECT_EQ(set.indexGreaterThanIndex(index), next(index + 1, 1));
        EXPECT_EQ(set.indexLessThanIndex(index), next(index - 1, ~NSUInteger{0}));
        EXPECT_EQ(set.countOfIndexesInRange(range), within);
        EXPECT_EQ(set.containsIndexesInRange(range), range.length && within == range.length);
    }
}

}  // namespace

// The larger universes make many blocks, of runs and of bits, which are split, emptied, covered and erased.
TEST(NSMutableIndexSet, AgreesWithBitsUnderRandomChanges) {
    for (unsigned seed = 0; seed < 24; ++seed) {
        std::mt19937 random(seed);
        const NSUInteger limit = std::array{60U, 1000U, 30'000U, 200'000U}[seed % 4];
        const Ref<NSMutableIndexSet> sets[] = {NSMutableIndexSet::indexSet(), NSMutableIndexSet::indexSet()};
        std::vector<bool> expected[] = {std::vector<bool>(limit), std::vector<bool>(limit)};
        for (int step = 0; step < 40; ++step) {
            const bool which = random() % 2;
            NSMutableIndexSet& set = sets[which];
            const NSMutableIndexSet& other = sets[!which];
            const auto combine = [&](auto operation) {
                std::transform(expected[which].begin(), expected[which].end(), expected[!which].begin(),
                               expected[which].begin(), operation);
            };
            const auto action = random() % 9;
            switch (action) {
                case 0:
                    set.addIndexes(other), combine([](bool a, bool b) { return a || b; });
                    break;
                case 1:
                    set.removeIndexes(other), combine([](bool a, bool b) { return a && !b; });
                    break;
                case 2:
                    set.intersectIndexes(other), combine([](bool a, bool b) { return a && b; });
                    break;
                default:
                    for (NSUInteger i = 0; i < limit / 8; ++i) {
                        const NSUInteger start = action == 3 ? i * 2 : random() % limit;
                        const NSUInteger widest = action % 2 ? 2 : step % 5 == 4 ? limit / 3 : 12;
                        const NSRange range{start, std::min(random() % widest, limit - start)};
                        const bool adds = action < 6;
                        if (range.length == 1)
                            adds ? set.addIndex(start) : set.removeIndex(start);
                        else
                            adds ? set.addIndexesInRange(range) : set.removeIndexesInRange(range);
                        std::fill_n(expected[which].begin() + static_cast<std::ptrdiff_t>(start), range.length, adds);
                    }
            }
            SCOPED_TRACE("seed " + std::to_string(seed) + " step " + std::to_string(step));
            check(set, expected[which], random);
            EXPECT_EQ(set.isEqualToIndexSet(other), expected[0] == expected[1]);
            const auto copy = set.copy();
            EXPECT_EQ(copy, sets[which]);
            EXPECT_EQ(copy->hash(), set.hash());
            if (HasFatalFailure())
                return;
        }
    }
}

TEST(NSIndexSet, EndsBeforeNotFound) {
    const auto set = NSMutableIndexSet::indexSetWithIndexesInRange({notFound - 2, 2});
    EXPECT_EQ(set->lastIndex(), notFound - 1);
    EXPECT_EQ(set->indexGreaterThanIndex(notFound - 1), notFound);
    EXPECT_EQ(set->indexGreaterThanIndex(notFound), notFound);
    EXPECT_EQ(set->indexLessThanIndex(~NSUInteger{0}), notFound - 1);
    EXPECT_EQ(set->indexLessThanIndex(0), notFound);
    EXPECT_FALSE(set->containsIndexesInRange({notFound - 1, ~NSUInteger{0}}));
    EXPECT_RAISES(set->addIndex(notFound), NSRangeException,
                  "-[NSMutableIndexSet addIndex:]: Index (9223372036854775807) out of bounds [0, 9223372036854775806]");
    EXPECT_RAISES(set->addIndexesInRange({5, ~NSUInteger{0}}), NSRangeException,
                  "Range {5, 18446744073709551615} exceeds maximum index value of 9223372036854775806");
    EXPECT_EQ(set->count(), 2U);
}

TEST(NSIndexSet, DescribesItsRuns) {
    const auto text = NSIndexSet::of({5, 0, 1})->description()->UTF8String();
    EXPECT_EQ(text.find("<NSIndexSet: 0x"), 0U);
    EXPECT_EQ(text.substr(text.find('>')), ">[number of indexes: 3 (in 2 ranges), indexes: (0-1 5)]");
    const auto empty = NSMutableIndexSet::indexSet()->description()->UTF8String();
    EXPECT_EQ(empty.find("<NSMutableIndexSet: 0x"), 0U);
    EXPECT_EQ(empty.substr(empty.find('>')), ">(no indexes)");
}

TEST(NSIndexSet, NoticesAChangeWhileItIsEnumerated) {
    const auto set = NSMutableIndexSet::of({1, 2, 9});
    EXPECT_RAISES(
        [&] {
            for (const NSUInteger index : *set)
                set->removeIndex(index);
        }(),
        NSGenericException, "*** Collection <NSMutableIndexSet: 0x");
}

TEST(NSMutableIndexSet, IsMadeOfBits) {
    std::mt19937_64 random(9);
    std::mt19937 questions(9);
    for (const std::size_t words : {1U, 2U, 511U, 512U, 513U, 1100U}) {
        std::vector<std::uint64_t> dense(words), sparse(words), all(words, ~std::uint64_t{0});
        for (std::size_t i = 0; i < words; ++i) {
            dense[i] = random();
            sparse[i] = i % 97 ? 0 : 0x8000'0000'0000'0001;
        }
        for (const auto& row : {dense, sparse, all}) {
            std::vector<bool> expected(words * 64);
            for (std::size_t i = 0; i < expected.size(); ++i)
                expected[i] = row[i / 64] >> i % 64 & 1;
            const auto set = NSMutableIndexSet::indexSetWithBits(row);
            check(set, expected, questions);
            set->addIndex(63), expected[63] = true;
            set->removeIndex(0), expected[0] = false;
            check(set, expected, questions);
        }
    }
    EXPECT_EQ(NSMutableIndexSet::indexSetWithBits({})->count(), 0U);
}
