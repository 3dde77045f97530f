#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

/// What is left of a fuzzer's input.
struct Input {
    const std::uint8_t* data;
    std::size_t size;

    std::uint8_t byte() { return value<std::uint8_t>(); }
    /// Zeros stand for what the input has no more.
    template <class T> T value() {
        T result{};
        const std::size_t count = std::min(size, sizeof result);
        std::memcpy(&result, data, count);
        data += count;
        size -= count;
        return result;
    }
};

inline void require(bool condition, const char* what = "it is not as it must be") {
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}
