#include <ToviFoundationKit/ToviFoundationKit.h>

#include <chrono>
#include <cmath>
#include <thread>

#include <gtest/gtest.h>

#include <support/Expect.h>
#include <support/Place.h>

using namespace tovi;

namespace {

/// The shared calendar in another zone for as long as it lives.
class Zone {
public:
    explicit Zone(std::u16string_view name) : zone_(name) { gregorian(), resetGregorianDefaultTimeZone(); }
    ~Zone() {
        NSTimeZone::setDefaultTimeZone(nullptr);
        resetGregorianDefaultTimeZone();
    }

private:
    ScopedTimeZone zone_;
};

Ref<NSDate> local(NSInteger year, NSInteger month, NSInteger day, NSInteger hour = 0, NSInteger minute = 0) {
    return dateIn(gregorian(), year, month, day, hour, minute);
}

bool same(const NSObject& a, const NSObject& b) { return &a == &b; }

/// "2024-01-31 14:05" in a calendar.
std::string told(const NSDate& date, const NSCalendar& calendar = gregorian()) {
    const auto parts = calendar.components_fromDate(NSCalendarUnit(4 | 8 | 16 | 32 | 64), date);
    return NSString::stringWithFormat(u"%04ld-%02ld-%02ld %02ld:%02ld", parts->year(), parts->month(), parts->day(),
                                      parts->hour(), parts->minute())
        ->UTF8String();
}

/// "first ... last (count)", days only; "nil".
std::string told(const RefPtr<NSMutableArray>& dates, const NSCalendar& calendar = gregorian()) {
    if (!dates)
        return "nil";
    const auto day = [&](NSUInteger i) { return told(*to<NSDate>(dates->objectAtIndex(i)), calendar); };
    return day(0) + " ... " + day(dates->count() - 1) + " (" + std::to_string(dates->count()) + ")";
}

}  // namespace

TEST(Week, countsAsISO8601Does) {
    EXPECT_EQ(weekDay(1, 1, 2024), 0);
    EXPECT_EQ(weekDay(7, 1, 2024), 6);
    EXPECT_EQ(week(1, 1, 2021), 202053);
    EXPECT_EQ(week(30, 12, 2019), 202001);
    EXPECT_EQ(week(31, 12, 2026), 53);
    EXPECT_EQ(week(1, 1, 2024), 1);
    // The Thursday says to which year a week belongs, and which it is.
    using namespace std::chrono;
    for (sys_days each = year(1) / 1 / 1; each < sys_days(year(4001) / 1 / 1); each += days(1)) {
        const year_month_day date(each);
        const auto weekday = static_cast<int>(std::chrono::weekday(each).iso_encoding()) - 1;
        const sys_days thursday = each + days(3 - weekday);
        const auto owner = year_month_day(thursday).year();
        const auto number = (thursday - sys_days(owner / 1 / 1)).count() / 7 + 1;
        const NSInteger y = int(date.year()), m = unsigned(date.month()), d = unsigned(date.day());
        ASSERT_EQ(weekDay(d, m, y), weekday) << y << ' ' << m << ' ' << d;
        ASSERT_EQ(week(d, m, y), owner == date.year() ? number : int(owner) * 100 + number)
            << y << ' ' << m << ' ' << d;
    }
    for (const std::int64_t extreme : {INT64_MIN, INT64_MAX})
        EXPECT_NO_FATAL_FAILURE((week(extreme, extreme, extreme), weekDay(extreme, extreme, extreme)));
}

TEST(DateAdditions, shareCalendarsOnTheMainThread) {
    EXPECT_TRUE(same(gregorian(), gregorian()));
    EXPECT_TRUE(same(gregorianGMT(), gregorianGMT()));
    EXPECT_FALSE(same(gregorian(), isogregorian()));
    EXPECT_EQ(isogregorian()->firstWeekday(), 2U);
    EXPECT_EQ(gregorianGMT()->timeZone()->secondsFromGMT(), 0);
    RefPtr<NSCalendar> other, again;
    std::thread([&] { other = gregorian(), again = gregorian(), resetGregorianDefaultTimeZone(); }).join();
    EXPECT_FALSE(same(*other, *again) || same(*other, gregorian()));
}

