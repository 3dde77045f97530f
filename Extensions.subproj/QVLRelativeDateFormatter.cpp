#include <ToviFoundationKit/Extensions/QVLRelativeDateFormatter.h>

#include <vector>

#include <ToviFoundationKit/Extensions/DateFormatterSlots_p.h>
#include <ToviFoundationKit/Extensions/NSDate-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSDateFormatter-Extensions.h>
#include <ToviFoundationKit/Foundation/NSBundle.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(QVLRelativeDateFormatter, NSDateFormatter)

Ref<QVLRelativeDateFormatter> QVLRelativeDateFormatter::init() { return adopt(*new QVLRelativeDateFormatter); }

namespace {

/// The key of the word for a date, or nil.
RefPtr<NSString> keyOfDay(const NSDate& date) {
    constexpr NSCalendarUnit day = NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay;
    const Ref<NSCalendar> calendar = gregorian();
    const Ref<NSDateComponents> parts = calendar->components_fromDate(day, date);
    const Ref<NSDateComponents> today = calendar->components_fromDate(day, NSDate::date());
    if (parts->year() != today->year() || parts->month() != today->month())
        return nullptr;
    switch (parts->day() - today->day()) {
        case 0:
            return u"today"_ns;
        case 1:
            return u"tomorrow"_ns;
        case -1:
            return u"yesterday"_ns;
        default:
            return nullptr;
    }
}

Ref<NSString> wordOfDay(const NSDate& date) {
    const RefPtr<NSString> key = keyOfDay(date);
    if (!key)
        return u""_ns;
    const RefPtr<NSBundle> bundle =
        NSBundle::bundleWithIdentifier(*NSString::stringWithCharacters(NSBundleLibraryIdentifier));
    return bundle ? bundle->localizedStringForKey_value_table(*key, u""_ns.get(), u"QVLStrings"_ns.get()) : key.ref();
}

/// The shared formatter for other days; nil where there is none.
RefPtr<NSDateFormatter> sharedFormatter(NSUInteger dateStyle, NSDateFormatterStyle timeStyle) {
    switch (dateStyle << 4 | timeStyle) {
        case 0x10:
            return noTimeAndShortDateFormatter();
        case 0x11:
            return shortTimeAndShortDateFormatter();
        case 0x13:
            return longTimeAndShortDateFormatter();
        case 0x20:
            return noTimeAndMediumDateFormatter();
        case 0x21:
            return shortTimeAndMediumDateFormatter();
        case 0x23:
            return longTimeAndMediumDateFormatter();
        case 0x30:
            return noTimeAndLongDateFormatter();
        case 0x31:
            return shortTimeAndLongDateFormatter();
        case 0x33:
            return longTimeAndLongDateFormatter();
        default:
            return nullptr;
    }
}

bool hasSharedFormatter(NSUInteger dateStyle, NSDateFormatterStyle timeStyle) {
    return dateStyle >= 1 && dateStyle <= 3 &&
           (timeStyle == NSDateFormatterNoStyle || timeStyle == NSDateFormatterShortStyle ||
            timeStyle == NSDateFormatterLongStyle);
}

}  // namespace

RefPtr<NSString> QVLRelativeDateFormatter::stringFromDate(const NSDate& date) const {
    const RefPtr<NSString> time = NSDateFormatter::stringFromDate(date);
    const Ref<NSString> word = wordOfDay(date);
    if (!word->length()) {
        if (!hasSharedFormatter(relativeDateStyle_, timeStyle()))
            return u""_ns;
        const RefPtr<NSDateFormatter> formatter = sharedFormatter(relativeDateStyle_, timeStyle());
        return formatter ? formatter->stringFromDate(date) : nullptr;
    }
    const Ref<NSString> capitalized = word->capitalizedString();
    return time && time->length() ? capitalized->stringByAppendingFormat(u" %@", time) : capitalized;
}

Ref<NSObject> QVLRelativeDateFormatter::copy() const {
    const Ref<QVLRelativeDateFormatter> copied = init();
    copied->takeSettings(*this);
    copied->relativeDateStyle_ = relativeDateStyle_;
    return copied;
}

// Shared formatters.

namespace {

using Slot = detail::DateFormatterSlot;

Ref<QVLRelativeDateFormatter> made(NSDateFormatterStyle timeStyle, NSUInteger relativeDateStyle) {
    Ref<QVLRelativeDateFormatter> formatter = QVLRelativeDateFormatter::init();
    formatter->setTimeStyle(timeStyle);
    formatter->setRelativeDateStyle(relativeDateStyle);
    return formatter;
}

Ref<QVLRelativeDateFormatter> relative(Slot slot, NSDateFormatterStyle timeStyle, NSUInteger relativeDateStyle) {
    return static_cast<QVLRelativeDateFormatter&>(
        detail::formatterIn(slot, [=] { return made(timeStyle, relativeDateStyle); }));
}

}  // namespace

