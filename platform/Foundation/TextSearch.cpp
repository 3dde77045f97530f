#include <ToviFoundationKit/Foundation/TextSearch_p.h>

#include <algorithm>

#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi::detail {

namespace {

constexpr auto npos = std::u16string_view::npos;
/// What is longer is searched with a filter.
constexpr std::size_t shortLength = 512;
/// Below it nothing combines, and no two texts are canonically equivalent.
constexpr char16_t firstCombining = 0x300;

NSRange rangeOf(std::size_t start, std::size_t end) { return {start, end - start}; }

char16_t firstUnit(char32_t c) { return c > 0xFFFF ? leadOf(c) : static_cast<char16_t>(c); }

const KeyTable* tableFor(NSStringCompareOptions options) {
    const std::optional<Sameness> sameness = samenessFor(options);
    return sameness ? &KeyTable::of(*sameness) : nullptr;
}

}  // namespace

std::optional<Sameness> samenessFor(NSStringCompareOptions options) noexcept {
    const bool caseless = options & NSCaseInsensitiveSearch;
    if (options & NSDiacriticInsensitiveSearch)
        return caseless ? Sameness::MarklessCaseless : Sameness::Markless;
    if (options & NSLiteralSearch)
        return caseless ? std::optional(Sameness::LiteralCaseless) : std::nullopt;
    return caseless ? Sameness::CanonicalCaseless : Sameness::Canonical;
}

TextSearch::TextSearch(std::u16string_view searched, NSStringCompareOptions options)
    : searched_(searched), options_(options), table_(tableFor(options)) {}

NSRange TextSearch::find(std::u16string_view text, NSRange range) {
    if (searched_.empty() || range.length == 0)
        return NSRangeNotFound;
    const std::u16string_view part = text.substr(range.location, range.length);
    const auto inText = [range](NSRange found) {
        return found.wasFound() ? NSRange{range.location + found.location, found.length} : found;
    };
    if (!table_)
        return inText(findLiterally(part, searched_));
    if (part.size() <= shortLength && allBelow(text.substr(range.location, range.length + 1), firstCombining))
        if (const std::optional<NSRange> found = findInSimple(part))
            return inText(*found);
    if (key_.empty())
        prepare();
    if (key_.empty())  // marks alone, which do not count
        return NSRangeNotFound;
    CharacterReader reader(text, *table_);
    if (has(NSAnchoredSearch))
        return findAnchored(reader, range);
    return has(NSBackwardsSearch) ? findBackwards(reader, range) : findForwards(text, reader, range);
}

NSRange TextSearch::findLiterally(std::u16string_view text, std::u16string_view searched) const {
    std::size_t found = npos;
    if (!has(NSAnchoredSearch))
        found = has(NSBackwardsSearch) ? findLastLiterally(text, searched) : detail::findLiterally(text, searched);
    else if (has(NSBackwardsSearch))
        found = text.ends_with(searched) ? text.size() - searched.size() : npos;
    else if (text.starts_with(searched))
        found = 0;
    return found == npos ? NSRangeNotFound : NSRange{found, searched.size()};
}

/// Searches a short text in which nothing combines, folded as a whole; nothing where that is not enough.
std::optional<NSRange> TextSearch::findInSimple(std::u16string_view text) const {
    if (!allBelow(searched_, firstCombining))
        return std::nullopt;
    const bool markless = has(NSDiacriticInsensitiveSearch);
    if (!has(NSCaseInsensitiveSearch) && !markless)
        return findLiterally(text, searched_);
    if (searched_.size() > shortLength)
        return std::nullopt;
    const KeyTable& folding = markless ? *table_ : KeyTable::of(Sameness::LiteralCaseless);
    char16_t units[2 * shortLength];
    const auto foldOneToOne = [&folding](std::u16string_view from, char16_t* to) {
        return std::all_of(from.begin(), from.end(), [&](char16_t unit) {
            const KeyTable::Entry entry = folding.entry(unit);
            *to++ = static_cast<char16_t>(entry.first);
            return entry.second == 0;
        });
    };
    if (!foldOneToOne(text, units) || !foldOneToOne(searched_, units + shortLength))
        return std::nullopt;
    return findLiterally({units, text.size()}, {units + shortLength, searched_.size()});
}

