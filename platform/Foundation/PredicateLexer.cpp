#include <ToviFoundationKit/Foundation/PredicateLexer_p.h>

#include <algorithm>
#include <limits>

#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NumberText_p.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi::detail {

using Kind = PredicateToken::Kind;
using Word = PredicateToken::Word;

// --- Words -----------------------------------------------------------------------------------------------------------

namespace {

struct Reserved {
    std::u16string_view text;
    Kind kind;
    Word word;
    NSPredicateOperatorType type;

    bool isPlace = false;  ///< means something in brackets only

    constexpr explicit Reserved(std::u16string_view t) : text(t), kind(), word(), type(), isPlace(true) {}
    constexpr Reserved(std::u16string_view t, Word w) : text(t), kind(Kind::Word), word(w), type() {}
    constexpr Reserved(std::u16string_view t, NSPredicateOperatorType o)
        : text(t), kind(Kind::Comparison), word(), type(o) {}
};

constexpr Reserved reservedWords[] = {
    {u"AND", Word::And},
    {u"OR", Word::Or},
    {u"NOT", Word::Not},
    {u"ANY", Word::Any},
    {u"SOME", Word::Any},
    {u"ALL", Word::All},
    {u"NONE", Word::None},
    {u"NIL", Word::Nil},
    {u"NULL", Word::Nil},
    {u"SELF", Word::Self},
    {u"TRUE", Word::True},
    {u"YES", Word::True},
    {u"FALSE", Word::False},
    {u"NO", Word::False},
    {u"TRUEPREDICATE", Word::TruePredicate},
    {u"FALSEPREDICATE", Word::FalsePredicate},
    {u"UNION", Word::Union},
    {u"INTERSECT", Word::Intersect},
    {u"MINUS", Word::Minus},
    Reserved(u"FIRST"),
    Reserved(u"LAST"),
    Reserved(u"SIZE"),
    {u"IN", NSInPredicateOperatorType},
    {u"LIKE", NSLikePredicateOperatorType},
    {u"MATCHES", NSMatchesPredicateOperatorType},
    {u"CONTAINS", NSContainsPredicateOperatorType},
    {u"BEGINSWITH", NSBeginsWithPredicateOperatorType},
    {u"ENDSWITH", NSEndsWithPredicateOperatorType},
    {u"BETWEEN", NSBetweenPredicateOperatorType},
};

constexpr bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }
constexpr bool beginsWord(char16_t unit) noexcept {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || unit == u'_' ||
           (unit >= 0x80 && !isWhiteSpace(unit));
}
constexpr bool isInWord(char16_t unit) noexcept { return beginsWord(unit) || isDigit(unit); }
constexpr char16_t upper(char16_t unit) noexcept {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
}

const Reserved* reserved(std::u16string_view word) noexcept {
    const auto* const found = std::find_if(std::begin(reservedWords), std::end(reservedWords),
                                           [word](const Reserved& each) { return isSameWord(word, each.text); });
    return found == std::end(reservedWords) ? nullptr : found;
}

}  // namespace

bool isSameWord(std::u16string_view word, std::u16string_view upperCase) noexcept {
    return word.size() == upperCase.size() && std::equal(word.begin(), word.end(), upperCase.begin(),
                                                         [](char16_t a, char16_t b) { return upper(a) == b; });
}

bool isReservedWord(std::u16string_view word) noexcept { return reserved(word); }

bool isPlainKeyPath(std::u16string_view path) noexcept {
    for (;;) {
        const std::size_t dot = path.find(u'.');
        std::u16string_view key = path.substr(0, dot);
        if (key.starts_with(u'@'))
            key.remove_prefix(1);
        if (key.empty() || !beginsWord(key[0]) || !std::all_of(key.begin(), key.end(), isInWord))
            return false;
        if (dot == path.npos)
            return true;
        path.remove_prefix(dot + 1);
    }
}

// --- Errors ----------------------------------------------------------------------------------------------------------

void PredicateLexer::fail(std::size_t position, std::u16string_view expected) const {
    NSException::raise(NSInvalidArgumentException, u"Unable to parse the format string \"%S\": %S is expected at %lu",
                       format_, expected, position);
}

void PredicateLexer::failWithout(std::size_t position, std::u16string_view missing) const {
    NSException::raise(NSInvalidArgumentException, u"Unable to parse the format string \"%S\": there is no %S at %lu",
                       format_, missing, position);
}

// --- Tokens ----------------------------------------------------------------------------------------------------------

void PredicateLexer::skipSpace() noexcept {
    while (position_ < format_.size() && isWhiteSpace(format_[position_]))
        ++position_;
}

bool PredicateLexer::isBefore(char16_t sign) noexcept {
    skipSpace();
    return position_ < format_.size() && at(0) == sign;
}

bool PredicateLexer::take(char16_t sign) noexcept {
    const bool isThere = isBefore(sign);
    position_ += isThere;
    return isThere;
}

