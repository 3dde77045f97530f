#include <ToviFoundationKit/Runtime/Selector.h>

#include <cstring>
#include <mutex>
#include <ostream>

#include <ToviFoundationKit/Runtime/PublishedMap.h>

namespace tovi {

struct SelectorTable {
    using Record = Selector::Record;
    struct Traits {
        using Key = const Record*;
        using Value = char;
        static std::size_t hash(Key record) { return SelectorTable::hash({record->name, record->length}); }
        static bool equal(Key record, std::string_view name) {
            return std::string_view(record->name, record->length) == name;
        }
    };

    static std::size_t hash(std::string_view name) { return std::hash<std::string_view>()(name); }

    static const Record* find(std::string_view name) noexcept {
        const auto* entry = known.find(name, hash(name));
        return entry ? entry->key.load(std::memory_order_relaxed) : nullptr;
    }

    static const Record* record(std::string_view name) {
        if (const Record* found = find(name))
            return found;
        const std::lock_guard lock(writing);
        if (const Record* found = find(name))
            return found;
        const Record* made = make(name);
        known.insert(made, 0);
        return made;
    }

private:
    // Constant-initialised and never destroyed: selectors are interned before and after `main` too.
    static constinit PublishedMap<Traits> known;
    static constinit std::mutex writing;

    static const Record* make(std::string_view name) {
        char* text = new char[name.size() + 1];
        std::memcpy(text, name.data(), name.size());
        text[name.size()] = 0;
        return new Record{text, static_cast<std::uint32_t>(name.size()),
                          static_cast<std::uint32_t>(std::count(name.begin(), name.end(), ':'))};
    }
};

constinit PublishedMap<SelectorTable::Traits> SelectorTable::known;
constinit std::mutex SelectorTable::writing;

Selector Selector::named(std::string_view name) { return Selector(SelectorTable::record(name)); }
Selector Selector::existing(std::string_view name) noexcept { return Selector(SelectorTable::find(name)); }

std::ostream& operator<<(std::ostream& out, Selector selector) { return out << selector.name(); }

}  // namespace tovi
