#include <ToviFoundationKit/Runtime/NumberText_p.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#include <ToviFoundationKit/Runtime/NSString.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi {

namespace detail {

namespace {

bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }

std::u16string_view withoutSpace(std::u16string_view text) noexcept {
    std::size_t count = 0;
    while (count < text.size() && isWhiteSpace(text[count]))
        ++count;
    return text.substr(count);
}

/// Takes the sign away; true for a minus.
bool takeSign(std::u16string_view& text) noexcept {
    const bool negative = text.starts_with(u'-');
    if (negative || text.starts_with(u'+'))
        text.remove_prefix(1);
    return negative;
}

/// The units in front that a number may consist of.
std::string numeral(std::u16string_view text) {
    const auto end = std::find_if_not(text.begin(), text.end(), [](char16_t unit) {
        return isDigit(unit) || unit == u'.' || unit == u'e' || unit == u'E' || unit == u'+' || unit == u'-';
    });
    return {text.begin(), end};
}

/// For a number beyond the range of double: whether it is too large rather than too small.
bool isLarge(std::string_view number) {
    const std::size_t e = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, e);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t first = digits.find_first_of("123456789");
    std::string_view exponentText = number.substr(std::min(e + 1, number.size()));
    if (exponentText.starts_with('+'))
        exponentText.remove_prefix(1);
    long exponent = 0;
    if (std::from_chars(exponentText.data(), exponentText.data() + exponentText.size(), exponent).ec ==
        std::errc::result_out_of_range)
        return !exponentText.starts_with('-');
    return static_cast<long>(point) - static_cast<long>(first) + exponent > 0;
}

}  // namespace

NSInteger leadingInteger(std::u16string_view text) noexcept {
    text = withoutSpace(text);
    const bool negative = takeSign(text);
    const NSUInteger limit = static_cast<NSUInteger>(std::numeric_limits<NSInteger>::max()) + negative;
    NSUInteger value = 0;
    for (std::size_t i = 0; i < text.size() && isDigit(text[i]); ++i) {
        const NSUInteger digit = text[i] - NSUInteger(u'0');
        value = value > (limit - digit) / 10 ? limit : value * 10 + digit;
    }
    return static_cast<NSInteger>(negative ? 0 - value : value);
}

double leadingReal(std::u16string_view text) {
    text = withoutSpace(text);
    const bool negative = takeSign(text);
    const std::string number = numeral(text);
    double value = 0;
    if (!number.starts_with('-')) {
        const char* const end = number.data() + number.size();
        const auto [stop, error] = std::from_chars(number.data(), end, value);
        if (error == std::errc::result_out_of_range)
            value = isLarge({number.data(), stop}) ? HUGE_VAL : 0;
    }
    return negative ? -value : value;
}

}  // namespace detail

int NSString::intValue() const {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<NSInteger>(detail::leadingInteger(*this), Limits::min(), Limits::max()));
}

NSInteger NSString::integerValue() const { return detail::leadingInteger(*this); }
double NSString::doubleValue() const { return detail::leadingReal(*this); }

bool NSString::boolValue() const {
    std::u16string_view text = detail::withoutSpace(*this);
    detail::takeSign(text);
    text.remove_prefix(std::min(text.find_first_not_of(u'0'), text.size()));
    return !text.empty() && std::u16string_view(u"YyTt123456789").find(text.front()) != std::u16string_view::npos;
}

}  // namespace tovi
