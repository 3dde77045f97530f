#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include <ToviFoundationKit/Runtime/UnitVector_p.h>

namespace tovi::detail {

// Bytes to code units and back, sixteen at a time.

/// The lower halves of sixteen units.
inline SixteenBytes narrowed(const char16_t* from) noexcept {
    SixteenUnits units;  // too long for some machines to be the result of a function
    std::memcpy(&units, from, sizeof units);
    return __builtin_convertvector(units, SixteenBytes);
}

inline void narrowBlock(const char16_t* from, char* to) noexcept {
    const SixteenBytes bytes = narrowed(from);
    std::memcpy(to, &bytes, sizeof bytes);
}

inline void widenBlock(const void* from, char16_t* to) noexcept {
    const auto units = __builtin_convertvector(loaded<SixteenBytes>(from), SixteenUnits);
    std::memcpy(to, &units, sizeof units);
}

/// Makes each byte a unit.
inline void widen(const char* from, std::size_t count, char16_t* to) noexcept {
    std::size_t i = 0;
    for (; count - i >= 16; i += 16)
        widenBlock(from + i, to + i);
    std::transform(from + i, from + count, to + i, [](char byte) { return static_cast<unsigned char>(byte); });
}

/// Makes each unit, all of them below U+0100, a byte.
inline void narrow(const char16_t* from, std::size_t count, char* to) noexcept {
    std::size_t i = 0;
    for (; count - i >= 16; i += 16)
        narrowBlock(from + i, to + i);
    std::transform(from + i, from + count, to + i, [](char16_t unit) { return static_cast<char>(unit); });
}

/// Swaps the two bytes of each of so many pairs.
inline void swapPairs(void* bytes, std::size_t count) noexcept {
    auto* at = static_cast<char*>(bytes);
    for (; count >= 8; count -= 8, at += 16) {
        auto units = loaded<EightUnits>(at);
        units = units << 8 | units >> 8;
        std::memcpy(at, &units, sizeof units);
    }
    for (; count; --count, at += 2)
        std::swap(at[0], at[1]);
}

}  // namespace tovi::detail
