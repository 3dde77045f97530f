#pragma once

#include <ToviFoundationKit/Extensions/Comparator.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>

namespace tovi {
inline namespace QVLAdditions {

/// The index at which the object is to be inserted into a sorted list, found by halving. Elements before the start
/// index are not considered; a start index at or past the end gives the count, and an empty list gives 0 whatever the
/// start index. Comparator.h tells how the comparator is applied.
///
/// The search stops at the first element that it meets which compares as same: with duplicates allowed the answer is
/// the place just after that one (not necessarily after the last of a run of equals), otherwise NSNotFound. A negative
/// start index may lead outside the list and then raises NSRangeException.
TOVI_EXPORT NSInteger insertionIndexOfObject_usingComparator_startingAtIndex_allowsDuplicates(
    const NSMutableArray& receiver, NSObject& object, Selector comparator, NSInteger start, bool allowsDuplicates);
TOVI_EXPORT NSInteger insertionIndexOfObject_usingComparatorFunction_startingAtIndex_allowsDuplicates(
    const NSMutableArray& receiver, NSObject& object, ComparatorFunction comparator, NSInteger start,
    bool allowsDuplicates);

/// Inserts the object at its insertion index and answers the index; where that is NSNotFound, inserts nothing.
TOVI_EXPORT NSInteger insertObject_usingComparator_startingAtIndex_allowsDuplicates(
    NSMutableArray& receiver, NSObject& object, Selector comparator, NSInteger start, bool allowsDuplicates);
TOVI_EXPORT NSInteger insertObject_usingComparatorFunction_startingAtIndex_allowsDuplicates(
    NSMutableArray& receiver, NSObject& object, ComparatorFunction comparator, NSInteger start, bool allowsDuplicates);

/// The same with duplicates allowed.
TOVI_EXPORT NSInteger insertObject_usingComparator_startingAtIndex(NSMutableArray& receiver, NSObject& object,
                                                                   Selector comparator, NSInteger start);
TOVI_EXPORT NSInteger insertObject_usingComparatorFunction_startingAtIndex(NSMutableArray& receiver, NSObject& object,
                                                                           ComparatorFunction comparator,
                                                                           NSInteger start);

/// Reorders the receiver: from the last position to the first, exchanges the element there with the one at
/// `random() % count`. The modulus is the full count at every step, so the orders are not equally likely. The
/// generator is the process's `random()`, which is never seeded here: call `srandom` for another or a repeatable order.
TOVI_EXPORT void shuffle(NSMutableArray& receiver);

TOVI_EXPORT void reverse(NSMutableArray& receiver);

/// Removes every occurrence of each object of the list, by identity. Nil removes nothing. The receiver itself as the
/// list raises NSGenericException, as changing a collection under enumeration does.
TOVI_EXPORT void removeIdenticalObjectsFromArray(NSMutableArray& receiver, const NSArray* list);

/// Inserts the list's elements as a block, in their order, the first at the index. Raises NSRangeException when the
/// index is past the end and the list is not empty. The receiver itself as the list raises NSGenericException once its
/// first element was inserted.
TOVI_EXPORT void insertObjectsFromArray_atIndex(NSMutableArray& receiver, const NSArray& list, NSUInteger index);

}  // namespace QVLAdditions
}  // namespace tovi
