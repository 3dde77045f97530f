#pragma once

#include <charconv>
#include <optional>
#include <string_view>

#include <ToviFoundationKit/Runtime/NSTypes.h>

namespace tovi::detail {

/// A real number that is not negative as the conversions f, e, g and a of C print it, in lower case and without 0x;
/// `alternate` is the flag #. There is no locale in it.
class RealText {
public:
    static constexpr NSUInteger mostDigits = 4095;

    RealText(double value, char type, std::optional<NSUInteger> precision, bool alternate);

    void toUpper() noexcept;
    std::string_view view() const noexcept { return {text_, end_}; }

private:
    void write(double value, std::chars_format format, NSUInteger precision);
    void writeGeneral(double value, NSUInteger precision, bool keepZeros);
    void addPoint();

    char text_[mostDigits + 400];  // a double has at most 309 digits before the point
    char* end_ = text_;
};

}  // namespace tovi::detail
