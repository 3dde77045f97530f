#include <ToviFoundationKit/Foundation/NearestASCII_p.h>

#include <algorithm>
#include <iterator>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>

#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi::detail {

namespace {

struct Pair {
    char16_t character;
    std::u16string_view plain;
};

constexpr Pair pairs[] = {
    {u'\u00AB', u"<<"}, {u'\u00BB', u">>"}, {u'\u00C6', u"AE"}, {u'\u00D0', u"D"},  {u'\u00D7', u"x"},
    {u'\u00D8', u"O"},  {u'\u00DE', u"Th"}, {u'\u00DF', u"ss"}, {u'\u00E6', u"ae"}, {u'\u00F0', u"d"},
    {u'\u00F8', u"o"},  {u'\u00FE', u"th"}, {u'\u0110', u"D"},  {u'\u0111', u"d"},  {u'\u0131', u"i"},
    {u'\u0141', u"L"},  {u'\u0142', u"l"},  {u'\u0152', u"OE"}, {u'\u0153', u"oe"}, {u'\u2010', u"-"},
    {u'\u2011', u"-"},  {u'\u2012', u"-"},  {u'\u2013', u"-"},  {u'\u2014', u"-"},  {u'\u2015', u"-"},
    {u'\u2018', u"'"},  {u'\u2019', u"'"},  {u'\u201A', u"'"},  {u'\u201B', u"'"},  {u'\u201C', u"\""},
    {u'\u201D', u"\""}, {u'\u201E', u"\""}, {u'\u201F', u"\""}, {u'\u2039', u"<"},  {u'\u203A', u">"},
    {u'\u2044', u"/"},  {u'\u2212', u"-"},
};
static_assert(std::ranges::is_sorted(pairs, {}, &Pair::character));

std::u16string_view inTable(char32_t codePoint) {
    const auto* const found = std::ranges::lower_bound(pairs, codePoint, {}, &Pair::character);
    return found != std::end(pairs) && found->character == codePoint ? found->plain : std::u16string_view();
}

}  // namespace

std::u16string_view nearestASCII(char32_t codePoint) {
    constexpr std::u16string_view unknown = u"?";
    constexpr int32_t longest = 20;
    thread_local char16_t plain[longest];
    if (const std::u16string_view known = inTable(codePoint); !known.empty())
        return known;
    if (isSurrogate(codePoint))
        return unknown;
    if (u_charType(static_cast<UChar32>(codePoint)) == U_NON_SPACING_MARK)
        return {};
    UErrorCode error = U_ZERO_ERROR;
    const int32_t length = unorm2_getDecomposition(unorm2_getNFKDInstance(&error), static_cast<UChar32>(codePoint),
                                                   plain, longest, &error);
    if (U_FAILURE(error) || length < 0)
        return unknown;
    char16_t* end = std::remove_if(plain, plain + length, [](char16_t unit) {
        return !isSurrogate(unit) && u_charType(unit) == U_NON_SPACING_MARK;
    });
    std::replace(plain, end, u'\u2044', u'/');
    const bool isPlain = plain != end && std::all_of(plain, end, [](char16_t unit) { return unit < 0x80; });
    return isPlain ? std::u16string_view(plain, end) : unknown;
}

}  // namespace tovi::detail
