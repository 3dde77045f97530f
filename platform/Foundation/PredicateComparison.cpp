#include <ToviFoundationKit/Foundation/PredicateComparison_p.h>

#include <algorithm>

#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSDictionary.h>
#include <ToviFoundationKit/Foundation/NSNull.h>
#include <ToviFoundationKit/Foundation/NumberMath_p.h>
#include <ToviFoundationKit/Foundation/PredicateOperator_p.h>
#include <ToviFoundationKit/Foundation/TextSearch_p.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi::detail {

namespace {

NSStringCompareOptions searchOptions(NSComparisonPredicateOptions options) {
    if (options & NSNormalizedPredicateOption)
        return NSLiteralSearch;
    const auto none = NSStringCompareOptions{};
    return (options & NSCaseInsensitivePredicateOption ? NSCaseInsensitiveSearch : none) |
           (options & NSDiacriticInsensitivePredicateOption ? NSDiacriticInsensitiveSearch : none);
}

}  // namespace

PredicateComparison::PredicateComparison(const NSComparisonPredicate& predicate)
    : type_(predicate.predicateOperatorType()),
      modifier_(predicate.comparisonPredicateModifier()),
      selector_(predicate.customSelector()),
      search_(searchOptions(predicate.options())),
      comparesUnits_(!(search_ & (NSCaseInsensitiveSearch | NSDiacriticInsensitiveSearch))) {
    constexpr NSUInteger few = 8;
    const Ref<NSExpression> right = predicate.rightExpression();
    if (type_ != NSInPredicateOperatorType || !comparesUnits_ ||
        right->expressionType() != NSConstantValueExpressionType)
        return;
    const id list = right->constantValue();
    if (!list || &list->isa() != &NSArray::classObject() || static_cast<NSArray&>(*list).count() < few)
        return;
    list_ = list.get();
    listed_ = NSSet::setWithArray(static_cast<NSArray&>(*list));
}

bool PredicateComparison::holds(NSObject* left, NSObject* right) {
    if (modifier_ == NSDirectPredicateModifier) [[likely]]
        return compares(left, right);
    const bool wanted = modifier_ == NSAnyPredicateModifier;
    if (isNull(left))
        return !wanted;
    if (!as<NSArray>(left) && !as<NSSet>(left))
        NSException::raise(NSInvalidArgumentException,
                           u"The left hand side for an ALL or ANY operator must be a list or a set, not %@", left);
    for (NSObject& each : FastEnumeration(*left)) {
        const Ref<NSObject> held(each);
        if (compares(&each, right) == wanted)
            return wanted;
    }
    return !wanted;
}

bool PredicateComparison::compares(NSObject* left, NSObject* right) {
    left = isNull(left) ? nullptr : left;
    right = isNull(right) ? nullptr : right;
    const bool hasBoth = left && right;
    switch (type_) {
        case NSEqualToPredicateOperatorType:
            return isSame(left, right);
        case NSNotEqualToPredicateOperatorType:
            return !isSame(left, right);
        case NSLessThanPredicateOperatorType:
            return hasBoth && order(*left, *right) < 0;
        case NSLessThanOrEqualToPredicateOperatorType:
            return hasBoth && order(*left, *right) <= 0;
        case NSGreaterThanPredicateOperatorType:
            return hasBoth && order(*left, *right) > 0;
        case NSGreaterThanOrEqualToPredicateOperatorType:
            return hasBoth && order(*left, *right) >= 0;
        case NSBetweenPredicateOperatorType:
            return isBetween(left, right);
        case NSInPredicateOperatorType:
            return isIn(left, right);
        case NSContainsPredicateOperatorType:
            return isIn(right, left);
        case NSCustomSelectorPredicateOperatorType:
            return hasBoth && send<bool>(*left, selector_, right);
        default:
            return hasBoth && textMatches(left, right);
    }
}

