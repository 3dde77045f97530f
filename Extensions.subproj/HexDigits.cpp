#include <ToviFoundationKit/Extensions/HexDigits_p.h>

#include <bit>
#include <cstring>

#include <ToviFoundationKit/Runtime/UnitVector_p.h>
#include <ToviFoundationKit/Runtime/Widening_p.h>

namespace tovi::detail {

namespace {

// The steps are the same for one byte and for a vector of them; all of it is modulo 256.

SixteenBytes digitsOf(SixteenBytes nibbles) noexcept {
    return nibbles + '0' + (bytesWhere(nibbles > 9) & ('a' - '0' - 10));
}

char16_t digitOf(unsigned nibble) noexcept { return u"0123456789abcdef"[nibble]; }

/// The bytes of eight pairs. A pair is a 16-bit number here.
EightUnits bytesOf(SixteenBytes characters) noexcept {
    constexpr int first = std::endian::native == std::endian::little ? 0 : 8, second = 8 - first;
    const SixteenBytes noDigits = bytesWhere(static_cast<SixteenBytes>(characters - '0') > 9);
    const auto pairs = reinterpret_cast<EightUnits>(characters), others = reinterpret_cast<EightUnits>(noDigits);
    const EightUnits high = pairs >> first & 0xFF, low = pairs >> second & 0xFF;
    return (high << 4) - (others >> first & 112) + low - '0' - (others >> second & (87 - '0'));
}

unsigned byteOf(unsigned high, unsigned low) noexcept {
    const auto isNoDigit = [](unsigned character) { return character - '0' > 9; };
    return high * 16 - (isNoDigit(high) ? 112 : 0) + low - (isNoDigit(low) ? 87 : 48);
}

}  // namespace

void writeHexDigits(std::span<const std::byte> bytes, char16_t* to) noexcept {
    std::size_t i = 0;
    for (; bytes.size() - i >= 16; i += 16, to += 32) {
        const auto block = loaded<SixteenBytes>(bytes.data() + i);
        const SixteenBytes high = digitsOf(block >> 4), low = digitsOf(block & 15);
        const SixteenBytes first =
            __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        const SixteenBytes second =
            __builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
        widenBlock(&first, to);
        widenBlock(&second, to + 16);
    }
    for (; i < bytes.size(); ++i) {
        const auto byte = std::to_integer<unsigned>(bytes[i]);
        *to++ = digitOf(byte >> 4);
        *to++ = digitOf(byte & 15);
    }
}

bool readHexDigits(const char16_t* digits, std::size_t pairs, std::byte* to) noexcept {
    EightUnits seen{};
    for (; pairs >= 8; pairs -= 8, digits += 16, to += 8) {
        seen |= loaded<EightUnits>(digits) | loaded<EightUnits>(digits + 8);
        const auto bytes = __builtin_convertvector(bytesOf(narrowed(digits)), EightBytes);
        std::memcpy(to, &bytes, sizeof bytes);
    }
    unsigned all = allBits(seen);
    for (; pairs; --pairs, digits += 2) {
        all |= unsigned(digits[0]) | digits[1];
        *to++ = static_cast<std::byte>(byteOf(digits[0], digits[1]));
    }
    return all < 0x80;
}

}  // namespace tovi::detail
