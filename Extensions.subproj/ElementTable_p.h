#pragma once

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
/// of an element that matches it. Built in linear time; the list must not change meanwhile.
template <class Match> class ElementTable {
public:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    explicit ElementTable(const NSArray& list) : list_(list), count_(list.count()) {
        if (count_ >= none)
            NSException::raise(NSRangeException, u"a list of %lu elements is too long to be searched", count_);
        slots_.resize(std::bit_ceil(count_ * 2 + 1));
        for (NSUInteger i = 0; i < count_; ++i)
            add(static_cast<std::uint32_t>(i));
    }

    /// The lowest index of a matching element, or `none`.
    std::uint32_t first(const NSObject& object) const { return slots_[slotOf(object, hash32(object))].first; }
    bool contains(const NSObject& object) const { return first(object) != none; }
    /// The next higher index of an element matching the one at the index, or `none`.
    std::uint32_t next(std::uint32_t index) const { return next_.empty() ? none : next_[index]; }

private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t first = none;
        std::uint32_t last = none;
    };

    // Hashing and comparing run the elements' own code: should it change the list after all, reading past the end
    // raises.
    static std::uint32_t hash32(const NSObject& object) {
        return static_cast<std::uint32_t>((Match::hash(object) * 0x9E3779B97F4A7C15U) >> 32);
    }

    std::size_t slotOf(const NSObject& object, std::uint32_t hash) const {
        const std::size_t mask = slots_.size() - 1;
        std::size_t i = hash & mask;
        while (slots_[i].first != none && !(slots_[i].hash == hash && Match::same(object, list_[slots_[i].first])))
            i = (i + 1) & mask;
        return i;
    }

    void add(std::uint32_t index) {
        const std::uint32_t hash = hash32(list_[index]);
        Slot& slot = slots_[slotOf(list_[index], hash)];
        if (slot.first == none) {
            slot = {hash, index, index};
            return;
        }
        if (next_.empty())
            next_.assign(count_, none);
        next_[slot.last] = index;
        slot.last = index;
    }

    const NSArray& list_;
    const NSUInteger count_;
    std::vector<Slot> slots_;
    std::vector<std::uint32_t> next_;  ///< empty as long as no two elements match
};

}  // namespace tovi
