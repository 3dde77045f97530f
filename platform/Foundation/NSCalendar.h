#pragma once

#include <ToviFoundationKit/Foundation/NSDateComponents.h>
#include <ToviFoundationKit/Foundation/NSLocale.h>
#include <ToviFoundationKit/Foundation/NSTimeZone.h>

namespace tovi {

class NSDate;

inline constexpr std::u16string_view NSGregorianCalendar = u"gregorian";
inline constexpr std::u16string_view NSISO8601Calendar = u"iso8601";  ///< Gregorian, its weeks as ISO 8601 has them

/// The Gregorian calendar in a time zone: turns moments into years, months and days and back.
///
/// Up to 4 October 1582 dates are those of the Julian calendar; the next day is 15 October 1582. Years count up from 1
/// in the era 1 and, before it, from 1 backwards in the era 0; the years of weeks have no era, the one before 1 is 0.
/// Weekdays are 1 for Sunday to 7 for Saturday.
///
/// The calendar reaches some three million years to either side. Moments beyond, infinite ones too, are taken for its
/// ends, which are multiples of a day in GMT. One that is not a number has no fields.
///
/// Archived by keyed coders only. Mutable; not for several threads at once.
class TOVI_EXPORT NSCalendar final : public NSObject {
    TOVI_DECLARE_CLASS(NSCalendar)

public:
    /// In the default time zone, without a locale: weeks begin on Sunday, and week 1 is the one with 1 January
    /// ("iso8601": on Monday, and week 1 has at least four days of the year). nil for calendars other than the two
    /// above.
    static RefPtr<NSCalendar> calendarWithIdentifier(const NSString& identifier);
    static RefPtr<NSCalendar> initWithCalendarIdentifier(const NSString& identifier);

    Ref<NSString> calendarIdentifier() const { return *identifier_; }
    Ref<NSTimeZone> timeZone() const { return zone_; }
    void setTimeZone(const NSTimeZone& zone) { zone_ = share(zone); }
    RefPtr<NSLocale> locale() const { return locale_; }
    /// The locale brings its first weekday and days of the first week, where they have not been set.
    void setLocale(RefPtr<NSLocale> locale);
    NSUInteger firstWeekday() const noexcept { return firstWeekday_; }
    void setFirstWeekday(NSUInteger weekday);  ///< raises NSInvalidArgumentException unless 1 to 7
    NSUInteger minimumDaysInFirstWeek() const noexcept { return minimumDays_; }
    void setMinimumDaysInFirstWeek(NSUInteger days);  ///< raises NSInvalidArgumentException unless 1 to 7

    /// The fields of the moment that `units` names; the others, and all for what is not a number, are undefined.
    Ref<NSDateComponents> components_fromDate(NSCalendarUnit units, const NSDate& date) const;

    /// The moment at which the fields are as given. What is undefined counts as its first: year 1 of the era 1, month
    /// 1, day 1, 0 hours. Fields out of range carry over: month 14 is February of the next year, day 0 the last day of
    /// the month before. The days that 1582 left out stand for those ten days later.
    ///
    /// Where the day is undefined, it may be named by its week: the first of these that is defined counts.
    /// weekOfYear or week (with yearForWeekOfYear, else year), weekOfMonth, both with the weekday or the first one of
    /// the week; weekdayOrdinal with weekday, the n-th in the month (-1 is the last). Beside a day these, and always
    /// the quarter, are ignored.
    ///
    /// A time that the clocks skip is later by what they skip (2:30 in a gap from 2:00 to 3:00 is 3:30); of two that
    /// they show twice it is the first. nil when the moment, or a field by itself, is beyond the calendar's ends.
    RefPtr<NSDate> dateFromComponents(const NSDateComponents& components) const;

    /// Adds the years, and then the months, going back to the month's end where it has no such day (31 January plus a
    /// month is 28 or 29 February); then weeks and days, at the same time of day, which is found as above; then hours,
    /// minutes, seconds and nanoseconds, as they pass. Undefined fields count as 0; era, weekday, weekdayOrdinal and
    /// the year of a week are ignored; a quarter is three months. Sums beyond the calendar's ends are its ends; adding
    /// to infinity and to what is not a number changes nothing. Fractions of the second are kept.
    ///
    /// `options` is 0; others raise NSInvalidArgumentException.
    Ref<NSDate> dateByAddingComponents_toDate_options(const NSDateComponents& components, const NSDate& date,
                                                      NSUInteger options) const;

    /// Which of the smaller units in the larger one the moment is in, from 1: the day in the year, the hour in the day,
    /// the weekday in the week; weeks by their number. By the clock: an hour that is skipped counts. NSNotFound where
    /// the units do not fit or the moment is not a number.
    NSInteger ordinalityOfUnit_inUnit_forDate(NSCalendarUnit smaller, NSCalendarUnit larger, const NSDate& date) const;
    /// The values that the smaller unit has in the larger one around the moment: days in a month {1, 30}, hours in a
    /// day {0, 24}. {NSNotFound, 0} where the units do not fit or the moment is not a number.
    NSRange rangeOfUnit_inUnit_forDate(NSCalendarUnit smaller, NSCalendarUnit larger, const NSDate& date) const;

    /// Of the same identifier, zone, locale and weeks.
    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    Ref<NSObject> copy() const override;  ///< a new calendar, as mutable as the receiver
    void encodeWithCoder(NSCoder& coder) const;
    void initWithCoder(NSCoder& coder);

private:
    NSCalendar();
    explicit NSCalendar(const NSString& identifier);
    ~NSCalendar() override = default;
    void applyLocale();

    RefPtr<NSString> identifier_;
    Ref<NSTimeZone> zone_;
    RefPtr<NSLocale> locale_;
    unsigned char firstWeekday_ = 1;
    unsigned char minimumDays_ = 1;
    bool firstWeekdaySet_ = false;
    bool minimumDaysSet_ = false;
};

}  // namespace tovi