void TextSearch::prepare() {
    CharacterReader reader(searched_, *table_);
    for (std::size_t position = 0; position < searched_.size();)
        key_ += reader.next(position);
    if (has(NSBackwardsSearch))
        std::reverse(key_.begin(), key_.end());
    if (has(NSAnchoredSearch))
        return;
    places_.resize(key_.size() + 1);
    for (std::size_t i = 1, matched = 0; i < key_.size(); ++i) {
        while (matched && key_[i] != key_[matched])
            matched = places_[matched].retry;
        matched += key_[i] == key_[matched];
        places_[i + 1].retry = matched;
    }
}

NSRange TextSearch::findAnchored(CharacterReader& reader, NSRange range) const {
    const bool backwards = has(NSBackwardsSearch);
    const std::size_t anchor = backwards ? range.end() : range.location;
    if (!reader.isBoundary(anchor))
        return NSRangeNotFound;
    std::size_t position = anchor;
    for (std::size_t matched = 0; matched < key_.size();) {
        if (position == (backwards ? range.location : range.end()))
            return NSRangeNotFound;
        const std::u32string_view key = backwards ? reader.previous(position) : reader.next(position);
        const std::u32string_view expected = std::u32string_view(key_).substr(matched, key.size());
        const bool same =
            backwards ? std::equal(key.rbegin(), key.rend(), expected.begin(), expected.end()) : key == expected;
        if (!same || position < range.location || position > range.end())
            return NSRangeNotFound;
        matched += key.size();
    }
    return backwards ? rangeOf(position, anchor) : rangeOf(anchor, position);
}

/// Takes the key of the next character, read from the edge on (Knuth, Morris and Pratt); answers the edge at which a
/// match of whole characters began that ends here.
template <class Iterator> std::size_t TextSearch::match(Iterator from, Iterator to, std::size_t edge) {
    const std::size_t length = key_.size();
    for (; from != to; ++from, edge = npos) {
        while (matched_ && (matched_ == length || key_[matched_] != *from))
            matched_ = places_[matched_].retry;
        matched_ += key_[matched_] == *from;
        places_[oldest_].edge = edge;
        oldest_ = oldest_ + 1 == length ? 0 : oldest_ + 1;
    }
    return matched_ == length ? places_[oldest_].edge : npos;
}

NSRange TextSearch::findForwards(std::u16string_view text, CharacterReader& reader, NSRange range) {
    const std::size_t end = range.end();
    text = text.substr(0, end);
    std::size_t position = range.location;
    while (!reader.isBoundary(position))
        ++position;
    for (matched_ = 0; position < end;) {
        if (matched_ == 0) {
            if (!filterPrepared_ && range.length > shortLength)
                prepareFilter();
            if (first_.size())
                position = std::min(findUnits(text, position, first_, second_), end);
            else
                reader.skip(position, end, key_[0]);
            if (position == end)
                break;
            if (!reader.isBoundary(position)) {
                ++position;
                continue;
            }
        }
        const std::size_t start = position;
        const std::u32string_view key = reader.next(position);
        if (position > end)
            break;
        const std::size_t found = match(key.begin(), key.end(), start);
        if (found != npos)
            return rangeOf(found, position);
    }
    return NSRangeNotFound;
}

NSRange TextSearch::findBackwards(CharacterReader& reader, NSRange range) {
    std::size_t position = range.end();
    while (!reader.isBoundary(position))
        --position;
    for (matched_ = 0; position > range.location;) {
        if (matched_ == 0)
            reader.skipBackwards(position, range.location, key_[0]);
        if (position == range.location)
            break;
        const std::size_t end = position;
        const std::u32string_view key = reader.previous(position);
        if (position < range.location)
            break;
        const std::size_t found = match(key.rbegin(), key.rend(), end);
        if (found != npos)
            return rangeOf(position, found);
    }
    return NSRangeNotFound;
}

// The filter lets through every place at which a match may be, and few others.

