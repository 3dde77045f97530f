#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <unicode/uloc.h>

#include <support/Expect.h>
#include <support/Icu.h>
#include <support/Place.h>
#include <support/Text.h>

using namespace tovi;
using namespace moments;

namespace {

Ref<NSLocale> locale(std::string_view identifier) {
    return NSLocale::localeWithLocaleIdentifier(NSString::fromUTF8(identifier));
}

Ref<NSDateFormatter> formatter(std::string_view localeIdentifier, std::u16string_view zoneName) {
    const auto made = NSDateFormatter::init();
    made->setLocale(locale(localeIdentifier));
    made->setTimeZone(zone(zoneName));
    return made;
}

Ref<NSDateFormatter> formatter(std::string_view localeIdentifier, std::u16string_view zoneName,
                               std::u16string_view pattern) {
    const auto made = formatter(localeIdentifier, zoneName);
    made->setDateFormat(text(pattern));
    return made;
}

icu_reference::Format icuFormat(const char* localeIdentifier, std::u16string_view zoneName, UDateFormatStyle date,
                                UDateFormatStyle time, std::u16string_view pattern = {}) {
    UErrorCode error = U_ZERO_ERROR;
    icu_reference::Format made(udat_open(time, date, localeIdentifier, zoneName.data(), int(zoneName.size()),
                                         pattern.data(), int(pattern.size()), &error));
    EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
    return made;
}

std::string utf8(std::u16string_view units) { return text(units)->UTF8String(); }

std::string printed(const NSDateFormatter& by, double second) {
    const auto shown = by.stringFromDate(at(second));
    return shown ? shown->UTF8String() : "nil";
}

// Every kind of locale: other digits, digits of two code units, other calendars, other hours and weeks, scripts from
// right to left.
const auto locales =
    words("en_US en_GB de_DE fr_CA ar_EG fa_IR th_TH ja_JP zh_Hant_TW hi_IN bn_BD ccp my_MM he_IL sr_Latn am_ET sw_KE "
          "es_MX root ko_KR ja_JP@calendar=japanese de_DE@numbers=arab en_US_POSIX");

const double moment[] = {1795383605.123, 0,     -14182940.5, 951782399.999, -5e9,
                         -61e9,          -63e9, 4e10,        1792888200,    1767225599};

}  // namespace

TEST(NSDateFormatter, PrintsEveryFieldAsICUDoes) {
    std::vector<std::u16string> patterns = {u"yyyy-MM-dd HH:mm",
                                            u"EEE, d MMM yyyy HH:mm:ss Z",
                                            u"h 'o''clock' a, zzzz",
                                            u"''yy''MM'd'''d'",
                                            u"GGGG y MMMM d EEEE B",
                                            u"lll'unclosed z",
                                            u"YYYY-'W'ww-e HH:mm:ss.SSSSSS xxx",
                                            u"年MM月\U0001F600 EEEEE",
                                            u"HHmmssddMMyy"};
    for (const char16_t letter : std::u16string_view(u"GyYuUrQqMLwWdDFgEecabBhHKkmsSAzZOvVXx"))
        for (std::size_t count = 1; count <= 11; ++count)
            patterns.emplace_back(count, letter);
    for (const std::string& name : locales) {
        const std::u16string_view zoneName = name[0] % 2 ? u"America/New_York" : u"Africa/Monrovia";
        const auto kit = formatter(name, zoneName);
        for (const std::u16string& pattern : patterns) {
            kit->setDateFormat(text(pattern));
            const auto reference = icuFormat(name.c_str(), zoneName, UDAT_PATTERN, UDAT_PATTERN, pattern);
            for (const double second : moment)
                ASSERT_EQ(printed(kit, second),
                          utf8(icu_reference::print(reference.get(), std::floor(second * 1000 + 0.05))))
                    << name << " " << utf8(pattern) << " " << second;
        }
    }
}

