#include <ToviFoundationKit/Extensions/DelimiterPattern_p.h>

namespace tovi::detail {

std::optional<Delimiters> delimitersOf(std::u16string_view pattern) noexcept {
    const std::size_t star = pattern.find(u'*');
    if (star == std::u16string_view::npos)
        return std::nullopt;
    const std::u16string_view rest = pattern.substr(star + 1);
    return Delimiters{pattern.substr(0, star), rest.substr(0, rest.find(u'*'))};
}

std::size_t findDelimiter(std::u16string_view text, std::size_t from, std::u16string_view delimiter) {
    constexpr auto npos = std::u16string_view::npos;
    if (delimiter.empty())
        return npos;
    const std::size_t found = findLiterally(text.substr(from), delimiter);
    return found == npos ? npos : from + found;
}

/// `end` is shorter than the delimiter.
bool JoiningDelimiter::mayGoOn(std::u16string_view end, Pieces following) const noexcept {
    std::size_t matched = 0, passed = 0;
    for (const char16_t unit : end)
        matched = matcher_.next(matched, unit);
    for (const std::u16string_view piece : following.texts)
        for (const char16_t unit : piece) {
            if (matched <= passed)  // nothing that the text ends with goes on
                return false;
            ++passed;
            matched = matcher_.next(matched, unit);
            if (matched == delimiter_.size())
                return true;
        }
    return !following.isAll && matched > passed;
}

bool FoundPieces::mayEndWithOne(std::u16string_view piece, std::u16string_view opening) {
    if (pieces_.empty())
        return false;
    const std::size_t reach = longest_ + opening.size();
    std::size_t at = piece.size() - std::min(piece.size(), reach);
    while ((at = findDelimiter(piece, at, opening)) != std::u16string_view::npos) {
        const std::u16string_view end = piece.substr(at + opening.size());
        if (end.size() >= left_ || contains(end))
            return true;
        left_ -= end.size();
        ++at;
    }
    return false;
}

}  // namespace tovi::detail
