#pragma once

#include <atomic>
#include <string>
#include <string_view>
#include <vector>

namespace tovi::detail {

/// What makes two texts the same.
enum class Sameness : unsigned char {
    Canonical,          ///< canonically equivalent (UAX #15)
    CanonicalCaseless,  ///< the same after full case folding, too
    LiteralCaseless,    ///< code point by code point, after full case folding
    Markless,           ///< canonically equivalent without their nonspacing marks
    MarklessCaseless    ///< the same after full case folding, too
};

/// The keys of code points: two texts are the same when their keys are. Comes from ICU; the parts that have been in use
/// are kept as tables, so that text costs about a nanosecond a unit.
class KeyTable {
public:
    /// The key of a code point that begins a character.
    struct Entry {
        char32_t first;
        char16_t second = 0, third = 0;  ///< 0: the key ends before
    };
    /// In `first`: combines with what is before it. `second` is its key when that is one unit, else 0.
    static constexpr char32_t extendsCharacter = 0xFFFFFFFF;
    static constexpr char32_t tooLong = 0xFFFFFFFE;  ///< in `first`: the key does not fit in

    static const KeyTable& of(Sameness sameness);

    Entry entry(char32_t codePoint) const {
        const Block* const block = blocks_[codePoint >> 8].load(std::memory_order_acquire);
        return (block ? *block : makeBlock(codePoint >> 8)).entries[codePoint & 0xFF];
    }
    bool beginsCharacter(char32_t codePoint) const { return entry(codePoint).first != extendsCharacter; }

    /// The whole key of one code point.
    std::u32string key(char32_t codePoint) const;
    /// The key of a whole character: of a base and what combines with it. Empty for marks alone where these do not
    /// count.
    std::u32string key(std::u16string_view character) const;
    /// The code points whose keys begin so.
    std::vector<char32_t> codePointsWithKey(char32_t begin) const;

    constexpr explicit KeyTable(Sameness sameness) noexcept : sameness_(sameness) {}

private:
    struct Block {
        Entry entries[256];
    };
    struct Index;

    const Block& makeBlock(char32_t number) const;
    const Index& index() const;
    Entry makeEntry(char32_t codePoint) const;

    Sameness sameness_;
    // Made when first asked for, and kept until the process ends.
    mutable std::atomic<const Block*> blocks_[0x1100] = {};
    mutable std::atomic<const Index*> index_ = nullptr;
};

/// Reads a text character by character: a base and what combines with it.
class CharacterReader {
public:
    CharacterReader(std::u16string_view text, const KeyTable& table) noexcept : text_(text), table_(table) {}

    /// True when no character reaches across the position.
    bool isBoundary(std::size_t position) const;

    /// The key of the character that begins at the position, which is moved to its end. Valid until the next call.
    std::u32string_view next(std::size_t& position) {
        const std::size_t start = position++;
        if (const auto entry = entryAt(start); entry.first < KeyTable::tooLong && isBoundary(position)) [[likely]]
            return shortKey(entry);
        return longKey(start, position);
    }
    /// The key of the character that ends at the position, which is moved to its start.
    std::u32string_view previous(std::size_t& position);

    /// Moves past characters, some of them at least, whose keys do not begin so.
    void skip(std::size_t& position, std::size_t end, char32_t begin) const {
        for (; position < end; ++position)
            if (const auto entry = entryAt(position);
                entry.first == begin || entry.first >= KeyTable::tooLong || !isBoundary(position + 1))
                return;
    }
    /// The same for characters before the position, and the ends of their keys.
    void skipBackwards(std::size_t& position, std::size_t start, char32_t end) const {
        for (; position > start; --position)
            if (const auto entry = entryAt(position - 1); entry.first >= KeyTable::tooLong || lastOf(entry) == end)
                return;
    }

private:
    std::u32string_view shortKey(const KeyTable::Entry& entry) noexcept {
        short_[0] = entry.first;
        short_[1] = entry.second;
        short_[2] = entry.third;
        return {short_, entry.third ? 3U : entry.second ? 2U : 1U};
    }
    static char32_t lastOf(const KeyTable::Entry& entry) noexcept {
        return entry.third ? entry.third : entry.second ? entry.second : entry.first;
    }
    /// The entry of a unit, if that is a code point for sure.
    KeyTable::Entry entryAt(std::size_t position) const {
        const char16_t unit = text_[position];
        return unit < 0xD800 ? table_.entry(unit) : KeyTable::Entry{KeyTable::tooLong};
    }
    std::u32string_view longKey(std::size_t start, std::size_t& position);
    char32_t codePointAt(std::size_t position) const noexcept;

    std::u16string_view text_;
    const KeyTable& table_;
    char32_t short_[3];
    std::u32string long_;
};

inline bool CharacterReader::isBoundary(std::size_t position) const {
    if (position >= text_.size() || text_[position] < 0x300 || position == 0)
        return true;
    const char32_t codePoint = codePointAt(position);
    return codePoint != KeyTable::extendsCharacter && table_.beginsCharacter(codePoint);
}

}  // namespace tovi::detail
