#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <optional>
#include <thread>

#include <support/ArchivedPerson.h>
#include <support/Icu.h>
#include <support/Place.h>

using namespace tovi;
using namespace moments;

TEST(NSTimeZone, HasEveryTransitionOfEveryZone) {
    const double years[][2] = {
        {-5364662400.0, 2240524800.0}, {4102444800.0, 4200000000.0}, {60000000000.0, 60100000000.0}};
    const Ref<NSArray> names = NSTimeZone::knownTimeZoneNames();
    EXPECT_GT(names->count(), 500U);
    for (const NSString& name : names->each<NSString>()) {
        SCOPED_TRACE(name.UTF8String());
        const Ref<NSTimeZone> kit = zone(name);
        const auto icu = icu_reference::calendar(name);
        for (const auto& [from, to] : years)
            for (const double change : icu_reference::transitions(icu, from, to)) {
                bool same = true;
                for (const double second : {change - 1, change}) {
                    icu_reference::set(icu, second);
                    const bool summer = icu_reference::field(icu, UCAL_DST_OFFSET) != 0;
                    ASSERT_EQ(kit->secondsFromGMTForDate(at(second)), icu_reference::offset(icu)) << second;
                    ASSERT_EQ(kit->isDaylightSavingTimeForDate(at(second)), summer) << second;
                    same &= kit->secondsFromGMTForDate(at(change)) == icu_reference::offset(icu) &&
                            kit->isDaylightSavingTimeForDate(at(change)) == summer;
                }
                // ICU also counts a change that is one of the name alone.
                const auto next = kit->nextDaylightSavingTimeTransitionAfterDate(at(change - 1));
                ASSERT_EQ(next && since1970(*next) == change, !same) << change;
            }
    }
}

TEST(NSTimeZone, IsFoundByItsNameOrItsDistanceFromGMT) {
    const struct {
        std::u16string_view name, found;
        NSInteger seconds;
    } rows[] = {
        {u"GMT", u"GMT", 0},
        {u"UTC", u"UTC", 0},
        {u"Asia/Kathmandu", u"Asia/Kathmandu", 20700},
        {u"GMT+1", u"GMT+0100", 3600},
        {u"GMT-03:30", u"GMT-0330", -12600},
        {u"GMT+010203", u"GMT+010203", 3723},
        {u"GMT-0000", u"GMT", 0},
    };
    for (const auto& row : rows) {
        const auto found = zone(row.name);
        EXPECT_EQ(*found->name(), row.found);
        EXPECT_EQ(found->secondsFromGMTForDate(at(1e9)), row.seconds);
        EXPECT_TRUE(zone(row.found)->isEqual(found.get()));
        EXPECT_EQ(zone(row.found)->hash(), found->hash());
    }
    for (const auto name :
         {u"", u"Europe/Atlantis", u"europe/berlin", u"Etc/Unknown", u"GMT+19", u"+01:00", u"Europe/Bérlin"})
        EXPECT_FALSE(NSTimeZone::timeZoneWithName(NSString::stringWithCharacters(name)));
    EXPECT_FALSE(NSTimeZone::timeZoneWithName(NSString::stringWithCharacters(std::u16string(1000, u'A'))));
    EXPECT_TRUE(NSTimeZone::timeZoneForSecondsFromGMT(64800));
    for (const NSInteger seconds : {NSInteger(64801), NSInteger(-64801), std::numeric_limits<NSInteger>::min()})
        EXPECT_FALSE(NSTimeZone::timeZoneForSecondsFromGMT(seconds));
}

TEST(NSTimeZone, TakesTheMachinesZoneFromTheVariableAndAsksOnce) {
    const char* const variable = std::getenv("TZ");
    const std::optional<std::string> before = variable ? std::optional<std::string>(variable) : std::nullopt;
    const std::pair<const char*, std::u16string_view> rows[] = {
        {"Europe/Berlin", u"Europe/Berlin"},
        {":America/New_York", u"America/New_York"},
        {"/usr/share/zoneinfo/posix/Asia/Tokyo", u"Asia/Tokyo"},
        {"", u"GMT"},
    };
    for (const auto& [value, name] : rows) {
        setenv("TZ", value, 1);
        NSTimeZone::resetSystemTimeZone();
        EXPECT_EQ(*NSTimeZone::systemTimeZone()->name(), name);
        EXPECT_EQ(*NSTimeZone::defaultTimeZone()->name(), name);
        setenv("TZ", "Pacific/Apia", 1);
        EXPECT_EQ(*NSTimeZone::systemTimeZone()->name(), name);
    }
    setenv("TZ", "No/Such", 1);
    NSTimeZone::resetSystemTimeZone();
    EXPECT_GT(NSTimeZone::systemTimeZone()->name()->length(), 0U);

    before ? setenv("TZ", before->c_str(), 1) : unsetenv("TZ");
    NSTimeZone::resetSystemTimeZone();
}

TEST(NSTimeZone, CanBeReplacedAsTheDefaultWhileOtherThreadsUseIt) {
    const auto ask = [] {
        for (int i = 0; i < 2000; ++i) {
            const auto current = NSTimeZone::defaultTimeZone();
            EXPECT_LE(std::abs(current->secondsFromGMTForDate(at(i * 1e8))), 7200);
        }
    };
    const ScopedTimeZone berlin(u"Europe/Berlin");
    std::thread first(ask), second(ask);
    for (int i = 0; i < 2000; ++i)
        NSTimeZone::setDefaultTimeZone(zone(i % 2 ? u"Europe/Berlin" : u"Europe/London"));
    first.join();
    second.join();
}

