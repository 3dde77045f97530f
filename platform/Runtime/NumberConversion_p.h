#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace tovi {

/// Calls `use` with std::type_identity of the integer type that an encoding names.
template <class F> auto withIntegerType(char encoding, F use) {
    switch (encoding) {
        case 'c':
            return use(std::type_identity<signed char>());
        case 's':
            return use(std::type_identity<short>());
        case 'i':
            return use(std::type_identity<int>());
        case 'C':
            return use(std::type_identity<unsigned char>());
        case 'S':
            return use(std::type_identity<unsigned short>());
        case 'I':
            return use(std::type_identity<unsigned int>());
        case 'L':
        case 'Q':
            return use(std::type_identity<std::uint64_t>());
        default:
            return use(std::type_identity<std::int64_t>());
    }
}

inline std::int64_t narrowed(std::int64_t value, char encoding) noexcept {
    return withIntegerType(
        encoding, [value]<class T>(std::type_identity<T>) { return static_cast<std::int64_t>(static_cast<T>(value)); });
}

/// Without the fraction, clamped to the limits of T; NaN gives 0.
template <class T> T truncated(double value) noexcept {
    using Limits = std::numeric_limits<T>;
    constexpr double end = static_cast<double>(Limits::max() / 2 + 1) * 2;
    if (value >= end)
        return Limits::max();
    if (value <= static_cast<double>(Limits::min()))
        return Limits::min();
    return std::isnan(value) ? T() : static_cast<T>(value);
}

inline std::int64_t truncated(double value, char encoding) noexcept {
    return withIntegerType(
        encoding, [value]<class T>(std::type_identity<T>) { return static_cast<std::int64_t>(truncated<T>(value)); });
}

}  // namespace tovi
