#include <ToviFoundationKit/Foundation/NSDate.h>

#include <cmath>

#include <ToviFoundationKit/Foundation/Clock.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSDate, NSObject)

Ref<NSDate> NSDate::dateWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds) {
    return adopt(*new NSDate(seconds));
}

Ref<NSDate> NSDate::date() { return dateWithTimeIntervalSinceNow(0); }

Ref<NSDate> NSDate::dateWithTimeIntervalSinceNow(NSTimeInterval seconds) {
    return dateWithTimeIntervalSinceReferenceDate(Clock::current().now() + seconds);
}

Ref<NSDate> NSDate::dateWithTimeIntervalSince1970(NSTimeInterval seconds) {
    return dateWithTimeIntervalSinceReferenceDate(seconds - NSTimeIntervalSince1970);
}

Ref<NSDate> NSDate::dateWithTimePoint(std::chrono::system_clock::time_point time) {
    return dateWithTimeIntervalSince1970(std::chrono::duration<double>(time.time_since_epoch()).count());
}

Ref<NSDate> NSDate::distantPast() { return dateWithTimeIntervalSinceReferenceDate(-63113904000.0); }
Ref<NSDate> NSDate::distantFuture() { return dateWithTimeIntervalSinceReferenceDate(63113904000.0); }

NSTimeInterval NSDate::timeIntervalSinceNow() const noexcept { return seconds_ - Clock::current().now(); }

Ref<NSDate> NSDate::dateByAddingTimeInterval(NSTimeInterval seconds) const {
    return dateWithTimeIntervalSinceReferenceDate(seconds_ + seconds);
}

std::chrono::system_clock::time_point NSDate::timePoint() const noexcept {
    using namespace std::chrono;
    const double seconds = timeIntervalSince1970();
    if (std::isnan(seconds))
        return {};
    if (seconds >= duration<double>(system_clock::duration::max()).count())
        return system_clock::time_point::max();
    if (seconds <= duration<double>(system_clock::duration::min()).count())
        return system_clock::time_point::min();
    return system_clock::time_point(duration_cast<system_clock::duration>(duration<double>(seconds)));
}

NSComparisonResult NSDate::compare(const NSDate& other) const noexcept {
    if (seconds_ < other.seconds_)
        return NSOrderedAscending;
    if (seconds_ > other.seconds_)
        return NSOrderedDescending;
    return static_cast<NSComparisonResult>(std::isnan(other.seconds_) - std::isnan(seconds_));
}

Ref<NSDate> NSDate::earlierDate(const NSDate& other) const {
    return share(compare(other) == NSOrderedDescending ? other : *this);
}

Ref<NSDate> NSDate::laterDate(const NSDate& other) const {
    return share(compare(other) == NSOrderedAscending ? other : *this);
}

bool NSDate::isEqual(const NSObject* other) const {
    const auto* date = as<NSDate>(other);
    return date && isEqualToDate(*date);
}

NSUInteger NSDate::hash() const { return std::isnan(seconds_) ? 0 : std::hash<double>()(seconds_); }

namespace {

struct CivilDate {
    NSInteger year;
    int month;
    int day;
};

// The standard library's calendar ends at the year 32767, so whole cycles of 400 years are put aside.
CivilDate civilFromDays(NSInteger daysSince2001) {
    using namespace std::chrono;
    constexpr NSInteger daysACycle = 146097;
    const NSInteger cycle = daysSince2001 / daysACycle - (daysSince2001 % daysACycle < 0);
    const year_month_day date = sys_days(year(2001) / January / 1) + days(daysSince2001 - cycle * daysACycle);
    return {static_cast<int>(date.year()) + 400 * cycle, static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}

}  // namespace

Ref<NSString> NSDate::description() const {
    if (!(std::abs(seconds_) < 3e14))
        return NSString::stringWithFormat(u"%g seconds since 2001-01-01 00:00:00 +0000", seconds_);
    constexpr NSInteger secondsADay = 86400;
    const auto whole = static_cast<NSInteger>(std::floor(seconds_));
    const NSInteger day = whole / secondsADay - (whole % secondsADay < 0);
    const NSInteger second = whole - day * secondsADay;
    const auto [year, month, dayOfMonth] = civilFromDays(day);
    return NSString::stringWithFormat(u"%04ld-%02d-%02d %02ld:%02ld:%02ld +0000", year, month, dayOfMonth,
                                      second / 3600, second / 60 % 60, second % 60);
}

Ref<NSObject> NSDate::copy() const { return share(*this); }

namespace {

const Additions<NSDate> additions{
    classLevel<&NSDate::date>("date"),
    classLevel<&NSDate::dateWithTimeIntervalSinceReferenceDate>("dateWithTimeIntervalSinceReferenceDate:"),
    classLevel<&NSDate::dateWithTimeIntervalSinceNow>("dateWithTimeIntervalSinceNow:"),
    classLevel<&NSDate::dateWithTimeIntervalSince1970>("dateWithTimeIntervalSince1970:"),
    classLevel<&NSDate::distantPast>("distantPast"),
    classLevel<&NSDate::distantFuture>("distantFuture"),
    instance<&NSDate::timeIntervalSinceReferenceDate>("timeIntervalSinceReferenceDate"),
    instance<&NSDate::timeIntervalSince1970>("timeIntervalSince1970"),
    instance<&NSDate::timeIntervalSinceNow>("timeIntervalSinceNow"),
    instance<&NSDate::timeIntervalSinceDate>("timeIntervalSinceDate:"),
    instance<&NSDate::dateByAddingTimeInterval>("dateByAddingTimeInterval:"),
    instance<&NSDate::compare>("compare:"),
    instance<&NSDate::isEqualToDate>("isEqualToDate:"),
    instance<&NSDate::earlierDate>("earlierDate:"),
    instance<&NSDate::laterDate>("laterDate:"),
};

}  // namespace

}  // namespace tovi
