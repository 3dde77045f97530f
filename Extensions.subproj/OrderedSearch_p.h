#pragma once

#include <ToviFoundationKit/Extensions/Comparator.h>
#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {

/// The two comparator forms as one callable: compare(element) orders the object searched for against the element.
inline auto comparing(NSObject& object, Selector comparator) {
    return [&object, site = MessageSite(comparator)](NSObject& element) mutable {
        return site.send<NSInteger>(object, element);
    };
}

inline auto comparing(NSObject& object, ComparatorFunction comparator) {
    return [&object, comparator](NSObject& element) { return comparator(object, element, nullptr); };
}

struct HalvingResult {
    NSInteger index;  ///< of an element that compares as same, else the place where it would stand
    bool found;
};

/// Halves the list from the start index on. Signed indexes, rounded toward zero: a negative start may ask the list for
/// an element that it does not have.
template <class Compare> HalvingResult halve(const NSArray& list, NSInteger start, Compare compare) {
    NSInteger low = start;
    NSInteger high = static_cast<NSInteger>(list.count()) - 1;
    while (low <= high) {
        const auto middle = static_cast<NSInteger>(static_cast<NSUInteger>(low) + static_cast<NSUInteger>(high)) / 2;
        const NSInteger order = compare(list.objectAtIndex(static_cast<NSUInteger>(middle)));
        if (order == NSOrderedSame)
            return {middle, true};
        if (order == NSOrderedAscending)
            high = middle - 1;
        else
            low = middle + 1;
    }
    return {low, false};
}

}  // namespace tovi
