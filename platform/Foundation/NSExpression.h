#pragma once

#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Foundation/PredicateNode.h>

namespace tovi {

class NSPredicate;
namespace detail {
struct PredicateFunction;
}  // namespace detail

enum NSExpressionType : NSUInteger {
    NSConstantValueExpressionType = 0,
    NSEvaluatedObjectExpressionType = 1,
    NSVariableExpressionType = 2,
    NSKeyPathExpressionType = 3,
    NSFunctionExpressionType = 4,
    NSUnionSetExpressionType = 5,
    NSIntersectSetExpressionType = 6,
    NSMinusSetExpressionType = 7,
    NSSubqueryExpressionType = 13,
    NSAggregateExpressionType = 14,
    NSConditionalExpressionType = 20
};

/// A value to be worked out from an object. NSPredicate.h says how it is written.
///
/// **Functions** by the names with colons; where there is one argument, the colon may be missing in a format. A list of
/// numbers may be given as a collection, or as the arguments themselves; nil in it is passed over.
///
///     sum:  count:  min:  max:  average:  median:  mode: (a list)  stddev: (of the population)      of a list
///     add:to:  from:subtract:  multiply:by:  divide:by:  modulus:by:  raise:toPower:                written + - * / %%
///     ** sqrt:  log: (base 10)  ln:  exp:  ceiling:  floor:  trunc:  abs: bitwiseAnd:with:  bitwiseOr:with:
///     bitwiseXor:with:  leftshift:by:  rightshift:by:  onesComplement:  not: uppercase:  lowercase:  noindex: (the
///     argument itself) random (0 to less than 1)  random: and randomn: (a whole number below the argument)  now
///     castObject:toType:           written CAST; to "NSDate" (from seconds), "NSNumber", "NSString"
///     objectFrom:withIndex:  firstObject:  lastObject:  size:     written list[0], list[FIRST], list[LAST], list[SIZE]
///     distanceToLocation:fromLocation:     sends `distanceFromLocation:` to the first
///
/// A function of nil is nil. Integers stay integers, and are divided as such, toward 0; what does not fit, and what is
/// divided by 0, becomes a real number. A function that gets what it cannot work on raises NSInvalidArgumentException,
/// as does an index that a list does not have.
class TOVI_EXPORT NSExpression final : public detail::PredicateNode {
    TOVI_DECLARE_CLASS(NSExpression)

public:
    template <class... A>
    static Ref<NSExpression> expressionWithFormat(std::u16string_view format, const A&... arguments);
    static Ref<NSExpression> expressionWithFormat_arguments(std::u16string_view format, FormatArguments arguments);

    static Ref<NSExpression> expressionForConstantValue(NSObject* value);  ///< NSNull is kept as nil
    static Ref<NSExpression> expressionForEvaluatedObject();
    static Ref<NSExpression> expressionForVariable(const NSString& name);  ///< without "$"
    static Ref<NSExpression> expressionForKeyPath(const NSString& keyPath);
    /// Raises NSInvalidArgumentException when there is no such function, or it takes another number of arguments.
    static Ref<NSExpression> expressionForFunction_arguments(const NSString& name, const NSArray& arguments);
    /// A message to the operand's value, with boxed arguments. `valueForKeyPath:` with a constant becomes a key path.
    static Ref<NSExpression> expressionForFunction_selectorName_arguments(NSExpression& operand, const NSString& name,
                                                                          const NSArray& arguments);
    /// The list of these expressions' values, nil as NSNull. Of constants, it is a constant itself.
    static Ref<NSExpression> expressionForAggregate(const NSArray& expressions);
    /// Of a set, or what a set can be made of on the left; of any collection on the right (of a dictionary, its
    /// values).
    static Ref<NSExpression> expressionForUnionSet_with(NSExpression& left, NSExpression& right);
    static Ref<NSExpression> expressionForIntersectSet_with(NSExpression& left, NSExpression& right);
    static Ref<NSExpression> expressionForMinusSet_with(NSExpression& left, NSExpression& right);
    /// The list of the collection's elements for which the predicate is true when the variable is bound to them. SELF
    /// and keys are those of the object outside. Nothing is found in nil.
    static Ref<NSExpression> expressionForSubquery_usingIteratorVariable_predicate(NSExpression& collection,
                                                                                   const NSString& variable,
                                                                                   NSPredicate& predicate);
    static Ref<NSExpression> expressionForConditional_trueExpression_falseExpression(NSPredicate& predicate,
                                                                                     NSExpression& whenTrue,
                                                                                     NSExpression& whenFalse);

