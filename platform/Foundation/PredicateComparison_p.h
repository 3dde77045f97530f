#pragma once

#include <string>

#include <ToviFoundationKit/Foundation/NSComparisonPredicate.h>
#include <ToviFoundationKit/Foundation/NSSet.h>
#include <ToviFoundationKit/Foundation/TextMatcher_p.h>

namespace tovi::detail {

/// A comparison that is made again and again: what it takes to look for the same text is kept.
class PredicateComparison {
public:
    explicit PredicateComparison(const NSComparisonPredicate& predicate);

    bool holds(NSObject* left, NSObject* right);

private:
    bool compares(NSObject* left, NSObject* right);
    bool isSame(const NSObject* left, const NSObject* right) const;
    bool isIn(NSObject* value, const NSObject* collection);
    bool isBetween(NSObject* value, const NSObject* bounds) const;
    NSInteger order(NSObject& left, const NSObject& right) const;
    bool textMatches(const NSObject* text, const NSObject* pattern);
    bool textMatches(std::u16string_view text, std::u16string_view pattern);
    std::unique_ptr<TextMatcher> newMatcher() const;

    NSPredicateOperatorType type_;
    NSComparisonPredicateModifier modifier_;
    Selector selector_;
    NSStringCompareOptions search_{};
    bool comparesUnits_ = true;  ///< whether texts are the same only when their units are
    RefPtr<NSSet> listed_;       ///< a list that never changes, to look in
    const NSObject* list_ = nullptr;
    std::u16string pattern_;
    std::unique_ptr<TextMatcher> matcher_;  ///< of that pattern
};

}  // namespace tovi::detail
