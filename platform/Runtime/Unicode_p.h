#pragma once

#include <cstdint>

namespace tovi::detail {

inline constexpr char32_t replacementCharacter = 0xFFFD;

constexpr bool isLead(char32_t unit) noexcept { return (unit & 0xFFFFFC00) == 0xD800; }
constexpr bool isTrail(char32_t unit) noexcept { return (unit & 0xFFFFFC00) == 0xDC00; }
constexpr bool isSurrogate(char32_t unit) noexcept { return (unit & 0xFFFFF800) == 0xD800; }
constexpr char32_t combined(char16_t lead, char16_t trail) noexcept {
    return (char32_t(lead) << 10) + trail - ((0xD800U << 10) + 0xDC00 - 0x10000);
}
constexpr char16_t leadOf(char32_t codePoint) noexcept { return static_cast<char16_t>(0xD7C0 + (codePoint >> 10)); }
constexpr char16_t trailOf(char32_t codePoint) noexcept { return static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF)); }

/// The White_Space property of Unicode.
constexpr bool isWhiteSpace(char16_t unit) noexcept {
    if (unit <= 0x20)
        return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D);
    if (unit < 0x1680)
        return unit == 0x85 || unit == 0xA0;
    return unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200A) || unit == 0x2028 || unit == 0x2029 || unit == 0x202F ||
           unit == 0x205F || unit == 0x3000;
}

}  // namespace tovi::detail
