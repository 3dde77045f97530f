// Searches and compares small texts, and does the same the slow way: by normalising and folding every part of the text.

#include <algorithm>
#include <string>
#include <string_view>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <ToviFoundationKit/Runtime/NSString.h>

#include "Support.h"

using namespace tovi;

namespace {

/// Bytes stand for these, so that matches are frequent.
constexpr std::u16string_view alphabet =
    u"aAeEiIkKsSzuU\u00DF\u1E9E\u017F\u0130\u0131\u212A\u00E9\u00C9\u00E2\u1EA5\u1EAD\u00C5\u212B\uFB03\uFB01\u0149"
    u"\u01F0"
    u"\u0300\u0301\u0302\u0308\u0323\u0327\u031B\u0340\u0344\u0345\u0F71\u0F72\u0F73\u093C\u0958\u0915\u09C7\u09BE"
    u"\u09CB"
    u"\u1100\u1161\u11A8\uAC00\uAC01\u03B1\u0391\u03B9\u1FB3\u1FB4\u0390\u03A3\u03C3\u03C2\u304B\u3099\u304C\u200D"
    u"\uFE0F"
    u"\U00010400\U00010428\U0001D15E\U0002F800\u4E3D\uF900\xD83D\xDE00\U0001F600\u2126\u03C9 \n";

std::u16string textFrom(Input& input, std::size_t length, bool raw) {
    std::u16string result;
    for (; length && input.size; --length) {
        const std::uint8_t first = input.byte();
        result += raw ? static_cast<char16_t>(first << 8 | input.byte()) : alphabet[first % alphabet.size()];
    }
    return result;
}

/// Long texts are searched in another way than short ones. No text that is searched for has this unit.
constexpr std::size_t paddingLength = 600;
constexpr char16_t padding = u'!';

/// The slow way.
struct Oracle {
    std::u16string_view text;
    NSStringCompareOptions options;

    bool markless() const { return options & NSDiacriticInsensitiveSearch; }
    bool literal() const { return options & NSLiteralSearch && !markless(); }
    bool caseless() const { return options & NSCaseInsensitiveSearch; }

    static std::u16string decomposed(const std::u16string& part) {
        UErrorCode error = U_ZERO_ERROR;
        std::u16string result(part.size() * 18 + 1, u'\0');
        const int length = unorm2_normalize(unorm2_getNFDInstance(&error), part.data(), int(part.size()), result.data(),
                                            int(result.size()), &error);
        result.resize(std::size_t(length));
        return result;
    }
    static std::u16string folded(const std::u16string& part) {
        UErrorCode error = U_ZERO_ERROR;
        std::u16string result(part.size() * 3 + 1, u'\0');
        const int length = u_strFoldCase(result.data(), int(result.size()), part.data(), int(part.size()),
                                         U_FOLD_CASE_DEFAULT, &error);
        result.resize(std::size_t(length));
        return result;
    }
    static std::u16string withoutMarks(const std::u16string& part) {
        std::u16string result;
        for (std::size_t i = 0; i < part.size();) {
            const std::size_t start = i;
            UChar32 c;
            U16_NEXT(part, i, part.size(), c);
            if (u_charType(c) != U_NON_SPACING_MARK)
                result.append(part, start, i - start);
        }
        return result;
    }
    std::u16string key(std::u16string_view part) const {
        std::u16string result(part);
        if (!literal())
            result = decomposed(result);
        if (markless())
            result = withoutMarks(result);
        if (caseless())
            result = literal() ? folded(result) : decomposed(folded(result));
        return result;
    }

    bool isBoundary(std::size_t i) const {
        if (i == 0 || i == text.size() || (literal() && !caseless()))
            return true;
        if (U16_IS_TRAIL(text[i]) && U16_IS_LEAD(text[i - 1]))
            return false;
        UChar32 c;
        U16_GET(text, 0, i, text.size(), c);
        UErrorCode error = U_ZERO_ERROR;
        return literal() ||
               (!(U_GET_GC_MASK(c) & U_GC_M_MASK) && unorm2_hasBoundaryBefore(unorm2_getNFCInstance(&error), c));
    }