bool PredicateLexer::isBeforeNumber() noexcept {
    skipSpace();
    return isDigit(at(0)) || (at(0) == u'.' && isDigit(at(1)));
}

PredicateToken PredicateLexer::next() {
    skipSpace();
    PredicateToken token;
    token.position = position_;
    if (position_ == format_.size())
        return token;
    const char16_t unit = at(0);
    if (beginsWord(unit) || unit == u'@' || unit == u'#')
        readWord(token);
    else if (isBeforeNumber())
        readNumber(token);
    else if (unit == u'"' || unit == u'\'')
        readText(token);
    else if (unit == u'%')
        readConversion(token);
    else if (!readComparison(token))
        readSign(token);
    return token;
}

std::u16string_view PredicateLexer::word() noexcept {
    const std::size_t start = position_;
    position_ += at(0) == u'@';
    while (isInWord(at(0)))
        ++position_;
    return format_.substr(start, position_ - start);
}

void PredicateLexer::readWord(PredicateToken& token) {
    token.kind = Kind::Name;
    token.isEscaped = at(0) == u'#';
    position_ += token.isEscaped;
    const std::u16string_view first = word();
    if (first.empty() || first == u"@")
        fail(token.position, u"a key");
    if (const Reserved* const known = token.isEscaped ? nullptr : reserved(first); known && at(0) != u':') {
        token.kind = known->isPlace ? Kind::Name : known->kind;
        token.word = known->word;
        token.type = known->type;
    }
    if (token.kind != Kind::Name)
        return;
    token.text = first;
    if (at(0) == u':')
        for (; at(0) == u':' || isInWord(at(0)); ++position_)
            token.text += at(0);
    else
        readKeys(token.text);
}

/// What follows of a path: a full stop and a key, again and again.
void PredicateLexer::readKeys(std::u16string& path) {
    while (at(0) == u'.' && (beginsWord(at(1)) || at(1) == u'@' || at(1) == u'#')) {
        position_ += at(1) == u'#' ? 2 : 1;
        const std::u16string_view key = word();
        if (key.empty() || key == u"@")
            fail(position_, u"a key");
        (path += u'.') += key;
    }
}

std::u16string PredicateLexer::path() {
    skipSpace();
    position_ += at(0) == u'#';
    std::u16string path(word());
    if (path.empty() || path == u"@")
        fail(position_, u"a key");
    readKeys(path);
    return path;
}

// --- Constants -------------------------------------------------------------------------------------------------------

void PredicateLexer::readText(PredicateToken& token) {
    const char16_t quote = at(0);
    ++position_;
    std::u16string text;
    for (;;) {
        const char16_t stops[] = {quote, u'\\', u'\0'};
        const std::size_t stop = format_.find_first_of(std::u16string_view(stops, 2), position_);
        if (stop == format_.npos)
            fail(token.position, u"a text with its closing quotation mark");
        text += format_.substr(position_, stop - position_);
        position_ = stop + 1;
        if (format_[stop] == quote)
            break;
        text += readEscaped();
    }
    token.kind = Kind::Constant;
    token.value = NSString::stringWithCharacters(text);
}

char16_t PredicateLexer::readEscaped() {
    constexpr std::u16string_view letters = u"nrtbf", meanings = u"\n\r\t\b\f";
    if (position_ == format_.size())
        fail(position_, u"a character behind the backslash");
    const char16_t letter = format_[position_++];
    if (letter == u'x' || letter == u'u')
        return readHexadecimal(letter == u'x' ? 2 : 4);
    const std::size_t known = letters.find(letter);
    return known == letters.npos ? letter : meanings[known];
}

char16_t PredicateLexer::readHexadecimal(int digits) {
    unsigned value = 0;
    for (; digits; --digits, ++position_) {
        const std::size_t digit = std::u16string_view(u"0123456789ABCDEF").find(upper(at(0)));
        if (position_ >= format_.size() || digit == std::u16string_view::npos)
            fail(position_, u"a hexadecimal digit");
        value = value << 4 | static_cast<unsigned>(digit);
    }
    return static_cast<char16_t>(value);
}

void PredicateLexer::readNumber(PredicateToken& token) {
    token.kind = Kind::Constant;
    token.isNumber = true;
    constexpr std::u16string_view letters = u"XOB";
    constexpr unsigned bases[] = {16, 8, 2};
    if (const std::size_t base = letters.find(upper(at(1))); at(0) == u'0' && base != letters.npos) {
        position_ += 2;
        return readDigits(token, bases[base]);
    }
    std::size_t end = position_;
    const auto skipDigits = [&] {
        while (end < format_.size() && isDigit(format_[end]))
            ++end;
    };
    skipDigits();
    const std::size_t whole = end;
    if (end + 1 < format_.size() && format_[end] == u'.' && isDigit(format_[++end]))
        skipDigits();
    else
        end = whole;
    if (const std::size_t e = end; e < format_.size() && upper(format_[e]) == u'E') {
        end += e + 1 < format_.size() && (format_[e + 1] == u'+' || format_[e + 1] == u'-') ? 2 : 1;
        const std::size_t digits = end;
        skipDigits();
        end = end == digits ? e : end;
    }
    if (end == whole)
        return readDigits(token, 10);
    double value = 0;
    scanReal(format_.substr(position_, end - position_), value);
    token.value = NSNumber::numberWithDouble(value);
    position_ = end;
}

