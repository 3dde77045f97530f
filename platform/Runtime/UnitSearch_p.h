#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace tovi::detail {

/// A few code units to look for.
class UnitSet {
public:
    static constexpr std::size_t capacity = 8;

    constexpr UnitSet() noexcept = default;
    constexpr explicit UnitSet(char16_t unit) noexcept : units_{unit}, count_(1) {}

    /// False when there is no room.
    constexpr bool add(char16_t unit) noexcept {
        if (contains(unit))
            return true;
        if (count_ == capacity)
            return false;
        units_[count_++] = unit;
        return true;
    }
    constexpr bool contains(char16_t unit) const noexcept {
        return std::find(units_, units_ + count_, unit) != units_ + count_;
    }
    constexpr std::size_t size() const noexcept { return count_; }
    /// The i-th unit; past the end, the first one again.
    constexpr char16_t at(std::size_t i) const noexcept { return units_[i < count_ ? i : 0]; }

private:
    char16_t units_[capacity] = {};
    std::size_t count_ = 0;
};

/// The first index from `from` on that has one of the units, and one of `others` so many units further on; npos when
/// there is none. `others` may be empty: then only the first condition counts.
std::size_t findUnits(std::u16string_view text, std::size_t from, const UnitSet& units, const UnitSet& others = {},
                      std::size_t distance = 1) noexcept;

/// True when every unit of the text is less than the limit.
bool allBelow(std::u16string_view text, char16_t limit) noexcept;

/// The index of the first surrogate that has no partner; the text's length when there is none.
std::size_t findLoneSurrogate(std::u16string_view text) noexcept;

/// The first or last place of the text, unit for unit, in linear time; npos when there is none. `searched` is not
/// empty.
std::size_t findLiterally(std::u16string_view text, std::u16string_view searched);
std::size_t findLastLiterally(std::u16string_view text, std::u16string_view searched);
/// The places from there on, one behind the other, as many as there is room for; answers how many.
std::size_t findAllLiterally(std::u16string_view text, std::size_t from, std::u16string_view searched,
                             std::span<std::size_t> places);

}  // namespace tovi::detail
