#include <algorithm>
#include <string>

#include <unicode/ustring.h>

#include <ToviFoundationKit/Foundation/TextSearch_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

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

NSUInteger NSMutableString::replaceOccurrencesOfString_withString_options_range(const NSString& searched,
                                                                                const NSString& replacement,
                                                                                NSStringCompareOptions options,
                                                                                NSRange range) {
    checkRange(range, "replaceOccurrencesOfString:withString:options:range:");
    const bool backwards = options & NSBackwardsSearch;
    detail::TextSearch search(searched, options);
    std::vector<NSRange> matches;
    for (NSRange match; (match = search.find(view(), range)).wasFound();) {
        matches.push_back(match);
        if (options & NSAnchoredSearch)
            break;
        range = backwards ? NSRange{range.location, match.location - range.location}
                          : NSRange{match.end(), range.end() - match.end()};
    }
    if (matches.empty())
        return 0;
    if (backwards)
        std::reverse(matches.begin(), matches.end());
    StringBuilder result;
    NSUInteger copied = 0;
    for (const NSRange match : matches) {
        result.append(view().substr(copied, match.location - copied)).append(replacement);
        copied = match.end();
    }
    result.append(view().substr(copied));
    splice({0, length_}, result.view());
    return matches.size();
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
};

const Additions<NSMutableString> mutableAdditions{
    instance<&NSMutableString::replaceOccurrencesOfString_withString_options_range>(
        "replaceOccurrencesOfString:withString:options:range:"),
};

}  // namespace

}  // namespace tovi