/// A whole number; one in decimals that does not fit into 64 bits is a real one.
void PredicateLexer::readDigits(PredicateToken& token, unsigned base) {
    const std::size_t start = position_;
    NSUInteger value = 0;
    bool fits = true;
    for (;; ++position_) {
        const std::size_t digit = std::u16string_view(u"0123456789ABCDEF").find(upper(at(0)));
        if (position_ >= format_.size() || digit >= base)
            break;
        fits = fits && !__builtin_mul_overflow(value, base, &value) && !__builtin_add_overflow(value, digit, &value);
    }
    if (position_ == start)
        fail(start, u"a digit");
    if (!fits && base != 10)
        fail(start, u"a number of at most 64 bits");
    double real = 0;
    if (!fits)
        scanReal(format_.substr(start, position_ - start), real);
    if (!fits)
        token.value = NSNumber::numberWithDouble(real);
    else if (value <= static_cast<NSUInteger>(std::numeric_limits<NSInteger>::max()))
        token.value = NSNumber::numberWithInteger(static_cast<NSInteger>(value));
    else
        token.value = NSNumber::numberWithUnsignedInteger(value);
}

// --- Signs -----------------------------------------------------------------------------------------------------------

void PredicateLexer::readConversion(PredicateToken& token) {
    ++position_;
    if (at(0) == u'%') {
        ++position_;
        token.kind = Kind::Sign;
        token.sign = u'%';
        return;
    }
    // Width, precision and size change nothing.
    constexpr std::u16string_view skipped = u"0123456789.hlqjztL", known = u"@KdDiuUxXoOcCfFeEgGaAsS";
    while (at(0) && skipped.find(at(0)) != skipped.npos)
        ++position_;
    if (!at(0) || known.find(at(0)) == known.npos)
        fail(position_, u"a conversion");
    token.kind = Kind::Conversion;
    token.sign = at(0);
    ++position_;
}

bool PredicateLexer::readComparison(PredicateToken& token) noexcept {
    struct Comparison {
        std::u16string_view text;
        NSPredicateOperatorType type;
    };
    constexpr Comparison comparisons[] = {
        {u"==", NSEqualToPredicateOperatorType},
        {u"=<", NSLessThanOrEqualToPredicateOperatorType},
        {u"<=", NSLessThanOrEqualToPredicateOperatorType},
        {u"=>", NSGreaterThanOrEqualToPredicateOperatorType},
        {u">=", NSGreaterThanOrEqualToPredicateOperatorType},
        {u"!=", NSNotEqualToPredicateOperatorType},
        {u"<>", NSNotEqualToPredicateOperatorType},
        {u"=", NSEqualToPredicateOperatorType},
        {u"<", NSLessThanPredicateOperatorType},
        {u">", NSGreaterThanPredicateOperatorType},
    };
    for (const Comparison& each : comparisons)
        if (format_.substr(position_).starts_with(each.text)) {
            position_ += each.text.size();
            token.kind = Kind::Comparison;
            token.type = each.type;
            return true;
        }
    return false;
}

void PredicateLexer::readSign(PredicateToken& token) {
    const char16_t unit = at(0);
    const bool isDouble = at(1) == unit;
    token.kind = Kind::Sign;
    token.sign = unit;
    ++position_;
    if (unit == u'$') {
        token.kind = Kind::Variable;
        token.text = word();
        if (token.text.empty())
            fail(token.position, u"the name of a variable");
    } else if (unit == u'!' || ((unit == u'&' || unit == u'|') && isDouble)) {
        token.kind = Kind::Word;
        token.word = unit == u'!' ? Word::Not : unit == u'&' ? Word::And : Word::Or;
        position_ += unit != u'!';
    } else if (unit == u'*' && isDouble) {
        token.sign = PredicateToken::power;
        ++position_;
    } else if (unit == PredicateToken::power) {
        token.sign = 0;
    }
}

NSComparisonPredicateOptions PredicateLexer::options() {
    NSUInteger options = 0;
    if (!take(u'['))
        return {};
    for (; !take(u']'); ++position_) {
        const std::size_t letter = std::u16string_view(u"CDNL").find(upper(at(0)));
        if (position_ >= format_.size() || letter == std::u16string_view::npos)
            fail(position_, u"one of the letters c, d, n, l");
        options |= NSUInteger(1) << letter;
    }
    return static_cast<NSComparisonPredicateOptions>(options);
}

}  // namespace tovi::detail