TEST(NSDateFormatter, PrintsTheStylesOfEveryLocale) {
    constexpr UDateFormatStyle styles[] = {UDAT_NONE, UDAT_SHORT, UDAT_MEDIUM, UDAT_LONG, UDAT_FULL};
    for (int i = 0; i < uloc_countAvailable(); ++i) {
        const char* const name = uloc_getAvailable(i);
        const auto kit = formatter(name, u"Europe/Berlin");
        for (int pair = 1 + i % 3; pair < 25; pair += 3) {
            kit->setDateStyle(NSDateFormatterStyle(pair / 5));
            kit->setTimeStyle(NSDateFormatterStyle(pair % 5));
            const auto reference = icuFormat(name, u"Europe/Berlin", styles[pair / 5], styles[pair % 5]);
            ASSERT_EQ(printed(kit, 1795383605), utf8(icu_reference::print(reference.get(), 1795383605e3)))
                << name << pair;
        }
    }
}

TEST(NSDateFormatter, NamesZonesAsICUDoesAtAnyMoment) {
    std::mt19937_64 random(9);
    const std::u16string_view zones[] = {
        u"Europe/Moscow", u"Europe/Berlin", u"Asia/Kolkata",    u"America/Caracas", u"America/Indiana/Knox",
        u"Pacific/Guam",  u"Africa/Cairo",  u"Europe/Istanbul", u"GMT+0130",        u"Asia/Pyongyang"};
    for (const auto zoneName : zones)
        for (const char* name : {"en_US", "ru_RU", "de_DE"}) {
            const auto kit = formatter(name, zoneName, u"z zzzz ZZZZ O V VV VVV VVVV v vvvv");
            const auto reference =
                icuFormat(name, zoneName, UDAT_PATTERN, UDAT_PATTERN, u"z zzzz ZZZZ O V VV VVV VVVV v vvvv");
            for (int i = 0; i < 150; ++i) {
                const double second = std::floor(std::uniform_real_distribution(-3e9, 3e9)(random));
                ASSERT_EQ(printed(kit, second), utf8(icu_reference::print(reference.get(), second * 1000)))
                    << utf8(zoneName) << second;
            }
        }
}

TEST(NSDateFormatter, FollowsItsPropertiesWhenTheyChange) {
    const ScopedTimeZone berlin(u"Europe/Berlin");
    const ScopedLocale german(u"de_DE");
    const double second = 1795383605;  // 22 November 2026, 22:40:05 in Berlin
    const auto changing = NSDateFormatter::init();
    EXPECT_EQ(printed(changing, second), "");
    EXPECT_EQ(*changing->dateFormat(), u"");
    changing->setDateStyle(NSDateFormatterShortStyle);
    EXPECT_EQ(printed(changing, second), "22.11.26");
    changing->setTimeStyle(NSDateFormatterShortStyle);
    EXPECT_EQ(printed(changing, second), "22.11.26, 22:40");
    EXPECT_EQ(*changing->dateFormat(), u"dd.MM.yy, HH:mm");
    changing->setDateFormat(changing->dateFormat()->stringByAppendingString(u"(zzz)"_ns));
    EXPECT_EQ(printed(changing, second), "22.11.26, 22:40(MEZ)");
    changing->setLocale(locale("en_US"));
    changing->setTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(-3600));
    EXPECT_EQ(printed(changing, second), "22.11.26, 20:40(GMT-1)");
    const auto copied = to<NSDateFormatter>(changing->copy());
    changing->setDateStyle(NSDateFormatterFullStyle);
    EXPECT_EQ(printed(changing, second), "Sunday, November 22, 2026 at 8:40\u202FPM");
    EXPECT_EQ(printed(copied, second), "22.11.26, 20:40(GMT-1)");
    changing->setDateFormat(u"e w Y y"_ns);
    EXPECT_EQ(printed(changing, 1767225599), "4 1 2026 2025");
    changing->setCalendar(NSCalendar::calendarWithIdentifier(u"iso8601"_ns));
    EXPECT_EQ(printed(changing, 1767225599 - 3 * 86400), "7 52 2025 2025");
    changing->setCalendar(nullptr);
    changing->setTimeZone(nullptr);
    changing->setLocale(nullptr);
    EXPECT_TRUE(changing->locale()->isEqual(NSLocale::currentLocale().get()));
    EXPECT_EQ(*changing->timeZone()->name(), u"Europe/Berlin");
    EXPECT_EQ(changing->calendar()->firstWeekday(), 2U);
    EXPECT_RAISES(changing->setDateStyle(NSDateFormatterStyle(5)), NSInvalidArgumentException, "style 5");

    const auto thai = formatter("th_TH", u"Asia/Bangkok", u"yyyy");
    EXPECT_EQ(printed(thai, second), "2569");
    thai->setCalendar(NSCalendar::calendarWithIdentifier(u"gregorian"_ns));
    EXPECT_EQ(printed(thai, second), "2026");
}

