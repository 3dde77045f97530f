#include <mail/MailDate.h>

#include <algorithm>
#include <chrono>

#include <mail/HeaderText.h>

namespace digest {

namespace {

constexpr std::string_view weekdays[] = {"mon", "tue", "wed", "thu", "fri", "sat", "sun"};

struct NamedZone {
    std::string_view name;
    int hoursEast;
};
constexpr NamedZone namedZones[] = {{"ut", 0},   {"utc", 0},  {"gmt", 0},  {"z", 0},    {"est", -5}, {"edt", -4},
                                    {"cst", -6}, {"cdt", -5}, {"mst", -7}, {"mdt", -6}, {"pst", -8}, {"pdt", -7}};

struct Number {
    int value = 0;
    std::size_t digits = 0;
};

/// Takes the parts of a date in the order in which they come; each may come once.
class DateReader {
public:
    explicit DateReader(std::string_view text) : rest_(text) {}

    std::optional<MailDate> read() {
        while (skipCommentsAndSpace(rest_)) {
            if (!part())
                return std::nullopt;
        }
        return result();
    }

private:
    bool part() {
        const char c = rest_.front();
        if (isDigit(c))
            return number();
        if (isLetter(c))
            return word();
        rest_.remove_prefix(1);
        if ((c == '+' || c == '-') && time_ && !rest_.empty() && isDigit(rest_.front()))
            return offset(c == '-' ? -1 : 1);
        return c == ',' || c == '.' || c == '-';
    }

    bool number() {
        const auto value = takeNumber();
        if (!value)
            return false;
        if (rest_.starts_with(':'))
            return time(*value);
        if (!day_ && value->digits <= 2) {
            day_ = value->value;
            return true;
        }
        if (year_ || value->digits < 2)
            return false;
        year_ = value->value + (value->digits == 2 ? (value->value < 50 ? 2000 : 1900) : value->digits == 3 ? 1900 : 0);
        return true;
    }

    bool time(Number hour) {
        const auto minute = takeNumberAfter(':');
        const auto second = rest_.starts_with(':') ? takeNumberAfter(':') : Number{};
        if (time_ || !minute || !second || hour.value > 23 || minute->value > 59 || second->value > 60)
            return false;
        if (rest_.starts_with('.'))  // parts of a second
            takeNumberAfter('.');
        time_ = hour.value * 3600 + minute->value * 60 + second->value;
        return true;
    }

    bool word() {
        std::size_t length = 0;
        while (length < rest_.size() && isLetter(rest_[length]))
            ++length;
        const std::string_view name = rest_.substr(0, length);
        rest_.remove_prefix(length);
        if (const unsigned month = monthOf(name); month > 0 && !month_) {
            month_ = month;
            return true;
        }
        if (std::ranges::any_of(weekdays, [name](auto weekday) { return startsWithIgnoringCase(name, weekday); }))
            return true;
        if (!time_)
            return false;
        for (const auto& zone : namedZones) {
            if (!minutesEast_ && equalIgnoringCase(name, zone.name))
                minutesEast_ = zone.hoursEast * 60;
        }
        return true;
    }

    // "+0200"; "+02:00" and "+2" happen too. "-0000" says that the zone is not known.
    bool offset(int sign) {
        const auto value = takeNumber();
        if (!value || value->digits > 4)
            return false;
        int hours = value->value, minutes = 0;
        if (rest_.starts_with(':')) {
            const auto after = takeNumberAfter(':');
            if (!after)
                return false;
            minutes = after->value;
        } else if (value->digits > 2) {
            hours = value->value / 100;
            minutes = value->value % 100;
        }
        if (minutes > 59)
            return false;
        if (sign > 0 || hours != 0 || minutes != 0)
            minutesEast_ = sign * (hours * 60 + minutes);
        return true;
    }

    std::optional<MailDate> result() const {
        using namespace std::chrono;
        if (!day_ || !month_ || !year_ || !time_ || *year_ < 1900 || *year_ > 9999)
            return std::nullopt;
        const year_month_day date{year(*year_), std::chrono::month(*month_),
                                  std::chrono::day(static_cast<unsigned>(*day_))};
        if (!date.ok())
            return std::nullopt;
        const std::int64_t days = sys_days(date).time_since_epoch().count();
        const int east = minutesEast_.value_or(0);
        return MailDate{days * 86400 + *time_ - east * 60, east, minutesEast_.has_value()};
    }

    // And the white space behind it: a time may be written "12 : 00".
    std::optional<Number> takeNumber() {
        Number number;
        while (number.digits < rest_.size() && isDigit(rest_[number.digits])) {
            if (number.digits == 9)
                return std::nullopt;
            number.value = number.value * 10 + (rest_[number.digits++] - '0');
        }
        rest_.remove_prefix(number.digits);
        skipCommentsAndSpace(rest_);
        return number.digits > 0 ? std::optional(number) : std::nullopt;
    }

    std::optional<Number> takeNumberAfter(char separator) {
        if (!rest_.starts_with(separator))
            return std::nullopt;
        rest_.remove_prefix(1);
        skipCommentsAndSpace(rest_);
        return takeNumber();
    }

    std::string_view rest_;
    std::optional<int> day_, year_, time_, minutesEast_;
    std::optional<unsigned> month_;
};

}  // namespace

unsigned monthOf(std::string_view word) noexcept {
    static constexpr std::string_view months[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                                  "jul", "aug", "sep", "oct", "nov", "dec"};
    const auto month = std::ranges::find_if(months, [word](auto name) { return startsWithIgnoringCase(word, name); });
    return month == std::end(months) ? 0 : static_cast<unsigned>(month - months) + 1;
}

std::optional<MailDate> parseMailDate(std::string_view text) { return DateReader(text).read(); }

}  // namespace digest
