#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include <unicode/ustring.h>

#include <ToviFoundationKit/Foundation/TextSearch_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>
#include <ToviFoundationKit/Runtime/UnitSearch_p.h>

namespace tovi {

namespace {

/// Below U+0300 nothing combines, and no two texts are canonically equivalent.
bool isSimple(std::u16string_view text) { return detail::allBelow(text, 0x300); }

}  // namespace

bool NSString::hasPrefix(const NSString& prefix) const {
    const std::u16string_view start = view().substr(0, prefix.length() + 1);
    if (isSimple(start) && isSimple(prefix))
        return start.starts_with(prefix);
    return prefix.length() == 0 || rangeOfString_options(prefix, NSAnchoredSearch).wasFound();
}

bool NSString::hasSuffix(const NSString& suffix) const {
    const std::u16string_view end = view().substr(length() - std::min(length(), suffix.length()));
    if (isSimple(end) && isSimple(suffix))
        return detail::sameUnits(end, suffix);
    return suffix.length() == 0 || rangeOfString_options(suffix, NSAnchoredSearch | NSBackwardsSearch).wasFound();
}

NSRange NSString::rangeOfString(const NSString& searched) const {
    return rangeOfString_options(searched, NSStringCompareOptions{});
}

NSRange NSString::rangeOfString_options(const NSString& searched, NSStringCompareOptions options) const {
    return detail::TextSearch(searched, options).find(view(), {0, length()});
}

NSRange NSString::rangeOfString_options_range(const NSString& searched, NSStringCompareOptions options,
                                              NSRange range) const {
    checkRange(range, "rangeOfString:options:range:");
    return detail::TextSearch(searched, options).find(view(), range);
}

namespace {

/// Copies a few units without asking a function of the library to.
void copyFew(char16_t* to, const char16_t* from, std::size_t count) {
    const auto copyEnds = [=](auto size) {
        std::memcpy(to, from, 2 * size);
        std::memcpy(to + count - size, from + count - size, 2 * size);
    };
    if (count > 16)
        std::copy_n(from, count, to);
    else if (count >= 8)
        copyEnds(std::integral_constant<std::size_t, 8>());
    else if (count >= 4)
        copyEnds(std::integral_constant<std::size_t, 4>());
    else if (count >= 2)
        copyEnds(std::integral_constant<std::size_t, 2>());
    else if (count)
        *to = *from;
}

/// Appends the text with every place of `searched` in the range replaced. Answers how many there are; when there is
/// none, nothing is appended.
NSUInteger appendReplaced(StringBuilder& out, std::u16string_view text, NSRange range, std::u16string_view searched,
                          std::u16string_view replacement) {
    const std::u16string_view searchable = text.substr(0, range.end());
    std::size_t places[256];
    std::size_t found = 0, copied = 0;
    NSUInteger count = 0;
    do {
        found = detail::findAllLiterally(searchable, std::max<std::size_t>(copied, range.location), searched, places);
        for (std::size_t i = 0; i < found; ++i) {
            const std::size_t run = places[i] - copied;
            char16_t* const to = out.extend(run + replacement.size());
            copyFew(to, text.data() + copied, run);
            copyFew(to + run, replacement.data(), replacement.size());
            copied = places[i] + searched.size();
        }
        count += found;
    } while (found == std::size(places));
    if (count)
        out.append(text.substr(copied));
    return count;
}

}  // namespace

NSUInteger NSMutableString::replaceOccurrencesOfString_withString_options_range(const NSString& searched,
                                                                                const NSString& replacement,
                                                                                NSStringCompareOptions options,
                                                                                NSRange range) {
    checkRange(range, "replaceOccurrencesOfString:withString:options:range:");
    StringBuilder result;
    if (options == NSLiteralSearch) {
        const NSUInteger replaced = searched.length() ? appendReplaced(result, *this, range, searched, replacement) : 0;
        if (replaced)
            setString(result.string());
        return replaced;
    }
    const bool backwards = options & NSBackwardsSearch;
    detail::TextSearch search(searched, options);
    std::vector<NSRange> matches;
    NSUInteger copied = 0, count = 0;
    const auto replace = [&](NSRange match) {
        result.append(view().substr(copied, match.location - copied)).append(replacement);
        copied = match.end();
    };
    for (NSRange match; (match = search.find(view(), range)).wasFound();) {
        ++count;
        if (backwards)
            matches.push_back(match);
        else
            replace(match);
        if (options & NSAnchoredSearch)
            break;
        range = backwards ? NSRange{range.location, match.location - range.location}
                          : NSRange{match.end(), range.end() - match.end()};
    }
    if (!count)
        return 0;
    std::for_each(matches.rbegin(), matches.rend(), replace);
    setString(result.append(view().substr(copied)).string());
    return count;
}

// Order.

namespace {

/// How many units are the same in front, where `same` tells.
template <class Same> std::size_t commonLength(std::u16string_view a, std::u16string_view b, Same same) {
    const std::size_t shorter = std::min(a.size(), b.size());
    return static_cast<std::size_t>(
        std::mismatch(a.begin(), a.begin() + std::ptrdiff_t(shorter), b.begin(), same).first - a.begin());
}

NSComparisonResult order(int comparison) {
    return comparison < 0 ? NSOrderedAscending : comparison > 0 ? NSOrderedDescending : NSOrderedSame;
}

char16_t foldedASCII(char16_t unit) { return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit; }

/// The order of the texts, the first `common` units being the same.
NSComparisonResult orderFrom(std::size_t common, std::u16string_view a, std::u16string_view b, bool caseless) {
    const auto unitAt = [common, caseless](std::u16string_view text) {
        return common == text.size() ? -1 : caseless ? foldedASCII(text[common]) : text[common];
    };
    // Nothing below U+0080 has a decomposition, or combines with what is before it.
    if (unitAt(a) < 0x80 && unitAt(b) < 0x80)
        return order(unitAt(a) - unitAt(b));
    const auto& table =
        detail::KeyTable::of(caseless ? detail::Sameness::CanonicalCaseless : detail::Sameness::Canonical);
    const detail::CharacterReader readerA(a, table), readerB(b, table);
    while (!readerA.isBoundary(common) || !readerB.isBoundary(common))
        --common;
    return detail::compareKeys(a.substr(common), b.substr(common), table);
}

}  // namespace

NSComparisonResult NSString::compare(const NSString& other) const {
    return orderFrom(commonLength(view(), other.view(), std::equal_to<>()), *this, other, false);
}

NSComparisonResult NSString::compare_options(const NSString& other, NSStringCompareOptions options) const {
    const bool caseless = options & NSCaseInsensitiveSearch;
    if (options & NSDiacriticInsensitiveSearch)
        return detail::compareKeys(*this, other, detail::KeyTable::of(*detail::samenessFor(options)));
    if (options & NSLiteralSearch)
        return caseless ? detail::compareKeys(*this, other, detail::KeyTable::of(detail::Sameness::LiteralCaseless))
                        : order(view().compare(other.view()));
    return caseless ? caseInsensitiveCompare(other) : compare(other);
}

NSComparisonResult NSString::caseInsensitiveCompare(const NSString& other) const {
    const auto same = [](char16_t a, char16_t b) { return a == b || (a < 0x80 && foldedASCII(a) == foldedASCII(b)); };
    return orderFrom(commonLength(view(), other.view(), same), *this, other, true);
}

// Case.

namespace {

using Mapping = int32_t (*)(UChar*, int32_t, const UChar*, int32_t, const char*, UErrorCode*);

/// Where to divide a text that is too long for ICU: after a space, since no mapping looks beyond one.
std::size_t pieceLength(std::u16string_view text) {
    constexpr std::size_t longest = 1 << 28;
    if (text.size() <= longest)
        return text.size();
    const std::size_t space = text.rfind(u' ', longest - 1);
    return space == std::u16string_view::npos ? longest : space + 1;
}

void appendMapped(StringBuilder& out, std::u16string_view piece, Mapping map) {
    const auto length = static_cast<int32_t>(piece.size());
    const NSUInteger start = out.length();
    for (int32_t capacity = length;;) {
        UErrorCode error = U_ZERO_ERROR;
        char16_t* const target = out.extend(static_cast<NSUInteger>(capacity));
        const int32_t needed = map(target, capacity, piece.data(), length, "", &error);
        out.truncate(start + static_cast<NSUInteger>(std::min(needed, capacity)));
        if (needed <= capacity)
            return;
        out.truncate(start);
        capacity = needed;
    }
}

template <char16_t first, char16_t last> Ref<NSString> mapped(const NSString& string, Mapping map) {
    StringBuilder out;
    std::u16string_view rest = string.view();
    // The ASCII letters are 32 apart.
    const auto ascii = static_cast<std::size_t>(
        std::find_if(rest.begin(), rest.end(), [](char16_t unit) { return unit >= 0x80; }) - rest.begin());
    if (ascii == rest.size()) {
        std::transform(rest.begin(), rest.end(), out.extend(rest.size()), [](char16_t unit) {
            return unit >= first && unit <= last ? static_cast<char16_t>(unit ^ 32) : unit;
        });
        return out.string();
    }
    while (!rest.empty()) {
        const std::size_t length = pieceLength(rest);
        appendMapped(out, rest.substr(0, length), map);
        rest.remove_prefix(length);
    }
    return out.string();
}

}  // namespace

Ref<NSString> NSString::uppercaseString() const { return mapped<u'a', u'z'>(*this, u_strToUpper); }
Ref<NSString> NSString::lowercaseString() const { return mapped<u'A', u'Z'>(*this, u_strToLower); }

Ref<NSString> NSString::capitalizedString() const {
    StringBuilder out;
    for (std::u16string_view rest = *this; !rest.empty();) {
        const std::size_t length = pieceLength(rest);
        appendMapped(out, rest.substr(0, length),
                     [](UChar* to, int32_t capacity, const UChar* from, int32_t count, const char* locale,
                        UErrorCode* error) { return u_strToTitle(to, capacity, from, count, nullptr, locale, error); });
        rest.remove_prefix(length);
    }
    return out.string();
}

namespace {

const Additions<NSString> additions{
    instance<&NSString::hasPrefix>("hasPrefix:"),
    instance<&NSString::hasSuffix>("hasSuffix:"),
    instance<&NSString::rangeOfString>("rangeOfString:"),
    instance<&NSString::rangeOfString_options>("rangeOfString:options:"),
    instance<&NSString::rangeOfString_options_range>("rangeOfString:options:range:"),
    instance<&NSString::compare>("compare:"),
    instance<&NSString::compare_options>("compare:options:"),
    instance<&NSString::caseInsensitiveCompare>("caseInsensitiveCompare:"),
    instance<&NSString::uppercaseString>("uppercaseString"),
    instance<&NSString::lowercaseString>("lowercaseString"),
    instance<&NSString::capitalizedString>("capitalizedString"),
};

const Additions<NSMutableString> mutableAdditions{
    instance<&NSMutableString::replaceOccurrencesOfString_withString_options_range>(
        "replaceOccurrencesOfString:withString:options:range:"),
};

}  // namespace

}  // namespace tovi
