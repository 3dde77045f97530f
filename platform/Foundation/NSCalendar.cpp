#include <ToviFoundationKit/Foundation/NSCalendar.h>

#include <algorithm>
#include <cmath>

#include <ToviFoundationKit/Foundation/CivilTime_p.h>
#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/TimeZoneRules_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSCalendar, NSObject)

using detail::CivilDay;
using detail::secondsADay;
using detail::WeekRule;

// --- Making one ------------------------------------------------------------------------------------------------------

NSCalendar::NSCalendar() : NSCalendar(NSString::stringWithCharacters(NSGregorianCalendar)) {}

NSCalendar::NSCalendar(const NSString& identifier)
    : identifier_(NSString::stringWithString(identifier)), zone_(NSTimeZone::defaultTimeZone()) {
    applyLocale();
}

RefPtr<NSCalendar> NSCalendar::calendarWithIdentifier(const NSString& identifier) {
    if (identifier != NSGregorianCalendar && identifier != NSISO8601Calendar)
        return nullptr;
    return RefPtr<NSCalendar>(adopt(*new NSCalendar(identifier)));
}

RefPtr<NSCalendar> NSCalendar::initWithCalendarIdentifier(const NSString& identifier) {
    return calendarWithIdentifier(identifier);
}

void NSCalendar::applyLocale() {
    const bool iso = *identifier_ == NSISO8601Calendar;
    if (!firstWeekdaySet_)
        firstWeekday_ = static_cast<unsigned char>(iso ? 2 : locale_ ? locale_->firstWeekday() : 1);
    if (!minimumDaysSet_)
        minimumDays_ = static_cast<unsigned char>(iso ? 4 : locale_ ? locale_->minimumDaysInFirstWeek() : 1);
}

void NSCalendar::setLocale(RefPtr<NSLocale> locale) {
    locale_ = std::move(locale);
    applyLocale();
}

namespace {

unsigned char checkedDays(NSUInteger days, const char* operation) {
    if (days < 1 || days > 7)
        NSException::raise(NSInvalidArgumentException, u"*** -[NSCalendar %s]: %lu is not from 1 to 7", operation,
                           days);
    return static_cast<unsigned char>(days);
}

}  // namespace

void NSCalendar::setFirstWeekday(NSUInteger weekday) {
    firstWeekday_ = checkedDays(weekday, "setFirstWeekday:");
    firstWeekdaySet_ = true;
}

void NSCalendar::setMinimumDaysInFirstWeek(NSUInteger days) {
    minimumDays_ = checkedDays(days, "setMinimumDaysInFirstWeek:");
    minimumDaysSet_ = true;
}

// --- From a moment to fields -----------------------------------------------------------------------------------------

namespace {

void setWeeks(NSDateComponents& fields, NSUInteger units, NSInteger days, const CivilDay& civil, WeekRule rule) {
    const auto [year, week] = detail::weekOfYear(days, civil.year, rule);
    if (units & NSCalendarUnitWeek)
        fields.setWeek(week);
    if (units & NSCalendarUnitWeekOfYear)
        fields.setWeekOfYear(week);
    if (units & NSCalendarUnitYearForWeekOfYear)
        fields.setYearForWeekOfYear(year);
    if (units & NSCalendarUnitWeekOfMonth)
        fields.setWeekOfMonth(detail::weekOfMonth(days, civil.day, rule));
}

void setTime(NSDateComponents& fields, NSUInteger units, int secondOfDay) {
    if (units & NSCalendarUnitHour)
        fields.setHour(secondOfDay / 3600);
    if (units & NSCalendarUnitMinute)
        fields.setMinute(secondOfDay / 60 % 60);
    if (units & NSCalendarUnitSecond)
        fields.setSecond(secondOfDay % 60);
}

void setDay(NSDateComponents& fields, NSUInteger units, NSInteger days, const CivilDay& civil) {
    const bool common = civil.year > 0;
    if (units & NSCalendarUnitEra)
        fields.setEra(common);
    if (units & NSCalendarUnitYear)
        fields.setYear(common ? civil.year : 1 - civil.year);
    if (units & NSCalendarUnitMonth)
        fields.setMonth(civil.month);
    if (units & NSCalendarUnitDay)
        fields.setDay(civil.day);
    if (units & NSCalendarUnitWeekday)
        fields.setWeekday(detail::weekdayOf(days));
    if (units & NSCalendarUnitWeekdayOrdinal)
        fields.setWeekdayOrdinal((civil.day - 1) / 7 + 1);
    if (units & NSCalendarUnitQuarter)
        fields.setQuarter((civil.month + 2) / 3);
}

}  // namespace

