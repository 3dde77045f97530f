#pragma once

#include <memory>

#include <ToviFoundationKit/Foundation/NSCalendar.h>

namespace tovi {

enum NSDateFormatterStyle : NSUInteger {
    NSDateFormatterNoStyle = 0,
    NSDateFormatterShortStyle = 1,
    NSDateFormatterMediumStyle = 2,
    NSDateFormatterLongStyle = 3,
    NSDateFormatterFullStyle = 4
};

/// Prints dates, and reads them, by a pattern (UTS #35: "yyyy-MM-dd HH:mm") or in the styles of a locale.
///
/// A new formatter has neither pattern nor styles and prints the empty text, in the current locale and the default time
/// zone of the moment at which it was made. It prints in the calendar of its locale (in Thailand, Buddhist years)
/// unless one is set. What a pattern means is worked out when it is used first, and again after a property was changed.
///
/// Mutable, and not for several threads at once: printing uses memory of the formatter's.
class TOVI_EXPORT NSDateFormatter : public NSObject {
    TOVI_DECLARE_CLASS(NSDateFormatter)

public:
    static Ref<NSDateFormatter> init();

    /// The pattern, if one was set, else that of the styles in the locale.
    Ref<NSString> dateFormat() const;
    /// Takes the place of the styles. Text between apostrophes is printed as it stands, two of them are one apostrophe;
    /// a missing closing one is added. The letter l is left out; any other ASCII letter without a meaning spoils the
    /// pattern: nothing is printed or read with it.
    void setDateFormat(const NSString& pattern);
    NSDateFormatterStyle dateStyle() const noexcept;
    /// Takes the place of a pattern. Raises NSInvalidArgumentException beyond the full style.
    void setDateStyle(NSDateFormatterStyle style);
    NSDateFormatterStyle timeStyle() const noexcept;
    void setTimeStyle(NSDateFormatterStyle style);

    Ref<NSLocale> locale() const;
    void setLocale(RefPtr<NSLocale> locale);  ///< nil stands for the current one
    Ref<NSTimeZone> timeZone() const;
    void setTimeZone(RefPtr<NSTimeZone> zone);  ///< nil stands for the default one
    /// A Gregorian calendar with the weeks of the locale and the zone of the formatter, unless one was set.
    Ref<NSCalendar> calendar() const;
    /// The calendar's weeks are used, not its zone. nil stands for the locale's own calendar.
    void setCalendar(RefPtr<NSCalendar> calendar);
    bool isLenient() const noexcept;  ///< false at first
    void setLenient(bool lenient) noexcept;

    /// nil when the pattern is spoilt or the moment is not a number. Moments beyond the ends of NSCalendar are taken
    /// for them. Fractions of a second are cut off, except that what is a twentieth of a millisecond short of the next
    /// one counts as that.
    virtual RefPtr<NSString> stringFromDate(const NSDate& date) const;

    /// The moment that the text tells; nil when it does not follow the pattern from its beginning to its end. What the
    /// pattern leaves open is that of 1 January 2000, 0:00. Years with two digits, where the pattern has two, are 1950
    /// to 2049. Fields out of range, and times that the clocks skip, give nil; of two that they show twice, the first.
    /// With a pattern that has fractions of a second, a text of more than 34 digits is not read.
    ///
    /// A lenient formatter lets fields carry over (32 January), is content with less punctuation, and does not mind
    /// what follows behind.
    virtual RefPtr<NSDate> dateFromString(const NSString& text) const;

    Ref<NSObject> copy() const override;  ///< a new NSDateFormatter, as mutable as the receiver

protected:
    NSDateFormatter();
    ~NSDateFormatter() override;
    void takeSettings(const NSDateFormatter& other);  ///< for copies of subclasses

private:
    struct Content;
    std::unique_ptr<Content> content_;
};

}  // namespace tovi
