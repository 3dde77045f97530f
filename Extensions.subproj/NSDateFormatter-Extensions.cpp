#include <ToviFoundationKit/Extensions/NSDateFormatter-Extensions.h>

#include <array>

#include <ToviFoundationKit/Extensions/DateFormatterSlots_p.h>
#include <ToviFoundationKit/Foundation/NSLocale.h>
#include <ToviFoundationKit/Foundation/NSTimeZone.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

using Slot = detail::DateFormatterSlot;

NSDateFormatter*& detail::formatterIn(Slot slot) noexcept {
    static constinit std::array<NSDateFormatter*, std::size_t(Slot::count)> slots{};
    return slots[std::size_t(slot)];
}

inline namespace Extensions {

namespace {

Ref<NSDateFormatter> withPattern(Slot slot, std::u16string_view pattern) {
    return detail::formatterIn(slot, [pattern] {
        Ref<NSDateFormatter> formatter = NSDateFormatter::init();
        formatter->setDateFormat(NSString::stringWithCharacters(pattern));
        return formatter;
    });
}

Ref<NSDateFormatter> withStyles(Slot slot, NSDateFormatterStyle time, NSDateFormatterStyle date) {
    return detail::formatterIn(slot, [time, date] {
        Ref<NSDateFormatter> formatter = NSDateFormatter::init();
        formatter->setDateStyle(date);
        formatter->setTimeStyle(time);
        return formatter;
    });
}

constexpr NSDateFormatterStyle none = NSDateFormatterNoStyle, brief = NSDateFormatterShortStyle,
                               medium = NSDateFormatterMediumStyle, full = NSDateFormatterFullStyle,
                               extended = NSDateFormatterLongStyle;

}  // namespace

Ref<NSDateFormatter> yyyy_MM_ddDateFormatter() { return withPattern(Slot::yyyy_MM_dd, u"yyyy-MM-dd"); }
Ref<NSDateFormatter> yyyyMMddHHmmDateFormatter() { return withPattern(Slot::yyyyMMddHHmm, u"yyyyMMddHHmm"); }
Ref<NSDateFormatter> HHmmDateFormatter() { return withPattern(Slot::HHmm, u"HH:mm"); }
Ref<NSDateFormatter> yyyyMMddDateFormatter() { return withPattern(Slot::yyyyMMdd, u"yyyyMMdd"); }
Ref<NSDateFormatter> yyyyMMDateFormatter() { return withPattern(Slot::yyyyMM, u"yyyyMM"); }
Ref<NSDateFormatter> yyyyDateFormatter() { return withPattern(Slot::yyyy, u"yyyy"); }

Ref<NSDateFormatter> emailDateFormatter() {
    return detail::formatterIn(Slot::email, [] {
        Ref<NSDateFormatter> formatter = NSDateFormatter::init();
        formatter->setDateFormat(u"EEE, d MMM yyyy HH:mm:ss Z"_ns);
        formatter->setLocale(NSLocale::localeWithLocaleIdentifier(u"en_US"_ns));
        return formatter;
    });
}

Ref<NSDateFormatter> dayNumberDateFormatter() { return withPattern(Slot::dd, u"dd"); }
Ref<NSDateFormatter> fullDayDateFormatter() { return withPattern(Slot::dddd, u"EEEE"); }

Ref<NSDateFormatter> fullMonthFullYearDateFormatter() { return withPattern(Slot::fullMonthFullYear, u"MMMM yyyy"); }
Ref<NSDateFormatter> shortMonthFullYearDateFormatter() { return withPattern(Slot::shortMonthFullYear, u"MMM yyyy"); }
Ref<NSDateFormatter> fullMonthDateFormatter() { return withPattern(Slot::fullMonth, u"MMMM"); }
Ref<NSDateFormatter> fullYearDateFormatter() { return yyyyDateFormatter(); }

Ref<NSDateFormatter> noTimeAndShortDateFormatter() { return withStyles(Slot::noTimeAndShort, none, brief); }
Ref<NSDateFormatter> noTimeAndMediumDateFormatter() { return withStyles(Slot::noTimeAndMedium, none, medium); }
Ref<NSDateFormatter> noTimeAndLongDateFormatter() { return withStyles(Slot::noTimeAndLong, none, extended); }
Ref<NSDateFormatter> noTimeAndVeryLongDateFormatter() { return withStyles(Slot::noTimeAndVeryLong, none, full); }
Ref<NSDateFormatter> shortTimeAndShortDateFormatter() { return withStyles(Slot::shortTimeAndShort, brief, brief); }
Ref<NSDateFormatter> shortTimeAndMediumDateFormatter() { return withStyles(Slot::shortTimeAndMedium, brief, medium); }
Ref<NSDateFormatter> shortTimeAndLongDateFormatter() { return withStyles(Slot::shortTimeAndLong, brief, extended); }
Ref<NSDateFormatter> shortTimeAndNoDateFormatter() { return withStyles(Slot::shortTimeAndNo, brief, none); }

Ref<NSDateFormatter> shortTimeTZAndNoDateFormatter() {
    return detail::formatterIn(Slot::shortTimeTZAndNo, [] {
        Ref<NSDateFormatter> formatter = NSDateFormatter::init();
        formatter->setDateStyle(none);
        formatter->setTimeStyle(brief);
        formatter->setDateFormat(formatter->dateFormat()->stringByAppendingString(u"(zzz)"_ns));
        return formatter;
    });
}

Ref<NSDateFormatter> longTimeAndNoDateFormatter() { return withStyles(Slot::longTimeAndNo, extended, none); }
Ref<NSDateFormatter> longTimeAndShortDateFormatter() { return withStyles(Slot::longTimeAndShort, extended, brief); }

RefPtr<NSDateFormatter> longTimeAndMediumDateFormatter() {
    withStyles(Slot::longTimeAndMedium, extended, medium);
    return detail::formatterIn(Slot::longTimeAndShort);
}

Ref<NSDateFormatter> longTimeAndLongDateFormatter() { return withStyles(Slot::longTimeAndLong, extended, extended); }

void resetDateFormatterDefaultTimeZone() {
    constexpr Slot followers[] = {Slot::longTimeAndLong,
                                  Slot::longTimeAndShort,
                                  Slot::longTimeAndNo,
                                  Slot::shortTimeAndLong,
                                  Slot::shortTimeAndNo,
                                  Slot::shortTimeAndShort,
                                  Slot::email,
                                  Slot::shortMonthFullYear,
                                  Slot::fullMonthFullYear,
                                  Slot::yyyyMMddHHmm,
                                  Slot::HHmm,
                                  Slot::yyyyMMdd,
                                  Slot::yyyyMM,
                                  Slot::yyyy,
                                  Slot::yyyy_MM_dd,
                                  Slot::noTimeAndShort,
                                  Slot::noTimeAndLong,
                                  Slot::noTimeAndVeryLong,
                                  Slot::noTimeAndRelativeShort,
                                  Slot::noTimeAndRelativeLong,
                                  Slot::shortTimeAndRelativeShort,
                                  Slot::longTimeAndRelativeShort,
                                  Slot::longTimeAndRelativeLong};
    for (const Slot slot : followers)
        if (NSDateFormatter* const formatter = detail::formatterIn(slot))
            formatter->setTimeZone(NSTimeZone::defaultTimeZone());
}

namespace {

const Additions<NSDateFormatter> additions{
    classLevel<&yyyy_MM_ddDateFormatter>("yyyy_MM_ddDateFormatter"),
    classLevel<&yyyyMMddHHmmDateFormatter>("yyyyMMddHHmmDateFormatter"),
    classLevel<&HHmmDateFormatter>("HHmmDateFormatter"),
    classLevel<&yyyyMMddDateFormatter>("yyyyMMddDateFormatter"),
    classLevel<&yyyyMMDateFormatter>("yyyyMMDateFormatter"),
    classLevel<&yyyyDateFormatter>("yyyyDateFormatter"),
    classLevel<&emailDateFormatter>("emailDateFormatter"),
    classLevel<&dayNumberDateFormatter>("dayNumberDateFormatter"),
    classLevel<&fullDayDateFormatter>("fullDayDateFormatter"),
    classLevel<&fullMonthFullYearDateFormatter>("fullMonthFullYearDateFormatter"),
    classLevel<&shortMonthFullYearDateFormatter>("shortMonthFullYearDateFormatter"),
    classLevel<&fullMonthDateFormatter>("fullMonthDateFormatter"),
    classLevel<&fullYearDateFormatter>("fullYearDateFormatter"),
    classLevel<&noTimeAndShortDateFormatter>("noTimeAndShortDateFormatter"),
    classLevel<&noTimeAndMediumDateFormatter>("noTimeAndMediumDateFormatter"),
    classLevel<&noTimeAndLongDateFormatter>("noTimeAndLongDateFormatter"),
    classLevel<&noTimeAndVeryLongDateFormatter>("noTimeAndVeryLongDateFormatter"),
    classLevel<&shortTimeAndShortDateFormatter>("shortTimeAndShortDateFormatter"),
    classLevel<&shortTimeAndMediumDateFormatter>("shortTimeAndMediumDateFormatter"),
    classLevel<&shortTimeAndLongDateFormatter>("shortTimeAndLongDateFormatter"),
    classLevel<&shortTimeAndNoDateFormatter>("shortTimeAndNoDateFormatter"),
    classLevel<&shortTimeTZAndNoDateFormatter>("shortTimeTZAndNoDateFormatter"),
    classLevel<&longTimeAndNoDateFormatter>("longTimeAndNoDateFormatter"),
    classLevel<&longTimeAndShortDateFormatter>("longTimeAndShortDateFormatter"),
    classLevel<&longTimeAndMediumDateFormatter>("longTimeAndMediumDateFormatter"),
    classLevel<&longTimeAndLongDateFormatter>("longTimeAndLongDateFormatter"),
    classLevel<&resetDateFormatterDefaultTimeZone>("resetDateFormatterDefaultTimeZone"),
};

}  // namespace

}  // namespace Extensions
}  // namespace tovi
