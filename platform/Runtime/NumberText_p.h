#pragma once

#include <string_view>

#include <ToviFoundationKit/Runtime/NSTypes.h>

namespace tovi::detail {

/// The decimal number in front of the text, after white space: clamped to the limits; 0 without one.
NSInteger leadingInteger(std::u16string_view text) noexcept;
/// The number in C notation in front of the text, after white space; infinite when too large; 0 without one.
double leadingReal(std::u16string_view text);

}  // namespace tovi::detail
