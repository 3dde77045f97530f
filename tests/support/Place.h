#pragma once

#include <ToviFoundationKit/ToviFoundationKit.h>

/// Another default zone for as long as it lives.
class ScopedTimeZone {
public:
    explicit ScopedTimeZone(std::u16string_view name) {
        using namespace tovi;
        NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName(NSString::stringWithCharacters(name)).ref());
    }
    ~ScopedTimeZone() { tovi::NSTimeZone::setDefaultTimeZone(nullptr); }
    ScopedTimeZone(const ScopedTimeZone&) = delete;
    ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;
};

/// Another current locale for as long as it lives.
class ScopedLocale {
public:
    explicit ScopedLocale(std::u16string_view identifier) {
        using namespace tovi;
        NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier(NSString::stringWithCharacters(identifier)));
    }
    ~ScopedLocale() { tovi::NSLocale::setCurrentLocale(nullptr); }
    ScopedLocale(const ScopedLocale&) = delete;
    ScopedLocale& operator=(const ScopedLocale&) = delete;
};

inline tovi::Ref<tovi::NSDate> dateIn(const tovi::NSCalendar& calendar, tovi::NSInteger year, tovi::NSInteger month,
                                      tovi::NSInteger day, tovi::NSInteger hour, tovi::NSInteger minute) {
    const auto parts = tovi::NSDateComponents::init();
    parts->setYear(year);
    parts->setMonth(month);
    parts->setDay(day);
    parts->setHour(hour);
    parts->setMinute(minute);
    return calendar.dateFromComponents(parts).ref();
}