/// The part of the key that one code point can account for: three characters at the most.
std::u32string_view TextSearch::head(std::size_t position) const {
    std::size_t end = position + 1;
    for (int characters = 1; end < key_.size(); ++end)
        if (table_->beginsCharacter(key_[end]) && ++characters > 3)
            break;
    return std::u32string_view(key_).substr(position, end - position);
}

/// Calls `use` with each code point that may be met first where the key goes on from the position, and with its key.
template <class Use> bool TextSearch::forEachBeginning(std::size_t position, Use use) const {
    const std::u32string_view part = head(position);
    const auto offer = [&](char32_t codePoint) {
        const KeyTable::Entry entry = table_->entry(codePoint);
        const std::u32string key = entry.first < KeyTable::tooLong && !entry.third && !entry.second
                                       ? std::u32string(1, entry.first)
                                       : table_->key(codePoint);
        const bool possible = std::all_of(key.begin(), key.end(), [&](char32_t c) { return part.find(c) != npos; });
        return !possible || use(codePoint, key);
    };
    for (const char32_t codePoint : table_->codePointsWithKey(part[0]))
        if (!offer(codePoint))
            return false;
    if (part[0] < 0x1100 || part[0] > 0x1112 || part.size() < 2 || part[1] < 0x1161 || part[1] > 0x1175)
        return true;
    const char32_t syllable = 0xAC00 + ((part[0] - 0x1100) * 21 + (part[1] - 0x1161)) * 28;
    const bool closed = part.size() > 2 && part[2] >= 0x11A8 && part[2] <= 0x11C2;
    return offer(syllable) && (!closed || offer(syllable + part[2] - 0x11A7));
}

void TextSearch::prepareFilter() {
    filterPrepared_ = true;
    if (!table_->beginsCharacter(key_[0]))
        return;
    const bool few = forEachBeginning(0, [this](char32_t codePoint, const std::u32string&) {
        return !table_->beginsCharacter(codePoint) || first_.add(firstUnit(codePoint));
    });
    if (!few)
        first_ = UnitSet();
    else if (has(NSDiacriticInsensitiveSearch))
        return;  // any mark may come next
    else if (!forEachBeginning(0, [this](char32_t c, const std::u32string& key) { return addSecond(c, key); }))
        second_ = UnitSet();
}

/// Adds the units that can follow a code point at the beginning; false when these are too many.
bool TextSearch::addSecond(char32_t codePoint, const std::u32string& key) {
    if (!table_->beginsCharacter(codePoint))
        return true;
    if (codePoint > 0xFFFF)
        return second_.add(trailOf(codePoint));
    const auto add = [this](char32_t c, const std::u32string&) { return second_.add(firstUnit(c)); };
    const bool wholly = key_.starts_with(key);
    if (wholly && key.size() == key_.size())
        return false;
    if (wholly && table_->beginsCharacter(key_[key.size()]))
        return forEachBeginning(key.size(), add);
    // More of the same character follows, in any order.
    for (const char32_t part : head(0))
        for (const char32_t c : table_->codePointsWithKey(part))
            if (!table_->beginsCharacter(c) && !add(c, {}))
                return false;
    return true;
}

NSComparisonResult compareKeys(std::u16string_view a, std::u16string_view b, const KeyTable& table) {
    CharacterReader readers[] = {CharacterReader(a, table), CharacterReader(b, table)};
    const std::u16string_view texts[] = {a, b};
    std::size_t positions[] = {0, 0};
    std::u32string_view keys[2];
    for (;;) {
        for (int i = 0; i < 2; ++i)
            while (keys[i].empty() && positions[i] < texts[i].size())
                keys[i] = readers[i].next(positions[i]);
        if (keys[0].empty() || keys[1].empty())
            return keys[0].empty() ? keys[1].empty() ? NSOrderedSame : NSOrderedAscending : NSOrderedDescending;
        if (keys[0][0] != keys[1][0])
            return keys[0][0] < keys[1][0] ? NSOrderedAscending : NSOrderedDescending;
        keys[0].remove_prefix(1);
        keys[1].remove_prefix(1);
    }
}

}  // namespace tovi::detail