TEST(NSDateFormatter, PrintsNothingWithASpoiltPatternAndAnyMomentWithAnother) {
    for (const auto pattern : {u"yyyy i", u"f", u"'x'T"}) {
        EXPECT_EQ(printed(formatter("en_US", u"GMT", pattern), 0), "nil");
        EXPECT_EQ(printed(formatter("th_TH", u"GMT", pattern), 0), "nil");
        EXPECT_FALSE(formatter("en_US", u"GMT", pattern)->dateFromString(u"1970"_ns));
    }
    EXPECT_EQ(printed(formatter("en_US", u"GMT", u"yyyy"), NAN), "nil");
    EXPECT_EQ(printed(formatter("en_US", u"GMT", u"y G"), INFINITY),
              printed(formatter("en_US", u"GMT", u"y G"), 1e200));
    EXPECT_EQ(printed(formatter("en_US", u"GMT", u"y G"), -INFINITY), "3146560 BC");
    EXPECT_EQ(printed(formatter("en_US", u"GMT", std::u16string(100000, u'y')), 0), "0000001970");
    EXPECT_EQ(printed(formatter("en_US", u"GMT", std::u16string(100000, u'-')), 0), std::string(100000, '-'));
}

TEST(NSDateFormatter, ReadsTheWholeTextOrNothing) {
    const struct {
        std::string_view locale;
        std::u16string_view pattern, text;
        const char *strict, *lenient;
    } rows[] = {
        {"en_US", u"yyyy-MM-dd HH:mm", u"2026-11-22 21:40", "2026-11-22 20:40:00 +0000", "2026-11-22 20:40:00 +0000"},
        {"en_US", u"yyyy-MM-dd HH:mm", u"2026-11-22 21:40 ", "nil", "2026-11-22 20:40:00 +0000"},
        {"en_US", u"yyyy-MM-dd HH:mm", u"2026-11-22", "nil", "nil"},
        {"en_US", u"yyyy-MM-dd", u"2026-02-30", "nil", "2026-03-01 23:00:00 +0000"},
        {"en_US", u"EEE, d MMM yyyy HH:mm:ss Z", u"Tue, 3 Feb 2009 14:05:09 +0100", "2009-02-03 13:05:09 +0000",
         "2009-02-03 13:05:09 +0000"},
        {"de_DE", u"d. MMMM yyyy", u"3. März 2009", "2009-03-02 23:00:00 +0000", "2009-03-02 23:00:00 +0000"},
        {"de_DE", u"HH:mm", u"14:05", "2000-01-01 13:05:00 +0000", "2000-01-01 13:05:00 +0000"},
        {"en_US", u"d MMM", u"29 Feb", "2000-02-28 23:00:00 +0000", "2000-02-28 23:00:00 +0000"},
        {"en_US", u"M/d/yy", u"1/1/50", "1949-12-31 23:00:00 +0000", "1949-12-31 23:00:00 +0000"},
        {"en_US", u"M/d/yy", u"12/31/49", "2049-12-30 23:00:00 +0000", "2049-12-30 23:00:00 +0000"},
        {"en_US", u"yyyy-MM-dd HH:mm", u"2026-03-29 02:30", "nil", "2026-03-29 01:30:00 +0000"},
        {"en_US", u"yyyy-MM-dd HH:mm", u"2026-10-25 02:30", "2026-10-25 00:30:00 +0000", "2026-10-25 00:30:00 +0000"},
        {"en_US", u"h:mm a", u"2:05 PM", "2000-01-01 13:05:00 +0000", "2000-01-01 13:05:00 +0000"},
        {"ar_EG", u"yyyy", u"٢٠٢٦", "2025-12-31 23:00:00 +0000", "2025-12-31 23:00:00 +0000"},
        {"th_TH", u"d/M/y", u"22/11/2569", "2026-11-21 23:00:00 +0000", "2026-11-21 23:00:00 +0000"},
        {"en_US", u"", u"", "nil", "nil"},
        {"en_US", u"yyyy", u"", "nil", "nil"},
        {"en_US", u"s.SSS", u"1.50000000000000000000000000000000000", "nil", "nil"},
    };
    for (const auto& row : rows) {
        const auto reader = formatter(row.locale, u"Europe/Berlin", row.pattern);
        for (const bool lenient : {false, true}) {
            reader->setLenient(lenient);
            const auto date = reader->dateFromString(text(row.text));
            EXPECT_EQ(date ? date->description()->UTF8String() : "nil", lenient ? row.lenient : row.strict)
                << utf8(row.text) << lenient;
        }
    }
}