bool PredicateComparison::isSame(const NSObject* left, const NSObject* right) const {
    if (left == right || !left || !right)
        return left == right;
    if (!comparesUnits_)
        if (const auto* a = as<NSString>(left), *b = as<NSString>(right); a && b)
            return a->compare_options(*b, search_) == NSOrderedSame;
    return left->isEqual(right);
}

NSInteger PredicateComparison::order(NSObject& left, const NSObject& right) const {
    const Class& type = left.isa();
    if (&type == &right.isa()) {
        if (&type == &NSNumber::classObject())
            return static_cast<NSNumber&>(left).compare(static_cast<const NSNumber&>(right));
        if (&type == &NSDate::classObject())
            return static_cast<NSDate&>(left).compare(static_cast<const NSDate&>(right));
    }
    if (const auto* a = as<NSString>(&left), *b = as<NSString>(&right); a && b)
        return a->compare_options(*b, search_);
    return send<NSInteger>(left, "compare:"_sel, right);
}

bool PredicateComparison::isBetween(NSObject* value, const NSObject* bounds) const {
    const auto* list = as<NSArray>(bounds);
    if (!list || list->count() != 2)
        NSException::raise(NSInvalidArgumentException, u"BETWEEN needs a list of two bounds, not %@", bounds);
    const NSObject &low = (*list)[0], &high = (*list)[1];
    return value && !isNull(&low) && !isNull(&high) && order(*value, low) >= 0 && order(*value, high) <= 0;
}

bool PredicateComparison::isIn(NSObject* value, const NSObject* collection) {
    if (!collection)
        return false;
    if (as<NSString>(collection))
        return value && textMatches(collection, value);
    const Ref<NSObject> wanted = value ? Ref<NSObject>(*value) : NSNull::null();
    if (collection == list_)
        return listed_->containsObject(wanted);
    Ref<NSObject> elements = share(*collection);
    if (const auto* dictionary = as<NSDictionary>(collection))
        elements = dictionary->allValues();
    const auto* list = as<NSArray>(elements.get());
    const auto* set = as<NSSet>(elements.get());
    if (!list && !set)
        NSException::raise(NSInvalidArgumentException,
                           u"Can't look for value (%@) in value (%@); value is not a collection", wanted, collection);
    if (comparesUnits_)
        return set ? set->containsObject(wanted) : list->containsObject(wanted);
    return std::ranges::any_of(FastEnumeration(elements),
                               [&](const NSObject& each) { return isSame(value, isNull(&each) ? nullptr : &each); });
}

bool PredicateComparison::textMatches(const NSObject* text, const NSObject* pattern) {
    const auto *a = as<NSString>(text), *b = as<NSString>(pattern);
    if (a && b) [[likely]]
        return textMatches(a->view(), b->view());
    NSException::raise(NSInvalidArgumentException,
                       u"Can't do a substring operation with something that isn't a string (lhs = %@ rhs = %@)", text,
                       pattern);
}

bool PredicateComparison::textMatches(std::u16string_view text, std::u16string_view pattern) {
    const bool isEdge = type_ == NSBeginsWithPredicateOperatorType || type_ == NSEndsWithPredicateOperatorType;
    if (isEdge && pattern.empty())
        return true;
    if (!matcher_ || pattern != pattern_) [[unlikely]] {
        matcher_ = nullptr;
        pattern_ = pattern;
        matcher_ = newMatcher();
    }
    return matcher_->matches(text);
}

std::unique_ptr<TextMatcher> PredicateComparison::newMatcher() const {
    switch (type_) {
        case NSLikePredicateOperatorType:
            return wildcardMatcher(pattern_, samenessFor(search_));
        case NSMatchesPredicateOperatorType:
            return regularExpressionMatcher(pattern_, search_);
        case NSBeginsWithPredicateOperatorType:
            return searchMatcher(pattern_, search_ | NSAnchoredSearch);
        case NSEndsWithPredicateOperatorType:
            return searchMatcher(pattern_, search_ | NSAnchoredSearch | NSBackwardsSearch);
        default:
            return searchMatcher(pattern_, search_);
    }
}

}  // namespace tovi::detail
