#include <vector>

#include <ToviFoundationKit/Foundation/HashTable.h>

// Which keys two tables share cannot be predicted, so these loops sort them without branches as far as they can.

namespace tovi::detail {

// Looks every key up in the other table, which is not empty, and calls `use` with its slot and whether it was found,
// until it answers false. Both indexes are walked from front to back; the entries, which lie anywhere, are fetched
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
            if (!use(slots[i], static_cast<bool>(other.findFrom(positions[i], key, HashIndex::hash(slots[i])))))
                return false;
        }
        return true;
    });
}

template <class Entry> bool HashTable<Entry>::areAllIn(const HashTable& other) const {
    return !count_ || (count_ <= other.count_ && lookUpIn(other, [](HashIndex::Slot, bool found) { return found; }));
}

template <class Entry> bool HashTable<Entry>::areAnyIn(const HashTable& other) const {
    if (count_ > other.count_)
        return other.areAnyIn(*this);
    return count_ && !lookUpIn(other, [](HashIndex::Slot, bool found) { return !found; });
}

template <class Entry> void HashTable<Entry>::removeWhere(const HashTable& other, bool isIn) {
    // By number: 1 for the entries that stay, later their new numbers.
    std::vector<std::uint32_t> numbers(used_ + std::size_t{1});
    std::uint32_t kept = 0;
    const auto mark = [&](HashIndex::Slot slot, bool found) {
        numbers[HashIndex::number(slot)] = found != isIn;
        kept += found != isIn;
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
    other.lookUpIn(*this, [&](HashIndex::Slot slot, bool found) {
        missing[added] = slot;
        numbers[HashIndex::number(slot)] = !found;
        added += !found;
        return true;
    });
    if (!added)
        return;
    makeRoomForEntries(added + 1);
    std::uint32_t used = used_;
    for (std::uint32_t i = other.first_; i < other.used_; ++i) {
        entries_[used] = other.entries_[i];
        used += numbers[i + 1];
        numbers[i + 1] = used;
    }
    for (std::size_t i = 0; i < added; ++i)
        missing[i] = HashIndex::slot(HashIndex::hash(missing[i]), numbers[HashIndex::number(missing[i])]);
    index_.merge(missing.data(), added);
    for (; used_ < used; ++used_)
        retain(entries_[used_]);
    count_ += static_cast<std::uint32_t>(added);
}

template bool HashTable<SetEntry>::areAllIn(const HashTable& other) const;
template bool HashTable<SetEntry>::areAnyIn(const HashTable& other) const;
template void HashTable<SetEntry>::removeWhere(const HashTable& other, bool isIn);
template void HashTable<SetEntry>::unite(const HashTable& other);

}  // namespace tovi::detail
