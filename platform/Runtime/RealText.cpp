#include <ToviFoundationKit/Runtime/RealText_p.h>

#include <algorithm>
#include <cmath>

namespace tovi::detail {

RealText::RealText(double value, char type, std::optional<NSUInteger> precision, bool alternate) {
    const NSUInteger digits = precision.value_or(6);
    if (type == 'f')
        write(value, std::chars_format::fixed, digits);
    else if (type == 'e')
        write(value, std::chars_format::scientific, digits);
    else if (type == 'g')
        writeGeneral(value, std::max<NSUInteger>(digits, 1), alternate);
    else if (precision)
        write(value, std::chars_format::hex, digits);
    else
        end_ = std::to_chars(text_, text_ + sizeof text_, value, std::chars_format::hex).ptr;
    if (alternate && std::isfinite(value))
        addPoint();
}

void RealText::toUpper() noexcept {
    std::transform(text_, end_, text_, [](char t) { return t >= 'a' ? static_cast<char>(t - 'a' + 'A') : t; });
}

void RealText::write(double value, std::chars_format format, NSUInteger precision) {
    end_ = std::to_chars(text_, text_ + sizeof text_, value, format, static_cast<int>(precision)).ptr;
}

/// With `keepZeros`, the rule of %g without its removal of zeros at the end.
void RealText::writeGeneral(double value, NSUInteger precision, bool keepZeros) {
    write(value, std::chars_format::general, precision);
    if (!keepZeros || !std::isfinite(value))
        return;
    write(value, std::chars_format::scientific, precision - 1);
    const char* digits = std::find(text_, end_, 'e') + 1;
    digits += *digits == '+';
    int exponent = 0;
    std::from_chars(digits, end_, exponent);
    if (exponent >= -4 && exponent < static_cast<int>(precision))
        write(value, std::chars_format::fixed, static_cast<NSUInteger>(static_cast<int>(precision) - 1 - exponent));
}

void RealText::addPoint() {
    char* const place = std::find_if(text_, end_, [](char t) { return t == '.' || t == 'e' || t == 'p'; });
    if (place != end_ && *place == '.')
        return;
    std::copy_backward(place, end_, end_ + 1);
    *place = '.';
    ++end_;
}

}  // namespace tovi::detail
