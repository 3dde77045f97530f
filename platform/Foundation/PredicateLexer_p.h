#pragma once

#include <string>

#include <ToviFoundationKit/Foundation/NSComparisonPredicate.h>

namespace tovi::detail {

struct PredicateToken {
    enum class Kind : unsigned char {
        End,
        Word,        ///< one of the language's
        Comparison,  ///< by word or sign
        Name,        ///< a key path, or a function's or selector's name
        Variable,
        Constant,
        Conversion,  ///< of an argument
        Sign
    };
    enum class Word : unsigned char {
        And,
        Or,
        Not,
        Any,
        All,
        None,
        Nil,
        Self,
        True,
        False,
        TruePredicate,
        FalsePredicate,
        Union,
        Intersect,
        Minus
    };
    static constexpr char16_t power = u'^';  ///< the sign for **; for %% it is %

    Kind kind = Kind::End;
    Word word{};
    NSPredicateOperatorType type{};
    char16_t sign = 0;  ///< or the conversion's letter
    bool isEscaped = false;
    bool isNumber = false;
    std::size_t position = 0;
    std::u16string text;  ///< of a name or a variable
    id value;             ///< of a constant

    bool is(Word wanted) const noexcept { return kind == Kind::Word && word == wanted; }
    bool is(char16_t wanted) const noexcept { return kind == Kind::Sign && sign == wanted; }
};

/// Takes a format apart.
class PredicateLexer {
public:
    explicit PredicateLexer(std::u16string_view format) noexcept : format_(format) {}

    PredicateToken next();
    /// Whether the next sign is this one; takes it then.
    bool take(char16_t sign) noexcept;
    bool isBefore(char16_t sign) noexcept;
    bool isBeforeNumber() noexcept;
    /// The letters in brackets behind an operator, if there are any.
    NSComparisonPredicateOptions options();
    /// The keys behind a full stop.
    std::u16string path();

    [[noreturn]] void fail(std::size_t position, std::u16string_view expected) const;
    [[noreturn]] void failWithout(std::size_t position, std::u16string_view missing) const;

private:
    char16_t at(std::size_t offset) const noexcept {
        return position_ + offset < format_.size() ? format_[position_ + offset] : u'\0';
    }
    void skipSpace() noexcept;
    std::u16string_view word() noexcept;
    void readWord(PredicateToken& token);
    void readKeys(std::u16string& path);
    void readText(PredicateToken& token);
    char16_t readEscaped();
    char16_t readHexadecimal(int digits);
    void readNumber(PredicateToken& token);
    void readDigits(PredicateToken& token, unsigned base);
    void readConversion(PredicateToken& token);
    bool readComparison(PredicateToken& token) noexcept;
    void readSign(PredicateToken& token);

    std::u16string_view format_;
    std::size_t position_ = 0;
};

/// Whether the word means something in the language, in any case, so that a key of that name needs "#".
bool isReservedWord(std::u16string_view word) noexcept;
/// Whether the path can be written as it is.
bool isPlainKeyPath(std::u16string_view path) noexcept;
/// The word without its case.
bool isSameWord(std::u16string_view word, std::u16string_view upperCase) noexcept;

}  // namespace tovi::detail
