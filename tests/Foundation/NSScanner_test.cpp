#include <climits>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <gtest/gtest.h>

using namespace tovi;

namespace {

Ref<NSScanner> over(std::u16string_view text) { return NSScanner::scannerWithString(box(text)); }

}  // namespace

TEST(NSScanner, readsPieceByPiece) {
    const auto scanner = over(u"  Width: -12 px,0xFf 2.5e1!");
    RefPtr<NSString> text;
    int integer = 0;
    unsigned hexadecimal = 0;
    double real = 0;
    EXPECT_TRUE(scanner->scanUpToString_intoString(u":"_ns, &text));
    EXPECT_EQ(*text, u"Width");
    EXPECT_FALSE(scanner->scanInt(&integer));
    EXPECT_TRUE(scanner->scanString_intoString(u":"_ns));
    EXPECT_TRUE(scanner->scanInt(&integer));
    EXPECT_EQ(integer, -12);
    EXPECT_TRUE(scanner->scanString_intoString(u"PX"_ns, &text));
    EXPECT_EQ(*text, u"px");
    scanner->setCaseSensitive(true);
    EXPECT_FALSE(scanner->scanString_intoString(u",0X"_ns));
    EXPECT_TRUE(scanner->scanString_intoString(u","_ns));
    EXPECT_TRUE(scanner->scanHexInt(&hexadecimal));
    EXPECT_EQ(hexadecimal, 255U);
    EXPECT_TRUE(scanner->scanDouble(&real));
    EXPECT_EQ(real, 25);
    EXPECT_FALSE(scanner->isAtEnd());
    EXPECT_EQ(scanner->scanLocation(), 26U);
    EXPECT_TRUE(scanner->scanUpToString_intoString(u"?"_ns, nullptr));
    EXPECT_FALSE(scanner->scanUpToString_intoString(u"?"_ns, nullptr));
    EXPECT_THROW(scanner->setScanLocation(28), NSException);
}

TEST(NSScanner, clampsNumbers) {
    const auto integer = [](std::u16string_view text) {
        int value = 7;
        return over(text)->scanInt(&value) ? value : 7;
    };
    EXPECT_EQ(integer(u"2147483648"), INT_MAX);
    EXPECT_EQ(integer(u"-99999999999999999999"), INT_MIN);
    EXPECT_EQ(integer(u"+5"), 5);
    EXPECT_EQ(integer(u"- 5"), 7);
    NSInteger whole = 0;
    EXPECT_TRUE(over(u"-9223372036854775809")->scanInteger(&whole));
    EXPECT_EQ(whole, LONG_MIN);
    unsigned hexadecimal = 0;
    EXPECT_TRUE(over(u"100000000")->scanHexInt(&hexadecimal));
    EXPECT_EQ(hexadecimal, UINT_MAX);
    const auto prefixOnly = over(u"0xg");
    EXPECT_TRUE(prefixOnly->scanHexInt(&hexadecimal));
    EXPECT_EQ(hexadecimal, 0U);
    EXPECT_EQ(prefixOnly->scanLocation(), 1U);
    EXPECT_FALSE(over(u"e5")->scanDouble(nullptr));
}

TEST(NSScanner, skipsAndStopsAtCharactersOfASet) {
    const auto scanner = over(u"ab\U0001F600 cd;");
    scanner->setCharactersToBeSkipped(nullptr);
    RefPtr<NSString> text;
    const auto smile = NSCharacterSet::characterSetWithCharactersInString(u"\U0001F600;"_ns);
    EXPECT_TRUE(scanner->scanUpToCharactersFromSet_intoString(smile, &text));
    EXPECT_EQ(*text, u"ab");
    EXPECT_TRUE(scanner->scanCharactersFromSet_intoString(smile, &text));
    EXPECT_EQ(text->length(), 2U);
    EXPECT_FALSE(scanner->scanCharactersFromSet_intoString(NSCharacterSet::letterCharacterSet(), &text));
    EXPECT_TRUE(scanner->scanCharactersFromSet_intoString(smile->invertedSet(), &text));
    EXPECT_EQ(*text, u" cd");
    EXPECT_TRUE(over(u" \n\u2028\u00A0")->isAtEnd());
}

TEST(NSCharacterSet, hasMembers) {
    EXPECT_TRUE(NSCharacterSet::decimalDigitCharacterSet()->longCharacterIsMember(0x1D7D8));
    EXPECT_FALSE(NSCharacterSet::whitespaceCharacterSet()->characterIsMember(u'\n'));
    const auto set = NSCharacterSet::characterSetWithCharactersInString(u"a\xD83Dz"_ns);
    EXPECT_TRUE(set->characterIsMember(0xD83D));
    EXPECT_EQ(set->invertedSet()->invertedSet(), set);
    EXPECT_EQ(NSCharacterSet::characterSetWithRange({'a', 3})->description(), u"[a-c]");
    EXPECT_FALSE(NSCharacterSet::characterSetWithRange({'a', 0})->characterIsMember(u'a'));
    EXPECT_THROW(NSCharacterSet::characterSetWithRange({0x10FFFF, 2}), NSException);
}
