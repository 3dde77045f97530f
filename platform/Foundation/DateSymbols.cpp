#include <ToviFoundationKit/Foundation/DateSymbols_p.h>

#include <cstring>
#include <map>
#include <mutex>

#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

namespace tovi::detail {

namespace {

DateSymbols::Names namesOf(const UDateFormat* format, UDateFormatSymbolType type, int first, int count) {
    DateSymbols::Names names;
    for (int i = first; i < first + count; ++i) {
        UErrorCode error = U_ZERO_ERROR;
        std::u16string name(128, u' ');
        int length = udat_getSymbols(format, type, i, name.data(), 128, &error);
        if (length > 128) {
            error = U_ZERO_ERROR;
            name.resize(static_cast<std::size_t>(length));
            length = udat_getSymbols(format, type, i, name.data(), length, &error);
        }
        name.resize(U_SUCCESS(error) ? static_cast<std::size_t>(length) : 0);
        names.push_back(std::move(name));
    }
    return names;
}

/// The digit zero, if the ten digits are code units in a row.
char16_t zeroOf(const UDateFormat* format) {
    const UNumberFormat* const numbers = udat_getNumberFormat(format);
    char16_t zero = 0;
    for (int digit = 0; digit < 10; ++digit) {
        const auto symbol =
            digit ? static_cast<UNumberFormatSymbol>(UNUM_ONE_DIGIT_SYMBOL + digit - 1) : UNUM_ZERO_DIGIT_SYMBOL;
        UErrorCode error = U_ZERO_ERROR;
        UChar units[8];
        const int length = unum_getSymbol(numbers, symbol, units, 8, &error);
        if (U_FAILURE(error) || length != 1 || (digit && units[0] != zero + digit))
            return 0;
        zero = static_cast<char16_t>(units[0] - digit);
    }
    return zero;
}

}  // namespace

DateSymbols::DateSymbols(const std::string& locale) {
    UErrorCode error = U_ZERO_ERROR;
    UCalendar* const calendar = ucal_open(u"GMT", 3, locale.c_str(), UCAL_DEFAULT, &error);
    UDateFormat* const format =
        udat_open(UDAT_PATTERN, UDAT_PATTERN, withGregorianCalendar(locale).c_str(), u"GMT", 3, u"y", 1, &error);
    if (U_SUCCESS(error)) {
        constexpr UDateFormatSymbolType monthTypes[2][3] = {
            {UDAT_SHORT_MONTHS, UDAT_MONTHS, UDAT_NARROW_MONTHS},
            {UDAT_STANDALONE_SHORT_MONTHS, UDAT_STANDALONE_MONTHS, UDAT_STANDALONE_NARROW_MONTHS}};
        constexpr UDateFormatSymbolType weekdayTypes[2][4] = {
            {UDAT_SHORT_WEEKDAYS, UDAT_WEEKDAYS, UDAT_NARROW_WEEKDAYS, UDAT_SHORTER_WEEKDAYS},
            {UDAT_STANDALONE_SHORT_WEEKDAYS, UDAT_STANDALONE_WEEKDAYS, UDAT_STANDALONE_NARROW_WEEKDAYS,
             UDAT_STANDALONE_SHORTER_WEEKDAYS}};
        eras[Abbreviated] = namesOf(format, UDAT_ERAS, 0, 2);
        eras[Wide] = namesOf(format, UDAT_ERA_NAMES, 0, 2);
        halvesOfDay = namesOf(format, UDAT_AM_PMS, 0, 2);
        for (int alone = 0; alone < 2; ++alone) {
            for (int width = 0; width < 3; ++width)
                months[alone][width] = namesOf(format, monthTypes[alone][width], 0, 12);
            for (int width = 0; width < 4; ++width)
                weekdays[alone][width] = namesOf(format, weekdayTypes[alone][width], 1, 7);
        }
        zero = zeroOf(format);
        weeks = {ucal_getAttribute(calendar, UCAL_FIRST_DAY_OF_WEEK),
                 ucal_getAttribute(calendar, UCAL_MINIMAL_DAYS_IN_FIRST_WEEK)};
        ownCalendarIsGregorian = std::strcmp(ucal_getType(calendar, &error), "gregorian") == 0;
    }
    udat_close(format);
    ucal_close(calendar);
}

std::shared_ptr<const DateSymbols> DateSymbols::ofLocale(const std::string& locale) {
    // A process uses a handful; identifiers from outside shall not fill its memory.
    constexpr std::size_t most = 64;
    static constinit std::mutex lock;
    static auto& known = *new std::map<std::string, std::shared_ptr<const DateSymbols>>;
    const std::lock_guard guard(lock);
    if (const auto found = known.find(locale); found != known.end())
        return found->second;
    if (known.size() >= most)
        known.clear();
    return known.emplace(locale, std::make_shared<const DateSymbols>(locale)).first->second;
}

std::string withGregorianCalendar(const std::string& locale) {
    char text[ULOC_FULLNAME_CAPACITY] = {};
    if (locale.size() >= sizeof text)
        return locale;
    locale.copy(text, locale.size());
    UErrorCode error = U_ZERO_ERROR;
    const int length = uloc_setKeywordValue("calendar", "gregorian", text, sizeof text, &error);
    return U_SUCCESS(error) && length < ULOC_FULLNAME_CAPACITY ? text : locale;
}

}  // namespace tovi::detail