Ref<QVLRelativeDateFormatter> QVLRelativeDateFormatter::noTimeAndRelativeShortDateFormatter() {
    return relative(Slot::noTimeAndRelativeShort, NSDateFormatterNoStyle, 1);
}
Ref<QVLRelativeDateFormatter> QVLRelativeDateFormatter::noTimeAndRelativeMediumDateFormatter() {
    return relative(Slot::noTimeAndRelativeMedium, NSDateFormatterNoStyle, 2);
}
Ref<QVLRelativeDateFormatter> QVLRelativeDateFormatter::noTimeAndRelativeLongDateFormatter() {
    return relative(Slot::noTimeAndRelativeLong, NSDateFormatterNoStyle, 3);
}
Ref<QVLRelativeDateFormatter> QVLRelativeDateFormatter::shortTimeAndRelativeShortDateFormatter() {
    return relative(Slot::shortTimeAndRelativeShort, NSDateFormatterShortStyle, 1);
}
Ref<QVLRelativeDateFormatter> QVLRelativeDateFormatter::shortTimeAndRelativeMediumDateFormatter() {
    return relative(Slot::shortTimeAndRelativeMedium, NSDateFormatterShortStyle, 2);
}

RefPtr<QVLRelativeDateFormatter> QVLRelativeDateFormatter::shortTimeAndRelativeLongDateFormatter() {
    // Shared formatters may be used without being held, so the one that was there must live on.
    static auto& dropped = *new std::vector<NSDateFormatter*>;
    NSDateFormatter*& slot = detail::formatterIn(Slot::shortTimeAndRelativeShort);
    if (slot)
        dropped.push_back(slot);
    slot = made(NSDateFormatterShortStyle, 1).leak();
    return nullptr;
}

Ref<QVLRelativeDateFormatter> QVLRelativeDateFormatter::longTimeAndRelativeShortDateFormatter() {
    return relative(Slot::longTimeAndRelativeShort, NSDateFormatterLongStyle, 1);
}
Ref<QVLRelativeDateFormatter> QVLRelativeDateFormatter::longTimeAndRelativeMediumDateFormatter() {
    return relative(Slot::longTimeAndRelativeMedium, NSDateFormatterLongStyle, 2);
}
Ref<QVLRelativeDateFormatter> QVLRelativeDateFormatter::longTimeAndRelativeLongDateFormatter() {
    return relative(Slot::longTimeAndRelativeLong, NSDateFormatterLongStyle, 3);
}

namespace {

const Additions<QVLRelativeDateFormatter> additions{
    classLevel<&QVLRelativeDateFormatter::init>("init"),
    instance<&QVLRelativeDateFormatter::setRelativeDateStyle>("setRelativeDateStyle:"),
    classLevel<&QVLRelativeDateFormatter::noTimeAndRelativeShortDateFormatter>("noTimeAndRelativeShortDateFormatter"),
    classLevel<&QVLRelativeDateFormatter::noTimeAndRelativeMediumDateFormatter>("noTimeAndRelativeMediumDateFormatter"),
    classLevel<&QVLRelativeDateFormatter::noTimeAndRelativeLongDateFormatter>("noTimeAndRelativeLongDateFormatter"),
    classLevel<&QVLRelativeDateFormatter::shortTimeAndRelativeShortDateFormatter>(
        "shortTimeAndRelativeShortDateFormatter"),
    classLevel<&QVLRelativeDateFormatter::shortTimeAndRelativeMediumDateFormatter>(
        "shortTimeAndRelativeMediumDateFormatter"),
    classLevel<&QVLRelativeDateFormatter::shortTimeAndRelativeLongDateFormatter>(
        "shortTimeAndRelativeLongDateFormatter"),
    classLevel<&QVLRelativeDateFormatter::longTimeAndRelativeShortDateFormatter>(
        "longTimeAndRelativeShortDateFormatter"),
    classLevel<&QVLRelativeDateFormatter::longTimeAndRelativeMediumDateFormatter>(
        "longTimeAndRelativeMediumDateFormatter"),
    classLevel<&QVLRelativeDateFormatter::longTimeAndRelativeLongDateFormatter>("longTimeAndRelativeLongDateFormatter"),
};

}  // namespace

}  // namespace tovi
