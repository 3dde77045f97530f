#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tovi::detail {

// Bits in a row of 64-bit words, the lowest first.

constexpr std::uint64_t allBits = ~std::uint64_t{0};

/// The first bit from `from` on that is set (or clear); `size` when there is none.
template <bool set> std::size_t nextBit(const std::uint64_t* words, std::size_t size, std::size_t from) noexcept {
    if (from >= size)
        return size;
    std::uint64_t word = (set ? words[from / 64] : ~words[from / 64]) & allBits << from % 64;
    for (std::size_t i = from / 64;; word = set ? words[i] : ~words[i]) {
        if (word)
            return i * 64 + static_cast<std::size_t>(std::countr_zero(word));
        if (++i * 64 >= size)
            return size;
    }
}

/// The last bit up to `from` that is set.
inline std::optional<std::size_t> lastSetBit(const std::uint64_t* words, std::size_t from) noexcept {
    std::size_t i = from / 64;
    std::uint64_t word = words[i] & allBits >> (63 - from % 64);
    while (!word && i)
        word = words[--i];
    if (!word)
        return std::nullopt;
    return i * 64 + 63 - static_cast<std::size_t>(std::countl_zero(word));
}

/// Calls `use(word, mask)` for the words of a range of bits.
template <class F> void forEachWord(std::uint64_t* words, std::size_t from, std::size_t to, F use) {
    for (std::size_t i = from / 64; i * 64 < to; ++i) {
        const std::uint64_t low = i * 64 < from ? allBits << from % 64 : allBits;
        const std::uint64_t high = to - i * 64 < 64 ? ~(allBits << to % 64) : allBits;
        use(words[i], low & high);
    }
}

#ifdef __x86_64__
__attribute__((target("popcnt"))) inline std::size_t countBitsQuickly(const std::uint64_t* words,
                                                                      std::size_t count) noexcept {
    std::size_t sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += static_cast<std::size_t>(__builtin_popcountll(words[i]));
    return sum;
}
#endif

inline std::size_t countBits(const std::uint64_t* words, std::size_t count) noexcept {
#ifdef __x86_64__
    if (__builtin_cpu_supports("popcnt")) [[likely]]
        return countBitsQuickly(words, count);
#endif
    std::size_t sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += static_cast<std::size_t>(std::popcount(words[i]));
    return sum;
}

}  // namespace tovi::detail
