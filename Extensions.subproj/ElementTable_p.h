#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

struct ByIdentity {
    static std::uint64_t hash(const NSObject& object) { return reinterpret_cast<std::uintptr_t>(&object) >> 4; }
    static bool same(const NSObject& a, const NSObject& b) { return &a == &b; }
};

struct ByEquality {
    static std::uint64_t hash(const NSObject& object) { return object.hash(); }
    static bool same(const NSObject& a, const NSObject& b) { return &a == &b || a.isEqual(&b); }
};

/// Where the elements of a list are: the first index of each, found through a hash, and from each index the next one
/// of an element that matches it. Built in linear time. Hashing and comparing run the elements' own code: once that has
/// changed the list, or the one whose objects are looked up, NSGenericException is raised.
///
/// A large table is far away in memory, so objects are treated in batches: what all of a batch need is asked for first
/// and comes meanwhile.
template <class Match> class ElementTable {
public:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    explicit ElementTable(const NSArray& list) : elements_(list.begin()), count_(list.count()) {
        if (count_ >= none)
            NSException::raise(NSRangeException, u"a list of %lu elements is too long to be searched", count_);
        slots_.resize(std::bit_ceil(count_ * 2 + 2));
        mask_ = slots_.size() - 1;
        shift_ = 32 - std::countr_zero(slots_.size());
        Hashes hashes;
        for (NSUInteger begin, end = count_; end; end = begin) {
            begin = end - std::min(end, batchLength);
            hash(elements_, begin, end, hashes);
            for (NSUInteger i = end; i-- > begin;)
                add(static_cast<std::uint32_t>(i), hashes[i - begin]);
        }
    }

    /// The lowest index of a matching element, or `none`.
    std::uint32_t first(const NSObject& object) const {
        const std::uint32_t hash = hash32(object);
        return index(slots_[find(hash, home(hash), [&]() -> const NSObject& { return object; })]);
    }
    bool contains(const NSObject& object) const { return first(object) != none; }
    /// The next higher index of an element matching the one at the index, or `none`.
    std::uint32_t next(std::uint32_t index) const { return next_.empty() ? none : next_[index]; }

    /// Whether any two elements match.
    bool hasMatches() const { return !next_.empty(); }

    /// Calls `use(object, first(object))` for each object of a list, until it answers false; answers that.
    template <class Use> bool lookUpEach(const NSArray& list, Use use) const {
        const NSArray::Iterator objects = list.begin();
        const NSUInteger count = list.count();
        Hashes hashes;
        std::array<std::size_t, batchLength> positions;
        for (NSUInteger begin = 0; begin < count; begin += batchLength) {
            const NSUInteger length = std::min(batchLength, count - begin);
            hash(objects, begin, begin + length, hashes);
            for (NSUInteger i = 0; i < length; ++i) {
                positions[i] = candidate(hashes[i], home(hashes[i]));
                if (slots_[positions[i]])
                    __builtin_prefetch(&at(elements_, index(slots_[positions[i]])));
            }
            for (NSUInteger i = 0; i < length; ++i) {
                const auto object = [&]() -> NSObject& { return at(objects, begin + i); };
                const std::uint32_t found = index(slots_[find(hashes[i], positions[i], object)]);
                if (!use(object(), found))
                    return false;
            }
        }
        return true;
    }

private:
    /// A hash (upper half) and an index counted from 1 (lower half); 0 where it is empty.
    using Slot = std::uint64_t;

    static constexpr NSUInteger batchLength = 32;
    using Hashes = std::array<std::uint32_t, batchLength>;

    static std::uint32_t index(Slot slot) { return static_cast<std::uint32_t>(slot) - 1; }
    static std::uint32_t hash32(const NSObject& object) {
        return static_cast<std::uint32_t>((Match::hash(object) * 0x9E3779B97F4A7C15U) >> 32);
    }
    std::size_t home(std::uint32_t hash) const { return hash >> shift_; }

    // Iterators check with each step that their list is unchanged.
    static NSObject& at(const NSArray::Iterator& list, NSUInteger index) {
        return list[static_cast<std::ptrdiff_t>(index)];
    }

    void hash(const NSArray::Iterator& objects, NSUInteger begin, NSUInteger end, Hashes& hashes) const {
        for (NSUInteger i = begin; i < end; ++i) {
            hashes[i - begin] = hash32(at(objects, i));
            __builtin_prefetch(&slots_[home(hashes[i - begin])]);
        }
    }

    /// The first slot from a position on that has the hash, or is empty.
    std::size_t candidate(std::uint32_t hash, std::size_t position) const {
        while (slots_[position] && slots_[position] >> 32 != hash)
            position = (position + 1) & mask_;
        return position;
    }

    /// The first slot from a position on whose element matches, or the empty one behind.
    template <class Object> std::size_t find(std::uint32_t hash, std::size_t position, Object object) const {
        position = candidate(hash, position);
        while (slots_[position] && !Match::same(object(), at(elements_, index(slots_[position]))))
            position = candidate(hash, (position + 1) & mask_);
        return position;
    }

    // From the last index to the first, so that each chain begins with the lowest.
    void add(std::uint32_t index, std::uint32_t hash) {
        const auto object = [&]() -> const NSObject& { return at(elements_, index); };
        Slot& slot = slots_[find(hash, home(hash), object)];
        if (slot) {
            next_.resize(count_, none);
            next_[index] = this->index(slot);
        }
        slot = Slot{hash} << 32 | (index + 1);
    }

    const NSArray::Iterator elements_;
    const NSUInteger count_;
    std::vector<Slot> slots_;
    std::size_t mask_ = 0;
    int shift_ = 0;
    std::vector<std::uint32_t> next_;  ///< empty as long as no two elements match
};

}  // namespace tovi
