#include <ToviFoundationKit/Foundation/NSDateComponents.h>

#include <algorithm>
#include <bit>

#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSDateComponents, NSObject)

Ref<NSDateComponents> NSDateComponents::init() { return adopt(*new NSDateComponents); }

namespace {

constexpr std::u16string_view fieldNames[] = {
    u"era",       u"year",    u"month",          u"day",     u"hour",        u"minute",     u"second",
    u"week",      u"weekday", u"weekdayOrdinal", u"quarter", u"weekOfMonth", u"weekOfYear", u"yearForWeekOfYear",
    u"nanosecond"};

std::size_t indexOf(NSCalendarUnit unit) {
    const auto index = static_cast<std::size_t>(std::countr_zero(static_cast<NSUInteger>(unit))) - 1;
    if (!std::has_single_bit(static_cast<NSUInteger>(unit)) || index >= std::size(fieldNames))
        NSException::raise(NSInvalidArgumentException, u"%lu is not a calendar unit", unit);
    return index;
}

}  // namespace

NSInteger NSDateComponents::valueForComponent(NSCalendarUnit unit) const { return fields_[indexOf(unit)]; }

void NSDateComponents::setValue_forComponent(NSInteger value, NSCalendarUnit unit) { fields_[indexOf(unit)] = value; }

bool NSDateComponents::isEqual(const NSObject* other) const {
    const auto* const components = as<NSDateComponents>(other);
    return components && components->fields_ == fields_;
}

NSUInteger NSDateComponents::hash() const {
    NSUInteger sum = 0;
    for (const NSInteger field : fields_)
        sum = (sum ^ static_cast<NSUInteger>(field)) * 0x9E3779B97F4A7C15U;
    return sum ^ sum >> 32;
}

Ref<NSString> NSDateComponents::description() const {
    StringBuilder text;
    text.append(NSObject::description());
    std::u16string_view gap = u" ";
    for (std::size_t i = 0; i < fields_.size(); ++i)
        if (fields_[i] != NSUndefinedDateComponent) {
            text.append(gap).append(fieldNames[i]).append(NSString::stringWithFormat(u": %ld", fields_[i]));
            gap = u", ";
        }
    return text.string();
}

Ref<NSObject> NSDateComponents::copy() const {
    Ref<NSDateComponents> copied = init();
    copied->fields_ = fields_;
    return copied;
}

// Only the fields that are set are stored.
void NSDateComponents::encodeWithCoder(NSCoder& coder) const {
    if (!coder.allowsKeyedCoding())
        NSException::raise(NSInvalidArgumentException, u"date components are stored by keyed archivers only");
    for (std::size_t i = 0; i < fields_.size(); ++i)
        if (fields_[i] != NSUndefinedDateComponent)
            coder.encodeInteger_forKey(fields_[i], NSString::stringWithCharacters(fieldNames[i]));
}

void NSDateComponents::initWithCoder(NSCoder& coder) {
    for (std::size_t i = 0; i < fields_.size(); ++i)
        if (const auto key = NSString::stringWithCharacters(fieldNames[i]); coder.containsValueForKey(key))
            fields_[i] = coder.decodeIntegerForKey(key);
}

namespace {

const Additions<NSDateComponents> additions{
    instance<&NSDateComponents::era>("era"),
    instance<&NSDateComponents::year>("year"),
    instance<&NSDateComponents::month>("month"),
    instance<&NSDateComponents::day>("day"),
    instance<&NSDateComponents::hour>("hour"),
    instance<&NSDateComponents::minute>("minute"),
    instance<&NSDateComponents::second>("second"),
    instance<&NSDateComponents::week>("week"),
    instance<&NSDateComponents::weekday>("weekday"),
    instance<&NSDateComponents::weekdayOrdinal>("weekdayOrdinal"),
    instance<&NSDateComponents::quarter>("quarter"),
    instance<&NSDateComponents::weekOfMonth>("weekOfMonth"),
    instance<&NSDateComponents::weekOfYear>("weekOfYear"),
    instance<&NSDateComponents::yearForWeekOfYear>("yearForWeekOfYear"),
    instance<&NSDateComponents::nanosecond>("nanosecond"),
    instance<&NSDateComponents::setEra>("setEra:"),
    instance<&NSDateComponents::setYear>("setYear:"),
    instance<&NSDateComponents::setMonth>("setMonth:"),
    instance<&NSDateComponents::setDay>("setDay:"),
    instance<&NSDateComponents::setHour>("setHour:"),
    instance<&NSDateComponents::setMinute>("setMinute:"),
    instance<&NSDateComponents::setSecond>("setSecond:"),
    instance<&NSDateComponents::setWeek>("setWeek:"),
    instance<&NSDateComponents::setWeekday>("setWeekday:"),
    instance<&NSDateComponents::setWeekdayOrdinal>("setWeekdayOrdinal:"),
    instance<&NSDateComponents::setQuarter>("setQuarter:"),
    instance<&NSDateComponents::setWeekOfMonth>("setWeekOfMonth:"),
    instance<&NSDateComponents::setWeekOfYear>("setWeekOfYear:"),
    instance<&NSDateComponents::setYearForWeekOfYear>("setYearForWeekOfYear:"),
    instance<&NSDateComponents::setNanosecond>("setNanosecond:"),
    instance<&NSDateComponents::valueForComponent>("valueForComponent:"),
    instance<&NSDateComponents::setValue_forComponent>("setValue:forComponent:"),
    instance<&NSDateComponents::encodeWithCoder>("encodeWithCoder:"),
    instance<&NSDateComponents::initWithCoder>("initWithCoder:"),
};

}  // namespace

}  // namespace tovi