TEST(DateAdditions, followTheDefaultZoneWhenAsked) {
    isogregorian();
    const auto isoZone = isogregorian()->timeZone(), zone = gregorian()->timeZone();
    NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName(u"Pacific/Apia"_ns));
    EXPECT_EQ(gregorian()->timeZone(), zone);
    resetGregorianDefaultTimeZone();
    EXPECT_EQ(gregorian()->timeZone()->name(), u"Pacific/Apia");
    EXPECT_EQ(isogregorian()->timeZone(), isoZone);
    NSTimeZone::setDefaultTimeZone(nullptr);
    resetGregorianDefaultTimeZone();
}

TEST(DateAdditions, takeNoonOfTheLocalDay) {
    const Zone zone(u"Pacific/Kiritimati");
    EXPECT_EQ(gmtDateFromDate(local(2024, 3, 1, 0, 30))->description(), u"2024-03-01 12:00:00 +0000");
    EXPECT_FALSE(gmtDateFromDate(nullptr));
    EXPECT_FALSE(gmtDateFromDate(NSDate::dateWithTimeIntervalSinceReferenceDate(std::nan(""))));
}

TEST(DateAdditions, listTheDaysOfAWeek) {
    const Zone zone(u"Europe/Berlin");
    EXPECT_EQ(told(dateArrayWithWeekNumber_andYear_andWeekStartsOn(1, 2024, 0)),
              "2023-12-31 00:00 ... 2024-01-06 00:00 (7)");
    EXPECT_EQ(told(dateArrayWithWeekNumber_andYear_andWeekStartsOnMonday(13, 2024, true)),
              "2024-03-25 00:00 ... 2024-03-31 00:00 (7)");
    EXPECT_EQ(told(dateArrayWithWeekNumber_andYear_andWeekStartsOn(54, 2024, 0)), "nil");
    EXPECT_EQ(told(dateArrayWithWeekNumber_andYear_andWeekStartsOn(1, 0, 9)), "nil");
    EXPECT_THROW(dateArrayWithWeekNumber_andYear_andWeekStartsOn(1, 1, 7), NSException);
}

TEST(DateAdditions, listTheDaysOfAnISOWeek) {
    const auto monday = [](NSInteger week, NSInteger year) {
        return to<NSDate>(dateArrayWithISOWeekNumber_andYear(week, year)->objectAtIndex(0));
    };
    EXPECT_EQ(told(monday(1, 2021), isogregorian()), "2021-01-04 00:00");
    EXPECT_EQ(told(monday(1, 2026), isogregorian()), "2025-12-29 00:00");
    EXPECT_EQ(told(dateArrayWithISOWeekNumber_andYear(0, 2026)), "nil");
    EXPECT_EQ(told(dateArrayWithISOWeekNumber_andYear(1, -1)), "nil");
    for (NSInteger year = 1990; year < 2030; ++year)
        EXPECT_EQ(ISOWeekOfYear(monday(20, year)), 20) << year;
}

TEST(DateAdditions, numberTheWeeksOfAYear) {
    const Zone zone(u"America/New_York");
    EXPECT_EQ(weekOfYearAndStartsOn(local(2024, 1, 1), 0), 1);
    EXPECT_EQ(weekOfYearAndStartsOn(local(2024, 1, 6, 23), 0), 1);
    EXPECT_EQ(weekOfYearAndStartsOn(local(2024, 1, 7), 0), 2);
    EXPECT_EQ(weekOfYearAndStartsOnMonday(local(2024, 1, 7), true), 1);
    EXPECT_EQ(weekOfYearAndStartsOnMonday(local(2023, 1, 2), true), 2);
    EXPECT_EQ(weekOfYearAndStartsOn(local(2024, 12, 31), 1), 53);
    EXPECT_THROW(weekOfYearAndStartsOn(local(2024, 1, 1), -1), NSException);
}

