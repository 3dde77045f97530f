#pragma once

#include <ToviFoundationKit/Foundation/NSExpression.h>
#include <ToviFoundationKit/Foundation/NSPredicate.h>

namespace tovi {

enum NSPredicateOperatorType : NSUInteger {
    NSLessThanPredicateOperatorType = 0,
    NSLessThanOrEqualToPredicateOperatorType = 1,
    NSGreaterThanPredicateOperatorType = 2,
    NSGreaterThanOrEqualToPredicateOperatorType = 3,
    NSEqualToPredicateOperatorType = 4,
    NSNotEqualToPredicateOperatorType = 5,
    NSMatchesPredicateOperatorType = 6,
    NSLikePredicateOperatorType = 7,
    NSBeginsWithPredicateOperatorType = 8,
    NSEndsWithPredicateOperatorType = 9,
    NSInPredicateOperatorType = 10,
    NSCustomSelectorPredicateOperatorType = 11,
    NSContainsPredicateOperatorType = 99,
    NSBetweenPredicateOperatorType = 100
};

enum NSComparisonPredicateModifier : NSUInteger {
    NSDirectPredicateModifier = 0,
    NSAllPredicateModifier = 1,  ///< of the collection on the left: true when it is empty
    NSAnyPredicateModifier = 2
};

enum NSComparisonPredicateOptions : NSUInteger {
    NSCaseInsensitivePredicateOption = 1,       ///< c: by full case folding, without locale
    NSDiacriticInsensitivePredicateOption = 2,  ///< d: nonspacing marks do not count
    NSNormalizedPredicateOption = 4,            ///< n: unit by unit, whatever the other options
    NSLocaleSensitivePredicateOption = 8        ///< l: accepted, no locale has rules of its own here
};
constexpr NSComparisonPredicateOptions operator|(NSComparisonPredicateOptions a,
                                                 NSComparisonPredicateOptions b) noexcept {
    return static_cast<NSComparisonPredicateOptions>(static_cast<NSUInteger>(a) | static_cast<NSUInteger>(b));
}

/// A comparison of the values of two expressions.
///
/// NSNull counts as nil. Nil is equal to nil alone; every other comparison with nil is false, but for its place in a
/// list
/// (`NIL IN {NIL}`).
///
/// **Equality** is that of objects: texts unit by unit, or as the options say; numbers by value. **Order** is that of
/// `compare:`, for texts with options as `compare:options:`; values that cannot be ordered with each other, such as a
/// text and a number, raise NSInvalidArgumentException. `BETWEEN` includes both ends.
///
/// `IN` looks for a value in a list, a set or a dictionary's values, or for a text in a text; `CONTAINS` is the same
/// with the sides exchanged. `BEGINSWITH`, `ENDSWITH` and the search for a text take canonically equivalent text as the
/// same; a text begins and ends with the empty one but does not contain it, as in NSString.
///
/// `LIKE` compares the whole text with a pattern in which `*` is any text and `?` any character (a base and what
/// combines with it); a backslash makes a plain character of either. `MATCHES` compares the whole text with a regular
/// expression in ICU's notation; one that is not valid, and one that takes too long, raise
/// NSInvalidArgumentException. All but `IN` and `CONTAINS` need texts on both sides, else they raise that too.
class TOVI_EXPORT NSComparisonPredicate final : public NSPredicate {
    TOVI_DECLARE_CLASS(NSComparisonPredicate)

public:
    static Ref<NSComparisonPredicate> initWithLeftExpression_rightExpression_modifier_type_options(
        NSExpression& left, NSExpression& right, NSComparisonPredicateModifier modifier, NSPredicateOperatorType type,
        NSComparisonPredicateOptions options = {});
    /// Sends the selector, which takes one object and answers a truth value, to the left value.
    static Ref<NSComparisonPredicate> initWithLeftExpression_rightExpression_customSelector(NSExpression& left,
                                                                                            NSExpression& right,
                                                                                            Selector selector);

    Ref<NSExpression> leftExpression() const { return expression(0); }
    Ref<NSExpression> rightExpression() const { return expression(1); }
    NSComparisonPredicateModifier comparisonPredicateModifier() const noexcept { return modifier_; }
    NSPredicateOperatorType predicateOperatorType() const noexcept { return type_; }
    NSComparisonPredicateOptions options() const noexcept { return options_; }
    Selector customSelector() const noexcept { return selector_; }  ///< null unless the type is the custom one

private:
    friend class detail::PredicateParser;
    NSComparisonPredicate() noexcept : NSPredicate(FromArchive()) {}
    explicit NSComparisonPredicate(Parts parts) noexcept : NSPredicate(std::move(parts)) {}
    Ref<NSExpression> expression(std::size_t index) const { return static_cast<NSExpression&>(*parts_[index]); }
    Ref<NSComparisonPredicate> with(NSComparisonPredicateModifier modifier, Parts parts) const;

    bool isSameAlone(const PredicateNode& other) const override;
    NSUInteger hashAlone() const override;
    Ref<PredicateNode> withParts(Parts parts) const override;
    void write(StringBuilder& out, std::size_t index) const override;
    Binding binding() const override { return Binding::Truth; }
    void compile(detail::PredicateCompiler& out, std::size_t index) const override;
    Ref<NSArray> archivedFields() const override;
    bool setArchivedFields(const NSArray& fields) override;

    NSComparisonPredicateModifier modifier_ = NSDirectPredicateModifier;
    NSPredicateOperatorType type_ = NSEqualToPredicateOperatorType;
    NSComparisonPredicateOptions options_{};
    Selector selector_;
};

}  // namespace tovi
