#include <ToviFoundationKit/Foundation/NSTimeZone.h>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <vector>

#include <unicode/ucal.h>
#include <unicode/uenum.h>

#include <ToviFoundationKit/Foundation/CivilTime_p.h>
#include <ToviFoundationKit/Foundation/IcuDateFormat_p.h>
#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSLocale.h>
#include <ToviFoundationKit/Foundation/TimeZoneRules_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSTimeZone, NSObject)

using detail::Stretch;
using detail::TimeZoneRules;

// --- Finding a zone --------------------------------------------------------------------------------------------------

NSTimeZone::NSTimeZone() : NSTimeZone(u"GMT"_ns, TimeZoneRules::fixed(0)) {}

NSTimeZone::NSTimeZone(const NSString& name, const TimeZoneRules& rules) noexcept
    : name_(NSString::stringWithString(name)), rules_(&rules) {}

Ref<NSTimeZone> NSTimeZone::withRules(const NSString& name, const TimeZoneRules& rules) {
    return adopt(*new NSTimeZone(name, rules));
}

RefPtr<NSTimeZone> NSTimeZone::timeZoneWithName(const NSString& name) {
    if (const auto* const rules = TimeZoneRules::named(name))
        return withRules(name, *rules);
    if (const auto offset = TimeZoneRules::offsetNamed(name))
        return timeZoneForSecondsFromGMT(*offset);
    return nullptr;
}

RefPtr<NSTimeZone> NSTimeZone::timeZoneForSecondsFromGMT(NSInteger seconds) {
    constexpr NSInteger farthest = 18 * 3600;
    if (seconds < -farthest || seconds > farthest)
        return nullptr;
    Ref<NSString> name = u"GMT"_ns;
    if (seconds) {
        const NSInteger distance = std::abs(seconds);
        name = NSString::stringWithFormat(u"GMT%c%02ld%02ld", seconds < 0 ? '-' : '+', distance / 3600,
                                          distance / 60 % 60);
        if (distance % 60)
            name = name->stringByAppendingFormat(u"%02ld", distance % 60);
    }
    return withRules(name, TimeZoneRules::fixed(static_cast<int>(seconds)));
}

Ref<NSArray> NSTimeZone::knownTimeZoneNames() {
    UErrorCode error = U_ZERO_ERROR;
    UEnumeration* const names = ucal_openTimeZoneIDEnumeration(UCAL_ZONE_TYPE_ANY, nullptr, nullptr, &error);
    std::vector<std::u16string> found;
    int length = 0;
    while (const UChar* name = uenum_unext(names, &length, &error))
        if (std::u16string text(name, static_cast<std::size_t>(length)); text != u"Etc/Unknown")
            found.push_back(std::move(text));
    uenum_close(names);
    std::ranges::sort(found);
    return NSArray::from(found);
}

// --- The system's and the default zone -------------------------------------------------------------------------------

namespace {

constinit std::mutex lock;

struct Defaults {
    RefPtr<NSTimeZone> system, replacement;
};

Defaults& defaults() {
    static Defaults& defaults = *new Defaults;
    return defaults;
}

}  // namespace

Ref<NSTimeZone> NSTimeZone::systemTimeZone() {
    const std::lock_guard guard(lock);
    RefPtr<NSTimeZone>& system = defaults().system;
    if (!system)
        system = timeZoneWithName(NSString::stringWithCharacters(detail::systemTimeZoneName()));
    if (!system)
        system = timeZoneForSecondsFromGMT(0);
    return *system;
}

void NSTimeZone::resetSystemTimeZone() {
    const std::lock_guard guard(lock);
    defaults().system = nullptr;
}

Ref<NSTimeZone> NSTimeZone::defaultTimeZone() {
    {
        const std::lock_guard guard(lock);
        if (const auto& replacement = defaults().replacement)
            return *replacement;
    }
    return systemTimeZone();
}

void NSTimeZone::setDefaultTimeZone(RefPtr<NSTimeZone> zone) {
    const std::lock_guard guard(lock);
    std::swap(defaults().replacement, zone);
}

// --- Questions -------------------------------------------------------------------------------------------------------

namespace {

NSInteger secondOf(const NSDate& date) noexcept {
    const double seconds = date.timeIntervalSinceReferenceDate();
    return detail::momentFrom(std::isnan(seconds) ? 0 : seconds).second;
}

Stretch stretchAt(const TimeZoneRules& rules, const NSDate& date) { return rules.stretchAt(secondOf(date)); }

}  // namespace

