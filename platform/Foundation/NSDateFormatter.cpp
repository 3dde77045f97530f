#include <ToviFoundationKit/Foundation/NSDateFormatter.h>

#include <cmath>

#include <ToviFoundationKit/Foundation/CompiledDateFormat_p.h>
#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSDateFormatter, NSObject)

using detail::CompiledDateFormat;

struct NSDateFormatter::Content {
    Ref<NSLocale> locale = NSLocale::currentLocale();
    Ref<NSTimeZone> zone = NSTimeZone::defaultTimeZone();
    RefPtr<NSCalendar> calendar;
    RefPtr<NSString> pattern;
    NSDateFormatterStyle dateStyle = NSDateFormatterNoStyle;
    NSDateFormatterStyle timeStyle = NSDateFormatterNoStyle;
    bool lenient = false;
    std::unique_ptr<CompiledDateFormat> compiled;  ///< null after a change

    CompiledDateFormat& format() {
        if (!compiled)
            compiled = std::make_unique<CompiledDateFormat>(settings());
        return *compiled;
    }
    detail::DateFormatSettings settings() const;
};

detail::DateFormatSettings NSDateFormatter::Content::settings() const {
    detail::DateFormatSettings settings{
        .locale = calendar ? detail::withGregorianCalendar(locale->dataName()) : locale->dataName(),
        .zone = std::u16string(zone->name()->view()),
        .rules = &zone->rules(),
        .weeks = {},
        .pattern = {},
        .styles = {static_cast<int>(dateStyle), static_cast<int>(timeStyle)},
        .lenient = lenient,
    };
    if (calendar)
        settings.weeks = {static_cast<int>(calendar->firstWeekday()),
                          static_cast<int>(calendar->minimumDaysInFirstWeek())};
    if (pattern)
        settings.pattern = pattern->view();
    return settings;
}

NSDateFormatter::NSDateFormatter() : content_(new Content) {}
NSDateFormatter::~NSDateFormatter() = default;
Ref<NSDateFormatter> NSDateFormatter::init() { return adopt(*new NSDateFormatter); }

// --- Properties ------------------------------------------------------------------------------------------------------

Ref<NSString> NSDateFormatter::dateFormat() const {
    return content_->pattern ? content_->pattern.ref() : NSString::stringWithCharacters(content_->format().pattern());
}

void NSDateFormatter::setDateFormat(const NSString& pattern) {
    content_->pattern = NSString::stringWithString(pattern);
    content_->compiled = nullptr;
}

namespace {

NSDateFormatterStyle checked(NSDateFormatterStyle style) {
    if (style > NSDateFormatterFullStyle)
        NSException::raise(NSInvalidArgumentException, u"a date formatter has no style %lu", style);
    return style;
}

}  // namespace

NSDateFormatterStyle NSDateFormatter::dateStyle() const noexcept { return content_->dateStyle; }
void NSDateFormatter::setDateStyle(NSDateFormatterStyle style) {
    content_->dateStyle = checked(style);
    content_->pattern = nullptr;
    content_->compiled = nullptr;
}

NSDateFormatterStyle NSDateFormatter::timeStyle() const noexcept { return content_->timeStyle; }
void NSDateFormatter::setTimeStyle(NSDateFormatterStyle style) {
    content_->timeStyle = checked(style);
    content_->pattern = nullptr;
    content_->compiled = nullptr;
}

Ref<NSLocale> NSDateFormatter::locale() const { return content_->locale; }
void NSDateFormatter::setLocale(RefPtr<NSLocale> locale) {
    content_->locale = locale ? locale.ref() : NSLocale::currentLocale();
    content_->compiled = nullptr;
}

Ref<NSTimeZone> NSDateFormatter::timeZone() const { return content_->zone; }
void NSDateFormatter::setTimeZone(RefPtr<NSTimeZone> zone) {
    content_->zone = zone ? zone.ref() : NSTimeZone::defaultTimeZone();
    content_->compiled = nullptr;
}

Ref<NSCalendar> NSDateFormatter::calendar() const {
    if (content_->calendar)
        return content_->calendar.ref();
    const auto calendar = NSCalendar::calendarWithIdentifier(NSString::stringWithCharacters(NSGregorianCalendar));
    calendar->setTimeZone(content_->zone);
    calendar->setLocale(content_->locale);
    return calendar.ref();
}

void NSDateFormatter::setCalendar(RefPtr<NSCalendar> calendar) {
    content_->calendar = calendar ? to<NSCalendar>(calendar->copy()) : RefPtr<NSCalendar>();
    content_->compiled = nullptr;
}

bool NSDateFormatter::isLenient() const noexcept { return content_->lenient; }
void NSDateFormatter::setLenient(bool lenient) noexcept {
    content_->lenient = lenient;
    content_->compiled = nullptr;
}

// --- Printing and reading --------------------------------------------------------------------------------------------

RefPtr<NSString> NSDateFormatter::stringFromDate(const NSDate& date) const {
    const double seconds = date.timeIntervalSinceReferenceDate();
    StringBuilder text;
    if (std::isnan(seconds) || !content_->format().append(text, detail::momentFrom(seconds)))
        return nullptr;
    return text.string();
}

RefPtr<NSDate> NSDateFormatter::dateFromString(const NSString& text) const {
    const auto seconds = content_->format().read(text);
    return seconds ? RefPtr<NSDate>(NSDate::dateWithTimeIntervalSinceReferenceDate(*seconds)) : nullptr;
}

void NSDateFormatter::takeSettings(const NSDateFormatter& other) {
    const Content& content = *other.content_;
    content_->locale = content.locale;
    content_->zone = content.zone;
    content_->calendar = content.calendar;
    content_->pattern = content.pattern;
    content_->dateStyle = content.dateStyle;
    content_->timeStyle = content.timeStyle;
    content_->lenient = content.lenient;
    content_->compiled = nullptr;
}

Ref<NSObject> NSDateFormatter::copy() const {
    const Ref<NSDateFormatter> copied = init();
    copied->takeSettings(*this);
    return copied;
}

namespace {

const Additions<NSDateFormatter> additions{
    classLevel<&NSDateFormatter::init>("init"),
    instance<&NSDateFormatter::dateFormat>("dateFormat"),
    instance<&NSDateFormatter::setDateFormat>("setDateFormat:"),
    instance<&NSDateFormatter::dateStyle>("dateStyle"),
    instance<&NSDateFormatter::setDateStyle>("setDateStyle:"),
    instance<&NSDateFormatter::timeStyle>("timeStyle"),
    instance<&NSDateFormatter::setTimeStyle>("setTimeStyle:"),
    instance<&NSDateFormatter::locale>("locale"),
    instance<&NSDateFormatter::setLocale>("setLocale:"),
    instance<&NSDateFormatter::timeZone>("timeZone"),
    instance<&NSDateFormatter::setTimeZone>("setTimeZone:"),
    instance<&NSDateFormatter::calendar>("calendar"),
    instance<&NSDateFormatter::setCalendar>("setCalendar:"),
    instance<&NSDateFormatter::isLenient>("isLenient"),
    instance<&NSDateFormatter::setLenient>("setLenient:"),
    instance<&NSDateFormatter::stringFromDate>("stringFromDate:"),
    instance<&NSDateFormatter::dateFromString>("dateFromString:"),
};

}  // namespace

}  // namespace tovi
