#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include <ToviFoundationKit/Foundation/TextKey_p.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi::detail {

/// A question about texts, prepared once for any number of them.
class TextMatcher {
public:
    TextMatcher() = default;
    TextMatcher(const TextMatcher&) = delete;
    TextMatcher& operator=(const TextMatcher&) = delete;
    virtual ~TextMatcher() = default;
    virtual bool matches(std::u16string_view text) = 0;
};

// Each refers to the pattern that was given and does not copy it.

/// Whether the searched text is found, as the options say.
std::unique_ptr<TextMatcher> searchMatcher(std::u16string_view searched, NSStringCompareOptions options);
/// Whether the whole text is as a pattern with `*` and `?` has it; without a sameness, unit by unit. Time
/// grows with the text, and with the pattern in steps of 64 characters.
std::unique_ptr<TextMatcher> wildcardMatcher(std::u16string_view pattern, std::optional<Sameness> sameness);
/// Whether the whole text matches a regular expression. Raises NSInvalidArgumentException when that is not valid, and
/// later when a match takes too long.
std::unique_ptr<TextMatcher> regularExpressionMatcher(std::u16string_view pattern, NSStringCompareOptions options);

}  // namespace tovi::detail