Ref<NSString> NSTimeZone::abbreviation() const { return abbreviationForDate(NSDate::date()); }

Ref<NSString> NSTimeZone::abbreviationForDate(const NSDate& date) const {
    detail::IcuDateFormat format(NSLocale::currentLocale()->dataName(), *name_, u"z");
    StringBuilder text;
    format.append(text, static_cast<double>(secondOf(date)) * 1000);
    return text.string();
}

NSInteger NSTimeZone::secondsFromGMT() const { return secondsFromGMTForDate(NSDate::date()); }
NSInteger NSTimeZone::secondsFromGMTForDate(const NSDate& date) const { return stretchAt(*rules_, date).offset; }

bool NSTimeZone::isDaylightSavingTime() const { return isDaylightSavingTimeForDate(NSDate::date()); }
bool NSTimeZone::isDaylightSavingTimeForDate(const NSDate& date) const { return stretchAt(*rules_, date).summer; }

RefPtr<NSDate> NSTimeZone::nextDaylightSavingTimeTransitionAfterDate(const NSDate& date) const {
    const auto change = rules_->nextChange(secondOf(date));
    if (!change || *change > detail::lastSecond)
        return nullptr;
    return NSDate::dateWithTimeIntervalSinceReferenceDate(detail::sinceReference(*change));
}

// --- As an object ----------------------------------------------------------------------------------------------------

bool NSTimeZone::isEqualToTimeZone(const NSTimeZone& other) const noexcept { return *name_ == *other.name_; }

bool NSTimeZone::isEqual(const NSObject* other) const {
    const auto* const zone = as<NSTimeZone>(other);
    return zone && isEqualToTimeZone(*zone);
}

NSUInteger NSTimeZone::hash() const { return name_->hash(); }

Ref<NSString> NSTimeZone::description() const { return NSString::stringWithFormat(u"%@ (%@)", name_, abbreviation()); }

Ref<NSObject> NSTimeZone::copy() const { return share(*this); }

void NSTimeZone::encodeWithCoder(NSCoder& coder) const {
    if (coder.allowsKeyedCoding())
        coder.encodeObject_forKey(name_, u"NS.name"_ns);
    else
        coder.encodeObject(name_);
}

void NSTimeZone::initWithCoder(NSCoder& coder) {
    const auto name =
        coder.allowsKeyedCoding() ? coder.decodeForKey<NSString>(u"NS.name"_ns) : coder.decode<NSString>();
    const auto zone = name ? timeZoneWithName(*name) : nullptr;
    if (!zone)
        NSException::raise(NSInvalidUnarchiveOperationException, u"%@ is not the name of a time zone", name);
    name_ = zone->name_;
    rules_ = zone->rules_;
}

namespace {

const Additions<NSTimeZone> additions{
    classLevel<&NSTimeZone::timeZoneWithName>("timeZoneWithName:"),
    classLevel<&NSTimeZone::timeZoneForSecondsFromGMT>("timeZoneForSecondsFromGMT:"),
    classLevel<&NSTimeZone::knownTimeZoneNames>("knownTimeZoneNames"),
    classLevel<&NSTimeZone::systemTimeZone>("systemTimeZone"),
    classLevel<&NSTimeZone::resetSystemTimeZone>("resetSystemTimeZone"),
    classLevel<&NSTimeZone::defaultTimeZone>("defaultTimeZone"),
    classLevel<&NSTimeZone::setDefaultTimeZone>("setDefaultTimeZone:"),
    instance<&NSTimeZone::name>("name"),
    instance<&NSTimeZone::abbreviation>("abbreviation"),
    instance<&NSTimeZone::abbreviationForDate>("abbreviationForDate:"),
    instance<&NSTimeZone::secondsFromGMT>("secondsFromGMT"),
    instance<&NSTimeZone::secondsFromGMTForDate>("secondsFromGMTForDate:"),
    instance<&NSTimeZone::isDaylightSavingTime>("isDaylightSavingTime"),
    instance<&NSTimeZone::isDaylightSavingTimeForDate>("isDaylightSavingTimeForDate:"),
    instance<&NSTimeZone::nextDaylightSavingTimeTransitionAfterDate>("nextDaylightSavingTimeTransitionAfterDate:"),
    instance<&NSTimeZone::isEqualToTimeZone>("isEqualToTimeZone:"),
    instance<&NSTimeZone::encodeWithCoder>("encodeWithCoder:"),
    instance<&NSTimeZone::initWithCoder>("initWithCoder:"),
};

}  // namespace

}  // namespace tovi
