#include <ToviFoundationKit/Runtime/NSFormat.h>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <ToviFoundationKit/Runtime/NSNumber.h>

using namespace tovi;

namespace {

template <class... A> std::string format(std::u16string_view text, const A&... arguments) {
    return NSString::stringWithFormat(text, arguments...)->UTF8String();
}

TEST(NSFormat, PrintsIntegersAsC) {
    EXPECT_EQ(format(u"%d %i %u %x %X %o", 1, -2, 3U, 255, 255, 8), "1 -2 3 ff FF 10");
    EXPECT_EQ(format(u"%5d|%-5d|%05d|%+d|% d|%'d", 42, 42, -42, 42, 42, 4200), "   42|42   |-0042|+42| 42|4200");
    EXPECT_EQ(format(u"%.3d|%6.3d|%-6.3d|%06.3d|%.0d|%+.0d", 7, 7, 7, 7, 0, 0), "007|   007|007   |   007||+");
    EXPECT_EQ(format(u"%#x %#X %#o %#x %#.0o %#08x", 255, 255, 8, 0, 0, 255), "0xff 0XFF 010 0 0 0x0000ff");
    EXPECT_EQ(format(u"%*d|%-*d|%*d|%.*d|%.*d", 4, 1, 4, 2, -4, 3, 3, 4, -3, 5), "   1|2   |3   |004|5");
}

TEST(NSFormat, KnowsTheSizesOfItsArguments) {
    EXPECT_EQ(format(u"%x %x %x %x", -1, short(-1), static_cast<signed char>(-1), -1LL),
              "ffffffff ffff ff ffffffffffffffff");
    EXPECT_EQ(format(u"%hhx %hx %lx %qx %jx %zx %tx", -1, -1, -1, -1, -1, -1, -1),
              "ff ffff ffffffffffffffff ffffffffffffffff ffffffffffffffff ffffffffffffffff ffffffffffffffff");
    EXPECT_EQ(format(u"%hhd %hd %hhu %u %U", 300, 70000, 300, -1, -1), "44 4464 44 4294967295 18446744073709551615");
    EXPECT_EQ(format(u"%d %lld %llu", ~0ULL, ~0ULL, ~0ULL), "18446744073709551615 -1 18446744073709551615");
    EXPECT_EQ(format(u"%d %D", std::numeric_limits<NSInteger>::min(), NSNotFound),
              "-9223372036854775808 9223372036854775807");
}

TEST(NSFormat, PrintsRealNumbersAsC) {
    EXPECT_EQ(format(u"%f %.2f %.0f %e %E %g %g %G", 1.5, 2.375, 2.5, 12345.678, 0.0, 1e-5, 100000.0, 1e20),
              "1.500000 2.38 2 1.234568e+04 0.000000E+00 1e-05 100000 1E+20");
    EXPECT_EQ(format(u"%8.2f|%-8.2f|%08.2f|%+.1f|% .1f", -3.14159, 2.5, -2.5, 2.0, 2.0),
              "   -3.14|2.50    |-0002.50|+2.0| 2.0");
    EXPECT_EQ(format(u"%#.0f %#.0e %#g %#.3g %#.3g %#.3g", 3.0, 3.0, 1.0, 1e10, 0.0001, 0.00001),
              "3. 3.e+00 1.00000 1.00e+10 0.000100 1.00e-05");
    EXPECT_EQ(format(u"%a %A %.1a %#a %012a", 1.5, -1.5, 1.0, 1.0, 1.5),
              "0x1.8p+0 -0X1.8P+0 0x1.0p+0 0x1.p+0 0x00001.8p+0");
    EXPECT_EQ(format(u"%f %F %e %+g %05f %-5f|", HUGE_VAL, -HUGE_VAL, std::nan(""), HUGE_VAL, HUGE_VAL, std::nan("")),
              "inf -INF nan +inf   inf nan  |");
    EXPECT_EQ(format(u"%.1f %.0f %f", -0.04, -0.4, -0.0), "-0.0 -0 -0.000000");
    EXPECT_EQ(format(u"%.320f", std::numeric_limits<double>::max()).size(), 309U + 1 + 320);
}

TEST(NSFormat, PrintsTextsCharactersAndPointers) {
    EXPECT_EQ(format(u"%@ %s %S", u"\u00E9"_ns, "\u20AC", u"\U0001F600"), "\u00E9 \u20AC \U0001F600");
    EXPECT_EQ(format(u"%@ %@ %s %p %p", nullptr, id(), static_cast<const char*>(nullptr), nullptr,
                     reinterpret_cast<void*>(0x1F)),
              "(null) (null) (null) 0x0 0x1f");
    EXPECT_EQ(format(u"%c%C%c%C%C", 'a', u'\u00E9', 0x1F600, char16_t(0xD83D), char16_t(0xDE00)),
              "a\u00E9\U0001F600\U0001F600");
    EXPECT_EQ(format(u"%c|%3c|%-3c|%c", static_cast<char>(0xE9), 'x', 'y', -1), "\u00E9|  x|y  |\uFFFD");
    EXPECT_EQ(format(u"%5s|%-5s|%.2s|%.*s|%.s|", "\u00E9t", "\u00E9t", "abc", 1, "abc", "abc"),
              "   \u00E9t|\u00E9t   |ab|a||");
    EXPECT_EQ(format(u"%.1s|%.2s", "\U0001F600x", "\U0001F600x"), "|\U0001F600") << "a surrogate pair is not split";
    EXPECT_EQ(format(u"%@ %s", "copy:"_sel, NSString::classObject()), "copy: NSString");
}

TEST(NSFormat, ConvertsArgumentsOfOtherTypes) {
    EXPECT_EQ(format(u"%@ %@ %@ %s %@ %@", 3.5, -7, true, 0.1, u'\u00E9', ~0ULL),
              "3.5 -7 1 0.1 \u00E9 18446744073709551615");
    EXPECT_EQ(format(u"%d %x %d %d %u", 3.99, -1.5, 1e300, std::nan(""), 1e19),
              "3 ffffffffffffffff 9223372036854775807 0 10000000000000000000");
    EXPECT_EQ(format(u"%@ %s %hhx", NSNumber::numberWithFloat(0.1F), NSNumber::numberWithBool(true), 1e19), "0.1 1 0");
    EXPECT_EQ(format(u"%f %.1f %.1f %g", 3, u'a', ~0ULL, true), "3.000000 97.0 18446744073709551616.0 1");
    EXPECT_EQ(format(u"%d %f %x %g", " 12 apples", u"1.5e1x", u"255"_ns, "x"), "12 15.000000 ff 0");
    EXPECT_EQ(format(u"%d %x %f %u", NSNumber::numberWithInt(-1), NSNumber::numberWithInt(-1),
                     NSNumber::numberWithDouble(2.5), NSNumber::numberWithUnsignedLongLong(~0ULL)),
              "-1 ffffffff 2.500000 18446744073709551615");
    EXPECT_EQ(format(u"%c%c%c|", "\u00E9t", u"\U0001F600x", u""_ns), "\u00E9\U0001F600|");
    const Ref<NSNumber> number = NSNumber::numberWithInt(1);
    EXPECT_EQ(format(u"%p", number), format(u"0x%llx", reinterpret_cast<std::uintptr_t>(number.get())));
    EXPECT_EQ(format(u"%p", NSString::classObject()), format(u"0x%x", NSString::classObject()));
}

TEST(NSFormat, TakesArgumentsByPosition) {
    EXPECT_EQ(format(u"%2$@ %1$@ %2$@", 5, u"two"_ns), "two 5 two");
    EXPECT_EQ(format(u"%1$*2$d|%1$-*2$d|%1$.*2$f", 7, 3), "  7|7  |7.000");
    EXPECT_EQ(format(u"%2$d %d %d", 1, 2), "2 1 2") << "positions leave the order alone";
}

TEST(NSFormat, PrintsAsItStandsWhatHasNoArgumentOrNoMeaning) {
    EXPECT_EQ(format(u"%@,%@ worst", 1), "1,%@ worst");
    EXPECT_EQ(format(u"%d %-08.3lld %3$@ %*d %.*f"), "%d %-08.3lld %3$@ %*d %.*f");
    EXPECT_EQ(format(u"%*d|%2$*1$d", 5), "%*d|%2$*1$d");
    EXPECT_EQ(format(u"100%% %5% %y %-l! %0$d %$d %", 1), "100% % %y %-l! %0$d %$d %");
    EXPECT_EQ(format(u"%\u00E9%d%", 1), "%\u00E91%");
    EXPECT_EQ(format(u"%n", 1), "%n");
    EXPECT_EQ(format(u"%@", u"%d%n"_ns), "%d%n");
    EXPECT_EQ(format(u"%18446744073709551617$d", 1), "%18446744073709551617$d");
}

TEST(NSFormat, BoundsWidthsAndPrecisions) {
    EXPECT_EQ(format(u"%999999999999d", 1), std::string(4094, ' ').append("1"));
    EXPECT_EQ(format(u"%.999999999999d", 1), std::string(4094, '0').append("1"));
    EXPECT_EQ(format(u"%.999999999999f", 0.0).size(), 4095U + 2);
    EXPECT_EQ(format(u"%.999999999999e", 1.0).size(), 4095U + 6);
    EXPECT_EQ(format(u"%*d", std::numeric_limits<NSInteger>::min(), 1), std::string("1").append(4094, ' '));
    EXPECT_EQ(format(u"%.999999999999s", std::string(5000, 'x')).size(), 5000U);
}

}  // namespace
