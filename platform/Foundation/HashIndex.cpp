#include <ToviFoundationKit/Foundation/HashIndex.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include <ToviFoundationKit/Foundation/Storage_p.h>

namespace tovi::detail {

HashIndex::HashIndex(const HashIndex& other) : size_(other.size_), capacity_(other.capacity_), shift_(other.shift_) {
    if (!size_)
        return;
    slots_ = reallocated<Slot>(nullptr, size_ + guards);
    std::copy_n(other.slots_, size_ + guards, slots_);
}

HashIndex::~HashIndex() { std::free(slots_); }

void HashIndex::swap(HashIndex& other) noexcept {
    std::swap(slots_, other.slots_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
    std::swap(shift_, other.shift_);
}

/// Fills an empty index with slots in descending order.
class HashIndex::Filler {
public:
    // At most three quarters of the homes are taken, so that a search has few neighbours to pass.
    Filler(HashIndex& index, std::size_t count) : index_(index) {
        const std::size_t homes = std::bit_ceil(std::max<std::size_t>(4, count + (count + 2) / 3));
        const std::size_t size = homes + std::min<std::size_t>(32, homes / 2);
        index.slots_ = static_cast<Slot*>(std::calloc(size + guards, sizeof(Slot)));
        if (!index.slots_)
            throw std::bad_alloc();
        index.size_ = size;
        index.capacity_ = static_cast<std::uint32_t>(homes / 4 * 3);
        index.shift_ = 32U - static_cast<std::uint32_t>(std::countr_zero(homes));
    }

    void add(Slot slot) {
        next_ = std::max(next_, index_.home(hash(slot)));
        if (next_ == index_.size_) [[unlikely]]
            index_.extend();
        index_.slots_[next_++] = slot;
    }

private:
    HashIndex& index_;
    std::size_t next_ = 0;
};

void HashIndex::grow(std::size_t count) {
    HashIndex grown;
    Filler filler(grown, count);
    forEachBatch([&](const Slot* slots, std::size_t batch) {
        std::for_each_n(slots, batch, [&](Slot slot) { filler.add(slot); });
        return true;
    });
    swap(grown);
}

// More slots behind the homes: those of the last homes have no room.
void HashIndex::extend() {
    const std::size_t size = size_ + size_ / 4;
    slots_ = reallocated(slots_, size + guards);
    std::fill(slots_ + size_ + guards, slots_ + size + guards, 0);
    size_ = size;
}

void HashIndex::insert(std::size_t position, Slot added) {
    std::size_t empty = position;
    while (slots_[empty])
        ++empty;
    if (empty >= size_) [[unlikely]]
        extend();
    std::memmove(slots_ + position + 1, slots_ + position, (empty - position) * sizeof(Slot));
    slots_[position] = added;
}

// The slots behind that are not at their homes shift back.
void HashIndex::remove(std::size_t position) noexcept {
    std::size_t end = position + 1;
    while (slots_[end] && home(hash(slots_[end])) < end)
        ++end;
    std::memmove(slots_ + position, slots_ + position + 1, (end - position - 1) * sizeof(Slot));
    slots_[end - 1] = 0;
}

void HashIndex::renumber(const std::uint32_t* numbers) noexcept {
    std::size_t next = 0;
    for (std::size_t i = 0; i != size_; ++i) {
        // An empty slot, too, is numbered anew (0 has the number 0), as telling them apart would take longer.
        const Slot old = std::exchange(slots_[i], 0);
        const std::uint32_t renewed = numbers[number(old)];
        const std::size_t position = std::min(std::max(next, home(hash(old))), i);
        slots_[position] = renewed ? slot(hash(old), renewed) : 0;
        next = renewed ? position + 1 : next;
    }
}

void HashIndex::merge(const Slot* added, std::size_t count) {
    std::vector<Slot> own;
    own.reserve(capacity_);
    forEachBatch([&](const Slot* slots, std::size_t batch) {
        own.insert(own.end(), slots, slots + batch);
        return true;
    });
    *this = merged(own, {added, count});
}

HashIndex HashIndex::merged(std::span<const Slot> a, std::span<const Slot> b) {
    HashIndex merged;
    Filler filler(merged, a.size() + b.size());
    auto nextA = a.begin();
    auto nextB = b.begin();
    while (nextA != a.end() && nextB != b.end()) {
        const bool takesA = *nextA > *nextB;
        filler.add(takesA ? *nextA : *nextB);
        nextA += takesA;
        nextB += !takesA;
    }
    std::for_each(nextA, a.end(), [&](Slot slot) { filler.add(slot); });
    std::for_each(nextB, b.end(), [&](Slot slot) { filler.add(slot); });
    return merged;
}

}  // namespace tovi::detail
