#include <Wording.h>

using namespace tovi;

namespace digest {

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

Ref<NSString> dayText(const NSDate* date) { return date ? minuteText(date)->substringToIndex(10) : u"no date"_ns; }

// A date describes itself as "2020-03-03 10:00:00 +0000".
Ref<NSString> minuteText(const NSDate* date) {
    return date ? date->description()->substringToIndex(16) : u"no date"_ns;
}

Ref<NSString> subjectText(const NSString& subject) {
    return subject.length() > 0 ? share(subject) : u"(no subject)"_ns;
}

}  // namespace digest
