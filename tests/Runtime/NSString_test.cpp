#include <gtest/gtest.h>

#include <ToviFoundationKit/Runtime/StringBuilder.h>
#include <ToviFoundationKit/ToviFoundationKit.h>

#include <cmath>
#include <sstream>
#include <unordered_set>

#include <support/Expect.h>
#include <support/Text.h>

using namespace tovi;

TEST(NSString, ReadsUTF8AndReplacesEachMaximalIllFormedSubsequence) {
    const struct {
        const char* name;
        std::string_view bytes;
        std::u16string_view text;
        bool wellFormed;
    } rows[] = {
        {"all lengths", "a\u00E9\u20AC\U0001F600z", u"a\u00E9\u20AC\U0001F600z", true},
        {"limits", "\x7F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF",
         u"\x7F\x80\u07FF\u0800\xFFFF\U00010000\U0010FFFF", true},
        {"a zero byte", std::string_view("a\0b", 3), std::u16string_view(u"a\0b", 3), true},
        {"a continuation byte alone", "a\x80z", u"a\xFFFDz", false},
        {"overlong", "\xC0\xAF\xE0\x80\xAF\xF0\x80\x80\xAF", u"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD",
         false},
        {"a surrogate", "\xED\xA0\x80!", u"\xFFFD\xFFFD\xFFFD!", false},
        {"beyond the last code point", "\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD", false},
        {"cut short", "\xE2\x82", u"\xFFFD", false},
        {"cut short by a letter", "\xF0\x9F\x98z\xE2z", u"\xFFFDz\xFFFDz", false},
        {"never a lead", "\xFF\xF8\xC1", u"\xFFFD\xFFFD\xFFFD", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(NSString::fromUTF8(row.bytes)->view(), row.text) << row.name;
        EXPECT_EQ(static_cast<bool>(NSString::stringWithUTF8String(row.bytes)), row.wellFormed) << row.name;
        if (row.wellFormed) {
            EXPECT_EQ(text(row.text)->UTF8String(), row.bytes) << row.name;
        }
    }
}

TEST(NSString, WritesLoneSurrogatesAsReplacementCharacters) {
    EXPECT_EQ(box(u"a\xD83Dz\xDE00\xDE00\xD83D")->UTF8String(), "a\xEF\xBF\xBDz\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(NSString, ConvertsAtEveryOffsetOfALongText) {
    for (std::size_t offset = 0; offset < 1100; ++offset) {
        const std::string bytes = std::string(offset, 'x').append("\U0001F600").append(40, 'y');
        const Ref<NSString> read = NSString::fromUTF8(bytes);
        ASSERT_EQ(read->length(), offset + 42);
        ASSERT_EQ(read->characterAtIndex(offset), 0xD83D);
        ASSERT_EQ(read->UTF8String(), bytes);
    }
}

TEST(NSString, RaisesRangeErrorsInThePlatformsWords) {
    const Ref<NSString> four = u"text"_ns;
    const Ref<NSMutableString> changing = NSMutableString::stringWithString(four);
    const NSUInteger huge = ~NSUInteger(0);
    EXPECT_RAISES(four->characterAtIndex(4), NSRangeException,
                  "*** -[NSString characterAtIndex:]: Index 4 out of bounds; string length 4");
    EXPECT_RAISES(four->substringFromIndex(5), NSRangeException,
                  "*** -[NSString substringFromIndex:]: Index 5 out of bounds; string length 4");
    EXPECT_RAISES(four->substringToIndex(huge), NSRangeException,
                  "*** -[NSString substringToIndex:]: Index 18446744073709551615 out of bounds; string length 4");
    EXPECT_RAISES(four->substringWithRange({5, 3}), NSRangeException,
                  "*** -[NSString substringWithRange:]: Range {5, 3} out of bounds; string length 4");
    EXPECT_RAISES(
        four->substringWithRange({1, huge}), NSRangeException,
        "*** -[NSString substringWithRange:]: Range {1, 18446744073709551615} out of bounds; string length 4");
    EXPECT_RAISES(four->rangeOfString_options_range(four, NSLiteralSearch, {2, 3}), NSRangeException,
                  "*** -[NSString rangeOfString:options:range:]: Range {2, 3} out of bounds; string length 4");
    EXPECT_RAISES(changing->insertString_atIndex(four, 5), NSRangeException,
                  "*** -[NSMutableString insertString:atIndex:]: Index 5 out of bounds; string length 4");
    EXPECT_RAISES(changing->deleteCharactersInRange({4, 1}), NSRangeException,
                  "*** -[NSMutableString deleteCharactersInRange:]: Range {4, 1} out of bounds; string length 4");
    EXPECT_RAISES(
        changing->replaceCharactersInRange_withString({0, 5}, four), NSRangeException,
        "*** -[NSMutableString replaceCharactersInRange:withString:]: Range {0, 5} out of bounds; string length 4");
    EXPECT_EQ(*changing, u"text");
    EXPECT_EQ(four->substringFromIndex(4)->length(), 0U);
    EXPECT_EQ(*four->substringWithRange({1, 2}), u"ex");
}

TEST(NSString, RefusesLengthsThatCannotBe) {
    EXPECT_RAISES(NSMutableString::stringWithCapacity(~NSUInteger(0)), NSMallocException,
                  "*** NSString: cannot allocate a string of 18446744073709551615 units");
    EXPECT_RAISES(StringBuilder().append(NSUInteger(1) << 62, u'x'), NSMallocException,
                  "*** NSString: cannot allocate a string of 4611686018427387904 units");
}

TEST(NSString, HashesEveryUnitAndIgnoresMutability) {
    std::unordered_set<NSUInteger> hashes;
    std::size_t texts = 0;
    for (std::size_t length = 1; length < 80; ++length)
        for (std::size_t place = 0; place < length; ++place, ++texts) {
            std::u16string units(length, u'a');
            units[place] = u'b';
            const Ref<NSString> text = box(units);
            hashes.insert(text->hash());
            ASSERT_EQ(NSMutableString::stringWithString(text)->hash(), text->hash());
        }
    EXPECT_EQ(hashes.size(), texts);
    EXPECT_TRUE(u"a"_ns->isEqual(NSMutableString::stringWithString(u"a"_ns).get()));
    EXPECT_FALSE(u"1"_ns->isEqual(NSNumber::numberWithInt(1).get()));
    EXPECT_FALSE(u"1"_ns->isEqual(nullptr));
}

TEST(NSString, CopiesImmutableTextsByReference) {
    const Ref<NSString> text = box(u"text");
    EXPECT_TRUE(identical(text.get(), text->copy().get()));
    EXPECT_TRUE(identical(text.get(), text->substringFromIndex(0).get()));
    const Ref<NSMutableString> changing = NSMutableString::stringWithString(text);
    const Ref<NSObject> copy = changing->copy();
    const Ref<NSString> description = changing->description();
    changing->appendString(u"!"_ns);
    EXPECT_EQ(copy, text);
    EXPECT_EQ(description, text);
    EXPECT_TRUE(copy->isMemberOfClass(NSString::classObject()));
    EXPECT_TRUE(text->mutableCopy()->isMemberOfClass(NSMutableString::classObject()));
}

TEST(NSString, ReadsNumbersWithoutLocale) {
    const struct {
        const char16_t* text;
        int intValue;
        NSInteger integerValue;
        double doubleValue;
        bool boolValue;
    } rows[] = {
        {u"", 0, 0, 0, false},
        {u" \t\n\u00A042 apples", 42, 42, 42, true},
        {u"+5.75e1x", 5, 5, 57.5, true},
        {u"2147483648", 2147483647, 2147483648, 2147483648.0, true},
        {u"-9223372036854775808", -2147483647 - 1, std::numeric_limits<NSInteger>::min(), -0x1p63, true},
        {u"99999999999999999999", 2147483647, std::numeric_limits<NSInteger>::max(), 1e20, true},
        {u".5", 0, 0, 0.5, false},
        {u"5.", 5, 5, 5, true},
        {u"1,5", 1, 1, 1, true},
        {u"1e", 1, 1, 1, true},
        {u"0x10", 0, 0, 0, false},
        {u"--1", 0, 0, 0, false},
        {u"nan", 0, 0, 0, false},
        {u"1e400", 1, 1, HUGE_VAL, true},
        {u"-0.001e400", 0, 0, -HUGE_VAL, false},
        {u"1e-400", 1, 1, 0, true},
        {u"1e99999999999999999999", 1, 1, HUGE_VAL, true},
        {u"1e-99999999999999999999", 1, 1, 0, true},
        {u" -00Yes", 0, 0, 0, true},
        {u"true", 0, 0, 0, true},
        {u"0no", 0, 0, 0, false},
    };
    for (const auto& row : rows) {
        const Ref<NSString> text = box(row.text);
        EXPECT_EQ(text->intValue(), row.intValue) << text;
        EXPECT_EQ(text->integerValue(), row.integerValue) << text;
        EXPECT_EQ(text->doubleValue(), row.doubleValue) << text;
        EXPECT_EQ(text->boolValue(), row.boolValue) << text;
    }
    EXPECT_EQ(u"1e9223372036854775807"_ns->doubleValue(), HUGE_VAL);
    EXPECT_EQ(u"0.01e-9223372036854775808"_ns->doubleValue(), 0);
    EXPECT_EQ(u"1.5e3-7"_ns->doubleValue(), 1500);
    EXPECT_EQ(box(std::u16string(u"0.").append(400, u'0').append(u"1e401"))->doubleValue(), 1);
}

TEST(NSString, TrimsWhiteSpaceOfUnicode) {
    EXPECT_EQ(*u"\u3000\u2029\r\n a b\u00A0\t\x85"_ns->stringByTrimmingWhitespace(), u"a b");
    EXPECT_EQ(u" \t"_ns->stringByTrimmingWhitespace()->length(), 0U);
    EXPECT_EQ(*u"\u200B"_ns->stringByTrimmingWhitespace(), u"\u200B");
}

TEST(NSString, AnswersItsSelectors) {
    EXPECT_EQ(send<NSRange>(u"Text"_ns, "rangeOfString:"_sel, u"x"_ns), (NSRange{2, 1}));
    EXPECT_EQ(send(NSString::classObject(), "stringWithString:"_sel, u"Text"_ns), u"Text"_ns);
}

TEST(NSMutableString, ChangesInPlace) {
    const Ref<NSMutableString> text = NSMutableString::string();
    text->appendString(u"bd"_ns);
    text->insertString_atIndex(u"c"_ns, 1);
    text->insertString_atIndex(u"a"_ns, 0);
    text->appendFormat(u"%@%d", u"e"_ns, 5);
    EXPECT_EQ(*text, u"abcde5");
    text->replaceCharactersInRange_withString({1, 3}, u"-"_ns);
    EXPECT_EQ(*text, u"a-e5");
    text->replaceCharactersInRange_withString({1, 1}, u"bcd"_ns);
    text->deleteCharactersInRange({5, 1});
    EXPECT_EQ(*text, u"abcde");
    text->setString(u"new"_ns);
    EXPECT_EQ(*text, u"new");
}

TEST(NSMutableString, TakesPartsOfItself) {
    const Ref<NSMutableString> text = NSMutableString::stringWithString(u"abc"_ns);
    text->appendString(text);
    text->insertString_atIndex(text, 3);
    EXPECT_EQ(*text, u"abcabcabcabc");
    text->replaceCharactersInRange_withCharacters({0, 9}, text->view().substr(1, 4));
    EXPECT_EQ(*text, u"bcababc");
    text->replaceOccurrencesOfString_withString_options_range(u"b"_ns, text, NSLiteralSearch, {0, 3});
    EXPECT_EQ(*text, u"bcababccababc");
    text->setString(text);
    EXPECT_EQ(*text, u"bcababccababc");
}

TEST(StringBuilder, MovesFromItsOwnRoomToTheHeapAndStartsAfresh) {
    StringBuilder builder;
    std::u16string expected;
    for (char16_t i = 0; i < 500; ++i) {
        builder.append(i).append(builder.view().substr(0, 1)).append(2, u'-');
        expected += {i, u'\0', u'-', u'-'};
    }
    builder.insert(1, 3, u'+');
    expected.insert(1, 3, u'+');
    EXPECT_EQ(builder.string()->view(), expected);
    EXPECT_EQ(builder.string()->length(), 0U);
    builder.appendCodePoint(0x1F600).appendCodePoint(0x110000).appendUTF8("\u00E9").appendASCII("!");
    EXPECT_EQ(builder.string()->view(), u"\U0001F600\uFFFD\u00E9!");
}

TEST(Values, CompareHashPrintAndConvertLikeCPlusPlusValues) {
    const Ref<NSString> one = box(u"\u00E9t\u00E9"), same = NSString::fromUTF8("\u00E9t\u00E9");
    const RefPtr<NSString> nothing;
    EXPECT_EQ(one, same);
    EXPECT_EQ(id(one), same);
    EXPECT_EQ(one, *same);
    EXPECT_EQ(nothing, id());
    EXPECT_NE(nothing, same);
    EXPECT_NE(id(same), nothing);
    EXPECT_NE(id(NSNumber::numberWithInt(1)), u"1"_ns);
    const std::unordered_set<Ref<NSString>> known{one};
    EXPECT_TRUE(known.contains(same));
    EXPECT_EQ(std::hash<id>()(id(one)), std::hash<Ref<NSString>>()(same));
    std::ostringstream out;
    out << one << ' ' << *NSNumber::numberWithInt(5) << ' ' << nothing;
    EXPECT_EQ(out.str(), "\u00E9t\u00E9 5 (null)");
    const std::filesystem::path path = "/a/\u00E9.txt";
    EXPECT_EQ(filesystemPath(stringWithPath(path)), path);
}

TEST(Values, ALiteralIsOneObject) {
    const auto make = [] { return u"once"_ns; };
    EXPECT_TRUE(identical(make().get(), make().get()));
}
