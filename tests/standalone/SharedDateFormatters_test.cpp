#include <ToviFoundationKit/ToviFoundationKit.h>

#include <cmath>

#include <gtest/gtest.h>

#include <support/Place.h>

using namespace tovi;

// In a program of their own, since shared formatters are made once.

namespace {

Ref<NSDate> gmt(NSInteger year, NSInteger month, NSInteger day, NSInteger hour = 0, NSInteger minute = 0) {
    return dateIn(gregorianGMT(), year, month, day, hour, minute);
}

struct Shared {
    const char* name;
    std::u16string_view text;
    bool followsTheZone;
};

/// 3 February 2009, 14:05:09 in Berlin, in British English; and whether the formatter takes on another default zone.
const Shared shared[] = {
    {"yyyy_MM_ddDateFormatter", u"2009-02-03", true},
    {"yyyyMMddHHmmDateFormatter", u"200902031405", true},
    {"HHmmDateFormatter", u"14:05", true},
    {"yyyyMMddDateFormatter", u"20090203", true},
    {"yyyyMMDateFormatter", u"200902", true},
    {"yyyyDateFormatter", u"2009", true},
    {"fullYearDateFormatter", u"2009", true},
    {"emailDateFormatter", u"Tue, 3 Feb 2009 14:05:09 +0100", true},
    {"dayNumberDateFormatter", u"03", false},
    {"fullDayDateFormatter", u"Tuesday", false},
    {"fullMonthFullYearDateFormatter", u"February 2009", true},
    {"shortMonthFullYearDateFormatter", u"Feb 2009", true},
    {"fullMonthDateFormatter", u"February", false},
    {"noTimeAndShortDateFormatter", u"03/02/2009", true},
    {"noTimeAndMediumDateFormatter", u"3 Feb 2009", false},
    {"noTimeAndLongDateFormatter", u"3 February 2009", true},
    {"noTimeAndVeryLongDateFormatter", u"Tuesday, 3 February 2009", true},
    {"shortTimeAndShortDateFormatter", u"03/02/2009, 14:05", true},
    {"shortTimeAndMediumDateFormatter", u"3 Feb 2009, 14:05", false},
    {"shortTimeAndLongDateFormatter", u"3 February 2009 at 14:05", true},
    {"shortTimeAndNoDateFormatter", u"14:05", true},
    {"shortTimeTZAndNoDateFormatter", u"14:05(CET)", false},
    {"longTimeAndNoDateFormatter", u"14:05:09 CET", true},
    {"longTimeAndShortDateFormatter", u"03/02/2009, 14:05:09 CET", true},
    {"longTimeAndLongDateFormatter", u"3 February 2009 at 14:05:09 CET", true},
};

RefPtr<NSDateFormatter> formatter(const char* name) {
    const id answer = send<id>(NSDateFormatter::classObject(), Selector::named(name));
    return answer ? RefPtr<NSDateFormatter>(to<NSDateFormatter>(answer)) : nullptr;
}

bool same(const NSObject& a, const NSObject& b) { return &a == &b; }

using Relative = QVLRelativeDateFormatter;

std::string text(const RefPtr<NSString>& string) { return string ? string->UTF8String() : "nil"; }

}  // namespace

TEST(SharedDateFormatters, printAndFollowTheZoneAsTheyAreMeantTo) {
    const ScopedLocale locale(u"en_GB");
    NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName(u"Europe/Berlin"_ns));
    resetDateFormatterDefaultTimeZone();
    EXPECT_FALSE(formatter("longTimeAndMediumDateFormatter"));
    const auto date = gmt(2009, 2, 3, 13, 5)->dateByAddingTimeInterval(9);
    for (const Shared& each : shared) {
        const auto made = formatter(each.name);
        EXPECT_EQ(*made->stringFromDate(date), each.text) << each.name;
        EXPECT_TRUE(same(made.ref(), formatter(each.name).ref())) << each.name;
    }
    EXPECT_TRUE(same(formatter("yyyyDateFormatter").ref(), formatter("fullYearDateFormatter").ref()));
    EXPECT_TRUE(
        same(formatter("longTimeAndShortDateFormatter").ref(), formatter("longTimeAndMediumDateFormatter").ref()));
    NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName(u"Asia/Tokyo"_ns));
    resetDateFormatterDefaultTimeZone();
    for (const Shared& each : shared)
        EXPECT_EQ(formatter(each.name)->timeZone()->name(), each.followsTheZone ? u"Asia/Tokyo" : u"Europe/Berlin")
            << each.name;
    NSTimeZone::setDefaultTimeZone(nullptr);
}