TEST(DateAdditions, knowNoWeeksOfWhatIsNoDate) {
    const auto nan = NSDate::dateWithTimeIntervalSinceReferenceDate(std::nan(""));
    EXPECT_EQ(weekOfYearAndStartsOn(nan, 1), NSNotFound);
    EXPECT_EQ(ISOWeekOfYear(nan), NSNotFound);
    EXPECT_EQ(dateMonthArray(nan)->count(), 0U);
    for (const NSInteger year : {NSInteger{6'000'000}, NSInteger{INT64_MAX}}) {
        EXPECT_EQ(told(dateArrayWithWeekNumber_andYear_andWeekStartsOn(1, year, 0)), "nil");
        EXPECT_EQ(told(dateArrayWithISOWeekNumber_andYear(1, year)), "nil");
    }
}

TEST(DateAdditions, takeEveryFourthYearForALeapYear) {
    const Zone zone(u"GMT");
    EXPECT_TRUE(dayInsideMonth(local(1900, 2, 1), 29));
    EXPECT_FALSE(dayInsideMonth(local(2023, 2, 1), 29));
    EXPECT_FALSE(dayInsideMonth(local(2023, 4, 1), 31) || dayInsideMonth(local(2023, 5, 1), 32) ||
                 dayInsideMonth(local(2023, 5, 1), 0));
    EXPECT_EQ(told(dateMonthArray(local(2023, 4, 17, 8))), "2023-04-02 00:00 ... 2023-04-30 00:00 (29)");
    EXPECT_EQ(told(dateMonthArray(local(2100, 2, 1))), "2100-02-02 00:00 ... 2100-03-01 00:00 (28)");
}

TEST(DateAdditions, addAsTheCalendarDoes) {
    const Zone zone(u"Europe/Berlin");
    EXPECT_EQ(told(dateByAddingYears_months_days_hours_minutes_seconds(local(2024, 1, 31, 9), 0, 1, 0, 0, 0, 0)),
              "2024-02-29 09:00");
    EXPECT_EQ(told(dateByAddingYears_months_days_hours_minutes_seconds(local(2024, 3, 30, 9), 0, 0, 1, 0, 0, 0)),
              "2024-03-31 09:00");
    EXPECT_EQ(told(dateByAddingYears_months_days_hours_minutes_seconds(local(2024, 3, 30, 9), 0, 0, 0, 24, 0, 60)),
              "2024-03-31 10:01");
    EXPECT_EQ(
        told(dateByAddingYears_months_days_hours_minutes_seconds_GMT(local(2024, 3, 30, 9), 0, 0, 1, 0, 0, 0, true)),
        "2024-03-31 10:00");
}

TEST(DateAdditions, compareWithTwoDates) {
    const auto a = NSDate::dateWithTimeIntervalSinceReferenceDate(1), b = a->dateByAddingTimeInterval(1),
               c = b->dateByAddingTimeInterval(1);
    EXPECT_TRUE(isBetweenDate_andDate_isInclusive(b, a, c, false));
    EXPECT_FALSE(isBetweenDate_andDate_isInclusive(a, a, c, false) || isBetweenDate_andDate_isInclusive(b, c, a, true));
    EXPECT_TRUE(isBetweenDate_andDate_isInclusive(a, a, c, true) && isBetweenDate_andDate_isInclusive(b, b, b, true));
    const NSDate* const nil = nullptr;
    EXPECT_RAISES(isBetweenDate_andDate_isInclusive(a, nil, c.operator->(), true), NSInternalInconsistencyException,
                  "NSDate - isBetweenDate:andDate:isInclusive: a date argument is nil!");
}

TEST(DateAdditions, logWhatIsDeprecated) {
    std::string log;
    const auto previous = setLogSink([&log](const NSString& message) { log += message.UTF8String() + '\n'; });
    EXPECT_FALSE(localeDictionary());
    const auto date = local(2024, 2, 3, 14, 5);
    const auto text = descriptionWithCalendarFormat(date, u"%Y"_ns);
    setLogSink(previous);
    EXPECT_EQ(*text, *shortTimeAndShortDateFormatter()->stringFromDate(date));
    EXPECT_EQ(log, "*** NSDate-QVLAdditions: localeDictionary has been DEPRECATED ***\n"
                   "*** NSDate-QVLAdditions: descriptionWithCalendarFormat does not respect the given format:%Y, will "
                   "use default format:" +
                       shortTimeAndShortDateFormatter()->dateFormat()->UTF8String() + " ***\n");
}
