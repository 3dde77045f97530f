#include <ToviFoundationKit/Extensions/NSPredicate-QVLAdditions.h>

#include <algorithm>
#include <map>

#include <ToviFoundationKit/Extensions/NSDate-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSMutableString-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSString-QVLAdditions.h>
#include <ToviFoundationKit/Foundation/NSDateFormatter.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {
inline namespace QVLAdditions {

namespace {

constexpr auto npos = std::u16string_view::npos;

enum class Edge : bool { Start, End };

constexpr std::u16string_view markers[] = {u"_start", u"_end"};
constexpr std::u16string_view markerOf(Edge edge) { return markers[static_cast<bool>(edge)]; }

Ref<NSString> text(std::u16string_view units) { return NSString::stringWithCharacters(units); }

/// Replaces the tokens of a format, all with the same idea of now.
class RelativeDates {
public:
    explicit RelativeDates(std::u16string_view format) : format_(format) {}

    Ref<NSString> replaced() { return replaceInOnePass() ? out_.string() : replaceOneByOne(); }

private:
    bool replaceInOnePass();
    Ref<NSString> replaceOneByOne();
    Ref<NSString> constant(Edge edge, const NSString& days) const;
    [[noreturn]] void raiseOutsideToken(std::u16string_view format, std::size_t position, Edge edge) const;

    std::u16string_view format_;
    Ref<NSDate> now_ = NSDate::date();
    StringBuilder out_;
};

Ref<NSString> RelativeDates::constant(Edge edge, const NSString& days) const {
    const Ref<NSCalendar> calendar = gregorian();
    const auto units = NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay | NSCalendarUnitHour |
                       NSCalendarUnitMinute | NSCalendarUnitSecond;
    const Ref<NSDateComponents> components = calendar->components_fromDate(units, now_);
    components->setHour(edge == Edge::Start ? 0 : 23);
    components->setMinute(edge == Edge::Start ? 0 : 59);
    components->setSecond(edge == Edge::Start ? 0 : 59);
    Ref<NSDate> date = *calendar->dateFromComponents(components);
    if (const int count = days.intValue())
        date = dateByAddingYears_months_days_hours_minutes_seconds(date, 0, 0, count, 0, 0, 0);
    return NSString::stringWithFormat(u"CAST(%f,\"NSDate\")", date->timeIntervalSinceReferenceDate());
}

void RelativeDates::raiseOutsideToken(std::u16string_view format, std::size_t position, Edge edge) const {
    NSException::raise(NSInvalidArgumentException,
                       u"\"%S\" at %lu does not belong to a relative date such as $0%S, in the format string \"%S\"",
                       markerOf(edge), position, markerOf(edge), format);
}

/// The first marker from there on; npos when there is none.
std::size_t findMarker(std::u16string_view format, std::size_t from, Edge& edge) {
    for (; (from = format.find(u'_', from)) != npos; ++from)
        for (const Edge each : {Edge::Start, Edge::End})
            if (format.substr(from).starts_with(markerOf(each))) {
                edge = each;
                return from;
            }
    return npos;
}

/// Goes from token to token, where each is a "$" and what follows up to the marker. Answers false where that is not so
/// plain: where other "$" stand before, or the token comes to be by another one's replacement.
bool RelativeDates::replaceInOnePass() {
    std::map<std::pair<Edge, std::u16string_view>, Ref<NSString>> constants;
    std::vector<std::size_t> dollars;  // in what was put out
    Edge edge{};
    std::size_t copied = 0;
    for (std::size_t marker = 0; (marker = findMarker(format_, copied, edge)) != npos;) {
        const std::u16string_view piece = format_.substr(copied, marker - copied);
        const std::size_t dollar = piece.rfind(u'$');
        if (dollar == npos)
            return false;
        const auto token = std::pair(edge, piece.substr(dollar + 1));
        const bool isAlone = dollars.empty() && piece.find(u'$') == dollar;
        auto known = constants.find(token);
        if (known == constants.end() && !isAlone)
            return false;
        if (known == constants.end())
            known = constants.emplace(token, constant(edge, text(token.second))).first;
        for (std::size_t i = 0; i < dollar; ++i)
            if (piece[i] == u'$')
                dollars.push_back(out_.length() + i);
        out_.append(piece.substr(0, dollar)).append(known->second);
        copied = marker + markerOf(edge).size();
    }
    out_.append(format_.substr(copied));
    return true;
}

// The same in steps, each with the whole format as it has become.
Ref<NSString> RelativeDates::replaceOneByOne() {
    const Ref<NSMutableString> format = NSMutableString::stringWithString(text(format_));
    Edge edge{};
    for (std::size_t marker = 0; (marker = findMarker(*format, 0, edge)) != npos;) {
        const RefPtr<NSString> days =
            findRegexFirstString(format, text(u"$*")->stringByAppendingString(text(markerOf(edge))));
        if (!days)
            raiseOutsideToken(*format, marker, edge);
        const auto token = NSString::stringWithFormat(u"$%@%S", days, markerOf(edge));
        if (!replaceString_withString_options(format, token, constant(edge, *days), NSLiteralSearch))
            raiseOutsideToken(*format, marker, edge);
    }
    return format;
}

}  // namespace

Ref<NSPredicate> predicateWithFormatByReplacingRelativeDatePatternsWithRealDates_arguments(std::u16string_view format,
                                                                                           FormatArguments arguments) {
    return NSPredicate::predicateWithFormat_arguments(*RelativeDates(format).replaced(), arguments);
}

namespace {

constexpr std::u16string_view opening = u"CAST(", closing = u", \"NSDate\")";

Ref<NSString> displayed(const NSDateFormatter& formatter, const NSString& seconds) {
    const auto date = NSDate::dateWithTimeIntervalSinceReferenceDate(seconds.doubleValue());
    const RefPtr<NSString> shown = formatter.stringFromDate(date);
    return shown ? shown.ref() : u"(null)"_ns;
}

}  // namespace

Ref<NSMutableString> qvlDescription(const NSPredicate& receiver) {
    const Ref<NSMutableString> description = NSMutableString::stringWithString(receiver.description());
    const RefPtr<NSMutableArray> dates = findRegexString(description, u"CAST(*, \"NSDate\")"_ns);
    if (!dates)
        return description;
    const Ref<NSDateFormatter> formatter = NSDateFormatter::init();
    formatter->setDateFormat(u"yyy-MM-dd HH:mm:ss Z(z)"_ns);
    const auto isNested = [](const NSString& seconds) { return seconds.view().find(opening) != npos; };
    if (std::ranges::any_of(dates->each<NSString>(), isNested)) {
        // One may stand within another: each is replaced wherever it is.
        for (const NSString& seconds : dates->each<NSString>())
            replaceString_withString(description, NSString::stringWithFormat(u"%S%@%S", opening, seconds, closing),
                                     displayed(formatter, seconds));
        return description;
    }
    const std::u16string_view text = *description;
    StringBuilder out;
    std::size_t copied = 0;
    for (const NSString& seconds : dates->each<NSString>()) {
        const std::size_t start = text.find(opening, copied);
        out.append(text.substr(copied, start - copied)).append(displayed(formatter, seconds));
        copied = start + opening.size() + seconds.length() + closing.size();
    }
    description->setString(out.append(text.substr(copied)).string());
    return description;
}

namespace {

Ref<NSPredicate> withFormat(const NSString& format) {
    return predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(format);
}

const Additions<NSPredicate> additions{
    classLevel<&withFormat>("predicateWithFormatByReplacingRelativeDatePatternsWithRealDates:"),
    instance<&qvlDescription>("qvlDescription"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi
