#include <gtest/gtest.h>

#include <ToviFoundationKit/Foundation/TextDecoder_p.h>
#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Text.h>

using namespace tovi;
using namespace std::string_view_literals;

namespace {

NSStringEncoding numbered(NSUInteger number) { return static_cast<NSStringEncoding>(number); }
RefPtr<NSString> decoded(std::string_view bytes, NSUInteger encoding) {
    return NSString::initWithData_encoding(made(bytes), numbered(encoding));
}

/// What the bytes mean when they come in two pieces.
RefPtr<NSString> decodedInPieces(std::string_view bytes, std::size_t cut, NSUInteger encoding) {
    detail::TextDecoder decoder(numbered(encoding));
    StringBuilder string;
    const bool first = decoder.append(string, bytes.substr(0, cut)), second = decoder.append(string, bytes.substr(cut));
    return decoder.finish(string) && first && second ? RefPtr<NSString>(string.string()) : nullptr;
}

struct Row {
    NSUInteger encoding;
    std::u16string_view text;
    std::string_view bytes;
};

constexpr Row rows[] = {
    {1, u"a\0\x7F"sv, "a\0\x7F"sv},
    {3, u"\u65E5\u672C\u8A9E\uFF76\uFF85", "\xC6\xFC\xCB\xDC\xB8\xEC\x8E\xB6\x8E\xC5"},
    {4, u"a\u00E9\u20AC\U0001F600", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
    {5, u"caf\u00E9\x80\u00FF", "caf\xE9\x80\xFF"},
    {7, u"a\\\u00E9\u20AC\U0001F600\xDC00", R"(a\\\351\u20ac\ud83d\ude00\udc00)"},
    {8, u"\u65E5\u672C\u8A9E\uFF76\uFF85\u8868\\~", "\x93\xFA\x96{\x8C\xEA\xB6\xC5\x95\x5C\\~"},
    {9, u"\u0141\u00F3d\u017A", "\xA3\xF3\x64\xBC"},
    {11, u"\u041F\u0440\u0438\u0432\u0435\u0442\u2116", "\xCF\xF0\xE8\xE2\xE5\xF2\xB9"},
    {12, u"\u20AC \u201C\u0153\u201D", "\x80 \x93\x9C\x94"},
    {13, u"\u0393\u03B5\u03B9\u03AC\u20AC", "\xC3\xE5\xE9\xDC\x80"},
    {14, u"\u0131\u011F\u015E\u20AC", "\xFD\xF0\xDE\x80"},
    {15, u"\u0141\u00F3d\u017A\u20AC", "\xA3\xF3\x64\x9F\x80"},
    {21, u"a\u65E5\u672Cb", "a\x1B$BF|K\\\x1B(Bb"},
    {0x80000203, u"\u0127\u011D", "\xB1\xF8"},
    {0x80000204, u"\u0105\u014B", "\xB1\xBF"},
    {0x80000205, u"\u041F\u0440\u0438\u0432\u0435\u0442 \u2116", "\xBF\xE0\xD8\xD2\xD5\xE2 \xF0"},
    {0x80000206, u"\u0633\u0644\u0627\u0645\u061F", "\xD3\xE4\xC7\xE5\xBF"},
    {0x80000207, u"\u0393\u03B5\u03B9\u03AC \u20AC", "\xC3\xE5\xE9\xDC \xA4"},
    {0x80000208, u"\u05E9\u05DC\u05D5\u05DD", "\xF9\xEC\xE5\xED"},
    {0x80000209, u"\u0131\u011F\u015E", "\xFD\xF0\xDE"},
    {0x8000020A, u"\u014A\u00D0\u0138", "\xAF\xD0\xFF"},
    {0x8000020B, u"\u0E2A\u0E27\u0E31\u0E2A\u0E14\u0E35", "\xCA\xC7\xD1\xCA\xB4\xD5"},
    {0x8000020D, u"\u017Euv\u0173\u201D", "\xFEuv\xF8\xA1"},
    {0x8000020E, u"\u0175\u1E03", "\xF0\xA2"},
    {0x8000020F, u"\u20AC\u0153\u017D", "\xA4\xBD\xB4"},
    {0x80000210, u"\u0219\u021B\u20AC\u201E\x85", "\xBA\xFE\xA4\xA5\x85"},
    {0x80000400, u"\u00F1\u2588\u03C0\x1A\x1C\x7F", "\xA4\xDB\xE3\x1A\x1C\x7F"},
    {0x80000405, u"\u0393\u03B5\u03B9\u03AC", "\x82\x9C\xA0\xE1"},
    {0x80000410, u"\u00F1\u00D0\u2550", "\xA4\xD1\xCD"},
    {0x80000412, u"\u0141\u00F3d\u017A", "\x9D\xA2\x64\xAB"},
    {0x80000413, u"\u041F\u0440\u0438\u0432\u0435\u0442", "\xDD\xE1\xB7\xEB\xA8\xE5"},
    {0x8000041B, u"\u041F\u0440\u0438\u0432\u0435\u0442", "\x8F\xE0\xA8\xA2\xA5\xE2"},
    {0x8000041D, u"\u0E2A\u0E27\u0E31\u0E2A\u0E14\u0E35\u20AC", "\xCA\xC7\xD1\xCA\xB4\xD5\x80"},
    {0x80000420, u"\u65E5\u2460\u9AD9\x1A\x1C\x7F", "\x93\xFA\x87@\xFB\xFC\x1A\x1C\x7F"},
    {0x80000422, u"\uD55C\uAE00\uB620", "\xC7\xD1\xB1\xDB\x8C\x63"},
    {0x80000505, u"\u05E9\u05DC\u05D5\u05DD\u20AA", "\xF9\xEC\xE5\xED\xA4"},
    {0x80000506, u"\u0633\u0644\u0627\u0645\u20AC", "\xD3\xE1\xC7\xE3\x80"},
    {0x80000507, u"\u017Euv\u0173\u20AC", "\xFEuv\xF8\x80"},
    {0x80000508, u"Vi\u00EA\u0323t\u20AB", "Vi\xEA\xF2t\xFE"},
    {0x80000631, u"\u4E2D\u6587\u9555", "\xD6\xD0\xCE\xC4\xE9\x46"},
    {0x80000632, u"\u4E2D\u00E9\u20AC\U0001F600", "\xD6\xD0\xA8\xA6\xA2\xE3\x94\x39\xFC\x36"},
    {0x80000821, u"\u65E5\uD55C", "\x1B$BF|\x1B$(CGQ\x1B(B"},
    {0x80000840, u"\uD55C\uAE00", "\x1B$)C\x0EGQ1[\x0F"},
    {0x80000930, u"\u4E2D\u6587", "\xD6\xD0\xCE\xC4"},
    {0x80000940, u"\uD55C\uAE00", "\xC7\xD1\xB1\xDB"},
    {0x80000A02, u"\u041F\u0440\u0438\u0432\u0435\u0442\u2500", "\xF0\xD2\xC9\xD7\xC5\xD4\x80"},
    {0x80000A03, u"\u4E2D\u6587\u529F", "\xA4\xA4\xA4\xE5\xA5\x5C"},
    {0x80000A05, u"a\u4E2D\u6587~\u4E2D", "a~{VPND~}~~~{VP~}"},
    {0x80000A06, u"\u4E2D\u00CA", "\xA4\xA4\x88\x66"},
    {0x80000A08, u"\u0407\u0436\u0430\u043A", "\xB7\xD6\xC1\xCB"},
    {0x84000100, u"A\u2262\u0391.", "A+ImIDkQ."},
    {0x90000100, u"a\uFEFF\U0001F600", "\0a\xFE\xFF\xD8=\xDE\0"sv},
    {0x94000100, u"a\uFEFF\U0001F600", "a\0\xFF\xFE=\xD8\0\xDE"sv},
    {0x98000100, u"a\U0001F600", "\0\0\0a\0\1\xF6\0"sv},
    {0x9C000100, u"a\U0001F600", "a\0\0\0\0\xF6\1\0"sv},
};

}  // namespace

TEST(NSStringEncodings, EachHasItsBytesBothWaysAndInPieces) {
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << std::hex << row.encoding);
        const auto data = text(row.text)->dataUsingEncoding(numbered(row.encoding));
        EXPECT_TRUE(data && view(*data) == row.bytes) << data->description()->UTF8String();
        const auto string = decoded(row.bytes, row.encoding);
        EXPECT_TRUE(string && *string == row.text);
        for (std::size_t cut = 0; cut <= row.bytes.size(); ++cut) {
            const auto again = decodedInPieces(row.bytes, cut, row.encoding);
            EXPECT_TRUE(again && *again == row.text) << "cut after " << cut;
        }
    }
}

