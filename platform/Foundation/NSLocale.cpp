#include <ToviFoundationKit/Foundation/NSLocale.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <vector>

#include <unicode/ucal.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>

#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/PreferredLanguages.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSLocale, NSObject)

// --- Identifiers -----------------------------------------------------------------------------------------------------

namespace {

using Part = int (*)(const char* locale, char* out, int capacity, UErrorCode* error);

/// The identifier, unless it is one that nobody can mean; then nothing.
std::string readable(const NSString& identifier) {
    const bool plain = identifier.length() < ULOC_FULLNAME_CAPACITY &&
                       std::ranges::all_of(identifier.view(), [](char16_t unit) { return unit > 0x20 && unit < 0x7F; });
    return plain ? identifier.UTF8String() : std::string();
}

/// What one of ICU's functions takes out of an identifier; empty when there is no such part.
std::string partOf(const std::string& identifier, Part part) {
    char text[ULOC_FULLNAME_CAPACITY];
    UErrorCode error = U_ZERO_ERROR;
    const int length = part(identifier.c_str(), text, ULOC_FULLNAME_CAPACITY, &error);
    return U_SUCCESS(error) && length < ULOC_FULLNAME_CAPACITY ? std::string(text, static_cast<std::size_t>(length))
                                                               : std::string();
}

/// The C library writes a script behind "@": "sr_RS@latin". What else it has there is of no use here.
std::string withoutModifier(std::string identifier) {
    const std::size_t at = identifier.find('@');
    if (at == identifier.npos || identifier.find('=', at) != identifier.npos)
        return identifier;
    const std::string modifier = identifier.substr(at + 1);
    identifier.resize(std::min(at, identifier.find('.')));
    constexpr struct {
        const char* modifier;
        const char* script;
    } scripts[] = {{"latin", "_Latn"}, {"cyrillic", "_Cyrl"}, {"devanagari", "_Deva"}};
    for (const auto& [name, script] : scripts)
        if (modifier == name)
            identifier.insert(std::min(identifier.find_first_of("_-"), identifier.size()), script);
    return identifier;
}

std::vector<std::string> availableLanguages() {
    UErrorCode error = U_ZERO_ERROR;
    UEnumeration* const locales = uloc_openAvailableByType(ULOC_AVAILABLE_WITH_LEGACY_ALIASES, &error);
    std::vector<std::string> languages;
    while (const char* locale = uenum_next(locales, nullptr, &error))
        languages.push_back(partOf(locale, uloc_getLanguage));
    uenum_close(locales);
    std::ranges::sort(languages);
    languages.erase(std::unique(languages.begin(), languages.end()), languages.end());
    return languages;
}

// Without this, ICU would take the language of the process's environment for one that it does not know.
bool isAvailable(const std::string& language) {
    static const auto& languages = *new std::vector<std::string>(availableLanguages());
    return std::ranges::binary_search(languages, language);
}

}  // namespace

void NSLocale::set(const NSString& identifier) {
    const std::string canonical = partOf(withoutModifier(readable(identifier)), uloc_canonicalize);
    identifier_ = canonical.empty() ? NSString::stringWithString(identifier) : NSString::fromUTF8(canonical);
    dataName_ = isAvailable(partOf(canonical, uloc_getLanguage)) ? canonical : "root";
}

NSLocale::NSLocale() : identifier_(NSString::string()), dataName_("root") {}
NSLocale::NSLocale(const NSString& identifier) { set(identifier); }

Ref<NSLocale> NSLocale::localeWithLocaleIdentifier(const NSString& identifier) {
    return adopt(*new NSLocale(identifier));
}

namespace {

RefPtr<NSString> partIfAny(const NSString& identifier, Part part) {
    const std::string text = partOf(readable(identifier), part);
    return text.empty() ? RefPtr<NSString>() : RefPtr<NSString>(NSString::fromUTF8(text));
}

}  // namespace

Ref<NSString> NSLocale::languageCode() const {
    return NSString::fromUTF8(partOf(readable(*identifier_), uloc_getLanguage));
}
RefPtr<NSString> NSLocale::scriptCode() const { return partIfAny(*identifier_, uloc_getScript); }
RefPtr<NSString> NSLocale::countryCode() const { return partIfAny(*identifier_, uloc_getCountry); }

// --- The current locale ----------------------------------------------------------------------------------------------

