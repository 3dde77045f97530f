// The first line is a pattern, the second a text. Reads the text, strictly and leniently; prints what comes out, and a
// moment made of the text's bytes, which must be what ICU prints. With a pattern that tells a moment in full, what is
// printed reads back as the same.

#include <bit>
#include <cmath>
#include <string>

#include <unicode/udat.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include "Support.h"

using namespace tovi;

namespace {

constexpr std::u16string_view letters = u"GyYuUrQqMLwWdDFgEecabBhHKkmsSAzZOvVXxl";

/// Whether every letter outside of quotation marks means something.
bool isGood(std::u16string_view pattern) {
    bool quoted = false;
    for (const char16_t unit : pattern) {
        quoted ^= unit == u'\'';
        const bool letter = (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z';
        if (!quoted && letter && letters.find(unit) == letters.npos)
            return false;
    }
    return true;
}

std::u16string printedByICU(const char* locale, const NSString& zone, const NSString& pattern, double milliseconds) {
    UErrorCode error = U_ZERO_ERROR;
    UDateFormat* const format =
        udat_open(UDAT_PATTERN, UDAT_PATTERN, locale, zone.view().data(), static_cast<int>(zone.length()),
                  pattern.view().data(), static_cast<int>(pattern.length()), &error);
    require(U_SUCCESS(error));
    std::u16string text(1 << 16, u' ');
    const int length = udat_format(format, milliseconds, text.data(), 1 << 16, nullptr, &error);
    udat_close(format);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

/// A moment within the calendar, or beyond.
double momentFrom(std::string_view bytes) {
    std::uint64_t bits = bytes.size();
    for (const char byte : bytes)
        bits = bits * 0x9E3779B97F4A7C15U + static_cast<unsigned char>(byte);
    const double any = std::bit_cast<double>(bits);
    return bits % 5 == 0 ? any : std::remainder(static_cast<double>(bits >> 8), bits % 2 ? 1e10 : 1e14);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || size > 2000)
        return 0;
    static const char* const locales[] = {"en_US", "de_DE", "ar_EG", "th_TH", "ja_JP", "ccp", "root", "fr_FR"};
    static const std::u16string_view zones[] = {u"Europe/Berlin", u"America/New_York", u"GMT", u"GMT-0330"};
    const char* const locale = locales[data[0] % 8];
    const auto zone = NSString::stringWithCharacters(zones[data[0] / 8 % 4]);
    const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string_view second = input.substr(std::min(input.find('\n'), input.size() - 1) + 1);
    const auto pattern = NSString::fromUTF8(input.substr(0, input.find('\n')));
    const auto text = NSString::fromUTF8(second);

    const auto formatter = NSDateFormatter::init();
    formatter->setLocale(NSLocale::localeWithLocaleIdentifier(NSString::fromUTF8(locale)));
    formatter->setTimeZone(NSTimeZone::timeZoneWithName(zone));
    formatter->setDateFormat(pattern);
    const bool good = isGood(pattern->view());
    for (const bool lenient : {false, true}) {
        formatter->setLenient(lenient);
        if (const auto date = formatter->dateFromString(text)) {
            require(good && !std::isnan(date->timeIntervalSince1970()));
            formatter->stringFromDate(*date);
        }
    }

    const double seconds = std::floor(momentFrom(second));
    const auto printed = formatter->stringFromDate(NSDate::dateWithTimeIntervalSince1970(seconds));
    require(static_cast<bool>(printed) == (good && !std::isnan(seconds)));
    // ICU counts the weeks of 1582 as if no day were left out.
    const bool oddWeeks =
        std::abs(seconds + 12219292800) < 5e7 && pattern->view().find_first_of(u"wWYec") != std::u16string_view::npos;
    if (printed && std::abs(seconds) < 9e13 && pattern->length() < 500 && !oddWeeks)
        require(printedByICU(locale, zone, pattern, seconds * 1000) == printed->view());

    formatter->setLenient(false);
    formatter->setDateFormat(u"G yyyy-MM-dd HH:mm:ss.SSS Z"_ns);
    if (const auto date = formatter->dateFromString(text); date && std::abs(date->timeIntervalSince1970()) < 9e13) {
        const auto again = formatter->stringFromDate(*date).ref();
        const auto reread = formatter->dateFromString(again);
        require(reread && std::abs(reread->timeIntervalSinceDate(*date)) < 1e-3);
        require(formatter->stringFromDate(*reread)->isEqual(again.get()));
    }
    return 0;
}
