#pragma once

#include <cstdint>
#include <cstdlib>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi::detail {

/// The most units of a string. What is larger cannot be allocated anyway, and no product of it overflows.
inline constexpr NSUInteger longestString = PTRDIFF_MAX / 4;

[[noreturn]] void raiseTooLong(NSUInteger length);

/// Memory for `header` bytes and so many units, by malloc and realloc. They raise NSMallocException where there is
/// none.
inline void* allocated(std::size_t header, NSUInteger length) {
    if (length <= longestString)
        if (void* const result = std::malloc(header + length * sizeof(char16_t))) [[likely]]
            return result;
    raiseTooLong(length);
}
inline void* resized(void* memory, std::size_t header, NSUInteger length) {
    if (length <= longestString)
        if (void* const result = std::realloc(memory, header + length * sizeof(char16_t))) [[likely]]
            return result;
    raiseTooLong(length);
}

}  // namespace tovi::detail
