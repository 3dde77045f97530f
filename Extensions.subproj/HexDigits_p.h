#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace tovi::detail {

/// Writes two lower-case digits for each byte.
void writeHexDigits(std::span<const std::byte> bytes, char16_t* to) noexcept;

/// Writes the byte of each two digits: see dataWithHexString. False when a unit is not ASCII; what was written is
/// nothing of use then.
bool readHexDigits(const char16_t* digits, std::size_t pairs, std::byte* to) noexcept;

/// Gives the bytes of the digits to `use`, some at a time; false when a unit is not ASCII.
template <class Use> bool readHexText(std::u16string_view digits, Use use) {
    constexpr std::size_t most = 4096;
    std::byte bytes[most];
    while (digits.size() >= 2) {
        const std::size_t pairs = std::min(digits.size() / 2, most);
        if (!readHexDigits(digits.data(), pairs, bytes))
            return false;
        use(std::span<const std::byte>(bytes, pairs));
        digits.remove_prefix(2 * pairs);
    }
    if (digits.empty())
        return true;
    const char16_t last[] = {digits.front(), 0};
    const bool isASCII = readHexDigits(last, 1, bytes);
    use(std::span<const std::byte>(bytes, 1));
    return isASCII;
}

}  // namespace tovi::detail