Ref<NSDateComponents> NSCalendar::components_fromDate(NSCalendarUnit units, const NSDate& date) const {
    constexpr NSUInteger weeks =
        NSCalendarUnitWeek | NSCalendarUnitWeekOfYear | NSCalendarUnitYearForWeekOfYear | NSCalendarUnitWeekOfMonth;
    Ref<NSDateComponents> fields = NSDateComponents::init();
    if (std::isnan(date.timeIntervalSinceReferenceDate()))
        return fields;
    const detail::Moment moment = detail::momentFrom(date.timeIntervalSinceReferenceDate());
    const NSInteger clock = moment.second + zone_->rules().stretchAt(moment.second).offset;
    const NSInteger days = detail::daysFromSeconds(clock);
    const CivilDay civil = detail::civilFromDays(days);
    setDay(fields, units, days, civil);
    setTime(fields, units, static_cast<int>(clock - days * secondsADay));
    if (units & weeks)
        setWeeks(fields, units, days, civil, {firstWeekday_, minimumDays_});
    if (units & NSCalendarUnitNanosecond)
        fields->setNanosecond(static_cast<NSInteger>(moment.fraction * 1e9));
    return fields;
}

// --- From fields to a moment -----------------------------------------------------------------------------------------

namespace {

bool isDefined(NSInteger field) noexcept { return field != NSUndefinedDateComponent; }
NSInteger valueOr(NSInteger field, NSInteger otherwise) noexcept { return isDefined(field) ? field : otherwise; }

// By itself, no field may lead far beyond the calendar. So nothing that is computed with them can overflow.
constexpr NSInteger mostDays = 2 * detail::lastDay, mostYears = mostDays / 365, mostMonths = 12 * mostYears,
                    mostWeeks = mostDays / 7, mostHours = 24 * mostDays, mostMinutes = 60 * mostHours,
                    mostSeconds = 60 * mostMinutes;

bool isWithin(NSInteger field, NSInteger most) noexcept {
    return !isDefined(field) || (-most <= field && field <= most);
}

bool areWithin(const NSDateComponents& fields) noexcept {
    return isWithin(fields.year(), mostYears) && isWithin(fields.yearForWeekOfYear(), mostYears) &&
           isWithin(fields.month(), mostMonths) && isWithin(fields.day(), mostDays) &&
           isWithin(fields.week(), mostWeeks) && isWithin(fields.weekOfYear(), mostWeeks) &&
           isWithin(fields.weekOfMonth(), mostWeeks) && isWithin(fields.weekdayOrdinal(), mostWeeks) &&
           isWithin(fields.hour(), mostHours) && isWithin(fields.minute(), mostMinutes) &&
           isWithin(fields.second(), mostSeconds);
}

/// From 0 to 6.
NSInteger daysFromTo(NSInteger weekday, NSInteger later) noexcept { return ((later % 7 - weekday) % 7 + 7) % 7; }

/// A day in the n-th week of a year or a month that begins with the given day.
NSInteger dayInWeek(const NSDateComponents& fields, NSInteger firstDay, NSInteger week, WeekRule rule) noexcept {
    const NSInteger weekday = valueOr(fields.weekday(), rule.firstWeekday);
    return detail::startOfFirstWeek(firstDay, rule) + 7 * (week - 1) + daysFromTo(rule.firstWeekday, weekday);
}

NSInteger nthWeekday(NSInteger weekday, NSInteger n, NSInteger firstDay, int lengthOfMonth) noexcept {
    if (n >= 0)
        return firstDay + daysFromTo(detail::weekdayOf(firstDay), weekday) + 7 * (n - 1);
    const NSInteger lastDay = firstDay + lengthOfMonth - 1;
    return lastDay - daysFromTo(weekday % 7, detail::weekdayOf(lastDay)) + 7 * (n + 1);
}

NSInteger dayFrom(const NSDateComponents& fields, WeekRule rule) noexcept {
    NSInteger year = valueOr(fields.year(), 1);
    if (fields.era() == 0)
        year = 1 - year;
    const NSInteger week = valueOr(fields.weekOfYear(), fields.week());
    if (!isDefined(fields.day()) && isDefined(week))
        return dayInWeek(fields, detail::daysFromCivil(valueOr(fields.yearForWeekOfYear(), year), 1, 1), week, rule);

    const NSInteger months = valueOr(fields.month(), 1) - 1;
    const NSInteger carried = detail::floorDivide(months, 12);
    const int month = static_cast<int>(months - 12 * carried) + 1;
    year += carried;
    if (isDefined(fields.day()))
        return detail::daysFromCivil(year, month, fields.day());
    const NSInteger first = detail::daysFromCivil(year, month, 1);
    if (isDefined(fields.weekOfMonth()))
        return dayInWeek(fields, first, fields.weekOfMonth(), rule);
    if (isDefined(fields.weekdayOrdinal()) && isDefined(fields.weekday()))
        return nthWeekday(fields.weekday(), fields.weekdayOrdinal(), first, detail::lengthOfMonth(year, month));
    return first;
}

Ref<NSDate> dateAt(NSInteger second, double fraction) {
    return NSDate::dateWithTimeIntervalSinceReferenceDate(detail::sinceReference(second) + fraction);
}

constexpr NSInteger nanosecondsASecond = 1'000'000'000;

}  // namespace

