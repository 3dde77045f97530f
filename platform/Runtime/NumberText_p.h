#pragma once

#include <string_view>

#include <ToviFoundationKit/Runtime/NSTypes.h>

namespace tovi::detail {

// Numbers at the very start of a text. Each answers how many units it takes, 0 without one (the value is left then).

/// A decimal integer with an optional sign, clamped to the limits.
std::size_t scanInteger(std::u16string_view text, NSInteger& value) noexcept;
/// Hexadecimal digits in either case, with an optional 0x in front, clamped to the limit.
std::size_t scanHexadecimal(std::u16string_view text, NSUInteger& value) noexcept;
/// A number in decimal C notation with an optional sign, infinite when too large.
std::size_t scanReal(std::u16string_view text, double& value);

/// The decimal number in front of the text, after white space: clamped to the limits; 0 without one.
NSInteger leadingInteger(std::u16string_view text) noexcept;
/// The number in C notation in front of the text, after white space; infinite when too large; 0 without one.
double leadingReal(std::u16string_view text);

}  // namespace tovi::detail