TEST(NSDateFormatter, ReadsWhatItPrints) {
    std::mt19937_64 random(11);
    for (const char* name : {"en_US", "de_DE", "fa_IR", "th_TH", "ja_JP", "hi_IN"}) {
        const auto kit = formatter(name, u"America/New_York", u"G yyyy-MM-dd HH:mm:ss.SSS Z");
        for (int i = 0; i < 300; ++i) {
            const double second = std::floor(std::uniform_real_distribution(-6e10, 1e11)(random) * 1000) / 1000;
            const auto text = kit->stringFromDate(at(second)).ref();
            const auto read = kit->dateFromString(text);
            ASSERT_TRUE(read) << text->UTF8String();
            // GMT offsets of local mean time have seconds, which the text tells, too.
            ASSERT_NEAR(since1970(*read), second, 1e-3) << text->UTF8String();
            ASSERT_EQ(printed(kit, since1970(*read)), text->UTF8String());
        }
    }
}

TEST(NSDateFormatter, ReadsPlainNumbersAsICUDoes) {
    std::mt19937 random(13);
    const std::u16string_view patterns[] = {u"yyyy-MM-dd HH:mm", u"yyyyMMddHHmmss", u"dd.MM.yyyy",
                                            u"HH:mm:ss.SSS",     u"'on' yyyy/MM",   u"ssmm"};
    // With ISO's calendar, ICU reads all.
    for (const auto pattern : patterns)
        for (const bool lenient : {false, true}) {
            const auto plain = formatter("de_DE", u"Europe/Berlin", pattern);
            const auto byICU = formatter("de_DE@numbers=latn;calendar=iso8601", u"Europe/Berlin", pattern);
            plain->setLenient(lenient);
            byICU->setLenient(lenient);
            for (int i = 0; i < 2000; ++i) {
                const double second = std::uniform_int_distribution(-2000000000, 2000000000)(random);
                std::u16string changed(plain->stringFromDate(at(second)).ref()->view());
                if (i % 3)
                    changed[random() % changed.size()] = u"0123456789 -:.x"[random() % 15];
                if (i % 50 == 0)
                    changed.pop_back();
                const auto string = text(changed);
                const auto one = plain->dateFromString(string), other = byICU->dateFromString(string);
                ASSERT_EQ(static_cast<bool>(one), static_cast<bool>(other)) << utf8(changed);
                ASSERT_TRUE(!one || std::abs(one->timeIntervalSinceDate(*other)) < 1e-6) << utf8(changed);
            }
        }
}
