#include <utility>
#include <vector>

#include <ToviFoundationKit/Foundation/HashTable.h>

// Which keys two tables share cannot be predicted, so these loops sort them without branches as far as they can.

namespace tovi::detail {

// Looks every key up in the other table, which is not empty, and calls `use` with its slot here and there, until it
// answers false. Both indexes are walked from front to back; the entries, which lie anywhere, are fetched
// ahead.
template <class Entry> template <class F> bool HashTable<Entry>::lookUpIn(const HashTable& other, F use) const {
    return index_.forEachBatch([&](const HashIndex::Slot* slots, std::size_t count) {
        std::size_t positions[HashIndex::largestBatch];
        for (std::size_t i = 0; i < count; ++i) {
            positions[i] = other.index_.find(HashIndex::hash(slots[i]));
            __builtin_prefetch(entries_ + HashIndex::place(slots[i]));
            __builtin_prefetch(other.entries_ + HashIndex::place(other.index_[positions[i]]));
        }
        for (std::size_t i = 0; i < count; ++i) {
            const NSObject& key = *entries_[HashIndex::place(slots[i])].key;
            if (!use(slots[i], other.findFrom(positions[i], key, HashIndex::hash(slots[i]))))
                return false;
        }
        return true;
    });
}

template <class Entry> bool HashTable<Entry>::areAllIn(const HashTable& other) const {
    return !count_ ||
           (count_ <= other.count_ && lookUpIn(other, [](HashIndex::Slot, Slot found) { return bool(found); }));
}

template <class Entry> bool HashTable<Entry>::areAnyIn(const HashTable& other) const {
    if (count_ > other.count_)
        return other.areAnyIn(*this);
    return count_ && !lookUpIn(other, [](HashIndex::Slot, Slot found) { return !found; });
}

template <class Entry> void HashTable<Entry>::removeWhere(const HashTable& other, bool isIn) {
    // By number: 1 for the entries that stay, later their new numbers.
    std::vector<std::uint32_t> numbers(used_ + std::size_t{1});
    std::uint32_t kept = 0;
    const auto mark = [&](HashIndex::Slot slot, Slot found) {
        const bool stays = bool(found) != isIn;
        numbers[HashIndex::number(slot)] = stays;
        kept += stays;
        return true;
    };
    if (other.count_)
        lookUpIn(other, mark);
    else if (isIn)
        return;
    if (kept == count_)
        return;
    std::vector<Entry> removed(count_ - kept + std::size_t{1});
    Entry* out = removed.data();
    kept = 0;
    for (std::uint32_t i = first_; i < used_; ++i) {
        const Entry entry = entries_[i];
        const bool stays = numbers[i + 1];
        *out = entry;
        out += entry.key && !stays;
        entries_[kept] = entry;
        kept += stays;
        numbers[i + 1] = stays ? kept : 0;
    }
    index_.renumber(numbers.data());
    first_ = 0;
    used_ = count_ = kept;
    removed.pop_back();
    for (const Entry& each : removed)
        release(each);
}

template <class Entry> void HashTable<Entry>::unite(const HashTable& other) {
    if (!count_) {
        *this = other;
        return;
    }
    std::vector<HashIndex::Slot> missing(other.count_ + std::size_t{1});
    // By the numbers there: 1 for the entries that are missing here, later their numbers here.
    std::vector<std::uint32_t> numbers(other.used_ + std::size_t{1});
    std::size_t added = 0;
    other.lookUpIn(*this, [&](HashIndex::Slot slot, Slot found) {
        missing[added] = slot;
        numbers[HashIndex::number(slot)] = !found;
        added += !found;
        return true;
    });
    if (!added)
        return;
    makeRoomForEntries(added + 1);
    const std::uint32_t used = put(used_, other, numbers);
    for (std::size_t i = 0; i < added; ++i)
        missing[i] = HashIndex::slot(HashIndex::hash(missing[i]), numbers[HashIndex::number(missing[i])]);
    index_.merge(missing.data(), added);
    adoptUpTo(used);
}

namespace {

/// The slots of an index in their order with new numbers, without those that are numbered 0.
std::vector<HashIndex::Slot> renumbered(const HashIndex& index, const std::vector<std::uint32_t>& numbers,
                                        std::size_t count) {
    std::vector<HashIndex::Slot> result(count + 1);
    std::size_t kept = 0;
    index.forEachBatch([&](const HashIndex::Slot* slots, std::size_t batch) {
        for (std::size_t i = 0; i < batch; ++i) {
            const std::uint32_t number = numbers[HashIndex::number(slots[i])];
            result[kept] = HashIndex::slot(HashIndex::hash(slots[i]), number);
            kept += number != 0;
        }
        return true;
    });
    result.pop_back();
    return result;
}

}  // namespace

template <class Entry> auto HashTable<Entry>::symmetricDifference(const HashTable& a, const HashTable& b) -> HashTable {
    if (!a.count_ || !b.count_)
        return a.count_ ? a : b;
    // By number: 1 for the entries that the other table does not have, later their new numbers.
    std::vector<std::uint32_t> ofA(a.used_ + std::size_t{1}, 1);
    std::vector<std::uint32_t> ofB(b.used_ + std::size_t{1});
    ofA[0] = 0;
    // Counted apart, as elements whose idea of equality is odd may find the same one.
    std::size_t keptOfA = a.count_;
    std::size_t keptOfB = 0;
    b.lookUpIn(a, [&](HashIndex::Slot slot, Slot found) {
        ofB[HashIndex::number(slot)] = !found;
        keptOfB += !found;
        keptOfA -= std::exchange(ofA[found ? HashIndex::number(a.index_[found.position]) : 0], 0);
        return true;
    });
    HashTable result;
    result.growEntries(keptOfA + keptOfB + 1, keptOfA + keptOfB + 1);
    std::uint32_t used = result.put(0, a, ofA);
    used = result.put(used, b, ofB);
    result.index_ = HashIndex::merged(renumbered(a.index_, ofA, keptOfA), renumbered(b.index_, ofB, keptOfB));
    result.adoptUpTo(used);
    return result;
}

// Copies the entries numbered 1 of another table behind those of this one, which they do not belong to yet, and numbers
// them by their new places. There is room for one more, which is written but not meant.
template <class Entry> std::uint32_t HashTable<Entry>::put(std::uint32_t at, const HashTable& other,
                                                           std::vector<std::uint32_t>& numbers) noexcept {
    for (std::uint32_t i = other.first_; i < other.used_; ++i) {
        const bool isMeant = numbers[i + 1] && other.entries_[i].key;
        entries_[at] = other.entries_[i];
        at += isMeant;
        numbers[i + 1] = isMeant ? at : 0;
    }
    return at;
}

template <class Entry> void HashTable<Entry>::adoptUpTo(std::uint32_t used) noexcept {
    for (; used_ < used; ++used_, ++count_)
        retain(entries_[used_]);
}

template bool HashTable<SetEntry>::areAllIn(const HashTable& other) const;
template bool HashTable<SetEntry>::areAnyIn(const HashTable& other) const;
template void HashTable<SetEntry>::removeWhere(const HashTable& other, bool isIn);
template void HashTable<SetEntry>::unite(const HashTable& other);
template HashTable<SetEntry> HashTable<SetEntry>::symmetricDifference(const HashTable& a, const HashTable& b);

}  // namespace tovi::detail
