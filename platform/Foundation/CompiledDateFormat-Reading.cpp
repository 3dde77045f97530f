#include <algorithm>

#include <ToviFoundationKit/Foundation/CompiledDateFormat_p.h>

namespace tovi::detail {

// --- Numbers of fixed width ------------------------------------------------------------------------------------------

namespace {

/// How often the letter of a field stands in a pattern of plain numbers; 0 for other letters.
int plainCount(char letter) noexcept {
    switch (letter) {
        case 'y':
            return 4;
        case 'S':
            return 3;
        case 'M':
        case 'd':
        case 'H':
        case 'm':
        case 's':
            return 2;
        default:
            return 0;
    }
}

constexpr unsigned digitOf(char16_t unit) noexcept { return unit - u'0'; }

/// The number at the beginning of the text; -1 when there are not so many digits.
int numberAt(const char16_t* text, int digits) noexcept {
    int number = 0;
    for (int i = 0; i < digits; ++i) {
        if (digitOf(text[i]) > 9)
            return -1;
        number = number * 10 + static_cast<int>(digitOf(text[i]));
    }
    return number;
}

struct PlainTime : CivilTime {
    int millisecond;

    int& field(char letter) noexcept {
        switch (letter) {
            case 'M':
                return month;
            case 'd':
                return day;
            case 'H':
                return hour;
            case 'm':
                return minute;
            case 's':
                return second;
            default:
                return millisecond;
        }
    }
    bool isOnTheClock() const noexcept {
        return year > 1582 && month >= 1 && month <= 12 && day >= 1 && day <= lengthOfMonth(year, month) && hour < 24 &&
               minute < 60 && second < 60;
    }
};

}  // namespace

/// 0 when the pattern has anything else than such numbers, one at least and each field once, and texts without digits.
std::size_t CompiledDateFormat::widthOfPlainNumbers() const {
    if (spoilt_ || byIcu_ || symbols_->zero != u'0' || steps_.size() > 16)
        return 0;
    std::size_t width = 0;
    std::string letters;
    for (const Step& step : steps_) {
        if (step.letter && (step.count != plainCount(step.letter) || letters.find(step.letter) != letters.npos))
            return 0;
        letters += step.letter ? step.letter : ' ';
        width += static_cast<std::size_t>(step.count);
    }
    const bool unclear = std::ranges::any_of(texts_, [](char16_t unit) { return digitOf(unit) <= 9; });
    return unclear || letters.find_first_not_of(' ') == letters.npos ? 0 : width;
}

// Only what is written as it would be printed, and is a time that the clock shows: ICU decides on the rest.
std::optional<NSTimeInterval> CompiledDateFormat::readPlainNumbers(std::u16string_view text) const {
    if (!plainWidth_ || text.size() != plainWidth_)
        return std::nullopt;
    PlainTime time{{{2000, 1, 1}, 0, 0, 0}, 0};
    const char16_t* unit = text.data();
    for (const Step& step : steps_) {
        const auto count = static_cast<std::size_t>(step.count);
        if (!step.letter && !std::equal(unit, unit + count, texts_.data() + step.start))
            return std::nullopt;
        if (step.letter) {
            const int number = numberAt(unit, step.count);
            if (number < 0)
                return std::nullopt;
            if (step.letter == 'y')
                time.year = number;
            else
                time.field(step.letter) = number;
        }
        unit += count;
    }
    if (!time.isOnTheClock())
        return std::nullopt;
    const NSInteger clock = daysFromCivil(time.year, time.month, time.day) * secondsADay + time.hour * 3600 +
                            time.minute * 60 + time.second;
    const NSInteger second = settings_.rules->fromClock(clock);
    if (second + settings_.rules->stretchAt(second).offset != clock)
        return std::nullopt;
    return sinceReference(second) + time.millisecond / 1000.0;
}

// --- Everything else -------------------------------------------------------------------------------------------------

std::optional<NSTimeInterval> CompiledDateFormat::read(std::u16string_view text) {
    if (spoilt_ || pattern_.empty())
        return std::nullopt;
    if (const auto plain = readPlainNumbers(text))
        return plain;
    const auto midnightOf = [this](NSInteger year) {
        return static_cast<double>(settings_.rules->fromClock(daysFromCivil(year, 1, 1) * secondsADay)) * 1000;
    };
    const bool fractions = std::ranges::find(steps_, 'S', &Step::letter) != steps_.end();
    const auto milliseconds = whole().read(text, {settings_.lenient, fractions, midnightOf(2000), midnightOf(1950)});
    if (!milliseconds)
        return std::nullopt;
    return *milliseconds / 1000 - 978307200.0;
}

}  // namespace tovi::detail
