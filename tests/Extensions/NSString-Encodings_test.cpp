#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/RecordingHandler.h>
#include <support/Text.h>

using namespace tovi;
using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

/// The byte of two characters, step by step.
unsigned char byteOf(unsigned char c, unsigned char d) {
    const auto high = static_cast<unsigned char>(c >= '0' && c <= '9' ? c * 16 : c * 16 - 112);
    const auto low = static_cast<unsigned char>(d >= '0' && d <= '9' ? d - 48 : d - 87);
    return static_cast<unsigned char>(high + low);
}

}  // namespace

TEST(HexStringRepresentations, EveryPairOfCharactersGivesItsByteWhereverItStands) {
    // All pairs in one text are read in bulk; the last of each row again alone.
    std::u16string all;
    std::string expected;
    for (unsigned c = 0; c < 128; ++c)
        for (unsigned d = 0; d < 128; ++d) {
            all += {static_cast<char16_t>(c), static_cast<char16_t>(d)};
            expected += static_cast<char>(byteOf(static_cast<unsigned char>(c), static_cast<unsigned char>(d)));
        }
    EXPECT_EQ(view(dataWithHexString(text(all))), expected);
    for (std::size_t i = 0; i < expected.size(); i += 7)
        EXPECT_EQ(view(dataWithHexString(text(all.substr(2 * i, 2)))), expected.substr(i, 1)) << i;
    for (unsigned c = 0; c < 128; ++c) {
        const char16_t odd[] = {u'0', u'1', static_cast<char16_t>(c)};
        const auto data = dataWithHexString(text({odd, 3}));
        EXPECT_EQ(view(data).substr(1)[0], static_cast<char>(byteOf(odd[2] & 0x7F, 0))) << "NUL follows";
    }
}

