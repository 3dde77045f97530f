#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tovi::detail {

// Code units and bytes, many at a time. The compiler makes of these vectors what the machine has for them.

using EightBytes __attribute__((vector_size(8))) = unsigned char;
using SixteenBytes __attribute__((vector_size(16))) = unsigned char;
using EightUnits __attribute__((vector_size(16))) = std::uint16_t;
using SixteenUnits __attribute__((vector_size(32))) = std::uint16_t;
using TwoWords __attribute__((vector_size(16))) = std::uint64_t;

template <class Vector> Vector loaded(const void* from) noexcept {
    Vector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
}

inline std::uint64_t wordAt(const void* from) noexcept { return loaded<std::uint64_t>(from); }

constexpr EightUnits repeated(char16_t unit) noexcept {
    const std::uint16_t u = unit;
    return EightUnits{u, u, u, u, u, u, u, u};
}

// What a comparison answers has all bits set, or none, in each unit or byte.

/// The same as units, to reckon with.
template <class Comparison> EightUnits unitsWhere(Comparison comparison) noexcept {
    return reinterpret_cast<EightUnits>(comparison);
}
template <class Comparison> SixteenBytes bytesWhere(Comparison comparison) noexcept {
    return reinterpret_cast<SixteenBytes>(comparison);
}

/// Whether a bit is set.
inline bool any(EightUnits units) noexcept {
    const auto words = reinterpret_cast<TwoWords>(units);
    return words[0] | words[1];
}

/// How many parts of so many bits lie in memory before the first that has a bit set; there is one.
constexpr std::size_t partsBefore(std::uint64_t word, int bits) noexcept {
    constexpr bool little = std::endian::native == std::endian::little;
    return static_cast<std::size_t>((little ? std::countr_zero(word) : std::countl_zero(word)) / bits);
}
constexpr std::size_t unitsBefore(std::uint64_t word) noexcept { return partsBefore(word, 16); }

inline std::size_t indexOfFirst(EightUnits matches) noexcept {
    const auto words = reinterpret_cast<TwoWords>(matches);
    return words[0] ? unitsBefore(words[0]) : 4 + unitsBefore(words[1]);
}

/// The bits that are set in any of the units.
inline unsigned allBits(EightUnits units) noexcept {
    unsigned bits = 0;
    for (int i = 0; i < 8; ++i)
        bits |= units[i];
    return bits;
}

}  // namespace tovi::detail
