#include <ToviFoundationKit/Extensions/NSDate-QVLAdditions.h>

#include <algorithm>
#include <cmath>

#include <ToviFoundationKit/Extensions/NSDateFormatter-Extensions.h>
#include <ToviFoundationKit/Foundation/NSThread.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSAssertionHandler.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NSLog.h>

namespace tovi {
inline namespace QVLAdditions {

// Shared calendars.

namespace {

Ref<NSCalendar> newCalendar() { return NSCalendar::calendarWithIdentifier(u"gregorian"_ns).ref(); }

Ref<NSCalendar> newGMTCalendar() {
    Ref<NSCalendar> calendar = newCalendar();
    calendar->setTimeZone(*NSTimeZone::timeZoneForSecondsFromGMT(0));
    return calendar;
}

Ref<NSCalendar> newISOCalendar() {
    Ref<NSCalendar> calendar = newCalendar();
    calendar->setFirstWeekday(2);
    return calendar;
}

// They live as long as the process, and are touched on the main thread only.
NSCalendar* gregorianCalendar = nullptr;
NSCalendar* gregorianCalendarGMT = nullptr;
NSCalendar* isogregorianCalendar = nullptr;

Ref<NSCalendar> shared(NSCalendar*& calendar, Ref<NSCalendar> (*make)()) {
    if (!NSThread::isMainThread())
        return make();
    if (!calendar)
        calendar = make().leak();
    return *calendar;
}

}  // namespace

Ref<NSCalendar> gregorian() { return shared(gregorianCalendar, newCalendar); }
Ref<NSCalendar> gregorianGMT() { return shared(gregorianCalendarGMT, newGMTCalendar); }
Ref<NSCalendar> isogregorian() { return shared(isogregorianCalendar, newISOCalendar); }

void resetGregorianDefaultTimeZone() {
    if (NSThread::isMainThread() && gregorianCalendar)
        gregorianCalendar->setTimeZone(NSTimeZone::defaultTimeZone());
}

namespace {

constexpr NSCalendarUnit dayUnits = NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay;

Ref<NSDateComponents> partsOf(const NSDate& date) { return gregorian()->components_fromDate(dayUnits, date); }

NSInteger weekdayOf(const NSDate& date, const NSCalendar& calendar) {
    return calendar.components_fromDate(NSCalendarUnitWeekday, date)->weekday();
}

/// nil beyond the calendar's ends, and for what is not a number.
RefPtr<NSDate> dateOf(NSInteger year, NSInteger month, NSInteger dayOfMonth, const NSCalendar& calendar) {
    if (year == NSUndefinedDateComponent)
        return nullptr;
    const Ref<NSDateComponents> parts = NSDateComponents::init();
    parts->setYear(year);
    parts->setMonth(month);
    parts->setDay(dayOfMonth);
    return calendar.dateFromComponents(parts);
}

Ref<NSDate> daysLater(const NSDate& date, NSInteger days) {
    return dateByAddingYears_months_days_hours_minutes_seconds(date, 0, 0, days, 0, 0, 0);
}

/// The dates so many days after one, from the first number of days to the last.
Ref<NSMutableArray> datesAfter(const NSDate& date, NSInteger first, NSInteger last) {
    Ref<NSMutableArray> dates = NSMutableArray::array();
    for (NSInteger days = first; days <= last; ++days)
        dates->addObject(daysLater(date, days));
    return dates;
}

bool isWeekOfYear(NSInteger week, NSInteger year) { return year >= 1 && week >= 1 && week <= 53; }

void checkStart(NSInteger start, const char* operation) {
    if (start < 0 || start > 6)
        NSException::raise(NSInvalidArgumentException, u"*** -[NSDate %s]: %ld is no day of the week from 0 to 6",
                           operation, start);
}

}  // namespace

RefPtr<NSDate> gmtDateFromDate(const NSDate* date) {
    if (!date)
        return nullptr;
    const Ref<NSDateComponents> parts = partsOf(*date);
    if (parts->year() == NSUndefinedDateComponent)
        return nullptr;
    parts->setHour(12);
    parts->setMinute(0);
    parts->setSecond(0);
    return gregorianGMT()->dateFromComponents(parts);
}

// Weeks.

RefPtr<NSMutableArray> dateArrayWithWeekNumber_andYear_andWeekStartsOn(NSInteger week, NSInteger year,
                                                                       NSInteger start) {
    if (!isWeekOfYear(week, year))
        return nullptr;
    checkStart(start, "dateArrayWithWeekNumber:andYear:andWeekStartsOn:");
    const Ref<NSCalendar> calendar = gregorian();
    const RefPtr<NSDate> newYear = dateOf(year, 1, 1, calendar);
    if (!newYear)
        return nullptr;
    const Ref<NSDate> inWeek = daysLater(*newYear, 7 * week - 7);
    const NSInteger first = start + 1 - weekdayOf(inWeek, calendar);
    return datesAfter(inWeek, first, first + 6);
}

RefPtr<NSMutableArray> dateArrayWithWeekNumber_andYear_andWeekStartsOnMonday(NSInteger week, NSInteger year,
                                                                             bool startsOnMonday) {
    return dateArrayWithWeekNumber_andYear_andWeekStartsOn(week, year, startsOnMonday);
}

NSInteger weekOfYearAndStartsOn(const NSDate& receiver, NSInteger start) {
    checkStart(start, "weekOfYearAndStartsOn:");
    const Ref<NSCalendar> calendar = newCalendar();
    calendar->setFirstWeekday(static_cast<NSUInteger>(start) + 1);
    const RefPtr<NSDate> newYear = dateOf(partsOf(receiver)->year(), 1, 1, calendar);
    if (!newYear)
        return NSNotFound;
    const NSInteger dayOfYear =
        gregorian()->ordinalityOfUnit_inUnit_forDate(NSCalendarUnitDay, NSCalendarUnitYear, receiver);
    NSInteger daysBefore = weekdayOf(*newYear, calendar) - start - 1;
    if (daysBefore < 0)
        daysBefore += 7;
    return (daysBefore + dayOfYear + 6) / 7;
}

NSInteger weekOfYearAndStartsOnMonday(const NSDate& receiver, bool startsOnMonday) {
    return weekOfYearAndStartsOn(receiver, startsOnMonday);
}

RefPtr<NSMutableArray> dateArrayWithISOWeekNumber_andYear(NSInteger week, NSInteger year) {
    if (!isWeekOfYear(week, year))
        return nullptr;
    const Ref<NSCalendar> calendar = isogregorian();
    const RefPtr<NSDate> newYear = dateOf(year, 1, 1, calendar);
    if (!newYear)
        return nullptr;
    // 1 January from Friday to Sunday is in the last week of the year before.
    const NSInteger newYearsWeekday = weekdayOf(*newYear, calendar);
    const bool isInWeekOne = newYearsWeekday >= 2 && newYearsWeekday <= 5;
    const Ref<NSDate> inWeek = daysLater(*newYear, isInWeekOne ? 7 * week - 7 : 7 * week);
    const NSInteger weekday = weekdayOf(inWeek, calendar);
    const NSInteger sinceMonday = weekday == 1 ? 6 : weekday - 2;
    return datesAfter(inWeek, -sinceMonday, 6 - sinceMonday);
}

NSInteger ISOWeekOfYear(const NSDate& receiver) {
    const Ref<NSDateComponents> parts = isogregorian()->components_fromDate(dayUnits, receiver);
    return parts->year() == NSUndefinedDateComponent ? NSNotFound : week(parts->day(), parts->month(), parts->year());
}

// Months.

namespace {

constexpr NSInteger lengthsOfMonths[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

/// By the rule that every fourth year is a leap year.
NSInteger lengthOfMonth(NSInteger month, NSInteger year) {
    return month == 2 && year % 4 == 0 ? 29 : lengthsOfMonths[month];
}

}  // namespace

bool dayInsideMonth(const NSDate& receiver, NSInteger day) {
    const Ref<NSDateComponents> parts = partsOf(receiver);
    return parts->month() <= 12 && day >= 1 && day <= lengthOfMonth(parts->month(), parts->year());
}

Ref<NSMutableArray> dateMonthArray(const NSDate& receiver) {
    const Ref<NSDateComponents> parts = partsOf(receiver);
    const RefPtr<NSDate> first = dateOf(parts->year(), parts->month(), 1, gregorian());
    if (!first)
        return NSMutableArray::array();
    return datesAfter(*first, 1, lengthOfMonth(parts->month(), parts->year()) - 1);
}

Ref<NSDate> dateByAddingYears_months_days_hours_minutes_seconds(const NSDate& receiver, NSInteger years,
                                                                NSInteger months, NSInteger days, NSInteger hours,
                                                                NSInteger minutes, NSInteger seconds) {
    return dateByAddingYears_months_days_hours_minutes_seconds_GMT(receiver, years, months, days, hours, minutes,
                                                                   seconds, false);
}

Ref<NSDate> dateByAddingYears_months_days_hours_minutes_seconds_GMT(const NSDate& receiver, NSInteger years,
                                                                    NSInteger months, NSInteger days, NSInteger hours,
                                                                    NSInteger minutes, NSInteger seconds, bool inGMT) {
    const Ref<NSDateComponents> parts = NSDateComponents::init();
    parts->setYear(years);
    parts->setMonth(months);
    parts->setDay(days);
    parts->setHour(hours);
    parts->setMinute(minutes);
    parts->setSecond(seconds);
    return (inGMT ? gregorianGMT() : gregorian())->dateByAddingComponents_toDate_options(parts, receiver, 0);
}

bool isBetweenDate_andDate_isInclusive(const NSDate& receiver, const NSDate* first, const NSDate* second,
                                       bool inclusive) {
    if (!first || !second) {
        const Selector operation = "isBetweenDate:andDate:isInclusive:"_sel;
        NSAssertionHandler::currentHandler()->failInMethod(
            operation, &receiver, "Extensions.subproj/NSDate-QVLAdditions", 389, u"%@ - %@ a date argument is nil!",
            receiver.isa(), operation.name());
        return false;
    }
    const NSComparisonResult fromFirst = first->compare(receiver), fromSecond = second->compare(receiver);
    return inclusive ? fromFirst != NSOrderedDescending && fromSecond != NSOrderedAscending
                     : fromFirst == NSOrderedAscending && fromSecond == NSOrderedDescending;
}

RefPtr<NSString> descriptionWithCalendarFormat(const NSDate& receiver, const NSString* format) {
    const Ref<NSDateFormatter> formatter = shortTimeAndShortDateFormatter();
    NSLog(u"*** NSDate-QVLAdditions: descriptionWithCalendarFormat does not respect the given format:%@, will use "
          u"default format:%@ ***",
          format, formatter->dateFormat());
    return formatter->stringFromDate(receiver);
}

RefPtr<NSDictionary> localeDictionary() {
    NSLog(u"*** NSDate-QVLAdditions: localeDictionary has been DEPRECATED ***");
    return nullptr;
}

namespace {

const Additions<NSDate> additions{
    classLevel<&gregorian>("gregorian"),
    classLevel<&gregorianGMT>("gregorianGMT"),
    classLevel<&isogregorian>("isogregorian"),
    classLevel<&resetGregorianDefaultTimeZone>("resetGregorianDefaultTimeZone"),
    classLevel<static_cast<RefPtr<NSDate> (*)(const NSDate*)>(&gmtDateFromDate)>("gmtDateFromDate:"),
    classLevel<&dateArrayWithWeekNumber_andYear_andWeekStartsOn>("dateArrayWithWeekNumber:andYear:andWeekStartsOn:"),
    classLevel<&dateArrayWithWeekNumber_andYear_andWeekStartsOnMonday>(
        "dateArrayWithWeekNumber:andYear:andWeekStartsOnMonday:"),
    classLevel<&dateArrayWithISOWeekNumber_andYear>("dateArrayWithISOWeekNumber:andYear:"),
    classLevel<&localeDictionary>("localeDictionary"),
    instance<&weekOfYearAndStartsOn>("weekOfYearAndStartsOn:"),
    instance<&weekOfYearAndStartsOnMonday>("weekOfYearAndStartsOnMonday:"),
    instance<&ISOWeekOfYear>("ISOWeekOfYear"),
    instance<&dayInsideMonth>("dayInsideMonth:"),
    instance<&dateByAddingYears_months_days_hours_minutes_seconds>(
        "dateByAddingYears:months:days:hours:minutes:seconds:"),
    instance<&dateByAddingYears_months_days_hours_minutes_seconds_GMT>(
        "dateByAddingYears:months:days:hours:minutes:seconds:GMT:"),
    instance<&dateMonthArray>("dateMonthArray"),
    instance<static_cast<bool (*)(const NSDate&, const NSDate*, const NSDate*, bool)>(
        &isBetweenDate_andDate_isInclusive)>("isBetweenDate:andDate:isInclusive:"),
    instance<static_cast<RefPtr<NSString> (*)(const NSDate&, const NSString*)>(&descriptionWithCalendarFormat)>(
        "descriptionWithCalendarFormat:"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi

// The plain functions calculate with more bits than their arguments have, so that nothing overflows; unless these are
// small.

namespace {

__extension__ using Wide = __int128;
using Narrow = std::int64_t;

template <class Number> Number weekDayOf(Number day, Number month, Number year) {
    if (month < 3) {
        month += 12;
        --year;
    }
    return (day + year + 6 + year / 4 + year / 400 - year / 100 + (13 * month - 27) / 5) % 7;
}

template <class Number> bool isLeapYear(Number year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

/// The day's number in the year; months beyond the twelfth add nothing.
template <class Number> Number dayOfYear(Number day, Number month, bool isLeap) {
    constexpr int before[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
    const auto index = static_cast<std::size_t>(std::clamp<Number>(month, 1, 13)) - 1;
    return day + before[index] + (isLeap && index > 1);
}

/// The number in a year of so many days of the last day of its last week.
template <class Number> Number endOfLastWeek(Number year, Number length) {
    const Number lastWeekday = weekDayOf<Number>(31, 12, year);
    return lastWeekday == 6 ? length : lastWeekday >= 3 ? length + 6 - lastWeekday : length - (lastWeekday + 1);
}

template <class Number> Number weekOf(Number day, Number month, Number year) {
    Number folded = 0;
    for (;;) {
        const bool isLeap = isLeapYear(year);
        const Number number = dayOfYear(day, month, isLeap), length = isLeap ? 366 : 365;
        const Number firstMonday = 4 - weekDayOf<Number>(4, 1, year);
        if (firstMonday <= number) {
            // No more than three days belong to the next year.
            const bool isNext = number > length - 3 && number > endOfLastWeek(year, length);
            return folded + (isNext ? (year + 1) * 100 + 1 : (number - firstMonday) / 7 + 1);
        }
        // In the last week of the year before.
        --year;
        folded = year * 100;
        day = 31;
        month = 12;
    }
}

bool areSmall(std::int64_t day, std::int64_t month, std::int64_t year) {
    constexpr std::int64_t bound = std::int64_t{1} << 48;
    return std::max({day, month, year}) < bound && std::min({day, month, year}) > -bound;
}

}  // namespace

std::int64_t weekDay(std::int64_t day, std::int64_t month, std::int64_t year) {
    return areSmall(day, month, year) ? weekDayOf<Narrow>(day, month, year)
                                      : static_cast<std::int64_t>(weekDayOf<Wide>(day, month, year));
}

std::int64_t week(std::int64_t day, std::int64_t month, std::int64_t year) {
    return areSmall(day, month, year) ? weekOf<Narrow>(day, month, year)
                                      : static_cast<std::int64_t>(weekOf<Wide>(day, month, year));
}
