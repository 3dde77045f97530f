#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <support/Expect.h>
#include <support/Icu.h>
#include <support/Place.h>

using namespace tovi;
using namespace moments;
using namespace icu_reference;

namespace {

Ref<NSCalendar> gregorianIn(std::u16string_view name) {
    const auto made = NSCalendar::calendarWithIdentifier(u"gregorian"_ns).ref();
    made->setTimeZone(zone(name));
    return made;
}

const std::u16string_view zones[] = {u"Europe/Berlin",  u"America/New_York", u"Australia/Lord_Howe", u"Pacific/Apia",
                                     u"Asia/Kathmandu", u"America/St_Johns", u"Africa/Casablanca",   u"Asia/Manila",
                                     u"Europe/Dublin",  u"Antarctica/Troll", u"America/Caracas",     u"GMT",
                                     u"GMT-0330",       u"Africa/Monrovia"};

/// Fields that are given in a row; era 1 unless the year is negative, which then counts back from -1.
struct Civil {
    NSInteger year, month, day, hour = 0, minute = 0, second = 0;
};

Ref<NSDateComponents> fields(const Civil& civil) {
    const auto made = NSDateComponents::init();
    made->setEra(civil.year > 0);
    made->setYear(std::abs(civil.year));
    made->setMonth(civil.month);
    made->setDay(civil.day);
    made->setHour(civil.hour);
    made->setMinute(civil.minute);
    made->setSecond(civil.second);
    return made;
}

constexpr NSCalendarUnit everything = NSCalendarUnit(0xFFFE);

std::string shown(const NSCalendar& in, const NSDate& date) {
    const auto at = in.components_fromDate(everything, date);
    return NSString::stringWithFormat(u"%s%ld-%02ld-%02ld %02ld:%02ld:%02ld", at->era() ? "" : "BC ", at->year(),
                                      at->month(), at->day(), at->hour(), at->minute(), at->second())
        ->UTF8String();
}

std::string shown(const NSCalendar& in, const Civil& civil) {
    const auto date = in.dateFromComponents(fields(civil));
    return date ? shown(in, *date) : "nil";
}

}  // namespace

TEST(NSCalendar, AgreesWithICUOnTheFieldsOfRandomMoments) {
    std::mt19937_64 random(5);
    for (const auto name : zones) {
        const auto icu = icu_reference::calendar(name);
        const auto kit = gregorianIn(name);
        for (int i = 0; i < 3000; ++i) {
            const double range = i % 3 ? 1.2e10 : i % 2 ? 2e11 : 8e12;
            const double second = std::floor(std::uniform_real_distribution(-range, range)(random)) + 0.25;
            const int first = 1 + i % 7, minimum = 1 + i / 7 % 7;
            kit->setFirstWeekday(static_cast<NSUInteger>(first));
            kit->setMinimumDaysInFirstWeek(static_cast<NSUInteger>(minimum));
            ucal_setAttribute(icu.get(), UCAL_FIRST_DAY_OF_WEEK, first);
            ucal_setAttribute(icu.get(), UCAL_MINIMAL_DAYS_IN_FIRST_WEEK, minimum);
            set(icu, std::floor(second));
            const auto found = kit->components_fromDate(everything, at(second));
            const auto expect = [&](NSInteger value, UCalendarDateFields which, int base = 0) {
                ASSERT_EQ(value, field(icu, which) + base)
                    << shown(kit, at(second)) << " field " << which << " weeks " << first << minimum;
            };
            expect(found->era(), UCAL_ERA);
            expect(found->year(), UCAL_YEAR);
            expect(found->month(), UCAL_MONTH, 1);
            expect(found->day(), UCAL_DATE);
            expect(found->hour(), UCAL_HOUR_OF_DAY);
            expect(found->minute(), UCAL_MINUTE);
            expect(found->second(), UCAL_SECOND);
            expect(found->weekday(), UCAL_DAY_OF_WEEK);
            expect(found->weekdayOrdinal(), UCAL_DAY_OF_WEEK_IN_MONTH);
            if (found->year() == 1582)
                continue;  // there ICU counts the weeks as if no day were left out
            expect(found->weekOfYear(), UCAL_WEEK_OF_YEAR);
            expect(found->week(), UCAL_WEEK_OF_YEAR);
            expect(found->yearForWeekOfYear(), UCAL_YEAR_WOY);
            expect(found->weekOfMonth(), UCAL_WEEK_OF_MONTH);
            expect(kit->ordinalityOfUnit_inUnit_forDate(NSCalendarUnitDay, NSCalendarUnitYear, at(second)),
                   UCAL_DAY_OF_YEAR);
        }
    }
}

