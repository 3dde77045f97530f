#include <ToviFoundationKit/Runtime/UnitSearch_p.h>

#include <array>
#include <bit>
#include <cstdint>

#include <ToviFoundationKit/Runtime/SteadyMatcher_p.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>
#include <ToviFoundationKit/Runtime/UnitVector_p.h>

namespace tovi::detail {

namespace {

constexpr auto npos = std::u16string_view::npos;

/// Looks for the units of a set, eight units of text at a time.
template <std::size_t n> class Matcher {
public:
    explicit Matcher(const UnitSet& set) noexcept {
        for (std::size_t i = 0; i < n; ++i)
            wanted_[i] = repeated(set.at(i));
    }
    /// All bits of each unit that is wanted.
    EightUnits matches(const char16_t* at) const noexcept {
        const auto units = loaded<EightUnits>(at);
        EightUnits result = unitsWhere(units == wanted_[0]);
        for (std::size_t i = 1; i < n; ++i)
            result |= unitsWhere(units == wanted_[i]);
        return result;
    }

private:
    EightUnits wanted_[n];
};
template <> class Matcher<0> {
public:
    explicit Matcher(const UnitSet&) noexcept {}
    EightUnits matches(const char16_t*) const noexcept { return repeated(0xFFFF); }
};

template <std::size_t n, std::size_t m> std::size_t findInBulk(std::u16string_view text, std::size_t from,
                                                               const UnitSet& units, const UnitSet& others,
                                                               std::size_t distance) noexcept {
    const Matcher<n> first(units);
    const Matcher<m> second(others);
    const auto matches = [&](const char16_t* at) { return first.matches(at) & second.matches(at + distance); };
    const std::size_t reach = 16 + (m ? distance : 0);
    while (text.size() - from >= reach) {
        const char16_t* at = text.data() + from;
        const EightUnits low = matches(at), high = matches(at + 8);
        if (any(low | high))
            return from + (any(low) ? indexOfFirst(low) : 8 + indexOfFirst(high));
        from += 16;
        // What is not near may be far.
        for (; text.size() - from >= reach + 16; from += 32) {
            at = text.data() + from;
            if (any((matches(at) | matches(at + 8)) | (matches(at + 16) | matches(at + 24))))
                break;
        }
    }
    const std::size_t last = m ? distance : 0;
    for (; from + last < text.size(); ++from)
        if (units.contains(text[from]) && (!m || others.contains(text[from + distance])))
            return from;
    return npos;
}

template <std::size_t n> std::size_t findWithOthers(std::u16string_view text, std::size_t from, const UnitSet& units,
                                                    const UnitSet& others, std::size_t distance) noexcept {
    switch (std::bit_ceil(others.size())) {
        case 1:
            return others.size() ? findInBulk<n, 1>(text, from, units, others, distance)
                                 : findInBulk<n, 0>(text, from, units, others, 0);
        case 2:
            return findInBulk<n, 2>(text, from, units, others, distance);
        case 4:
            return findInBulk<n, 4>(text, from, units, others, distance);
        default:
            return findInBulk<n, 8>(text, from, units, others, distance);
    }
}

/// How many units are equal from the start of both; they have the same length.
std::size_t equalLength(const char16_t* a, const char16_t* b, std::size_t length) noexcept {
    std::size_t i = 0;
    for (; length - i >= 4; i += 4) {
        const std::uint64_t difference = wordAt(a + i) ^ wordAt(b + i);
        if (difference)
            return i + unitsBefore(difference);
    }
    while (i < length && a[i] == b[i])
        ++i;
    return i;
}

/// The search that never looks at a unit of the text twice, in either direction: answers how many units lie before the
/// match.
template <class Iterator>
std::size_t findWithoutRetreat(Iterator text, std::size_t length, Iterator searched, std::size_t count) {
    const SteadyMatcher matcher(searched, count);
    for (std::size_t i = 0, matched = 0; i < length; ++i) {
        matched = matcher.next(matched, text[static_cast<std::ptrdiff_t>(i)]);
        if (matched == count)
            return i + 1 - count;
    }
    return npos;
}

/// Comparisons that fail late are paid for by the units passed; when they cost more, the text is a hard one.
constexpr std::size_t slack = 256;

}  // namespace

std::size_t findUnits(std::u16string_view text, std::size_t from, const UnitSet& units, const UnitSet& others,
                      std::size_t distance) noexcept {
    if (from >= text.size() || !units.size())
        return npos;
    if (others.size() && text.size() - from <= distance)
        return npos;
    switch (std::bit_ceil(units.size())) {
        case 1:
            return findWithOthers<1>(text, from, units, others, distance);
        case 2:
            return findWithOthers<2>(text, from, units, others, distance);
        case 4:
            return findWithOthers<4>(text, from, units, others, distance);
        default:
            return findWithOthers<8>(text, from, units, others, distance);
    }
}

namespace {

/// Whether one of the 32 units is what `matches` answers all bits for.
template <class Matches> bool anyOf32(const char16_t* at, Matches matches) noexcept {
    const auto inEight = [=](std::size_t i) { return matches(loaded<EightUnits>(at + 8 * i)); };
    return any(inEight(0) | inEight(1) | inEight(2) | inEight(3));
}

}  // namespace

bool allBelow(std::u16string_view text, char16_t limit) noexcept {
    const EightUnits limits = repeated(limit);
    const auto isBeyond = [limits](EightUnits units) { return unitsWhere(units >= limits); };
    std::size_t i = 0;
    for (; text.size() - i >= 32; i += 32)
        if (anyOf32(text.data() + i, isBeyond))
            return false;
    for (; text.size() - i >= 8; i += 8)
        if (any(isBeyond(loaded<EightUnits>(text.data() + i))))
            return false;
    return std::all_of(text.begin() + std::ptrdiff_t(i), text.end(), [limit](char16_t unit) { return unit < limit; });
}

std::size_t findLoneSurrogate(std::u16string_view text) noexcept {
    const EightUnits mask = repeated(0xF800), lowest = repeated(0xD800);
    const auto isHalf = [mask, lowest](EightUnits units) { return unitsWhere((units & mask) == lowest); };
    for (std::size_t i = 0; i < text.size();) {
        if (text.size() - i >= 32 && !anyOf32(text.data() + i, isHalf)) {
            i += 32;
            continue;
        }
        for (const std::size_t end = std::min(i + 32, text.size()); i < end; ++i) {
            if (!isSurrogate(text[i]))
                continue;
            if (!isLead(text[i]) || i + 1 == text.size() || !isTrail(text[i + 1]))
                return i;
            ++i;
        }
    }
    return text.size();
}

std::size_t findLiterally(std::u16string_view text, std::u16string_view searched) {
    const std::size_t count = searched.size();
    if (count > text.size())
        return npos;
    if (count == 1)
        return findUnits(text, 0, UnitSet(searched[0]));
    const UnitSet first(searched.front()), last(searched.back());
    std::size_t spent = 0;
    for (std::size_t i = 0;; ++i) {
        i = findUnits(text, i, first, last, count - 1);
        if (i == npos)
            return npos;
        const std::size_t equal = equalLength(text.data() + i, searched.data(), count);
        if (equal == count)
            return i;
        spent += equal;
        if (spent > 4 * i + slack) {
            const std::size_t found =
                findWithoutRetreat(text.begin() + std::ptrdiff_t(i), text.size() - i, searched.begin(), count);
            return found == npos ? npos : i + found;
        }
    }
}

std::size_t findAllLiterally(std::u16string_view text, std::size_t from, std::u16string_view searched,
                             std::span<std::size_t> places) {
    const std::size_t last = searched.size() - 1;
    const Matcher<1> firstUnit{UnitSet(searched.front())}, lastUnit{UnitSet(searched.back())};
    std::size_t found = 0, next = from, at = from, spent = 0;
    for (; text.size() >= at + 8 + last && spent <= 4 * (at - from) + slack; at += 8) {
        const auto candidates =
            reinterpret_cast<TwoWords>(firstUnit.matches(text.data() + at) & lastUnit.matches(text.data() + at + last));
        for (std::size_t half = 0; half < 2; ++half) {
            for (std::uint64_t word = candidates[half]; word;) {
                const std::size_t unit = unitsBefore(word), place = at + 4 * half + unit;
                word &= ~(std::uint64_t(0xFFFF) << 16 * (std::endian::native == std::endian::little ? unit : 3 - unit));
                if (place < next)
                    continue;
                const std::size_t equal = equalLength(text.data() + place, searched.data(), searched.size());
                if (equal < searched.size()) {
                    spent += equal;
                    continue;
                }
                places[found++] = place;
                next = place + searched.size();
                if (found == places.size())
                    return found;
            }
        }
    }
    for (next = std::max(next, at); found < places.size() && next <= text.size(); next += searched.size()) {
        const std::size_t place = findLiterally(text.substr(next), searched);
        if (place == npos)
            break;
        next += place;
        places[found++] = next;
    }
    return found;
}

std::size_t findLastLiterally(std::u16string_view text, std::u16string_view searched) {
    const std::size_t count = searched.size();
    if (count > text.size())
        return npos;
    std::size_t spent = 0;
    for (std::size_t i = text.size() - count;; --i) {
        if (text[i] == searched.front()) {
            const std::size_t equal = equalLength(text.data() + i, searched.data(), count);
            if (equal == count)
                return i;
            spent += equal;
        }
        if (i == 0)
            return npos;
        if (spent > 4 * (text.size() - count - i) + slack)
            break;
    }
    const std::size_t found = findWithoutRetreat(text.rbegin(), text.size(), searched.rbegin(), count);
    return found == npos ? npos : text.size() - found - count;
}

}  // namespace tovi::detail
