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

/// The number in front, in C notation without a sign, whatever follows; not always a whole one.
std::string numeral(std::u16string_view text) {
    std::size_t end = 0;
    const auto takeDigits = [&] {
        while (end < text.size() && isDigit(text[end]))
            ++end;
    };
    const auto takeOneOf = [&](char16_t a, char16_t b) {
        const bool follows = end < text.size() && (text[end] == a || text[end] == b);
        end += follows;
        return follows;
    };
    takeDigits();
    if (takeOneOf(u'.', u'.'))
        takeDigits();
    if (takeOneOf(u'e', u'E')) {
        takeOneOf(u'+', u'-');
        takeDigits();
    }
    return {text.begin(), text.begin() + std::ptrdiff_t(end)};
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
    return exponent > static_cast<long>(first) - static_cast<long>(point);
}

int hexadecimalDigit(char16_t unit) noexcept {
    if (isDigit(unit))
        return unit - u'0';
    const int letter = unit | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

/// Takes in the digits that `digitOf` knows, up to the limit.
template <class DigitOf> NSUInteger scanDigits(std::u16string_view text, std::size_t& at, NSUInteger base,
                                               NSUInteger limit, DigitOf digitOf) noexcept {
    NSUInteger value = 0;
    for (; at < text.size(); ++at) {
        const int known = digitOf(text[at]);
        if (known < 0)
            break;
        const auto digit = static_cast<NSUInteger>(known);
        value = value > (limit - digit) / base ? limit : value * base + digit;
    }
    return value;
}

}  // namespace

std::size_t scanInteger(std::u16string_view text, NSInteger& value) noexcept {
    std::u16string_view digits = text;
    const bool negative = takeSign(digits);
    const std::size_t sign = text.size() - digits.size();
    std::size_t length = 0;
    const NSUInteger limit = static_cast<NSUInteger>(std::numeric_limits<NSInteger>::max()) + negative;
    const NSUInteger size =
        scanDigits(digits, length, 10, limit, [](char16_t unit) { return isDigit(unit) ? unit - u'0' : -1; });
    if (!length)
        return 0;
    value = static_cast<NSInteger>(negative ? 0 - size : size);
    return sign + length;
}

std::size_t scanHexadecimal(std::u16string_view text, NSUInteger& value) noexcept {
    const bool hasPrefix =
        text.size() > 2 && text[0] == u'0' && (text[1] | 0x20) == u'x' && hexadecimalDigit(text[2]) >= 0;
    const std::size_t start = hasPrefix ? 2 : 0;
    std::size_t end = start;
    const NSUInteger size = scanDigits(text, end, 16, std::numeric_limits<NSUInteger>::max(), hexadecimalDigit);
    if (end == start)
        return 0;
    value = size;
    return end;
}

std::size_t scanReal(std::u16string_view text, double& value) {
    std::u16string_view unsignedText = text;
    const bool negative = takeSign(unsignedText);
    const std::string number = numeral(unsignedText);
    double size = 0;
    const auto [stop, error] = std::from_chars(number.data(), number.data() + number.size(), size);
    if (error == std::errc::invalid_argument)
        return 0;
    if (error == std::errc::result_out_of_range)
        size = isLarge({number.data(), stop}) ? HUGE_VAL : 0;
    value = negative ? -size : size;
    return text.size() - unsignedText.size() + static_cast<std::size_t>(stop - number.data());
}

NSInteger leadingInteger(std::u16string_view text) noexcept {
    NSInteger value = 0;
    scanInteger(withoutSpace(text), value);
    return value;
}

double leadingReal(std::u16string_view text) {
    double value = 0;
    scanReal(withoutSpace(text), value);
    return value;
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