TEST(NSCalendar, AgreesWithICUOnClockTimesAroundEveryTransition) {
    for (const auto name : zones) {
        SCOPED_TRACE(NSString::stringWithCharacters(name)->UTF8String());
        const auto icu = icu_reference::calendar(name);
        const auto gmt = icu_reference::calendar(u"GMT");
        const auto kit = gregorianIn(name);
        for (const double change : transitions(icu, -5364662400.0, 5e9)) {
            set(icu, change);
            const double clock = change + offset(icu);
            for (double away = -26 * 3600; away <= 26 * 3600; away += 1320) {
                set(gmt, clock + away);
                const Civil civil{field(gmt, UCAL_YEAR),        field(gmt, UCAL_MONTH) + 1, field(gmt, UCAL_DATE),
                                  field(gmt, UCAL_HOUR_OF_DAY), field(gmt, UCAL_MINUTE),    field(gmt, UCAL_SECOND)};
                ucal_clear(icu.get());
                ucal_setDateTime(icu.get(), field(gmt, UCAL_YEAR), field(gmt, UCAL_MONTH), field(gmt, UCAL_DATE),
                                 field(gmt, UCAL_HOUR_OF_DAY), field(gmt, UCAL_MINUTE), field(gmt, UCAL_SECOND),
                                 &error);
                ASSERT_EQ(since1970(*kit->dateFromComponents(fields(civil))), second(icu)) << shown(kit, civil);
            }
        }
    }
}

TEST(NSCalendar, AgreesWithICUOnSums) {
    std::mt19937_64 random(7);
    const auto between = [&](int from, int to) { return std::uniform_int_distribution(from, to)(random); };
    for (const auto name : zones) {
        SCOPED_TRACE(NSString::stringWithCharacters(name)->UTF8String());
        const auto icu = icu_reference::calendar(name), gmt = icu_reference::calendar(u"GMT");
        const auto kit = gregorianIn(name);
        for (int i = 0; i < 3000; ++i) {
            const double start = std::uniform_real_distribution(-9e9, 1e10)(random);
            const int years = between(-60, 60), months = between(-30, 30), days = between(-500, 500) | 1,
                      seconds = between(-200000, 200000);
            // ICU adds on a clock without zone; then the zone is asked what moment that is.
            set(icu, std::floor(start));
            set(gmt, std::floor(start) + offset(icu));
            ucal_add(gmt.get(), UCAL_YEAR, years, &error);
            ucal_add(gmt.get(), UCAL_MONTH, months, &error);
            ucal_add(gmt.get(), UCAL_DATE, days, &error);
            ucal_clear(icu.get());
            ucal_setDateTime(icu.get(), field(gmt, UCAL_YEAR), field(gmt, UCAL_MONTH), field(gmt, UCAL_DATE),
                             field(gmt, UCAL_HOUR_OF_DAY), field(gmt, UCAL_MINUTE), field(gmt, UCAL_SECOND), &error);
            const auto added = NSDateComponents::init();
            added->setYear(years);
            added->setMonth(months);
            added->setDay(days);
            added->setSecond(seconds);
            const auto sum = kit->dateByAddingComponents_toDate_options(added, at(start), 0);
            const double fraction = start - std::floor(start);
            ASSERT_NEAR(since1970(sum), second(icu) + seconds + fraction, 1e-4)
                << shown(kit, at(start)) << " " << added->description()->UTF8String();
        }
    }
}

