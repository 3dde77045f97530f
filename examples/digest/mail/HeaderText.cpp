#include <mail/HeaderText.h>

#include <algorithm>

namespace digest {

bool startsWithIgnoringCase(std::string_view text, std::string_view prefix) noexcept {
    return text.size() >= prefix.size() && equalIgnoringCase(text.substr(0, prefix.size()), prefix);
}

bool equalIgnoringCase(std::string_view a, std::string_view b) noexcept {
    return std::ranges::equal(a, b, {}, lowered, lowered);
}

std::string loweredText(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), lowered);
    return result;
}

std::string collapsedText(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (!isSpace(c))
            result += c;
        else if (!result.empty() && result.back() != ' ')
            result += ' ';
    }
    if (result.ends_with(' '))
        result.pop_back();
    return result;
}

std::string takeQuoted(std::string_view& text) {
    std::string inside;
    std::size_t i = 1;
    for (; i < text.size() && text[i] != '"'; ++i) {
        if (text[i] == '\\' && i + 1 < text.size())
            ++i;
        inside += text[i];
    }
    text.remove_prefix(std::min(i + 1, text.size()));
    return inside;
}

std::string takeComment(std::string_view& text) {
    std::string inside;
    std::size_t depth = 0, i = 0;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '(' && depth++ == 0)
            continue;
        if (c == ')' && --depth == 0)
            break;
        if (c == '\\' && i + 1 < text.size())
            ++i;
        inside += text[i];
    }
    text.remove_prefix(std::min(i + 1, text.size()));
    return inside;
}

bool skipCommentsAndSpace(std::string_view& text) {
    while (!text.empty() && (isSpace(text.front()) || text.front() == '(')) {
        if (text.front() == '(')
            takeComment(text);
        else
            text.remove_prefix(1);
    }
    return !text.empty();
}

}  // namespace digest
