#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

// The same everywhere, whatever calendar and digits the user has.
Ref<NSDateFormatter> technicalFormatter(const NSString& pattern) {
    const auto formatter = NSDateFormatter::init();
    formatter->setLocale(NSLocale::localeWithLocaleIdentifier(u"en_US_POSIX"_ns));
    formatter->setDateFormat(pattern);
    return formatter;
}

const NSDateFormatter& dayFormatter() {
    static const auto formatter = technicalFormatter(u"yyyy-MM-dd"_ns);
    return formatter;
}

const NSDateFormatter& minuteFormatter() {
    static const auto formatter = technicalFormatter(u"yyyy-MM-dd HH:mm"_ns);
    return formatter;
}

Ref<NSString> textOf(const NSDate* date, const NSDateFormatter& formatter) {
    return date ? formatter.stringFromDate(*date).ref() : u"no date"_ns;
}

}  // namespace

Ref<NSString> counted(NSUInteger count, std::u16string_view word, std::u16string_view plural) {
    if (count == 1)
        return NSString::stringWithFormat(u"1 %@", word);
    return NSString::stringWithFormat(plural.empty() ? u"%lu %@s" : u"%lu %@", count, plural.empty() ? word : plural);
}

Ref<NSString> sizeText(NSUInteger bytes) {
    if (bytes < 1000)
        return NSString::stringWithFormat(u"%lu B", bytes);
    double size = static_cast<double>(bytes) / 1000;
    const char16_t* unit = u"kB";
    for (const char16_t* larger : {u"MB", u"GB", u"TB"}) {
        if (size < 999.5)
            break;
        size /= 1000;
        unit = larger;
    }
    return NSString::stringWithFormat(size < 9.95 ? u"%.1f %@" : u"%.0f %@", size, unit);
}

Ref<NSString> dayText(const NSDate* date) { return textOf(date, dayFormatter()); }
Ref<NSString> minuteText(const NSDate* date) { return textOf(date, minuteFormatter()); }

Ref<NSString> relativeDayText(const NSDate* date) {
    return textOf(date, QVLRelativeDateFormatter::noTimeAndRelativeLongDateFormatter());
}

RefPtr<NSDate> dateOfText(const NSString& text) {
    const auto date = minuteFormatter().dateFromString(text);
    return date ? date : dayFormatter().dateFromString(text);
}

Ref<NSString> subjectText(const NSString& subject) {
    return subject.length() > 0 ? share(subject) : u"(no subject)"_ns;
}

}  // namespace digest
