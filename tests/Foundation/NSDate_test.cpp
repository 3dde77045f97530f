#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

using namespace tovi;
using namespace std::chrono_literals;

namespace {

Ref<NSDate> at(double seconds) { return NSDate::dateWithTimeIntervalSinceReferenceDate(seconds); }
const double infinity = std::numeric_limits<double>::infinity();
const double notANumber = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST(NSDate, IsDescribedInGMTAndFarDatesInSeconds) {
    const std::pair<double, std::u16string_view> rows[] = {
        {0, u"2001-01-01 00:00:00 +0000"},
        {-0.25, u"2000-12-31 23:59:59 +0000"},
        {817074000.5, u"2026-11-22 21:00:00 +0000"},
        {-978307200, u"1970-01-01 00:00:00 +0000"},
        {-63113904000, u"0001-01-01 00:00:00 +0000"},
        {-63113904001, u"0000-12-31 23:59:59 +0000"},
        {94670812799, u"5000-12-31 23:59:59 +0000"},
        {3155695200000.0, u"102001-01-01 00:00:00 +0000"},
        {5e20, u"5e+20 seconds since 2001-01-01 00:00:00 +0000"},
        {-infinity, u"-inf seconds since 2001-01-01 00:00:00 +0000"},
    };
    for (const auto& [seconds, text] : rows)
        EXPECT_EQ(*at(seconds)->description(), text);
    EXPECT_EQ(*NSDate::distantFuture()->description(), u"4001-01-01 00:00:00 +0000");
}

TEST(NSDate, ComparesNaNBeforeEverythingElse) {
    EXPECT_EQ(at(notANumber)->compare(at(-infinity)), NSOrderedAscending);
    EXPECT_EQ(at(-infinity)->compare(at(notANumber)), NSOrderedDescending);
    EXPECT_EQ(at(notANumber), at(-notANumber));
    EXPECT_EQ(at(notANumber)->hash(), at(-notANumber)->hash());
    EXPECT_EQ(at(0.0), at(-0.0));
    EXPECT_EQ(at(0.0)->hash(), at(-0.0)->hash());
    EXPECT_EQ(*at(1)->earlierDate(at(2)), *at(1));
    EXPECT_EQ(*at(1)->laterDate(at(2)), *at(2));
}

TEST(NSDate, FollowsTheClockAndTheStandardLibrary) {
    const FixedClock clock(100);
    const ScopedClock scope(clock);
    EXPECT_EQ(NSDate::date(), at(100));
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceNow(-40), at(60));
    EXPECT_EQ(at(130)->timeIntervalSinceNow(), 30);
    EXPECT_EQ(NSDate::dateWithTimeIntervalSince1970(978307201.5), at(1.5));
    const std::chrono::system_clock::time_point time(978307201s + 500ms);
    EXPECT_EQ(NSDate::dateWithTimePoint(time), at(1.5));
    EXPECT_EQ(at(1.5)->timePoint(), time);
    EXPECT_EQ(at(infinity)->timePoint(), std::chrono::system_clock::time_point::max());
    EXPECT_EQ(at(-1e300)->timePoint(), std::chrono::system_clock::time_point::min());
    EXPECT_EQ(at(notANumber)->timePoint(), std::chrono::system_clock::time_point());
}
