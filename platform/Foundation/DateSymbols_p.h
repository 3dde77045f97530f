#pragma once

#include <memory>
#include <string>
#include <vector>

#include <ToviFoundationKit/Foundation/CivilTime_p.h>

namespace tovi::detail {

/// What a locale prints in dates: names, digits, weeks. Taken from ICU once for a locale, then shared by all threads.
struct DateSymbols {
    using Names = std::vector<std::u16string>;

    /// "Nov" and "November" and "N"; for weekdays also "Mo", in Shorter.
    enum Width { Abbreviated, Wide, Narrow, Shorter };

    Names eras[2];         ///< abbreviated and wide, from the era 0 on
    Names months[2][3];    ///< in a date, and standing alone; by width; from January on
    Names weekdays[2][4];  ///< the same, from Sunday on
    Names halvesOfDay;     ///< AM and PM
    char16_t zero = 0;     ///< the digits are this one and the nine that follow; 0 when they are not
    WeekRule weeks{1, 1};
    bool ownCalendarIsGregorian = true;  ///< whether the locale reckons by the Gregorian calendar

    /// `locale` is what NSLocale::dataName() says.
    static std::shared_ptr<const DateSymbols> ofLocale(const std::string& locale);

    explicit DateSymbols(const std::string& locale);
};

/// The locale with the Gregorian in place of its own calendar.
std::string withGregorianCalendar(const std::string& locale);

}  // namespace tovi::detail
