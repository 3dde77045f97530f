#pragma once

#include <chrono>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// Seconds from 1 January 1970 to 1 January 2001.
inline constexpr NSTimeInterval NSTimeIntervalSince1970 = 978307200.0;

/// A moment: seconds, with their fraction, since 1 January 2001, 00:00 GMT, leap seconds not counted. Immutable. Any
/// double is accepted; NaN is the same as NaN and earlier than every other moment.
class TOVI_EXPORT NSDate final : public NSObject {
    TOVI_DECLARE_CLASS(NSDate)

public:
    static Ref<NSDate> date();  ///< now, by Clock
    static Ref<NSDate> dateWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds);
    static Ref<NSDate> dateWithTimeIntervalSinceNow(NSTimeInterval seconds);
    static Ref<NSDate> dateWithTimeIntervalSince1970(NSTimeInterval seconds);
    static Ref<NSDate> dateWithTimePoint(std::chrono::system_clock::time_point time);
    static Ref<NSDate> distantPast();    ///< 1 January of the year 1, GMT
    static Ref<NSDate> distantFuture();  ///< 1 January of the year 4001, GMT

    NSTimeInterval timeIntervalSinceReferenceDate() const noexcept { return seconds_; }
    NSTimeInterval timeIntervalSince1970() const noexcept { return seconds_ + NSTimeIntervalSince1970; }
    NSTimeInterval timeIntervalSinceNow() const noexcept;
    NSTimeInterval timeIntervalSinceDate(const NSDate& other) const noexcept { return seconds_ - other.seconds_; }
    Ref<NSDate> dateByAddingTimeInterval(NSTimeInterval seconds) const;
    /// The nearest time point that the system clock's type can hold; its epoch for NaN.
    std::chrono::system_clock::time_point timePoint() const noexcept;

    NSComparisonResult compare(const NSDate& other) const noexcept;
    bool isEqualToDate(const NSDate& other) const noexcept { return compare(other) == NSOrderedSame; }
    Ref<NSDate> earlierDate(const NSDate& other) const;  ///< the receiver when they are the same
    Ref<NSDate> laterDate(const NSDate& other) const;

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    /// "2026-11-22 21:40:00 +0000": in GMT, by the proleptic Gregorian calendar, the fraction cut off toward the past.
    /// Beyond some ten million years, "5e+20 seconds since 2001-01-01 00:00:00 +0000".
    Ref<NSString> description() const override;
    Ref<NSObject> copy() const override;

private:
    explicit NSDate(NSTimeInterval seconds) noexcept : seconds_(seconds) {}

    NSTimeInterval seconds_;
};

}  // namespace tovi