TEST(RelativeDateFormatter, hasAWordForThreeDaysOfAMonth) {
    const ScopedLocale locale(u"en_GB");
    const ScopedTimeZone zone(u"GMT");
    const ScopedPreferredLanguages english({"en"});
    resetDateFormatterDefaultTimeZone();
    gregorian(), resetGregorianDefaultTimeZone();
    FixedClock clock(gmt(2024, 3, 14, 12)->timeIntervalSinceReferenceDate());
    const ScopedClock scope(clock);
    const auto brief = Relative::shortTimeAndRelativeShortDateFormatter(),
               day = Relative::noTimeAndRelativeLongDateFormatter();
    EXPECT_EQ(text(brief->stringFromDate(gmt(2024, 3, 14, 14, 5))), "Today 14:05");
    EXPECT_EQ(text(brief->stringFromDate(gmt(2024, 3, 13, 0, 0))), "Yesterday 00:00");
    EXPECT_EQ(text(day->stringFromDate(gmt(2024, 3, 15, 23, 59))), "Tomorrow");
    EXPECT_EQ(text(brief->stringFromDate(gmt(2024, 3, 16, 9))), "16/03/2024, 09:00");
    EXPECT_EQ(text(day->stringFromDate(gmt(2023, 3, 14))), "14 March 2023");
    clock.set(gmt(2024, 3, 1)->timeIntervalSinceReferenceDate());
    EXPECT_EQ(text(day->stringFromDate(gmt(2024, 2, 29))), "29 February 2024");
    const auto plain = Relative::init();
    EXPECT_EQ(text(plain->stringFromDate(gmt(2024, 3, 1))), "Today");
    EXPECT_EQ(text(plain->stringFromDate(gmt(2024, 3, 9))), "");
    plain->setRelativeDateStyle(1);
    plain->setTimeStyle(NSDateFormatterMediumStyle);
    EXPECT_EQ(text(plain->stringFromDate(gmt(2024, 3, 9))), "");
    EXPECT_EQ(text(plain->stringFromDate(NSDate::dateWithTimeIntervalSinceReferenceDate(std::nan("")))), "");
    EXPECT_EQ(text(to<NSDateFormatter>(brief->copy())->stringFromDate(gmt(2024, 3, 1, 9))), "Today 09:00");
    const ScopedPreferredLanguages french({"fr"});
    EXPECT_EQ(text(day->stringFromDate(gmt(2024, 3, 1))), "Aujourd’hui");
    const ScopedPreferredLanguages danish({"da"});
    EXPECT_EQ(text(day->stringFromDate(gmt(2024, 3, 2))), "I Morgen");
}

TEST(RelativeDateFormatter, sharesWhatItSaysItShares) {
    const Relative& brief = *Relative::shortTimeAndRelativeShortDateFormatter();  // not held
    EXPECT_TRUE(same(brief, Relative::shortTimeAndRelativeShortDateFormatter()));
    EXPECT_FALSE(Relative::shortTimeAndRelativeLongDateFormatter());
    EXPECT_FALSE(same(brief, Relative::shortTimeAndRelativeShortDateFormatter()));
    EXPECT_EQ(brief.timeStyle(), NSDateFormatterShortStyle);
    EXPECT_EQ(Relative::longTimeAndRelativeMediumDateFormatter()->timeStyle(), NSDateFormatterLongStyle);
    EXPECT_EQ(Relative::longTimeAndRelativeMediumDateFormatter()->dateStyle(), NSDateFormatterNoStyle);
    const auto medium = Relative::longTimeAndRelativeMediumDateFormatter();
    const bool made = longTimeAndMediumDateFormatter().get();
    EXPECT_EQ(static_cast<bool>(medium->stringFromDate(gmt(1999, 1, 1))), made);
    const auto zoneOf = [](const NSDateFormatter& each) { return each.timeZone()->name()->UTF8String(); };
    const auto keptMedium = Relative::noTimeAndRelativeMediumDateFormatter();
    const auto before = zoneOf(keptMedium);
    const ScopedTimeZone zone(u"Asia/Kathmandu");
    resetDateFormatterDefaultTimeZone();
    EXPECT_EQ(zoneOf(Relative::shortTimeAndRelativeShortDateFormatter()), "Asia/Kathmandu");
    EXPECT_EQ(zoneOf(keptMedium), before);
}
