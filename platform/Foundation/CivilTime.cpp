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

/// A week belongs to the year of the first day that its minimum of days leaves over at the end: ISO 8601's, with four
/// days, to that of its Thursday. That day's number in the year gives the week's.
WeekOfYear weekOfYear(NSInteger days, NSInteger year, WeekRule rule) noexcept {
    const int inWeek = weekdayOf(days) - rule.firstWeekday;
    const NSInteger decisive = days - inWeek + (inWeek < 0 ? 0 : 7) - rule.minimumDays;
    NSInteger start = daysFromCivil(year, 1, 1);
    if (decisive < start) {
        start = daysFromCivil(--year, 1, 1);
    } else if (decisive - start >= 355) {  // the days of 1582
        const NSInteger next = daysFromCivil(year + 1, 1, 1);
        if (decisive >= next)
            return {year + 1, (decisive - next) / 7 + 1};
    }
    return {year, (decisive - start) / 7 + 1};
}

NSInteger weekOfMonth(NSInteger days, int dayOfMonth, WeekRule rule) noexcept {
    return floorDivide(days - startOfFirstWeek(days - dayOfMonth + 1, rule), 7) + 1;
}

}  // namespace tovi::detail