RefPtr<NSDate> NSCalendar::dateFromComponents(const NSDateComponents& fields) const {
    if (!areWithin(fields))
        return nullptr;
    const NSInteger clock = dayFrom(fields, {firstWeekday_, minimumDays_}) * secondsADay +
                            valueOr(fields.hour(), 0) * 3600 + valueOr(fields.minute(), 0) * 60 +
                            valueOr(fields.second(), 0);
    const NSInteger nanoseconds = valueOr(fields.nanosecond(), 0);
    const NSInteger more = detail::floorDivide(nanoseconds, nanosecondsASecond);
    const NSInteger second = zone_->rules().fromClock(clock) + more;
    if (second < -detail::lastSecond || second > detail::lastSecond)
        return nullptr;
    return RefPtr<NSDate>(dateAt(second, static_cast<double>(nanoseconds - more * nanosecondsASecond) / 1e9));
}

// --- Adding ----------------------------------------------------------------------------------------------------------

namespace {

NSInteger amount(NSInteger field, NSInteger most) noexcept {
    return isDefined(field) ? std::clamp(field, -most, most) : 0;
}

void pin(CivilDay& civil) noexcept {
    if (civil.day > 28)
        civil.day = std::min(civil.day, detail::lengthOfMonth(civil.year, civil.month));
}

NSInteger addMonths(NSInteger days, NSInteger years, NSInteger months) noexcept {
    CivilDay civil = detail::civilFromDays(days);
    civil.year += years;
    pin(civil);
    const NSInteger month = civil.month - 1 + months;
    const NSInteger carried = detail::floorDivide(month, 12);
    civil.year += carried;
    civil.month = static_cast<int>(month - 12 * carried) + 1;
    pin(civil);
    return detail::daysFromCivil(civil.year, civil.month, civil.day);
}

}  // namespace

Ref<NSDate> NSCalendar::dateByAddingComponents_toDate_options(const NSDateComponents& fields, const NSDate& date,
                                                              NSUInteger options) const {
    if (options)
        NSException::raise(NSInvalidArgumentException,
                           u"*** -[NSCalendar dateByAddingComponents:toDate:options:]: there is no option %lu",
                           options);
    if (!std::isfinite(date.timeIntervalSinceReferenceDate()))
        return share(date);
    const auto [start, startFraction] = detail::momentFrom(date.timeIntervalSinceReferenceDate());
    const NSInteger years = amount(fields.year(), mostYears);
    const NSInteger months = amount(fields.month(), mostMonths) + 3 * amount(fields.quarter(), mostMonths / 3);
    const NSInteger weeks =
        amount(valueOr(fields.weekOfYear(), fields.week()), mostWeeks) + amount(fields.weekOfMonth(), mostWeeks);
    const NSInteger days = amount(fields.day(), mostDays) + 7 * weeks;

    NSInteger second = start;
    if (years || months || days) {
        const NSInteger clock = start + zone_->rules().stretchAt(start).offset;
        const NSInteger day = detail::daysFromSeconds(clock);
        const NSInteger sum = (years || months ? addMonths(day, years, months) : day) + days;
        second = zone_->rules().fromClock(sum * secondsADay + clock - day * secondsADay);
    }
    second += amount(fields.hour(), mostHours) * 3600 + amount(fields.minute(), mostMinutes) * 60 +
              amount(fields.second(), mostSeconds);
    double fraction = startFraction;
    if (const NSInteger nanoseconds = amount(fields.nanosecond(), NSUndefinedDateComponent)) {
        second += nanoseconds / nanosecondsASecond;
        fraction += static_cast<double>(nanoseconds % nanosecondsASecond) / 1e9;
    }
    if (second >= detail::lastSecond || second <= -detail::lastSecond)
        return dateAt(std::clamp(second, -detail::lastSecond, detail::lastSecond), 0);
    return dateAt(second, fraction);
}

