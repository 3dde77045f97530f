#pragma once

#include <cstdint>
#include <limits>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <ToviFoundationKit/Runtime/NSTypes.h>

namespace tovi::detail {

/// A time during which a zone stays as far from GMT as it is. Seconds are counted from 1970, in GMT.
struct Stretch {
    NSInteger begin;  ///< the first second, or far in the past
    NSInteger end;    ///< the second after the last, or far in the future
    int offset;       ///< seconds to add to GMT
    bool summer;

    bool contains(NSInteger second) const noexcept { return begin <= second && second < end; }
    bool sameClock(const Stretch& other) const noexcept { return offset == other.offset && summer == other.summer; }
};

/// What is known of a zone: its stretches as a table. Made once for each zone, never destroyed, shared by all threads.
///
/// Rules that go on for ever repeat after 400 years, which are a whole number of weeks; so a second table, made when it
/// is needed first, has one such cycle, and stands for all that follow.
class TimeZoneRules {
public:
    /// Null when the zone is not known.
    static const TimeZoneRules* named(std::u16string_view name);
    static const TimeZoneRules& fixed(int offset);
    /// How far from GMT a name like "GMT+01:30" says that it is.
    static std::optional<int> offsetNamed(std::u16string_view name);

    Stretch stretchAt(NSInteger second) const {
        const auto bucket = static_cast<NSUInteger>(second) >> bucketBits;  // beyond all buckets before 1970
        if (bucket >= buckets_.size()) [[unlikely]]
            return searchStretch(second);
        std::size_t index = buckets_[bucket];
        while (near_[index + 1].begin <= second)
            ++index;
        return stretch(near_, index);
    }

    /// The moment at which a clock of the zone shows so many seconds. A time that it skips is later by what it skips;
    /// of two moments with the same time it is the first.
    NSInteger fromClock(NSInteger clock) const {
        const Stretch guess = stretchAt(clock);
        const NSInteger second = clock - guess.offset;
        // Changes are not that large: there, no other moment shows this time.
        if (second - guess.begin > 2 * 86400 && second < guess.end) [[likely]]
            return second;
        return searchFromClock(clock);
    }

    /// The first second after the given one from which on the clock is another.
    std::optional<NSInteger> nextChange(NSInteger second) const;

    // Nobody comes near these.
    static constexpr NSInteger always = NSInteger(1) << 60, never = -always;

private:
    struct Entry {
        NSInteger begin;
        int offset;
        bool summer;
    };
    /// In order; the last one only marks the end of the one before.
    using Table = std::vector<Entry>;

    explicit TimeZoneRules(int offset);
    explicit TimeZoneRules(std::u16string_view name);
    static Stretch stretch(const Table& table, std::size_t index) noexcept {
        return {table[index].begin, table[index + 1].begin, table[index].offset, table[index].summer};
    }
    Stretch searchStretch(NSInteger second) const;
    void fillBuckets();
    NSInteger searchFromClock(NSInteger clock) const;
    const Table& cycle() const;

    static constexpr int bucketBits = 21;  ///< a bucket is 24 days

    Table near_;
    std::vector<std::uint16_t> buckets_;  ///< from 1970 to the last change in the table: where to look in it
    std::u16string name_;
    mutable std::once_flag cycleMade_;
    mutable Table cycle_;
};

/// The name of the machine's zone, as it was found; "GMT" when there is none.
std::u16string systemTimeZoneName();

}  // namespace tovi::detail
