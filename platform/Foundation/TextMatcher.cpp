#include <ToviFoundationKit/Foundation/TextMatcher_p.h>

#include <limits>
#include <string>

#include <unicode/uregex.h>
#include <unicode/utypes.h>

#include <ToviFoundationKit/Foundation/TextSearch_p.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi::detail {

namespace {

class SearchMatcher final : public TextMatcher {
public:
    SearchMatcher(std::u16string_view searched, NSStringCompareOptions options) : search_(searched, options) {}
    bool matches(std::u16string_view text) override { return search_.find(text, {0, text.size()}).wasFound(); }

private:
    TextSearch search_;
};

// --- Regular expressions ---------------------------------------------------------------------------------------------

/// The text without nonspacing marks.
std::u16string withoutMarks(std::u16string_view text) {
    std::u16string result;
    CharacterReader reader(text, KeyTable::of(Sameness::Markless));
    for (std::size_t position = 0; position < text.size();)
        for (const char32_t c : reader.next(position)) {
            if (c > 0xFFFF)
                result += {leadOf(c), trailOf(c)};
            else
                result += static_cast<char16_t>(c);
        }
    return result;
}

class RegularExpressionMatcher final : public TextMatcher {
public:
    RegularExpressionMatcher(std::u16string_view pattern, NSStringCompareOptions options)
        : pattern_(pattern), isMarkless_(options & NSDiacriticInsensitiveSearch) {
        if (isMarkless_)
            pattern_ = withoutMarks(pattern);
        UErrorCode error = U_ZERO_ERROR;
        expression_.reset(uregex_open(pattern_.c_str(), length(pattern_),
                                      options & NSCaseInsensitiveSearch ? std::uint32_t{UREGEX_CASE_INSENSITIVE} : 0U,
                                      nullptr, &error));
        uregex_setTimeLimit(expression_.get(), timeLimit, &error);
        check(error);
    }

    bool matches(std::u16string_view text) override {
        std::u16string stripped;
        if (isMarkless_)
            text = stripped = withoutMarks(text);
        UErrorCode error = U_ZERO_ERROR;
        uregex_setText(expression_.get(), text.empty() ? u"" : text.data(), length(text), &error);
        const bool isMatch = uregex_matches(expression_.get(), 0, &error);
        check(error);
        return isMatch;
    }

private:
    static constexpr std::int32_t timeLimit = 1000;  // steps of about a millisecond

    std::int32_t length(std::u16string_view text) const {
        if (text.size() > std::numeric_limits<std::int32_t>::max())
            check(U_BUFFER_OVERFLOW_ERROR);
        return static_cast<std::int32_t>(text.size());
    }
    void check(UErrorCode error) const {
        if (U_FAILURE(error))
            NSException::raise(NSInvalidArgumentException, u"Can't do regex matching with the pattern %S: %s", pattern_,
                               u_errorName(error));
    }

    struct Close {
        void operator()(URegularExpression* expression) const noexcept { uregex_close(expression); }
    };
    std::u16string pattern_;
    bool isMarkless_;
    std::unique_ptr<URegularExpression, Close> expression_;
};

}  // namespace

std::unique_ptr<TextMatcher> searchMatcher(std::u16string_view searched, NSStringCompareOptions options) {
    return std::make_unique<SearchMatcher>(searched, options);
}

std::unique_ptr<TextMatcher> regularExpressionMatcher(std::u16string_view pattern, NSStringCompareOptions options) {
    return std::make_unique<RegularExpressionMatcher>(pattern, options);
}

}  // namespace tovi::detail
