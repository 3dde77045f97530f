#pragma once

#include <cstddef>
#include <vector>

namespace tovi::detail {

/// Matches units as they come against those searched, none of them looked at twice (Knuth, Morris and Pratt). What is
/// searched is read through an iterator, so that it may run backwards, and has to stay.
template <class Iterator> class SteadyMatcher {
public:
    SteadyMatcher(Iterator searched, std::size_t count) : searched_(searched), retry_(count + 1) {
        for (std::size_t i = 1, matched = 0; i < count; ++i)
            retry_[i + 1] = matched = next(matched, unit(i));
    }

    /// How many of those searched have come last, this unit included. `matched` is the answer for the units before it:
    /// 0 at first, and less than their count.
    std::size_t next(std::size_t matched, char16_t unit) const noexcept {
        while (matched && unit != this->unit(matched))
            matched = retry_[matched];
        return matched + (unit == this->unit(matched));
    }

private:
    char16_t unit(std::size_t i) const noexcept { return searched_[static_cast<std::ptrdiff_t>(i)]; }

    Iterator searched_;
    std::vector<std::size_t> retry_;  ///< for how many matched, how many also do when the next one does not
};

}  // namespace tovi::detail