TEST(HexStringRepresentations, DataAndDigits) {
    EXPECT_EQ(view(dataWithHexString(text(u"00ff10"))), "\x00\xFF\x10"sv);
    EXPECT_EQ(view(dataWithHexString(text(u"0A"))), "\xEA");
    EXPECT_EQ(view(dataWithHexString(text(u""))), "");
    dataWithHexString(text(u""))->appendData(made("x"));
    EXPECT_EQ(*hexStringRepresentation(made("\x00\xAB"sv)), u"00ab");
    EXPECT_EQ(*hexStringRepresentation(made("")), u"");
    hexStringRepresentation(made(""))->appendString(text(u"x"));
    std::string bytes;
    for (int i = 0; i < 100'003; ++i)
        bytes += static_cast<char>(i * 31 + i / 256);
    const auto digits = hexStringRepresentation(made(bytes));
    EXPECT_EQ(*digits->substringToIndex(16), u"001f3e5d7c9bbad9");
    EXPECT_EQ(view(dataWithHexString(digits)), bytes);
}

TEST(HexStringRepresentations, TextThatIsNotASCIIIsAnAssertionFailure) {
    const std::u16string long16(40, u'0');
    for (const std::u16string& bad : {u"\u00E9\u00E9"s, u"0\x80"s, long16 + u"0\u0130", u"\u2030" + long16, u"00\x80"s})
        EXPECT_RAISES(dataWithHexString(text(bad)), NSInternalInconsistencyException,
                      "Assertion failure: String cannot be converted to plain ASCII encoding.");
    const auto silent = RecordingHandler::make();
    const ScopedAssertionHandler scope(*silent);
    EXPECT_EQ(dataWithHexString(text(u"00\u00E9"))->length(), 0U);
    EXPECT_TRUE(silent->report->hasPrefix(u"dataWithHexString: NSData Extensions.subproj/NSData-QVLAdditions:22 "_ns));
    EXPECT_EQ(*stringWithHexString(text(u"00\u00E9")), u"");
}

TEST(HexStringRepresentations, StringsAreTheirUTF16Bytes) {
    for (const auto units : {u""sv, u"caf\u00E9"sv, u"\uFEFFa\0b"sv, u"\xD800\U0001F600"sv}) {
        EXPECT_EQ(*hexStringRepresentation(text(units)),
                  *hexStringRepresentation(*text(units)->dataUsingEncoding(NSUnicodeStringEncoding)));
        EXPECT_EQ(*stringWithHexString(hexStringRepresentation(text(units))), units);
    }
    EXPECT_EQ(*stringWithHexString(text(u"feff0061")), u"a");
    EXPECT_FALSE(stringWithHexString(text(u"fffe6100ff")));
}

TEST(MIMEEncoding, NamesAndNumbers) {
    EXPECT_EQ(stringEncodingForMIMEEncoding(text(u"UTF-8").get()), NSUTF8StringEncoding);
    EXPECT_EQ(stringEncodingForMIMEEncoding(text(u"iso-8859-3").get()), NSUInteger(0x80000203));
    EXPECT_EQ(stringEncodingForMIMEEncoding(text(u"no-such-charset").get()), NSUInteger(0));
    EXPECT_EQ(stringEncodingForMIMEEncoding(nullptr), NSUInteger(0));
    EXPECT_EQ(*MIMEEncodingForStringEncoding(NSShiftJISStringEncoding), u"shift_jis");
    EXPECT_FALSE(MIMEEncodingForStringEncoding(NSStringEncoding{2}));
}

TEST(MIMEEncoding, TheRecommendedOneIsTheFirstThatTakesTheText) {
    const std::pair<std::u16string_view, std::u16string_view> rows[] = {
        {u"", u"us-ascii"},
        {u"abc\0"sv, u"us-ascii"},
        {u"\u00E9", u"iso-8859-1"},
        {u"\u0141", u"iso-8859-2"},
        {u"\u00E9\u0141", u"iso-8859-2"},
        {u"\u0127", u"iso-8859-3"},
        {u"\u0141\u0127", u"utf-8"},
        {u"\u014B", u"iso-8859-4"},
        {u"\u0416", u"iso-8859-5"},
        {u"\u0633", u"iso-8859-6"},
        {u"\u03B5", u"iso-8859-7"},
        {u"\u05D0", u"iso-8859-8"},
        {u"\u011F\u00E3", u"iso-8859-9"},
        {u"\u014A\u00D0", u"iso-8859-10"},
        {u"\u0E2A", u"iso-8859-11"},
        {u"\u201D\u017E", u"iso-8859-13"},
        {u"\u0175", u"iso-8859-14"},
        {u"\u0153\u00E9", u"iso-8859-15"},
        {u"\u0219", u"utf-8"},
        {u"\u4E2D\u6587\u65E5", u"utf-16"},
        {u"\xD800", u"utf-16"},
    };
    for (const auto& [units, name] : rows) {
        EXPECT_EQ(*recommendedMIMEEncoding(text(units)), name) << text(units)->UTF8String();
        EXPECT_TRUE(text(units)->canBeConvertedToEncoding(stringEncodingForMIMEEncoding(text(name).get())));
    }
}

TEST(QuotedPrintable, FollowsItsLenientSteps) {
    const std::pair<std::u16string_view, std::u16string_view> rows[] = {
        {u"caf=C3=A9", u"caf\u00E9"},
        {u"caf=c3=a9_au_lait", u"caf\u00E9 au lait"},
        {u"a=\nb", u"ab"},
        {u"a=\r\nb", u"a\0b"sv},
        {u"a=\n", u"a"},
        {u"abc=", u"abc="},
        {u"x=4", u"x=4"},
        {u"==\n", u"=\0"sv.substr(1)},
        {u"=zz", u"\0"sv},
        {u"=41=zz", u"AA"},
        {u"=41=z1", u"AB"},
        {u"=41=0z", u"A\0"sv},
        {u"=1=41", u"\x10\x34\x31"},
        {u"caf\u00E9", u""},
        {u"=\u00E9\u00E9", u""},
        {u"=FF \u0130", u""},
        {u"a long text without any escape, but\0with NUL", u"a long text without any escape, but\0with NUL"},
    };
    for (const auto& [units, expected] : rows) {
        const auto decoded = decodeQuotedPrintableString(text(units));
        EXPECT_TRUE(decoded && *decoded == expected) << text(units)->UTF8String();
        // The same behind and before what is read in bulk.
        const auto padded =
            decodeQuotedPrintableString(text(std::u16string(37, u'-').append(units) + u"----------------"));
        if (decoded->length() == 0) {
            EXPECT_EQ(*padded, u"");
        } else if (units.back() != u'=' && units != u"x=4") {
            EXPECT_EQ(*padded, std::u16string(37, u'-').append(expected) + u"----------------");
        }
    }
    EXPECT_FALSE(decodeQuotedPrintableString(text(u"=FF")));
    EXPECT_EQ(*decodeQuotedPrintableString_encoding(text(u"=FF"), NSISOLatin1StringEncoding), u"\u00FF");
    EXPECT_EQ(*decodeQuotedPrintableString_encoding(text(u"=1B$BF|K=5C=1B(B"), NSISO2022JPStringEncoding),
              u"\u65E5\u672C");
    EXPECT_FALSE(decodeQuotedPrintableString_encoding(text(u"a"), NSStringEncoding{2}));
}

TEST(UniqueStrings, AreNewEachTime) {
    EXPECT_EQ(uniqueString()->length(), 36U);
    EXPECT_NE(*uniqueString(), *uniqueString());
    EXPECT_NE(*newUniqueString(), *newUniqueString());
    for (const auto units : {u""sv, u"\uFEFF\uFEFFa"sv, u"\xDC00\0\xD800"sv, u"\uFFFE"sv}) {
        EXPECT_EQ(*unicodeStringWithString(text(units).get()), units);
        const auto data = text(units)->dataUsingEncoding(NSUnicodeStringEncoding);
        EXPECT_EQ(*NSString::initWithData_encoding(*data, NSUnicodeStringEncoding), units) << "the honest way";
    }
    EXPECT_FALSE(unicodeStringWithString(nullptr));
}
