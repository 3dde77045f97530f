#pragma once

#include <ToviFoundationKit/Foundation/NSComparisonPredicate.h>

namespace tovi::detail {

/// How an operator is written; empty when there is none of that type.
constexpr std::u16string_view textOfOperator(NSPredicateOperatorType type) noexcept {
    switch (type) {
        case NSLessThanPredicateOperatorType:
            return u"<";
        case NSLessThanOrEqualToPredicateOperatorType:
            return u"<=";
        case NSGreaterThanPredicateOperatorType:
            return u">";
        case NSGreaterThanOrEqualToPredicateOperatorType:
            return u">=";
        case NSEqualToPredicateOperatorType:
            return u"==";
        case NSNotEqualToPredicateOperatorType:
            return u"!=";
        case NSMatchesPredicateOperatorType:
            return u"MATCHES";
        case NSLikePredicateOperatorType:
            return u"LIKE";
        case NSBeginsWithPredicateOperatorType:
            return u"BEGINSWITH";
        case NSEndsWithPredicateOperatorType:
            return u"ENDSWITH";
        case NSInPredicateOperatorType:
            return u"IN";
        case NSContainsPredicateOperatorType:
            return u"CONTAINS";
        case NSBetweenPredicateOperatorType:
            return u"BETWEEN";
        case NSCustomSelectorPredicateOperatorType:
            break;
    }
    return u"";
}

/// The letters of the options, from the lowest bit on.
inline constexpr std::u16string_view optionLetters = u"cdnl";

}  // namespace tovi::detail