TEST(NSTimeZone, AnswersAtAnyMoment) {
    const auto berlin = zone(u"Europe/Berlin");
    EXPECT_EQ(berlin->secondsFromGMTForDate(at(INFINITY)), 3600);
    EXPECT_EQ(berlin->secondsFromGMTForDate(at(-INFINITY)), 3208);
    EXPECT_EQ(berlin->secondsFromGMTForDate(at(NAN)), 3600);
    EXPECT_FALSE(berlin->nextDaylightSavingTimeTransitionAfterDate(at(INFINITY)));
    EXPECT_FALSE(zone(u"GMT")->nextDaylightSavingTimeTransitionAfterDate(at(-INFINITY)));
    EXPECT_FALSE(zone(u"Asia/Tokyo")->nextDaylightSavingTimeTransitionAfterDate(at(0)));
    const ScopedLocale english(u"en_GB");
    EXPECT_EQ(*berlin->abbreviationForDate(at(1e9)), u"CEST");
}

TEST(NSTimeZone, AndLocalesAreArchived) {
    const auto locale = NSLocale::localeWithLocaleIdentifier(u"pt-br"_ns);
    const Ref<NSArray> both = NSArray::of(zone(u"Europe/Berlin"), zone(u"GMT+0130"), locale);
    for (const ArchiveForm& form : archiveForms)
        EXPECT_TRUE(both->isEqual(form.unarchive(form.archive(*both), nullptr)));
}

TEST(NSLocale, IsReadFromAnyIdentifier) {
    const struct {
        std::u16string_view identifier, canonical, language;
        const char* data;
        NSUInteger firstWeekday, minimumDays;
    } rows[] = {
        {u"de-at", u"de_AT", u"de", "de_AT", 2, 4},
        {u"en_US", u"en_US", u"en", "en_US", 1, 1},
        {u"sr_RS@latin", u"sr_Latn_RS", u"sr", "sr_Latn_RS", 2, 1},
        {u"de_DE@euro", u"de_DE", u"de", "de_DE", 2, 4},
        {u"ca_ES.UTF-8@valencia", u"ca_ES", u"ca", "ca_ES", 2, 4},
        {u"xx_DE", u"xx_DE", u"xx", "root", 2, 1},
        {u"", u"", u"", "root", 2, 1},
        {u"no way \U0001F600", u"no way \U0001F600", u"", "root", 2, 1},
    };
    for (const auto& row : rows) {
        const auto locale = NSLocale::localeWithLocaleIdentifier(NSString::stringWithCharacters(row.identifier));
        EXPECT_EQ(*locale->localeIdentifier(), row.canonical);
        EXPECT_EQ(*locale->languageCode(), row.language);
        EXPECT_EQ(locale->dataName(), row.data);
        EXPECT_EQ(locale->firstWeekday(), row.firstWeekday) << row.data;
        EXPECT_EQ(locale->minimumDaysInFirstWeek(), row.minimumDays) << row.data;
    }
    const auto serbian = NSLocale::localeWithLocaleIdentifier(u"sr_RS@latin"_ns);
    EXPECT_EQ(*serbian->scriptCode().ref(), u"Latn");
    EXPECT_EQ(*serbian->countryCode().ref(), u"RS");
    EXPECT_FALSE(NSLocale::localeWithLocaleIdentifier(u"de"_ns)->countryCode());
}

TEST(NSLocale, OfTheUserComesFromTheEnvironmentThenFromTheLanguages) {
    const char* const names[] = {"LC_ALL", "LC_TIME", "LANG"};
    std::vector<std::optional<std::string>> before;
    for (const char* name : names)
        before.push_back(std::getenv(name) ? std::optional<std::string>(std::getenv(name)) : std::nullopt);
    const auto set = [](const char* name, const char* value) { value ? setenv(name, value, 1) : unsetenv(name); };
    const struct {
        const char* values[3];
        std::u16string_view locale;
    } rows[] = {
        {{nullptr, nullptr, "de_DE.UTF-8"}, u"de_DE"}, {{"", "sr_RS@latin", "de_DE.UTF-8"}, u"sr_Latn_RS"},
        {{"fr_FR", "it_IT", "de_DE"}, u"fr_FR"},       {{"C.UTF-8", nullptr, "de_DE"}, u"pt_BR"},
        {{nullptr, nullptr, nullptr}, u"pt_BR"},
    };
    for (const auto& row : rows) {
        for (int i = 0; i < 3; ++i)
            set(names[i], row.values[i]);
        const ScopedPreferredLanguages languages({"pt-BR", "pt"});
        EXPECT_EQ(*NSLocale::currentLocale()->localeIdentifier(), row.locale);
    }
    const ScopedPreferredLanguages none({});
    EXPECT_EQ(*NSLocale::currentLocale()->localeIdentifier(), u"en_US_POSIX");
    for (std::size_t i = 0; i < 3; ++i)
        set(names[i], before[i] ? before[i]->c_str() : nullptr);
}
