#pragma once

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_set>

#include <ToviFoundationKit/Runtime/NSTypes.h>
#include <ToviFoundationKit/Runtime/SteadyMatcher_p.h>
#include <ToviFoundationKit/Runtime/UnitSearch_p.h>

namespace tovi::detail {

/// A delimiter pattern, "opening*closing".
struct Delimiters {
    std::u16string_view opening, closing;

    std::size_t length() const noexcept { return opening.size() + closing.size(); }
};

/// The delimiters of a pattern, or none when it has no "*".
std::optional<Delimiters> delimitersOf(std::u16string_view pattern) noexcept;

/// Where a delimiter stands from there on; npos when it does not, or is empty.
std::size_t findDelimiter(std::u16string_view text, std::size_t from, std::u16string_view delimiter);

/// From there to where a delimiter was found; when it was not, a range that no text has.
constexpr NSRange rangeUpTo(std::size_t start, std::size_t found) noexcept {
    return {start, (found == std::u16string_view::npos ? NSNotFound : found) - start};
}

/// Texts one after the other, and whether nothing follows them.
struct Pieces {
    std::span<const std::u16string_view> texts;
    bool isAll;
};

/// Finds a delimiter that comes into being where texts are put together.
class JoiningDelimiter {
public:
    explicit JoiningDelimiter(std::u16string_view delimiter)
        : delimiter_(delimiter), matcher_(delimiter.data(), delimiter.size()) {}

    /// Whether the delimiter stands across the end of the text when others follow it, as far as they are known. Takes
    /// time for the delimiter's length, not for theirs.
    bool mayJoin(std::u16string_view text, Pieces following) const noexcept {
        const std::size_t reach = delimiter_.empty() ? 0 : delimiter_.size() - 1;
        for (std::size_t i = text.size() - std::min(text.size(), reach); i < text.size(); ++i)
            if (text[i] == delimiter_.front())
                return mayGoOn(text.substr(i), following);
        return false;
    }

private:
    bool mayGoOn(std::u16string_view end, Pieces following) const noexcept;

    std::u16string_view delimiter_;
    SteadyMatcher<const char16_t*> matcher_;
};

/// The texts that were found between delimiters so far.
class FoundPieces {
public:
    /// `limit` is how many units may be looked at for all the calls of mayEndWithOne.
    explicit FoundPieces(std::size_t limit) noexcept : left_(limit) {}

    bool contains(std::u16string_view piece) const { return pieces_.contains(piece); }
    void add(std::u16string_view piece) {
        pieces_.insert(piece);
        longest_ = std::max(longest_, piece.size());
    }
    /// Whether one of the pieces is the end of this one, right behind an opening delimiter in it; true also when
    /// finding that out takes too long.
    bool mayEndWithOne(std::u16string_view piece, std::u16string_view opening);

private:
    std::unordered_set<std::u16string_view> pieces_;
    std::size_t longest_ = 0;
    std::size_t left_;
};

}  // namespace tovi::detail
