#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include <ToviFoundationKit/Foundation/TextMatcher_p.h>

namespace tovi::detail {

namespace {

/// Follows all the ways to match at once, a bit each: bit i of the state is set when the first i elements of the
/// pattern match what has been read. An element is a code point or any character; a place between elements may also let
/// characters through.
class WildcardMatcher final : public TextMatcher {
public:
    WildcardMatcher(std::u16string_view pattern, std::optional<Sameness> sameness);
    bool matches(std::u16string_view text) override;

private:
    using Word = std::uint64_t;
    static constexpr std::size_t wordSize = 64;
    static constexpr char32_t anyCharacter = 0xFFFFFFFF;

    /// A code point of the pattern: where it stands and, if that is in many places, these as bits.
    struct Literal {
        char32_t codePoint;
        std::vector<std::size_t> places;
        std::vector<Word> mask;
    };

    void readPattern(std::u16string_view pattern);
    void addLiteral(std::u16string_view run);
    void findLiterals();
    const Literal* literalFor(char32_t codePoint) const noexcept;
    void step(std::u32string_view key);
    void stepOver(const Literal& literal);
    template <class Use> bool eachCharacter(std::u16string_view text, Use use) const;

    static void set(std::vector<Word>& bits, std::size_t i) { bits[i / wordSize] |= Word(1) << i % wordSize; }
    static bool has(const std::vector<Word>& bits, std::size_t i) { return bits[i / wordSize] >> i % wordSize & 1; }

    const KeyTable* const table_;
    std::vector<char32_t> elements_;
    std::vector<std::size_t> openPlaces_;
    std::size_t words_ = 1;
    std::vector<Literal> literals_;  ///< in the order of the code points
    std::uint16_t small_[256] = {};  ///< how many of them there are up to each of the first code points that is one
    std::vector<Word> any_, open_, state_, before_;
};

WildcardMatcher::WildcardMatcher(std::u16string_view pattern, std::optional<Sameness> sameness)
    : table_(sameness ? &KeyTable::of(*sameness) : nullptr) {
    readPattern(pattern);
    words_ = elements_.size() / wordSize + 1;
    any_.resize(words_);
    open_.resize(words_);
    for (const std::size_t place : openPlaces_)
        set(open_, place);
    findLiterals();
}

/// Calls `use` with the key of each character as long as it answers true.
template <class Use> bool WildcardMatcher::eachCharacter(std::u16string_view text, Use use) const {
    if (!table_)
        return std::all_of(text.begin(), text.end(), [&use](char16_t unit) {
            const char32_t key = unit;
            return use(std::u32string_view(&key, 1));
        });
    CharacterReader reader(text, *table_);
    for (std::size_t position = 0; position < text.size();)
        if (!use(reader.next(position)))
            return false;
    return true;
}

void WildcardMatcher::addLiteral(std::u16string_view run) {
    eachCharacter(run, [this](std::u32string_view key) {
        elements_.insert(elements_.end(), key.begin(), key.end());
        return true;
    });
}

void WildcardMatcher::readPattern(std::u16string_view pattern) {
    std::u16string run;
    const auto endRun = [&] {
        addLiteral(run);
        run.clear();
    };
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool isEscaped = pattern[i] == u'\\' && i + 1 < pattern.size();
        i += isEscaped;
        if (isEscaped || (pattern[i] != u'*' && pattern[i] != u'?')) {
            run += pattern[i];
            continue;
        }
        endRun();
        if (pattern[i] == u'?')
            elements_.push_back(anyCharacter);
        else if (openPlaces_.empty() || openPlaces_.back() != elements_.size())
            openPlaces_.push_back(elements_.size());
    }
    endRun();
}

// Few code points stand in many places, so all of this takes no more memory than the pattern.
void WildcardMatcher::findLiterals() {
    std::vector<std::size_t> order(elements_.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::stable_sort(order, {}, [this](std::size_t i) { return elements_[i]; });
    for (const std::size_t place : order) {
        if (elements_[place] == anyCharacter) {
            set(any_, place);
            continue;
        }
        if (literals_.empty() || literals_.back().codePoint != elements_[place])
            literals_.push_back({elements_[place], {}, {}});
        literals_.back().places.push_back(place);
    }
    for (std::size_t i = 0; i < literals_.size(); ++i) {
        Literal& literal = literals_[i];
        if (literal.codePoint < 256)
            small_[literal.codePoint] = static_cast<std::uint16_t>(i + 1);
        if (literal.places.size() < words_)
            continue;
        literal.mask.resize(words_);
        for (const std::size_t place : literal.places)
            set(literal.mask, place);
    }
}

/// Null when the pattern does not have it.
const WildcardMatcher::Literal* WildcardMatcher::literalFor(char32_t codePoint) const noexcept {
    if (codePoint < 256)
        return small_[codePoint] ? &literals_[small_[codePoint] - 1U] : nullptr;
    const auto found = std::ranges::lower_bound(literals_, codePoint, {}, &Literal::codePoint);
    return found != literals_.end() && found->codePoint == codePoint ? &*found : nullptr;
}

void WildcardMatcher::stepOver(const Literal& literal) {
    if (literal.mask.empty()) {
        std::vector<Word> next(words_);
        for (const std::size_t place : literal.places)
            if (has(state_, place))
                set(next, place + 1);
        state_.swap(next);
        return;
    }
    Word carried = 0;
    for (std::size_t i = 0; i < words_; ++i) {
        const Word matching = state_[i] & literal.mask[i];
        state_[i] = matching << 1 | carried;
        carried = matching >> (wordSize - 1);
    }
}

void WildcardMatcher::step(std::u32string_view key) {
    before_ = state_;
    for (const char32_t codePoint : key) {
        if (const Literal* const literal = literalFor(codePoint))
            stepOver(*literal);
        else
            state_.assign(words_, 0);
    }
    Word carried = 0;
    for (std::size_t i = 0; i < words_; ++i) {
        const Word matching = before_[i] & any_[i];
        state_[i] |= matching << 1 | carried | (before_[i] & open_[i]);
        carried = matching >> (wordSize - 1);
    }
}

bool WildcardMatcher::matches(std::u16string_view text) {
    state_.assign(words_, 0);
    state_[0] = 1;
    const bool isAlive = eachCharacter(text, [this](std::u32string_view key) {
        step(key);
        return std::any_of(state_.begin(), state_.end(), [](Word word) { return word != 0; });
    });
    return isAlive && has(state_, elements_.size());
}

}  // namespace

std::unique_ptr<TextMatcher> wildcardMatcher(std::u16string_view pattern, std::optional<Sameness> sameness) {
    return std::make_unique<WildcardMatcher>(pattern, sameness);
}

}  // namespace tovi::detail
