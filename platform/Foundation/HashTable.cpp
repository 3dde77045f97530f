#include <ToviFoundationKit/Foundation/HashTable.h>

#include <algorithm>
#include <memory>
#include <utility>

#include <ToviFoundationKit/Foundation/Storage_p.h>

namespace tovi::detail {

namespace {
constexpr std::size_t largestTable = 0xBFFFFFFF;  // three quarters of 2^32 homes in the index
}

template <> void HashTable<SetEntry>::retain(const SetEntry& entry) noexcept { retained(entry.key); }
template <> void HashTable<SetEntry>::release(const SetEntry& entry) noexcept { released(entry.key); }

template <> void HashTable<DictionaryEntry>::retain(const DictionaryEntry& entry) noexcept {
    retained(entry.key);
    retained(entry.value);
}
template <> void HashTable<DictionaryEntry>::release(const DictionaryEntry& entry) noexcept {
    released(entry.key);
    released(entry.value);
}

template <class Entry> HashTable<Entry>::HashTable(const HashTable& other) {
    if (!other.count_)
        return;
    HashTable copy;
    copy.entries_ = reallocated<Entry>(nullptr, other.used_);
    copy.capacity_ = other.used_;
    copy.index_ = other.index_;
    copy.first_ = other.first_;
    copy.used_ = other.first_;
    for (; copy.used_ < other.used_; ++copy.used_)
        retain(copy.entries_[copy.used_] = other.entries_[copy.used_]);
    copy.count_ = other.count_;
    swap(copy);
}

template <class Entry> HashTable<Entry>::~HashTable() {
    for (const Entry& entry : *this)
        release(entry);
    std::free(entries_);
}

template <class Entry> void HashTable<Entry>::swap(HashTable& other) noexcept {
    index_.swap(other.index_);
    std::swap(entries_, other.entries_);
    std::swap(first_, other.first_);
    std::swap(used_, other.used_);
    std::swap(count_, other.count_);
    std::swap(capacity_, other.capacity_);
}

template <class Entry> std::uint32_t HashTable<Entry>::hashOf(const NSObject& key) {
    return static_cast<std::uint32_t>(key.hash() * 0x9E3779B97F4A7C15U >> 32);
}

template <class Entry> auto HashTable<Entry>::find(const NSObject& key, std::uint32_t hash) const -> Slot {
    return count_ ? findFrom(index_.find(hash), key, hash) : Slot();
}

template <class Entry> void HashTable<Entry>::add(Entry owned, std::uint32_t hash) {
    makeRoomForEntries(1);
    index_.reserve(count_ + std::size_t{1});
    index_.insert(index_.find(hash), HashIndex::slot(hash, used_ + std::size_t{1}));
    entries_[used_++] = owned;
    ++count_;
}

template <class Entry> Entry HashTable<Entry>::remove(Slot slot) noexcept {
    const Entry removed = std::exchange(entryAt(slot), Entry{});
    index_.remove(slot.position);
    --count_;
    while (used_ && !entries_[used_ - 1].key)
        --used_;
    first_ = std::min(first_, used_);
    while (first_ < used_ && !entries_[first_].key)
        ++first_;
    if (used_ > 2 * std::size_t{count_} + 16)
        compact();
    return removed;
}

template <class Entry> void HashTable<Entry>::makeRoomForEntries(std::size_t added) {
    const std::size_t needed = used_ + added;
    if (needed > capacity_ && !(used_ - count_ > used_ / 4 && compact() && used_ + added <= capacity_))
        growEntries(needed, std::max<std::size_t>(4, needed + needed / 2));
}

template <class Entry> void HashTable<Entry>::growEntries(std::size_t needed, std::size_t wanted) {
    if (needed > largestTable)
        NSException::raise(NSMallocException, u"*** a collection cannot have room for %lu objects", needed);
    wanted = std::min(wanted, largestTable);
    entries_ = reallocated(entries_, wanted);
    capacity_ = static_cast<std::uint32_t>(wanted);
}

template <class Entry> void HashTable<Entry>::reserve(std::size_t count) {
    if (count > capacity_)
        growEntries(count, count);
    index_.reserve(count);
}

// Closes the holes between the entries. Answers false when there is no memory to do it.
template <class Entry> bool HashTable<Entry>::compact() noexcept {
    const std::unique_ptr<std::uint32_t[]> numbers(new (std::nothrow) std::uint32_t[used_ + std::size_t{1}]);
    if (!numbers)
        return false;
    numbers[0] = 0;
    std::uint32_t kept = 0;
    for (std::uint32_t i = first_; i < used_; ++i) {
        if (entries_[i].key)
            entries_[kept++] = entries_[i];
        numbers[i + 1] = kept;
    }
    index_.renumber(numbers.get());
    first_ = 0;
    used_ = kept;
    return true;
}

template class HashTable<SetEntry>;
template class HashTable<DictionaryEntry>;

}  // namespace tovi::detail