TEST(NSStringEncodings, EveryEncodingReadsBackAllThatItWrites) {
    constexpr char32_t last = 0x2FFFF;
    std::vector<Ref<NSString>> characters;
    for (char32_t c = 0; c <= last; ++c)
        characters.push_back(StringBuilder().appendCodePoint(c).string());
    for (const NSStringEncoding encoding : NSString::availableStringEncodings()) {
        SCOPED_TRACE(testing::Message() << std::hex << NSUInteger(encoding));
        std::u16string writable;
        for (const Ref<NSString>& character : characters)
            if (character->canBeConvertedToEncoding(encoding))
                writable += character->view();
        EXPECT_GE(writable.size(), 125U) << "nearly all of ASCII, at least";
        EXPECT_EQ(writable.find(u'\0'), 0U);
        const Ref<NSString> all = text(writable);
        const auto data = all->dataUsingEncoding(encoding);
        ASSERT_TRUE(data);
        const auto read = NSString::initWithData_encoding(*data, encoding);
        EXPECT_TRUE(read && *read == *all);
    }
}

TEST(NSStringEncodings, AByteOrderMarkDecidesTheOrderAndIsDropped) {
    const bool little = std::endian::native == std::endian::little;
    EXPECT_EQ(*decoded("\xFE\xFF\0a"sv, 10), u"a");
    EXPECT_EQ(*decoded("\xFF\xFE\x61\0"sv, 10), u"a");
    EXPECT_EQ(*decoded("\xFF\xFE\xFF\xFE"sv, 10), u"\uFEFF");
    EXPECT_EQ(*decoded(little ? "a\0"sv : "\0a"sv, 10), u"a");
    EXPECT_EQ(*decoded("\0\0\xFE\xFF\0\0\0a"sv, 0x8C000100), u"a");
    EXPECT_EQ(*decoded("\xFF\xFE\0\0a\0\0\0"sv, 0x8C000100), u"a");
    EXPECT_EQ(*decoded("\xEF\xBB\xBF\x61", 4), u"\uFEFFa") << "UTF-8 has no order";
    EXPECT_EQ(view(*text(u"a")->dataUsingEncoding(NSUnicodeStringEncoding)),
              little ? "\xFF\xFE\x61\0"sv : "\xFE\xFF\0a"sv);
    EXPECT_EQ(text(u"")->dataUsingEncoding(NSUnicodeStringEncoding)->length(), 2U);
    EXPECT_EQ(text(u"ab")->lengthOfBytesUsingEncoding(NSUnicodeStringEncoding), 4U);
}

