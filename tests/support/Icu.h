#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/udat.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

/// ICU itself, to compare answers with. Seconds are counted from 1970.
namespace icu_reference {

inline UErrorCode error = U_ZERO_ERROR;

// Both are typedefs of void.
struct CloseCalendar {
    void operator()(UCalendar* calendar) const { ucal_close(calendar); }
};
struct CloseFormat {
    void operator()(UDateFormat* format) const { udat_close(format); }
};
using Calendar = std::unique_ptr<UCalendar, CloseCalendar>;
using Format = std::unique_ptr<UDateFormat, CloseFormat>;

inline Calendar calendar(std::u16string_view zone) {
    Calendar made(ucal_open(zone.data(), static_cast<int>(zone.size()), "en_US", UCAL_GREGORIAN, &error));
    ucal_setAttribute(made.get(), UCAL_REPEATED_WALL_TIME, UCAL_WALLTIME_FIRST);
    return made;
}

inline int field(const Calendar& at, UCalendarDateFields which) { return ucal_get(at.get(), which, &error); }
inline void set(const Calendar& to, double second) { ucal_setMillis(to.get(), second * 1000, &error); }
inline double second(const Calendar& at) { return ucal_getMillis(at.get(), &error) / 1000; }
/// Seconds from GMT.
inline int offset(const Calendar& at) { return (field(at, UCAL_ZONE_OFFSET) + field(at, UCAL_DST_OFFSET)) / 1000; }

/// The seconds at which the zone's clock changes.
inline std::vector<double> transitions(const Calendar& of, double from, double to) {
    std::vector<double> found;
    set(of, from);
    double next = 0;
    while (ucal_getTimeZoneTransitionDate(of.get(), UCAL_TZ_TRANSITION_NEXT, &next, &error) && next / 1000 < to) {
        found.push_back(next / 1000);
        set(of, next / 1000);
    }
    return found;
}

inline std::u16string print(UDateFormat* format, double milliseconds) {
    UChar text[1024];
    const int length = udat_format(format, milliseconds, text, 1024, nullptr, &error);
    return {text, static_cast<std::size_t>(length)};
}

}  // namespace icu_reference

namespace moments {

inline tovi::Ref<tovi::NSDate> at(double second) { return tovi::NSDate::dateWithTimeIntervalSince1970(second); }
inline tovi::Ref<tovi::NSTimeZone> zone(std::u16string_view name) {
    return tovi::NSTimeZone::timeZoneWithName(tovi::NSString::stringWithCharacters(name)).ref();
}
inline double since1970(const tovi::NSDate& date) { return date.timeIntervalSince1970(); }

}  // namespace moments
