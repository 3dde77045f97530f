#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>

namespace tovi {

/// An insert-only hash map that is read without locks: entries are filled in first and published afterwards, by one
/// writer at a time. Tables that were outgrown or cleared stay allocated, since a reader may still be in them; there
/// are few, because a table doubles and is cleared only when operations are added to classes.
///
/// `Traits` gives Key (null-testable), Value, hash(key) and equal(stored, probe).
template <class Traits> class PublishedMap {
public:
    using Key = typename Traits::Key;
    using Value = typename Traits::Value;

    struct Entry {
        std::atomic<Key> key{};
        Value value{};
    };

    constexpr PublishedMap() noexcept = default;

    template <class Probe> const Entry* find(const Probe& probe, std::size_t hash) const noexcept {
        const Table* table = table_.load(std::memory_order_acquire);
        if (!table)
            return nullptr;
        for (std::size_t i = hash;; ++i) {
            const Entry& entry = table->at(i);
            const Key key = entry.key.load(std::memory_order_acquire);
            if (!key)
                return nullptr;
            if (Traits::equal(key, probe))
                return &entry;
        }
    }

    /// Adds a key that is not there yet. Writers take turns.
    void insert(Key key, Value value) {
        const Table* table = table_.load(std::memory_order_relaxed);
        if (!table || (count_ + 1) * 2 > table->mask + 1)
            table = grow(table);
        place(*table, key, value);
        ++count_;
    }

    void clear() noexcept {
        table_.store(nullptr, std::memory_order_release);
        count_ = 0;
    }

private:
    /// Its entries follow it in memory, one indirection less for readers.
    struct Table {
        std::size_t mask;
        const Table* retired;  ///< keeps what came before reachable

        Entry& at(std::size_t i) const noexcept {
            return reinterpret_cast<Entry*>(const_cast<Table*>(this + 1))[i & mask];
        }

        static const Table* make(std::size_t size, const Table* retired) {
            static_assert(alignof(Entry) <= alignof(Table));
            Table* table = new (::operator new(sizeof(Table) + size * sizeof(Entry))) Table{size - 1, retired};
            std::uninitialized_value_construct_n(reinterpret_cast<Entry*>(table + 1), size);
            return table;
        }
    };

    static void place(const Table& table, Key key, Value value) noexcept {
        std::size_t i = Traits::hash(key);
        while (table.at(i).key.load(std::memory_order_relaxed))
            ++i;
        Entry& entry = table.at(i);
        entry.value = value;
        entry.key.store(key, std::memory_order_release);
    }

    const Table* grow(const Table* old) {
        newest_ = Table::make(old ? (old->mask + 1) * 2 : 16, newest_);
        for (std::size_t i = 0; old && i <= old->mask; ++i)
            if (const Key key = old->at(i).key.load(std::memory_order_relaxed))
                place(*newest_, key, old->at(i).value);
        table_.store(newest_, std::memory_order_release);
        return newest_;
    }

    std::atomic<const Table*> table_{nullptr};
    const Table* newest_ = nullptr;
    std::size_t count_ = 0;
};

}  // namespace tovi