TEST(NSStringEncodings, LoneSurrogatesAreKeptByTwoEncodingsAndRefusedByTheOthers) {
    for (const std::u16string_view units : {u"a\xD83D"sv, u"\xDE00z"sv, u"\xD83D\xD83D\xDE00"sv}) {
        const auto string = text(units);
        for (const NSStringEncoding encoding : NSString::availableStringEncodings()) {
            const bool kept = encoding == NSUnicodeStringEncoding || encoding == NSNonLossyASCIIStringEncoding;
            EXPECT_EQ(string->canBeConvertedToEncoding(encoding), kept) << NSUInteger(encoding);
            const auto data = string->dataUsingEncoding(encoding);
            ASSERT_EQ(static_cast<bool>(data), kept) << NSUInteger(encoding);
            if (kept)
                EXPECT_EQ(*NSString::initWithData_encoding(*data, encoding), *string);
            else
                EXPECT_GE(string->dataUsingEncoding_allowLossyConversion(encoding, true)->length(), 2U);
        }
        EXPECT_EQ(string->smallestEncoding(), NSUnicodeStringEncoding);
    }
}

TEST(NSStringEncodings, InvalidBytesGiveNilOrAreReplacedAndCounted) {
    const struct {
        NSUInteger encoding;
        std::string_view bytes;
        std::u16string_view replaced;
        NSUInteger count;
    } bad[] = {
        {1, "a\x80\xFFz", u"a\uFFFD\uFFFDz", 2},
        {3, "\xC6", u"\uFFFD", 1},
        {4, "a\xE2\x82z\xC0\xED\xA0\x80", u"a\uFFFDz\uFFFD\uFFFD\uFFFD\uFFFD", 5},
        {7, "\\x\xE9\\12", u"\uFFFDx\uFFFD\uFFFD12", 3},
        {10, "\xFF\xFE\x61\0b"sv, u"a\uFFFD", 1},
        {21, "a\x1B$BF", u"a\uFFFD", 1},
        {0x80000203, "\xA5z", u"\uFFFDz", 1},
        {0x80000632, "\x81\x30\x81", u"\uFFFD", 1},
        {0x84000100, "+2AA-", u"\uFFFD", 1},
        {0x90000100, "\xD8\0\0a\xDC\0\xD8\0"sv, u"\uFFFDa\uFFFD\uFFFD", 3},
        {0x98000100, "\0\x11\0\0\0\0\xD8\0\0"sv, u"\uFFFD\uFFFD\uFFFD", 3},
        {2, "a\xE9", u"a\uFFFD", 1},  // an encoding that is not known
        {0x80000212, "a\xE9", u"a\uFFFD", 1},
        {~0ULL, "a\xE9", u"a\uFFFD", 1},
    };
    for (const auto& row : bad) {
        SCOPED_TRACE(testing::Message() << std::hex << row.encoding);
        EXPECT_FALSE(decoded(row.bytes, row.encoding));
        for (std::size_t cut = 0; cut <= row.bytes.size(); ++cut)
            EXPECT_FALSE(decodedInPieces(row.bytes, cut, row.encoding)) << "cut after " << cut;
        NSUInteger count = 0;
        const auto string = NSString::fromBytes(std::as_bytes(std::span(row.bytes)), numbered(row.encoding), &count);
        EXPECT_EQ(*string, row.replaced) << string->UTF8String();
        EXPECT_EQ(count, row.count);
    }
    EXPECT_FALSE(decoded("", 2));
    EXPECT_FALSE(text(u"")->dataUsingEncoding_allowLossyConversion(numbered(2), true));
    EXPECT_FALSE(text(u"")->canBeConvertedToEncoding(numbered(2)));
}