TEST(NSCalendar, ReadsFieldsThatCarryOverOrWereLeftOut) {
    const struct {
        std::u16string_view zone;
        Civil given;
        const char* shown;
    } rows[] = {
        {u"Europe/Berlin", {2026, 3, 29, 2, 30}, "2026-03-29 03:30:00"},  // the clocks go from 2 to 3
        {u"Pacific/Apia", {2011, 12, 30, 12}, "2011-12-31 12:00:00"},     // a whole day
        {u"Europe/Berlin", {2026, 14, 0, 25}, "2027-02-01 01:00:00"},
        {u"Europe/Berlin", {2026, 1, 1, 0, 0, -1}, "2025-12-31 23:59:59"},
        {u"Europe/Berlin", {2026, -11, 1}, "2025-01-01 00:00:00"},
        {u"GMT", {1582, 10, 4}, "1582-10-04 00:00:00"},
        {u"GMT", {1582, 10, 5}, "1582-10-15 00:00:00"},
        {u"GMT", {1582, 10, 14}, "1582-10-24 00:00:00"},
        {u"GMT", {1500, 2, 29}, "1500-02-29 00:00:00"},
        {u"GMT", {1900, 2, 29}, "1900-03-01 00:00:00"},
        {u"GMT", {-1, 12, 31, 24}, "1-01-01 00:00:00"},
        {u"GMT", {-44, 3, 15}, "BC 44-03-15 00:00:00"},
        {u"GMT", {3'000'000, 1, 1}, "3000000-01-01 00:00:00"},
        {u"GMT", {3'200'000, 1, 1}, "nil"},
        {u"GMT", {-3'200'000, 1, 1}, "nil"},
        {u"GMT", {2026, 1, 1, 0, 0, std::numeric_limits<NSInteger>::min()}, "nil"},
        {u"GMT", {2026, std::numeric_limits<NSInteger>::max() - 1, 1}, "nil"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(gregorianIn(row.zone), row.given), row.shown);
    // Twice it is half past two; the first time, summer time still runs.
    EXPECT_EQ(since1970(*gregorianIn(u"Europe/Berlin")->dateFromComponents(fields({2026, 10, 25, 2, 30}))), 1792888200);
    EXPECT_EQ(shown(gregorianIn(u"GMT"), *gregorianIn(u"GMT")->dateFromComponents(NSDateComponents::init())),
              "1-01-01 00:00:00");
}

TEST(NSCalendar, FindsDaysByTheirWeeks) {
    const auto iso = NSCalendar::calendarWithIdentifier(u"iso8601"_ns).ref();
    iso->setTimeZone(zone(u"Europe/Berlin"));
    const auto monday = NSDateComponents::init();
    monday->setYearForWeekOfYear(2020);
    monday->setWeekOfYear(53);
    EXPECT_EQ(shown(iso, *iso->dateFromComponents(monday)), "2020-12-28 00:00:00");
    monday->setWeekday(1);
    EXPECT_EQ(shown(iso, *iso->dateFromComponents(monday)), "2021-01-03 00:00:00");

    const auto ordinal = NSDateComponents::init();
    ordinal->setYear(2026);
    ordinal->setMonth(11);
    ordinal->setWeekday(5);
    for (const auto& [n, expected] :
         {std::pair(4, "2026-11-26 00:00:00"), {-1, "2026-11-26 00:00:00"}, {1, "2026-11-05 00:00:00"}}) {
        ordinal->setWeekdayOrdinal(n);
        EXPECT_EQ(shown(iso, *iso->dateFromComponents(ordinal)), expected);
    }
    const auto ofMonth = NSDateComponents::init();
    ofMonth->setYear(2026);
    ofMonth->setMonth(11);
    ofMonth->setWeekOfMonth(1);
    EXPECT_EQ(shown(iso, *iso->dateFromComponents(ofMonth)), "2026-11-02 00:00:00");
}

TEST(NSCalendar, AddsByTheClockAndTheMonthsEnd) {
    const struct {
        Civil start, added;
        const char* sum;
    } rows[] = {
        {{2026, 1, 31}, {0, 1, 0}, "2026-02-28 00:00:00"},
        {{2024, 2, 29}, {1, 1, 0}, "2025-03-28 00:00:00"},
        {{2026, 3, 28, 2, 30}, {0, 0, 1}, "2026-03-29 03:30:00"},
        {{2026, 3, 28, 2, 30}, {0, 0, 0, 24}, "2026-03-29 03:30:00"},
        {{2026, 3, 28, 12}, {0, 0, 1}, "2026-03-29 12:00:00"},
        {{2026, 3, 28, 12}, {0, 0, 0, 24}, "2026-03-29 13:00:00"},
        {{2026, 10, 24, 12}, {0, 0, 1, 1}, "2026-10-25 13:00:00"},
        {{1582, 10, 4}, {0, 0, 1}, "1582-10-15 00:00:00"},
        {{1582, 9, 10}, {0, 1, 0}, "1582-10-20 00:00:00"},
        {{1, 1, 1}, {0, 0, -1}, "BC 1-12-31 00:00:00"},
        {{2026, 1, 1}, {NSUndefinedDateComponent - 1, 0, 0}, "3150563-01-22 01:00:00"},
        {{2026, 1, 1}, {0, 0, 0, 0, 0, std::numeric_limits<NSInteger>::min()}, "BC 3146560-07-24 00:53:28"},
    };
    const auto berlin = gregorianIn(u"Europe/Berlin");
    for (const auto& row : rows) {
        const auto added = fields(row.added);
        added->setYear(row.added.year);
        const auto start = berlin->dateFromComponents(fields(row.start));
        EXPECT_EQ(shown(berlin, berlin->dateByAddingComponents_toDate_options(added, *start, 0)), row.sum);
    }
    // The second time that it is half past two stays the second.
    const auto nothing = NSDateComponents::init();
    EXPECT_EQ(since1970(berlin->dateByAddingComponents_toDate_options(nothing, at(1792891800.25), 0)), 1792891800.25);
    const auto nanoseconds = NSDateComponents::init();
    nanoseconds->setNanosecond(1'500'000'000);
    EXPECT_EQ(since1970(berlin->dateByAddingComponents_toDate_options(nanoseconds, at(0.25), 0)), 1.75);
    EXPECT_RAISES(berlin->dateByAddingComponents_toDate_options(nothing, at(0), 1), NSInvalidArgumentException,
                  "option");
}

TEST(NSCalendar, TakesAnyMoment) {
    const auto gmt = gregorianIn(u"GMT");
    EXPECT_EQ(shown(gmt, at(INFINITY)), shown(gmt, at(1e300)));
    EXPECT_EQ(shown(gmt, at(-INFINITY)), shown(gmt, at(-1e300)));
    EXPECT_TRUE(gmt->components_fromDate(everything, at(NAN))->isEqual(NSDateComponents::init().get()));
    EXPECT_EQ(gmt->ordinalityOfUnit_inUnit_forDate(NSCalendarUnitDay, NSCalendarUnitYear, at(NAN)), NSNotFound);
    EXPECT_EQ(gmt->rangeOfUnit_inUnit_forDate(NSCalendarUnitDay, NSCalendarUnitYear, at(NAN)), NSRangeNotFound);
    const auto day = NSDateComponents::init();
    day->setDay(1);
    for (const double odd : {double(INFINITY), double(-INFINITY), double(NAN)})
        EXPECT_TRUE(gmt->dateByAddingComponents_toDate_options(day, at(odd), 0)->isEqualToDate(at(odd)));
    EXPECT_EQ(gmt->components_fromDate(NSCalendarUnitNanosecond, at(-0.25))->nanosecond(), 750'000'000);
    EXPECT_EQ(gmt->components_fromDate(NSCalendarUnit(28), at(-0.25))->hour(), NSUndefinedDateComponent);
}

TEST(NSCalendar, CountsUnitsInLargerOnes) {
    const auto berlin = gregorianIn(u"Europe/Berlin");
    berlin->setFirstWeekday(2);
    const auto date = berlin->dateFromComponents(fields({2026, 11, 22, 21, 40, 5}));  // a Sunday
    const struct {
        NSCalendarUnit smaller, larger;
        NSInteger ordinal;
        NSRange range;
    } rows[] = {
        {NSCalendarUnitYear, NSCalendarUnitEra, 2026, NSRangeNotFound},
        {NSCalendarUnitQuarter, NSCalendarUnitYear, 4, {1, 4}},
        {NSCalendarUnitMonth, NSCalendarUnitYear, 11, {1, 12}},
        {NSCalendarUnitMonth, NSCalendarUnitQuarter, 2, NSRangeNotFound},
        {NSCalendarUnitDay, NSCalendarUnitYear, 326, {1, 365}},
        {NSCalendarUnitDay, NSCalendarUnitMonth, 22, {1, 30}},
        {NSCalendarUnitDay, NSCalendarUnitWeek, 7, NSRangeNotFound},
        {NSCalendarUnitWeekday, NSCalendarUnitWeek, 7, {1, 7}},
        {NSCalendarUnitWeek, NSCalendarUnitYear, 47, {1, 52}},
        {NSCalendarUnitWeekOfMonth, NSCalendarUnitMonth, 4, {1, 6}},
        {NSCalendarUnitWeekdayOrdinal, NSCalendarUnitMonth, 4, NSRangeNotFound},
        {NSCalendarUnitHour, NSCalendarUnitDay, 22, {0, 24}},
        {NSCalendarUnitMinute, NSCalendarUnitDay, 1301, NSRangeNotFound},
        {NSCalendarUnitSecond, NSCalendarUnitMinute, 6, {0, 60}},
        {NSCalendarUnitHour, NSCalendarUnitYear, 325 * 24 + 22, NSRangeNotFound},
        {NSCalendarUnitYear, NSCalendarUnitDay, NSNotFound, NSRangeNotFound},
        {NSCalendarUnitDay, NSCalendarUnitDay, NSNotFound, NSRangeNotFound},
        {NSCalendarUnit(0), NSCalendarUnit(~0ULL), NSNotFound, NSRangeNotFound},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(berlin->ordinalityOfUnit_inUnit_forDate(row.smaller, row.larger, *date), row.ordinal) << row.smaller;
        EXPECT_EQ(berlin->rangeOfUnit_inUnit_forDate(row.smaller, row.larger, *date), row.range) << row.smaller;
    }
    const auto cutOver = berlin->dateFromComponents(fields({1582, 12, 31}));
    EXPECT_EQ(berlin->ordinalityOfUnit_inUnit_forDate(NSCalendarUnitDay, NSCalendarUnitYear, *cutOver), 355);
}

TEST(NSCalendar, TakesZoneAndWeeksWhereItIsTold) {
    const ScopedTimeZone tokyo(u"Asia/Tokyo");
    const ScopedLocale german(u"de_DE");
    const auto made = NSCalendar::calendarWithIdentifier(u"gregorian"_ns).ref();
    EXPECT_EQ(*made->timeZone()->name(), u"Asia/Tokyo");
    EXPECT_EQ(made->firstWeekday(), 1U);
    made->setMinimumDaysInFirstWeek(2);
    made->setLocale(NSLocale::currentLocale());
    EXPECT_EQ(made->firstWeekday(), 2U);
    EXPECT_EQ(made->minimumDaysInFirstWeek(), 2U);
    EXPECT_RAISES(made->setFirstWeekday(0), NSInvalidArgumentException, "1 to 7");
    EXPECT_RAISES(made->setMinimumDaysInFirstWeek(8), NSInvalidArgumentException, "1 to 7");
    EXPECT_FALSE(NSCalendar::calendarWithIdentifier(u"buddhist"_ns));

    const id copied = made->copy();
    const id archived = NSKeyedUnarchiver::unarchiveObjectWithData(NSKeyedArchiver::archivedDataWithRootObject(*made));
    for (const id& other : {copied, archived}) {
        EXPECT_TRUE(made->isEqual(other));
        EXPECT_EQ(made->hash(), other->hash());
        to<NSCalendar>(other)->setFirstWeekday(7);
        EXPECT_FALSE(made->isEqual(other));
    }
}

TEST(NSDateComponents, AreAValueWithNamedFields) {
    const auto day = fields({2026, 11, 22});
    day->setValue_forComponent(4, NSCalendarUnitQuarter);
    EXPECT_EQ(day->quarter(), 4);
    EXPECT_EQ(day->valueForComponent(NSCalendarUnitMonth), 11);
    EXPECT_RAISES(day->valueForComponent(NSCalendarUnitMonth | NSCalendarUnitDay), NSInvalidArgumentException, "unit");
    EXPECT_RAISES(day->valueForComponent(NSCalendarUnit(1)), NSInvalidArgumentException, "unit");
    const id archived = NSKeyedUnarchiver::unarchiveObjectWithData(NSKeyedArchiver::archivedDataWithRootObject(*day));
    for (const id& other : {id(day->copy()), archived}) {
        EXPECT_TRUE(day->isEqual(other));
        EXPECT_EQ(day->hash(), other->hash());
    }
    EXPECT_NE(day->description()->UTF8String().find("year: 2026, month: 11, day: 22, hour: 0"), std::string::npos);
}
