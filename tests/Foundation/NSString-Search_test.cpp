#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <span>

#include <support/Text.h>
#include <support/Threads.h>

using namespace tovi;

namespace {

constexpr auto none = NSStringCompareOptions{};
constexpr auto caseless = NSCaseInsensitiveSearch;
constexpr auto literal = NSLiteralSearch;
constexpr auto backwards = NSBackwardsSearch;
constexpr auto anchored = NSAnchoredSearch;
constexpr std::ptrdiff_t missing = -1;

struct Row {
    const char* name;
    std::u16string_view text, searched;
    NSStringCompareOptions options;
    std::ptrdiff_t location;
    NSUInteger length;
};

// Every row is searched for in a long text, too, since that is done in another way: `.` has no part in any of them.
void expectMatches(std::span<const Row> rows) {
    for (const Row& row : rows) {
        const auto searched = text(row.searched);
        for (const std::size_t padding : {0U, 1000U}) {
            const std::u16string units = std::u16string(padding, u'.').append(row.text);
            const NSUInteger start = row.options & anchored ? padding : 0;
            const NSRange expected = row.location == missing
                                         ? NSRangeNotFound
                                         : NSRange{padding + static_cast<NSUInteger>(row.location), row.length};
            const NSRange range{start, units.size() - start};
            EXPECT_EQ(text(units)->rangeOfString_options_range(searched, row.options, range), expected)
                << row.name << ", after " << padding << " units";
        }
    }
}

TEST(NSStringSearch, FindsUnitsInEveryDirection) {
    const Row rows[] = {
        {"first", u"abcabc", u"bc", none, 1, 2},
        {"last", u"abcabc", u"bc", backwards, 4, 2},
        {"overlapping, last", u"aaa", u"aa", backwards, 1, 2},
        {"at the start", u"abc", u"ab", anchored, 0, 2},
        {"not at the start", u"abc", u"bc", anchored, missing, 0},
        {"at the end", u"abc", u"bc", anchored | backwards, 1, 2},
        {"literal, last", u"abcabc", u"a", literal | backwards, 3, 1},
        {"literal, at the end", u"abc", u"abc", literal | anchored | backwards, 0, 3},
        {"empty", u"abc", u"", none, missing, 0},
        {"empty, at the end", u"abc", u"", anchored | backwards, missing, 0},
        {"half of a pair", u"\U0001F600", u"\xDE00", none, missing, 0},
        {"half of a pair, literally", u"\U0001F600", u"\xDE00", literal, 1, 1},
        {"a lone surrogate", u"a\xDE00z", u"\xDE00", none, 1, 1},
        {"a pair", u"\xD83D\U0001F600", u"\U0001F600", caseless, 1, 2},
    };
    expectMatches(rows);
}

TEST(NSStringSearch, SeesCanonicallyEquivalentTextAsEqual) {
    const Row rows[] = {
        {"composed for decomposed", u"ae\u0301z", u"\u00E9", none, 1, 2},
        {"decomposed for composed", u"a\u00E9z", u"e\u0301", none, 1, 1},
        {"not literally", u"ae\u0301z", u"\u00E9", literal, missing, 0},
        {"marks in another order", u"xa\u0323\u0302y", u"a\u0302\u0323", none, 1, 3},
        {"partly composed", u"x\u1EA1\u0302y", u"\u1EAD", none, 1, 2},
        {"marks of one class keep their order", u"a\u0301\u0300", u"a\u0300\u0301", none, missing, 0},
        {"a singleton", u"10 \u212B", u"\u00C5", none, 3, 1},
        {"a compatibility ideograph", u"\u8C48", u"\uF900", none, 0, 1},
        {"a supplementary one", u"\U0002F800", u"\u4E3D", none, 0, 2},
        {"not compatibly equivalent", u"\uFB01", u"fi", none, missing, 0},
        {"a syllable for its letters", u"\u1112\u1161\u11AB\u1100", u"\uD55C", none, 0, 3},
        {"letters for their syllable", u"x\uD55C", u"\u1112\u1161\u11AB", none, 1, 1},
        {"a syllable closed by a letter", u"\uD558\u11AB", u"\uD55C", none, 0, 2},
        {"a vowel in two parts", u"\u0995\u09C7\u09BE", u"\u0995\u09CB", none, 0, 3},
        {"last", u"e\u0301 \u00E9 e", u"e\u0301", backwards, 3, 1},
        {"at the end", u"e\u0301", u"\u00E9", anchored | backwards, 0, 2},
    };
    expectMatches(rows);
}

TEST(NSStringSearch, MatchesWholeCharacters) {
    const Row rows[] = {
        {"a base with a mark", u"e\u0301", u"e", none, missing, 0},
        {"a base within a composed one", u"\u00E9", u"e", none, missing, 0},
        {"the next one without", u"e\u0301e", u"e", none, 2, 1},
        {"the last one without", u"ee\u0301", u"e", backwards, 0, 1},
        {"a mark", u"e\u0301", u"\u0301", none, missing, 0},
        {"one mark of two", u"e\u0323\u0301", u"e\u0323", none, missing, 0},
        {"an open syllable in a closed one", u"\uD55C", u"\uD558", none, missing, 0},
        {"an open syllable before a final", u"\uD558\u11AB", u"\uD558", none, missing, 0},
        {"a spacing mark", u"\u0915\u093E", u"\u0915", none, missing, 0},
        {"before a variation selector", u"\u2764\uFE0F", u"\u2764", none, missing, 0},
        {"at the start", u"e\u0301", u"e", anchored, missing, 0},
        {"half of an expansion", u"stra\u00DFe", u"as", caseless, missing, 0},
        {"the other half", u"\u00DF", u"s", caseless | anchored | backwards, missing, 0},
        {"a mark, literally", u"e\u0301", u"e", literal, 0, 1},
        {"a line end", u"a\r\nb", u"\n", none, 2, 1},
    };
    expectMatches(rows);
    const auto cut = text(u"ae\u0301e");
    EXPECT_FALSE(cut->rangeOfString_options_range(u"e"_ns, none, {0, 2}).wasFound()) << "cut by the range's end";
    EXPECT_EQ(cut->rangeOfString_options_range(u"e"_ns, none, {2, 2}), (NSRange{3, 1})) << "cut by its start";
}

TEST(NSStringSearch, FoldsCaseFullyAndWithoutLocale) {
    const Row rows[] = {
        {"letters", u"A NEEDLE", u"needle", caseless, 2, 6},
        {"accents", u"\u00C9T\u00C9", u"e\u0301t\u00E9", caseless, 0, 3},
        {"sharp s for two", u"STRASSE", u"stra\u00DFe", caseless, 0, 7},
        {"two for sharp s", u"Stra\u00DFe", u"STRASSE", caseless, 0, 6},
        {"capital sharp s", u"\u1E9E", u"\u00DF", caseless, 0, 1},
        {"a ligature", u"o\uFB03ce", u"FFI", caseless, 1, 1},
        {"the Kelvin sign", u"5 \u212A", u"k", caseless, 2, 1},
        {"final sigma", u"\u039F\u03A3", u"\u03BF\u03C2", caseless, 0, 2},
        {"iota below", u"\u1FB3", u"\u0391\u0399", caseless, 0, 1},
        {"iota below, other marks behind", u"\u03B1\u0345\u0301", u"\u0386\u0399", caseless, 0, 3},
        {"I is i", u"I", u"i", caseless, 0, 1},
        {"dotless i is not", u"\u0131", u"i", caseless, missing, 0},
        {"dotted I is i with a dot", u"\u0130", u"i\u0307", caseless, 0, 1},
        {"dotted I is not i", u"\u0130", u"i", caseless, missing, 0},
        {"Cherokee, to capitals", u"\uAB70", u"\u13A0", caseless, 0, 1},
        {"beyond the first plane", u"x\U00010400", u"\U00010428", caseless, 1, 2},
        {"last", u"\u00E9 \u00C9", u"e\u0301", caseless | backwards, 2, 1},
        {"at the end", u"STRASSE", u"\u00DFe", caseless | anchored | backwards, 4, 3},
        {"literally", u"\u00C9\u0041\u0301", u"a\u0301", caseless | literal, 1, 2},
        {"literally, sharp s", u"SS", u"\u00DF", caseless | literal, 0, 2},
        {"literally, no equivalence", u"\u00C9", u"e\u0301", caseless | literal, missing, 0},
    };
    expectMatches(rows);
}

TEST(NSStringSearch, TakesLinearTimeOnHardTexts) {
    constexpr std::size_t length = 1 << 17;
    const std::u16string a(length, u'a'), accents(length, u'\u00E9'), marks(length, u'\u0301');
    const auto with = [](std::u16string text, std::size_t place, char16_t unit) {
        text.resize(length / 2);
        text[place] = unit;
        return text;
    };
    const std::u16string hard[] = {with(a, length / 2 - 1, u'b'), with(a, 0, u'b'), with(accents, length / 2 - 1, u'e'),
                                   with(marks, 0, u'e')};
    for (const std::u16string& whole : {a, accents, marks})
        for (const std::u16string& part : hard)
            for (unsigned options = 0; options < 8; ++options)
                EXPECT_FALSE(text(whole)
                                 ->rangeOfString_options(text(part), static_cast<NSStringCompareOptions>(options))
                                 .wasFound());
}

TEST(NSStringSearch, WorksOnSeveralThreadsFromTheStart) {
    onThreads(4, [](int) {
        const auto units = std::u16string(1000, u'x').append(u"STRASSE \u00C9\u0422\uD55C");
        EXPECT_EQ(text(units)->rangeOfString_options(u"stra\u00DFe"_ns, caseless), (NSRange{1000, 7}));
        EXPECT_EQ(text(units)->rangeOfString(u"E\u0301\u0422\u1112\u1161\u11AB"_ns), (NSRange{1008, 3}));
    });
}

TEST(NSString, KnowsItsPrefixesAndSuffixes) {
    const auto accented = text(u"e\u0301a\u00E9");
    EXPECT_TRUE(accented->hasPrefix(u"\u00E9a"_ns) && accented->hasSuffix(u"ae\u0301"_ns));
    EXPECT_TRUE(accented->hasPrefix(u""_ns) && accented->hasSuffix(u""_ns));
    EXPECT_FALSE(accented->hasPrefix(u"e"_ns) || u"Re"_ns->hasPrefix(u"Re:"_ns) || u"x"_ns->hasSuffix(u"xx"_ns));
}

TEST(NSString, OrdersTextsByTheirDecompositions) {
    constexpr auto less = NSOrderedAscending, same = NSOrderedSame, greater = NSOrderedDescending;
    const struct {
        std::u16string_view a, b;
        NSComparisonResult plain, folded, units;
    } rows[] = {
        {u"", u"a", less, less, less},
        {u"a", u"B", greater, less, greater},
        {u"a", u"A", greater, same, greater},
        {u"\u00E9", u"f", less, less, greater},
        {u"\u00E9", u"e\u0301", same, same, greater},
        {u"\u00E9a", u"e\u0301b", less, less, greater},
        {u"\u00C9", u"e\u0301", less, same, greater},
        {u"a\u0323\u0302", u"a\u0302\u0323", same, same, greater},
        {u"a\u0323", u"a\u0323\u031B", greater, greater, less},
        {u"stra\u00DFe", u"STRASSE", greater, same, greater},
        {u"\uFFFD", u"\U00010000", less, less, greater},
        {u"x\u212A", u"xk", less, same, greater},
    };
    for (const auto& row : rows) {
        const auto a = text(row.a), b = text(row.b);
        EXPECT_EQ(a->compare(b), row.plain) << a << ' ' << b;
        EXPECT_EQ(b->compare(a), -row.plain) << a << ' ' << b;
        EXPECT_EQ(a->caseInsensitiveCompare(b), row.folded) << a << ' ' << b;
        EXPECT_EQ(b->compare_options(a, caseless), -row.folded) << a << ' ' << b;
        EXPECT_EQ(a->compare_options(b, literal), row.units) << a << ' ' << b;
    }
    EXPECT_EQ(u"\u00C9"_ns->compare_options(u"\u00E9"_ns, caseless | literal), same);
    EXPECT_EQ(u"\u00C9"_ns->compare_options(u"e\u0301"_ns, caseless | literal), greater);
}

TEST(NSString, MapsCaseFullyAndWithoutLocale) {
    const struct {
        std::u16string_view text, upper, lower;
    } rows[] = {
        {u"", u"", u""},
        {u"aZ[`{1", u"AZ[`{1", u"az[`{1"},
        {u"Stra\u00DFe", u"STRASSE", u"stra\u00DFe"},
        {u"i\u0131\u0130I", u"II\u0130I", u"i\u0131i\u0307i"},
        {u"\uFB03", u"FFI", u"\uFB03"},
        {u"\u039F\u03A3 \u03A3\u039F", u"\u039F\u03A3 \u03A3\u039F", u"\u03BF\u03C2 \u03C3\u03BF"},
        {u"\U00010428\U00010400", u"\U00010400\U00010400", u"\U00010428\U00010428"},
        {u"\u0390", u"\u0399\u0308\u0301", u"\u0390"},
        {u"a\xD800z", u"A\xD800Z", u"a\xD800z"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(text(row.text)->uppercaseString()->view(), row.upper);
        EXPECT_EQ(text(row.text)->lowercaseString()->view(), row.lower);
    }
}

TEST(NSMutableString, ReplacesEveryMatchInTheRange) {
    const struct {
        const char* name;
        std::u16string_view text, searched, replacement;
        NSStringCompareOptions options;
        NSRange range;
        std::u16string_view result;
        NSUInteger count;
    } rows[] = {
        {"from the left", u"aaaaa", u"aa", u"b", literal, {0, 5}, u"bba", 2},
        {"from the right", u"aaaaa", u"aa", u"b", literal | backwards, {0, 5}, u"abb", 2},
        {"longer", u"a-b-c", u"-", u"<->", none, {0, 5}, u"a<->b<->c", 2},
        {"only in the range", u"----", u"-", u"+", none, {1, 2}, u"-++-", 2},
        {"anchored", u"aab", u"a", u"", anchored, {0, 3}, u"ab", 1},
        {"equivalent", u"e\u0301\u00E9e", u"\u00E9", u"E", none, {0, 4}, u"EEe", 2},
        {"folded", u"\u00DFsS", u"SS", u"x", caseless, {0, 3}, u"xx", 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto changed = NSMutableString::stringWithString(text(row.text));
        const NSUInteger count = changed->replaceOccurrencesOfString_withString_options_range(
            text(row.searched), text(row.replacement), row.options, row.range);
        EXPECT_EQ(count, row.count);
        EXPECT_EQ(changed->view(), row.result);
    }
    const Ref<NSMutableString> many = NSMutableString::string();
    many->appendCharacters(std::u16string(200000, u'\u00E9'));
    EXPECT_EQ(many->replaceOccurrencesOfString_withString_options_range(u"E\u0301"_ns, u"ee"_ns, caseless, {0, 200000}),
              200000U);
    EXPECT_EQ(many->view(), std::u16string(400000, u'e'));
}

}  // namespace
