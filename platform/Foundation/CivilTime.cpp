#include <ToviFoundationKit/Foundation/CivilTime_p.h>

#include <algorithm>

namespace tovi::detail {

int lengthOfMonth(NSInteger year, int month) noexcept {
    if (month != 2)
        return 30 + ((month ^ month >> 3) & 1);
    const bool leap = year % 4 == 0 && (year < 1582 || year % 100 != 0 || year % 400 == 0);
    return leap ? 29 : 28;
}

NSInteger daysFromCivilPinned(NSInteger year, int month, int day) noexcept {
    return daysFromCivil(year, month, day <= 28 ? day : std::min(day, lengthOfMonth(year, month)));
}

NSInteger startOfFirstWeek(NSInteger firstDay, WeekRule rule) noexcept {
    const int before = (weekdayOf(firstDay) - rule.firstWeekday + 7) % 7;
    return firstDay - before + (7 - before >= rule.minimumDays ? 0 : 7);
}

namespace {

NSInteger startOfWeekYear(NSInteger year, WeekRule rule) noexcept {
    return startOfFirstWeek(daysFromCivil(year, 1, 1), rule);
}

}  // namespace

WeekOfYear weekOfYear(NSInteger days, NSInteger year, WeekRule rule) noexcept {
    NSInteger start = startOfWeekYear(year, rule);
    if (days < start)
        start = startOfWeekYear(--year, rule);
    // Only the last days of a year can belong to the next one. (1582 has 355 days.)
    else if (days - start >= 48 * 7) {
        const NSInteger next = startOfWeekYear(year + 1, rule);
        if (days >= next)
            return {year + 1, (days - next) / 7 + 1};
    }
    return {year, (days - start) / 7 + 1};
}

NSInteger weekOfMonth(NSInteger days, int dayOfMonth, WeekRule rule) noexcept {
    return floorDivide(days - startOfFirstWeek(days - dayOfMonth + 1, rule), 7) + 1;
}

}  // namespace tovi::detail
