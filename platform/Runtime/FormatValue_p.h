#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include <ToviFoundationKit/Runtime/FormatArgument.h>
#include <ToviFoundationKit/Runtime/NSString.h>

// The arguments of a format as values of other types.

namespace tovi::detail {

/// A number object as the number that it holds; every other argument as it is.
FormatArgument unboxed(const FormatArgument& argument);

/// Where an object, a text or what a pointer points to lies; null for the others.
const void* pointerOf(const FormatArgument& argument) noexcept;
/// The units of a text; `keeper` may have to keep them.
std::optional<std::u16string_view> textOf(const FormatArgument& argument, RefPtr<NSString>& keeper);

struct SignedNumber {
    bool negative;
    std::uint64_t magnitude;
};
/// The integer of so many bytes; without a size, of the argument's own type.
SignedNumber signedOf(const FormatArgument& argument, unsigned size);
/// The bits of an integer of so many bytes; without a size, of as many as the argument has.
std::uint64_t bitsOf(const FormatArgument& argument, unsigned size);
/// What is no number is the number in front of its text, else its address.
std::int64_t integerOf(const FormatArgument& argument);
double realOf(const FormatArgument& argument);

}  // namespace tovi::detail
