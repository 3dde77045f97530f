#pragma once

#include <cstdint>

#include <ToviFoundationKit/Runtime/NSTypes.h>

namespace tovi::detail {

// Seconds and days are counted from 1 January 1970, years as astronomers do: the year before 1 is 0.

inline constexpr NSInteger secondsADay = 86400;
/// The calendar reaches so many days to either side; all arithmetic below holds for a good deal more.
inline constexpr NSInteger lastDay = 1'150'000'000;
inline constexpr NSInteger lastSecond = lastDay * secondsADay;

constexpr NSInteger floorDivide(NSInteger a, NSInteger b) noexcept { return a / b - (a % b < 0); }

struct CivilDay {
    NSInteger year;
    int month;
    int day;
};

struct CivilTime : CivilDay {
    int hour;
    int minute;
    int second;
};

/// A moment as whole seconds and the rest, from 0 to below 1.
struct Moment {
    NSInteger second;
    double fraction;
};

/// The moment so many seconds after 1 January 2001, or the nearest end of the calendar. Not for NaN.
inline Moment momentFrom(NSTimeInterval sinceReference) noexcept {
    constexpr NSInteger reference = 978307200;
    if (sinceReference >= static_cast<double>(lastSecond - reference)) [[unlikely]]
        return {lastSecond, 0};
    if (sinceReference <= static_cast<double>(-lastSecond - reference)) [[unlikely]]
        return {-lastSecond, 0};
    auto whole = static_cast<NSInteger>(sinceReference);
    whole -= static_cast<double>(whole) > sinceReference;
    return {whole + reference, sinceReference - static_cast<double>(whole)};
}
constexpr NSTimeInterval sinceReference(NSInteger second) noexcept { return static_cast<double>(second - 978307200); }

/// 15 October 1582, the first day of the Gregorian calendar.
inline constexpr NSInteger gregorianStart = -141427;

namespace civil {

// Counted from March on, the lengths of months are a straight line: (153 * m + 2) / 5 days lie before the m-th.
constexpr NSInteger daysBefore(int monthFromMarch) noexcept { return (153 * monthFromMarch + 2) / 5; }

// Days from 1 March of the year 0 by either calendar, to the 1st of the month.
constexpr NSInteger julianDays(NSInteger yearFromMarch, int monthFromMarch) noexcept {
    return 365 * yearFromMarch + (yearFromMarch >> 2) + daysBefore(monthFromMarch) - 719470;
}
constexpr NSInteger gregorianDays(NSInteger yearFromMarch, int monthFromMarch) noexcept {
    const NSInteger century = floorDivide(yearFromMarch, 100);
    return 365 * yearFromMarch + (yearFromMarch >> 2) - century + (century >> 2) + daysBefore(monthFromMarch) - 719468;
}

constexpr CivilDay fromMarch(NSInteger yearFromMarch, int dayOfYear) noexcept {
    const int month = (5 * dayOfYear + 2) / 153;
    const bool nextYear = month >= 10;
    return {yearFromMarch + nextYear, nextYear ? month - 9 : month + 3,
            dayOfYear - static_cast<int>(daysBefore(month)) + 1};
}

}  // namespace civil

/// The day so many days after the 1st of the month; `month` is 1 to 12. The days that 1582 left out are read as Julian
/// ones.
constexpr NSInteger daysFromCivil(NSInteger year, int month, NSInteger day) noexcept {
    const bool early = month <= 2;
    const NSInteger shiftedYear = year - early;
    const int shiftedMonth = early ? month + 9 : month - 3;
    const NSInteger gregorian = civil::gregorianDays(shiftedYear, shiftedMonth) + day - 1;
    return gregorian >= gregorianStart ? gregorian : civil::julianDays(shiftedYear, shiftedMonth) + day - 1;
}

constexpr CivilDay civilFromDays(NSInteger days) noexcept {
    if (days < gregorianStart) [[unlikely]] {
        const NSInteger z = days + 719470;
        const NSInteger year = floorDivide(4 * z + 3, 1461);
        return civil::fromMarch(year, static_cast<int>(z - 365 * year - (year >> 2)));
    }
    // After Neri and Schneider, "Euclidean affine functions and their application to calendar algorithms": a
    // multiplication gives the year of the century, and what it leaves over the day of that year; another one so the
    // month and its day.
    const auto quarters = static_cast<std::uint64_t>(4 * (days + 719468) + 3);
    const std::uint64_t century = quarters / 146097;
    const auto inCentury = static_cast<std::uint32_t>(quarters - 146097 * century) | 3;
    const std::uint64_t years = std::uint64_t{2939745} * inCentury;
    const std::uint32_t dayOfYear = static_cast<std::uint32_t>(years) / (4 * 2939745);  // from March
    const std::uint32_t months = 2141 * dayOfYear + 197913;
    const bool nextYear = dayOfYear >= 306;
    return {static_cast<NSInteger>(100 * century + (years >> 32)) + nextYear,
            static_cast<int>(months >> 16) - (nextYear ? 12 : 0), static_cast<int>((months & 0xFFFF) / 2141) + 1};
}

/// The day on which a clock shows so many seconds.
constexpr NSInteger daysFromSeconds(NSInteger seconds) noexcept {
    constexpr NSInteger shift = 4 * lastDay;  // nothing negative to round
    return static_cast<NSInteger>(static_cast<NSUInteger>(seconds + shift * secondsADay) / secondsADay) - shift;
}

/// The time on a clock that shows so many seconds.
constexpr CivilTime civilFromSeconds(NSInteger seconds) noexcept {
    const NSInteger days = daysFromSeconds(seconds);
    const auto second = static_cast<std::uint32_t>(seconds - days * secondsADay);
    return {civilFromDays(days), static_cast<int>(second / 3600), static_cast<int>(second / 60 % 60),
            static_cast<int>(second % 60)};
}

/// The day, going back to the month's end where the month has no such day.
NSInteger daysFromCivilPinned(NSInteger year, int month, int day) noexcept;
int lengthOfMonth(NSInteger year, int month) noexcept;  ///< the last day's number
/// 1 for 1 January; the days that were left out are not counted.
constexpr NSInteger dayOfYear(NSInteger days, NSInteger year) noexcept { return days - daysFromCivil(year, 1, 1) + 1; }
constexpr NSInteger lengthOfYear(NSInteger year) noexcept {
    return daysFromCivil(year + 1, 1, 1) - daysFromCivil(year, 1, 1);
}

/// 1 for Sunday to 7 for Saturday.
constexpr int weekdayOf(NSInteger days) noexcept {
    const NSInteger rest = (days + 4) % 7;
    return static_cast<int>(rest < 0 ? rest + 8 : rest + 1);
}

/// How the weeks of a calendar are counted.
struct WeekRule {
    int firstWeekday;
    int minimumDays;
};

struct WeekOfYear {
    NSInteger year;
    NSInteger week;
};
WeekOfYear weekOfYear(NSInteger days, NSInteger year, WeekRule rule) noexcept;
/// The week of a month, 0 for the days before its first week.
NSInteger weekOfMonth(NSInteger days, int dayOfMonth, WeekRule rule) noexcept;
/// The first day of a year's week 1, or a month's, when it begins with the given day.
NSInteger startOfFirstWeek(NSInteger firstDay, WeekRule rule) noexcept;

}  // namespace tovi::detail