TEST(NSStringEncodings, ShiftsWithNothingBetweenMeanNothing) {
    for (const Row& row : {
             Row{21, u"a\u65E5\u672Cb\u65E5", "a\x1B$BF|\x1B(B\x1B$BK\\\x1B(B\x1B(Bb\x1B$B\x1B(J\x1B$BF|\x1B(B"},
             Row{21, u"", "\x1B$B\x1B(B"},
             Row{0x80000830, u"\u4E2D\u4E2D", "\x1B$)A\x0EVP\x0F\x0E\x0F\x0EVP\x0F"},
             Row{0x80000840, u"\uD55C\uAE00", "\x1B$)C\x0EGQ\x0F\x0E\x0F\x0E\x31[\x0F"},
             Row{0x80000A05, u"\u4E2D\u6587a", "~{VP~}~{~}~{ND~}a~{~}"},
         }) {
        NSUInteger replaced = 0;
        const auto lenient =
            NSString::fromBytes(std::as_bytes(std::span(row.bytes)), numbered(row.encoding), &replaced);
        EXPECT_EQ(*lenient, row.text) << lenient->UTF8String();
        EXPECT_EQ(replaced, 0U);
        for (std::size_t cut = 0; cut <= row.bytes.size(); ++cut) {
            const auto again = decodedInPieces(row.bytes, cut, row.encoding);
            EXPECT_TRUE(again && *again == row.text) << "cut after " << cut;
        }
    }
}

TEST(NSStringEncodings, LossTakesTheNearestCharacters) {
    const auto lossy = [](std::u16string_view units, NSUInteger encoding) {
        const auto data = text(units)->dataUsingEncoding_allowLossyConversion(numbered(encoding), true);
        return std::string(view(*data));
    };
    EXPECT_EQ(lossy(u"\u201C\u00E9t\u00E9\u201D \u2013 \uFB01n\u2026 \u00BD \u00DF\u0141\u00A0\u2122", 1),
              "\"ete\" - fin... 1/2 ssL TM");
    EXPECT_EQ(lossy(u"e\u0301 \u4E2D\U0001F600\xD83D.", 1), "e ???.") << "one for each code point";
    EXPECT_EQ(lossy(u"\u00E9\u0113", 5), "\xE9"
                                         "e")
        << "only what the encoding lacks";
    EXPECT_EQ(lossy(u"\u65E5\u0E2A\u672C", 21), "\x1B$BF|\x1B(B?\x1B$BK\\\x1B(B");
    EXPECT_EQ(lossy(u"a\xDE00z", 4), "a\xEF\xBF\xBDz");
    EXPECT_EQ(lossy(u"\x1B\x0E", 21), "??") << "they would shift";
}

TEST(NSStringEncodings, TheSmallestCountsTheBytes) {
    const std::pair<std::u16string_view, NSUInteger> smallest[] = {
        {u"", 1},           {u"abc\x7F", 1},      {u"\x80\u00FF", 5},
        {u"abc \u20AC", 4}, {u"\u0416\u0416", 4}, {u"\u4E2D\u6587\u65E5", 10},
        {u"\U0001F600", 4}, {u"\xD800", 10}};
    for (const auto& [units, encoding] : smallest)
        EXPECT_EQ(text(units)->smallestEncoding(), encoding) << text(units)->UTF8String();
}

TEST(NSStringEncodings, AnswerMessages) {
    const Ref<NSData> data = made("caf\xE9");
    EXPECT_EQ(*send<id>(NSString::classObject(), "initWithData:encoding:"_sel, data, NSISOLatin1StringEncoding)
                   ->description(),
              u"caf\u00E9");
    EXPECT_TRUE(text(u"caf\u00E9")->dataUsingEncoding(NSISOLatin1StringEncoding)->isEqual(data.get()));
    EXPECT_EQ(send<NSUInteger>(*text(u"\u00E9"), "smallestEncoding"_sel), NSISOLatin1StringEncoding);
}
