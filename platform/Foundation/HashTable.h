#pragma once

#include <vector>

#include <ToviFoundationKit/Foundation/HashIndex.h>
#include <ToviFoundationKit/Runtime/NSObject.h>

namespace tovi::detail {

struct SetEntry {
    NSObject* key;
};
struct DictionaryEntry {
    NSObject* key;
    NSObject* value;
};

/// What dictionaries and sets are made of: the entries in a row, in the order in which they were added, and an index of
/// their hashes. A removed entry leaves a hole (a null key) until the entries need room. The references of the entries
/// belong to the table.
template <class Entry> class HashTable {
public:
    /// Where the index has an entry, or nowhere; valid until the table changes.
    struct Slot {
        std::size_t position = ~std::size_t(0);
        explicit operator bool() const noexcept { return position != ~std::size_t(0); }
    };

    HashTable() noexcept = default;
    HashTable(const HashTable& other);
    HashTable(HashTable&& other) noexcept { swap(other); }
    HashTable& operator=(HashTable other) noexcept {
        swap(other);
        return *this;
    }
    ~HashTable();
    void swap(HashTable& other) noexcept;

    std::size_t count() const noexcept { return count_; }
    /// The row of entries, holes included; the first and the last one are none.
    Entry* begin() const noexcept { return entries_ + first_; }
    Entry* end() const noexcept { return entries_ + used_; }
    const HashIndex& index() const noexcept { return index_; }

    static std::uint32_t hashOf(const NSObject& key);
    Slot find(const NSObject& key, std::uint32_t hash) const;
    Slot find(const NSObject& key) const { return count_ ? find(key, hashOf(key)) : Slot(); }
    Entry& entryAt(Slot slot) const noexcept { return entries_[HashIndex::place(index_[slot.position])]; }

    /// Adds an entry whose key is not in the table yet; takes its references over unless it throws.
    void add(Entry owned, std::uint32_t hash);
    /// Takes an entry out; its references pass to the caller.
    Entry remove(Slot slot) noexcept;
    /// Room for so many entries in all.
    void reserve(std::size_t count);

    /// Set algebra: whether all keys, or any, are in the other table; removing the entries whose keys are, or are not,
    /// in it; adding its entries whose keys are not here, in their order there.
    bool areAllIn(const HashTable& other) const;
    bool areAnyIn(const HashTable& other) const;
    void removeWhere(const HashTable& other, bool isIn);
    void unite(const HashTable& other);
    /// The entries whose keys are in one of two tables only: the first one's, then the second one's.
    static HashTable symmetricDifference(const HashTable& a, const HashTable& b);

private:
    Slot findFrom(std::size_t position, const NSObject& key, std::uint32_t hash) const {
        for (; index_.holds(position, hash); ++position) {
            const NSObject* const candidate = entries_[HashIndex::place(index_[position])].key;
            if (candidate == &key || key.isEqual(candidate))
                return {position};
        }
        return {};
    }
    template <class F> bool lookUpIn(const HashTable& other, F use) const;
    std::uint32_t put(std::uint32_t at, const HashTable& other, std::vector<std::uint32_t>& numbers) noexcept;
    void adoptUpTo(std::uint32_t used) noexcept;
    void makeRoomForEntries(std::size_t added);
    void growEntries(std::size_t needed, std::size_t wanted);
    bool compact() noexcept;

    static void retain(const Entry& entry) noexcept;
    static void release(const Entry& entry) noexcept;

    Entry* entries_ = nullptr;
    HashIndex index_;
    std::uint32_t first_ = 0;  ///< the place of the first entry
    std::uint32_t used_ = 0;   ///< entries and holes
    std::uint32_t count_ = 0;
    std::uint32_t capacity_ = 0;
};

}  // namespace tovi::detail