namespace {

/// "de_AT" for "de_AT.UTF-8"; empty for the locales that stand for none.
std::string localeOfEnvironment() {
    for (const char* name : {"LC_ALL", "LC_TIME", "LANG"})
        if (const char* value = std::getenv(name); value && *value) {
            const std::string_view locale = value;
            const std::string_view plain = locale.substr(0, locale.find_first_of(".@"));
            return plain == "C" || plain == "POSIX" ? std::string() : std::string(locale);
        }
    return {};
}

std::string localeOfUser() {
    std::string locale = localeOfEnvironment();
    if (!locale.empty())
        return locale;
    const std::vector<std::string> languages = preferredLanguages();
    return languages.empty() ? "en_US_POSIX" : languages.front();
}

constinit std::mutex lock;

RefPtr<NSLocale>& replacement() {
    static auto& replacement = *new RefPtr<NSLocale>;
    return replacement;
}

}  // namespace

Ref<NSLocale> NSLocale::currentLocale() {
    {
        const std::lock_guard guard(lock);
        if (const auto& locale = replacement())
            return *locale;
    }
    return localeWithLocaleIdentifier(NSString::fromUTF8(localeOfUser()));
}

void NSLocale::setCurrentLocale(RefPtr<NSLocale> locale) {
    const std::lock_guard guard(lock);
    std::swap(replacement(), locale);
}

// --- Weeks -----------------------------------------------------------------------------------------------------------

namespace {

NSUInteger weekAttribute(const std::string& locale, UCalendarAttribute attribute) {
    UErrorCode error = U_ZERO_ERROR;
    UCalendar* const calendar = ucal_open(u"GMT", 3, locale.c_str(), UCAL_GREGORIAN, &error);
    const int value = U_SUCCESS(error) ? ucal_getAttribute(calendar, attribute) : 1;
    ucal_close(calendar);
    return static_cast<NSUInteger>(value);
}

}  // namespace

NSUInteger NSLocale::firstWeekday() const { return weekAttribute(dataName_, UCAL_FIRST_DAY_OF_WEEK); }
NSUInteger NSLocale::minimumDaysInFirstWeek() const {
    return weekAttribute(dataName_, UCAL_MINIMAL_DAYS_IN_FIRST_WEEK);
}

// --- As an object ----------------------------------------------------------------------------------------------------

bool NSLocale::isEqual(const NSObject* other) const {
    const auto* const locale = as<NSLocale>(other);
    return locale && *identifier_ == *locale->identifier_;
}

NSUInteger NSLocale::hash() const { return identifier_->hash(); }
Ref<NSString> NSLocale::description() const { return *identifier_; }
Ref<NSObject> NSLocale::copy() const { return share(*this); }

void NSLocale::encodeWithCoder(NSCoder& coder) const {
    if (coder.allowsKeyedCoding())
        coder.encodeObject_forKey(identifier_, u"NS.identifier"_ns);
    else
        coder.encodeObject(identifier_);
}

void NSLocale::initWithCoder(NSCoder& coder) {
    const auto identifier =
        coder.allowsKeyedCoding() ? coder.decodeForKey<NSString>(u"NS.identifier"_ns) : coder.decode<NSString>();
    if (!identifier)
        NSException::raise(NSInvalidUnarchiveOperationException, u"a locale has no identifier");
    set(*identifier);
}

namespace {

const Additions<NSLocale> additions{
    classLevel<&NSLocale::currentLocale>("currentLocale"),
    classLevel<&NSLocale::setCurrentLocale>("setCurrentLocale:"),
    classLevel<&NSLocale::localeWithLocaleIdentifier>("localeWithLocaleIdentifier:"),
    instance<&NSLocale::localeIdentifier>("localeIdentifier"),
    instance<&NSLocale::languageCode>("languageCode"),
    instance<&NSLocale::scriptCode>("scriptCode"),
    instance<&NSLocale::countryCode>("countryCode"),
    instance<&NSLocale::firstWeekday>("firstWeekday"),
    instance<&NSLocale::minimumDaysInFirstWeek>("minimumDaysInFirstWeek"),
    instance<&NSLocale::encodeWithCoder>("encodeWithCoder:"),
    instance<&NSLocale::initWithCoder>("initWithCoder:"),
};

}  // namespace

}  // namespace tovi
