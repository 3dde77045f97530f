#pragma once

#include <functional>

#include <ToviFoundationKit/Foundation/PredicateNode.h>

namespace tovi {

/// A question that objects answer with yes or no, usually written as a text:
///
///     NSPredicate::predicateWithFormat(u"sender.name CONTAINS[cd] %@ AND date >= %@", name, monday)
///
/// **Conditions.** `AND` `&&`, `OR` `||`, `NOT` `!`, parentheses, `TRUEPREDICATE`, `FALSEPREDICATE`, and comparisons of
/// two expressions (NSComparisonPredicate.h): `=` `==` `!=` `<>` `<` `<=` `=<` `>` `>=` `=>`, `BETWEEN {low, high}`,
/// `IN`, `CONTAINS`, `BEGINSWITH`, `ENDSWITH`, `LIKE`, `MATCHES`. Behind an operator, `[c]` compares texts without
/// case, `[d]` without diacritics, `[n]` unit by unit. With `ANY` (`SOME`), `ALL` or `NONE` in front the comparison is
/// made with each element of the collection on the left. `NOT` binds tighter than `AND`, that tighter than `OR`.
///
/// **Expressions** (NSExpression.h).
///
///     SELF   sender.name   items.@sum.price   $variable   $variable.name       what is read from the object, or bound
///     "text"   'text'   12   -0.5   1e3   0xFF   0b11   TRUE   NO   NIL   NULL   {1, "b", key}
///     + - * / **   ( )   %% (the remainder)                                    arithmetic
///     list[0]   list[FIRST]   list[LAST]   list[SIZE]   table["key"]
///     a UNION b   a INTERSECT b   a MINUS b                                     sets
///     sqrt(x)   max({a, b})   uppercase(name)   bitwiseAnd:with:(flags, 4)      functions
///     FUNCTION(receiver, 'selector:', argument)                                a message
///     CAST(761356800, "NSDate")   TERNARY(condition, a, b)   SUBQUERY(items, $item, $item.price > 9).@count
///
/// Words of the language are recognised in any case; `#` makes a key of one: `#size > 3`. In texts a backslash stands
/// before a quotation mark or another backslash; escapes with n, r, t, b, f, and with
/// x and two or u and four hexadecimal digits, are those of C.
///
/// **Arguments.** `%@` is an object (or another predicate or expression), `%K` a key path; `%d %i %u %x %c %f %g` and
/// the like, with or without h, l, ll, q, are numbers, `%s %S` texts. None is looked for within quotation marks.
/// Arguments of another type are converted; surplus ones are ignored.
///
/// A format that cannot be read raises NSInvalidArgumentException with the place, counted in UTF-16 units from 0.
/// Predicates are immutable, of any depth, and may be used from several threads at once.
class TOVI_EXPORT NSPredicate : public detail::PredicateNode {
    TOVI_DECLARE_CLASS(NSPredicate)

public:
    using Block = std::function<bool(NSObject* object, const NSDictionary* variables)>;

    template <class... A>
    static Ref<NSPredicate> predicateWithFormat(std::u16string_view format, const A&... arguments);
    static Ref<NSPredicate> predicateWithFormat_arguments(std::u16string_view format, FormatArguments arguments);
    /// The same with boxed arguments; NSNull is nil.
    static Ref<NSPredicate> predicateWithFormat_argumentArray(std::u16string_view format, const NSArray* arguments);
    static Ref<NSPredicate> predicateWithValue(bool value);  ///< that is always so
    /// Asks the callable. Such a predicate has no format that can be read, and cannot be archived.
    static Ref<NSPredicate> predicateWithBlock(Block block);

    /// Raises NSInvalidArgumentException where things are compared that cannot be, a function gets what it cannot work
    /// on, or a variable has no value; NSUndefinedKeyException for a key that the object does not have.
    bool evaluateWithObject(const NSObject* object) const {
        return evaluateWithObject_substitutionVariables(object, nullptr);
    }
    bool evaluateWithObject(const NSObject& object) const { return evaluateWithObject(&object); }
    /// With values for variables, under their names without "$".
    bool evaluateWithObject_substitutionVariables(const NSObject* object, const NSDictionary* variables) const;
    /// With the values (or expressions) in the place of the variables; others stay.
    Ref<NSPredicate> predicateWithSubstitutionVariables(const NSDictionary& variables) const;

    /// A format for an equal predicate, as long as its constants are texts, numbers, dates, nil and lists of these. A
    /// date is `CAST(-3600.000000, "NSDate")`: its seconds since the reference date with six decimals, or as many as it
    /// takes.
    Ref<NSString> predicateFormat() const { return description(); }

protected:
    using PredicateNode::PredicateNode;
};

template <class... A>
Ref<NSPredicate> NSPredicate::predicateWithFormat(std::u16string_view format, const A&... arguments) {
    const FormatArgumentList<sizeof...(A)> list{FormatArgument(arguments)...};
    return predicateWithFormat_arguments(format, list);
}

}  // namespace tovi
