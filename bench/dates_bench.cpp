// Dates: 1,024 moments from 2015 to 2030, in no order, in Berlin. Times are those of one.

#define QT_NO_KEYWORDS

#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include <ToviFoundationKit/Extensions/NSDate-QVLAdditions.h>
#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSDateFormatter.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_QT
#include <QDateTime>
#include <QLocale>
#include <QTimeZone>
#endif
#ifdef TOVI_BENCH_HAVE_GLIB
#include <glib.h>
#endif
#ifdef TOVI_BENCH_HAVE_ABSEIL_TIME
#include <absl/time/time.h>
#endif
#ifdef TOVI_BENCH_HAVE_DATE
#include <date/tz.h>
#endif
#ifdef TOVI_BENCH_HAVE_ICU
#include <unicode/udat.h>
#endif

using namespace tovi;
using namespace bench;

namespace {

constexpr long count = 1024;
constexpr long years = 1, months = 5, days = 17;

/// Seconds since 1970.
std::vector<long> seconds() {
    std::vector<long> moments = shuffledNumbers(count);
    for (long& moment : moments)
        moment = 1420070400 + moment * 462247 + 12345;
    return moments;
}

/// Times an operation on each of the moments, made into what it takes.
template <class Make, class Operation> void each(State& state, Make make, Operation operation) {
    std::vector<decltype(make(0L))> moments;
    for (const long moment : seconds())
        moments.push_back(make(moment));
    repeat(state, count, [&] {
        for (auto& moment : moments)
            DoNotOptimize(operation(moment));
        return moments.size();
    });
}

// --- The kit ---------------------------------------------------------------------------------------------------------

Ref<NSDate> kitDate(long moment) { return NSDate::dateWithTimeIntervalSince1970(static_cast<double>(moment)); }
Ref<NSTimeZone> kitZone() { return NSTimeZone::timeZoneWithName(u"Europe/Berlin"_ns).ref(); }

Ref<NSCalendar> kitCalendar() {
    const auto calendar = NSCalendar::calendarWithIdentifier(u"gregorian"_ns).ref();
    calendar->setTimeZone(kitZone());
    return calendar;
}

void kitSum(State& state) {
    const auto calendar = kitCalendar();
    const auto added = NSDateComponents::init();
    added->setYear(years);
    added->setMonth(months);
    added->setDay(days);
    each(state, kitDate,
         [&](const NSDate& date) { return calendar->dateByAddingComponents_toDate_options(added, date, 0); });
}

void kitFields(State& state) {
    const auto calendar = kitCalendar();
    constexpr auto units = NSCalendarUnit(NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay |
                                          NSCalendarUnitHour | NSCalendarUnitMinute | NSCalendarUnitSecond);
    each(state, kitDate, [&](const NSDate& date) { return calendar->components_fromDate(units, date); });
}

void kitWeek(State& state) {
    isogregorian()->setTimeZone(kitZone());
    check(ISOWeekOfYear(kitDate(1609455600)) == 202053, "ISOWeekOfYear");
    each(state, kitDate, [](const NSDate& date) { return ISOWeekOfYear(date); });
}

void kitWeekField(State& state) {
    const auto calendar = NSCalendar::calendarWithIdentifier(u"iso8601"_ns).ref();
    calendar->setTimeZone(kitZone());
    each(state, kitDate,
         [&](const NSDate& date) { return calendar->components_fromDate(NSCalendarUnitWeekOfYear, date); });
}

void kitDateFrom(State& state) {
    const auto calendar = kitCalendar();
    const auto make = [&](long moment) {
        return calendar->components_fromDate(NSCalendarUnit(4 | 8 | 16 | 32 | 64 | 128), kitDate(moment));
    };
    each(state, make, [&](const NSDateComponents& fields) { return calendar->dateFromComponents(fields); });
}

Ref<NSDateFormatter> kitFormatter(const NSString* pattern) {
    const auto formatter = NSDateFormatter::init();
    formatter->setLocale(NSLocale::localeWithLocaleIdentifier(u"de_DE"_ns));
    formatter->setTimeZone(kitZone());
    formatter->setDateStyle(NSDateFormatterShortStyle);
    formatter->setTimeStyle(NSDateFormatterShortStyle);
    if (pattern)
        formatter->setDateFormat(*pattern);
    return formatter;
}

void kitPrint(State& state, const NSString* pattern, std::u16string_view expected) {
    const auto formatter = kitFormatter(pattern);
    check(*formatter->stringFromDate(kitDate(1795383605)).ref() == expected, "stringFromDate");
    each(state, kitDate, [&](const NSDate& date) { return formatter->stringFromDate(date); });
}
void kitPrintPattern(State& state) { kitPrint(state, u"yyyy-MM-dd HH:mm"_ns.get(), u"2026-11-22 22:40"); }
void kitPrintShort(State& state) { kitPrint(state, nullptr, u"22.11.26, 22:40"); }
void kitPrintZone(State& state) { kitPrint(state, u"HH:mm:ss zzz"_ns.get(), u"22:40:05 MEZ"); }

void kitRead(State& state) {
    const auto formatter = kitFormatter(u"yyyy-MM-dd HH:mm"_ns.get());
    const auto make = [&](long moment) { return formatter->stringFromDate(kitDate(moment)).ref(); };
    each(state, make, [&](const NSString& text) { return formatter->dateFromString(text); });
}

BENCHMARK(kitSum)->Name("year, month, day added/kit");
BENCHMARK(kitFields)->Name("fields of a date/kit");
BENCHMARK(kitWeek)->Name("ISO week of a date/kit");
BENCHMARK(kitWeekField)->Name("ISO week of a date/kit, as a field");
BENCHMARK(kitDateFrom)->Name("date from fields/kit");
BENCHMARK(kitPrintPattern)->Name("date printed, yyyy-MM-dd HH:mm/kit");
BENCHMARK(kitPrintShort)->Name("date printed, short style/kit");
BENCHMARK(kitPrintZone)->Name("date printed, with zone/kit");
BENCHMARK(kitRead)->Name("date read, yyyy-MM-dd HH:mm/kit");

// --- The peers -------------------------------------------------------------------------------------------------------

void strftimePrint(State& state) {
    setenv("TZ", "Europe/Berlin", 1);
    tzset();
    each(
        state, [](long moment) { return moment; },
        [](time_t moment) {
            std::tm fields;
            char text[32];
            return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", localtime_r(&moment, &fields)));
        });
}
BENCHMARK(strftimePrint)->Name("date printed, yyyy-MM-dd HH:mm/strftime");

#ifdef TOVI_BENCH_HAVE_DATE
using DateTime = date::zoned_time<std::chrono::seconds>;

DateTime dateDate(long moment) {
    return {date::locate_zone("Europe/Berlin"), date::sys_seconds(std::chrono::seconds(moment))};
}

void dateSum(State& state) {
    each(state, dateDate, [](const DateTime& from) {
        const auto clock = from.get_local_time();
        const auto day = date::floor<date::days>(clock);
        auto civil = date::year_month_day(day) + date::years(years) + date::months(months);
        if (!civil.ok())
            civil = civil.year() / civil.month() / date::last;
        return DateTime(from.get_time_zone(), date::local_days(civil) + date::days(days) + (clock - day),
                        date::choose::earliest);
    });
}

void dateFields(State& state) {
    each(state, dateDate, [](const DateTime& from) {
        const auto clock = from.get_local_time();
        const auto day = date::floor<date::days>(clock);
        return std::pair(date::year_month_day(day), date::hh_mm_ss(clock - day));
    });
}
BENCHMARK(dateSum)->Name("year, month, day added/date");
BENCHMARK(dateFields)->Name("fields of a date/date");
#endif

#ifdef TOVI_BENCH_HAVE_ABSEIL_TIME
absl::TimeZone abslZone() {
    absl::TimeZone zone;
    check(absl::LoadTimeZone("Europe/Berlin", &zone), "absl::LoadTimeZone");
    return zone;
}

void abslSum(State& state) {
    const auto zone = abslZone();
    each(state, absl::FromUnixSeconds, [&](absl::Time time) {
        const absl::CivilSecond clock = absl::ToCivilSecond(time, zone);
        const absl::CivilMonth month = absl::CivilMonth(clock.year() + years, clock.month()) + months;
        const absl::CivilDay last = absl::CivilDay(month + 1) - 1;
        const absl::CivilDay day = std::min(absl::CivilDay(month) + (clock.day() - 1), last) + days;
        return absl::FromCivil(
            absl::CivilSecond(day.year(), day.month(), day.day(), clock.hour(), clock.minute(), clock.second()), zone);
    });
}
void abslFields(State& state) {
    const auto zone = abslZone();
    each(state, absl::FromUnixSeconds, [&](absl::Time time) { return absl::ToCivilSecond(time, zone); });
}
void abslPrint(State& state) {
    const auto zone = abslZone();
    each(state, absl::FromUnixSeconds, [&](absl::Time time) { return absl::FormatTime("%Y-%m-%d %H:%M", time, zone); });
}
BENCHMARK(abslSum)->Name("year, month, day added/Abseil");
BENCHMARK(abslFields)->Name("fields of a date/Abseil");
BENCHMARK(abslPrint)->Name("date printed, yyyy-MM-dd HH:mm/Abseil");
#endif

#ifdef TOVI_BENCH_HAVE_QT
QDateTime qtDate(long moment) { return QDateTime::fromSecsSinceEpoch(moment, QTimeZone("Europe/Berlin")); }

void qtSum(State& state) {
    each(state, qtDate,
         [](const QDateTime& from) { return from.addYears(int(years)).addMonths(int(months)).addDays(days); });
}
void qtWeek(State& state) {
    each(state, qtDate, [](const QDateTime& from) { return from.date().weekNumber(); });
}
void qtPrint(State& state) {
    const QString pattern = QStringLiteral("yyyy-MM-dd HH:mm");
    each(state, qtDate, [&](const QDateTime& from) { return from.toString(pattern); });
}
void qtPrintShort(State& state) {
    const QLocale german(QLocale::German, QLocale::Germany);
    each(state, qtDate, [&](const QDateTime& from) { return german.toString(from, QLocale::ShortFormat); });
}
void qtRead(State& state) {
    const QString pattern = QStringLiteral("yyyy-MM-dd HH:mm");
    each(
        state, [&](long moment) { return qtDate(moment).toString(pattern); },
        [&](const QString& text) { return QDateTime::fromString(text, pattern); });
}
BENCHMARK(qtSum)->Name("year, month, day added/Qt");
BENCHMARK(qtWeek)->Name("ISO week of a date/Qt");
BENCHMARK(qtPrint)->Name("date printed, yyyy-MM-dd HH:mm/Qt");
BENCHMARK(qtPrintShort)->Name("date printed, short style/Qt");
BENCHMARK(qtRead)->Name("date read, yyyy-MM-dd HH:mm/Qt");
#endif

#ifdef TOVI_BENCH_HAVE_GLIB
struct GlibDate {
    GDateTime* date;
    explicit GlibDate(GDateTime* of) : date(of) {}
    GlibDate(GlibDate&& other) noexcept : date(std::exchange(other.date, nullptr)) {}
    ~GlibDate() {
        if (date)
            g_date_time_unref(date);
    }
};

GlibDate glibDate(long moment) {
    static GTimeZone* const zone = g_time_zone_new_identifier("Europe/Berlin");
    const GlibDate utc(g_date_time_new_from_unix_utc(moment));
    return GlibDate(g_date_time_to_timezone(utc.date, zone));
}

void glibSum(State& state) {
    each(state, glibDate, [](const GlibDate& from) {
        return GlibDate(g_date_time_add_full(from.date, int(years), int(months), int(days), 0, 0, 0)).date;
    });
}
void glibWeek(State& state) {
    each(state, glibDate, [](const GlibDate& from) { return g_date_time_get_week_of_year(from.date); });
}
BENCHMARK(glibSum)->Name("year, month, day added/GLib");
BENCHMARK(glibWeek)->Name("ISO week of a date/GLib");
#endif

#ifdef TOVI_BENCH_HAVE_ICU
UErrorCode error = U_ZERO_ERROR;

UCalendar* icuCalendar() { return ucal_open(u"Europe/Berlin", 13, "de_DE", UCAL_GREGORIAN, &error); }
double icuDate(long moment) { return static_cast<double>(moment) * 1000; }

void icuSum(State& state) {
    UCalendar* const calendar = icuCalendar();
    each(state, icuDate, [&](double moment) {
        ucal_setMillis(calendar, moment, &error);
        ucal_add(calendar, UCAL_YEAR, years, &error);
        ucal_add(calendar, UCAL_MONTH, months, &error);
        ucal_add(calendar, UCAL_DATE, days, &error);
        return ucal_getMillis(calendar, &error);
    });
    ucal_close(calendar);
}
void icuFields(State& state) {
    UCalendar* const calendar = icuCalendar();
    each(state, icuDate, [&](double moment) {
        int sum = 0;
        ucal_setMillis(calendar, moment, &error);
        for (const auto field : {UCAL_YEAR, UCAL_MONTH, UCAL_DATE, UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND})
            sum += ucal_get(calendar, field, &error);
        return sum;
    });
    ucal_close(calendar);
}
void icuPrint(State& state, UDateFormatStyle style, std::u16string_view pattern) {
    UDateFormat* const format = udat_open(style, style, "de_DE", u"Europe/Berlin", 13, pattern.data(),
                                          static_cast<int>(pattern.size()), &error);
    each(state, icuDate, [&](double moment) {
        UChar text[64];
        return std::u16string(text, static_cast<std::size_t>(udat_format(format, moment, text, 64, nullptr, &error)));
    });
    udat_close(format);
}
void icuPrintPattern(State& state) { icuPrint(state, UDAT_PATTERN, u"yyyy-MM-dd HH:mm"); }
void icuPrintShort(State& state) { icuPrint(state, UDAT_SHORT, {}); }
void icuPrintZone(State& state) { icuPrint(state, UDAT_PATTERN, u"HH:mm:ss zzz"); }

BENCHMARK(icuSum)->Name("year, month, day added/ICU");
BENCHMARK(icuFields)->Name("fields of a date/ICU");
BENCHMARK(icuPrintPattern)->Name("date printed, yyyy-MM-dd HH:mm/ICU");
BENCHMARK(icuPrintShort)->Name("date printed, short style/ICU");
BENCHMARK(icuPrintZone)->Name("date printed, with zone/ICU");
#endif

}  // namespace
