#pragma once

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

class NSArray;
class NSCoder;
class NSDate;
namespace detail {
class TimeZoneRules;
}

/// A region's clock: how far it is from GMT at any moment. Immutable. What is known of a zone is read once and shared
/// by all its objects and threads for as long as the process lives; using a zone opens no file and asks nobody.
///
/// Rules for summer time that are in force go on for ever. A moment that is not a number is taken for the reference
/// date (1 January 2001).
class TOVI_EXPORT NSTimeZone final : public NSObject {
    TOVI_DECLARE_CLASS(NSTimeZone)

public:
    /// By a name of the time zone database ("Europe/Berlin"), exactly as it is written there, or by a distance from GMT
    /// ("GMT", "GMT+1", "GMT-03:30"); nil for any other.
    static RefPtr<NSTimeZone> timeZoneWithName(const NSString& name);
    /// A zone that is always so far from GMT, positive to the east, named "GMT+0100"; nil beyond 18 hours.
    static RefPtr<NSTimeZone> timeZoneForSecondsFromGMT(NSInteger seconds);
    static Ref<NSArray> knownTimeZoneNames();  ///< those of the time zone database, sorted

    /// The machine's zone: by the variable TZ, else by /etc/localtime; GMT where both are wanting. Asked for once.
    static Ref<NSTimeZone> systemTimeZone();
    /// Has the machine's zone asked for again when it is needed next.
    static void resetSystemTimeZone();
    /// The zone of calendars and formatters that are made from now on: the one that was set, else the machine's.
    /// Atomic, for any number of threads.
    static Ref<NSTimeZone> defaultTimeZone();
    static void setDefaultTimeZone(RefPtr<NSTimeZone> zone);  ///< nil goes back to the machine's

    Ref<NSString> name() const { return *name_; }
    /// What the current locale prints for the zone in short: "CET", "GMT+1".
    Ref<NSString> abbreviation() const;
    Ref<NSString> abbreviationForDate(const NSDate& date) const;
    NSInteger secondsFromGMT() const;
    NSInteger secondsFromGMTForDate(const NSDate& date) const;
    bool isDaylightSavingTime() const;
    bool isDaylightSavingTimeForDate(const NSDate& date) const;
    /// The first moment after the date from which on the distance from GMT, or whether that is summer time, is another;
    /// nil when there is none.
    RefPtr<NSDate> nextDaylightSavingTimeTransitionAfterDate(const NSDate& date) const;

    bool isEqualToTimeZone(const NSTimeZone& other) const noexcept;
    bool isEqual(const NSObject* other) const override;  ///< of the same name
    NSUInteger hash() const override;
    Ref<NSString> description() const override;  ///< "Europe/Berlin (GMT+1)", with the abbreviation of the moment
    Ref<NSObject> copy() const override;
    void encodeWithCoder(NSCoder& coder) const;
    void initWithCoder(NSCoder& coder);

    const detail::TimeZoneRules& rules() const noexcept { return *rules_; }

private:
    NSTimeZone();
    NSTimeZone(const NSString& name, const detail::TimeZoneRules& rules) noexcept;
    ~NSTimeZone() override = default;
    static Ref<NSTimeZone> withRules(const NSString& name, const detail::TimeZoneRules& rules);

    RefPtr<NSString> name_;
    const detail::TimeZoneRules* rules_;
};

}  // namespace tovi
