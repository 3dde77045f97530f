#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <ToviFoundationKit/Runtime/Export.h>

namespace tovi::detail {

/// Finds places (in a row of entries) by 32-bit hashes. Several places may have the same hash.
///
/// An index is a row of 64-bit slots, each a hash (upper half) and a number (lower half), the place counted from 1; 0
/// where it is empty. A slot's home is proportional to its hash, a slot stands at its home or behind it with no empty
/// one between, and all are in descending order of their hashes. So looking up compares a few neighbours without
/// branches, removing shifts slots back, and two indexes are compared, combined and grown by walking them from front to
/// back.
class TOVI_EXPORT HashIndex {
public:
    using Slot = std::uint64_t;
    static constexpr std::size_t largestBatch = 64;

    HashIndex() noexcept = default;
    HashIndex(const HashIndex& other);
    HashIndex(HashIndex&& other) noexcept { swap(other); }
    HashIndex& operator=(HashIndex other) noexcept {
        swap(other);
        return *this;
    }
    ~HashIndex();
    void swap(HashIndex& other) noexcept;

    static Slot slot(std::uint32_t hash, std::size_t number) noexcept { return Slot(hash) << 32 | number; }
    static std::uint32_t hash(Slot slot) noexcept { return static_cast<std::uint32_t>(slot >> 32); }
    static std::uint32_t number(Slot slot) noexcept { return static_cast<std::uint32_t>(slot); }
    static std::uint32_t place(Slot slot) noexcept { return number(slot) - 1; }

    /// How many slots there are, empty ones included.
    std::size_t size() const noexcept { return size_; }
    Slot operator[](std::size_t i) const noexcept { return slots_[i]; }
    /// Calls `use(slots, count)` with the slots that are not empty, a batch at a time, until it answers false; answers
    /// that.
    template <class F> bool forEachBatch(F use) const;

    /// Where the slots of that hash begin, or would. Only when there is room for a slot.
    std::size_t find(std::uint32_t hash) const noexcept {
        const Slot last = Slot(hash) << 32 | 0xFFFFFFFF;
        for (std::size_t i = home(hash);; i += 4) {
            const std::size_t before = std::size_t(slots_[i] > last) + std::size_t(slots_[i + 1] > last) +
                                       std::size_t(slots_[i + 2] > last) + std::size_t(slots_[i + 3] > last);
            if (before < 4) [[likely]]
                return i + before;
        }
    }
    bool holds(std::size_t i, std::uint32_t hash) const noexcept {
        return slots_[i] && HashIndex::hash(slots_[i]) == hash;
    }

    /// Room for so many slots in all.
    void reserve(std::size_t count) {
        if (count > capacity_)
            grow(count);
    }
    /// Adds a slot where `find` has pointed. Only when there is room.
    void insert(std::size_t position, Slot added);
    void remove(std::size_t position) noexcept;
    /// Gives every place the number that `numbers` has for its own, or takes its slot away where that is 0.
    void renumber(const std::uint32_t* numbers) noexcept;
    /// Adds slots that stand in descending order.
    void merge(const Slot* added, std::size_t count);
    /// An index of slots that stand in descending order in two rows.
    static HashIndex merged(std::span<const Slot> a, std::span<const Slot> b);

private:
    // Read beyond the last slot, so that `find` needs no bounds.
    static constexpr std::size_t guards = 4;

    class Filler;

    std::size_t home(std::uint32_t hash) const noexcept { return ~hash >> shift_; }
    void grow(std::size_t count);
    void extend();

    Slot* slots_ = nullptr;
    std::size_t size_ = 0;  ///< homes, and behind them some more for slots that had to give way; guards come on top
    std::uint32_t capacity_ = 0;
    std::uint32_t shift_ = 31;
};

// Which slots are empty cannot be predicted, so they are sorted out without branches.
template <class F> bool HashIndex::forEachBatch(F use) const {
    Slot batch[largestBatch];
    for (std::size_t i = 0; i < size_;) {
        std::size_t count = 0;
        for (const std::size_t end = i + largestBatch < size_ ? i + largestBatch : size_; i != end; ++i) {
            batch[count] = slots_[i];
            count += slots_[i] != 0;
        }
        if (!use(static_cast<const Slot*>(batch), count))
            return false;
    }
    return true;
}

}  // namespace tovi::detail