    NSExpressionType expressionType() const noexcept { return type_; }
    // Asked of an expression of another type they raise NSInvalidArgumentException.
    id constantValue() const;
    Ref<NSString> variable() const;  ///< a subquery's, too
    Ref<NSString> keyPath() const;
    Ref<NSString> function() const;        ///< the name, or the selector's
    RefPtr<NSExpression> operand() const;  ///< of a message or a key path; nil where that is the evaluated object
    Ref<NSArray> arguments() const;        ///< of a function
    id collection() const;                 ///< of a list, its expressions; of a subquery, the expression
    Ref<NSExpression> leftExpression() const;
    Ref<NSExpression> rightExpression() const;
    Ref<NSPredicate> predicate() const;
    Ref<NSExpression> trueExpression() const;
    Ref<NSExpression> falseExpression() const;

    /// The value for the object, with values for variables under their names.
    id expressionValueWithObject_context(const NSObject* object, const NSDictionary* variables) const;

private:
    friend class detail::PredicateParser;
    using Type = NSExpressionType;

    NSExpression() noexcept : PredicateNode(FromArchive()) {}
    NSExpression(Type type, RefPtr<NSString> name, Parts parts) noexcept
        : PredicateNode(std::move(parts)), type_(type), name_(std::move(name)) {}
    static Ref<NSExpression> make(Type type, RefPtr<NSString> name, Parts parts);
    static Ref<NSExpression> makeFunction(const detail::PredicateFunction& function, Parts arguments);
    static Ref<NSExpression> makeMessage(const NSString& name, Parts operandAndArguments);
    /// The keys behind what is there; without an operand, the evaluated object's.
    static Ref<NSExpression> makePath(RefPtr<NSExpression> operand, std::u16string_view path);
    const NSExpression& expect(bool isSo, std::string_view what) const;
    Ref<NSExpression> expression(std::size_t index) const { return static_cast<NSExpression&>(*parts_[index]); }
    bool isMessage() const noexcept { return type_ == NSFunctionExpressionType && !function_; }
    bool isWellFormed() const;

    bool isSameAlone(const PredicateNode& other) const override;
    NSUInteger hashAlone() const override;
    Ref<PredicateNode> withParts(Parts parts) const override;
    const NSString* variableName() const override { return type_ == NSVariableExpressionType ? name_.get() : nullptr; }
    const NSString* boundName() const override { return type_ == NSSubqueryExpressionType ? name_.get() : nullptr; }

    // How it is written: NSExpression-Format.cpp.
    void write(StringBuilder& out, std::size_t index) const override;
    void writeFunction(StringBuilder& out, std::size_t index) const;
    void writePath(StringBuilder& out, std::size_t index) const;
    std::u16string_view infix() const noexcept;
    bool isPostfix() const noexcept;
    Binding binding() const override;
    bool parenthesizes(std::size_t index, Binding part) const override;

    void compile(detail::PredicateCompiler& out, std::size_t index) const override;
    Ref<NSArray> archivedFields() const override;
    bool setArchivedFields(const NSArray& fields) override;

    Type type_ = NSConstantValueExpressionType;
    id constant_;
    RefPtr<NSString> name_;                                ///< of a variable, a key path or a message
    const detail::PredicateFunction* function_ = nullptr;  ///< null for a message
};

template <class... A>
Ref<NSExpression> NSExpression::expressionWithFormat(std::u16string_view format, const A&... arguments) {
    const FormatArgumentList<sizeof...(A)> list{FormatArgument(arguments)...};
    return expressionWithFormat_arguments(format, list);
}

}  // namespace tovi
