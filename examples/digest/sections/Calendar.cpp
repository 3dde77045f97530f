#include <algorithm>
#include <unordered_map>
#include <vector>

#include <sections/Sections.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

constexpr NSUInteger monthsShown = 3;
constexpr int weekColumns = 4;
constexpr int widestCell = 8;  // "15 (100)"

constexpr auto yearMonthDay = NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay;

/// A day of the calendar, as a number that grows with it.
NSInteger dayNumber(const NSDateComponents& day) { return (day.year() * 12 + day.month() - 1) * 31 + day.day() - 1; }
NSInteger monthNumber(NSInteger dayNumber) { return dayNumber / 31; }

/// How many messages came on which day.
class DayCounts {
public:
    explicit DayCounts(const NSArray& messages) {
        for (const Message& message : messages.each<Message>()) {
            const auto date = message.date();
            if (!date)
                continue;
            const NSInteger day = dayNumber(isogregorian()->components_fromDate(yearMonthDay, *date));
            ++counts_[day];
            if (months_.empty() || months_.back() != monthNumber(day))
                months_.push_back(monthNumber(day));
        }
    }

    /// The numbers of the months that have messages, for messages that came by date.
    const std::vector<NSInteger>& months() const { return months_; }

    NSUInteger on(NSInteger day) const {
        const auto found = counts_.find(day);
        return found == counts_.end() ? 0 : found->second;
    }

private:
    std::unordered_map<NSInteger, NSUInteger> counts_;
    std::vector<NSInteger> months_;
};

Ref<NSDate> firstDayOf(NSInteger month) {
    const auto first = NSDateComponents::init();
    first->setYear(month / 12);
    first->setMonth(month % 12 + 1);
    return isogregorian()->dateFromComponents(first).ref();
}

/// The Monday of the week that the date is in, at 0:00.
Ref<NSDate> mondayOf(const NSDate& date) {
    const NSInteger weekday = isogregorian()->components_fromDate(NSCalendarUnitWeekday, date)->weekday();
    return dateByAddingYears_months_days_hours_minutes_seconds(date, 0, 0, -((weekday + 5) % 7), 0, 0, 0);
}

Ref<NSString> formatted(const NSDate& date, const NSString& pattern) {
    const auto formatter = NSDateFormatter::init();
    formatter->setDateFormat(pattern);
    return formatter->stringFromDate(date).ref();
}

/// Prints the months of a report: a row a week.
class MonthPrinter {
public:
    MonthPrinter(Page& page, const DayCounts& counts)
        : page_(page), counts_(counts), cellColumns_((page.columns() - 2 - weekColumns) / 7 - 2) {}

    void print(NSInteger month) const {
        const auto first = firstDayOf(month);
        page_.row({{formatted(first, u"LLLL yyyy"_ns)->view()}});
        auto monday = mondayOf(first);
        printRow(u"", monday, [&](const NSDate& day) { return weekday(day); });
        do {
            const auto week = NSString::stringWithFormat(u"%ld", ISOWeekOfYear(monday) % 100);
            printRow(week->view(), monday, [&](const NSDate& day) { return dayOfMonth(day, month); });
            monday = daysLater(monday, 7);
        } while (monthNumber(numberOf(monday)) == month);
    }

private:
    static Ref<NSDate> daysLater(const NSDate& date, NSInteger days) {
        return dateByAddingYears_months_days_hours_minutes_seconds(date, 0, 0, days, 0, 0, 0);
    }

    static NSInteger numberOf(const NSDate& date) {
        return dayNumber(isogregorian()->components_fromDate(yearMonthDay, date));
    }

    struct DayText {
        Ref<NSString> text;
        std::u16string_view lead = {};
    };

    DayText weekday(const NSDate& date) const { return {formatted(date, hasRoomForDays() ? u"ccc"_ns : u"ccccc"_ns)}; }

    // The day and behind it the messages; where there is no room for both, the messages alone.
    DayText dayOfMonth(const NSDate& date, NSInteger month) const {
        const NSInteger number = numberOf(date), day = number % 31 + 1;
        if (monthNumber(number) != month)
            return {u""_ns};
        const NSUInteger count = counts_.on(number);
        if (!hasRoomForDays())
            return {count > 0 ? NSString::stringWithFormat(u"%lu", count) : u"."_ns};
        return {NSString::stringWithFormat(count > 0 ? u"%ld (%lu)" : u"%ld", day, count), day < 10 ? u" " : u""};
    }

    bool hasRoomForDays() const { return cellColumns_ >= widestCell - 1; }

    template <class Text> void printRow(std::u16string_view week, const NSDate& monday, Text textOf) const {
        std::vector<DayText> days;
        for (NSInteger i = 0; i < 7; ++i)
            days.push_back(textOf(*daysLater(monday, i)));
        const auto cell = [&](std::size_t i) {
            return Cell{days[i].text->view(), std::min(cellColumns_, widestCell), Align::left, days[i].lead};
        };
        page_.row({{week, weekColumns, Align::right}, cell(0), cell(1), cell(2), cell(3), cell(4), cell(5), cell(6)});
    }

    Page& page_;
    const DayCounts& counts_;
    const int cellColumns_;
};

}  // namespace

void printCalendar(const Digest& digest, Page& page) {
    const DayCounts counts(digest.messages());
    const NSUInteger count = counts.months().size();
    if (count == 0)
        return;
    page.heading(u"Calendar", u"messages of a day, weeks as ISO 8601 numbers them");
    const NSUInteger shown = std::min(count, monthsShown);
    const MonthPrinter printer(page, counts);
    for (NSUInteger i = 0; i < shown; ++i)
        printer.print(counts.months()[count - 1 - i]);
    if (count > shown)
        page.aside(NSString::stringWithFormat(u"and %@ before", counted(count - shown, u"month"))->view(), 2);
}

}  // namespace digest