    bool matches(std::size_t start, std::size_t end, const std::u16string& wanted) const {
        UChar32 first;
        U16_GET(text, 0, start, text.size(), first);
        if (markless() && !(options & NSAnchoredSearch) && u_charType(first) == U_NON_SPACING_MARK)
            return false;
        return isBoundary(start) && isBoundary(end) && key(text.substr(start, end - start)) == wanted;
    }

    NSRange find(std::u16string_view searched, NSRange range) const {
        const std::u16string wanted = key(searched);
        const bool backwards = options & NSBackwardsSearch, anchored = options & NSAnchoredSearch;
        if (wanted.empty() || (range.length == 0))
            return NSRangeNotFound;
        const std::size_t longest = markless() ? 80 : 2 * wanted.size();
        for (std::size_t i = 0; i < range.length; ++i) {
            // Where the match begins, or ends when searching backwards.
            const std::size_t edge = backwards ? range.end() - i : range.location + i;
            if (text.size() >= paddingLength && edge < paddingLength && !anchored)
                continue;
            for (std::size_t length = 1; length <= std::min(longest, range.length - i); ++length) {
                const std::size_t start = backwards ? edge - length : edge;
                if (matches(start, start + length, wanted))
                    return {start, length};
            }
            if (anchored)
                break;
        }
        return NSRangeNotFound;
    }

    NSComparisonResult compare(std::u16string_view other) const {
        const std::u16string a = key(text), b = key(other);
        const bool byCodePoint = !literal() || caseless();
        const int order = u_strCompare(a.data(), int(a.size()), b.data(), int(b.size()), byCodePoint);
        return order < 0 ? NSOrderedAscending : order > 0 ? NSOrderedDescending : NSOrderedSame;
    }
};

void replaceAll(const std::u16string& text, const NSString& searched, NSStringCompareOptions options, NSRange range) {
    const Ref<NSMutableString> changed = NSMutableString::stringWithString(NSString::stringWithCharacters(text));
    const NSUInteger count =
        changed->replaceOccurrencesOfString_withString_options_range(searched, u"<>"_ns, options, range);
    std::u16string expected = text;
    NSUInteger expectedCount = 0;
    const Oracle oracle{text, options};
    std::ptrdiff_t shift = 0;
    for (NSRange match; (match = oracle.find(searched, range)).wasFound();) {
        ++expectedCount;
        expected.replace(std::size_t(std::ptrdiff_t(match.location) + shift), match.length, u"<>");
        if (options & NSBackwardsSearch) {
            range.length = match.location - range.location;
        } else {
            shift += 2 - std::ptrdiff_t(match.length);
            range = {match.end(), range.end() - match.end()};
        }
        if (options & NSAnchoredSearch)
            break;
    }
    require(count == expectedCount, "another number of replacements");
    require(*changed == std::u16string_view(expected), "another text after replacing");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input{data, std::min<std::size_t>(size, 80)};
    const std::uint8_t mode = input.byte();
    const auto options = static_cast<NSStringCompareOptions>((mode & 15) | (mode & 64) << 1);
    const bool raw = mode & 16, padded = !raw && mode & 32;
    const std::u16string wanted = textFrom(input, input.byte() % 8, raw);
    const std::uint8_t skipped = input.byte(), cut = input.byte();
    std::u16string units = textFrom(input, 80, raw);
    if (padded)
        units.insert(0, paddingLength, padding);

    const Ref<NSString> text = NSString::stringWithCharacters(units), searched = NSString::stringWithCharacters(wanted);
    const Oracle oracle{units, options};
    const NSUInteger location = skipped % (units.size() + 1);
    const NSRange range{location, units.size() - location - cut % (units.size() - location + 1)};

    require(text->rangeOfString_options_range(searched, options, range) == oracle.find(wanted, range), "another match");
    require(text->compare_options(searched, options) == oracle.compare(wanted), "another order");
    require(searched->compare_options(text, options) == -oracle.compare(wanted), "the order is not antisymmetric");
    require(text->hasPrefix(searched) ==
                (wanted.empty() || Oracle{units, NSAnchoredSearch}.find(wanted, {0, units.size()}).wasFound()),
            "another prefix");
    const auto suffix = NSAnchoredSearch | NSBackwardsSearch;
    require(text->hasSuffix(searched) ==
                (wanted.empty() || Oracle{units, suffix}.find(wanted, {0, units.size()}).wasFound()),
            "another suffix");
    if (!padded)
        replaceAll(units, searched, options, range);
    return 0;
}
