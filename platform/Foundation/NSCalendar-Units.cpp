#include <cmath>
#include <optional>

#include <ToviFoundationKit/Foundation/CivilTime_p.h>
#include <ToviFoundationKit/Foundation/NSCalendar.h>
#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/TimeZoneRules_p.h>

namespace tovi {

using detail::secondsADay;
using detail::WeekRule;

namespace {

struct ClockDay {
    NSInteger clock;  ///< seconds
    NSInteger days;
    detail::CivilDay civil;
};

ClockDay clockDayOf(const NSTimeZone& zone, const NSDate& date) {
    const NSInteger second = detail::momentFrom(date.timeIntervalSinceReferenceDate()).second;
    const NSInteger clock = second + zone.rules().stretchAt(second).offset;
    const NSInteger days = detail::daysFromSeconds(clock);
    return {clock, days, detail::civilFromDays(days)};
}

NSCalendarUnit withoutOldName(NSCalendarUnit unit) noexcept {
    return unit == NSCalendarUnitWeek ? NSCalendarUnitWeekOfYear : unit;
}

/// The first day of the unit, which is a day or larger.
std::optional<NSInteger> firstDayOf(NSCalendarUnit unit, const ClockDay& at, WeekRule rule) {
    switch (unit) {
        case NSCalendarUnitYear:
            return detail::daysFromCivil(at.civil.year, 1, 1);
        case NSCalendarUnitQuarter:
            return detail::daysFromCivil(at.civil.year, (at.civil.month - 1) / 3 * 3 + 1, 1);
        case NSCalendarUnitMonth:
            return detail::daysFromCivil(at.civil.year, at.civil.month, 1);
        case NSCalendarUnitWeekOfYear:
        case NSCalendarUnitWeekOfMonth:
            return at.days - (detail::weekdayOf(at.days) - rule.firstWeekday + 7) % 7;
        case NSCalendarUnitDay:
            return at.days;
        default:
            return std::nullopt;
    }
}

int secondsOf(NSCalendarUnit unit) noexcept {
    return unit == NSCalendarUnitHour ? 3600 : unit == NSCalendarUnitMinute ? 60 : unit == NSCalendarUnitSecond ? 1 : 0;
}

/// Of hours, minutes and seconds.
NSInteger ordinalOfTime(NSCalendarUnit smaller, NSCalendarUnit larger, const ClockDay& at, WeekRule rule) {
    const NSInteger length = secondsOf(smaller);
    if (const NSInteger around = secondsOf(larger))
        return around > length ? (at.clock - detail::floorDivide(at.clock, around) * around) / length + 1 : NSNotFound;
    const auto first = firstDayOf(larger, at, rule);
    return first ? (at.clock - *first * secondsADay) / length + 1 : NSNotFound;
}

constexpr NSUInteger pair(NSCalendarUnit smaller, NSCalendarUnit larger) noexcept { return smaller << 20 | larger; }

NSInteger ordinal(NSCalendarUnit smaller, NSCalendarUnit larger, const ClockDay& at, WeekRule rule) {
    const auto& [year, month, day] = at.civil;
    switch (pair(smaller, larger)) {
        case pair(NSCalendarUnitYear, NSCalendarUnitEra):
            return year > 0 ? year : 1 - year;
        case pair(NSCalendarUnitQuarter, NSCalendarUnitYear):
            return (month + 2) / 3;
        case pair(NSCalendarUnitMonth, NSCalendarUnitYear):
            return month;
        case pair(NSCalendarUnitMonth, NSCalendarUnitQuarter):
            return (month - 1) % 3 + 1;
        case pair(NSCalendarUnitWeekOfYear, NSCalendarUnitYear):
            return detail::weekOfYear(at.days, year, rule).week;
        case pair(NSCalendarUnitWeekOfMonth, NSCalendarUnitMonth):
            return detail::weekOfMonth(at.days, day, rule);
        case pair(NSCalendarUnitWeekdayOrdinal, NSCalendarUnitMonth):
            return (day - 1) / 7 + 1;
        case pair(NSCalendarUnitDay, NSCalendarUnitDay):
            return NSNotFound;
    }
    if (secondsOf(smaller))
        return ordinalOfTime(smaller, larger, at, rule);
    const bool ofWeek = larger == NSCalendarUnitWeekOfYear || larger == NSCalendarUnitWeekOfMonth;
    const auto first = firstDayOf(larger, at, rule);
    if (first && (smaller == NSCalendarUnitDay || (smaller == NSCalendarUnitWeekday && ofWeek)))
        return at.days - *first + 1;
    return NSNotFound;
}

constexpr NSRange upTo(NSInteger last) noexcept { return {1, static_cast<NSUInteger>(last)}; }

NSRange range(NSCalendarUnit smaller, NSCalendarUnit larger, const ClockDay& at, WeekRule rule) {
    const auto& [year, month, day] = at.civil;
    switch (pair(smaller, larger)) {
        case pair(NSCalendarUnitQuarter, NSCalendarUnitYear):
            return {1, 4};
        case pair(NSCalendarUnitMonth, NSCalendarUnitYear):
            return {1, 12};
        case pair(NSCalendarUnitDay, NSCalendarUnitYear):
            return upTo(detail::lengthOfYear(year));
        case pair(NSCalendarUnitDay, NSCalendarUnitMonth):
            return upTo(detail::lengthOfMonth(year, month));
        case pair(NSCalendarUnitWeekOfYear, NSCalendarUnitYear): {
            const NSInteger inLastWeek = detail::startOfFirstWeek(detail::daysFromCivil(year + 1, 1, 1), rule) - 7;
            return upTo(detail::weekOfYear(inLastWeek, year, rule).week);
        }
        case pair(NSCalendarUnitWeekOfMonth, NSCalendarUnitMonth): {
            const NSInteger first = detail::daysFromCivil(year, month, 1);
            const NSInteger week = detail::weekOfMonth(first, 1, rule);
            const NSInteger last = first + detail::lengthOfMonth(year, month) - 1;
            const NSInteger lastWeek = (last - detail::startOfFirstWeek(first, rule)) / 7 + 1;
            return {static_cast<NSUInteger>(week), static_cast<NSUInteger>(lastWeek - week + 1)};
        }
        case pair(NSCalendarUnitWeekday, NSCalendarUnitWeekOfYear):
        case pair(NSCalendarUnitWeekday, NSCalendarUnitWeekOfMonth):
            return {1, 7};
        case pair(NSCalendarUnitHour, NSCalendarUnitDay):
            return {0, 24};
        case pair(NSCalendarUnitMinute, NSCalendarUnitHour):
        case pair(NSCalendarUnitSecond, NSCalendarUnitMinute):
            return {0, 60};
        default:
            return NSRangeNotFound;
    }
}

}  // namespace

NSInteger NSCalendar::ordinalityOfUnit_inUnit_forDate(NSCalendarUnit smaller, NSCalendarUnit larger,
                                                      const NSDate& date) const {
    if (std::isnan(date.timeIntervalSinceReferenceDate()))
        return NSNotFound;
    return ordinal(withoutOldName(smaller), withoutOldName(larger), clockDayOf(zone_, date),
                   {firstWeekday_, minimumDays_});
}

NSRange NSCalendar::rangeOfUnit_inUnit_forDate(NSCalendarUnit smaller, NSCalendarUnit larger,
                                               const NSDate& date) const {
    if (std::isnan(date.timeIntervalSinceReferenceDate()))
        return NSRangeNotFound;
    return range(withoutOldName(smaller), withoutOldName(larger), clockDayOf(zone_, date),
                 {firstWeekday_, minimumDays_});
}

}  // namespace tovi
