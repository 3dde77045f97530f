#include <ToviFoundationKit/Foundation/IcuDateFormat_p.h>

#include <algorithm>
#include <limits>

#include <unicode/uchar.h>
#include <unicode/udat.h>
#include <unicode/utf16.h>

namespace tovi::detail {

namespace {

struct CloseCalendar {
    void operator()(UCalendar* calendar) const { ucal_close(calendar); }
};
using Calendar = std::unique_ptr<UCalendar, CloseCalendar>;

int length(std::u16string_view text) noexcept { return static_cast<int>(text.size()); }

UDateFormatStyle icuStyle(int style) noexcept {
    constexpr UDateFormatStyle styles[] = {UDAT_NONE, UDAT_SHORT, UDAT_MEDIUM, UDAT_LONG, UDAT_FULL};
    return styles[style];
}

UDateFormat* opened(const std::string& locale, std::u16string_view zone, UDateFormatStyle date, UDateFormatStyle time,
                    std::u16string_view pattern) {
    UErrorCode error = U_ZERO_ERROR;
    return udat_open(time, date, locale.c_str(), zone.data(), length(zone), pattern.data(), length(pattern), &error);
}

/// Texts of this size and more are not handed to ICU.
constexpr std::size_t tooLong = std::numeric_limits<int>::max();

}  // namespace

struct IcuDateFormat::Handle {
    UDateFormat* const format;  ///< null when it could not be opened
    ~Handle() { udat_close(format); }
};

IcuDateFormat::IcuDateFormat(const std::string& locale, std::u16string_view zone, std::u16string_view pattern)
    : handle_(
          new Handle{pattern.size() < tooLong ? opened(locale, zone, UDAT_PATTERN, UDAT_PATTERN, pattern) : nullptr}) {}

IcuDateFormat::IcuDateFormat(const std::string& locale, std::u16string_view zone, Styles styles)
    : handle_(new Handle{opened(locale, zone, icuStyle(styles.date), icuStyle(styles.time), {})}) {}

IcuDateFormat::~IcuDateFormat() = default;

void IcuDateFormat::setWeeks(WeekRule rule) {
    if (!handle_->format)
        return;
    UErrorCode error = U_ZERO_ERROR;
    const Calendar calendar(ucal_clone(udat_getCalendar(handle_->format), &error));
    ucal_setAttribute(calendar.get(), UCAL_FIRST_DAY_OF_WEEK, rule.firstWeekday);
    ucal_setAttribute(calendar.get(), UCAL_MINIMAL_DAYS_IN_FIRST_WEEK, rule.minimumDays);
    udat_setCalendar(handle_->format, calendar.get());
}

namespace {

/// What `fill(buffer, capacity)` writes, however long it is; it answers the length.
template <class Fill> std::u16string written(Fill fill) {
    std::u16string text(128, u' ');
    const int needed = fill(text.data(), 128);
    text.resize(static_cast<std::size_t>(needed));
    if (needed > 128)
        fill(text.data(), needed);
    return text;
}

}  // namespace

std::u16string IcuDateFormat::pattern() const {
    if (!handle_->format)
        return {};
    return written([this](UChar* buffer, int capacity) {
        UErrorCode error = U_ZERO_ERROR;
        return udat_toPattern(handle_->format, false, buffer, capacity, &error);
    });
}

bool IcuDateFormat::hasOwnNumbers() const {
    UDateFormat* const format = handle_->format;
    return format && std::ranges::any_of(std::u16string_view(u"yMLdHhKkmsEec"), [&](char16_t letter) {
               return udat_getNumberFormatForField(format, letter) != udat_getNumberFormat(format);
           });
}

void IcuDateFormat::append(StringBuilder& out, double milliseconds) const {
    if (!handle_->format)
        return;
    out.append(written([&](UChar* buffer, int capacity) {
        UErrorCode error = U_ZERO_ERROR;
        return udat_format(handle_->format, milliseconds, buffer, capacity, nullptr, &error);
    }));
}

namespace {

// Dividing a fraction of 35 digits by a power of 10 that does not fit, ICU ends the process.
bool hasTooManyDigits(std::u16string_view text) {
    int digits = 0;
    for (int i = 0; i < length(text);) {
        UChar32 character;
        U16_NEXT(text.data(), i, length(text), character);
        digits += u_isdigit(character);
    }
    return digits > 34;
}

}  // namespace

std::optional<double> IcuDateFormat::read(std::u16string_view text, const Reading& how) const {
    UDateFormat* const format = handle_->format;
    if (!format || text.size() >= tooLong || (how.fractions && hasTooManyDigits(text)))
        return std::nullopt;
    UErrorCode error = U_ZERO_ERROR;
    udat_setLenient(format, how.lenient);
    udat_set2DigitYearStart(format, how.centuryStart, &error);
    // The text may bring a zone of its own: so each reading has a calendar of its own.
    const Calendar calendar(ucal_clone(udat_getCalendar(format), &error));
    ucal_setAttribute(calendar.get(), UCAL_LENIENT, how.lenient);
    ucal_setAttribute(calendar.get(), UCAL_REPEATED_WALL_TIME, UCAL_WALLTIME_FIRST);
    ucal_setMillis(calendar.get(), how.defaults, &error);
    int end = 0;
    udat_parseCalendar(format, calendar.get(), text.data(), length(text), &end, &error);
    const double milliseconds = U_SUCCESS(error) ? ucal_getMillis(calendar.get(), &error) : 0;
    if (U_FAILURE(error) || (!how.lenient && end != length(text)))
        return std::nullopt;
    return milliseconds;
}

}  // namespace tovi::detail
