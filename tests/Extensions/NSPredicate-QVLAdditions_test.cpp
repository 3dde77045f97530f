#include <ToviFoundationKit/Extensions/NSPredicate-QVLAdditions.h>

#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/Letter.h>
#include <support/Place.h>

using namespace tovi;

namespace {

/// 3 March 2026, 15:30 in Berlin, where it is an hour later than in GMT.
constexpr double now = 794'241'000;
constexpr double today = now - 15.5 * 3600;

class RelativeDatesInPredicates : public testing::Test {
protected:
    RelativeDatesInPredicates() { resetGregorianDefaultTimeZone(); }

    FixedClock clock{now};
    ScopedClock scopedClock{clock};
    ScopedTimeZone zone{u"Europe/Berlin"};
    ScopedLocale locale{u"en_US"};
    Ref<NSCalendar> calendar = gregorian();
};

std::string rewritten(std::u16string_view format) {
    resetGregorianDefaultTimeZone();
    return predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(format)->predicateFormat()->UTF8String();
}

std::string constant(double seconds) {
    return NSString::stringWithFormat(u"CAST(%f, \"NSDate\")", seconds)->UTF8String();
}

}  // namespace

TEST_F(RelativeDatesInPredicates, AreTheBoundsOfDays) {
    const double start = today, end = today + 86399, day = 86400;
    const std::pair<std::u16string_view, std::string> rows[] = {
        {u"a == 1", "a == 1"},
        {u"d >= $0_start AND d <= $0_end", "d >= " + constant(start) + " AND d <= " + constant(end)},
        {u"d <= $0_end AND d >= $0_start", "d <= " + constant(end) + " AND d >= " + constant(start)},
        {u"d IN {$-1_start, $1_end, $-1_start}",
         "d IN {" + constant(start - day) + ", " + constant(end + day) + ", " + constant(start - day) + "}"},
        {u"d == $today_start OR d == $_start OR d == $ +2x_start",
         "d == " + constant(start) + " OR d == " + constant(start) + " OR d == " + constant(start + 2 * day)},
        // The clocks go forward on 29 March.
        {u"d BETWEEN {$26_start, $26_end}",
         "d BETWEEN {" + constant(start + 26 * day) + ", " + constant(end + 26 * day - 3600) + "}"},
        // A variable in front becomes part of the token; one behind does not.
        {u"d > $0_start AND d == $x", "d > " + constant(start) + " AND d == $x"},
        {u"d == $x AND d > $7_start", "d == " + constant(start)},
        {u"d > $5_end AND e == $x AND d < $5_end",
         "d > " + constant(end + 5 * day) + " AND e == $x AND d < " + constant(end + 5 * day)},
        {u"d > $5_end AND e == $x AND d < $6_end", "d > " + constant(end + 5 * day) + " AND e == " + constant(end)},
    };
    for (const auto& [format, written] : rows)
        EXPECT_EQ(rewritten(format), written);
    const auto predicate = predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(
        u"date BETWEEN {$0_start, $0_end} AND sender == %@ AND %d == 2", u"Ann", 2);
    EXPECT_TRUE(predicate->evaluateWithObject(*Letter::make(u"Ann", 1, start)));
    EXPECT_TRUE(predicate->evaluateWithObject(*Letter::make(u"Ann", 1, end)));
    EXPECT_FALSE(predicate->evaluateWithObject(*Letter::make(u"Ann", 1, end + 1)));
    EXPECT_FALSE(predicate->evaluateWithObject(*Letter::make(u"Bob", 1, end)));
}

TEST_F(RelativeDatesInPredicates, MarkersOutsideTokensRaise) {
    for (const std::u16string_view format :
         {u"date_start == 1", u"date_start == 1 AND d > $0_start", u"d > $0_start AND date_end == 1", u"_end == $1"})
        EXPECT_RAISES(predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(format),
                      NSInvalidArgumentException, "does not belong to a relative date such as $0_");
    EXPECT_RAISES(predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(u"d > $0_start AND"),
                  NSInvalidArgumentException, "an expression is expected at");
}

TEST_F(RelativeDatesInPredicates, AreShownAsDates) {
    const auto shown = [](std::u16string_view format) {
        return qvlDescription(NSPredicate::predicateWithFormat(format))->UTF8String();
    };
    EXPECT_EQ(shown(u"a == 1 OR b CONTAINS[c] 'x'"), "a == 1 OR b CONTAINS[c] \"x\"");
    EXPECT_EQ(shown(u"d >= CAST(0,'NSDate') AND d < CAST(794241000.75,'NSDate') AND e != CAST(0, 'NSDate')"),
              "d >= 2001-01-01 01:00:00 +0100(GMT+1) AND d < 2026-03-03 15:30:00 +0100(GMT+1) AND "
              "e != 2001-01-01 01:00:00 +0100(GMT+1)");
    EXPECT_EQ(shown(u"d == CAST(CAST(0, 'NSDate'), 'NSDate')"), "d == 2001-01-01 01:00:00 +0100(GMT+1), \"NSDate\")");
    EXPECT_RAISES(shown(u"d == CAST(a, 'NSString')"), NSRangeException, "");
    EXPECT_EQ(
        *send<id>(predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(u"d == 1"), "qvlDescription"_sel),
        *u"d == 1"_ns);
}
