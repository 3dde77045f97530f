#include <ToviFoundationKit/Foundation/CompiledDateFormat_p.h>

#include <algorithm>
#include <limits>

namespace tovi::detail {

// --- Working a pattern out -------------------------------------------------------------------------------------------

CompiledDateFormat::CompiledDateFormat(DateFormatSettings settings)
    : settings_(std::move(settings)), symbols_(DateSymbols::ofLocale(settings_.locale)) {
    byIcu_ = !symbols_->zero || !symbols_->ownCalendarIsGregorian;
    if (settings_.pattern) {
        pattern_ = *settings_.pattern;
    } else if (settings_.styles.date || settings_.styles.time) {
        pattern_ = whole().pattern();
        byIcu_ |= whole().hasOwnNumbers();
    }
    if (!settings_.weeks)
        settings_.weeks = symbols_->weeks;
    compile();
}

void CompiledDateFormat::addText(char16_t unit) {
    if (steps_.empty() || steps_.back().letter)
        steps_.push_back({0, 0, static_cast<std::uint32_t>(texts_.size())});
    ++steps_.back().count;
    texts_ += unit;
}

bool CompiledDateFormat::addField(char16_t letter, std::size_t count) {
    constexpr std::u16string_view fields = u"GyYuUrQqMLwWdDFgEecabBhHKkmsSAzZOvVXx";
    if (letter == u'l')
        return true;
    if (fields.find(letter) == fields.npos)
        return false;
    // What these print depends on the rest of the pattern.
    byIcu_ |= letter == u'b' || letter == u'B';
    steps_.push_back({static_cast<char>(letter), static_cast<int>(count), 0});
    return true;
}

void CompiledDateFormat::compile() {
    const auto isLetter = [](char16_t unit) { return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z'; };
    const std::u16string_view pattern = pattern_;
    spoilt_ = pattern.size() >= std::numeric_limits<int>::max();
    bool quoted = false;
    for (std::size_t i = 0; i < pattern.size() && !spoilt_;) {
        const char16_t unit = pattern[i];
        if (unit == u'\'') {
            const bool twice = i + 1 < pattern.size() && pattern[i + 1] == u'\'';
            if (twice)
                addText(u'\'');
            else
                quoted = !quoted;
            i += 1 + twice;
        } else if (!quoted && isLetter(unit)) {
            const std::size_t end = std::min(pattern.find_first_not_of(unit, i), pattern.size());
            spoilt_ = !addField(unit, end - i);
            i = end;
        } else {
            addText(unit);
            ++i;
        }
    }
    plainWidth_ = widthOfPlainNumbers();
}

IcuDateFormat& CompiledDateFormat::whole() {
    if (!whole_) {
        whole_ = settings_.pattern
                     ? std::make_unique<IcuDateFormat>(settings_.locale, settings_.zone, *settings_.pattern)
                     : std::make_unique<IcuDateFormat>(settings_.locale, settings_.zone, settings_.styles);
        if (settings_.weeks)
            whole_->setWeeks(*settings_.weeks);
    }
    return *whole_;
}

// --- Printing --------------------------------------------------------------------------------------------------------

struct CompiledDateFormat::Fields {
    CivilTime civil;
    int millisecond;
    int weekday;
    NSInteger days;  ///< of the clock
    NSInteger second;
    Stretch stretch;
};

namespace {

constexpr NSInteger powerOf10[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};

/// At least `width` digits, which is from 1 to 9.
void appendNumber(StringBuilder& out, char16_t zero, NSInteger value, int width) {
    if (width == 2 && value < 100) {
        char16_t* const units = out.extend(2);
        units[0] = static_cast<char16_t>(zero + value / 10);
        units[1] = static_cast<char16_t>(zero + value % 10);
        return;
    }
    int digits = width;
    for (NSInteger limit = powerOf10[digits]; value >= limit; limit *= 10)
        ++digits;
    char16_t* unit = out.extend(static_cast<NSUInteger>(digits)) + digits;
    for (; digits; --digits, value /= 10)
        *--unit = static_cast<char16_t>(zero + value % 10);
}

void appendFraction(StringBuilder& out, char16_t zero, int millisecond, int count) {
    const int divisor = count == 1 ? 100 : count == 2 ? 10 : 1;
    appendNumber(out, zero, millisecond / divisor, std::min(count, 3));
    if (count > 3)
        out.append(static_cast<NSUInteger>(count - 3), zero);
}

DateSymbols::Width widthOf(int count) noexcept {
    return count == 4   ? DateSymbols::Wide
           : count == 5 ? DateSymbols::Narrow
           : count == 6 ? DateSymbols::Shorter
                        : DateSymbols::Abbreviated;
}

/// The distance from GMT as ISO 8601 has it, always in ASCII.
struct OffsetForm {
    bool zulu;      ///< "Z" where there is none
    bool hours;     ///< minutes only where there are some
    bool seconds;   ///< where there are some
    bool extended;  ///< with colons
};

void appendOffset(StringBuilder& out, int offset, OffsetForm form) {
    const int distance = std::abs(offset);
    const int seconds = form.seconds ? distance % 60 : 0, minutes = distance / 60 % 60, hours = distance / 3600;
    if (form.zulu && !(hours || minutes || seconds)) {
        out.append(u'Z');
        return;
    }
    const bool west = offset < 0 && (hours || minutes || seconds);
    out.append(west ? u'-' : u'+');
    appendNumber(out, u'0', hours, 2);
    for (const auto& [value, wanted] : {std::pair(minutes, !form.hours || minutes || seconds), {seconds, seconds != 0}})
        if (wanted) {
            if (form.extended)
                out.append(u':');
            appendNumber(out, u'0', value, 2);
        }
}

/// Of the patterns x, xx ... xxxxx and their capitals.
OffsetForm offsetForm(char letter, int count) noexcept {
    return {letter == 'X', count == 1, count >= 4, count == 3 || count == 5};
}

}  // namespace

bool CompiledDateFormat::append(StringBuilder& out, const Moment& moment) {
    if (spoilt_)
        return false;
    // A decimal fraction is rarely exact in binary: a little below a millisecond counts as that.
    const int millisecond = std::min(static_cast<int>(moment.fraction * 1000 + 0.05), 999);
    if (byIcu_) {
        if (!steps_.empty())
            whole().append(out, static_cast<double>(moment.second) * 1000 + millisecond);
        return true;
    }
    const Stretch stretch = settings_.rules->stretchAt(moment.second);
    const NSInteger clock = moment.second + stretch.offset;
    const NSInteger days = floorDivide(clock, secondsADay);
    const Fields fields{civilFromSeconds(clock), millisecond, weekdayOf(days), days, moment.second, stretch};
    for (const Step& step : steps_)
        if (step.letter)
            print(out, step, fields);
        else if (step.count == 1)
            out.append(texts_[step.start]);
        else
            out.append(std::u16string_view(texts_).substr(step.start, static_cast<std::size_t>(step.count)));
    return true;
}

void CompiledDateFormat::print(StringBuilder& out, const Step& step, const Fields& fields) {
    const DateSymbols& symbols = *symbols_;
    const CivilTime& civil = fields.civil;
    const WeekRule weeks = *settings_.weeks;
    const int count = step.count;
    const auto number = [&](NSInteger value) { appendNumber(out, symbols.zero, value, count); };
    const auto name = [&](const DateSymbols::Names& names, int index) {
        out.append(names[static_cast<std::size_t>(index)]);
    };
    if (count > 9)
        return printByIcu(out, step, fields);
    switch (step.letter) {
        case 'y':
            return printYear(out, step, civil.year > 0 ? civil.year : 1 - civil.year, fields);
        case 'u':
            return civil.year >= 0 ? number(civil.year) : printByIcu(out, step, fields);
        case 'Y':
            return printYear(out, step, weekOfYear(fields.days, civil.year, weeks).year, fields);
        case 'M':
        case 'L':
            return count >= 3 && count <= 5 ? name(symbols.months[step.letter == 'L'][widthOf(count)], civil.month - 1)
                                            : number(civil.month);
        case 'd':
            return number(civil.day);
        case 'H':
            return number(civil.hour);
        case 'k':
            return number(civil.hour ? civil.hour : 24);
        case 'h':
            return number(civil.hour % 12 ? civil.hour % 12 : 12);
        case 'K':
            return number(civil.hour % 12);
        case 'm':
            return number(civil.minute);
        case 's':
            return number(civil.second);
        case 'S':
            return appendFraction(out, symbols.zero, fields.millisecond, count);
        case 'a':
            return count < 5 ? name(symbols.halvesOfDay, civil.hour / 12) : printByIcu(out, step, fields);
        case 'E':
            return name(symbols.weekdays[0][widthOf(count)], fields.weekday - 1);
        case 'e':
        case 'c':
            if (count >= 3)
                return name(symbols.weekdays[step.letter == 'c'][widthOf(count)], fields.weekday - 1);
            return appendNumber(out, symbols.zero, (fields.weekday - weeks.firstWeekday + 7) % 7 + 1,
                                step.letter == 'c' ? 1 : count);
        case 'G':
            return count < 5 ? name(symbols.eras[count == 4], civil.year > 0) : printByIcu(out, step, fields);
        case 'w':
            return number(weekOfYear(fields.days, civil.year, weeks).week);
        case 'W':
            return number(weekOfMonth(fields.days, civil.day, weeks));
        case 'D':
            return number(dayOfYear(fields.days, civil.year));
        case 'F':
            return number((civil.day - 1) / 7 + 1);
        case 'X':
        case 'x':
            return count <= 5 ? appendOffset(out, fields.stretch.offset, offsetForm(step.letter, count))
                              : printByIcu(out, step, fields);
        case 'Z':
            return count <= 3   ? appendOffset(out, fields.stretch.offset, {false, false, true, false})
                   : count == 5 ? appendOffset(out, fields.stretch.offset, {true, false, true, true})
                                : printZone(out, step, fields);
        case 'z':
        case 'O':
            return printZone(out, step, fields);
        default:
            return printByIcu(out, step, fields);
    }
}

void CompiledDateFormat::printYear(StringBuilder& out, const Step& step, NSInteger year, const Fields& fields) {
    if (year < 0)
        return printByIcu(out, step, fields);
    appendNumber(out, symbols_->zero, step.count == 2 ? year % 100 : year, step.count);
}

CompiledDateFormat::IcuField& CompiledDateFormat::icuField(const Step& step) {
    icuFields_.resize(steps_.size());
    IcuField& field = icuFields_[static_cast<std::size_t>(&step - steps_.data())];
    if (!field.format) {
        const std::u16string pattern(static_cast<std::size_t>(step.count), static_cast<char16_t>(step.letter));
        field.format = std::make_unique<IcuDateFormat>(settings_.locale, settings_.zone, pattern);
        field.format->setWeeks(*settings_.weeks);
    }
    return field;
}

void CompiledDateFormat::printByIcu(StringBuilder& out, const Step& step, const Fields& fields) {
    icuField(step).format->append(out, static_cast<double>(fields.second) * 1000 + fields.millisecond);
}

// The name of a zone mostly stays the same while its clock does. It is kept where it is at both ends what it is now.
void CompiledDateFormat::printZone(StringBuilder& out, const Step& step, const Fields& fields) {
    constexpr NSInteger earliest = daysFromCivil(1900, 1, 1) * secondsADay;
    constexpr NSInteger latest = daysFromCivil(2100, 1, 1) * secondsADay;
    constexpr std::size_t most = 256;
    const auto [begin, end, offset, summer] = fields.stretch;
    IcuField& field = icuField(step);
    if (const auto found = field.answers.find(begin); found != field.answers.end()) {
        out.append(found->second);
        return;
    }
    const auto textAt = [&](NSInteger second) {
        StringBuilder text;
        field.format->append(text, static_cast<double>(second) * 1000);
        return std::u16string(text.view());
    };
    const std::u16string text = textAt(fields.second);
    out.append(text);
    if (field.answers.size() < most && textAt(std::max(begin, std::min(earliest, end - 1))) == text &&
        textAt(std::min(end - 1, std::max(latest, begin))) == text)
        field.answers.emplace(begin, text);
}

}  // namespace tovi::detail