// --- As an object ----------------------------------------------------------------------------------------------------

bool NSCalendar::isEqual(const NSObject* other) const {
    const auto* const calendar = as<NSCalendar>(other);
    return calendar && *identifier_ == *calendar->identifier_ && zone_->isEqualToTimeZone(calendar->zone_) &&
           (locale_ ? locale_->isEqual(calendar->locale_) : !calendar->locale_) &&
           firstWeekday_ == calendar->firstWeekday_ && minimumDays_ == calendar->minimumDays_;
}

NSUInteger NSCalendar::hash() const { return zone_->hash() + firstWeekday_ + minimumDays_; }

Ref<NSObject> NSCalendar::copy() const {
    const Ref<NSCalendar> copied = adopt(*new NSCalendar(*identifier_));
    copied->zone_ = zone_;
    copied->locale_ = locale_;
    copied->firstWeekday_ = firstWeekday_;
    copied->minimumDays_ = minimumDays_;
    copied->firstWeekdaySet_ = firstWeekdaySet_;
    copied->minimumDaysSet_ = minimumDaysSet_;
    return copied;
}

void NSCalendar::encodeWithCoder(NSCoder& coder) const {
    coder.encodeObject_forKey(identifier_, u"NS.identifier"_ns);
    coder.encodeObject_forKey(zone_.get(), u"NS.timezone"_ns);
    coder.encodeObject_forKey(locale_, u"NS.locale"_ns);
    if (firstWeekdaySet_)
        coder.encodeInteger_forKey(firstWeekday_, u"NS.firstwkdy"_ns);
    if (minimumDaysSet_)
        coder.encodeInteger_forKey(minimumDays_, u"NS.mindays"_ns);
}

void NSCalendar::initWithCoder(NSCoder& coder) {
    const auto identifier = coder.decodeForKey<NSString>(u"NS.identifier"_ns);
    const auto zone = coder.decodeForKey<NSTimeZone>(u"NS.timezone"_ns);
    if (!identifier || !zone || !calendarWithIdentifier(*identifier))
        NSException::raise(NSInvalidUnarchiveOperationException, u"a calendar is not complete");
    identifier_ = identifier;
    zone_ = zone.ref();
    if (coder.containsValueForKey(u"NS.firstwkdy"_ns))
        setFirstWeekday(static_cast<NSUInteger>(coder.decodeIntegerForKey(u"NS.firstwkdy"_ns)));
    if (coder.containsValueForKey(u"NS.mindays"_ns))
        setMinimumDaysInFirstWeek(static_cast<NSUInteger>(coder.decodeIntegerForKey(u"NS.mindays"_ns)));
    setLocale(coder.decodeForKey<NSLocale>(u"NS.locale"_ns));
}

namespace {

const Additions<NSCalendar> additions{
    classLevel<&NSCalendar::calendarWithIdentifier>("calendarWithIdentifier:"),
    classLevel<&NSCalendar::initWithCalendarIdentifier>("initWithCalendarIdentifier:"),
    instance<&NSCalendar::calendarIdentifier>("calendarIdentifier"),
    instance<&NSCalendar::timeZone>("timeZone"),
    instance<&NSCalendar::setTimeZone>("setTimeZone:"),
    instance<&NSCalendar::locale>("locale"),
    instance<&NSCalendar::setLocale>("setLocale:"),
    instance<&NSCalendar::firstWeekday>("firstWeekday"),
    instance<&NSCalendar::setFirstWeekday>("setFirstWeekday:"),
    instance<&NSCalendar::minimumDaysInFirstWeek>("minimumDaysInFirstWeek"),
    instance<&NSCalendar::setMinimumDaysInFirstWeek>("setMinimumDaysInFirstWeek:"),
    instance<&NSCalendar::components_fromDate>("components:fromDate:"),
    instance<&NSCalendar::dateFromComponents>("dateFromComponents:"),
    instance<&NSCalendar::dateByAddingComponents_toDate_options>("dateByAddingComponents:toDate:options:"),
    instance<&NSCalendar::ordinalityOfUnit_inUnit_forDate>("ordinalityOfUnit:inUnit:forDate:"),
    instance<&NSCalendar::rangeOfUnit_inUnit_forDate>("rangeOfUnit:inUnit:forDate:"),
    instance<&NSCalendar::encodeWithCoder>("encodeWithCoder:"),
    instance<&NSCalendar::initWithCoder>("initWithCoder:"),
};

}  // namespace

}  // namespace tovi
