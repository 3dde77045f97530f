#pragma once

#include <cstdint>

#include <ToviFoundationKit/Foundation/NSCalendar.h>
#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSDictionary.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>

namespace tovi {
inline namespace QVLAdditions {

// Shared Gregorian calendars, made when first asked for and kept. They belong to the main thread; on any other one each
// call makes a new calendar. Whoever changes a shared one changes it for everybody.

TOVI_EXPORT Ref<NSCalendar> gregorian();     ///< in the time zone that was the default one when it was made
TOVI_EXPORT Ref<NSCalendar> gregorianGMT();  ///< in GMT
/// In the time zone that was the default one when it was made; weeks begin on Monday.
TOVI_EXPORT Ref<NSCalendar> isogregorian();
/// Gives the shared calendar `gregorian` the default time zone; call it when that has changed. `isogregorian` keeps its
/// own. Off the main thread, or before `gregorian` was asked for, this does nothing.
TOVI_EXPORT void resetGregorianDefaultTimeZone();

/// Noon GMT of the date's day in `gregorian`; nil for nil, and for a date that is not a number.
TOVI_EXPORT RefPtr<NSDate> gmtDateFromDate(const NSDate* date);
inline RefPtr<NSDate> gmtDateFromDate(const NSDate& date) { return gmtDateFromDate(&date); }

// Weeks. They begin on the day `start`, 0 for Sunday to 6 for Saturday (others raise NSInvalidArgumentException), and
// week 1 is the one with 1 January, however few of its days are in the year.

/// The seven dates, at 0:00, of a week of a year; nil unless the week is 1 to 53 and the year at least 1.
TOVI_EXPORT RefPtr<NSMutableArray> dateArrayWithWeekNumber_andYear_andWeekStartsOn(NSInteger week, NSInteger year,
                                                                                   NSInteger start);
/// The same with weeks from Monday, or else from Sunday.
TOVI_EXPORT RefPtr<NSMutableArray> dateArrayWithWeekNumber_andYear_andWeekStartsOnMonday(NSInteger week, NSInteger year,
                                                                                         bool startsOnMonday);
/// The number of the receiver's week; NSNotFound for a date that is not a number.
TOVI_EXPORT NSInteger weekOfYearAndStartsOn(const NSDate& receiver, NSInteger start);
TOVI_EXPORT NSInteger weekOfYearAndStartsOnMonday(const NSDate& receiver, bool startsOnMonday);

// Weeks of ISO 8601: from Monday, and week 1 has at least four days of the year.

/// The dates from Monday to Sunday, at 0:00 in `isogregorian`, of a week of a year; nil unless the week is 1 to 53 and
/// the year at least 1.
TOVI_EXPORT RefPtr<NSMutableArray> dateArrayWithISOWeekNumber_andYear(NSInteger week, NSInteger year);
/// What the function `week` below says of the receiver's day in `isogregorian`; NSNotFound for a date that is not a
/// number.
TOVI_EXPORT NSInteger ISOWeekOfYear(const NSDate& receiver);

// Months, in `gregorian`. Every fourth year has a 29 February here, 1900 and 2100 too.

/// Whether the receiver's month has a day of that number.
TOVI_EXPORT bool dayInsideMonth(const NSDate& receiver, NSInteger day);
/// The days of the receiver's month, at 0:00, from the 2nd to the last: the 1st is not in the list.
TOVI_EXPORT Ref<NSMutableArray> dateMonthArray(const NSDate& receiver);

/// The receiver plus so much, in `gregorian`, as NSCalendar adds components: a day that the month does not have becomes
/// its last one.
TOVI_EXPORT Ref<NSDate> dateByAddingYears_months_days_hours_minutes_seconds(const NSDate& receiver, NSInteger years,
                                                                            NSInteger months, NSInteger days,
                                                                            NSInteger hours, NSInteger minutes,
                                                                            NSInteger seconds);
/// The same in `gregorianGMT` if so wanted.
TOVI_EXPORT Ref<NSDate> dateByAddingYears_months_days_hours_minutes_seconds_GMT(const NSDate& receiver, NSInteger years,
                                                                                NSInteger months, NSInteger days,
                                                                                NSInteger hours, NSInteger minutes,
                                                                                NSInteger seconds, bool inGMT);

/// Whether the receiver is later than the first and earlier than the second date; inclusive, it may also be one of
/// them. A nil date is an assertion failure, and then false.
TOVI_EXPORT bool isBetweenDate_andDate_isInclusive(const NSDate& receiver, const NSDate* first, const NSDate* second,
                                                   bool inclusive);
inline bool isBetweenDate_andDate_isInclusive(const NSDate& receiver, const NSDate& first, const NSDate& second,
                                              bool inclusive) {
    return isBetweenDate_andDate_isInclusive(receiver, &first, &second, inclusive);
}

// Deprecated: both log that they are.

/// The receiver as `shortTimeAndShortDateFormatter` prints it, whatever the format.
TOVI_EXPORT RefPtr<NSString> descriptionWithCalendarFormat(const NSDate& receiver, const NSString* format);
inline RefPtr<NSString> descriptionWithCalendarFormat(const NSDate& receiver, const NSString& format) {
    return descriptionWithCalendarFormat(receiver, &format);
}
TOVI_EXPORT RefPtr<NSDictionary> localeDictionary();  ///< nil

}  // namespace QVLAdditions
}  // namespace tovi

extern "C" {

/// The day of the week in the Gregorian calendar, 0 for Monday to 6 for Sunday.
TOVI_EXPORT std::int64_t weekDay(std::int64_t day, std::int64_t month, std::int64_t year);

/// The week of ISO 8601: its number, 1 to 53, where it belongs to the year of the day; otherwise the week's year x 100
/// + the number. 1 January 2021 gives 202053, 30 December 2019 gives 202001. For any number of threads at once.
TOVI_EXPORT std::int64_t week(std::int64_t day, std::int64_t month, std::int64_t year);
}
