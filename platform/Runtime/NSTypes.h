#pragma once

#include <cstdint>
#include <limits>

namespace tovi {

using NSInteger = std::int64_t;
using NSUInteger = std::uint64_t;
using NSTimeInterval = double;  ///< seconds
using unichar = char16_t;       ///< one UTF-16 code unit

/// What every search answers when it finds nothing: the largest signed 64-bit integer.
inline constexpr NSInteger NSNotFound = std::numeric_limits<NSInteger>::max();

enum NSComparisonResult : NSInteger { NSOrderedAscending = -1, NSOrderedSame = 0, NSOrderedDescending = 1 };

/// A half-open run of indexes; a range that was not found is {NSNotFound, 0}.
struct NSRange {
    NSUInteger location = 0;
    NSUInteger length = 0;

    constexpr NSUInteger end() const noexcept { return location + length; }
    constexpr bool contains(NSUInteger index) const noexcept { return index - location < length; }
    /// True when the range lies within 0 ..< `length` (without overflowing).
    constexpr bool fitsIn(NSUInteger count) const noexcept { return location <= count && length <= count - location; }
    constexpr bool wasFound() const noexcept { return location != static_cast<NSUInteger>(NSNotFound); }
    friend constexpr bool operator==(const NSRange&, const NSRange&) = default;
};

inline constexpr NSRange NSRangeNotFound{static_cast<NSUInteger>(NSNotFound), 0};

struct NSPoint {
    double x = 0;
    double y = 0;
    friend constexpr bool operator==(const NSPoint&, const NSPoint&) = default;
};

struct NSSize {
    double width = 0;
    double height = 0;
    friend constexpr bool operator==(const NSSize&, const NSSize&) = default;
};

struct NSRect {
    NSPoint origin;
    NSSize size;
    friend constexpr bool operator==(const NSRect&, const NSRect&) = default;
};

}  // namespace tovi
